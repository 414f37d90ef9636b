// Which file operation of this process goes wrong, and how. The interposed functions of libc ask
// here before each operation on a file of the library.
//
// A plan is armed in a forked process of its own; elsewhere, and before it is armed, every
// operation passes untouched and uncounted.
#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>
#include <string_view>

namespace faults {

// What an operation does; several may hold.
enum Does : unsigned {
    neverFails = 0,
    reads = 1,        // and nothing else
    needsSpace = 2,   // may find the disk full
    namesPath = 4,    // may be denied
    changes = 8,      // what a later process sees is changed by it
    locks = 16,       // takes a lock
    writesBytes = 32, // may write less than asked for
    makesName = needsSpace | namesPath | changes,
    anything = 63,
};

struct Operation {
    const char* name;
    unsigned does;
    long call; // of the system
};

constexpr int halved = -1; // instead of an error: half of a write is written

// What happens at the chosen operation. Each counts only the operations that it can befall: a disk
// that is full reads well, and a process that dies between two reads dies as between two changes.
struct Kind {
    const char* name;
    unsigned befalls;     // operations that do one of these
    int error;            // of the chosen one; 0: the process is killed before it
    int later = 0;        // error of every later one
    unsigned loss = 0;    // when the process ends: per cent of what was not synced
    bool retries = false; // the method is repeated; then the process is killed
    bool beside = false;  // another process has the library open and outlives this one

    bool kills() const { return error == 0; }
    bool dies() const { return kills() || retries; }
    bool isOver() const { return later == 0 && !dies(); } // once it has happened
};

inline constexpr Kind kinds[] = {
    {"io-once", anything, EIO},
    {"io-on", anything, EIO, EIO},
    {"space-once", needsSpace, ENOSPC},
    {"space-on", needsSpace, ENOSPC, ENOSPC},
    {"short-once", writesBytes, halved},
    {"short-on", writesBytes, halved, ENOSPC},
    {"denied-once", namesPath, EACCES},
    {"denied-on", namesPath, EACCES, EACCES},
    {"lock-on", locks, ENOLCK, ENOLCK},
    {.name = "retry", .befalls = anything, .error = EIO, .loss = 100, .retries = true},
    {"kill-kept", changes, 0},
    {"kill-dropped", changes, 0, 0, 100},
    {"kill-torn", changes, 0, 0, 30},
    {.name = "kill-beside", .befalls = changes, .error = 0, .beside = true},
};

struct Plan {
    const Kind* kind = kinds;
    std::uint64_t point = 0; // counted from 1; 0: nothing goes wrong
    std::uint64_t seed = 0;  // of what is torn
};

// What its parent sees of it.
struct Trace {
    std::uint64_t counted[std::size(kinds)] = {}; // for each kind, until something went wrong
    bool fired = false;
    char operation[200] = {}; // that went wrong first: its name and path
};

// From here on operations on files below `folder` (a real path), and on the folder above it, are
// noted, so that the power can fail.
void watch(const std::string& folder);
// From here on they are counted into `trace` and go wrong as planned.
void arm(const Plan& plan, Trace& trace);
// No more faults; what is written is still noted.
void disarm();
// Ends the process now, and what the plan's kind loses is lost.
[[noreturn]] void endByPlan();

// --- for the interposed functions ---

// Held over an operation that changes something, and over what is noted about it.
std::recursive_mutex& oneAtATime();
// Whether operations on this path are watched now.
bool watches(std::string_view path);
// Whether the operation is to fail, with errno set (or `halved` in it); never returns where the
// process is to die.
bool fails(const Operation& operation, const std::string& path);

// --- power_cut.cpp: what a power failure would leave of the files that this process has changed,
// as docs/reliability.md has it. oneAtATime() is held over an operation and what is noted of it.

inline constexpr const char* asideFolder = "aside"; // in HOME, for files that lose their names

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
