// Folders that may not be there yet.
#pragma once

#include "platform/local/system/unique_fd.h"

#include <string>

namespace local {

// The folder, or the nearest one above it that exists; empty, with errno, when there is none to be
// opened.
UniqueFd nearestFolder(const std::string& path);

} // namespace local
