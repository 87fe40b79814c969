#include "insights/InsightsWeighting.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "sources/ReadingLimits.h"

namespace tidewell {

namespace {

bool isPossible(const InsightsReading& reading)
{
    return isPossibleValue(reading.mgdL) && std::isfinite(unixSeconds(reading.date)) &&
           reading.sampleDuration > Seconds{0} && std::isfinite(reading.sampleDuration.count());
}

}  // namespace

InsightsReading insightsReading(const GlucoseReading& reading, Date fetchedAt)
{
    return {reading.mgdL, reading.date, reading.sampleDuration, fetchedAt};
}

std::size_t arrangeReadings(std::vector<InsightsReading>& readings)
{
    const std::size_t impossible = std::erase_if(readings, [](const auto& r) { return !isPossible(r); });
    // The value only makes the outcome independent of the order of the input.
    const auto place = [](const InsightsReading& r) { return std::tuple{r.date, r.fetchedAt, r.mgdL}; };
    if (!std::ranges::is_sorted(readings, {}, place))
        std::ranges::sort(readings, {}, place);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < readings.size(); ++i)
        if (i + 1 == readings.size() || readings[i + 1].date != readings[i].date)
            readings[kept++] = readings[i];
    readings.resize(kept);
    return impossible;
}

std::vector<InsightsWeightedReading> weightedReadings(std::span<const InsightsReading> arranged,
                                                      const DateInterval& interval)
{
    std::vector<InsightsWeightedReading> weighted;
    if (!isUsable(interval))
        return weighted;
    const auto first = std::ranges::lower_bound(arranged, interval.start, {}, &InsightsReading::date);
    const auto last = std::ranges::lower_bound(arranged, interval.end, {}, &InsightsReading::date);
    weighted.reserve(static_cast<std::size_t>(last - first) + 1);
    // Of the readings before the period, only the last can reach into it.
    for (auto reading = first == arranged.begin() ? first : first - 1; reading != last; ++reading) {
        const Date next = reading + 1 == arranged.end() ? interval.end : (reading + 1)->date;
        const Date expiry = reading->date + reading->sampleDuration;
        const DateInterval observed{std::max(reading->date, interval.start),
                                    std::min({next, interval.end, expiry})};
        if (!(observed.start < observed.end))
            continue;
        // The sum of a time and a duration may be rounded; a whole sample duration is what it is.
        const bool whole = observed.start == reading->date && observed.end == expiry;
        weighted.push_back({*reading, whole ? reading->sampleDuration : observed.duration(), observed});
    }
    return weighted;
}

std::vector<DateInterval> observedIntervals(std::span<const InsightsWeightedReading> weightedReadings)
{
    std::vector<DateInterval> observed;
    for (const auto& weighted : weightedReadings) {
        if (!observed.empty() && weighted.observed.start <= observed.back().end)
            observed.back().end = std::max(observed.back().end, weighted.observed.end);
        else
            observed.push_back(weighted.observed);
    }
    return observed;
}

}  // namespace tidewell
