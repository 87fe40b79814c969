#pragma once

#include <QAccessible>

class QWidget;

namespace tidewell {

class SpokenStatusItem;

/// What assistive technology is told of a widget that draws itself, beside the name and description that
/// every widget has. A widget inherits it next to its Qt class.
class SpokenWidget {
public:
    virtual ~SpokenWidget() = default;
    [[nodiscard]] virtual QAccessible::Role spokenRole() const = 0;
    /// Adds to the states that every widget has.
    virtual void refineState(QAccessible::State& /*state*/) const {}
    [[nodiscard]] virtual bool canBePressed() const { return false; }
    virtual void press() {}
};

/// Lets assistive technology see each SpokenWidget, windows that are plain widgets as windows, and what is
/// announced below. Once, right after the
/// QApplication was made; main thread.
void installSpokenWidgets();

/// From now on, until it is hidden, this popup window is a child of the application as other windows are; the
/// toolkit leaves popups out of the tree that screen readers walk.
void announcePopup(QWidget& popup);

/// The status item is a child of the application from now on; none with null.
void announceStatusItem(SpokenStatusItem* item);

/// Sets the name and tells of it, when it is another one.
void setSpokenName(QWidget& widget, const QString& name);

}  // namespace tidewell
