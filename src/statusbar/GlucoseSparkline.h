#pragma once

#include <string>

#include "statusbar/GlucoseGraphLayout.h"

namespace tidewell {

/// The graph as one line of block characters, "▂▃▄▄▅", oldest first, on the scale of the graph's value axis.
///
/// Each character is the mean of its share of the window, which is 5 minutes of an hour and an hour of a day.
/// The shares begin at round times, so that the line stays the same until one of them is over or a reading
/// has come. Gaps are figure spaces; those before the first reading and after the last are left out. Empty
/// without readings in the window. Pure.
[[nodiscard]] std::string glucoseSparkline(const GlucoseGraphContent& content);

}  // namespace tidewell
