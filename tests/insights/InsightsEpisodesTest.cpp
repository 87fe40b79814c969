#include "insights/InsightsEpisodes.h"

#include <fmt/format.h>

#include "InsightsTesting.h"

namespace tidewell {
namespace {

constexpr double start = 1'700'000'000;

/// One letter to five minutes: v 50, l 60, i 100, h 200, H 300 mg/dL; a dot is nothing.
std::vector<InsightsReading> drawn(std::string_view letters, double step = 300)
{
    std::vector<InsightsReading> readings;
    for (std::size_t i = 0; i < letters.size(); ++i) {
        const double mgdL = letters[i] == 'v'   ? 50
                            : letters[i] == 'l' ? 60
                            : letters[i] == 'h' ? 200
                            : letters[i] == 'H' ? 300
                                                : 100;
        if (letters[i] != '.')
            readings.push_back(sample(start + static_cast<double>(i) * step, mgdL));
    }
    return readings;
}

/// "low 0-15" in minutes from the start; '~' for a side at a gap, '!' for an extended one.
std::string found(const std::vector<InsightsReading>& readings)
{
    const DateInterval period{dateFromUnix(start - 3600), dateFromUnix(start + 86'400)};
    std::string text;
    for (const auto& episode : insightsEpisodes(weightedReadings(readings, period)))
        text +=
            fmt::format("{}{} {}{:g}-{:g}{}{}", text.empty() ? "" : ", ", rawValue(episode.kind),
                        episode.startsAtGap ? "~" : "", (unixSeconds(episode.interval.start) - start) / 60,
                        (unixSeconds(episode.interval.end) - start) / 60, episode.endsAtGap ? "~" : "",
                        episode.isExtended ? "!" : "");
    return text;
}

TEST(InsightsEpisodes, beginAfterFifteenMinutesAndEndAfterFifteenMinutesBack)
{
    const std::vector<std::pair<std::string, std::string_view>> cases{
        {"iiiiii", ""},
        {"illiii", ""},
        {"illliii", "low 5-20"},
        {"illlii", "low 5-20~"},          // Not seen to be over.
        {"illliilliii", "low 5-40"},      // Ten minutes back do not end it ...
        {"illliilliilliii", "low 5-60"},  // ... nor do two times ten ...
        {"illiiillliii", "low 30-45"},    // ... and two short ones are none.
        {"illilliii", ""},                // Fifteen minutes in a row.
        {"illliiillliii", "low 5-20, low 35-50"},
        {"ilvvvliii", "low 5-30, veryLow 10-25"},
        {"ivvviii", "low 5-20, veryLow 5-20"},
        {"ihhHHHhhiii", "high 5-40, veryHigh 15-30"},
        {"llliii", "low ~0-15"},      // From before the first reading, perhaps.
        {"illl.lliii", "low 5-20~"},  // A gap ends it and is not bridged.
        {"ill.lliii", ""},
        {"ill.llliii", "low ~20-35"},
        {"i" + std::string(24, 'l') + "iii", "low 5-125"},
        {"i" + std::string(25, 'l') + "iii", "low 5-130!"},
        {"i" + std::string(25, 'v') + "iii", "low 5-130!, veryLow 5-130"},
        {"i" + std::string(30, 'H') + "iii", "high 5-155, veryHigh 5-155"},
        {"", ""},
    };
    for (const auto& [letters, expected] : cases)
        EXPECT_EQ(found(drawn(letters)), expected) << letters;
}

TEST(InsightsEpisodes, takeTheJitterOfASensorsClockForNothing)
{
    for (const double step : {298.0, 299.0, 301.0}) {
        EXPECT_TRUE(found(drawn("illliii", step)).starts_with("low")) << step;
        EXPECT_EQ(found(drawn("illiii", step)), "") << step;
        EXPECT_FALSE(found(drawn("i" + std::string(24, 'l') + "iii", step)).ends_with('!')) << step;
        EXPECT_TRUE(found(drawn("i" + std::string(25, 'l') + "iii", step)).ends_with('!')) << step;
    }
}

TEST(InsightsEpisodes, takeMoreThanJitterForAGap)
{
    EXPECT_EQ(found(drawn("illliii", 340)), "");
    EXPECT_EQ(found(drawn("illliii", 280)), "");  // Fourteen minutes.
}

TEST(InsightsEpisodes, nameTheExtreme)
{
    auto readings = drawn("illlliii");
    readings[2].mgdL = 41;
    const DateInterval period{dateFromUnix(start), dateFromUnix(start + 86'400)};
    const auto episodes = insightsEpisodes(weightedReadings(readings, period));
    ASSERT_EQ(episodes.size(), 1U);
    EXPECT_EQ(episodes[0].extremeMgdl, 41);
}

}  // namespace
}  // namespace tidewell
