#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "support/Time.h"

namespace tidewell {

/// The result of one poll.
struct StatusBarPollOutcome {
    enum class Kind { httpError, newData, noNewData, networkError, sessionExpired };
    Kind kind = Kind::noNewData;
    std::optional<int> httpStatus{};  ///< Of httpError: 429 when the service asked us to slow down.
    bool operator==(const StatusBarPollOutcome&) const = default;
};

/// How long the polling loop sleeps before its next refresh.
///
/// Plain values without a clock: `now` is passed in, so every rule can be tested on its own.
/// Owned by StatusBarPollingCoordinator and used on its executor only; it has no lock.
struct StatusBarPollingSchedule {
    static constexpr Seconds usualReadingInterval{300};

    std::function<double()> randomUnit;              ///< Jitter, -1 to +1; a value outside is clamped.
    Seconds readingInterval = usualReadingInterval;  ///< How often the service publishes a reading.
    std::int64_t consecutiveFailures = 0;
    StatusBarPollOutcome lastOutcome{};
    std::optional<Date> lastReadingDate{};
    std::int64_t fastResumeCycles = 0;   ///< Short backoffs still to be spent after new data.
    std::int64_t consecutiveNoData = 0;  ///< No-data results within the escalation window.
    std::optional<Date> lastNoDataAt{};
    std::optional<Date> nextPollDate{};  ///< Empty while there is nothing to aim at.

    /// Whole milliseconds to sleep; 5000 for the very first poll, else at least 1000. May spend a fast-resume
    /// cycle.
    [[nodiscard]] std::int64_t delayForNextPoll(Date now);
    /// When to ask for the reading that comes after one of that date: after the interval and a grace of 10 s,
    /// from five minutes on 30 s.
    [[nodiscard]] Date targetBehind(Date reading) const;
    /// Records a good answer; returns the new target, which lies behind that reading.
    Date recordSuccess(Date newestReading, bool isNew);
    /// Records an answer without readings; returns the new count within the window.
    std::int64_t recordNoData(Date now, Seconds window);
    /// Records a failed poll. While no reading is known this also sets the target, or else every poll would
    /// count as the very first.
    void recordFailure(StatusBarPollOutcome outcome, Date now);

    /// Seconds to wait when there is nothing to aim at, by the last outcome. May spend a fast-resume cycle.
    [[nodiscard]] double adaptiveBackoff(Date now);
    /// The wait after that many failed polls in a row, jitter included. A negative count stops the program.
    [[nodiscard]] double failureBackoff(std::int64_t failures) const;
    /// The wait when nothing new came, by the age of the newest reading (infinite without one).
    [[nodiscard]] double readingAgeBackoff(double ageSeconds) const;
};

}  // namespace tidewell
