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

inline int open(const std::string& path, int flags) {
    return static_cast<int>(call(SYS_openat, AT_FDCWD, path.c_str(), flags, 0600));
}

inline bool status(const std::string& path, struct stat& found) {
    return call(SYS_newfstatat, AT_FDCWD, path.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0;
}

inline bool status(int file, struct stat& found) {
    return call(SYS_newfstatat, file, "", &found, AT_EMPTY_PATH) == 0;
}

inline ino_t inodeOf(const std::string& path) {
    struct stat found {};
    return status(path, found) ? found.st_ino : 0;
}

// The path of what a descriptor names; empty when it names no path.
inline std::string pathOf(int file) {
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    std::array<char, 4096> path; // NOLINT(*-member-init): readlink fills it
    const long length = call(SYS_readlinkat, AT_FDCWD, link.c_str(), path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

} // namespace raw
