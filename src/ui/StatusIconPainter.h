#pragma once

#include <QImage>
#include <optional>

#include "statusbar/StatusItemContent.h"

namespace tidewell {

/// How a panel lets the item be drawn.
enum class StatusIconShape {
    stacked,  ///< A square: the value over the arrow.
    wide,     ///< Value and arrow in one line, as wide as they need.
    dot,      ///< A small coloured sign beside a label that the panel writes itself.
};

/// What is known of the panel's background.
enum class PanelScheme {
    unknown,  ///< White text on a dark plate: reads on any.
    light,    ///< Dark text, faint light outline.
    dark,     ///< White text, faint dark outline.
};

struct StatusIconStyle {
    StatusIconShape shape = StatusIconShape::stacked;
    int height = 24;  ///< Pixels; clamped to 8 ... 256.
    PanelScheme scheme = PanelScheme::unknown;
    /// How far the sign of an activity has turned clockwise, in eighths; empty without such a sign.
    std::optional<int> activityTurn{};
    bool operator==(const StatusIconStyle&) const = default;
};

/// Whether the sign of an activity can be seen with this content: a problem's sign takes its place.
[[nodiscard]] bool showsActivity(const StatusItemContent& content);

/// The picture of a status item: Format_ARGB32 with straight alpha, `height` pixels high, and square unless
/// the shape is wide. Needs a QGuiApplication (fonts); main thread.
[[nodiscard]] QImage paintStatusIcon(const StatusItemContent& content, const StatusIconStyle& style);

}  // namespace tidewell
