#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <functional>

namespace tidewell {

/// Receives what the bus and the process that polls tell by themselves. Main thread.
class SharedPollerSignals final : public QObject {
    Q_OBJECT
public:
    struct Handlers {
        /// Another connection owns the name; empty when none does.
        std::function<void(const QString& owner)> ownerChanged;
        /// Not yet known to come from the owner.
        std::function<void(const QString& sender, const QVariantMap& changed)> propertiesChanged;
        /// The bus closed the connection. This object must not be destroyed inside the call.
        std::function<void()> disconnected;
    };

    SharedPollerSignals(QDBusConnection& connection, Handlers handlers);

private:
    Q_SLOT void nameOwnerChanged(const QDBusMessage& message);
    Q_SLOT void propertiesChanged(const QDBusMessage& message);
    Q_SLOT void busDisconnected();

    Handlers handlers_;
};

}  // namespace tidewell
