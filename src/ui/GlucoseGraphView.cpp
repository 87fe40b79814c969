#include "ui/GlucoseGraphView.h"

#include <QFontInfo>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "sources/GlucoseUnits.h"
#include "ui/DisplayText.h"

namespace tidewell {
namespace {

/// In points, at a text scale of 1.
constexpr QSize naturalSize{360, 240};
/// Header, footer and a plot in which something can be told.
constexpr int leastHeight = 160;
/// The pixel size of letters that the measures are made for.
constexpr double naturalLetters = 12;
/// How far from a point, across, the pointer may be to mean it.
constexpr double reach = 24;

/// "14:05   120 mg/dL →".
QString markText(const GlucoseReading& reading, const GlucoseGraphContent& content)
{
    const auto unit = glucoseUnits(content.settings.measurementUnit).value_or(GlucoseUnits::mgdL);
    const std::string text = localTimeOfDay(reading.date, content.zone) + "   " +
                             valueText(reading, content.settings) + " " + std::string{rawValue(unit)} + " " +
                             reading.trendArrow;
    return QString::fromStdString(text);
}

}  // namespace

GlucoseGraphView::GlucoseGraphView(QWidget* parent) : QWidget{parent}
{
    setObjectName(QStringLiteral("glucoseGraphView"));
    setAccessibleDescription(
        tr("Displays your glucose readings over time with high and low threshold lines"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    speak();
}

void GlucoseGraphView::setContent(GlucoseGraphContent content)
{
    const auto walkedAt = walked_ ? std::optional{readingAt(*walked_).date} : std::nullopt;
    content_ = std::move(content);
    walked_.reset();
    layOut();
    if (walkedAt)
        walked_ = pointNear(*walkedAt);
    speak();
}

std::optional<GlucoseReading> GlucoseGraphView::markedReading() const
{
    const auto point = markedPoint();
    return point ? std::optional{readingAt(*point)} : std::nullopt;
}

QSize GlucoseGraphView::sizeHint() const { return (QSizeF{naturalSize} * fontScale()).toSize(); }

QSize GlucoseGraphView::minimumSizeHint() const
{
    return {0, static_cast<int>(std::lround(leastHeight * fontScale()))};
}

double GlucoseGraphView::fontScale() const
{
    return std::clamp(QFontInfo{font()}.pixelSize() / naturalLetters, 1.0, 3.0);
}

/// Letters never grow beyond what the width has room for.
double GlucoseGraphView::textScale() const
{
    return std::clamp(width() / double{naturalSize.width()}, 0.5, fontScale());
}

GraphTheme GlucoseGraphView::theme() const
{
    const QPalette& colors = palette();
    return colors.color(QPalette::Window).lightnessF() < colors.color(QPalette::WindowText).lightnessF()
               ? GraphTheme::dark
               : GraphTheme::light;
}

const GlucoseReading& GlucoseGraphView::readingAt(std::size_t point) const
{
    return content_.glucoseHistory[layout_.points[point].reading];
}

std::optional<std::size_t> GlucoseGraphView::markedPoint() const { return walked_ ? walked_ : hovered_; }

std::optional<std::size_t> GlucoseGraphView::pointNear(double x) const
{
    const auto nearest = std::ranges::min_element(
        layout_.points, {}, [x](const GraphPoint& point) { return std::abs(point.at.x - x); });
    if (nearest == layout_.points.end() || std::abs(nearest->at.x - x) > reach * textScale())
        return {};
    return static_cast<std::size_t>(nearest - layout_.points.begin());
}

std::optional<std::size_t> GlucoseGraphView::pointNear(Date moment) const
{
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < layout_.points.size(); ++i)
        if (!nearest || std::chrono::abs(readingAt(i).date - moment) <
                            std::chrono::abs(readingAt(*nearest).date - moment))
            nearest = i;
    return nearest;
}

void GlucoseGraphView::layOut()
{
    layout_ = glucoseGraphLayout(content_, {double{1} * width(), double{1} * height()}, graphTextMeasure(),
                                 textScale());
    hovered_ = pointerX_ ? pointNear(*pointerX_) : std::nullopt;
    update();
}

void GlucoseGraphView::walkTo(std::optional<std::size_t> point)
{
    walked_ = point;
    speak();
    update();
}

void GlucoseGraphView::setPointer(std::optional<double> x)
{
    pointerX_ = x;
    const auto before = std::exchange(hovered_, x ? pointNear(*x) : std::nullopt);
    if (before != hovered_)
        update();
}

void GlucoseGraphView::speak()
{
    setSpokenName(
        *this, displayText(walked_ ? spokenGraphReading(readingAt(*walked_), content_.settings, content_.zone)
                                   : graphAccessibilityLabel(content_)));
}

void GlucoseGraphView::paintEvent(QPaintEvent*)
{
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(graphBackground(theme()));
    painter.drawRoundedRect(rect(), 4, 4);
    paintGlucoseGraph(painter, layout_, theme());
    if (const auto point = markedPoint())
        paintGraphMark(painter, layout_, layout_.points[*point], markText(readingAt(*point), content_),
                       theme());
    if (hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange)) {
        painter.setPen(QPen{palette().color(QPalette::Highlight), 2});
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF{rect()}.adjusted(1, 1, -1, -1), 4, 4);
    }
}

void GlucoseGraphView::resizeEvent(QResizeEvent*) { layOut(); }

void GlucoseGraphView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        updateGeometry();
        layOut();
    }
    QWidget::changeEvent(event);
}

void GlucoseGraphView::keyPressEvent(QKeyEvent* event)
{
    const std::size_t count = layout_.points.size();
    if (event->key() == Qt::Key_Escape && walked_)
        return walkTo({});
    if (count == 0)
        return event->ignore();
    const std::size_t newest = count - 1;
    const auto hourFrom = [&](int direction) {
        return pointNear(readingAt(walked_.value_or(newest)).date + Seconds{3600.0 * direction});
    };
    switch (event->key()) {
    case Qt::Key_Left: return walkTo(walked_ ? std::max(*walked_, std::size_t{1}) - 1 : newest);
    case Qt::Key_Right: return walkTo(walked_ ? std::min(*walked_ + 1, newest) : newest);
    case Qt::Key_Home: return walkTo(0);
    case Qt::Key_End: return walkTo(newest);
    case Qt::Key_PageUp: return walkTo(hourFrom(-1));
    case Qt::Key_PageDown: return walkTo(hourFrom(1));
    default: event->ignore();
    }
}

void GlucoseGraphView::focusOutEvent(QFocusEvent* event)
{
    walkTo({});
    QWidget::focusOutEvent(event);
}

void GlucoseGraphView::mouseMoveEvent(QMouseEvent* event) { setPointer(event->position().x()); }

void GlucoseGraphView::leaveEvent(QEvent*) { setPointer({}); }

}  // namespace tidewell
