#include "platform/linux/NotificationCenter.h"

#include <QCoreApplication>
#include <thread>

#include "FakeNotificationServer.h"
#include "MarkingTranslator.h"
#include "TestBus.h"
#include "platform/linux/QtMainLoop.h"
#include "testing/FakeClock.h"
#include "testing/LogCatcher.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
using Mood = FakeNotificationServer::Mood;
using State = NotificationAuthorizationState;

const UserNotification low{.identifier = "glucose-alert-1",
                           .title = "Low & \x01 low",
                           .body = "65 mg/dL ↓ <b>(low)</b>\nline two",
                           .tone = NotificationTone::urgent,
                           .offersSnooze = true};
const UserNotification plain{.identifier = "glucose-alert-2", .title = "High", .body = "300 & more"};

class FakeSound final : public AlertSoundPlaying {
public:
    void play(NotificationTone tone) override { played.push_back(tone); }
    std::vector<NotificationTone> played{};
};

class NotificationCenterTest : public testing::Test {
protected:
    using Posting = Running<std::expected<void, NotificationError>>;
    using Asking = Running<State>;

    NotificationCenter& start()
    {
        center = std::make_unique<NotificationCenter>(main.executor(), clock, sound, bus.address());
        center->onAction([this](NotificationAction action) { actions.push_back(action); });
        center->onAuthorizationChange([this](State state) { told.push_back(state); });
        center->onLastAlertChange([this] { notShown.push_back(center->lastAlertNotShown()); });
        return *center;
    }
    /// Of a centre that knows where it stands.
    NotificationCenter& startAndSettle()
    {
        NotificationCenter& made = start();
        EXPECT_TRUE(runUntil([&] { return !told.empty(); }));
        return made;
    }

    std::expected<void, NotificationError> post(const UserNotification& notification)
    {
        const Posting posting{main.executor(), center->add(notification)};
        EXPECT_TRUE(runUntil([&] { return posting.ended(); }));
        return posting.result();
    }
    State status()
    {
        const Asking asking{main.executor(), center->authorizationStatus()};
        EXPECT_TRUE(runUntil([&] { return asking.ended(); }));
        return asking.result();
    }
    /// Whoever waits has begun to; then the deadline passes.
    void passDeadline(const auto& running)
    {
        ASSERT_TRUE(runUntil([&] { return clock.sleepers() > 0; }));
        clock.advance(Seconds{4.99});
        QCoreApplication::processEvents();
        EXPECT_FALSE(running.ended());
        clock.advance(Seconds{0.02});
        EXPECT_TRUE(runUntil([&] { return running.ended(); }));
    }
    void expectTold(std::vector<State> expected)
    {
        EXPECT_TRUE(runUntil([&] { return told.size() >= expected.size(); }));
        EXPECT_EQ(told, expected);
    }

    TestBus bus{};
    QtMainLoop main{};
    asio::io_context io{};
    FakeClock clock{io, Date{}};
    FakeSound sound{};
    std::vector<NotificationAction> actions{};
    std::vector<State> told{};
    std::vector<bool> notShown{};
    std::unique_ptr<NotificationCenter> center{};
};

TEST_F(NotificationCenterTest, whatTheServerAnnouncesDecidesHowANotificationIsSent)
{
    struct Case {
        QStringList announced;
        UserNotification notification;
        QString summary, body;
        QStringList actions;
        int urgency, timeout;
        const char* soundName;  ///< Null when the sound is ours.
    };
    const QStringList show{"default", "Show"};
    const QStringList showAndSnooze{"default", "Show", "snooze", "Snooze 30 min"};
    const QString raw = "65 mg/dL ↓ <b>(low)</b>\nline two";
    const QString escaped = "65 mg/dL ↓ &lt;b&gt;(low)&lt;/b&gt;\nline two";
    const std::vector<Case> cases{
        {{"body", "actions"}, low, "Low &   low", raw, showAndSnooze, 2, 0, nullptr},
        {{"body", "actions"}, plain, "High", "300 & more", show, 1, -1, nullptr},
        {{"body", "body-markup"}, low, "Low &   low", escaped, {}, 2, 0, nullptr},
        {{"body", "body-markup", "sound", "actions"},
         plain,
         "High",
         "300 &amp; more",
         show,
         1,
         -1,
         "message-new-instant"},
        {{"body", "sound"}, low, "Low &   low", raw, {}, 2, 0, "alarm-clock-elapsed"},
        {{}, plain, "High: 300 & more", "", {}, 1, -1, nullptr},
        {{"body-markup"}, plain, "High: 300 & more", "", {}, 1, -1, nullptr},
    };
    for (const Case& given : cases) {
        SCOPED_TRACE(given.announced.join(' ').toStdString() + " " + given.notification.title);
        sound.played.clear();
        told.clear();
        FakeNotificationServer server{bus, given.announced};
        startAndSettle();
        ASSERT_TRUE(post(given.notification).has_value());
        ASSERT_EQ(server.posted.size(), 1);
        const auto& posted = server.posted[0];
        EXPECT_EQ(posted.client, "Tidewell");
        EXPECT_EQ(posted.summary, given.summary);
        EXPECT_EQ(posted.body, given.body);
        EXPECT_EQ(posted.actions, given.actions);
        EXPECT_EQ(posted.timeout, given.timeout);
        EXPECT_EQ(posted.hints["urgency"], QVariant::fromValue<uchar>(static_cast<uchar>(given.urgency)));
        EXPECT_EQ(posted.hints["category"].toString(), "device");
        EXPECT_EQ(posted.hints["desktop-entry"].toString(), "org.tidewell.Tidewell");
        if (given.soundName) {
            EXPECT_EQ(posted.hints["sound-name"].toString(), given.soundName);
            EXPECT_FALSE(posted.hints.contains("suppress-sound"));
            EXPECT_TRUE(sound.played.empty()) << "it would sound twice";
        } else {
            EXPECT_EQ(posted.hints["suppress-sound"], QVariant{true});
            EXPECT_FALSE(posted.hints.contains("sound-name"));
            EXPECT_EQ(sound.played, std::vector{given.notification.tone});
        }
        center.reset();
    }
}

TEST_F(NotificationCenterTest, everyTextOfANotificationIsShownInThePersonsLanguage)
{
    const MarkingTranslator language;
    FakeNotificationServer server{bus, {"body", "actions"}};
    startAndSettle();
    ASSERT_TRUE(post(
        {.identifier = "1", .title = "High", .body = "Test alert could not be sent.", .offersSnooze = true}));
    ASSERT_EQ(server.posted.size(), 1);
    EXPECT_EQ(server.posted[0].summary, "[High]");
    EXPECT_EQ(server.posted[0].body, "[Test alert could not be sent.]");
    EXPECT_EQ(server.posted[0].actions, (QStringList{"default", "[Show]", "snooze", "[Snooze 30 min]"}));
}

TEST_F(NotificationCenterTest, aServerThatAnswersBadlyIsAnErrorWithoutSoundAndGoodAgainLater)
{
    LogCatcher logs;
    FakeNotificationServer server{bus};
    startAndSettle();
    for (const Mood mood : {Mood::refuses, Mood::talksNonsense}) {
        server.moodForNotify = mood;
        const auto result = post(low);
        ASSERT_FALSE(result.has_value());
        EXPECT_FALSE(result.error().message.contains("65")) << "the text that the server made up is kept out";
        EXPECT_TRUE(sound.played.empty());
        server.moodForNotify = Mood::answers;
        EXPECT_EQ(status(), State::authorized);
        EXPECT_TRUE(post(low).has_value());
        sound.played.clear();
    }
    EXPECT_TRUE(runUntil([&] { return notShown.size() == 4; }));
    EXPECT_EQ(notShown, (std::vector{true, false, true, false}));
    server.moodForNotify = Mood::answers;
    server.nextID = 0;
    EXPECT_FALSE(post(low).has_value()) << "no notification has the number 0";

    // Not even its abilities are told.
    center.reset();
    told.clear();
    server.nextID = 1;
    for (const Mood mood : {Mood::refuses, Mood::talksNonsense}) {
        server.mood = mood;
        startAndSettle();
        EXPECT_EQ(status(), State::denied);
        EXPECT_FALSE(post(low).has_value());
        expectTold({State::denied});
        server.mood = Mood::answers;
        EXPECT_EQ(status(), State::authorized);
        expectTold({State::denied, State::authorized});
        center.reset();
        told.clear();
    }
    EXPECT_FALSE(logs.text().contains("65"));
}

TEST_F(NotificationCenterTest, aServerThatHangsHoldsNobodyUpAndIsFoundAgainByItself)
{
    FakeNotificationServer server{bus};
    server.mood = Mood::hangs;
    start();
    const Posting posting{main.executor(), center->add(low)};
    passDeadline(posting);
    EXPECT_FALSE(posting.result().has_value());
    expectTold({State::denied});
    EXPECT_TRUE(server.posted.empty());
    EXPECT_FALSE(center->lastAlertNotShown()) << "it never came to that";
    // Nobody asks, and still it is noticed that the server works again.
    server.recover();
    ASSERT_TRUE(runUntil([&] { return clock.sleepers() == 1; }));
    clock.advance(10s);
    expectTold({State::denied, State::authorized});
    EXPECT_TRUE(post(low).has_value());
    EXPECT_EQ(clock.sleepers(), 0U) << "something still looks for trouble";
}

TEST_F(NotificationCenterTest, whatAServerShowsTooLateIsTakenBack)
{
    FakeNotificationServer server{bus};
    startAndSettle();
    server.moodForNotify = Mood::hangs;
    const Posting late{main.executor(), center->add(low)};
    passDeadline(late);
    EXPECT_FALSE(late.result().has_value());
    EXPECT_TRUE(center->lastAlertNotShown());
    EXPECT_TRUE(sound.played.empty());

    EXPECT_TRUE(runUntil([&] { return clock.sleepers() == 1; }));
    Posting cancelled{main.executor(), center->add(plain)};
    EXPECT_TRUE(runUntil([&] { return clock.sleepers() == 2; }));
    cancelled.cancel();
    EXPECT_TRUE(runUntil([&] { return cancelled.ended(); }));
    EXPECT_TRUE(cancelled.cancelled());

    server.recover();
    EXPECT_TRUE(runUntil([&] { return !server.closed.empty(); }));
    EXPECT_TRUE(post(plain).has_value());
    ASSERT_GE(server.posted.size(), 2U);
    for (std::size_t i = 0; i + 1 < server.posted.size(); ++i)
        EXPECT_TRUE(server.closed.contains(server.posted[i].id));
    EXPECT_FALSE(server.closed.contains(server.posted.back().id));
}

TEST_F(NotificationCenterTest, serversComeGoDieAndComeBackWithOtherAbilities)
{
    start();
    expectTold({State::denied});
    EXPECT_EQ(status(), State::denied);
    EXPECT_FALSE(post(low).has_value());
    {
        FakeNotificationServer server{bus, {"body"}};
        expectTold({State::denied, State::authorized});
        EXPECT_TRUE(post(low).has_value());
        EXPECT_EQ(server.questions, 1) << "what it announced was asked for again";
        server.moodForNotify = Mood::dies;
        EXPECT_FALSE(post(low).has_value());
    }
    expectTold({State::denied, State::authorized, State::denied});
    FakeNotificationServer next{bus, {"body", "body-markup", "sound"}};
    expectTold({State::denied, State::authorized, State::denied, State::authorized});
    ASSERT_TRUE(post(plain).has_value());
    EXPECT_EQ(next.posted[0].body, "300 &amp; more");
}

TEST_F(NotificationCenterTest, aServerThatCrashesAgainAndAgainIsToldOfAFewTimesAndThenOnceAMinute)
{
    LogCatcher logs{"NotificationCenter"};
    startAndSettle();
    for (int i = 0; i < 10; ++i) {
        {
            FakeNotificationServer server{bus};
            EXPECT_TRUE(post(low).has_value()) << "told or not, it is used";
        }
        EXPECT_EQ(status(), State::denied);
    }
    expectTold({State::denied, State::authorized, State::denied, State::authorized, State::denied});
    FakeNotificationServer server{bus};
    EXPECT_TRUE(post(low).has_value());
    ASSERT_TRUE(runUntil([&] { return clock.sleepers() == 1; }));
    clock.advance(1min);
    expectTold({State::denied, State::authorized, State::denied, State::authorized, State::denied,
                State::authorized});
    EXPECT_EQ(logs.lines().size(), told.size());
    EXPECT_EQ(clock.sleepers(), 0U);
}

TEST_F(NotificationCenterTest, whatIsForgottenIsClosedSoThatNoButtonIsDead)
{
    FakeNotificationServer server{bus};
    startAndSettle();
    for (int i = 0; i < 34; ++i)
        ASSERT_TRUE(post(plain).has_value());
    EXPECT_TRUE(runUntil([&] { return server.closed.size() >= 2; }));
    EXPECT_EQ(server.closed, (QList<unsigned>{7, 8}));
    server.invoke(9, "default");
    EXPECT_TRUE(runUntil([&] { return !actions.empty(); }));
}

TEST_F(NotificationCenterTest, aChoiceOfThePersonIsToldOnceAndOnlyWhenTheServerTellsIt)
{
    FakeNotificationServer server{bus};
    FakeService stranger{bus, {"org.stranger"}};
    startAndSettle();
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(post(low).has_value());
    QDBusMessage forged = QDBusMessage::createSignal("/org/freedesktop/Notifications",
                                                     "org.freedesktop.Notifications", "ActionInvoked");
    forged << 7U << "snooze";
    stranger.connection.send(forged);
    forgeOwner(stranger.connection, "org.freedesktop.Notifications", stranger.connection.baseService());
    stranger.connection.send(forged);
    server.invoke(99, "snooze");  // Someone else's.
    server.invoke(8, "explode");
    server.invoke(7, "snooze");
    server.invoke(7, "snooze");
    server.invoke(9, "default");
    EXPECT_TRUE(runUntil([&] { return actions.size() >= 2; }));
    (void)status();
    EXPECT_EQ(actions, (std::vector{NotificationAction::snooze, NotificationAction::open}));
}

TEST_F(NotificationCenterTest, aServerThatTheBusWouldStartIsStartedByTheFirstAlertAndNotBefore)
{
    const TemporaryFolder folder;
    const std::string mark = folder / "started";
    bus.makeStartable("org.freedesktop.Notifications", "/bin/sh -c 'touch " + mark + "; exec sleep 5'");
    startAndSettle();
    expectTold({State::authorized});
    EXPECT_FALSE(std::filesystem::exists(mark));
    const Posting posting{main.executor(), center->add(low)};
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(mark); }));
    FakeNotificationServer server{bus};
    EXPECT_TRUE(runUntil([&] { return posting.ended(); }));
    EXPECT_TRUE(posting.result().has_value());
    EXPECT_EQ(server.posted.size(), 1U);
    expectTold({State::authorized});
}

TEST_F(NotificationCenterTest, aBusThatIsGoneFrozenOrLateIsSurvived)
{
    bus.end();
    start();
    expectTold({State::denied});
    EXPECT_FALSE(post(low).has_value());
    bus.begin();
    {
        FakeNotificationServer server{bus};
        ASSERT_TRUE(runUntil([&] { return clock.sleepers() == 1; }));
        clock.advance(10s);
        expectTold({State::denied, State::authorized});

        bus.freeze();
        const Posting posting{main.executor(), center->add(low)};
        passDeadline(posting);
        EXPECT_FALSE(posting.result().has_value());
        bus.thaw();
        EXPECT_TRUE(runUntil([&] { return !server.closed.empty(); }));
        EXPECT_TRUE(post(low).has_value());
    }
    bus.end();
    EXPECT_TRUE(runUntil([&] { return told.back() == State::denied; }));
    bus.begin();
    FakeNotificationServer server{bus};
    ASSERT_TRUE(runUntil([&] { return clock.sleepers() > 0; }));
    clock.advance(10s);
    EXPECT_EQ(status(), State::authorized);
    clock.advance(60s);  // What has changed often is told a minute later.
    EXPECT_TRUE(runUntil([&] { return told.back() == State::authorized; }));
    EXPECT_TRUE(post(low).has_value());
}

TEST_F(NotificationCenterTest, callersOnOtherThreadsAreResumedThereAndLeaveAtOnceWhenCancelled)
{
    FakeNotificationServer server{bus};
    startAndSettle();
    server.moodForNotify = Mood::hangs;
    asio::io_context engine;
    std::atomic<bool> resumedThere = false;
    std::atomic<bool> wasCancelled = false;
    std::atomic<bool> ended = false;
    asio::cancellation_signal cancel;
    const auto caller = [&]() -> asio::awaitable<void> {
        const auto here = std::this_thread::get_id();
        resumedThere =
            co_await center->authorizationStatus() == State::authorized && here == std::this_thread::get_id();
        try {
            (void)co_await center->add(low);
        } catch (const boost::system::system_error& error) {
            wasCancelled = error.code() == asio::error::operation_aborted;
        }
    };
    asio::co_spawn(engine, caller(),
                   asio::bind_cancellation_slot(cancel.slot(), [&](std::exception_ptr) { ended = true; }));
    const auto work = asio::make_work_guard(engine);
    std::thread thread{[&] { engine.run(); }};
    EXPECT_TRUE(runUntil([&] { return clock.sleepers() == 1; })) << "it never came to wait for the server";
    asio::post(engine, [&] { cancel.emit(asio::cancellation_type::terminal); });
    // The main thread does nothing meanwhile: the caller does not need it to leave.
    while (!ended)
        std::this_thread::yield();
    EXPECT_TRUE(resumedThere);
    EXPECT_TRUE(wasCancelled);
    EXPECT_TRUE(runUntil([&] { return clock.sleepers() == 0; }))
        << "nobody waits any more, and yet it goes on";
    engine.stop();
    thread.join();
    // The centre may go while someone waits.
    const Posting posting{main.executor(), center->add(low)};
    EXPECT_TRUE(runUntil([&] { return clock.sleepers() > 0; }));
    center.reset();
    EXPECT_TRUE(runUntil([&] { return posting.ended(); }));
}

}  // namespace
}  // namespace tidewell
