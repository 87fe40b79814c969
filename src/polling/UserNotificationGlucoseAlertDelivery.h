#pragma once

#include "polling/UserNotificationCenter.h"
#include "support/Random.h"

namespace tidewell {

/// Posts glucose alerts. One task at a time, on `engine`; `userNotificationCenter` and `random` outlive it.
///
/// Permission is asked for at most once per run of the process, and nothing of that is stored.
class UserNotificationGlucoseAlertDelivery {
public:
    UserNotificationGlucoseAlertDelivery(asio::any_io_executor engine,
                                         UserNotificationCenter& userNotificationCenter,
                                         RandomSource& random);
    ~UserNotificationGlucoseAlertDelivery();

    // Awaited on any executor; the work is done on the engine.

    [[nodiscard]] asio::awaitable<NotificationAuthorizationState> authorizationStatus();
    /// True when notifications may be posted. Asks the person only when nothing is determined and nobody was
    /// asked in this run.
    [[nodiscard]] asio::awaitable<bool> requestAuthorizationIfNeeded();
    /// Posts under a new identifier "glucose-alert-UUID".
    [[nodiscard]] asio::awaitable<std::expected<void, NotificationError>> sendNotification(
        std::string title, std::string body, NotificationTone tone = NotificationTone::standard,
        bool offersSnooze = false);

    /// What came of a test alert, as a text for the person.
    struct TestResult {
        bool sent = false;
        std::string message{};  ///< "Test alert sent.", "Notifications are disabled." …
    };
    [[nodiscard]] asio::awaitable<TestResult> sendTestAlert();

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
