// The functions of libc that a library's files go through. Defined in the program itself they
// stand before those of libc for everything that is linked with it: the embedded library, SQLite,
// libstdc++. Those with 64 in their names are the same ones here.
#include "tests/faults/fault_plan.h"
#include "tests/faults/power_cut.h"
#include "tests/faults/raw_calls.h"

#include <cerrno>
#include <cstdarg>
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

// The system's answer, or -1 where the operation is to fail.
long attempt(const Operation& operation, const std::string& path, auto... arguments) {
    return fails(operation, path) ? -1 : raw::call(operation.call, arguments...);
}
long attempt(const Operation& operation, int file, auto... arguments) {
    return attempt(operation, raw::pathOf(file), file, arguments...);
}

long changeName(const Operation& operation, NameChange change, auto... arguments) {
    const std::scoped_lock lock(oneAtATime());
    if (fails(operation, change.path))
        return -1;
    const bool isNoted = watches(change.path) || watches(change.from);
    if (isNoted)
        powerCut().willChange(change);
    const long done = raw::call(operation.call, arguments...);
    if (done >= 0 && isNoted)
        powerCut().changed(change);
    return done;
}

long openFile(int folder, const char* name, int flags, mode_t mode) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    if ((flags & O_CREAT) != 0 && raw::status(path).st_ino == 0)
        return changeName({"open", makesName, SYS_openat}, {.path = path}, folder, name, flags,
                          mode);
    if ((flags & O_TRUNC) != 0 && watches(path))
        std::abort(); // nothing in the library does this, and its noting is not written
    return attempt({"open", namesPath, SYS_openat}, path, folder, name, flags, mode);
}

long writeAt(const Operation& operation, int file, const void* bytes, std::size_t size,
             off_t offset) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = raw::pathOf(file);
    if (fails(operation, path)) {
        if (errno != halved)
            return -1;
        size -= size / 2;
    }
    if (watches(path))
        powerCut().willWrite(file, offset, offset + static_cast<off_t>(size));
    return raw::call(operation.call, file, bytes, size, offset);
}

long setLength(int file, off_t size) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = raw::pathOf(file);
    if (fails({"ftruncate", needsSpace | changes, SYS_ftruncate}, path))
        return -1;
    if (watches(path))
        powerCut().willWrite(file, size, raw::status(file).st_size);
    return raw::call(SYS_ftruncate, file, size);
}

// The file system below is memory, or is left alone: what counts is noted.
long sync(int file) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = raw::pathOf(file);
    if (!watches(path))
        return raw::call(SYS_fsync, file);
    const bool failed = fails({"sync", needsSpace | changes, SYS_fsync}, path);
    powerCut().synced(file, !failed);
    return failed ? -1 : 0;
}

// A file is closed whatever is reported.
long closeFile(int file) {
    const std::string path = raw::pathOf(file);
    const long done = raw::call(SYS_close, file);
    return fails({"close", reads, SYS_close}, path) ? -1 : done;
}

} // namespace

} // namespace faults

using namespace faults;

// A function of libc, and what it is handed on to: a system call with what it does, or a function
// above.
#define FUNCTION(Result, signature, ...)                                                           \
    Result signature {                                                                             \
        return static_cast<Result>(__VA_ARGS__);                                                   \
    }
// The last argument of a function that may be called without it; the system looks at it only
// where it must be there.
#define ARGUMENT(Type, name, last)                                                                 \
    std::va_list more;                                                                             \
    va_start(more, last);                                                                          \
    const auto name = va_arg(more, Type);                                                          \
    va_end(more)
#define SAME(other, function) asm(".globl " #other "\n.set " #other ", " #function)

extern "C" {

int open(const char* path, int flags, ...) {
    ARGUMENT(mode_t, mode, flags);
    return static_cast<int>(openFile(AT_FDCWD, path, flags, mode));
}
int openat(int folder, const char* path, int flags, ...) {
    ARGUMENT(mode_t, mode, flags);
    return static_cast<int>(openFile(folder, path, flags, mode));
}
FUNCTION(int, mkdirat(int folder, const char* path, mode_t mode) noexcept,
         changeName({"mkdir", makesName, SYS_mkdirat}, {meant(folder, path)}, folder, path, mode))
FUNCTION(int, mkdir(const char* path, mode_t mode) noexcept, mkdirat(AT_FDCWD, path, mode))
FUNCTION(int, unlinkat(int folder, const char* path, int flags) noexcept,
         changeName({"unlink", namesPath | changes, SYS_unlinkat}, {meant(folder, path)}, folder,
                    path, flags))
FUNCTION(int, unlink(const char* path) noexcept, unlinkat(AT_FDCWD, path, 0))
FUNCTION(int, rmdir(const char* path) noexcept, unlinkat(AT_FDCWD, path, AT_REMOVEDIR))
FUNCTION(int,
         renameat2(int folder, const char* from, int other, const char* to,
                   unsigned flags) noexcept,
         changeName({"rename", makesName, SYS_renameat2}, {meant(other, to), meant(folder, from)},
                    folder, from, other, to, flags))
FUNCTION(int, renameat(int folder, const char* from, int other, const char* to) noexcept,
         renameat2(folder, from, other, to, 0))
FUNCTION(int, rename(const char* from, const char* to) noexcept,
         renameat2(AT_FDCWD, from, AT_FDCWD, to, 0))
FUNCTION(int, linkat(int folder, const char* from, int other, const char* to, int flags) noexcept,
         changeName({"link", makesName, SYS_linkat}, {meant(other, to)}, folder, from, other, to,
                    flags))
FUNCTION(int, link(const char* from, const char* to) noexcept,
         linkat(AT_FDCWD, from, AT_FDCWD, to, 0))
FUNCTION(int, fstatat(int folder, const char* path, struct stat* found, int flags) noexcept,
         attempt({"stat", namesPath, SYS_newfstatat}, meant(folder, path), folder, path, found,
                 flags))
FUNCTION(int, stat(const char* path, struct stat* found) noexcept,
         fstatat(AT_FDCWD, path, found, 0))
FUNCTION(int, lstat(const char* path, struct stat* found) noexcept,
         fstatat(AT_FDCWD, path, found, AT_SYMLINK_NOFOLLOW))
FUNCTION(int, fstat(int file, struct stat* found) noexcept,
         attempt({"stat", reads, SYS_newfstatat}, file, "", found, AT_EMPTY_PATH))
FUNCTION(int, faccessat(int folder, const char* path, int mode, int) noexcept,
         attempt({"access", namesPath, SYS_faccessat}, meant(folder, path), folder, path, mode))
FUNCTION(int, access(const char* path, int mode) noexcept, faccessat(AT_FDCWD, path, mode, 0))
FUNCTION(ssize_t, read(int file, void* bytes, std::size_t size),
         attempt({"read", reads, SYS_read}, file, bytes, size))
FUNCTION(ssize_t, pread(int file, void* bytes, std::size_t size, off_t offset),
         attempt({"read", reads, SYS_pread64}, file, bytes, size, offset))
FUNCTION(ssize_t, write(int file, const void* bytes, std::size_t size),
         writeAt({"write", needsSpace | writesBytes | changes, SYS_write}, file, bytes, size,
                 raw::call(SYS_lseek, file, 0, SEEK_CUR)))
FUNCTION(ssize_t, pwrite(int file, const void* bytes, std::size_t size, off_t offset),
         writeAt({"write", needsSpace | writesBytes | changes, SYS_pwrite64}, file, bytes, size,
                 offset))
FUNCTION(int, ftruncate(int file, off_t size) noexcept, setLength(file, size))
FUNCTION(int, fsync(int file), sync(file))
FUNCTION(int, close(int file), closeFile(file))
FUNCTION(int, flock(int file, int command) noexcept,
         (command & LOCK_UN) != 0 ? raw::call(SYS_flock, file, command)
                                  : attempt({"flock", locks, SYS_flock}, file, command))
void* mmap(void* where, std::size_t length, int protection, int flags, int file,
           off_t offset) noexcept {
    if (file >= 0 && fails({"mmap", reads, SYS_mmap}, raw::pathOf(file)))
        return MAP_FAILED;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the system answers
    return reinterpret_cast<void*>(
        raw::call(SYS_mmap, where, length, protection, flags, file, offset));
}
int fcntl(int file, int command, ...) {
    ARGUMENT(void*, argument, command);
    const bool isLock = command == F_SETLK || command == F_SETLKW;
    if (isLock && static_cast<const struct flock*>(argument)->l_type == F_UNLCK)
        return static_cast<int>(raw::call(SYS_fcntl, file, command, argument)); // never refused
    return static_cast<int>(
        attempt({"fcntl", isLock ? locks : reads, SYS_fcntl}, file, command, argument));
}
int ioctl(int file, unsigned long request, ...) noexcept {
    ARGUMENT(void*, argument, request);
    if (request == FICLONE && watches(raw::pathOf(file))) {
        errno = EOPNOTSUPP; // so that a copy goes through write, wherever the sweep is run
        return -1;
    }
    return static_cast<int>(raw::call(SYS_ioctl, file, request, argument));
}
dirent* readdir(DIR* folder) {
    static auto* const next = reinterpret_cast<dirent* (*)(DIR*)>(dlsym(RTLD_NEXT, "readdir"));
    return fails({"readdir", reads, SYS_getdents64}, raw::pathOf(dirfd(folder))) ? nullptr
                                                                                 : next(folder);
}

SAME(fdatasync, fsync);
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
