#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <functional>

namespace tidewell {

/// Whether the person asked the desktop for less motion, as the desktop's settings portal tells.
///
/// Asks when it is made and when a portal appears, and follows changes. Nothing is started for the question,
/// and no answer is waited for: without one, nothing is told. Main thread.
class MotionPreference final : public QObject {
    Q_OBJECT
public:
    MotionPreference(QDBusConnection connection, std::function<void(bool reduced)> told);

private:
    Q_SLOT void settingChanged(const QDBusMessage& signal);
    Q_SLOT void portalOwnerChanged(const QDBusMessage& message);
    void ask();
    void learn(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection connection_;
    std::function<void(bool)> told_;
    QString portal_{};  ///< Its connection; empty while it is not known.
    bool animationsOff_ = false;
    bool motionReduced_ = false;
};

}  // namespace tidewell
