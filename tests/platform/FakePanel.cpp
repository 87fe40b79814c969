#include "FakePanel.h"

#include <QDBusVariant>

namespace tidewell {

FakePanel::FakePanel(TestBus& bus) : connection{bus.connect()}
{
    connection.registerObject("/StatusNotifierWatcher", this,
                              QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportAllProperties);
    connection.registerService("org.kde.StatusNotifierWatcher");
    for (const char* name : {"NewIcon", "NewToolTip", "NewTitle", "NewStatus", "XAyatanaNewLabel"})
        connection.connect({}, "/StatusNotifierItem", "org.kde.StatusNotifierItem", name, this,
                           SLOT(heard(QDBusMessage)));
    for (const char* name : {"LayoutUpdated", "ItemsPropertiesUpdated"})
        connection.connect({}, "/MenuBar", "com.canonical.dbusmenu", name, this, SLOT(heard(QDBusMessage)));
}

FakePanel::~FakePanel()
{
    connection.unregisterService("org.kde.StatusNotifierWatcher");
    connection.unregisterObject("/StatusNotifierWatcher");
}

QVariant FakePanel::property(const QString& name)
{
    QDBusMessage call = itemCall("org.freedesktop.DBus.Properties", "Get");
    call << QStringLiteral("org.kde.StatusNotifierItem") << name;
    return qvariant_cast<QDBusVariant>(callAndWait(connection, call).arguments().value(0)).variant();
}

QDBusMessage FakePanel::menu(const QString& method, const QVariantList& arguments)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(items.value(0), "/MenuBar", "com.canonical.dbusmenu", method);
    call.setArguments(arguments);
    return callAndWait(connection, call);
}

QDBusMessage FakePanel::itemCall(const QString& interface, const QString& method)
{
    return QDBusMessage::createMethodCall(items.value(0), "/StatusNotifierItem", interface, method);
}

void FakePanel::RegisterStatusNotifierItem(const QString& item, const QDBusMessage& message)
{
    if (refuses)
        connection.send(message.createErrorReply(QDBusError::Failed, "not now"));
    if (neverAnswers)
        message.setDelayedReply(true);
    items.append(item);
}

}  // namespace tidewell
