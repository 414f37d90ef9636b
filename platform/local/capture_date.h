// From a calendar reading to a point in time.
#pragma once

#include "platform/local/imaging/imaging.h"

#include <cstdint>
#include <optional>

namespace local {

// Milliseconds since 1970-01-01T00:00:00Z; with its own offset when the reading has one, else in
// the local time zone. Nothing for a date or time of day that does not exist.
std::optional<std::int64_t> millisecondsSince1970(const CaptureTime& reading);

// The dates that an asset may have: the years 1 to 9999, in milliseconds since 1970.
inline constexpr std::int64_t earliestDate = -62'135'596'800'000;
inline constexpr std::int64_t latestDate = 253'402'300'799'999;

inline constexpr bool isDate(std::int64_t milliseconds) {
    return milliseconds >= earliestDate && milliseconds <= latestDate;
}

} // namespace local
