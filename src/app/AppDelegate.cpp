#include "app/AppDelegate.h"

#include "app/TermsAgreement.h"
#include "support/Log.h"

namespace tidewell {

namespace {

const Log appLog{"AppDelegate"};

/// Waits between two tries to read the password, in the order of the tries; the last serves all later ones.
/// A keyring often appears within seconds of the session's start, and its unlocking is announced by nobody.
constexpr std::array<std::chrono::milliseconds, 4> passwordRetryWaits{10s, 30s, 60s, 300s};

/// Nobody announces that the sound was switched off or that the machine may suspend again; looking costs a
/// few calls. A problem that has been cured must not stay on the screen for long.
constexpr std::chrono::milliseconds alertPathInterval = 15min;
constexpr std::chrono::milliseconds alertProblemInterval = 10min;

ErrorInfo termsProblem()
{
    return {.title = "Terms of use",
            .message = "Tidewell shows no readings before you have accepted its terms of use.",
            .remediation = "Read and accept them: choose \"Show terms…\" in the menu.",
            .needsTerms = true};
}

ErrorInfo setupProblem()
{
    return {.title = "Setting up is not finished",
            .message = "Tidewell shows no values and sends no alerts yet.",
            .remediation = "Choose \"Finish setting up…\" in the menu.",
            .needsSetup = true};
}

/// What keeps the desktop from showing alerts or from making them heard. What the menu shows anyway counts as
/// good here: the account, its data, and what the person has set.
std::optional<std::string> alertProblem(const AlertPath& path, Date now)
{
    const auto findings = alertFindings({.now = now, .path = path, .newestReading = now});
    if (findings.empty() || findings.front().severity != AlertFinding::Severity::problem)
        return std::nullopt;
    const AlertFinding& worst = findings.front();
    return worst.remedy.empty() ? worst.text : worst.text + "\n" + worst.remedy;
}

}  // namespace

AppDelegate::AppDelegate(Services services) : services_{std::move(services)}
{
    observers_.push_back(services_.configurationManager.observe([this](ConfigurationChange change) {
        switch (change) {
        case ConfigurationChange::configuration: configurationDidUpdate(); break;
        case ConfigurationChange::appSettings:
            services_.statusBarViewModel.appSettingsDidUpdate();
            services_.pollingCoordinator.alertSettingsDidUpdate();
            alertPathDidChange();
            break;
        }
    }));
    if (services_.history)
        observers_.push_back(services_.history->observe([this](const GlucoseHistoryStatus& status) {
            services_.statusBarViewModel.setHistoryProblem(
                status.problem ? std::optional<std::string>{description(*status.problem)} : std::nullopt);
        }));
}

AppDelegate::~AppDelegate()
{
    if (startupTask_.running())
        startupTask_.cancel();
    if (passwordTask_.running())
        passwordTask_.cancel();
    if (alertPathTask_.running())
        alertPathTask_.cancel();
}

void AppDelegate::applicationDidFinishLaunching()
{
    observeWorkspace();
    startupTask_ = startTask(services_.main, launch());
}

void AppDelegate::applicationWillTerminate()
{
    terminating_ = true;
    observers_.clear();
    workspaceObservers_.reset();
    startupTask_.cancel();
    passwordTask_.cancel();
    alertPathTask_.cancel();
    services_.pollingCoordinator.stop();
}

bool AppDelegate::applicationShouldHandleReopen()
{
    if (!services_.defaults.boolean(onboardingCompletedKey) && services_.onboardingCoordinator) {
        services_.onboardingCoordinator->showOnboarding();
        return false;
    }
    return !(services_.termsAgreementCoordinator &&
             services_.termsAgreementCoordinator->showPendingAgreement());
}

asio::awaitable<void> AppDelegate::launch()
{
    // First, since the load may wait for a keyring, and a keyring for a person.
    if (services_.ensureStatusItem)
        services_.ensureStatusItem();
    if (!services_.configurationManager.loaded()) {
        if (const auto loaded = co_await services_.configurationManager.load(); !loaded)
            appLog.error("Configuration not loaded: " + loaded.error().message);
    }
    alertPathDidChange();
    if (!services_.defaults.boolean(onboardingCompletedKey)) {
        showSetup();
        if (services_.feedbackPromptController)
            services_.feedbackPromptController->noteLaunch();
        if (services_.onboardingCoordinator)
            services_.onboardingCoordinator->showOnboarding();
        co_return;
    }
    followAccount();
    if (!services_.configurationManager.account())
        co_return;
    if (services_.feedbackPromptController)
        services_.feedbackPromptController->noteLaunch();
    checkTerms();
}

void AppDelegate::checkTerms()
{
    if (services_.termsAgreementCoordinator && services_.configurationManager.account() &&
        !std::exchange(termsChecked_, true))
        services_.termsAgreementCoordinator->checkAgreement();
}

void AppDelegate::termsDidChange()
{
    if (terminating_)
        return;
    if (waitsForTerms_ && hasAcceptedTerms(services_.defaults))
        followAccount();
    updateTermsPending();
}

void AppDelegate::updateTermsPending()
{
    services_.statusBarViewModel.setTermsPending(
        following_ && services_.termsAgreementCoordinator && services_.configurationManager.account() &&
        hasAcceptedTerms(services_.defaults) && !hasAcceptedCurrentTerms(services_.defaults));
}

void AppDelegate::showSetup()
{
    const auto& account = services_.configurationManager.account();
    if (std::exchange(setupShownWithAccount_, account.has_value()) == account.has_value())
        return;
    services_.pollingCoordinator.resetForNewConfiguration(
        nullptr, account ? account->provider : GlucoseProvider::dexcom,
        account ? std::optional{setupProblem()} : std::nullopt);
}

void AppDelegate::observeWorkspace()
{
    if (!services_.workspace)
        return;
    workspaceObservers_ = std::make_unique<AppWorkspaceObservers>();
    workspaceObservers_->keep(services_.workspace->observe(WorkspaceEvent::didWake, [this] {
        services_.statusBarViewModel.refreshFreshness();
        services_.pollingCoordinator.refreshAfterWake();
        alertPathDidChange();
    }));
    const auto installBefore = [this](std::string_view reason) {
        return [this, reason] {
            if (services_.updateController)
                services_.updateController->installDownloadedUpdate(reason);
        };
    };
    workspaceObservers_->keep(
        services_.workspace->observe(WorkspaceEvent::willSleep, installBefore("system-sleep")));
    workspaceObservers_->keep(
        services_.workspace->observe(WorkspaceEvent::screensDidSleep, installBefore("display-sleep")));
}

void AppDelegate::configurationDidUpdate()
{
    if (terminating_)
        return;
    // During the first-run steps nothing polls, whatever has been stored so far.
    if (!services_.defaults.boolean(onboardingCompletedKey)) {
        showSetup();
        return;
    }
    followAccount();
    checkTerms();
}

void AppDelegate::storedStateDidReload()
{
    if (terminating_)
        return;
    services_.pollingCoordinator.alertSnoozeDidReload();
    if (!services_.configurationManager.account())
        return;
    if (!following_) {
        configurationDidUpdate();
        return;
    }
    termsDidChange();
    const auto confirmed = services_.defaults.date(accountConfirmedAtKey);
    if (std::exchange(accountConfirmedAt_, confirmed) != confirmed)
        services_.pollingCoordinator.reconnect();
}

void AppDelegate::setPollingRole(PollingRole role, PollingResumption resumption)
{
    if (terminating_ || std::exchange(services_.pollingRole, role) == role || !following_ || waitsForTerms_)
        return;
    const auto& account = services_.configurationManager.account();
    if (!account)
        return;
    if (role == PollingRole::follows)
        services_.pollingCoordinator.stop();
    else if (account->password.empty())
        followAccount();
    else
        services_.pollingCoordinator.resume(services_.makeAPIClient(*account), account->provider,
                                            std::move(resumption));
}

void AppDelegate::followAccount()
{
    following_ = true;
    accountConfirmedAt_ = services_.defaults.date(accountConfirmedAtKey);
    if (passwordTask_.running())
        passwordTask_.cancel();
    const auto& account = services_.configurationManager.account();
    waitsForTerms_ = account && services_.termsAgreementCoordinator && !hasAcceptedTerms(services_.defaults);
    if (services_.history)
        services_.history->follow(account ? HistoryScopeID::of(*account) : std::nullopt);
    updateTermsPending();
    auto& coordinator = services_.pollingCoordinator;
    if (!account) {
        std::optional<ErrorInfo> damaged;
        if (const auto& problem = services_.configurationManager.problem())
            damaged = ErrorInfo{.title = "Sign in required",
                                .message = problem->message,
                                .remediation = "Sign in again, or mend the file.",
                                .needsSignIn = true};
        coordinator.resetForNewConfiguration(nullptr, GlucoseProvider::dexcom, std::move(damaged));
        return;
    }
    if (account->password.empty())
        passwordTask_ = startTask(services_.main, retryPassword());
    if (waitsForTerms_) {
        // Somebody may rely on alerts that came before the program had terms, and be told that none come now.
        coordinator.resetForUnreachableAccount(account->provider, termsProblem());
        return;
    }
    if (services_.pollingRole == PollingRole::follows) {
        services_.statusBarViewModel.clear();
        coordinator.resetForFollowing();
        return;
    }
    if (account->password.empty()) {
        coordinator.resetForUnreachableAccount(account->provider, passwordProblem());
        return;
    }
    coordinator.resetForNewConfiguration(services_.makeAPIClient(*account), account->provider);
}

ErrorInfo AppDelegate::passwordProblem() const
{
    const auto& problem = services_.configurationManager.problem();
    return {.title = "Password not available",
            .message = problem ? problem->message : "The password of the account is not in the keyring.",
            .remediation = "Unlock your keyring, or sign in again.",
            .needsSignIn = true};
}

void AppDelegate::alertPathDidChange()
{
    if (terminating_ || !services_.lookAtAlertPath)
        return;
    alertPathTask_.cancel();
    alertPathTask_ = startTask(services_.main, watchAlertPath());
}

asio::awaitable<void> AppDelegate::watchAlertPath()
{
    for (;;) {
        std::optional<std::string> problem;
        // Before the first load the preferences are not known yet.
        if (services_.configurationManager.loaded()) {
            // Without alerts nobody misses what would show them.
            if (services_.configurationManager.settings().alertsEnabled) {
                const AlertPath path = co_await services_.lookAtAlertPath();
                problem = alertProblem(path, services_.clock.now());
            }
            services_.statusBarViewModel.setAlertProblem(problem);
        }
        co_await services_.clock.sleepFor(problem ? alertProblemInterval : alertPathInterval);
    }
}

asio::awaitable<void> AppDelegate::retryPassword()
{
    for (std::size_t attempt = 0;; ++attempt) {
        co_await services_.clock.sleepFor(
            passwordRetryWaits[std::min(attempt, passwordRetryWaits.size() - 1)]);
        // Without a problem the stored password is an empty one, and only a sign-in helps.
        if (!services_.configurationManager.problem())
            co_return;
        // A password that has come is announced as a change, which follows the account and ends this task.
        (void)co_await services_.configurationManager.load();
        if (services_.pollingRole == PollingRole::polls && !waitsForTerms_)
            services_.statusBarViewModel.setCurrentError(passwordProblem());
    }
}

}  // namespace tidewell
