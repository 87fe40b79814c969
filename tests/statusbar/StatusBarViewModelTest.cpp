#include "statusbar/StatusBarViewModel.h"

#include "testing/FakeClock.h"

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'000);

struct StatusBarViewModelTest : testing::Test {
    asio::io_context io;
    FakeClock clock{io, start};
    SeededRandom random{7};
    std::optional<AppSettings> settings{AppSettings{}};
    std::optional<StatusBarViewModel> model{std::in_place, io.get_executor(), clock, random,
                                            [this] { return settings; }};

    const StatusBarState& state() { return model->state(); }

    static GlucoseReading reading(double mgdL, Date date, std::string trend = "Flat")
    {
        return makeReading(mgdL, std::move(trend), date, Seconds{300}, GlucoseProvider::dexcom);
    }
};

const ErrorInfo problem{.title = "No internet connection available.",
                        .message = "Connect to the internet to retrieve glucose data."};

TEST_F(StatusBarViewModelTest, agesTheShownReadingByItselfToTheSecond)
{
    model->presentReading(reading(300, start), clock.now());
    EXPECT_EQ(state().statusTitle, "300 →");
    EXPECT_EQ(state().iconState, StatusBarIconState::value);
    EXPECT_EQ(state().titleColor, TitleColor::orange);
    EXPECT_FALSE(state().hasWarning);

    clock.advance(Seconds{899.999});
    EXPECT_EQ(state().statusTitle, "300 →");
    clock.advance(Seconds{0.001});
    EXPECT_EQ(state().statusTitle, "300 ?");
    EXPECT_EQ(state().titleColor, TitleColor::primary);
    EXPECT_EQ(state().freshness, ReadingFreshness::stale);
    ASSERT_TRUE(state().freshnessWarning);
    EXPECT_EQ(state().freshnessWarning->title, "Stale glucose reading");
    EXPECT_EQ(state().freshnessWarning->message, "Last glucose reading was 15 minutes ago.");
    EXPECT_EQ(state().freshnessWarning->remediation,
              "Check your sensor connection and sensor app if readings do not resume.");
    EXPECT_TRUE(state().hasWarning);
    EXPECT_EQ(state().accessibilityValue,
              "Stale glucose reading. Last known value 300, received 15 minutes ago.");

    clock.advance(Seconds{2699.999});
    EXPECT_EQ(state().statusTitle, "300 ?");
    clock.advance(Seconds{0.001});
    EXPECT_EQ(state().statusTitle, "-- ?");
    EXPECT_EQ(clock.sleepers(), 0U) << "an expired reading needs no timer";

    model->presentReading(reading(110, clock.now()), clock.now());
    EXPECT_EQ(state().statusTitle, "110 →");
    EXPECT_FALSE(state().freshnessWarning);
    EXPECT_FALSE(state().hasWarning);
}

TEST_F(StatusBarViewModelTest, newerPresentationSupersedesTheTimerOfTheOlder)
{
    model->presentReading(reading(300, start - Seconds{800}), clock.now());
    model->presentReading(reading(110, start), clock.now());
    clock.runReady();
    EXPECT_EQ(clock.sleepers(), 1U);
    clock.advance(Seconds{100});
    EXPECT_EQ(state().statusTitle, "110 →");
}

TEST_F(StatusBarViewModelTest, timerThatWakesTogetherWithANewReadingDoesNothing)
{
    model->presentReading(reading(300, start - Seconds{800}), clock.now());
    // Due in the same turn as the timer and posted first, so the timer has woken when it is superseded.
    asio::co_spawn(
        io,
        [this]() -> asio::awaitable<void> {
            co_await clock.sleepFor(100s);
            model->presentReading(reading(110, start), clock.now());
        },
        asio::detached);
    clock.advance(Seconds{100});
    EXPECT_EQ(state().statusTitle, "110 →");
    EXPECT_FALSE(state().hasWarning);
}

TEST_F(StatusBarViewModelTest, timerOutlivesNeitherTheModelNorTheReading)
{
    model->presentReading(reading(120, start), clock.now());
    clock.runReady();
    EXPECT_EQ(clock.sleepers(), 1U);
    model->clear();
    clock.runReady();
    EXPECT_EQ(clock.sleepers(), 0U);
    EXPECT_EQ(state().statusTitle, "");
    EXPECT_EQ(state().iconState, StatusBarIconState::waiting);

    model->presentReading(reading(120, start), clock.now());
    clock.runReady();
    model.reset();
    clock.advance(Seconds{4000});
    EXPECT_EQ(clock.sleepers(), 0U);
}

TEST_F(StatusBarViewModelTest, wallClockThatIsSetForwardAgesTheValueWithinTwoMinutes)
{
    model->presentReading(reading(120, start), clock.now());
    clock.advance(Seconds{1});
    clock.setWallClock(start + Seconds{7200});
    clock.advance(Seconds{120});
    EXPECT_EQ(state().statusTitle, "-- ?");

    model->presentReading(reading(120, clock.now()), clock.now());
    clock.runReady();
    clock.setWallClock(clock.now() + Seconds{1000});
    model->refreshFreshness();
    EXPECT_EQ(state().statusTitle, "120 ?");
}

TEST_F(StatusBarViewModelTest, wallClockThatIsSetBackDoesNotMakeAnOldValueNew)
{
    model->presentReading(reading(120, start), clock.now());
    clock.advance(Seconds{600});
    clock.setWallClock(start - Seconds{86'400});
    model->refreshFreshness();
    EXPECT_EQ(state().statusTitle, "120 →");
    clock.advance(Seconds{300 + 120});  // What passed between two looks at the clock is lost: two minutes.
    EXPECT_EQ(state().statusTitle, "120 ?");
    clock.advance(Seconds{2700});
    EXPECT_EQ(state().statusTitle, "-- ?");
    clock.setWallClock(start);
    model->refreshFreshness();
    EXPECT_EQ(state().statusTitle, "-- ?");

    clock.advance(Seconds{60});
    model->presentReading(reading(130, clock.now()), clock.now());
    EXPECT_EQ(state().statusTitle, "130 →");
}

TEST_F(StatusBarViewModelTest, wakesLessThanOnceAMinute)
{
    model->presentReading(reading(120, start), clock.now());
    clock.runReady();
    int wakes = 0;
    for (; clock.sleepers() > 0; ++wakes)
        clock.advance(clock.untilNextWake());
    EXPECT_EQ(clock.now(), start + Seconds{3600});
    EXPECT_LE(wakes, 32);
}

TEST_F(StatusBarViewModelTest, activityClearsTheErrorAndShowsWhatIsKnown)
{
    model->setActivity(StatusBarActivity::loading, clock.now());
    EXPECT_EQ(state().iconState, StatusBarIconState::waiting);
    EXPECT_EQ(state().accessibilityValue, "Loading glucose. No glucose readings available.");
    model->finishActivity();
    EXPECT_EQ(state().iconState, StatusBarIconState::attention);
    EXPECT_EQ(state().accessibilityValue, "No glucose readings available.");

    model->setGlucoseHistory({reading(100, start - Seconds{300}), reading(120, start)});
    EXPECT_EQ(state().statusTitle, "");
    model->setActivity(StatusBarActivity::refreshing, clock.now());
    EXPECT_EQ(state().statusTitle, "120 →");
    EXPECT_EQ(state().accessibilityValue,
              "Refreshing glucose. Current glucose: 120 milligrams per deciliter, "
              "in range, steady.");
    model->setCurrentError(problem);
    EXPECT_TRUE(state().hasWarning);
    EXPECT_EQ(state().accessibilityValue,
              "Current glucose: 120 milligrams per deciliter, in range, steady. No internet connection "
              "available. Connect to the internet to retrieve glucose data.");
    model->setActivity(StatusBarActivity::authenticating, clock.now());
    EXPECT_FALSE(state().currentError);
    EXPECT_FALSE(state().hasWarning);
    EXPECT_TRUE(state().accessibilityValue.starts_with("Signing in. Current glucose: "));
    model->finishActivity();
    EXPECT_FALSE(state().activity);
}

TEST_F(StatusBarViewModelTest, warnsWhileErrorOrStaleReadingExists)
{
    model->setCurrentError(problem);
    EXPECT_EQ(state().iconState, StatusBarIconState::attention);
    model->presentReading(reading(120, start - Seconds{900}), clock.now());
    EXPECT_EQ(state().iconState, StatusBarIconState::value);
    EXPECT_EQ(state().accessibilityValue,
              "Stale glucose reading. Last known value 120, received 15 minutes ago. No internet connection "
              "available. Connect to the internet to retrieve glucose data.");
    model->setCurrentError(std::nullopt);
    EXPECT_TRUE(state().hasWarning);
    model->setCurrentError(problem);
    model->presentReading(reading(120, start), clock.now());
    EXPECT_TRUE(state().hasWarning);
    model->setCurrentError(std::nullopt);
    EXPECT_FALSE(state().hasWarning);
}

TEST_F(StatusBarViewModelTest, settingsChangeValueColourAndSpokenTextAtOnce)
{
    model->presentReading(reading(99, start), clock.now());
    settings->measurementUnit = "mmol/L";
    settings->lowGlucoseThreshold = 100;
    model->appSettingsDidUpdate();
    EXPECT_EQ(state().statusTitle, "5.5 →");
    EXPECT_EQ(state().titleColor, TitleColor::red);
    EXPECT_EQ(state().accessibilityValue,
              "Current glucose: 5.5 millimoles per liter, at or below the low "
              "threshold, steady.");
    settings.reset();
    model->appSettingsDidUpdate();
    EXPECT_EQ(state().statusTitle, "99 →");
    EXPECT_EQ(state().titleColor, TitleColor::primary);
}

TEST_F(StatusBarViewModelTest, observersHearOncePerCallAndOnlyOfChanges)
{
    std::vector<std::string> titles;
    auto token = model->observe([&](const StatusBarState& seen) { titles.push_back(seen.statusTitle); });
    model->presentReading(reading(120, start), clock.now());
    model->presentReading(reading(120, start), clock.now());
    model->finishActivity();
    EXPECT_EQ(titles, (std::vector<std::string>{"120 →"}));
    model->batch([&] {
        model->setCurrentError(problem);
        model->setNextRetryAt(start);
        model->presentReading(reading(130, start), clock.now());
    });
    EXPECT_EQ(titles, (std::vector<std::string>{"120 →", "130 →"}));
    model->setLastUpdateAt(start);
    model->setUpdateAvailable(true);
    EXPECT_EQ(titles.size(), 4U);
    token.reset();
    model->clear();
    EXPECT_EQ(titles.size(), 4U);
    EXPECT_EQ(state(), (StatusBarState{.updateAvailable = true,
                                       .accessibilityValue = "No glucose readings available."}))
        << "an update is no matter of the account";
}

TEST_F(StatusBarViewModelTest, observersHearWhenTheSnoozeEndsAndNoTimerStays)
{
    int calls = 0;
    const auto token = model->observe([&](const StatusBarState&) { ++calls; });
    model->setAlertsSnoozedUntil(start + Seconds{600});
    model->setAlertsSnoozedUntil(start + Seconds{1800});
    EXPECT_EQ(calls, 2);
    clock.advance(Seconds{1799.999});
    EXPECT_EQ(calls, 2) << "only the later command counts";
    clock.advance(Seconds{0.001});
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(clock.sleepers(), 0U);

    model->setAlertsSnoozedUntil(clock.now() + 2h);
    clock.setWallClock(clock.now() + 2h);
    clock.advance(2min);
    EXPECT_EQ(calls, 5) << "a wall clock that is set forward is noticed";
    model->setAlertsSnoozedUntil(clock.now() + 2h);
    model->setAlertsSnoozedUntil(std::nullopt);
    clock.advance(Seconds{0});
    EXPECT_EQ(clock.sleepers(), 0U);
}

TEST_F(StatusBarViewModelTest, observersMayChangeTheStateAndLeaveMeanwhile)
{
    std::vector<std::string> first;
    std::vector<std::string> last;
    std::shared_ptr<void> leaving;
    const auto one = model->observe([&](const StatusBarState& seen) {
        first.push_back(seen.statusTitle);
        leaving.reset();
        if (seen.currentError)
            model->setCurrentError(std::nullopt);
    });
    leaving = model->observe([&](const StatusBarState&) { ADD_FAILURE() << "called after it left"; });
    const auto two = model->observe([&](const StatusBarState& seen) { last.push_back(seen.statusTitle); });
    model->batch([&] {
        model->setCurrentError(problem);
        model->presentReading(reading(120, start), clock.now());
    });
    EXPECT_EQ(first.size(), 2U);
    EXPECT_EQ(last.size(), 2U);
    EXPECT_FALSE(state().hasWarning);
}

}  // namespace
}  // namespace tidewell
