// Files read and written whole.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace support {

std::string readBytes(const std::filesystem::path& path);
std::filesystem::path writeText(const std::filesystem::path& path, std::string_view text);

} // namespace support
