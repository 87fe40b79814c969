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

/// Work that holds its worker until it is released, and what became of its result.
struct Held {
    std::shared_ptr<std::latch> begun = std::make_shared<std::latch>(1);
    std::shared_ptr<std::latch> release = std::make_shared<std::latch>(1);
    std::atomic<int> destroyed = 0;

    struct Owned {
        std::atomic<int>* destroyed;
        ~Owned() { ++*destroyed; }
    };
    static asio::awaitable<void> work(asio::any_io_executor workers, std::shared_ptr<std::latch> begun,
                                      std::shared_ptr<std::latch> release, std::shared_ptr<Owned> owned)
    {
        auto held = [begun, release, owned = std::move(owned)] {
            begun->count_down();
            release->wait();
            return owned;
        };
        co_await runOnWorker(std::move(workers), std::move(held));
    }
    Task<void> start(asio::io_context& io, asio::thread_pool& pool)
    {
        return startTask(io.get_executor(),
                         work(pool.get_executor(), begun, release, std::make_shared<Owned>(&destroyed)));
    }
};

TEST_F(WorkersTest, aCancelledCallerLeavesAtOnceAndTheResultIsDropped)
{
    Held held;
    Task<void> task = held.start(io, pool);
    io.poll();
    held.begun->wait();
    task.cancel();
    runUntil([&] { return !task.running(); });  // While the worker still blocks.
    EXPECT_EQ(held.destroyed, 0);
    held.release->count_down();
    pool.join();
    EXPECT_EQ(held.destroyed, 1);
}

TEST_F(WorkersTest, workWhoseCallerLeftBeforeItsTurnIsNotDone)
{
    asio::thread_pool single{1};
    Held held;
    asio::post(single, [release = held.release] { release->wait(); });
    Task<void> task = held.start(io, single);
    io.poll();
    task.cancel();
    runUntil([&] { return !task.running(); });
    held.release->count_down();
    single.join();
    EXPECT_FALSE(held.begun->try_wait());
    EXPECT_EQ(held.destroyed, 1);
}

TEST_F(WorkersTest, cancelledAsItEndsGoesWellEitherWay)
{
    for (int round = 0; round < 200; ++round) {
        Held held;
        {
            Task<void> task = held.start(io, pool);
            io.restart();
            io.poll();
            held.release->count_down();
            if (round % 2 == 0)
                held.begun->wait();
            task.cancel();
            runUntil([&] { return !task.running(); });
        }
        io.poll();
        const auto flush = std::make_shared<std::latch>(2);
        for (int i = 0; i < 2; ++i)
            asio::post(pool, [flush] { flush->arrive_and_wait(); });
        flush->wait();
        ASSERT_EQ(held.destroyed, 1) << round;
    }
}

TEST_F(WorkersTest, theCallersContextMayGoWhileTheWorkBlocks)
{
    Held held;
    {
        asio::io_context shortLived;
        const Task<void> task = held.start(shortLived, pool);
        shortLived.poll();
        held.begun->wait();
    }
    held.release->count_down();
    pool.join();
    EXPECT_EQ(held.destroyed, 1);
}

}  // namespace
}  // namespace tidewell
