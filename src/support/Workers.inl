// Included by Workers.h: the templates' bodies.
#pragma once

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>
#include <memory>
#include <mutex>

namespace tidewell {

namespace detail {

/// What a worker and the coroutine that waits for it share. The coroutine withdraws when it leaves, by
/// whatever way; from then on the worker no longer touches the coroutine's executor, which may be gone.
class WorkerCall {
public:
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    explicit WorkerCall(asio::any_io_executor caller) : wake_{std::make_shared<Wake>(caller, 1)} {}

    [[nodiscard]] bool withdrawn()
    {
        const std::lock_guard lock{mutex_};
        return !wake_;
    }

    /// On the worker: wakes the caller, in a turn of the caller's executor.
    void finish()
    {
        const std::lock_guard lock{mutex_};
        if (!wake_)
            return;
        const auto executor = wake_->get_executor();
        asio::post(executor, [wake = std::move(wake_)] { wake->try_send(boost::system::error_code{}); });
    }

    /// Withdraws the caller at the end of the caller's scope.
    struct Presence {
        std::shared_ptr<WorkerCall> call;
        ~Presence()
        {
            const std::lock_guard lock{call->mutex_};
            call->wake_.reset();
        }
    };

    /// For the caller's own use.
    [[nodiscard]] std::shared_ptr<Wake> wake() const { return wake_; }

private:
    std::mutex mutex_;
    std::shared_ptr<Wake> wake_;  ///< Empty once the call has ended or the caller has left.
};

}  // namespace detail

template <class Work>
asio::awaitable<std::invoke_result_t<Work>> runOnWorker(asio::any_io_executor workers, Work work)
{
    using Result = std::invoke_result_t<Work>;
    struct Call : detail::WorkerCall {
        Call(asio::any_io_executor caller, Work&& given) : WorkerCall{caller}, work{std::move(given)} {}
        std::optional<Work> work;
        std::exception_ptr error;
        std::optional<std::conditional_t<std::is_void_v<Result>, std::monostate, Result>> result;
    };

    const auto call = std::make_shared<Call>(co_await asio::this_coro::executor, std::move(work));
    const auto wake = call->wake();
    const detail::WorkerCall::Presence presence{call};
    asio::post(workers, [call] {
        if (!call->withdrawn()) {
            try {
                if constexpr (std::is_void_v<Result>)
                    std::invoke(std::move(*call->work));
                else
                    call->result.emplace(std::invoke(std::move(*call->work)));
            } catch (...) {
                call->error = std::current_exception();
            }
        }
        call->work.reset();  // What the work owns is free before the caller goes on.
        call->finish();
    });

    const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
    if (cancelled)
        throw boost::system::system_error{asio::error::operation_aborted};
    if (call->error)
        std::rethrow_exception(call->error);
    if constexpr (!std::is_void_v<Result>)
        co_return std::move(*call->result);
}

}  // namespace tidewell
