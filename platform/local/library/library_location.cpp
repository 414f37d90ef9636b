#include "platform/local/library/library_location.h"

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string_view>

namespace local {

namespace {

constexpr std::string_view variable = "XDG_PICTURES_DIR=";
constexpr std::string_view homePrefix = "$HOME";

// Takes the quotes and backslashes off a value as a shell would.
std::string unquote(std::string_view value) {
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size())
            ++i;
        text.push_back(value[i]);
    }
    return text;
}

// The pictures folder that the user's settings name; only absolute ones and those below HOME
// count, as the format of the file has it.
std::string picturesFolder(const std::string& home) {
    std::ifstream settings(home + "/.config/user-dirs.dirs");
    std::string found = home + "/Pictures";
    for (std::string line; std::getline(settings, line);) {
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line.compare(start, variable.size(), variable) != 0)
            continue;
        const std::size_t end = line.find_last_not_of(" \t\r");
        const std::string value = unquote(std::string_view(line).substr(
            start + variable.size(), end + 1 - start - variable.size()));
        if (value.starts_with('/'))
            found = value;
        else if (value.starts_with(homePrefix))
            found = home + value.substr(homePrefix.size());
    }
    return found;
}

} // namespace

std::optional<std::string> libraryPath() {
    const char* home = std::getenv("HOME");
    if (!home || !*home)
        return std::nullopt;
    // Never destroyed: threads of the host may call until the process ends.
    struct Known {
        std::mutex mutex;
        std::string home;
        std::string path;
    };
    static auto* const known = new Known;
    const std::scoped_lock lock(known->mutex);
    if (known->home != home) {
        known->home = home;
        known->path = picturesFolder(known->home) + "/Lumatrice Library";
    }
    return known->path;
}

} // namespace local
