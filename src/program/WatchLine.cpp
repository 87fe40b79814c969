#include "program/WatchLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "program/WatchBarLine.h"
#include "sources/GlucoseUnits.h"
#include "statusbar/StatusBarStateNames.h"

namespace tidewell {

namespace {

using NamedFormat = std::pair<std::string_view, WatchFormat>;
constexpr std::array<NamedFormat, 6> formats{{
    {"text", WatchFormat::text},
    {"json", WatchFormat::json},
    {"waybar", WatchFormat::waybar},
    {"i3blocks", WatchFormat::i3blocks},
    {"polybar", WatchFormat::polybar},
    {"tmux", WatchFormat::tmux},
}};

json::value orNull(const std::optional<Date>& date)
{
    return date ? json::value(isoText(*date)) : json::value{};
}

json::value orNull(const std::optional<ErrorInfo>& error)
{
    if (!error)
        return {};
    return json::object{
        {"title", error->title}, {"message", error->message}, {"remediation", error->remediation}};
}

json::value readingOrNull(const std::optional<GlucoseReading>& reading)
{
    if (!reading)
        return {};
    json::object object = encode(*reading);
    object["trendArrow"] = reading->trendArrow;
    return object;
}

WatchLine jsonLine(const StatusBarState& state, Date now)
{
    json::object object{
        {"time", nullptr},
        {"statusTitle", state.statusTitle},
        {"titleColor", rawValue(state.titleColor)},
        {"iconState", rawValue(state.iconState)},
        {"activity", state.activity ? json::value(rawValue(*state.activity)) : json::value{}},
        {"freshness", rawValue(state.freshness)},
        {"reading", readingOrNull(state.presentedReading)},
        {"readingCount", state.glucoseHistory.size()},
        {"currentError", orNull(state.currentError)},
        {"freshnessWarning", orNull(state.freshnessWarning)},
        {"hasWarning", state.hasWarning},
        {"alertsSnoozedUntil", orNull(state.alertsSnoozedUntil)},
        {"nextRetryAt", orNull(state.nextRetryAt)},
        {"accessibilityValue", state.accessibilityValue},
    };
    WatchLine line{.text = {}, .content = compactJson(object)};
    object["time"] = isoText(now);
    line.text = compactJson(object);
    return line;
}

WatchLine textLine(const StatusBarState& state, const AppSettings& settings, Date now, TimeZone zone)
{
    std::string text;
    const auto append = [&text](std::string_view part) {
        if (!text.empty())
            text += "  ";
        text += part;
    };
    if (!state.statusTitle.empty()) {
        if (state.presentedReading && state.freshness == ReadingFreshness::current) {
            const auto unit = glucoseUnits(settings.measurementUnit).value_or(GlucoseUnits::mgdL);
            append(fmt::format("{} {} {}", formatGlucose(state.presentedReading->mgdL, unit), rawValue(unit),
                               state.presentedReading->trendArrow));
        } else {
            append(state.statusTitle);
        }
        if (state.presentedReading)
            append("measured at " + localTimeOfDay(state.presentedReading->date, zone));
    }
    if (state.activity) {
        switch (*state.activity) {
        case StatusBarActivity::loading: append("Loading glucose..."); break;
        case StatusBarActivity::refreshing: append("Refreshing glucose..."); break;
        case StatusBarActivity::authenticating: append("Signing in..."); break;
        }
    }
    if (state.currentError)
        append(problemSentence(*state.currentError));
    if (state.freshnessWarning)
        append(problemSentence(*state.freshnessWarning));
    if (state.hasWarning && state.nextRetryAt)
        append("Next retry at " + localTimeOfDay(*state.nextRetryAt, zone));
    if (text.empty())
        text = "Waiting for the first reading";
    return {.text = localTimeOfDay(now, zone) + "  " + text, .content = text};
}

}  // namespace

std::optional<WatchFormat> watchFormat(std::string_view name)
{
    const auto found = std::ranges::find(formats, name, &NamedFormat::first);
    return found == formats.end() ? std::nullopt : std::optional{found->second};
}

std::vector<std::string> watchFormatNames()
{
    std::vector<std::string> names;
    for (const auto& [name, format] : formats)
        names.emplace_back(name);
    return names;
}

WatchLine watchLine(WatchFormat format, const StatusBarState& state, const AppSettings& settings, Date now,
                    TimeZone zone)
{
    switch (format) {
    case WatchFormat::text: return textLine(state, settings, now, zone);
    case WatchFormat::json: return jsonLine(state, now);
    case WatchFormat::waybar:
    case WatchFormat::i3blocks:
    case WatchFormat::polybar:
    case WatchFormat::tmux: return watchBarLine(format, state, settings, now, zone);
    }
    std::unreachable();
}

std::string problemSentence(const ErrorInfo& error)
{
    std::string text = error.title;
    if (!error.message.empty())
        text += (text.empty() || text.ends_with('.') ? " " : ": ") + error.message;
    if (!error.remediation.empty()) {
        if (!text.empty() && !text.ends_with('.'))
            text += '.';
        text += " " + error.remediation;
    }
    return text;
}

bool watchIsSettled(const StatusBarState& state)
{
    return !state.activity && (state.presentedReading || state.currentError);
}

ExitCode watchExitCode(const StatusBarState& state)
{
    if (state.currentError && (state.currentError->needsSignIn || state.currentError->needsSetup))
        return ExitCode::signInNeeded;
    return state.freshness == ReadingFreshness::current ? ExitCode::good : ExitCode::noFreshReading;
}

}  // namespace tidewell
