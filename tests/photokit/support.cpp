#include "tests/photokit/support.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

PhotoKitTest::PhotoKitTest() {
    standin::reset();
    std::string pattern = fs::temp_directory_path() / "photos-photokit-test-XXXXXX";
    home = mkdtemp(pattern.data());
    fs::create_directories(home / ".lumatrice/logs");
    setenv("HOME", home.c_str(), 1);
    standardError = dup(STDERR_FILENO);
    testing::internal::CaptureStderr();
}

PhotoKitTest::~PhotoKitTest() {
    standin::reset();
    const std::string diagnostics = testing::internal::GetCapturedStderr();
    close(standardError);
    EXPECT_THAT(diagnostics, testing::Not(testing::HasSubstr("without pool")));
    EXPECT_EQ(standin::livingObjects(), 0);
    std::error_code ignored;
    fs::remove_all(home, ignored);
}

std::vector<std::string> PhotoKitTest::calls() {
    const std::vector<std::string> all = standin::notes();
    std::vector<std::string> fresh(all.begin() + static_cast<std::ptrdiff_t>(callsRead), all.end());
    callsRead = all.size();
    return fresh;
}

std::vector<std::string> PhotoKitTest::logLines() const {
    constexpr std::size_t timeLength = sizeof "2024-01-31 23:59:59 " - 1;
    std::vector<std::string> messages;
    std::ifstream file(home / ".lumatrice/logs/photos-native.log");
    for (std::string line; std::getline(file, line);)
        messages.push_back(line.substr(std::min(line.size(), timeLength)));
    return messages;
}

fs::path PhotoKitTest::write(const std::string& name, const std::string& bytes) const {
    std::ofstream(home / name) << bytes;
    return home / name;
}

std::string readFile(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}
