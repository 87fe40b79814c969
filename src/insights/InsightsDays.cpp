#include "insights/InsightsDays.h"

#include <algorithm>

#include "insights/StableSum.h"

namespace tidewell {

namespace {

/// Sensors' clocks are not exact; the same tolerance as that of episodes.
constexpr double gapTolerance = 1.1;

/// Sums of one day.
struct Sums {
    StableSum weighted{};
    StableSum observed{};
    StableSum inRange{};
};

void conclude(InsightsDay& day, const Sums& sums)
{
    day.observed = Seconds{sums.observed.value()};
    if (day.observed <= Seconds{0})
        return;
    day.meanMgdl = sums.weighted.value() / sums.observed.value();
    day.inRangeFraction = sums.inRange.value() / sums.observed.value();
}

}  // namespace

std::vector<InsightsDay> insightsDays(std::vector<InsightsReading> readings, const DateInterval& interval,
                                      TimeZone zone)
{
    if (!isUsable(interval))
        return {};
    (void)arrangeReadings(readings);
    const auto weighted = weightedReadings(readings, interval);
    LocalClock clock{zone};
    std::vector<InsightsDay> days;
    const auto first = clock.at(interval.start).date;
    // The end is not part of the period.
    const auto last = clock.at(interval.end - Seconds{1e-3}).date;
    for (auto date = first; date <= last; date += std::chrono::days{1})
        days.push_back({.date = date});

    std::size_t at = 0;
    Sums sums;
    const InsightsReading* previous = nullptr;
    for (const InsightsWeightedReading& one : weighted) {
        const auto [date, second] = clock.at(one.observed.start);
        while (at + 1 < days.size() && days[at].date < date) {
            conclude(days[at++], sums);
            sums = {};
        }
        InsightsDay& day = days[at];
        const bool joins = previous && !day.points.empty() && second >= day.points.back().secondOfDay &&
                           one.reading.date - previous->date <= gapTolerance * previous->sampleDuration;
        day.points.push_back({one.reading.date, one.reading.mgdL, second, joins});
        const double seconds = one.duration.count();
        sums.weighted.add(one.reading.mgdL * seconds);
        sums.observed.add(seconds);
        if (insightsBand(one.reading.mgdL) == InsightsBand::inRange)
            sums.inRange.add(seconds);
        previous = &one.reading;
    }
    if (!days.empty())
        conclude(days[at], sums);
    return days;
}

}  // namespace tidewell
