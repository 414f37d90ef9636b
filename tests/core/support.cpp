#include "tests/core/support.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

ScratchHome::ScratchHome() {
    std::string pattern = fs::temp_directory_path() / "photos-core-test-XXXXXX";
    path = mkdtemp(pattern.data());
    fs::create_directories(logFile().parent_path());
    if (const char* const home = std::getenv("HOME"))
        previousHome = home;
    setenv("HOME", path.c_str(), 1);
}

ScratchHome::~ScratchHome() {
    if (previousHome)
        setenv("HOME", previousHome->c_str(), 1);
    else
        unsetenv("HOME");
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

std::vector<std::string> ScratchHome::logLines() const {
    constexpr std::size_t timeLength = sizeof "2024-01-31 23:59:59 " - 1;
    std::vector<std::string> messages;
    std::ifstream file(logFile());
    for (std::string line; std::getline(file, line);)
        messages.push_back(line.substr(std::min(line.size(), timeLength)));
    return messages;
}

std::string readFile(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::string standardErrorOf(const std::function<void()>& action) {
    std::string pattern = fs::temp_directory_path() / "photos-core-stderr-XXXXXX";
    const int file = mkstemp(pattern.data());
    const int standardError = dup(STDERR_FILENO);
    dup2(file, STDERR_FILENO);
    action();
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    close(file);
    std::string text = readFile(pattern);
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
