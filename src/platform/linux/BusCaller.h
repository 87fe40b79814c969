#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>

#include "support/Asio.h"

namespace tidewell {

/// A connection to a message bus whose calls are awaited. Main thread; closes the connection at its end.
class BusCaller final {
public:
    explicit BusCaller(QDBusConnection connection);
    ~BusCaller();
    BusCaller(const BusCaller&) = delete;

    [[nodiscard]] QDBusConnection& connection() { return connection_; }

    /// The answer, good or bad; an error too when the bus goes or this object does. Awaited on the main
    /// thread's executor; a cancelled caller leaves at once with operation_aborted, and `late` then gets the
    /// answer if it still comes. The bus library itself gives up after `limit` of real time.
    [[nodiscard]] asio::awaitable<QDBusMessage> call(
        QDBusMessage message, std::chrono::milliseconds limit = std::chrono::seconds{25},
        std::function<void(const QDBusMessage&)> late = {});

private:
    struct Waiting;

    QDBusConnection connection_;
    std::list<std::weak_ptr<Waiting>> waiting_{};
    QObject calls_{};  ///< What the library calls back goes with this.
};

/// A call of the bus itself.
[[nodiscard]] QDBusMessage busDaemonCall(const QString& method, const QVariantList& arguments = {});

/// Who owns the name now, empty when nobody does. Empty too for a signal that does not come from the bus
/// itself or is about something else: any program on the bus can send one that looks like it.
[[nodiscard]] std::optional<QString> newOwner(const QDBusMessage& nameOwnerChanged, const QString& name);

/// A call that reads one property.
[[nodiscard]] QDBusMessage propertyCall(const QString& service, const QString& path, const QString& interface,
                                        const QString& name);

}  // namespace tidewell
