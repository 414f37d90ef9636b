// What the interposed functions share: the path that a call is about.
#pragma once

#include "tests/faults/fault_plan.h"
#include "tests/faults/power_cut.h"
#include "tests/faults/raw_calls.h"

#include <string>

namespace faults {

// The absolute path of `path` as a call with this folder's descriptor means it. What is named
// through /proc/self/fd is resolved; nothing else needs to be.
std::string meant(int folder, const char* path);

// Fails the calling function with the errno that before() wants.
inline bool fails(const char* function, const std::string& path, unsigned does) {
    const int error = before(function, path, does);
    if (error != 0)
        errno = error;
    return error != 0;
}

} // namespace faults
