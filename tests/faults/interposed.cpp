// The functions of libc that a library's files go through. Defined in the program itself they
// stand before those of libc for everything that is linked with it: the embedded library, SQLite,
// libstdc++. Those with 64 in their names are the same ones here.
#include "tests/faults/fault_plan.h"
#include "tests/faults/power_cut.h"
#include "tests/faults/raw_calls.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

namespace faults {

namespace {

// The absolute path of `path` as a call with this folder's descriptor means it. What is named
// through /proc/self/fd is resolved; nothing else needs to be.
std::string meant(int folder, const char* path) {
    constexpr std::string_view descriptors = "/proc/self/fd/";
    std::string text = path;
    if (text.starts_with(descriptors)) {
        const std::size_t end = std::min(text.find('/', descriptors.size()), text.size());
        const int file = std::atoi(text.c_str() + descriptors.size());
        return raw::pathOf(file) + text.substr(end);
    }
    if (text.starts_with('/') || folder == AT_FDCWD)
        return text;
    std::string place = raw::pathOf(folder);
    return text == "." ? place : place + "/" + text;
}

bool failsOn(const char* function, int file, unsigned does) {
    return fails(function, raw::pathOf(file), does);
}

bool isWatched(int file) {
    return watches(raw::pathOf(file));
}

int openFile(int folder, const char* name, int flags, mode_t mode) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    const bool creates = (flags & O_CREAT) != 0 && raw::inodeOf(path) == 0;
    if (fails("open", path, namesPath | (creates ? needsSpace | changes : reads)))
        return -1;
    const int file = static_cast<int>(raw::call(SYS_openat, folder, name, flags, mode));
    if (file < 0 || !watches(path))
        return file;
    if (creates)
        powerCut().made(path);
    else if ((flags & O_TRUNC) != 0)
        std::abort(); // nothing in the library does this, and its noting is not written
    return file;
}

int makeFolder(int folder, const char* name, mode_t mode) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    if (fails("mkdir", path, namesPath | needsSpace | changes))
        return -1;
    const int done = static_cast<int>(raw::call(SYS_mkdirat, folder, name, mode));
    if (done == 0 && watches(path))
        powerCut().made(path);
    return done;
}

int removeName(int folder, const char* name, int flags) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    if (fails("unlink", path, namesPath | changes))
        return -1;
    const bool isFolder = (flags & AT_REMOVEDIR) != 0;
    const bool isNoted = watches(path);
    const std::string aside = isNoted && !isFolder ? powerCut().keepAside(path) : "";
    const int done = static_cast<int>(raw::call(SYS_unlinkat, folder, name, flags));
    if (done == 0 && isNoted)
        powerCut().removed(path, aside, isFolder);
    return done;
}

int renameName(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    const std::scoped_lock lock(oneAtATime());
    const std::string source = meant(fromFolder, from);
    const std::string target = meant(toFolder, to);
    if (fails("rename", target, namesPath | needsSpace | changes))
        return -1;
    const bool isNoted = watches(source) || watches(target);
    const std::string aside = isNoted ? powerCut().keepAside(target) : "";
    const int done =
        static_cast<int>(raw::call(SYS_renameat2, fromFolder, from, toFolder, to, flags));
    if (done == 0 && isNoted)
        powerCut().renamed(source, target, aside);
    return done;
}

int linkName(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    const std::scoped_lock lock(oneAtATime());
    const std::string target = meant(toFolder, to);
    if (fails("link", target, namesPath | needsSpace | changes))
        return -1;
    const int done = static_cast<int>(raw::call(SYS_linkat, fromFolder, from, toFolder, to, flags));
    if (done == 0 && watches(target))
        powerCut().made(target);
    return done;
}

int readStatus(int folder, const char* name, void* found, int flags) {
    const bool ofOpenFile = *name == '\0' && (flags & AT_EMPTY_PATH) != 0;
    if (ofOpenFile ? failsOn("stat", folder, reads) : fails("stat", meant(folder, name), namesPath))
        return -1;
    return static_cast<int>(raw::call(SYS_newfstatat, folder, name, found, flags));
}

ssize_t writeAt(int file, const void* bytes, std::size_t size, off_t offset, bool moves) {
    const std::scoped_lock lock(oneAtATime());
    if (isWatched(file)) {
        if (failsOn("write", file, needsSpace | writesBytes | changes))
            return -1;
        size = lengthToWrite(size);
        powerCut().willWrite(file, offset, size);
    }
    return moves ? raw::call(SYS_write, file, bytes, size)
                 : raw::call(SYS_pwrite64, file, bytes, size, offset);
}

// The file system below is memory, or is left alone: what counts is noted.
int sync(long number, int file) {
    const std::scoped_lock lock(oneAtATime());
    if (!isWatched(file))
        return static_cast<int>(raw::call(number, file));
    const bool failed = failsOn("sync", file, needsSpace | changes);
    failed ? powerCut().syncFailed(file) : powerCut().synced(file);
    return failed ? -1 : 0;
}

int setLength(int file, off_t size) {
    const std::scoped_lock lock(oneAtATime());
    if (failsOn("ftruncate", file, needsSpace | changes))
        return -1;
    if (isWatched(file))
        powerCut().willTruncate(file, size);
    return static_cast<int>(raw::call(SYS_ftruncate, file, size));
}

} // namespace

} // namespace faults

using namespace faults;

#define SAME(other, function) asm(".globl " #other "\n.set " #other ", " #function)
#define MODE(name)                                                                                 \
    std::va_list more;                                                                             \
    va_start(more, flags);                                                                         \
    const mode_t name = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;                         \
    va_end(more)
#define ARGUMENT(name, last)                                                                       \
    std::va_list more;                                                                             \
    va_start(more, last);                                                                          \
    void* const name = va_arg(more, void*);                                                        \
    va_end(more)

// A function that hands its call on.
#define FORWARD(Result, name, parameters, call)                                                    \
    Result name parameters noexcept {                                                              \
        return call;                                                                               \
    }

extern "C" {

int open(const char* path, int flags, ...) {
    MODE(mode);
    return openFile(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    MODE(mode);
    return openFile(folder, path, flags, mode);
}
FORWARD(int, mkdir, (const char* path, mode_t mode), makeFolder(AT_FDCWD, path, mode))
FORWARD(int, mkdirat, (int folder, const char* path, mode_t mode), makeFolder(folder, path, mode))
FORWARD(int, unlink, (const char* path), removeName(AT_FDCWD, path, 0))
FORWARD(int, unlinkat, (int folder, const char* path, int flags), removeName(folder, path, flags))
FORWARD(int, rmdir, (const char* path), removeName(AT_FDCWD, path, AT_REMOVEDIR))
FORWARD(int, rename, (const char* from, const char* to),
        renameName(AT_FDCWD, from, AT_FDCWD, to, 0))
FORWARD(int, renameat, (int fromFolder, const char* from, int toFolder, const char* to),
        renameName(fromFolder, from, toFolder, to, 0))
FORWARD(int, renameat2,
        (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags),
        renameName(fromFolder, from, toFolder, to, flags))
FORWARD(int, link, (const char* from, const char* to), linkName(AT_FDCWD, from, AT_FDCWD, to, 0))
FORWARD(int, linkat, (int fromFolder, const char* from, int toFolder, const char* to, int flags),
        linkName(fromFolder, from, toFolder, to, flags))
FORWARD(int, stat, (const char* path, struct stat* found), readStatus(AT_FDCWD, path, found, 0))
FORWARD(int, lstat, (const char* path, struct stat* found),
        readStatus(AT_FDCWD, path, found, AT_SYMLINK_NOFOLLOW))
FORWARD(int, fstatat, (int folder, const char* path, struct stat* found, int flags),
        readStatus(folder, path, found, flags))
FORWARD(int, fstat, (int file, struct stat* found), readStatus(file, "", found, AT_EMPTY_PATH))
FORWARD(int, faccessat, (int folder, const char* path, int mode, int),
        fails("access", meant(folder, path), namesPath)
            ? -1
            : static_cast<int>(raw::call(SYS_faccessat, folder, path, mode)))
FORWARD(int, access, (const char* path, int mode), faccessat(AT_FDCWD, path, mode, 0))
FORWARD(int, ftruncate, (int file, off_t size), setLength(file, size))
FORWARD(int, flock, (int file, int command),
        (command & LOCK_UN) == 0 && failsOn("flock", file, locks)
            ? -1
            : static_cast<int>(raw::call(SYS_flock, file, command)))

ssize_t read(int file, void* bytes, std::size_t size) {
    return failsOn("read", file, reads) ? -1 : raw::call(SYS_read, file, bytes, size);
}
ssize_t pread(int file, void* bytes, std::size_t size, off_t offset) {
    return failsOn("read", file, reads) ? -1 : raw::call(SYS_pread64, file, bytes, size, offset);
}
ssize_t write(int file, const void* bytes, std::size_t size) {
    return writeAt(file, bytes, size, raw::call(SYS_lseek, file, 0, SEEK_CUR), true);
}
ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t offset) {
    return writeAt(file, bytes, size, offset, false);
}
int fsync(int file) {
    return sync(SYS_fsync, file);
}
int fdatasync(int file) {
    return sync(SYS_fdatasync, file);
}
int fcntl(int file, int command, ...) {
    ARGUMENT(argument, command);
    const bool locking = command == F_SETLK || command == F_SETLKW;
    // A lock can always be given back.
    const bool unlocking = locking && static_cast<const struct flock*>(argument)->l_type == F_UNLCK;
    if (!unlocking && failsOn("fcntl", file, locking ? locks : reads))
        return -1;
    return static_cast<int>(raw::call(SYS_fcntl, file, command, argument));
}
int ioctl(int file, unsigned long request, ...) noexcept {
    ARGUMENT(argument, request);
    if (request == FICLONE && isWatched(file)) {
        errno = EOPNOTSUPP; // so that a copy goes through write, wherever the sweep is run
        return -1;
    }
    return static_cast<int>(raw::call(SYS_ioctl, file, request, argument));
}
void* mmap(void* where, std::size_t length, int protection, int flags, int file,
           off_t offset) noexcept {
    if (file >= 0 && failsOn("mmap", file, reads))
        return MAP_FAILED;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the system answers
    return reinterpret_cast<void*>(
        raw::call(SYS_mmap, where, length, protection, flags, file, offset));
}
// A file is closed whatever is reported.
int close(int file) {
    const bool failed = failsOn("close", file, reads);
    const int error = errno;
    const int done = static_cast<int>(raw::call(SYS_close, file));
    if (failed)
        errno = error;
    return failed ? -1 : done;
}
dirent* readdir(DIR* folder) {
    static auto* const next = reinterpret_cast<dirent* (*)(DIR*)>(dlsym(RTLD_NEXT, "readdir"));
    return failsOn("readdir", dirfd(folder), reads) ? nullptr : next(folder);
}

SAME(open64, open);
SAME(stat64, stat);
SAME(lstat64, lstat);
SAME(fstat64, fstat);
SAME(pread64, pread);
SAME(pwrite64, pwrite);
SAME(ftruncate64, ftruncate);
SAME(fcntl64, fcntl);
SAME(mmap64, mmap);
SAME(readdir64, readdir);

} // extern "C"
