#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/AppConfiguration.h"
#include "program/ExitCode.h"
#include "statusbar/StatusBarViewModel.h"
#include "support/TimeText.h"

namespace tidewell {

enum class WatchFormat { text, json, waybar, i3blocks, polybar, tmux };

[[nodiscard]] std::optional<WatchFormat> watchFormat(std::string_view name);
/// The names of all formats, in the order of the enumeration.
[[nodiscard]] std::vector<std::string> watchFormatNames();

/// What `watch` prints for a state.
struct WatchLine {
    std::string text{};     ///< One line, without its end.
    std::string content{};  ///< The line without the moment of printing: equal contents need no second line.
};

/// The line for a state at a moment. As JSON one object with a fixed order of keys; absent values are null.
/// For a status bar see WatchBarLine.h.
[[nodiscard]] WatchLine watchLine(WatchFormat format, const StatusBarState& state,
                                  const AppSettings& settings, Date now, TimeZone zone);

/// "Title: message remediation" on one line; parts that are empty leave no trace.
[[nodiscard]] std::string problemSentence(const ErrorInfo& error);

/// Whether `watch --once` has what it waits for: a reading, or a problem.
[[nodiscard]] bool watchIsSettled(const StatusBarState& state);
/// How `watch --once` ends with that state.
[[nodiscard]] ExitCode watchExitCode(const StatusBarState& state);

}  // namespace tidewell
