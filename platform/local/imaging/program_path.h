// Where the imaging program is.
#pragma once

#include <string>

namespace local::imaging {

// Beside the shared object or the program that holds this code; where there is none, where the
// build installs it. Empty when this code cannot tell where it is itself.
std::string programPath();

} // namespace local::imaging
