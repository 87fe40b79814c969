#pragma once

#include <QImage>
#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/Background.h"

namespace tidewell {

/// The files from which panels that write the label themselves take the status item's picture: one for each
/// picture, under a name of its own, since a panel reads a name once.
///
/// Written in the background, one at a time, whatever the disk does. The newest `kept` stay, of all that
/// lie in the folder. Main thread.
class StatusIconFiles final {
public:
    enum class State {
        ready,
        soon,  ///< A write goes on, and has not lasted for `patience` yet.
        missing
    };
    using Background =
        std::function<std::shared_ptr<void>(std::function<void()> work, std::function<void()> done)>;

    static constexpr std::chrono::milliseconds patience{1000};
    /// Between two attempts where the first fails.
    static constexpr std::chrono::milliseconds retryInterval{30'000};
    static constexpr std::size_t kept = 64;

    /// The folder is made when needed, mode 0700; where its name is empty, all files are missing. `changed`
    /// is called when a write has ended, well or not.
    StatusIconFiles(std::filesystem::path folder, std::function<void()> changed,
                    Background background = runInBackground);

    /// What has become of the picture's file; begins to write it where it is missing and nothing else is
    /// being written. `now` is of any clock that never goes back.
    [[nodiscard]] State look(const QImage& picture, std::chrono::milliseconds now);
    [[nodiscard]] std::filesystem::path file(const QImage& picture) const;

private:
    void write(const QImage& picture, const std::string& name, std::chrono::milliseconds now);

    std::filesystem::path folder_;
    std::function<void()> changed_;
    Background background_;
    std::deque<std::string> ready_{};  ///< Names, the newest last; fewer than are kept in the folder.
    std::shared_ptr<void> writing_{};
    std::chrono::milliseconds writingSince_{};
    std::optional<std::chrono::milliseconds> failedAt_{};  ///< While the last write failed.
};

}  // namespace tidewell
