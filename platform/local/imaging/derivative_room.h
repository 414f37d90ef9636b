// Keeps the folder "derivatives" (see derivative_file.h) within its room: those used least recently
// go first.
#pragma once

#include "platform/local/imaging/imaging.h"

#include <cstdint>

#include <sys/types.h>

namespace local::imaging {

// One process's idea of what the folder holds, so that it is not gone over for every file. Used by
// one thread.
class DerivativeRoom {
public:
    // Tidies the folder when it is another than the last time, or may be too full: other processes
    // write too, so after every tenth of the room that this one has written.
    void keep(int folder, std::uint64_t room);

    void wrote(std::uint64_t bytes) { written_ += bytes; }

private:
    dev_t device_ = 0;
    ino_t folder_ = 0;
    std::uint64_t held_ = 0; // when it was last tidied
    std::uint64_t written_ = 0;
};

} // namespace local::imaging
