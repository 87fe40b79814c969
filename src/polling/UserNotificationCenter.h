#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "support/Asio.h"

namespace tidewell {

enum class NotificationAuthorizationState { notDetermined, authorized, denied };

/// How loud a notification comes.
enum class NotificationTone {
    standard,  ///< Normal urgency and the usual sound.
    urgent,    ///< Critical urgency and a sound of its own: a low, a rapid fall, no data.
};

/// One notification, shown at once.
struct UserNotification {
    std::string identifier{};  ///< "glucose-alert-" and a UUID; never used twice.
    std::string title{};
    std::string body{};  ///< Plain text.
    NotificationTone tone = NotificationTone::standard;
    bool offersSnooze = false;  ///< An action "Snooze 30 min", where actions are possible.
    bool operator==(const UserNotification&) const = default;
};

/// Why a notification was not posted: one sentence for the log, without the notification's text.
struct NotificationError {
    std::string message;
    bool operator==(const NotificationError&) const = default;
};

/// The desktop's notifications, with their sound. Implemented by the platform.
///
/// Every call may be awaited on any executor, which is resumed; it ends within five seconds whatever the
/// desktop does, and a cancelled caller leaves at once with operation_aborted.
class UserNotificationCenter {
public:
    virtual ~UserNotificationCenter() = default;
    [[nodiscard]] virtual asio::awaitable<NotificationAuthorizationState> authorizationStatus() = 0;
    /// Asks the person for permission, where the platform has such a thing; else answers what the status
    /// says.
    [[nodiscard]] virtual asio::awaitable<std::expected<bool, NotificationError>> requestAuthorization() = 0;
    /// Good when the notification is with the desktop. Its sound is part of it: played by the desktop, or by
    /// us where the desktop plays none.
    [[nodiscard]] virtual asio::awaitable<std::expected<void, NotificationError>> add(
        UserNotification notification) = 0;
};

}  // namespace tidewell
