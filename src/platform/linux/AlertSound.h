#pragma once

#include <QString>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/DesktopHelper.h"
#include "polling/UserNotificationCenter.h"

namespace tidewell {

/// Makes the sound of an alert where the desktop's notification server makes none.
class AlertSoundPlaying {
public:
    virtual ~AlertSoundPlaying() = default;
    /// Returns at once; the sound comes on its own. Main thread.
    virtual void play(NotificationTone tone) = 0;
};

/// The name of the tone's sound in sound themes.
[[nodiscard]] std::string_view alertSoundName(NotificationTone tone);

/// The file of the tone's sound, or of the best other one that fits, below the first of the data folders that
/// holds the freedesktop sound theme; empty when there is none. Reads folders, so not on the main thread.
[[nodiscard]] std::filesystem::path alertSoundFile(NotificationTone tone,
                                                   const std::vector<std::filesystem::path>& dataFolders);

/// The XDG data folders in their order, the user's own first.
[[nodiscard]] std::vector<std::filesystem::path> xdgDataFolders();

/// Plays sounds of the freedesktop sound theme through libcanberra, in the helper.
///
/// A sound server that hangs holds up nobody: a sound is given up after 15 s, and while three are still on
/// their way only urgent ones begin. Main thread, with a QCoreApplication.
class AlertSound final : public AlertSoundPlaying {
public:
    explicit AlertSound(asio::any_io_executor main, const QString& helper = desktopHelperProgram);
    ~AlertSound() override;

    void play(NotificationTone tone) override;

    /// Why the last sound was not heard, as one sentence; empty when it was played, or none was yet.
    [[nodiscard]] const std::string& problem() const;
    /// Told when problem() has changed.
    void onProblemChange(std::function<void()> handler);

    /// Resumes when every sound that was begun has ended, at most 15 s later. For programs that end after an
    /// alert. Awaited on the main executor.
    [[nodiscard]] asio::awaitable<void> finished();

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
