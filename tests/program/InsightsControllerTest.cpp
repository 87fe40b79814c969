#include "program/InsightsController.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>

namespace tidewell {
namespace {

using namespace std::chrono;

Date utc(std::string_view text) { return dateFromIso(text).value(); }

TEST(InsightsInterval, datesAreWholeLocalDaysAndNeverOfTheFuture)
{
    const TimeZone berlin = TimeZone::named("Europe/Berlin").value();
    const Date now = utc("2026-10-27T10:00:00Z");
    EXPECT_EQ(insightsInterval({.days = 7}, now, berlin), (DateInterval{utc("2026-10-20T10:00:00Z"), now}));
    const auto dates = [&](sys_days from, sys_days to) {
        return insightsInterval({.days = {}, .from = from, .to = to}, now, berlin);
    };
    // The day on which the clock is put back has 25 hours.
    EXPECT_EQ(dates(year{2026} / 10 / 25, year{2026} / 10 / 25),
              (DateInterval{utc("2026-10-24T22:00:00Z"), utc("2026-10-25T23:00:00Z")}));
    EXPECT_EQ(dates(year{2026} / 10 / 26, year{2026} / 10 / 27),
              (DateInterval{utc("2026-10-25T23:00:00Z"), now}));
    EXPECT_LE(dates(year{2026} / 10 / 28, year{2026} / 10 / 28).duration(), Seconds{0}) << "not usable";
}

/// The program's own parts over its demonstration, where nobody has signed in yet.
class InsightsControllerTest : public testing::Test {
protected:
    InsightsControllerTest()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QApplication>(count, arguments);
        QApplication::setQuitOnLastWindowClosed(false);
        core = std::move(Core::make({.demo = true}).value());
        controller = std::make_unique<InsightsController>(*core);
    }
    ~InsightsControllerTest() override
    {
        controller.reset();
        EXPECT_TRUE(core->shutDown());
        core.reset();
        application.reset();
        qunsetenv("QT_QPA_PLATFORM");
    }

    static InsightsWindow* window()
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<InsightsWindow*>(widget))
                return found;
        return nullptr;
    }
    /// Turns the event loop until it is so; ends after ten seconds.
    static bool comes(const std::function<bool()>& condition)
    {
        const auto deadline = steady_clock::now() + seconds{10};
        while (!condition() && steady_clock::now() < deadline)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
        return condition();
    }
    static bool says(const QString& words)
    {
        for (const auto* label : window()->findChildren<QLabel*>())
            if (label->isVisible() && label->text().contains(words))
                return true;
        return false;
    }

    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QApplication> application{};
    std::unique_ptr<Core> core{};
    std::unique_ptr<InsightsController> controller{};
};

TEST_F(InsightsControllerTest, opensOnceGoesWhenClosedAndComesBackAsItWas)
{
    controller->show();
    QPointer<InsightsWindow> first = window();
    ASSERT_TRUE(first);
    EXPECT_TRUE(says(QStringLiteral("Loading history…"))) << "it does not wait to be shown";
    controller->show();
    EXPECT_EQ(window(), first);
    EXPECT_TRUE(comes([] { return says(QStringLiteral("Get started with Insights")); }));
    EXPECT_TRUE(says(QStringLiteral("Sign in"))) << "what comes next";
    QKeyEvent escape{QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier};
    QApplication::sendEvent(first, &escape);
    EXPECT_TRUE(comes([&] { return !first; })) << "a closed window holds nothing";
    controller->show();
    EXPECT_TRUE(comes([] { return says(QStringLiteral("Get started with Insights")); }));
}

TEST_F(InsightsControllerTest, anOldRequestTouchesNothingAnyMore)
{
    controller->show();
    for (int i = 0; i < 20; ++i) {
        auto* const period = window()->findChild<QComboBox*>(QStringLiteral("insightsPeriod"));
        period->setCurrentIndex(i % 4);
        Q_EMIT period->activated(i % 4);
    }
    EXPECT_TRUE(comes([] { return says(QStringLiteral("Get started with Insights")); }));
    const QPointer<InsightsWindow> shown = window();
    auto* const period = window()->findChild<QComboBox*>(QStringLiteral("insightsPeriod"));
    period->setCurrentIndex(0);
    Q_EMIT period->activated(0);
    controller.reset();  // With a request under way.
    EXPECT_FALSE(shown);
    QCoreApplication::processEvents();
}

}  // namespace
}  // namespace tidewell
