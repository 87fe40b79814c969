#pragma once

#include <QString>
#include <string_view>

namespace tidewell {

/// A text of the core as the person reads it, in the language of the translators that are installed. The core
/// speaks English; a text that no translation knows stays as it is. Main thread.
[[nodiscard]] QString displayText(std::string_view text);

}  // namespace tidewell
