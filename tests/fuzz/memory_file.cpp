#include "tests/fuzz/memory_file.h"

#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

local::UniqueFd memoryFile(const std::uint8_t* bytes, std::size_t size) {
    local::UniqueFd file(memfd_create("input", MFD_CLOEXEC));
    require(file && write(file.get(), bytes, size) == static_cast<ssize_t>(size));
    return file;
}

void check(const local::imaging::Info& info) {
    require(info.displayed.width > 0 && info.displayed.height > 0);
    require(info.format <= local::imaging::kLastFormat);
}

void check(const local::imaging::Picture& picture) {
    using namespace local::imaging;
    require(picture.size.width > 0 && picture.size.width <= kMaxSide);
    require(picture.size.height > 0 && picture.size.height <= kMaxSide);
    require(std::uint64_t{picture.size.width} * picture.size.height <= kMaxPixels);
    require(picture.rgb.size() == std::size_t{picture.size.width} * picture.size.height * 3);
}

} // namespace fuzz
