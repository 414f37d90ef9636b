#include "platform/local/change/capture_date.h"

#include <chrono>
#include <ctime>

namespace local {

namespace {

constexpr int minutesInADay = 24 * 60;

bool isTimeOfDay(const CaptureTime& r) {
    return r.hour >= 0 && r.hour < 24 && r.minute >= 0 && r.minute < 60 && r.second >= 0 &&
           r.second < 60 && r.millisecond >= 0 && r.millisecond < 1000;
}

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

std::optional<std::int64_t> millisecondsSince1970(const CaptureTime& reading) {
    using namespace std::chrono;
    const year_month_day date{year(reading.year), month(static_cast<unsigned>(reading.month)),
                              day(static_cast<unsigned>(reading.day))};
    if (reading.year < 1 || reading.year > 9999 || !date.ok() || !isTimeOfDay(reading))
        return std::nullopt;
    const bool offsetExists = reading.offsetMinutes && *reading.offsetMinutes > -minutesInADay &&
                              *reading.offsetMinutes < minutesInADay;
    if (!offsetExists) {
        const auto seconds = localSeconds(reading);
        return seconds ? dateOf(*seconds * 1000 + reading.millisecond) : std::nullopt;
    }
    const auto point = sys_days(date).time_since_epoch() + hours(reading.hour) +
                       minutes(reading.minute - *reading.offsetMinutes) + seconds(reading.second);
    return dateOf(duration_cast<milliseconds>(point).count() + reading.millisecond);
}

} // namespace local
