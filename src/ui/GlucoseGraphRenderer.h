#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QString>

#include "statusbar/GlucoseGraphLayout.h"

class QPainter;

namespace tidewell {

/// What lies behind the graph.
enum class GraphTheme { light, dark };

/// A picture of the graph by itself.
struct GraphPictureStyle {
    GraphTheme theme = GraphTheme::light;
    GraphSize size{480, 270};  ///< Points; one is a pixel at a pixel ratio of 1.
    double pixelRatio = 1;     ///< Clamped to 1 ... 4.
    double textScale = 1;      ///< As glucoseGraphLayout() has it.
};

/// The size of texts in the application's font.
[[nodiscard]] GraphTextMeasure graphTextMeasure();

/// Draws a layout over what is there; the painter's origin is the view's top left corner.
///
/// Lows are triangles that point down, highs triangles that point up, and both have colours that stay apart
/// for every kind of colour vision; the threshold lines differ in their dashes.
void paintGlucoseGraph(QPainter& painter, const GlucoseGraphLayout& layout, GraphTheme theme);

/// Marks one point of a layout that has been painted: a line through it, a ring, and a plate with this text.
void paintGraphMark(QPainter& painter, const GlucoseGraphLayout& layout, const GraphPoint& point,
                    const QString& text, GraphTheme theme);

/// What the colours of a theme are made for.
[[nodiscard]] QColor graphBackground(GraphTheme theme);

/// The graph on its theme's background, with what a screen reader says of it as the text "Description".
[[nodiscard]] QImage glucoseGraphImage(const GlucoseGraphContent& content, const GraphPictureStyle& style);
/// The same as SVG 1.2 Tiny, whose texts stay texts, in the application's font.
[[nodiscard]] QByteArray glucoseGraphSvg(const GlucoseGraphContent& content, const GraphPictureStyle& style);

// All of it needs a QGuiApplication (fonts) and belongs on the main thread.

}  // namespace tidewell
