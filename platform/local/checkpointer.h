// Moves what the catalogue's log holds into the catalogue itself, on a thread of its own, so that
// no caller's commit pays for it.
#pragma once

#include <memory>

namespace local {

class Library;

// To be told after each commit how many pages the log holds. Returns at once.
void checkpointWhenLong(const std::shared_ptr<Library>& library, int logPages);

} // namespace local
