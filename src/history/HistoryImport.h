#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sources/GlucoseReading.h"
#include "sources/GlucoseUnits.h"
#include "support/TimeText.h"

namespace tidewell {

/// What a file of readings can be.
enum class HistoryFileFormat {
    tidewellCsv,   ///< As exportHistory() writes it.
    tidewellJson,  ///< The same.
    genericCsv,    ///< "time" or "epoch_s", and "glucose_mgdl" or "glucose_mmoll".
    clarityCsv,    ///< The export of Dexcom Clarity's web report, in English.
    libreViewCsv   ///< That of LibreView, in English or German.
};
/// "Dexcom Clarity (CSV)" and so on.
[[nodiscard]] std::string_view description(HistoryFileFormat format);

/// How a file writes its dates: "31-12-2025" or "12-31-2025".
enum class DateOrder { dayFirst, monthFirst };

/// Something that was not taken, and why. Quotes no value.
struct HistoryImportRefusal {
    std::size_t line = 0;  ///< From 1.
    std::string why{};
    bool operator==(const HistoryImportRefusal&) const = default;
};

/// What a file holds.
class HistoryImportFile {
public:
    static constexpr std::size_t mostListedRefusals = 20;

    /// Why nothing of the file was taken; the line is 0 when it is about the whole file.
    std::optional<HistoryImportRefusal> problem{};
    /// Of a problem that another try with a time zone, or with a date order, would not have.
    bool needsTimeZone = false;
    bool needsDateOrder = false;

    std::optional<HistoryFileFormat> format{};
    char separator = 0;                    ///< Of a CSV file.
    bool hasMgdL = false;                  ///< Whether it has values in mg/dL.
    bool hasMmolL = false;                 ///< And in mmol/L.
    std::optional<DateOrder> dateOrder{};  ///< When its dates can be read two ways.
    std::size_t rows = 0;                  ///< Below the header, but for empty ones.
    std::size_t otherRows = 0;             ///< Of them, what is no sensor reading: insulin, notes.
    std::size_t refused = 0;               ///< Of them, what could not be read.
    std::size_t repeated = 0;              ///< Of them, replaced by a later row of the same second.
    std::size_t lowOrHigh = 0;             ///< Taken as 40 or 400 mg/dL: beyond the sensor's range.
    /// What each automatic reading of LibreView stands for, by how far apart most of them are.
    std::optional<Seconds> historicDuration{};
    std::size_t shortened = 0;                     ///< Sample durations over 900 s, taken as 900 s.
    std::size_t localTimes = 0;                    ///< Times without a zone of their own.
    std::size_t repeatedHour = 0;                  ///< Of them, in an hour that the clock went through twice.
    std::vector<HistoryImportRefusal> refusals{};  ///< The first ones, by line.

    /// How many readings there are: each second of a source once, by time.
    [[nodiscard]] std::size_t count() const { return kept_.size(); }
    /// A part of them, so that a large file need not be held twice.
    [[nodiscard]] std::vector<GlucoseReading> readings(std::size_t from, std::size_t most) const;
    [[nodiscard]] std::optional<Date> first() const;
    [[nodiscard]] std::optional<Date> last() const;

private:
    friend class HistoryImportReader;
    /// Smaller than a GlucoseReading: there may be two million.
    struct Kept {
        double mgdL;
        double duration;  ///< s
        Date date;
        std::uint32_t order;  ///< Of the row in the file.
        std::uint16_t trend;  ///< Into trends_.
        GlucoseProvider source;
    };
    std::vector<Kept> kept_;
    std::vector<std::string> trends_;
};

/// Reads a file of readings piece by piece, in linear time; what it keeps is bounded by two million readings
/// (96 MB while it reads). A pure function of the bytes and the options. Guesses nothing: a file or a row
/// that can be read two ways is refused, and the result says what was taken for what.
///
/// An hour that a clock goes through twice is told apart by the order of the rows.
class HistoryImportReader {
public:
    struct Options {
        Date now{};
        std::optional<TimeZone> zone{};  ///< Of times without one.
        std::optional<DateOrder> dateOrder{};
        GlucoseProvider source = GlucoseProvider::dexcom;  ///< Of rows that name none.
    };
    explicit HistoryImportReader(const Options& options);
    ~HistoryImportReader();
    HistoryImportReader(const HistoryImportReader&) = delete;
    HistoryImportReader& operator=(const HistoryImportReader&) = delete;

    /// False when no more is needed: there is a problem.
    bool feed(std::string_view bytes);
    /// The file ends here. The last call.
    [[nodiscard]] HistoryImportFile finish();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
