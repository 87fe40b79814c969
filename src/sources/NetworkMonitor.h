#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "support/Clock.h"
#include "support/Random.h"

namespace tidewell {

/// The system's view of the network path. Implemented by the platform.
class NetworkPathMonitoring {
public:
    virtual ~NetworkPathMonitoring() = default;
    /// Begins to report, the present state first; on any thread. Called once.
    virtual void start(std::function<void(bool satisfied)> handler) = 0;
    /// No report begins after this returns.
    virtual void cancel() = 0;
};

/// Knows whether there is a usable network path and lets tasks wait for one. A hint only: nothing may refuse
/// to try because of it. Any thread.
class NetworkMonitor {
public:
    NetworkMonitor(Clock& clock, RandomSource& random, std::unique_ptr<NetworkPathMonitoring> monitor);
    ~NetworkMonitor();

    /// False until the first report.
    [[nodiscard]] bool isReachable() const;
    /// How often the network has become reachable. Whoever looks only now and then misses no return of it.
    [[nodiscard]] std::uint64_t timesReachable() const;
    /// True as soon as the network is reachable; false when `timeout` passes first. Throws operation_aborted
    /// when the caller is cancelled. Awaited on any executor that runs one thing at a time: a context with
    /// one thread, or a strand. A wait may outlive the monitor and then ends by its time-out.
    [[nodiscard]] asio::awaitable<bool> waitUntilReachable(Seconds timeout);

private:
    struct State;
    Clock& clock_;
    RandomSource& random_;
    std::unique_ptr<NetworkPathMonitoring> monitor_;
    std::shared_ptr<State> state_;
};

}  // namespace tidewell
