#pragma once

#include "program/WatchLine.h"

namespace tidewell {

/// Whether the format is one that a status bar reads.
[[nodiscard]] bool isBarFormat(WatchFormat format);

/// The line for a status bar, in the conventions of that bar; `format` is one of a bar.
///
/// The text is the status item's title: "120 →", "120 ?" once stale, "-- ?" once expired, "--" before the
/// first reading; a " !" behind it says that there is a problem, so that no colour is needed to tell. Range
/// and look are those of a current reading only. A text cannot leave its place in the line, whatever it
/// holds.
///
/// - waybar: an object with text and tooltip in Pango markup, the state as `alt`, and as CSS classes the
/// state
///   and whatever else holds (see docs/status-bars.md).
/// - i3blocks: an object with full_text, short_text and, unless it is the bar's own, color; no markup.
/// - polybar, tmux: the text between tags of the bar that set its colours and set them back.
[[nodiscard]] WatchLine watchBarLine(WatchFormat format, const StatusBarState& state,
                                     const AppSettings& settings, Date now, TimeZone zone);

/// What a bar that keeps the last line shall show when nothing follows: no value.
[[nodiscard]] WatchLine watchBarEndLine(WatchFormat format);

}  // namespace tidewell
