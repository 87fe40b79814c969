#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace tidewell {

/// What the machine tells its applications.
enum class WorkspaceEvent { didWake, willSleep, screensDidSleep };

/// The source of workspace events. Implemented by the platform; handlers run on the main thread.
class WorkspaceObserving {
public:
    virtual ~WorkspaceObserving() = default;
    /// Calls `handler` at each such event until the returned token goes.
    [[nodiscard]] virtual std::shared_ptr<void> observe(WorkspaceEvent event,
                                                        std::function<void()> handler) = 0;
};

/// Keeps observer tokens; dropping it is enough to stop observing.
class AppWorkspaceObservers {
public:
    void keep(std::shared_ptr<void> token) { tokens_.push_back(std::move(token)); }

private:
    std::vector<std::shared_ptr<void>> tokens_;
};

}  // namespace tidewell
