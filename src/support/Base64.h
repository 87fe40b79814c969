#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

/// Base64 of the bytes with padding and without line breaks (RFC 4648 section 4).
[[nodiscard]] std::string base64(std::string_view bytes);

/// The bytes again. Strict: exactly what base64() writes; anything else is empty.
[[nodiscard]] std::optional<std::string> bytesFromBase64(std::string_view text);

}  // namespace tidewell
