#pragma once

#include <optional>
#include <string>

namespace tidewell {

/// One of the desktop's settings, as GSettings keeps them, in its plain form: "true", "300", or the text.
/// Empty where it is not installed, or is none of these. May wait for the disk and the bus; for the helper.
[[nodiscard]] std::optional<std::string> desktopSetting(const std::string& schema, const std::string& key);

}  // namespace tidewell
