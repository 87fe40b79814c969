#include "polling/UserNotificationGlucoseAlertDelivery.h"

#include "polling/FakeNotificationCenter.h"
#include "testing/FakeClock.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

using enum NotificationAuthorizationState;

struct DeliveryFixture {
    asio::io_context io{};
    FakeClock clock{io, dateFromUnix(1'772'438'000)};
    SeededRandom random{7};
    FakeNotificationCenter center{clock};
    std::optional<UserNotificationGlucoseAlertDelivery> delivery{std::in_place, io.get_executor(), center,
                                                                 random};

    template <class T>
    T run(asio::awaitable<T> work)
    {
        const Running<T> running{io.get_executor(), std::move(work)};
        clock.advance(Seconds{60});
        return running.result();
    }
};

TEST(UserNotificationGlucoseAlertDelivery, asksThePersonAtMostOnceInARun)
{
    struct Case {
        NotificationAuthorizationState state;
        std::expected<bool, NotificationError> answer;
        std::vector<bool> results;
        int requests;
    };
    const std::vector<Case> cases{
        {authorized, false, {true, true}, 0},
        {denied, true, {false, false}, 0},
        {notDetermined, true, {true, true}, 1},
        {notDetermined, false, {false, false}, 1},
        {notDetermined, std::unexpected{NotificationError{"no dialog"}}, {false, false}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.state));
        DeliveryFixture f;
        f.center.state = c.state;
        f.center.answer = c.answer;
        EXPECT_EQ(f.run(f.delivery->authorizationStatus()), c.state);
        EXPECT_EQ(f.center.requests, 0);
        for (const bool result : c.results)
            EXPECT_EQ(f.run(f.delivery->requestAuthorizationIfNeeded()), result);
        EXPECT_EQ(f.center.requests, c.requests);
        // What the person decides later, in the desktop's settings, counts.
        f.center.state = authorized;
        EXPECT_TRUE(f.run(f.delivery->requestAuthorizationIfNeeded()));
    }
}

TEST(UserNotificationGlucoseAlertDelivery, takesCallersOneAfterAnother)
{
    DeliveryFixture f;
    f.center.state = notDetermined;
    f.center.delay = 4s;
    const auto engine = f.io.get_executor();
    const Running<bool> first{engine, f.delivery->requestAuthorizationIfNeeded()};
    Running<bool> gone{engine, f.delivery->requestAuthorizationIfNeeded()};
    const Running<bool> second{engine, f.delivery->requestAuthorizationIfNeeded()};
    f.clock.advance(Seconds{5});
    gone.cancel();
    f.delivery.reset();  // Those under way end as if it were there.
    f.clock.advance(Seconds{20});
    EXPECT_TRUE(first.result());
    EXPECT_TRUE(second.result());
    EXPECT_TRUE(gone.cancelled());
    EXPECT_EQ(f.center.requests, 1);
    EXPECT_EQ(f.center.mostRunning, 1);
}

TEST(UserNotificationGlucoseAlertDelivery, leavesAtOnceWhenCancelledAndThenWorksOn)
{
    DeliveryFixture f;
    f.center.delay = 4s;
    Running<std::expected<void, NotificationError>> cancelled{f.io.get_executor(),
                                                              f.delivery->sendNotification("a", "b")};
    f.clock.advance(Seconds{1});
    cancelled.cancel();
    f.clock.runReady();
    EXPECT_TRUE(cancelled.cancelled());
    EXPECT_TRUE(f.run(f.delivery->sendNotification("c", "d")).has_value());
    ASSERT_EQ(f.center.posted.size(), 1u);
    EXPECT_EQ(f.center.posted.front().title, "c");
}

TEST(UserNotificationGlucoseAlertDelivery, postsEachUnderAnIdentifierOfItsOwn)
{
    DeliveryFixture f;
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(
            f.run(f.delivery->sendNotification("Title", "Body", NotificationTone::urgent, true)).has_value());
    ASSERT_EQ(f.center.posted.size(), 2u);
    EXPECT_NE(f.center.posted[0].identifier, f.center.posted[1].identifier);
    for (UserNotification& notification : f.center.posted) {
        EXPECT_EQ(notification.identifier.size(), std::string{"glucose-alert-"}.size() + 36);
        EXPECT_TRUE(notification.identifier.starts_with("glucose-alert-"));
        notification.identifier.clear();
        EXPECT_EQ(
            notification,
            (UserNotification{
                .title = "Title", .body = "Body", .tone = NotificationTone::urgent, .offersSnooze = true}));
    }
    f.center.failure = NotificationError{"The notification server answered with an error"};
    const auto failed = f.run(f.delivery->sendNotification("Title", "Body"));
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error(), *f.center.failure);
}

TEST(UserNotificationGlucoseAlertDelivery, saysWhatCameOfATestAlert)
{
    DeliveryFixture f;
    const auto test = [&] {
        const auto result = f.run(f.delivery->sendTestAlert());
        return fmt::format("{} {} {}", result.sent, result.message, f.center.posted.size());
    };
    EXPECT_EQ(test(), "true Test alert sent. 1");
    EXPECT_EQ(f.center.posted.back().title, "Tidewell test alert");
    EXPECT_EQ(f.center.posted.back().body, "Notifications are configured correctly.");
    EXPECT_EQ(f.center.posted.back().tone, NotificationTone::standard);
    EXPECT_FALSE(f.center.posted.back().offersSnooze);
    f.center.failure = NotificationError{"gone"};
    EXPECT_EQ(test(), "false Test alert could not be sent. 1");
    f.center.state = denied;
    EXPECT_EQ(test(), "false Notifications are disabled. 1");
    f.center.state = notDetermined;
    f.center.failure.reset();
    EXPECT_EQ(test(), "true Test alert sent. 2");
}

}  // namespace
}  // namespace tidewell
