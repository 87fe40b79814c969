#pragma once

#include <vector>

#include "sources/GlucoseReading.h"

namespace tidewell {

/// How far back from its newest reading a history goes.
inline constexpr Seconds historyLength{24.0 * 3600};

/// `held` (oldest first, as returned by an earlier call) with what was just fetched, in any order.
///
/// Oldest first. Two readings of one source in the same second are one: the one fetched later counts, for
/// values are corrected, but a graph value of LibreLinkUp never counts against a current one. Such a graph
/// value within 30 s of a current value is left out: it is the same measurement, smoothed. The newest reading
/// held stays until there is a newer one, and the result ends `historyLength` before the newest.
[[nodiscard]] std::vector<GlucoseReading> mergedReadings(std::vector<GlucoseReading> held,
                                                         std::vector<GlucoseReading> fetched);

}  // namespace tidewell
