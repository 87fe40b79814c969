#include "ui/InsightsChartView.h"

#include <QFontInfo>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tidewell {
namespace {

/// The pixel size of letters that a text scale of 1 is made for.
constexpr double naturalLetters = 12;
constexpr int naturalWidth = 640;

}  // namespace

InsightsChartStyle insightsChartStyle(const QWidget& widget, GlucoseUnits unit, double axisTopMgdl)
{
    const QPalette& colors = widget.palette();
    const bool dark =
        colors.color(QPalette::Window).lightnessF() < colors.color(QPalette::WindowText).lightnessF();
    return {.theme = dark ? GraphTheme::dark : GraphTheme::light,
            .unit = unit,
            .textScale = std::clamp(QFontInfo{widget.font()}.pixelSize() / naturalLetters, 1.0, 3.0),
            .axisTopMgdl = axisTopMgdl};
}

InsightsChartView::InsightsChartView(const QString& name, QWidget* parent) : QWidget{parent}
{
    setObjectName(name);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    QSizePolicy policy{QSizePolicy::Preferred, QSizePolicy::Preferred};
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void InsightsChartView::setChart(InsightsChart chart, GlucoseUnits unit, double axisTopMgdl)
{
    chart_ = std::move(chart);
    unit_ = unit;
    axisTopMgdl_ = axisTopMgdl;
    hovered_.reset();
    for (auto* item : {&walked_, &kept_})
        if (*item && **item >= chart_.count)
            item->reset();
    setCursor(chart_.choice == InsightsChart::Choice::none ? Qt::ArrowCursor : Qt::PointingHandCursor);
    setAccessibleDescription(
        chart_.choice == InsightsChart::Choice::open
            ? tr("Arrow keys go from item to item, Enter opens one.")
            : (chart_.choice == InsightsChart::Choice::keep
                   ? tr("Arrow keys go from item to item, Enter keeps one selected, Escape lets it go.")
                   : tr("Arrow keys go from item to item.")));
    speak();
    updateGeometry();
    update();
}

std::optional<std::size_t> InsightsChartView::markedItem() const
{
    return hovered_ ? hovered_ : walked_ ? walked_ : kept_;
}

void InsightsChartView::walkTo(std::optional<std::size_t> item)
{
    const auto before = markedItem();
    walked_ = item;
    hovered_.reset();
    speak();
    markMoved(before);
    if (item && onWalk_ && chart_.itemArea)
        onWalk_(chart_.itemArea(area(), *item).toAlignedRect());
}

QSize InsightsChartView::sizeHint() const { return {naturalWidth, heightForWidth(naturalWidth)}; }

QSize InsightsChartView::minimumSizeHint() const { return {0, 0}; }

int InsightsChartView::heightForWidth(int width) const
{
    return chart_.height ? static_cast<int>(std::ceil(chart_.height(width, chartStyle()))) : 0;
}

InsightsChartStyle InsightsChartView::chartStyle() const
{
    return insightsChartStyle(*this, unit_, axisTopMgdl_);
}

/// A margin for the focus.
QRectF InsightsChartView::area() const { return QRectF{rect()}.adjusted(4, 4, -4, -4); }

void InsightsChartView::choose(std::size_t item)
{
    switch (chart_.choice) {
    case InsightsChart::Choice::none: break;
    case InsightsChart::Choice::keep:
        kept_ = kept_ == item ? std::nullopt : std::optional{item};
        update();
        break;
    case InsightsChart::Choice::open: chart_.open(item);
    }
}

void InsightsChartView::setHovered(std::optional<std::size_t> item)
{
    const auto before = markedItem();
    hovered_ = item;
    markMoved(before);
}

/// Paints only the two items where their places are known: a chart may have a hundred of them.
void InsightsChartView::markMoved(std::optional<std::size_t> before)
{
    const auto after = markedItem();
    if (before == after)
        return;
    for (const auto item : {before, after}) {
        if (!chart_.itemArea)
            update();
        else if (item && *item < chart_.count)
            update(chart_.itemArea(area(), *item).toAlignedRect());
    }
}

void InsightsChartView::speak()
{
    const auto spoken = walked_ ? walked_ : kept_;
    setSpokenName(*this, spoken ? chart_.spoken(*spoken) : chart_.summary);
}

void InsightsChartView::paintEvent(QPaintEvent* event)
{
    QPainter painter{this};
    const InsightsChartStyle style = chartStyle();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(graphBackground(style.theme));
    painter.drawRoundedRect(rect(), 4, 4);
    if (chart_.paint)
        chart_.paint(painter, area(), style, event->rect(), markedItem());
    if (hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange)) {
        painter.setPen(QPen{palette().color(QPalette::Highlight), 2});
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF{rect()}.adjusted(1, 1, -1, -1), 4, 4);
    }
}

void InsightsChartView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateGeometry();
    QWidget::changeEvent(event);
}

void InsightsChartView::keyPressEvent(QKeyEvent* event)
{
    const std::size_t count = chart_.count;
    if (event->key() == Qt::Key_Escape && (walked_ || kept_)) {
        kept_.reset();
        return walkTo({});
    }
    if (count == 0 || (event->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return event->ignore();
    const std::size_t last = count - 1;
    const auto at = walked_ ? walked_ : kept_;
    const auto back = [&](std::size_t step) { return at ? *at - std::min(*at, step) : last; };
    const auto on = [&](std::size_t step) { return at ? std::min(*at + step, last) : 0; };
    switch (event->key()) {
    case Qt::Key_Left: return walkTo(back(1));
    case Qt::Key_Right: return walkTo(on(1));
    case Qt::Key_Home: return walkTo(0);
    case Qt::Key_End: return walkTo(last);
    case Qt::Key_PageUp: return walkTo(back(chart_.page));
    case Qt::Key_PageDown: return walkTo(on(chart_.page));
    case Qt::Key_Up:
    case Qt::Key_Down: {
        // Before the first and after the last line, the keys scroll what the chart is in.
        const bool down = event->key() == Qt::Key_Down;
        if (chart_.row == 0 || (at && (down ? *at + chart_.row > last : *at < chart_.row)))
            return event->ignore();
        return walkTo(down ? on(chart_.row) : back(chart_.row));
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (!at || chart_.choice == InsightsChart::Choice::none)
            return event->ignore();
        return choose(*at);
    default: event->ignore();
    }
}

void InsightsChartView::focusOutEvent(QFocusEvent* event)
{
    // A day that was opened comes back to where it was opened.
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        walked_.reset();
    speak();
    update();
    QWidget::focusOutEvent(event);
}

void InsightsChartView::mouseMoveEvent(QMouseEvent* event)
{
    setHovered(chart_.itemAt ? chart_.itemAt(area(), chartStyle(), event->position()) : std::nullopt);
}

void InsightsChartView::mousePressEvent(QMouseEvent* event)
{
    const auto item = chart_.itemAt ? chart_.itemAt(area(), chartStyle(), event->position()) : std::nullopt;
    if (event->button() != Qt::LeftButton || !item)
        return QWidget::mousePressEvent(event);
    walked_.reset();
    choose(*item);
    speak();
}

void InsightsChartView::leaveEvent(QEvent*) { setHovered({}); }

}  // namespace tidewell
