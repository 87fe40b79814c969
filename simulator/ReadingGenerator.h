#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "simulator/TraceReplay.h"
#include "support/Time.h"

namespace tidewell {

/// Which readings the service has, and in which form it sends them. Everything is plain by default: the
/// trace, five minutes apart, each reading there a minute after its time.
struct ReadingOptions {
    // What the sensor delivers.
    Seconds newestAge{60};   ///< Age of the newest reading when the simulator (or a scenario step) starts.
    bool publishing = true;  ///< False: the sensor is out of reach, no reading comes after the newest one.
    bool backfill = false;   ///< Whether readings made while out of reach appear when it is back.
    bool empty = false;      ///< The service has no readings at all.
    Seconds spacing{0};      ///< Fixed distance of readings; 0 keeps the trace's own.
    Seconds drift{0};        ///< Each reading's time is off its grid by up to this, either way.
    Seconds publicationDelay{60};  ///< From a reading's time until the service has it.
    Seconds publicationJitter{0};  ///< Up to this much more, different for each reading.
    double gapShare = 0;           ///< 0 ... 1: share of readings that never come.
    double lateShare = 0;          ///< 0 ... 1: share of readings that come `lateBy` after the others.
    Seconds lateBy{1800};
    bool duplicates = false;    ///< Each reading comes twice, nine seconds apart: a phone and a watch.
    std::optional<int> mgdL{};  ///< Of every reading; 39 is LOW, 401 is HIGH.
    std::optional<std::string> trend{};  ///< Of every reading, any word.
    bool everyTrend = false;             ///< Goes round through all ten words and one that nobody knows.

    // How it is written.
    bool numericTrend = false;      ///< Trend as a number, as before December 2021.
    bool slashes = false;           ///< "/Date(...)/".
    bool worldTime = true;          ///< Whether WT is there.
    Seconds systemTimeAhead{0};     ///< ST is off by this much (a receiver with a wrong clock).
    int displayOffsetMinutes = 60;  ///< Offset from UTC in DT.
    bool wholeSeconds = false;      ///< Times end in 000 milliseconds, as with older sensors.

    bool operator==(const ReadingOptions&) const = default;
};

/// The readings of one account as time passes: replays a trace so that its newest reading is now.
///
/// Deterministic: the same trace, seed, options and moments give the same bytes. Time should not run
/// backwards; when it does, readings of the future are withheld again.
class ReadingGenerator {
public:
    ReadingGenerator(const GlucoseTrace& trace, std::int64_t startPosition, std::uint64_t seed,
                     const ReadingOptions& options, Date start);

    /// Changes the options from `now` on. The sensor goes on where it is: `newestAge` counts at the start
    /// only.
    void setOptions(const ReadingOptions& options, Date now);
    [[nodiscard]] const ReadingOptions& options() const { return options_; }
    /// Goes on with a reading that is `age` old at `now`, the trace's next one. Older ones stay as they are,
    /// newer ones go. Readings due between that one and `now` never come, as after a loss of signal.
    void restart(Seconds age, Date now);

    /// The JSON array of the newest readings, newest first: none older than `minutes`, at most `maxCount`;
    /// the service's limits (1440, 288) apply. "[]" when there is none.
    [[nodiscard]] std::string read(std::int64_t minutes, std::int64_t maxCount, Date now);

    /// Time and value of the newest visible reading; empty when there is none.
    struct Newest {
        Date date;
        int mgdL;
        bool operator==(const Newest&) const = default;
    };
    [[nodiscard]] std::optional<Newest> newest(Date now);

private:
    struct Entry {
        Date date;              ///< Its own time, in whole milliseconds.
        Date visible;           ///< When the service has it.
        std::int64_t position;  ///< In the trace.
        bool withheld;          ///< Made while the sensor was out of reach.
        std::string text{};     ///< Its JSON object.
    };
    using Entries = std::deque<Entry>;

    void fillBefore(Date newest);
    void anchor(Date newest, Date now);
    void advance(Date now);
    void insert(Entry entry);
    void addReading(std::int64_t position, Date grid, bool withheld);
    [[nodiscard]] Seconds spacing(std::int64_t position) const;
    [[nodiscard]] Date rounded(Date date) const;
    [[nodiscard]] double chance(std::int64_t position, std::uint64_t purpose) const;
    [[nodiscard]] int value(std::int64_t position) const;
    [[nodiscard]] std::string encoded(const Entry& entry) const;

    TraceReplay replay_;
    std::uint64_t seed_;
    ReadingOptions options_;
    Entries entries_{};  ///< By time, oldest first; a little more than a day.
    std::int64_t next_;  ///< Position of the sensor's next reading.
    Date nextGrid_{};    ///< Its time before drift.
};

}  // namespace tidewell
