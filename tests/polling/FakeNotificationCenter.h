#pragma once

#include <vector>

#include "polling/UserNotificationCenter.h"
#include "support/Clock.h"

namespace tidewell {

/// A desktop whose notifications a test reads, and that fails as the test says. Single-threaded.
class FakeNotificationCenter final : public UserNotificationCenter {
public:
    explicit FakeNotificationCenter(Clock& clock) : clock_{clock} {}

    NotificationAuthorizationState state = NotificationAuthorizationState::authorized;
    /// What the person answers; an error is one of the desktop. A granted request makes `state` authorized.
    std::expected<bool, NotificationError> answer = true;
    std::optional<NotificationError> failure{};  ///< Of every add().
    std::chrono::milliseconds delay{0};          ///< Of every call; at most the contract's five seconds.

    std::vector<UserNotification> posted{};  ///< What went well.
    int refused = 0;                         ///< Calls of add() that failed.
    int requests = 0;                        ///< Times that the person was asked.
    int running = 0;                         ///< Calls under way.
    int mostRunning = 0;

    asio::awaitable<NotificationAuthorizationState> authorizationStatus() override
    {
        const Call call = co_await begin();
        co_return state;
    }
    asio::awaitable<std::expected<bool, NotificationError>> requestAuthorization() override
    {
        ++requests;
        const Call call = co_await begin();
        if (answer && *answer)
            state = NotificationAuthorizationState::authorized;
        co_return answer;
    }
    asio::awaitable<std::expected<void, NotificationError>> add(UserNotification notification) override
    {
        const Call call = co_await begin();
        if (failure) {
            ++refused;
            co_return std::unexpected{*failure};
        }
        posted.push_back(std::move(notification));
        co_return std::expected<void, NotificationError>{};
    }

private:
    struct Ending {
        void operator()(FakeNotificationCenter* center) const { --center->running; }
    };
    using Call = std::unique_ptr<FakeNotificationCenter, Ending>;

    asio::awaitable<Call> begin()
    {
        mostRunning = std::max(mostRunning, ++running);
        Call call{this};
        if (delay > std::chrono::milliseconds{0})
            co_await clock_.sleepFor(delay);
        co_return call;
    }

    Clock& clock_;
};

}  // namespace tidewell
