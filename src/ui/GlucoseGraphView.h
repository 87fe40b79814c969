#pragma once

#include <QWidget>
#include <optional>

#include "statusbar/GlucoseGraphLayout.h"
#include "ui/GlucoseGraphRenderer.h"
#include "ui/SpokenWidget.h"

namespace tidewell {

/// The graph as a widget: shows the reading under the pointer, and is walked by keyboard.
///
/// Left and Right go from reading to reading, Page Up and Page Down by an hour, Home and End to the oldest
/// and the newest, and Escape leaves the walk. The reading that the walk has reached is the widget's
/// accessible name, so that a screen reader says it; otherwise the name is graphAccessibilityLabel(). Keys
/// that it does not use go on to the parent. Colours and letters follow the palette and the application's
/// font. Main thread.
class GlucoseGraphView final : public QWidget, public SpokenWidget {
    Q_DECLARE_TR_FUNCTIONS(GlucoseGraphView)
public:
    explicit GlucoseGraphView(QWidget* parent = nullptr);

    /// A walk stays at its reading as long as that is shown, else at the one next to it.
    void setContent(GlucoseGraphContent content);
    [[nodiscard]] const GlucoseGraphContent& content() const { return content_; }
    /// What is marked, by the walk or else by the pointer.
    [[nodiscard]] std::optional<GlucoseReading> markedReading() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Chart; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    [[nodiscard]] double fontScale() const;
    [[nodiscard]] double textScale() const;
    [[nodiscard]] GraphTheme theme() const;
    [[nodiscard]] const GlucoseReading& readingAt(std::size_t point) const;
    [[nodiscard]] std::optional<std::size_t> markedPoint() const;
    [[nodiscard]] std::optional<std::size_t> pointNear(double x) const;
    /// The point whose reading was measured nearest to this moment.
    [[nodiscard]] std::optional<std::size_t> pointNear(Date moment) const;
    void layOut();
    void walkTo(std::optional<std::size_t> point);
    void setPointer(std::optional<double> x);
    void speak();

    GlucoseGraphContent content_{};
    GlucoseGraphLayout layout_{};
    std::optional<std::size_t> walked_{};  ///< Among the layout's points, as the next.
    std::optional<std::size_t> hovered_{};
    std::optional<double> pointerX_{};
};

}  // namespace tidewell
