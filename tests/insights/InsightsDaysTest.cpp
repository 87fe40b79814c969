#include "insights/InsightsDays.h"

#include "insights/InsightsTesting.h"

namespace tidewell {
namespace {

std::vector<std::string> datesOf(const std::vector<InsightsDay>& days)
{
    std::vector<std::string> dates;
    for (const auto& day : days)
        dates.push_back(isoText(Date{day.date}).substr(0, 10));
    return dates;
}

TEST(InsightsDays, readingsBelongToTheirLocalDateAndGapsJoinNothing)
{
    const TimeZone zone = zoneNamed("Europe/Berlin");
    const Date start = utc("2026-03-01T22:30:00Z");  // 23:30 there.
    std::vector<InsightsReading> readings;
    // Beginning before the period, up to midnight, then a gap of half an hour, one off by a second, one
    // alone.
    for (const double seconds : {-120.0, 180.0, 480.0, 780.0, 1080.0, 1380.0, 1680.0, 3600.0, 3901.0, 9000.0})
        readings.push_back(sample(unixSeconds(start) + seconds, seconds > 3600 ? 200 : 100));
    const auto days = insightsDays(readings, {start, start + Seconds{86'400}}, zone);
    EXPECT_EQ(datesOf(days), (std::vector<std::string>{"2026-03-01", "2026-03-02"}));
    ASSERT_EQ(days[0].points.size(), 7U);
    EXPECT_EQ(days[0].points.front().secondOfDay, 84'600) << "where the period begins";
    std::string joins;
    for (const auto& day : days)
        for (const auto& point : day.points)
            joins += point.joinsPrevious ? '-' : 'o';
    EXPECT_EQ(joins, "o------o-o");
    expectClose(days[0].observed.count(), 180 + 6 * 300, "the last one goes on beyond midnight");
    expectClose(*days[1].meanMgdl, (300 * 100 + 2 * 300 * 200) / 900.0, "mean");
    expectClose(days[1].inRangeFraction, 1 / 3.0, "in range");
}

TEST(InsightsDays, daysOfAnyLengthTogetherAreThePeriod)
{
    for (const auto& [name, from, to, count] :
         {std::tuple{"Europe/Berlin", "2026-03-27T12:00:00Z", "2026-03-31T12:00:00Z", 5},
          std::tuple{"Europe/Berlin", "2026-10-23T12:00:00Z", "2026-10-27T12:00:00Z", 5},
          std::tuple{"Pacific/Apia", "2011-12-28T12:00:00Z", "2012-01-01T12:00:00Z", 6},
          std::tuple{"UTC", "2024-02-28T00:00:00Z", "2024-03-02T00:00:00Z", 3}}) {
        const DateInterval interval{utc(from), utc(to)};
        InsightsCalculationInput input{.interval = interval, .zone = zoneNamed(name)};
        for (Date date = interval.start; date < interval.end; date += Seconds{300})
            input.readings.push_back(sample(unixSeconds(date), 60 + std::fmod(unixSeconds(date) / 300, 200)));
        const auto days = insightsDays(input.readings, interval, input.zone);
        const auto summary = calculateInsights(input).summary;
        EXPECT_EQ(days.size(), static_cast<std::size_t>(count)) << name;
        double sum = 0;
        Seconds observed{};
        for (const auto& day : days) {
            sum += day.meanMgdl.value_or(0) * day.observed.count();
            observed += day.observed;
            for (const auto& point : day.points)
                EXPECT_EQ(LocalClock{input.zone}.at(point.date).date, day.date);
        }
        expectClose(sum / observed.count(), *summary.meanMgdl, name);
        expectClose(observed.count(), summary.coverage.coveredDuration.count(), name);
    }
    EXPECT_TRUE(insightsDays({}, {utc("2026-03-02T00:00:00Z"), utc("2026-03-01T00:00:00Z")}, TimeZone::utc())
                    .empty());
}

TEST(InsightsDays, clockThatIsPutBackJoinsNothing)
{
    const TimeZone zone = zoneNamed("Europe/Berlin");
    const DateInterval night{utc("2026-10-24T22:00:00Z"), utc("2026-10-25T04:00:00Z")};
    std::vector<InsightsReading> readings;
    addSteady(readings, night.start, night.end);
    const auto days = insightsDays(readings, night, zone);
    ASSERT_EQ(days.size(), 1U);
    std::size_t breaks = 0;
    for (std::size_t i = 1; i < days[0].points.size(); ++i)
        breaks += days[0].points[i].joinsPrevious ? 0 : 1;
    EXPECT_EQ(breaks, 1U);
}

}  // namespace
}  // namespace tidewell
