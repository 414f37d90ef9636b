// Ctrl-C and a request to end, for commands that leave things tidy when they stop.
#pragma once

namespace tool {

// From here on the first such signal is only noted; a second one ends the process at once.
void noteInterruptions();
bool interrupted();

} // namespace tool
