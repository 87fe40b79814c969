#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "insights/LocalClock.h"

// What a period of readings comes to: values only. Glucose in mg/dL, times in seconds.

namespace tidewell {

/// The bands of the international consensus on time in range (Battelino et al. 2019, doi 10.2337/dci19-0028);
/// they are fixed, and have nothing to do with alert thresholds.
enum class InsightsBand { veryLow, low, inRange, high, veryHigh };
inline constexpr std::array allInsightsBands{InsightsBand::veryLow, InsightsBand::low, InsightsBand::inRange,
                                             InsightsBand::high, InsightsBand::veryHigh};
/// "veryLow" and so on.
[[nodiscard]] std::string_view rawValue(InsightsBand band);

/// mg/dL. The lower two begin their band, the upper two end theirs.
inline constexpr double veryLowBelow = 54;
inline constexpr double lowBelow = 70;
inline constexpr double highAbove = 180;
inline constexpr double veryHighAbove = 250;
/// By the exact value, never by the rounded one that is shown: 180.4 is high.
[[nodiscard]] constexpr InsightsBand insightsBand(double mgdL)
{
    using enum InsightsBand;
    if (mgdL < lowBelow)
        return mgdL < veryLowBelow ? veryLow : low;
    if (mgdL > highAbove)
        return mgdL > veryHighAbove ? veryHigh : high;
    return inRange;
}

struct InsightsBandSummary {
    InsightsBand band{};
    std::size_t count = 0;  ///< Weighted readings.
    double fraction = 0;    ///< Of the observed time; 0 without any.
};

/// One local date of a period.
struct InsightsDayCoverage {
    std::chrono::sys_days date{};  ///< The local date, as if the local time were UTC.
    Seconds coveredDuration{};
    Seconds totalDuration{};  ///< Of it in the period: up to 25 hours, 23 when the clock was put forward.
};

/// One hour of the local clock, over all days of a period. One that a clock went through twice counts twice.
struct InsightsHourCoverage {
    int hour = 0;  ///< 0 to 23.
    Seconds coveredDuration{};
    Seconds totalDuration{};
};

struct InsightsCoverage {
    Seconds coveredDuration{};
    Seconds totalDuration{};
    std::vector<InsightsDayCoverage> days{};    ///< By date.
    std::vector<InsightsHourCoverage> hours{};  ///< 24.
    bool hasMissingNightWarning = false;
    /// 0 for no time at all.
    [[nodiscard]] double fraction() const;
    /// At least 70 % of some time.
    [[nodiscard]] bool isSufficient() const;
};

/// Below it, data is limited (Battelino et al. 2019, doi 10.2337/dci19-0028: 70 % of 14 days).
inline constexpr double sufficientCoverage = 0.7;

struct InsightsAGPPercentiles {
    double p5Mgdl = 0;
    double p25Mgdl = 0;
    double medianMgdl = 0;
    double p75Mgdl = 0;
    double p95Mgdl = 0;
};

struct InsightsAGPBin {
    int startMinute = 0;  ///< After local midnight.
    int dayCount = 0;     ///< Local dates with readings in it.
    std::optional<InsightsAGPPercentiles> percentiles{};
};

/// The ambulatory glucose profile: every day of the period as one.
struct InsightsAGP {
    static constexpr int binMinutes = 15;
    static constexpr std::size_t binCount = 96;
    static constexpr int minimumDays = 3;  ///< Of a bin that is not left blank.
    std::array<InsightsAGPBin, binCount> bins{};
    int contributingDayCount = 0;  ///< Local dates of all bins together.
    std::string timeZoneIdentifier{};
};

/// Why there is no glucose management indicator; the first reason that applies.
enum class InsightsGMIUnavailableReason {
    noReadings,
    collectingHistory,
    shortInterval,
    insufficientCoverage
};
/// "noReadings" and so on.
[[nodiscard]] std::string_view rawValue(InsightsGMIUnavailableReason reason);

/// The glucose management indicator, in percent: 3.31 + 0.02392 x mean glucose in mg/dL (Bergenstal et al.
/// 2018, doi 10.2337/dc18-1581).
struct InsightsGMI {
    std::optional<double> available{};
    InsightsGMIUnavailableReason unavailable{};  ///< Where there is none.
};

struct InsightsSummary {
    DateInterval interval{};
    std::size_t readingCount = 0;      ///< With time in the period.
    DateInterval availableInterval{};  ///< Of the period, what came after saving began; empty: no length.
    std::optional<double> meanMgdl{};
    std::optional<double> standardDeviationMgdl{};
    std::optional<double> medianMgdl{};
    std::optional<double> q1Mgdl{};
    std::optional<double> q3Mgdl{};
    std::optional<double> iqrMgdl{};
    std::array<InsightsBandSummary, allInsightsBands.size()> bands{};
    InsightsCoverage coverage{};
    InsightsCoverage collectionCoverage{};  ///< Of availableInterval.
    InsightsAGP agp{};
    InsightsGMI gmi{};
};

}  // namespace tidewell
