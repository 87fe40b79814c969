#include "simulator/ReadingGenerator.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <set>

#include "support/Json.h"

namespace tidewell {
namespace {

const Date start = dateFromUnix(1772438000);

/// What a client makes of an array, read from the text alone.
struct Read {
    double time;  ///< Of DT, seconds since 1970.
    int value;
    std::string trend;
};

std::vector<Read> parsed(const std::string& text)
{
    std::vector<Read> all;
    for (const auto& entry : json::parse(text).as_array()) {
        const std::string display{entry.at("DT").as_string()};
        const double time = std::stod(display.substr(display.find('(') + 1)) / 1000;
        const auto& trend = entry.at("Trend");
        all.push_back({time, static_cast<int>(entry.at("Value").as_int64()),
                       trend.is_string() ? std::string{trend.as_string()} : json::serialize(trend)});
    }
    return all;
}

ReadingGenerator generator(const ReadingOptions& options, std::uint64_t seed = 1)
{
    return {GlucoseTrace::builtIn(), GlucoseTrace::builtInStart, seed, options, start};
}

std::vector<Read> readAt(ReadingGenerator& readings, double seconds)
{
    return parsed(readings.read(1440, 288, start + Seconds{seconds}));
}

double ageAt(ReadingGenerator& readings, double seconds)
{
    const auto all = readAt(readings, seconds);
    return all.empty() ? -1 : unixSeconds(start) + seconds - all.front().time;
}

TEST(ReadingGenerator, theNewestReadingIsAsOldAsAskedAndTheNextOnesComeInTime)
{
    auto readings = generator({.newestAge = 70s, .publicationDelay = 40s});
    EXPECT_NEAR(ageAt(readings, 0), 70, 1e-3);
    // The trace's next reading is 300 s after the newest: made at 230 s, published at 270 s.
    EXPECT_NEAR(ageAt(readings, 269), 339, 2);
    EXPECT_NEAR(ageAt(readings, 273), 43, 2);
    auto old = generator({.newestAge = 880s, .publishing = false});
    EXPECT_NEAR(ageAt(old, 3000), 3880, 1e-3);
    EXPECT_EQ(old.newest(start + 3000s)->date, start - 880s);
}

TEST(ReadingGenerator, twoDaysKeepOrderSpacingAndLimitsWhateverTheOptions)
{
    const std::vector<ReadingOptions> cases{
        {},
        {.drift = 0.5s, .publicationDelay = 20s, .publicationJitter = 40s},
        {.gapShare = 0.3, .lateShare = 0.3},
        {.drift = 0.5s, .duplicates = true},
        {.spacing = 15s, .publicationDelay = 305s},
    };
    for (const auto& options : cases) {
        auto readings = generator(options, 7);
        for (double seconds = 0; seconds < 2 * 86400; seconds += 1111) {
            const auto all = readAt(readings, seconds);
            ASSERT_FALSE(all.empty());
            ASSERT_LE(all.size(), 288U);
            EXPECT_LE(all.front().time, unixSeconds(start) + seconds);
            EXPECT_GT(all.back().time, unixSeconds(start) + seconds - 86400);
            EXPECT_TRUE(std::ranges::is_sorted(all, std::greater{}, &Read::time));
            for (const auto& reading : all)
                ASSERT_TRUE(reading.value >= 39 && reading.value <= 401);
        }
    }
}

TEST(ReadingGenerator, windowAndCountAreClamped)
{
    auto readings = generator({.newestAge = 60s, .spacing = 300s});
    const auto count = [&](std::int64_t minutes, std::int64_t most) {
        return parsed(readings.read(minutes, most, start)).size();
    };
    EXPECT_EQ(count(1440, 288), 288U);
    EXPECT_EQ(count(100'000, 100'000), 288U);
    EXPECT_EQ(count(10, 288), 2U);
    EXPECT_EQ(count(1, 288), 0U) << "the newest is a minute old";
    EXPECT_EQ(count(2, 288), 1U);
    EXPECT_EQ(count(1440, 3), 3U);
    EXPECT_EQ(count(0, 288), 0U);
    EXPECT_EQ(count(1440, 0), 0U);
    EXPECT_EQ(count(-5, -5), 0U);
    auto empty = generator({.empty = true});
    EXPECT_EQ(empty.read(1440, 288, start), "[]");
    EXPECT_EQ(empty.newest(start), std::nullopt);
}

TEST(ReadingGenerator, readingsMadeOutOfReachAreLostOrComeLater)
{
    for (const bool backfill : {false, true}) {
        ReadingOptions options{.backfill = backfill, .spacing = 300s, .publicationDelay = 0s};
        auto readings = generator(options);
        options.publishing = false;
        readings.setOptions(options, start + 600s);
        EXPECT_NEAR(ageAt(readings, 1800), 1260, 1e-3) << "the reading of 540 s stays the newest";
        options.publishing = true;
        readings.setOptions(options, start + 1800s);
        const auto all = readAt(readings, 2100);
        EXPECT_NEAR(all[0].time - all[1].time, backfill ? 300 : 1500, 1e-3);
        EXPECT_NEAR(unixSeconds(start) + 2100 - all[0].time, 60, 1e-3);
    }
    // Late readings come below newer ones.
    auto late = generator({.spacing = 300s, .lateShare = 0.3, .lateBy = 1800s});
    std::set<double> before;
    for (const auto& reading : readAt(late, 7200))
        before.insert(reading.time);
    int backfilled = 0;
    for (const auto& reading : readAt(late, 9000))
        backfilled += reading.time < *before.rbegin() && !before.contains(reading.time) ? 1 : 0;
    EXPECT_GE(backfilled, 1);
}

TEST(ReadingGenerator, aRestartAddsTheTracesNextReadingAndKeepsOlderOnes)
{
    auto readings = generator({.newestAge = 3570s, .publishing = false});
    const auto before = readAt(readings, 0);
    readings.restart(830s, start + 10s);
    const auto after = readAt(readings, 10);
    EXPECT_NEAR(ageAt(readings, 10), 830, 1e-3);
    EXPECT_EQ(after[1].time, before[0].time);
}

TEST(ReadingGenerator, duplicatesComeNineSecondsApartWithTheSameValue)
{
    auto readings = generator({.spacing = 300s, .duplicates = true});
    const auto all = readAt(readings, 1000);
    for (std::size_t i = 0; i + 1 < 6; i += 2) {
        EXPECT_NEAR(all[i].time - all[i + 1].time, 9, 1e-3);
        EXPECT_EQ(all[i].value, all[i + 1].value);
    }
}

TEST(ReadingGenerator, writesEveryFormOfTheService)
{
    const auto first = [](const ReadingOptions& options) {
        auto readings = generator(options);
        return readings.read(1440, 1, start);
    };
    const ReadingOptions plain{.mgdL = 118, .trend = "Flat"};
    EXPECT_EQ(first(plain), R"j([{"WT":"Date(1772437940000)","ST":"Date(1772437940000)",)j"
                            R"j("DT":"Date(1772437940000+0100)","Value":118,"Trend":"Flat"}])j");
    auto other = plain;
    other.slashes = true;
    other.worldTime = false;
    other.systemTimeAhead = 3600s;
    other.displayOffsetMinutes = -210;
    other.newestAge = Seconds{60.75};
    other.mgdL = 401;
    EXPECT_EQ(first(other),
              R"j([{"ST":"/Date(1772441539250)/","DT":"/Date(1772437939250-0330)/","Value":401,)j"
              R"j("Trend":"Flat"}])j");
    other.wholeSeconds = true;
    EXPECT_NE(first(other).find("Date(1772437939000-0330)"), std::string::npos);

    for (const bool numeric : {false, true}) {
        auto readings = generator({.everyTrend = true, .numericTrend = numeric});
        std::set<std::string> words;
        for (const auto& reading : readAt(readings, 0))
            words.insert(reading.trend);
        EXPECT_EQ(words.size(), 11U) << "ten known ones and an unknown one";
        EXPECT_TRUE(words.contains(numeric ? "9" : "RateOutOfRange"));
    }
}

TEST(ReadingGenerator, chanceDependsOnTheSeedAndNotOnWhenItIsAsked)
{
    const ReadingOptions options{.drift = 0.5s, .publicationJitter = 40s, .gapShare = 0.1, .lateShare = 0.1};
    auto often = generator(options, 5);
    auto once = generator(options, 5);
    auto other = generator(options, 6);
    for (double seconds = 0; seconds < 86400; seconds += 37)
        static_cast<void>(often.read(10, 1, start + Seconds{seconds}));
    const auto text = often.read(1440, 288, start + 86400s);
    EXPECT_EQ(text, once.read(1440, 288, start + 86400s));
    EXPECT_NE(text, other.read(1440, 288, start + 86400s));
}

TEST(ReadingGenerator, aClockThatLeapsByYearsOrGoesBackStillGivesADay)
{
    auto readings = generator({});
    const double years = 20 * 365.25 * 86400;
    EXPECT_GT(readAt(readings, years).size(), 250U);
    EXPECT_LT(ageAt(readings, years), 1600);
    auto back = generator({});
    static_cast<void>(readAt(back, 7200));
    EXPECT_NEAR(ageAt(back, 0), 60, 1e-3);
}

}  // namespace
}  // namespace tidewell
