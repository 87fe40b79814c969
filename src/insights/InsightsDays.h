#pragma once

#include <cstdint>
#include <vector>

#include "insights/InsightsSummary.h"
#include "insights/InsightsWeighting.h"

namespace tidewell {

/// One local date of a period: its curve, and what it comes to by itself.
struct InsightsDay {
    struct Point {
        Date date{};
        double mgdL = 0;
        std::int32_t secondOfDay = 0;  ///< By the local clock.
        bool joinsPrevious = false;    ///< Nothing is missing between the point before and this one.
    };
    std::chrono::sys_days date{};  ///< The local date, as if the local time were UTC.
    std::vector<Point> points{};   ///< By time; of a day without readings, none.
    Seconds observed{};            ///< For how long the readings stand.
    std::optional<double> meanMgdl{};
    double inRangeFraction = 0;  ///< Of the observed time, 70 to 180 mg/dL; 0 without any.
};

/// The curves of each local date that the period touches, by date, of readings in any order. Weighted as the
/// summary is; a reading belongs to the date of its own time, or to the first one when it reaches into the
/// period. A gap that is longer than the sample duration by
/// more than a tenth joins nothing, nor does a clock that was put back: its hour lies twice over the same
/// times. Linear in readings and days apart from the sort of readings that come unsorted.
[[nodiscard]] std::vector<InsightsDay> insightsDays(std::vector<InsightsReading> readings,
                                                    const DateInterval& interval, TimeZone zone);

}  // namespace tidewell
