#pragma once

#include <cstdint>
#include <span>

#include "insights/InsightsSummary.h"
#include "insights/InsightsWeighting.h"

namespace tidewell {

/// Folds all days into one: for each quarter of an hour of the local clock the 5th, 25th, 50th, 75th and 95th
/// percentiles of its readings, weighted by time: the profile of the standard report (Battelino et al. 2019,
/// doi 10.2337/dci19-0028). A reading belongs to the bin of its own time. A bin with readings of fewer than
/// three local dates stays blank. Both passes of an hour that a clock goes through twice share their bins.
///
/// `weighted` is in order of time, `byValue` holds its indices in order of value.
[[nodiscard]] InsightsAGP insightsAGP(std::span<const InsightsWeightedReading> weighted,
                                      std::span<const std::uint32_t> byValue, TimeZone zone);

}  // namespace tidewell
