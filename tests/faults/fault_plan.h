// Which file operation of this process goes wrong, and how. The interposed functions of libc ask
// here before each operation on a file of the library, and tell what they have done.
//
// A plan is armed in a forked process of its own; elsewhere, and before it is armed, every
// operation passes untouched and uncounted.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace faults {

// What happens at the chosen operation. Each counts only the operations that it can befall: a disk
// that is full reads well, and a process that dies between two reads dies as between two changes.
enum class Kind {
    none,      // counts all operations
    ioOnce,    // EIO at this one
    ioOn,      // EIO at this one and every later one
    spaceOnce, // ENOSPC likewise, where room is needed
    spaceOn,
    shortWrite, // half of a write is written, then there is no more room for anything
    deniedOnce, // EACCES, where a path is named
    deniedOn,
    lockOn,      // ENOLCK for this lock and every later one
    retry,       // EIO once; the method is repeated; then the power fails
    killKept,    // the process is killed; what it wrote stays
    killDropped, // the power fails: everything that was not synced is gone
    killTorn,    // likewise, but any part of it may have reached the disk
    killBeside,  // as killKept, while another process has the library open and outlives this one
};
inline constexpr std::array allKinds{
    Kind::ioOnce,      Kind::ioOn,     Kind::spaceOnce, Kind::spaceOn, Kind::shortWrite,
    Kind::deniedOnce,  Kind::deniedOn, Kind::lockOn,    Kind::retry,   Kind::killKept,
    Kind::killDropped, Kind::killTorn, Kind::killBeside};

std::string nameOf(Kind kind);
bool kills(Kind kind);

// What an operation does; several may hold.
enum Does : unsigned {
    reads = 1,        // and nothing else
    needsSpace = 2,   // may find the disk full
    namesPath = 4,    // may be denied
    changes = 8,      // what a later process sees is changed by it
    locks = 16,       // takes a lock
    writesBytes = 32, // may write less than asked for
};

struct Plan {
    Kind kind = Kind::none;
    std::uint64_t point = 0; // counted from 1
    std::uint64_t seed = 0;  // of what is torn
};

// What the parent of the process sees of it.
struct Trace {
    std::uint64_t counted = 0;
    bool fired = false;
    char operation[200] = {}; // that went wrong first: function, and path below what is watched
};

// From here on operations on files below `folder` (a real path), and on the folder above it, are
// counted into `trace`. Changes are noted from here on, so that the power can fail; `shadow` is a
// folder elsewhere for files that lost their names.
void arm(const Plan& plan, const std::string& folder, const std::string& shadow, Trace& trace);

// No more faults; what is written is still noted.
void disarm();

// Lets the power fail now, as the plan's kind has it (only a kill for those that keep), and ends
// the process.
[[noreturn]] void endByPlan();

// --- for the interposed functions ---

// Held over an operation that changes something, and over what is noted about it.
std::recursive_mutex& oneAtATime();

// Whether operations on this path are watched now.
bool watches(std::string_view path);

// Whether the operation is to fail, with errno set; never returns where the process is to die.
bool fails(const char* function, const std::string& path, unsigned does);

// After that said no to an operation that writesBytes: how many bytes of `size` to write.
std::size_t lengthToWrite(std::size_t size);

} // namespace faults
