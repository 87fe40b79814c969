#include "statusbar/GlucoseSparkline.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <utility>

namespace tidewell {

namespace {

namespace chrono = std::chrono;

constexpr std::array<std::string_view, 8> blocks{"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
/// How far ahead of now a reading may be dated, as in the picture.
constexpr Seconds furthestAhead{300};
/// As wide as a digit, and no place to break a line.
constexpr std::string_view gap = "\u2007";

chrono::minutes step(GraphTimeWindow window)
{
    using enum GraphTimeWindow;
    switch (window) {
    case hours24: return chrono::minutes{60};
    case hours12: return chrono::minutes{30};
    case hours6: return chrono::minutes{15};
    case hours3: return chrono::minutes{10};
    case hours1: return chrono::minutes{5};
    }
    std::unreachable();
}

/// The readings of one character.
struct Cell {
    double sum = 0;
    int count = 0;
    bool joinsPrevious = false;  ///< No gap lies between its first reading and the one before.
};

}  // namespace

std::string glucoseSparkline(const GlucoseGraphContent& content)
{
    // The plot of the picture, one point wide for each character, and its values between 0 and 1.
    const chrono::minutes width = step(content.timeWindow);
    const auto cellCount =
        static_cast<std::size_t>(chrono::hours{static_cast<int>(content.timeWindow)} / width);
    GlucoseGraphContent aligned = content;
    std::erase_if(aligned.glucoseHistory,
                  [&](const GlucoseReading& one) { return !(one.date <= content.now + furthestAhead); });
    // Later than now, so that a reading of this moment does not move on with the next one.
    const auto minute = chrono::floor<chrono::minutes>(content.now);
    aligned.now = minute - minute.time_since_epoch() % width + width;
    const auto noText = [](std::string_view, double) { return GraphSize{}; };
    const GlucoseGraphLayout layout = glucoseGraphLayout(aligned, {1000, 1000}, noText);

    std::vector<Cell> cells(cellCount);
    for (const GraphPoint& point : layout.points) {
        const double share = (point.at.x - layout.graphRect.x) / layout.graphRect.width;
        const auto index =
            static_cast<std::size_t>(std::clamp(share, 0.0, 1.0) * static_cast<double>(cellCount));
        Cell& cell = cells[std::min(index, cellCount - 1)];
        if (cell.count++ == 0)
            cell.joinsPrevious = point.joinsPrevious;
        cell.sum += (point.at.y - layout.graphRect.y) / layout.graphRect.height;
    }

    std::string line;
    std::string_view last;
    std::size_t missing = 0;  // After it.
    for (const Cell& cell : cells) {
        if (cell.count == 0) {
            ++missing;
            continue;
        }
        const double mean = cell.sum / cell.count;
        // On an axis without end, which odd thresholds make, there is no telling.
        const auto level =
            std::isfinite(mean) ? static_cast<std::size_t>(mean * static_cast<double>(blocks.size())) : 0;
        for (; missing > 0; --missing) {
            if (!last.empty())
                line += cell.joinsPrevious ? last : gap;
        }
        last = blocks[std::min(level, blocks.size() - 1)];
        line += last;
    }
    return line;
}

}  // namespace tidewell
