#include "platform/local/catalogue_schema.h"

#include <array>

namespace local {

namespace {

// Listed assets are those that are neither hidden nor in the trash. Their index holds all that a
// listing shows, so that a page reads a few neighbouring pages of the file instead of one for each
// asset. Two things are kept for them by triggers: their number, and a log of every key that
// entered or left their order, from which each process keeps its markers into that order up to
// date. What every call reads stands in one row.
//
// Favourites are a table of their own in the same order: setting the flag on many assets then
// writes few pages, and a listing finds the favourites of its page side by side.
constexpr const char* firstVersion = R"sql(
CREATE TABLE library (
    only_row        INTEGER PRIMARY KEY CHECK (only_row = 1),
    access          INTEGER NOT NULL CHECK (access IN (1, 2, 3, 4)),
    listed          INTEGER NOT NULL DEFAULT 0,
    listing_changes INTEGER NOT NULL DEFAULT 0
) STRICT;
INSERT INTO library (only_row, access) VALUES (1, 3);

CREATE TABLE asset (
    n            INTEGER PRIMARY KEY,
    uuid         BLOB NOT NULL UNIQUE CHECK (length(uuid) = 16),
    created      INTEGER NOT NULL,
    media        INTEGER NOT NULL CHECK (media IN (1, 2)),
    width        INTEGER NOT NULL CHECK (width > 0),
    height       INTEGER NOT NULL CHECK (height > 0),
    hidden       INTEGER NOT NULL DEFAULT 0 CHECK (hidden IN (0, 1)),
    trashed_at   INTEGER,
    filename     TEXT NOT NULL,
    content_type TEXT NOT NULL,
    stored_as    TEXT NOT NULL,
    hash         BLOB NOT NULL CHECK (length(hash) = 16),
    size         INTEGER NOT NULL CHECK (size >= 0),
    added        INTEGER NOT NULL,
    traits       INTEGER NOT NULL DEFAULT 0
) STRICT;

CREATE INDEX asset_listing
    ON asset (created DESC, n DESC, uuid, media, width, height, filename, content_type)
    WHERE hidden = 0 AND trashed_at IS NULL;

CREATE TABLE favorite (
    created INTEGER NOT NULL,
    asset   INTEGER NOT NULL REFERENCES asset (n),
    PRIMARY KEY (created DESC, asset DESC)
) STRICT, WITHOUT ROWID;

CREATE TRIGGER favorite_deleted BEFORE DELETE ON asset
BEGIN
    DELETE FROM favorite WHERE created = old.created AND asset = old.n;
END;

CREATE TRIGGER favorite_moved AFTER UPDATE OF created ON asset
WHEN old.created <> new.created
BEGIN
    UPDATE favorite SET created = new.created WHERE created = old.created AND asset = old.n;
END;

CREATE TABLE limited_choice (
    asset INTEGER PRIMARY KEY REFERENCES asset (n) ON DELETE CASCADE
) STRICT;

CREATE TABLE listing_change (
    seq         INTEGER PRIMARY KEY,
    old_created INTEGER,
    new_created INTEGER,
    asset       INTEGER NOT NULL
) STRICT;

CREATE TRIGGER asset_listed AFTER INSERT ON asset
WHEN new.hidden = 0 AND new.trashed_at IS NULL
BEGIN
    UPDATE library SET listed = listed + 1, listing_changes = listing_changes + 1;
    INSERT INTO listing_change (seq, new_created, asset)
    SELECT listing_changes, new.created, new.n FROM library;
END;

CREATE TRIGGER asset_unlisted AFTER DELETE ON asset
WHEN old.hidden = 0 AND old.trashed_at IS NULL
BEGIN
    UPDATE library SET listed = listed - 1, listing_changes = listing_changes + 1;
    INSERT INTO listing_change (seq, old_created, asset)
    SELECT listing_changes, old.created, old.n FROM library;
END;

CREATE TRIGGER asset_relisted AFTER UPDATE OF created, hidden, trashed_at ON asset
WHEN (old.hidden = 0 AND old.trashed_at IS NULL) <> (new.hidden = 0 AND new.trashed_at IS NULL)
     OR (old.created <> new.created AND new.hidden = 0 AND new.trashed_at IS NULL)
BEGIN
    UPDATE library
       SET listed = listed + (new.hidden = 0 AND new.trashed_at IS NULL)
                           - (old.hidden = 0 AND old.trashed_at IS NULL),
           listing_changes = listing_changes + 1;
    INSERT INTO listing_change (seq, old_created, new_created, asset)
    SELECT listing_changes,
           iif(old.hidden = 0 AND old.trashed_at IS NULL, old.created, NULL),
           iif(new.hidden = 0 AND new.trashed_at IS NULL, new.created, NULL), new.n
      FROM library;
END;
)sql";

constexpr std::array steps{firstVersion};

bool isEmptyFile(CatalogueConnection& connection) {
    return connection.integer("PRAGMA user_version") == 0 &&
           connection.integer("SELECT count(*) FROM sqlite_schema") == 0;
}

} // namespace

std::span<const char* const> schemaSteps() {
    return steps;
}

void checkCatalogueIsOurs(CatalogueConnection& connection, std::size_t knownVersion) {
    if (connection.integer("PRAGMA application_id") != catalogueApplicationId)
        throw LibraryError(sqliteErrorDomain, SQLITE_NOTADB,
                           "The library's catalogue belongs to another program; nothing was "
                           "changed.");
    const std::int64_t version = connection.integer("PRAGMA user_version");
    if (version > static_cast<std::int64_t>(knownVersion))
        throw LibraryError(sqliteErrorDomain, SQLITE_SCHEMA,
                           "The photo library was made by a newer version of this software (its "
                           "catalogue has version " +
                               std::to_string(version) + ", this one knows up to " +
                               std::to_string(knownVersion) + "); nothing was changed.");
}

void prepareSchema(CatalogueConnection& connection, std::span<const char* const> wanted) {
    const auto current = static_cast<std::int64_t>(wanted.size());
    const bool fresh = isEmptyFile(connection);
    if (!fresh) {
        checkCatalogueIsOurs(connection, wanted.size());
        if (connection.integer("PRAGMA user_version") == current)
            return;
    }
    WriteTransaction transaction(connection);
    // Another process may have done it while this one waited.
    std::int64_t version = connection.integer("PRAGMA user_version");
    if (!isEmptyFile(connection))
        checkCatalogueIsOurs(connection, wanted.size());
    for (; version < current; ++version)
        connection.execute(wanted[static_cast<std::size_t>(version)]);
    const std::string stamp = "PRAGMA application_id = " + std::to_string(catalogueApplicationId) +
                              "; PRAGMA user_version = " + std::to_string(current);
    connection.execute(stamp.c_str());
    transaction.commit();
}

} // namespace local
