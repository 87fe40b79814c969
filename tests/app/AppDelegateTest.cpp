#include "app/AppDelegate.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "app/TermsAgreement.h"
#include "config/MemoryKeychainItemStore.h"
#include "polling/FakeNotificationCenter.h"
#include "support/AtomicFile.h"
#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"

namespace tidewell {

namespace {

const Date start = dateFromUnix(1'700'000'000);

/// Answers each fetch with one reading of that age, or with an error.
class ScriptedAPI final : public GlucoseAPIProtocol {
public:
    explicit ScriptedAPI(Clock& clock) : clock_{clock} {}
    asio::awaitable<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>> fetchLatestReadings()
        override
    {
        ++fetches;
        if (refused)
            co_return std::unexpected{GlucoseAPIError{.kind = GlucoseAPIError::Kind::credentialsRefused}};
        co_return std::vector{
            makeReading(120, "Flat", clock_.now() - Seconds{60}, Seconds{300}, GlucoseProvider::dexcom)};
    }
    asio::awaitable<std::expected<void, GlucoseAPIError>> signInAgain() override
    {
        co_return std::expected<void, GlucoseAPIError>{};
    }
    int fetches = 0;
    bool refused = false;

private:
    Clock& clock_;
};

class FakeWorkspace final : public WorkspaceObserving {
public:
    std::shared_ptr<void> observe(WorkspaceEvent event, std::function<void()> handler) override
    {
        auto held = std::make_shared<std::function<void()>>(std::move(handler));
        handlers_.emplace_back(event, held);
        return held;
    }
    void send(WorkspaceEvent event)
    {
        for (const auto& [wanted, handler] : handlers_)
            if (const auto held = handler.lock(); held && wanted == event)
                (*held)();
    }
    [[nodiscard]] bool observed() const
    {
        return std::ranges::any_of(handlers_, [](const auto& entry) { return !entry.second.expired(); });
    }

private:
    std::vector<std::pair<WorkspaceEvent, std::weak_ptr<std::function<void()>>>> handlers_;
};

/// Writes down who is called, in order.
struct Recorder final : OnboardingCoordinating,
                        TermsAgreementCoordinating,
                        FeedbackPromptControlling,
                        UpdateControlling {
    std::vector<std::string> calls;
    bool pendingTerms = false;
    void showOnboarding() override { calls.emplace_back("onboarding"); }
    void checkAgreement() override { calls.emplace_back("terms"); }
    bool showPendingAgreement() override { return pendingTerms; }
    void noteLaunch() override { calls.emplace_back("launch"); }
    void installDownloadedUpdate(std::string_view reason) override { calls.emplace_back(reason); }
};

class AppDelegateTest : public testing::Test {
protected:
    AppDelegateTest()
    {
        std::string pattern = testing::TempDir() + "tidewell-app-XXXXXX";
        folder = ::mkdtemp(pattern.data());
        makeManager();
        path.report(true);
        acceptTerms(defaults, start);
    }
    ~AppDelegateTest() override
    {
        delegate.reset();
        manager.reset();
        io.restart();
        io.poll();
        std::filesystem::remove_all(folder);
    }

    void makeManager()
    {
        manager = std::make_unique<ConfigurationManager>(
            io.get_executor(), io.get_executor(),
            ConfigurationManager::Places{.document = folder / "configuration.json", .keychain = keychain});
    }

    /// Stores an account as an earlier run would have.
    void storeAccount()
    {
        asio::co_spawn(io, manager->saveAccount(account()), asio::detached);
        settle();
        makeManager();
    }

    static GlucoseAccountConfiguration account(std::string username = "ada")
    {
        return {.username = std::move(username), .password = SecretText{"secret"}, .region = "us"};
    }

    void launch()
    {
        delegate = std::make_unique<AppDelegate>(AppDelegate::Services{
            .main = io.get_executor(),
            .clock = clock,
            .configurationManager = *manager,
            .defaults = defaults,
            .statusBarViewModel = viewModel,
            .pollingCoordinator = coordinator,
            .makeAPIClient =
                [this](const GlucoseAccountConfiguration& wanted) {
                    clientsMadeFor.push_back(wanted.patientID.value_or(wanted.username));
                    return api;
                },
            .ensureStatusItem = [this] { recorder.calls.emplace_back("item"); },
            .workspace = &workspace,
            .onboardingCoordinator = &recorder,
            .termsAgreementCoordinator = asksForTerms ? &recorder : nullptr,
            .feedbackPromptController = &recorder,
            .updateController = &recorder,
            .lookAtAlertPath = [this]() -> asio::awaitable<AlertPath> {
                ++looks;
                co_return alertPath;
            },
            .pollingRole = role,
        });
        delegate->applicationDidFinishLaunching();
        settle();
    }

    void settle() { clock.advance(Seconds{0}); }

    asio::io_context io{1};
    FakeClock clock{io, start};
    SeededRandom random{1};
    std::filesystem::path folder;
    std::shared_ptr<MemoryKeychainItemStore> keychain = std::make_shared<MemoryKeychainItemStore>();
    std::unique_ptr<ConfigurationManager> manager;
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
    std::shared_ptr<ScriptedAPI> api = std::make_shared<ScriptedAPI>(clock);
    FakeWorkspace workspace;
    Recorder recorder;
    AlertPath alertPath{.serverAnswers = true, .soundOutput = true};
    int looks = 0;
    PollingRole role = PollingRole::polls;
    bool asksForTerms = true;
    std::vector<std::string> clientsMadeFor;
    std::unique_ptr<AppDelegate> delegate;
};

using Calls = std::vector<std::string>;

TEST_F(AppDelegateTest, nothingPollsBeforeOnboardingIsCompleted)
{
    storeAccount();
    launch();
    EXPECT_EQ(recorder.calls, (Calls{"item", "launch", "onboarding"}));
    workspace.send(WorkspaceEvent::didWake);
    clock.advance(1h);
    EXPECT_EQ(api->fetches, 0);

    EXPECT_FALSE(delegate->applicationShouldHandleReopen());
    EXPECT_EQ(recorder.calls.back(), "onboarding");
}

TEST_F(AppDelegateTest, firstRunStepsThatWereLeftAreWhatIsMissingOnceAnAccountIsStored)
{
    const auto error = [this] { return viewModel.state().currentError.value_or(ErrorInfo{}); };
    launch();
    EXPECT_EQ(error().title, "Sign in required");
    asio::co_spawn(io, manager->saveAccount(account()), asio::detached);
    settle();
    EXPECT_EQ(error().title, "Setting up is not finished");
    EXPECT_TRUE(error().needsSetup);
    EXPECT_FALSE(error().needsSignIn);

    // Another start finds the same, and nothing but the end of the steps changes it.
    delegate->applicationWillTerminate();
    makeManager();
    launch();
    delegate->storedStateDidReload();
    delegate->termsDidChange();
    workspace.send(WorkspaceEvent::didWake);
    coordinator.reconnect();
    asio::co_spawn(io, manager->saveAccount(account("grace")), asio::detached);
    asio::co_spawn(io, coordinator.refreshNow(), asio::detached);
    clock.advance(1h);
    EXPECT_EQ(error().title, "Setting up is not finished");
    EXPECT_EQ(api->fetches, 0);
    EXPECT_TRUE(center.posted.empty()) << "nobody was promised alerts yet";
    asio::co_spawn(io, manager->saveAccount(std::nullopt), asio::detached);
    settle();
    EXPECT_EQ(error().title, "Sign in required");

    asio::co_spawn(io, manager->saveAccount(account()), asio::detached);
    settle();
    defaults.set(onboardingCompletedKey, true);
    delegate->storedStateDidReload();
    clock.advance(6s);
    EXPECT_FALSE(viewModel.state().currentError);
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");
}

TEST_F(AppDelegateTest, aStoredAccountIsPolledFiveSecondsAfterTheStart)
{
    storeAccount();
    defaults.set(onboardingCompletedKey, true);
    launch();
    EXPECT_EQ(recorder.calls, (Calls{"item", "launch", "terms"}));
    clock.advance(4900ms);
    EXPECT_EQ(api->fetches, 0);
    clock.advance(200ms);
    EXPECT_EQ(api->fetches, 1);
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");

    EXPECT_TRUE(delegate->applicationShouldHandleReopen());
    recorder.pendingTerms = true;
    EXPECT_FALSE(delegate->applicationShouldHandleReopen());
}

TEST_F(AppDelegateTest, withoutAnAccountTheItemAsksForASignInAndThenFollowsIt)
{
    defaults.set(onboardingCompletedKey, true);
    launch();
    ASSERT_TRUE(viewModel.state().currentError);
    EXPECT_EQ(viewModel.state().currentError->title, "Sign in required");
    clock.advance(1h);
    EXPECT_EQ(api->fetches, 0);

    asio::co_spawn(io, manager->saveAccount(account("grace")), asio::detached);
    clock.advance(6s);
    EXPECT_EQ(clientsMadeFor, Calls{"grace"});
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");

    asio::co_spawn(io, manager->saveAccount(std::nullopt), asio::detached);
    settle();
    const int fetches = api->fetches;
    EXPECT_EQ(viewModel.state().statusTitle, "");
    EXPECT_EQ(viewModel.state().currentError->title, "Sign in required");
    clock.advance(1h);
    EXPECT_EQ(api->fetches, fetches);
}

TEST_F(AppDelegateTest, anAccountFromAnotherProcessEndsTheFirstRunSteps)
{
    launch();
    asio::co_spawn(io, manager->saveAccount(account()), asio::detached);
    clock.advance(1h);
    EXPECT_EQ(api->fetches, 0);

    defaults.set(onboardingCompletedKey, true);
    delegate->storedStateDidReload();
    clock.advance(6s);
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");
    delegate->storedStateDidReload();
    clock.advance(6s);
    EXPECT_EQ(clientsMadeFor.size(), 1U) << "an account that is followed already is left alone";
}

TEST_F(AppDelegateTest, signingInElsewhereToTheSameAccountIsAnotherTry)
{
    storeAccount();
    defaults.set(onboardingCompletedKey, true);
    api->refused = true;
    launch();
    clock.advance(1h);
    ASSERT_EQ(viewModel.state().currentError->title, "Authentication failed");
    const int fetches = api->fetches;
    delegate->storedStateDidReload();
    clock.advance(1h);
    EXPECT_EQ(api->fetches, fetches) << "nobody signed in";

    api->refused = false;
    defaults.set(accountConfirmedAtKey, clock.now());
    delegate->storedStateDidReload();
    clock.advance(1s);
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");
    EXPECT_FALSE(viewModel.state().currentError);
    delegate->storedStateDidReload();
    clock.advance(1s);
    EXPECT_EQ(api->fetches, fetches + 1);
}

TEST_F(AppDelegateTest, anotherPersonOfTheSameAccountNeverGetsTheValuesOfTheFormer)
{
    auto follower = account();
    follower.provider = GlucoseProvider::libreLinkUp;
    follower.patientID = "grace";
    asio::co_spawn(io, manager->saveAccount(follower), asio::detached);
    settle();
    makeManager();
    defaults.set(onboardingCompletedKey, true);
    launch();
    clock.advance(6s);
    ASSERT_EQ(viewModel.state().statusTitle, "120 →");

    api->refused = true;
    follower.patientID = "ben";
    asio::co_spawn(io, manager->saveAccount(follower), asio::detached);
    clock.advance(1min);
    EXPECT_EQ(clientsMadeFor, (Calls{"grace", "ben"}));
    EXPECT_EQ(viewModel.state().statusTitle, "");
    EXPECT_TRUE(viewModel.state().glucoseHistory.empty());
}

TEST_F(AppDelegateTest, followingShowsWhatOthersTellAndPollingGoesOnFromThere)
{
    storeAccount();
    defaults.set(onboardingCompletedKey, true);
    role = PollingRole::follows;
    launch();
    clock.advance(1h);
    EXPECT_TRUE(clientsMadeFor.empty());
    EXPECT_EQ(viewModel.state().activity, StatusBarActivity::loading);

    // What the coordinator of another process would have shown.
    const auto tell = [this](double mgdL) {
        const auto told = makeReading(mgdL, "Flat", clock.now(), Seconds{300}, GlucoseProvider::dexcom);
        viewModel.setGlucoseHistory({told});
        viewModel.presentReading(told, clock.now());
        viewModel.finishActivity();
    };
    tell(150);
    delegate->setPollingRole(PollingRole::polls, {.glucoseHistory = viewModel.state().glucoseHistory});
    settle();
    EXPECT_EQ(viewModel.state().statusTitle, "150 →") << "a change of hands shows nowhere";
    EXPECT_EQ(api->fetches, 0);
    clock.advance(330s);
    EXPECT_EQ(api->fetches, 1);
    EXPECT_EQ(viewModel.state().glucoseHistory.size(), 2U);

    delegate->setPollingRole(PollingRole::follows);
    workspace.send(WorkspaceEvent::didWake);
    clock.advance(10min);
    EXPECT_EQ(api->fetches, 1);
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");

    asio::co_spawn(io, manager->saveAccount(account("grace")), asio::detached);
    settle();
    EXPECT_EQ(viewModel.state().statusTitle, "") << "another person's value";
    EXPECT_TRUE(viewModel.state().glucoseHistory.empty());
    clock.advance(10min);
    EXPECT_EQ(api->fetches, 1);
    delegate->setPollingRole(PollingRole::polls);
    clock.advance(6s);
    EXPECT_EQ(clientsMadeFor, (Calls{"ada", "grace"}));
    EXPECT_EQ(api->fetches, 2);
}

TEST_F(AppDelegateTest, nothingIsPolledBeforeTermsWereAcceptedAndAtOnceAfterwards)
{
    const auto title = [this] {
        const auto& error = viewModel.state().currentError;
        return error && error->needsTerms ? error->title : "";
    };
    storeAccount();
    defaults.remove(acceptedTermsVersionKey);
    defaults.set(onboardingCompletedKey, true);
    launch();
    EXPECT_EQ(recorder.calls, (Calls{"item", "launch", "terms"}));
    EXPECT_EQ(title(), "Terms of use");
    EXPECT_TRUE(delegate->waitsForTerms());

    const std::vector<std::function<void()>> attempts{
        [&] { workspace.send(WorkspaceEvent::didWake); },
        [&] { coordinator.reconnect(); },
        [&] { asio::co_spawn(io, coordinator.refreshNow(), asio::detached); },
        [&] { asio::co_spawn(io, manager->saveAccount(account("grace")), asio::detached); },
        [&] { delegate->setPollingRole(PollingRole::follows); },
        [&] { delegate->setPollingRole(PollingRole::polls); },
        [&] {
            defaults.set(accountConfirmedAtKey, clock.now());
            delegate->storedStateDidReload();
        },
        [&] { delegate->termsDidChange(); },
    };
    for (std::size_t i = 0; i < attempts.size(); ++i) {
        attempts[i]();
        clock.advance(1h);
        EXPECT_EQ(title(), "Terms of use") << i;
        EXPECT_EQ(api->fetches, 0) << i;
    }
    EXPECT_TRUE(clientsMadeFor.empty());
    EXPECT_EQ(std::ranges::count(recorder.calls, "terms"), 1) << "the sheet does not come again and again";
    ASSERT_FALSE(center.posted.empty()) << "whoever relies on alerts must hear that none come";
    EXPECT_TRUE(center.posted.front().body.starts_with("Terms of use. ")) << center.posted.front().body;

    acceptTerms(defaults, clock.now());
    delegate->termsDidChange();
    settle();
    EXPECT_EQ(title(), "");
    EXPECT_EQ(viewModel.state().activity, StatusBarActivity::loading);
    clock.advance(6s);
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");
    EXPECT_EQ(clientsMadeFor, Calls{"grace"});
    delegate->termsDidChange();
    delegate->storedStateDidReload();
    clock.advance(6s);
    EXPECT_EQ(clientsMadeFor.size(), 1U) << "what is polled already is left alone";
}

TEST_F(AppDelegateTest, termsThatAnotherProcessAcceptedCountHereAndWhoAsksNobodyNeedsNone)
{
    storeAccount();
    defaults.remove(acceptedTermsVersionKey);
    defaults.set(onboardingCompletedKey, true);
    launch();
    acceptTerms(defaults, clock.now());
    delegate->storedStateDidReload();
    clock.advance(6s);
    EXPECT_EQ(api->fetches, 1);
    delegate->applicationWillTerminate();

    defaults.remove(acceptedTermsVersionKey);
    asksForTerms = false;
    launch();
    clock.advance(6s);
    EXPECT_EQ(api->fetches, 2);
}

TEST_F(AppDelegateTest, newerTermsAreShownWhilePollingGoesOnAlsoWhenTheAccountComesLater)
{
    defaults.set(acceptedTermsVersionKey, "0");
    ASSERT_FALSE(hasAcceptedCurrentTerms(defaults));
    defaults.set(onboardingCompletedKey, true);
    launch();
    EXPECT_EQ(recorder.calls, Calls{"item"}) << "nobody is asked before there is an account";
    asio::co_spawn(io, manager->saveAccount(account()), asio::detached);
    clock.advance(6s);
    EXPECT_EQ(recorder.calls, (Calls{"item", "terms"}));
    EXPECT_FALSE(delegate->waitsForTerms());
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");

    EXPECT_TRUE(viewModel.state().termsPending) << "who said \"Not now\" finds them in the menu";
    EXPECT_FALSE(viewModel.state().currentError);
    delegate->setPollingRole(PollingRole::follows);
    settle();
    EXPECT_TRUE(viewModel.state().termsPending);
    acceptTerms(defaults, clock.now());
    delegate->termsDidChange();
    EXPECT_FALSE(viewModel.state().termsPending);
}

TEST_F(AppDelegateTest, followingShowsNothingBeforeTermsWereAccepted)
{
    storeAccount();
    defaults.remove(acceptedTermsVersionKey);
    defaults.set(onboardingCompletedKey, true);
    role = PollingRole::follows;
    launch();
    EXPECT_TRUE(delegate->waitsForTerms());
    acceptTerms(defaults, clock.now());
    delegate->termsDidChange();
    settle();
    EXPECT_EQ(viewModel.state().activity, StatusBarActivity::loading);
    EXPECT_FALSE(viewModel.state().currentError);
    clock.advance(1h);
    EXPECT_EQ(api->fetches, 0) << "another process polls";
}

TEST_F(AppDelegateTest, aDamagedDocumentSaysSoAndIsLeftAlone)
{
    ASSERT_FALSE(writeFileAtomically(folder / "configuration.json", "{\"app\":"));
    defaults.set(onboardingCompletedKey, true);
    launch();
    ASSERT_TRUE(viewModel.state().currentError);
    EXPECT_NE(viewModel.state().currentError->message.find("configuration.json"), std::string::npos);
    EXPECT_EQ(readFile(folder / "configuration.json").value(), "{\"app\":");
}

/// A secret store that is away until it is told otherwise.
class LateKeychain final : public KeychainItemStoring {
public:
    explicit LateKeychain(std::shared_ptr<KeychainItemStoring> behind) : behind_{std::move(behind)} {}
    KeychainLookup read(std::string_view service, std::string_view item) override
    {
        ++reads;
        if (status != keychainStatus::success)
            return KeychainFailure{status};
        return behind_->read(service, item);
    }
    std::int32_t write(std::string_view service, std::string_view item, const SecretText& data) override
    {
        return behind_->write(service, item, data);
    }
    std::int32_t remove(std::string_view service, std::string_view item) override
    {
        return behind_->remove(service, item);
    }
    std::int32_t status = keychainStatus::notAvailable;
    int reads = 0;

private:
    std::shared_ptr<KeychainItemStoring> behind_;
};

TEST_F(AppDelegateTest, aPasswordThatComesLateIsFoundWithoutARestart)
{
    storeAccount();
    const auto late = std::make_shared<LateKeychain>(keychain);
    late->status = keychainStatus::userCanceled;
    manager = std::make_unique<ConfigurationManager>(
        io.get_executor(), io.get_executor(),
        ConfigurationManager::Places{.document = folder / "configuration.json", .keychain = late});
    defaults.set(onboardingCompletedKey, true);
    launch();
    ASSERT_TRUE(viewModel.state().currentError);
    EXPECT_EQ(viewModel.state().currentError->title, "Password not available");
    clock.advance(2min);
    EXPECT_EQ(api->fetches, 0);
    EXPECT_LE(late->reads, 5);
    clock.advance(13min - 1s);
    EXPECT_TRUE(center.posted.empty());
    clock.advance(2s);
    ASSERT_EQ(center.posted.size(), 1U) << "at night nobody sees the menu";
    EXPECT_EQ(center.posted.front().title, "No glucose data");
    EXPECT_TRUE(center.posted.front().body.starts_with("Password not available. "))
        << center.posted.front().body;

    late->status = keychainStatus::success;
    clock.advance(5min + 6s);
    EXPECT_EQ(viewModel.state().statusTitle, "120 →");
    EXPECT_FALSE(viewModel.state().currentError);
}

TEST_F(AppDelegateTest, aLockedKeyringDoesNotTakeThePlaceOfTermsThatArePending)
{
    storeAccount();
    const auto late = std::make_shared<LateKeychain>(keychain);
    late->status = keychainStatus::userCanceled;
    manager = std::make_unique<ConfigurationManager>(
        io.get_executor(), io.get_executor(),
        ConfigurationManager::Places{.document = folder / "configuration.json", .keychain = late});
    defaults.remove(acceptedTermsVersionKey);
    defaults.set(onboardingCompletedKey, true);
    launch();
    const int reads = late->reads;
    clock.advance(10min);
    EXPECT_GT(late->reads, reads) << "it is tried again all the same";
    ASSERT_TRUE(viewModel.state().currentError);
    EXPECT_EQ(viewModel.state().currentError->title, "Terms of use");

    acceptTerms(defaults, clock.now());
    delegate->termsDidChange();
    settle();
    EXPECT_EQ(viewModel.state().currentError->title, "Password not available");
}

TEST_F(AppDelegateTest,
       whatKeepsAlertsFromBeingNoticedIsLookedForWhenItMayHaveChangedAndEveryTenOrFifteenMinutes)
{
    const auto problem = [this] { return viewModel.state().alertProblem.value_or(""); };
    storeAccount();
    defaults.set(onboardingCompletedKey, true);
    alertPath.serverAnswers = false;
    launch();
    EXPECT_TRUE(problem().starts_with("There is no notification server: alerts are not shown.\n"))
        << problem();

    alertPath.serverAnswers = true;
    clock.advance(9min);
    EXPECT_EQ(looks, 1) << "once, and nothing keeps waking up";
    delegate->alertPathDidChange();
    settle();
    EXPECT_EQ(problem(), "");

    const auto save = [this](AppSettings settings) {
        asio::co_spawn(io, manager->changeSettings(manager->settings(), std::move(settings)), asio::detached);
        settle();
    };
    alertPath.serverAnswers = false;
    save({.alertsEnabled = false});
    EXPECT_EQ(problem(), "") << "nothing would be shown anyway";
    save({});
    EXPECT_NE(problem(), "");
    alertPath.serverAnswers = true;
    save({.alertOnLowThreshold = false,
          .quietHoursEnabled = true,
          .quietHoursStartMinutes = 0,
          .quietHoursEndMinutes = 0});
    EXPECT_EQ(problem(), "") << "what the person has set is told elsewhere";

    const int looksBefore = looks;
    alertPath.muted = true;
    clock.advance(14min);
    EXPECT_EQ(looks, looksBefore) << "all was well";
    clock.advance(1min);
    EXPECT_TRUE(problem().starts_with("The sound is muted")) << problem();
    alertPath.muted = false;
    clock.advance(10min);
    EXPECT_EQ(problem(), "") << "cured, and still shown";

    alertPath.inhibited = true;
    clock.advance(15min);
    EXPECT_TRUE(problem().starts_with("“Do not disturb” is on")) << problem();
    alertPath.inhibited = false;
    workspace.send(WorkspaceEvent::didWake);
    settle();
    EXPECT_EQ(problem(), "");

    api->refused = true;
    alertPath.serverHangs = true;
    delegate->applicationWillTerminate();
    delegate->alertPathDidChange();
    clock.advance(24h);
    EXPECT_EQ(problem(), "") << "it has ended";
}

TEST_F(AppDelegateTest, aSnoozeThatAnotherProcessChangedCountsHereEvenWithoutAnAccount)
{
    defaults.set(onboardingCompletedKey, true);
    launch();
    defaults.set(alertsSnoozedUntilKey, start + 30min);
    delegate->storedStateDidReload();
    settle();
    EXPECT_EQ(viewModel.state().alertsSnoozedUntil, start + 30min);
    defaults.remove(alertsSnoozedUntilKey);
    delegate->storedStateDidReload();
    settle();
    EXPECT_EQ(viewModel.state().alertsSnoozedUntil, std::nullopt);
}

TEST_F(AppDelegateTest, sleepWakeAndTheEndReachWhoCares)
{
    storeAccount();
    defaults.set(onboardingCompletedKey, true);
    launch();
    clock.advance(6s);
    const int fetches = api->fetches;
    workspace.send(WorkspaceEvent::willSleep);
    workspace.send(WorkspaceEvent::screensDidSleep);
    EXPECT_EQ(recorder.calls[recorder.calls.size() - 2], "system-sleep");
    EXPECT_EQ(recorder.calls.back(), "display-sleep");
    workspace.send(WorkspaceEvent::didWake);
    clock.advance(2s);
    EXPECT_EQ(api->fetches, fetches + 1);

    delegate->applicationWillTerminate();
    EXPECT_FALSE(workspace.observed());
    clock.advance(24h);
    EXPECT_EQ(api->fetches, fetches + 1);
}

}  // namespace

}  // namespace tidewell
