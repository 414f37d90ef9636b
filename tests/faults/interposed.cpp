// The functions of libc that a library's files go through. Defined in the program itself they
// stand before those of libc for everything that is linked with it: the embedded library, SQLite,
// libstdc++.
#include "tests/faults/fault_plan.h"
#include "tests/faults/raw_calls.h"

#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <sys/file.h>

namespace faults {

namespace {

// The absolute path of `path` as a call with this folder's descriptor means it. What is named
// through /proc/self/fd is resolved; nothing else needs to be.
std::string meant(int folder, const char* path) {
    constexpr std::string_view descriptors = "/proc/self/fd/";
    const std::string text = path;
    if (text.starts_with(descriptors)) {
        const std::size_t end = std::min(text.find('/', descriptors.size()), text.size());
        return raw::pathOf(std::atoi(path + descriptors.size())) + text.substr(end);
    }
    if (text.starts_with('/') || folder == AT_FDCWD)
        return text;
    return raw::pathOf(folder) + (text == "." ? "" : "/" + text);
}

// The system's answer, or -1 where the operation is to fail.
long attempt(const Operation& operation, const std::string& path, auto... arguments) {
    return fails(operation, path) ? -1 : syscall(operation.call, arguments...);
}
long attempt(const Operation& operation, int file, auto... arguments) {
    return attempt(operation, raw::pathOf(file), file, arguments...);
}

long changeName(const Operation& operation, const std::string& path, const std::string& from,
                auto... arguments) {
    const std::scoped_lock lock(oneAtATime());
    if (fails(operation, path))
        return -1;
    const auto change = [&] { return syscall(operation.call, arguments...); };
    return watches(path) || watches(from) ? noteName(path, from, change) : change();
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
        noteWrite(file, offset, offset + static_cast<off_t>(size));
    return syscall(operation.call, file, bytes, size, offset);
}

} // namespace

} // namespace faults

using namespace faults;

// A function of libc that is named as the system's call, with what that does and what it is handed
// on to.
#define CALL(Result, name, does, parameters, ...)                                                  \
    Result name parameters {                                                                       \
        const Operation operation{#name, does, SYS_##name};                                        \
        return static_cast<Result>(__VA_ARGS__);                                                   \
    }
// A function that asks for a part of what another one does.
#define PART(signature, ...)                                                                       \
    int signature noexcept {                                                                       \
        return __VA_ARGS__;                                                                        \
    }
// One that has another name here. Those with `...` in their declarations take what may follow as
// a plain argument: it lies in the same place.
#define SAME(name, function) asm(".globl " #name "\n.set " #name ", " #function)

extern "C" {

long openAt(int folder, const char* name, int flags, mode_t mode) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    if ((flags & O_CREAT) != 0 && raw::status(path).st_ino == 0)
        return changeName({"open", makesName, SYS_openat}, path, "", folder, name, flags, mode);
    if ((flags & O_TRUNC) != 0 && watches(path))
        std::abort(); // nothing in the library does this, and its noting is not written
    return attempt({"open", namesPath, SYS_openat}, path, folder, name, flags, mode);
}
long openPath(const char* path, int flags, mode_t mode) {
    return openAt(AT_FDCWD, path, flags, mode);
}
SAME(openat, openAt);
SAME(open, openPath);
SAME(open64, openPath);

CALL(int, mkdirat, makesName, (int folder, const char* path, mode_t mode) noexcept,
     changeName(operation, meant(folder, path), "", folder, path, mode))
CALL(int, unlinkat, namesPath | changes, (int folder, const char* path, int flags) noexcept,
     changeName(operation, meant(folder, path), "", folder, path, flags))
CALL(int, linkat, makesName,
     (int folder, const char* from, int other, const char* to, int flags) noexcept,
     changeName(operation, meant(other, to), "", folder, from, other, to, flags))
CALL(int, renameat2, makesName,
     (int folder, const char* from, int other, const char* to, unsigned flags) noexcept,
     changeName(operation, meant(other, to), meant(folder, from), folder, from, other, to, flags))
PART(mkdir(const char* path, mode_t mode), mkdirat(AT_FDCWD, path, mode))
PART(unlink(const char* path), unlinkat(AT_FDCWD, path, 0))
PART(renameat(int folder, const char* from, int other, const char* to),
     renameat2(folder, from, other, to, 0))
PART(rename(const char* from, const char* to), renameat2(AT_FDCWD, from, AT_FDCWD, to, 0))

CALL(int, newfstatat, namesPath, (int folder, const char* path, struct stat* found, int flags),
     attempt(operation, meant(folder, path), folder, path, found, flags))
CALL(int, faccessat, namesPath, (int folder, const char* path, int mode, int) noexcept,
     attempt(operation, meant(folder, path), folder, path, mode))
CALL(int, fstat, reads, (int file, struct stat* found) noexcept, attempt(operation, file, found))
PART(stat(const char* path, struct stat* found), newfstatat(AT_FDCWD, path, found, 0))
PART(lstat(const char* path, struct stat* found),
     newfstatat(AT_FDCWD, path, found, AT_SYMLINK_NOFOLLOW))
PART(access(const char* path, int mode), faccessat(AT_FDCWD, path, mode, 0))
SAME(fstatat, newfstatat);
SAME(stat64, stat);
SAME(lstat64, lstat);
SAME(fstat64, fstat);

CALL(ssize_t, read, reads, (int file, void* bytes, std::size_t size),
     attempt(operation, file, bytes, size))
CALL(ssize_t, pread64, reads, (int file, void* bytes, std::size_t size, off_t offset),
     attempt(operation, file, bytes, size, offset))
CALL(ssize_t, write, needsSpace | writesBytes | changes,
     (int file, const void* bytes, std::size_t size),
     writeAt(operation, file, bytes, size, syscall(SYS_lseek, file, 0, SEEK_CUR)))
CALL(ssize_t, pwrite64, needsSpace | writesBytes | changes,
     (int file, const void* bytes, std::size_t size, off_t offset),
     writeAt(operation, file, bytes, size, offset))
SAME(pread, pread64);
SAME(pwrite, pwrite64);

long setLength(int file, off_t size) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = raw::pathOf(file);
    if (fails({"ftruncate", needsSpace | changes, SYS_ftruncate}, path))
        return -1;
    if (watches(path))
        noteWrite(file, size, raw::status(file).st_size);
    return syscall(SYS_ftruncate, file, size);
}
SAME(ftruncate, setLength);
SAME(ftruncate64, setLength);

// The file system below is memory, or is left alone: what counts is noted.
long syncFile(int file) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = raw::pathOf(file);
    if (!watches(path))
        return syscall(SYS_fsync, file);
    const bool failed = fails({"sync", needsSpace | changes, SYS_fsync}, path);
    noteSync(file, !failed);
    return failed ? -1 : 0;
}
SAME(fsync, syncFile);
SAME(fdatasync, syncFile);

// To unlock is never refused.
CALL(int, flock, (command & LOCK_UN) != 0 ? neverFails : locks, (int file, int command) noexcept,
     attempt(operation, file, command))
long controlFile(int file, int command, void* argument) {
    const bool isLock = command == F_SETLK || command == F_SETLKW;
    const bool unlocks = isLock && static_cast<const struct flock*>(argument)->l_type == F_UNLCK;
    const unsigned does = isLock && !unlocks ? locks : neverFails;
    return attempt({"fcntl", does, SYS_fcntl}, file, command, argument);
}
SAME(fcntl, controlFile);
SAME(fcntl64, controlFile);

// The system hands over many names at once: it is asked for the first one, and after the last.
dirent* readdir(DIR* folder) {
    static auto* const next = reinterpret_cast<dirent* (*)(DIR*)>(dlsym(RTLD_NEXT, "readdir"));
    const bool isFirst = telldir(folder) == 0;
    dirent* const found = next(folder);
    const bool asks = isFirst || !found;
    return asks && fails({"readdir", reads, SYS_getdents64}, raw::pathOf(dirfd(folder))) ? nullptr
                                                                                         : found;
}
SAME(readdir64, readdir);

} // extern "C"
