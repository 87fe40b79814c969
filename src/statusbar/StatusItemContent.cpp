#include "statusbar/StatusItemContent.h"

#include <algorithm>
#include <ranges>

#include <fmt/format.h>

namespace tidewell {

namespace {

/// What the state shows, seen at `now`: a reading may have aged since the state was made.
struct SeenReading {
    const GlucoseReading& reading;
    ReadingFreshness freshness;
    Seconds age;
};

std::optional<SeenReading> seenReading(const StatusBarState& state, Date now)
{
    if (!state.presentedReading)
        return std::nullopt;
    const GlucoseReading& reading = *state.presentedReading;
    const ReadingFreshness known = state.freshness.value_or(ReadingFreshness::current);
    const ReadingFreshness freshness = std::max(known, readingFreshness(reading.date, now));
    Seconds age = std::max(now - reading.date, Seconds{0});
    if (freshness == ReadingFreshness::stale)
        age = std::max(age, staleAge);
    if (freshness == ReadingFreshness::expired)
        age = std::max(age, expiredAge);
    return SeenReading{reading, freshness, age};
}

/// The problem that the menu shows: there is room for one, and an error explains a stale reading.
std::optional<ErrorInfo> shownProblem(const StatusBarState& state, const std::optional<SeenReading>& seen)
{
    if (state.currentError)
        return state.currentError;
    if (seen && seen->freshness != ReadingFreshness::current)
        return staleReadingWarning(seen->age);
    return std::nullopt;
}

std::vector<std::string> problemLines(const ErrorInfo& problem, std::optional<Date> nextRetryAt,
                                      TimeZone zone)
{
    std::vector<std::string> lines{problem.title, problem.message, problem.remediation};
    std::erase(lines, "");
    if (nextRetryAt)
        lines.push_back("Next retry at " + localTimeOfDay(*nextRetryAt, zone));
    return lines;
}

/// The reading's part of the tooltip's text.
std::string readingLine(const SeenReading& seen, TimeZone zone)
{
    if (seen.freshness != ReadingFreshness::current)
        return staleReadingWarning(seen.age).message;
    const std::string age = seen.age < recentAge ? "less than 5 minutes" : elapsedPhrase(seen.age);
    return fmt::format("Measured at {}, {} ago, {}", localTimeOfDay(seen.reading.date, zone), age,
                       trendPhrase(seen.reading.trendString));
}

std::string_view activityLine(StatusBarActivity activity)
{
    switch (activity) {
    case StatusBarActivity::loading: return "Loading glucose…";
    case StatusBarActivity::refreshing: return "Refreshing glucose…";
    case StatusBarActivity::authenticating: return "Signing in…";
    }
    std::unreachable();
}

MenuItem text(std::string title)
{
    return {.kind = MenuItem::Kind::text, .title = std::move(title), .enabled = false};
}

MenuItem separator() { return {.kind = MenuItem::Kind::separator, .enabled = false}; }

void addSnooze(std::vector<MenuItem>& items, const StatusBarState& state, const AppSettings& settings,
               Date now, TimeZone zone)
{
    if (state.alertsSnoozedUntil && *state.alertsSnoozedUntil > now) {
        items.push_back(text(snoozeLine(*state.alertsSnoozedUntil, settings, zone)));
        items.push_back({.title = "Resume alerts now", .command = MenuCommand::resumeAlerts});
    } else {
        items.push_back({.title = "Snooze alerts (30 min)", .command = MenuCommand::snooze30Minutes});
        items.push_back({.title = "Snooze alerts (2 hours)", .command = MenuCommand::snooze2Hours});
    }
    items.push_back(separator());
}

std::vector<MenuItem> menu(const StatusBarState& state, const std::optional<ErrorInfo>& problem,
                           const AppSettings& settings, Date now, TimeZone zone)
{
    std::vector<MenuItem> items;
    if (problem)
        for (std::string& line : problemLines(*problem, state.nextRetryAt, zone))
            items.push_back(text(std::move(line)));
    if (state.alertProblem)
        for (const auto line : std::views::split(*state.alertProblem, '\n'))
            items.push_back(text(std::string{std::string_view{line}}));
    if (!items.empty())
        items.push_back(separator());

    const bool canReconnect = state.currentError && state.currentError->canReconnect;
    const bool waitsForPerson = canReconnect || (state.currentError && state.currentError->needsSignIn);
    if (canReconnect)
        items.push_back({.title = "Reconnect", .command = MenuCommand::reconnect});
    if (waitsForPerson) {
        items.push_back({.title = "Sign in…", .command = MenuCommand::signIn});
        items.push_back(separator());
    }
    addSnooze(items, state, settings, now, zone);
    items.push_back(
        {.title = "Refresh", .command = MenuCommand::refresh, .enabled = !state.activity && !waitsForPerson});
    if (!waitsForPerson)
        items.push_back({.title = "Switch account…", .command = MenuCommand::signIn});
    items.push_back(separator());
    items.push_back({.title = "Quit", .command = MenuCommand::quit});
    return items;
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
    if (seen.freshness == ReadingFreshness::expired) {
        content.value = content.label;
        content.tooltipTitle = content.label;
        return;
    }
    const std::string value = valueText(seen.reading, settings);
    const std::string unit =
        glucoseUnits(settings.measurementUnit) == GlucoseUnits::mmolL ? "mmol/L" : "mg/dL";
    if (seen.freshness == ReadingFreshness::stale) {
        content.value = content.label;
        content.tooltipTitle = value + " " + unit + " ?";
        return;
    }
    content.range = glucoseRange(seen.reading.mgdL, settings);
    content.value = value;
    content.arrow = seen.reading.trendArrow;
    content.tooltipTitle = value + " " + unit + " " + seen.reading.trendArrow;
}

std::string tooltipText(const StatusBarState& state, const std::optional<SeenReading>& seen, TimeZone zone)
{
    std::vector<std::string> lines;
    if (seen)
        lines.push_back(readingLine(*seen, zone));
    if (state.activity)
        lines.emplace_back(activityLine(*state.activity));
    if (state.currentError)
        std::ranges::move(problemLines(*state.currentError, state.nextRetryAt, zone),
                          std::back_inserter(lines));
    else if (seen && seen->freshness != ReadingFreshness::current)
        lines.push_back(staleReadingWarning(seen->age).remediation);
    if (lines.empty())
        lines.emplace_back("Waiting for the first reading.");
    if (state.alertProblem)
        lines.push_back(*state.alertProblem);
    return fmt::format("{}", fmt::join(lines, "\n"));
}

}  // namespace

StatusItemContent statusItemContent(const StatusBarState& state, const AppSettings& settings, Date now,
                                    TimeZone zone)
{
    const std::optional<SeenReading> seen = seenReading(state, now);
    const std::optional<ErrorInfo> problem = shownProblem(state, seen);
    StatusItemContent content{
        .iconState = state.iconState,
        .warningBadge = problem.has_value(),
        .tooltipTitle = "Tidewell",
        .tooltipText = tooltipText(state, seen, zone),
        .accessibilityLabel = "Tidewell",
        .accessibilityValue = state.accessibilityValue,
        .menu = menu(state, problem, settings, now, zone),
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

std::string snoozeLine(Date until, const AppSettings& settings, TimeZone zone)
{
    std::vector<std::string_view> silenced;
    if (settings.snoozeLowAlerts)
        silenced.emplace_back("low");
    if (settings.snoozeHighAlerts)
        silenced.emplace_back("high");
    if (settings.snoozeRapidChangeAlerts)
        silenced.emplace_back("rapid-change");
    std::string alerts = "No alerts (no category is selected)";
    if (!silenced.empty()) {
        const std::string_view last = silenced.back();
        silenced.pop_back();
        alerts =
            fmt::format("{}{}{} alerts", fmt::join(silenced, ", "), silenced.empty() ? "" : " and ", last);
        alerts.front() = static_cast<char>(alerts.front() - 'a' + 'A');
    }
    return alerts + " snoozed until " + localTimeOfDay(until, zone);
}

}  // namespace tidewell
