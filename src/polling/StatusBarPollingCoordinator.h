#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "config/AppConfiguration.h"
#include "config/UserDefaults.h"
#include "history/HistoryCoordinator.h"
#include "polling/PollingProgress.h"
#include "polling/StatusBarPollingSchedule.h"
#include "polling/UserNotificationGlucoseAlertDelivery.h"
#include "sources/GlucoseAPIProtocol.h"
#include "sources/NetworkMonitor.h"
#include "statusbar/StatusBarViewModel.h"
#include "support/Clock.h"
#include "support/Random.h"

namespace tidewell {

/// The shortest and the longest time that alerts can be snoozed for.
inline constexpr Seconds shortestSnooze{60};
inline constexpr Seconds longestSnooze{24.0 * 3600};

/// The polling loop: sleeps, fetches, classifies what came, keeps the view model current, and alerts.
///
/// Serialised on `engine`. Every public member may be called from any thread: it marks the generation at once
/// and does the rest on the engine. The view model is touched on `main` only, and only while the generation
/// under which the work began is still the current one.
///
/// The readings held go back 24 hours from the newest one, and the newest one stays on screen whatever older
/// ones the service answers with. An answer whose newest reading is dated more than five minutes ahead of the
/// clock is not used: one of the two clocks is wrong, and the ages of its readings are then unknown. One
/// that is over a minute ahead is shown, with the clock as the current error: alerts do not go by it.
///
/// After each good answer the newest reading goes through one alert pass, which posts at most one
/// notification. When no reading comes any more, that is told once, from a timer of its own. An end of the
/// run ends both; what is then already on its way to the desktop still arrives there.
///
/// A run begins with the saved readings, so that the graph is there before the first answer, and hands what
/// it has after each good answer to saved history. So what the service still has after a sleep or an outage
/// is saved too.
class StatusBarPollingCoordinator {
public:
    /// What is referred to outlives the coordinator and the last turn of `engine`.
    struct Parts {
        asio::any_io_executor engine;
        asio::any_io_executor main;
        Clock& clock;
        RandomSource& random;
        StatusBarViewModel& viewModel;
        NetworkMonitor& networkMonitor;
        UserDefaults& defaults;
        std::function<std::optional<AppSettings>()> settings;  ///< Called on `main`.
        UserNotificationGlucoseAlertDelivery& alertDelivery;
        HistoryCoordinator* history = nullptr;  ///< Follows the account of a run before that run begins.
        /// Called on `main` when a poll has ended and the next one is planned; may be empty.
        std::function<void(const PollingProgress&)> progressDidChange{};
    };

    explicit StatusBarPollingCoordinator(Parts parts);
    /// Ends the run like stop(). On `main`, before the view model goes.
    ~StatusBarPollingCoordinator();
    StatusBarPollingCoordinator(const StatusBarPollingCoordinator&) = delete;
    StatusBarPollingCoordinator& operator=(const StatusBarPollingCoordinator&) = delete;

    /// Begins to poll through `client`, of an account at `provider`. A run that goes on is stopped first.
    void start(std::shared_ptr<GlucoseAPIProtocol> client, GlucoseProvider provider);
    /// Goes on from what another run began: what is shown stays, and the first request comes when that run
    /// would have made its next one, or at once when that moment is over. The problem that the other run had
    /// is shown until the next answer; without one, nothing waits for the person. Forgets what it knew
    /// before.
    void resume(std::shared_ptr<GlucoseAPIProtocol> client, GlucoseProvider provider,
                PollingResumption resumption);
    /// Ends the run; no result of it reaches the view model any more.
    void stop();
    /// Another configuration: stops, forgets readings and recovery state, and starts with `client`; without
    /// one, shows `problem`, or that a sign-in is required.
    void resetForNewConfiguration(std::shared_ptr<GlucoseAPIProtocol> client, GlucoseProvider provider,
                                  std::optional<ErrorInfo> problem = {});
    /// An account that cannot be asked, because of `problem`: like resetForNewConfiguration() without a
    /// client, but its data counts as missing.
    void resetForUnreachableAccount(GlucoseProvider provider, ErrorInfo problem);
    /// An account whose data another process provides: like resetForNewConfiguration(), but waits for the
    /// data instead of asking for them.
    void resetForFollowing();
    /// Lets an account that needed the person try again: resets the recovery state and refreshes.
    void reconnect();

    /// Refreshes now, or joins the refresh that is running. Returns when it has ended; at once when it may
    /// not start (the account needs the person, or the service asked to wait). Awaited on any executor.
    [[nodiscard]] asio::awaitable<void> refreshNow();
    /// The machine woke up: a debounced refresh after the network has come back.
    void refreshAfterWake();

    /// Silences the snoozed categories from now on for that long, at least `shortestSnooze` and at most
    /// `longestSnooze`; a later call wins. Kept in the defaults and shown by the view model. Needs no run.
    void snoozeAlerts(Seconds duration);
    /// Ends the snooze.
    void resumeAlerts();
    /// The stored snooze was changed elsewhere, and the defaults were loaded again.
    void alertSnoozeDidReload();
    /// The preferences changed. Alerts by readings follow with the next pass in any case; missing data is
    /// looked at anew, and a pass that has not posted yet begins again.
    void alertSettingsDidUpdate();
    /// The desktop takes notifications again: what it did not take is tried anew at once, instead of within a
    /// minute.
    void alertPathDidRecover();

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
