#include "insights/InsightsCoverage.h"

#include <numeric>

#include "InsightsTesting.h"

namespace tidewell {
namespace {

std::chrono::sys_days dateOf(std::string_view text)
{
    return std::chrono::floor<std::chrono::days>(utc(std::string{text} + "T00:00:00Z"));
}

struct DayCase {
    std::string_view zone;
    std::string_view date;
    std::string_view start;  ///< When it begins, in UTC.
    double hours;
};

TEST(InsightsCoverage, knowsHowLongEachDayIs)
{
    const std::vector<DayCase> cases{
        {"UTC", "2024-02-29", "2024-02-29T00:00:00Z", 24},
        {"Europe/London", "2024-03-31", "2024-03-31T00:00:00Z", 23},
        {"Europe/London", "2023-10-29", "2023-10-28T23:00:00Z", 25},
        {"Asia/Kolkata", "2024-03-31", "2024-03-30T18:30:00Z", 24},
        {"Australia/Lord_Howe", "2024-04-07", "2024-04-06T13:00:00Z", 24.5},
        {"Australia/Lord_Howe", "2024-10-06", "2024-10-05T13:30:00Z", 23.5},
        {"Africa/Cairo", "2024-04-26", "2024-04-25T22:00:00Z", 23},    // Has no midnight.
        {"America/Havana", "2024-11-03", "2024-11-03T04:00:00Z", 25},  // Has two.
        {"America/St_Johns", "2010-11-07", "2010-11-07T02:30:00Z",
         24 + 1.0 / 60},  // Went back when a minute old.
    };
    for (const auto& [name, date, start, hours] : cases) {
        SCOPED_TRACE(name);
        const TimeZone zone = zoneNamed(name);
        const auto day = dateOf(date);
        const Date begin = startOfLocalDate(day, zone);
        EXPECT_EQ(isoText(begin), start);
        const DateInterval around{startOfLocalDate(day - std::chrono::days{1}, zone),
                                  startOfLocalDate(day + std::chrono::days{2}, zone)};
        const std::vector observed{around};
        const auto coverage = insightsCoverage(observed, around, zone);
        ASSERT_EQ(coverage.days.size(), 3U);
        ASSERT_EQ(coverage.hours.size(), 24U);
        EXPECT_EQ(coverage.days[1].date, day);
        EXPECT_NEAR(coverage.days[1].totalDuration / Seconds{1h}, hours, 1e-9);
        EXPECT_EQ(coverage.coveredDuration, around.duration());
        const double inHours =
            std::accumulate(coverage.hours.begin(), coverage.hours.end(), 0.0,
                            [](double sum, const auto& hour) { return sum + hour.totalDuration.count(); });
        EXPECT_EQ(inHours, around.duration().count());
    }
    // A whole date that a zone never had: Samoa went over the date line.
    EXPECT_EQ(isoText(startOfLocalDate(dateOf("2011-12-30"), zoneNamed("Pacific/Apia"))),
              "2011-12-30T10:00:00Z");
    EXPECT_EQ(isoText(startOfLocalDate(dateOf("2011-12-31"), zoneNamed("Pacific/Apia"))),
              "2011-12-30T10:00:00Z");
}

TEST(InsightsCoverage, dividesWhatIsObservedByDaysAndHours)
{
    const TimeZone zone = zoneNamed("Asia/Kolkata");
    // 10:20 to 12:40 of one day, 10:00 to 10:30 of the next, in a period from noon to the second midnight
    // after.
    const std::vector observed{DateInterval{utc("2024-05-01T04:50:00Z"), utc("2024-05-01T07:10:00Z")},
                               DateInterval{utc("2024-05-02T04:30:00Z"), utc("2024-05-02T05:00:00Z")}};
    const DateInterval period{utc("2024-05-01T06:30:00Z"), utc("2024-05-02T18:30:00Z")};
    const auto coverage = insightsCoverage(observed, period, zone);
    EXPECT_EQ(coverage.coveredDuration, Seconds{70min});
    EXPECT_EQ(coverage.totalDuration, Seconds{36h});
    ASSERT_EQ(coverage.days.size(), 2U);
    EXPECT_EQ(coverage.days[0].coveredDuration, Seconds{40min});
    EXPECT_EQ(coverage.days[0].totalDuration, Seconds{12h});
    EXPECT_EQ(coverage.days[1].coveredDuration, Seconds{30min});
    EXPECT_EQ(coverage.hours[10].coveredDuration, Seconds{30min});
    EXPECT_EQ(coverage.hours[10].totalDuration, Seconds{1h});
    EXPECT_EQ(coverage.hours[12].coveredDuration, Seconds{40min});
    EXPECT_EQ(coverage.hours[12].totalDuration, Seconds{2h});
    EXPECT_FALSE(coverage.isSufficient());
    EXPECT_EQ(insightsCoverage(observed, {period.end, period.start}, zone).fraction(), 0);
}

struct NightCase {
    std::string_view name;
    int nights;
    std::vector<std::pair<int, double>> observedHours;  ///< Of which night, from midnight.
    bool warning;
};

TEST(InsightsCoverage, warnsOfThreeMissingNightsThatAreHalfOfAll)
{
    const TimeZone zone = zoneNamed("America/New_York");
    const auto all = [](int nights, int missing, double hoursOfMissing) {
        std::vector<std::pair<int, double>> hours;
        for (int night = 0; night < nights; ++night)
            hours.emplace_back(night, night < missing ? hoursOfMissing : 6);
        return hours;
    };
    const std::vector<NightCase> cases{
        {"two of two", 2, {}, false},
        {"three of three", 3, {}, true},
        {"three of six, just missing", 6, all(6, 3, 4.19), true},
        {"three of six, just there", 6, all(6, 3, 4.2), false},
        {"three of seven", 7, all(7, 3, 0), false},
        {"four of seven", 7, all(7, 4, 0), true},
    };
    for (const auto& [name, nights, hours, warning] : cases) {
        SCOPED_TRACE(name);
        const Date midnight = utc("2024-05-01T04:00:00Z");
        std::vector<DateInterval> observed;
        for (const auto& [night, length] : hours)
            if (length > 0)
                observed.push_back({midnight + Seconds{night * 86'400.0},
                                    midnight + Seconds{night * 86'400.0 + length * 3600}});
        const DateInterval whole{midnight, midnight + Seconds{nights * 86'400.0}};
        EXPECT_EQ(hasMissingNights(observed, whole, zone), warning);
        // Nights that the period cuts at either end count for nothing.
        EXPECT_EQ(hasMissingNights(observed, {whole.start - 22h, whole.end + 5h}, zone), warning);
    }
    // Where clocks go on, 3.5 of 5 hours are enough.
    const Date spring = utc("2024-03-10T05:00:00Z");
    const DateInterval three{spring - 48h, spring + 23h};
    const std::vector enough{DateInterval{spring, spring + 210min}};
    const std::vector missing{DateInterval{spring, spring + 209min}};
    EXPECT_FALSE(hasMissingNights(enough, three, zone));
    EXPECT_TRUE(hasMissingNights(missing, three, zone));
}

}  // namespace
}  // namespace tidewell
