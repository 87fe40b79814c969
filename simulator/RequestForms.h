#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/HttpClient.h"

namespace tidewell {

/// The first header of a request with that name (in lower case), compared without regard to case; empty when
/// there is none.
[[nodiscard]] std::optional<std::string_view> requestHeader(const HttpRequest& request,
                                                            std::string_view name);

/// Whether the answer to a request may be gzip-encoded.
[[nodiscard]] bool acceptsGzip(const HttpRequest& request);

/// A part of a URL, decoded; empty when a percent sign is not followed by two hexadecimal digits.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

}  // namespace tidewell
