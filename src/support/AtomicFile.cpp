#include "support/AtomicFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <utility>

#include "support/Random.h"

namespace tidewell {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view temporaryPrefix = ".tidewell-";
constexpr std::string_view temporarySuffix = ".tmp";
constexpr std::size_t temporaryDigits = 16;
/// No save takes that long, so an older one was left by a program that died.
constexpr std::chrono::hours strayAge{1};

std::error_code lastError() { return {errno, std::generic_category()}; }
std::error_code errorOf(std::errc code) { return std::make_error_code(code); }

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

    /// Some file systems report a failed write only now.
    [[nodiscard]] std::error_code close()
    {
        // On Linux the descriptor is gone whatever close() returns; EINTR is no failed write.
        return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR ? std::error_code{} : lastError();
    }

private:
    int number_;
};

template <class Call>
auto retried(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

std::error_code writeAll(int descriptor, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = retried([&] { return ::write(descriptor, content.data(), content.size()); });
        if (written < 0)
            return lastError();
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

std::error_code syncFolder(const fs::path& folder)
{
    const Descriptor opened{
        retried([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })};
    if (!opened.open())
        return lastError();
    // Some network and user-space file systems know no fsync of folders; there is nothing more to ask of
    // them.
    if (retried([&] { return ::fsync(opened.number()); }) != 0 && errno != EINVAL && errno != ENOTSUP)
        return lastError();
    return {};
}

fs::path folderOf(const fs::path& file)
{
    return file.has_parent_path() ? file.parent_path() : fs::path{"."};
}

/// Follows symbolic links to the file that is meant, which need not exist yet.
std::expected<fs::path, std::error_code> resolved(fs::path file)
{
    constexpr int longestChain = 40;  // As the kernel's own.
    for (int links = 0; links < longestChain; ++links) {
        std::error_code error;
        const fs::file_status status = fs::symlink_status(file, error);
        if (status.type() == fs::file_type::not_found)
            return file;
        if (error)
            return std::unexpected{error};
        if (status.type() == fs::file_type::directory)
            return std::unexpected{errorOf(std::errc::is_a_directory)};
        if (status.type() == fs::file_type::regular)
            return file;
        if (status.type() != fs::file_type::symlink)
            return std::unexpected{errorOf(std::errc::operation_not_permitted)};
        const fs::path target = fs::read_symlink(file, error);
        if (error)
            return std::unexpected{error};
        file = folderOf(file) / target;  // An absolute target replaces the folder.
    }
    return std::unexpected{errorOf(std::errc::too_many_symbolic_link_levels)};
}

bool isTemporaryName(std::string_view name)
{
    if (name.size() != temporaryPrefix.size() + temporaryDigits + temporarySuffix.size() ||
        !name.starts_with(temporaryPrefix) || !name.ends_with(temporarySuffix))
        return false;
    const std::string_view digits = name.substr(temporaryPrefix.size(), temporaryDigits);
    return digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// The whole content in a new file of its own, on the disk; the caller removes the file after an error.
std::error_code writeNew(const fs::path& file, std::string_view content)
{
    Descriptor opened{retried([&] {
        return ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    })};
    if (!opened.open())
        return lastError();
    if (const auto error = writeAll(opened.number(), content))
        return error;
    if (retried([&] { return ::fsync(opened.number()); }) != 0)
        return lastError();
    return opened.close();
}

}  // namespace

std::error_code writeFileAtomically(const fs::path& file, std::string_view content)
{
    const auto target = resolved(file);
    if (!target)
        return target.error();
    const fs::path folder = folderOf(*target);
    SystemRandom random;
    const fs::path temporary =
        folder / fmt::format("{}{:0{}x}{}", temporaryPrefix, random.next(), temporaryDigits, temporarySuffix);
    std::error_code error = writeNew(temporary, content);
    if (!error && ::rename(temporary.c_str(), target->c_str()) != 0)
        error = lastError();
    if (error) {
        ::unlink(temporary.c_str());
        return error;
    }
    return syncFolder(folder);
}

std::expected<std::optional<std::string>, std::error_code> readFile(const fs::path& file, std::size_t limit)
{
    // Without O_NONBLOCK, opening a pipe would wait for a writer.
    const Descriptor opened{
        retried([&] { return ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); })};
    if (!opened.open()) {
        if (errno == ENOENT)
            return std::nullopt;
        return std::unexpected{lastError()};
    }
    struct stat status{};
    if (::fstat(opened.number(), &status) != 0)
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
        const ssize_t count = retried([&] { return ::read(opened.number(), piece.data(), piece.size()); });
        if (count < 0)
            return std::unexpected{lastError()};
        if (count == 0)
            return content;
        if (content.size() + static_cast<std::size_t>(count) > limit)
            return std::unexpected{errorOf(std::errc::file_too_large)};
        content.append(piece.data(), static_cast<std::size_t>(count));
    }
}

std::error_code makePrivateFolder(const fs::path& folder)
{
    fs::path made;
    for (const fs::path& part : folder) {
        const fs::path parent = std::exchange(made, made / part);
        if (::mkdir(made.c_str(), S_IRWXU) == 0) {
            // A file in the folder is only as durable as the folder's own name.
            if (const auto error = syncFolder(parent.empty() ? fs::path{"."} : parent))
                return error;
            continue;
        }
        const std::error_code error = lastError();
        std::error_code ignored;
        if (!fs::is_directory(made, ignored))
            return error == std::errc::file_exists ? errorOf(std::errc::not_a_directory) : error;
    }
    return made.empty() ? errorOf(std::errc::invalid_argument) : std::error_code{};
}

void removeStrayTemporaries(const fs::path& folder)
{
    const std::unique_ptr<DIR, decltype([](DIR* opened) { ::closedir(opened); })> entries{
        ::opendir(folder.c_str())};
    if (!entries)
        return;
    const auto newestStray =
        std::chrono::system_clock::to_time_t(std::chrono::system_clock::now() - strayAge);
    while (const dirent* const entry = ::readdir(entries.get())) {
        struct stat status{};
        if (isTemporaryName(entry->d_name) &&
            ::fstatat(::dirfd(entries.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode) && status.st_mtime < newestStray)
            ::unlinkat(::dirfd(entries.get()), entry->d_name, 0);
    }
}

}  // namespace tidewell
