#include "platform/local/catalogue/catalogue_schema.h"

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
    n            INTEGER PRIMARY KEY AUTOINCREMENT,
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

// Albums and folders. A member row repeats what its order and count depend on, so that an album's
// page is a walk through one index; triggers keep it, and every count, in step with the assets.
// `changes` numbers tell a process when markers that it keeps no longer fit. Row numbers are never
// used again: whoever still holds a deleted album's must not reach the next one by it.
constexpr const char* secondVersion = R"sql(
CREATE TABLE collection (
    n        INTEGER PRIMARY KEY AUTOINCREMENT,
    uuid     BLOB NOT NULL UNIQUE CHECK (length(uuid) = 16),
    kind     INTEGER NOT NULL CHECK (kind IN (1, 2)),
    title    TEXT,
    parent   INTEGER REFERENCES collection (n),
    position INTEGER NOT NULL,
    held     INTEGER NOT NULL DEFAULT 0,
    changes  INTEGER NOT NULL DEFAULT 0
) STRICT;
CREATE UNIQUE INDEX collection_order ON collection (ifnull(parent, 0), position);
CREATE INDEX collection_parent ON collection (parent);

CREATE TRIGGER collection_added AFTER INSERT ON collection WHEN new.parent IS NOT NULL
BEGIN
    UPDATE collection SET held = held + 1 WHERE n = new.parent;
END;
CREATE TRIGGER collection_moved AFTER UPDATE OF parent ON collection
WHEN old.parent IS NOT new.parent
BEGIN
    UPDATE collection SET held = held - 1 WHERE n = old.parent;
    UPDATE collection SET held = held + 1 WHERE n = new.parent;
END;
CREATE TRIGGER collection_removed AFTER DELETE ON collection WHEN old.parent IS NOT NULL
BEGIN
    UPDATE collection SET held = held - 1 WHERE n = old.parent;
END;

CREATE TABLE album_member (
    album    INTEGER NOT NULL REFERENCES collection (n),
    asset    INTEGER NOT NULL REFERENCES asset (n),
    position INTEGER NOT NULL,
    created  INTEGER NOT NULL,
    listed   INTEGER NOT NULL CHECK (listed IN (0, 1)),
    PRIMARY KEY (album, asset)
) STRICT, WITHOUT ROWID;
CREATE INDEX album_listing ON album_member (album, created DESC, asset DESC) WHERE listed = 1;
CREATE INDEX album_order ON album_member (album, position, listed);
CREATE INDEX albums_of_asset ON album_member (asset);

CREATE TRIGGER member_follows_asset AFTER UPDATE OF created, hidden, trashed_at ON asset
WHEN (old.hidden = 0 AND old.trashed_at IS NULL) <> (new.hidden = 0 AND new.trashed_at IS NULL)
     OR old.created <> new.created
BEGIN
    UPDATE collection
       SET held = held + (new.hidden = 0 AND new.trashed_at IS NULL)
                       - (old.hidden = 0 AND old.trashed_at IS NULL),
           changes = changes + 1
     WHERE n IN (SELECT album FROM album_member WHERE asset = new.n);
    UPDATE album_member
       SET created = new.created, listed = (new.hidden = 0 AND new.trashed_at IS NULL)
     WHERE asset = new.n;
END;
CREATE TRIGGER member_leaves_with_asset BEFORE DELETE ON asset
BEGIN
    UPDATE collection
       SET held = held - (old.hidden = 0 AND old.trashed_at IS NULL), changes = changes + 1
     WHERE n IN (SELECT album FROM album_member WHERE asset = old.n);
    DELETE FROM album_member WHERE asset = old.n;
END;

CREATE INDEX asset_videos ON asset (created DESC, n DESC)
    WHERE hidden = 0 AND trashed_at IS NULL AND media = 2;
CREATE INDEX asset_animated ON asset (created DESC, n DESC)
    WHERE hidden = 0 AND trashed_at IS NULL AND traits & 1;
CREATE INDEX asset_raw ON asset (created DESC, n DESC)
    WHERE hidden = 0 AND trashed_at IS NULL AND traits & 2;
CREATE INDEX asset_screenshots ON asset (created DESC, n DESC)
    WHERE hidden = 0 AND trashed_at IS NULL AND traits & 4;
CREATE INDEX asset_selfies ON asset (created DESC, n DESC)
    WHERE hidden = 0 AND trashed_at IS NULL AND traits & 8;
CREATE INDEX asset_panoramas ON asset (created DESC, n DESC)
    WHERE hidden = 0 AND trashed_at IS NULL AND traits & 16;
CREATE INDEX asset_hidden ON asset (created DESC, n DESC)
    WHERE hidden = 1 AND trashed_at IS NULL;
CREATE INDEX asset_added ON asset (added DESC, n DESC)
    WHERE hidden = 0 AND trashed_at IS NULL;

-- Tells what lies in the trash without reading the assets.
CREATE INDEX asset_trash ON asset (n) WHERE trashed_at IS NOT NULL;

CREATE TABLE smart_album (
    only_row    INTEGER PRIMARY KEY CHECK (only_row = 1),
    changes     INTEGER NOT NULL DEFAULT 0,
    favorites   INTEGER NOT NULL,
    videos      INTEGER NOT NULL,
    animated    INTEGER NOT NULL,
    raw         INTEGER NOT NULL,
    screenshots INTEGER NOT NULL,
    selfies     INTEGER NOT NULL,
    panoramas   INTEGER NOT NULL,
    hidden      INTEGER NOT NULL
) STRICT;
INSERT INTO smart_album
SELECT 1, 0,
       (SELECT count(*) FROM favorite AS f CROSS JOIN asset AS a ON a.n = f.asset
         WHERE a.hidden = 0 AND a.trashed_at IS NULL),
       ifnull(sum(hidden = 0 AND media = 2), 0),
       ifnull(sum(hidden = 0 AND traits & 1 <> 0), 0),
       ifnull(sum(hidden = 0 AND traits & 2 <> 0), 0),
       ifnull(sum(hidden = 0 AND traits & 4 <> 0), 0),
       ifnull(sum(hidden = 0 AND traits & 8 <> 0), 0),
       ifnull(sum(hidden = 0 AND traits & 16 <> 0), 0),
       ifnull(sum(hidden = 1), 0)
  FROM asset WHERE trashed_at IS NULL;

CREATE TRIGGER smart_asset_added AFTER INSERT ON asset WHEN new.trashed_at IS NULL
BEGIN
    UPDATE smart_album
       SET changes = changes + 1,
           videos = videos + (new.hidden = 0 AND new.media = 2),
           animated = animated + (new.hidden = 0 AND new.traits & 1 <> 0),
           raw = raw + (new.hidden = 0 AND new.traits & 2 <> 0),
           screenshots = screenshots + (new.hidden = 0 AND new.traits & 4 <> 0),
           selfies = selfies + (new.hidden = 0 AND new.traits & 8 <> 0),
           panoramas = panoramas + (new.hidden = 0 AND new.traits & 16 <> 0),
           hidden = hidden + new.hidden;
END;
CREATE TRIGGER smart_asset_removed AFTER DELETE ON asset WHEN old.trashed_at IS NULL
BEGIN
    UPDATE smart_album
       SET changes = changes + 1,
           videos = videos - (old.hidden = 0 AND old.media = 2),
           animated = animated - (old.hidden = 0 AND old.traits & 1 <> 0),
           raw = raw - (old.hidden = 0 AND old.traits & 2 <> 0),
           screenshots = screenshots - (old.hidden = 0 AND old.traits & 4 <> 0),
           selfies = selfies - (old.hidden = 0 AND old.traits & 8 <> 0),
           panoramas = panoramas - (old.hidden = 0 AND old.traits & 16 <> 0),
           hidden = hidden - old.hidden;
END;
CREATE TRIGGER smart_asset_changed
AFTER UPDATE OF created, media, hidden, trashed_at, traits, added ON asset
BEGIN
    UPDATE smart_album
       SET changes = changes + 1,
           favorites = favorites
               + ((new.hidden = 0 AND new.trashed_at IS NULL)
                  - (old.hidden = 0 AND old.trashed_at IS NULL))
               * EXISTS (SELECT 1 FROM favorite
                          WHERE created IN (old.created, new.created) AND asset = new.n),
           videos = videos + (new.hidden = 0 AND new.trashed_at IS NULL AND new.media = 2)
                           - (old.hidden = 0 AND old.trashed_at IS NULL AND old.media = 2),
           animated = animated
               + (new.hidden = 0 AND new.trashed_at IS NULL AND new.traits & 1 <> 0)
               - (old.hidden = 0 AND old.trashed_at IS NULL AND old.traits & 1 <> 0),
           raw = raw + (new.hidden = 0 AND new.trashed_at IS NULL AND new.traits & 2 <> 0)
                     - (old.hidden = 0 AND old.trashed_at IS NULL AND old.traits & 2 <> 0),
           screenshots = screenshots
               + (new.hidden = 0 AND new.trashed_at IS NULL AND new.traits & 4 <> 0)
               - (old.hidden = 0 AND old.trashed_at IS NULL AND old.traits & 4 <> 0),
           selfies = selfies
               + (new.hidden = 0 AND new.trashed_at IS NULL AND new.traits & 8 <> 0)
               - (old.hidden = 0 AND old.trashed_at IS NULL AND old.traits & 8 <> 0),
           panoramas = panoramas
               + (new.hidden = 0 AND new.trashed_at IS NULL AND new.traits & 16 <> 0)
               - (old.hidden = 0 AND old.trashed_at IS NULL AND old.traits & 16 <> 0),
           hidden = hidden + (new.hidden = 1 AND new.trashed_at IS NULL)
                           - (old.hidden = 1 AND old.trashed_at IS NULL);
END;
CREATE TRIGGER smart_favorite_added AFTER INSERT ON favorite
BEGIN
    UPDATE smart_album
       SET changes = changes + 1,
           favorites = favorites + (SELECT hidden = 0 AND trashed_at IS NULL FROM asset
                                     WHERE n = new.asset);
END;
CREATE TRIGGER smart_favorite_removed AFTER DELETE ON favorite
BEGIN
    UPDATE smart_album
       SET changes = changes + 1,
           favorites = favorites - (SELECT hidden = 0 AND trashed_at IS NULL FROM asset
                                     WHERE n = old.asset);
END;
)sql";

// Edits, and what becomes of the files of rows that are gone: a trigger notes their names, and only
// when that is committed does anybody remove them.
constexpr const char* thirdVersion = R"sql(
ALTER TABLE library ADD COLUMN confirm_deletions INTEGER NOT NULL DEFAULT 0
    CHECK (confirm_deletions IN (0, 1));

ALTER TABLE asset ADD COLUMN edited INTEGER NOT NULL DEFAULT 0 CHECK (edited IN (0, 1));
DROP INDEX asset_listing;
CREATE INDEX asset_listing
    ON asset (created DESC, n DESC, uuid, media, width, height, filename, content_type, edited)
    WHERE hidden = 0 AND trashed_at IS NULL;

CREATE TABLE edit (
    asset             INTEGER PRIMARY KEY REFERENCES asset (n),
    stored_as         TEXT NOT NULL UNIQUE,
    hash              BLOB NOT NULL CHECK (length(hash) = 16),
    size              INTEGER NOT NULL CHECK (size > 0),
    original_width    INTEGER NOT NULL,
    original_height   INTEGER NOT NULL,
    format_identifier TEXT NOT NULL,
    format_version    TEXT NOT NULL,
    data              BLOB NOT NULL,
    committed         INTEGER NOT NULL
) STRICT;

CREATE TABLE discarded_file (
    path TEXT PRIMARY KEY
) STRICT, WITHOUT ROWID;

CREATE TRIGGER edit_leaves_with_asset BEFORE DELETE ON asset
BEGIN
    DELETE FROM edit WHERE asset = old.n;
END;
CREATE TRIGGER render_discarded AFTER DELETE ON edit
BEGIN
    INSERT OR IGNORE INTO discarded_file
    VALUES ('renders/' || substr(old.stored_as, 1, 2) || '/' || old.stored_as);
END;
CREATE TRIGGER original_discarded AFTER DELETE ON asset
BEGIN
    INSERT OR IGNORE INTO discarded_file
    VALUES ('originals/' || substr(old.stored_as, 1, 2) || '/' || old.stored_as);
END;
)sql";

// What deleting for good needs: to find an asset's favourite without a walk, and to tell whether a
// scaled picture still has a row of its content. And the room that scaled pictures may take.
constexpr const char* fourthVersion = R"sql(
CREATE INDEX favorite_asset ON favorite (asset);
CREATE INDEX asset_content ON asset (hash);
CREATE INDEX edit_content ON edit (hash);

ALTER TABLE library ADD COLUMN derivatives_room INTEGER NOT NULL DEFAULT 2147483648
    CHECK (derivatives_room >= 0);

CREATE TRIGGER original_derivative_discarded AFTER DELETE ON asset
WHEN NOT EXISTS (SELECT 1 FROM asset WHERE hash = old.hash)
     AND NOT EXISTS (SELECT 1 FROM edit WHERE hash = old.hash)
BEGIN
    INSERT OR IGNORE INTO discarded_file
    VALUES ('derivatives/' || substr(lower(hex(old.hash)), 1, 2) || '/' || lower(hex(old.hash))
            || '.jpg');
END;
CREATE TRIGGER render_derivative_discarded AFTER DELETE ON edit
WHEN NOT EXISTS (SELECT 1 FROM asset WHERE hash = old.hash)
     AND NOT EXISTS (SELECT 1 FROM edit WHERE hash = old.hash)
BEGIN
    INSERT OR IGNORE INTO discarded_file
    VALUES ('derivatives/' || substr(lower(hex(old.hash)), 1, 2) || '/' || lower(hex(old.hash))
            || '.jpg');
END;
)sql";

constexpr std::array steps{firstVersion, secondVersion, thirdVersion, fourthVersion};

} // namespace

bool isNewCatalogue(CatalogueConnection& connection) {
    return connection.integer("PRAGMA user_version") == 0 &&
           connection.integer("SELECT count(*) FROM sqlite_schema") == 0;
}

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
    const bool fresh = isNewCatalogue(connection);
    if (!fresh) {
        checkCatalogueIsOurs(connection, wanted.size());
        if (connection.integer("PRAGMA user_version") == current)
            return;
    }
    WriteTransaction transaction(connection);
    // Another process may have done it while this one waited.
    std::int64_t version = connection.integer("PRAGMA user_version");
    if (!isNewCatalogue(connection))
        checkCatalogueIsOurs(connection, wanted.size());
    for (; version < current; ++version)
        connection.execute(wanted[static_cast<std::size_t>(version)]);
    const std::string stamp = "PRAGMA application_id = " + std::to_string(catalogueApplicationId) +
                              "; PRAGMA user_version = " + std::to_string(current);
    connection.execute(stamp.c_str());
    transaction.commit();
}

} // namespace local
