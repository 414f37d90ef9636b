#include "tests/support/files.h"

#include <fstream>
#include <iterator>

namespace support {

std::string readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::filesystem::path writeText(const std::filesystem::path& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

} // namespace support
