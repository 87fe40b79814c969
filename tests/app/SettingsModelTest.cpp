#include "app/SettingsModel.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

#include "config/AppSettingsFields.h"
#include "config/AppSettingsKeys.h"
#include "config/ConfigTesting.h"
#include "config/ThresholdOptions.h"
#include "history/HistoryWorld.h"
#include "polling/FakeNotificationCenter.h"
#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"
#include "testing/Running.h"

namespace tidewell {

namespace {

/// 2026-11-14 21:58:30 UTC.
const Date evening = dateFromUnix(20771 * 86400.0 + 79110);

class FakeLoginItem final : public LoginItemControlling {
public:
    LoginItemStatus status() override { return now; }
    std::expected<void, std::string> setEnabled(bool enabled) override
    {
        ++changes;
        if (breaks)
            throw std::runtime_error{"broken"};
        if (failure)
            return std::unexpected{*failure};
        now.isEnabled = enabled;
        return {};
    }
    LoginItemStatus now{};
    std::optional<std::string> failure{};
    bool breaks = false;
    int changes = 0;
};

/// Refuses each sign-in until it has readings.
class RefusingAPI final : public GlucoseAPIProtocol {
public:
    asio::awaitable<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>> fetchLatestReadings()
        override
    {
        ++fetches;
        if (!readings.empty())
            co_return readings;
        co_return std::unexpected{GlucoseAPIError{.kind = GlucoseAPIError::Kind::credentialsRefused}};
    }
    asio::awaitable<std::expected<void, GlucoseAPIError>> signInAgain() override
    {
        co_return std::expected<void, GlucoseAPIError>{};
    }
    int fetches = 0;
    std::vector<GlucoseReading> readings{};
};

/// The model over real services: a document in a folder, a history in memory, a desktop that is told how to
/// behave. The workers work only when they are run.
class SettingsModelTest : public testing::Test {
protected:
    SettingsModelTest()
    {
        ::setenv("TZ", "UTC", 1);
        path.report(true);
        // As the program does it.
        following = manager->observe([this](ConfigurationChange change) {
            if (change == ConfigurationChange::appSettings)
                ++announced;
            const auto& account = manager->account();
            if (change == ConfigurationChange::configuration)
                history->follow(account ? HistoryScopeID::of(*account) : std::nullopt);
        });
        EXPECT_TRUE(run(manager->load()));
        makeModel();
    }
    ~SettingsModelTest() override
    {
        model.reset();
        manager.reset();
        history.reset();
        settle();
    }

    void makeModel()
    {
        model = std::make_unique<SettingsModel>(SettingsModel::Services{
            .main = io.get_executor(),
            .workers = workers.get_executor(),
            .clock = clock,
            .configuration = *manager,
            .statusBarViewModel = viewModel,
            .coordinator = coordinator,
            .history = *history,
            .alertDelivery = delivery,
            .loginItem = loginItem,
            .look = [this]() -> asio::awaitable<std::vector<AlertFinding>> {
                ++looks;
                const auto found = findings;
                co_await clock.sleepFor(2s);
                if (breaksLook)
                    throw std::runtime_error{"broken"};
                co_return found;
            },
        });
        observing = model->observe([this] { ++told; });
    }

    /// Lets everything end that can without time passing.
    void settle()
    {
        for (int round = 0; round < 20; ++round) {
            clock.runReady();
            workers.restart();
            workers.poll();
        }
        clock.runReady();
    }
    template <class T>
    T run(asio::awaitable<T> work)
    {
        const Running<T> running{io.get_executor(), std::move(work)};
        settle();
        return running.result();
    }

    static GlucoseAccountConfiguration ada()
    {
        return {.username = "ada", .password = SecretText{"secret"}, .region = "us"};
    }
    void signIn(GlucoseAccountConfiguration account = ada())
    {
        ASSERT_TRUE(run(manager->saveAccount(std::move(account))));
    }

    [[nodiscard]] std::filesystem::path document() const { return folder / "configuration.json"; }
    /// What the next start would find.
    AppSettings onDisk()
    {
        const auto json = parseJson(bytesOf(document()), {.bytes = 1 << 20});
        return json ? decodeAppConfiguration(*json).value_or(AppConfiguration{}).app : AppSettings{};
    }
    /// Changes one preference as a picker or a switch does.
    template <class Value>
    void set(Value AppSettings::* member, Value value)
    {
        AppSettings wanted = model->state().settings;
        wanted.*member = std::move(value);
        model->change(wanted);
    }
    void failHistory(std::int32_t keychainStatus = 0)
    {
        world.plan = {.kind = FaultPlan::Kind::error,
                      .at = 1,
                      .forEver = true,
                      .error = keychainStatus == 0 ? std::make_error_code(std::errc::no_space_on_device)
                                                   : std::error_code{},
                      .status = keychainStatus};
    }
    void save(double mgdL)
    {
        history->save(history->mark(), {readingAt(clock.now(), mgdL)}, clock.now());
        settle();
    }

    asio::io_context workers{1};  ///< Outlives what waits in the other one.
    asio::io_context io{1};
    FakeClock clock{io, evening};
    SeededRandom random{1};
    TemporaryFolder folder;
    std::shared_ptr<FaultyKeychain> keychain = std::make_shared<FaultyKeychain>();
    std::unique_ptr<ConfigurationManager> manager = std::make_unique<ConfigurationManager>(
        io.get_executor(), workers.get_executor(),
        ConfigurationManager::Places{.document = document(), .keychain = keychain});
    UserDefaults defaults;
    StatusBarViewModel viewModel{io.get_executor(), clock, random, [this] {
                                     return manager ? std::optional{manager->settings()} : std::nullopt;
                                 }};
    FakeNetworkPath path;
    NetworkMonitor network{clock, random, path.monitoring()};
    FakeNotificationCenter center{clock};
    UserNotificationGlucoseAlertDelivery delivery{io.get_executor(), center, random};
    StatusBarPollingCoordinator coordinator{{.engine = io.get_executor(),
                                             .main = io.get_executor(),
                                             .clock = clock,
                                             .random = random,
                                             .viewModel = viewModel,
                                             .networkMonitor = network,
                                             .defaults = defaults,
                                             .settings = [this] { return manager->settings(); },
                                             .alertDelivery = delivery}};
    HistoryWorld world;
    std::unique_ptr<HistoryCoordinator> history = std::make_unique<HistoryCoordinator>(
        HistoryCoordinator::Parts{.engine = io.get_executor(),
                                  .main = io.get_executor(),
                                  .workers = workers.get_executor(),
                                  .clock = clock,
                                  .store = std::make_shared<GlucoseHistoryStore>(world.parts())});
    std::shared_ptr<FakeLoginItem> loginItem = std::make_shared<FakeLoginItem>();
    std::vector<AlertFinding> findings{{.subject = "tidewell", .text = "All is well."}};
    int looks = 0;
    bool breaksLook = false;
    std::shared_ptr<void> following;
    int announced = 0;  ///< How often preferences changed for everybody.
    std::unique_ptr<SettingsModel> model;
    std::shared_ptr<void> observing;
    int told = 0;
};

/// Other values for a preference than its present one, among those that the settings offer.
template <class Field>
std::vector<Field> offered(std::string_view key, const Field& present)
{
    if constexpr (std::is_same_v<Field, bool>) {
        return {!present, present};
    } else if constexpr (std::is_same_v<Field, std::string>) {
        return {"mmol/L", "mg/dL"};
    } else if constexpr (std::is_same_v<Field, double>) {
        std::vector<double> values;
        for (const bool mmolL : {false, true})
            for (const auto& option : thresholdOptions(
                     key == "lowGlucoseThreshold" ? ThresholdKind::low : ThresholdKind::high, mmolL))
                values.push_back(option.mgdL);
        return values;
    } else if constexpr (std::is_same_v<Field, std::int64_t>) {
        if (key == "lowAlertRepeatMinutes")
            return {lowAlertRepeatMinuteOptions.begin(), lowAlertRepeatMinuteOptions.end()};
        return {0, 1, 719, 1439};
    } else {
        std::vector<Field> values{graphTimeWindowHourOptions.begin(), graphTimeWindowHourOptions.end()};
        values.emplace_back();
        return values;
    }
}

TEST_F(SettingsModelTest, everyPreferenceAndEveryOptionReachesTheDocumentAndEverybodyWhoListens)
{
    signIn();
    std::size_t options = 0;
    forEachAppSetting([&](std::string_view key, auto member) {
        if (key == "startAtLogin")
            return;
        for (const auto& value : offered(key, model->state().settings.*member)) {
            const auto trace = testing::Message() << key;
            SCOPED_TRACE(trace);
            options += std::is_same_v<decltype(AppSettings{}.*member), double&&> ? 1 : 0;
            const AppSettings before = model->state().settings;
            AppSettings wanted = before;
            wanted.*member = value;
            const int earlier = announced;
            model->change(wanted);
            EXPECT_EQ(model->state().settings, wanted) << "shown at once";
            settle();
            EXPECT_EQ(model->state().settings, wanted);
            EXPECT_EQ(model->state().saveProblem, std::nullopt);
            EXPECT_EQ(announced - earlier, wanted == before ? 0 : 1);
            EXPECT_EQ(onDisk(), wanted);
        }
    });
    EXPECT_EQ(options, 26U + 253U + 15U + 141U);
    EXPECT_EQ(manager->account(), ada());
}

TEST_F(SettingsModelTest, aValueThatIsNotOfferedIsRefusedAndChangesNothing)
{
    ASSERT_TRUE(run(saveSettings(*manager, {.graphTimeWindowHours = 6})));
    const AppSettings before = model->state().settings;
    const auto bytes = bytesOf(document());
    const auto refuse = [&](auto member, auto value) {
        SCOPED_TRACE(testing::PrintToString(value));
        set(member, value);
        EXPECT_EQ(model->state().saveProblem, "The settings do not offer this value.");
        settle();
        EXPECT_EQ(model->state().settings, before);
        EXPECT_EQ(bytesOf(document()), bytes);
    };
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {64.0, 91.0, 72.5, 72.0000001, 0.0, -72.0, -infinity, std::nan("")})
        refuse(&AppSettings::lowGlucoseThreshold, value);
    for (const double value : {107.0, 361.0, 200.5, 1e300, infinity, std::nan("")})
        refuse(&AppSettings::highGlucoseThreshold, value);
    for (const std::string value : {"", "mmol", "mg/dL ", "\xff"})
        refuse(&AppSettings::measurementUnit, value);
    for (const std::int64_t value : {-1, 0, 2, 25, 168})
        refuse(&AppSettings::graphTimeWindowHours, std::optional{value});
    for (const std::int64_t value : {std::int64_t{-1}, std::int64_t{1440}, INT64_MIN, INT64_MAX}) {
        refuse(&AppSettings::quietHoursStartMinutes, value);
        refuse(&AppSettings::quietHoursEndMinutes, value);
    }
    for (const std::int64_t value : {-5, 1, 7, 61})
        refuse(&AppSettings::lowAlertRepeatMinutes, value);
    EXPECT_EQ(announced, 1);

    // Of several values, the good ones are taken; the next good change clears the complaint.
    AppSettings both = before;
    both.lowGlucoseThreshold = 1;
    both.lowAlertRepeatMinutes = 15;
    model->change(both);
    EXPECT_TRUE(model->state().saveProblem);
    settle();
    EXPECT_EQ(onDisk().lowAlertRepeatMinutes, 15);
    EXPECT_EQ(onDisk().lowGlucoseThreshold, before.lowGlucoseThreshold);
    set(&AppSettings::lowGlucoseThreshold, 70.0);
    EXPECT_EQ(model->state().saveProblem, std::nullopt);

    // startAtLogin is not a matter of preferences alone.
    settle();
    const int earlier = announced;
    set(&AppSettings::startAtLogin, true);
    settle();
    EXPECT_FALSE(model->state().settings.startAtLogin);
    EXPECT_EQ(announced, earlier);
}

TEST_F(SettingsModelTest, aStoredThresholdOutsideTheListStaysUntilAnotherOneIsPicked)
{
    ASSERT_TRUE(run(saveSettings(*manager, {.lowGlucoseThreshold = 230.5, .highGlucoseThreshold = 500})));
    set(&AppSettings::measurementUnit, std::string{"mmol/L"});
    set(&AppSettings::alertOnRapidRise, false);
    settle();
    EXPECT_EQ(model->state().saveProblem, std::nullopt);
    EXPECT_EQ(onDisk().lowGlucoseThreshold, 230.5);
    EXPECT_EQ(onDisk().highGlucoseThreshold, 500);
    set(&AppSettings::highGlucoseThreshold, 180.0);
    EXPECT_EQ(model->state().saveProblem,
              "The low threshold must stay below the high one. Change the other one first.");
    EXPECT_EQ(model->state().settings.highGlucoseThreshold, 500);
    set(&AppSettings::lowGlucoseThreshold, 72.0);
    set(&AppSettings::highGlucoseThreshold, 180.0);
    settle();
    EXPECT_EQ(model->state().saveProblem, std::nullopt);
    EXPECT_EQ(onDisk().lowGlucoseThreshold, 72);
    EXPECT_EQ(onDisk().highGlucoseThreshold, 180);
}

TEST_F(SettingsModelTest, aSaveThatFailsSaysWhyAndShowsWhatIsStored)
{
    signIn();
    const auto bytes = bytesOf(document());
    {
        const FullDisk full;
        set(&AppSettings::alertsEnabled, false);
        EXPECT_FALSE(model->state().settings.alertsEnabled);
        EXPECT_EQ(model->state().silentLows.size(), 1U);
        settle();
    }
    EXPECT_TRUE(model->state().settings.alertsEnabled);
    EXPECT_TRUE(model->state().silentLows.empty());
    EXPECT_NE(model->state().saveProblem.value_or("").find("configuration.json"), std::string::npos);
    EXPECT_EQ(bytesOf(document()), bytes);
    EXPECT_EQ(announced, 0);

    // Of two quick changes the first one fails.
    set(&AppSettings::lowGlucoseThreshold, 80.0);
    EXPECT_EQ(model->state().saveProblem, std::nullopt) << "the next try has begun";
    set(&AppSettings::alertOnRapidFall, false);
    clock.runReady();
    workers.restart();
    {
        const FullDisk full;
        EXPECT_EQ(workers.poll(), 1U);
    }
    clock.runReady();
    EXPECT_EQ(model->state().settings.lowGlucoseThreshold, 72);
    EXPECT_FALSE(model->state().settings.alertOnRapidFall) << "still being stored";
    settle();
    EXPECT_TRUE(model->state().saveProblem) << "the second one went well, but not the first";
    EXPECT_EQ(onDisk(), AppSettings{.alertOnRapidFall = false});
    EXPECT_EQ(model->state().settings, onDisk());

    // A file in the way of the folder, and gone again.
    std::filesystem::remove_all(folder.path());
    writeBytes(folder.path(), "");
    set(&AppSettings::alertOnRapidRise, false);
    settle();
    EXPECT_TRUE(model->state().saveProblem);
    EXPECT_TRUE(model->state().settings.alertOnRapidRise);
    std::filesystem::remove(folder.path());
    set(&AppSettings::alertOnRapidRise, false);
    settle();
    EXPECT_EQ(model->state().saveProblem, std::nullopt);
    EXPECT_FALSE(onDisk().alertOnRapidRise);
}

TEST_F(SettingsModelTest, quickChangesHereInTheMenuAndElsewhereAllStay)
{
    set(&AppSettings::lowGlucoseThreshold, 80.0);
    {
        const auto menu =
            manager->changeSettings(manager->settings(), {.graphTimeWindowHours = 12});  // Nobody waits.
    }
    set(&AppSettings::highGlucoseThreshold, 200.0);
    set(&AppSettings::lowGlucoseThreshold, 85.0);
    set(&AppSettings::lowGlucoseThreshold, 65.0);
    set(&AppSettings::measurementUnit, std::string{"mmol/L"});
    AppSettings expected{.measurementUnit = "mmol/L", .lowGlucoseThreshold = 65, .highGlucoseThreshold = 200};
    EXPECT_EQ(model->state().settings, expected);
    // Another process on the same document, which this one has not read yet.
    ConfigurationManager other{
        io.get_executor(), io.get_executor(), {.document = document(), .keychain = keychain}};
    clock.runReady();
    ASSERT_TRUE(run(other.changeSettings({}, {.alertOnMissingData = false})));
    set(&AppSettings::snoozeLowAlerts, false);
    settle();
    expected.graphTimeWindowHours = 12;
    expected.alertOnMissingData = false;
    expected.snoozeLowAlerts = false;
    EXPECT_EQ(onDisk(), expected);
    EXPECT_EQ(model->state().settings, expected);

    ASSERT_TRUE(run(other.changeSettings({}, {.quietHoursEnabled = true})));
    told = 0;
    ASSERT_TRUE(run(manager->load()));
    EXPECT_TRUE(model->state().settings.quietHoursEnabled);
    EXPECT_EQ(told, 1);
    observing.reset();
    set(&AppSettings::alertOnLowThreshold, false);
    settle();
    EXPECT_EQ(told, 1) << "nobody looks any more";
}

TEST_F(SettingsModelTest, startAtLoginShowsWhatIsSoAndItsPreferenceFollows)
{
    EXPECT_EQ(model->state().loginItem, std::nullopt);
    loginItem->now = {.isEnabled = true, .problem = "The program has moved."};
    model->refresh();
    settle();
    EXPECT_EQ(model->state().loginItem, loginItem->now);
    EXPECT_TRUE(model->state().settings.startAtLogin) << "not the preference, which says no";
    EXPECT_FALSE(onDisk().startAtLogin);

    loginItem->now = {};
    model->setStartAtLogin(true);
    EXPECT_TRUE(model->state().isChangingLoginItem);
    settle();
    EXPECT_FALSE(model->state().isChangingLoginItem);
    EXPECT_TRUE(model->state().settings.startAtLogin);
    EXPECT_TRUE(onDisk().startAtLogin);

    // Quickly to and fro: the last wish counts.
    model->setStartAtLogin(false);
    model->setStartAtLogin(true);
    model->setStartAtLogin(false);
    settle();
    EXPECT_FALSE(loginItem->now.isEnabled);
    EXPECT_FALSE(onDisk().startAtLogin);
    EXPECT_EQ(loginItem->changes, 2) << "not more often than needed";
    model->setStartAtLogin(true);
    clock.runReady();
    workers.restart();
    workers.poll();
    clock.runReady();  // The entry is there, its preference is being stored.
    model->setStartAtLogin(false);
    settle();
    EXPECT_FALSE(onDisk().startAtLogin);
    EXPECT_FALSE(model->state().settings.startAtLogin);

    loginItem->failure = "The folder cannot be written to.";
    model->setStartAtLogin(true);
    settle();
    EXPECT_EQ(model->state().loginItemProblem, "The folder cannot be written to.");
    EXPECT_FALSE(model->state().settings.startAtLogin);
    EXPECT_FALSE(onDisk().startAtLogin);
    loginItem->failure.reset();
    loginItem->breaks = true;
    model->setStartAtLogin(true);
    settle();
    EXPECT_FALSE(model->state().isChangingLoginItem);
    EXPECT_NE(model->state().loginItemProblem, "");
    loginItem->breaks = false;
    {
        const FullDisk full;
        model->setStartAtLogin(true);
        EXPECT_EQ(model->state().loginItemProblem, "");
        settle();
    }
    EXPECT_TRUE(model->state().settings.startAtLogin) << "it is so";
    EXPECT_TRUE(model->state().saveProblem);

    // Somebody else changes entry and preference.
    loginItem->now.isEnabled = false;
    ASSERT_TRUE(run(manager->changeSettings({.startAtLogin = false}, {.startAtLogin = true})));
    loginItem->now.isEnabled = true;
    ASSERT_TRUE(run(manager->changeSettings({.startAtLogin = true}, {.startAtLogin = false})));
    EXPECT_TRUE(model->state().settings.startAtLogin);
}

TEST_F(SettingsModelTest, aTestAlertSaysWhatBecameOfIt)
{
    const auto send = [this] {
        model->sendTestAlert();
        EXPECT_TRUE(model->state().isSendingTestAlert);
        EXPECT_EQ(model->state().testAlertMessage, "");
        model->sendTestAlert();  // One at a time.
        settle();
        clock.advance(5s);
        EXPECT_FALSE(model->state().isSendingTestAlert);
        return model->state().testAlertMessage;
    };
    center.delay = 1s;
    center.state = NotificationAuthorizationState::denied;
    EXPECT_EQ(send(), "Notifications are disabled.");
    EXPECT_EQ(model->state().authorization, NotificationAuthorizationState::denied);
    center.state = NotificationAuthorizationState::notDetermined;
    EXPECT_EQ(send(), "Test alert sent.");
    EXPECT_EQ(center.requests, 1);
    EXPECT_EQ(model->state().authorization, NotificationAuthorizationState::authorized);
    ASSERT_EQ(center.posted.size(), 1U);
    EXPECT_EQ(center.posted.front().title, "Tidewell test alert");
    center.failure = NotificationError{};
    EXPECT_EQ(send(), "Test alert could not be sent.");
    EXPECT_EQ(looks, 3) << "what the test showed is among the findings";
}

TEST_F(SettingsModelTest, looksAtEverythingWhenAskedAndOnceMoreWhenAskedMeanwhile)
{
    EXPECT_EQ(model->state().authorization, std::nullopt);
    EXPECT_TRUE(model->state().findings.empty());
    signIn();
    {
        GlucoseHistoryStore elsewhere{world.parts()};
        ASSERT_TRUE(elsewhere.attach(scopeOf("ada")));
        ASSERT_TRUE(elsewhere.enable(30, currentConsentVersion, clock.now()));
    }
    model->refresh();
    EXPECT_TRUE(model->state().isLooking);
    settle();
    EXPECT_EQ(model->state().authorization, NotificationAuthorizationState::authorized);
    EXPECT_TRUE(model->state().history.configuration.isEnabled) << "switched on by another process";
    findings.front().text = "All is still well.";
    model->refresh();
    model->refresh();
    clock.advance(2s);
    EXPECT_EQ(model->state().findings.front().text, "All is well.");
    EXPECT_TRUE(model->state().isLooking);
    clock.advance(2s);
    EXPECT_EQ(model->state().findings, findings);
    EXPECT_FALSE(model->state().isLooking);
    EXPECT_EQ(looks, 2);

    EXPECT_EQ(model->state().lookedAt, clock.now());

    viewModel.setAlertProblem("Alerts are off.\nSwitch them on.");
    viewModel.setCurrentError(ErrorInfo{.title = "Authentication failed", .needsSignIn = true});
    EXPECT_EQ(model->state().alertProblem, "Alerts are off.\nSwitch them on.");
    EXPECT_EQ(model->state().accountProblem->title, "Authentication failed");
    EXPECT_EQ(model->state().account->username, "ada");
    EXPECT_TRUE(model->state().account->password.empty());
    EXPECT_TRUE(model->state().hasPassword);
}

TEST_F(SettingsModelTest, looksAgainByItselfWhenWhatItDependsOnChanges)
{
    const auto& state = model->state();
    signIn();
    set(&AppSettings::alertOnRapidFall, false);
    settle();
    clock.advance(10s);
    EXPECT_EQ(looks, 0) << "nobody has asked yet";
    model->refresh();
    settle();
    clock.advance(2s);
    EXPECT_EQ(looks, 1);

    const std::vector<std::pair<const char*, std::function<void()>>> changes{
        {"a preference", [this] { set(&AppSettings::alertsEnabled, false); }},
        {"a preference again", [this] { set(&AppSettings::alertsEnabled, true); }},
        {"snooze", [this] { coordinator.snoozeAlerts(30min); }},
        {"account problem", [this] { viewModel.setCurrentError(ErrorInfo{.title = "Refused"}); }},
        {"alerts", [this] { viewModel.setAlertProblem("Alerts are not shown"); }},
        {"reading", [this] { viewModel.setGlucoseHistory({readingAt(clock.now(), 101)}); }},
        {"saved history", [this] { model->enableHistory(30); }},
        {"account", [this] { model->signOut(false); }},
    };
    for (const auto& [what, change] : changes) {
        SCOPED_TRACE(what);
        clock.advance(1min);
        ASSERT_FALSE(state.isLooking);
        const auto before = state.lookedAt;
        const int earlier = looks;
        change();
        settle();
        EXPECT_TRUE(state.isLooking) << "the findings are old from now on";
        EXPECT_EQ(looks, earlier) << "others may follow";
        clock.advance(1s);
        EXPECT_EQ(looks, earlier + 1);
        EXPECT_EQ(state.lookedAt, before);
        clock.advance(2s);
        EXPECT_FALSE(state.isLooking);
        EXPECT_EQ(state.lookedAt, clock.now());
        EXPECT_EQ(looks, earlier + 1);
    }

    // Changes without a pause: one look at a time, and seconds between them; the last one sees the last.
    clock.advance(1min);
    const int earlier = looks;
    for (int i = 0; i < 100; ++i) {
        viewModel.setAlertProblem(i % 2 == 0 ? "One" : "Another");
        clock.advance(100ms);
    }
    findings.front().text = "The last.";
    viewModel.setAlertProblem("The last");
    clock.advance(1min);
    EXPECT_LE(looks, earlier + 4);
    EXPECT_GE(looks, earlier + 3);
    EXPECT_EQ(state.findings, findings);
    EXPECT_FALSE(state.isLooking);

    const auto idle = clock.sleepers();
    viewModel.setAlertProblem("Due");
    settle();
    EXPECT_GT(clock.sleepers(), idle);
    model.reset();
    settle();
    EXPECT_EQ(clock.sleepers(), idle) << "nobody wakes up for nothing";
}

TEST_F(SettingsModelTest, aLookThatBreaksOffLeavesTheOldOneWithItsTime)
{
    model->refresh();
    settle();
    clock.advance(2s);
    const auto at = model->state().lookedAt;
    ASSERT_EQ(at, clock.now());
    breaksLook = true;
    model->refresh();
    settle();
    clock.advance(2s);
    EXPECT_EQ(looks, 2);
    EXPECT_EQ(model->state().lookedAt, at);
    EXPECT_EQ(model->state().findings, findings);
    EXPECT_FALSE(model->state().isLooking);
}

TEST_F(SettingsModelTest, silentLowsFollowTheClockAndTheSnooze)
{
    const auto inForce = [this] {
        std::vector<SilentLowCause> causes;
        for (const auto& warning : model->state().silentLows)
            if (warning.isInForce)
                causes.push_back(warning.cause);
        return causes;
    };
    using Causes = std::vector<SilentLowCause>;
    const auto idle = clock.sleepers();
    set(&AppSettings::quietHoursEnabled, true);
    settle();
    ASSERT_EQ(model->state().silentLows.size(), 1U);
    EXPECT_EQ(inForce(), Causes{});
    clock.advance(89s);
    EXPECT_EQ(inForce(), Causes{});
    told = 0;
    clock.advance(1s);
    EXPECT_EQ(inForce(), Causes{SilentLowCause::quietHours}) << "22:00";
    coordinator.snoozeAlerts(30min);
    settle();
    EXPECT_EQ(inForce(), (Causes{SilentLowCause::quietHours, SilentLowCause::snooze}));
    clock.advance(30min);
    EXPECT_EQ(inForce(), Causes{SilentLowCause::quietHours});
    clock.advance(8h + 30min - 1s);
    EXPECT_EQ(inForce(), Causes{SilentLowCause::quietHours});
    clock.advance(1s);
    EXPECT_EQ(inForce(), Causes{}) << "07:00";
    EXPECT_EQ(told, 4) << "not each minute";

    set(&AppSettings::allowLowAlertsDuringQuietHours, true);
    set(&AppSettings::allowLowAlertsDuringQuietHours, false);
    settle();
    coordinator.resumeAlerts();
    clock.setWallClock(evening);
    clock.advance(2min);
    EXPECT_EQ(inForce(), Causes{SilentLowCause::quietHours});
    set(&AppSettings::alertOnLowThreshold, false);
    settle();
    EXPECT_EQ(inForce(), Causes{SilentLowCause::lowAlertsOff});
    EXPECT_EQ(clock.sleepers(), idle) << "nobody wakes up for nothing";
    set(&AppSettings::alertOnLowThreshold, true);
    settle();
    EXPECT_GT(clock.sleepers(), idle);
    model.reset();
    settle();
    EXPECT_EQ(clock.sleepers(), idle);
}

TEST_F(SettingsModelTest, savedHistoryIsSwitchedAndDeletedAndEachOutcomeSaid)
{
    const auto& state = model->state();
    const auto says = [&](std::string_view message, bool failed) {
        EXPECT_TRUE(state.isChangingHistory);
        EXPECT_EQ(state.historyMessage, "");
        model->deleteHistory(true);  // Something else is under way.
        settle();
        EXPECT_FALSE(state.isChangingHistory);
        EXPECT_EQ(state.historyMessage, message);
        EXPECT_EQ(state.historyFailed, failed);
    };
    using enum GlucoseHistoryError;
    model->enableHistory(90);
    says(description(accountRequired), true);
    signIn();
    model->enableHistory(7);
    says(description(invalidRetention), true);
    failHistory(keychainStatus::interactionNotAllowed);
    model->enableHistory(90);
    says(description(keychainFailure), true);
    EXPECT_FALSE(state.history.configuration.isEnabled);
    world.plan = {};
    model->enableHistory(90);
    says("Saving is on. Readings are kept for 90 days.", false);
    EXPECT_TRUE(state.history.configuration.isEnabled);
    EXPECT_EQ(state.history.configuration.consentVersion, currentConsentVersion);
    save(101);
    model->setHistoryRetention(30);
    says("Readings are kept for 30 days.", false);
    EXPECT_EQ(state.history.configuration.retentionDays, 30);
    model->pauseHistory();
    says("Saving is off. What is saved stays.", false);
    EXPECT_FALSE(state.history.configuration.isEnabled);
    EXPECT_EQ(world.keychain.items.size(), 1U);
    model->enableHistory(30);
    says("Saving is on. Readings are kept for 30 days.", false);
    failHistory();
    model->deleteHistory(false);
    says(description(storageFailure), true);
    world.plan = {};
    model->deleteHistory(false);
    says("The saved history was deleted. Saving is off.", false);
    EXPECT_TRUE(world.keychain.items.empty());
    model->deleteHistory(true);
    says("All saved history was deleted. Saving is off.", false);
}

TEST_F(SettingsModelTest, signingOutKeepsOrDeletesHistoryAndNeverLosesTheAccountOnTheWay)
{
    const auto& state = model->state();
    const auto enabled = [this] {
        model->enableHistory(90);
        settle();
        save(101);
    };
    model->signOut(true);
    EXPECT_FALSE(state.isChangingAccount) << "nobody is signed in";

    signIn();
    enabled();
    failHistory();
    model->signOut(true);
    EXPECT_TRUE(state.isChangingAccount);
    model->signOut(false);
    settle();
    EXPECT_FALSE(state.isChangingAccount);
    EXPECT_EQ(state.accountMessage, "You are still signed in, since the saved history could not be deleted.");
    EXPECT_TRUE(state.accountFailed);
    EXPECT_EQ(state.historyMessage, description(GlucoseHistoryError::storageFailure));
    EXPECT_TRUE(state.historyFailed);
    EXPECT_EQ(manager->account(), ada());
    world.plan = {};
    {
        const FullDisk full;
        model->signOut(false);
        settle();
    }
    EXPECT_NE(state.accountMessage.find("could not be saved"), std::string::npos) << state.accountMessage;
    EXPECT_TRUE(state.accountMessage.starts_with("You are still signed in. ")) << state.accountMessage;
    EXPECT_TRUE(state.accountFailed);
    EXPECT_EQ(state.account->username, "ada");

    model->signOut(false);
    settle();
    EXPECT_EQ(state.accountMessage, "You are signed out.");
    EXPECT_FALSE(state.accountFailed);
    EXPECT_EQ(state.account, std::nullopt);
    EXPECT_FALSE(state.hasPassword);
    EXPECT_EQ(world.keychain.items.size(), 1U) << "saved history stays";
    EXPECT_FALSE(state.history.scope);

    signIn();
    EXPECT_EQ(state.accountMessage, "");
    EXPECT_TRUE(state.history.configuration.isEnabled);
    model->signOut(true);
    settle();
    EXPECT_EQ(state.accountMessage, "You are signed out. The saved readings are deleted.");
    EXPECT_TRUE(world.keychain.items.empty());

    // A password that cannot be removed is told, since it is still there.
    signIn();
    keychain->failAlways = true;
    model->signOut(false);
    settle();
    EXPECT_EQ(state.account, std::nullopt);
    EXPECT_NE(state.accountMessage.find("could not be removed"), std::string::npos) << state.accountMessage;
    keychain->failAlways = false;

    // An account of nobody has no history; one that came meanwhile is not signed out.
    auto nobody = ada();
    nobody.provider = GlucoseProvider::libreLinkUp;
    signIn(nobody);
    model->signOut(true);
    settle();
    EXPECT_EQ(state.accountMessage, "You are signed out.");
    signIn();
    enabled();
    model->signOut(true);
    auto grace = ada();
    grace.username = "grace";
    signIn(grace);
    EXPECT_EQ(manager->account(), grace);
    EXPECT_EQ(state.accountMessage, "Another account was signed in meanwhile. It stays.");
    EXPECT_TRUE(world.keychain.items.empty()) << "the history was that of the first one";
}

TEST_F(SettingsModelTest, reconnectingAsksTheServiceOnceMore)
{
    const auto api = std::make_shared<RefusingAPI>();
    signIn();
    coordinator.start(api, GlucoseProvider::dexcom);
    clock.advance(1h);
    ASSERT_TRUE(model->state().accountProblem);
    const int before = api->fetches;
    clock.advance(1h);
    EXPECT_EQ(api->fetches, before) << "it waits for the person";
    model->reconnect();
    EXPECT_TRUE(model->state().isReconnecting);
    clock.advance(1min);
    EXPECT_GT(api->fetches, before);
    EXPECT_FALSE(model->state().isReconnecting);
    EXPECT_EQ(model->state().accountMessage, "It did not work. What is wrong stands above.");
    EXPECT_TRUE(model->state().accountFailed);

    api->readings = {readingAt(clock.now(), 101)};
    model->reconnect();
    EXPECT_EQ(model->state().accountMessage, "");
    clock.advance(1min);
    EXPECT_FALSE(model->state().isReconnecting);
    EXPECT_EQ(model->state().accountMessage, "The service has answered.");
    EXPECT_FALSE(model->state().accountFailed);
    coordinator.stop();

    // Nobody is asked, and nothing is promised.
    for (const ErrorInfo& problem : {ErrorInfo{.needsTerms = true}, ErrorInfo{.needsSetup = true}}) {
        viewModel.setCurrentError(problem);
        model->reconnect();
        EXPECT_FALSE(model->state().isReconnecting);
    }
    viewModel.setCurrentError({});
    model->reconnect();
    clock.advance(1min);
    EXPECT_FALSE(model->state().isReconnecting);
    EXPECT_EQ(model->state().accountMessage, "No answer has come.");
    EXPECT_TRUE(model->state().accountFailed);
}

TEST_F(SettingsModelTest, whatWasBegunEndsByItselfWhenTheModelGoes)
{
    signIn();
    model->enableHistory(90);
    settle();
    model->refresh();
    set(&AppSettings::lowGlucoseThreshold, 80.0);
    model->setStartAtLogin(true);
    model->sendTestAlert();
    model->setHistoryRetention(30);
    model->signOut(true);
    told = 0;
    model.reset();
    settle();
    clock.advance(1min);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(onDisk(), (AppSettings{.lowGlucoseThreshold = 80, .startAtLogin = true}));
    EXPECT_TRUE(loginItem->now.isEnabled);
    EXPECT_EQ(center.posted.size(), 1U);
    EXPECT_EQ(manager->account(), std::nullopt);
    EXPECT_TRUE(world.keychain.items.empty());

    // An observer may let the model go.
    makeModel();
    observing = model->observe([this] { model.reset(); });
    set(&AppSettings::lowGlucoseThreshold, 70.0);
    EXPECT_FALSE(model);
    settle();
    EXPECT_EQ(onDisk().lowGlucoseThreshold, 70);
}

}  // namespace

}  // namespace tidewell
