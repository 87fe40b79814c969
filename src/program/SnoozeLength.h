#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "support/Time.h"

namespace tidewell {

/// How long a snooze is to last, as people type it: "30m", "2h", "1h30m", "90" (minutes); "min", blanks
/// between the parts and capital letters are fine too. From one minute to 24 hours; otherwise one sentence
/// that says what is taken.
[[nodiscard]] std::expected<Seconds, std::string> snoozeLength(std::string_view text);

}  // namespace tidewell
