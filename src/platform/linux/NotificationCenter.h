#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "platform/linux/AlertSound.h"
#include "polling/UserNotificationCenter.h"
#include "support/Clock.h"

namespace tidewell {

/// What the person chose on a notification.
enum class NotificationAction {
    open,    ///< The notification itself.
    snooze,  ///< "Snooze 30 min".
};

/// The notifications of the desktop, org.freedesktop.Notifications.
///
/// A server that answers means authorized; none, or one that hangs, means denied until it answers. A server
/// that the bus would start on first use counts as one that answers, and is started by the first call.
/// Handlers and their sources live on the main thread, where this is made and destroyed, with a
/// QCoreApplication; the calls of the interface may be awaited on any executor.
class NotificationCenter final : public UserNotificationCenter {
public:
    /// Begins to look for the bus and the server at once. `clock` and `sound` outlive this. The address is
    /// for tests; empty means the session's bus.
    NotificationCenter(asio::any_io_executor main, Clock& clock, AlertSoundPlaying& sound,
                       const QString& busAddress = {});
    ~NotificationCenter() override;

    void onAction(std::function<void(NotificationAction)> handler);
    /// Told once when the state is first known, then when it changes; of a state that changes again and
    /// again, once a minute.
    void onAuthorizationChange(std::function<void(NotificationAuthorizationState)> handler);
    /// Told when lastAlertNotShown() has changed.
    void onLastAlertChange(std::function<void()> handler);
    /// A server was there for the last notification and refused it or did not confirm it.
    [[nodiscard]] bool lastAlertNotShown() const;

    [[nodiscard]] asio::awaitable<NotificationAuthorizationState> authorizationStatus() override;
    [[nodiscard]] asio::awaitable<std::expected<bool, NotificationError>> requestAuthorization() override;
    /// Urgent ones are critical and stay until they are closed. One that was not confirmed in time is taken
    /// back should the server show it later after all.
    [[nodiscard]] asio::awaitable<std::expected<void, NotificationError>> add(
        UserNotification notification) override;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
