#pragma once

#include <QString>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/SoundOutput.h"
#include "polling/UserNotificationCenter.h"

namespace tidewell {

/// The helper: this program once more, for the moment of one sound or one question to the desktop.
///
/// The libraries of sound and settings are large and may hang or worse. In a process of its own they cost
/// the program that waits for a low nothing, and one that hangs is ended.
inline const QString desktopHelperProgram = QStringLiteral("/proc/self/exe");

/// The whole of the helper: when the arguments say that this process is it, this does not return. For main(),
/// before anything else.
void beDesktopHelperWhenAsked(int count, char** values);

enum class SoundOutcome {
    played,
    noTheme,    ///< No theme with a fitting sound is installed.
    noLibrary,  ///< libcanberra is not installed.
    failed,
    hung,  ///< The helper had not ended in time, or could not be started.
};

/// What the helper finds out about sound.
struct SoundReport {
    SoundOutputState output{};
    bool soundsInstalled = false;  ///< Each tone has a sound, and the library to play it.
    bool operator==(const SoundReport&) const = default;
};
/// As the helper writes it, in one line; and back: empty for anything else.
[[nodiscard]] std::string soundReportLine(const SoundReport& report);
[[nodiscard]] std::optional<SoundReport> soundReport(std::string_view line);

// Awaited on the main thread's executor; a cancelled caller leaves at once with operation_aborted, and the
// helper is ended.

[[nodiscard]] asio::awaitable<SoundOutcome> playInHelper(QString program, NotificationTone tone,
                                                         std::chrono::milliseconds limit);
/// `server` as PULSE_SERVER names it; empty: the usual one. Empty when the helper did not end in time.
[[nodiscard]] asio::awaitable<std::optional<SoundReport>> lookInHelper(QString program, std::string server,
                                                                       std::chrono::milliseconds limit);
/// Whether a panel or an old X11 tray shows status items now. Empty without a display, or when it cannot be
/// learned in time.
[[nodiscard]] asio::awaitable<std::optional<bool>> statusAreaFromHelper(QString program,
                                                                        std::chrono::milliseconds limit);
/// As desktopSetting().
[[nodiscard]] asio::awaitable<std::optional<std::string>> settingFromHelper(QString program,
                                                                            std::string schema,
                                                                            std::string key,
                                                                            std::chrono::milliseconds limit);

}  // namespace tidewell
