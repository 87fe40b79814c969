#include "ui/SpokenWidget.h"

#include <QtGui/qaccessibleobject.h>
#include <QAccessibleWidget>
#include <QApplication>
#include <QPointer>
#include <QWidget>

namespace tidewell {
namespace {

QPointer<QWidget>& announcedPopup()
{
    static QPointer<QWidget> popup;
    return popup;
}

class WidgetInterface final : public QAccessibleWidget {
public:
    WidgetInterface(QWidget* widget, SpokenWidget& spoken)
        : QAccessibleWidget{widget, spoken.spokenRole()}, spoken_{spoken}
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        spoken_.refineState(state);
        return state;
    }

    QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (spoken_.canBePressed())
            names.prepend(pressAction());
        return names;
    }

    void doAction(const QString& name) override
    {
        if (name == pressAction() && spoken_.canBePressed())
            spoken_.press();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    SpokenWidget& spoken_;  ///< The widget itself; this goes with it.
};

class ApplicationInterface final : public QAccessibleApplication {
public:
    int childCount() const override { return QAccessibleApplication::childCount() + (popup() ? 1 : 0); }

    QAccessibleInterface* child(int index) const override
    {
        QAccessibleInterface* const shown = popup();
        return shown && index == QAccessibleApplication::childCount() ? shown
                                                                      : QAccessibleApplication::child(index);
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        return child && child == popup() ? QAccessibleApplication::childCount()
                                         : QAccessibleApplication::indexOfChild(child);
    }

private:
    static QAccessibleInterface* popup()
    {
        QWidget* const popup = announcedPopup();
        return popup && popup->isVisible() ? QAccessible::queryAccessibleInterface(popup) : nullptr;
    }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    if (object == qApp)
        return new ApplicationInterface;
    auto* const widget = qobject_cast<QWidget*>(object);
    auto* const spoken = dynamic_cast<SpokenWidget*>(object);
    return widget && spoken ? new WidgetInterface{widget, *spoken} : nullptr;
}

}  // namespace

void installSpokenWidgets() { QAccessible::installFactory(makeInterface); }

void announcePopup(QWidget& popup) { announcedPopup() = &popup; }

void setSpokenName(QWidget& widget, const QString& name)
{
    if (widget.accessibleName() != name)
        widget.setAccessibleName(name);
}

}  // namespace tidewell
