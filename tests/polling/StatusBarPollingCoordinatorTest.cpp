#include "polling/StatusBarPollingCoordinator.h"

#include <boost/asio/executor_work_guard.hpp>
#include <future>
#include <thread>

#include "polling/PollFailure.h"
#include "polling/PollingFixture.h"
#include "support/TimeText.h"
#include "testing/LogCatcher.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

struct StatusBarPollingCoordinatorTest : testing::Test, PollingFixture {
    void TearDown() override
    {
        coordinator.reset();
        clock.runReady();
    }

    /// A manual refresh, as it goes on.
    Running<bool> refresh()
    {
        const auto call = [](StatusBarPollingCoordinator* on) -> asio::awaitable<bool> {
            co_await on->refreshNow();
            co_return true;
        };
        Running<bool> refresh{io.get_executor(), call(&*coordinator)};
        clock.runReady();
        return refresh;
    }

    void expectHealthy() { EXPECT_EQ(errorTitle() + state().statusTitle, "120 →"); }
    /// The next fetch comes neither earlier nor later, and alone.
    void expectFetchIn(double seconds)
    {
        clock.runReady();
        const std::size_t before = service->fetches.size();
        EXPECT_NEAR(untilNextFetch().count(), seconds, 1e-5);
        EXPECT_EQ(service->fetches.size(), before + 1);
    }
    void expectFetchWithin(double low, double high, const char* what)
    {
        const double value = untilNextFetch().count();
        EXPECT_TRUE(value >= low && value <= high) << what << ": " << value;
    }
};

TEST_F(StatusBarPollingCoordinatorTest, pollsAfterFiveSecondsAndThenBehindEachReading)
{
    const LogCatcher log{"StatusBarPollingCoordinator"};
    defaults.set(alertsSnoozedUntilKey, start + Seconds{600});
    run();
    clock.runReady();
    EXPECT_EQ(state().activity, StatusBarActivity::loading);
    EXPECT_EQ(state().alertsSnoozedUntil, start + Seconds{600});
    expectFetchIn(5);
    EXPECT_FALSE(state().activity);
    EXPECT_EQ(state().statusTitle, "120 →");
    EXPECT_EQ(state().lastUpdateAt, clock.now());
    EXPECT_EQ(state().glucoseHistory.size(), 2U);
    EXPECT_LT(state().glucoseHistory[0].date, state().glucoseHistory[1].date);

    const Date newest = state().presentedReading->date;
    EXPECT_EQ(untilNextFetch(), newest + Seconds{330} - (start + Seconds{5}));
    EXPECT_EQ(state().presentedReading->date, newest + Seconds{300});
    EXPECT_EQ(state().glucoseHistory.size(), 3U);

    std::vector<std::string> lines = log.lines();
    std::erase_if(lines, [](const std::string& line) { return !line.contains("[Scheduler]"); });
    const std::string prefix = "⏱️ [Scheduler] ";
    const auto delay =
        std::chrono::round<std::chrono::milliseconds>(newest + Seconds{330} - start - Seconds{5});
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0], prefix + isoText(start) + ": no target; using adaptive backoff = 5000ms");
    EXPECT_EQ(lines[1], prefix + "nowUTC=" + isoText(start + Seconds{5}) +
                            " lastReadingUTC=" + isoText(newest) +
                            " lastReadingLocal=" + localMediumText(newest, TimeZone::current()) +
                            " nextPollUTC=" + isoText(newest + Seconds{330}));
    EXPECT_EQ(lines[2], prefix + isoText(start + Seconds{5}) + ": nextPoll scheduled in " +
                            std::to_string(delay.count()) + "ms");
}

TEST_F(StatusBarPollingCoordinatorTest, aRunGoesOnWhereAnotherOneStopped)
{
    struct Case {
        double readingAge;
        std::optional<double> plannedIn;
        double expected;  ///< Until the first request.
    };
    for (const Case& given : {Case{100, 230, 230},  // Just as planned,
                              {100, -0.4, 0.6},     // and not twice in the second it was due in.
                              {400, -90, 0},
                              {1200, 170, 170},          // A sensor that is silent is asked now and then.
                              {100, std::nullopt, 230},  // Without a plan: by the reading.
                              {100, 1e9, 0}}) {
        SCOPED_TRACE(given.expected);
        const GlucoseReading held = reading(clock.now() - Seconds{given.readingAge});
        viewModel.clear();
        viewModel.setGlucoseHistory({held});
        viewModel.presentReading(held, clock.now());
        std::optional<Date> planned;
        if (given.plannedIn)
            planned = clock.now() + Seconds{*given.plannedIn};
        coordinator->resume(service, GlucoseProvider::dexcom,
                            {.progress = {.nextPollDate = planned}, .glucoseHistory = {held}});
        const Date from = clock.now();
        const std::size_t before = service->fetches.size();
        clock.runReady();
        if (service->fetches.size() == before) {
            EXPECT_EQ(state().presentedReading, held);
            EXPECT_FALSE(state().activity);
            (void)untilNextFetch();
        }
        EXPECT_EQ(service->fetches.size(), before + 1);
        EXPECT_NEAR((service->fetches.back() - from).count(), given.expected, 0.01);
        clock.runReady();
        EXPECT_NE(std::ranges::find(state().glucoseHistory, held), state().glucoseHistory.end());
        ASSERT_TRUE(progress);
        EXPECT_GT(*progress->nextPollDate, clock.now());
        coordinator->stop();
        clock.advance(Seconds{2});
    }
}

TEST_F(StatusBarPollingCoordinatorTest, aRunThatGoesOnKeepsToWhatTheServiceAskedFor)
{
    const Date now = clock.now();
    const std::vector held{reading(now)};
    coordinator->resume(
        service, GlucoseProvider::dexcom,
        {.progress = {.nextPollDate = now, .retryNotBefore = now + Seconds{120}}, .glucoseHistory = held});
    refresh();
    EXPECT_TRUE(service->fetches.empty()) << "also at the person's wish";
    expectFetchIn(120);

    coordinator->resume(service, GlucoseProvider::dexcom,
                        {.progress = {.nextPollDate = now, .requiresAccountAction = true},
                         .problem = signInRequiredStatus()});
    clock.advance(Seconds{3600});
    EXPECT_EQ(service->fetches.size(), 1U);
    coordinator->reconnect();
    clock.runReady();
    EXPECT_EQ(service->fetches.size(), 2U);
    EXPECT_FALSE(progress->requiresAccountAction);

    // One sign-in was refused elsewhere: one is left.
    failWith(Kind::credentialsRefused);
    service->onSignIn = [] {
        return ScriptedGlucoseAPI::SignedIn{std::unexpect, failure(Kind::credentialsRefused).error()};
    };
    coordinator->resume(service, GlucoseProvider::dexcom, {.progress = {.refusedSignIns = 1}});
    clock.advance(Seconds{60});
    EXPECT_TRUE(progress->requiresAccountAction);
    EXPECT_EQ(service->signIns.size(), 0U);
    succeed();

    // Beside another process, whatever anybody wishes.
    service->fetches.clear();
    coordinator->resume(
        service, GlucoseProvider::dexcom,
        {.progress = {.nextPollDate = clock.now()}, .glucoseHistory = held, .fetchSpacing = 60s});
    for (int second = 0; second < 600; ++second) {
        refresh();
        clock.advance(Seconds{1});
    }
    EXPECT_GE(shortestSpacing(), Seconds{60});
    EXPECT_GE(service->fetches.size(), 9U);
}

TEST_F(StatusBarPollingCoordinatorTest, aRunThatGoesOnShowsTheProblemThatItWaitsFor)
{
    const ErrorInfo refused = signInRequiredStatus();
    const ErrorInfo busy{.title = "Busy"};
    struct Case {
        const char* what;
        PollingProgress progress;
        std::optional<ErrorInfo> problem;
        std::optional<Date> retry;
        double expected;  ///< Until the first request; 4000 for none.
    };
    const Date now = clock.now();
    for (const Case& given : {Case{"account", {.requiresAccountAction = true}, refused, {}, 4000},
                              {"429",
                               {.nextPollDate = now + Seconds{120}, .retryNotBefore = now + Seconds{120}},
                               busy,
                               now + Seconds{120},
                               120},
                              {"backoff", {.nextPollDate = now + Seconds{60}}, busy, now + Seconds{60}, 60},
                              {"due", {.nextPollDate = now - Seconds{9}}, busy, now - Seconds{9}, 0},
                              {"nothing asked yet", {}, {}, {}, 5},
                              {"no reason given", {.requiresAccountAction = true}, {}, {}, 5}}) {
        SCOPED_TRACE(given.what);
        PollingFixture fixture;
        // As the other one showed it, which was about to ask.
        fixture.viewModel.setActivity(StatusBarActivity::refreshing, now);
        fixture.coordinator->resume(
            fixture.service, GlucoseProvider::dexcom,
            {.progress = given.progress, .problem = given.problem, .nextRetryAt = given.retry});
        if (given.expected > 0) {
            fixture.clock.runReady();
            EXPECT_EQ(fixture.state().currentError, given.problem);
            EXPECT_EQ(fixture.state().nextRetryAt, given.retry);
            EXPECT_EQ(fixture.state().activity,
                      given.problem ? std::nullopt : std::optional{StatusBarActivity::loading});
        }
        EXPECT_NEAR(fixture.untilNextFetch().count(), given.expected, 0.01);
        fixture.coordinator.reset();
        fixture.clock.runReady();
    }
}

TEST_F(StatusBarPollingCoordinatorTest, chasesAReadingThatIsLateAndKeepsTheOldOneAgeing)
{
    runToFirstReading();
    const Fetched frozen = readings();
    const Date newest = frozen->front().date;
    service->onFetch = [frozen] { return frozen; };
    untilNextFetch();
    expectFetchWithin(60, 90, "fresh reading");
    expectFetchWithin(60, 90, "fresh reading");
    EXPECT_EQ(state().statusTitle, "120 →");
    clock.advance(newest + Seconds{900.01} - clock.now());
    EXPECT_EQ(state().statusTitle, "120 ?");

    // A service that goes back in time does not take the newer reading away.
    service->onFetch = [newest] { return std::vector{reading(newest - Seconds{3600}, 300)}; };
    untilNextFetch();
    EXPECT_EQ(state().presentedReading->date, newest);
    EXPECT_EQ(state().statusTitle, "120 ?");
    EXPECT_EQ(state().glucoseHistory.front().mgdL, 300);
    EXPECT_EQ(errorTitle(), "");
}

TEST_F(StatusBarPollingCoordinatorTest, refreshesThatMeetShareOneFetchAndOneResult)
{
    runToFirstReading();
    clock.advance(Seconds{60});
    service->duration = Seconds{3};
    const auto first = refresh();
    EXPECT_EQ(state().activity, StatusBarActivity::refreshing);
    clock.advance(Seconds{1});
    const auto second = refresh();
    coordinator->refreshAfterWake();
    clock.advance(Seconds{1.999});
    EXPECT_FALSE(first.ended());
    clock.advance(Seconds{0.001});
    EXPECT_TRUE(first.ended() && first.result());
    EXPECT_TRUE(second.ended() && second.result());
    EXPECT_EQ(service->fetches.size(), 2U);
    EXPECT_FALSE(state().activity);

    // Nobody gets a data request within a second of the last one, however often they ask.
    service->duration = Seconds{0};
    const auto third = refresh();
    expectFetchIn(1);
    EXPECT_TRUE(third.ended() && third.result());
}

TEST_F(StatusBarPollingCoordinatorTest, callerThatGivesUpLeavesTheRefreshToTheOthers)
{
    runToFirstReading();
    clock.advance(Seconds{60});
    service->duration = Seconds{3};
    auto impatient = refresh();
    const auto patient = refresh();
    clock.advance(Seconds{1});
    impatient.cancel();
    clock.runReady();
    EXPECT_TRUE(impatient.cancelled());
    clock.advance(Seconds{2});
    EXPECT_TRUE(patient.ended() && patient.result());
    EXPECT_EQ(service->fetches.size(), 2U);
}

TEST_F(StatusBarPollingCoordinatorTest, refreshThatJoinsAtTheLastMomentIsNotShownForEver)
{
    bool asked = false;
    const auto token = viewModel.observe([&](const StatusBarState& seen) {
        if (seen.statusTitle.empty() || std::exchange(asked, true))
            return;
        asio::co_spawn(io, coordinator->refreshNow(), asio::detached);
    });
    runToFirstReading();
    clock.advance(Seconds{10});
    EXPECT_TRUE(asked);
    EXPECT_FALSE(state().activity);
}

TEST_F(StatusBarPollingCoordinatorTest, manualRefreshPlansTheNextPollAnew)
{
    runToFirstReading();
    const Date planned = state().presentedReading->date + Seconds{330};
    clock.advance(planned - clock.now() - Seconds{25});
    refresh();
    ASSERT_EQ(service->fetches.size(), 2U);
    untilNextFetch();
    EXPECT_EQ(service->fetches.back(), planned + Seconds{300});
}

TEST_F(StatusBarPollingCoordinatorTest, everyFailureShowsItsTextAtOnceNeverSpinsAndRecovers)
{
    using enum GlucoseAPIError::Kind;
    const std::vector<std::pair<Kind, std::string>> kinds{
        {transport, "Unable to connect"},
        {credentialsRefused, "Authentication failed"},
        {accountLocked, "Account locked"},
        {sessionExpired, "Authentication required"},
        {rateLimited, "Dexcom Share busy"},
        {accountActionRequired, "Dexcom Share needs attention"},
        {noReadings, "No data available"},
        {serverTrouble, "An unexpected error occurred: Text"},
        {other, "An unexpected error occurred: Text"},
    };
    for (const auto& [kind, title] : kinds) {
        SCOPED_TRACE(title);
        PollingFixture day;
        day.failWith(kind);
        day.service->onSignIn = [kind]() -> ScriptedGlucoseAPI::SignedIn {
            if (kind == credentialsRefused)
                return std::unexpected{GlucoseAPIError{.kind = kind}};
            return {};
        };
        std::vector<StatusBarState> seen;
        const auto token = day.viewModel.observe([&](const StatusBarState& state) { seen.push_back(state); });
        day.run();
        day.clock.advance(Seconds{7});
        EXPECT_EQ(day.errorTitle(), title);
        EXPECT_EQ(day.state().iconState, StatusBarIconState::attention);
        EXPECT_FALSE(day.state().activity);
        EXPECT_FALSE(day.state().lastUpdateAt);

        const bool personIsAsked = day.state().currentError->needsSignIn;
        EXPECT_EQ(day.state().nextRetryAt.has_value(), !personIsAsked);
        if (personIsAsked) {
            EXPECT_LE(day.service->fetches.size() + day.service->signIns.size(), 2U);
            const std::size_t before = day.service->fetches.size();
            day.clock.advance(Seconds{86'400});
            EXPECT_EQ(day.service->fetches.size(), before)
                << "no request until the person has done something";
            EXPECT_LE(day.service->signIns.size(), 1U);
            day.succeed();
            day.coordinator->reconnect();
            day.clock.runReady();
        } else {
            const Date retry = *day.state().nextRetryAt;
            day.untilNextFetch();
            EXPECT_NEAR(unixSeconds(day.service->fetches.back()), unixSeconds(retry), 0.002);
            seen.clear();
            day.clock.advance(Seconds{86'400});
            EXPECT_GE(day.service->fetches.size(), 20U);
            EXPECT_LE(day.service->fetches.size(), 1500U);
            for (const StatusBarState& state : seen) {
                EXPECT_TRUE(state.currentError || state.activity == StatusBarActivity::authenticating)
                    << "an unseen poll made the problem flicker";
            }
            day.succeed();
            day.untilNextFetch();
        }
        EXPECT_EQ(day.errorTitle(), "");
        EXPECT_EQ(day.state().statusTitle, "120 →");
        EXPECT_FALSE(day.state().nextRetryAt);
        EXPECT_GE(day.shortestSpacing().count(), 1.0);
        day.coordinator.reset();
        day.clock.runReady();
    }
}

TEST_F(StatusBarPollingCoordinatorTest, refusedCredentialsGetTwoSignInsInAllAlsoOverSeveralPolls)
{
    // The first poll's second sign-in is lost on the way: the next poll's own is then the second one.
    failWith(Kind::credentialsRefused);
    service->onSignIn = [] {
        return ScriptedGlucoseAPI::SignedIn{std::unexpect, GlucoseAPIError{.kind = Kind::transport}};
    };
    run();
    clock.advance(Seconds{6});
    EXPECT_EQ(errorTitle(), "Unable to connect");
    EXPECT_EQ(service->signIns.size(), 1U);
    untilNextFetch();
    EXPECT_EQ(errorTitle(), "Authentication failed");
    EXPECT_EQ(service->fetches.size(), 2U);
    EXPECT_EQ(service->signIns.size(), 1U);

    // Nobody gets through now: not the menu, not a wake, not the network.
    EXPECT_TRUE(refresh().result());
    coordinator->refreshAfterWake();
    path.report(false);
    path.report(true);
    clock.advance(Seconds{86'400});
    EXPECT_EQ(service->fetches.size(), 2U);
    EXPECT_EQ(errorTitle(), "Authentication failed");

    coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
    clock.runReady();
    EXPECT_EQ(errorTitle(), "");
    EXPECT_EQ(state().activity, StatusBarActivity::loading);
    succeed();
    clock.advance(Seconds{5});
    EXPECT_EQ(state().statusTitle, "120 →");
}

TEST_F(StatusBarPollingCoordinatorTest, refusalsThatWereCuredAreForgotten)
{
    for (int day = 0; day < 3; ++day) {
        signInCures();
        failWith(Kind::credentialsRefused);
        day == 0 ? run() : void(untilNextFetch());
        clock.advance(Seconds{10});
        expectHealthy();
    }
}

TEST_F(StatusBarPollingCoordinatorTest, reconnectIsNotAnsweredByWhatWasAskedBefore)
{
    service->duration = Seconds{3};
    for (const Kind kind : {Kind::accountActionRequired, Kind::credentialsRefused, Kind::accountLocked}) {
        SCOPED_TRACE(static_cast<int>(kind));
        for (const bool resolved : {true, false}) {
            coordinator->resetForNewConfiguration(service, libre);
            failWith(kind);
            service->onSignIn = [kind] {
                return ScriptedGlucoseAPI::SignedIn{std::unexpect, GlucoseAPIError{.kind = kind}};
            };
            untilNextFetch();
            clock.advance(Seconds{1});
            coordinator->reconnect();
            // The answers on their way still say no.
            clock.advance(kind == Kind::credentialsRefused ? Seconds{4} : Seconds{1});
            service->onFetch = [this, kind, resolved, asked = service->fetches.size()] {
                return resolved && service->fetches.size() > asked ? readings() : failure(kind);
            };
            clock.advance(Seconds{30});
            EXPECT_EQ(errorTitle().empty(), resolved) << errorTitle();
            EXPECT_FALSE(state().activity);
            const std::size_t before = service->fetches.size();
            clock.advance(Seconds{7200});
            EXPECT_EQ(service->fetches.size() == before, !resolved);
            // The two that a refused account gets are counted from the reconnect on.
            const std::size_t signIns = kind != Kind::credentialsRefused ? 0U : resolved ? 1U : 2U;
            EXPECT_EQ(std::exchange(service->signIns, {}).size(), signIns);
        }
    }
}

TEST_F(StatusBarPollingCoordinatorTest, rateLimitHoldsBackEveryRefreshUntilItsEnd)
{
    runToFirstReading();
    failWith(Kind::rateLimited, Seconds{700.0004});
    untilNextFetch();
    const Date until = clock.now() + Seconds{700.0004};  // Not a whole millisecond.
    EXPECT_NEAR(unixSeconds(*state().nextRetryAt), unixSeconds(until), 0.002);
    EXPECT_TRUE(refresh().result());
    EXPECT_FALSE(state().activity);
    coordinator->refreshAfterWake();
    clock.advance(Seconds{699.998});
    EXPECT_EQ(service->fetches.size(), 2U);
    succeed();
    clock.advance(Seconds{0.004});
    EXPECT_EQ(service->fetches.size(), 3U);
    EXPECT_EQ(errorTitle(), "");

    const LogCatcher log;
    failWith(Kind::rateLimited, Seconds{1e300});
    untilNextFetch();
    EXPECT_TRUE(log.text().contains(": nextPoll scheduled in 1000000000000ms")) << log.text();
}

/// Polls of a LibreLinkUp account, and what makes them come less often for an hour.
struct LibrePacing : StatusBarPollingCoordinatorTest {
    void SetUp() override
    {
        service->onFetch = [this] { return currentValue(); };
        coordinator->start(service, libre);
        untilNextFetch();
    }

    void limit(Seconds wait)
    {
        failWith(Kind::rateLimited, wait);
        untilNextFetch();
        service->onFetch = [this] { return currentValue(); };
        untilNextFetch();
    }
    /// From the reading that is shown to the fetch after it.
    Seconds pace()
    {
        const Date shown = state().presentedReading->date;
        untilNextFetch();
        return service->fetches.back() - shown;
    }
};

TEST_F(LibrePacing, currentValueIsFetchedEachMinuteAndForAnHourAfterARateLimitEveryFive)
{
    EXPECT_EQ(pace(), Seconds{70});
    EXPECT_EQ(pace(), Seconds{70});
    limit(Seconds{600});
    const Date limited = service->fetches.back() - Seconds{600};
    while (service->fetches.back() < limited + Seconds{3600 - 331.0})
        ASSERT_EQ(pace(), Seconds{330});
    while (service->fetches.back() < limited + Seconds{3600})
        pace();
    EXPECT_EQ(pace(), Seconds{70});

    // Signing in again as somebody else is a new beginning; the same account goes on with restraint.
    limit(Seconds{60});
    coordinator->stop();
    coordinator->start(service, libre);
    clock.advance(Seconds{6});
    untilNextFetch();
    EXPECT_EQ(pace(), Seconds{330});
    clock.advance(Seconds{2});
    coordinator->reconnect();
    clock.runReady();
    EXPECT_EQ(pace(), Seconds{330});
    coordinator->resetForNewConfiguration(service, libre);
    untilNextFetch();
    EXPECT_EQ(pace(), Seconds{70});
}

TEST_F(LibrePacing, clockThatIsSetBackMakesNoLongWaitOfAnyMoment)
{
    // While the loop sleeps it sees the jump; at a new start it has to see that the moments cannot be.
    for (const bool restart : {false, true}) {
        for (const bool afterwards : {false, true}) {
            SCOPED_TRACE(testing::Message() << restart << afterwards);
            failWith(Kind::rateLimited, Seconds{900});
            untilNextFetch();
            service->onFetch = [this] { return currentValue(); };
            if (afterwards)
                untilNextFetch();
            clock.setWallClock(clock.now() - Seconds{5 * 3600.0});
            if (restart) {
                coordinator->stop();
                coordinator->start(service, libre);
            }
            EXPECT_LE(untilNextFetch().count(), 901);
            EXPECT_EQ(errorTitle(), "");
            coordinator->resetForNewConfiguration(service, libre);
            untilNextFetch();
        }
    }
    // The restraint goes on when a clock that was ahead is set right.
    Seconds ahead{3 * 3600.0};
    service->onFetch = [&] {
        const double newest = std::floor(unixSeconds(clock.now() - ahead) / 60) * 60;
        return std::vector{makeReading(120, "Flat", dateFromUnix(newest), Seconds{60}, libre)};
    };
    const auto fetchInTime = service->onFetch;
    coordinator->resetForNewConfiguration(service, libre);
    untilNextFetch();
    failWith(Kind::rateLimited, Seconds{60});
    untilNextFetch();
    service->onFetch = fetchInTime;
    untilNextFetch();
    clock.setWallClock(clock.now() - ahead);
    ahead = Seconds{0};
    untilNextFetch();
    for (int twice = 0; twice < 2; ++twice)
        EXPECT_NEAR(pace().count(), 330, 0.002);

    // A wait that is over does not come back.
    failWith(Kind::rateLimited, Seconds{3600});
    untilNextFetch();
    failWith(Kind::serverTrouble);
    untilNextFetch();
    clock.advance(Seconds{1});
    clock.setWallClock(clock.now() - Seconds{3000});
    coordinator->start(service, libre);
    EXPECT_LE(untilNextFetch().count(), 72);

    // Also without any reading.
    failWith(Kind::sessionExpired);
    coordinator->resetForNewConfiguration(service, libre);
    untilNextFetch();
    clock.advance(Seconds{10});
    clock.setWallClock(clock.now() - Seconds{5 * 3600.0});
    coordinator->start(service, libre);
    EXPECT_LE(untilNextFetch().count(), 3240);
}

TEST_F(StatusBarPollingCoordinatorTest, expiredSessionIsRenewedOnceWithItsTwoWaits)
{
    runToFirstReading();
    failWith(Kind::sessionExpired);
    signInCures();
    service->duration = Seconds{2};
    path.report(false);
    untilNextFetch();
    const Date failed = clock.now() + Seconds{2};
    clock.advance(Seconds{2});
    EXPECT_EQ(state().activity, StatusBarActivity::authenticating);
    EXPECT_TRUE(service->signIns.empty());
    clock.advance(Seconds{4});
    path.report(true);
    clock.runReady();
    ASSERT_EQ(service->signIns.size(), 1U);
    EXPECT_EQ(service->signIns[0], failed + Seconds{4});
    expectFetchIn(2.25);
    EXPECT_EQ(service->fetches.size(), 3U);
    clock.advance(Seconds{2});
    EXPECT_FALSE(state().activity);
    expectHealthy();

    // Without a network it tries all the same, after the time-out.
    failWith(Kind::sessionExpired);
    path.report(false);
    untilNextFetch();
    clock.advance(Seconds{2 + 9.999});
    EXPECT_EQ(service->signIns.size(), 1U);
    clock.advance(Seconds{0.001});
    EXPECT_EQ(service->signIns.size(), 2U);
}

TEST_F(StatusBarPollingCoordinatorTest, noDataIsToldAtOnceWithoutAReadingAndAtTheThirdTimeWithOne)
{
    failWith(Kind::noReadings);
    run();
    clock.advance(Seconds{5});
    EXPECT_EQ(errorTitle(), "No data available");
    expectFetchWithin(720, 1080, "as for an expired reading");

    succeed();
    untilNextFetch();
    EXPECT_EQ(errorTitle(), "");
    const auto lastUpdate = state().lastUpdateAt;
    EXPECT_EQ(lastUpdate, clock.now());
    failWith(Kind::noReadings);
    untilNextFetch();
    untilNextFetch();
    EXPECT_EQ(errorTitle(), "");
    untilNextFetch();
    EXPECT_EQ(errorTitle(), "No new data");
    service->onFetch = [] { return Fetched{std::vector<GlucoseReading>{}}; };
    untilNextFetch();
    EXPECT_EQ(errorTitle(), "No new data") << "an empty list is no data either";
    EXPECT_EQ(state().lastUpdateAt, lastUpdate);
}

TEST_F(StatusBarPollingCoordinatorTest, pollThatFoundNothingWaitsForTheNetworkAndTriesOnceMore)
{
    path.report(false);
    failWith(Kind::transport);
    run();
    clock.advance(Seconds{5});
    EXPECT_EQ(service->fetches.size(), 1U);
    clock.advance(Seconds{4.999});
    EXPECT_EQ(errorTitle(), "");
    clock.advance(Seconds{0.001});
    EXPECT_EQ(errorTitle(), "No internet connection available.");
    EXPECT_EQ(service->fetches.size(), 1U);

    untilNextFetch();
    clock.advance(Seconds{3});
    succeed();
    path.report(true);
    clock.advance(Seconds{0.399});
    EXPECT_EQ(service->fetches.size(), 2U);
    clock.advance(Seconds{0.001});
    EXPECT_EQ(service->fetches.size(), 3U);
    EXPECT_EQ(state().statusTitle, "120 →");
}

TEST_F(StatusBarPollingCoordinatorTest, networkThatReturnsEndsALongBackoffAndOneThatFlapsMakesNoStorm)
{
    runToFirstReading();
    failWith(Kind::transport);
    path.report(false);
    for (int failures = 0; failures < 7; ++failures)
        untilNextFetch();
    clock.advance(Seconds{60});
    path.report(true);
    expectFetchIn(0.4);

    // The new network needs a moment: the backoff begins anew with it.
    succeed();
    clock.advance(Seconds{37});
    EXPECT_EQ(errorTitle(), "");

    failWith(Kind::transport);
    service->duration = Seconds{0.3};
    path.report(false);
    untilNextFetch();
    const std::size_t flapping = service->fetches.size();
    for (int flap = 0; flap < 600; ++flap) {
        path.report(flap % 2 == 1);
        clock.advance(Seconds{0.5});
    }
    EXPECT_LE(service->fetches.size(), flapping + 62);  // In 300 s: one return in ten, each tried twice.
    EXPECT_GE(shortestSpacing().count(), 1.0);
    service->duration = Seconds{0};
    // A return that comes too early for the next try counts all the same.
    path.report(true);
    succeed();
    clock.advance(Seconds{45});
    expectHealthy();

    // The path went and came while polls failed although it was said to be there.
    failWith(Kind::transport);
    for (int failures = 0; failures < 6; ++failures)
        untilNextFetch();
    path.report(false);
    clock.advance(Seconds{25});
    succeed();
    path.report(true);
    clock.advance(Seconds{11});
    EXPECT_EQ(errorTitle(), "");
}

TEST_F(StatusBarPollingCoordinatorTest, wakesRefreshAfterTheSettleDelayAndAreDebounced)
{
    coordinator->refreshAfterWake();
    clock.advance(Seconds{60});
    EXPECT_TRUE(service->fetches.empty()) << "a wake does not start polling";

    runToFirstReading();
    clock.advance(Seconds{60});
    coordinator->refreshAfterWake();
    expectFetchIn(0.8);
    EXPECT_EQ(service->fetches.size(), 2U);
    EXPECT_FALSE(state().activity);
    clock.advance(Seconds{2.2});
    coordinator->refreshAfterWake();  // 3 s after the first.
    clock.advance(Seconds{6});
    EXPECT_EQ(service->fetches.size(), 2U);
    clock.advance(Seconds{2});
    coordinator->refreshAfterWake();  // 11 s after it.
    clock.advance(Seconds{1});
    EXPECT_EQ(service->fetches.size(), 3U);

    clock.advance(Seconds{30});
    path.report(false);
    coordinator->refreshAfterWake();
    clock.advance(Seconds{4});
    path.report(true);
    clock.advance(Seconds{0.4});
    EXPECT_EQ(service->fetches.size(), 4U);
    clock.advance(Seconds{30});
    path.report(false);
    coordinator->refreshAfterWake();
    expectFetchIn(10);  // The path is a hint: without it the wake tries all the same.
}

TEST_F(StatusBarPollingCoordinatorTest, nightAsleepAgesTheValueAtOnceAndCountsAsAWake)
{
    runToFirstReading();
    clock.advance(Seconds{100});
    clock.suspend(Seconds{8 * 3600.0});
    EXPECT_EQ(state().statusTitle, "-- ?");
    EXPECT_EQ(service->fetches.size(), 1U);
    coordinator->refreshAfterWake();  // The desktop tells it too, a little later.
    clock.advance(Seconds{0.8});
    EXPECT_EQ(service->fetches.size(), 2U);
    EXPECT_EQ(state().statusTitle, "120 →");
}

TEST_F(StatusBarPollingCoordinatorTest, wallClockThatIsSetDoesNotHoldUpPolling)
{
    for (const double hours : {-26.0, -3.0, 5.0}) {
        SCOPED_TRACE(hours);
        runToFirstReading();
        clock.advance(Seconds{100});
        clock.setWallClock(clock.now() + Seconds{hours * 3600});
        coordinator->stop();
        coordinator->start(service, GlucoseProvider::dexcom);
        service->fetches.clear();
        EXPECT_LE(untilNextFetch().count(), 640);
        EXPECT_LE(untilNextFetch().count(), 640);
        coordinator->resetForNewConfiguration(nullptr, GlucoseProvider::dexcom);
        service->fetches.clear();
        clock.advance(Seconds{2});
    }

    // And while it sleeps before the next poll; then also with a moment that the service named.
    runToFirstReading();
    clock.advance(Seconds{100});
    clock.setWallClock(clock.now() - Seconds{3 * 3600.0});
    EXPECT_LE(untilNextFetch().count(), 240);
    EXPECT_LE(untilNextFetch().count(), 640);
    failWith(Kind::rateLimited, Seconds{600});
    untilNextFetch();
    clock.advance(Seconds{100});
    clock.setWallClock(clock.now() - Seconds{3 * 3600.0});
    EXPECT_LE(untilNextFetch().count(), 1200);
}

TEST_F(StatusBarPollingCoordinatorTest, readingsOfTheFutureAreNotTakenForNewOnes)
{
    runToFirstReading();
    const Date newest = state().presentedReading->date;
    service->onFetch = [this] {  // Our clock is two hours behind: what seems new is two hours old.
        std::vector<GlucoseReading> day;
        for (int slot = 0; slot < 36; ++slot)
            day.push_back(reading(clock.now() + Seconds{7200 - 300.0 * slot}, 200));
        return day;
    };
    untilNextFetch();
    EXPECT_EQ(errorTitle(), "Clock is wrong");
    EXPECT_EQ(state().presentedReading->date, newest);
    clock.advance(newest + Seconds{900.01} - clock.now());
    EXPECT_EQ(state().statusTitle, "120 ?");

    // A little ahead it is shown, with what is wrong from a minute on, and the next one is not waited for
    // longer.
    double ahead = 0;
    service->onFetch = [&] { return std::vector{reading(clock.now() + Seconds{ahead}, 200)}; };
    for (const auto& [seconds, title] : std::vector<std::pair<double, std::string>>{
             {300, "Clock is wrong"}, {61, "Clock is wrong"}, {60, ""}}) {
        SCOPED_TRACE(seconds);
        ahead = seconds;
        coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
        clock.runReady();
        untilNextFetch();
        EXPECT_EQ(errorTitle(), title);
        EXPECT_EQ(state().statusTitle, "200 →");
        EXPECT_NEAR(untilNextFetch().count(), 330, 0.01);
    }
}

TEST_F(StatusBarPollingCoordinatorTest, anotherAccountSeesNothingOfTheFirst)
{
    runToFirstReading();
    clock.advance(Seconds{60});
    service->duration = Seconds{3};
    refresh();
    auto other = std::make_shared<ScriptedGlucoseAPI>(coordinatorClock);
    other->onFetch = [this] { return std::vector{reading(clock.now(), 200)}; };
    defaults.set(alertsSnoozedUntilKey, start + Seconds{5000});
    coordinator->resetForNewConfiguration(other, GlucoseProvider::libreLinkUp);
    clock.runReady();
    EXPECT_EQ(state().statusTitle, "");
    EXPECT_FALSE(state().lastUpdateAt);
    EXPECT_TRUE(state().glucoseHistory.empty());
    EXPECT_EQ(state().activity, StatusBarActivity::loading);
    EXPECT_EQ(state().alertsSnoozedUntil, start + Seconds{5000});
    clock.advance(Seconds{4.999});
    EXPECT_EQ(state().statusTitle, "") << "the first account's answer came after the change";
    clock.advance(Seconds{0.001});
    EXPECT_EQ(state().statusTitle, "200 →");
    EXPECT_EQ(state().glucoseHistory.size(), 1U);

    coordinator->resetForNewConfiguration(nullptr, GlucoseProvider::dexcom);
    clock.advance(Seconds{86'400});
    EXPECT_EQ(errorTitle(), "Sign in required");
    EXPECT_TRUE(state().currentError->needsSignIn);
    EXPECT_EQ(state().iconState, StatusBarIconState::attention);
    EXPECT_FALSE(state().activity);
    EXPECT_EQ(other->fetches.size(), 1U);
    EXPECT_TRUE(refresh().result());
}

TEST_F(StatusBarPollingCoordinatorTest, serviceThatThrowsIsAFailureLikeAnyOther)
{
    service->onFetch = []() -> Fetched { throw std::runtime_error{"broken"}; };
    run();
    clock.advance(Seconds{5});
    EXPECT_EQ(errorTitle(), "An unexpected error occurred.");
    expectFetchWithin(24, 36, "the usual backoff");
}

/// One run through every wait that there is: settle, reachability, spacing, re-sign-in, backoff, wake.
struct Journey : PollingFixture {
    std::optional<Date> stopped{};

    Journey()
    {
        service->duration = Seconds{0.3};
        service->onFetch = [this]() -> Fetched {
            switch (service->fetches.size()) {
            case 1: return failure(Kind::transport);
            case 2: return failure(Kind::sessionExpired);
            case 4: return failure(Kind::transport);
            case 6: return failure(Kind::noReadings);
            default: return readings();
            }
        };
        coordinatorClock.interrupt = [this] {
            if (!stopped)
                coordinator->stop();
            stopped = clock.now();
        };
    }

    void travel()
    {
        run();
        at(5.1, [this] { path.report(false); });
        at(7, [this] { path.report(true); });
        at(8.6, [this] { path.report(false); });
        at(12, [this] { path.report(true); });
        at(400, [this] { path.report(false); });
        at(420, [this] { path.report(true); });
        at(500, [this] { coordinator->refreshAfterWake(); });
        at(600, [this] { path.report(false); });
        at(601, [this] { coordinator->refreshAfterWake(); });
        clock.advance(Seconds{1500});
    }

private:
    template <class Action>
    void at(double seconds, Action action)
    {
        const auto wait = [](FakeClock& clock, double delay, Action then) -> asio::awaitable<void> {
            co_await clock.sleepFor(std::chrono::milliseconds{std::llround(delay * 1000)});
            then();
        };
        asio::co_spawn(io, wait(clock, seconds, action), asio::detached);
    }
};

TEST(StatusBarPollingCoordinatorStop, endsEveryWaitInItsMiddleAndAtItsEnd)
{
    int sleeps = 0;
    {
        Journey whole;
        whole.travel();
        sleeps = whole.coordinatorClock.sleeps;
        ASSERT_GE(whole.service->fetches.size(), 8U);
        ASSERT_EQ(whole.service->signIns.size(), 1U);
        ASSERT_EQ(whole.state().statusTitle, "120 →");
    }
    int cuts = 0;
    for (int index = 0; index < sleeps; ++index) {
        for (const bool atEnd : {false, true}) {
            SCOPED_TRACE(testing::Message() << "sleep " << index << (atEnd ? ", at its end" : ", inside"));
            Journey cut;
            (atEnd ? cut.coordinatorClock.atEndOf : cut.coordinatorClock.inside) = index;
            std::size_t requests = 0;
            StatusBarState shown;
            const auto interrupt = cut.coordinatorClock.interrupt;
            cut.coordinatorClock.interrupt = [&] {
                interrupt();
                requests = cut.service->fetches.size() + cut.service->signIns.size();
                shown = cut.state();
            };
            cut.travel();
            if (!cut.stopped)  // This sleep was cut short by what it waited for.
                continue;
            ++cuts;
            EXPECT_EQ(cut.service->fetches.size() + cut.service->signIns.size(), requests);
            EXPECT_EQ(cut.state().currentError, shown.currentError);
            EXPECT_EQ(cut.state().nextRetryAt, shown.nextRetryAt);
            EXPECT_EQ(cut.state().glucoseHistory, shown.glucoseHistory);
            EXPECT_FALSE(cut.state().activity);
            cut.clock.advance(Seconds{7200});
            EXPECT_EQ(cut.clock.sleepers(), 0U) << "a task was left behind";
        }
    }
    EXPECT_GE(cuts, 40);
}

TEST(StatusBarPollingCoordinatorStop, dropsTheResultThatComesTogetherWithIt)
{
    for (const bool destroy : {false, true}) {
        PollingFixture late;
        late.service->onFetch = [&] {
            if (destroy)
                late.coordinator.reset();
            else
                late.coordinator->stop();
            return late.readings();
        };
        late.run();
        late.clock.advance(Seconds{3600});
        EXPECT_EQ(late.service->fetches.size(), 1U);
        EXPECT_EQ(late.state().statusTitle, "");
        EXPECT_TRUE(late.state().glucoseHistory.empty());
        EXPECT_EQ(late.clock.sleepers(), 0U);
    }
}

/// The engine on a thread of its own, as in the program; this thread is main.
TEST(StatusBarPollingCoordinatorThreads, afterStopOnMainNothingChangesAnyMore)
{
    asio::io_context engine;
    auto work = asio::make_work_guard(engine);
    std::thread engineThread{[&engine] { engine.run(); }};
    asio::io_context main;
    FakeClock clock{main, PollingFixture::start};
    SystemRandom random;
    UserDefaults defaults;
    FakeNetworkPath path;
    NetworkMonitor network{clock, random, path.monitoring()};
    FakeNotificationCenter center{clock};
    UserNotificationGlucoseAlertDelivery delivery{engine.get_executor(), center, random};
    StatusBarViewModel viewModel{main.get_executor(), clock, random, [] { return AppSettings{}; }};
    const auto service = std::make_shared<ScriptedGlucoseAPI>(clock);
    service->onFetch = [&clock, value = 40.0]() mutable -> ScriptedGlucoseAPI::Fetched {
        value = value < 400 ? value + 1 : 40;
        return std::vector{PollingFixture::reading(clock.now(), value)};
    };
    std::optional<StatusBarPollingCoordinator> coordinator{
        std::in_place, StatusBarPollingCoordinator::Parts{.engine = engine.get_executor(),
                                                          .main = main.get_executor(),
                                                          .clock = clock,
                                                          .random = random,
                                                          .viewModel = viewModel,
                                                          .networkMonitor = network,
                                                          .defaults = defaults,
                                                          .settings = [] { return AppSettings{}; },
                                                          .alertDelivery = delivery}};
    int ended = 0;
    int changed = 0;
    constexpr int rounds = 2000;
    for (int round = 0; round < rounds; ++round) {
        path.report(round % 2 == 0);
        coordinator->start(service, GlucoseProvider::dexcom);
        asio::co_spawn(main, coordinator->refreshNow(), [&ended](std::exception_ptr) { ++ended; });
        coordinator->refreshAfterWake();
        round % 2 == 0 ? coordinator->snoozeAlerts(Seconds{60}) : coordinator->resumeAlerts();
        coordinator->alertSettingsDidUpdate();
        const auto before = viewModel.state().glucoseHistory;
        // Every third round is stopped somewhere on its way, the others when they have shown something.
        const int turns = round % 3 == 0 ? round % 7 : 50;
        for (int turn = 0; turn < turns && viewModel.state().glucoseHistory == before; ++turn) {
            clock.advance(Seconds{0.5});
            std::promise<void> reached;  // By the engine, with all that it had to do before.
            asio::post(engine, [&reached] { reached.set_value(); });
            reached.get_future().wait();
        }
        changed += viewModel.state().glucoseHistory != before;
        if (round % 2 == 0)
            coordinator->stop();
        else
            coordinator->resetForNewConfiguration(nullptr, GlucoseProvider::dexcom);
        const auto stopped = viewModel.state().glucoseHistory;
        clock.advance(Seconds{0.5});
        ASSERT_TRUE(viewModel.state().glucoseHistory == stopped || viewModel.state().glucoseHistory.empty());
    }
    EXPECT_GT(changed, 0);
    coordinator.reset();
    work.reset();
    engineThread.join();
    clock.runReady();
    EXPECT_EQ(ended, rounds);
    EXPECT_FALSE(center.posted.empty());
    EXPECT_EQ(viewModel.state().alertsSnoozedUntil, defaults.date(alertsSnoozedUntilKey));
}

}  // namespace
}  // namespace tidewell
