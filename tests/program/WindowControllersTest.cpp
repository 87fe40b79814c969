#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <boost/asio/ip/tcp.hpp>
#include <fstream>

#include "app/TermsAgreement.h"
#include "platform/FakeNotificationServer.h"
#include "program/HistoryStorage.h"
#include "program/OnboardingController.h"
#include "program/SettingsController.h"
#include "program/SignInController.h"
#include "program/TermsController.h"
#include "simulator/SimulatedServices.h"
#include "support/AtomicFile.h"
#include "testing/EnvironmentVariable.h"
#include "ui/AccountForm.h"

namespace tidewell {
namespace {

using namespace std::chrono;

/// The one that is shown; null when there is none.
template <class Window>
Window* window()
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<Window*>(widget); found && found->isVisible())
            return found;
    return nullptr;
}

QString withoutMnemonic(QString text) { return text.remove(u'&'); }

/// Presses the button as soon as there is one that can be pressed. Without a name, the one with that text.
void press(const std::function<QWidget*()>& where, const char* name,
           std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), name};
    QPointer<QAbstractButton> button;
    ASSERT_TRUE(runUntil([&] {
        QWidget* const parent = where();
        if (!parent)
            return false;
        const QString wanted = QString::fromUtf8(name);
        for (auto* one : parent->findChildren<QAbstractButton*>())
            if (one->isEnabled() &&
                (one->objectName() == wanted || (one->isVisible() && withoutMnemonic(one->text()) == wanted)))
                button = one;
        return !button.isNull();
    }));
    button->click();
}

template <class Window>
void press(const char* name, std::source_location at = std::source_location::current())
{
    press([] { return window<Window>(); }, name, at);
}

/// Answers the question that the settings ask.
void confirm(bool withChoice = false, std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "confirm"};
    QPushButton* yes = nullptr;
    ASSERT_TRUE(runUntil([&] {
        for (auto* one : QApplication::allWidgets())
            if (one->objectName() == QStringLiteral("settingsConfirm") && one->isVisible())
                yes = qobject_cast<QPushButton*>(one);
        return yes != nullptr;
    }));
    if (withChoice)
        yes->window()->findChild<QCheckBox*>()->setChecked(true);
    yes->click();
}

GlucoseAccountConfiguration accountOf(std::string name)
{
    return {.provider = GlucoseProvider::dexcom,
            .username = std::move(name),
            .password = SecretText{"secret"},
            .region = "us"};
}

/// A service that takes connections and never answers.
class SilentService {
public:
    SilentService() { acceptor_.non_blocking(true); }
    [[nodiscard]] std::string endpointsDocument() const
    {
        return SimulatedServices::endpointsDocument("http://127.0.0.1:" +
                                                    std::to_string(acceptor_.local_endpoint().port()));
    }
    [[nodiscard]] bool wasAsked()
    {
        boost::system::error_code error;
        asio::ip::tcp::socket socket{io_};
        acceptor_.accept(socket, error);
        if (!error)
            sockets_.push_back(std::move(socket));
        return !sockets_.empty();
    }

    void forget() { sockets_.clear(); }

private:
    asio::io_context io_{1};
    asio::ip::tcp::acceptor acceptor_{io_, {asio::ip::address_v4::loopback(), 0}};
    std::vector<asio::ip::tcp::socket> sockets_{};
};

/// The windows over the program's own parts, in a home, on a bus and with a service of their own.
class WindowControllersTest : public testing::Test {
protected:
    WindowControllersTest()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        std::filesystem::create_directories(home / "bin");
        const auto program = home / "bin/mate-notification-properties";
        std::ofstream{program} << "#!/bin/sh\necho opened >>\"$HOME/opened\"\n";
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        useService(demonstration->endpointsDocument());
        makeCore();
    }
    ~WindowControllersTest() override { end(); }

    void useService(const std::string& endpoints)
    {
        std::filesystem::create_directories(home / "config/tidewell");
        std::ofstream{home / "config/tidewell/endpoints.json"} << endpoints;
    }
    void makeCore()
    {
        core = std::move(Core::make({.postsAlerts = true, .sharing = SharingKind::application}).value());
        onboarding = std::make_unique<OnboardingController>(*core);
        terms = std::make_unique<TermsController>(*core);
        signIn = std::make_unique<SignInController>(*core);
        settings = std::make_unique<SettingsController>(
            *core, SettingsController::Places{.signIn = [this] { went("sign-in"); },
                                              .terms = [this] { went("terms"); },
                                              .insights = [this] { went("insights"); }});
    }
    /// In the order of the application.
    void end()
    {
        if (!core)
            return;
        settings.reset();
        signIn.reset();
        terms.reset();
        onboarding.reset();
        EXPECT_TRUE(core->shutDown()) << "something holds up the end";
        core.reset();
        turn();
    }
    /// What was left for later comes.
    static void turn()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void launch() { core->launch({.onboarding = onboarding.get(), .terms = terms.get()}); }
    void went(const std::string& place)
    {
        places.push_back(place);
        if (closesOnTheWay)
            window<SettingsWindow>()->close();
    }

    void await(asio::awaitable<void> work)
    {
        const auto task = startTask(core->main(), std::move(work));
        ASSERT_TRUE(runUntil([&] { return !task.running(); }));
    }
    static asio::awaitable<void> saveAccount(ConfigurationManager& configuration,
                                             GlucoseAccountConfiguration account)
    {
        EXPECT_TRUE(co_await configuration.saveAccount(std::move(account)));
    }
    /// Without polling.
    void follow(const GlucoseAccountConfiguration& account)
    {
        await(saveAccount(core->configuration(), account));
        core->history().follow(HistoryScopeID::of(account));
    }
    /// Saves readings as another process would.
    void collect(const GlucoseAccountConfiguration& account)
    {
        const auto store = makeHistoryStore(standardEnvironment().value());
        const Date now = core->clock().now();
        ASSERT_TRUE(store->attach(HistoryScopeID::of(account)));
        ASSERT_TRUE(store->enable(90, 1, now));
        const std::vector readings{
            makeReading(120, "Flat", now - Seconds{300}, Seconds{300}, GlucoseProvider::dexcom)};
        ASSERT_TRUE(store->import(readings, now, false));
        core->reloadHistory();
        ASSERT_TRUE(runUntil([&] { return core->history().status().configuration.isEnabled; }));
    }
    [[nodiscard]] bool hasReadings(const GlucoseAccountConfiguration& account) const
    {
        std::error_code none;
        const auto folder = historyRoot(core->folders()) / "accounts" / HistoryScopeID::of(account)->text();
        for (const auto& entry : std::filesystem::directory_iterator{folder, none})
            if (entry.path().extension() == ".history")
                return true;
        return false;
    }
    /// As another process would read it.
    [[nodiscard]] GlucoseHistoryConfiguration storedHistory(const GlucoseAccountConfiguration& account) const
    {
        const auto store = makeHistoryStore(standardEnvironment().value());
        EXPECT_TRUE(store->attach(HistoryScopeID::of(account)));
        return store->status().configuration;
    }
    [[nodiscard]] std::string document() const
    {
        const auto text = readFile(core->environment().document());
        return text ? text->value_or("") : "";
    }
    [[nodiscard]] std::unique_ptr<UserDefaults> storedDefaults() const
    {
        auto defaults = std::make_unique<UserDefaults>(core->environment().defaults());
        EXPECT_FALSE(defaults->load());
        return defaults;
    }

    void show(SettingsTab tab)
    {
        settings->show(tab);
        ASSERT_TRUE(window<SettingsWindow>());
    }
    template <class Control>
    static Control& control(const char* name)
    {
        return *window<SettingsWindow>()->findChild<Control*>(QString::fromLatin1(name));
    }

    // --- The first-run steps

    static QString heading()
    {
        const auto* const shown = window<OnboardingWindow>();
        return shown ? shown->findChild<QLabel*>(QStringLiteral("onboardingHeading"))->text() : QString{};
    }
    static void expectStep(const char* title, std::source_location at = std::source_location::current())
    {
        EXPECT_TRUE(runUntil([&] { return heading() == QString::fromUtf8(title); }))
            << at.line() << ": " << heading().toStdString() << " instead of " << title;
    }
    static void goOn(const char* title, std::source_location at = std::source_location::current())
    {
        press<OnboardingWindow>("Continue", at);
        expectStep(title, at);
    }
    /// Up to the account, with its fields filled.
    void reachAccount()
    {
        expectStep("Welcome to Tidewell");
        goOn("Terms of use");
        press<OnboardingWindow>("I accept the terms of use");
        goOn("Sign in");
        enter(*window<OnboardingWindow>());
    }
    void enter(const QWidget& window) const
    {
        const auto& fields = *window.findChild<AccountForm*>();
        const DemoAccount account = demonstration->account();
        const auto choices = fields.findChildren<QComboBox*>();
        const auto edits = fields.findChildren<QLineEdit*>();
        ASSERT_EQ(choices.size(), 2);
        ASSERT_EQ(edits.size(), 2);
        const auto provider = glucoseProvider(account.provider).value();
        choices.at(0)->setCurrentText(serviceTitle(provider));
        choices.at(1)->setCurrentText(regionTitle(provider, account.region));
        edits.at(0)->setText(QString::fromStdString(account.username));
        edits.at(1)->setText(QString::fromStdString(account.password));
    }

    const TemporaryFolder home;
    const EnvironmentVariable places_[9]{{"QT_QPA_PLATFORM", "offscreen"},
                                         {"HOME", home.path().c_str()},
                                         {"XDG_CONFIG_HOME", (home / "config").c_str()},
                                         {"XDG_STATE_HOME", nullptr},
                                         {"XDG_DATA_HOME", nullptr},
                                         {"XDG_RUNTIME_DIR", (home / "run").c_str()},
                                         {"TIDEWELL_KEYCHAIN", "file"},
                                         {"TIDEWELL_ENDPOINTS", nullptr},
                                         {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}};
    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QApplication application{count, arguments};
    TestBus bus{};
    FakeNotificationServer server{bus};
    const EnvironmentVariable desktop_[5]{{"DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8().constData()},
                                          {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent"},
                                          {"PULSE_SERVER", "unix:/nonexistent"},
                                          {"XDG_CURRENT_DESKTOP", "MATE"},
                                          {"PATH", (home / "bin").c_str()}};
    asio::io_context io{1};
    SystemClock clock{io};
    std::unique_ptr<DemoService> demonstration = std::move(DemoService::start(clock).value());
    const GlucoseAccountConfiguration anna = accountOf("anna");
    const GlucoseAccountConfiguration bert = accountOf("bert");
    bool closesOnTheWay = false;
    std::vector<std::string> places{};
    std::unique_ptr<Core> core{};
    std::unique_ptr<OnboardingController> onboarding{};
    std::unique_ptr<TermsController> terms{};
    std::unique_ptr<SignInController> signIn{};
    std::unique_ptr<SettingsController> settings{};
};

TEST_F(WindowControllersTest, signingOutDeletesSavedReadingsWhenThePersonSaysSoAndOnlyThen)
{
    for (const bool deletes : {false, true}) {
        follow(anna);
        collect(anna);
        show(SettingsTab::account);
        press<SettingsWindow>("signOut");
        EXPECT_NE(document().find("anna"), std::string::npos) << "not before it is confirmed";
        confirm(deletes);
        EXPECT_TRUE(runUntil([&] { return document().find("anna") == std::string::npos; }));
        EXPECT_TRUE(runUntil([&] { return !core->configuration().account(); }));
        EXPECT_EQ(hasReadings(anna), !deletes);
    }
}

TEST_F(WindowControllersTest, deletesTheReadingsOfTheAccountOrOfEveryAccount)
{
    follow(anna);
    collect(anna);
    follow(bert);
    collect(bert);
    show(SettingsTab::insights);
    press<SettingsWindow>("deleteHistory");
    confirm();
    EXPECT_TRUE(runUntil([&] { return !hasReadings(bert); }));
    EXPECT_TRUE(hasReadings(anna)) << "another person's";
    EXPECT_TRUE(runUntil([&] { return !core->history().status().configuration.isEnabled; }));

    press<SettingsWindow>("deleteEveryHistory");
    confirm();
    EXPECT_TRUE(runUntil([&] { return !hasReadings(anna); }));
}

TEST_F(WindowControllersTest, whatIsChangedInTheSettingsIsStoredAndKeptByThoseWhoCareForIt)
{
    follow(anna);
    show(SettingsTab::alerts);
    ASSERT_TRUE(runUntil([&] { return server.questions > 0; }));
    press<SettingsWindow>("alertsEnabled");
    EXPECT_TRUE(runUntil([&] { return !core->configuration().settings().alertsEnabled; }));
    EXPECT_NE(document().find("\"alertsEnabled\": false"), std::string::npos) << document();

    press<SettingsWindow>("sendTestAlert");
    EXPECT_TRUE(
        runUntil([&] { return control<QWidget>("testAlertMessage").isVisible() && !server.posted.empty(); }));
    press<SettingsWindow>("openNotificationSettings");
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(home / "opened"); }));

    const auto entry = home / "config/autostart/org.tidewell.Tidewell.desktop";
    press<SettingsWindow>("startAtLogin");
    EXPECT_TRUE(runUntil(
        [&] { return std::filesystem::exists(entry) && core->configuration().settings().startAtLogin; }));
    press<SettingsWindow>("startAtLogin");
    EXPECT_TRUE(runUntil(
        [&] { return !std::filesystem::exists(entry) && !core->configuration().settings().startAtLogin; }));

    press<SettingsWindow>("enableHistory");
    EXPECT_FALSE(storedHistory(anna).isEnabled) << "not before the disclosure was accepted";
    confirm();
    EXPECT_TRUE(runUntil([&] { return storedHistory(anna).isEnabled; }));
    EXPECT_EQ(storedHistory(anna).retentionDays, 90);
    auto& retention = control<QComboBox>("historyRetention");
    ASSERT_TRUE(runUntil([&] { return retention.isEnabled() && retention.currentData() == 90; }));
    retention.setCurrentIndex(retention.findData(30));
    Q_EMIT retention.activated(retention.currentIndex());
    confirm();
    EXPECT_TRUE(runUntil([&] { return storedHistory(anna).retentionDays == 30; }));
    press<SettingsWindow>("pauseHistory");
    EXPECT_TRUE(runUntil([&] { return !storedHistory(anna).isEnabled; }));

    press<SettingsWindow>("signIn");
    press<SettingsWindow>("showTerms");
    press<SettingsWindow>("showInsights");
    EXPECT_EQ(places, (std::vector<std::string>{"sign-in", "terms", "insights"}));
    EXPECT_EQ(server.posted.size(), 1U);
    const int questions = server.questions;
    press<SettingsWindow>("lookAgain");
    EXPECT_TRUE(runUntil([&] { return server.questions > questions; }));
}

TEST_F(WindowControllersTest, theFirstRunStepsGoOnWhereTheyWereAndPollingBeginsWithTheirEnd)
{
    std::vector<StatusBarActivity> activities;
    const auto watch = [&] {
        return core->viewModel().observe([&](const StatusBarState& state) {
            if (state.activity)
                activities.push_back(*state.activity);
        });
    };
    launch();
    reachAccount();
    press<OnboardingWindow>("Continue");
    ASSERT_TRUE(runUntil([] { return heading() != QStringLiteral("Sign in"); }));
    if (demonstration->account().provider == "libreLinkUp") {
        expectStep("Who is it about?");
        window<OnboardingWindow>()->findChild<QListWidget*>()->setCurrentRow(0);
        press<OnboardingWindow>("Continue");
    }
    expectStep("The first value");
    goOn("Unit and limits");
    EXPECT_NE(document().find(demonstration->account().username), std::string::npos);
    press<OnboardingWindow>("mmol/L");
    press<OnboardingWindow>("Back");
    expectStep("The first value");
    goOn("Unit and limits");
    goOn("Alerts");
    EXPECT_EQ(core->configuration().settings().measurementUnit, "mmol/L");

    const QPointer<OnboardingWindow> first = window<OnboardingWindow>();
    first->close();
    EXPECT_TRUE(runUntil([&] { return !first; })) << "a closed window holds nothing";
    onboarding->showOnboarding();
    expectStep("Alerts");
    end();
    EXPECT_FALSE(window<OnboardingWindow>());
    makeCore();
    launch();
    expectStep("Alerts");
    press<OnboardingWindow>("Send test alert");
    press<OnboardingWindow>("Yes");
    EXPECT_EQ(server.posted.size(), 1U);
    goOn("Save readings?");
    press<OnboardingWindow>("Save readings on this computer");
    goOn("Start at login");
    EXPECT_TRUE(core->history().status().configuration.isEnabled);
    press<OnboardingWindow>("Start Tidewell when I log in");
    EXPECT_TRUE(runUntil(
        [&] { return std::filesystem::exists(home / "config/autostart/org.tidewell.Tidewell.desktop"); }));
    goOn("Tidewell is ready");
    EXPECT_FALSE(core->defaults().boolean(onboardingCompletedKey));
    EXPECT_TRUE(activities.empty());

    const auto observer = watch();
    const QPointer<OnboardingWindow> last = window<OnboardingWindow>();
    press<OnboardingWindow>("Finish");
    EXPECT_TRUE(runUntil([&] { return !last; }));
    EXPECT_TRUE(runUntil([&] { return !core->viewModel().state().glucoseHistory.empty(); }));
    EXPECT_NE(std::ranges::count(activities, StatusBarActivity::refreshing), 0)
        << "it waits for the schedule";
    EXPECT_TRUE(runUntil([&] { return storedDefaults()->boolean(onboardingCompletedKey); }));

    show(SettingsTab::account);
    const auto before = core->viewModel().state().lastUpdateAt;
    press<SettingsWindow>("reconnect");
    EXPECT_TRUE(runUntil([&] { return core->viewModel().state().lastUpdateAt > before; }));
}

TEST_F(WindowControllersTest, acceptedTermsAreStoredAndLetPollingBegin)
{
    follow(anna);
    core->defaults().set(onboardingCompletedKey, true);
    launch();
    ASSERT_TRUE(runUntil([] { return window<TermsDialog>() != nullptr; }));
    EXPECT_TRUE(core->delegate().waitsForTerms());
    press<TermsDialog>("Not now");
    EXPECT_TRUE(runUntil([] { return !window<TermsDialog>(); }));
    EXPECT_FALSE(hasAcceptedTerms(core->defaults()));
    EXPECT_TRUE(core->delegate().waitsForTerms());

    EXPECT_TRUE(terms->showPendingAgreement());
    terms->show();
    press<TermsDialog>("Accept");
    EXPECT_FALSE(core->delegate().waitsForTerms());
    EXPECT_TRUE(runUntil([&] { return core->viewModel().state().activity.has_value(); }));
    EXPECT_TRUE(runUntil([&] { return hasAcceptedCurrentTerms(*storedDefaults()); }));

    EXPECT_FALSE(terms->showPendingAgreement());
    terms->show();
    ASSERT_TRUE(window<TermsDialog>());
    press<TermsDialog>("Close");
    core->defaults().set(acceptedTermsVersionKey, "0");
    EXPECT_TRUE(terms->showPendingAgreement());
    press<TermsDialog>("Accept");
    EXPECT_TRUE(hasAcceptedCurrentTerms(core->defaults()));
}

TEST_F(WindowControllersTest, aWindowThatClosesInItsOwnHandlerIsNotUsedAfterwards)
{
    follow(anna);
    collect(anna);
    closesOnTheWay = true;
    const std::vector<std::pair<SettingsTab, const char*>> ways{{SettingsTab::account, "signIn"},
                                                                {SettingsTab::about, "showTerms"},
                                                                {SettingsTab::insights, "showInsights"}};
    for (const auto& [tab, way] : ways) {
        show(tab);
        const QPointer<SettingsWindow> shown = window<SettingsWindow>();
        press<SettingsWindow>(way);
        EXPECT_TRUE(runUntil([&] { return !shown; })) << way;
    }
    EXPECT_EQ(places.size(), ways.size());

    show(SettingsTab::insights);
    const auto observer = core->history().observe([](const GlucoseHistoryStatus&) {
        if (auto* const shown = window<SettingsWindow>())
            shown->close();
    });
    press<SettingsWindow>("deleteHistory");
    confirm();
    EXPECT_TRUE(runUntil([] { return !window<SettingsWindow>(); }));
    EXPECT_TRUE(runUntil([&] { return !hasReadings(anna); })) << "a deletion ends without its window";
    show(SettingsTab::insights);
}

}  // namespace
}  // namespace tidewell
