// What the system says of files, past the interposed functions.
#pragma once

#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>

namespace raw {

// All zeros when there is no such file.
inline struct stat status(const std::string& path) {
    struct stat found = {};
    syscall(SYS_newfstatat, AT_FDCWD, path.c_str(), &found, AT_SYMLINK_NOFOLLOW);
    return found;
}
inline struct stat status(int file) {
    struct stat found = {};
    syscall(SYS_fstat, file, &found);
    return found;
}

// The path of what a descriptor names; empty when it names no path.
inline std::string pathOf(int file) {
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    char path[PATH_MAX]; // NOLINT(*-member-init): readlink fills it
    const long length = syscall(SYS_readlinkat, AT_FDCWD, link.c_str(), path, sizeof path);
    return {path, length > 0 ? static_cast<std::size_t>(length) : 0};
}

} // namespace raw
