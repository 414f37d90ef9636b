// Moves what the catalogue's log holds into the catalogue itself, on a thread of its own, so that
// no caller's commit pays for it.
#pragma once

#include <memory>

namespace local {

class Library;

// To be told after each commit how many pages the log holds. Returns at once, and never fails: what
// is committed is done.
void checkpointWhenLong(const std::shared_ptr<Library>& library, int logPages) noexcept;

} // namespace local
