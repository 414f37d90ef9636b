// The functions of libc that take paths. Defined in the program itself they stand before those of
// libc for everything that is linked with it: the embedded library, SQLite, libstdc++.
#include "tests/faults/interposed.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <sys/file.h>

namespace faults {

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

namespace {

int openFile(const char* function, int folder, const char* name, int flags, mode_t mode) {
    const auto open = [&] {
        return static_cast<int>(raw::call(SYS_openat, folder, name, flags, mode));
    };
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    if (!watches(path))
        return open();
    const bool creates = (flags & O_CREAT) != 0 && raw::inodeOf(path) == 0;
    if (fails(function, path, namesPath | (creates ? needsSpace | changes : reads)))
        return -1;
    const int file = open();
    if (file >= 0 && creates)
        powerCut().made(path);
    if (file >= 0 && !creates && (flags & O_TRUNC) != 0)
        std::abort(); // nothing in the library does this, and its noting is not written
    return file;
}

mode_t modeOf(int flags, std::va_list arguments) {
    return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

int makeFolder(const char* function, int folder, const char* name, mode_t mode) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    if (watches(path) && fails(function, path, namesPath | needsSpace | changes))
        return -1;
    const int done = static_cast<int>(raw::call(SYS_mkdirat, folder, name, mode));
    if (done == 0 && watches(path))
        powerCut().made(path);
    return done;
}

int removeName(const char* function, int folder, const char* name, int flags) {
    const std::scoped_lock lock(oneAtATime());
    const std::string path = meant(folder, name);
    if (!watches(path))
        return static_cast<int>(raw::call(SYS_unlinkat, folder, name, flags));
    if (fails(function, path, namesPath | changes))
        return -1;
    const bool isFolder = (flags & AT_REMOVEDIR) != 0;
    const std::string aside = isFolder ? std::string() : powerCut().keepAside(path);
    const int done = static_cast<int>(raw::call(SYS_unlinkat, folder, name, flags));
    if (done == 0)
        powerCut().removed(path, aside, isFolder);
    return done;
}

int renameName(const char* function, int fromFolder, const char* from, int toFolder, const char* to,
               unsigned flags) {
    const std::scoped_lock lock(oneAtATime());
    const std::string source = meant(fromFolder, from);
    const std::string target = meant(toFolder, to);
    const bool watched = watches(source) || watches(target);
    if (watched && fails(function, target, namesPath | needsSpace | changes))
        return -1;
    const std::string aside = watched ? powerCut().keepAside(target) : std::string();
    const int done =
        static_cast<int>(raw::call(SYS_renameat2, fromFolder, from, toFolder, to, flags));
    if (done == 0 && watched)
        powerCut().renamed(source, target, aside);
    return done;
}

int linkName(const char* function, int fromFolder, const char* from, int toFolder, const char* to,
             int flags) {
    const std::scoped_lock lock(oneAtATime());
    const std::string target = meant(toFolder, to);
    if (watches(target) && fails(function, target, namesPath | needsSpace | changes))
        return -1;
    const int done = static_cast<int>(raw::call(SYS_linkat, fromFolder, from, toFolder, to, flags));
    if (done == 0 && watches(target))
        powerCut().made(target);
    return done;
}

int readStatus(const char* function, int folder, const char* name, void* found, int flags) {
    const std::string path =
        *name == '\0' && (flags & AT_EMPTY_PATH) != 0 ? raw::pathOf(folder) : meant(folder, name);
    if (watches(path) && fails(function, path, *name == '\0' ? reads : namesPath))
        return -1;
    return static_cast<int>(raw::call(SYS_newfstatat, folder, name, found, flags));
}

int askAccess(const char* function, int folder, const char* name, int mode) {
    const std::string path = meant(folder, name);
    if (watches(path) && fails(function, path, namesPath))
        return -1;
    return static_cast<int>(raw::call(SYS_faccessat, folder, name, mode));
}

} // namespace

} // namespace faults

using namespace faults;

extern "C" {

int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFile("open", AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFile("open", AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFile("openat", folder, path, flags, mode);
}

int mkdir(const char* path, mode_t mode) noexcept {
    return makeFolder("mkdir", AT_FDCWD, path, mode);
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
    return makeFolder("mkdirat", folder, path, mode);
}

int unlink(const char* path) noexcept {
    return removeName("unlink", AT_FDCWD, path, 0);
}
int unlinkat(int folder, const char* path, int flags) noexcept {
    return removeName("unlinkat", folder, path, flags);
}
int rmdir(const char* path) noexcept {
    return removeName("rmdir", AT_FDCWD, path, AT_REMOVEDIR);
}

int rename(const char* from, const char* to) noexcept {
    return renameName("rename", AT_FDCWD, from, AT_FDCWD, to, 0);
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return renameName("renameat", fromFolder, from, toFolder, to, 0);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
    return renameName("renameat2", fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) noexcept {
    return linkName("link", AT_FDCWD, from, AT_FDCWD, to, 0);
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return linkName("linkat", fromFolder, from, toFolder, to, flags);
}

int stat(const char* path, struct stat* found) noexcept {
    return readStatus("stat", AT_FDCWD, path, found, 0);
}
int stat64(const char* path, struct stat64* found) noexcept {
    return readStatus("stat", AT_FDCWD, path, found, 0);
}
int lstat(const char* path, struct stat* found) noexcept {
    return readStatus("lstat", AT_FDCWD, path, found, AT_SYMLINK_NOFOLLOW);
}
int lstat64(const char* path, struct stat64* found) noexcept {
    return readStatus("lstat", AT_FDCWD, path, found, AT_SYMLINK_NOFOLLOW);
}
int fstatat(int folder, const char* path, struct stat* found, int flags) noexcept {
    return readStatus("fstatat", folder, path, found, flags);
}
int fstat(int file, struct stat* found) noexcept {
    return readStatus("fstat", file, "", found, AT_EMPTY_PATH);
}
int fstat64(int file, struct stat64* found) noexcept {
    return readStatus("fstat", file, "", found, AT_EMPTY_PATH);
}

int access(const char* path, int mode) noexcept {
    return askAccess("access", AT_FDCWD, path, mode);
}
int faccessat(int folder, const char* path, int mode, int) noexcept {
    return askAccess("faccessat", folder, path, mode);
}

} // extern "C"
