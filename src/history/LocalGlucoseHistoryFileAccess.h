#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "support/FileSystem.h"
#include "support/Random.h"

namespace tidewell {

/// The files of saved history: private folders, whole writes, and nothing that destroys on the way. Blocking;
/// one task at a time.
class LocalGlucoseHistoryFileAccess {
public:
    /// Both outlive it.
    LocalGlucoseHistoryFileAccess(FileSystem& files, RandomSource& random);

    /// Makes the folder and its missing parents with mode 0700, durably.
    [[nodiscard]] std::error_code makeFolder(const std::filesystem::path& folder);
    /// A temporary file of a random name beside `file` (mode 0600, missing folders 0700), fsync, rename,
    /// fsync of the folder and of the parents of folders that were made. After an error the old content is in
    /// place and the temporary file gone where the system let us; where only the last step failed, the new
    /// content is in place but may not survive a power cut.
    [[nodiscard]] std::error_code writeAtomically(const std::filesystem::path& file, std::string_view bytes);
    /// Absent is empty. Refuses more than 64 MiB.
    [[nodiscard]] std::expected<std::optional<std::string>, std::error_code> read(
        const std::filesystem::path& file);
    /// The days that a scope's folder has files of, ascending; other files do not count.
    [[nodiscard]] std::expected<std::vector<std::int64_t>, std::error_code> days(
        const std::filesystem::path& scopeFolder);
    /// Whether any file there ends in ".history", also one that is no day: such a scope never gets a new key.
    [[nodiscard]] std::expected<bool, std::error_code> hasHistoryFiles(
        const std::filesystem::path& scopeFolder);
    /// A file, or a folder with all that is in it; absent is good.
    [[nodiscard]] std::error_code remove(const std::filesystem::path& path);
    [[nodiscard]] std::expected<bool, std::error_code> exists(const std::filesystem::path& path);
    /// Removes what a write that never ended left in a folder: only names that this class makes, of any age,
    /// so the caller holds the lock.
    void removeStrayTemporaries(const std::filesystem::path& folder);

    [[nodiscard]] FileSystem& files() { return files_; }

private:
    FileSystem& files_;
    RandomSource& random_;
    std::set<std::filesystem::path> durable_{};  ///< Folders whose own names are known to be on the disk.
};

}  // namespace tidewell
