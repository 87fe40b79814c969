#include "polling/ReadingMerge.h"

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'000);

GlucoseReading at(double seconds, double mgdL, GlucoseProvider source = GlucoseProvider::dexcom,
                  Seconds sample = Seconds{300})
{
    return makeReading(mgdL, "Flat", start + Seconds{seconds}, sample, source);
}

TEST(ReadingMerge, sortsReplacesAndTrims)
{
    // Newest first, as a service may answer; in the same second the later fetch counts.
    const auto merged =
        mergedReadings({at(0, 100), at(300.25, 110)}, {at(600, 130), at(300.75, 111), at(301, 112)});
    EXPECT_EQ(merged, (std::vector{at(0, 100), at(300.75, 111), at(301, 112), at(600, 130)}));

    const double day = 86'400;
    EXPECT_EQ(mergedReadings({at(0, 100), at(1, 101)}, {at(day, 130)}),
              (std::vector{at(0, 100), at(1, 101), at(day, 130)}));
    EXPECT_EQ(mergedReadings({at(0, 100), at(1, 101)}, {at(day + 0.5, 130)}),
              (std::vector{at(1, 101), at(day + 0.5, 130)}));
    EXPECT_EQ(mergedReadings({at(day, 130)}, {at(-5, 90), at(600, 80)}),
              (std::vector{at(600, 80), at(day, 130)}));
    EXPECT_TRUE(mergedReadings({}, {}).empty());
}

TEST(ReadingMerge, leavesOutGraphValuesOfACurrentLibreValueOnly)
{
    const auto libre = GlucoseProvider::libreLinkUp;
    const auto current = at(1000, 120, libre, Seconds{60});
    const std::vector<std::pair<double, bool>> graphValues{
        {969.9, true}, {970, false}, {1000, true}, {1030, false}, {1030.1, true}};
    for (const auto& [seconds, stays] : graphValues) {
        const auto graph = at(seconds, 119, libre);
        // The same second is the same reading, and the later fetch wins.
        const auto merged = mergedReadings({current}, {graph});
        EXPECT_EQ(std::ranges::count(merged, graph) == 1, stays) << seconds;
        EXPECT_EQ(std::ranges::count(merged, current) == 1, seconds != 1000) << seconds;
    }
    EXPECT_EQ(mergedReadings({at(0, 120, libre, Seconds{60})}, {at(20, 121, libre, Seconds{60})}).size(), 2U);
    EXPECT_EQ(mergedReadings({at(0, 120)}, {at(20, 121)}).size(), 2U);
}

}  // namespace
}  // namespace tidewell
