// What lies in a folder.
#pragma once

#include <string>
#include <vector>

namespace local {

// The names in a folder, by its path from the folder `parent`, unsorted: as many as can be read.
// `error`, when given, gets the errno that kept some or all of them back, or 0.
std::vector<std::string> namesIn(int parent, const std::string& path, int* error = nullptr);

} // namespace local
