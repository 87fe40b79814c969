#include "program/InsightsReportFiles.h"

#include <fmt/format.h>
#include <langinfo.h>
#include <locale.h>

#include <bit>
#include <cstdint>
#include <system_error>

#include "history/HistoryExport.h"
#include "support/AtomicFile.h"

namespace tidewell {

std::filesystem::path readingsBeside(const std::filesystem::path& page)
{
    std::filesystem::path readings = page;
    return readings.replace_extension(".csv");
}

std::string attachedReadings(const std::vector<StoredReading>& readings,
                             const std::vector<std::string>& unreadableDays)
{
    std::string text = exportHistory(readings, HistoryExportFormat::csv);
    if (!unreadableDays.empty())
        text += fmt::format("# Missing, since saved readings of these days (UTC) cannot be read: {}\n",
                            fmt::join(unreadableDays, " "));
    return text;
}

std::optional<std::string> existsAlready(const std::filesystem::path& path, bool replace)
{
    std::error_code ignored;
    if (replace || !std::filesystem::exists(std::filesystem::symlink_status(path, ignored)))
        return {};
    return fmt::format("\"{}\" exists. Nothing was written", path.string());
}

std::optional<std::string> writeReportFiles(const std::vector<InsightsReportFile>& files)
{
    for (const auto& [path, content, replace] : files)
        if (auto exists = existsAlready(path, replace))
            return *exists + ".";
    std::string written;
    for (const auto& [path, content, replace] : files) {
        if (const auto error = content.empty() ? std::make_error_code(std::errc::not_enough_memory)
                                               : writeFileAtomically(path, content))
            return fmt::format("\"{}\" cannot be written: {}.{}", path.string(), error.message(), written);
        written += fmt::format(" \"{}\" was written.", path.string());
    }
    return {};
}

InsightsReportPaper usualPaper()
{
    constexpr std::uintptr_t letterWidth = 216;  // Millimetres, as locales have it.
    const locale_t locale = ::newlocale(LC_PAPER_MASK, "", nullptr);
    if (!locale)
        return InsightsReportPaper::a4;
    // The library hands the number over in place of an address.
    const auto width = std::bit_cast<std::uintptr_t>(::nl_langinfo_l(_NL_PAPER_WIDTH, locale)) & 0xFFFF'FFFF;
    ::freelocale(locale);
    return width == letterWidth ? InsightsReportPaper::letter : InsightsReportPaper::a4;
}

}  // namespace tidewell
