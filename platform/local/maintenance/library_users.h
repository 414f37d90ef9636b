// Which processes have a library open, and what they hold.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <sys/types.h>

namespace local {

struct LibraryUser {
    pid_t process = 0;
    std::string program;
    bool writes = false;      // holds the write lock of the catalogue: others wait for it
    bool checkpoints = false; // folds the log into the catalogue
    bool reads = false;       // is in the middle of reading
    std::size_t files = 0;    // on their way in or being edited, held by it
};

// As the system tells at this moment; this process left out. Opens nothing in the library, whose
// locks a closed descriptor would drop. Processes of other users may stay unseen, unless they hold
// a lock.
std::vector<LibraryUser> usersOf(const std::string& library);

} // namespace local
