#include "statusbar/GlucoseSparkline.h"

#include <limits>

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'400);  // 2026-03-02T08:00:00Z

/// A value and how many minutes it is old at `start`.
struct Sample {
    double mgdL;
    double age;
    double minutes = 5;  ///< What it stands for.
};

std::string line(const std::vector<Sample>& samples, int hours, Date now = start,
                 const AppSettings& settings = {})
{
    GlucoseGraphContent content{
        .settings = settings, .timeWindow = GraphTimeWindow{hours}, .now = now, .zone = TimeZone::utc()};
    for (const auto& [mgdL, age, minutes] : samples)
        content.glucoseHistory.push_back(makeReading(mgdL, "Flat", start - Seconds{60 * age},
                                                     Seconds{60 * minutes}, GlucoseProvider::dexcom));
    return glucoseSparkline(content);
}

TEST(GlucoseSparkline, drawsEachShareOfTheWindowOnTheScaleOfTheGraph)
{
    struct Case {
        std::string what;
        std::vector<Sample> samples;
        int hours;
        std::string expected;
    };
    const double inf = std::numeric_limits<double>::infinity();
    for (const Case& each : std::vector<Case>{
             {"nothing", {}, 6, ""},
             {"before the window", {{120, 361}}, 6, ""},
             {"the thresholds are the ends of the scale", {{72, 15}, {270, 10}, {171, 5}}, 1, "▁█▅"},
             {"a reading beyond them is a new end", {{40, 15}, {400, 10}, {220, 5}}, 1, "▁█▅"},
             {"the mean of a quarter of an hour", {{72, 14}, {270, 10}, {72, 0}}, 6, "▅▁"},
             {"any order", {{171, 5}, {72, 15}, {270, 10}}, 1, "▁█▅"},
             {"a missing one is no gap, two are", {{72, 30}, {72, 20}, {270, 5}}, 1, "▁▁▁\u2007\u2007█"},
             {"a graph of one value in 15 minutes",
              {{72, 45, 15}, {171, 30, 15}, {270, 15, 15}},
              1,
              "▁▁▁▅▅▅█"},
             {"a little ahead of the clock", {{72, 5}, {270, -1}}, 1, "▁█"},
             {"from another time", {{72, 5}, {270, -6}, {270, -1e9}, {270, inf}, {inf, 1}}, 24, "▁"},
         }) {
        SCOPED_TRACE(each.what);
        EXPECT_EQ(line(each.samples, each.hours), each.expected);
    }
    EXPECT_EQ(line({{120, 5}}, 1, start, {.lowGlucoseThreshold = -1e308, .highGlucoseThreshold = 1e308}),
              "▁");
}

TEST(GlucoseSparkline, hasAtMostTwoDozenCharactersForEveryWindow)
{
    std::vector<Sample> day;
    for (double age = 0; age < 2000; ++age)
        day.push_back({120, age, 1});
    for (const auto& [hours, characters] : {std::pair{1, 12}, {3, 18}, {6, 24}, {12, 24}, {24, 24}})
        EXPECT_EQ(line(day, hours).size(), 3U * static_cast<unsigned>(characters)) << hours;
}

TEST(GlucoseSparkline, movesOnAtRoundTimesOnly)
{
    const std::vector<Sample> samples{{72, 345}, {270, 30}, {72, 0}};
    const std::string first = line(samples, 6, start);
    for (double second = 1; second < 900; ++second)
        EXPECT_EQ(line(samples, 6, start + Seconds{second}), first);
    EXPECT_NE(line(samples, 6, start + Seconds{900}), first);
}

}  // namespace
}  // namespace tidewell
