#pragma once

#include <vector>

#include "simulator/TraceReplay.h"

namespace tidewell {

/// A trace as a smooth curve without end: a value at any moment, also between two readings.
///
/// A cubic Hermite spline whose slopes are limited by Fritsch and Carlson (Monotone Piecewise Cubic
/// Interpolation, SIAM Journal on Numerical Analysis 17(2), 1980): it goes through every reading and never
/// beyond two neighbouring ones, so that it shows no low and no high that was not measured. After the last
/// reading it goes on with the first, one usual interval later.
class TraceCurve {
public:
    explicit TraceCurve(const GlucoseTrace& trace);

    /// mg/dL at that second of the trace; any second, also before the first reading.
    [[nodiscard]] double mgdL(double seconds) const;

private:
    struct Knot {
        double seconds;
        double mgdL;
        double slope;  ///< mg/dL per second.
    };
    std::vector<Knot> knots_;  ///< One round, and the first reading again at its end.
};

}  // namespace tidewell
