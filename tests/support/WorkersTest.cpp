#include "support/Workers.h"

#include <latch>
#include <stdexcept>
#include <thread>

#include "support/Task.h"

namespace tidewell {
namespace {

class WorkersTest : public testing::Test {
protected:
    /// Turns of `io` until `done`; the worker's post wakes it.
    void runUntil(const std::function<bool()>& done)
    {
        auto guard = asio::make_work_guard(io);
        while (!done())
            io.run_one();
    }

    asio::io_context io;
    asio::thread_pool pool{2};
};

asio::awaitable<std::string> workElsewhere(asio::any_io_executor workers, std::thread::id caller)
{
    const auto work = [caller] {
        return std::string{std::this_thread::get_id() == caller ? "same thread" : "worker"};
    };
    const std::string where = co_await runOnWorker(workers, work);
    co_return where + (std::this_thread::get_id() == caller ? ", back" : ", lost");
}

TEST_F(WorkersTest, workRunsElsewhereAndTheCallerGoesOnWhereItWas)
{
    const auto task =
        startTask(io.get_executor(), workElsewhere(pool.get_executor(), std::this_thread::get_id()));
    std::string result;
    const auto read = [](Task<std::string> of, std::string* into) -> asio::awaitable<void> {
        *into = co_await of.wait();
    };
    const auto reader = startTask(io.get_executor(), read(task, &result));
    io.run();  // Ends by itself: waiting for a worker keeps the context busy.
    EXPECT_EQ(result, "worker, back");
}

TEST_F(WorkersTest, whatTheWorkThrowsReachesTheCaller)
{
    const auto caller = [](asio::any_io_executor workers) -> asio::awaitable<void> {
        const auto work = [] { throw std::runtime_error{"broken"}; };
        EXPECT_THROW(co_await runOnWorker(workers, work), std::runtime_error);
    };
    const auto task = startTask(io.get_executor(), caller(pool.get_executor()));
    io.run();
    EXPECT_FALSE(task.running());
}

/// Counts how often its last owner went.
struct Owned {
    std::atomic<int>* destroyed;
    ~Owned() { ++*destroyed; }
};

asio::awaitable<void> heldWork(asio::any_io_executor workers, std::shared_ptr<std::latch> begun,
                               std::shared_ptr<std::latch> release, std::shared_ptr<Owned> owned)
{
    auto work = [begun, release, owned = std::move(owned)] {
        begun->count_down();
        release->wait();
        return owned;
    };
    co_await runOnWorker(std::move(workers), std::move(work));
}

TEST_F(WorkersTest, aCancelledCallerLeavesAtOnceAndTheResultIsDropped)
{
    std::atomic<int> destroyed = 0;
    const auto begun = std::make_shared<std::latch>(1);
    const auto release = std::make_shared<std::latch>(1);
    Task<void> task = startTask(io.get_executor(), heldWork(pool.get_executor(), begun, release,
                                                            std::make_shared<Owned>(&destroyed)));
    io.poll();
    begun->wait();
    task.cancel();
    runUntil([&] { return !task.running(); });  // While the worker still blocks.
    EXPECT_EQ(destroyed, 0);
    release->count_down();
    pool.join();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(WorkersTest, workWhoseCallerLeftBeforeItsTurnIsNotDone)
{
    asio::thread_pool single{1};
    const auto release = std::make_shared<std::latch>(1);
    asio::post(single, [release] { release->wait(); });
    std::atomic<int> destroyed = 0;
    const auto begun = std::make_shared<std::latch>(1);
    Task<void> task = startTask(io.get_executor(), heldWork(single.get_executor(), begun, release,
                                                            std::make_shared<Owned>(&destroyed)));
    io.poll();
    task.cancel();
    runUntil([&] { return !task.running(); });
    release->count_down();
    single.join();
    EXPECT_FALSE(begun->try_wait());
    EXPECT_EQ(destroyed, 1);
}

TEST_F(WorkersTest, cancelledAsItEndsGoesWellEitherWay)
{
    for (int round = 0; round < 200; ++round) {
        std::atomic<int> destroyed = 0;
        const auto begun = std::make_shared<std::latch>(1);
        const auto release = std::make_shared<std::latch>(1);
        {
            Task<void> task = startTask(io.get_executor(), heldWork(pool.get_executor(), begun, release,
                                                                    std::make_shared<Owned>(&destroyed)));
            io.restart();
            io.poll();
            release->count_down();
            if (round % 2 == 0)
                begun->wait();
            task.cancel();
            runUntil([&] { return !task.running(); });
        }
        io.poll();
        const auto flush = std::make_shared<std::latch>(2);
        for (int i = 0; i < 2; ++i)
            asio::post(pool, [flush] { flush->arrive_and_wait(); });
        flush->wait();
        ASSERT_EQ(destroyed, 1) << round;
    }
}

TEST_F(WorkersTest, theCallersContextMayGoWhileTheWorkBlocks)
{
    std::atomic<int> destroyed = 0;
    const auto begun = std::make_shared<std::latch>(1);
    const auto release = std::make_shared<std::latch>(1);
    {
        asio::io_context shortLived;
        const Task<void> task =
            startTask(shortLived.get_executor(),
                      heldWork(pool.get_executor(), begun, release, std::make_shared<Owned>(&destroyed)));
        shortLived.poll();
        begun->wait();
    }
    release->count_down();
    pool.join();
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
}  // namespace tidewell
