#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "simulator/TraceReplay.h"
#include "support/Time.h"

namespace tidewell {

/// What a Libre sensor's service has of one person, and in which form it sends it. Plain by default: a
/// current measurement each minute, graph values five minutes apart and about 19 minutes behind.
struct LibreReadingOptions {
    Seconds newestAge{20};        ///< Age of the current measurement at the start (or a scenario step).
    Seconds currentInterval{60};  ///< From one current measurement to the next.
    Seconds publicationDelay{5};  ///< From a measurement's time until the service has it.
    bool publishing = true;       ///< False: the phone is away. Neither current nor graph goes on.
    bool frozen = false;          ///< The current measurement stands still; the graph goes on.
    bool noCurrent = false;       ///< "glucoseMeasurement" is null.
    Seconds graphInterval{300};
    Seconds graphJitter{1};  ///< Each graph value's time is off its grid by up to this.
    Seconds graphLag{
        1140};  ///< The newest graph value is about this much older than the service's newest measurement.
    Seconds graphSpan{11.7 * 3600};
    bool emptyGraph = false;
    bool missingGraph = false;  ///< No "graphData" at all.
    double gapShare = 0;        ///< 0 ... 1: share of graph values that are missing.
    double smoothing = 2;       ///< Graph values differ from the current ones by up to this, mg/dL.

    // How it is written.
    std::optional<int> mgdL{};        ///< Of every measurement, any number.
    std::optional<int> arrow{};       ///< "TrendArrow" of the current measurement, any number.
    bool noArrow = false;             ///< The current measurement has no "TrendArrow".
    bool everyArrow = false;          ///< Goes round through 0 ... 6, null and absent.
    bool twentyFourHours = false;     ///< Times without AM and PM.
    bool mmolPerLitre = false;        ///< "Value" in mmol/L; "ValueInMgPerDl" stays.
    int timestampOffsetMinutes = 60;  ///< Of "Timestamp", the phone's local time, against UTC.
    bool operator==(const LibreReadingOptions&) const = default;
};

/// The readings of one person as time passes: a trace, smoothly interpolated to a value at any moment, so
/// that its newest one is now. Deterministic. Time should not run backwards.
class LibreReadings {
public:
    LibreReadings(const GlucoseTrace& trace, double startSeconds, std::uint64_t seed,
                  const LibreReadingOptions& options, Date start);

    void setOptions(const LibreReadingOptions& options, Date now);

    struct Measurement {
        Date date;  ///< Whole seconds.
        int mgdL;
        bool operator==(const Measurement&) const = default;
    };
    /// The current measurement that the service has at `now`; empty when there is none.
    [[nodiscard]] std::optional<Measurement> current(Date now);
    /// The graph at `now`, oldest first.
    [[nodiscard]] std::vector<Measurement> graph(Date now);
    /// The newest of both: what a client should show at most.
    [[nodiscard]] std::optional<Measurement> newest(Date now);
};

}  // namespace tidewell
