#include "program/InsightsController.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <fstream>

#include "program/HistoryStorage.h"
#include "testing/EnvironmentVariable.h"
#include "testing/TemporaryFolder.h"

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

InsightsWindow* window()
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<InsightsWindow*>(widget))
            return found;
    return nullptr;
}
/// Turns the event loop until it is so; ends after ten seconds.
bool comes(const std::function<bool()>& condition)
{
    const auto deadline = steady_clock::now() + seconds{10};
    while (!condition() && steady_clock::now() < deadline)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    return condition();
}
bool says(const QString& words)
{
    for (const auto* label : window()->findChildren<QLabel*>())
        if (label->isVisible() && label->text().contains(words))
            return true;
    return false;
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

GlucoseAccountConfiguration accountOf(std::string name)
{
    return {.provider = GlucoseProvider::dexcom,
            .username = std::move(name),
            .password = SecretText{"secret"},
            .region = "us"};
}

/// The controller over saved history in a home of its own, which a second store changes as another process
/// would. Nothing is launched, so nobody polls.
class InsightsHistoryTest : public testing::Test {
protected:
    InsightsHistoryTest()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        controller->onReportGone([this] { ++gone; });
        controller->onOpenSettings([this] { ++settings; });
        follow(anna);
    }
    ~InsightsHistoryTest() override
    {
        controller.reset();
        EXPECT_TRUE(core->shutDown());
    }

    /// Like a sign-in.
    void follow(const GlucoseAccountConfiguration& account)
    {
        bool stored = false;
        const auto signIn = [](Core& core, GlucoseAccountConfiguration followed,
                               bool& done) -> asio::awaitable<void> {
            done = (co_await core.configuration().saveAccount(std::move(followed))).has_value();
        };
        const auto task = startTask(core->main(), signIn(*core, account, stored));
        ASSERT_TRUE(comes([&] { return stored; }));
        core->history().follow(HistoryScopeID::of(account));
        ASSERT_TRUE(store->attach(HistoryScopeID::of(account)));
    }
    /// Saves a reading every five minutes up to now.
    void collect(double days)
    {
        ASSERT_TRUE(store->enable(90, 1, now));
        std::vector<GlucoseReading> readings;
        for (int i = 0; i < static_cast<int>(days * 288); ++i)
            readings.push_back(makeReading(120 + i % 60, "Flat", now - Seconds{300.0 * i}, Seconds{300},
                                           GlucoseProvider::dexcom));
        ASSERT_TRUE(store->import(readings, now, false));
        core->reloadHistory();
    }
    void show(double days)
    {
        collect(days);
        controller->show();
        ASSERT_TRUE(comes(hasReport));
    }
    static bool hasReport()
    {
        return window()->findChild<QWidget*>(QStringLiteral("insightsProfile"))->isVisible();
    }
    void expectSays(const char* words)
    {
        EXPECT_TRUE(comes([&] { return says(QString::fromUtf8(words)); }))
            << words << " is not in:" << shown();
    }
    /// All texts.
    static std::string shown()
    {
        QString all;
        for (const auto* label : window()->findChildren<QLabel*>())
            if (label->isVisible())
                all += u'\n' + label->text();
        return all.toStdString();
    }
    [[nodiscard]] std::filesystem::path folder() const
    {
        return historyRoot(core->folders()) / "accounts" / HistoryScopeID::of(anna)->text();
    }
    /// Oldest first.
    [[nodiscard]] std::vector<std::filesystem::path> dayFiles() const
    {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator{folder()})
            if (entry.path().extension() == ".history")
                files.push_back(entry.path());
        std::ranges::sort(files);
        return files;
    }
    static void damage(const std::filesystem::path& file) { std::ofstream{file} << "no readings"; }

    const TemporaryFolder home;
    const EnvironmentVariable environment[8]{
        {"QT_QPA_PLATFORM", "offscreen"}, {"HOME", home.path().c_str()},
        {"XDG_CONFIG_HOME", nullptr},     {"XDG_STATE_HOME", nullptr},
        {"XDG_DATA_HOME", nullptr},       {"TIDEWELL_KEYCHAIN", "file"},
        {"TIDEWELL_ENDPOINTS", nullptr},  {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}};
    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QApplication application{count, arguments};
    std::unique_ptr<Core> core = std::move(Core::make({}).value());
    std::shared_ptr<GlucoseHistoryStore> store = makeHistoryStore(standardEnvironment().value());
    std::unique_ptr<InsightsController> controller = std::make_unique<InsightsController>(*core);
    const GlucoseAccountConfiguration anna = accountOf("anna");
    const Date now = core->clock().now();
    int gone = 0;
    int settings = 0;
};

TEST_F(InsightsHistoryTest, collectsUntilTheReportOpensAndKeepsItOpenThroughPauses)
{
    controller->show();
    expectSays("Get started with Insights");
    window()->findChild<QPushButton*>(QStringLiteral("insightsSettings"))->click();
    EXPECT_EQ(settings, 1);
    EXPECT_FALSE(says(QStringLiteral("tidewell history enable"))) << "there is a button for it";

    collect(1);
    expectSays("Building your insights");
    expectSays("of 3 days");
    ASSERT_TRUE(store->pause());
    core->reloadHistory();
    expectSays("History collection is paused");
    EXPECT_TRUE(window()->findChild<QPushButton*>(QStringLiteral("insightsSettings"))->isVisible());

    collect(4);
    EXPECT_TRUE(comes(hasReport));
    expectSays("Your insights are ready");
    ASSERT_TRUE(store->reload());
    EXPECT_TRUE(store->status().configuration.insightsUnlockedAt);
    ASSERT_TRUE(store->pause());
    core->reloadHistory();
    expectSays("Saving is off, so new readings aren’t being added.");
    EXPECT_TRUE(hasReport());
}

TEST_F(InsightsHistoryTest, showsNobodyTheReportOfAnotherPerson)
{
    show(4);
    const int before = gone;
    follow(accountOf("bert"));
    EXPECT_TRUE(comes([] { return says(QStringLiteral("Get started with Insights")); }));
    EXPECT_FALSE(hasReport());
    EXPECT_GT(gone, before) << "a dialog that saves it has to go";
    follow(anna);
    EXPECT_TRUE(comes(hasReport));
}

TEST_F(InsightsHistoryTest, dropsAReportWhoseHistoryWasDeleted)
{
    show(4);
    const int before = gone;
    ASSERT_TRUE(store->deleteAttached(now));
    core->reloadHistory();
    expectSays("History collection is paused");
    expectSays("0 of 3 days");
    EXPECT_FALSE(hasReport());
    EXPECT_GT(gone, before);
}

TEST_F(InsightsHistoryTest, neverTakesHistoryThatCannotBeReadForNone)
{
    show(4);
    const auto files = dayFiles();
    ASSERT_GE(files.size(), 4U);
    damage(files[1]);
    core->reloadHistory();
    const auto day = std::chrono::sys_days{std::chrono::days{std::stoi(files[1].stem())}};
    expectSays(("are missing here: " + isoText(Date{day}).substr(0, 10)).c_str());
    EXPECT_TRUE(hasReport()) << "the rest is shown";
    for (const auto& file : files)
        damage(file);
    Q_EMIT window()->findChild<QComboBox*>(QStringLiteral("insightsPeriod"))->activated(0);
    core->reloadHistory();
    expectSays("Your saved history could not be read.");

    std::filesystem::remove(folder() / "configuration.json");
    std::filesystem::create_directory(folder() / "configuration.json");
    core->reloadHistory();
    expectSays("History unavailable");
    std::filesystem::remove(folder() / "configuration.json");
    std::ofstream{folder() / "configuration.json"} << "[]";
    core->reloadHistory();
    expectSays("History unavailable");
    EXPECT_FALSE(says(QStringLiteral("Get started"))) << "it would sound as if nothing had been saved";
}

}  // namespace
}  // namespace tidewell
