#pragma once

#include <QString>
#include <memory>

#include "app/WorkspaceEvents.h"

namespace tidewell {

/// Sleep and wake as logind announces them, screen sleep as the screen saver does.
///
/// Either bus may be absent or hang: then its events do not come. Main thread, with a QCoreApplication.
class LogindEvents final : public WorkspaceObserving {
public:
    /// Begins to listen at once. Addresses are for tests; empty means the system's and the session's bus.
    explicit LogindEvents(const QString& systemBusAddress = {}, const QString& sessionBusAddress = {});
    ~LogindEvents() override;

    [[nodiscard]] std::shared_ptr<void> observe(WorkspaceEvent event, std::function<void()> handler) override;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
