#pragma once

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <exception>
#include <list>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "support/Asio.h"

namespace tidewell {

/// Whether `error` says that a coroutine was cancelled, and not that something went wrong.
[[nodiscard]] bool isCancellation(std::exception_ptr error);

/// A coroutine that runs on its own, that any number of callers may await and that may be cancelled.
///
/// A handle: copies mean the same task, a default-made one means none. Dropping the last handle neither
/// ends nor cancels the task. Every member is called on the executor that the task was started on.
template <class T>
class Task {
public:
    Task() = default;

    /// Whether this is a task at all, running or ended.
    explicit operator bool() const { return state_ != nullptr; }

    [[nodiscard]] bool running() const { return state_ && !state_->ended; }

    /// Asks the task to end at its next wait. Callers of wait() then see operation_aborted, unless the task
    /// ended with a result all the same. Calling it again, or on an ended task, does nothing.
    void cancel();

    /// The task's result, for each caller its own copy. Throws what the task threw. A caller that is itself
    /// cancelled leaves with operation_aborted; the task goes on for the others.
    [[nodiscard]] asio::awaitable<T> wait() const;

    bool operator==(const Task&) const = default;

private:
    using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    struct State {
        asio::any_io_executor executor;
        asio::cancellation_signal signal;
        bool begun = false;
        bool cancelledEarly = false;  ///< Before it began, when asio would end the program.
        bool ended = false;
        std::exception_ptr error;
        std::optional<Stored> result;
        std::list<std::shared_ptr<Wake>> waiters;
    };

    template <class U>
    friend Task<U> startTask(asio::any_io_executor executor, asio::awaitable<U> work);

    std::shared_ptr<State> state_;
};

/// Starts `work` on `executor` and returns its handle. The work begins in a later turn of the executor,
/// never inside this call, so the caller can store the handle first.
template <class T>
[[nodiscard]] Task<T> startTask(asio::any_io_executor executor, asio::awaitable<T> work);

}  // namespace tidewell

#include "support/Task.inl"
