#pragma once

#include <expected>
#include <filesystem>
#include <system_error>

namespace tidewell {

/// Gives `file` a second name, so that replacing it afterwards loses nothing: `aside`,
/// or with "-2", "-3" ... before its extension where that name is taken. Both names lead
/// to the same content until `file` is replaced; a crash in between leaves `file` in its
/// place. Returns the name; remove it when the file was not replaced after all. Blocks.
[[nodiscard]] std::expected<std::filesystem::path, std::error_code> keepAside(
    const std::filesystem::path& file, const std::filesystem::path& aside);

/// When the file was last written, as "20260302T081542Z"; "unknown-time" when that cannot be told.
[[nodiscard]] std::string writtenAtText(const std::filesystem::path& file);

}  // namespace tidewell
