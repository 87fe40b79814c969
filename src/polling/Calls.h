#pragma once

#include <exception>
#include <utility>

#include <boost/system/system_error.hpp>

#include "support/Task.h"

namespace tidewell {

/// What a call to the outside returns. One that throws although nobody cancelled it is broken, and returns
/// `broken`: that must look like any other failure, or polling and alerts would end without a word.
template <class T>
asio::awaitable<T> guarded(asio::awaitable<T> call, T broken)
{
    std::exception_ptr thrown;
    try {
        co_return co_await std::move(call);
    } catch (...) {
        thrown = std::current_exception();
    }
    const asio::cancellation_state cancellation = co_await asio::this_coro::cancellation_state;
    if (cancellation.cancelled() != asio::cancellation_type::none)
        std::rethrow_exception(thrown);
    co_return broken;
}

/// Waits for a task, however that ends; whether it ended with a result. A caller that is itself cancelled
/// leaves with operation_aborted.
inline asio::awaitable<bool> endedWell(Task<void> task)
{
    bool well = true;
    try {
        co_await task.wait();
    } catch (const std::exception&) {
        well = false;  // Cancelled with its run, or broken; the caller looks which.
    }
    const asio::cancellation_state cancellation = co_await asio::this_coro::cancellation_state;
    if (cancellation.cancelled() != asio::cancellation_type::none)
        throw boost::system::system_error{asio::error::operation_aborted};
    co_return well;
}

/// Within thirty years, so that its milliseconds can be counted whatever moment a service named.
inline Seconds timeUntil(Date target, Date now)
{
    return std::clamp(target - now, Seconds{-1e9}, Seconds{1e9});
}

}  // namespace tidewell
