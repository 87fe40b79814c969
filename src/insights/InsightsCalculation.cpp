#include "insights/InsightsCalculation.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "insights/InsightsAGP.h"
#include "insights/InsightsCoverage.h"
#include "insights/StableSum.h"
#include "insights/WeightedDistribution.h"

namespace tidewell {

namespace {

using Weighted = std::vector<InsightsWeightedReading>;

constexpr double gmiBase = 3.31;
constexpr double gmiByMgdL = 0.02392;

std::array<InsightsBandSummary, allInsightsBands.size()> bandSummaries(const Weighted& weighted)
{
    std::array<InsightsBandSummary, allInsightsBands.size()> bands{};
    std::array<StableSum, allInsightsBands.size()> durations{};
    StableSum total;
    for (const auto& [reading, duration, observed] : weighted) {
        const auto band = static_cast<std::size_t>(insightsBand(reading.mgdL));
        ++bands[band].count;
        durations[band].add(duration.count());
        total.add(duration.count());
    }
    for (std::size_t band = 0; band < bands.size(); ++band) {
        bands[band].band = allInsightsBands[band];
        bands[band].fraction = total.value() > 0 ? durations[band].value() / total.value() : 0;
    }
    return bands;
}

void addMoments(InsightsSummary& summary, const Weighted& weighted)
{
    StableSum total;
    StableSum weightedSum;
    for (const auto& [reading, duration, observed] : weighted) {
        total.add(duration.count());
        weightedSum.add(reading.mgdL * duration.count());
    }
    if (!(total.value() > 0))
        return;
    const double mean = weightedSum.value() / total.value();
    StableSum squares;
    for (const auto& [reading, duration, observed] : weighted)
        squares.add(duration.count() * (reading.mgdL - mean) * (reading.mgdL - mean));
    summary.meanMgdl = mean;
    summary.standardDeviationMgdl = std::sqrt(squares.value() / total.value());
}

/// The indices of the readings by value, in linear time: by one byte of the values after the other, from the
/// last. Bytes that are the same in all of them, as most are in whole mg/dL, cost nothing.
std::vector<std::uint32_t> orderByValue(const Weighted& weighted)
{
    struct Entry {
        std::uint64_t value;  ///< Its bits, which for numbers above zero are in the order of the numbers.
        std::uint32_t index;
    };
    std::vector<Entry> entries(weighted.size());
    std::vector<Entry> sorted(weighted.size());
    using Counts = std::array<std::uint32_t, 256>;
    std::array<Counts, sizeof(std::uint64_t)> counts{};
    const auto byteOf = [](const Entry& entry, std::size_t byte) {
        return static_cast<std::size_t>(entry.value >> (8 * byte) & 0xFF);
    };
    for (std::size_t i = 0; i < weighted.size(); ++i) {
        entries[i] = {std::bit_cast<std::uint64_t>(weighted[i].reading.mgdL), static_cast<std::uint32_t>(i)};
        for (std::size_t byte = 0; byte < counts.size(); ++byte)
            ++counts[byte][byteOf(entries[i], byte)];
    }
    for (std::size_t byte = 0; byte < counts.size(); ++byte) {
        if (entries.empty() || counts[byte][byteOf(entries.front(), byte)] == entries.size())
            continue;
        Counts places{};
        std::exclusive_scan(counts[byte].begin(), counts[byte].end(), places.begin(), 0U);
        for (const Entry& entry : entries)
            sorted[places[byteOf(entry, byte)]++] = entry;
        entries.swap(sorted);
    }
    std::vector<std::uint32_t> order(entries.size());
    std::ranges::transform(entries, order.begin(), &Entry::index);
    return order;
}

void addPercentiles(InsightsSummary& summary, const Weighted& weighted,
                    const std::vector<std::uint32_t>& byValue)
{
    std::vector<WeightedValue> values;
    values.reserve(byValue.size());
    for (const std::uint32_t i : byValue)
        values.push_back({weighted[i].reading.mgdL, weighted[i].duration.count()});
    const WeightedDistribution distribution{std::move(values)};
    summary.medianMgdl = distribution.percentile(0.5);
    summary.q1Mgdl = distribution.percentile(0.25);
    summary.q3Mgdl = distribution.percentile(0.75);
    if (summary.q1Mgdl && summary.q3Mgdl)
        summary.iqrMgdl = *summary.q3Mgdl - *summary.q1Mgdl;
}

InsightsGMI gmiOf(const InsightsSummary& summary, const std::optional<Date>& collectionStartedAt)
{
    using enum InsightsGMIUnavailableReason;
    if (!summary.meanMgdl)
        return {.unavailable = noReadings};
    if (!collectionStartedAt || summary.interval.end - *collectionStartedAt < establishedHistory)
        return {.unavailable = collectingHistory};
    if (summary.interval.duration() < establishedHistory)
        return {.unavailable = shortInterval};
    if (!summary.collectionCoverage.isSufficient())
        return {.unavailable = insufficientCoverage};
    return {.available = gmiBase + gmiByMgdL * *summary.meanMgdl};
}

}  // namespace

InsightsCalculationResult calculateInsights(InsightsCalculationInput input)
{
    InsightsCalculationResult result;
    result.impossibleReadings = arrangeReadings(input.readings);
    const Weighted weighted = weightedReadings(input.readings, input.interval);
    const auto byValue = orderByValue(weighted);
    const auto observed = observedIntervals(weighted);

    InsightsSummary& summary = result.summary;
    summary.interval = input.interval;
    summary.readingCount = weighted.size();
    const Date available =
        std::max(input.interval.start, input.collectionStartedAt.value_or(input.interval.start));
    summary.availableInterval = {std::min(available, input.interval.end), input.interval.end};
    addMoments(summary, weighted);
    addPercentiles(summary, weighted, byValue);
    summary.bands = bandSummaries(weighted);
    summary.coverage = insightsCoverage(observed, summary.interval, input.zone);
    summary.collectionCoverage = insightsCoverage(observed, summary.availableInterval, input.zone);
    // A night from before saving began cannot be missing, whichever coverage is asked.
    summary.coverage.hasMissingNightWarning = summary.collectionCoverage.hasMissingNightWarning =
        hasMissingNights(observed, summary.availableInterval, input.zone);
    summary.agp = insightsAGP(weighted, byValue, input.zone);
    summary.gmi = gmiOf(summary, input.collectionStartedAt);

    if (summary.meanMgdl && *summary.meanMgdl > 0)
        result.coefficientOfVariationPercent = 100 * *summary.standardDeviationMgdl / *summary.meanMgdl;
    result.timeActivePercent = 100 * summary.coverage.fraction();
    result.episodes = insightsEpisodes(weighted);
    return result;
}

}  // namespace tidewell
