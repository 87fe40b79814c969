#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/LoginItem.h"
#include "config/ConfigurationManager.h"
#include "history/HistoryCoordinator.h"
#include "polling/AlertHealth.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "polling/UserNotificationGlucoseAlertDelivery.h"
#include "statusbar/SilentLows.h"

namespace tidewell {

/// Everything that the settings window shows and that can change. English texts; whoever shows them
/// translates.
struct SettingsState {
    AppSettings settings{};  ///< As stored, or as being stored.
    /// The last change could not be stored, and why; `settings` are the old ones again. Until the next one.
    std::optional<std::string> saveProblem{};
    std::vector<SilentLowWarning> silentLows{};
    std::optional<std::string> alertProblem{};  ///< As the menu shows it; lines separated by a line feed.

    std::optional<NotificationAuthorizationState> authorization{};  ///< Empty until it is known.
    bool isSendingTestAlert = false;
    std::string testAlertMessage{};  ///< "Test alert sent." and so on; empty before the first one.

    std::optional<LoginItemStatus> loginItem{};  ///< Empty until it is known.
    std::string loginItemProblem{};              ///< Why the last change failed.
    bool isChangingLoginItem = false;

    GlucoseHistoryStatus history{};
    bool isChangingHistory = false;
    std::string historyMessage{};  ///< What the last operation came to.
    bool historyFailed = false;    ///< ... and that it failed.

    std::optional<GlucoseAccountConfiguration> account{};  ///< Never with its password.
    bool hasPassword = false;
    std::optional<ErrorInfo> accountProblem{};  ///< What polling says of it.
    bool isChangingAccount = false;
    bool isReconnecting = false;
    std::string accountMessage{};  ///< What the last operation came to.
    bool accountFailed = false;    ///< ... and that it failed.

    std::vector<AlertFinding> findings{};  ///< Worst first; empty until looked at.
    std::optional<Date> lookedAt{};        ///< When the findings were so; empty until looked at.
    bool isLooking = false;                ///< A newer look is under way or due: the findings are old.
    bool operator==(const SettingsState&) const = default;
};

/// The settings without their window: shows what is stored, stores each change at once, one after the other,
/// and goes back to what is stored when that fails. Main thread, which it never blocks.
///
/// What other processes and the menu change is shown as well. Ends with its window: what was begun ends by
/// itself, unseen.
class SettingsModel {
public:
    /// What is referred to outlives the model, and the configuration also the last turn of `main`.
    struct Services {
        asio::any_io_executor main;
        asio::any_io_executor workers;  ///< For the login item.
        Clock& clock;
        ConfigurationManager& configuration;
        StatusBarViewModel& statusBarViewModel;
        StatusBarPollingCoordinator& coordinator;
        HistoryCoordinator& history;
        UserNotificationGlucoseAlertDelivery& alertDelivery;
        std::shared_ptr<LoginItemControlling> loginItem;
        /// All that there is to find; takes seconds. Awaited on `main`.
        std::function<asio::awaitable<std::vector<AlertFinding>>()> look;
    };
    explicit SettingsModel(Services services);
    ~SettingsModel();
    SettingsModel(const SettingsModel&) = delete;
    SettingsModel& operator=(const SettingsModel&) = delete;

    [[nodiscard]] const SettingsState& state() const;
    /// Calls the observer after each change of state(), until the token goes.
    [[nodiscard]] std::shared_ptr<void> observe(std::function<void()> observer);

    /// The window is shown or came to the front: looks at permission, login item, what is saved, and what
    /// there is to find. From then on it looks again by itself, a few seconds apart at the least, whenever
    /// something changes that the findings depend on.
    void refresh();
    /// Stores preferences that differ from state().settings, and leaves all others as they then are.
    /// startAtLogin is not looked at. A threshold that none of the options is, and other values that the
    /// settings do not offer, are not taken; saveProblem says so.
    void change(AppSettings wanted);
    /// The desktop's entry first, then the preference, which follows what is so.
    void setStartAtLogin(bool starts);
    void sendTestAlert();

    /// The person accepted the disclosure.
    void enableHistory(std::int64_t retentionDays);
    void pauseHistory();
    /// A shorter one deletes older readings: asked beforehand.
    void setHistoryRetention(std::int64_t days);
    /// Of the account, or of every account and person.
    void deleteHistory(bool everyAccount);

    /// Has the service asked once more. Does nothing while nothing is asked at all, for want of a password,
    /// the terms, or the rest of the first-run steps.
    void reconnect();
    /// Removes account and password; saved history stays unless it is to be deleted, which comes first: when
    /// that fails, the account stays.
    void signOut(bool deletesHistory);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
