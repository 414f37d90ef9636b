// Whether a reading of the calendar exists. Used on both sides: the worker states only dates that
// do, the host believes no others.
#pragma once

#include "platform/local/imaging/wire/media.h"

#include <chrono>

namespace local::imaging {

// The time itself, less an offset that no place on Earth has; nothing for a date or hour that
// does not exist. A leap second counts as the second before it.
inline std::optional<CaptureTime> existing(CaptureTime time) {
    const auto within = [](int value, int low, int high) { return value >= low && value <= high; };
    if (time.second == 60)
        time.second = 59;
    const std::chrono::year_month_day date{std::chrono::year(time.year),
                                           std::chrono::month(static_cast<unsigned>(time.month)),
                                           std::chrono::day(static_cast<unsigned>(time.day))};
    if (!within(time.year, 1, 9999) || !date.ok() || !within(time.hour, 0, 23) ||
        !within(time.minute, 0, 59) || !within(time.second, 0, 59) ||
        !within(time.millisecond, 0, 999))
        return std::nullopt;
    if (time.offsetMinutes && !within(*time.offsetMinutes, -12 * 60, 14 * 60))
        time.offsetMinutes.reset();
    return time;
}

} // namespace local::imaging
