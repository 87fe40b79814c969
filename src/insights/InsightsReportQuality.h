#pragma once

#include <optional>
#include <string_view>

#include "insights/InsightsSummary.h"

namespace tidewell {

/// The one notice that a report may carry.
struct InsightsReportQuality {
    enum class Kind { early, limited, overnight };
    Kind kind{};
    std::string_view message{};
    std::string_view symbolName{};
    std::string_view accessibilityIdentifier{};
    bool operator==(const InsightsReportQuality&) const = default;
};
/// "early" and so on.
[[nodiscard]] std::string_view rawValue(InsightsReportQuality::Kind kind);

/// Early, in the first 14 days of collection, comes before limited only while what was collected since is
/// enough. An unknown start counts as early. Empty: no readings, or nothing to say.
[[nodiscard]] std::optional<InsightsReportQuality> insightsReportQuality(
    const InsightsSummary& summary, const std::optional<Date>& collectionStartedAt);

}  // namespace tidewell
