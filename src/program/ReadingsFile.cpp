#include "program/ReadingsFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/linux/UniqueFd.h"

namespace tidewell {

namespace {

CommandError cannotRead(const std::filesystem::path& file, int error)
{
    return {ExitCode::failure, fmt::format("\"{}\" cannot be read: {}.", file.string(),
                                           std::error_code{error, std::system_category()}.message())};
}

CommandError refusalOf(const HistoryImportFile& file)
{
    std::string message = file.problem->line ? fmt::format("Line {}: ", file.problem->line) : "";
    message += file.problem->why;
    if (file.needsTimeZone)
        message += " Say which one with --time-zone, for example --time-zone Europe/Berlin.";
    if (file.needsDateOrder)
        message += " Say which with --date-order day-first or --date-order month-first.";
    return {file.needsTimeZone || file.needsDateOrder ? ExitCode::usage : ExitCode::failure, message};
}

}  // namespace

std::expected<HistoryImportFile, CommandError> readReadingsFile(const std::filesystem::path& path,
                                                                HistoryImportReader::Options options)
{
    const UniqueFd file{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    if (!file)
        return std::unexpected(cannotRead(path, errno));
    HistoryImportReader reader{options};
    std::string piece(64 * 1024, '\0');
    for (bool more = true; more;) {
        const auto count = ::read(file.get(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::unexpected(cannotRead(path, errno));
        more = count > 0 && reader.feed({piece.data(), static_cast<std::size_t>(count)});
    }
    auto found = reader.finish();
    if (found.problem)
        return std::unexpected(refusalOf(found));
    return found;
}

std::expected<TimeZone, CommandError> timeZoneNamed(const std::string& name)
{
    if (const auto zone = TimeZone::named(name))
        return *zone;
    return std::unexpected(
        CommandError{ExitCode::usage, fmt::format("There is no time zone \"{}\". Zones are called as in "
                                                  "Europe/Berlin or America/New_York.",
                                                  name)});
}

}  // namespace tidewell
