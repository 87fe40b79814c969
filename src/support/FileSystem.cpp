#include "support/FileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

namespace tidewell {

namespace {

namespace fs = std::filesystem;

/// How long a lock is waited for: longer than any whole operation of another process that holds it.
constexpr std::chrono::seconds lockPatience{5};
/// Short, since a process that takes the lock again and again lets go of it for moments only.
constexpr std::chrono::milliseconds lockInterval{1};

/// What the desktop standards group proposes for "no robot needs to copy this"; there is no older common
/// mark.
constexpr const char* backupAttribute = "user.xdg.robots.backup";
constexpr std::string_view backupRefused = "false";

std::error_code lastError() { return {errno, std::generic_category()}; }
std::error_code errorOf(std::errc code) { return std::make_error_code(code); }

template <class Call>
auto retried(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Zero is good, anything else is in errno.
std::error_code outcome(int result) { return result == 0 ? std::error_code{} : lastError(); }

int opened(const fs::path& path, int flags)
{
    return retried([&] { return ::open(path.c_str(), flags | O_CLOEXEC, S_IRUSR | S_IWUSR); });
}

/// An open file, closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int number) : number_{number} {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }

    [[nodiscard]] bool open() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }
    int release() { return std::exchange(number_, -1); }

private:
    int number_;
};

std::error_code writeAll(FileSystem& files, FileHandle file, std::string_view content)
{
    while (!content.empty()) {
        const auto written = files.write(file, content);
        if (!written)
            return written.error();
        content.remove_prefix(*written);
    }
    return {};
}

/// Writes and closes a new file; it is on the disk then.
std::error_code fill(FileSystem& files, FileHandle file, std::string_view content, Backup backup)
{
    std::error_code error = writeAll(files, file, content);
    if (!error && backup == Backup::exclude)
        files.excludeFromBackup(file);
    if (!error)
        error = files.sync(file);
    // Some file systems report a failed write only when the file is closed.
    const std::error_code closing = files.close(file);
    return error ? error : closing;
}

}  // namespace

std::error_code SystemFileSystem::makeFolder(const fs::path& folder)
{
    if (::mkdir(folder.c_str(), S_IRWXU) == 0)
        return {};
    const std::error_code error = lastError();
    std::error_code ignored;
    if (error == std::errc::file_exists && !fs::is_directory(folder, ignored))
        return errorOf(std::errc::not_a_directory);
    return error;
}

std::expected<FileHandle, std::error_code> SystemFileSystem::createNew(const fs::path& file)
{
    const int number = opened(file, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    if (number < 0)
        return std::unexpected{lastError()};
    return number;
}

std::expected<std::size_t, std::error_code> SystemFileSystem::write(FileHandle file, std::string_view bytes)
{
    const ssize_t written = retried([&] { return ::write(file, bytes.data(), bytes.size()); });
    if (written < 0)
        return std::unexpected{lastError()};
    if (written == 0 && !bytes.empty())
        return std::unexpected{errorOf(std::errc::io_error)};  // Else a caller would try for ever.
    return static_cast<std::size_t>(written);
}

void SystemFileSystem::excludeFromBackup(FileHandle file)
{
    ::fsetxattr(file, backupAttribute, backupRefused.data(), backupRefused.size(), 0);
}

std::error_code SystemFileSystem::sync(FileHandle file)
{
    return outcome(retried([&] { return ::fsync(file); }));
}

std::error_code SystemFileSystem::close(FileHandle file)
{
    // On Linux the descriptor is gone whatever close() returns; EINTR is no failed write.
    return ::close(file) == 0 || errno == EINTR ? std::error_code{} : lastError();
}

std::error_code SystemFileSystem::rename(const fs::path& from, const fs::path& to)
{
    return outcome(::rename(from.c_str(), to.c_str()));
}

std::error_code SystemFileSystem::syncFolder(const fs::path& folder)
{
    const Descriptor directory{opened(folder, O_RDONLY | O_DIRECTORY)};
    if (!directory.open())
        return lastError();
    const std::error_code error = sync(directory.number());
    // Some network and user-space file systems know no fsync of folders; there is nothing more to ask of
    // them.
    const bool unknown = error == std::errc::invalid_argument || error == std::errc::not_supported;
    return unknown ? std::error_code{} : error;
}

std::expected<std::optional<std::string>, std::error_code> SystemFileSystem::read(const fs::path& file,
                                                                                  std::size_t limit)
{
    return readRegularFile(file, limit, false);
}

std::expected<std::vector<std::string>, std::error_code> SystemFileSystem::list(const fs::path& folder)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, decltype([](DIR* directory) { ::closedir(directory); })> directory{
        ::opendir(folder.c_str())};
    if (!directory) {
        if (errno == ENOENT)
            return names;
        return std::unexpected{lastError()};
    }
    for (;;) {
        errno = 0;  // The end and an error look alike but for this.
        const dirent* const entry = ::readdir(directory.get());
        if (!entry)
            break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    if (errno != 0)
        return std::unexpected{lastError()};
    return names;
}

std::error_code SystemFileSystem::removeFile(const fs::path& file)
{
    return ::unlink(file.c_str()) == 0 || errno == ENOENT ? std::error_code{} : lastError();
}

std::error_code SystemFileSystem::removeFolder(const fs::path& folder)
{
    return ::rmdir(folder.c_str()) == 0 || errno == ENOENT ? std::error_code{} : lastError();
}

std::expected<bool, std::error_code> SystemFileSystem::exists(const fs::path& path)
{
    struct stat status{};
    if (::lstat(path.c_str(), &status) == 0)
        return true;
    if (errno == ENOENT)
        return false;
    return std::unexpected{lastError()};
}

std::expected<FileHandle, std::error_code> SystemFileSystem::lock(const fs::path& file)
{
    Descriptor held{opened(file, O_RDWR | O_CREAT | O_NOFOLLOW)};
    if (!held.open())
        return std::unexpected{lastError()};
    const auto end = std::chrono::steady_clock::now() + lockPatience;
    while (retried([&] { return ::flock(held.number(), LOCK_EX | LOCK_NB); }) != 0) {
        if (errno != EWOULDBLOCK)
            return std::unexpected{lastError()};
        if (std::chrono::steady_clock::now() >= end)
            return std::unexpected{errorOf(std::errc::timed_out)};
        std::this_thread::sleep_for(lockInterval);
    }
    return held.release();
}

std::error_code replaceFile(FileSystem& files, const fs::path& file, const fs::path& temporary,
                            std::string_view content, Backup backup)
{
    const auto made = files.createNew(temporary);
    if (!made)
        return made.error();
    std::error_code error = fill(files, *made, content, backup);
    if (!error)
        error = files.rename(temporary, file);
    if (error) {
        [[maybe_unused]] const std::error_code kept = files.removeFile(temporary);
        return error;
    }
    return files.syncFolder(folderOf(file));
}

std::error_code makeFolders(FileSystem& files, const fs::path& folder)
{
    if (folder.empty())
        return errorOf(std::errc::invalid_argument);
    std::error_code error = files.makeFolder(folder);
    if (error == std::errc::file_exists)
        return {};
    if (error == std::errc::no_such_file_or_directory) {
        const fs::path parent = folderOf(folder);
        if (parent == folder)
            return error;
        if (const auto missing = makeFolders(files, parent))
            return missing;
        error = files.makeFolder(folder);
        if (error == std::errc::file_exists)  // "a/" after "a", or somebody else was quicker.
            return {};
    }
    if (error)
        return error;
    // A file in the folder is only as durable as the folder's own name. A folder that may vanish must not be
    // taken for a good one by the next try.
    error = files.syncFolder(folderOf(folder));
    if (error) {
        [[maybe_unused]] const std::error_code kept = files.removeFolder(folder);
    }
    return error;
}

fs::path folderOf(const fs::path& file)
{
    return file.has_parent_path() ? file.parent_path() : fs::path{"."};
}

std::expected<std::optional<std::string>, std::error_code> readRegularFile(const fs::path& file,
                                                                           std::size_t limit, bool followLink)
{
    // Without O_NONBLOCK, opening a pipe would wait for a writer.
    const Descriptor source{opened(file, O_RDONLY | O_NONBLOCK | O_NOCTTY | (followLink ? 0 : O_NOFOLLOW))};
    if (!source.open()) {
        if (errno == ENOENT)
            return std::nullopt;
        return std::unexpected{lastError()};
    }
    struct stat status{};
    if (::fstat(source.number(), &status) != 0)
        return std::unexpected{lastError()};
    if (S_ISDIR(status.st_mode))
        return std::unexpected{errorOf(std::errc::is_a_directory)};
    if (!S_ISREG(status.st_mode))
        return std::unexpected{errorOf(std::errc::invalid_argument)};
    std::string content;
    if (status.st_size > 0 && static_cast<std::size_t>(status.st_size) <= limit)
        content.reserve(static_cast<std::size_t>(status.st_size));
    std::array<char, 64 * 1024> piece;
    for (;;) {
        const ssize_t count = retried([&] { return ::read(source.number(), piece.data(), piece.size()); });
        if (count < 0)
            return std::unexpected{lastError()};
        if (count == 0)
            return content;
        if (content.size() + static_cast<std::size_t>(count) > limit)
            return std::unexpected{errorOf(std::errc::file_too_large)};
        content.append(piece.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace tidewell
