#include "tests/support/home.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace support {

namespace fs = std::filesystem;

ScratchHome::ScratchHome() : ScratchHome(fs::temp_directory_path()) {}

ScratchHome::ScratchHome(const fs::path& below) {
    std::string name = below / "photos-kit-test-XXXXXX";
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no scratch folder in " + below.string());
    path_ = name;
    fs::create_directories(logFile().parent_path());
    setenv("HOME", name.c_str(), 1);
}

ScratchHome::~ScratchHome() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path ScratchHome::logFile() const {
    return path_ / ".lumatrice/logs/photos-native.log";
}

std::vector<std::string> ScratchHome::logLines() const {
    constexpr std::size_t timeLength = sizeof "2024-01-31 23:59:59 " - 1;
    std::vector<std::string> messages;
    std::ifstream file(logFile());
    for (std::string line; std::getline(file, line);)
        messages.push_back(line.substr(std::min(line.size(), timeLength)));
    return messages;
}

} // namespace support
