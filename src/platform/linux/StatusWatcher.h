#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <functional>
#include <string>

namespace tidewell {

/// Follows the service that collects status items on behalf of panels, and registers with it.
///
/// Every call is asynchronous and no answer is waited for. Main thread.
class StatusWatcher final : public QObject {
    Q_OBJECT
public:
    struct Handlers {
        /// The service runs; `processName` is that of its process, empty when it cannot be learned.
        std::function<void(const std::string& processName)> appeared;
        std::function<void()> vanished;  ///< Also told once at the start when it does not run.
        std::function<void()> registered;
        /// After a registration and at each change: whether anything shows the items that it collects.
        std::function<void(bool)> hasHost;
        std::function<void()> refused;  ///< It answered the registration with an error or not at all.
        /// The bus closed the connection: nothing more comes of this object.
        std::function<void()> disconnected;
    };

    StatusWatcher(QDBusConnection connection, Handlers handlers);

    void start();
    /// Registers the connection's unique name. A well-known name has been seen to lose the race with some
    /// panels.
    void registerItem();

private:
    Q_SLOT void nameOwnerChanged(const QDBusMessage& message);
    Q_SLOT void busDisconnected();
    Q_SLOT void hostsChanged();
    void setOwner(const QString& owner);
    void askForProcess();
    void askForHost();

    QDBusConnection connection_;
    Handlers handlers_;
    QString owner_{};
    bool known_ = false;
};

}  // namespace tidewell
