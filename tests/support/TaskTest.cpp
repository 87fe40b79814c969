#include "support/Task.h"

#include <stdexcept>

#include "testing/FakeClock.h"

namespace tidewell {
namespace {

/// What a coroutine that waits came out with.
struct Outcome {
    std::optional<int> value{};
    std::string failure{};  ///< "cancelled", or the text of what was thrown.
};

class TaskTest : public testing::Test {
protected:
    asio::awaitable<int> afterSecond(int value)
    {
        co_await clock.sleepFor(1s);
        co_return value;
    }

    static asio::awaitable<void> recordWait(Task<int> task, Outcome* outcome)
    {
        try {
            outcome->value = co_await task.wait();
        } catch (const std::exception& thrown) {
            outcome->failure = isCancellation(std::current_exception()) ? "cancelled" : thrown.what();
        }
    }

    Task<void> startWaiter(Task<int> task, Outcome& outcome)
    {
        return startTask(io.get_executor(), recordWait(std::move(task), &outcome));
    }

    asio::io_context io;
    FakeClock clock{io, dateFromUnix(1'700'000'000)};
};

TEST_F(TaskTest, everyWaiterGetsTheResultBeforeAndAfterTheEnd)
{
    Task<int> task = startTask(io.get_executor(), afterSecond(7));
    std::array<Outcome, 3> outcomes;
    startWaiter(task, outcomes[0]);
    startWaiter(task, outcomes[1]);
    clock.advance(999ms);
    EXPECT_TRUE(task.running());
    EXPECT_FALSE(outcomes[0].value);
    clock.advance(1ms);
    EXPECT_FALSE(task.running());
    EXPECT_TRUE(task);
    startWaiter(std::exchange(task, {}), outcomes[2]);
    clock.runReady();
    for (const Outcome& outcome : outcomes)
        EXPECT_EQ(outcome.value, 7);
}

TEST_F(TaskTest, workBeginsInALaterTurnEvenWhenStartedOnTheExecutor)
{
    bool begun = false;
    bool begunInside = true;
    const auto work = [](bool* flag) -> asio::awaitable<void> {
        *flag = true;
        co_return;
    };
    asio::post(io, [&] {
        const auto task = startTask(io.get_executor(), work(&begun));
        begunInside = begun;
    });
    clock.runReady();
    EXPECT_FALSE(begunInside);
    EXPECT_TRUE(begun);
}

TEST_F(TaskTest, aCancelledWaiterLeavesAndTheTaskGoesOn)
{
    const Task<int> task = startTask(io.get_executor(), afterSecond(7));
    Outcome leaves;
    Outcome stays;
    Task<void> leaver = startWaiter(task, leaves);
    startWaiter(task, stays);
    clock.runReady();
    leaver.cancel();
    clock.runReady();
    EXPECT_EQ(leaves.failure, "cancelled");
    EXPECT_TRUE(task.running());
    clock.advance(1s);
    EXPECT_EQ(stays.value, 7);
}

TEST_F(TaskTest, aCancelledTaskTellsItsWaiters)
{
    const bool cases[]{false, true};
    for (const bool begun : cases) {
        Task<int> task = startTask(io.get_executor(), afterSecond(7));
        Outcome outcome;
        startWaiter(task, outcome);
        if (begun)
            clock.runReady();
        task.cancel();
        task.cancel();
        clock.runReady();
        EXPECT_FALSE(task.running());
        EXPECT_EQ(outcome.failure, "cancelled") << begun;
        EXPECT_EQ(clock.sleepers(), 0U);
    }
}

/// Cancels `which` in the very turn in which the task's sleep has ended but nobody was resumed yet.
TEST_F(TaskTest, cancelledBeforeItsFirstTurnItNeverBegins)
{
    // Between two turns, where asio lets the cancellation overtake the start, and within one.
    for (const bool withinTurn : {false, true}) {
        bool begun = false;
        const auto work = [](bool* flag) -> asio::awaitable<int> {
            *flag = true;
            co_return 7;
        };
        Task<int> task;
        Outcome outcome;
        asio::post(io, [&] {
            if (withinTurn)
                task = startTask(io.get_executor(), work(&begun));
            task.cancel();
            task.cancel();
        });
        if (!withinTurn)
            task = startTask(io.get_executor(), work(&begun));
        clock.runReady();
        EXPECT_FALSE(task.running());
        startWaiter(task, outcome);
        clock.runReady();
        EXPECT_FALSE(begun);
        EXPECT_EQ(outcome.failure, "cancelled");
    }
}

TEST_F(TaskTest, cancelledAsItEndsGivesEitherTheResultOrTheCancellation)
{
    for (const bool cancelTask : {true, false}) {
        asio::experimental::channel<void(boost::system::error_code)> gate{io, 1};
        const auto work = [](auto* opened) -> asio::awaitable<int> {
            co_await opened->async_receive(asio::use_awaitable);
            co_return 7;
        };
        Task<int> task = startTask(io.get_executor(), work(&gate));
        Outcome outcome;
        Task<void> waiter = startWaiter(task, outcome);
        clock.runReady();
        gate.try_send(boost::system::error_code{});
        cancelTask ? task.cancel() : waiter.cancel();
        clock.runReady();
        EXPECT_FALSE(task.running());
        EXPECT_FALSE(waiter.running());
        if (cancelTask)
            EXPECT_EQ(outcome.value, 7);  // The work had no further wait that could see it.
        else
            EXPECT_NE(outcome.value.has_value(), outcome.failure == "cancelled");
    }
}

TEST_F(TaskTest, whatTheWorkThrowsReachesEveryWaiter)
{
    const auto work = []() -> asio::awaitable<int> {
        throw std::runtime_error{"broken"};
        co_return 0;
    };
    const Task<int> task = startTask(io.get_executor(), work());
    std::array<Outcome, 2> outcomes;
    for (Outcome& outcome : outcomes)
        startWaiter(task, outcome);
    Outcome none;
    startWaiter({}, none);
    clock.runReady();
    EXPECT_EQ(outcomes[0].failure, "broken");
    EXPECT_EQ(outcomes[1].failure, "broken");
    EXPECT_NE(none.failure, "");
}

TEST_F(TaskTest, aTaskMayCancelItselfAndDropItsLastHandle)
{
    Task<void> self;
    bool after = false;
    const auto work = [](FakeClock* time, Task<void>* own, bool* reached) -> asio::awaitable<void> {
        own->cancel();
        *own = {};
        co_await time->sleepFor(1s);
        *reached = true;
    };
    self = startTask(io.get_executor(), work(&clock, &self, &after));
    clock.advance(2s);
    EXPECT_FALSE(after);
    EXPECT_EQ(clock.sleepers(), 0U);
}

TEST_F(TaskTest, droppingEverythingWhileTasksSleepIsSafe)
{
    asio::io_context shortLived;
    Task<int> task = startTask(shortLived.get_executor(), afterSecond(1));
    Outcome outcome;
    const auto waiter = startTask(shortLived.get_executor(), recordWait(task, &outcome));
    shortLived.poll();
    EXPECT_TRUE(task.running());
}

TEST(IsCancellation, tellsCancellationFromFailure)
{
    const auto of = [](auto error) { return isCancellation(std::make_exception_ptr(error)); };
    EXPECT_TRUE(of(boost::system::system_error{asio::error::operation_aborted}));
    EXPECT_FALSE(of(boost::system::system_error{asio::error::timed_out}));
    EXPECT_FALSE(of(std::runtime_error{"x"}));
    EXPECT_FALSE(of(3));
    EXPECT_FALSE(isCancellation(nullptr));
}

}  // namespace
}  // namespace tidewell
