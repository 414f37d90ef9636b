// The dates that an asset may have.
#pragma once

#include <cstdint>

namespace local {

// The dates that an asset may have: the years 1 to 9999, in milliseconds since 1970.
inline constexpr std::int64_t earliestDate = -62'135'596'800'000;
inline constexpr std::int64_t latestDate = 253'402'300'799'999;

inline constexpr bool isDate(std::int64_t milliseconds) {
    return milliseconds >= earliestDate && milliseconds <= latestDate;
}

} // namespace local
