#pragma once

#include <cmath>

namespace tidewell {

/// A sum whose error does not grow with the number of terms (Neumaier 1974, doi 10.1002/zamm.19740540106).
class StableSum {
public:
    void add(double term)
    {
        const double next = sum_ + term;
        // What the addition lost of the smaller one.
        lost_ += std::abs(sum_) >= std::abs(term) ? (sum_ - next) + term : (term - next) + sum_;
        sum_ = next;
    }
    [[nodiscard]] double value() const { return sum_ + lost_; }

private:
    double sum_ = 0;
    double lost_ = 0;
};

}  // namespace tidewell
