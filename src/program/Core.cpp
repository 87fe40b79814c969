#include "program/Core.h"

#include <future>

#include "app/SerialLoginItem.h"
#include "app/TermsAgreement.h"
#include "platform/linux/AutostartFile.h"
#include "polling/PollFailure.h"
#include "program/DemoHistory.h"
#include "program/HistoryStorage.h"
#include "support/Log.h"
#include "support/Workers.h"

namespace tidewell {

namespace {

const Log coreLog{"Core"};

/// Long enough for a blocked transfer to notice that it is given up, short enough to leave within two
/// seconds.
constexpr std::chrono::milliseconds workersGrace{1000};
/// A turn of the engine is short; one that is not must not hold up the end.
constexpr std::chrono::milliseconds engineGrace{300};
/// A cancelled coroutine leaves its callers one by one, each in a turn of its own.
constexpr int unwindingTurns = 32;
/// How often the two loops may have to wait for each other on the way.
constexpr int unwindingRounds = 4;
/// An atomic write is several events; one reload is enough for them.
constexpr std::chrono::milliseconds reloadDelay{200};
/// Nobody announces that a disk has room again.
constexpr std::chrono::milliseconds saveRetryInterval = 5min;

/// Between two requests while another process may be making its own: it has the name, and does not answer.
constexpr std::chrono::milliseconds aloneSpacing = 60s;

/// What the snooze action on a notification stands for.
constexpr Seconds snoozeOfAction{30min};

/// The notifications of a run that posts none.
class NoNotifications final : public UserNotificationCenter {
public:
    asio::awaitable<NotificationAuthorizationState> authorizationStatus() override
    {
        co_return NotificationAuthorizationState::denied;
    }
    asio::awaitable<std::expected<bool, NotificationError>> requestAuthorization() override
    {
        co_return std::expected<bool, NotificationError>{false};
    }
    asio::awaitable<std::expected<void, NotificationError>> add(UserNotification) override
    {
        co_return std::unexpected{NotificationError{"This run posts no notifications."}};
    }
};

/// Of a demonstration, which leaves no trace.
class DemoLoginItem final : public LoginItemControlling {
public:
    LoginItemStatus status() override { return {.isEnabled = enabled_}; }
    std::expected<void, std::string> setEnabled(bool enabled) override
    {
        enabled_ = enabled;
        return {};
    }

private:
    bool enabled_ = false;
};

std::shared_ptr<LoginItemControlling> makeLoginItem(bool isDemonstration)
{
    if (isDemonstration)
        return std::make_shared<SerialLoginItem>(std::make_unique<DemoLoginItem>());
    return std::make_shared<SerialLoginItem>(
        std::make_unique<AutostartFile>(AutostartFile::standardPlaces()));
}

void afterTurns(asio::any_io_executor executor, int turns, std::function<void()> work)
{
    asio::post(executor, [executor, turns, work = std::move(work)]() mutable {
        if (turns > 1)
            afterTurns(std::move(executor), turns - 1, std::move(work));
        else
            work();
    });
}

}  // namespace

std::expected<std::unique_ptr<Core>, CommandError> Core::make(CoreOptions options)
{
    auto engine = std::make_unique<Engine>();
    auto clock = std::make_unique<SystemClock>(engine->context());
    auto environment =
        options.demo ? demoEnvironment(*clock, std::move(options.demoScenario)) : standardEnvironment();
    if (!environment)
        return std::unexpected(environment.error());
    return std::unique_ptr<Core>(
        new Core(std::move(*environment), std::move(engine), std::move(clock), options));
}

Core::Core(Environment environment, std::unique_ptr<Engine> owner, std::unique_ptr<SystemClock> ownClock,
           const CoreOptions& options)
    : engineOwner_{std::move(owner)},
      engine_{*engineOwner_},
      clockOwner_{std::move(ownClock)},
      clock_{*clockOwner_},
      environment_{std::move(environment)},
      http_{engine_.workers(), "Tidewell/" TIDEWELL_VERSION},
      defaults_{environment_.demo ? std::make_shared<UserDefaults>()
                                  : std::make_shared<UserDefaults>(environment_.defaults())},
      defaultsFile_{asio::make_strand(engine_.workers())}
{
    if (const auto error = defaults_->load()) {
        bookkeepingLost_ = true;
        coreLog.warning(bookkeepingProblem(environment_.defaults(), error));
    }
    defaults_->setChangeHandler([this] { saveDefaultsLater(); });
    saveRetryTimer_.setInterval(saveRetryInterval);
    QObject::connect(&saveRetryTimer_, &QTimer::timeout, [this] { saveDefaultsLater(); });
    configuration_ = std::make_unique<ConfigurationManager>(
        main(), engine_.workers(),
        ConfigurationManager::Places{.document = environment_.document(), .keychain = environment_.keychain});
    viewModel_ = std::make_unique<StatusBarViewModel>(
        main(), clock_, random_,
        [this]() -> std::optional<AppSettings> { return configuration_->settings(); });
    network_ = std::make_unique<NetworkMonitor>(clock_, random_, std::make_unique<GioNetworkPathMonitor>());
    makeAlerts(options.postsAlerts);
    history_ = std::make_unique<HistoryCoordinator>(
        HistoryCoordinator::Parts{.engine = engine(),
                                  .main = main(),
                                  .workers = engine_.patientWorker(),
                                  .clock = clock_,
                                  .store = makeHistoryStore(environment_)});
    coordinator_ = std::make_unique<StatusBarPollingCoordinator>(StatusBarPollingCoordinator::Parts{
        .engine = engine(),
        .main = main(),
        .clock = clock_,
        .random = random_,
        .viewModel = *viewModel_,
        .networkMonitor = *network_,
        .defaults = *defaults_,
        .settings = [this, postsAlerts = options.postsAlerts]() -> std::optional<AppSettings> {
            AppSettings settings = configuration_->settings();
            settings.alertsEnabled = settings.alertsEnabled && postsAlerts;
            return settings;
        },
        .alertDelivery = *alertDelivery_,
        .history = history_.get(),
        .progressDidChange =
            [this](const PollingProgress& progress) {
                progress_ = progress;
                if (sharing_)
                    sharing_->publish(viewModel_->state(), progress_);
            },
    });
    workspace_ = std::make_unique<LogindEvents>();
    loginItem_ = makeLoginItem(isDemonstration());
    if (!environment_.demo)
        makeSharing(options.sharing);
    engine_.start();
}

void Core::makeSharing(SharingKind kind)
{
    startedByPerson_ = kind == SharingKind::application;
    sharing_ = std::make_unique<SharedPoller>(
        main(), clock_, random_, SharedPollerOptions{.kind = kind, .profile = sharingProfile(environment_)},
        SharedPoller::Handlers{
            .roleDidChange = [this](PollingRole role, bool alone) { pollingRoleDidChange(role, alone); },
            .heard = [this](const FollowedState& followed) { show(followed); },
            .refresh = [this] { asio::co_spawn(main(), coordinator_->refreshNow(), asio::detached); },
            .snooze = [this](std::chrono::minutes length) { coordinator_->snoozeAlerts(length); },
            .resume = [this] { coordinator_->resumeAlerts(); },
        });
    sharedState_ =
        viewModel_->observe([this](const StatusBarState& state) { sharing_->publish(state, progress_); });
}

std::string Core::sharedAccount() const
{
    const auto& account = configuration_->account();
    // Before terms were accepted and the first-run steps finished nothing is shown, whoever asks for it.
    if (!account || !defaults_->boolean(onboardingCompletedKey) || (delegate_ && delegate_->waitsForTerms()))
        return {};
    return sharingAccount(environment_, *account);
}

bool Core::canPoll() const
{
    const auto& account = configuration_->account();
    return account && !account->password.empty() && defaults_->boolean(onboardingCompletedKey) &&
           (!asksForTerms_ || hasAcceptedTerms(*defaults_));
}

asio::awaitable<void> Core::beginSharing()
{
    co_await delegate_->launched();
    // After the delegate's own observer: what another account's poller told has gone from the screen by then.
    sharedConfiguration_ = configuration_->observe([this](ConfigurationChange change) {
        if (change != ConfigurationChange::configuration)
            return;
        progress_ = {};
        sharing_->setAccount(sharedAccount(), canPoll());
    });
    sharing_->start(sharedAccount(), canPoll());
    co_await sharing_->decided();
}

void Core::pollingRoleDidChange(PollingRole role, bool alone)
{
    if (!delegate_)
        return;
    // Also when it was this process all along: it may come more often now.
    if (role == PollingRole::polls)
        delegate_->setPollingRole(PollingRole::follows);
    // The person may have put right what the other process waits for, and then started this one. One refused
    // sign-in more locks no account.
    if (role == PollingRole::polls && std::exchange(startedByPerson_, false) &&
        progress_.refusedSignIns < allowedRefusals)
        progress_.requiresAccountAction = false;
    const StatusBarState& shown = viewModel_->state();
    PollingResumption resumption{.progress = progress_,
                                 .glucoseHistory = shown.glucoseHistory,
                                 .problem = shown.currentError,
                                 .nextRetryAt = shown.nextRetryAt};
    if (alone)
        resumption.fetchSpacing = aloneSpacing;
    delegate_->setPollingRole(role, std::move(resumption));
}

void Core::show(const FollowedState& followed)
{
    progress_ = followed.progress;
    viewModel_->batch([&] {
        const Date now = clock_.now();
        viewModel_->setActivity(followed.activity, now);
        // Who has just begun to poll knows nothing yet, and what is shown is as good as it was.
        if (!followed.glucoseHistory.empty()) {
            viewModel_->setGlucoseHistory(followed.glucoseHistory);
            viewModel_->presentReading(followed.glucoseHistory.back(), now);
            viewModel_->setLastUpdateAt(followed.lastUpdateAt);
        }
        viewModel_->setCurrentError(followed.currentError);
        viewModel_->setNextRetryAt(followed.nextRetryAt);
        if (!followed.activity)
            viewModel_->finishActivity();
    });
}

void Core::makeAlerts(bool postsAlerts)
{
    if (postsAlerts) {
        alertSound_ = std::make_unique<AlertSound>(main());
        desktopNotifications_ = std::make_unique<NotificationCenter>(main(), clock_, *alertSound_);
        desktopNotifications_->onAction([this](NotificationAction action) {
            switch (action) {
            case NotificationAction::open:
                if (alertOpened_)
                    alertOpened_();
                break;
            case NotificationAction::snooze:
                if (coordinator_)
                    coordinator_->snoozeAlerts(snoozeOfAction);
                break;
            }
        });
        const auto lookAgain = [this] {
            if (delegate_)
                delegate_->alertPathDidChange();
        };
        desktopNotifications_->onAuthorizationChange([this, lookAgain](NotificationAuthorizationState state) {
            if (coordinator_ && state == NotificationAuthorizationState::authorized)
                coordinator_->alertPathDidRecover();
            lookAgain();
        });
        desktopNotifications_->onLastAlertChange(lookAgain);
        alertSound_->onProblemChange(lookAgain);
        // Early in a session the desktop's own server may be yet to come; nobody should start another.
        alertProbe_ = std::make_unique<AlertProbe>(main(), clock_, AlertProbeOptions{.startsServer = false});
    } else {
        noNotifications_ = std::make_unique<NoNotifications>();
    }
    UserNotificationCenter& center = desktopNotifications_
                                         ? static_cast<UserNotificationCenter&>(*desktopNotifications_)
                                         : *noNotifications_;
    alertDelivery_ = std::make_unique<UserNotificationGlucoseAlertDelivery>(engine(), center, random_);
}

asio::awaitable<AlertPath> Core::lookAtAlertPath()
{
    AlertPath path = co_await alertProbe_->look();
    path.lastAlertNotShown = desktopNotifications_->lastAlertNotShown();
    path.lastAlertNotHeard = !alertSound_->problem().empty();
    co_return path;
}

Core::~Core()
{
    if (!ended_)
        (void)shutDown();
}

ServiceClientParts Core::clientParts()
{
    return {.engine = engine(), .http = http_, .clock = clock_, .endpoints = environment_.endpoints};
}

void Core::notifyOnce(std::string_view key, UserNotification notification)
{
    if (!desktopNotifications_ || defaults_->boolean(key))
        return;
    asio::co_spawn(main(), postOnce(std::string{key}, std::move(notification)), asio::detached);
}

asio::awaitable<void> Core::postOnce(std::string key, UserNotification notification)
{
    const auto posted = co_await desktopNotifications_->add(std::move(notification));
    if (posted)
        defaults_->set(key, true);
    else
        coreLog.warning(posted.error().message);
}

void Core::launch(Windows windows)
{
    // A demonstration asks nobody's service.
    asksForTerms_ = windows.terms && !isDemonstration();
    AppDelegate::Services services{
        .main = main(),
        .clock = clock_,
        .configurationManager = *configuration_,
        .defaults = *defaults_,
        .statusBarViewModel = *viewModel_,
        .pollingCoordinator = *coordinator_,
        .makeAPIClient =
            [this](const GlucoseAccountConfiguration& account) {
                return makeServiceClient(clientParts(), account);
            },
        .ensureStatusItem = std::move(windows.ensureStatusItem),
        .history = history_.get(),
        .workspace = workspace_.get(),
        .onboardingCoordinator = windows.onboarding,
        .termsAgreementCoordinator = asksForTerms_ ? windows.terms : nullptr,
    };
    if (alertProbe_)
        services.lookAtAlertPath = [this] { return lookAtAlertPath(); };
    if (sharing_)
        services.pollingRole = PollingRole::follows;  // Until it is decided.
    delegate_ = std::make_unique<AppDelegate>(std::move(services));
    if (environment_.demo) {
        preparation_ = startTask(main(), prepareDemo());
        return;
    }
    watchStoredState();
    if (bookkeepingLost_) {
        preparation_ = startTask(main(), concludeFromAccount());
        return;
    }
    delegate_->applicationDidFinishLaunching();
    sharingBegin_ = startTask(main(), beginSharing());
}

asio::awaitable<void> Core::concludeFromAccount()
{
    (void)co_await configuration_->load();
    if (configuration_->account()) {
        defaults_->set(onboardingCompletedKey, true);
        // Nobody got that far without terms; of which version they were is lost, so they are asked for.
        if (!hasAcceptedTerms(*defaults_))
            defaults_->set(acceptedTermsVersionKey, std::string{unknownTermsVersion});
    }
    delegate_->applicationDidFinishLaunching();
    sharingBegin_ = startTask(main(), beginSharing());
}

asio::awaitable<void> Core::prepareDemo()
{
    const DemoAccount demo = environment_.demo->account();
    GlucoseAccountConfiguration account{
        .provider = glucoseProvider(demo.provider).value_or(GlucoseProvider::dexcom),
        .username = demo.username,
        .password = SecretText{demo.password},
        .region = demo.region};
    if (!demo.patientID.empty())
        account.patientID = demo.patientID;
    if (!demo.patientName.empty())
        account.patientName = demo.patientName;
    (void)co_await configuration_->load();
    if (const auto saved = co_await configuration_->saveAccount(account); !saved)
        coreLog.error("The demonstration's account was not stored: " + saved.error().message);
    defaults_->set(onboardingCompletedKey, true);
    if (!delegate_)  // The end came first.
        co_return;
    delegate_->applicationDidFinishLaunching();
    if (!alertProbe_)
        co_return;  // A terminal has no window for it.
    auto save = [store = makeHistoryStore(environment_), account, now = clock_.now()] {
        return saveDemoHistory(*store, account, now);
    };
    const auto saved = co_await runOnWorker(engine_.workers(), std::move(save));
    if (!saved)
        coreLog.error("The demonstration's history was not saved: " +
                      std::string{description(saved.error())});
    if (history_)
        history_->historyDidChange();
}

asio::awaitable<void> Core::launched()
{
    if (preparation_)
        co_await preparation_.wait();
    if (delegate_)
        co_await delegate_->launched();
    if (sharingBegin_)
        co_await sharingBegin_.wait();
}

void Core::watchStoredState()
{
    const auto reloadOn = [this](QTimer& timer, bool configurationToo) {
        timer.setSingleShot(true);
        timer.setInterval(reloadDelay);
        QObject::connect(&timer, &QTimer::timeout, [this, configurationToo] {
            asio::co_spawn(main(), reload(configurationToo), asio::detached);
        });
    };
    reloadOn(reloadTimer_, true);
    reloadOn(defaultsTimer_, false);
    // The folders, since each atomic write replaces the file.
    const auto configuration = QString::fromStdString(environment_.folders.configuration.string());
    const auto state = QString::fromStdString(environment_.folders.state.string());
    QObject::connect(&fileWatcher_, &QFileSystemWatcher::directoryChanged,
                     [this, configuration](const QString& folder) {
                         (folder == configuration ? reloadTimer_ : defaultsTimer_).start();
                     });
    if (!fileWatcher_.addPath(configuration))
        coreLog.info("Changes of the configuration by other processes are not noticed.");
    if (!fileWatcher_.addPath(state))
        coreLog.info("A snooze by another process is not noticed.");
}

asio::awaitable<void> Core::reload(bool configurationToo)
{
    const auto readDefaults = [defaults = defaults_] {
        // What is not saved yet would be forgotten by a load.
        const auto error = defaults->save();
        if (!error)
            (void)defaults->load();
        return error;
    };
    const auto error = co_await runOnWorker(asio::any_io_executor{defaultsFile_}, readDefaults);
    if (configurationToo)
        (void)co_await configuration_->load();
    if (!delegate_)
        co_return;
    defaultsDidSave(error);
    storedStateDidChange();
}

void Core::storedStateDidChange()
{
    delegate_->storedStateDidReload();
    if (sharedConfiguration_)  // The first-run steps may be over.
        sharing_->setAccount(sharedAccount(), canPoll());
}

void Core::termsDidChange()
{
    delegate_->termsDidChange();
    if (sharedConfiguration_)
        sharing_->setAccount(sharedAccount(), canPoll());
}

void Core::saveDefaultsLater()
{
    asio::post(defaultsFile_, [this, defaults = defaults_] {
        const auto error = defaults->save();
        asio::post(main(), [this, error] { defaultsDidSave(error); });
    });
}

void Core::defaultsDidSave(std::error_code error)
{
    if (ended_)
        return;
    const bool wasKnown = viewModel_->state().bookkeepingProblem.has_value();
    if (!error) {
        saveRetryTimer_.stop();
        if (wasKnown)
            coreLog.info("The bookkeeping is saved again.");
        viewModel_->setBookkeepingProblem(std::nullopt);
        return;
    }
    if (!wasKnown) {
        coreLog.error("The bookkeeping was not saved: " + error.message());
        saveRetryTimer_.start();
    }
    viewModel_->setBookkeepingProblem(bookkeepingNotSaved(environment_.defaults(), error));
}

bool Core::shutDown()
{
    ended_ = true;
    reloadTimer_.stop();
    defaultsTimer_.stop();
    defaults_->setChangeHandler({});
    sharingBegin_.cancel();
    sharedState_.reset();
    sharedConfiguration_.reset();
    sharing_.reset();  // First, so that somebody else polls from now on.
    if (delegate_)
        delegate_->applicationWillTerminate();
    delegate_.reset();
    coordinator_.reset();
    viewModel_.reset();
    workspace_.reset();
    // What was just cancelled leaves before the loops end under it: each loop may have to tell the other.
    bool busy = false;
    for (int round = 0; round < unwindingRounds && !busy; ++round) {
        mainLoop_.loop().runPending();
        busy = !engineTookTurns();
    }
    const bool ended = engine_.stop(workersGrace) && !busy;
    if (ended)
        history_.reset();  // Not before: what unwinds of polling refers to it.
    if (const auto error = defaults_->save(); error && !saveRetryTimer_.isActive())
        coreLog.error("The bookkeeping was not saved: " + error.message());
    saveRetryTimer_.stop();
    environment_.temporary.reset();
    return ended;
}

bool Core::engineTookTurns()
{
    const auto taken = std::make_shared<std::promise<void>>();
    const auto future = taken->get_future();
    afterTurns(engine_.executor(), unwindingTurns, [taken] { taken->set_value(); });
    return future.wait_for(engineGrace) == std::future_status::ready;
}

}  // namespace tidewell
