#pragma once

#include <string>
#include <string_view>

#include "insights/InsightsSummary.h"
#include "sources/GlucoseUnits.h"

// What the report says, word for word; for windows and terminals alike.

namespace tidewell {

inline constexpr std::string_view insightsLoadingText = "Loading history…";
inline constexpr std::string_view insightsCalculatingText = "Calculating insights…";
inline constexpr std::string_view insightsUnavailableTitle = "History unavailable";
inline constexpr std::string_view insightsUnavailableText =
    "Your saved history could not be read. You can try again or manage it in Insights settings.";
inline constexpr std::string_view insightsEmptyTitle = "No readings in this period";

inline constexpr std::string_view insightsMeanExplanation =
    "Mean glucose weighted by observed time over the selected period.";
inline constexpr std::string_view insightsDeviationExplanation =
    "Spread of glucose readings around the average, weighted by observed time.";
inline constexpr std::string_view insightsBandsExplanation =
    "Share of observed time. Ranges are fixed and separate from your alert thresholds.";

/// Under the indicator or in its place: "Not a lab HbA1c result", "Needs 14 days of history" and so on.
[[nodiscard]] std::string_view gmiCaption(const InsightsGMI& gmi);
/// What it is made of, in the unit that is shown, or what it still needs.
[[nodiscard]] std::string gmiExplanation(const InsightsGMI& gmi, GlucoseUnits unit);

/// "above 180 to 250" and so on, in a unit.
[[nodiscard]] std::string bandLimits(InsightsBand band, GlucoseUnits unit);
/// "Very low" and so on.
[[nodiscard]] std::string_view bandTitle(InsightsBand band);

/// "13 days 23 h", "1 h 5 min", "20 min": the two largest units.
[[nodiscard]] std::string insightsDurationText(Seconds duration);

/// The time a day that a share of it takes: "1 h 26 min a day"; all of it is "24 h a day".
[[nodiscard]] std::string insightsPerDayText(double fraction);

/// How the profile is read and how it is built.
inline constexpr std::string_view agpConstructionTitle = "How the profile is built";
[[nodiscard]] std::string agpExplanation(GlucoseUnits unit);
[[nodiscard]] std::string agpConstruction();

}  // namespace tidewell
