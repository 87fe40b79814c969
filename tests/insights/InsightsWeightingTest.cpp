#include "insights/InsightsWeighting.h"

#include <limits>
#include <random>

#include "InsightsTesting.h"
#include "insights/StableSum.h"
#include "insights/WeightedDistribution.h"

namespace tidewell {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

struct WeightingCase {
    std::string_view name;
    std::vector<InsightsReading> readings;
    std::vector<std::pair<double, double>> valuesAndDurations;
    std::size_t impossible = 0;
};

TEST(InsightsWeighting, weighsEachReadingByTheTimeThatItStandsFor)
{
    const DateInterval day{dateFromUnix(100'000), dateFromUnix(186'400)};
    const std::vector<WeightingCase> cases{
        {"none", {}, {}},
        {"alone", {sample(120'000, 100)}, {{100, 300}}},
        {"the next one comes first",
         {sample(120'000, 100), sample(120'060, 110, 60)},
         {{100, 60}, {110, 60}}},
        {"from before the period", {sample(99'800, 100), sample(100'100, 110)}, {{100, 100}, {110, 300}}},
        {"over before the period", {sample(99'700, 100), sample(99'500, 110)}, {}},
        {"a later one from before the period", {sample(99'900, 100), sample(99'950, 110)}, {{110, 250}}},
        {"beyond the end", {sample(186'300, 100), sample(186'400, 110)}, {{100, 100}}},
        {"unsorted", {sample(120'100, 110), sample(120'000, 100)}, {{100, 100}, {110, 300}}},
        {"the later fetch counts",
         {sample(120'000, 100, 300, 9), sample(120'000, 110, 300, 7), sample(120'000, 105, 300, 8)},
         {{100, 300}}},
        {"nothing that a sensor measures",
         {sample(120'000, -5), sample(120'010, 12), sample(120'020, 1000.5), sample(120'030, nan),
          sample(120'040, infinity), sample(120'050, 100, 0), sample(120'060, 100, -300),
          sample(120'070, 100, nan), sample(120'080, 100, infinity), sample(nan, 100), sample(-infinity, 100),
          sample(120'100, 100)},
         {{100, 300}},
         11},
        // The sum of such a time and a duration is rounded; the duration stays what it was.
        {"a duration with a fraction", {sample(120'000.123, 100, 0.7)}, {{100, 0.7}}},
    };
    for (const auto& [name, given, expected, impossible] : cases) {
        SCOPED_TRACE(name);
        auto readings = given;
        EXPECT_EQ(arrangeReadings(readings), impossible);
        const auto weighted = weightedReadings(readings, day);
        ASSERT_EQ(weighted.size(), expected.size());
        for (std::size_t i = 0; i < weighted.size(); ++i) {
            EXPECT_EQ(weighted[i].reading.mgdL, expected[i].first);
            EXPECT_EQ(weighted[i].duration.count(), expected[i].second);
        }
    }
    const std::vector readings{sample(120'000, 100)};
    for (const DateInterval& none :
         {DateInterval{day.end, day.start}, DateInterval{day.start, day.start},
          DateInterval{dateFromUnix(nan), day.end}, DateInterval{day.start, dateFromUnix(infinity)}})
        EXPECT_TRUE(weightedReadings(readings, none).empty());
}

TEST(WeightedDistribution, interpolatesBetweenOrdersOrBetweenTheMiddlesOfShares)
{
    struct Case {
        std::vector<WeightedValue> values;
        double p;
        double expected;
    };
    const std::vector<Case> cases{
        {{{4, 300}, {2, 300}, {1, 300}, {3, 300}}, 0.5, 2.5},
        {{{100, 60}, {110, 60}, {120, 60}}, 0.25, 105},
        {{{7, 1}}, 0.3, 7},
        {{{7, 1}, {7, 1}, {7, 1}}, 0.9, 7},
        {{{1, 5}, {9, 5}}, -3, 1},
        {{{1, 5}, {9, 5}}, 7, 9},
        {{{1, 5}, {9, 5}}, nan, 1},
        // Shares 1, 2, 1 of 4: middles at 0.5, 2 and 3.5.
        {{{30, 1}, {10, 1}, {20, 2}}, 0.5, 20},
        {{{30, 1}, {10, 1}, {20, 2}}, 0.125, 10},
        {{{30, 1}, {10, 1}, {20, 2}}, 0.25, 10 + 10 * 0.5 / 1.5},
        {{{30, 1}, {10, 1}, {20, 2}}, 0.95, 30},
        // The same value twice is one value with both weights, here 3 of 7.
        {{{10, 1}, {20, 4}, {10, 2}}, 0.5, 10 + 10 * 2.0 / 3.5},
        {{{10, 1}, {10, 2}}, 0.5, 10},
    };
    for (const auto& [values, p, expected] : cases)
        EXPECT_DOUBLE_EQ(WeightedDistribution{values}.percentile(p).value(), expected)
            << expected << " at " << p;
    EXPECT_FALSE(WeightedDistribution{{}}.percentile(0.5));
}

TEST(WeightedDistribution, neverFallsAndStaysWithinTheValues)
{
    std::mt19937 random{7};
    for (int turn = 0; turn < 200; ++turn) {
        std::vector<WeightedValue> values(1 + random() % 30);
        for (auto& [value, weight] : values) {
            value = 40 + static_cast<double>(random() % 3600) / 10;
            weight = turn % 2 ? 300 : 1 + static_cast<double>(random() % 900) / 7;
        }
        const WeightedDistribution distribution{values};
        double before = std::ranges::min(values, {}, &WeightedValue::value).value;
        for (int step = 0; step <= 400; ++step) {
            const double now = distribution.percentile(step / 400.0).value();
            ASSERT_GE(now, before) << turn << " at " << step;
            before = now;
        }
        EXPECT_LE(before, std::ranges::max(values, {}, &WeightedValue::value).value);
    }
}

TEST(StableSum, losesNothingThatCancels)
{
    StableSum sum;
    for (const double term : {1.0, 1e100, 1.0, -1e100})
        sum.add(term);
    EXPECT_EQ(sum.value(), 2);
}

}  // namespace
}  // namespace tidewell
