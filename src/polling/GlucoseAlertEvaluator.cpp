#include "polling/GlucoseAlertEvaluator.h"

#include <algorithm>

#include <fmt/format.h>

#include "config/QuietHours.h"
#include "statusbar/ReadingPresentation.h"

namespace tidewell {

namespace {

using enum GlucoseAlertKind;

/// How far ahead of our clock a reading may be and still count: two clocks that are a little apart.
constexpr Seconds futureTolerance{60};

/// Posted once, then not again before the condition has cleared. A rapid fall is told each time.
bool isOneShot(GlucoseAlertKind kind) { return kind != rapidFall; }

bool isFresh(const GlucoseReading& reading, Date now)
{
    return reading.date <= now + futureTolerance && now - reading.date < staleAge;
}

bool isQuietNow(const GlucoseAlertSettings& settings, const GlucoseAlertEvaluator::Pass& pass)
{
    return settings.quietHoursEnabled &&
           isQuiet(pass.now, pass.zone, settings.quietHoursStartMinutes, settings.quietHoursEndMinutes);
}

/// Whether a snooze silences the category that the kind belongs to.
bool isSnoozable(GlucoseAlertKind kind, const GlucoseAlertSettings& settings)
{
    switch (kind) {
    case lowThreshold: return settings.snoozeLowAlerts;
    case highThreshold: return settings.snoozeHighAlerts;
    case rapidFall:
    case rapidRise: return settings.snoozeRapidChangeAlerts;
    }
    std::unreachable();
}

bool isSnoozed(GlucoseAlertKind kind, const GlucoseAlertSettings& settings,
               const GlucoseAlertEvaluator::Pass& pass)
{
    return pass.snoozedUntil && *pass.snoozedUntil > pass.now && isSnoozable(kind, settings);
}

}  // namespace

GlucoseAlertSettings glucoseAlertSettings(const std::optional<AppSettings>& settings)
{
    if (!settings)
        return {};
    return {.alertsEnabled = settings->alertsEnabled,
            .quietHoursEnabled = settings->quietHoursEnabled,
            .quietHoursStartMinutes = settings->quietHoursStartMinutes,
            .quietHoursEndMinutes = settings->quietHoursEndMinutes,
            .lowGlucoseThreshold = settings->lowGlucoseThreshold,
            .highGlucoseThreshold = settings->highGlucoseThreshold,
            .alertOnLowThreshold = settings->alertOnLowThreshold,
            .alertOnHighThreshold = settings->alertOnHighThreshold,
            .alertOnRapidFall = settings->alertOnRapidFall,
            .alertOnRapidRise = settings->alertOnRapidRise,
            .allowLowAlertsDuringQuietHours = settings->allowLowAlertsDuringQuietHours,
            .lowAlertRepeatMinutes = settings->lowAlertRepeatMinutes,
            .snoozeLowAlerts = settings->snoozeLowAlerts,
            .snoozeHighAlerts = settings->snoozeHighAlerts,
            .snoozeRapidChangeAlerts = settings->snoozeRapidChangeAlerts,
            .alertOnMissingData = settings->alertOnMissingData,
            .units = glucoseUnits(settings->measurementUnit).value_or(GlucoseUnits::mgdL)};
}

std::optional<GlucoseAlertKind> GlucoseAlertEvaluator::evaluate(const GlucoseReading& reading,
                                                                const GlucoseAlertSettings& settings,
                                                                const Pass& pass)
{
    if (!settings.alertsEnabled) {
        reset();
        return std::nullopt;
    }
    if (!isFresh(reading, pass.now))
        return std::nullopt;

    GlucoseAlertKinds kinds = kindsFor(reading, settings);
    // Before anything is held back: an episode also ends during quiet hours and while snoozed.
    std::erase_if(activeOneShotAlertKinds, [&](GlucoseAlertKind kind) { return !kinds.contains(kind); });
    std::erase_if(lastAlertSentAt, [&](const auto& sent) { return !kinds.contains(sent.first); });

    if (isQuietNow(settings, pass)) {
        if (!settings.allowLowAlertsDuringQuietHours)
            return std::nullopt;
        std::erase_if(kinds, [](GlucoseAlertKind kind) { return kind != lowThreshold; });
    }
    std::erase_if(kinds, [&](GlucoseAlertKind kind) { return isSnoozed(kind, settings, pass); });
    return choose(kinds, settings, pass.now);
}

void GlucoseAlertEvaluator::recordPosted(GlucoseAlertKind kind, Date now)
{
    if (isOneShot(kind))
        activeOneShotAlertKinds.insert(kind);
    lastAlertSentAt.insert_or_assign(kind, now);
}

void GlucoseAlertEvaluator::reset()
{
    activeOneShotAlertKinds.clear();
    lastAlertSentAt.clear();
}

GlucoseAlertKinds GlucoseAlertEvaluator::kindsFor(const GlucoseReading& reading,
                                                  const GlucoseAlertSettings& settings)
{
    const std::string trend = lowerCased(reading.trendString);
    GlucoseAlertKinds kinds;
    if (settings.alertOnLowThreshold && reading.mgdL <= settings.lowGlucoseThreshold)
        kinds.insert(lowThreshold);
    if (settings.alertOnHighThreshold && settings.highGlucoseThreshold <= reading.mgdL)
        kinds.insert(highThreshold);
    if (settings.alertOnRapidFall && (trend == "doubledown" || trend == "singledown"))
        kinds.insert(rapidFall);
    if (settings.alertOnRapidRise && (trend == "doubleup" || trend == "singleup"))
        kinds.insert(rapidRise);
    return kinds;
}

std::optional<GlucoseAlertKind> GlucoseAlertEvaluator::choose(const GlucoseAlertKinds& kinds,
                                                              const GlucoseAlertSettings& settings,
                                                              Date now) const
{
    constexpr std::array priority{lowThreshold, rapidFall, highThreshold, rapidRise};
    const auto pick =
        std::ranges::find_if(priority, [&](GlucoseAlertKind kind) { return kinds.contains(kind); });
    if (pick == priority.end())
        return std::nullopt;
    if (!isOneShot(*pick) || !activeOneShotAlertKinds.contains(*pick))
        return *pick;
    if (*pick != lowThreshold)
        return std::nullopt;

    // A low that was told already: now and then again, if so wished; else it gives way to a fall, and only
    // to that.
    const auto sent = lastAlertSentAt.find(lowThreshold);
    const Seconds repeat{static_cast<double>(settings.lowAlertRepeatMinutes) * 60};
    if (repeat > Seconds{0} && sent != lastAlertSentAt.end() && now - sent->second >= repeat)
        return lowThreshold;
    return kinds.contains(rapidFall) ? std::optional{rapidFall} : std::nullopt;
}

GlucoseAlertContent GlucoseAlertEvaluator::content(GlucoseAlertKind kind, const GlucoseReading& reading,
                                                   const GlucoseAlertSettings& settings)
{
    const auto shown = [&](double mgdL) {
        return fmt::format("{} {}", formatGlucose(mgdL, settings.units), rawValue(settings.units));
    };
    const std::string value = fmt::format("{} {}", shown(reading.mgdL), reading.trendArrow);
    switch (kind) {
    case lowThreshold:
        return {"Low glucose alert",
                fmt::format("{} (low threshold {})", value, shown(settings.lowGlucoseThreshold))};
    case highThreshold:
        return {"High glucose alert",
                fmt::format("{} (high threshold {})", value, shown(settings.highGlucoseThreshold))};
    case rapidFall: return {"Rapid glucose drop", value + ". Glucose is falling quickly."};
    case rapidRise: return {"Rapid glucose rise", value + ". Glucose is rising quickly."};
    }
    std::unreachable();
}

bool holdsBackLow(const GlucoseAlertSettings& settings, const GlucoseAlertEvaluator::Pass& pass)
{
    return (isQuietNow(settings, pass) && !settings.allowLowAlertsDuringQuietHours) ||
           isSnoozed(lowThreshold, settings, pass);
}

}  // namespace tidewell
