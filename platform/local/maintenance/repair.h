// Mends what can be mended in a library, and says of the rest what a person can do. Nothing is ever
// unlinked, and no row of an asset is dropped: what is in the way goes to quarantine/.
#pragma once

#include "platform/local/maintenance/verification.h"

#include <functional>
#include <string>
#include <vector>

namespace local {

struct RepairStep {
    enum class Outcome {
        planned,   // would be done
        done,      //
        overtaken, // no longer needed when its turn came
        failed,    // `sentence` says why
        impossible // `sentence` says what a person can do
    };
    Outcome outcome = Outcome::planned;
    std::string subject;  // as in the finding
    std::string asset;    // likewise
    std::string sentence; // what is done
};

struct RepairOptions {
    bool apply = false;  // false: changes nothing
    std::string backup;  // the folder of a backup to take lost files from; empty: none
    bool content = true; // as for a verification
    std::function<void(std::int64_t files, std::int64_t allFiles)> progress;
    std::function<bool()> stop;
};

struct Repair {
    std::vector<RepairStep> steps;
    bool complete = false; // false: stopped while it was looking, and then nothing was changed
};

std::string nameOf(RepairStep::Outcome outcome);

// Verifies the library, then takes the findings one by one; each is looked at again under the
// library's write lock before anything is touched, so that hosts may be at work. Throws
// LibraryError when the library cannot be opened, or when its store is not there: then nothing is
// judged.
Repair repairLibrary(const std::string& path, const RepairOptions& options);

} // namespace local
