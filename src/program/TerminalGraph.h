#pragma once

#include <string>

#include "statusbar/GlucoseGraphLayout.h"

namespace tidewell {

/// What a terminal can show.
struct TerminalGraphStyle {
    int columns = 80;     ///< Of the whole; clamped to 40 ... 400.
    int plotRows = 14;    ///< Of the plot alone; clamped to 5 ... 60.
    bool color = false;   ///< Escape sequences for colour and weight.
    bool braille = true;  ///< Whether its font has them; else one star to a character.
};

/// The graph as lines of text: the value, the plot with its axis and thresholds, and the time of day.
///
/// Threshold lines lie behind the readings, so that a low is below a line even where there is no colour.
[[nodiscard]] std::string terminalGraph(const GlucoseGraphContent& content, const TerminalGraphStyle& style);

}  // namespace tidewell
