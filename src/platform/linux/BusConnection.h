#pragma once

#include <QDBusConnection>
#include <QString>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tidewell {

/// The address of the user's session bus; empty when there is none. Never starts one.
[[nodiscard]] QString sessionBusAddress();
[[nodiscard]] QString systemBusAddress();

/// Whether the bus at `address` answers the first line of the handshake in time. Blocks until then. True
/// where that cannot be tried (a transport other than a Unix socket).
[[nodiscard]] bool busGreets(const QString& address, std::chrono::milliseconds timeout);

/// Whether anything takes connections at `address`, even if it does nothing with them. Does not wait. True
/// where that cannot be tried.
[[nodiscard]] bool busListens(const QString& address);

/// Opens a connection of its own to the bus at `address`, which may take long or never end while the bus
/// hangs; `done` gets it on the main thread, or nothing when there is no bus. Not called once the token has
/// gone.
[[nodiscard]] std::shared_ptr<void> connectToBus(const QString& address,
                                                 std::function<void(std::optional<QDBusConnection>)> done);

}  // namespace tidewell
