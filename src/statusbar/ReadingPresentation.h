#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/AppConfiguration.h"
#include "sources/GlucoseReading.h"

namespace tidewell {

enum class TitleColor { primary, orange, red };

/// How old a reading is: current under 900 s, stale under 3600 s, then expired. A future reading has age 0.
/// Worse is greater.
enum class ReadingFreshness { current, stale, expired };

/// Where a value lies between the thresholds, which count as beyond.
enum class GlucoseRange { low, inRange, high };

/// Under this age, words do not tell minutes apart: while the sensor is well, an age that is shown then stays
/// true from one poll to the next, and nobody has to wake up to correct it.
inline constexpr Seconds recentAge{300};
/// From this age on a reading is stale.
inline constexpr Seconds staleAge{900};
/// From this age on a reading is expired.
inline constexpr Seconds expiredAge{3600};

[[nodiscard]] ReadingFreshness readingFreshness(Date reading, Date now);

/// The value in the unit of the settings, without the unit's name; mg/dL without settings.
[[nodiscard]] std::string valueText(const GlucoseReading& reading,
                                    const std::optional<AppSettings>& settings);
/// "120 →" while current, "120 ?" while stale, then "-- ?".
[[nodiscard]] std::string statusTitle(const GlucoseReading& reading, ReadingFreshness freshness,
                                      const std::optional<AppSettings>& settings);
/// Red at or below the low threshold or falling quickly, else orange at or above the high one or rising
/// quickly. Of a current reading; the thresholds are 72 and 270 mg/dL without settings.
[[nodiscard]] TitleColor titleColor(const GlucoseReading& reading,
                                    const std::optional<AppSettings>& settings);

/// By the thresholds of the settings; 72 and 270 mg/dL without settings.
[[nodiscard]] GlucoseRange glucoseRange(double mgdL, const std::optional<AppSettings>& settings);
/// "at or below the low threshold", "in range" or "at or above the high threshold".
[[nodiscard]] std::string_view rangePhrase(GlucoseRange range);

/// "15 minutes", "1 hour", "2 hours and 5 minutes", "3 days": whole units, rounded down, at least a minute.
[[nodiscard]] std::string elapsedPhrase(Seconds age);

/// The spoken text for the latest reading (or none): value, range, trend and age, without activity or error.
[[nodiscard]] std::string spokenGlucose(const std::optional<GlucoseReading>& reading, Date now,
                                        const std::optional<AppSettings>& settings);
/// The spoken text at the moment when a reading turns out to be stale or expired: it says how old it is.
[[nodiscard]] std::string spokenStaleReading(const GlucoseReading& reading, Date now,
                                             const std::optional<AppSettings>& settings);

}  // namespace tidewell
