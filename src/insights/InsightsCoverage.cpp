#include "insights/InsightsCoverage.h"

#include <algorithm>
#include <map>

#include "insights/StableSum.h"

namespace tidewell {

namespace {

constexpr int nightEndHour = 6;
constexpr std::ptrdiff_t fewestMissingNights = 3;
/// Longer than any night is, also one in which clocks are put back by a day.
constexpr Seconds longestNight{std::chrono::hours{36}};

/// Asks how much of times in ascending order is observed.
class ObservedTime {
public:
    explicit ObservedTime(std::span<const DateInterval> observed) : rest_{observed} {}

    double secondsIn(const DateInterval& time)
    {
        while (!rest_.empty() && rest_.front().end <= time.start)
            rest_ = rest_.subspan(1);
        StableSum seconds;
        for (const DateInterval& observed : rest_) {
            if (observed.start >= time.end)
                break;
            seconds.add((std::min(observed.end, time.end) - std::max(observed.start, time.start)).count());
        }
        return seconds.value();
    }

private:
    std::span<const DateInterval> rest_;
};

/// Calls `take` with each piece of an interval that lies within one hour of the local clock, in order.
template <class Take>
void forEachLocalHour(const DateInterval& interval, TimeZone zone, Take take)
{
    LocalClock clock{zone};
    for (Date start = interval.start; start < interval.end;) {
        const auto shown = clock.at(start);
        const DateInterval piece{start, std::min(clock.endOfHour(start), interval.end)};
        take(piece, shown.date, shown.secondOfDay / 3600);
        start = piece.end;
    }
}

struct Covered {
    StableSum covered{};
    StableSum total{};
};

}  // namespace

InsightsCoverage insightsCoverage(std::span<const DateInterval> observed, const DateInterval& interval,
                                  TimeZone zone)
{
    InsightsCoverage coverage;
    std::map<std::chrono::sys_days, Covered> days;
    std::array<Covered, 24> hours{};
    StableSum covered;
    if (isUsable(interval)) {
        ObservedTime time{observed};
        // Their pieces may lie apart where clocks are put back over midnight.
        forEachLocalHour(interval, zone, [&](const DateInterval& piece, auto date, int hour) {
            const double seconds = time.secondsIn(piece);
            covered.add(seconds);
            for (Covered* const part : {&days[date], &hours[static_cast<std::size_t>(hour)]}) {
                part->covered.add(seconds);
                part->total.add(piece.duration().count());
            }
        });
        coverage.coveredDuration = Seconds{covered.value()};
        coverage.totalDuration = interval.duration();
    }
    for (const auto& [date, day] : days)
        coverage.days.push_back({date, Seconds{day.covered.value()}, Seconds{day.total.value()}});
    for (int hour = 0; const auto& part : hours)
        coverage.hours.push_back({hour++, Seconds{part.covered.value()}, Seconds{part.total.value()}});
    return coverage;
}

bool hasMissingNights(std::span<const DateInterval> observed, const DateInterval& interval, TimeZone zone)
{
    if (!isUsable(interval))
        return false;
    struct Night {
        Covered time{};
        bool isWhole = true;
    };
    std::map<std::chrono::sys_days, Night> nights;
    ObservedTime time{observed};
    const DateInterval around{interval.start - longestNight, interval.end + longestNight};
    forEachLocalHour(around, zone, [&](const DateInterval& piece, auto date, int hour) {
        if (hour >= nightEndHour)
            return;
        Night& night = nights[date];
        night.isWhole = night.isWhole && piece.start >= interval.start && piece.end <= interval.end;
        night.time.covered.add(time.secondsIn(piece));
        night.time.total.add(piece.duration().count());
    });
    std::erase_if(nights, [](const auto& night) { return !night.second.isWhole; });
    const auto missing = std::ranges::count_if(nights, [](const auto& night) {
        return night.second.time.covered.value() / night.second.time.total.value() < sufficientCoverage;
    });
    return missing >= fewestMissingNights && missing * 2 >= std::ssize(nights);
}

}  // namespace tidewell
