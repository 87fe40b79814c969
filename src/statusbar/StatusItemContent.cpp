#include "statusbar/StatusItemContent.h"

#include <algorithm>
#include <array>
#include <iterator>

#include <fmt/format.h>

#include "statusbar/SeenReading.h"

namespace tidewell {

namespace {

/// The reading's part of the tooltip's text.
std::string readingLine(const SeenReading& seen, TimeZone zone)
{
    if (seen.freshness != ReadingFreshness::current)
        return staleReadingWarning(seen.age).message;
    const std::string age = seen.age < recentAge ? "less than 5 minutes" : elapsedPhrase(seen.age);
    return fmt::format("Measured at {}, {} ago, {}", localTimeOfDay(seen.reading.date, zone), age,
                       trendPhrase(seen.reading.trendString));
}

StatusButtonLook buttonLook(const SeenReading& seen, const AppSettings& settings)
{
    if (seen.freshness != ReadingFreshness::current)
        return StatusButtonLook::plain;
    switch (titleColor(seen.reading, settings)) {
    case TitleColor::primary: return StatusButtonLook::plain;
    case TitleColor::orange: return StatusButtonLook::orangeFill;
    case TitleColor::red: return StatusButtonLook::redFill;
    }
    std::unreachable();
}

void addReading(StatusItemContent& content, const SeenReading& seen, const AppSettings& settings)
{
    content.label = statusTitle(seen.reading, seen.freshness, settings);
    content.look = buttonLook(seen, settings);
    content.freshness = seen.freshness;
    content.tooltipTitle = readingTitle(seen, settings);
    content.value = content.label;
    if (seen.freshness != ReadingFreshness::current)
        return;
    content.range = glucoseRange(seen.reading.mgdL, settings);
    content.value = valueText(seen.reading, settings);
    content.arrow = seen.reading.trendArrow;
}

bool snoozed(const StatusBarState& state, Date now)
{
    return state.alertsSnoozedUntil && *state.alertsSnoozedUntil > now;
}

std::string tooltipText(const StatusBarState& state, const std::optional<SeenReading>& seen,
                        const AppSettings& settings, Date now, TimeZone zone)
{
    std::vector<std::string> lines;
    if (seen)
        lines.push_back(readingLine(*seen, zone));
    if (state.activity)
        lines.emplace_back(activityLine(*state.activity));
    if (const auto& error = state.currentError) {
        std::ranges::copy_if(std::array{error->title, error->message, error->remediation},
                             std::back_inserter(lines), [](const auto& line) { return !line.empty(); });
        if (state.nextRetryAt)
            lines.push_back(nextRetryLine(*state.nextRetryAt, zone));
    } else if (seen && seen->freshness != ReadingFreshness::current) {
        lines.push_back(staleReadingWarning(seen->age).remediation);
    }
    if (lines.empty())
        lines.emplace_back("Waiting for the first reading.");
    if (state.alertProblem)
        lines.push_back(*state.alertProblem);
    if (state.historyProblem)
        lines.push_back(*state.historyProblem);
    if (state.bookkeepingProblem)
        lines.emplace_back("Tidewell cannot remember what you choose.");
    if (snoozed(state, now))
        lines.push_back(snoozeLine(*state.alertsSnoozedUntil, settings, zone));
    return fmt::format("{}", fmt::join(lines, "\n"));
}

StatusIndicator indicator(const StatusBarState& state, const std::optional<SeenReading>& seen)
{
    if (shownProblem(state, seen) || state.alertProblem || state.historyProblem || state.bookkeepingProblem)
        return StatusIndicator::warning;
    return state.updateAvailable ? StatusIndicator::updateAvailable : StatusIndicator::none;
}

}  // namespace

StatusItemContent statusItemContent(const StatusBarState& state, const AppSettings& settings, Date now,
                                    TimeZone zone, const MenuPlaces& places)
{
    const std::optional<SeenReading> seen = seenReading(state, now);
    StatusItemContent content{
        .iconState = state.iconState,
        .indicator = indicator(state, seen),
        .activity = state.activity,
        .alertsSnoozed =
            settings.alertsEnabled && snoozed(state, now) &&
            (settings.snoozeLowAlerts || settings.snoozeHighAlerts || settings.snoozeRapidChangeAlerts),
        .tooltipTitle = "Tidewell",
        .tooltipText = tooltipText(state, seen, settings, now, zone),
        .accessibilityLabel = "Tidewell",
        .accessibilityValue = state.accessibilityValue,
        .accessibilityHelp = "Shows the latest glucose reading. Open the menu for the graph and settings.",
        .menu = statusBarMenu(state, settings, places, now, zone),
    };
    if (!seen)
        return content;
    addReading(content, *seen, settings);
    if (seen->freshness != state.freshness)
        content.accessibilityValue =
            spokenStatus(spokenStaleReading(seen->reading, seen->reading.date + seen->age, settings),
                         state.activity, state.currentError);
    return content;
}

}  // namespace tidewell
