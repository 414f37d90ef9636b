// Whether a reading of the calendar exists. Used on both sides: the worker states only dates that
// do, the host believes no others.
#pragma once

#include "platform/local/imaging/wire/media.h"

namespace local::imaging {

inline int daysInMonth(int year, int month) {
    if (month == 2)
        return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

// The time itself, less an offset that no place on Earth has; nothing for a date or hour that
// does not exist. A leap second counts as the second before it.
inline std::optional<CaptureTime> existing(CaptureTime time) {
    const auto within = [](int value, int low, int high) { return value >= low && value <= high; };
    if (time.second == 60)
        time.second = 59;
    if (!within(time.year, 1, 9999) || !within(time.month, 1, 12) ||
        !within(time.day, 1, daysInMonth(time.year, time.month)) || !within(time.hour, 0, 23) ||
        !within(time.minute, 0, 59) || !within(time.second, 0, 59) ||
        !within(time.millisecond, 0, 999))
        return std::nullopt;
    if (time.offsetMinutes && !within(*time.offsetMinutes, -12 * 60, 14 * 60))
        time.offsetMinutes.reset();
    return time;
}

} // namespace local::imaging
