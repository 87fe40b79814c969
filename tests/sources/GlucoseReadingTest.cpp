#include "sources/GlucoseReading.h"

#include <boost/json/serialize.hpp>

#include "support/Random.h"

namespace tidewell {
namespace {

using enum GlucoseReadingError;

json::value parsed(std::string_view text)
{
    const auto value = parseJson(text);
    EXPECT_TRUE(value) << text;
    return value ? *value : json::value{};
}

TEST(GlucoseReading, knowsTheArrowAndThePhraseOfEachTrendWordInAnyCase)
{
    const std::array<const char*, 3> cases[]{{"DoubleUp", "↑↑", "rising quickly"},
                                             {"SINGLEUP", "↑", "rising"},
                                             {"fortyFiveUp", "↗", "rising slightly"},
                                             {"Flat", "→", "steady"},
                                             {"FortyFiveDown", "↘", "falling slightly"},
                                             {"singledown", "↓", "falling"},
                                             {"DoubleDown", "↓↓", "falling quickly"},
                                             {"NotComputable", "?", "unknown trend"},
                                             {"RateOutOfRange", "?", "unknown trend"},
                                             {"None", "?", "unknown trend"},
                                             {"", "?", "unknown trend"},
                                             {"Flat ", "?", "unknown trend"}};
    for (const auto& [word, arrow, phrase] : cases) {
        EXPECT_EQ(trendArrow(word), arrow) << word;
        EXPECT_EQ(trendPhrase(word), phrase) << word;
        const GlucoseReading reading = makeReading(100, word, {}, Seconds{300}, GlucoseProvider::dexcom);
        EXPECT_EQ(reading.trendString, word);
        EXPECT_EQ(reading.trendArrow, arrow);
    }
}

TEST(GlucoseReading, takesTheTimeOfADexcomObjectFromTheFirstFieldThatHasOne)
{
    const std::pair<std::string, double> cases[]{
        {R"json("ST":"/Date(1700000000000)/","WT":"Date(1699999999000-0500)")json", 1700000000},
        {R"json("ST":"yesterday","WT":"Date(1700000000000+0100)")json", 1700000000},
        {R"json("ST":1700000000000,"WT":null,"DT":"Date(1700000000123+0100)")json", 1700000000.123},
        {R"json("DT":"Date(3)","WT":"Date(2)","ST":"Date(1)")json", 0.001},
        {R"json("ST":"Date(99999999999999999999)","WT":"Date(5000)")json", 5},
        {R"json("ST":"Date()","WT":"Date(-5000)","DT":"Date(7000-1)")json", 7},
        {R"json("ST":" Date(1000)","WT":"Date(1000) ","DT":"Date(2000)")json", 2},
        {R"json("ST":"date(1000)","WT":"Date(1000+)","DT":"/Date(2000)")json", 2},
        {R"json("ST":"Date(1000)//","WT":"//Date(1000)","DT":"Date(2000)/")json", 2},
        {R"json("ST":"Date(1e3)","WT":"Date(1000.0)","DT":"Date(2000+0)")json", 2},
    };
    for (const auto& [times, seconds] : cases) {
        const auto reading = readingFromDexcom(parsed(R"({"Value":118,"Trend":"Flat",)" + times + "}"));
        ASSERT_TRUE(reading) << times;
        EXPECT_EQ(unixSeconds(reading->date), seconds) << times;
        EXPECT_EQ(reading->mgdL, 118);
        EXPECT_EQ(reading->sampleDuration, Seconds{300});
        EXPECT_EQ(reading->source, GlucoseProvider::dexcom);
    }
}

TEST(GlucoseReading, saysWhatADexcomObjectLacks)
{
    const std::pair<const char*, GlucoseReadingError> cases[]{
        {R"([])", invalidFormat},
        {R"("Flat")", invalidFormat},
        {R"({})", missingValue},
        {R"json({"Value":"118","Trend":"Flat","ST":"Date(1000)"})json", missingValue},
        {R"({"Value":null,"Trend":4,"ST":7})", missingValue},
        {R"json({"Value":true,"Trend":"Flat","ST":"Date(1000)"})json", missingValue},
        {R"json({"Value":118,"ST":"Date(1000)"})json", missingTrend},
        {R"json({"Value":118,"Trend":4,"ST":"Date(1000)"})json", missingTrend},
        {R"({"Value":118,"Trend":"Flat"})", invalidTimestamp},
        {R"json({"Value":118,"Trend":"Flat","ST":"","WT":"2026-01-01","DT":"Date(x)"})json",
         invalidTimestamp},
    };
    for (const auto& [object, expected] : cases)
        EXPECT_EQ(readingFromDexcom(parsed(object)), std::unexpected{expected}) << object;
    EXPECT_EQ(description(invalidFormat), "Invalid glucose reading format");
    EXPECT_EQ(description(missingValue), "Missing glucose value");
    EXPECT_EQ(description(missingTrend), "Missing trend information");
    EXPECT_EQ(description(invalidTimestamp), "Missing or invalid glucose reading timestamp");
}

TEST(GlucoseReading, isStoredWithItsKeysInOrderAndWithoutTheArrow)
{
    const GlucoseReading reading = makeReading(118, "FortyFiveUp", dateFromUnix(1772438113.482), Seconds{60},
                                               GlucoseProvider::libreLinkUp);
    EXPECT_EQ(json::serialize(encode(reading)),
              R"({"mgdL":118,"trendString":"FortyFiveUp","date":"2026-03-02T07:55:13.482Z",)"
              R"("sampleDuration":60,"source":"libreLinkUp"})");
}

TEST(GlucoseReading, comesBackFromStorageExactly)
{
    SeededRandom random{7};
    for (int i = 0; i < 2000; ++i) {
        // As a service sends them: whole milliseconds, here from 1902
        // to 2106, also just around a second's turn.
        const auto spread = static_cast<std::int64_t>(random.next() % 6'442'450'944'000) - 2'147'483'648'000;
        const std::int64_t milliseconds = i % 4 == 0 ? spread / 1000 * 1000 + (i % 3) - 1 : spread;
        const GlucoseReading reading =
            makeReading(static_cast<double>(random.next() % 8000) / 16, "Flat",
                        dateFromUnix(static_cast<double>(milliseconds) / 1000.0),
                        Seconds{static_cast<double>(1 + random.next() % 900)},
                        i % 2 == 0 ? GlucoseProvider::dexcom : GlucoseProvider::libreLinkUp);
        const auto back = decodeReading(parsed(json::serialize(encode(reading))));
        ASSERT_TRUE(back) << milliseconds;
        ASSERT_EQ(*back, reading) << milliseconds;
    }
}

TEST(GlucoseReading, storedDurationsAreMendedAndTimesTakenToTheMillisecond)
{
    const std::pair<std::string, double> cases[]{{"", 300},
                                                 {R"(,"sampleDuration":null)", 300},
                                                 {R"(,"sampleDuration":1200)", 900},
                                                 {R"(,"sampleDuration":900.5)", 900},
                                                 {R"(,"sampleDuration":899.5)", 899.5},
                                                 {R"(,"sampleDuration":0.25)", 0.25},
                                                 {R"(,"sampleDuration":0)", 60},
                                                 {R"(,"sampleDuration":-5)", 60}};
    for (const auto& [member, seconds] : cases) {
        const auto reading = decodeReading(
            parsed(R"({"mgdL":5.5,"trendString":"x","date":"2026-03-02T07:55:13Z")" + member + "}"));
        ASSERT_TRUE(reading) << member;
        EXPECT_EQ(reading->sampleDuration, Seconds{seconds}) << member;
        EXPECT_EQ(reading->source, GlucoseProvider::dexcom);
        EXPECT_EQ(reading->trendArrow, "?");
    }
    const auto reading =
        decodeReading(parsed(R"({"mgdL":118,"trendString":"Flat","date":"2026-03-02T08:55:13.4816+01:00"})"));
    ASSERT_TRUE(reading);
    EXPECT_EQ(unixSeconds(reading->date), 1772438113.482);
}

TEST(GlucoseReading, damagedStoredReadingsAreRefused)
{
    const std::pair<const char*, GlucoseReadingError> cases[]{
        {R"(7)", invalidFormat},
        {R"({"trendString":"Flat","date":"2026-03-02T07:55:13Z"})", missingValue},
        {R"({"mgdL":"118","trendString":"Flat","date":"2026-03-02T07:55:13Z"})", missingValue},
        {R"({"mgdL":118,"date":"2026-03-02T07:55:13Z"})", missingTrend},
        {R"({"mgdL":118,"trendString":"Flat"})", invalidTimestamp},
        {R"({"mgdL":118,"trendString":"Flat","date":1772438113})", invalidTimestamp},
        {R"({"mgdL":118,"trendString":"Flat","date":"2026-02-30T07:55:13Z"})", invalidTimestamp},
        {R"({"mgdL":118,"trendString":"Flat","date":"0001-01-01T00:00:00+14:00"})", invalidTimestamp},
        {R"({"mgdL":118,"trendString":"Flat","date":"2026-03-02T07:55:13Z","sampleDuration":"60"})",
         invalidFormat},
        {R"({"mgdL":118,"trendString":"Flat","date":"2026-03-02T07:55:13Z","source":"medtronic"})",
         invalidFormat},
        {R"({"mgdL":118,"trendString":"Flat","date":"2026-03-02T07:55:13Z","source":1})", invalidFormat},
    };
    for (const auto& [object, expected] : cases)
        EXPECT_EQ(decodeReading(parsed(object)), std::unexpected{expected}) << object;
}

}  // namespace
}  // namespace tidewell
