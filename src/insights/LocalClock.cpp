#include "insights/LocalClock.h"

#include <algorithm>
#include <cmath>

namespace tidewell {

namespace {
constexpr std::int64_t hourSeconds = 3600;
constexpr std::int64_t daySeconds = 86'400;

double secondsAt(std::chrono::sys_days date)
{
    return static_cast<double>(date.time_since_epoch().count()) * 86'400;
}
}  // namespace

const TimeZone::OffsetSpan& LocalClock::spanOf(Date moment)
{
    if (moment < span_.begin || moment >= span_.end)
        span_ = zone_.offsetSpan(moment);
    return span_;
}

std::int64_t LocalClock::localSecond(Date moment)
{
    const auto offset = spanOf(moment).offset.count();
    return static_cast<std::int64_t>(std::floor(unixSeconds(moment))) + offset;
}

LocalClock::Shown LocalClock::at(Date moment)
{
    const auto second = std::chrono::sys_seconds{std::chrono::seconds{localSecond(moment)}};
    const auto date = std::chrono::floor<std::chrono::days>(second);
    return {date, static_cast<std::int32_t>((second - date).count())};
}

Date LocalClock::endOfHour(Date moment)
{
    const std::int64_t local = localSecond(moment);
    const std::int64_t past = ((local % hourSeconds) + hourSeconds) % hourSeconds;
    const auto end = local - past + hourSeconds - span_.offset.count();
    return std::min(dateFromUnix(static_cast<double>(end)), span_.end);
}

Date startOfLocalDate(std::chrono::sys_days date, TimeZone zone)
{
    const Seconds midnight{secondsAt(date)};
    // No offset from UTC is larger than a day.
    Date moment{midnight - Seconds{2 * daySeconds}};
    for (;;) {
        const auto span = zone.offsetSpan(moment);
        const Date start = std::max(moment, Date{midnight - span.offset});
        if (start < span.end)
            return start;
        moment = span.end;
    }
}

bool isUsable(const DateInterval& interval)
{
    constexpr double yearOne = -62'135'596'800;
    constexpr double yearTenThousand = 253'402'300'800;
    return interval.start < interval.end && unixSeconds(interval.start) >= yearOne &&
           unixSeconds(interval.end) <= yearTenThousand;
}

}  // namespace tidewell
