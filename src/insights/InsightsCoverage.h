#pragma once

#include <span>

#include "insights/InsightsSummary.h"

namespace tidewell {

/// How much of `interval` is observed, by days and hours of the local clock; without the warning. `observed`
/// is in order, and nothing in it overlaps. Linear in `observed` and in the hours of the interval.
[[nodiscard]] InsightsCoverage insightsCoverage(std::span<const DateInterval> observed,
                                                const DateInterval& interval, TimeZone zone);

/// Whether three nights and at least half of all are missing: less than 70 % of the time from midnight to
/// six, by the local clock, is observed. Counts only nights that lie in `interval` as a whole.
[[nodiscard]] bool hasMissingNights(std::span<const DateInterval> observed, const DateInterval& interval,
                                    TimeZone zone);

}  // namespace tidewell
