// Whether a library is whole: its catalogue, what is kept twice in it, and every file it names.
#pragma once

#include <cstdint>
#include <functional>
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

struct VerificationOptions {
    // Only files of assets after this row are read: where an earlier verification stopped.
    std::int64_t after = 0;
    // False: presence and size only.
    bool content = true;
    // Told after each file, with the row to go on after; on this thread.
    std::function<void(std::int64_t files, std::int64_t allFiles, std::int64_t row,
                       const std::vector<Finding>&)>
        progress;
    std::function<bool()> stop;
};

struct Verification {
    std::vector<Finding> findings;
    std::int64_t files = 0;    // that were looked at
    std::int64_t bytes = 0;    // that were read
    std::int64_t leftOver = 0; // files of processes that died, and files on their way out: the next
                               // opening of the library removes them
    bool complete = false;     // false: stopped
    std::int64_t row = 0;      // to go on after
};

// Changes nothing, and may run while hosts are at work: what they change meanwhile is not reported.
// `path` is a library's folder. Throws LibraryError when it cannot be opened at all.
Verification verifyLibrary(const std::string& path, const VerificationOptions& options);

} // namespace local
