#include <limits>

#include "polling/PollingFixture.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "support/TimeText.h"
#include "testing/LogCatcher.h"

namespace tidewell {
namespace {

using Titles = std::vector<std::string>;
const std::string low = "Low glucose alert";
const std::string high = "High glucose alert";
const std::string fall = "Rapid glucose drop";
const std::string rise = "Rapid glucose rise";
const std::string missing = "No glucose data";

/// A service whose newest reading is as the test says.
struct AlertFixture : PollingFixture {
    double value = 60;
    std::string trend = "Flat";

    AlertFixture() { answer(); }
    ~AlertFixture()
    {
        coordinator.reset();
        clock.runReady();
    }
    AlertFixture(const AlertFixture&) = delete;
    AlertFixture& operator=(const AlertFixture&) = delete;

    [[nodiscard]] GlucoseReading newest() const
    {
        const double at = std::floor(unixSeconds(clock.now()) / 300) * 300;
        return makeReading(value, trend, dateFromUnix(at), Seconds{300}, GlucoseProvider::dexcom);
    }
    /// The service is well.
    void answer()
    {
        service->onFetch = [this] { return Fetched{std::vector{newest()}}; };
    }
    /// The service answers a reading of that age from now on, and none after it.
    void answerAged(Seconds age)
    {
        service->onFetch = [reading = reading(clock.now() - age, value)] {
            return Fetched{std::vector{reading}};
        };
    }
    /// Through the next poll and what follows from it at once.
    void poll(double mgdL, std::string word = "Flat")
    {
        value = mgdL;
        trend = std::move(word);
        untilNextFetch();
        clock.runReady();
    }
    void refresh()
    {
        asio::co_spawn(io, coordinator->refreshNow(), asio::detached);
        clock.runReady();
    }
    void advanceTo(Date date) { clock.advance(date - clock.now()); }

    /// What was posted since the last look.
    Titles posted()
    {
        Titles titles;
        for (; seen_ < center.posted.size(); ++seen_)
            titles.push_back(center.posted[seen_].title);
        return titles;
    }
    [[nodiscard]] std::optional<Date> storedSnooze() const { return defaults.date(alertsSnoozedUntilKey); }
    void relaunch()
    {
        coordinator.reset();
        clock.runReady();
        viewModel.setAlertsSnoozedUntil(std::nullopt);
        coordinator.emplace(parts());
        clock.runReady();
    }

private:
    std::size_t seen_ = 0;
};

struct StatusBarPollingCoordinatorAlertsTest : testing::Test, AlertFixture {
    void expectSnooze(std::optional<Date> until)
    {
        clock.runReady();
        EXPECT_EQ(state().alertsSnoozedUntil, until) << "on screen";
        EXPECT_EQ(storedSnooze(), until) << "in the defaults";
    }
};

TEST_F(StatusBarPollingCoordinatorAlertsTest, eachGoodAnswerIsEvaluatedAndWhatWasPostedIsRemembered)
{
    run();
    poll(60);
    ASSERT_EQ(posted(), Titles{low});
    const UserNotification first = center.posted.front();
    EXPECT_EQ(first.body, "60 mg/dL → (low threshold 72 mg/dL)");
    EXPECT_EQ(first.tone, NotificationTone::urgent);
    EXPECT_TRUE(first.offersSnooze);

    struct Step {
        double value;
        std::string trend;
        Titles expected;
        NotificationTone tone = NotificationTone::standard;
    };
    const std::vector<Step> steps{
        {60, "Flat", {}},         {60, "SingleDown", {fall}, NotificationTone::urgent},
        {120, "Flat", {}},        {65, "Flat", {low}, NotificationTone::urgent},
        {300, "Flat", {high}},    {310, "Flat", {}},
        {120, "DoubleUp", {rise}}};
    for (const Step& step : steps) {
        SCOPED_TRACE(testing::Message() << step.value << " " << step.trend);
        poll(step.value, step.trend);
        EXPECT_EQ(posted(), step.expected);
        EXPECT_TRUE(step.expected.empty() || center.posted.back().tone == step.tone);
    }
    // The preferences of the moment count, the newest reading held too, and only good answers.
    settings.lowGlucoseThreshold = 130;
    settings.measurementUnit = "mmol/L";
    poll(120);
    EXPECT_EQ(posted(), Titles{low});
    EXPECT_EQ(center.posted.back().body, "6.7 mmol/L → (low threshold 7.2 mmol/L)");
    settings = {};
    poll(120);
    service->onFetch = [this] { return Fetched{std::vector{reading(clock.now() - Seconds{800}, 50)}}; };
    untilNextFetch();
    failWith(Kind::noReadings);
    untilNextFetch();
    EXPECT_EQ(posted(), Titles{});
}

TEST_F(StatusBarPollingCoordinatorAlertsTest,
       notificationThatDoesNotGetThroughIsTriedEachMinuteUntilItDoesOrIsPast)
{
    const LogCatcher log{"StatusBarPollingCoordinator"};
    for (const bool refused : {true, false}) {
        SCOPED_TRACE(refused ? "no permission" : "no post");
        const auto spoil = [&](bool spoilt) {
            if (refused)
                center.state = spoilt ? NotificationAuthorizationState::denied
                                      : NotificationAuthorizationState::authorized;
            else
                center.failure =
                    spoilt ? std::optional{NotificationError{"The server is gone."}} : std::nullopt;
        };
        coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
        clock.runReady();
        spoil(true);
        poll(60);
        clock.advance(Seconds{100});
        EXPECT_EQ(posted(), Titles{});
        spoil(false);
        clock.advance(Seconds{19.9});
        EXPECT_EQ(posted(), Titles{});
        clock.advance(Seconds{0.2});
        EXPECT_EQ(posted(), Titles{low});
        clock.advance(Seconds{100});
        EXPECT_EQ(posted(), Titles{}) << "it is told";
        poll(120);

        // At once when the desktop tells that it is back; but that may be a word too many.
        spoil(true);
        poll(60);
        const int tries = center.refused;
        for (int word = 0; word < 10; ++word) {
            coordinator->alertPathDidRecover();
            clock.runReady();
        }
        EXPECT_LE(center.refused, tries + 1);
        clock.advance(Seconds{70});
        spoil(false);
        coordinator->alertPathDidRecover();
        clock.runReady();
        EXPECT_EQ(posted(), Titles{low});

        // What is past is not told.
        poll(120);
        spoil(true);
        poll(60);
        answerAged(Seconds{0});
        settings.alertOnLowThreshold = false;
        clock.advance(Seconds{61});
        spoil(false);
        settings = {};
        coordinator->alertPathDidRecover();
        clock.advance(Seconds{65});
        EXPECT_EQ(posted(), Titles{});
        answer();
    }
    EXPECT_TRUE(log.text().contains("Failed to post glucose alert notification: The server is gone."));
    EXPECT_FALSE(log.text().contains("60 mg/dL"));
}

TEST_F(StatusBarPollingCoordinatorAlertsTest, refreshWaitsForNoPassAndTheNewestReadingHasTheNextOne)
{
    center.delay = 5s;
    center.failure = NotificationError{"No answer."};
    run();
    clock.advance(Seconds{6});
    for (int again = 0; again < 3; ++again) {
        service->onFetch = [this] {
            return Fetched{
                std::vector{reading(clock.now(), 70 - unixSeconds(clock.now()) + unixSeconds(start))}};
        };
        refresh();
        clock.advance(Seconds{1});
        EXPECT_FALSE(state().activity) << "a refresh waits for a notification";
    }
    EXPECT_EQ(service->fetches.size(), 4U);
    center.failure.reset();
    clock.advance(Seconds{60});
    EXPECT_EQ(posted(), Titles{low});
    EXPECT_TRUE(center.posted.back().body.starts_with("62 mg/dL")) << center.posted.back().body;
    EXPECT_EQ(center.mostRunning, 1);
}

TEST_F(StatusBarPollingCoordinatorAlertsTest, slowDesktopHoldsUpNeitherPollsNorTheScreenAndPassesDoNotOverlap)
{
    center.delay = 4s;
    run();
    clock.advance(Seconds{5});
    EXPECT_EQ(state().statusTitle, "60 →");
    clock.advance(Seconds{2});
    refresh();
    EXPECT_EQ(service->fetches.size(), 2U) << "a refresh waited for a notification";
    clock.advance(Seconds{2});
    refresh();
    clock.advance(Seconds{30});
    EXPECT_EQ(posted(), Titles{low});
    EXPECT_EQ(center.mostRunning, 1);
}

TEST_F(StatusBarPollingCoordinatorAlertsTest, whatHappensWhileTheDesktopKeepsUsWaitingDecidesWhatIsPosted)
{
    struct Change {
        const char* what;
        std::function<void(AlertFixture&)> happens;
        Titles expected{};
        double value = 60;
    };
    const auto settingsChange = [](auto change) {
        return [change](AlertFixture& on) {
            change(on.settings);
            on.coordinator->alertSettingsDidUpdate();
        };
    };
    const std::vector<Change> changes{
        {"nothing", [](AlertFixture&) {}, {low}},
        {"snooze", [](AlertFixture& on) { on.coordinator->snoozeAlerts(1800s); }},
        {"snooze of other categories",
         [](AlertFixture& on) {
             on.settings.snoozeLowAlerts = false;
             on.coordinator->snoozeAlerts(1800s);
         },
         {low}},
        {"snooze in another process",
         [](AlertFixture& on) {
             on.defaults.set(alertsSnoozedUntilKey, on.clock.now() + 900s);
             on.coordinator->alertSnoozeDidReload();
         }},
        {"alerts off", settingsChange([](AppSettings& to) { to.alertsEnabled = false; })},
        {"another threshold", settingsChange([](AppSettings& to) { to.lowGlucoseThreshold = 55; })},
        {"another threshold, which makes it a high",
         settingsChange([](AppSettings& to) {
             to.lowGlucoseThreshold = 50;
             to.highGlucoseThreshold = 55;
         }),
         {high}},
        {"a preference of no consequence",
         settingsChange([](AppSettings& to) { to.lowAlertRepeatMinutes = 15; }),
         {low}},
        {"stop", [](AlertFixture& on) { on.coordinator->stop(); }},
        {"end", [](AlertFixture& on) { on.coordinator.reset(); }},
        {"another account",
         [](AlertFixture& on) {
             on.value = 120;
             on.answer();
             on.coordinator->resetForNewConfiguration(on.service, GlucoseProvider::dexcom);
         }},
        {"no account",
         [](AlertFixture& on) {
             on.coordinator->resetForNewConfiguration(nullptr, GlucoseProvider::dexcom);
         }},
        {"a newer reading in range",
         [](AlertFixture& on) {
             on.service->onFetch = [&on] { return Fetched{std::vector{reading(on.clock.now(), 120)}}; };
             on.refresh();
         }},
        {"a newer reading that is low too",
         [](AlertFixture& on) {
             on.service->onFetch = [&on] { return Fetched{std::vector{reading(on.clock.now(), 61)}}; };
             on.refresh();
         },
         {low}},
        {"sleep until the reading is stale", [](AlertFixture& on) { on.clock.suspend(950s); }},
    };
    for (const Change& change : changes) {
        SCOPED_TRACE(change.what);
        AlertFixture day;
        day.settings.alertOnMissingData = false;
        day.answerAged(60s);
        day.center.delay = 4s;
        day.run();
        day.clock.advance(Seconds{7});
        ASSERT_EQ(day.center.running, 1);
        change.happens(day);
        day.clock.advance(Seconds{40});
        EXPECT_EQ(day.posted(), change.expected);
        EXPECT_EQ(day.center.running, 0);
    }

    // By age alone: it turns stale while the permission is awaited.
    settings.alertOnMissingData = false;
    answerAged(888s);  // 893 s when it comes.
    center.delay = 5s;
    run();
    clock.advance(Seconds{60});
    EXPECT_EQ(posted(), Titles{low}) << "898 s";
    coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
    answerAged(891s);
    clock.advance(Seconds{60});
    EXPECT_EQ(posted(), Titles{}) << "901 s";
}

TEST_F(StatusBarPollingCoordinatorAlertsTest, notificationUnderWayIsRecordedUnlessItsRunHasEnded)
{
    center.delay = 4s;
    run();
    clock.advance(Seconds{5 + 4 + 2});
    coordinator->snoozeAlerts(60s);  // Too late for this one.
    clock.advance(Seconds{4});
    EXPECT_EQ(posted(), Titles{low});
    coordinator->resumeAlerts();
    poll(60);
    clock.advance(Seconds{20});
    EXPECT_EQ(posted(), Titles{}) << "it was posted, so it is told";

    coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
    clock.advance(Seconds{5 + 4 + 2});
    coordinator->stop();
    clock.advance(Seconds{60});
    EXPECT_EQ(posted(), Titles{});
    coordinator->start(service, GlucoseProvider::dexcom);
    clock.advance(Seconds{400});
    EXPECT_EQ(posted(), Titles{low}) << "nothing of the run that was stopped is recorded";
}

TEST_F(StatusBarPollingCoordinatorAlertsTest, anotherBeginningAlertsAnewAndAStopRemembers)
{
    run();
    poll(60);
    EXPECT_EQ(posted(), Titles{low});
    coordinator->stop();
    run();
    poll(60);
    EXPECT_EQ(posted(), Titles{});
    clock.advance(Seconds{2});
    coordinator->reconnect();
    clock.advance(Seconds{2});
    EXPECT_EQ(posted(), Titles{low});
    coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
    poll(60);
    EXPECT_EQ(posted(), Titles{low});
    relaunch();
    run();
    poll(60);
    EXPECT_EQ(posted(), Titles{low});
}

TEST_F(StatusBarPollingCoordinatorAlertsTest, snoozeIsBoundedStoredAndShownAndTheLastWordCounts)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [asked, expected] : std::vector<std::pair<double, double>>{
             {30, 60}, {7200, 7200}, {1800, 1800}, {nan, 60}, {-5, 60}, {1e300, 86'400}}) {
        SCOPED_TRACE(asked);
        coordinator->snoozeAlerts(Seconds{asked});
        expectSnooze(start + Seconds{expected});
    }
    coordinator->resumeAlerts();
    expectSnooze(std::nullopt);

    // Over a relaunch, without any run; another account begins with it as well.
    coordinator->snoozeAlerts(1800s);
    clock.advance(Seconds{100});
    relaunch();
    expectSnooze(start + Seconds{1800});
    run();
    poll(60);
    coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
    poll(60);
    expectSnooze(start + Seconds{1800});
    EXPECT_EQ(posted(), Titles{});

    // It ends with the first pass behind its end, which alerts at once.
    while (clock.now() < start + Seconds{1800})
        poll(60);
    EXPECT_EQ(posted(), Titles{low});
    expectSnooze(std::nullopt);
}

TEST_F(StatusBarPollingCoordinatorAlertsTest, storedSnoozeThatIsNoneIsNotKept)
{
    coordinator.reset();
    defaults.set(alertsSnoozedUntilKey, start - Seconds{1});
    relaunch();
    expectSnooze(start - Seconds{1});
    run();
    poll(60);
    expectSnooze(std::nullopt);
    EXPECT_EQ(posted(), Titles{low});

    const Date now = clock.now();
    struct Stored {
        std::function<void()> store;
        std::optional<Date> expected{};
    };
    for (const Stored& stored : std::vector<Stored>{
             {[&] { defaults.set(alertsSnoozedUntilKey, now + Seconds{86'401}); }},
             {[&] { defaults.set(alertsSnoozedUntilKey, now + Seconds{86'399}); }, now + Seconds{86'399}},
             {[&] { defaults.set(alertsSnoozedUntilKey, dateFromUnix(1e300)); }},
             {[&] { defaults.set(alertsSnoozedUntilKey, "tomorrow"); }},
             {[&] { defaults.set(alertsSnoozedUntilKey, true); }}}) {
        stored.store();
        relaunch();
        expectSnooze(stored.expected);
        coordinator->resumeAlerts();
        clock.runReady();
        stored.store();
        coordinator->alertSnoozeDidReload();
        expectSnooze(stored.expected);
    }

    // A clock that is set back does not make half an hour six.
    coordinator->snoozeAlerts(1800s);
    run();
    clock.runReady();
    clock.setWallClock(clock.now() - Seconds{5 * 3600.0});
    poll(60);
    expectSnooze(clock.now() + Seconds{1800});
}

// --- Missing data ---

struct MissingDataTest : StatusBarPollingCoordinatorAlertsTest {
    Date last{};  ///< Date of the last reading that came.

    MissingDataTest() { value = 120; }

    /// A gap begins behind one good answer.
    void beginGap(Kind kind = Kind::serverTrouble)
    {
        run();
        clock.advance(Seconds{5});
        last = state().presentedReading->date;
        failWith(kind);
    }
    /// Nothing before that moment, and then what is expected, within a second.
    void expectAt(Date moment, const Titles& expected)
    {
        advanceTo(moment - Seconds{0.01});
        EXPECT_EQ(posted(), Titles{});
        advanceTo(moment + Seconds{1});
        EXPECT_EQ(posted(), expected);
    }
};

TEST_F(MissingDataTest, eachGapIsToldOnceWithItsReason)
{
    beginGap();
    expectAt(last + Seconds{900}, {missing});
    ASSERT_FALSE(center.posted.empty());
    const UserNotification told = center.posted.back();
    EXPECT_EQ(told.body,
              fmt::format("An unexpected error occurred: Text. Last reading at {}, 15 minutes ago.",
                          localTimeOfDay(last, TimeZone::current())));
    EXPECT_EQ(told.tone, NotificationTone::urgent);
    EXPECT_FALSE(told.offersSnooze);
    clock.advance(Seconds{86'400});
    EXPECT_EQ(posted(), Titles{});

    // Late data that is not fresh ends no gap; fresh data does.
    service->onFetch = [this] { return Fetched{std::vector{reading(clock.now() - Seconds{1000})}}; };
    clock.advance(Seconds{7200});
    EXPECT_EQ(posted(), Titles{});
    answer();
    untilNextFetch();
    last = newest().date;
    const Fetched frozen = std::vector{newest()};
    service->onFetch = [frozen] { return frozen; };
    expectAt(last + Seconds{900}, {missing});
    EXPECT_TRUE(center.posted.back().body.starts_with("No new reading has come. Last reading at "));
}

TEST_F(MissingDataTest, runWithoutAReadingIsToldToo)
{
    const std::string since =
        fmt::format("No reading since Tidewell started at {}.", localTimeOfDay(start, TimeZone::current()));
    failWith(Kind::accountActionRequired);
    run();
    expectAt(start + Seconds{900}, {missing});
    ASSERT_FALSE(center.posted.empty());
    EXPECT_EQ(center.posted.back().body, "Dexcom Share needs attention. Text. " + since);

    // An account that is not there, or a run that has ended, misses nothing.
    coordinator->resetForNewConfiguration(nullptr, GlucoseProvider::dexcom);
    clock.advance(Seconds{3600});
    coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
    clock.advance(Seconds{890});
    coordinator->stop();
    clock.advance(Seconds{3600});
    EXPECT_EQ(posted(), Titles{});
    EXPECT_EQ(clock.sleepers(), 0U);

    // What the first answer brings may be old: then there is a gap already.
    answerAged(3600s);
    coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
    expectAt(clock.now() + Seconds{5}, {missing});
}

TEST_F(MissingDataTest, whatHoldsItBackDelaysItAndItIsToldOnceWhenThatEnds)
{
    struct Hold {
        const char* what;
        std::function<void(AlertFixture&)> begin;
        std::function<void(AlertFixture&)> end;
        double within = 0;  ///< Seconds after its end, at most.
    };
    const std::vector<Hold> holds{
        {"alerts off", [](AlertFixture& on) { on.settings.alertsEnabled = false; },
         [](AlertFixture& on) {
             on.settings.alertsEnabled = true;
             on.coordinator->alertSettingsDidUpdate();
         }},
        {"its own preference", [](AlertFixture& on) { on.settings.alertOnMissingData = false; },
         [](AlertFixture& on) {
             on.settings.alertOnMissingData = true;
             on.coordinator->alertSettingsDidUpdate();
         }},
        {"quiet hours",
         [](AlertFixture& on) {
             on.settings.quietHoursEnabled = true;
             on.settings.quietHoursStartMinutes = on.settings.quietHoursEndMinutes;
         },
         [](AlertFixture& on) { on.settings.quietHoursEnabled = false; }, 60},
        {"snooze that is ended", [](AlertFixture& on) { on.coordinator->snoozeAlerts(86'400s); },
         [](AlertFixture& on) { on.coordinator->resumeAlerts(); }},
        {"snooze that ends", [](AlertFixture& on) { on.coordinator->snoozeAlerts(2000s); },
         [](AlertFixture&) {}, 60},
        {"server that is not there",
         [](AlertFixture& on) { on.center.state = NotificationAuthorizationState::denied; },
         [](AlertFixture& on) { on.center.state = NotificationAuthorizationState::authorized; }, 60},
        {"server that fails", [](AlertFixture& on) { on.center.failure = NotificationError{"No."}; },
         [](AlertFixture& on) { on.center.failure.reset(); }, 60},
        {"server that hangs",
         [](AlertFixture& on) {
             on.center.delay = 5s;
             on.center.failure = NotificationError{"No answer."};
         },
         [](AlertFixture& on) {
             on.center.delay = 0s;
             on.center.failure.reset();
         },
         70},
    };
    for (const Hold& hold : holds) {
        SCOPED_TRACE(hold.what);
        AlertFixture day;
        day.value = 120;
        day.run();
        day.clock.advance(Seconds{5});
        day.failWith(Kind::serverTrouble);
        hold.begin(day);
        day.advanceTo(start + Seconds{2000});
        EXPECT_EQ(day.posted(), Titles{});
        hold.end(day);
        day.clock.advance(Seconds{hold.within + 0.01});
        EXPECT_EQ(day.posted(), Titles{missing});
        day.clock.advance(Seconds{7200});
        EXPECT_EQ(day.posted(), Titles{});
    }
}

TEST_F(MissingDataTest, changeIsHeardInWhateverTurnOfALookItComes)
{
    for (int turns = 0; turns < 12; ++turns) {
        SCOPED_TRACE(turns);
        AlertFixture day;
        day.value = 120;
        day.settings.alertOnMissingData = false;
        day.run();
        day.clock.advance(Seconds{5});
        day.failWith(Kind::serverTrouble);
        day.clock.advance(Seconds{1000});
        day.coordinator->alertSettingsDidUpdate();
        day.io.restart();
        for (int turn = 0; turn < turns; ++turn)
            day.io.poll_one();
        day.settings.alertOnMissingData = true;
        day.coordinator->alertSettingsDidUpdate();
        day.clock.runReady();
        EXPECT_EQ(day.posted(), Titles{missing});
    }
}

TEST_F(MissingDataTest, dataThatComesBackWhileItIsHeldBackIsNotMissed)
{
    beginGap();
    coordinator->snoozeAlerts(3600s);
    clock.advance(Seconds{1500});
    answer();
    clock.advance(Seconds{7200});
    EXPECT_EQ(posted(), Titles{});

    // Nor while the desktop is asked; and once it is on its way, the next gap is another one.
    for (const bool posting : {false, true}) {
        last = state().presentedReading->date;
        failWith(Kind::serverTrouble);
        center.delay = 4s;
        advanceTo(last + Seconds{900 + (posting ? 6.0 : 2.0)});
        ASSERT_EQ(center.running, 1);
        answer();
        refresh();
        clock.advance(Seconds{20});
        EXPECT_EQ(posted(), posting ? Titles{missing} : Titles{});
    }
    last = state().presentedReading->date;
    failWith(Kind::serverTrouble);
    center.delay = 0s;
    expectAt(last + Seconds{900}, {missing});
}

TEST_F(MissingDataTest, nightAsleepIsNoGapBeforeAPollHasSaidSo)
{
    const auto sleep = [this](bool told) {
        clock.suspend(Seconds{8 * 3600.0});
        if (told)
            coordinator->refreshAfterWake();
        clock.runReady();
    };
    for (const bool told : {false, true}) {
        SCOPED_TRACE(told ? "the desktop tells of it" : "nobody tells of it");
        answer();
        coordinator->resetForNewConfiguration(service, GlucoseProvider::dexcom);
        clock.advance(Seconds{100});
        sleep(told);
        clock.advance(Seconds{100});
        EXPECT_EQ(posted(), Titles{});

        // A poll that fails says so, and one that hangs is not awaited longer than a minute.
        failWith(Kind::serverTrouble);
        sleep(told);
        expectAt(clock.now() + Seconds{0.8}, {missing});
        answer();
        untilNextFetch();
        service->duration = Seconds{300};
        sleep(told);
        expectAt(clock.now() + Seconds{60}, {missing});
        service->duration = Seconds{0};
        clock.advance(Seconds{600});
        EXPECT_EQ(posted(), Titles{});
    }
    // Naps in which it fell due by a few seconds, and in which it nearly did while the poll takes its time.
    for (const double length : {590.0, 575.0}) {
        last = state().presentedReading->date;
        advanceTo(last + Seconds{320});
        service->duration = Seconds{length < 580 ? 20.0 : 0.0};
        clock.suspend(Seconds{length});
        coordinator->refreshAfterWake();
        clock.advance(Seconds{100});
        EXPECT_EQ(posted(), Titles{});
        service->duration = Seconds{0};
        untilNextFetch();
    }
    // While nothing ran, nothing was missed.
    coordinator->stop();
    clock.advance(Seconds{7200});
    coordinator->start(service, GlucoseProvider::dexcom);
    clock.advance(Seconds{1000});
    EXPECT_EQ(posted(), Titles{});
}

TEST_F(MissingDataTest, wallClockThatIsSetMakesNoGapAndHidesNone)
{
    run();
    clock.advance(Seconds{100});
    clock.setWallClock(clock.now() + Seconds{7200});
    clock.advance(Seconds{1000});
    EXPECT_EQ(posted(), Titles{});
    failWith(Kind::serverTrouble);
    clock.setWallClock(clock.now() - Seconds{7200});
    clock.advance(Seconds{2000});
    EXPECT_EQ(posted(), Titles{missing});
}

TEST_F(MissingDataTest, clockThatIsMinutesBehindIsToldForAlertsCannotGoByTheReadings)
{
    value = 60;
    service->onFetch = [this] { return Fetched{std::vector{reading(clock.now() + Seconds{200}, value)}}; };
    run();
    expectAt(start + Seconds{900}, {missing});
    ASSERT_FALSE(center.posted.empty());
    EXPECT_EQ(center.posted.back().body,
              fmt::format("Clock is wrong. The newest glucose reading is dated 3 minutes in the future. "
                          "No reading that alerts can go by since {}.",
                          localTimeOfDay(start, TimeZone::current())));
    EXPECT_EQ(state().statusTitle, "60 →");
    clock.advance(Seconds{7200});
    EXPECT_EQ(posted(), Titles{});
    clock.setWallClock(clock.now() + Seconds{200});
    answer();
    poll(60);
    EXPECT_EQ(posted(), Titles{low});
    EXPECT_EQ(errorTitle(), "");
}

TEST_F(MissingDataTest, isToldAtOnceWhenTheDesktopIsBack)
{
    beginGap();
    center.state = NotificationAuthorizationState::denied;
    advanceTo(last + Seconds{930});
    center.state = NotificationAuthorizationState::authorized;
    coordinator->alertPathDidRecover();
    clock.runReady();
    EXPECT_EQ(posted(), Titles{missing});
}

TEST_F(MissingDataTest, clockThatIsSetBackDoesNotProlongASnoozeWhileNoDataComes)
{
    beginGap();
    advanceTo(last + Seconds{890});
    coordinator->snoozeAlerts(1800s);
    clock.advance(Seconds{30});
    clock.setWallClock(clock.now() - Seconds{5 * 3600.0});
    clock.advance(Seconds{1800 + 900 + 400});
    EXPECT_EQ(posted(), Titles{missing});
    expectSnooze(std::nullopt);
}

TEST_F(MissingDataTest, healthyDayNeedsNoWakeUpOfItsOwn)
{
    run();
    clock.advance(Seconds{3600});
    settings.alertOnMissingData = false;
    coordinator->alertSettingsDidUpdate();
    const auto wakes = [this] {
        int count = 0;
        for (const Date end = clock.now() + Seconds{86'400}; clock.now() < end; ++count)
            clock.advance(clock.untilNextWake());
        return count;
    };
    const int without = wakes();
    settings.alertOnMissingData = true;
    coordinator->alertSettingsDidUpdate();
    clock.runReady();
    EXPECT_LE(wakes(), without + 1);
}

/// One run through every wait of alerts: slow permission, slow posts, failures, the gap, what holds it back.
struct AlertJourney : AlertFixture {
    std::function<void(AlertJourney&)> interruption{};
    std::optional<std::size_t> postedBefore{};
    bool atDesktop = false;  ///< Something was with the desktop when it was interrupted.

    AlertJourney()
    {
        center.delay = 1s;
        service->onFetch = [this]() -> Fetched {
            if (clock.now() > start + Seconds{700} && clock.now() < start + Seconds{2500})
                return failure(Kind::serverTrouble);
            return std::vector{newest()};
        };
        coordinatorClock.interrupt = [this] {
            if (postedBefore)
                return;
            postedBefore = center.posted.size();
            atDesktop = center.running > 0;
            interruption(*this);
        };
    }
    void travel()
    {
        run();
        advanceTo(start + Seconds{400});
        coordinator ? coordinator->snoozeAlerts(1500s) : void();
        advanceTo(start + Seconds{1890});
        center.failure = NotificationError{"No."};
        advanceTo(start + Seconds{2000});
        center.failure.reset();
        advanceTo(start + Seconds{3600});
    }
};

TEST(StatusBarPollingCoordinatorAlertsStop, endsEveryWaitInItsMiddleAndAtItsEnd)
{
    int sleeps = 0;
    {
        AlertJourney whole;
        whole.travel();
        sleeps = whole.coordinatorClock.sleeps;
        ASSERT_EQ(whole.posted(), (Titles{low, missing}));
        ASSERT_GE(whole.center.refused, 1);
    }
    const std::vector<std::function<void(AlertJourney&)>> interruptions{
        [](AlertJourney& on) { on.coordinator->stop(); },
        [](AlertJourney& on) { on.coordinator.reset(); },
        [](AlertJourney& on) {  // What the former account read must not alert.
            on.service = std::make_shared<ScriptedGlucoseAPI>(on.coordinatorClock);
            on.value = 120;
            on.answer();
            on.coordinator->resetForNewConfiguration(on.service, GlucoseProvider::dexcom);
        },
    };
    int cuts = 0;
    std::size_t arrivedAnyway = 0;
    for (int index = 0; index < sleeps; ++index) {
        for (const bool atEnd : {false, true}) {
            for (std::size_t which = 0; which < interruptions.size(); ++which) {
                SCOPED_TRACE(testing::Message() << "sleep " << index << (atEnd ? ", at its end" : ", inside")
                                                << ", interruption " << which);
                AlertJourney cut;
                (atEnd ? cut.coordinatorClock.atEndOf : cut.coordinatorClock.inside) = index;
                cut.interruption = interruptions[which];
                cut.travel();
                if (!cut.postedBefore)  // This sleep was cut short by what it waited for.
                    continue;
                ++cuts;
                cut.clock.advance(Seconds{7200});
                const std::size_t arrived = cut.center.posted.size() - *cut.postedBefore;
                EXPECT_LE(arrived, atEnd && cut.atDesktop ? 1U : 0U);
                arrivedAnyway += arrived;
                EXPECT_EQ(cut.center.running, 0);
                if (which < 2) {
                    EXPECT_EQ(cut.clock.sleepers(), 0U) << "a task was left behind";
                }
            }
        }
    }
    EXPECT_GE(cuts, 100);
    EXPECT_EQ(arrivedAnyway, 2 * interruptions.size()) << "only what the desktop had accepted already";
}

}  // namespace
}  // namespace tidewell
