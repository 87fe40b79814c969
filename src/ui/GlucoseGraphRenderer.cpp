#include "ui/GlucoseGraphRenderer.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QSvgGenerator>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "ui/DisplayText.h"

namespace tidewell {

namespace {

/// Each colour of text has a contrast of 4.5 with the background, each of the readings 3 (WCAG 2.2). Blue,
/// amber and red keep their distance in lightness too, for those who do not see the difference in hue.
struct Palette {
    QColor background;
    QColor text;
    QColor faintText;  ///< Also of an aged value.
    QColor axisText;   ///< Light grey where that can be read.
    QColor grid;
    QColor dayLine;
    QColor band;
    QColor join;  ///< Between readings.
    QColor inRange;
    QColor low;
    QColor high;
};

const Palette& palette(GraphTheme theme)
{
    static const Palette light{.background{255, 255, 255},
                               .text{29, 29, 31},
                               .faintText{99, 99, 106},
                               .axisText{110, 110, 118},
                               .grid{0, 0, 0, 18},
                               .dayLine{0, 0, 0, 90},
                               .band{0, 122, 204, 24},
                               .join{158, 178, 203},
                               .inRange{0, 104, 181},
                               .low{186, 22, 22},
                               .high{168, 92, 0}};
    static const Palette dark{.background{30, 31, 34},
                              .text{242, 242, 245},
                              .faintText{166, 167, 174},
                              .axisText{170, 170, 170},
                              .grid{255, 255, 255, 22},
                              .dayLine{255, 255, 255, 110},
                              .band{80, 170, 255, 34},
                              .join{84, 108, 138},
                              .inRange{98, 176, 255},
                              .low{255, 110, 100},
                              .high{255, 196, 64}};
    return theme == GraphTheme::light ? light : dark;
}

QFont graphFont(double points)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(points))));
    return font;
}

/// A dot, or a triangle of about its area, its middle where the value is.
QPainterPath mark(QPointF middle, GlucoseRange range, double radius)
{
    QPainterPath path;
    if (range == GlucoseRange::inRange) {
        path.addEllipse(middle, radius, radius);
        return path;
    }
    const double tip = range == GlucoseRange::high ? -1.45 * radius : 1.45 * radius;
    path.addPolygon(QPolygonF{{middle + QPointF{0, tip}, middle + QPointF{1.3 * radius, -0.75 * tip},
                               middle + QPointF{-1.3 * radius, -0.75 * tip}, middle + QPointF{0, tip}}});
    return path;
}

/// Marks of one colour as small pictures, which pixels take twenty times as fast as shapes.
///
/// Each kind of mark has a picture for each quarter of a pixel, across and down, made when it is first
/// needed.
class MarkStamps {
public:
    /// The painter draws without rotation.
    MarkStamps(QPainter& painter, const QColor& color)
        : painter_{painter},
          color_{color},
          toDevice_{painter.deviceTransform()},
          fromDevice_{toDevice_.inverted()},
          ratio_{toDevice_.m11()}
    {
    }

    void put(QPointF middle, GlucoseRange range, double radius)
    {
        const QPointF quarters = toDevice_.map(middle) * steps;
        const auto column = static_cast<std::int64_t>(std::lround(quarters.x()));
        const auto row = static_cast<std::int64_t>(std::lround(quarters.y()));
        const auto x = static_cast<double>(column >> 2);
        const auto y = static_cast<double>(row >> 2);
        Kind& kind = kindOf(range, radius);
        QImage& stamp = kind.stamps[static_cast<std::size_t>((row & 3) * steps + (column & 3))];
        if (stamp.isNull())
            stamp = makeStamp(
                kind, {static_cast<double>(column & 3) / steps, static_cast<double>(row & 3) / steps});
        painter_.drawImage(fromDevice_.map(QPointF{x - kind.reach, y - kind.reach}), stamp);
    }

private:
    static constexpr int steps = 4;
    struct Kind {
        GlucoseRange range{};
        double radius = 0;
        int reach = 0;  ///< Pixels from the middle to each side.
        std::array<QImage, std::size_t{steps} * steps> stamps{};
    };

    Kind& kindOf(GlucoseRange range, double radius)
    {
        const auto known = std::ranges::find_if(
            kinds_, [&](const Kind& kind) { return kind.range == range && kind.radius == radius; });
        if (known != kinds_.end())
            return *known;
        return kinds_.emplace_back(Kind{.range = range,
                                        .radius = radius,
                                        .reach = static_cast<int>(std::ceil(1.5 * radius * ratio_)) + 1});
    }

    [[nodiscard]] QImage makeStamp(const Kind& kind, QPointF part) const
    {
        const int side = 2 * kind.reach + 1;
        QImage stamp{side, side, QImage::Format_ARGB32_Premultiplied};
        stamp.fill(Qt::transparent);
        QPainter painter{&stamp};
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(part + QPointF(kind.reach, kind.reach));
        painter.scale(ratio_, ratio_);
        painter.fillPath(mark({}, kind.range, kind.radius), color_);
        painter.end();
        stamp.setDevicePixelRatio(ratio_);
        return stamp;
    }

    QPainter& painter_;
    QColor color_;
    QTransform toDevice_;
    QTransform fromDevice_;
    double ratio_;
    std::vector<Kind> kinds_;
};

/// Position, colour and what else the layout leaves open.
class Painting {
public:
    Painting(QPainter& painter, const GlucoseGraphLayout& layout, GraphTheme theme)
        : painter_{painter},
          layout_{layout},
          colors_{palette(theme)},
          line_{layout.labelAttributes.points / GraphLabelAttributes{}.points}
    {
    }

    void paint()
    {
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
        const GraphRect& plot = layout_.graphRect;
        if (plot.width > 0 && plot.height > 0) {
            paintBand();
            paintTicks();
            paintThresholds();
            paintJoins();
            for (const GlucoseRange range : {GlucoseRange::inRange, GlucoseRange::high, GlucoseRange::low})
                paintReadings(range);
        }
        for (const GraphText& text : layout_.texts)
            paintText(text);
        painter_.restore();
    }

    void paintMark(const GraphPoint& point, const QString& text)
    {
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
        const GraphRect& plot = layout_.graphRect;
        const QPointF middle{point.at.x, fromTop(point.at.y)};
        painter_.setPen(QPen{colors_.dayLine, line_});
        painter_.drawLine(QPointF{middle.x(), fromTop(plot.top())}, QPointF{middle.x(), fromTop(plot.y)});
        painter_.setPen(QPen{colors_.text, 1.6 * line_});
        painter_.setBrush(Qt::NoBrush);
        const double ring = point.radius + 3 * line_;
        painter_.drawEllipse(middle, ring, ring);

        const QFont font = graphFont(markPoints * line_);
        const QFontMetricsF metrics{font};
        const double margin = 5 * line_;
        QRectF plate{0, 0, metrics.horizontalAdvance(text) + 2 * margin, metrics.height() + margin};
        plate.moveCenter({middle.x(), 0});
        plate.moveLeft(
            std::max(std::min(plate.left(), layout_.viewSize.width - margin - plate.width()), margin));
        // Over the plot's upper end, or its lower one when the point lies up there.
        const bool above = middle.y() - ring > fromTop(plot.top()) + plate.height();
        plate.moveTop(above ? fromTop(plot.top()) : fromTop(plot.y) - plate.height());
        painter_.setPen(QPen{colors_.faintText, line_});
        painter_.setBrush(colors_.background);
        painter_.drawRoundedRect(plate, margin, margin);
        painter_.setFont(font);
        painter_.setPen(colors_.text);
        painter_.drawText(plate, Qt::AlignCenter, text);
        painter_.restore();
    }

private:
    static constexpr double markPoints = 11;

    [[nodiscard]] double fromTop(double y) const { return layout_.viewSize.height - y; }

    void paintBand()
    {
        const GraphRect& plot = layout_.graphRect;
        painter_.fillRect(
            QRectF{plot.x, fromTop(layout_.targetTop), plot.width, layout_.targetTop - layout_.targetBottom},
            colors_.band);
    }

    void paintTicks()
    {
        for (const GraphTick& tick : layout_.ticks) {
            const double x = std::round(tick.x) + 0.5;
            painter_.setPen(QPen{tick.beginsDay ? colors_.dayLine : colors_.grid, line_});
            painter_.drawLine(QPointF{x, fromTop(layout_.graphRect.top())},
                              QPointF{x, fromTop(layout_.graphRect.y)});
        }
    }

    void paintThreshold(const std::optional<GraphThreshold>& threshold, const QColor& color,
                        QList<qreal> dashes)
    {
        if (!threshold)
            return;
        QPen pen{color, line_};
        pen.setCapStyle(Qt::FlatCap);
        pen.setDashPattern(dashes);
        painter_.setPen(pen);
        const double y = std::round(fromTop(threshold->y)) + 0.5;
        painter_.drawLine(QPointF{layout_.graphRect.x, y}, QPointF{layout_.graphRect.right(), y});
    }

    void paintThresholds()
    {
        paintThreshold(layout_.lowLine, colors_.low, {2, 2});
        paintThreshold(layout_.highLine, colors_.high, {6, 3});
    }

    void paintJoins()
    {
        // Line by line: one polyline of a whole day costs the toolkit twenty times as much.
        QList<QLineF> lines;
        lines.reserve(static_cast<qsizetype>(layout_.points.size()));
        QPointF previous;
        for (const GraphPoint& point : layout_.points) {
            const QPointF at{point.at.x, fromTop(point.at.y)};
            if (point.joinsPrevious)
                lines.append({previous, at});
            previous = at;
        }
        painter_.setPen(QPen{colors_.join, 1.2 * line_, Qt::SolidLine, Qt::FlatCap});
        painter_.drawLines(lines);
    }

    void paintReadings(GlucoseRange range)
    {
        const QColor& color = range == GlucoseRange::inRange ? colors_.inRange
                              : range == GlucoseRange::low   ? colors_.low
                                                             : colors_.high;
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(color);
        const bool pixels = painter_.paintEngine()->type() == QPaintEngine::Raster;
        MarkStamps stamps{painter_, color};
        for (const GraphPoint& point : layout_.points) {
            if (point.range != range)
                continue;
            const QPointF middle{point.at.x, fromTop(point.at.y)};
            if (pixels)
                stamps.put(middle, range, point.radius);
            else
                painter_.drawPath(mark(middle, range, point.radius));
        }
    }

    [[nodiscard]] QColor textColor(GraphTextRole role) const
    {
        using enum GraphTextRole;
        switch (role) {
        case currentValue:
            return layout_.valueColor == TitleColor::red      ? colors_.low
                   : layout_.valueColor == TitleColor::orange ? colors_.high
                                                              : colors_.text;
        case agedValue:
        case unit:
        case change:
        case lastReading:
        case nothingToShow: return colors_.faintText;
        case axisLimit:
        case timeOfDay: return colors_.axisText;
        case lowThreshold: return colors_.low;
        case highThreshold: return colors_.high;
        case day: return colors_.text;
        }
        std::unreachable();
    }

    void paintText(const GraphText& text)
    {
        const QFont font = graphFont(text.points);
        painter_.setFont(font);
        painter_.setPen(textColor(text.role));
        painter_.drawText(QPointF{text.origin.x, fromTop(text.origin.y) - QFontMetricsF{font}.descent()},
                          displayText(text.text));
    }

    QPainter& painter_;
    const GlucoseGraphLayout& layout_;
    const Palette& colors_;
    double line_;  ///< Thin, and as much thicker as the letters are larger.
};

GlucoseGraphLayout layoutOf(const GlucoseGraphContent& content, const GraphPictureStyle& style)
{
    return glucoseGraphLayout(content, style.size, graphTextMeasure(), style.textScale);
}

}  // namespace

GraphTextMeasure graphTextMeasure()
{
    return [](std::string_view text, double points) -> GraphSize {
        const QFontMetricsF metrics{graphFont(points)};
        return {metrics.horizontalAdvance(displayText(text)), metrics.height()};
    };
}

void paintGlucoseGraph(QPainter& painter, const GlucoseGraphLayout& layout, GraphTheme theme)
{
    Painting{painter, layout, theme}.paint();
}

void paintGraphMark(QPainter& painter, const GlucoseGraphLayout& layout, const GraphPoint& point,
                    const QString& text, GraphTheme theme)
{
    Painting{painter, layout, theme}.paintMark(point, text);
}

QColor graphBackground(GraphTheme theme) { return palette(theme).background; }

QImage glucoseGraphImage(const GlucoseGraphContent& content, const GraphPictureStyle& style)
{
    const double ratio = std::clamp(style.pixelRatio, 1.0, 4.0);
    QImage image{QSizeF{style.size.width * ratio, style.size.height * ratio}.toSize(),
                 QImage::Format_ARGB32_Premultiplied};
    image.setDevicePixelRatio(ratio);
    image.fill(palette(style.theme).background);
    QPainter painter{&image};
    paintGlucoseGraph(painter, layoutOf(content, style), style.theme);
    painter.end();
    image.setText(QStringLiteral("Description"), displayText(graphAccessibilityLabel(content)));
    return image;
}

QByteArray glucoseGraphSvg(const GlucoseGraphContent& content, const GraphPictureStyle& style)
{
    QBuffer buffer;
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setResolution(96);  // As style sheets have it: a point of the view is a pixel.
    generator.setSize(QSizeF{style.size.width, style.size.height}.toSize());
    generator.setViewBox(QRectF{0, 0, style.size.width, style.size.height});
    generator.setTitle(QStringLiteral("Glucose graph"));
    generator.setDescription(displayText(graphAccessibilityLabel(content)));
    QPainter painter{&generator};
    painter.fillRect(generator.viewBoxF(), palette(style.theme).background);
    paintGlucoseGraph(painter, layoutOf(content, style), style.theme);
    painter.end();
    return buffer.data();
}

}  // namespace tidewell
