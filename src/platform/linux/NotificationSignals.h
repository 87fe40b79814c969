#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <functional>

namespace tidewell {

/// Receives what the bus and the notification server tell by themselves. Main thread.
class NotificationSignals final : public QObject {
    Q_OBJECT
public:
    struct Handlers {
        /// Another connection owns the server's name; empty when none does.
        std::function<void(const QString& owner)> ownerChanged;
        /// Not yet known to come from the server.
        std::function<void(const QString& sender, unsigned id, const QString& action)> actionInvoked;
        /// The bus closed the connection. This object must not be destroyed inside the call.
        std::function<void()> disconnected;
    };

    NotificationSignals(QDBusConnection& connection, Handlers handlers);

private:
    Q_SLOT void nameOwnerChanged(const QDBusMessage& message);
    Q_SLOT void actionInvoked(const QDBusMessage& message);
    Q_SLOT void busDisconnected();

    Handlers handlers_;
};

inline const QString notificationService = QStringLiteral("org.freedesktop.Notifications");
inline const QString notificationPath = QStringLiteral("/org/freedesktop/Notifications");

}  // namespace tidewell
