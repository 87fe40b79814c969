#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>

namespace tidewell {

/// Where the program keeps its files, after the XDG base directory specification.
struct Folders {
    std::filesystem::path configuration;  ///< Holds configuration.json and endpoints.json.
    std::filesystem::path state;          ///< Holds defaults.json.
    std::filesystem::path data;           ///< Holds the folder SavedHistory.
    std::filesystem::path runtime;        ///< Lock, socket and icons of the running instance.

    /// Everything below one folder, for a run that leaves nothing behind.
    [[nodiscard]] static Folders below(const std::filesystem::path& root);
};

/// What the folders are derived from; replaced by tests.
struct FolderEnvironment {
    std::function<std::optional<std::string>(const char* name)> variable;
    std::function<std::optional<std::string>()>
        accountHome;  ///< From the user data base, when HOME is of no use.
    /// Whether this is a folder of ours that nobody else may enter.
    std::function<bool(const std::filesystem::path&)> isPrivateFolder;
    unsigned userID = 0;
};
[[nodiscard]] FolderEnvironment processEnvironment();

/// Derives the folders; makes none. Relative values count as unset. Empty only when the user has no home at
/// all. Runtime: XDG_RUNTIME_DIR, else /run/user/UID, else /tmp/tidewell-UID.
[[nodiscard]] std::optional<Folders> standardFolders(
    const FolderEnvironment& environment = processEnvironment());

/// Makes the runtime folder with mode 0700, or checks that an existing one is ours alone: a real folder, our
/// user's, closed to others. operation_not_permitted when it is not.
[[nodiscard]] std::error_code prepareRuntimeFolder(const std::filesystem::path& folder);

}  // namespace tidewell
