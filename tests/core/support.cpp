#include "tests/core/support.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

std::string standardErrorOf(const std::function<void()>& action) {
    std::string pattern = fs::temp_directory_path() / "photos-core-stderr-XXXXXX";
    const int file = mkstemp(pattern.data());
    const int standardError = dup(STDERR_FILENO);
    dup2(file, STDERR_FILENO);
    action();
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    close(file);
    std::string text = support::readBytes(pattern);
    fs::remove(pattern);
    return text;
}

std::vector<std::string> CoreTest::operationsOfCall() {
    const std::vector<std::string> all = library.operations();
    if (all.size() < 2 || all.front() != "open scope" || all.back() != "close scope") {
        ADD_FAILURE() << "not inside a scope: " << testing::PrintToString(all);
        return {};
    }
    return {all.begin() + 1, all.end() - 1};
}

bool CoreTest::happened(const std::string& words) {
    const auto lines = library.operations();
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.find(words) != std::string::npos;
    });
}
