#include "history/HistoryExport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "history/CsvReader.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

/// About what a line of either form takes.
constexpr std::size_t csvLine = 96;
constexpr std::size_t jsonLine = 192;

/// Milliseconds are all that saved history knows.
std::string exportedTime(Date date)
{
    const auto total = std::llround(unixSeconds(date) * 1000);
    const auto milliseconds = ((total % 1000) + 1000) % 1000;
    const auto seconds = (total - milliseconds) / 1000;
    std::string text = isoText(dateFromUnix(static_cast<double>(seconds)));
    if (milliseconds == 0)
        return text;
    text.pop_back();  // The "Z".
    return fmt::format("{}.{:03}Z", text, milliseconds);
}

/// A service's word of letters as it is, anything else behind an apostrophe: a spreadsheet would take it for
/// a formula when it begins with one of a few signs.
std::string exportedTrend(const std::string& word)
{
    const bool plain = std::ranges::all_of(word, [](char c) {
        const char lower = static_cast<char>(c | 0x20);
        return lower >= 'a' && lower <= 'z';
    });
    return csvField(plain ? word : historyTrendMark + word);
}

std::string asCsv(const std::vector<StoredReading>& readings)
{
    std::string text;
    text.reserve(historyCsvHeader.size() + 1 + readings.size() * csvLine);
    text.append(historyCsvHeader).append("\n");
    for (const auto& [reading, fetchedAt] : readings)
        fmt::format_to(std::back_inserter(text), "{},{},{},{},{},{}\n", exportedTime(reading.date),
                       reading.mgdL, exportedTrend(reading.trendString), reading.sampleDuration.count(),
                       rawValue(reading.source), exportedTime(fetchedAt));
    return text;
}

std::string asJson(const std::vector<StoredReading>& readings)
{
    std::string text = fmt::format("{{\"format\": \"{}\", \"version\": {}, \"readings\": [",
                                   historyJsonFormat, historyJsonVersion);
    text.reserve(text.size() + readings.size() * jsonLine);
    bool first = true;
    for (const auto& [reading, fetchedAt] : readings) {
        const json::object entry{{"reading", encode(reading)}, {"fetchedAt", exportedTime(fetchedAt)}};
        text.append(first ? "\n" : ",\n").append(compactJson(entry));
        first = false;
    }
    return text + "\n]}\n";
}

}  // namespace

std::string exportHistory(const std::vector<StoredReading>& readings, HistoryExportFormat format)
{
    return format == HistoryExportFormat::csv ? asCsv(readings) : asJson(readings);
}

}  // namespace tidewell
