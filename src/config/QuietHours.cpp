#include "config/QuietHours.h"

#include <cmath>

namespace tidewell {

namespace {

constexpr double secondsOfDay = 86'400;

}  // namespace

bool isQuiet(Date now, TimeZone zone, std::int64_t startMinutes, std::int64_t endMinutes)
{
    if (startMinutes == endMinutes)
        return true;
    const double local = unixSeconds(now) + static_cast<double>(zone.offset(now).count());
    const double second = local - std::floor(local / secondsOfDay) * secondsOfDay;
    const auto minute = static_cast<std::int64_t>(second / 60);
    if (startMinutes < endMinutes)
        return startMinutes <= minute && minute < endMinutes;
    return minute >= startMinutes || minute < endMinutes;
}

}  // namespace tidewell
