#include "sources/NetworkMonitor.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/awaitable_operators.hpp>
#include <boost/asio/experimental/concurrent_channel.hpp>
#include <boost/system/system_error.hpp>

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

namespace tidewell {

namespace {

/// Nobody waits longer for a network; it also keeps the count of milliseconds within its type.
constexpr Seconds longestWait{366.0 * 24 * 60 * 60};

std::chrono::milliseconds waitOf(Seconds timeout)
{
    if (!(timeout.count() > 0))  // Catches NaN as well.
        return std::chrono::milliseconds{0};
    return std::chrono::ceil<std::chrono::milliseconds>(std::min(timeout, longestWait));
}

}  // namespace

/// Shared with the path's handler and with the waits, which may both outlive the monitor.
struct NetworkMonitor::State {
    /// Written on the thread that reports, received on the waiter's own executor; hence the concurrent kind.
    using Waiter = asio::experimental::concurrent_channel<void(boost::system::error_code)>;

    mutable std::mutex lock{};
    bool isReachable = false;                           ///< Under lock.
    std::uint64_t timesReachable = 0;                   ///< Under lock.
    std::map<Uuid, std::shared_ptr<Waiter>> waiters{};  ///< Under lock. Whoever removes one resumes it.

    void update(bool satisfied)
    {
        std::map<Uuid, std::shared_ptr<Waiter>> resumed;
        {
            const std::lock_guard guard{lock};
            if (satisfied && !isReachable)
                ++timesReachable;
            isReachable = satisfied;
            if (satisfied)
                resumed.swap(waiters);
        }
        for (const auto& [id, waiter] : resumed)
            waiter->try_send(boost::system::error_code{});
    }

    /// Whether the waiter was still there, so that nobody else has resumed it or will.
    bool remove(const Uuid& id)
    {
        const std::lock_guard guard{lock};
        return waiters.erase(id) > 0;
    }

    static asio::awaitable<bool> wait(std::shared_ptr<State> state, Clock& clock, RandomSource& random,
                                      Seconds timeout)
    {
        using namespace asio::experimental::awaitable_operators;
        const auto waiter = std::make_shared<Waiter>(co_await asio::this_coro::executor, 1);
        const Uuid id = Uuid::random(random);
        {
            const std::lock_guard guard{state->lock};
            if (state->isReachable)
                co_return true;
            state->waiters.emplace(id, waiter);
        }
        /// Takes the waiter back however this coroutine ends, also when its frame is destroyed in the wait.
        struct Registration {
            State& state;
            const Uuid& id;
            ~Registration() { state.remove(id); }
        } const registration{*state, id};

        // Ends with whichever comes first and cancels the other. When the caller is cancelled both fail; the
        // error of the two together is turned into the one that callers know.
        std::exception_ptr failure;
        try {
            co_await (waiter->async_receive(asio::use_awaitable) || clock.sleepFor(waitOf(timeout)));
        } catch (...) {
            failure = std::current_exception();
        }
        if (failure) {
            const asio::cancellation_state cancellation = co_await asio::this_coro::cancellation_state;
            if (cancellation.cancelled() != asio::cancellation_type::none)
                throw boost::system::system_error{asio::error::operation_aborted};
            std::rethrow_exception(failure);
        }
        // A report that came together with the time-out has removed the waiter: the network is there.
        co_return !state->remove(id);
    }
};

NetworkMonitor::NetworkMonitor(Clock& clock, RandomSource& random,
                               std::unique_ptr<NetworkPathMonitoring> monitor)
    : clock_{clock}, random_{random}, monitor_{std::move(monitor)}, state_{std::make_shared<State>()}
{
    monitor_->start([weak = std::weak_ptr{state_}](bool satisfied) {
        if (const auto state = weak.lock())
            state->update(satisfied);
    });
}

NetworkMonitor::~NetworkMonitor() { monitor_->cancel(); }

bool NetworkMonitor::isReachable() const
{
    const std::lock_guard guard{state_->lock};
    return state_->isReachable;
}

std::uint64_t NetworkMonitor::timesReachable() const
{
    const std::lock_guard guard{state_->lock};
    return state_->timesReachable;
}

asio::awaitable<bool> NetworkMonitor::waitUntilReachable(Seconds timeout)
{
    return State::wait(state_, clock_, random_, timeout);
}

}  // namespace tidewell
