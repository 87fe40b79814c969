#include "statusbar/ReadingPresentation.h"

#include <limits>

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'000);

GlucoseReading reading(double mgdL, std::string trend)
{
    return makeReading(mgdL, std::move(trend), start, Seconds{300}, GlucoseProvider::dexcom);
}

AppSettings mmolSettings() { return {.measurementUnit = "mmol/L"}; }

TEST(ReadingPresentation, agesAtTheBoundariesAndNeverBelowZero)
{
    const std::tuple<double, ReadingFreshness, std::string> cases[]{
        {-86'400, ReadingFreshness::current, "120 →"}, {0, ReadingFreshness::current, "120 →"},
        {899.999, ReadingFreshness::current, "120 →"}, {900, ReadingFreshness::stale, "120 ?"},
        {3599.999, ReadingFreshness::stale, "120 ?"},  {3600, ReadingFreshness::expired, "-- ?"},
        {1e12, ReadingFreshness::expired, "-- ?"},
    };
    for (const auto& [age, expected, title] : cases) {
        const ReadingFreshness freshness = readingFreshness(start, start + Seconds{age});
        EXPECT_EQ(freshness, expected) << age;
        EXPECT_EQ(statusTitle(reading(120, "Flat"), freshness, std::nullopt), title) << age;
    }
    EXPECT_EQ(statusTitle(reading(99, "doubleDOWN"), ReadingFreshness::current, mmolSettings()), "5.5 ↓↓");
    EXPECT_EQ(statusTitle(reading(99, "Sideways"), ReadingFreshness::current, mmolSettings()), "5.5 ?");
    EXPECT_EQ(statusTitle(reading(99, "Flat"), ReadingFreshness::stale, mmolSettings()), "5.5 ?");
}

TEST(ReadingPresentation, coloursByThresholdAndTrendAndRedWins)
{
    const AppSettings narrow{.lowGlucoseThreshold = 80, .highGlucoseThreshold = 160};
    const std::tuple<double, std::string, std::optional<AppSettings>, TitleColor> cases[]{
        {72, "Flat", std::nullopt, TitleColor::red},
        {73, "Flat", std::nullopt, TitleColor::primary},
        {269, "Flat", std::nullopt, TitleColor::primary},
        {270, "Flat", std::nullopt, TitleColor::orange},
        {80, "Flat", narrow, TitleColor::red},
        {81, "Flat", narrow, TitleColor::primary},
        {160, "Flat", narrow, TitleColor::orange},
        {300, "doubledown", std::nullopt, TitleColor::red},
        {60, "DoubleUp", std::nullopt, TitleColor::red},
        {120, "DOUBLEUP", std::nullopt, TitleColor::orange},
        {120, "SingleUp", std::nullopt, TitleColor::primary},
        {120, "SingleDown", std::nullopt, TitleColor::primary},
    };
    for (const auto& [mgdL, trend, settings, color] : cases)
        EXPECT_EQ(titleColor(reading(mgdL, trend), settings), color) << mgdL << " " << trend;
}

TEST(ReadingPresentation, namesElapsedTimeInWholeUnits)
{
    const std::vector<std::pair<double, std::string>> cases{
        {-5, "1 minute"},
        {0, "1 minute"},
        {119, "1 minute"},
        {120, "2 minutes"},
        {900, "15 minutes"},
        {3599, "59 minutes"},
        {3600, "1 hour"},
        {3660, "1 hour and 1 minute"},
        {7200, "2 hours"},
        {7500, "2 hours and 5 minutes"},
        {86'399, "23 hours and 59 minutes"},
        {86'400, "1 day"},
        {3 * 86'400.0 + 5, "3 days"},
        {std::numeric_limits<double>::infinity(), "36525 days"},
        {std::numeric_limits<double>::quiet_NaN(), "1 minute"},
    };
    for (const auto& [age, phrase] : cases)
        EXPECT_EQ(elapsedPhrase(Seconds{age}), phrase) << age;
}

TEST(ReadingPresentation, speaksValueRangeTrendAndAge)
{
    const auto spoken = [](const GlucoseReading& shown, double age, std::optional<AppSettings> settings) {
        return spokenGlucose(shown, start + Seconds{age}, settings);
    };
    EXPECT_EQ(spokenGlucose(std::nullopt, start, std::nullopt), "No glucose readings available.");
    EXPECT_EQ(spoken(reading(120, "Flat"), 0, std::nullopt),
              "Current glucose: 120 milligrams per deciliter, in range, steady.");
    EXPECT_EQ(
        spoken(reading(72, "FortyFiveDown"), 899, std::nullopt),
        "Current glucose: 72 milligrams per deciliter, at or below the low threshold, falling slightly.");
    EXPECT_EQ(spoken(reading(270, "Unheard"), 0, mmolSettings()),
              "Current glucose: 15.0 millimoles per liter, at or above the high threshold, unknown trend.");
    EXPECT_EQ(spoken(reading(120, "Flat"), 900, std::nullopt),
              "Stale glucose reading. Last known glucose: 120 milligrams per deciliter. Trend unavailable.");
    EXPECT_EQ(
        spoken(reading(99, "Flat"), 3600, mmolSettings()),
        "Current glucose unavailable. Last known glucose: 5.5 millimoles per liter. Trend unavailable.");
    EXPECT_EQ(spokenStaleReading(reading(99, "Flat"), start + Seconds{7500}, mmolSettings()),
              "Stale glucose reading. Last known value 5.5, received 2 hours and 5 minutes ago.");
}

}  // namespace
}  // namespace tidewell
