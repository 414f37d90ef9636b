#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace tool {

// Prints, one a line, the commands or options that the last word may become. `words` are those
// after the program's name, up to the one being written, which may be empty.
int complete(const CLI::App& app, std::vector<std::string> words);

} // namespace tool
