#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "config/AppConfiguration.h"
#include "sources/GlucoseReading.h"
#include "sources/GlucoseUnits.h"
#include "support/TimeText.h"

namespace tidewell {

/// What a glucose alert is about.
enum class GlucoseAlertKind {
    lowThreshold,   ///< At or below the low threshold.
    highThreshold,  ///< At or above the high threshold.
    rapidFall,      ///< The trend says a fast or very fast fall.
    rapidRise,      ///< The trend says a fast or very fast rise.
};
using GlucoseAlertKinds = std::set<GlucoseAlertKind>;

/// The preferences that one pass works with, taken once at its start. Thresholds in mg/dL, whatever is shown.
struct GlucoseAlertSettings {
    bool alertsEnabled = true;
    bool quietHoursEnabled = false;
    std::int64_t quietHoursStartMinutes = 1320;  ///< After local midnight.
    std::int64_t quietHoursEndMinutes = 420;
    double lowGlucoseThreshold = 72;
    double highGlucoseThreshold = 270;
    bool alertOnLowThreshold = true;
    bool alertOnHighThreshold = true;
    bool alertOnRapidFall = true;
    bool alertOnRapidRise = true;
    bool allowLowAlertsDuringQuietHours = false;
    std::int64_t lowAlertRepeatMinutes = 0;  ///< 0 or less: no repeat.
    bool snoozeLowAlerts = true;
    bool snoozeHighAlerts = true;
    bool snoozeRapidChangeAlerts = true;
    bool alertOnMissingData = true;
    GlucoseUnits units = GlucoseUnits::mgdL;  ///< For texts.
    bool operator==(const GlucoseAlertSettings&) const = default;
};
/// The snapshot of the preferences in force; the defaults without any.
[[nodiscard]] GlucoseAlertSettings glucoseAlertSettings(const std::optional<AppSettings>& settings);

/// A notification's texts.
struct GlucoseAlertContent {
    std::string title;
    std::string body;
    bool operator==(const GlucoseAlertContent&) const = default;
};

/// Decides which alert is due, and remembers which were posted. A value without clock or side effects; owned
/// by the coordinator, in memory only. It starts empty, so a relaunch re-arms everything.
struct GlucoseAlertEvaluator {
    /// One-shot kinds (all but rapidFall) that were posted in this episode and have not cleared since.
    GlucoseAlertKinds activeOneShotAlertKinds{};
    /// When each kind was last posted with success.
    std::map<GlucoseAlertKind, Date> lastAlertSentAt{};

    /// What a pass does with a reading.
    struct Pass {
        Date now;
        std::optional<Date> snoozedUntil{};
        TimeZone zone = TimeZone::utc();  ///< In which quiet hours are.
    };
    /// Steps 4 to 9 of a pass: re-arms by `reading`, then answers the kind to post now, or none. Changes
    /// nothing but what re-arming changes; a stale reading, or one more than 60 s ahead, changes nothing.
    [[nodiscard]] std::optional<GlucoseAlertKind> evaluate(const GlucoseReading& reading,
                                                           const GlucoseAlertSettings& settings,
                                                           const Pass& pass);
    /// A notification of that kind was posted; `now` is the pass's.
    void recordPosted(GlucoseAlertKind kind, Date now);
    /// Forgets everything: the next pass finds every kind armed.
    void reset();
    bool operator==(const GlucoseAlertEvaluator&) const = default;

    /// The kinds whose condition holds for a reading. Both thresholds are inclusive; crossed ones hold both.
    [[nodiscard]] static GlucoseAlertKinds kindsFor(const GlucoseReading& reading,
                                                    const GlucoseAlertSettings& settings);
    /// Out of kinds that neither quiet hours nor snooze hold back.
    [[nodiscard]] std::optional<GlucoseAlertKind> choose(const GlucoseAlertKinds& kinds,
                                                         const GlucoseAlertSettings& settings,
                                                         Date now) const;
    [[nodiscard]] static GlucoseAlertContent content(GlucoseAlertKind kind, const GlucoseReading& reading,
                                                     const GlucoseAlertSettings& settings);
};

/// Whether an alert of the low category (a low, missing data) is held back at `now` by quiet hours or snooze.
[[nodiscard]] bool holdsBackLow(const GlucoseAlertSettings& settings,
                                const GlucoseAlertEvaluator::Pass& pass);

}  // namespace tidewell
