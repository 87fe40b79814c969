#pragma once

#include <QTimer>
#include <QWidget>

#include "ui/SpokenWidget.h"

namespace tidewell {

/// Tells a screen reader what has changed in a window while the keyboard is somewhere else. A part of the
/// window that nobody sees and that has the role of a notification: these are spoken when they appear,
/// without a move of the focus. Its name is what was said last, for the seconds that a screen reader needs to
/// come and read it. Main thread.
class Announcer final : public QWidget, public SpokenWidget {
    Q_OBJECT
public:
    explicit Announcer(QWidget* parent);

    /// Says it now, also when it is what was said before. Nothing while the window is not shown: what opens
    /// is read as a whole.
    void say(const QString& text);

    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Notification; }

private:
    QTimer forget_{this};
};

}  // namespace tidewell
