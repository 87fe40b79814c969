#include "simulator/TraceCurve.h"

#include <cmath>

namespace tidewell {
namespace {

/// Goes through every reading, and between two of them nowhere beyond them and nowhere back.
void expectMonotone(const GlucoseTrace& trace)
{
    const TraceCurve curve{trace};
    const TraceReplay replay{trace};
    for (std::int64_t i = 0; i < replay.roundReadings(); ++i) {
        const auto& point = trace.points[static_cast<std::size_t>(i)];
        const double next = replay.mgdL(i + 1);
        const double direction = next > point.mgdL ? 1 : next < point.mgdL ? -1 : 0;
        EXPECT_NEAR(curve.mgdL(point.seconds), point.mgdL, 1e-9);
        double before = point.mgdL;
        for (double part = 0.0625; part <= 1; part += 0.0625) {
            const double value = curve.mgdL(point.seconds + part * replay.spacing(i + 1));
            EXPECT_GE((value - before) * direction, -1e-9) << point.seconds << " + " << part;
            EXPECT_LE(std::abs(value - point.mgdL), std::abs(next - point.mgdL) + 1e-9);
            before = value;
        }
        EXPECT_NEAR(before, next, 1e-9);
    }
}

TEST(TraceCurve, goesThroughEveryReadingAndNeverBeyondTwoNeighbours)
{
    expectMonotone(GlucoseTrace::libre());
    expectMonotone(GlucoseTrace::builtIn());
    // Steps, plateaus, peaks and uneven distances, where other splines overshoot.
    expectMonotone({{{0, 100}, {900, 100}, {1800, 300}, {1808, 301}, {9000, 40}, {9900, 40}, {10800, 41}}});
    expectMonotone({{{0, 100}, {60, 400}}});
}

TEST(TraceCurve, isSmoothAndGoesRoundInBothDirections)
{
    const GlucoseTrace trace{{{0, 100}, {900, 110}, {1800, 130}, {2700, 120}}};
    const TraceCurve curve{trace};
    EXPECT_NEAR(curve.mgdL(3600), 100, 1e-9) << "one usual interval after the last reading";
    EXPECT_NEAR(curve.mgdL(-900), 120, 1e-9);
    EXPECT_NEAR(curve.mgdL(1000.5 * 3600), curve.mgdL(1800), 1e-6);
    const auto slope = [&curve](double from, double to) {
        return (curve.mgdL(to) - curve.mgdL(from)) / (to - from);
    };
    // The slope left and right of a reading is the same: no corner at 900, and flat at the peak.
    EXPECT_NEAR(slope(899.9, 900), slope(900, 900.1), 1e-4);
    EXPECT_NEAR(slope(1799, 1801), 0, 1e-4);
}

}  // namespace
}  // namespace tidewell
