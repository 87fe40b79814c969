#pragma once

#include <QLabel>
#include <QScrollArea>

namespace tidewell {

// Texts as the windows of settings and first-run steps show them.

/// Plain text that wraps.
[[nodiscard]] QLabel* wrappedLabel(const QString& text, QWidget* parent);
/// The same for what a person may want to copy: selected with mouse and keyboard, and reached by Tab.
[[nodiscard]] QLabel* copyableLabel(const QString& text, QWidget* parent);
/// The same with a bullet before it.
[[nodiscard]] QLabel* bulletLabel(const QString& text, QWidget* parent);

/// Letters that are larger than those around them, bold if wished; rescaleLetters() keeps them so.
void scaleLetters(QLabel& label, double factor, bool bold);
/// Makes the letters that were scaled in `window` fit its font again, which the desktop may change.
void rescaleLetters(QWidget& window);

/// Beside the text that matters: fainter, and still with enough contrast to be read.
void makeQuiet(QLabel& label);

/// Whether light letters stand on dark.
[[nodiscard]] bool isDark(const QWidget& widget);

/// From now on scrolls a control into view that gets the focus inside `area`, wherever it comes from; not one
/// that is clicked, which must not move away below the pointer.
void keepFocusInView(QScrollArea& area);

/// As large as what is in it, up to a share of the screen; scrolls beyond that.
/// Keeps the focus in view.
class GrowingScrollArea final : public QScrollArea {
public:
    explicit GrowingScrollArea(QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
};

}  // namespace tidewell
