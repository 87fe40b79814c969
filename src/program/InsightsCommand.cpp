#include <fmt/format.h>
#include <malloc.h>

#include <algorithm>
#include <limits>

#include "insights/InsightsTexts.h"
#include "program/Commands.h"
#include "program/HistorySession.h"
#include "program/InsightsReport.h"
#include "program/InsightsReportFiles.h"
#include "program/PictureApplication.h"
#include "program/ReadingsFile.h"

namespace tidewell {

namespace {

constexpr std::int64_t usualDays = 14;
constexpr Seconds day{24h};
/// The longest time that a reading can stand for, so how much earlier one can begin that counts in a period.
constexpr Seconds longestSample{900};
/// As many days as anybody has worn a sensor, and then some: what is listed for each day stays bounded.
constexpr Seconds longestPeriod{100 * 366 * day};

/// What the options come to, with nothing read yet.
struct Request {
    TimeZone zone;
    std::optional<Date> from{};
    std::optional<Date> to{};
    std::optional<Date> collectionStart{};
};

/// A moment, or a date for its first moment; `endOfDate`: for the one after its last.
std::expected<Date, CommandError> momentNamed(const std::string& text, TimeZone zone, bool endOfDate)
{
    constexpr std::size_t dateLength = 10;
    if (text.size() == dateLength) {
        if (const auto midnight = dateFromIso(text + "T00:00:00Z")) {
            const auto date = std::chrono::floor<std::chrono::days>(*midnight);
            return startOfLocalDate(date + std::chrono::days{endOfDate ? 1 : 0}, zone);
        }
    } else if (const auto moment = dateFromIso(text)) {
        return *moment;
    }
    return std::unexpected(CommandError{
        ExitCode::usage, fmt::format("\"{}\" is neither a date like 2026-03-01 nor a moment like "
                                     "2026-03-01T08:00:00Z.",
                                     text)});
}

std::expected<Request, CommandError> requestOf(const InsightsOptions& options)
{
    Request request{.zone = TimeZone::current()};
    if (options.timeZone) {
        const auto zone = timeZoneNamed(*options.timeZone);
        if (!zone)
            return std::unexpected(zone.error());
        request.zone = *zone;
    }
    const auto read = [&](const std::optional<std::string>& text, bool endOfDate,
                          std::optional<Date>& moment) -> std::expected<void, CommandError> {
        if (!text)
            return {};
        const auto named = momentNamed(*text, request.zone, endOfDate);
        if (!named)
            return std::unexpected(named.error());
        moment = *named;
        return {};
    };
    if (const auto good = read(options.from, false, request.from); !good)
        return std::unexpected(good.error());
    if (const auto good = read(options.to, true, request.to); !good)
        return std::unexpected(good.error());
    if (const auto good = read(options.collectionStart, false, request.collectionStart); !good)
        return std::unexpected(good.error());
    return request;
}

std::expected<DateInterval, CommandError> checkedPeriod(const DateInterval& period)
{
    if (!isUsable(period))
        return std::unexpected(CommandError{ExitCode::usage, "The period ends before it begins."});
    if (period.duration() > longestPeriod)
        return std::unexpected(CommandError{ExitCode::usage, "The period is longer than a hundred years."});
    return period;
}

GlucoseUnits unitOf(const AppSettings& settings)
{
    return glucoseUnits(settings.measurementUnit).value_or(GlucoseUnits::mgdL);
}

/// By the preferences; without readable ones, the usual unit.
GlucoseUnits chosenUnit()
{
    const auto session = CommandSession::make();
    if (!session)
        return GlucoseUnits::mgdL;
    // A keyring that is away has nothing to do with it.
    (void)(*session)->run((*session)->configuration().load());
    return unitOf((*session)->configuration().settings());
}

/// By default everything in the file, in whole days of the local clock.
std::expected<DateInterval, CommandError> periodOfFile(const InsightsOptions& options, const Request& request,
                                                       Date first, Date last)
{
    LocalClock clock{request.zone};
    const auto lastDate = clock.at(last).date;
    DateInterval period{startOfLocalDate(clock.at(first).date, request.zone),
                        startOfLocalDate(lastDate + std::chrono::days{1}, request.zone)};
    if (options.days)
        period.start = startOfLocalDate(lastDate - std::chrono::days{*options.days - 1}, request.zone);
    period.start = request.from.value_or(period.start);
    period.end = request.to.value_or(period.end);
    return checkedPeriod(period);
}

bool isIn(const DateInterval& period, Date date) { return date >= period.start && date < period.end; }

bool wantsPage(const InsightsOptions& options) { return options.pdf || options.png; }

/// The files to write, the page first.
std::vector<std::filesystem::path> filesOf(const InsightsOptions& options)
{
    std::vector<std::filesystem::path> files;
    for (const auto& page : {options.pdf, options.png})
        if (page)
            files.push_back(*page);
    if (options.withReadings && !files.empty())
        files.push_back(readingsBeside(files.front()));
    return files;
}

/// Before anything is read: whether what is asked for can be written.
std::expected<void, CommandError> checkFiles(const InsightsOptions& options)
{
    if (!wantsPage(options) && (options.paper || options.name || options.withReadings || options.force))
        return std::unexpected(
            CommandError{ExitCode::usage, "--paper, --name, --with-csv and --force go with --pdf or --png."});
    const auto files = filesOf(options);
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::error_code ignored;
        if (std::find(files.begin(), files.end(), files[i]) !=
                files.begin() + static_cast<std::ptrdiff_t>(i) ||
            (options.csv && std::filesystem::equivalent(*options.csv, files[i], ignored)))
            return std::unexpected(CommandError{
                ExitCode::usage, fmt::format("\"{}\" cannot be two things at once.", files[i].string())});
        if (const auto exists = existsAlready(files[i], options.force))
            return std::unexpected(CommandError{ExitCode::failure, *exists + "; --force replaces it."});
    }
    return {};
}

/// What a page has that lines and document have not.
struct PageParts {
    std::vector<InsightsReading> readings{};
    std::vector<StoredReading> attached{};
    std::optional<Date> collectionStartedAt{};
    Date madeAt{};
};

ExitCode writePage(const InsightsOptions& options, const InsightsReport& content, PageParts parts,
                   GlucoseUnits unit)
{
    const auto& summary = content.result.summary;
    if (summary.readingCount == 0)
        return report({ExitCode::failure, fmt::format("{}. Nothing was written.", insightsEmptyTitle)});
    const InsightsReportContent page{
        .result = content.result,
        .days = insightsDays(std::move(parts.readings), summary.interval, content.zone),
        .quality = content.quality,
        .collectionStartedAt = parts.collectionStartedAt,
        .unreadableDays = content.unreadableDays,
        .zone = content.zone,
        .unit = unit,
        .name = options.name.value_or(""),
        .madeAt = parts.madeAt,
        .version = TIDEWELL_VERSION};
    const auto paper = options.paper.value_or(usualPaper());
    std::vector<InsightsReportFile> files;
    const auto add = [&](const std::optional<std::filesystem::path>& path, InsightsReportFormat format) {
        if (path)
            files.push_back({*path, insightsReport(page, paper, format).toStdString(), options.force});
    };
    add(options.pdf, InsightsReportFormat::pdf);
    add(options.png, InsightsReportFormat::png);
    if (options.withReadings)
        files.push_back({readingsBeside(files.front().path),
                         attachedReadings(parts.attached, content.unreadableDays), options.force});
    if (const auto problem = writeReportFiles(files))
        return report({ExitCode::failure, *problem});
    // Of a document nothing else may stand on standard output.
    std::FILE* const stream = options.json ? stderr : stdout;
    for (std::size_t i = 0; i < files.size(); ++i)
        fmt::print(stream, "{} in \"{}\".\n",
                   options.withReadings && i + 1 == files.size() ? "The readings of the period are"
                                                                 : "The report is",
                   files[i].path.string());
    fmt::print(stream, "{} not encrypted: whoever can open {} can read {}.\n",
               files.size() == 1 ? "This file is" : "These files are", files.size() == 1 ? "it" : "them",
               files.size() == 1 ? "it" : "them");
    return ExitCode::good;
}

/// In the form that was asked for.
ExitCode present(const InsightsOptions& options, const InsightsReport& content, PageParts parts,
                 GlucoseUnits unit)
{
    if (options.json)
        fmt::print("{}", insightsDocument(content));
    else if (!wantsPage(options))
        fmt::print("{}", insightsLines(content, unit));
    return wantsPage(options) ? writePage(options, content, std::move(parts), unit) : ExitCode::good;
}

ExitCode reportOnFile(const InsightsOptions& options, const Request& request)
{
    asio::io_context context;
    const Date now = SystemClock{context}.now();
    const auto zone = options.timeZone ? std::optional{request.zone} : std::nullopt;
    const auto file =
        readReadingsFile(*options.csv, {.now = now, .zone = zone, .dateOrder = options.dateOrder});
    if (!file)
        return report(file.error());
    if (!file->first())
        return report({ExitCode::failure, "There is no reading in the file."});
    const auto period = periodOfFile(options, request, *file->first(), *file->last());
    if (!period)
        return report(period.error());
    InsightsCalculationInput input{.interval = *period,
                                   .collectionStartedAt = request.collectionStart.value_or(*file->first()),
                                   .zone = request.zone};
    input.readings.reserve(file->count());
    PageParts parts{.collectionStartedAt = input.collectionStartedAt, .madeAt = now};
    constexpr std::size_t batch = 10'000;
    for (std::size_t from = 0; from < file->count(); from += batch)
        for (const auto& reading : file->readings(from, batch)) {
            input.readings.push_back(insightsReading(reading, {}));
            if (options.withReadings && isIn(*period, reading.date))
                parts.attached.push_back({reading, now});
        }
    if (wantsPage(options))
        parts.readings = input.readings;
    InsightsReport content{.result = calculateInsights(std::move(input)), .zone = request.zone};
    content.quality = insightsReportQuality(content.result.summary, parts.collectionStartedAt);
    const ExitCode code = present(options, content, std::move(parts),
                                  options.json && !wantsPage(options) ? GlucoseUnits::mgdL : chosenUnit());
    if (file->refused > 0)
        fmt::print(stderr,
                   "tidewell: {} could not be read and {} left out; \"tidewell history import --dry-run\" "
                   "says why.\n",
                   counted(file->refused, "row"), file->refused == 1 ? "is" : "are");
    return code;
}

std::vector<InsightsReading> insightsReadings(const std::vector<StoredReading>& saved)
{
    std::vector<InsightsReading> readings;
    readings.reserve(saved.size());
    for (const auto& [reading, fetchedAt] : saved)
        readings.push_back(insightsReading(reading, fetchedAt));
    return readings;
}

/// Where collection stands; notes that the report is open once it is.
std::expected<InsightsCollectionStatusState, GlucoseHistoryError> collectionOf(HistorySession& session,
                                                                               Date now)
{
    const auto& configuration = session.status().configuration;
    InsightsCollectionFacts facts{.isSaving = configuration.isEnabled,
                                  .hasSavedBefore = configuration.hasPreviouslyEnabled,
                                  .hasUnlockedInsights = configuration.insightsUnlockedAt.has_value()};
    if (facts.hasUnlockedInsights || !facts.hasSavedBefore)
        return insightsCollectionStatus(facts, {});
    const auto latest = session.store().snapshot(now - initialCollection - longestSample, now);
    if (!latest)
        return std::unexpected(latest.error());
    facts.hasSavedReadings = !latest->readings.empty();
    const auto progress = insightsCollectionProgress(insightsReadings(latest->readings),
                                                     configuration.collectionStartedAt, now);
    if (progress.isComplete() && session.store().setInsightsUnlocked(now)) {
        facts.hasUnlockedInsights = true;
        session.announceChange();
    }
    return insightsCollectionStatus(facts, progress);
}

bool isOpen(const InsightsCollectionStatusState& collection)
{
    return collection.collectionStatus == InsightsCollectionStatus::ready ||
           collection.collectionStatus == InsightsCollectionStatus::preparing;
}

CommandError unavailable(GlucoseHistoryError error)
{
    auto command = commandError(error);
    if (error == GlucoseHistoryError::unreadableHistory)
        command.message = fmt::format("{}. {}", insightsUnavailableTitle, insightsUnavailableText);
    return command;
}

ExitCode reportOnHistory(const InsightsOptions& options, const Request& request)
{
    if (request.to && !request.from)
        return report({ExitCode::usage, "--to needs --from."});
    const auto session = HistorySession::make();
    if (!session)
        return report(session.error());
    const Date now = (*session)->now();
    if (request.from && *request.from >= now)
        return report({ExitCode::usage, "The period begins in the future."});
    const auto days = static_cast<double>(options.days.value_or(usualDays));
    const auto period =
        checkedPeriod({request.from.value_or(now - days * day), std::min(now, request.to.value_or(now))});
    if (!period)
        return report(period.error());
    if (const auto& problem = (*session)->status().problem)
        return report(unavailable(*problem));
    const auto collection = collectionOf(**session, now);
    if (!collection)
        return report(unavailable(collection.error()));
    if (!isOpen(*collection) && wantsPage(options)) {
        const auto readiness = insightsReadiness(*collection);
        return report(
            {ExitCode::failure, fmt::format("Nothing was written. {}: {}", readiness.title, readiness.text)});
    }
    if (!isOpen(*collection) && !options.json) {
        fmt::print("{}", insightsCollectionLines(*collection));
        return ExitCode::good;
    }
    InsightsCalculationInput input{.interval = *period, .zone = request.zone};
    const auto& configuration = (*session)->status().configuration;
    input.collectionStartedAt =
        request.collectionStart ? request.collectionStart : configuration.collectionStartedAt;
    PageParts parts{.collectionStartedAt = input.collectionStartedAt, .madeAt = now};
    std::vector<std::string> unreadableDays;
    // An account that never saved anything has no key to read with.
    if (configuration.hasPreviouslyEnabled) {
        auto saved = (*session)->store().snapshot(period->start - longestSample, period->end);
        if (!saved)
            return report(unavailable(saved.error()));
        input.readings = insightsReadings(saved->readings);
        for (const auto unreadable : saved->unreadableDays)
            unreadableDays.push_back(dayList({unreadable}));
        if (saved->readings.empty() && !unreadableDays.empty())
            return report(unavailable(GlucoseHistoryError::unreadableHistory));
        if (wantsPage(options))
            parts.readings = input.readings;
        std::erase_if(saved->readings,
                      [&](const StoredReading& one) { return !isIn(*period, one.reading.date); });
        if (options.withReadings)
            parts.attached = std::move(saved->readings);
    }
    InsightsReport content{.result = calculateInsights(std::move(input)),
                           .collection = *collection,
                           .unreadableDays = std::move(unreadableDays),
                           .zone = request.zone};
    content.quality = insightsReportQuality(content.result.summary, parts.collectionStartedAt);
    const ExitCode code = present(options, content, std::move(parts), unitOf((*session)->settings()));
    if (code == ExitCode::good && !content.unreadableDays.empty())
        return report(commandError(GlucoseHistoryError::unreadableHistory,
                                   fmt::format("Readings are missing from this report, of these days: {}.",
                                               fmt::join(content.unreadableDays, ", "))));
    return code;
}

/// A run that ends at once gives no memory back: to fetch and return the pages of lists that grow would take
/// a tenth of its time.
void keepMemory()
{
    constexpr int large = 32 * 1024 * 1024;
    (void)::mallopt(M_MMAP_THRESHOLD, large);
    (void)::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    (void)::mallopt(M_TOP_PAD, large / 2);
}

}  // namespace

ExitCode runInsights(const InsightsOptions& options)
{
    keepMemory();
    if (options.days && (options.from || options.to))
        return report({ExitCode::usage, "--days does not go with --from and --to."});
    if (options.dateOrder && !options.csv)
        return report({ExitCode::usage, "--date-order goes with --csv."});
    if (const auto good = checkFiles(options); !good)
        return report(good.error());
    const auto application = wantsPage(options) ? makePictureApplication() : nullptr;
    const auto request = requestOf(options);
    if (!request)
        return report(request.error());
    return options.csv ? reportOnFile(options, *request) : reportOnHistory(options, *request);
}

}  // namespace tidewell
