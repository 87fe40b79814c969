#pragma once

#include <memory>
#include <optional>
#include <string>

namespace tidewell {

/// One group of the desktop's settings, as GSettings keeps them; every value is empty where the group or the
/// key is not installed or of another type. May wait for the disk and the bus: not on the main thread.
class DesktopSettings final {
public:
    explicit DesktopSettings(const char* schema);
    ~DesktopSettings();
    DesktopSettings(const DesktopSettings&) = delete;

    [[nodiscard]] std::optional<bool> truth(const char* key) const;
    [[nodiscard]] std::optional<int> number(const char* key) const;
    [[nodiscard]] std::optional<std::string> text(const char* key) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;  ///< Null where the group is not installed.
};

}  // namespace tidewell
