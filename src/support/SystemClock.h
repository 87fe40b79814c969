#pragma once

#include "support/Clock.h"

namespace tidewell {

/// The machine's own clock: CLOCK_REALTIME for now(), a timerfd on CLOCK_BOOTTIME for sleeping.
///
/// `reactor` is the context whose thread waits for the timers (the engine's); callers on any executor
/// may sleep, each is resumed on its own.
class SystemClock final : public Clock {
public:
    explicit SystemClock(asio::io_context& reactor);

    [[nodiscard]] Date now() const override;
    [[nodiscard]] asio::awaitable<void> sleepFor(std::chrono::milliseconds delay) override;

private:
    asio::io_context& reactor_;
};

}  // namespace tidewell
