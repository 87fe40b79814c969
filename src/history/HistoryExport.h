#pragma once

#include <string>
#include <vector>

#include "history/GlucoseHistoryRecords.h"

namespace tidewell {

enum class HistoryExportFormat { csv, json };

/// The first line of the CSV form: its columns in order. Times are ISO 8601 in UTC, with milliseconds where
/// there are some; numbers are the shortest that read back as the same double.
inline constexpr std::string_view historyCsvHeader =
    "time,glucose_mgdl,trend,sample_duration_s,source,fetched_at";
/// Stands before a trend in the CSV form that is no word of the letters A to Z.
inline constexpr char historyTrendMark = '\'';
/// What the JSON form says of itself.
inline constexpr std::string_view historyJsonFormat = "tidewell-history";
inline constexpr std::int64_t historyJsonVersion = 1;

/// Readings in a form for other programs, one to a line, in the order given: CSV (RFC 4180 but for its line
/// ends, which are LF), or a JSON object of "format", "version" and "readings", an array of the stored
/// readings of docs/history-format.md. Nothing in it is encrypted any more.
[[nodiscard]] std::string exportHistory(const std::vector<StoredReading>& readings,
                                        HistoryExportFormat format);

}  // namespace tidewell
