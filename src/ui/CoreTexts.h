#pragma once

#include <span>

namespace tidewell {

/// The texts of the core that are shown, as sources of the translation context "Core". %1, %2 … stand for
/// what the core fills in: values, times, names, and texts that are in the list themselves.
[[nodiscard]] std::span<const char* const> coreTexts();

}  // namespace tidewell
