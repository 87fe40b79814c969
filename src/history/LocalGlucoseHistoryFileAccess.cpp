#include "history/LocalGlucoseHistoryFileAccess.h"

#include <algorithm>
#include <utility>

#include "history/GlucoseHistoryRecords.h"
#include "sources/UuidText.h"

namespace tidewell {

namespace {

namespace fs = std::filesystem;

/// More than any day can hold: a reading a second is 18 MB.
constexpr std::size_t largestFile = 64 * 1024 * 1024;

constexpr std::string_view temporaryPrefix = ".tidewell-history-";
constexpr std::string_view temporarySuffix = ".tmp";
constexpr std::string_view historySuffix = ".history";

bool isTemporaryName(std::string_view name)
{
    return name.starts_with(temporaryPrefix) && name.ends_with(temporarySuffix) &&
           name.size() > temporaryPrefix.size() + temporarySuffix.size() &&
           isUuidText(name.substr(temporaryPrefix.size(),
                                  name.size() - temporaryPrefix.size() - temporarySuffix.size()));
}

}  // namespace

LocalGlucoseHistoryFileAccess::LocalGlucoseHistoryFileAccess(FileSystem& files, RandomSource& random)
    : files_{files}, random_{random}
{
}

std::error_code LocalGlucoseHistoryFileAccess::makeFolder(const fs::path& folder)
{
    if (const auto error = makeFolders(files_, folder))
        return error;
    if (durable_.contains(folder))
        return {};
    // Whoever made it may have been stopped before its name was on the disk.
    const std::error_code error = files_.syncFolder(folderOf(folder));
    if (!error)
        durable_.insert(folder);
    return error;
}

std::error_code LocalGlucoseHistoryFileAccess::writeAtomically(const fs::path& file, std::string_view bytes)
{
    const fs::path folder = folderOf(file);
    if (const auto error = makeFolder(folder))
        return error;
    const auto unique = Uuid::tryRandom(random_);
    if (!unique)
        return std::make_error_code(std::errc::resource_unavailable_try_again);
    std::string name{temporaryPrefix};
    name += unique->text();
    name += temporarySuffix;
    return replaceFile(files_, file, folder / name, bytes, Backup::exclude);
}

std::expected<std::optional<std::string>, std::error_code> LocalGlucoseHistoryFileAccess::read(
    const fs::path& file)
{
    return files_.read(file, largestFile);
}

std::expected<std::vector<std::int64_t>, std::error_code> LocalGlucoseHistoryFileAccess::days(
    const fs::path& scopeFolder)
{
    const auto names = files_.list(scopeFolder);
    if (!names)
        return std::unexpected{names.error()};
    std::vector<std::int64_t> days;
    for (const std::string& name : *names)
        if (const auto day = historyDayOfFileName(name))
            days.push_back(*day);
    std::ranges::sort(days);
    return days;
}

std::expected<bool, std::error_code> LocalGlucoseHistoryFileAccess::hasHistoryFiles(
    const fs::path& scopeFolder)
{
    const auto names = files_.list(scopeFolder);
    if (!names)
        return std::unexpected{names.error()};
    return std::ranges::any_of(*names, [](const std::string& name) { return name.ends_with(historySuffix); });
}

std::error_code LocalGlucoseHistoryFileAccess::remove(const fs::path& path)
{
    std::error_code error = files_.removeFile(path);
    // Only a true folder is entered: of a symbolic link to one, the link has just been removed.
    if (error != std::errc::is_a_directory)
        return error;
    const auto names = files_.list(path);
    if (!names)
        return names.error();
    error.clear();
    for (const std::string& name : *names)
        if (const auto failed = remove(path / name))
            error = failed;  // The others go nevertheless.
    return error ? error : files_.removeFolder(path);
}

std::expected<bool, std::error_code> LocalGlucoseHistoryFileAccess::exists(const fs::path& path)
{
    return files_.exists(path);
}

void LocalGlucoseHistoryFileAccess::removeStrayTemporaries(const fs::path& folder)
{
    const auto names = files_.list(folder);
    if (!names)
        return;
    for (const std::string& name : *names)
        if (isTemporaryName(name)) {
            [[maybe_unused]] const std::error_code kept = files_.removeFile(folder / name);
        }
}

}  // namespace tidewell
