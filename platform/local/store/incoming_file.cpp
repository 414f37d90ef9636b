// The way of one file into the store: its bytes are written, it is renamed to its place, and its
// bytes, its lock file's name and its own are synced; only then may the catalogue name it. The
// rename comes before the syncs so that a journalling file system commits all of it at once; a
// crash in between leaves a file that nobody names, with its lock file.
#include "platform/local/store/incoming_file.h"
#include "platform/local/system/write_all.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <memory>

namespace local {

namespace {

constexpr std::size_t chunkSize = std::size_t{1} << 20;

std::atomic<bool (*)()> stopAsked{nullptr};

void endWhenStopped() {
    bool (*const stop)() = stopAsked;
    if (stop && stop())
        throw LibraryError(posixErrorDomain, ECANCELED, "The copy was stopped.");
}

[[noreturn]] void copyFailed(const std::string& what, int error) {
    throw systemError("The file could not be copied into the photo library (" + what + ")", error);
}

std::size_t readChunk(int source, std::uint8_t* buffer) {
    for (;;) {
        const ssize_t got = read(source, buffer, chunkSize);
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR)
            copyFailed("reading", errno);
    }
}

} // namespace

void stopCopiesWhen(bool (*stop)()) {
    stopAsked = stop;
}

IncomingFile::IncomingFile(const FileStore& store, Stored kind, const std::string& name, int source)
    : store_(store), kind_(kind) {
    store.requirePresent(kind);
    partPath_ = "incoming/" + name;
    lockPath_ = partPath_ + std::string(lockFileEnding(kind));
    root_ = folderOf(kind);
    finalFolder_ = root_ + "/" + name.substr(0, 2);
    finalPath_ = pathOf(kind, name);
    makeLockFile();
    try {
        const int part = openat(store_.folder(), partPath_.c_str(),
                                O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0400);
        if (part < 0)
            copyFailed("creating", errno);
        writable_.reset(part);
        readable_.reset(openat(store_.folder(), partPath_.c_str(), O_RDONLY | O_CLOEXEC));
        if (!readable_)
            copyFailed("opening", errno);

        // Where the file system can share the blocks, the copy costs nothing but its hash.
        const bool shared = ioctl(part, FICLONE, source) == 0;
        ContentHasher hasher;
        const std::unique_ptr<std::uint8_t[]> chunk(new std::uint8_t[chunkSize]);
        const int from = shared ? readable_.get() : source;
        posix_fadvise(from, 0, 0, POSIX_FADV_SEQUENTIAL);
        while (const std::size_t got = readChunk(from, chunk.get())) {
            endWhenStopped();
            hasher.take(chunk.get(), got);
            if (!shared) {
                if (!writeAll(part, chunk.get(), got))
                    copyFailed("writing", errno);
                // Lets the disk begin while the next chunk is read.
                sync_file_range(part, size_, static_cast<off_t>(got), SYNC_FILE_RANGE_WRITE);
            }
            size_ += static_cast<std::int64_t>(got);
        }
        lseek(readable_.get(), 0, SEEK_SET);
        hash_ = hasher.hash();
    } catch (...) {
        remove();
        throw;
    }
}

IncomingFile::~IncomingFile() {
    if (removable_)
        remove();
}

void IncomingFile::makeLockFile() {
    for (;;) {
        lockFile_.reset(openat(store_.folder(), lockPath_.c_str(),
                               O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!lockFile_)
            copyFailed("creating", errno);
        // A sweeping process may take the lock file for a dead one's before it is locked here. It
        // removes by name, so this waits until it is through, and then begins again.
        while (flock(lockFile_.get(), LOCK_EX) != 0) {
            if (errno != EINTR)
                copyFailed("locking", errno);
        }
        if (isLinked(lockFile_.get()))
            return;
    }
}

void IncomingFile::place() {
    const bool newRoot = makeFolder(root_);
    makeFolder(finalFolder_);
    if (renameat(store_.folder(), partPath_.c_str(), store_.folder(), finalPath_.c_str()) != 0)
        copyFailed("renaming", errno);
    placed_ = true;
    if (fdatasync(writable_.get()) != 0)
        copyFailed("writing through", errno);
    if (close(writable_.release()) != 0)
        copyFailed("closing", errno);
    makeDurable("incoming"); // before the file's name: without its lock file nobody would find it
    makeDurable(finalFolder_);
    if (!store_.makeShelfDurable(kind_, finalFolder_.substr(root_.size() + 1)))
        copyFailed("syncing its folder", errno);
    if (newRoot)
        makeDurable(".");
}

bool IncomingFile::makeFolder(const std::string& path) const {
    if (mkdirat(store_.folder(), path.c_str(), 0700) == 0)
        return true;
    if (errno != EEXIST)
        copyFailed("making its folder", errno);
    return false;
}

void IncomingFile::makeDurable(const std::string& folder) const {
    if (!store_.syncFolder(folder))
        copyFailed("syncing its folder", errno);
}

void IncomingFile::committed() {
    unlinkat(store_.folder(), lockPath_.c_str(), 0);
    lockFile_.reset();
}

void IncomingFile::remove() noexcept {
    const std::string& path = placed_ ? finalPath_ : partPath_;
    const bool removed = unlinkat(store_.folder(), path.c_str(), 0) == 0 || errno == ENOENT;
    // As long as a placed file is there or could come back, its lock file stays for a sweep to
    // find.
    if (removed && (!placed_ || store_.syncFolder(finalFolder_)))
        unlinkat(store_.folder(), lockPath_.c_str(), 0);
    lockFile_.reset();
}

} // namespace local
