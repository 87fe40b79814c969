#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "app/WorkspaceEvents.h"
#include "config/ConfigurationManager.h"
#include "config/UserDefaults.h"
#include "polling/AlertHealth.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "support/Task.h"

namespace tidewell {

/// The first-run steps. Sets onboardingCompletedKey when the person finishes.
class OnboardingCoordinating {
public:
    virtual ~OnboardingCoordinating() = default;
    /// Shows the steps, or brings their window to the front.
    virtual void showOnboarding() = 0;
};

/// The terms-of-use sheet. Who accepts there is told of by AppDelegate::termsDidChange().
class TermsAgreementCoordinating {
public:
    virtual ~TermsAgreementCoordinating() = default;
    /// Shows the sheet when the accepted version is not the current one.
    virtual void checkAgreement() = 0;
    /// Brings a pending sheet to the front; false when none is pending.
    virtual bool showPendingAgreement() = 0;
};

/// Offers the feedback notification by rules of its own.
class FeedbackPromptControlling {
public:
    virtual ~FeedbackPromptControlling() = default;
    virtual void noteLaunch() = 0;
};

/// Installs updates.
class UpdateControlling {
public:
    virtual ~UpdateControlling() = default;
    /// Installs an update that has been downloaded; does nothing without one. `reason` is for the log.
    virtual void installDownloadedUpdate(std::string_view reason) = 0;
};

/// Who asks the service: this process, or another one of the same user, whose data this one is given.
enum class PollingRole { polls, follows };

/// Wires the services together: the launch sequence, sleep and wake, changes of the configuration, the end.
///
/// Main thread only. Owns no service; every reference outlives it. A service that a build does not have is
/// null. Where there is somebody to ask for the terms of use, nothing is polled before some version of them
/// was accepted; a newer version is asked for while polling goes on.
class AppDelegate {
public:
    using MakeAPIClient =
        std::function<std::shared_ptr<GlucoseAPIProtocol>(const GlucoseAccountConfiguration&)>;

    struct Services {
        asio::any_io_executor main;
        Clock& clock;
        ConfigurationManager& configurationManager;
        UserDefaults& defaults;
        StatusBarViewModel& statusBarViewModel;
        StatusBarPollingCoordinator& pollingCoordinator;
        MakeAPIClient makeAPIClient;             ///< Never makes null.
        std::function<void()> ensureStatusItem;  ///< Sets the status item up, once; empty without one.
        HistoryCoordinator* history = nullptr;   ///< The one that `pollingCoordinator` has.
        WorkspaceObserving* workspace = nullptr;
        OnboardingCoordinating* onboardingCoordinator = nullptr;
        TermsAgreementCoordinating* termsAgreementCoordinator = nullptr;
        FeedbackPromptControlling* feedbackPromptController = nullptr;
        UpdateControlling* updateController = nullptr;
        /// Looks at what an alert needs of the desktop, in a few seconds at most. Awaited on `main`, and
        /// cancelled; empty in a run that posts no alerts.
        std::function<asio::awaitable<AlertPath>()> lookAtAlertPath{};
        PollingRole pollingRole = PollingRole::polls;  ///< At the launch.
    };

    explicit AppDelegate(Services services);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Begins the launch sequence and returns at once.
    void applicationDidFinishLaunching();
    /// Resumes when the launch sequence has ended; it has been begun.
    [[nodiscard]] asio::awaitable<void> launched() const { return startupTask_.wait(); }
    /// Configuration and defaults were read again. Follows an account that another process has signed in to
    /// since the first-run steps were begun here, and tries again when it has signed in to the same one. A
    /// snooze that was changed elsewhere counts here too.
    void storedStateDidReload();
    /// Begins or ends polling; what is shown stays. `resumption` is where a run that begins goes on from.
    void setPollingRole(PollingRole role, PollingResumption resumption = {});
    /// The person accepted the terms of use: polling begins, when it had to wait for that, and the menu no
    /// longer leads to them.
    void termsDidChange();
    /// Whether nothing is polled, and nothing of others shown, until the person accepts the terms of use.
    [[nodiscard]] bool waitsForTerms() const { return waitsForTerms_; }
    /// A notification server came or went, or the last alert was or was not noticed: looks anew at whether
    /// alerts would be.
    void alertPathDidChange();
    /// The last call before the end of the process: no result reaches the status item any more.
    void applicationWillTerminate();
    /// The person started the application again. False when a window that waits for them came to the front.
    bool applicationShouldHandleReopen();

private:
    asio::awaitable<void> launch();
    asio::awaitable<void> retryPassword();
    /// Keeps the view model's alert problem true: looks now, then every quarter of an hour, and sooner while
    /// there is a problem.
    asio::awaitable<void> watchAlertPath();
    void observeWorkspace();
    void configurationDidUpdate();
    /// Before the first-run steps are finished: that they are not, once an account is stored, or that there
    /// is none.
    void showSetup();
    /// Says whether newer terms wait for an answer.
    void updateTermsPending();
    /// Once there is an account: the terms are asked for once a run, when they were not accepted.
    void checkTerms();
    /// Lets the coordinator follow the stored account, or shows that there is none, or that the terms of use
    /// have to be accepted first.
    void followAccount();
    [[nodiscard]] ErrorInfo passwordProblem() const;

    Services services_;
    Task<void> startupTask_;
    Task<void> passwordTask_;  ///< Tries again to read a password that the secret store did not give.
    Task<void> alertPathTask_;
    std::unique_ptr<AppWorkspaceObservers> workspaceObservers_;
    std::vector<std::shared_ptr<void>> observers_;
    std::optional<Date> accountConfirmedAt_;     ///< As far as it has been acted upon.
    std::optional<bool> setupShownWithAccount_;  ///< What showSetup() has shown.
    bool following_ = false;      ///< The first-run steps are over, and the account is followed or missed.
    bool waitsForTerms_ = false;  ///< It is not followed: no terms of use were ever accepted.
    bool termsChecked_ = false;
    bool terminating_ = false;
};

}  // namespace tidewell
