#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "sources/NetworkMonitor.h"

namespace tidewell {

/// A network path that a test switches on and off. The test keeps this object; the monitor gets monitoring().
class FakeNetworkPath {
public:
    /// The monitor's side. Reports nothing on its own, not even at the start.
    [[nodiscard]] std::unique_ptr<NetworkPathMonitoring> monitoring()
    {
        return std::make_unique<Side>(state_);
    }

    /// Reports on the calling thread; does nothing before the start and after the end.
    void report(bool satisfied)
    {
        if (state_->handler)
            state_->handler(satisfied);
    }
    [[nodiscard]] bool started() const { return static_cast<bool>(state_->handler); }
    /// The handler as the monitor gave it, to call it when that is gone.
    [[nodiscard]] std::function<void(bool)> handler() const { return state_->handler; }

private:
    struct State {
        std::function<void(bool)> handler{};
    };
    class Side final : public NetworkPathMonitoring {
    public:
        explicit Side(std::shared_ptr<State> state) : state_{std::move(state)} {}
        void start(std::function<void(bool)> handler) override { state_->handler = std::move(handler); }
        void cancel() override { state_->handler = nullptr; }

    private:
        std::shared_ptr<State> state_;
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace tidewell
