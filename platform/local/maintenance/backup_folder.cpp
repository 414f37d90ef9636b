#include "platform/local/maintenance/backup_folder.h"

#include "platform/local/catalogue/catalogue_vfs.h"
#include "platform/local/maintenance/folders.h"
#include "platform/local/maintenance/library_reader.h"
#include "platform/local/store/content_hasher.h"
#include "platform/local/system/file_identity.h"
#include "platform/local/system/folder_names.h"
#include "platform/local/system/library_error.h"

#include <sqlite3.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

namespace local {

namespace {

constexpr const char* stateName = "backup.state";
constexpr std::string_view stateTitle = "A backup of a photo library, made by photos-kit backup.";

LibraryError refused(const std::string& why) {
    return {posixErrorDomain, EPERM, why + " Nothing was changed."};
}

bool hasBytes(int folder, const std::string& name) {
    struct stat file = {};
    return fstatat(folder, name.c_str(), &file, AT_SYMLINK_NOFOLLOW) == 0 && file.st_size > 0;
}

// Nobody may have the catalogue open in this process: closing the file would drop SQLite's locks.
std::string hashOfCatalogue(int folder, const std::string& path) {
    const UniqueFd file(openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    ContentHasher hasher;
    std::array<std::uint8_t, 64 * 1024> chunk;
    ssize_t got = file ? 1 : -1;
    while (got > 0) {
        got = read(file.get(), chunk.data(), chunk.size());
        if (got > 0)
            hasher.take(chunk.data(), static_cast<std::size_t>(got));
    }
    if (got < 0)
        throw systemError("The catalogue of the backup could not be read", errno);
    return hexadecimal(hasher.hash());
}

void removeAllIn(int folder, const std::string& path) {
    for (const std::string& name : namesIn(folder, path))
        unlinkat(folder, std::string(path).append("/").append(name).c_str(), 0);
}

// Holds a catalogue that nobody else has open.
class ExclusiveCatalogue {
public:
    explicit ExclusiveCatalogue(int folder) {
        const std::string name = "file:/proc/self/fd/" + std::to_string(folder) + "/library.db";
        int code = sqlite3_open_v2(name.c_str(), &database_,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX,
                                   catalogueVfsName());
        if (code == SQLITE_OK)
            code =
                sqlite3_exec(database_, "PRAGMA locking_mode=EXCLUSIVE; BEGIN IMMEDIATE; ROLLBACK;",
                             nullptr, nullptr, nullptr);
        if (code == SQLITE_OK)
            return;
        sqlite3_close_v2(database_);
        throw refused((code & 0xff) == SQLITE_BUSY
                          ? "Somebody has the backup open, so its catalogue cannot be replaced."
                          : "The catalogue of the backup cannot be opened.");
    }
    ~ExclusiveCatalogue() { sqlite3_close_v2(database_); }
    ExclusiveCatalogue(const ExclusiveCatalogue&) = delete;
    ExclusiveCatalogue& operator=(const ExclusiveCatalogue&) = delete;

private:
    sqlite3* database_ = nullptr;
};

} // namespace

BackupFolder::BackupFolder(const std::string& path, int library) : path_(path) {
    requirePlace(library);
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        throw systemError("The folder " + path + " could not be made", errno);
    folder_.reset(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder_)
        throw systemError("The folder " + path + " could not be opened", errno);
    requireOurs();
    makeNameDurable();
    removeAllIn(folder_.get(), "incoming"); // copies that an interrupted backup did not finish
}

// Before anything is made.
void BackupFolder::requirePlace(int library) const {
    const UniqueFd nearest = nearestFolder(path_);
    if (!nearest)
        throw systemError("The folder " + path_ + " could not be opened", errno);
    const auto isIn = [](int folder, int other) {
        const auto identity = identityOf(other);
        return identity && isAtOrAbove(*identity, folder);
    };
    if (isIn(nearest.get(), library))
        throw refused("The backup cannot lie inside the library.");
    struct stat there = {};
    const bool missing = stat(path_.c_str(), &there) != 0 && errno == ENOENT;
    if (isIn(library, nearest.get()) && !missing)
        throw refused("The library lies inside " + path_ + ".");
}

// Whoever made it: an earlier attempt may have ended before this. What cannot be opened cannot be
// synced; then the folder was there before.
void BackupFolder::makeNameDurable() const {
    const UniqueFd parent(openat(folder_.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent ? fsync(parent.get()) != 0 && errno != EINVAL : errno != EACCES)
        throw systemError("The folder " + path_ + " could not be made durable", errno);
}

void BackupFolder::requireOurs() {
    std::vector<std::string> entries = namesIn(folder_.get(), ".");
    const bool ours = std::find(entries.begin(), entries.end(), stateName) != entries.end();
    std::erase(entries, "lost+found"); // of a whole disk
    if (!ours && std::find(entries.begin(), entries.end(), "library.db") != entries.end())
        throw refused(path_ + " is a photo library of its own and no backup.");
    if (!ours && !entries.empty())
        throw refused(path_ + " holds something else; a backup needs a folder of its own.");
    state_.reset(openat(folder_.get(), stateName, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!state_)
        throw systemError("The folder " + path_ + " could not be written to", errno);
    if (flock(state_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw refused("Another process is backing up into " + path_ + ".");
    if (holdsCatalogue())
        requireUnchanged();
    else
        writeState({});
}

void BackupFolder::requireUnchanged() const {
    if (hasBytes(folder_.get(), "library.db-wal"))
        throw refused(path_ + " is in use as a photo library, or was, and has changed since it was "
                              "backed up into.");
    std::array<char, 4096> text{};
    const ssize_t length = pread(state_.get(), text.data(), text.size(), 0);
    const std::string_view known(text.data(),
                                 static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    if (known.find(hashOfCatalogue(folder_.get(), "library.db")) == std::string_view::npos)
        throw refused(path_ + " was used as a photo library since it was backed up into, and has "
                              "changed.");
}

bool BackupFolder::holdsCatalogue() const {
    return hasBytes(folder_.get(), "library.db");
}

void BackupFolder::writeState(const std::vector<std::string>& catalogues) const {
    std::string text = std::string(stateTitle) + "\n";
    for (const std::string& hash : catalogues)
        text += "catalogue " + hash + "\n";
    text.resize(std::max<std::size_t>(text.size(), 256), '\n');
    // In one write, within one block of the disk.
    if (pwrite(state_.get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()) ||
        fsync(state_.get()) != 0)
        throw systemError("The state of the backup could not be written", errno);
}

UniqueFd BackupFolder::beginCatalogue() const {
    removeAllIn(folder_.get(), nextCatalogueFolder);
    if (mkdirat(folder_.get(), nextCatalogueFolder, 0700) != 0 && errno != EEXIST)
        throw systemError("The place for the next catalogue could not be made", errno);
    UniqueFd made(openat(folder_.get(), nextCatalogueFolder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!made)
        throw systemError("The place for the next catalogue could not be opened", errno);
    return made;
}

void BackupFolder::publish() {
    const std::string next = std::string(nextCatalogueFolder) + "/library.db";
    std::vector<std::string> known{hashOfCatalogue(folder_.get(), next)};
    {
        std::unique_ptr<ExclusiveCatalogue> old;
        if (holdsCatalogue()) {
            known.push_back(hashOfCatalogue(folder_.get(), "library.db"));
            old = std::make_unique<ExclusiveCatalogue>(folder_.get());
        }
        writeState(known); // whichever of the two a power failure leaves
        // A log of the old catalogue would be taken for the new one's.
        if (hasBytes(folder_.get(), "library.db-wal"))
            throw refused("The backup was changed meanwhile.");
        for (const char* beside : {"library.db-wal", "library.db-shm"}) {
            if (unlinkat(folder_.get(), beside, 0) != 0 && errno != ENOENT)
                throw systemError("The old catalogue of the backup could not be replaced", errno);
        }
        if (renameat(folder_.get(), next.c_str(), folder_.get(), "library.db") != 0 ||
            fsync(folder_.get()) != 0)
            throw systemError("The catalogue of the backup could not be replaced", errno);
    }
    writeState({known.front()});
    removeAllIn(folder_.get(), nextCatalogueFolder);
    unlinkat(folder_.get(), nextCatalogueFolder, AT_REMOVEDIR);
}

} // namespace local
