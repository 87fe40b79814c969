#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "history/GlucoseHistoryRecords.h"

// How readings come together in a day. Plain values, without files.

namespace tidewell {

/// The reading as a day file gives it back: its time to the millisecond, its duration within bounds. Empty
/// when it has no stored form: a number that is none, text that is not UTF-8, a date beyond the calendar.
[[nodiscard]] std::optional<GlucoseReading> storableReading(const GlucoseReading& reading);

enum class HistoryMergeRule {
    /// Of fetched readings; but a graph value of LibreLinkUp counts neither against a current one of the same
    /// second, nor within 30 s of one: it is the same measurement, smoothed.
    laterFetchWins,
    takesOver,     ///< Of readings that were saved elsewhere: the later fetch wins, and each has its place.
    keepsExisting  ///< Of imported ones.
};

struct HistoryMergeCount {
    std::size_t changed = 0;  ///< Readings that are new, or differ from what was there.
    std::size_t same = 0;     ///< Ones that changed nothing.
};

/// Merges readings in any order into `readings`, which are sorted by time and stay so. The same source within
/// the same second is one reading.
[[nodiscard]] HistoryMergeCount mergeReadings(std::vector<StoredReading>& readings,
                                              std::span<const StoredReading> more, HistoryMergeRule rule);

/// Removes the readings dated before `oldest`; how many.
[[nodiscard]] std::size_t dropReadingsBefore(std::vector<StoredReading>& readings, Date oldest);

}  // namespace tidewell
