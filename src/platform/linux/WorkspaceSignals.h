#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <utility>

#include "app/WorkspaceEvents.h"

namespace tidewell {

/// Receives the signals of logind and of screen savers on the buses that it is given. Main thread.
class WorkspaceSignals final : public QObject {
    Q_OBJECT
public:
    explicit WorkspaceSignals(std::function<void(WorkspaceEvent)> happened) : happened_{std::move(happened)}
    {
    }

    void listenForSleep(QDBusConnection systemBus);
    void listenForScreens(QDBusConnection sessionBus);

private:
    Q_SLOT void prepareForSleep(bool beginning);
    Q_SLOT void screenSaverActive(bool active);

    std::function<void(WorkspaceEvent)> happened_;
    bool screensAsleep_ = false;  ///< Several savers may tell of the same moment.
};

}  // namespace tidewell
