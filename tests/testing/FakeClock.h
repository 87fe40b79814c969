#pragma once

#include <boost/asio/experimental/channel.hpp>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>

#include "support/Clock.h"

namespace tidewell {

/// Stands still until a test moves it. Moved on the thread that runs `io`, which outlives it; sleepers may
/// live on other executors too, and those the test has to run itself.
class FakeClock final : public Clock {
public:
    FakeClock(asio::io_context& io, Date start) : io_{io}, wall_{start} {}

    [[nodiscard]] Date now() const override;
    [[nodiscard]] asio::awaitable<void> sleepFor(std::chrono::milliseconds delay) override;

    /// Runs what is ready, then goes from deadline to deadline, so that a loop that sleeps again within
    /// `step` wakes again.
    void advance(Seconds step);

    /// The machine sleeps that long: time passes, and whoever should have woken meanwhile wakes at its end.
    void suspend(Seconds length);

    /// Runs whatever can run without time passing.
    void runReady();

    /// Someone sets the machine's time: now() jumps, sleepers do not notice.
    void setWallClock(Date now);

    /// How many callers sleep at this moment.
    [[nodiscard]] std::size_t sleepers();

    /// How long until the next sleeper wakes; zero when none sleeps.
    [[nodiscard]] Seconds untilNextWake();

private:
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    std::shared_ptr<Wake> takeNext(std::chrono::nanoseconds end);

    asio::io_context& io_;
    mutable std::mutex mutex_;
    Date wall_;                            ///< The wall clock when nothing had elapsed yet.
    std::chrono::nanoseconds elapsed_{0};  ///< Time that passed; whole numbers, so that sums are exact.
    std::multimap<std::chrono::nanoseconds, std::weak_ptr<Wake>> sleepers_;  ///< A cancelled one expires.
};

}  // namespace tidewell
