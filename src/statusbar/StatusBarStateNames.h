#pragma once

#include <optional>
#include <string_view>

#include "statusbar/StatusBarViewModel.h"

namespace tidewell {

// The words for parts of the state that programs outside read: on the bus and in the lines of `watch`.

/// "primary", "orange" or "red".
[[nodiscard]] std::string_view rawValue(TitleColor color);
/// "waiting", "value" or "attention".
[[nodiscard]] std::string_view rawValue(StatusBarIconState state);
/// "loading", "refreshing" or "authenticating".
[[nodiscard]] std::string_view rawValue(StatusBarActivity activity);
/// The activity of that word.
[[nodiscard]] std::optional<StatusBarActivity> statusBarActivity(std::string_view rawValue);
/// "none", "current", "stale" or "expired".
[[nodiscard]] std::string_view rawValue(const std::optional<ReadingFreshness>& freshness);

}  // namespace tidewell
