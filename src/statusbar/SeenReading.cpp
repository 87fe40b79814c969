#include "statusbar/SeenReading.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace tidewell {

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

std::optional<ErrorInfo> shownProblem(const StatusBarState& state, const std::optional<SeenReading>& seen)
{
    if (state.currentError)
        return state.currentError;
    if (seen && seen->freshness != ReadingFreshness::current)
        return staleReadingWarning(seen->age);
    return std::nullopt;
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

std::string nextRetryLine(Date date, TimeZone zone) { return "Next retry at " + localTimeOfDay(date, zone); }

std::string readingTitle(const SeenReading& seen, const AppSettings& settings)
{
    if (seen.freshness == ReadingFreshness::expired)
        return statusTitle(seen.reading, seen.freshness, settings);
    const GlucoseUnits unit = glucoseUnits(settings.measurementUnit).value_or(GlucoseUnits::mgdL);
    return fmt::format("{} {} {}", valueText(seen.reading, settings), rawValue(unit),
                       seen.freshness == ReadingFreshness::current ? seen.reading.trendArrow : "?");
}

}  // namespace tidewell
