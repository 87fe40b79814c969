#pragma once

#include <string>
#include <string_view>

namespace tidewell {

/// SHA-256 (FIPS 180-4) of the bytes, as 64 lower-case hexadecimal digits.
[[nodiscard]] std::string sha256Hex(std::string_view bytes);

}  // namespace tidewell
