#pragma once

#include <QObject>
#include <QStringList>
#include <map>

#include "TestBus.h"

namespace tidewell {

/// Stands in for the service that panels run: takes registrations and counts what the items signal.
class FakePanel final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)

public:
    explicit FakePanel(TestBus& bus);
    ~FakePanel() override;

    bool hostRegistered()
    {
        hostAsked = true;
        return showsItems;
    }

    /// Of the item.
    QVariant property(const QString& name);
    /// Calls the item's menu.
    QDBusMessage menu(const QString& method, const QVariantList& arguments);
    QDBusMessage itemCall(const QString& interface, const QString& method);
    /// Whatever the item sent before is here afterwards.
    void settle() { property("Id"); }

    QDBusConnection connection;
    QStringList items{};
    std::map<QString, int> signalCounts{};
    bool refuses = false;
    bool neverAnswers = false;
    bool showsItems = true;  ///< Or only collects them.
    bool hostAsked = false;  ///< Whether it does.

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& item, const QDBusMessage& message);
    void heard(const QDBusMessage& signal) { ++signalCounts[signal.member()]; }
};

}  // namespace tidewell
