#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "support/Time.h"

namespace tidewell {

/// A recorded glucose trace: values in mg/dL at their seconds since the first one, in ascending order.
struct GlucoseTrace {
    struct Point {
        double seconds;
        int mgdL;
        bool operator==(const Point&) const = default;
    };
    std::vector<Point> points;

    /// Reads CSV with a header line that names the columns "time_local" (YYYY-MM-DDTHH:MM:SS) and
    /// "glucose_mgdl"; further columns are ignored, and when a column "subject" names several people the
    /// first one is taken. Repeated moments keep the first value. Needs at least two readings and at most
    /// 200,000. An error is one sentence that names the line.
    [[nodiscard]] static std::expected<GlucoseTrace, std::string> parse(std::string_view csv);
    [[nodiscard]] static std::expected<GlucoseTrace, std::string> load(const std::filesystem::path& file);

    /// Seven days of a real person, five minutes apart, with lows, highs and gaps; see traces/README.md.
    [[nodiscard]] static const GlucoseTrace& builtIn();
    /// Where in builtIn() a replay starts by default: the turn of a high before a fast fall.
    static constexpr std::size_t builtInStart = 1155;

    /// Seven days of a real person with another sensor, 15 minutes apart; see traces/README.md.
    [[nodiscard]] static const GlucoseTrace& libre();
    /// The second of libre() at which a replay starts by default: a high's turn, eight hours after two lows.
    static constexpr double libreStart = 591240;
};

/// The trend that a sensor shows with a reading. The numbers are those that the service sent before words.
enum class SimulatedTrend {
    none,
    doubleUp,
    singleUp,
    fortyFiveUp,
    flat,
    fortyFiveDown,
    singleDown,
    doubleDown,
    notComputable,
    rateOutOfRange,
};

/// "DoubleUp" and so on, as the service spells them.
[[nodiscard]] std::string_view trendWord(SimulatedTrend trend);

/// A trace without end: after the last reading it goes on with the first, one usual interval later.
/// A position counts readings and may be negative (the round before). A value; `trace` outlives it.
class TraceReplay {
public:
    explicit TraceReplay(const GlucoseTrace& trace);

    [[nodiscard]] int mgdL(std::int64_t position) const;
    /// Seconds from reading `position` - 1 to reading `position`; gaps of the trace stay.
    [[nodiscard]] double spacing(std::int64_t position) const;
    /// From the slope over the quarter of an hour before, mg/dL per minute: beyond 3, 2 and 1 in either
    /// direction. notComputable when the reading before is missing.
    [[nodiscard]] SimulatedTrend trend(std::int64_t position) const;
    /// Length of one round in seconds, and in readings.
    [[nodiscard]] double roundSeconds() const { return round_; }
    [[nodiscard]] std::int64_t roundReadings() const
    {
        return static_cast<std::int64_t>(trace_->points.size());
    }

private:
    [[nodiscard]] const GlucoseTrace::Point& point(std::int64_t position) const;

    const GlucoseTrace* trace_;
    double usual_;  ///< Median distance of two readings, in seconds.
    double round_;
};

}  // namespace tidewell
