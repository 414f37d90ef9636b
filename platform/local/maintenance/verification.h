// Whether a library is whole: its catalogue, what is kept twice in it, and every file it names.
#pragma once

#include "platform/local/maintenance/findings.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace local {

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

// Changes nothing, and may run while hosts are at work: what they change meanwhile is not reported.
// `path` is a library's folder. Throws LibraryError when it cannot be opened at all.
Verification verifyLibrary(const std::string& path, const VerificationOptions& options);

} // namespace local
