#include "platform/local/maintenance/backup_files.h"
#include "platform/local/system/write_all.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>

namespace local {

namespace {

[[noreturn]] void backupFailed(const std::string& what, int error) {
    throw systemError("The backup could not be written (" + what + ")", error);
}

std::string shelfOf(const NamedFile& file) {
    return std::string(folderOf(file.kind)) + "/" + file.name.substr(0, 2);
}

UniqueFd openRegular(int folder, const std::string& path) {
    UniqueFd file(openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status = {};
    if (file && (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)))
        file.reset();
    return file;
}

bool isRight(int file, const NamedFile& wanted, const std::function<bool()>& stop) {
    try {
        return hasContent(file, wanted.hash, wanted.size, stop);
    } catch (const LibraryError&) {
        return false;
    }
}

} // namespace

bool BackupFiles::holds(const NamedFile& file, bool check, const std::function<bool()>& stop) {
    struct stat status = {};
    if (fstatat(backup_, file.path().c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISREG(status.st_mode) || status.st_size != file.size)
        return false;
    if (check) {
        const UniqueFd opened = openRegular(backup_, file.path());
        if (!opened || !isRight(opened.get(), file, stop))
            return false;
    }
    noteFolders(file);
    return true;
}

BackupFiles::Taken BackupFiles::take(int library, const NamedFile& file, bool link,
                                     const std::function<bool()>& stop) {
    const UniqueFd source = openRegular(library, file.path());
    if (!source)
        return errno == ENOENT ? Taken::missing : Taken::unreadable;
    const std::string part = "incoming/" + file.name;
    if (unlinkat(backup_, part.c_str(), 0) != 0 && errno != ENOENT)
        backupFailed("tidying up", errno);
    Taken taken = Taken::linked;
    if (!link || !tryToLink(library, file, part))
        taken = copy(source.get(), part);
    if (taken == Taken::unreadable)
        return taken;
    const UniqueFd written = openRegular(backup_, part);
    if (!written)
        backupFailed("reading back", errno);
    // So that it is read from the disk.
    posix_fadvise(written.get(), 0, 0, POSIX_FADV_DONTNEED);
    const bool right = isRight(written.get(), file, stop);
    if (!right && stop && stop())
        return Taken::stopped;
    if (right) {
        place(file, part);
        return taken;
    }
    if (isRight(source.get(), file, nullptr))
        backupFailed("what was written reads otherwise", EIO);
    setAside(file, part);
    return Taken::damaged;
}

BackupFiles::Taken BackupFiles::copy(int source, const std::string& part) const {
    const UniqueFd target(
        openat(backup_, part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0400));
    if (!target)
        backupFailed("creating a file", errno);
    // Never by sharing blocks where the file system could: damage to one would be damage to both.
    std::array<std::uint8_t, 256 * 1024> chunk;
    posix_fadvise(source, 0, 0, POSIX_FADV_SEQUENTIAL);
    for (;;) {
        const ssize_t got = read(source, chunk.data(), chunk.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return Taken::unreadable;
        if (got == 0)
            break;
        if (!writeAll(target.get(), chunk.data(), static_cast<std::size_t>(got)))
            backupFailed("writing", errno);
    }
    if (fsync(target.get()) != 0)
        backupFailed("writing through", errno);
    return Taken::copied;
}

// Another file system, or one without links: false.
bool BackupFiles::tryToLink(int library, const NamedFile& file, const std::string& part) const {
    return linkat(library, file.path().c_str(), backup_, part.c_str(), 0) == 0;
}

void BackupFiles::place(const NamedFile& file, const std::string& part) {
    const std::string shelf = shelfOf(file);
    if (mkdirat(backup_, shelf.c_str(), 0700) != 0 && errno != EEXIST)
        backupFailed("making a folder", errno);
    if (renameat(backup_, part.c_str(), backup_, file.path().c_str()) != 0)
        backupFailed("moving a file into place", errno);
    noteFolders(file);
}

void BackupFiles::noteFolders(const NamedFile& file) {
    changed_.emplace(folderOf(file.kind));
    changed_.insert(shelfOf(file));
}

// One such copy of each file is enough.
void BackupFiles::setAside(const NamedFile& file, const std::string& part) const {
    mkdirat(backup_, "quarantine", 0700);
    const std::string aside = "quarantine/" + file.name;
    if (renameat2(backup_, part.c_str(), backup_, aside.c_str(), RENAME_NOREPLACE) != 0)
        unlinkat(backup_, part.c_str(), 0);
}

void BackupFiles::sync() {
    const FileStore store(backup_);
    for (const std::string& folder : changed_) {
        if (!store.syncFolder(folder))
            backupFailed("writing through", errno);
    }
    changed_.clear();
}

} // namespace local
