#include "ui/GlucoseGraphRenderer.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QSvgGenerator>
#include <algorithm>
#include <array>
#include <cmath>

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
                               .join{60, 90, 130, 110},
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
                              .join{150, 190, 235, 110},
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

private:
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
        painter_.setBrush(Qt::NoBrush);
        painter_.setPen(QPen{colors_.join, 1.2 * line_, Qt::SolidLine, Qt::FlatCap, Qt::BevelJoin});
        QPolygonF run;
        const auto paintRun = [&] {
            if (run.size() > 1)
                painter_.drawPolyline(run);
            run.clear();
        };
        for (const GraphPoint& point : layout_.points) {
            if (!point.joinsPrevious)
                paintRun();
            run.append({point.at.x, fromTop(point.at.y)});
        }
        paintRun();
    }

    void addReading(QPainterPath& path, const GraphPoint& point) const
    {
        const QPointF middle{point.at.x, fromTop(point.at.y)};
        const double r = point.radius;
        if (point.range == GlucoseRange::inRange) {
            path.addEllipse(middle, r, r);
            return;
        }
        // A triangle of about the area of the dot, its middle where the value is.
        const double tip = point.range == GlucoseRange::high ? -1.45 * r : 1.45 * r;
        path.addPolygon(QPolygonF{{middle + QPointF{0, tip}, middle + QPointF{1.3 * r, -0.75 * tip},
                                   middle + QPointF{-1.3 * r, -0.75 * tip}, middle + QPointF{0, tip}}});
    }

    void paintReadings(GlucoseRange range)
    {
        const QColor& color = range == GlucoseRange::inRange ? colors_.inRange
                              : range == GlucoseRange::low   ? colors_.low
                                                             : colors_.high;
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(color);
        QPainterPath path;
        path.setFillRule(Qt::WindingFill);
        for (const GraphPoint& point : layout_.points)
            if (point.range == range)
                addReading(path, point);
        painter_.drawPath(path);
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
                          QString::fromStdString(text.text));
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
        return {
            metrics.horizontalAdvance(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))),
            metrics.height()};
    };
}

void paintGlucoseGraph(QPainter& painter, const GlucoseGraphLayout& layout, GraphTheme theme)
{
    Painting{painter, layout, theme}.paint();
}

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
    image.setText(QStringLiteral("Description"), QString::fromStdString(graphAccessibilityLabel(content)));
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
    generator.setDescription(QString::fromStdString(graphAccessibilityLabel(content)));
    QPainter painter{&generator};
    painter.fillRect(generator.viewBoxF(), palette(style.theme).background);
    paintGlucoseGraph(painter, layoutOf(content, style), style.theme);
    painter.end();
    return buffer.data();
}

}  // namespace tidewell
