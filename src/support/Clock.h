#pragma once

#include <chrono>

#include "support/Asio.h"
#include "support/Time.h"

namespace tidewell {

/// Where the core gets its time. Outlives everything that refers to it. Any thread.
class Clock {
public:
    virtual ~Clock() = default;

    /// The wall clock; it may jump when the machine's time is set.
    [[nodiscard]] virtual Date now() const = 0;

    /// Resumes the caller on its own executor after `delay` of a clock that never jumps and that goes on
    /// while the machine sleeps; a delay of zero or less still yields once. Throws
    /// boost::system::system_error (operation_aborted) when the caller is cancelled.
    [[nodiscard]] virtual asio::awaitable<void> sleepFor(std::chrono::milliseconds delay) = 0;
};

}  // namespace tidewell
