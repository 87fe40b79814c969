#pragma once

#include <string_view>
#include <vector>

#include "ui/StatusIconPainter.h"

namespace tidewell {

/// How a panel wants its items, known by experience: no panel tells.
struct StatusHost {
    StatusIconShape shape = StatusIconShape::stacked;
    std::vector<int> heights{48};       ///< Of the pictures to send, in pixels.
    bool iconFile = false;              ///< Takes the icon as a file and writes the label itself.
    std::string_view lineBreak = "\n";  ///< In the markup of a tooltip.
    bool operator==(const StatusHost&) const = default;
};

/// The panel whose process has this name, cut to 15 bytes by the kernel; a careful default for others.
[[nodiscard]] StatusHost statusHost(std::string_view processName);

/// The same panel, with another shape asked for by the user.
[[nodiscard]] StatusHost withShape(StatusHost host, StatusIconShape shape);

}  // namespace tidewell
