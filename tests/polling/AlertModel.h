#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/AppConfiguration.h"
#include "sources/GlucoseReading.h"
#include "statusbar/StatusBarViewModel.h"
#include "support/TimeText.h"

namespace tidewell {

/// A notification as a person sees it.
struct AlertNotice {
    std::string title{};
    std::string body{};
    bool urgent = false;
    bool operator==(const AlertNotice&) const = default;
};

/// Which notifications are due, by the rules as a person would tell them. Slow and plain: it keeps everything
/// that happened, and works each answer out of that anew. Knows nothing of src/polling.
class AlertModel {
public:
    explicit AlertModel(TimeZone zone) : zone_{zone} {}

    // What happens.

    /// The program starts, or follows another account.
    void begin(Date now);
    /// The account was connected anew, which begins every episode anew.
    void forgetTold();
    /// A good answer with that newest reading; false when it is too far in the future to be used.
    bool receive(const GlucoseReading& newest, Date now);
    /// The newest reading is looked at with these preferences; a snooze that is over ends.
    void pass(const AppSettings& settings, Date now);
    /// What the pass at that moment found due has reached the desktop.
    void posted(const AlertNotice& notice, Date passedAt);
    void snooze(Seconds duration, Date now);
    void resume();
    /// Whether `shown` is what a look without a pass may have made of the snooze, which then counts: one that
    /// is over ends, and one that a clock set back would prolong begins anew.
    bool mayFollow(std::optional<Date> shown, Date now);
    /// The stored moment was read.
    void loadSnooze(std::optional<Date> stored, Date now);
    void toldMissing(std::uint64_t gap);

    // What follows.

    [[nodiscard]] const std::optional<GlucoseReading>& newest() const { return newest_; }
    [[nodiscard]] std::optional<Date> snoozedUntil() const { return snoozedUntil_; }
    /// What the last pass has to post, if it comes to that at `now`.
    [[nodiscard]] std::optional<AlertNotice> due(Date now) const;

    /// The newest reading is too old, or none has come for as long. Empty when our clock cannot tell.
    [[nodiscard]] std::optional<bool> isMissing(Date now) const;
    /// Whether alerts could go by the newest reading when it came.
    [[nodiscard]] bool trustsNewest() const { return !newest_ || newest_->date == trusted_; }
    [[nodiscard]] bool wasToldMissing() const { return toldMissing_; }
    /// Counts fresh readings: each ends a gap.
    [[nodiscard]] std::uint64_t gap() const { return gap_; }
    /// Whether preferences, quiet hours and snooze let missing data be told.
    [[nodiscard]] bool mayTellMissing(const AppSettings& settings, Date now) const;
    [[nodiscard]] AlertNotice missingNotice(const std::optional<ErrorInfo>& problem, Date now) const;

private:
    enum class Kind { low, fall, high, rise };
    struct Event {
        enum class What { pass, posted, forgotten } what;
        Date at{};
        GlucoseReading reading{};                       ///< Of a pass.
        std::shared_ptr<const AppSettings> settings{};  ///< Of a pass.
        Kind kind{};                                    ///< Of something posted.
    };

    [[nodiscard]] static bool holds(Kind kind, const GlucoseReading& reading, const AppSettings& settings);
    [[nodiscard]] static bool isFresh(const GlucoseReading& reading, Date now);
    [[nodiscard]] bool isQuiet(const AppSettings& settings, Date now) const;
    [[nodiscard]] bool isHeard(Kind kind, const AppSettings& settings, Date now) const;
    [[nodiscard]] std::optional<Date> lastTold(Kind kind) const;
    [[nodiscard]] static AlertNotice notice(Kind kind, const GlucoseReading& reading,
                                            const AppSettings& settings);

    TimeZone zone_;
    std::vector<Event> events_{};
    std::optional<GlucoseReading> newest_{};
    std::optional<Date> snoozedUntil_{};
    Seconds snoozeLength_{0};
    Date began_{};
    Date trusted_{};  ///< Of the newest reading that alerts can go by; without any, when it began.
    bool toldMissing_ = false;
    std::uint64_t gap_ = 0;
};

}  // namespace tidewell
