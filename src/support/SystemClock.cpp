#include "support/SystemClock.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <boost/asio/error.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/system_error.hpp>

#include <algorithm>

namespace tidewell {

namespace {

/// Longer than any program runs, and short enough for every clock's own units.
constexpr std::chrono::milliseconds longestDelay = std::chrono::years{10};

/// Becomes readable when `delay` has passed, the time asleep included; -1 when there are no descriptors left.
int makeTimer(std::chrono::milliseconds delay)
{
    const int timer = timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (timer < 0)
        return timer;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(delay);
    const std::chrono::nanoseconds rest = delay - seconds;
    const itimerspec once{.it_interval = {},
                          .it_value = {.tv_sec = seconds.count(), .tv_nsec = rest.count()}};
    if (timerfd_settime(timer, 0, &once, nullptr) == 0)
        return timer;
    close(timer);
    return -1;
}

}  // namespace

SystemClock::SystemClock(asio::io_context& reactor) : reactor_{reactor}
{
    // Opens what the reactor itself needs, so that later the fall-back below needs nothing more.
    const asio::steady_timer opened{reactor};
}

Date SystemClock::now() const { return Date{std::chrono::system_clock::now().time_since_epoch()}; }

asio::awaitable<void> SystemClock::sleepFor(std::chrono::milliseconds delay)
{
    const auto bounded = std::clamp(delay, 0ms, longestDelay);
    asio::posix::stream_descriptor descriptor{reactor_};
    if (const int timer = bounded > 0ms ? makeTimer(bounded) : -1; timer >= 0) {
        boost::system::error_code refused;
        descriptor.assign(timer, refused);
        if (refused)
            close(timer);
    }
    if (descriptor.is_open()) {
        co_await descriptor.async_wait(asio::posix::descriptor_base::wait_read, asio::use_awaitable);
    } else {
        // Nothing to wait for, or too many open files or watches: a clock that stands still while the machine
        // sleeps beats none at all.
        asio::steady_timer fallback{reactor_, bounded};
        co_await fallback.async_wait(asio::use_awaitable);
    }
}

}  // namespace tidewell
