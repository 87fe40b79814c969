#include "simulator/TraceReplay.h"

namespace tidewell {
namespace {

constexpr std::string_view header = "subject,time_local,glucose_mgdl\n";

TEST(GlucoseTrace, readsTheFirstSubjectAndKeepsGapsAndCloseReadings)
{
    const auto trace = GlucoseTrace::parse(
        "glucose_mgdl,subject,time_local\r\n"
        "100,a,2022-12-31T23:55:00\r\n101.6,a,2023-01-01T00:00:00\r\n7,a,2023-01-01T00:00:00\r\n"
        "90,b,2020-01-01T00:00:00\r\n103,a,2023-01-01T00:00:08\r\n\r\n104,a,2023-01-01T01:00:00");
    ASSERT_TRUE(trace) << trace.error();
    const std::vector<GlucoseTrace::Point> expected{{0, 100}, {300, 102}, {308, 103}, {3900, 104}};
    EXPECT_EQ(trace->points, expected);
}

TEST(GlucoseTrace, saysWhichLineIsWrong)
{
    const std::string good = std::string{header} + "a,2023-01-01T00:00:00,100\n";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "at least two"},
        {std::string{header}, "at least two"},
        {good, "at least two"},
        {"time_local,value\n", "Line 1 must name"},
        {good + "a,2023-01-01 00:05:00,100\n", "Line 3 has no time"},
        {good + "a,2023-02-30T00:05:00,100\n", "Line 3 has no time"},
        {good + "a,2023-01-01T24:05:00,100\n", "Line 3 has no time"},
        {good + "a,2023-01-01T00:05:00,High\n", "Line 3 has no glucose"},
        {good + "a,2023-01-01T00:05:00,nan\n", "Line 3 has no glucose"},
        {good + "a,2023-01-01T00:05:00\n", "Line 3 has no glucose"},
        {good + "\na,2022-01-01T00:05:00,100\n", "Line 4 is earlier"},
    };
    for (const auto& [text, part] : cases) {
        const auto trace = GlucoseTrace::parse(text);
        ASSERT_FALSE(trace) << text;
        EXPECT_NE(trace.error().find(part), std::string::npos) << trace.error();
    }
    EXPECT_FALSE(GlucoseTrace::load("/nonexistent.csv"));
    EXPECT_FALSE(GlucoseTrace::load("/proc"));
}

TEST(GlucoseTrace, builtInOneShowsLowsHighsRapidChangesAndAGap)
{
    const TraceReplay replay{GlucoseTrace::builtIn()};
    int low = 0;
    int high = 0;
    int gaps = 0;
    std::map<SimulatedTrend, int> trends;
    for (std::int64_t position = 0; position < replay.roundReadings(); ++position) {
        low += replay.mgdL(position) < 54 ? 1 : 0;
        high += replay.mgdL(position) > 250 ? 1 : 0;
        gaps += replay.spacing(position) > 600 ? 1 : 0;
        trends[replay.trend(position)] += 1;
    }
    EXPECT_GE(low, 5);
    EXPECT_GE(high, 20);
    EXPECT_GE(gaps, 1);
    EXPECT_EQ(trends.size(), 8U) << "seven arrows and NotComputable";
    EXPECT_GT(trends[SimulatedTrend::flat], replay.roundReadings() / 3);
}

TEST(TraceReplay, goesRoundWithoutAnEndInBothDirections)
{
    const GlucoseTrace trace{{{0, 100}, {300, 110}, {600, 120}, {1800, 130}}};
    const TraceReplay replay{trace};
    EXPECT_EQ(replay.roundSeconds(), 2100);
    EXPECT_EQ(replay.mgdL(-1), 130);
    EXPECT_EQ(replay.mgdL(4'000'001), 110);
    EXPECT_EQ(replay.spacing(-1), 1200);
    EXPECT_EQ(replay.spacing(4), 300);
}

TEST(TraceReplay, trendFollowsTheSlope)
{
    using enum SimulatedTrend;
    const std::vector<std::pair<double, SimulatedTrend>> cases{
        {3.2, doubleUp}, {2.6, singleUp},       {1.4, fortyFiveUp}, {0.8, flat},       {0, flat},
        {-0.8, flat},    {-1.4, fortyFiveDown}, {-2.6, singleDown}, {-3.2, doubleDown}};
    for (const auto& [perMinute, expected] : cases) {
        GlucoseTrace trace;
        for (int i = 0; i < 8; ++i)
            trace.points.push_back({i * 300.0, static_cast<int>(200 + perMinute * 5 * i)});
        EXPECT_EQ(TraceReplay{trace}.trend(7), expected) << perMinute;
    }
    const GlucoseTrace gap{{{0, 100}, {300, 110}, {600, 120}, {1200, 130}}};
    EXPECT_EQ(TraceReplay{gap}.trend(3), notComputable);
}

}  // namespace
}  // namespace tidewell
