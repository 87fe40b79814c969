#pragma once

#include <expected>
#include <string_view>

#include "program/ExitCode.h"
#include "support/SecretText.h"

namespace tidewell {

/// Text as a person types it: UTF-8 without control characters. What is not was meant otherwise, and would
/// be refused by the service, or worse, by a terminal.
[[nodiscard]] bool isTyped(std::string_view text);

/// The first line of standard input, without its end; from a terminal, it is asked for and not echoed.
[[nodiscard]] std::expected<SecretText, CommandError> readPassword();

}  // namespace tidewell
