#include "simulator/LibreReadings.h"

#include <boost/json/parse.hpp>
#include <cmath>
#include <set>

#include "support/Json.h"

namespace tidewell {
namespace {

const Date start = dateFromUnix(1772438000);  // 2026-03-02 07:53:20

LibreReadings readings(const LibreReadingOptions& options = {}, Date at = start)
{
    return {GlucoseTrace::libre(), GlucoseTrace::libreStart, 1, options, at};
}

double currentAge(const LibreReadings& libre, double seconds)
{
    const Date now = start + Seconds{seconds};
    return (now - libre.current(now).value().date).count();
}

double graphAge(const LibreReadings& libre, double seconds)
{
    const Date now = start + Seconds{seconds};
    return (now - libre.graph(now).back().date).count();
}

json::object written(const LibreReadings& libre, Date now = start)
{
    return json::parse(libre.currentText(now)).as_object();
}

TEST(LibreReadings, theCurrentMeasurementChangesEachMinuteAndTheGraphLiesAboutTwentyMinutesBehind)
{
    const auto libre = readings();
    EXPECT_EQ(libre.current(start)->mgdL, 301) << "the trace's reading at the start";
    for (double at = 0; at < 7200; at += 7) {
        const double age = currentAge(libre, at);
        EXPECT_TRUE(age >= 5 && age <= 66) << at << ": " << age;
        const double behind = graphAge(libre, at) - age;
        EXPECT_TRUE(behind >= 16.4 * 60 && behind <= 21.6 * 60) << at << ": " << behind;
        const auto graph = libre.graph(start + Seconds{at});
        EXPECT_TRUE(graph.size() == 140 || graph.size() == 141) << graph.size();
        for (std::size_t i = 1; i < graph.size(); ++i)
            EXPECT_NEAR((graph[i].date - graph[i - 1].date).count(), 300, 3);
        EXPECT_EQ(libre.newest(start + Seconds{at}), libre.current(start + Seconds{at}));
    }
    EXPECT_EQ(currentAge(libre, 0), 20);
    EXPECT_EQ(currentAge(libre, 44), 64) << "the next one is made at 40 s and published at 45 s";
    EXPECT_EQ(currentAge(libre, 45), 5);
}

TEST(LibreReadings, whatAMomentsValueIsDoesNotDependOnWhenItIsAsked)
{
    const auto libre = readings();
    std::map<Date, int> values;
    for (double at = 0; at < 4 * 3600; at += 600)
        for (const auto& value : libre.graph(start + Seconds{at}))
            EXPECT_EQ(values.emplace(value.date, value.mgdL).first->second, value.mgdL);
    EXPECT_EQ(readings().graphText(start + 1h), libre.graphText(start + 1h));
    // Graph values are the current ones, a little changed.
    const auto plain = readings({.smoothing = 0});
    for (const auto& value : plain.graph(start + 1h))
        EXPECT_NEAR(values[value.date], value.mgdL, 2.5);
}

TEST(LibreReadings, standsStillGoesSilentAndComesBackAsTheOptionsSay)
{
    auto libre = readings();
    const auto at = [](double seconds) { return start + Seconds{seconds}; };
    libre.setOptions({.frozen = true}, at(50));
    EXPECT_EQ(currentAge(libre, 3600), 3560) << "the one that was made at 40 s";
    EXPECT_LT(graphAge(libre, 3600), 22 * 60);
    EXPECT_EQ(libre.newest(at(3600)), libre.graph(at(3600)).back()) << "the graph has overtaken it";
    libre.setOptions({}, at(3600));
    EXPECT_LE(currentAge(libre, 3600), 65);

    libre.setOptions({.publishing = false}, at(4000));
    const auto silent = libre.graph(at(4000)).back();
    EXPECT_EQ(libre.current(at(4000)), libre.current(at(9000)));
    EXPECT_EQ(libre.graph(at(9000)).back(), silent);
    EXPECT_TRUE(libre.graph(at(4000 + 50'000)).empty()) << "after half a day nothing is left to show";
    libre.setOptions({}, at(9000));
    EXPECT_LE(currentAge(libre, 9000), 65);
    EXPECT_GE(libre.graph(at(9000)).size(), 140U) << "what was measured meanwhile comes too";

    libre.restart(Seconds{840}, at(9000));
    EXPECT_EQ(currentAge(libre, 9000), 840);
    EXPECT_LE(currentAge(libre, 9070), 65) << "the next one comes in its time";
    EXPECT_EQ(currentAge(readings({.newestAge = 2400s, .frozen = true}), 0), 2400);
    EXPECT_LE(graphAge(readings({.newestAge = 2400s, .frozen = true}), 0), 22 * 60);
    EXPECT_EQ(currentAge(readings({.newestAge = 50s, .currentInterval = 10s, .publicationDelay = 50s}), 19),
              59);
}

TEST(LibreReadings, leavesOutWhatTheOptionsLeaveOut)
{
    EXPECT_EQ(readings({.noCurrent = true}).currentText(start), "null");
    EXPECT_FALSE(readings({.noCurrent = true}).current(start));
    EXPECT_EQ(readings({.noCurrent = true}).newest(start), readings().graph(start).back());
    EXPECT_EQ(readings({.emptyGraph = true}).graphText(start), "[]");
    EXPECT_FALSE(readings({.noCurrent = true, .missingGraph = true}).newest(start));
    const auto gaps = readings({.gapShare = 0.2}).graph(start).size();
    EXPECT_TRUE(gaps > 95 && gaps < 130) << gaps;
    EXPECT_TRUE(readings({.gapShare = 1}).graph(start).empty());
}

TEST(LibreReadings, writesTimesRoundMidnightNoonAndTheYear)
{
    const std::vector<std::tuple<double, bool, int, std::string_view, std::string_view>> cases{
        {1767225599, false, 60, "12/31/2025 11:59:59 PM", "1/1/2026 12:59:59 AM"},
        {1767225600, false, 0, "1/1/2026 12:00:00 AM", "1/1/2026 12:00:00 AM"},
        {1767225600, true, -300, "1/1/2026 0:00:00", "12/31/2025 19:00:00"},
        {1767225600 + 43199, false, 1, "1/1/2026 11:59:59 AM", "1/1/2026 12:00:59 PM"},
        {1767225600 + 43200, false, -1, "1/1/2026 12:00:00 PM", "1/1/2026 11:59:00 AM"},
        {1767225600 + 46805, true, 345, "1/1/2026 13:00:05", "1/1/2026 18:45:05"},
        {1835481599, false, 60, "2/29/2028 11:59:59 PM", "3/1/2028 12:59:59 AM"},
    };
    for (const auto& [seconds, twentyFour, offset, factory, local] : cases) {
        const Date now = dateFromUnix(seconds);
        const auto object = written(
            readings({.newestAge = 0s, .twentyFourHours = twentyFour, .timestampOffsetMinutes = offset}, now),
            now);
        EXPECT_EQ(object.at("FactoryTimestamp").as_string(), factory);
        EXPECT_EQ(object.at("Timestamp").as_string(), local);
    }
    // The end of summer: what was measured before keeps its local time.
    auto libre = readings({.timestampOffsetMinutes = 120});
    libre.setOptions({.timestampOffsetMinutes = 60}, start);
    EXPECT_EQ(written(libre).at("Timestamp").as_string(), "3/2/2026 9:53:00 AM");
    EXPECT_EQ(written(libre, start + 60s).at("Timestamp").as_string(), "3/2/2026 8:54:00 AM");
}

TEST(LibreReadings, writesUnitsColoursAndEveryArrow)
{
    const std::vector<std::tuple<int, bool, std::string_view>> values{
        {125, true, R"("MeasurementColor":1,"GlucoseUnits":0,"Value":6.9,"isHigh":false,"isLow":false})"},
        {126, true, R"("MeasurementColor":1,"GlucoseUnits":0,"Value":7,"isHigh":false,"isLow":false})"},
        {53, false, R"("MeasurementColor":4,"GlucoseUnits":1,"Value":53,"isHigh":false,"isLow":false})"},
        {200, false, R"("MeasurementColor":2,"GlucoseUnits":1,"Value":200,"isHigh":false,"isLow":false})"},
        {278, false, R"("MeasurementColor":3,"GlucoseUnits":1,"Value":278,"isHigh":false,"isLow":false})"},
    };
    for (const auto& [mgdL, mmol, expected] : values) {
        const auto libre = readings({.mgdL = mgdL, .mmolPerLitre = mmol});
        EXPECT_TRUE(libre.currentText(start).ends_with(expected)) << libre.currentText(start);
        EXPECT_NE(libre.graphText(start).find(expected), std::string::npos);
        EXPECT_EQ(written(libre).at("ValueInMgPerDl").as_int64(), mgdL);
    }
    EXPECT_EQ(readings({.mgdL = 118, .arrow = 4}).currentText(start),
              R"({"FactoryTimestamp":"3/2/2026 7:53:00 AM","Timestamp":"3/2/2026 8:53:00 AM","type":1,)"
              R"("ValueInMgPerDl":118,"TrendArrow":4,"TrendMessage":null,"MeasurementColor":1,)"
              R"("GlucoseUnits":1,"Value":118,"isHigh":false,"isLow":false})");
    const auto graph = readings().graphText(start);
    EXPECT_EQ(graph.find("Trend"), std::string::npos);
    EXPECT_EQ(graph.find(R"("type":1)"), std::string::npos);
    EXPECT_FALSE(written(readings({.noArrow = true})).contains("TrendArrow"));

    std::set<std::string> forms;
    const auto every = readings({.everyArrow = true});
    for (int minute = 0; minute < 9; ++minute) {
        const auto object = written(every, start + std::chrono::minutes{minute});
        forms.insert(object.contains("TrendArrow") ? compactJson(object.at("TrendArrow")) : "absent");
    }
    EXPECT_EQ(forms, (std::set<std::string>{"0", "1", "2", "3", "4", "5", "6", "null", "absent"}));

    std::map<std::int64_t, int> arrows;
    for (double minute = 0; minute < 7 * 1440; ++minute)
        arrows[written(readings(), start + Seconds{minute * 60}).at("TrendArrow").as_int64()] += 1;
    EXPECT_EQ(arrows.size(), 5U) << "a week shows each of the five";
    EXPECT_GT(arrows[3], 5000);
}

}  // namespace
}  // namespace tidewell
