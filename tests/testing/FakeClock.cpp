#include "testing/FakeClock.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/error.hpp>
#include <boost/system/system_error.hpp>

namespace tidewell {

Date FakeClock::now() const
{
    const std::lock_guard lock{mutex_};
    return wall_ + Seconds{elapsed_};
}

asio::awaitable<void> FakeClock::sleepFor(std::chrono::milliseconds delay)
{
    if (delay <= 0ms) {
        co_await asio::post(asio::use_awaitable);
        const auto cancellation = co_await asio::this_coro::cancellation_state;
        if (cancellation.cancelled() != asio::cancellation_type::none)
            throw boost::system::system_error{asio::error::operation_aborted};
        co_return;
    }
    const auto wake = std::make_shared<Wake>(co_await asio::this_coro::executor, 1);
    {
        const std::lock_guard lock{mutex_};
        sleepers_.emplace(elapsed_ + delay, wake);
    }
    const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
    if (cancelled)
        throw boost::system::system_error{asio::error::operation_aborted};
}

void FakeClock::advance(Seconds step)
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

void FakeClock::suspend(Seconds length)
{
    {
        const std::lock_guard lock{mutex_};
        elapsed_ += std::chrono::round<std::chrono::nanoseconds>(length);
    }
    advance(Seconds{0});
}

void FakeClock::runReady()
{
    io_.restart();
    io_.poll();
}

void FakeClock::setWallClock(Date now)
{
    const std::lock_guard lock{mutex_};
    wall_ = now - Seconds{elapsed_};
}

std::size_t FakeClock::sleepers()
{
    const std::lock_guard lock{mutex_};
    std::erase_if(sleepers_, [](const auto& sleeper) { return sleeper.second.expired(); });
    return sleepers_.size();
}

Seconds FakeClock::untilNextWake()
{
    if (sleepers() == 0)
        return Seconds{0};
    const std::lock_guard lock{mutex_};
    return sleepers_.begin()->first - elapsed_;
}

/// The first sleeper who wakes by `end`, with the clock moved to that moment.
std::shared_ptr<FakeClock::Wake> FakeClock::takeNext(std::chrono::nanoseconds end)
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

}  // namespace tidewell
