#include "insights/WeightedDistribution.h"

#include <algorithm>
#include <cmath>

#include "insights/StableSum.h"

namespace tidewell {

WeightedDistribution::WeightedDistribution(std::vector<WeightedValue> values) : values_{std::move(values)}
{
    if (!std::ranges::is_sorted(values_, {}, &WeightedValue::value))
        std::ranges::sort(values_, {}, &WeightedValue::value);
    if (std::ranges::all_of(values_, [this](const auto& v) { return v.weight == values_.front().weight; }))
        return;
    StableSum total;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < values_.size(); ++kept) {
        const double value = values_[i].value;
        const double below = total.value();
        StableSum own;
        for (; i < values_.size() && values_[i].value == value; ++i) {
            own.add(values_[i].weight);
            total.add(values_[i].weight);
        }
        values_[kept] = {value, own.value()};
        middles_.push_back(below + own.value() / 2);
    }
    values_.resize(kept);
    total_ = total.value();
}

std::optional<double> WeightedDistribution::percentile(double p) const
{
    if (values_.empty())
        return {};
    const double share = p > 0 ? std::min(p, 1.0) : 0;
    return middles_.empty() ? interpolatedOrder(share) : interpolatedMiddle(share);
}

double WeightedDistribution::interpolatedOrder(double p) const
{
    const double h = p * static_cast<double>(values_.size() - 1);
    const auto below = static_cast<std::size_t>(std::floor(h));
    const auto above = static_cast<std::size_t>(std::ceil(h));
    return std::lerp(values_[below].value, values_[above].value, h - std::floor(h));
}

double WeightedDistribution::interpolatedMiddle(double p) const
{
    const double target = p * total_;
    if (target <= middles_.front())
        return values_.front().value;
    if (target >= middles_.back())
        return values_.back().value;
    const auto b = static_cast<std::size_t>(std::ranges::lower_bound(middles_, target) - middles_.begin());
    const double share = (target - middles_[b - 1]) / (middles_[b] - middles_[b - 1]);
    return std::lerp(values_[b - 1].value, values_[b].value, share);
}

}  // namespace tidewell
