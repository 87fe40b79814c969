#pragma once

#include <chrono>
#include <cstdint>

#include "support/TimeText.h"

namespace tidewell {

/// A part of the time line, from `start` up to before `end`.
struct DateInterval {
    Date start{};
    Date end{};
    [[nodiscard]] Seconds duration() const { return end - start; }
    bool operator==(const DateInterval&) const = default;
};

/// What clocks of one zone show. Looks the zone's rules up once for each time that they change, so it is for
/// moments in about ascending order. Years 1 to 9999.
class LocalClock {
public:
    struct Shown {
        std::chrono::sys_days date{};  ///< The local date, as if the local time were UTC.
        std::int32_t secondOfDay = 0;  ///< Whole seconds, rounded down.
    };

    explicit LocalClock(TimeZone zone) : zone_{zone} {}
    [[nodiscard]] Shown at(Date moment);
    /// When the clock next begins an hour after `moment`, or is set to another offset.
    [[nodiscard]] Date endOfHour(Date moment);

private:
    const TimeZone::OffsetSpan& spanOf(Date moment);
    std::int64_t localSecond(Date moment);

    TimeZone zone_;
    TimeZone::OffsetSpan span_{};  ///< Empty at first: begins and ends at the same moment.
};

/// The first moment of a local date; where clocks skipped its midnight or all of it, the first one after.
[[nodiscard]] Date startOfLocalDate(std::chrono::sys_days date, TimeZone zone);

/// Whether it has a length and lies within the years 1 to 9999.
[[nodiscard]] bool isUsable(const DateInterval& interval);

}  // namespace tidewell
