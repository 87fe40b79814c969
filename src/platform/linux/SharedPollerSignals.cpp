#include "platform/linux/SharedPollerSignals.h"

#include <QDBusArgument>
#include <utility>

#include "platform/linux/BusCaller.h"
#include "platform/linux/SharedPollerState.h"

namespace tidewell {

SharedPollerSignals::SharedPollerSignals(QDBusConnection& connection, Handlers handlers)
    : handlers_{std::move(handlers)}
{
    // By path and interface rather than by sender: with a sender, the library first asks the bus who that is,
    // and waits.
    connection.connect({}, QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
                       QStringLiteral("NameOwnerChanged"), {sharedPollerName}, {}, this,
                       SLOT(nameOwnerChanged(QDBusMessage)));
    connection.connect({}, sharedPollerPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                       QStringLiteral("PropertiesChanged"), {sharedPollerInterface}, {}, this,
                       SLOT(propertiesChanged(QDBusMessage)));
    connection.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                       QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                       SLOT(busDisconnected()));
}

void SharedPollerSignals::nameOwnerChanged(const QDBusMessage& message)
{
    if (const auto owner = newOwner(message, sharedPollerName))
        handlers_.ownerChanged(*owner);
}

void SharedPollerSignals::propertiesChanged(const QDBusMessage& message)
{
    if (message.signature() == QLatin1String("sa{sv}as") &&
        message.arguments()[0].toString() == sharedPollerInterface)
        handlers_.propertiesChanged(message.service(), qdbus_cast<QVariantMap>(message.arguments()[1]));
}

void SharedPollerSignals::busDisconnected() { handlers_.disconnected(); }

}  // namespace tidewell
