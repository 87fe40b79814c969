#include "statusbar/SilentLows.h"

#include <algorithm>

#include <fmt/format.h>

#include "config/QuietHours.h"

namespace tidewell {

namespace {

constexpr std::int64_t minutesOfDay = 1440;

std::string timeOfDay(std::int64_t minutes)
{
    return fmt::format("{:02}:{:02}", minutes / 60 % 24, minutes % 60);
}

/// When quiet hours are, in words that hold all day long; empty when no minute of a day lies in them.
std::string quietHoursText(std::int64_t startMinutes, std::int64_t endMinutes)
{
    const auto from = std::clamp<std::int64_t>(startMinutes, 0, minutesOfDay);
    const auto to = std::clamp<std::int64_t>(endMinutes, 0, minutesOfDay);
    const std::int64_t quietMinutes = startMinutes < endMinutes ? to - from : minutesOfDay - (from - to);
    if (quietMinutes == 0)
        return {};
    if (quietMinutes == minutesOfDay)
        return "Quiet hours last all day: a low is not announced.";
    return fmt::format("Quiet hours from {} to {}: a low is not announced then.", timeOfDay(from),
                       timeOfDay(to));
}

}  // namespace

std::vector<SilentLowWarning> silentLowWarnings(const AppSettings& settings,
                                                std::optional<Date> alertsSnoozedUntil, Date now,
                                                TimeZone zone)
{
    using enum SilentLowCause;
    if (!settings.alertsEnabled)
        return {{.cause = alertsOff, .text = "Alerts are off: a low is not announced."}};
    if (!settings.alertOnLowThreshold)
        return {{.cause = lowAlertsOff, .text = "Low alerts are off: a low is not announced."}};
    std::vector<SilentLowWarning> warnings;
    if (settings.quietHoursEnabled && !settings.allowLowAlertsDuringQuietHours) {
        const std::int64_t from = settings.quietHoursStartMinutes;
        const std::int64_t to = settings.quietHoursEndMinutes;
        if (std::string text = quietHoursText(from, to); !text.empty())
            warnings.push_back(
                {.cause = quietHours, .text = std::move(text), .isInForce = isQuiet(now, zone, from, to)});
    }
    if (settings.snoozeLowAlerts && alertsSnoozedUntil && *alertsSnoozedUntil > now)
        warnings.push_back({.cause = snooze,
                            .text = fmt::format("Low alerts are snoozed until {}.",
                                                localTimeOfDay(*alertsSnoozedUntil, zone))});
    return warnings;
}

}  // namespace tidewell
