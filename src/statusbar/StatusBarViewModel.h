#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/AppConfiguration.h"
#include "sources/GlucoseReading.h"
#include "sources/GlucoseUnits.h"
#include "statusbar/ReadingPresentation.h"
#include "support/Clock.h"
#include "support/Random.h"
#include "support/Task.h"

namespace tidewell {

/// What the program is doing in the background.
enum class StatusBarActivity { loading, refreshing, authenticating };

/// What the icon area shows: nothing known yet, a value, or that there is none and somebody should look.
enum class StatusBarIconState { waiting, value, attention };

/// A problem, as the menu shows it.
struct ErrorInfo {
    std::string title;
    std::string message;        ///< May be empty.
    std::string remediation;    ///< May be empty.
    bool needsSignIn = false;   ///< Signing in is what helps; nothing is polled until then.
    bool canReconnect = false;  ///< The same account may be tried again.
    bool needsTerms = false;    ///< Accepting the terms of use is what helps; nothing is polled until then.
    bool needsSetup = false;  ///< Finishing the first-run steps is what helps; nothing is polled until then.
    bool operator==(const ErrorInfo&) const = default;
};

/// The warning that belongs to a stale or expired reading of that age.
[[nodiscard]] ErrorInfo staleReadingWarning(Seconds age);

/// Everything that the status item, its menu and `watch` show: a plain value that may travel between threads.
struct StatusBarState {
    std::string statusTitle{};
    StatusBarIconState iconState = StatusBarIconState::waiting;
    std::optional<StatusBarActivity> activity{};
    TitleColor titleColor = TitleColor::primary;
    std::vector<GlucoseReading> glucoseHistory{};  ///< Oldest first.
    std::optional<ErrorInfo> currentError{};
    std::optional<ErrorInfo> freshnessWarning{};
    bool hasWarning = false;
    std::optional<Date> alertsSnoozedUntil{};  ///< May be over; observers hear of that moment too.
    /// Why alerts would not be seen or heard, and on a second line what to do.
    std::optional<std::string> alertProblem{};
    /// What keeps readings from being saved or kept; monitoring goes on all the same.
    std::optional<std::string> historyProblem{};
    /// Why what the person chooses would be forgotten at the end of the run; a line for each sentence.
    std::optional<std::string> bookkeepingProblem{};
    bool termsPending = false;  ///< Newer terms of use wait for an answer; everything goes on meanwhile.
    std::optional<Date> nextRetryAt{};
    std::optional<Date> lastUpdateAt{};  ///< When the service last answered with readings.
    bool updateAvailable = false;        ///< Of the program.
    std::optional<GlucoseReading> presentedReading{};
    std::optional<ReadingFreshness> freshness{};  ///< Of the presented reading, at the last presentation.
    /// Of the presented reading, in whole minutes at the last look, which is at most two minutes ago until
    /// the reading expires; 0 under `recentAge`. Its change lets whoever shows an age show it anew.
    std::optional<std::int64_t> ageMinutes{};
    std::string accessibilityValue{};  ///< The spoken text of the status button.
    bool operator==(const StatusBarState&) const = default;
};

/// A spoken text as a whole: what is going on, or what is wrong (its title and message come last).
[[nodiscard]] std::string spokenStatus(std::string glucose, std::optional<StatusBarActivity> activity,
                                       const std::optional<ErrorInfo>& error);

/// The observable state behind the status item. Lives on the executor `main`; every member is called there.
///
/// The shown reading ages on its own. Its age is looked at when it turns stale and when it expires, and at
/// least every two minutes until then, so that a wall clock that is set forward is noticed. The age of one
/// reading never goes back, so that a wall clock that is set back does not make it look new. Observers are
/// also called when a snooze ends, although the state stays as it is: what is shown of it changes then.
class StatusBarViewModel {
public:
    using SettingsSource = std::function<std::optional<AppSettings>()>;

    /// `clock` and `random` outlive the executor's last turn.
    StatusBarViewModel(asio::any_io_executor main, Clock& clock, RandomSource& random,
                       SettingsSource settings);
    ~StatusBarViewModel();
    StatusBarViewModel(const StatusBarViewModel&) = delete;
    StatusBarViewModel& operator=(const StatusBarViewModel&) = delete;

    [[nodiscard]] const StatusBarState& state() const;

    /// Also clears the error, and presents the shown reading again, or else the newest of the history.
    void setActivity(std::optional<StatusBarActivity> activity, Date now);
    void finishActivity();
    void presentReading(const GlucoseReading& reading, Date now);
    void setGlucoseHistory(std::vector<GlucoseReading> history);
    void setCurrentError(std::optional<ErrorInfo> error);
    void setNextRetryAt(std::optional<Date> date);
    void setLastUpdateAt(std::optional<Date> date);
    void setUpdateAvailable(bool available);
    void setAlertsSnoozedUntil(std::optional<Date> date);
    void setAlertProblem(std::optional<std::string> problem);
    void setHistoryProblem(std::optional<std::string> problem);
    void setBookkeepingProblem(std::optional<std::string> problem);
    void setTermsPending(bool pending);
    /// Forgets reading, history, activity, error, retry and last update: another account begins.
    void clear();
    void appSettingsDidUpdate();
    /// After sleep, when the wall clock may have jumped: ages the shown reading at once.
    void refreshFreshness();

    /// Makes several changes that belong together; observers hear of them once.
    void batch(const std::function<void()>& changes);

    /// Called after a call that changed the state, once for all its changes, and at a snooze's end. An
    /// observer may change the state itself: everybody is then called once more. Until the token goes, which
    /// may be at any time.
    using Observer = std::function<void(const StatusBarState&)>;
    [[nodiscard]] std::shared_ptr<void> observe(Observer observer);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
