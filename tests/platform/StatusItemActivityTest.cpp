#include <QDBusMessage>
#include <QDBusVariant>

#include "FakeNotificationServer.h"
#include "StatusItemFixture.h"
#include "platform/linux/BusCaller.h"

namespace tidewell {
namespace {

/// As statusItemContent() says it while something goes on.
StatusItemContent busy(StatusItemContent content = sample())
{
    content.activity = StatusBarActivity::refreshing;
    content.tooltipText += "\nRefreshing glucose…";
    content.accessibilityValue = "Refreshing glucose. " + content.accessibilityValue;
    return content;
}

class ActivityTest : public StatusItemTest {
protected:
    void begin(StatusItemOptions made)
    {
        item = startItem(std::move(made));
        ASSERT_TRUE(runUntil([&] { return registered == 1; }));
        panel.settle();
        advance(10s);
        panel.signalCounts.clear();
    }
    std::map<QString, int> signalsUntilNow()
    {
        panel.settle();
        return std::exchange(panel.signalCounts, {});
    }

    using Counts = std::map<QString, int>;
    FakePanel panel{bus};
    std::unique_ptr<StatusItem> item{};
};

TEST_F(ActivityTest, whatIsOverWithinASecondCausesNoTraffic)
{
    begin(options());
    for (const auto length : {0ms, 5ms, 999ms}) {
        item->present(busy());
        advance(length);
        item->present(sample());
        advance(10s);
    }
    EXPECT_EQ(signalsUntilNow(), Counts{});
    EXPECT_TRUE(waiting.empty()) << "it would wake up for nothing";

    // What came with it is not held back for longer.
    item->present(busy());
    advance(500ms);
    item->present(sample("121"));
    EXPECT_EQ(signalsUntilNow(), (Counts{{"NewIcon", 1}, {"NewTitle", 1}, {"NewToolTip", 1}}));
}

TEST_F(ActivityTest, whatLastsIsShownByASignThatTurnsOnceASecond)
{
    begin(options());
    item->present(busy());
    advance(1s);
    EXPECT_EQ(signalsUntilNow(), (Counts{{"NewIcon", 1}, {"NewTitle", 1}, {"NewToolTip", 1}}));
    EXPECT_EQ(panel.property("Title").toString(), "Tidewell: Refreshing glucose. Current glucose: 120");
    for (int second = 0; second < 8; ++second)
        advance(1s);
    EXPECT_EQ(signalsUntilNow(), (Counts{{"NewIcon", 8}}));

    // A reading in between takes its turn with the sign.
    for (int value = 121; value <= 128; ++value) {
        advance(250ms);
        item->present(busy(sample(std::to_string(value))));
    }
    EXPECT_EQ(signalsUntilNow()["NewIcon"], 2);

    StatusItemContent warned = busy();
    warned.indicator = StatusIndicator::warning;
    item->present(warned);
    advance(1s);
    (void)signalsUntilNow();
    for (int second = 0; second < 8; ++second)
        advance(1s);
    EXPECT_EQ(signalsUntilNow(), Counts{}) << "a warning stands still";
    EXPECT_TRUE(waiting.empty());

    item->present(sample());
    advance(1s);
    EXPECT_EQ(signalsUntilNow(), (Counts{{"NewIcon", 1}, {"NewTitle", 1}, {"NewToolTip", 1}}));
    EXPECT_TRUE(waiting.empty());
}

/// The settings portal; either kind of answer: newer ones wrap a value once, older ones twice.
class FakePortal final : public FakeService {
public:
    FakePortal(TestBus& bus, bool animations)
        : FakeService{bus, {"org.freedesktop.portal.Desktop"}}, animations_{animations}
    {
    }
    void change(bool animations) { change(animations, connection); }
    static void change(bool animations, QDBusConnection& sender)
    {
        QDBusMessage signal = QDBusMessage::createSignal("/org/freedesktop/portal/desktop",
                                                         "org.freedesktop.portal.Settings", "SettingChanged");
        signal.setArguments({"org.gnome.desktop.interface", "enable-animations",
                             QVariant::fromValue(QDBusVariant{animations})});
        sender.send(signal);
    }
    int asked = 0;

private:
    bool handle(const QDBusMessage& message) override
    {
        if (message.member() != "Read")
            return false;
        if (message.arguments().value(1) != "enable-animations") {
            connection.send(message.createErrorReply(QDBusError::Failed, "no such setting"));
            return true;
        }
        ++asked;
        const auto once = QVariant::fromValue(QDBusVariant{animations_});
        connection.send(message.createReply(QVariant::fromValue(QDBusVariant{once})));
        return true;
    }
    bool animations_;
};

TEST_F(ActivityTest, standsStillWhereTheDesktopWantsLessMotion)
{
    FakePortal portal{bus, false};
    begin(options());
    ASSERT_TRUE(runUntil([&] { return portal.asked == 1; }));
    panel.settle();
    item->present(busy());
    for (int second = 0; second < 5; ++second)
        advance(1s);
    EXPECT_EQ(signalsUntilNow()["NewIcon"], 1) << "the sign comes, and that is all";
    EXPECT_TRUE(waiting.empty());

    QDBusConnection stranger = bus.connect();
    FakePortal::change(true, stranger);
    forgeOwner(stranger, "org.freedesktop.portal.Desktop", stranger.baseService());
    FakePortal::change(true, stranger);
    (void)callAndWait(stranger, busDaemonCall("GetId"));
    (void)signalsUntilNow();
    EXPECT_TRUE(waiting.empty()) << "it believed a stranger";
    portal.change(true);
    ASSERT_TRUE(runUntil([&] { return !waiting.empty(); })) << "the change was not noticed";
    (void)signalsUntilNow();
    advance(1s);
    advance(1s);
    EXPECT_EQ(signalsUntilNow(), (Counts{{"NewIcon", 2}}));
}

TEST_F(ActivityTest, asksTheDesktopOnceAndLateWhereThereIsNoPortal)
{
    std::vector<std::function<void(bool)>> questions;
    StatusItemOptions made = options();
    made.askReducedMotion = [&](std::function<void(bool)> answer) { questions.push_back(std::move(answer)); };
    begin(made);
    EXPECT_TRUE(questions.empty());
    for (int round = 0; round < 2; ++round) {
        item->present(busy());
        advance(1s);
        advance(5s);
        EXPECT_EQ(questions.size(), 1U);
        item->present(sample());
        advance(1s);
    }
    EXPECT_TRUE(waiting.empty()) << "it stands still until the answer is there";
    item->present(busy());
    advance(1s);
    questions[0](false);
    EXPECT_FALSE(waiting.empty());
    item.reset();
    questions[0](true);  // Too late for anybody.
}

TEST_F(StatusItemTest, saysOnceThatNothingShowsIt)
{
    struct Case {
        const char* name;
        bool panel, answers, shows, expected;
    };
    for (const Case& c : {Case{"no panel", false, true, true, true}, Case{"a panel", true, true, true, false},
                          Case{"one that never answers", true, false, true, true},
                          Case{"one that only collects", true, true, false, true}}) {
        SCOPED_TRACE(c.name);
        std::optional<FakePanel> panel;
        if (c.panel) {
            panel.emplace(bus);
            panel->neverAnswers = !c.answers;
            panel->showsItems = c.shows;
        }
        int told = 0;
        registered = 0;
        waiting.clear();
        StatusItem item{options()};
        item.onRegistered([&] { ++registered; });
        item.onAbsent([&] { ++told; });
        item.present(sample());
        item.start();
        ASSERT_TRUE(runUntil([&] {
            return !panel ? waiting.size() == 2 : c.answers ? panel->hostAsked : panel->items.size() == 1;
        }));
        if (panel && c.answers)
            panel->settle();
        advance(29s);
        EXPECT_EQ(told, 0);
        advance(1s);
        advance(1h);
        EXPECT_EQ(told, c.expected ? 1 : 0);
    }
}

}  // namespace
}  // namespace tidewell
