#pragma once

#include <QStringList>

namespace tidewell {

/// The program for the notification settings of a desktop, with its arguments; empty when none is installed.
/// `currentDesktop` as XDG_CURRENT_DESKTOP names it, in any letter case.
[[nodiscard]] QStringList notificationSettingsCommand(const QString& currentDesktop);
/// Whether this desktop has a program for its notification settings that is installed. Main thread; looks at
/// the environment and for files only.
[[nodiscard]] bool canOpenNotificationSettings();
/// Starts it, detached; false when it could not be started.
bool openNotificationSettings();

}  // namespace tidewell
