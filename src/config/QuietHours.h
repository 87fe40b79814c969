#pragma once

#include <cstdint>

#include "support/TimeText.h"

namespace tidewell {

/// Whether a moment lies in quiet hours: from the start minute after local midnight to before the end minute,
/// over midnight when the start is later. Equal ones mean all day; minutes that no day has are never reached.
[[nodiscard]] bool isQuiet(Date now, TimeZone zone, std::int64_t startMinutes, std::int64_t endMinutes);

}  // namespace tidewell
