// Descriptors fit for a worker's hands.
#pragma once

#include "platform/local/system/unique_fd.h"

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>

namespace local::imaging {

// A descriptor of the same file that is open for reading only, so that a worker in a stranger's
// power cannot write through it; an empty one when that cannot be had or it is no regular file.
// It may share its offset with `fd`: workers have no system call that uses or moves an offset.
inline UniqueFd readOnlyDescriptor(int fd) {
    struct stat status = {};
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    const int flags = fcntl(fd, F_GETFL);
    if (flags >= 0 && (flags & O_ACCMODE) == O_RDONLY)
        return UniqueFd(fcntl(fd, F_DUPFD_CLOEXEC, 0));
    std::array<char, 40> path{};
    std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", fd);
    return UniqueFd(open(path.data(), O_RDONLY | O_CLOEXEC));
}

} // namespace local::imaging
