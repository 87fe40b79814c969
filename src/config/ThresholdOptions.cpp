#include "config/ThresholdOptions.h"

#include <fmt/format.h>

#include <cmath>
#include <vector>

namespace tidewell {

namespace {

using Options = std::vector<ThresholdOption>;

Options wholeOptions(int first, int last)
{
    Options options;
    for (int value = first; value <= last; ++value)
        options.push_back({.mgdL = static_cast<double>(value), .label = fmt::format("{} mg/dL", value)});
    return options;
}

/// Counts in tenths of a mmol/L, so that neither label nor conversion carries a binary fraction along.
Options tenthOptions(int firstTenth, int lastTenth)
{
    constexpr double mgdLPerMmolL = 18.0;
    Options options;
    for (int tenth = firstTenth; tenth <= lastTenth; ++tenth) {
        options.push_back({.mgdL = std::round(tenth * mgdLPerMmolL / 10),
                           .label = fmt::format("{}.{} mmol/L", tenth / 10, tenth % 10)});
    }
    return options;
}

}  // namespace

std::span<const ThresholdOption> thresholdOptions(ThresholdKind kind, bool mmolL)
{
    static const Options lowMgdL = wholeOptions(65, 90);
    static const Options highMgdL = wholeOptions(108, 360);
    static const Options lowMmolL = tenthOptions(36, 50);
    static const Options highMmolL = tenthOptions(60, 200);
    if (kind == ThresholdKind::low)
        return mmolL ? lowMmolL : lowMgdL;
    return mmolL ? highMmolL : highMgdL;
}

double ThresholdValidator::snap(std::span<const ThresholdOption> options, double mgdL)
{
    if (options.empty())
        return mgdL;
    const ThresholdOption* nearest = &options.front();
    for (const ThresholdOption& option : options) {
        if (std::abs(option.mgdL - mgdL) < std::abs(nearest->mgdL - mgdL))
            nearest = &option;
    }
    return nearest->mgdL;
}

}  // namespace tidewell
