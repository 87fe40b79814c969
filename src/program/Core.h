#pragma once

#include <QFileSystemWatcher>
#include <QTimer>
#include <boost/asio/strand.hpp>
#include <memory>

#include "app/AppDelegate.h"
#include "app/LoginItem.h"
#include "platform/linux/AlertProbe.h"
#include "platform/linux/GioNetworkPathMonitor.h"
#include "platform/linux/LogindEvents.h"
#include "platform/linux/NotificationCenter.h"
#include "platform/linux/QtMainLoop.h"
#include "platform/linux/SharedPoller.h"
#include "program/Environment.h"
#include "program/ServiceClient.h"
#include "support/CurlHttpClient.h"
#include "support/Engine.h"
#include "support/SystemClock.h"

namespace tidewell {

/// Whether this run follows the stored account or the built-in demonstration.
struct CoreOptions {
    bool demo = false;
    std::string demoScenario = "steady";
    /// Whether this run posts alerts: the desktop application does, and is the only one of its user, so that
    /// nobody is alerted twice.
    bool postsAlerts = false;
    /// How it shares one poller with the other runs of its user. A demonstration has one of its own.
    SharingKind sharing = SharingKind::watcher;
};

/// The whole program but its face: every long-lived service, made once and kept until the end of the process.
///
/// Made on the main thread with a QCoreApplication. The face (status item or terminal) observes viewModel()
/// and then calls launch(). Changes that another process makes to the stored configuration are picked up.
class Core {
public:
    [[nodiscard]] static std::expected<std::unique_ptr<Core>, CommandError> make(CoreOptions options);
    ~Core();
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    [[nodiscard]] asio::any_io_executor main() { return mainLoop_.executor(); }
    [[nodiscard]] asio::any_io_executor engine() { return engine_.executor(); }
    [[nodiscard]] asio::any_io_executor workers() { return engine_.workers(); }
    [[nodiscard]] Clock& clock() { return clock_; }
    [[nodiscard]] StatusBarViewModel& viewModel() { return *viewModel_; }
    [[nodiscard]] StatusBarPollingCoordinator& coordinator() { return *coordinator_; }
    [[nodiscard]] ConfigurationManager& configuration() { return *configuration_; }
    [[nodiscard]] HistoryCoordinator& history() { return *history_; }
    [[nodiscard]] UserDefaults& defaults() { return *defaults_; }
    [[nodiscard]] AppDelegate& delegate() { return *delegate_; }
    /// Whether the readings are the built-in demonstration's.
    [[nodiscard]] bool isDemonstration() const { return environment_.demo != nullptr; }
    [[nodiscard]] const Environment& environment() const { return environment_; }
    [[nodiscard]] const Folders& folders() const { return environment_.folders; }
    [[nodiscard]] UserNotificationGlucoseAlertDelivery& alertDelivery() { return *alertDelivery_; }
    /// In a demonstration, one that changes nothing.
    [[nodiscard]] const std::shared_ptr<LoginItemControlling>& loginItem() const { return loginItem_; }
    /// What the probe finds, and what became of the last alert. Of a run that alerts; awaited on main(), for
    /// some seconds at most.
    [[nodiscard]] asio::awaitable<AlertPath> lookAtAlertPath();

    /// For the clients of accounts that are checked before they are stored.
    [[nodiscard]] ServiceClientParts clientParts();

    /// Posts a notification that a person sees once ever; the flag `key` of the user defaults remembers that.
    /// One that the desktop did not take comes another time. Nothing in a run that posts none.
    void notifyOnce(std::string_view key, UserNotification notification);

    /// The windows that the launch sequence may need; a run without windows has none.
    struct Windows {
        std::function<void()> ensureStatusItem{};
        OnboardingCoordinating* onboarding = nullptr;
        TermsAgreementCoordinating* terms = nullptr;
    };
    /// Begins the launch sequence.
    void launch(Windows windows);
    /// Called when the person chose an alert's notification itself.
    void onAlertOpened(std::function<void()> handler) { alertOpened_ = std::move(handler); }
    /// Reads the stored configuration again: another process says that it changed it.
    void reloadConfiguration() { reloadTimer_.start(); }
    /// The same for the user defaults alone, which need no keyring.
    void reloadDefaults() { defaultsTimer_.start(); }
    /// The person has accepted the terms of use.
    void termsDidChange();
    /// This process stored an account, or ended the first-run steps.
    void storedStateDidChange();
    /// Another process changed saved history, or how it is saved.
    void reloadHistory() { history_->historyDidChange(); }
    /// Resumes when the launch sequence has ended, and it is decided who polls.
    [[nodiscard]] asio::awaitable<void> launched();
    /// Whether another process polls, and this one shows what it tells.
    [[nodiscard]] bool follows() const { return sharing_ && sharing_->follows(); }
    /// Polls from now on, whoever else does.
    void stopFollowing() { sharing_->stopFollowing(); }

    /// Ends polling and saves what is pending, within about a second; the last call but the destructor. True
    /// when every thread has ended; when false, something still blocks one and the process should leave by
    /// _exit.
    [[nodiscard]] bool shutDown();

private:
    Core(Environment environment, std::unique_ptr<Engine> engine, std::unique_ptr<SystemClock> clock,
         const CoreOptions& options);
    void makeAlerts(bool postsAlerts);
    asio::awaitable<void> postOnce(std::string key, UserNotification notification);
    void makeSharing(SharingKind kind);
    /// Once the configuration has been read.
    asio::awaitable<void> beginSharing();
    void pollingRoleDidChange(PollingRole role, bool alone);
    /// Shows what the process tells that polls.
    void show(const FollowedState& followed);
    /// Whose data this run wants; empty without an account.
    [[nodiscard]] std::string sharedAccount() const;
    [[nodiscard]] bool canPoll() const;
    void watchStoredState();
    void saveDefaultsLater();
    /// Tells of bookkeeping that cannot be saved, and of the end of that.
    void defaultsDidSave(std::error_code error);
    /// Lets the engine do what waits for it; false when it is too busy.
    bool engineTookTurns();
    asio::awaitable<void> reload(bool configurationToo);
    asio::awaitable<void> prepareDemo();
    /// Of a run whose bookkeeping cannot be read: who has an account has been through the first-run steps.
    asio::awaitable<void> concludeFromAccount();

    std::unique_ptr<Engine> engineOwner_;
    Engine& engine_;
    std::unique_ptr<SystemClock> clockOwner_;
    SystemClock& clock_;
    Environment environment_;
    QtMainLoop mainLoop_;
    SystemRandom random_;
    CurlHttpClient http_;
    std::shared_ptr<UserDefaults> defaults_;
    asio::strand<asio::any_io_executor> defaultsFile_;  ///< One access to its file at a time.
    std::unique_ptr<ConfigurationManager> configuration_;
    std::unique_ptr<StatusBarViewModel> viewModel_;
    std::unique_ptr<NetworkMonitor> network_;
    std::unique_ptr<AlertSound> alertSound_;  ///< Like the next two, of a run that alerts.
    std::unique_ptr<NotificationCenter> desktopNotifications_;
    std::unique_ptr<AlertProbe> alertProbe_;
    std::unique_ptr<UserNotificationCenter> noNotifications_;  ///< Of a run that does not.
    std::unique_ptr<UserNotificationGlucoseAlertDelivery> alertDelivery_;
    std::unique_ptr<HistoryCoordinator> history_;
    std::unique_ptr<StatusBarPollingCoordinator> coordinator_;
    std::unique_ptr<LogindEvents> workspace_;
    std::shared_ptr<LoginItemControlling> loginItem_;
    bool asksForTerms_ = false;              ///< Nothing is polled before terms of use were accepted.
    std::unique_ptr<SharedPoller> sharing_;  ///< Not of a demonstration.
    PollingProgress progress_{};             ///< Of whoever polls.
    bool startedByPerson_ = false;           ///< And has not polled yet.
    std::shared_ptr<void> sharedState_;
    std::shared_ptr<void> sharedConfiguration_;
    std::unique_ptr<AppDelegate> delegate_;
    std::function<void()> alertOpened_;
    QFileSystemWatcher fileWatcher_;
    QTimer reloadTimer_;  ///< Lets a burst of file events pass before one reload.
    QTimer defaultsTimer_;
    QTimer saveRetryTimer_;  ///< Runs while the bookkeeping could not be saved.
    bool bookkeepingLost_ = false;
    Task<void> preparation_;   ///< Of a launch that has to be prepared.
    Task<void> sharingBegin_;  ///< Waits for the launch.
    bool ended_ = false;
};

}  // namespace tidewell
