#pragma once

#include <QDBusVirtualObject>
#include <QVariantMap>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/SharedPollerState.h"

namespace tidewell {

/// The object on the bus: answers from the state that it was given, and passes on what callers ask for. Main
/// thread.
class SharedPollerObject final : public QDBusVirtualObject {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void()> refresh;
        std::function<void(std::chrono::minutes)> snooze;  ///< Between 1 minute and 24 hours.
        std::function<void()> resume;
    };

    explicit SharedPollerObject(Handlers handlers);

    /// Takes over a state; returns the properties that are different now, and nothing when none is. Profile
    /// and account are texts that say what data this is; `pollingSince` is empty in a process that follows.
    [[nodiscard]] QVariantMap update(const QString& profile, const QString& account,
                                     const std::optional<Date>& pollingSince, const StatusBarState& state,
                                     const PollingProgress& progress);

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString& path) const override;

private:
    bool handleProperties(const QDBusMessage& message, const QDBusConnection& connection) const;

    Handlers handlers_;
    QVariantMap properties_{};
    std::vector<GlucoseReading> history_{};
};

}  // namespace tidewell
