#include <sys/resource.h>

#include <cmath>
#include <csignal>
#include <future>
#include <latch>
#include <semaphore>
#include <thread>

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>

#include "support/Engine.h"
#include "support/MainLoop.h"
#include "support/SystemClock.h"
#include "support/Task.h"
#include "support/Workers.h"

namespace tidewell {
namespace {

/// Sleeps and says how it ended and whether it was resumed on the thread where it began.
asio::awaitable<std::string> sleepAndTell(Clock* clock, std::chrono::milliseconds delay)
{
    const auto thread = std::this_thread::get_id();
    std::string ended = "slept";
    try {
        co_await clock->sleepFor(delay);
    } catch (const boost::system::system_error&) {
        ended = isCancellation(std::current_exception()) ? "cancelled" : "failed";
    }
    co_return ended + (thread == std::this_thread::get_id() ? "" : " on another thread");
}

class SystemClockTest : public testing::Test {
protected:
    /// The caller runs on this thread, the reactor on the engine's.
    std::string sleep(std::chrono::milliseconds delay,
                      const std::function<void(Task<std::string>&)>& meanwhile = {})
    {
        std::string result;
        const auto tell = [](Task<std::string> task, std::string* into) -> asio::awaitable<void> {
            *into = co_await task.wait();
        };
        io.restart();
        Task<std::string> task = startTask(io.get_executor(), sleepAndTell(&clock, delay));
        const auto teller = startTask(io.get_executor(), tell(task, &result));
        if (meanwhile) {
            io.poll();
            meanwhile(task);
        }
        io.run();
        return result;
    }

    SystemClockTest() { engine.start(); }
    ~SystemClockTest() override { engine.stop(10s); }

    Engine engine;
    asio::io_context io;
    SystemClock clock{engine.context()};
};

TEST_F(SystemClockTest, aSleepEndsIsCancelledOrIsCancelledAsItEnds)
{
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(sleep(3ms), "slept");
    EXPECT_GE(std::chrono::steady_clock::now() - before, 2900us);
    const auto cancel = [](Task<std::string>& task) { task.cancel(); };
    EXPECT_EQ(sleep(1h, cancel), "cancelled");
    EXPECT_EQ(sleep(std::chrono::milliseconds::max(), cancel), "cancelled");
    for (const auto delay : {0ms, -5ms, std::chrono::milliseconds::min()})
        EXPECT_EQ(sleep(delay), "slept");

    int ends = 0;
    for (int round = 0; round < 50; ++round) {
        const std::string ended = sleep(1ms, [round](Task<std::string>& task) {
            std::this_thread::sleep_for(900us + round * 5us);
            task.cancel();
        });
        ends += ended == "slept" ? 1 : 0;
        ASSERT_TRUE(ended == "slept" || ended == "cancelled") << ended;
    }
    RecordProperty("endsOf50", ends);
}

TEST_F(SystemClockTest, sleepsEvenWithoutADescriptorToSpare)
{
#if __has_feature(address_sanitizer)
    GTEST_SKIP() << "The sanitizer itself needs descriptors.";
#endif
    const auto sleepTwice = [this] {
        return sleep(1ms) + ", " + sleep(1h, [](Task<std::string>& task) { task.cancel(); });
    };
    const std::string with = sleepTwice();
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{.rlim_cur = 0, .rlim_max = before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const std::string without = sleepTwice();
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(with, "slept, cancelled");
    EXPECT_EQ(without, with);
}

TEST_F(SystemClockTest, nowIsTheWallClock)
{
    EXPECT_NEAR(unixSeconds(clock.now()), static_cast<double>(std::time(nullptr)), 2);
}

TEST(MainLoop, wakesTheEventLoopOncePerIdlePeriod)
{
    int wakes = 0;
    MainLoop loop{[&] { ++wakes; }};
    const asio::any_io_executor executor = loop.executor();
    std::vector<int> order;
    asio::post(executor, [&] {
        order.push_back(1);
        asio::post(executor, [&] { order.push_back(3); });
        asio::dispatch(executor, [&] { order.push_back(2); });
    });
    asio::post(executor, [&] {});
    EXPECT_EQ(wakes, 1);
    EXPECT_TRUE(order.empty());
    loop.runPending();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(wakes, 1);
    loop.runPending();
    asio::post(executor, [] {});
    EXPECT_EQ(wakes, 2);
}

TEST(MainLoop, workWithoutEndLeavesTheEventLoopItsTurn)
{
    int wakes = 0;
    MainLoop loop{[&] { ++wakes; }};
    int turns = 0;
    const auto forever = [](int* count) -> asio::awaitable<void> {
        for (;;) {
            co_await asio::post(asio::use_awaitable);
            ++*count;
        }
    };
    Task<void> task = startTask(loop.executor(), forever(&turns));
    loop.runPending();
    EXPECT_GT(turns, 0);
    EXPECT_EQ(wakes, 2);
    task.cancel();
    loop.runPending();
    EXPECT_FALSE(task.running());
}

TEST(MainLoop, losesNoWorkFromOtherThreads)
{
    // As a desktop's loop does it: waits for the wake-up, then runs what is pending.
    std::counting_semaphore<> woken{0};
    MainLoop loop{[&] { woken.release(); }};
    int done = 0;
    constexpr int each = 5000;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 3; ++thread)
        threads.emplace_back([&] {
            for (int i = 0; i < each; ++i)
                asio::post(loop.executor(), [&done] { ++done; });
        });
    while (done < 3 * each) {
        ASSERT_TRUE(woken.try_acquire_for(10s)) << "a wake-up was lost";
        loop.runPending();
    }
    EXPECT_EQ(done, 3 * each);
}

/// The first piece of work posts "first", lets another thread post "second", and only then ends.
std::string orderOfPosting(asio::any_io_executor executor, const std::function<void()>& run)
{
    std::string order;
    std::latch ended{2};
    asio::post(executor, [&] {
        const auto add = [&](const char* word) {
            return [&order, &ended, word] {
                order += word;
                ended.count_down();
            };
        };
        asio::post(executor, add("first "));
        std::thread{[&] { asio::post(executor, add("second")); }}.join();
    });
    run();
    ended.wait();
    return order;
}

TEST(MainLoop, andTheEngineRunWorkInTheOrderOfPostingAcrossThreads)
{
    MainLoop loop{[] {}};
    EXPECT_EQ(orderOfPosting(loop.executor(), [&] { loop.runPending(); }), "first second");
    Engine engine;
    EXPECT_EQ(orderOfPosting(engine.executor(), [&] { engine.start(); }), "first second");
    engine.stop(10s);
}

TEST(Engine, runsWorkPostedBeforeTheStartAndStopsInTheMiddleOfMore)
{
    Engine engine;
    std::promise<bool> ran;
    asio::post(engine.executor(), [&] {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        ran.set_value(sigismember(&blocked, SIGTERM) == 1 && sigismember(&blocked, SIGSEGV) == 0);
    });
    engine.start();
    EXPECT_TRUE(ran.get_future().get());
    const auto forever = []() -> asio::awaitable<void> {
        for (;;)
            co_await asio::post(asio::use_awaitable);
    };
    const Task<void> task = startTask(engine.executor(), forever());
    EXPECT_TRUE(engine.stop(10s));
    EXPECT_TRUE(engine.stop(10s));
}

struct Hanging {
    asio::any_io_executor (Engine::*executor)();
    int pieces;  ///< As many as leave another worker free.
};

class HangingWorker : public testing::TestWithParam<Hanging> {};

TEST_P(HangingWorker, holdsUpNeitherTheEndNorOtherWork)
{
    const auto release = std::make_shared<std::latch>(1);
    const auto begun = std::make_shared<std::latch>(1);
    {
        Engine engine;
        engine.start();
        const auto hanging = [](asio::any_io_executor workers, std::shared_ptr<std::latch> started,
                                std::shared_ptr<std::latch> until) -> asio::awaitable<void> {
            const auto work = [started, until] {
                started->count_down();
                until->wait();
            };
            co_await runOnWorker(workers, work);
        };
        const auto worker = (engine.*GetParam().executor)();
        const Task<void> task = startTask(engine.executor(), hanging(worker, begun, release));
        begun->wait();
        for (int more = 1; more < GetParam().pieces; ++more)
            asio::post(worker, [release] { release->wait(); });
        const auto other = std::make_shared<std::promise<void>>();
        asio::post(engine.workers(), [other] { other->set_value(); });
        EXPECT_EQ(other->get_future().wait_for(10s), std::future_status::ready);
        EXPECT_FALSE(engine.stop(1ms));
        EXPECT_FALSE(engine.stop(10s));
    }
    release->count_down();
}

INSTANTIATE_TEST_SUITE_P(Engine, HangingWorker,
                         testing::Values(Hanging{&Engine::workers, 1}, Hanging{&Engine::patientWorker, 9}));

/// Waits without end on the thread where it runs, with an executor of another one in its frame.
asio::awaitable<void> waitHolding(asio::any_io_executor other, std::shared_ptr<std::latch> begun)
{
    const auto strand = asio::make_strand(std::move(other));
    asio::steady_timer never{co_await asio::this_coro::executor, std::chrono::hours{1}};
    begun->count_down();
    co_await never.async_wait(asio::use_awaitable);
}

// A wrong order of destruction shows with the address sanitizer only.
TEST(Engine, whatWaitsAtTheEndMayHoldExecutorsOfEachOther)
{
    const auto begun = std::make_shared<std::latch>(4);
    Engine engine;
    engine.start();
    for (const auto& pool : {engine.workers(), engine.patientWorker()}) {
        asio::co_spawn(engine.executor(), waitHolding(pool, begun), asio::detached);
        asio::co_spawn(pool, waitHolding(engine.executor(), begun), asio::detached);
    }
    begun->wait();
    EXPECT_TRUE(engine.stop(10s));
}

TEST(Engine, endsWithoutEverHavingStarted)
{
    Engine engine;
    asio::post(engine.executor(), [] { ADD_FAILURE(); });
}

}  // namespace
}  // namespace tidewell
