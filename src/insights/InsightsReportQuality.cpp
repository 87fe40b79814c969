#include "insights/InsightsReportQuality.h"

#include <utility>

#include "insights/InsightsCalculation.h"

namespace tidewell {

namespace {

constexpr std::string_view chartSymbol = "chart.bar.xaxis";

InsightsReportQuality earlyNotice(bool night)
{
    return {
        InsightsReportQuality::Kind::early,
        night
            ? "Early insights. Overnight readings are often missing; patterns may change as more history is "
              "saved."
            : "Early insights. Patterns may change as more history is saved.",
        chartSymbol, "insightsEarlyDataNotice"};
}

InsightsReportQuality limitedNotice(bool night)
{
    return {
        InsightsReportQuality::Kind::limited,
        night
            ? "Limited data. Overnight readings are often missing; these insights may not reflect your usual "
              "glucose."
            : "Limited data. Gaps in the selected period may affect these insights.",
        chartSymbol, "insightsLimitedDataNotice"};
}

}  // namespace

std::string_view rawValue(InsightsReportQuality::Kind kind)
{
    using enum InsightsReportQuality::Kind;
    switch (kind) {
    case early: return "early";
    case limited: return "limited";
    case overnight: return "overnight";
    }
    std::unreachable();
}

std::optional<InsightsReportQuality> insightsReportQuality(const InsightsSummary& summary,
                                                           const std::optional<Date>& collectionStartedAt)
{
    if (summary.readingCount < 1)
        return {};
    const bool early =
        !collectionStartedAt || summary.interval.end - *collectionStartedAt < establishedHistory;
    const bool night = summary.collectionCoverage.hasMissingNightWarning;
    if (!summary.collectionCoverage.isSufficient())
        return limitedNotice(night);
    if (early)
        return earlyNotice(night);
    if (!summary.coverage.isSufficient())
        return limitedNotice(night);
    if (night)
        return InsightsReportQuality{
            InsightsReportQuality::Kind::overnight,
            "Overnight readings are often missing. These insights may not represent your usual glucose.",
            "moon.zzz.fill", "insightsMissingNightWarning"};
    return {};
}

}  // namespace tidewell
