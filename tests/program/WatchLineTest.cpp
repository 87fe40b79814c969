#include "program/WatchLine.h"

#include <gtest/gtest.h>

#include "support/Json.h"

namespace tidewell {

namespace {

const Date now = dateFromUnix(1'700'000'000);

StatusBarState stateWithReading()
{
    StatusBarState state;
    state.statusTitle = "120 →";
    state.iconState = StatusBarIconState::value;
    state.presentedReading =
        makeReading(120, "Flat", now - Seconds{90}, Seconds{300}, GlucoseProvider::dexcom);
    state.glucoseHistory = {*state.presentedReading};
    state.freshness = ReadingFreshness::current;
    state.accessibilityValue = "Current glucose: 120 milligrams per deciliter, in range, steady.";
    return state;
}

TEST(WatchLine, jsonHasEveryKeyInItsOrderAndNullForWhatIsAbsent)
{
    EXPECT_EQ(
        watchLine(WatchFormat::json, {}, {}, now, TimeZone::utc()).text,
        R"({"time":"2023-11-14T22:13:20Z","statusTitle":"","titleColor":"primary","iconState":"waiting",)"
        R"("activity":null,"freshness":"none","reading":null,"readingCount":0,"currentError":null,)"
        R"("freshnessWarning":null,"hasWarning":false,"alertsSnoozedUntil":null,"nextRetryAt":null,)"
        R"("accessibilityValue":""})");

    auto state = stateWithReading();
    state.activity = StatusBarActivity::refreshing;
    state.titleColor = TitleColor::orange;
    state.currentError = ErrorInfo{.title = "T", .message = "M \"quoted\"", .remediation = "R"};
    state.hasWarning = true;
    state.nextRetryAt = now + Seconds{60};
    const auto document = parseJson(watchLine(WatchFormat::json, state, {}, now, TimeZone::utc()).text);
    ASSERT_TRUE(document);
    const auto& object = document->as_object();
    EXPECT_EQ(object.at("titleColor"), "orange");
    EXPECT_EQ(object.at("activity"), "refreshing");
    EXPECT_EQ(object.at("freshness"), "current");
    EXPECT_EQ(object.at("reading").at("mgdL"), 120);
    EXPECT_EQ(object.at("reading").at("trendArrow"), "→");
    EXPECT_EQ(object.at("currentError").at("message"), "M \"quoted\"");
    EXPECT_EQ(object.at("nextRetryAt"), "2023-11-14T22:14:20Z");
}

TEST(WatchLine, onlyTheMomentOfPrintingDoesNotMakeAnotherLine)
{
    const auto state = stateWithReading();
    for (const auto format : {WatchFormat::json, WatchFormat::text}) {
        const auto first = watchLine(format, state, {}, now, TimeZone::utc());
        const auto later = watchLine(format, state, {}, now + Seconds{60}, TimeZone::utc());
        EXPECT_EQ(first.content, later.content);
        EXPECT_NE(first.text, later.text);
        auto changed = state;
        changed.freshness = ReadingFreshness::stale;
        changed.statusTitle = "120 ?";
        EXPECT_NE(watchLine(format, changed, {}, now, TimeZone::utc()).content, first.content);
    }
}

TEST(WatchLine, textSaysValueUnitTimeAndProblemOnOneLine)
{
    auto state = stateWithReading();
    EXPECT_EQ(watchLine(WatchFormat::text, state, {}, now, TimeZone::utc()).text,
              "22:13  120 mg/dL →  measured at 22:11");
    EXPECT_EQ(watchLine(WatchFormat::text, state, {.measurementUnit = "mmol/L"}, now, TimeZone::utc()).text,
              "22:13  6.7 mmol/L →  measured at 22:11");
    state.freshness = ReadingFreshness::expired;
    state.statusTitle = "-- ?";
    state.currentError = ErrorInfo{.title = "No internet connection available.",
                                   .message = "Connect to the internet to retrieve glucose data."};
    state.hasWarning = true;
    state.nextRetryAt = now + Seconds{120};
    EXPECT_EQ(watchLine(WatchFormat::text, state, {}, now, TimeZone::utc()).text,
              "22:13  -- ?  measured at 22:11  No internet connection available. Connect to the internet to "
              "retrieve glucose data.  Next retry at 22:15");
    EXPECT_EQ(watchLine(WatchFormat::text, {}, {}, now, TimeZone::utc()).text,
              "22:13  Waiting for the first reading");
}

TEST(WatchLine, onceEndsWithAReadingOrAProblemAndItsCode)
{
    struct Row {
        const char* name;
        StatusBarState state;
        bool settled;
        ExitCode code;
    };
    StatusBarState loading;
    loading.activity = StatusBarActivity::loading;
    auto stale = stateWithReading();
    stale.freshness = ReadingFreshness::stale;
    StatusBarState problem;
    problem.currentError = ErrorInfo{.title = "T"};
    StatusBarState signIn = problem;
    signIn.currentError->needsSignIn = true;
    StatusBarState setup = problem;
    setup.currentError->needsSetup = true;
    const std::vector<Row> rows{
        {"nothing yet", {}, false, ExitCode::noFreshReading},
        {"loading", loading, false, ExitCode::noFreshReading},
        {"current", stateWithReading(), true, ExitCode::good},
        {"stale", stale, true, ExitCode::noFreshReading},
        {"problem", problem, true, ExitCode::noFreshReading},
        {"sign in", signIn, true, ExitCode::signInNeeded},
        {"set up", setup, true, ExitCode::signInNeeded},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(watchIsSettled(row.state), row.settled);
        EXPECT_EQ(watchExitCode(row.state), row.code);
    }
}

}  // namespace

}  // namespace tidewell
