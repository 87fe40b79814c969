#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/LoginItem.h"
#include "app/SignInAdvice.h"
#include "config/ConfigurationManager.h"
#include "config/UserDefaults.h"
#include "history/HistoryCoordinator.h"
#include "polling/AlertHealth.h"
#include "polling/UserNotificationGlucoseAlertDelivery.h"
#include "sources/LibreLinkUpAPI.h"

namespace tidewell {

/// The first-run steps, in their order. `person` is passed over where the service has no choice of people.
enum class OnboardingStep {
    welcome,  ///< What Tidewell does, and what it is not.
    terms,
    account,       ///< Service, region, user name, password.
    person,        ///< Whom to follow.
    firstReading,  ///< What the service has, with its age.
    glucose,       ///< Unit and thresholds.
    alerts,        ///< Permission and a test alert.
    history,       ///< Whether readings are saved.
    login,         ///< Whether the desktop starts Tidewell.
    done
};

/// Everything that the window of the first-run steps shows. English texts; whoever shows them translates.
struct OnboardingState {
    OnboardingStep step = OnboardingStep::welcome;
    std::vector<OnboardingStep> path{};  ///< The steps of this run, for "Step 3 of 9".
    bool canGoBack = false;
    bool canGoForward = false;
    bool isBusy = false;  ///< The service, the keyring or the disk is asked; back and close still work.
    std::optional<SignInProblem> problem{};  ///< Of the step that is shown.
    bool isProblemOfStoring = false;         ///< Going forward tries once more what failed.

    bool termsAccepted = false;

    GlucoseAccountConfiguration account{};  ///< As entered or stored; never with its password.
    bool hasPassword = false;               ///< One is entered or stored for that account.
    std::vector<LibreConnection> people{};
    std::optional<std::string> patientID{};  ///< Who is chosen of them.

    std::optional<GlucoseReading> firstReading{};
    Date now{};  ///< Of the age of the first reading; renewed while that step is shown.

    AppSettings settings{};

    std::optional<NotificationAuthorizationState> authorization{};
    bool isSendingTestAlert = false;
    std::string testAlertMessage{};  ///< "Test alert sent." and so on.
    enum class TestAlertAnswer { none, asked, seen, notSeen };
    TestAlertAnswer testAlertAnswer = TestAlertAnswer::none;
    std::vector<AlertFinding>
        alertFindings{};  ///< What may keep alerts from being noticed; problems and cautions.

    bool savesHistory = false;  ///< As chosen; what is in force once the step was left.
    std::int64_t retentionDays = 90;
    std::string secretsFile{};  ///< Where passwords and keys are kept; empty: in the keyring.

    bool startsAtLogin = false;  ///< What is so.
    std::string loginItemProblem{};
};

/// The first-run steps without their window: what comes next, what may be left, and what is done on the way.
///
/// Each step is stored when it is left forward, so a window that was closed goes on where it was, also in
/// another process. Nothing polls until the last step is finished: only then is onboardingCompletedKey set.
/// Main thread; nothing blocks it. Work that is under way when the person goes back or closes is cancelled,
/// and what it brings is dropped.
class OnboardingFlow {
public:
    struct Services {
        asio::any_io_executor main;
        asio::any_io_executor engine;   ///< Where clients live.
        asio::any_io_executor workers;  ///< For the login item.
        Clock& clock;
        ConfigurationManager& configuration;
        UserDefaults& defaults;
        /// A client for an account that may not be stored yet; used on `engine`.
        std::function<std::shared_ptr<GlucoseAPIProtocol>(const GlucoseAccountConfiguration&)> makeAPIClient;
        /// Signs in to a LibreLinkUp account and asks whom it may follow. Awaited on `main`.
        std::function<asio::awaitable<std::expected<LibreConnections, GlucoseAPIError>>(
            GlucoseAccountConfiguration)>
            askConnections;
        UserNotificationGlucoseAlertDelivery& alertDelivery;
        std::function<asio::awaitable<AlertPath>()> lookAtAlertPath;  ///< Awaited on `main`.
        HistoryCoordinator& history;
        std::shared_ptr<LoginItemControlling> loginItem;
        std::string country;             ///< Two letters, or empty.
        std::string secretsFile;         ///< Empty: passwords and keys are kept in the keyring.
        std::function<void()> finished;  ///< The flag is set: polling may begin.
    };
    explicit OnboardingFlow(Services services);
    ~OnboardingFlow();
    OnboardingFlow(const OnboardingFlow&) = delete;
    OnboardingFlow& operator=(const OnboardingFlow&) = delete;

    [[nodiscard]] const OnboardingState& state() const;
    /// Calls the observer after each change of state(), until the token goes.
    [[nodiscard]] std::shared_ptr<void> observe(std::function<void()> observer);

    /// The window is shown: goes to the step that was reached last, as soon as the configuration is loaded.
    /// Of a window that came to the front: looks at what may have changed meanwhile.
    void begin();
    /// The window was closed: cancels what is under way, and forgets a password that is not stored.
    void close();
    void goBack();
    /// Does what the step is left with, and goes on when that went well; else there is a problem(). On
    /// `done` it finishes.
    void goForward();

    void setTermsAccepted(bool accepted);
    /// Service, region, user name and password as they stand in the fields. An empty password means the one
    /// that is known for that account.
    void setAccount(GlucoseAccountConfiguration account);
    void choosePerson(std::string patientID);
    /// Asks for the first reading once more.
    void tryAgain();
    /// Unit, thresholds and alert switches; a threshold that is none of the options is refused.
    void setSettings(AppSettings settings);
    void sendTestAlert();
    void answerTestAlert(bool seen);
    void setSavesHistory(bool saves);
    /// The last wish counts, also while an earlier one is carried out.
    void setStartsAtLogin(bool starts);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
