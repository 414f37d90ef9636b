// A second copy of a library, in a folder that is a library itself: put in the first one's place it
// opens.
//
// The files are copied first, then the catalogue as it is at one moment, then what that names and
// is not there yet. The new catalogue takes the old one's place by a rename, when every file that
// it names is there durably; until then the folder holds the whole earlier backup. Hosts may be at
// work on the library all the while.
#pragma once

#include "platform/local/maintenance/verification.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace local {

struct BackupOptions {
    // Hard links instead of copies, where both folders are on one file system. They cost no room,
    // and share every fault of the disk with the library.
    bool link = false;
    // Also reads the files that an earlier backup left there; otherwise their size is looked at.
    bool check = false;
    // Goes on even when nothing of what an earlier backup holds is in the library any more.
    bool replace = false;
    // Told before each file; on this thread.
    std::function<void(std::int64_t file, std::int64_t allFiles)> progress;
    std::function<bool()> stop;
};

struct Backup {
    std::int64_t copied = 0;   // files, each read back and found right
    std::int64_t linked = 0;   // likewise
    std::int64_t bytes = 0;    // of both
    std::int64_t present = 0;  // files that were there already
    std::int64_t setAside = 0; // files that the library no longer has, of deleted assets for
                               // instance: moved to "quarantine" in the backup
    // Files that neither the library nor the backup has as they were stored. A damaged one goes to
    // "quarantine" in the backup, in case it is all there is.
    std::vector<Finding> findings;
    bool complete = false; // false: stopped; the earlier backup, if any, is in force
};

// Backs up the library in the folder `library` into the folder `destination`, which is made where
// it is missing (but not the one above it), must be empty or an earlier backup of the same library,
// and must lie outside the library. Throws LibraryError when that is not so and when copying fails,
// for want of room for instance; then, and after a kill, the same call goes on with what is there.
Backup backUpLibrary(const std::string& library, const std::string& destination,
                     const BackupOptions& options);

} // namespace local
