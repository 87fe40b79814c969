#pragma once

#include <mutex>

#include "support/Random.h"

namespace tidewell {

/// Which polling run is the current one. Whoever waits compares afterwards: an older run has no say any more.
/// Any thread.
class RunGeneration {
public:
    /// `random` outlives it.
    explicit RunGeneration(RandomSource& random) : random_{random}, run_{Uuid::random(random)} {}

    [[nodiscard]] Uuid current() const
    {
        const std::lock_guard lock{mutex_};
        return run_;
    }
    [[nodiscard]] bool isCurrent(const Uuid& run) const { return current() == run; }
    /// Ends the current run; returns the next one.
    Uuid renew()
    {
        const Uuid fresh = Uuid::random(random_);
        const std::lock_guard lock{mutex_};
        run_ = fresh;
        return fresh;
    }

private:
    RandomSource& random_;
    mutable std::mutex mutex_{};
    Uuid run_;
};

}  // namespace tidewell
