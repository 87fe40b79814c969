// Included by Task.h: the templates' bodies.
#pragma once

#include <boost/asio/error.hpp>
#include <boost/system/system_error.hpp>
#include <stdexcept>

namespace tidewell {

namespace detail {

/// Runs `work` in a later turn and keeps what it returns.
template <class T, class State>
asio::awaitable<void> runTask(std::shared_ptr<State> state, asio::awaitable<T> work)
{
    // asio would begin at once when the caller already runs on the executor.
    co_await asio::post(asio::use_awaitable);
    state->begun = true;
    if (state->cancelledEarly)
        throw boost::system::system_error{asio::error::operation_aborted};
    if constexpr (std::is_void_v<T>) {
        co_await std::move(work);
        state->result.emplace();
    } else {
        state->result.emplace(co_await std::move(work));
    }
}

/// Takes the state by value: the handle that the caller asked may go while it waits.
template <class T, class Wake, class State>
asio::awaitable<T> waitForTask(std::shared_ptr<State> state)
{
    if (!state)
        throw std::logic_error{"waited for a task that was never started"};
    if (!state->ended) {
        const auto wake = std::make_shared<Wake>(state->executor, 1);
        state->waiters.push_back(wake);
        const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
        if (cancelled) {
            state->waiters.remove(wake);
            throw boost::system::system_error{asio::error::operation_aborted};
        }
    }
    if (state->error)
        std::rethrow_exception(state->error);
    if constexpr (!std::is_void_v<T>)
        co_return *state->result;
}

}  // namespace detail

template <class T>
void Task<T>::cancel()
{
    if (!running())
        return;
    const auto state = state_;  // The handle may be one that the task itself drops.
    // asio's own first step throws, where nobody catches it, when it finds itself cancelled.
    if (!state->begun) {
        state->cancelledEarly = true;
        return;
    }
    state->signal.emit(asio::cancellation_type::terminal);
    // Called between two turns, the signal only queues its work, and that work points into the state.
    asio::post(state->executor, [state] {});
}

template <class T>
asio::awaitable<T> Task<T>::wait() const
{
    return detail::waitForTask<T, Wake>(state_);
}

template <class T>
Task<T> startTask(asio::any_io_executor executor, asio::awaitable<T> work)
{
    Task<T> task;
    const auto state = std::make_shared<typename Task<T>::State>();
    state->executor = executor;
    task.state_ = state;
    const auto finish = [state](std::exception_ptr error) {
        state->error = std::move(error);
        state->ended = true;
        for (const auto& waiter : std::exchange(state->waiters, {}))
            waiter->try_send(boost::system::error_code{});
    };
    asio::co_spawn(executor, detail::runTask<T>(state, std::move(work)),
                   asio::bind_cancellation_slot(state->signal.slot(), finish));
    return task;
}

}  // namespace tidewell
