#include "platform/linux/AlertProbe.h"

#include <QCoreApplication>

#include "FakeNotificationServer.h"
#include "TestBus.h"
#include "platform/linux/QtMainLoop.h"
#include "testing/FakeClock.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
using Mood = FakeNotificationServer::Mood;

class AlertProbeTest : public testing::Test {
protected:
    AlertProbeOptions options()
    {
        return {.sessionBusAddress = bus.address(),
                .systemBusAddress = bus.address(),
                .soundServer = "unix:/nonexistent/sound",
                .helper = TIDEWELL_PROGRAM};
    }
    AlertPath look() { return look(options()); }
    AlertPath look(AlertProbeOptions chosen)
    {
        AlertProbe probe{main.executor(), clock, std::move(chosen)};
        const Running<AlertPath> looking{main.executor(), probe.look()};
        EXPECT_TRUE(runUntil([&] { return looking.ended(); }));
        EXPECT_EQ(clock.sleepers(), 0U);
        return looking.result();
    }

    TestBus bus{};
    QtMainLoop main{};
    asio::io_context io{};
    FakeClock clock{io, Date{}};
};

TEST_F(AlertProbeTest, whereNothingCanBeAskedNothingIsClaimed)
{
    AlertProbeOptions nowhere = options();
    nowhere.sessionBusAddress = nowhere.systemBusAddress = "unix:path=/nonexistent/bus";
    for (const AlertProbeOptions& where : {options(), nowhere}) {
        const AlertPath path = look(where);
        EXPECT_FALSE(path.serverAnswers || path.serverHangs);
        EXPECT_EQ(path.soundOutput, soundDeviceExists() ? std::nullopt : std::optional{false});
        EXPECT_FALSE(path.inhibited || path.muted || path.volume || path.suspendsAfter);
    }
}

TEST_F(AlertProbeTest, eachServerKeepsDoNotDisturbInAPlaceOfItsOwn)
{
    struct Case {
        QString name, question;
        QVariant value;
        std::optional<bool> inhibited;
    };
    const QString standard = "org.freedesktop.Notifications.Inhibited";
    const QString paused = "org.dunstproject.cmd0.paused";
    for (const Case& given :
         {Case{"Plasma", standard, true, true}, Case{"Plasma", standard, false, false},
          Case{"Plasma", standard, "yes", std::nullopt}, Case{"dunst", paused, true, true},
          Case{"dunst", paused, false, false}, Case{"dunst", standard, true, std::nullopt},
          Case{"Xfce Notify Daemon", "/do-not-disturb", true, true},
          Case{"Xfce Notify Daemon", "/other", true, false},
          Case{"Notification Daemon", "/other", true, std::nullopt}}) {
        SCOPED_TRACE((given.name + ' ' + given.question).toStdString());
        FakeNotificationServer server{bus, {"body", given.name == "dunst" ? "actions" : "sound"}};
        FakeService xfconf{bus, {"org.xfce.Xfconf"}};
        server.answers = xfconf.answers = {{"name", given.name}, {given.question, given.value}};
        const AlertPath path = look();
        EXPECT_TRUE(path.serverAnswers);
        EXPECT_FALSE(path.serverHangs);
        EXPECT_EQ(path.serverName, given.name.toStdString());
        EXPECT_EQ(path.serverPlaysSound, given.name != "dunst");
        EXPECT_EQ(path.inhibited, given.inhibited);
    }
}

TEST_F(AlertProbeTest, aServerThatDoesNotAnswerProperlyIsToldFromNone)
{
    FakeNotificationServer server{bus};
    for (const Mood mood : {Mood::refuses, Mood::talksNonsense}) {
        server.mood = mood;
        const AlertPath path = look();
        EXPECT_FALSE(path.serverAnswers);
        EXPECT_TRUE(path.serverHangs);
    }
    server.mood = Mood::hangs;
    const Running<AlertPath> looking{main.executor(), AlertProbe{main.executor(), clock, options()}.look()};
    EXPECT_TRUE(runUntil([&] { return clock.sleepers() == 1 && server.questions == 3; }));
    clock.advance(Seconds{1.99});
    QCoreApplication::processEvents();
    EXPECT_FALSE(looking.ended());
    clock.advance(Seconds{0.02});
    EXPECT_TRUE(runUntil([&] { return looking.ended(); }));
    EXPECT_TRUE(looking.result().serverHangs);
    EXPECT_FALSE(looking.result().serverAnswers);
}

TEST_F(AlertProbeTest, aBusThatIsNotReachedInTimeCountsAsAServerThatDoesNotAnswer)
{
    FakeNotificationServer server{bus};
    bus.freeze();
    const Running<AlertPath> looking{main.executor(), AlertProbe{main.executor(), clock, options()}.look()};
    EXPECT_TRUE(runUntil([&] { return clock.sleepers() == 1; }));
    clock.advance(2s);
    EXPECT_TRUE(runUntil([&] { return looking.ended(); }));
    bus.thaw();
    EXPECT_TRUE(looking.result().serverHangs);
    EXPECT_FALSE(looking.result().serverAnswers);
}

TEST_F(AlertProbeTest, aServerThatIsOnlyInstalledIsStartedWhenThatIsWanted)
{
    const TemporaryFolder folder;
    const std::string mark = folder / "started";
    bus.makeStartable("org.freedesktop.Notifications", "/bin/sh -c 'touch " + mark + "; exit 1'");
    AlertProbeOptions gently = options();
    gently.startsServer = false;
    EXPECT_TRUE(look(gently).serverAnswers);
    EXPECT_FALSE(std::filesystem::exists(mark));
    const AlertPath path = look();
    EXPECT_TRUE(std::filesystem::exists(mark));
    EXPECT_FALSE(path.serverAnswers || path.serverHangs) << "it could not be started";
}

TEST_F(AlertProbeTest, theShortestRuleThatIsInForceSaysWhenTheMachineSuspends)
{
    using Answers = std::map<QString, QVariant>;
    struct Case {
        const char* what;
        Answers machine, xfce;
        std::optional<Seconds> after;
    };
    const QString logind = "org.freedesktop.login1.Manager.";
    const QString ac = "/xfce4-power-manager/inactivity-on-ac";
    const QString battery = "/xfce4-power-manager/inactivity-on-battery";
    const Answers suspend{{logind + "IdleAction", "suspend"},
                          {logind + "IdleActionUSec", qulonglong{1'800'000'000}},
                          {logind + "BlockInhibited", "handle-lid-switch"}};
    const auto with = [](Answers answers, const QString& key, const QVariant& value) {
        answers[key] = value;
        return answers;
    };
    for (const Case& given :
         {Case{"nobody does", {}, {}, {}}, Case{"logind does", suspend, {}, 1800s},
          Case{"logind only locks", with(suspend, logind + "IdleAction", "lock"), {}, {}},
          Case{"logind is held", with(suspend, logind + "BlockInhibited", "shutdown:idle"), {}, {}},
          Case{"never, in Xfce's words", {}, {{ac, 14U}}, {}}, Case{"Xfce does", {}, {{ac, 20U}}, 1200s},
          Case{"on battery sooner",
               with(suspend, "org.freedesktop.UPower.OnBattery", true),
               {{ac, 60U}, {battery, 15U}},
               900s},
          Case{"logind sooner", suspend, {{ac, 60U}}, 1800s},
          Case{"nonsense", with(suspend, logind + "IdleActionUSec", "soon"), {{ac, "late"}}, {}}}) {
        SCOPED_TRACE(given.what);
        FakeService machine{bus, {"org.freedesktop.login1", "org.freedesktop.UPower"}};
        machine.answers = given.machine;
        FakeService xfce{bus, {"org.xfce.Xfconf", "org.xfce.PowerManager"}};
        xfce.answers = given.xfce;
        EXPECT_EQ(look().suspendsAfter, given.after);
    }
}

}  // namespace
}  // namespace tidewell
