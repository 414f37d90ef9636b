#include "platform/local/library/library.h"

#include "platform/local/catalogue/catalogue_schema.h"
#include "platform/local/system/mount_points.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <thread>

namespace local {

namespace {

// More than a host's threads use at once would only hold memory.
constexpr std::size_t mostIdleConnections = 8;

bool syncFolder(const std::filesystem::path& path) {
    const UniqueFd folder(
        ::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder && fsync(folder.get()) == 0;
}

// Makes the folder and those above it, each name durable before anything is put below it; only the
// library's own is kept from other users.
void makeFolder(const std::filesystem::path& path, mode_t mode = 0700) {
    if (mkdir(path.c_str(), mode) != 0) {
        if (errno == EEXIST)
            return;
        if (errno != ENOENT || !path.has_relative_path())
            throw systemError("The photo library's place " + path.string() + " could not be made",
                              errno);
        makeFolder(path.parent_path(), 0777);
        if (mkdir(path.c_str(), mode) != 0 && errno != EEXIST)
            throw systemError("The photo library's place " + path.string() + " could not be made",
                              errno);
    }
    if (!syncFolder(path.parent_path()))
        throw systemError(
            "The photo library's place " + path.string() + " could not be made durable", errno);
}

// A library made where a disk is to be mounted would be hidden once it is.
void requireMountedPlace(const std::string& path) {
    if (const auto place = unmountedPlaceOf(path))
        throw LibraryError(posixErrorDomain, ENODEV,
                           "The photo library's disk is not mounted on " + *place +
                               ", so no new library was made there; nothing was changed.");
}

// The catalogue of a library on a network disk would be damaged as soon as two machines had it
// open, and nobody can tell whether another one has.
void requireOwnDisk(const std::string& path) {
    const std::string type = fileSystemTypeOf(path);
    if (isNetworkType(type))
        throw LibraryError(posixErrorDomain, EREMOTE,
                           "The photo library's place " + path + " is on a network disk (" + type +
                               "), where its catalogue cannot be kept safe; nothing was changed. "
                               "Keep the library on a disk of this machine, and copy it to the "
                               "network with photos-kit backup.");
}

UniqueFd openLibraryFolder(const std::string& path) {
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    UniqueFd folder(::open(path.c_str(), flags));
    if (!folder && errno == ENOENT) {
        requireMountedPlace(path);
        requireOwnDisk(path);
        makeFolder(path);
        folder.reset(::open(path.c_str(), flags));
    }
    if (!folder && errno == ENOTDIR)
        throw LibraryError(posixErrorDomain, ENOTDIR,
                           path + " is not a folder, so it cannot be the photo library; nothing "
                                  "was changed.");
    if (!folder)
        throw systemError("The photo library " + path + " could not be opened", errno);
    requireOwnDisk(path);
    return folder;
}

bool catalogueExists(int folder) {
    struct stat file = {};
    if (fstatat(folder, "library.db", &file, 0) == 0)
        return file.st_size > 0;
    if (errno != ENOENT)
        throw systemError("The library's catalogue could not be examined", errno);
    return false;
}

// Reads the catalogue's version without a trace: no log, no shared memory, no lock.
void refuseNewerVersion(int folder) {
    try {
        CatalogueConnection peek(folder, CatalogueConnection::Mode::immutable);
        if (peek.integer("PRAGMA application_id") == catalogueApplicationId)
            checkCatalogueIsOurs(peek, schemaSteps().size());
    } catch (const LibraryError& refused) {
        // A writer at work can make any other reading of this kind go wrong.
        if (refused.error().code == SQLITE_SCHEMA)
            throw;
    }
}

// For a catalogue that cannot be brought up to date, because it takes no changes.
void requirePresentVersion(CatalogueConnection& connection) {
    checkCatalogueIsOurs(connection, schemaSteps().size());
    if (connection.integer("PRAGMA user_version") < static_cast<std::int64_t>(schemaSteps().size()))
        throw LibraryError(posixErrorDomain, EROFS,
                           "The photo library was made by an earlier version of this software, "
                           "and cannot be brought up to date now, because it takes no changes.");
}

// Makes the names of a new library's files durable, its own, and those of the folders above it as
// far as they are this user's: whoever began to make it may have died before syncing them.
void syncNewLibrary(int folder) {
    if (fsync(folder) != 0)
        throw systemError("The new photo library could not be made durable", errno);
    struct stat below = {};
    fstat(folder, &below);
    UniqueFd at(openat(folder, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (bool nearest = true; at; nearest = false) {
        struct stat here = {};
        const bool looked = fstat(at.get(), &here) == 0;
        const bool top = here.st_dev != below.st_dev || here.st_ino == below.st_ino;
        if (!nearest && (!looked || top || here.st_uid != geteuid()))
            return;
        if (fsync(at.get()) != 0)
            throw systemError("The new photo library could not be made durable", errno);
        below = here;
        at.reset(openat(at.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
}

// An empty catalogue that other users cannot read, as SQLite would make it. Nobody can have it
// open yet: it is left alone where it stands already.
void makeCatalogueFile(int folder) {
    const UniqueFd made(
        openat(folder, "library.db", O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!made && errno != EEXIST)
        throw systemError("The library's catalogue could not be made", errno);
}

// A folder that stood there before it became a library is closed to others, if it is this user's.
void keepToItsOwner(int folder) {
    struct stat status = {};
    if (fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
        (status.st_mode & 0777) != 0700)
        fchmod(folder, 0700);
}

// Programs that collect pictures pass over a folder that holds these: what they would make of the
// library's own files is nobody's album.
void hideFromCollectors(int folder) {
    for (const char* name : {".nomedia", ".trackerignore"})
        const UniqueFd made(
            openat(folder, name, O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
}

} // namespace

ConnectionLease::ConnectionLease(std::shared_ptr<Library> library,
                                 std::unique_ptr<CatalogueConnection> made, bool forChanges)
    : library_(std::move(library)), connection_(std::move(made)), forChanges_(forChanges) {}

ConnectionLease::~ConnectionLease() {
    if (connection_)
        library_->giveBack(std::move(connection_), forChanges_);
}

Library::Library(const std::string& path)
    : folder_(openLibraryFolder(path)), files_(folder_.get()) {
    // SQLite does not wait where two processes that change a new file to write-ahead logging could
    // wait for each other.
    while (!tryToPrepareCatalogue(path))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (fstatat(folder_.get(), "library.db", &catalogueFile_, 0) != 0)
        throw systemError("The library's catalogue could not be examined", errno);
    if (readOnly_)
        return;
    try {
        hideFromCollectors(folder_.get());
        markStore();
        sweep();
    } catch (const LibraryError&) {
        // What is left over waits for a better day; it is in nobody's way.
    }
}

// For libraries that were made before their store was marked: a folder that holds what the
// catalogue names, or has nothing to hold yet, is the right one.
void Library::markStore() {
    for (const Stored kind : {Stored::original, Stored::render}) {
        if (files_.isPresent(kind))
            continue;
        const std::unique_ptr<CatalogueConnection> connection = connect();
        Statement named =
            connection->statement(kind == Stored::original ? "SELECT stored_as FROM asset LIMIT 20"
                                                           : "SELECT stored_as FROM edit LIMIT 20");
        bool any = false;
        bool found = false;
        while (!found && named.step()) {
            any = true;
            found = files_.holds(kind, std::string(named.text(0)));
        }
        if (found || !any)
            files_.mark(kind);
    }
}

void Library::sweep() {
    const std::unique_ptr<CatalogueConnection> connection = connect();
    files_.sweep(
        [&](Stored kind, const std::string& name) {
            Statement found = connection->statement(
                kind == Stored::original
                    ? "SELECT 1 FROM asset WHERE uuid = ?1 AND stored_as = ?2"
                    : "SELECT 1 FROM edit WHERE ?1 IS NOT NULL AND stored_as = ?2");
            const auto uuid = uuidFromText(std::string_view(name).substr(0, 36));
            return uuid && found.bindBlob(1, *uuid).bind(2, name).step();
        },
        [&] { makeDurable(*connection); });
}

void Library::makeDurable(CatalogueConnection& connection) {
    const std::unique_lock<std::mutex> lock = writeLock();
    WriteTransaction transaction(connection);
    connection.writeFirstPage();
    transaction.commit();
}

bool Library::stillAt(const std::string& path) const {
    // A disk that took no writes may take them again.
    if (readOnly_ && std::chrono::steady_clock::now() - opened_ > std::chrono::seconds(2))
        return false;
    struct stat now = {};
    return stat((path + "/library.db").c_str(), &now) == 0 && now.st_dev == catalogueFile_.st_dev &&
           now.st_ino == catalogueFile_.st_ino;
}

bool Library::tryToPrepareCatalogue(const std::string& path) {
    try {
        prepareCatalogue(path);
        return true;
    } catch (const LibraryError& error) {
        const bool busy =
            error.error().domain == sqliteErrorDomain && (error.error().code & 0xff) == SQLITE_BUSY;
        if (!busy)
            throw;
        return false;
    }
}

void Library::prepareCatalogue(const std::string& path) {
    // In this order: another process may be making the library at this moment, and makes its
    // catalogue before its first original.
    bool exists = catalogueExists(folder_.get());
    const bool hasOriginals = !exists && files_.holdsOriginals();
    if (hasOriginals)
        exists = catalogueExists(folder_.get());
    if (hasOriginals && !exists)
        throw LibraryError(posixErrorDomain, ENOENT,
                           "The photo library " + path +
                               " holds originals but no catalogue; nothing was changed.");
    if (exists)
        refuseNewerVersion(folder_.get());
    else
        requireMountedPlace(path);
    if (!exists)
        makeCatalogueFile(folder_.get());
    try {
        CatalogueConnection connection(folder_.get(), CatalogueConnection::Mode::readWrite,
                                       !exists);
        readOnly_ = connection.isReadOnly();
        // One that another process began and did not finish has a catalogue, of no version yet.
        if (!readOnly_ && isNewCatalogue(connection)) {
            keepToItsOwner(folder_.get());
            files_.create();
            connection.execute("PRAGMA journal_mode=WAL");
            syncNewLibrary(folder_.get());
        }
        if (readOnly_)
            requirePresentVersion(connection);
        else
            prepareSchema(connection, schemaSteps());
        connection.integer("SELECT access FROM library");
    } catch (const LibraryError& error) {
        const int code = static_cast<int>(error.error().code) & 0xff;
        const bool noRoom = code == SQLITE_FULL || code == SQLITE_CANTOPEN ||
                            code == SQLITE_IOERR || code == SQLITE_READONLY;
        if (!exists || error.error().domain != sqliteErrorDomain || !noRoom ||
            !hasNoLog(folder_.get()))
            throw;
        // SQLite found no room for its own files beside the catalogue. All that was ever
        // committed is in the catalogue itself, and nobody can add to it.
        mode_ = CatalogueConnection::Mode::immutable;
        readOnly_ = true;
        CatalogueConnection connection(folder_.get(), mode_);
        requirePresentVersion(connection);
    }
}

std::unique_ptr<CatalogueConnection> Library::connect() {
    return std::make_unique<CatalogueConnection>(folder_.get(), mode_);
}

ConnectionLease Library::connection() {
    {
        const std::scoped_lock lock(poolMutex_);
        if (!idle_.empty()) {
            auto connection = std::move(idle_.back());
            idle_.pop_back();
            return {shared_from_this(), std::move(connection), false};
        }
    }
    return {shared_from_this(), connect(), false};
}

ConnectionLease Library::connectionForChanges() {
    {
        const std::scoped_lock lock(poolMutex_);
        if (idleForChanges_)
            return {shared_from_this(), std::move(idleForChanges_), true};
    }
    auto connection = connect();
    connection->keepManyPages();
    return {shared_from_this(), std::move(connection), true};
}

void Library::giveBack(std::unique_ptr<CatalogueConnection> connection, bool forChanges) {
    if (!sqlite3_get_autocommit(connection->handle()))
        return; // a transaction that could not be ended: the connection is of no more use
    // An immutable connection would not see what others write once there is room again.
    if (mode_ == CatalogueConnection::Mode::immutable)
        return;
    const std::scoped_lock lock(poolMutex_);
    if (forChanges)
        idleForChanges_ = std::move(connection);
    else if (idle_.size() < mostIdleConnections)
        idle_.push_back(std::move(connection));
}

void Library::requireWritable() const {
    if (readOnly_)
        throw LibraryError(posixErrorDomain, EROFS,
                           "The photo library cannot be changed, because it is read-only.");
}

} // namespace local
