#pragma once

#include <string_view>

namespace tidewell {

/// What the person can do so that the desktop shows status items: one sentence. `currentDesktop` as
/// XDG_CURRENT_DESKTOP names it: names, separated by colons, in any letter case; may be empty.
[[nodiscard]] std::string_view statusAreaAdvice(std::string_view currentDesktop);

}  // namespace tidewell
