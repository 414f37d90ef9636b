// What a look through a library finds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace local {

struct Finding {
    enum class Kind {
        catalogue,  // SQLite finds it damaged, or a row names what cannot be the library's
        rule,       // it disagrees with itself
        absent,     // no file can be looked for: the folder of originals is not there
        missing,    // a file that the catalogue names
        damaged,    // it has other bytes than were stored
        unreadable, // the disk or its permissions refuse it
        unnamed,    // a file that nothing names
    };
    Kind kind = Kind::catalogue;
    std::string subject;  // a path in the library, or what part of the catalogue
    std::string asset;    // the identifier of the asset concerned, if one is
    std::string sentence; // for people
};

std::string nameOf(Finding::Kind kind); // one word

struct Verification {
    std::vector<Finding> findings;
    std::int64_t files = 0;    // that were looked at
    std::int64_t bytes = 0;    // that were read
    std::int64_t leftOver = 0; // files of processes that died, and files on their way out: the next
                               // opening of the library removes them
    bool complete = false;     // false: stopped
    std::int64_t row = 0;      // to go on after
};

} // namespace local
