#pragma once

#include <optional>
#include <string>
#include <vector>

#include "insights/InsightsCalculation.h"
#include "insights/InsightsCollection.h"
#include "insights/InsightsReportQuality.h"
#include "sources/GlucoseUnits.h"

namespace tidewell {

/// A report and what belongs to it.
struct InsightsReport {
    InsightsCalculationResult result{};
    std::optional<InsightsReportQuality> quality{};
    /// Of saved history; a file has none.
    std::optional<InsightsCollectionStatusState> collection{};
    std::vector<std::string> unreadableDays{};  ///< Dates in UTC of which saved readings cannot be read.
    TimeZone zone = TimeZone::utc();
};

/// For programs: every field of the summary by its name, in mg/dL, seconds and ISO 8601, with full precision;
/// then what stands beside the summary.
[[nodiscard]] std::string insightsDocument(const InsightsReport& report);

/// For a person at a terminal.
[[nodiscard]] std::string insightsLines(const InsightsReport& report, GlucoseUnits unit);

/// Before the report opens: where collection stands, and what helps.
[[nodiscard]] std::string insightsCollectionLines(const InsightsCollectionStatusState& state);

}  // namespace tidewell
