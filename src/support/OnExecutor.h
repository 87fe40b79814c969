#pragma once

#include <boost/asio/as_tuple.hpp>
#include <exception>
#include <memory>
#include <optional>

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

/// Runs `work` until its end or until the deadline; it is then cancelled, and has to leave at once.
[[nodiscard]] asio::awaitable<void> runUntilDeadline(Clock& clock, std::chrono::milliseconds deadline,
                                                     asio::awaitable<void> work);

/// The result of `work`, or nothing when it has not ended in time; see above.
template <class T>
[[nodiscard]] asio::awaitable<std::optional<T>> within(Clock& clock, std::chrono::milliseconds deadline,
                                                       asio::awaitable<T> work)
{
    std::optional<T> result;
    // The two race once, for all types of results: that code is large.
    const auto keep = [](asio::awaitable<T> given, std::optional<T>& kept) -> asio::awaitable<void> {
        kept.emplace(co_await std::move(given));
    };
    co_await runUntilDeadline(clock, deadline, keep(std::move(work), result));
    co_return result;  // Also one that came in the moment of the deadline: what was done counts.
}

}  // namespace tidewell
