#pragma once

#include "sources/GlucoseReading.h"

namespace tidewell {

// LibreLinkUp gives two series of one sensor: the current value, each minute, and a graph of it.

/// A graph value this near to a current value is the same measurement.
inline constexpr Seconds sameMeasurement{30};

/// Stands for a minute at most.
[[nodiscard]] inline bool isCurrentValue(const GlucoseReading& reading)
{
    return reading.source == GlucoseProvider::libreLinkUp && reading.sampleDuration <= Seconds{60};
}

/// Stands for more.
[[nodiscard]] inline bool isGraphValue(const GlucoseReading& reading)
{
    return reading.source == GlucoseProvider::libreLinkUp && !isCurrentValue(reading);
}

}  // namespace tidewell
