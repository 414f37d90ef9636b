#include "platform/local/maintenance/library_reader.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/catalogue/catalogue_schema.h"
#include "platform/local/store/content_hasher.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace local {

namespace {

constexpr int assetsAtOnce = 200;

UniqueFd openLibraryFolder(const std::string& path) {
    UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder && errno == ENOENT)
        throw LibraryError(posixErrorDomain, ENOENT, "There is no photo library at " + path + ".");
    if (!folder)
        throw systemError("The photo library " + path + " could not be opened", errno);
    struct stat catalogue = {};
    if (fstatat(folder.get(), "library.db", &catalogue, 0) != 0 || catalogue.st_size == 0)
        throw LibraryError(posixErrorDomain, ENOENT,
                           path + " holds no catalogue: it is no photo library, or its disk is "
                                  "not mounted.");
    return folder;
}

std::unique_ptr<CatalogueConnection> openCatalogue(int folder) {
    using Mode = CatalogueConnection::Mode;
    std::unique_ptr<CatalogueConnection> catalogue;
    try {
        catalogue = std::make_unique<CatalogueConnection>(folder, Mode::readWrite);
        catalogue->integer("SELECT count(*) FROM sqlite_schema");
    } catch (const LibraryError&) {
        // SQLite could not make its own files beside the catalogue.
        if (!hasNoLog(folder))
            throw;
        catalogue = std::make_unique<CatalogueConnection>(folder, Mode::immutable);
    }
    sqlite3_db_config(catalogue->handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    catalogue->execute("PRAGMA query_only=1");
    return catalogue;
}

NamedFile fileOf(const Statement& row, int first) {
    NamedFile file;
    file.asset = row.integer(0);
    file.uuid = row.bytes<Uuid>(1);
    file.name = row.text(first);
    file.hash = row.bytes<ContentHash>(first + 1);
    file.size = row.integer(first + 2);
    return file;
}

} // namespace

std::string NamedFile::identifier() const {
    return assetIdentifier(uuid);
}

std::string NamedFile::path() const {
    return pathOf(kind, name);
}

LibraryReader::LibraryReader(const std::string& path)
    : folder_(openLibraryFolder(path)), files_(folder_.get()),
      catalogue_(openCatalogue(folder_.get())) {
    const auto version = static_cast<std::int64_t>(schemaSteps().size());
    checkCatalogueIsOurs(*catalogue_, schemaSteps().size());
    if (catalogue_->integer("PRAGMA user_version") != version)
        throw LibraryError(sqliteErrorDomain, SQLITE_SCHEMA,
                           "The photo library was made by an earlier version of this software. "
                           "Open it once, with photos-kit list for instance, to bring it up to "
                           "date.");
}

std::vector<NamedFile> LibraryReader::filesAfter(std::int64_t after) {
    Statement rows = catalogue_->statement(
        "SELECT a.n, a.uuid, a.stored_as, a.hash, a.size, e.stored_as, e.hash, e.size "
        "FROM asset AS a LEFT JOIN edit AS e ON e.asset = a.n WHERE a.n > ?1 ORDER BY a.n LIMIT "
        "?2");
    rows.bind(1, after).bind(2, assetsAtOnce);
    std::vector<NamedFile> files;
    while (rows.step()) {
        files.push_back(fileOf(rows, 2));
        if (rows.isNull(5))
            continue;
        files.push_back(fileOf(rows, 5));
        files.back().kind = Stored::render;
    }
    return files;
}

std::int64_t LibraryReader::countFiles() {
    return catalogue_->integer("SELECT (SELECT count(*) FROM asset) + (SELECT count(*) FROM edit)");
}

bool LibraryReader::stillNames(const NamedFile& file) {
    Statement row = catalogue_->statement(
        file.kind == Stored::original
            ? "SELECT 1 FROM asset WHERE n = ?1 AND stored_as = ?2 AND hash = ?3"
            : "SELECT 1 FROM edit WHERE asset = ?1 AND stored_as = ?2 AND hash = ?3");
    return row.bind(1, file.asset).bind(2, file.name).bindBlob(3, file.hash).step();
}

bool LibraryReader::namesFile(Stored kind, const std::string& name) {
    if (kind == Stored::render) {
        Statement row = catalogue_->statement("SELECT 1 FROM edit WHERE stored_as = ?1");
        return row.bind(1, name).step();
    }
    const auto uuid = uuidFromText(std::string_view(name).substr(0, 36));
    if (!uuid)
        return false;
    Statement row = catalogue_->statement("SELECT 1 FROM asset WHERE uuid = ?1 AND stored_as = ?2");
    return row.bindBlob(1, *uuid).bind(2, name).step();
}

bool LibraryReader::isDiscarded(const std::string& path) {
    Statement row = catalogue_->statement("SELECT 1 FROM discarded_file WHERE path = ?1");
    return row.bind(1, path).step();
}

} // namespace local
