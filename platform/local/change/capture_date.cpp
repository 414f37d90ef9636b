#include "platform/local/change/capture_date.h"
#include "platform/local/imaging/wire/capture_time.h"

#include <chrono>
#include <ctime>

namespace local {

namespace {

// An offset can carry the first or the last day out of the years that count.
std::optional<std::int64_t> dateOf(std::int64_t milliseconds) {
    return isDate(milliseconds) ? std::optional(milliseconds) : std::nullopt;
}

std::optional<std::int64_t> localSeconds(const CaptureTime& r) {
    std::tm broken{};
    broken.tm_year = r.year - 1900;
    broken.tm_mon = r.month - 1;
    broken.tm_mday = r.day;
    broken.tm_hour = r.hour;
    broken.tm_min = r.minute;
    broken.tm_sec = r.second;
    broken.tm_isdst = -1;
    broken.tm_wday = -1; // stays so only when mktime fails
    const std::time_t seconds = std::mktime(&broken);
    if (broken.tm_wday < 0)
        return std::nullopt;
    return seconds;
}

} // namespace

std::optional<std::int64_t> millisecondsSince1970(const CaptureTime& stated) {
    using namespace std::chrono;
    const auto read = imaging::existing(stated);
    if (!read)
        return std::nullopt;
    const CaptureTime& reading = *read;
    const year_month_day date{year(reading.year), month(static_cast<unsigned>(reading.month)),
                              day(static_cast<unsigned>(reading.day))};
    if (!reading.offsetMinutes) {
        const auto seconds = localSeconds(reading);
        return seconds ? dateOf(*seconds * 1000 + reading.millisecond) : std::nullopt;
    }
    const auto point = sys_days(date).time_since_epoch() + hours(reading.hour) +
                       minutes(reading.minute - *reading.offsetMinutes) + seconds(reading.second);
    return dateOf(duration_cast<milliseconds>(point).count() + reading.millisecond);
}

} // namespace local
