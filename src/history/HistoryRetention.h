#pragma once

#include <cstdint>
#include <optional>

#include "support/Time.h"

// Which readings are older than asked to be kept. Plain values, without files.

namespace tidewell {

/// The oldest time of which a scope keeps readings: `retentionDays` back from `now`, or from the end of
/// `newestDay`, the newest one that is saved or about to be, whichever is earlier.
///
/// A clock that runs ahead so removes nothing: days go only as newer readings come. Days count as in
/// historyDayIndex(); without any, `now` counts.
[[nodiscard]] Date oldestKeptReading(std::int64_t retentionDays, Date now,
                                     std::optional<std::int64_t> newestDay);

}  // namespace tidewell
