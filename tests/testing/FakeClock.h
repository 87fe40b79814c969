#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>

#include "support/Clock.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>

namespace tidewell {

/// Stands still until a test moves it. Moved on the thread that runs `io`, which outlives it; sleepers may
/// live on other executors too, and those the test has to run itself.
class FakeClock final : public Clock {
public:
    FakeClock(asio::io_context& io, Date start) : io_{io}, wall_{start} {}

    Date now() const override
    {
        const std::lock_guard lock{mutex_};
        return wall_ + Seconds{elapsed_};
    }

    asio::awaitable<void> sleepFor(std::chrono::milliseconds delay) override
    {
        const auto executor = co_await asio::this_coro::executor;
        const auto wake = std::make_shared<Wake>(executor, 1);
        {
            const std::lock_guard lock{mutex_};
            if (delay <= 0ms)
                wake->try_send(boost::system::error_code{});
            else
                sleepers_.emplace(elapsed_ + delay, wake);
        }
        if (delay <= 0ms)
            co_await asio::post(asio::use_awaitable);
        const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
        if (cancelled)
            throw boost::system::system_error{asio::error::operation_aborted};
    }

    /// Runs what is ready, then goes from deadline to deadline, so that a loop that sleeps again within
    /// `step` wakes again.
    void advance(Seconds step)
    {
        const auto end = elapsed_ + std::chrono::round<std::chrono::nanoseconds>(step);
        runReady();
        while (const auto wake = takeNext(end)) {
            if (wake->get_executor() == io_.get_executor())
                wake->try_send(boost::system::error_code{});
            else
                asio::post(wake->get_executor(), [wake] { wake->try_send(boost::system::error_code{}); });
            runReady();
        }
        const std::lock_guard lock{mutex_};
        elapsed_ = end;
    }

    /// Runs whatever can run without time passing.
    void runReady()
    {
        io_.restart();
        io_.poll();
    }

    /// Someone sets the machine's time: now() jumps, sleepers do not notice.
    void setWallClock(Date now)
    {
        const std::lock_guard lock{mutex_};
        wall_ = now - Seconds{elapsed_};
    }

    /// How many callers sleep at this moment.
    [[nodiscard]] std::size_t sleepers()
    {
        const std::lock_guard lock{mutex_};
        std::erase_if(sleepers_, [](const auto& sleeper) { return sleeper.second.expired(); });
        return sleepers_.size();
    }

    /// How long until the next sleeper wakes; zero when none sleeps.
    [[nodiscard]] Seconds untilNextWake()
    {
        if (sleepers() == 0)
            return Seconds{0};
        const std::lock_guard lock{mutex_};
        return sleepers_.begin()->first - elapsed_;
    }

private:
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    /// The first sleeper who wakes by `end`, with the clock moved to that moment.
    std::shared_ptr<Wake> takeNext(std::chrono::nanoseconds end)
    {
        const std::lock_guard lock{mutex_};
        while (!sleepers_.empty() && sleepers_.begin()->first <= end) {
            const auto next = sleepers_.extract(sleepers_.begin());
            if (auto wake = next.mapped().lock()) {
                elapsed_ = std::max(elapsed_, next.key());
                return wake;
            }
        }
        return nullptr;
    }

    asio::io_context& io_;
    mutable std::mutex mutex_;
    Date wall_;                            ///< The wall clock when nothing had elapsed yet.
    std::chrono::nanoseconds elapsed_{0};  ///< Time that passed; whole numbers, so that sums are exact.
    std::multimap<std::chrono::nanoseconds, std::weak_ptr<Wake>> sleepers_;  ///< A cancelled one expires.
};

}  // namespace tidewell
