#include "platform/linux/NotificationSignals.h"

#include <utility>

#include "platform/linux/BusCaller.h"

namespace tidewell {

NotificationSignals::NotificationSignals(QDBusConnection& connection, Handlers handlers)
    : handlers_{std::move(handlers)}
{
    // By path and interface rather than by sender: with a sender, the library first asks the bus who that is,
    // and waits.
    connection.connect({}, QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
                       QStringLiteral("NameOwnerChanged"), {notificationService}, {}, this,
                       SLOT(nameOwnerChanged(QDBusMessage)));
    connection.connect({}, notificationPath, notificationService, QStringLiteral("ActionInvoked"), this,
                       SLOT(actionInvoked(QDBusMessage)));
    connection.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                       QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                       SLOT(busDisconnected()));
}

void NotificationSignals::nameOwnerChanged(const QDBusMessage& message)
{
    if (const auto owner = newOwner(message, notificationService))
        handlers_.ownerChanged(*owner);
}

void NotificationSignals::actionInvoked(const QDBusMessage& message)
{
    if (message.signature() == QLatin1String("us"))
        handlers_.actionInvoked(message.service(), message.arguments()[0].toUInt(),
                                message.arguments()[1].toString());
}

void NotificationSignals::busDisconnected() { handlers_.disconnected(); }

}  // namespace tidewell
