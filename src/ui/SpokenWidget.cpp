#include "ui/SpokenWidget.h"

#include <QtGui/qaccessibleobject.h>
#include <QAccessibleWidget>
#include <QApplication>
#include <QPointer>
#include <QWidget>

#include "ui/SpokenStatusItem.h"

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

/// A widget of no kind of its own; as a window it is one to everybody.
class PlainInterface final : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;
    QAccessible::Role role() const override
    {
        return widget()->isWindow() ? QAccessible::Window : QAccessibleWidget::role();
    }
};

SpokenStatusItem*& announcedItem()
{
    static SpokenStatusItem* item = nullptr;
    return item;
}

class ItemInterface final : public QAccessibleObject, public QAccessibleActionInterface {
public:
    explicit ItemInterface(SpokenStatusItem* item) : QAccessibleObject{item} {}

    QAccessible::Role role() const override { return QAccessible::Button; }
    QAccessible::State state() const override { return {}; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(qApp); }
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QString text(QAccessible::Text what) const override
    {
        switch (what) {
        case QAccessible::Name: return item().name();
        case QAccessible::Description: return item().description();
        default: return {};
        }
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override
    {
        if (name == pressAction())
            item().press();
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    [[nodiscard]] SpokenStatusItem& item() const { return *qobject_cast<SpokenStatusItem*>(object()); }
};

/// The application with what the toolkit does not count among its windows: the status item first, an open
/// popup last.
class ApplicationInterface final : public QAccessibleApplication {
public:
    int childCount() const override
    {
        return first() + QAccessibleApplication::childCount() + (popup() ? 1 : 0);
    }

    QAccessibleInterface* child(int index) const override
    {
        if (first() > 0 && index == 0)
            return item();
        const int window = index - first();
        return popup() && window == QAccessibleApplication::childCount()
                   ? popup()
                   : QAccessibleApplication::child(window);
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        if (child && child == item())
            return 0;
        const int window = child && child == popup() ? QAccessibleApplication::childCount()
                                                     : QAccessibleApplication::indexOfChild(child);
        return window < 0 ? window : window + first();
    }

private:
    static QAccessibleInterface* popup()
    {
        QWidget* const popup = announcedPopup();
        return popup && popup->isVisible() ? QAccessible::queryAccessibleInterface(popup) : nullptr;
    }
    static QAccessibleInterface* item()
    {
        return announcedItem() ? QAccessible::queryAccessibleInterface(announcedItem()) : nullptr;
    }
    static int first() { return announcedItem() ? 1 : 0; }
};

QAccessibleInterface* makeInterface(const QString& className, QObject* object)
{
    if (object == qApp)
        return new ApplicationInterface;
    if (auto* const item = qobject_cast<SpokenStatusItem*>(object))
        return new ItemInterface{item};
    auto* const widget = qobject_cast<QWidget*>(object);
    auto* const spoken = dynamic_cast<SpokenWidget*>(object);
    if (widget && spoken)
        return new WidgetInterface{widget, *spoken};
    // Classes are asked for from the most derived one on: this is one that nobody else knows.
    return widget && className == QLatin1String("QWidget") ? new PlainInterface{widget} : nullptr;
}

}  // namespace

void installSpokenWidgets() { QAccessible::installFactory(makeInterface); }

void announcePopup(QWidget& popup) { announcedPopup() = &popup; }

void announceStatusItem(SpokenStatusItem* item) { announcedItem() = item; }

void setSpokenName(QWidget& widget, const QString& name)
{
    if (widget.accessibleName() != name)
        widget.setAccessibleName(name);
}

}  // namespace tidewell
