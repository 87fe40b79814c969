#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tidewell {

/// Replaces `file` as a whole: a temporary file beside it (mode 0600), fsync, rename, fsync of the folder.
///
/// After success the content survives a power cut; after failure the old file is as it was and the temporary
/// one is gone where the system let us. The one exception: where only the last step fails, the new content is
/// in place but may not survive a power cut, and the error says so. Makes no folders; refuses to replace what
/// is not a regular file. Blocks: for worker threads and start-up.
///
/// A symbolic link stays a link: the file that it points to is replaced, so that configuration kept elsewhere
/// (a folder of dotfiles, another disk) remains there.
[[nodiscard]] std::error_code writeFileAtomically(const std::filesystem::path& file,
                                                  std::string_view content);

/// The whole file; an absent one is an empty optional. Refuses more than `limit` bytes (file_too_large) and
/// whatever is not a regular file.
[[nodiscard]] std::expected<std::optional<std::string>, std::error_code> readFile(
    const std::filesystem::path& file, std::size_t limit = 16 * 1024 * 1024);

/// Makes the folder and its missing parents, the new ones with mode 0700.
[[nodiscard]] std::error_code makePrivateFolder(const std::filesystem::path& folder);

/// Removes stray temporary files of writeFileAtomically in `folder` that are older than an hour.
void removeStrayTemporaries(const std::filesystem::path& folder);

}  // namespace tidewell
