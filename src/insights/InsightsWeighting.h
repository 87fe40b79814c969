#pragma once

#include <span>
#include <vector>

#include "insights/LocalClock.h"
#include "sources/GlucoseReading.h"

namespace tidewell {

/// What Insights takes from a saved reading.
struct InsightsReading {
    double mgdL = 0;
    Date date{};
    Seconds sampleDuration{};  ///< The longest time that it may stand for.
    Date fetchedAt{};          ///< Of readings with the same date, the one that was fetched later counts.
};
[[nodiscard]] InsightsReading insightsReading(const GlucoseReading& reading, Date fetchedAt);

/// A reading and the time in the period that it represents.
struct InsightsWeightedReading {
    InsightsReading reading{};
    Seconds duration{};       ///< Above zero.
    DateInterval observed{};  ///< The same time on the time line.
};

/// Puts readings in order of time, each time once, and leaves out what cannot have been measured: no number,
/// a value or a duration out of range. Returns how many of the latter. Only sorts what is not in order.
std::size_t arrangeReadings(std::vector<InsightsReading>& readings);

/// Weighs arranged readings by time: each from its own time until the next one, the end of its sample
/// duration or of the period, and not from before the period. What has no time is left out.
///
/// What lies between the end of a sample duration and the next reading is missing time, so a gap weighs
/// nothing.
[[nodiscard]] std::vector<InsightsWeightedReading> weightedReadings(std::span<const InsightsReading> arranged,
                                                                    const DateInterval& interval);

/// The time that is covered by readings, in order: what adjoins is one interval.
[[nodiscard]] std::vector<DateInterval> observedIntervals(
    std::span<const InsightsWeightedReading> weightedReadings);

}  // namespace tidewell
