#pragma once

#include <optional>
#include <vector>

#include "insights/InsightsEpisodes.h"
#include "insights/InsightsSummary.h"
#include "insights/InsightsWeighting.h"

namespace tidewell {

/// One calculation: whose zone, which period, which readings.
struct InsightsCalculationInput {
    std::vector<InsightsReading> readings{};  ///< In any order; of the period, and of up to 900 s before it.
    DateInterval interval{};                  ///< The period; one without a length has no readings.
    std::optional<Date> collectionStartedAt{};  ///< When saving began; unknown counts as long ago.
    TimeZone zone = TimeZone::utc();
};

/// A summary and what the standard report has beside it.
struct InsightsCalculationResult {
    InsightsSummary summary{};
    /// Standard deviation by mean, in percent. At most 36 is the target of the international consensus
    /// (Battelino et al. 2019, doi 10.2337/dci19-0028).
    std::optional<double> coefficientOfVariationPercent{};
    double timeActivePercent = 0;  ///< Share of the period in which the sensor gave readings.
    std::vector<InsightsEpisode> episodes{};
    std::size_t impossibleReadings = 0;  ///< Left out of the input: nothing that a sensor can have measured.
};
inline constexpr double coefficientOfVariationTargetPercent = 36;

/// Shorter, there is no GMI, and the report is early.
inline constexpr Seconds establishedHistory{std::chrono::hours{14 * 24}};

/// Everything that Insights knows of a period. A pure function: no clock, no I/O, any thread. Linear in the
/// readings and the hours of the period, apart from a sort by time when the readings come unsorted.
///
/// Mean: sum of value x duration by sum of durations; standard deviation: of the population, weighted
/// likewise, in two passes; GMI from the mean (InsightsGMI). All sums are compensated.
[[nodiscard]] InsightsCalculationResult calculateInsights(InsightsCalculationInput input);

}  // namespace tidewell
