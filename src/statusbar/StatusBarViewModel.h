#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/AppConfiguration.h"
#include "sources/GlucoseReading.h"
#include "sources/GlucoseUnits.h"
#include "support/Clock.h"
#include "support/Random.h"
#include "support/Task.h"

namespace tidewell {

/// What the program is doing in the background.
enum class StatusBarActivity { loading, refreshing, authenticating };

/// What the icon area shows: nothing known yet, a value, or that the person has to do something.
enum class StatusBarIconState { waiting, value, attention };

enum class TitleColor { primary, orange, red };

/// How old a reading is: current under 900 s, stale under 3600 s, then expired. A future reading has age 0.
enum class ReadingFreshness { current, stale, expired };
[[nodiscard]] ReadingFreshness readingFreshness(Date reading, Date now);

/// A problem, as the menu shows it.
struct ErrorInfo {
    std::string title;
    std::string message;
    std::string remediation;
    bool operator==(const ErrorInfo&) const = default;
};

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
    std::optional<Date> alertsSnoozedUntil{};
    std::optional<Date> nextRetryAt{};
    std::optional<GlucoseReading> presentedReading{};
    std::optional<ReadingFreshness> freshness{};  ///< Of the presented reading, at the last presentation.
    std::string accessibilityValue{};             ///< The spoken text of the status button.
    bool operator==(const StatusBarState&) const = default;
};

/// The observable state behind the status item. Lives on the executor `main`; every member is called there.
class StatusBarViewModel {
public:
    using SettingsSource = std::function<std::optional<AppSettings>()>;

    StatusBarViewModel(asio::any_io_executor main, Clock& clock, RandomSource& random, SettingsSource settings);
    ~StatusBarViewModel();
    StatusBarViewModel(const StatusBarViewModel&) = delete;

    [[nodiscard]] const StatusBarState& state() const;

    void setActivity(std::optional<StatusBarActivity> activity, Date now);
    void finishActivity();
    void presentReading(const GlucoseReading& reading, Date now);
    void setGlucoseHistory(std::vector<GlucoseReading> history);
    void setCurrentError(std::optional<ErrorInfo> error);
    void setNextRetryAt(std::optional<Date> date);
    void setAlertsSnoozedUntil(std::optional<Date> date);
    /// Forgets reading, history, error and retry: another account begins.
    void clear();
    void appSettingsDidUpdate();
    /// After sleep, when the wall clock may have jumped: ages the shown reading at once.
    void refreshFreshness();

    /// Called after every change of the state, once for a batch of changes in one call. Until the token goes.
    using Observer = std::function<void(const StatusBarState&)>;
    [[nodiscard]] std::shared_ptr<void> observe(Observer observer);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

/// The spoken text for the latest reading (or none): value, range, trend and age, without activity or error.
[[nodiscard]] std::string spokenGlucose(const std::optional<GlucoseReading>& reading, Date now,
                                        const std::optional<AppSettings>& settings);
/// "15 minutes", "1 hour", "2 hours and 5 minutes", "3 days": whole units, rounded down, at least a minute.
[[nodiscard]] std::string elapsedPhrase(Seconds age);

}  // namespace tidewell
