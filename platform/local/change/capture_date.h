// From a calendar reading to a point in time.
#pragma once

#include "platform/local/catalogue/possible_dates.h"
#include "platform/local/imaging/imaging.h"

#include <cstdint>
#include <optional>

namespace local {

// Milliseconds since 1970-01-01T00:00:00Z; with its own offset when the reading has one, else in
// the local time zone. Nothing for a date or time of day that does not exist.
std::optional<std::int64_t> millisecondsSince1970(const CaptureTime& reading);

} // namespace local
