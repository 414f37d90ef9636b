// System calls past the interposed functions.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <string>

namespace raw {

inline long call(long number, auto... arguments) {
    return ::syscall(number, arguments...);
}

// All zeros when there is no such file.
inline struct stat status(int folder, const char* name, int flags) {
    struct stat found = {};
    call(SYS_newfstatat, folder, name, &found, flags);
    return found;
}
inline struct stat status(const std::string& path) {
    return status(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW);
}
inline struct stat status(int file) {
    return status(file, "", AT_EMPTY_PATH);
}

// The path of what a descriptor names; empty when it names no path.
inline std::string pathOf(int file) {
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    std::array<char, 4096> path; // NOLINT(*-member-init): readlink fills it
    const long length = call(SYS_readlinkat, AT_FDCWD, link.c_str(), path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

} // namespace raw
