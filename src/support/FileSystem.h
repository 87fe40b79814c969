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
    /// mkdir with mode 0700; the parent exists.
    [[nodiscard]] virtual std::error_code makeFolder(const std::filesystem::path& folder) = 0;
    /// O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW with mode 0600.
    [[nodiscard]] virtual std::expected<FileHandle, std::error_code> createNew(
        const std::filesystem::path& file) = 0;
    /// Writes some of it; how much, at least one byte.
    [[nodiscard]] virtual std::expected<std::size_t, std::error_code> write(FileHandle file,
                                                                            std::string_view bytes) = 0;
    [[nodiscard]] virtual std::error_code sync(FileHandle file) = 0;
    /// The handle is gone whatever it returns.
    [[nodiscard]] virtual std::error_code close(FileHandle file) = 0;
    [[nodiscard]] virtual std::error_code rename(const std::filesystem::path& from,
                                                 const std::filesystem::path& to) = 0;
    [[nodiscard]] virtual std::error_code syncFolder(const std::filesystem::path& folder) = 0;
    /// The whole content of a regular file of at most `limit` bytes; an absent one is empty.
    [[nodiscard]] virtual std::expected<std::optional<std::string>, std::error_code> read(
        const std::filesystem::path& file, std::size_t limit) = 0;
    /// The names in a folder, in no order; an absent folder has none.
    [[nodiscard]] virtual std::expected<std::vector<std::string>, std::error_code> list(
        const std::filesystem::path& folder) = 0;
    /// Good when it was absent.
    [[nodiscard]] virtual std::error_code removeFile(const std::filesystem::path& file) = 0;
    /// An empty folder; good when it was absent.
    [[nodiscard]] virtual std::error_code removeFolder(const std::filesystem::path& folder) = 0;
    [[nodiscard]] virtual std::expected<bool, std::error_code> exists(const std::filesystem::path& path) = 0;
    /// Waits up to five seconds for an exclusive lock (flock) of a file that is made when it is absent, mode
    /// 0600; released by close().
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

}  // namespace tidewell
