#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace tidewell {

struct WeightedValue {
    double value = 0;
    double weight = 0;  ///< Above zero.
};

/// The percentiles of values of which each has a weight.
///
/// Where all weights are the same, to the bit, this is the usual interpolation between order statistics, type
/// 7 of Hyndman and Fan (1996, doi 10.1080/00031305.1996.10473566). Otherwise each distinct value stands at
/// the middle of its share of the total weight, and what lies between two of them is interpolated.
class WeightedDistribution {
public:
    /// Sorts by value, which costs nothing when they come in that order.
    explicit WeightedDistribution(std::vector<WeightedValue> values);

    /// The value at a share `p` of the weight, clamped to 0..1; empty without values. Never falls as p rises.
    [[nodiscard]] std::optional<double> percentile(double p) const;

private:
    [[nodiscard]] double interpolatedOrder(double p) const;
    [[nodiscard]] double interpolatedMiddle(double p) const;

    std::vector<WeightedValue> values_;  ///< With equal weights each one, else each value once.
    std::vector<double> middles_;  ///< Of the latter: what lies below a value and half of its own weight.
    double total_ = 0;
};

}  // namespace tidewell
