#include "polling/GlucoseAlertEvaluator.h"

#include <limits>

namespace tidewell {
namespace {

using enum GlucoseAlertKind;
using Kinds = GlucoseAlertKinds;

/// 2026-03-02 07:53:20 UTC.
constexpr Date start = dateFromUnix(1'772'438'000);

GlucoseReading reading(double mgdL, std::string trend = "Flat", Date date = start)
{
    return makeReading(mgdL, std::move(trend), date, Seconds{300}, GlucoseProvider::dexcom);
}

TEST(GlucoseAlertEvaluator, knowsTheKindsOfAReading)
{
    struct Case {
        double mgdL;
        std::string trend;
        Kinds expected;
        GlucoseAlertSettings settings{};
    };
    const GlucoseAlertSettings crossed{.lowGlucoseThreshold = 200, .highGlucoseThreshold = 100};
    const std::vector<Case> cases{
        {72, "Flat", {lowThreshold}},
        {72.01, "Flat", {}},
        {269.99, "Flat", {}},
        {270, "Flat", {highThreshold}},
        {100, "SingleDown", {rapidFall}},
        {100, "sINGLEdOWN", {rapidFall}},
        {100, "DoubleDown", {rapidFall}},
        {100, "singleup", {rapidRise}},
        {100, "DOUBLEUP", {rapidRise}},
        {100, "FortyFiveUp", {}},
        {100, "FortyFiveDown", {}},
        {100, "", {}},
        {100, "Single Down", {}},
        {60, "DoubleDown", {lowThreshold, rapidFall}},
        {300, "SingleUp", {highThreshold, rapidRise}},
        {150, "Flat", {lowThreshold, highThreshold}, crossed},
        {60, "DoubleDown", {rapidFall}, {.alertOnLowThreshold = false}},
        {300, "DoubleUp", {rapidRise}, {.alertOnHighThreshold = false}},
        {60, "DoubleDown", {lowThreshold}, {.alertOnRapidFall = false}},
        {300, "DoubleUp", {highThreshold}, {.alertOnRapidRise = false}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(GlucoseAlertEvaluator::kindsFor(reading(c.mgdL, c.trend), c.settings), c.expected)
            << c.mgdL << " " << c.trend;
    }
}

TEST(GlucoseAlertEvaluator, choosesByPriorityAndByWhatWasTold)
{
    struct Case {
        Kinds kinds;
        Kinds active;
        std::optional<GlucoseAlertKind> expected;
        std::int64_t repeat = 0;
        std::optional<double> lowSentAgo{};  ///< Seconds.
    };
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    const std::vector<Case> cases{
        {{}, {}, {}},
        {{lowThreshold, highThreshold, rapidFall, rapidRise}, {}, lowThreshold},
        {{highThreshold, rapidFall, rapidRise}, {}, rapidFall},
        {{highThreshold, rapidRise}, {}, highThreshold},
        {{rapidRise}, {}, rapidRise},
        // A pick that was told hides what comes after it, but for a fall during a low.
        {{highThreshold, rapidRise}, {highThreshold}, {}},
        {{rapidRise}, {rapidRise}, {}},
        {{highThreshold, rapidRise}, {rapidRise}, highThreshold},
        {{lowThreshold, rapidFall}, {lowThreshold}, rapidFall},
        {{lowThreshold, rapidRise}, {lowThreshold}, {}},
        {{lowThreshold, highThreshold}, {lowThreshold}, {}},
        {{rapidFall}, {rapidFall}, rapidFall},
        // The repeat.
        {{lowThreshold}, {lowThreshold}, {}, 15, 899.9},
        {{lowThreshold}, {lowThreshold}, lowThreshold, 15, 900},
        {{lowThreshold, rapidFall}, {lowThreshold}, lowThreshold, 15, 900},
        {{lowThreshold, rapidFall}, {lowThreshold}, rapidFall, 15, 10},
        {{lowThreshold}, {lowThreshold}, {}, 15, {}},
        {{lowThreshold}, {lowThreshold}, {}, 0, 1e6},
        {{lowThreshold}, {lowThreshold}, {}, -15, 1e6},
        {{lowThreshold}, {lowThreshold}, {}, huge, 1e6},
        {{lowThreshold}, {lowThreshold}, {}, 15, -3600},
        {{highThreshold}, {highThreshold}, {}, 15, 1e6},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        GlucoseAlertEvaluator evaluator{.activeOneShotAlertKinds = c.active};
        if (c.lowSentAgo)
            evaluator.lastAlertSentAt[lowThreshold] = start - Seconds{*c.lowSentAgo};
        EXPECT_EQ(evaluator.choose(c.kinds, {.lowAlertRepeatMinutes = c.repeat}, start), c.expected) << i;
    }
}

/// One reading after another, each posted when `posts`, with what must come of it.
struct Turn {
    double minute;
    double mgdL;
    std::string trend;
    std::optional<GlucoseAlertKind> expected;
    bool posts = true;
    GlucoseAlertSettings settings{};
    double age = 30;                       ///< Of the reading, seconds.
    std::optional<double> snoozedUntil{};  ///< Minute.
};

void expectTurns(const std::vector<Turn>& turns, std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "called"};
    GlucoseAlertEvaluator evaluator;
    for (std::size_t i = 0; i < turns.size(); ++i) {
        const Turn& turn = turns[i];
        const Date now = start + Seconds{turn.minute * 60};
        GlucoseAlertEvaluator::Pass pass{.now = now};
        if (turn.snoozedUntil)
            pass.snoozedUntil = start + Seconds{*turn.snoozedUntil * 60};
        const auto kind =
            evaluator.evaluate(reading(turn.mgdL, turn.trend, now - Seconds{turn.age}), turn.settings, pass);
        EXPECT_EQ(kind, turn.expected) << "turn " << i;
        if (kind && turn.posts)
            evaluator.recordPosted(*kind, now);
    }
}

TEST(GlucoseAlertEvaluator, tellsAnEpisodeOnceAndTheNextOneAgain)
{
    expectTurns({{0, 70, "Flat", lowThreshold},
                 {5, 65, "Flat", {}},
                 {10, 65, "SingleDown", rapidFall},
                 {15, 60, "DoubleDown", rapidFall},
                 {20, 65, "SingleUp", {}},
                 {25, 73, "SingleUp", rapidRise},
                 {30, 80, "DoubleUp", {}},
                 {35, 72, "Flat", lowThreshold},
                 {40, 280, "DoubleUp", highThreshold},
                 {45, 290, "DoubleUp", {}},
                 {50, 260, "DoubleUp", rapidRise}});
    // What was not posted stays due; a low that is posted late repeats from then on.
    const GlucoseAlertSettings repeats{.lowAlertRepeatMinutes = 15};
    expectTurns({{0, 60, "Flat", lowThreshold, false, repeats},
                 {5, 60, "Flat", lowThreshold, true, repeats},
                 {10, 60, "SingleDown", rapidFall, true, repeats},
                 {19.9, 60, "Flat", {}, true, repeats},
                 {20, 60, "SingleDown", lowThreshold, false, repeats},
                 {21, 60, "Flat", lowThreshold, true, repeats},
                 {35, 60, "Flat", {}, true, repeats},
                 {36, 60, "Flat", lowThreshold, true, repeats}});
}

TEST(GlucoseAlertEvaluator, neitherAlertsNorRearmsByAReadingThatIsNotOfNow)
{
    for (const double age : {900.0, 960.0, 1e7, -60.001, -120.0, -1e7}) {
        expectTurns({{0, 60, "Flat", lowThreshold},
                     {1, 120, "Flat", {}, true, {}, age},
                     {2, 60, "Flat", {}},
                     {3, 120, "DoubleDown", {}, true, {}, age}});
    }
    for (const double age : {899.99, 0.0, -60.0})
        expectTurns({{0, 60, "Flat", lowThreshold, true, {}, age}});
}

TEST(GlucoseAlertEvaluator, holdsBackInQuietHoursButEndsEpisodesInThem)
{
    // 07:53 is minute 473.
    const GlucoseAlertSettings quiet{
        .quietHoursEnabled = true, .quietHoursStartMinutes = 470, .quietHoursEndMinutes = 480};
    GlucoseAlertSettings quietButLows = quiet;
    quietButLows.allowLowAlertsDuringQuietHours = true;
    GlucoseAlertSettings disabled = quiet;
    disabled.quietHoursEnabled = false;

    expectTurns({{0, 60, "DoubleDown", {}, true, quiet},
                 {6, 60, "DoubleDown", {}, true, quiet},
                 {7, 60, "DoubleDown", lowThreshold, true, quiet}});
    expectTurns({{0, 60, "DoubleDown", lowThreshold, true, quietButLows},
                 {1, 60, "DoubleDown", {}, true, quietButLows},
                 {2, 280, "DoubleDown", {}, true, quietButLows},
                 {3, 60, "Flat", lowThreshold, true, quietButLows}});
    expectTurns({{0, 100, "DoubleDown", rapidFall, true, disabled}});
    // A low before them and another one after them are two.
    expectTurns({{-10, 60, "Flat", lowThreshold, true, quiet},
                 {0, 100, "Flat", {}, true, quiet},
                 {6, 60, "Flat", {}, true, quiet},
                 {8, 60, "Flat", lowThreshold, true, quiet}});
    expectTurns({{-10, 60, "Flat", lowThreshold, true, quiet},
                 {0, 60, "Flat", {}, true, quiet},
                 {8, 60, "Flat", {}, true, quiet}});
}

TEST(GlucoseAlertEvaluator, silencesTheSnoozedCategoriesOnlyAndOnlyUntilTheEnd)
{
    const auto only = [](bool low, bool high, bool rapid) {
        return GlucoseAlertSettings{.lowGlucoseThreshold = 300,  // Crossed: a fall is all three.
                                    .highGlucoseThreshold = 100,
                                    .snoozeLowAlerts = low,
                                    .snoozeHighAlerts = high,
                                    .snoozeRapidChangeAlerts = rapid};
    };
    expectTurns({{0, 200, "SingleDown", lowThreshold, false, only(false, true, true), 30, 5},
                 {1, 200, "SingleDown", rapidFall, false, only(true, true, false), 30, 5},
                 {1, 200, "SingleUp", highThreshold, false, only(true, false, false), 30, 5},
                 {1, 200, "SingleUp", rapidRise, false, only(true, true, false), 30, 5},
                 {1, 200, "SingleUp", {}, false, only(true, true, true), 30, 5},
                 {4.99, 200, "SingleDown", {}, false, only(true, true, true), 30, 5},
                 {5, 200, "SingleDown", lowThreshold, true, only(true, true, true), 30, 5},
                 {6, 200, "SingleDown", {}, true, only(false, false, true), 30, 9},
                 {7, 320, "Flat", {}, true, only(true, true, true), 30, 9},
                 {8, 200, "Flat", {}, true, only(true, true, true), 30, 9},
                 {9, 200, "Flat", lowThreshold, true, only(true, true, true), 30, 9},
                 // What is silenced is not over.
                 {10, 200, "Flat", {}, true, only(true, true, true), 30, 20},
                 {20, 200, "Flat", {}, true, only(true, true, true), 30, 20}});
}

TEST(GlucoseAlertEvaluator, forgetsEverythingWhileAlertsAreOff)
{
    const GlucoseAlertSettings off{.alertsEnabled = false, .lowAlertRepeatMinutes = 15};
    GlucoseAlertEvaluator evaluator;
    evaluator.recordPosted(lowThreshold, start);
    evaluator.recordPosted(rapidFall, start);
    EXPECT_EQ(evaluator.activeOneShotAlertKinds, Kinds{lowThreshold});
    EXPECT_EQ(evaluator.lastAlertSentAt.size(), 2u);
    // Also by a reading that is not of now.
    EXPECT_EQ(evaluator.evaluate(reading(60, "Flat", start - Seconds{9999}), off, {.now = start}),
              std::nullopt);
    EXPECT_EQ(evaluator, GlucoseAlertEvaluator{});
    expectTurns(
        {{0, 60, "Flat", lowThreshold}, {1, 60, "Flat", {}, true, off}, {2, 60, "Flat", lowThreshold}});
}

TEST(GlucoseAlertEvaluator, saysValueTrendAndThresholdInTheUnitOnDisplay)
{
    struct Case {
        GlucoseAlertKind kind;
        GlucoseReading reading;
        std::string title;
        std::string body;
        GlucoseAlertSettings settings{};
    };
    const GlucoseAlertSettings mmol{.lowGlucoseThreshold = 70, .units = GlucoseUnits::mmolL};
    const std::vector<Case> cases{
        {lowThreshold, reading(65, "SingleDown"), "Low glucose alert", "65 mg/dL ↓ (low threshold 72 mg/dL)"},
        {lowThreshold, reading(65, "Flat"), "Low glucose alert", "3.6 mmol/L → (low threshold 3.9 mmol/L)",
         mmol},
        {highThreshold, reading(280, "DoubleUp"), "High glucose alert",
         "280 mg/dL ↑↑ (high threshold 270 mg/dL)"},
        {highThreshold, reading(280, "FortyFiveUp"), "High glucose alert",
         "15.6 mmol/L ↗ (high threshold 15.0 mmol/L)", mmol},
        {rapidFall, reading(90, "DoubleDown"), "Rapid glucose drop",
         "90 mg/dL ↓↓. Glucose is falling quickly."},
        {rapidRise, reading(90, "SingleUp"), "Rapid glucose rise", "5.0 mmol/L ↑. Glucose is rising quickly.",
         mmol},
    };
    for (const Case& c : cases) {
        const GlucoseAlertContent content = GlucoseAlertEvaluator::content(c.kind, c.reading, c.settings);
        EXPECT_EQ(content.title, c.title);
        EXPECT_EQ(content.body, c.body);
    }
}

TEST(GlucoseAlertEvaluator, takesEveryPreferenceOfTheSettings)
{
    EXPECT_EQ(glucoseAlertSettings(std::nullopt), GlucoseAlertSettings{});
    EXPECT_EQ(glucoseAlertSettings(AppSettings{}), GlucoseAlertSettings{});
    const AppSettings all{.measurementUnit = "mmol/L",
                          .lowGlucoseThreshold = 61,
                          .highGlucoseThreshold = 201,
                          .alertsEnabled = false,
                          .alertOnLowThreshold = false,
                          .alertOnHighThreshold = false,
                          .alertOnRapidFall = false,
                          .alertOnRapidRise = false,
                          .quietHoursEnabled = true,
                          .quietHoursStartMinutes = 1,
                          .quietHoursEndMinutes = 2,
                          .allowLowAlertsDuringQuietHours = true,
                          .lowAlertRepeatMinutes = 3,
                          .snoozeLowAlerts = false,
                          .snoozeHighAlerts = false,
                          .snoozeRapidChangeAlerts = false,
                          .alertOnMissingData = false};
    const GlucoseAlertSettings expected{.alertsEnabled = false,
                                        .quietHoursEnabled = true,
                                        .quietHoursStartMinutes = 1,
                                        .quietHoursEndMinutes = 2,
                                        .lowGlucoseThreshold = 61,
                                        .highGlucoseThreshold = 201,
                                        .alertOnLowThreshold = false,
                                        .alertOnHighThreshold = false,
                                        .alertOnRapidFall = false,
                                        .alertOnRapidRise = false,
                                        .allowLowAlertsDuringQuietHours = true,
                                        .lowAlertRepeatMinutes = 3,
                                        .snoozeLowAlerts = false,
                                        .snoozeHighAlerts = false,
                                        .snoozeRapidChangeAlerts = false,
                                        .alertOnMissingData = false,
                                        .units = GlucoseUnits::mmolL};
    EXPECT_EQ(glucoseAlertSettings(all), expected);
    EXPECT_EQ(glucoseAlertSettings(AppSettings{.measurementUnit = "stone"}).units, GlucoseUnits::mgdL);
}

TEST(GlucoseAlertEvaluator, holdsMissingDataBackAsItHoldsBackALow)
{
    const auto held = [](GlucoseAlertSettings settings, std::optional<Date> snoozedUntil = {}) {
        return holdsBackLow(settings, {.now = start, .snoozedUntil = snoozedUntil});
    };
    const GlucoseAlertSettings quiet{
        .quietHoursEnabled = true, .quietHoursStartMinutes = 470, .quietHoursEndMinutes = 480};
    GlucoseAlertSettings quietButLows = quiet;
    quietButLows.allowLowAlertsDuringQuietHours = true;
    EXPECT_FALSE(held({}));
    EXPECT_TRUE(held(quiet));
    EXPECT_FALSE(held(quietButLows));
    EXPECT_TRUE(held({}, start + Seconds{1}));
    EXPECT_TRUE(held(quietButLows, start + Seconds{1}));
    EXPECT_FALSE(held({}, start));
    EXPECT_FALSE(held({.snoozeLowAlerts = false}, start + Seconds{1}));
    EXPECT_TRUE(held({.snoozeHighAlerts = false, .snoozeRapidChangeAlerts = false}, start + Seconds{1}));
}

}  // namespace
}  // namespace tidewell
