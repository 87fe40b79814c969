#pragma once

#include <cstdint>
#include <optional>

#include "polling/GlucoseAlertEvaluator.h"
#include "statusbar/StatusBarViewModel.h"

namespace tidewell {

/// Decides when to tell that no reading comes any more: once per gap, when the newest reading turns 900 s
/// old.
///
/// A gap ends with a fresh reading, and only then can the next one be told. A value without clock or side
/// effects; owned by StatusBarPollingCoordinator and used on its executor only.
struct MissingDataAlert {
    /// The age of the newest reading, or of a run without any, that makes a gap.
    static constexpr Seconds patience{900};
    /// Between two looks while a gap is untold and nothing but time can help.
    static constexpr Seconds lookInterval{60};
    /// A reading that is dated further ahead ends no gap: alerts do not go by it, and one of the clocks is
    /// wrong.
    static constexpr Seconds futureTolerance{60};

    /// A run begins to poll. What is held or told from an earlier run of the same account stays.
    void beginRun(Date now, std::uint64_t pollsBegun);
    /// A poll has ended well; `newest` is the date of the newest reading held. Nothing counts of one that is
    /// over `futureTolerance` ahead but that it came.
    void recordReading(Date newest, Date now);
    /// The machine slept, or its clock was set: nothing is told before a poll that begins now has ended, nor
    /// after `lookInterval` at the latest.
    void hold(Date now, std::uint64_t pollsBegun);
    /// That poll has ended, well or not; the first one is number 1.
    void pollEnded(std::uint64_t number);

    /// What to do now.
    struct Look {
        bool post = false;            ///< Tell it now.
        std::optional<Date> again{};  ///< Else look again then; never, without some other event, when empty.
        bool operator==(const Look&) const = default;
    };
    /// `pass` says when it is now, and what snooze and quiet hours hold back.
    [[nodiscard]] Look look(const GlucoseAlertSettings& settings, const GlucoseAlertEvaluator::Pass& pass);

    /// Changes with each fresh reading.
    [[nodiscard]] std::uint64_t gap() const { return gap_; }
    /// The notification was posted. Nothing to record when that gap has ended meanwhile.
    void recordTold(std::uint64_t gap);

    /// What is wrong and since when, without a value. `problem` is what the menu shows; times in `zone`.
    [[nodiscard]] GlucoseAlertContent content(const std::optional<ErrorInfo>& problem, Date now,
                                              TimeZone zone) const;

private:
    [[nodiscard]] bool knowsAge(Date now) const;

    Date since_{};                  ///< When the run began, or when a fresh reading last came.
    Date began_{};                  ///< When the run began.
    std::optional<Date> newest_{};  ///< Date of the newest reading that alerts could go by.
    bool ahead_ = false;            ///< The last one that came was dated too far ahead for that.
    bool told_ = false;
    std::uint64_t gap_ = 0;
    std::optional<Date> heldUntil_{};
    std::uint64_t heldBehind_ = 0;  ///< The poll that ends the hold comes after this one.
};

}  // namespace tidewell
