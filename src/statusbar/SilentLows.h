#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/AppConfiguration.h"
#include "support/TimeText.h"

namespace tidewell {

/// What the person has set that leaves lows silent, now or at some time of the day.
enum class SilentLowCause { alertsOff, lowAlertsOff, quietHours, snooze };

struct SilentLowWarning {
    SilentLowCause cause;
    std::string text{};     ///< One sentence: what, and until when or from when to when.
    bool isInForce = true;  ///< Quiet hours of another time of the day are not.
    bool operator==(const SilentLowWarning&) const = default;
};

/// Empty when each low would be announced. What follows from another one is left out: while alerts are off,
/// nothing else counts. Pure.
[[nodiscard]] std::vector<SilentLowWarning> silentLowWarnings(const AppSettings& settings,
                                                              std::optional<Date> alertsSnoozedUntil,
                                                              Date now, TimeZone zone);

}  // namespace tidewell
