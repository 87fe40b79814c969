#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/TraceCurve.h"
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
/// that its newest one is now. What a moment's value is never changes; the options say which of them the
/// service has, and how they are written. Deterministic. Time should not run backwards.
class LibreReadings {
public:
    /// The newest measurement at `start` is that of the trace's second `startSeconds`.
    LibreReadings(const GlucoseTrace& trace, double startSeconds, std::uint64_t seed,
                  const LibreReadingOptions& options, Date start);

    /// Options from `now` on; `newestAge` counts only in restart(). A changed `timestampOffsetMinutes` leaves
    /// the measurements before `now` as they were written, as a change to daylight-saving time does.
    void setOptions(const LibreReadingOptions& options, Date now);

    /// Goes on at `now` with a newest measurement of that age.
    void restart(Seconds age, Date now);

    struct Measurement {
        Date date;  ///< Whole seconds.
        int mgdL;
        bool operator==(const Measurement&) const = default;
    };
    /// The current measurement that the service has at `now`; empty when there is none.
    [[nodiscard]] std::optional<Measurement> current(Date now) const;
    /// The graph at `now`, oldest first: of the time from `graphLag` + `graphSpan` before `now`.
    [[nodiscard]] std::vector<Measurement> graph(Date now) const;
    /// The newest of both: what a client should show at most.
    [[nodiscard]] std::optional<Measurement> newest(Date now) const;

    /// "glucoseMeasurement" and "graphData" as the service writes them.
    [[nodiscard]] std::string currentText(Date now) const;
    [[nodiscard]] std::string graphText(Date now) const;

private:
    [[nodiscard]] Date newestMeasured(Date now) const;
    [[nodiscard]] Measurement measured(Date date, double difference) const;
    [[nodiscard]] std::string arrowText(Date date) const;
    [[nodiscard]] std::string text(const Measurement& measurement, bool isCurrent) const;
    [[nodiscard]] double chance(std::int64_t slot, std::uint64_t purpose) const;

    TraceCurve curve_;
    double startSeconds_;
    std::uint64_t seed_;
    LibreReadingOptions options_;
    Date origin_;                   ///< The moment of `startSeconds_`.
    Date anchor_;                   ///< A measurement's time; the others lie whole intervals from it.
    Date since_{};                  ///< What was published up to then and is not `anchor_` stays unseen.
    std::optional<Date> frozen_{};  ///< The current measurement's time while it stands still.
    std::vector<std::pair<Date, int>> offsets_{};  ///< Of "Timestamp": from when on, oldest first.
};

}  // namespace tidewell
