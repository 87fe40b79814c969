#pragma once

#include <memory>

#include "sources/NetworkMonitor.h"

namespace tidewell {

/// The network path as GLib sees it: the kernel's routes, or NetworkManager where it runs.
///
/// Reports come from a thread of GLib's own that is shared by all monitors of the process and sleeps while
/// nothing changes. Changes are reported once they have lasted half a second. Any thread.
class GioNetworkPathMonitor final : public NetworkPathMonitoring {
public:
    GioNetworkPathMonitor();
    ~GioNetworkPathMonitor() override;

    void start(std::function<void(bool satisfied)> handler) override;
    void cancel() override;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace tidewell
