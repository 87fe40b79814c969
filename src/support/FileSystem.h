#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tidewell {

/// An open file by its descriptor; belongs to the FileSystem that opened it.
using FileHandle = int;

/// The system calls that storage is made of, each one a step that can fail by itself. For storage whose
/// faults are tested one by one; everything else calls AtomicFile.h. Blocking; any thread.
class FileSystem {
public:
    virtual ~FileSystem() = default;
    /// mkdir with mode 0700; the parent exists. file_exists when the folder is there already, not_a_directory
    /// when something else is.
    [[nodiscard]] virtual std::error_code makeFolder(const std::filesystem::path& folder) = 0;
    /// O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW with mode 0600.
    [[nodiscard]] virtual std::expected<FileHandle, std::error_code> createNew(
        const std::filesystem::path& file) = 0;
    /// Writes some of it; how much, at least one byte.
    [[nodiscard]] virtual std::expected<std::size_t, std::error_code> write(FileHandle file,
                                                                            std::string_view bytes) = 0;
    /// Asks backup programs to leave the file out; at best some of them do, and failing is no failure.
    virtual void excludeFromBackup(FileHandle file) { static_cast<void>(file); }
    [[nodiscard]] virtual std::error_code sync(FileHandle file) = 0;
    /// The handle is gone whatever it returns.
    [[nodiscard]] virtual std::error_code close(FileHandle file) = 0;
    [[nodiscard]] virtual std::error_code rename(const std::filesystem::path& from,
                                                 const std::filesystem::path& to) = 0;
    [[nodiscard]] virtual std::error_code syncFolder(const std::filesystem::path& folder) = 0;
    /// The whole content of a regular file of at most `limit` bytes (else file_too_large); an absent one is
    /// empty. A symbolic link is too_many_symbolic_link_levels.
    [[nodiscard]] virtual std::expected<std::optional<std::string>, std::error_code> read(
        const std::filesystem::path& file, std::size_t limit) = 0;
    /// The names in a folder, in no order; an absent folder has none.
    [[nodiscard]] virtual std::expected<std::vector<std::string>, std::error_code> list(
        const std::filesystem::path& folder) = 0;
    /// Good when it was absent; is_a_directory for a folder. Of a symbolic link, the link.
    [[nodiscard]] virtual std::error_code removeFile(const std::filesystem::path& file) = 0;
    /// An empty folder; good when it was absent.
    [[nodiscard]] virtual std::error_code removeFolder(const std::filesystem::path& folder) = 0;
    /// Whether anything has that name, a symbolic link that leads nowhere too.
    [[nodiscard]] virtual std::expected<bool, std::error_code> exists(const std::filesystem::path& path) = 0;
    /// Waits up to five seconds (then timed_out) for an exclusive lock (flock) of a file that is made when it
    /// is absent, mode 0600; released by close().
    [[nodiscard]] virtual std::expected<FileHandle, std::error_code> lock(
        const std::filesystem::path& file) = 0;
};

/// The real one.
class SystemFileSystem final : public FileSystem {
public:
    [[nodiscard]] std::error_code makeFolder(const std::filesystem::path& folder) override;
    [[nodiscard]] std::expected<FileHandle, std::error_code> createNew(
        const std::filesystem::path& file) override;
    [[nodiscard]] std::expected<std::size_t, std::error_code> write(FileHandle file,
                                                                    std::string_view bytes) override;
    void excludeFromBackup(FileHandle file) override;
    [[nodiscard]] std::error_code sync(FileHandle file) override;
    [[nodiscard]] std::error_code close(FileHandle file) override;
    [[nodiscard]] std::error_code rename(const std::filesystem::path& from,
                                         const std::filesystem::path& to) override;
    [[nodiscard]] std::error_code syncFolder(const std::filesystem::path& folder) override;
    [[nodiscard]] std::expected<std::optional<std::string>, std::error_code> read(
        const std::filesystem::path& file, std::size_t limit) override;
    [[nodiscard]] std::expected<std::vector<std::string>, std::error_code> list(
        const std::filesystem::path& folder) override;
    [[nodiscard]] std::error_code removeFile(const std::filesystem::path& file) override;
    [[nodiscard]] std::error_code removeFolder(const std::filesystem::path& folder) override;
    [[nodiscard]] std::expected<bool, std::error_code> exists(const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<FileHandle, std::error_code> lock(const std::filesystem::path& file) override;
};

enum class Backup { include, exclude };

/// The steps of a write that is seen whole or not at all: makes `temporary`, which lies in the same folder,
/// writes and syncs it, renames it to `file`, syncs the folder. After an error `file` is as it was and
/// `temporary` gone where the system let us; where only the last step failed, the new content is in place but
/// may not survive a power cut.
[[nodiscard]] std::error_code replaceFile(FileSystem& files, const std::filesystem::path& file,
                                          const std::filesystem::path& temporary, std::string_view content,
                                          Backup backup = Backup::include);

/// Makes the folder and its missing parents, and syncs the folders that got a new one.
[[nodiscard]] std::error_code makeFolders(FileSystem& files, const std::filesystem::path& folder);

/// The folder that a file is in; "." for a name alone.
[[nodiscard]] std::filesystem::path folderOf(const std::filesystem::path& file);

/// What SystemFileSystem::read() does; with `followLink`, the file may be a symbolic link.
[[nodiscard]] std::expected<std::optional<std::string>, std::error_code> readRegularFile(
    const std::filesystem::path& file, std::size_t limit, bool followLink);

}  // namespace tidewell
