// Which processes have a library open, and what they hold.
#pragma once

#include <map>
#include <string>

namespace tool {

struct LibraryUser {
    std::string program;
    bool writes = false;   // changes the catalogue at this moment: others wait for it
    std::size_t files = 0; // on their way in or being edited, held by it
};

// By process number, as `lslocks` tells at this moment: whoever has the library open holds locks in
// it. Of other users' processes it may not see the files. Nothing is opened in the library, whose
// locks a closed descriptor would drop. Throws Failure where that program is missing.
std::map<long, LibraryUser> usersOf(const std::string& library);

} // namespace tool
