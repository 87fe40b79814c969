#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidewell {

/// `text` in gzip form (RFC 1952).
[[nodiscard]] std::string gzip(std::string_view text);

/// `size` blanks in gzip form, made without ever holding them.
[[nodiscard]] std::string gzipOfBlanks(std::size_t size);

}  // namespace tidewell
