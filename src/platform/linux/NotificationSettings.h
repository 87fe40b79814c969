#pragma once

namespace tidewell {

/// Whether this desktop has a program for its notification settings that is installed. Main thread; looks at
/// the environment and for files only.
[[nodiscard]] bool canOpenNotificationSettings();
/// Starts it, detached; false when it could not be started.
bool openNotificationSettings();

}  // namespace tidewell
