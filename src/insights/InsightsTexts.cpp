#include "insights/InsightsTexts.h"

#include <fmt/format.h>

#include <utility>

namespace tidewell {

std::string_view gmiCaption(const InsightsGMI& gmi)
{
    using enum InsightsGMIUnavailableReason;
    if (gmi.available)
        return "Not a lab HbA1c result";
    switch (gmi.unavailable) {
    case noReadings: return "Needs saved readings";
    case collectingHistory: return "Needs 14 days of history";
    case shortInterval: return "Needs a 14-day period";
    case insufficientCoverage: return "Needs 70% coverage";
    }
    std::unreachable();
}

std::string gmiExplanation(const InsightsGMI& gmi, GlucoseUnits unit)
{
    using enum InsightsGMIUnavailableReason;
    if (gmi.available)
        return fmt::format("{} × mean glucose in {}",
                           unit == GlucoseUnits::mgdL ? "3.31 + 0.02392" : "3.31 + 0.43056", rawValue(unit));
    switch (gmi.unavailable) {
    case noReadings:
        return "GMI needs saved readings, 14 days of history, and at least 70% collected coverage.";
    case shortInterval: return "Choose a period of at least 14 days.";
    case collectingHistory:
    case insufficientCoverage:
        return "Available after 14 days of history with at least 70% collected coverage.";
    }
    std::unreachable();
}

std::string bandLimits(InsightsBand band, GlucoseUnits unit)
{
    using enum InsightsBand;
    const std::string first = formatGlucose(veryLowBelow, unit);
    const std::string second = formatGlucose(lowBelow, unit);
    const std::string third = formatGlucose(highAbove, unit);
    const std::string fourth = formatGlucose(veryHighAbove, unit);
    switch (band) {
    case veryLow: return "below " + first;
    case low: return fmt::format("{} to below {}", first, second);
    case inRange: return fmt::format("{} to {}", second, third);
    case high: return fmt::format("above {} to {}", third, fourth);
    case veryHigh: return "above " + fourth;
    }
    std::unreachable();
}

std::string_view bandTitle(InsightsBand band)
{
    using enum InsightsBand;
    switch (band) {
    case veryLow: return "Very low";
    case low: return "Low";
    case inRange: return "In range";
    case high: return "High";
    case veryHigh: return "Very high";
    }
    std::unreachable();
}

std::string insightsDurationText(Seconds duration)
{
    const auto minutes = std::chrono::round<std::chrono::minutes>(duration).count();
    const auto days = minutes / 1440;
    const auto hours = minutes % 1440 / 60;
    if (days > 0)
        return fmt::format("{} day{}{}", days, days == 1 ? "" : "s",
                           hours ? fmt::format(" {} h", hours) : "");
    if (hours > 0)
        return fmt::format("{} h{}", hours, minutes % 60 ? fmt::format(" {} min", minutes % 60) : "");
    return fmt::format("{} min", minutes);
}

std::string insightsPerDayText(double fraction)
{
    const Seconds duration{fraction * 86'400};
    // A whole day of a day is 24 hours of it.
    const bool isWhole = std::chrono::round<std::chrono::minutes>(duration) >= std::chrono::days{1};
    return (isWhole ? "24 h" : insightsDurationText(duration)) + " a day";
}

std::string agpExplanation(GlucoseUnits unit)
{
    return fmt::format(
        "The profile combines every day in the selected period into a single 24-hour day. The line shows the "
        "median "
        "(middle value) for each time of day, the darker band covers the middle 50%, and the lighter band "
        "covers the "
        "middle 90%, after weighting readings by the time they represent. Hover over the chart, or click to "
        "keep a "
        "time selected, to see its values. The green shading marks the {}–{} {} target range. Times of day "
        "with "
        "readings from fewer than {} different days are left blank.",
        formatGlucose(lowBelow, unit), formatGlucose(highAbove, unit), rawValue(unit),
        InsightsAGP::minimumDays);
}

std::string agpConstruction()
{
    return fmt::format(
        "Readings are grouped into 15-minute intervals using your Mac’s current time zone, and each interval "
        "needs "
        "readings from at least {} different dates. The bands show the 25th–75th and 5th–95th percentiles. "
        "Equally "
        "weighted Dexcom readings use type-7 interpolation; Libre readings use the weighted distribution to "
        "account "
        "for their different sampling intervals. Curves are smoothed between intervals for display only: the "
        "values "
        "shown on hover are unchanged, and gaps are never filled. Repeated clock times during daylight "
        "saving changes "
        "share an interval.",
        InsightsAGP::minimumDays);
}

}  // namespace tidewell
