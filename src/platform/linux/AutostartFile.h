#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/LoginItem.h"
#include "platform/linux/Folders.h"

namespace tidewell {

/// Start at login by the desktop's autostart convention (freedesktop.org Autostart Specification 0.5): the
/// file org.tidewell.Tidewell.desktop in the person's autostart folder, which hides one of the same name in
/// the system's folders. Blocks; any thread, one call at a time.
class AutostartFile final : public LoginItemControlling {
public:
    struct Places {
        std::filesystem::path userFolder;                  ///< $XDG_CONFIG_HOME/autostart.
        std::vector<std::filesystem::path> systemFolders;  ///< autostart below each of $XDG_CONFIG_DIRS.
        std::filesystem::path program;                     ///< What to start; absolute.
        std::string desktop;                               ///< $XDG_CURRENT_DESKTOP.
    };
    /// By the environment, and for the program that runs, to which `running` is the kernel's link. Of a
    /// program in a mounted image, the image; of one that an update has replaced, the new one.
    [[nodiscard]] static Places standardPlaces(const FolderEnvironment& environment = processEnvironment(),
                                               const std::filesystem::path& running = "/proc/self/exe");
    explicit AutostartFile(Places places);

    [[nodiscard]] LoginItemStatus status() override;
    [[nodiscard]] std::expected<void, std::string> setEnabled(bool enabled) override;

private:
    Places places_;
};

}  // namespace tidewell
