// Taking edits back.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace local {

// Drops the edits of these assets, which are then as they were imported. Answers how many had one.
// Throws LibraryError.
std::size_t revertEdits(const std::vector<std::string>& identifiers);

} // namespace local
