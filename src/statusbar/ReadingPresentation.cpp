#include "statusbar/ReadingPresentation.h"

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>

#include "sources/GlucoseUnits.h"

namespace tidewell {

namespace {

GlucoseUnits displayUnit(const std::optional<AppSettings>& settings)
{
    if (!settings)
        return GlucoseUnits::mgdL;
    return glucoseUnits(settings->measurementUnit).value_or(GlucoseUnits::mgdL);
}

std::string counted(std::int64_t count, std::string_view unit)
{
    return fmt::format("{} {}{}", count, unit, count == 1 ? "" : "s");
}

}  // namespace

ReadingFreshness readingFreshness(Date reading, Date now)
{
    const Seconds age = now - reading;
    if (age >= expiredAge)
        return ReadingFreshness::expired;
    return age >= staleAge ? ReadingFreshness::stale : ReadingFreshness::current;
}

std::string valueText(const GlucoseReading& reading, const std::optional<AppSettings>& settings)
{
    return formatGlucose(reading.mgdL, displayUnit(settings));
}

std::string statusTitle(const GlucoseReading& reading, ReadingFreshness freshness,
                        const std::optional<AppSettings>& settings)
{
    switch (freshness) {
    case ReadingFreshness::current: return valueText(reading, settings) + " " + reading.trendArrow;
    case ReadingFreshness::stale: return valueText(reading, settings) + " ?";
    case ReadingFreshness::expired: return "-- ?";
    }
    std::unreachable();
}

GlucoseRange glucoseRange(double mgdL, const std::optional<AppSettings>& settings)
{
    const AppSettings limits = settings.value_or(AppSettings{});
    if (mgdL <= limits.lowGlucoseThreshold)
        return GlucoseRange::low;
    return mgdL >= limits.highGlucoseThreshold ? GlucoseRange::high : GlucoseRange::inRange;
}

std::string_view rangePhrase(GlucoseRange range)
{
    switch (range) {
    case GlucoseRange::low: return "at or below the low threshold";
    case GlucoseRange::inRange: return "in range";
    case GlucoseRange::high: return "at or above the high threshold";
    }
    std::unreachable();
}

TitleColor titleColor(const GlucoseReading& reading, const std::optional<AppSettings>& settings)
{
    const GlucoseRange range = glucoseRange(reading.mgdL, settings);
    const std::string trend = lowerCased(reading.trendString);
    if (range == GlucoseRange::low || trend == "doubledown")
        return TitleColor::red;
    if (range == GlucoseRange::high || trend == "doubleup")
        return TitleColor::orange;
    return TitleColor::primary;
}

std::string elapsedPhrase(Seconds age)
{
    // A damaged date may be any number; a hundred years is enough for everybody.
    constexpr double longest = 36525.0 * 24 * 60;
    const double count = age.count() / 60;
    const auto minutes = static_cast<std::int64_t>(count > 1 ? std::min(count, longest) : 1.0);
    if (minutes < 60)
        return counted(minutes, "minute");
    if (minutes >= 24 * 60)
        return counted(minutes / (24 * 60), "day");
    const std::string hours = counted(minutes / 60, "hour");
    return minutes % 60 == 0 ? hours : hours + " and " + counted(minutes % 60, "minute");
}

std::string spokenGlucose(const std::optional<GlucoseReading>& reading, Date now,
                          const std::optional<AppSettings>& settings)
{
    if (!reading)
        return "No glucose readings available.";
    const std::string value =
        fmt::format("{} {}", valueText(*reading, settings), spokenName(displayUnit(settings)));
    switch (readingFreshness(reading->date, now)) {
    case ReadingFreshness::current:
        return fmt::format("Current glucose: {}, {}, {}.", value,
                           rangePhrase(glucoseRange(reading->mgdL, settings)),
                           trendPhrase(reading->trendString));
    case ReadingFreshness::stale:
        return "Stale glucose reading. Last known glucose: " + value + ". Trend unavailable.";
    case ReadingFreshness::expired:
        return "Current glucose unavailable. Last known glucose: " + value + ". Trend unavailable.";
    }
    std::unreachable();
}

std::string spokenStaleReading(const GlucoseReading& reading, Date now,
                               const std::optional<AppSettings>& settings)
{
    return fmt::format("Stale glucose reading. Last known value {}, received {} ago.",
                       valueText(reading, settings), elapsedPhrase(now - reading.date));
}

}  // namespace tidewell
