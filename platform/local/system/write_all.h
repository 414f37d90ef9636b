// Writing what one write() may leave unfinished.
#pragma once

#include <cstddef>

namespace local {

// Whether all of the bytes were written, at the file's position; errno says why not.
[[nodiscard]] bool writeAll(int file, const void* bytes, std::size_t size);

} // namespace local
