#include "platform/local/system/write_all.h"

#include <unistd.h>

#include <cerrno>

namespace local {

bool writeAll(int file, const void* bytes, std::size_t size) {
    const char* rest = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t put = write(file, rest, size);
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0)
            return false;
        rest += put;
        size -= static_cast<std::size_t>(put);
    }
    return true;
}

} // namespace local
