#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <system_error>

#include "history/HistoryExport.h"
#include "history/HistoryImport.h"
#include "program/Commands.h"
#include "program/HistorySession.h"
#include "program/ReadingsFile.h"
#include "support/AtomicFile.h"

namespace tidewell {

namespace {

/// How many readings the store is given at once: a few weeks at one a minute.
constexpr std::size_t importBatch = 50'000;

constexpr std::string_view needsEnabled =
    "History was never saved for this account. Enable it first: tidewell history enable";

HistoryExportFormat formatOf(const HistoryExportOptions& options)
{
    if (options.format)
        return *options.format;
    return lowerCased(options.file.extension().string()) == ".json" ? HistoryExportFormat::json
                                                                    : HistoryExportFormat::csv;
}

std::string separatorText(char separator)
{
    switch (separator) {
    case ',': return ", separated by commas";
    case ';': return ", separated by semicolons";
    case '\t': return ", separated by tabs";
    default: return "";
    }
}

std::string unitText(const HistoryImportFile& file)
{
    if (file.hasMgdL && file.hasMmolL)
        return ", values in mg/dL and mmol/L";
    return file.hasMmolL ? ", values in mmol/L" : file.hasMgdL ? ", values in mg/dL" : "";
}

/// What was found in the file, a line for each thing that a person may want to know.
void printFound(const HistoryImportFile& file, const std::optional<TimeZone>& zone)
{
    fmt::print("Found: {}{}{}\n", file.format ? description(*file.format) : "", separatorText(file.separator),
               unitText(file));
    fmt::print("Rows: {}\n", file.rows);
    if (file.otherRows > 0)
        fmt::print("  no sensor readings: {}\n", file.otherRows);
    if (file.repeated > 0)
        fmt::print("  of the same second as a later row, which counts: {}\n", file.repeated);
    if (file.refused > 0) {
        fmt::print("  refused: {}\n", file.refused);
        for (const auto& [line, why] : file.refusals)
            fmt::print("    line {}: {}\n", line, why);
        if (file.refused > file.refusals.size())
            fmt::print("    and {} more\n", file.refused - file.refusals.size());
    }
    if (file.lowOrHigh > 0)
        fmt::print("Values given as \"Low\" or \"High\", taken as 40 and 400 mg/dL: {}\n", file.lowOrHigh);
    if (file.historicDuration)
        fmt::print("Automatic readings are taken to stand for {} s each.\n", file.historicDuration->count());
    if (file.shortened > 0)
        fmt::print("Sample durations over 900 s, taken as 900 s: {}\n", file.shortened);
    if (file.localTimes > 0 && zone)
        fmt::print("Times without a time zone, taken as those of {}: {}\n", zone->name(), file.localTimes);
    if (file.repeatedHour > 0)
        fmt::print("Of them in an hour that the clock repeats, taken in the order of the rows: {}\n",
                   file.repeatedHour);
    if (file.dateOrder)
        fmt::print("Dates are read as {}.\n",
                   *file.dateOrder == DateOrder::dayFirst ? "day, month, year" : "month, day, year");
    fmt::print("Readings: {}", file.count());
    if (file.first())
        fmt::print(", from {} to {}", isoText(*file.first()), isoText(*file.last()));
    fmt::print("\n");
}

struct ImportTotal {
    HistoryImportResult result{};
    std::set<std::int64_t> unreadableDays{};
    std::optional<GlucoseHistoryError> error{};  ///< What ended it before its end.
};

ImportTotal importInBatches(HistorySession& session, const HistoryImportFile& file, bool dryRun)
{
    ImportTotal total;
    for (std::size_t from = 0; from < file.count(); from += importBatch) {
        const auto done = session.store().import(file.readings(from, importBatch), session.now(), dryRun);
        if (!done) {
            total.error = done.error();
            break;
        }
        total.result.added += done->added;
        total.result.alreadyThere += done->alreadyThere;
        total.result.beyondRetention += done->beyondRetention;
        total.result.refused += done->refused;
        total.unreadableDays.insert(done->unreadableDays.begin(), done->unreadableDays.end());
    }
    return total;
}

void printTotal(const ImportTotal& total, const GlucoseHistoryConfiguration& configuration, bool dryRun)
{
    const auto& result = total.result;
    fmt::print("{}: {}\n", dryRun ? "Would be added" : "Added", result.added);
    if (result.alreadyThere > 0)
        fmt::print("Saved already, and left as they are: {}\n", result.alreadyThere);
    if (result.beyondRetention > 0)
        fmt::print("Older than the {} days that are kept: {}\n", configuration.retentionDays,
                   result.beyondRetention);
    if (result.refused > 0)
        fmt::print("Not in a form that can be saved: {}\n", result.refused);
}

}  // namespace

ExitCode runHistoryExport(const HistoryExportOptions& options)
{
    const auto session = HistorySession::make();
    if (!session)
        return report(session.error());
    std::error_code ignored;
    if (!options.force && std::filesystem::exists(std::filesystem::symlink_status(options.file, ignored)))
        return report(
            {ExitCode::failure,
             fmt::format("\"{}\" exists. Nothing was written; --force replaces it.", options.file.string())});
    const Date now = (*session)->now();
    const Date begin =
        options.days ? now - Seconds{static_cast<double>(*options.days) * 86400} : historyBegin;
    const auto snapshot = (*session)->store().snapshot(begin, historyEnd);
    if (!snapshot)
        return report(commandError(snapshot.error(), "Nothing was written."));
    const auto& readings = snapshot->readings;
    if (readings.empty())
        return report(snapshot->unreadableDays.empty()
                          ? CommandError{ExitCode::failure,
                                         "There are no saved readings to export. Nothing was written."}
                          : commandError(GlucoseHistoryError::unreadableHistory, "Nothing was written."));
    if (const auto error = writeFileAtomically(options.file, exportHistory(readings, formatOf(options))))
        return report({ExitCode::failure,
                       fmt::format("\"{}\" cannot be written: {}.", options.file.string(), error.message())});
    fmt::print(
        "{}, from {} to {}, are in \"{}\".\nThis file is not encrypted: whoever can open it can read "
        "them.\n",
        counted(readings.size(), "reading"), isoText(readings.front().reading.date),
        isoText(readings.back().reading.date), options.file.string());
    if (!snapshot->unreadableDays.empty())
        return report(commandError(GlucoseHistoryError::unreadableHistory,
                                   fmt::format("Of these days readings are missing in the file: {}.",
                                               dayList(snapshot->unreadableDays))));
    return ExitCode::good;
}

ExitCode runHistoryImport(const HistoryImportOptions& options)
{
    std::optional<TimeZone> zone;
    if (options.timeZone) {
        const auto named = timeZoneNamed(*options.timeZone);
        if (!named)
            return report(named.error());
        zone = *named;
    }
    const auto session = HistorySession::make();
    if (!session)
        return report(session.error());
    const auto& configuration = (*session)->status().configuration;
    const auto file = readReadingsFile(options.file, {.now = (*session)->now(),
                                                      .zone = zone,
                                                      .dateOrder = options.dateOrder,
                                                      .source = (*session)->provider()});
    if (!file)
        return report(file.error());
    printFound(*file, zone);
    if (!(*session)->status().problem && !configuration.hasPreviouslyEnabled)
        return report({ExitCode::failure, std::string{needsEnabled}});
    const auto total = importInBatches(**session, *file, options.dryRun);
    if (!options.dryRun && total.result.added > 0)
        (*session)->announceChange();
    printTotal(total, configuration, options.dryRun);
    if (total.error)
        return report(commandError(*total.error, "The import can be repeated: nothing is added twice."));
    if (!total.unreadableDays.empty())
        return report(
            commandError(GlucoseHistoryError::unreadableHistory,
                         fmt::format("Nothing was added to these days: {}.",
                                     dayList({total.unreadableDays.begin(), total.unreadableDays.end()}))));
    return ExitCode::good;
}

}  // namespace tidewell
