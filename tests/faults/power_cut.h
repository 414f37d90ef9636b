// What a power failure would leave of the files that this process has changed, as the model in
// docs/reliability.md has it.
//
// Not thread-safe: the caller holds one lock over an operation and what it notes here.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>

namespace faults {

// In HOME, for files that lose their names. Is to be there.
inline constexpr const char* asideFolder = "aside";

// Before these bytes of an open file are overwritten or cut off.
void noteWrite(int file, off_t from, off_t end);
// After a sync of an open file or folder.
void noteSync(int file, bool good);
// Over a change by which `path` is made, removed, or what was at `from` before; a system call's
// answer.
long noteName(const std::string& path, const std::string& from,
              const std::function<long()>& change);

// Back to what is durable, and to what remains when so many per cent of the rest are lost.
void failPower(unsigned loss, std::uint64_t seed);

} // namespace faults
