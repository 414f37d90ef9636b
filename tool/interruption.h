// Ctrl-C and a request to end, for commands that leave things tidy when they stop.
#pragma once

namespace tool {

// Thrown by work that ended early because of one.
struct Stopped {};

// From here on the first such signal is noted, and said on standard error; a second one ends the
// process at once.
void noteInterruptions();
bool interrupted();

} // namespace tool
