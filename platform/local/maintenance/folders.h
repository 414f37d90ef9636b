// Where folders lie to each other, whatever paths lead to them.
#pragma once

#include "platform/local/system/unique_fd.h"

#include <string>

namespace local {

// Whether `folder` is `sought` or lies inside it.
bool isAtOrAbove(int sought, int folder);

// The folder, or the nearest one above it that exists; empty, with errno, when there is none to be
// opened.
UniqueFd nearestFolder(const std::string& path);

} // namespace local
