#include "simulator/TraceCurve.h"

#include <cmath>

namespace tidewell {

TraceCurve::TraceCurve(const GlucoseTrace& trace)
{
    const TraceReplay replay{trace};
    const auto count = replay.roundReadings();
    double seconds = 0;
    for (std::int64_t i = 0; i <= count; ++i) {
        seconds += i == 0 ? 0 : replay.spacing(i);
        knots_.push_back({.seconds = seconds, .mgdL = static_cast<double>(replay.mgdL(i)), .slope = 0});
    }

    const auto secant = [this, count](std::int64_t i) {
        const auto left = static_cast<std::size_t>((i + count) % count);
        return (knots_[left + 1].mgdL - knots_[left].mgdL) /
               (knots_[left + 1].seconds - knots_[left].seconds);
    };
    // A reading that is no lower and no higher than both its neighbours gets the mean of its two secants.
    for (std::int64_t i = 0; i < count; ++i)
        if (secant(i - 1) * secant(i) > 0)
            knots_[static_cast<std::size_t>(i)].slope = (secant(i - 1) + secant(i)) / 2;
    knots_.back().slope = knots_.front().slope;
    // Fritsch and Carlson's circle of radius 3, within which the cubic is monotone; so is it with any smaller
    // slope, and the first and the last knot, which are one reading, take the smaller of theirs.
    for (std::int64_t i = 0; i < count; ++i) {
        auto& left = knots_[static_cast<std::size_t>(i)];
        auto& right = knots_[static_cast<std::size_t>(i) + 1];
        const double steepest = 3 * std::abs(secant(i));
        if (const double length = std::hypot(left.slope, right.slope); length > steepest) {
            left.slope *= steepest / length;
            right.slope *= steepest / length;
        }
    }
    auto& first = knots_.front().slope;
    auto& last = knots_.back().slope;
    first = last = std::abs(first) < std::abs(last) ? first : last;
}

double TraceCurve::mgdL(double seconds) const
{
    const double round = knots_.back().seconds;
    const double at = seconds - round * std::floor(seconds / round);
    const auto next = std::ranges::upper_bound(knots_, at, {}, &Knot::seconds);
    if (next == knots_.end())
        return knots_.back().mgdL;
    const Knot& right = *next;
    const Knot& left = *(next - 1);
    const double width = right.seconds - left.seconds;
    const double t = (at - left.seconds) / width;
    // The cubic Hermite basis.
    const double rest = 1 - t;
    return left.mgdL * (1 + 2 * t) * rest * rest + left.slope * width * t * rest * rest +
           right.mgdL * t * t * (3 - 2 * t) - right.slope * width * t * t * rest;
}

}  // namespace tidewell
