#pragma once

#include <array>
#include <map>
#include <optional>
#include <vector>

#include "InsightsTesting.h"

namespace tidewell {

/// The same figures in another way: it looks at each second of the period by itself, and adds whole numbers.
/// For readings with whole seconds and whole values, and few of them.
struct InsightsOracle {
    explicit InsightsOracle(const InsightsCalculationInput& input);

    struct Share {
        std::int64_t covered = 0;
        std::int64_t total = 0;
        bool operator==(const Share&) const = default;
    };
    std::vector<std::pair<std::int64_t, std::int64_t>> valuesAndSeconds{};  ///< By time.
    std::array<std::int64_t, 5> bandSeconds{};
    std::array<std::size_t, 5> bandCounts{};
    std::int64_t total = 0;
    double mean = 0;
    double deviation = 0;
    std::map<std::int64_t, Share> days{};  ///< By local date.
    std::array<Share, 24> hours{};
    bool missesNights = false;
    struct Bin {
        int dayCount = 0;
        std::array<std::optional<double>, 5> percentiles{};
    };
    std::array<Bin, 96> bins{};

    [[nodiscard]] static std::optional<double> percentile(
        std::vector<std::pair<std::int64_t, std::int64_t>> valuesAndSeconds, int hundredths);
};

}  // namespace tidewell
