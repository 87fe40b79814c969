#include "polling/UserNotificationGlucoseAlertDelivery.h"

#include <utility>

#include "sources/Turns.h"
#include "support/OnExecutor.h"

namespace tidewell {

struct UserNotificationGlucoseAlertDelivery::Impl {
    using Self = std::shared_ptr<Impl>;
    using Sent = std::expected<void, NotificationError>;

    asio::any_io_executor engine;
    UserNotificationCenter& userNotificationCenter;
    RandomSource& random;
    Turns turns{engine};
    bool hasRequestedNotificationAuthorization = false;

    // On the engine.

    static asio::awaitable<NotificationAuthorizationState> authorizationStatus(Self self)
    {
        const Turns::Turn turn = co_await self->turns.next();
        co_return co_await self->userNotificationCenter.authorizationStatus();
    }

    static asio::awaitable<bool> requestAuthorizationIfNeeded(Self self)
    {
        const Turns::Turn turn = co_await self->turns.next();
        const NotificationAuthorizationState state =
            co_await self->userNotificationCenter.authorizationStatus();
        if (state == NotificationAuthorizationState::authorized)
            co_return true;
        if (state == NotificationAuthorizationState::denied || self->hasRequestedNotificationAuthorization)
            co_return false;
        self->hasRequestedNotificationAuthorization = true;
        const auto granted = co_await self->userNotificationCenter.requestAuthorization();
        co_return granted && *granted;
    }

    static asio::awaitable<Sent> send(Self self, UserNotification notification)
    {
        const Turns::Turn turn = co_await self->turns.next();
        notification.identifier = "glucose-alert-" + Uuid::random(self->random).text();
        co_return co_await self->userNotificationCenter.add(std::move(notification));
    }

    static asio::awaitable<TestResult> sendTestAlert(Self self)
    {
        if (!co_await requestAuthorizationIfNeeded(self))
            co_return TestResult{.sent = false, .message = "Notifications are disabled."};
        UserNotification notification{.title = "Tidewell test alert",
                                      .body = "Notifications are configured correctly."};
        const Sent sent = co_await send(self, std::move(notification));
        co_return TestResult{.sent = sent.has_value(),
                             .message = sent ? "Test alert sent." : "Test alert could not be sent."};
    }
};

UserNotificationGlucoseAlertDelivery::UserNotificationGlucoseAlertDelivery(
    asio::any_io_executor engine, UserNotificationCenter& userNotificationCenter, RandomSource& random)
    : impl_{std::make_shared<Impl>(std::move(engine), userNotificationCenter, random)}
{
}

UserNotificationGlucoseAlertDelivery::~UserNotificationGlucoseAlertDelivery() = default;

asio::awaitable<NotificationAuthorizationState> UserNotificationGlucoseAlertDelivery::authorizationStatus()
{
    return runOnExecutor(impl_->engine, Impl::authorizationStatus(impl_));
}

asio::awaitable<bool> UserNotificationGlucoseAlertDelivery::requestAuthorizationIfNeeded()
{
    return runOnExecutor(impl_->engine, Impl::requestAuthorizationIfNeeded(impl_));
}

asio::awaitable<std::expected<void, NotificationError>>
UserNotificationGlucoseAlertDelivery::sendNotification(std::string title, std::string body,
                                                       NotificationTone tone, bool offersSnooze)
{
    UserNotification notification{
        .title = std::move(title), .body = std::move(body), .tone = tone, .offersSnooze = offersSnooze};
    return runOnExecutor(impl_->engine, Impl::send(impl_, std::move(notification)));
}

asio::awaitable<UserNotificationGlucoseAlertDelivery::TestResult>
UserNotificationGlucoseAlertDelivery::sendTestAlert()
{
    return runOnExecutor(impl_->engine, Impl::sendTestAlert(impl_));
}

}  // namespace tidewell
