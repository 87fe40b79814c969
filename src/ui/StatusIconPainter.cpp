#include "ui/StatusIconPainter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <algorithm>
#include <cmath>
#include <optional>

namespace tidewell {
namespace {

constexpr QRgb redFill = 0xffff3b30;  // The red that desktops use for warnings.
constexpr QRgb redText = 0xffffffff;
constexpr QRgb orangeFill = 0xffffe64d;  // RGB 1.0, 0.9, 0.3
constexpr QRgb orangeText = 0xff996600;  // RGB 0.6, 0.4, 0.0
/// Where the panel's background is not known, light text stands on a plate of its own: at 24 pixels an
/// outline eats the digits on a light panel, while a plate reads as well there as the red and orange ones.
constexpr QRgb darkPlate = 0xff2b2b31;
constexpr QRgb warningColor = 0xffff9500;
constexpr QRgb updateColor = 0xff4da3ff;
constexpr QRgb calmDot = 0xff34c759;
constexpr QRgb greyDot = 0xff9a9aa0;

/// A glyph may be narrowed to this share of its natural width before it is made smaller as a whole.
constexpr double narrowest = 0.66;
/// Outlines are taken from the font at this size and scaled, so that hinting does not bend them.
constexpr int outlinePixels = 200;

/// How text and arrow are painted.
struct Ink {
    QColor text;
    std::optional<QColor> plate{};  ///< Filled behind the text.
    QColor halo{};                  ///< Around the text where there is no plate.
};

/// A content, taken apart for painting.
struct Parts {
    QString value{};
    QString sign{};  ///< Trend arrow, or the question mark of an old value.
    bool stale = false;
    bool filled = false;
};

Parts partsOf(const StatusItemContent& content)
{
    Parts parts;
    const QString text = QString::fromStdString(content.value).trimmed();
    const auto space = text.lastIndexOf(u' ');
    parts.stale = text.endsWith(u'?');
    if (parts.stale && space > 0) {
        parts.value = text.left(space);
        parts.sign = text.mid(space + 1);
    } else {
        parts.value = text;
        parts.sign = QString::fromStdString(content.arrow);
    }
    parts.filled = content.iconState == StatusBarIconState::value && content.look != StatusButtonLook::plain;
    return parts;
}

Ink inkFor(const StatusItemContent& content, const Parts& parts, PanelScheme scheme)
{
    if (parts.filled && content.look == StatusButtonLook::redFill)
        return {.text = QColor::fromRgba(redText), .plate = QColor::fromRgba(redFill)};
    if (parts.filled)
        return {.text = QColor::fromRgba(orangeText), .plate = QColor::fromRgba(orangeFill)};
    switch (scheme) {
    case PanelScheme::light:
        return {.text = parts.stale ? QColor{92, 92, 98} : QColor{24, 24, 26},
                .halo = QColor{255, 255, 255, 150}};
    case PanelScheme::dark:
        return {.text = parts.stale ? QColor{176, 176, 182} : QColor{255, 255, 255},
                .halo = QColor{0, 0, 0, 150}};
    case PanelScheme::unknown: break;
    }
    return {.text = parts.stale ? QColor{176, 176, 182} : QColor{255, 255, 255},
            .plate = QColor::fromRgba(darkPlate)};
}

QFont valueFont()
{
    // Text fonts only: an emoji font would turn signs into coloured pictures.
    QFont font;
    font.setFamilies(
        {QStringLiteral("DejaVu Sans"), QStringLiteral("Noto Sans"), QStringLiteral("Liberation Sans")});
    font.setStyleHint(QFont::SansSerif);
    font.setWeight(QFont::Bold);
    font.setPixelSize(outlinePixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

/// The outline of `text` with its digits as high as `box`, centred in it; narrowed, then made smaller, to
/// fit.
QPainterPath fittedText(const QString& text, const QRectF& box)
{
    const QFont font = valueFont();
    QPainterPath outline;
    outline.addText(0, 0, font, text);
    const QRectF ink = outline.boundingRect();
    if (ink.isEmpty() || box.isEmpty())
        return {};
    const double digitHeight = QFontMetricsF{font}.tightBoundingRect(QStringLiteral("7")).height();
    double down = box.height() / std::max(digitHeight, ink.height() * 0.97);
    const double across = std::min(down, box.width() / ink.width());
    down = std::min(down, across / narrowest);
    // Digits stand on the lower edge of the box, or in its middle when the width has made them smaller.
    const double baseline = box.bottom() - (box.height() - digitHeight * down) / 2;
    QTransform place;
    place.translate(box.center().x() - across * ink.center().x(), baseline);
    place.scale(across, down);
    return place.map(outline);
}

QPainterPath roundLine(const QPolygonF& points, double width)
{
    QPainterPath path;
    path.addPolygon(points);
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(path);
}

/// Degrees clockwise from straight up for the arrows that trends use; empty for any other sign.
std::optional<double> arrowAngle(QChar sign)
{
    switch (sign.unicode()) {
    case u'↑': return 0;
    case u'↗': return 45;
    case u'→': return 90;
    case u'↘': return 135;
    case u'↓': return 180;
    default: return std::nullopt;
    }
}

/// One arrow in the middle of `box`, drawn here since fonts differ much in the weight of theirs.
QPainterPath arrowOutline(double angle, const QRectF& box, double stroke)
{
    const double reach = box.height() - stroke;  // Between the centres of the outermost strokes.
    const double stretch = angle == 90 ? 1.7 : angle == 45 || angle == 135 ? 1.3 : 1.0;
    const double length = std::min(reach * stretch, std::max(box.width() - stroke, reach));
    const double wing = std::min({length * 0.48, reach * 0.5, std::max((box.width() - stroke) / 2, stroke)});
    QPainterPath arrow;
    arrow.setFillRule(Qt::WindingFill);
    arrow.addPath(roundLine(QPolygonF{{0, length / 2}, {0, -length / 2}}, stroke));
    arrow.addPath(roundLine(
        QPolygonF{{-wing, -length / 2 + wing}, {0, -length / 2}, {wing, -length / 2 + wing}}, stroke));
    QTransform place;
    place.translate(box.center().x(), box.center().y());
    place.rotate(angle);
    return place.map(arrow);
}

/// How wide a sign is drawn at a height of `height`.
double signWidth(const QString& sign, double height)
{
    if (sign.isEmpty())
        return 0;
    const auto angle = arrowAngle(sign.front());
    if (!angle)
        return height * 0.75;
    return *angle == 90 ? height * 1.6 : height * (sign.size() > 1 ? 1.9 : 1.05);
}

QPainterPath signOutline(const QString& sign, const QRectF& box, double stroke)
{
    if (sign.isEmpty())
        return {};
    const auto angle = arrowAngle(sign.front());
    if (!angle)
        return fittedText(sign, box);
    if (sign.size() < 2 || arrowAngle(sign.back()) != angle)
        return arrowOutline(*angle, box, stroke);
    // Side by side with a clear gap, or two small ones would run into one another.
    const double gap = std::max(1.0, stroke * 0.5);
    const double each = std::min((box.width() - gap) / 2, box.height() * 0.85);
    const QRectF left{box.center().x() - gap / 2 - each, box.top(), each, box.height()};
    QPainterPath both = arrowOutline(*angle, left, stroke * 0.9);
    both.addPath(arrowOutline(*angle, left.translated(each + gap, 0), stroke * 0.9));
    return both;
}

void paintPlate(QPainter& painter, const Ink& ink, const QRectF& plate)
{
    if (!ink.plate)
        return;
    painter.setPen(Qt::NoPen);
    painter.setBrush(*ink.plate);
    const double radius = plate.height() * 0.18;
    painter.drawRoundedRect(plate, radius, radius);
}

void paintOutline(QPainter& painter, const QPainterPath& outline, const Ink& ink, double height)
{
    if (!ink.plate) {
        QPainterPathStroker stroker;
        stroker.setWidth(std::max(1.5, height / 14));
        stroker.setJoinStyle(Qt::RoundJoin);
        stroker.setCapStyle(Qt::RoundCap);
        painter.fillPath(stroker.createStroke(outline).united(outline), ink.halo);
    }
    painter.fillPath(outline, ink.text);
}

/// The side of the square in a corner that holds one small sign.
double cornerSize(double height) { return std::max(5.0, std::round(height * 0.38)); }

QRectF lowerCorner(const QRectF& area)
{
    const double size = cornerSize(area.height());
    return {area.right() - size, area.bottom() - size, size, size};
}

/// A circle that ends in an arrow, turned clockwise by `turn` eighths.
QPainterPath turningArrow(const QRectF& box, double stroke, int turn)
{
    const double head = 1.5 * stroke;
    const double radius = std::min(box.width(), box.height()) / 2 - 0.6 * head;
    const QRectF circle{-radius, -radius, radius * 2, radius * 2};
    QPainterPath arc;
    arc.arcMoveTo(circle, 40);
    arc.arcTo(circle, 40, 265);
    QPainterPathStroker stroker;
    stroker.setWidth(stroke);
    stroker.setCapStyle(Qt::FlatCap);
    QPainterPath arrow = stroker.createStroke(arc);
    arrow.setFillRule(Qt::WindingFill);
    // The head sits on the start of the arc and points on along the circle, clockwise.
    QPainterPath tip;
    tip.addPolygon(
        QPolygonF{{-head, -head * 0.15}, {head, -head * 0.15}, {0, head * 1.1}, {-head, -head * 0.15}});
    QTransform onCircle;
    onCircle.rotate(-40);
    onCircle.translate(radius, 0);
    arrow.addPath(onCircle.map(tip));
    QTransform place;
    place.translate(box.center().x(), box.center().y());
    place.rotate(45.0 * turn);
    return place.map(arrow);
}

/// A waning moon: alerts are silent for a while, as on any telephone.
QPainterPath crescent(const QRectF& box)
{
    QPainterPath moon;
    moon.addEllipse(box);
    QPainterPath shadow;
    const double side = box.width();
    shadow.addEllipse(QRectF{box.left() + side * 0.36, box.top() - side * 0.14, side * 0.86, side * 0.86});
    return moon.subtracted(shadow);
}

/// What stands in the lower right corner. There is one sign at most: two would leave no room for the trend.
enum class CornerSign { none, warningBadge, activity, snoozed, updateBadge };

CornerSign cornerSign(const StatusItemContent& content, const StatusIconStyle& style)
{
    if (content.indicator == StatusIndicator::warning)
        return CornerSign::warningBadge;
    if (style.activityTurn)
        return CornerSign::activity;
    if (content.alertsSnoozed)
        return CornerSign::snoozed;
    return content.indicator == StatusIndicator::updateAvailable ? CornerSign::updateBadge : CornerSign::none;
}

/// A warning is a triangle and an update a disc, since colours alone are not for everybody.
void paintBadge(QPainter& painter, CornerSign sign, const QRectF& box, double height)
{
    const double line = std::max(1.0, height / 24);
    QPainterPath badge;
    if (sign == CornerSign::warningBadge) {
        badge.moveTo(box.center().x(), box.top() + line / 2);
        badge.lineTo(box.right() - line / 2, box.bottom() - line);
        badge.lineTo(box.left() + line / 2, box.bottom() - line);
        badge.closeSubpath();
    } else {
        badge.addEllipse(box.adjusted(line / 2, line / 2, -line / 2, -line / 2));
    }
    painter.setPen(QPen{QColor{20, 20, 24, 235}, line * 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(badge);
    painter.fillPath(badge, QColor::fromRgba(sign == CornerSign::warningBadge ? warningColor : updateColor));
}

QPainterPath threeDots(const QRectF& area)
{
    const double size = std::max(2.0, std::round(area.height() / 6));
    const double step = std::round(area.height() * 0.29);
    QPainterPath dots;
    for (const int place : {-1, 0, 1})
        dots.addEllipse(QPointF{area.center().x() + place * step, area.center().y()}, size / 2, size / 2);
    return dots;
}

void paintAttention(QPainter& painter, const QRectF& area)
{
    const double line = std::max(1.0, area.height() / 20);
    QPainterPath triangle;
    triangle.moveTo(area.center().x(), area.top() + line);
    triangle.lineTo(area.right() - line, area.bottom() - line);
    triangle.lineTo(area.left() + line, area.bottom() - line);
    triangle.closeSubpath();
    painter.setPen(QPen{QColor{20, 20, 24, 235}, line * 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
    painter.setBrush(QColor::fromRgba(warningColor));
    painter.drawPath(triangle);
    painter.fillPath(triangle, QColor::fromRgba(warningColor));
    const double width = area.height() * 0.13;
    const double x = area.center().x();
    painter.fillPath(
        roundLine(QPolygonF{{x, area.top() + area.height() * 0.40}, {x, area.top() + area.height() * 0.62}},
                  width),
        QColor{20, 20, 24});
    QPainterPath point;
    point.addEllipse(QPointF{x, area.top() + area.height() * 0.81}, width * 0.55, width * 0.55);
    painter.fillPath(point, QColor{20, 20, 24});
}

/// A drop beside the panel's own label.
void paintDot(QPainter& painter, const StatusItemContent& content, const Parts& parts, const QRectF& area)
{
    QRgb color = parts.stale || content.iconState == StatusBarIconState::waiting ? greyDot : calmDot;
    if (parts.filled)
        color = content.look == StatusButtonLook::redFill ? redFill : orangeFill;
    const double radius = area.height() * 0.32;
    const QPointF middle{area.center().x(), area.bottom() - radius - area.height() * 0.06};
    QPainterPath drop;
    drop.moveTo(middle.x(), area.top() + area.height() * 0.06);
    drop.cubicTo(middle.x() + radius * 0.5, middle.y() - radius * 1.1, middle.x() + radius,
                 middle.y() - radius * 0.6, middle.x() + radius, middle.y());
    drop.arcTo(QRectF{middle.x() - radius, middle.y() - radius, radius * 2, radius * 2}, 0, -180);
    drop.cubicTo(middle.x() - radius, middle.y() - radius * 0.6, middle.x() - radius * 0.5,
                 middle.y() - radius * 1.1, middle.x(), area.top() + area.height() * 0.06);
    painter.setPen(QPen{QColor{20, 20, 24, 200}, std::max(1.0, area.height() / 20)});
    painter.setBrush(QColor::fromRgba(color));
    painter.drawPath(drop);
}

struct Canvas {
    QImage image;
    QRectF area;
};

Canvas canvas(double width, int height)
{
    // Painted premultiplied: straight alpha would leave dark fringes on every edge.
    Canvas made{
        QImage{std::max(1, static_cast<int>(std::ceil(width))), height, QImage::Format_ARGB32_Premultiplied},
        {}};
    made.image.fill(Qt::transparent);
    made.area = QRectF{made.image.rect()};
    return made;
}

void paintSign(QPainter& painter, CornerSign sign, const StatusIconStyle& style, const Ink& ink,
               const QRectF& box)
{
    const double height = style.height;
    const double rim = std::max(1.0, std::round(height / 24));  // Between ink and the end of the plate.
    const QRectF inkBox = box.adjusted(0, 0, -rim, -rim);
    switch (sign) {
    case CornerSign::none: break;
    case CornerSign::warningBadge:
    case CornerSign::updateBadge: paintBadge(painter, sign, box, height); break;
    case CornerSign::activity:
        paintOutline(painter,
                     turningArrow(inkBox, std::max(1.2, height / 16.0), style.activityTurn.value_or(0)), ink,
                     height);
        break;
    case CornerSign::snoozed: paintOutline(painter, crescent(inkBox), ink, height); break;
    }
}

void paintStacked(QPainter& painter, const StatusItemContent& content, const Parts& parts,
                  const StatusIconStyle& style, const QRectF& area)
{
    const Ink ink = inkFor(content, parts, style.scheme);
    const double height = area.height();
    const double margin = std::max(1.0, std::round(height / 18));
    const double side = std::max(1.0, std::round(height / 12));  // Panels set their items without a gap.
    const QRectF inner = area.adjusted(side, margin, -side, -margin);
    const double gap = std::max(1.0, std::round(height / 20));
    const double valueHeight = std::round(inner.height() * (parts.sign.isEmpty() ? 0.7 : 0.55));
    const double top = parts.sign.isEmpty() ? inner.top() + (inner.height() - valueHeight) / 2 : inner.top();
    QPainterPath outline = fittedText(parts.value, QRectF{inner.left(), top, inner.width(), valueHeight});
    const double edge = std::round(height / 32);
    const QRectF plate = area.adjusted(edge, 0, -edge, 0);
    const CornerSign corner = cornerSign(content, style);
    const QRectF cornerBox = lowerCorner(plate);
    const double belowRight =
        corner == CornerSign::none ? inner.right() : std::min(inner.right(), cornerBox.left() - gap);
    const QRectF below{QPointF{inner.left(), top + valueHeight + gap}, QPointF{belowRight, inner.bottom()}};
    outline.addPath(signOutline(parts.sign, below, std::max(1.5, height / 11.5)));
    outline.setFillRule(Qt::WindingFill);
    paintPlate(painter, ink, plate);
    paintOutline(painter, outline, ink, height);
    paintSign(painter, corner, style, ink, cornerBox);
}

QImage paintWide(const StatusItemContent& content, const Parts& parts, const StatusIconStyle& style)
{
    const Ink ink = inkFor(content, parts, style.scheme);
    const double height = style.height;
    const double textHeight = std::round(height * 0.56);
    const double top = std::round((height - textHeight) / 2);
    const double pad = ink.plate ? std::round(height * 0.28) : std::max(1.0, std::round(height / 12));
    const double gap = std::round(height * 0.2);
    const QRectF unbounded{0, top, height * 40, textHeight};
    const double valueWidth = std::ceil(fittedText(parts.value, unbounded).boundingRect().width());
    const double arrowWidth = std::ceil(signWidth(parts.sign, textHeight));
    // A sign stands on the plate's end, as far as it finds room there.
    const CornerSign corner = cornerSign(content, style);
    const double signWidthMore = corner == CornerSign::none ? 0 : std::max(0.0, cornerSize(height) + 3 - pad);
    const double width = pad * 2 + valueWidth + (arrowWidth > 0 ? gap + arrowWidth : 0) + signWidthMore;

    Canvas made = canvas(std::max(width, height), style.height);
    QPainter painter{&made.image};
    painter.setRenderHint(QPainter::Antialiasing);
    const double left = std::floor((made.area.width() - width) / 2) + pad;
    QPainterPath outline = fittedText(parts.value, QRectF{left, top, valueWidth, textHeight});
    outline.addPath(signOutline(parts.sign, QRectF{left + valueWidth + gap, top, arrowWidth, textHeight},
                                std::max(1.5, height / 11.0)));
    outline.setFillRule(Qt::WindingFill);
    const double trim = std::floor(height / 12);
    const QRectF plate = made.area.adjusted(0, trim, 0, -trim);
    paintPlate(painter, ink, plate);
    paintOutline(painter, outline, ink, height);
    paintSign(painter, corner, style, ink, lowerCorner(plate));
    painter.end();
    return made.image.convertToFormat(QImage::Format_ARGB32);
}

/// Three dots, or the sign of what is being done instead.
void paintWaiting(QPainter& painter, const StatusItemContent& content, const StatusIconStyle& style,
                  const QRectF& area)
{
    const double height = area.height();
    const Ink ink = inkFor(content, {}, style.scheme);
    const CornerSign sign = cornerSign(content, style);
    paintPlate(painter, ink, area);
    if (sign == CornerSign::activity) {
        const double reach = std::round(height * 0.68);
        const QRectF middle{(area.width() - reach) / 2, (height - reach) / 2, reach, reach};
        paintOutline(painter, turningArrow(middle, std::max(1.5, height / 11), *style.activityTurn), ink,
                     height);
        return;
    }
    const double up = sign == CornerSign::none ? 0 : std::round(height * 0.14);  // Clear of the sign.
    paintOutline(painter, threeDots(area.translated(0, -up)), ink, height);
    paintSign(painter, sign, style, ink, lowerCorner(area));
}

}  // namespace

bool showsActivity(const StatusItemContent& content)
{
    return content.iconState != StatusBarIconState::attention &&
           content.indicator != StatusIndicator::warning;
}

QImage paintStatusIcon(const StatusItemContent& content, const StatusIconStyle& asked)
{
    StatusIconStyle style = asked;
    style.height = std::clamp(style.height, 8, 256);
    const Parts parts = partsOf(content);
    const bool showsValue = content.iconState == StatusBarIconState::value && !parts.value.isEmpty();
    if (showsValue && style.shape == StatusIconShape::wide)
        return paintWide(content, parts, style);

    Canvas made = canvas(style.height, style.height);
    QPainter painter{&made.image};
    painter.setRenderHint(QPainter::Antialiasing);
    if (showsValue && style.shape == StatusIconShape::stacked) {
        paintStacked(painter, content, parts, style, made.area);
    } else if (content.iconState == StatusBarIconState::attention) {
        paintAttention(painter, made.area);
    } else if (style.shape == StatusIconShape::dot) {
        paintDot(painter, content, parts, made.area);
        const Ink sign{.text = Qt::white, .halo = QColor{20, 20, 24, 200}};
        paintSign(painter, cornerSign(content, style), style, sign, lowerCorner(made.area));
    } else {
        paintWaiting(painter, content, style, made.area);
    }
    painter.end();
    return made.image.convertToFormat(QImage::Format_ARGB32);
}

}  // namespace tidewell
