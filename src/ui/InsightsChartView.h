#pragma once

#include <QPoint>
#include <QWidget>
#include <functional>
#include <optional>

#include "ui/InsightsCharts.h"
#include "ui/SpokenWidget.h"

namespace tidewell {

/// A chart as a view shows it: a row or a table of items that a person can go through.
struct InsightsChart {
    enum class Choice {
        none,  ///< Items are only looked at.
        keep,  ///< A click or Enter keeps an item marked.
        open   ///< A click or Enter opens it.
    };
    QString summary{};  ///< What a screen reader says of the chart as a whole.
    std::size_t count = 0;
    std::size_t row = 0;   ///< Items from one line to the next, for Up and Down; 0: these keys are not used.
    std::size_t page = 8;  ///< Items that Page Up and Page Down go by.
    Choice choice = Choice::none;
    /// `exposed` is what has to be painted of `area`.
    std::function<void(QPainter&, const QRectF& area, const InsightsChartStyle&, const QRectF& exposed,
                       std::optional<std::size_t> marked)>
        paint;
    std::function<std::optional<std::size_t>(const QRectF& area, const InsightsChartStyle&, QPointF)> itemAt;
    std::function<QString(std::size_t)> spoken;  ///< One item in words.
    std::function<void(std::size_t)> open{};     ///< Of Choice::open.
    /// What a walk scrolls to; the mark of an item stays within.
    std::function<QRectF(const QRectF& area, std::size_t)> itemArea{};
    std::function<double(double width, const InsightsChartStyle&)> height;
};

/// A chart of Insights as a widget: shows the item under the pointer, and is walked by keyboard.
///
/// Left and Right go from item to item, Up and Down from line to line, Page Up and Page Down by a page, Home
/// and End to the first and the last; Enter or Space keeps or opens the item, and Escape leaves the walk and
/// lets go of what was kept. The item that the walk has reached is the widget's accessible name, otherwise
/// the chart's summary. Keys that it does not use go on to the parent. Colours and letters follow palette and
/// font. Main thread.
class InsightsChartView final : public QWidget, public SpokenWidget {
    Q_OBJECT
public:
    explicit InsightsChartView(const QString& name, QWidget* parent = nullptr);

    /// A walk and what is kept stay where they are as long as there are so many items.
    void setChart(InsightsChart chart, GlucoseUnits unit, double axisTopMgdl);
    [[nodiscard]] std::optional<std::size_t> markedItem() const;
    /// Called when a walk goes to an item, with its area in this widget.
    void onWalk(std::function<void(QRect)> handler) { onWalk_ = std::move(handler); }
    /// Lets the walk begin at an item: what was opened last.
    void walkTo(std::optional<std::size_t> item);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Chart; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    [[nodiscard]] InsightsChartStyle chartStyle() const;
    [[nodiscard]] QRectF area() const;
    void choose(std::size_t item);
    void setHovered(std::optional<std::size_t> item);
    void markMoved(std::optional<std::size_t> before);
    void speak();

    InsightsChart chart_{};
    GlucoseUnits unit_ = GlucoseUnits::mgdL;
    double axisTopMgdl_ = 300;
    std::optional<std::size_t> hovered_{};
    std::optional<std::size_t> walked_{};
    std::optional<std::size_t> kept_{};
    std::function<void(QRect)> onWalk_{};
};

/// By a widget's palette and font.
[[nodiscard]] InsightsChartStyle insightsChartStyle(const QWidget& widget, GlucoseUnits unit,
                                                    double axisTopMgdl);

}  // namespace tidewell
