// What the file system under a folder can do, and what room is left on it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace local {

struct Disk {
    std::string type;           // such as "ext4"; "unknown" when the system does not tell
    std::int64_t bytes = 0;     // in all
    std::int64_t freeBytes = 0; // for this user
    std::optional<std::int64_t> freeFiles; // nothing: the file system has no such limit
    bool readOnly = false;
    bool network = false;   // other machines may use it at the same time
    bool unguarded = false; // it keeps no owners, so every user of this machine may read it
    // Nothing: could not be tried. Whether a file can be copied without being read...
    std::optional<bool> sharesBlocks;
    // ...and whether locks work, on which several processes depend.
    std::optional<bool> locks;
};

// Tries with files that have no name and leave nothing behind; on a read-only disk with none.
// Throws LibraryError when the folder cannot be examined.
Disk diskOf(const std::string& folder);

} // namespace local
