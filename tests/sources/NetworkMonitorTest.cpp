#include "sources/NetworkMonitor.h"

#include <boost/asio/strand.hpp>

#include <limits>
#include <thread>

#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

class NetworkMonitorTest : public testing::Test {
protected:
    Running<bool> wait(Seconds timeout)
    {
        return {io_.get_executor(), monitor_->waitUntilReachable(timeout)};
    }

    asio::io_context io_;
    FakeClock clock_{io_, dateFromUnix(1'000'000)};
    SeededRandom random_{1};
    FakeNetworkPath path_;
    std::unique_ptr<NetworkMonitor> monitor_ =
        std::make_unique<NetworkMonitor>(clock_, random_, path_.monitoring());
};

TEST_F(NetworkMonitorTest, doesNotWaitWhenTheNetworkIsThere)
{
    ASSERT_TRUE(path_.started());
    EXPECT_FALSE(monitor_->isReachable()) << "before the first report";
    path_.report(true);
    EXPECT_TRUE(monitor_->isReachable());
    const auto waiting = wait(Seconds{5});
    clock_.runReady();
    EXPECT_TRUE(waiting.ended() && waiting.result());
    EXPECT_EQ(clock_.sleepers(), 0U);
}

TEST_F(NetworkMonitorTest, aWaitEndsAtItsOwnTimeOut)
{
    const auto shorter = wait(Seconds{5});
    const auto longer = wait(Seconds{10});
    clock_.advance(Seconds{4.999});
    EXPECT_FALSE(shorter.ended());
    path_.report(false);
    clock_.advance(Seconds{0.001});
    EXPECT_TRUE(shorter.ended() && !shorter.result());
    EXPECT_FALSE(longer.ended());
    path_.report(true);
    clock_.runReady();
    EXPECT_TRUE(longer.ended() && longer.result());
    EXPECT_EQ(clock_.sleepers(), 0U) << "the time-out is given up";
}

TEST_F(NetworkMonitorTest, oneReportResumesAllAndALossResumesNobody)
{
    path_.report(true);
    path_.report(false);
    EXPECT_FALSE(monitor_->isReachable());
    const std::array waits{wait(Seconds{5}), wait(Seconds{5}), wait(Seconds{7})};
    clock_.runReady();
    path_.report(false);
    clock_.runReady();
    for (const auto& waiting : waits)
        EXPECT_FALSE(waiting.ended());
    path_.report(true);
    path_.report(false);  // Those who were told stay told.
    clock_.runReady();
    for (const auto& waiting : waits)
        EXPECT_TRUE(waiting.ended() && waiting.result());
}

TEST_F(NetworkMonitorTest, oddTimeOutsEndAtOnceOrStay)
{
    for (const double seconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        const auto waiting = wait(Seconds{seconds});
        clock_.advance(Seconds{0.001});
        EXPECT_TRUE(waiting.ended() && !waiting.result()) << seconds;
    }
    auto forever = wait(Seconds{std::numeric_limits<double>::infinity()});
    clock_.advance(Seconds{30.0 * 86400});
    EXPECT_FALSE(forever.ended());
    path_.report(true);
    clock_.runReady();
    EXPECT_TRUE(forever.ended() && forever.result());
}

TEST_F(NetworkMonitorTest, aWaitCanBeCancelledAlsoAsItEnds)
{
    auto during = wait(Seconds{5});
    clock_.advance(Seconds{1});
    during.cancel();
    clock_.runReady();
    ASSERT_TRUE(during.ended());
    EXPECT_TRUE(during.cancelled());
    EXPECT_EQ(clock_.sleepers(), 0U);

    auto before = wait(Seconds{5});
    before.cancel();
    clock_.runReady();
    EXPECT_TRUE(before.ended());

    auto atReport = wait(Seconds{5});
    clock_.runReady();
    path_.report(true);
    atReport.cancel();
    clock_.runReady();
    EXPECT_TRUE(atReport.ended());
    path_.report(false);

    auto reportAtTimeOut = wait(Seconds{5});
    clock_.runReady();
    const auto reporter = [&]() -> asio::awaitable<bool> {
        co_await clock_.sleepFor(5s);
        path_.report(true);
        co_return true;
    };
    const Running<bool> reporting{io_.get_executor(), reporter()};
    clock_.advance(Seconds{5});
    EXPECT_TRUE(reportAtTimeOut.ended());
    EXPECT_TRUE(reporting.ended());
}

TEST_F(NetworkMonitorTest, aWaitOutlivesTheMonitorAndALateReportIsHarmless)
{
    const auto waiting = wait(Seconds{5});
    const auto unstarted = wait(Seconds{5});
    clock_.advance(Seconds{1});
    const auto handler = path_.handler();
    monitor_.reset();
    EXPECT_FALSE(path_.started()) << "cancelled";
    handler(true);
    clock_.advance(Seconds{5});
    EXPECT_TRUE(waiting.ended());
    EXPECT_TRUE(unstarted.ended());
}

TEST_F(NetworkMonitorTest, reportsFromAnotherThreadReachWaitersOnSeveralExecutors)
{
    constexpr int waiters = 200;
    std::atomic<int> reachable = 0;
    std::atomic<int> ended = 0;
    SystemRandom random;  // The seeded one is for one thread.
    NetworkMonitor monitor{clock_, random, path_.monitoring()};
    asio::thread_pool pool{2};
    for (int i = 0; i < waiters; ++i) {
        asio::co_spawn(
            asio::make_strand(pool),
            [&]() -> asio::awaitable<void> {
                reachable += co_await monitor.waitUntilReachable(Seconds{3600}) ? 1 : 0;
                ++ended;
            },
            asio::detached);
    }
    for (int i = 0; i < 50; ++i)
        path_.report(i % 2 == 0);
    path_.report(true);
    pool.join();
    EXPECT_EQ(ended, waiters);
    EXPECT_EQ(reachable, waiters);
}

}  // namespace
}  // namespace tidewell
