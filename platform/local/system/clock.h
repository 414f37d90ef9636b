// The present.
#pragma once

#include <chrono>
#include <cstdint>

namespace local {

// Milliseconds since 1970, as the system's clock has it.
inline std::int64_t millisecondsNow() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace local
