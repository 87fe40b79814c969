#include "support/AtomicFile.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <chrono>
#include <memory>

#include "support/FileSystem.h"
#include "support/Random.h"

namespace tidewell {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view temporaryPrefix = ".tidewell-";
constexpr std::string_view temporarySuffix = ".tmp";
constexpr std::size_t temporaryDigits = 16;
/// No save takes that long, so an older one was left by a program that died.
constexpr std::chrono::hours strayAge{1};

std::error_code errorOf(std::errc code) { return std::make_error_code(code); }

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

}  // namespace

std::error_code writeFileAtomically(const fs::path& file, std::string_view content)
{
    const auto target = resolved(file);
    if (!target)
        return target.error();
    SystemRandom random;
    const fs::path temporary = folderOf(*target) / fmt::format("{}{:0{}x}{}", temporaryPrefix, random.next(),
                                                               temporaryDigits, temporarySuffix);
    SystemFileSystem files;
    return replaceFile(files, *target, temporary, content);
}

std::expected<std::optional<std::string>, std::error_code> readFile(const fs::path& file, std::size_t limit)
{
    return readRegularFile(file, limit, true);
}

std::error_code makePrivateFolder(const fs::path& folder)
{
    SystemFileSystem files;
    return makeFolders(files, folder);
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
