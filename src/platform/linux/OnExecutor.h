#pragma once

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/awaitable_operators.hpp>
#include <boost/asio/multiple_exceptions.hpp>
#include <exception>
#include <memory>
#include <optional>
#include <variant>

#include "support/Clock.h"
#include "support/Task.h"
#include "support/Workers.h"

namespace tidewell {

/// Runs `work` on `executor` and resumes the caller on its own with the result, or with what `work` threw.
///
/// A caller that is cancelled leaves at once with operation_aborted; `work` is then cancelled where it runs.
/// asio's own way across threads hands a pointer into the caller's state to the other thread, which may be
/// used after the caller has gone on.
template <class T>
[[nodiscard]] asio::awaitable<T> runOnExecutor(asio::any_io_executor executor, asio::awaitable<T> work)
{
    struct Call : detail::WorkerCall {
        using WorkerCall::WorkerCall;
        std::optional<T> result{};
        std::exception_ptr error{};
        Task<void> task{};  ///< Used on `executor` only.

        static asio::awaitable<void> carry(std::shared_ptr<Call> call, asio::awaitable<T> given)
        {
            try {
                call->result.emplace(co_await std::move(given));
            } catch (...) {
                call->error = std::current_exception();
            }
            call->finish();
        }
    };

    const auto call = std::make_shared<Call>(co_await asio::this_coro::executor);
    const auto wake = call->wake();
    const typename Call::Presence presence{call};
    asio::post(executor, [call, executor, work = std::move(work)]() mutable {
        if (!call->withdrawn())
            call->task = startTask(executor, Call::carry(call, std::move(work)));
    });
    const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
    if (cancelled) {
        asio::post(executor, [call] { call->task.cancel(); });
        throw boost::system::system_error{asio::error::operation_aborted};
    }
    if (call->error)
        std::rethrow_exception(call->error);
    co_return std::move(*call->result);
}

/// The result of `work`, or nothing when it has not ended in time; it is then cancelled, and has to leave at
/// once when it is.
template <class T>
[[nodiscard]] asio::awaitable<std::optional<T>> within(Clock& clock, std::chrono::milliseconds deadline,
                                                       asio::awaitable<T> work)
{
    using namespace asio::experimental::awaitable_operators;
    try {
        auto first = co_await (std::move(work) || clock.sleepFor(deadline));
        if (first.index() == 0)
            co_return std::move(std::get<0>(first));
        co_return std::nullopt;
    } catch (const asio::multiple_exceptions& both) {
        std::rethrow_exception(both.first_exception());
    }
}

}  // namespace tidewell
