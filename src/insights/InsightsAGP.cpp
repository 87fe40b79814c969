#include "insights/InsightsAGP.h"

#include <algorithm>

#include "insights/WeightedDistribution.h"

namespace tidewell {

namespace {

constexpr int binSeconds = InsightsAGP::binMinutes * 60;

std::optional<InsightsAGPPercentiles> percentilesOf(std::vector<WeightedValue> values)
{
    const WeightedDistribution distribution{std::move(values)};
    const auto p5 = distribution.percentile(0.05);
    const auto p25 = distribution.percentile(0.25);
    const auto median = distribution.percentile(0.5);
    const auto p75 = distribution.percentile(0.75);
    const auto p95 = distribution.percentile(0.95);
    if (!p5 || !p25 || !median || !p75 || !p95)
        return {};
    return InsightsAGPPercentiles{*p5, *p25, *median, *p75, *p95};
}

}  // namespace

InsightsAGP insightsAGP(std::span<const InsightsWeightedReading> weighted,
                        std::span<const std::uint32_t> byValue, TimeZone zone)
{
    InsightsAGP agp{.timeZoneIdentifier = zone.name()};
    std::vector<std::uint8_t> binOf(weighted.size());
    std::array<std::size_t, InsightsAGP::binCount> counts{};
    std::array<std::chrono::sys_days, InsightsAGP::binCount> lastDates{};
    std::vector<std::chrono::sys_days> dates;
    LocalClock clock{zone};
    for (std::size_t i = 0; i < weighted.size(); ++i) {
        const auto shown = clock.at(weighted[i].reading.date);
        const auto bin = static_cast<std::size_t>(shown.secondOfDay / binSeconds);
        binOf[i] = static_cast<std::uint8_t>(bin);
        // Within one bin, dates never go back, also where clocks are put back over midnight.
        if (counts[bin]++ == 0 || lastDates[bin] != shown.date) {
            lastDates[bin] = shown.date;
            ++agp.bins[bin].dayCount;
        }
        if (dates.empty() || dates.back() != shown.date)
            dates.push_back(shown.date);
    }
    std::ranges::sort(dates);
    dates.erase(std::ranges::unique(dates).begin(), dates.end());
    agp.contributingDayCount = static_cast<int>(dates.size());

    std::array<std::vector<WeightedValue>, InsightsAGP::binCount> values;
    for (std::size_t bin = 0; bin < values.size(); ++bin)
        values[bin].reserve(counts[bin]);
    for (const std::uint32_t i : byValue)
        values[binOf[i]].push_back({weighted[i].reading.mgdL, weighted[i].duration.count()});
    for (std::size_t bin = 0; bin < values.size(); ++bin) {
        agp.bins[bin].startMinute = static_cast<int>(bin) * InsightsAGP::binMinutes;
        if (agp.bins[bin].dayCount >= InsightsAGP::minimumDays)
            agp.bins[bin].percentiles = percentilesOf(std::move(values[bin]));
    }
    return agp;
}

}  // namespace tidewell
