#include <fmt/format.h>

#include <algorithm>

#include "insights/InsightsTexts.h"
#include "program/Commands.h"
#include "program/HistorySession.h"
#include "program/InsightsReport.h"
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

ExitCode reportOnFile(const InsightsOptions& options, const Request& request)
{
    asio::io_context context;
    const auto zone = options.timeZone ? std::optional{request.zone} : std::nullopt;
    const auto file = readReadingsFile(
        *options.csv, {.now = SystemClock{context}.now(), .zone = zone, .dateOrder = options.dateOrder});
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
    constexpr std::size_t batch = 10'000;
    for (std::size_t from = 0; from < file->count(); from += batch)
        for (const auto& reading : file->readings(from, batch))
            input.readings.push_back(insightsReading(reading, {}));
    const auto collectionStartedAt = input.collectionStartedAt;
    InsightsReport content{.result = calculateInsights(std::move(input)), .zone = request.zone};
    content.quality = insightsReportQuality(content.result.summary, collectionStartedAt);
    fmt::print("{}", options.json ? insightsDocument(content) : insightsLines(content, chosenUnit()));
    if (file->refused > 0)
        fmt::print(stderr,
                   "tidewell: {} could not be read and {} left out; \"tidewell history import --dry-run\" "
                   "says why.\n",
                   counted(file->refused, "row"), file->refused == 1 ? "is" : "are");
    return ExitCode::good;
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
    if (!options.json && !isOpen(*collection)) {
        fmt::print("{}", insightsCollectionLines(*collection));
        return ExitCode::good;
    }
    InsightsCalculationInput input{.interval = *period, .zone = request.zone};
    const auto& configuration = (*session)->status().configuration;
    input.collectionStartedAt =
        request.collectionStart ? request.collectionStart : configuration.collectionStartedAt;
    std::vector<std::string> unreadableDays;
    // An account that never saved anything has no key to read with.
    if (configuration.hasPreviouslyEnabled) {
        const auto saved = (*session)->store().snapshot(period->start - longestSample, period->end);
        if (!saved)
            return report(unavailable(saved.error()));
        input.readings = insightsReadings(saved->readings);
        for (const auto unreadable : saved->unreadableDays)
            unreadableDays.push_back(dayList({unreadable}));
        if (saved->readings.empty() && !unreadableDays.empty())
            return report(unavailable(GlucoseHistoryError::unreadableHistory));
    }
    const auto collectionStartedAt = input.collectionStartedAt;
    InsightsReport content{.result = calculateInsights(std::move(input)),
                           .collection = *collection,
                           .unreadableDays = std::move(unreadableDays),
                           .zone = request.zone};
    content.quality = insightsReportQuality(content.result.summary, collectionStartedAt);
    fmt::print("{}", options.json ? insightsDocument(content)
                                  : insightsLines(content, unitOf((*session)->settings())));
    if (!content.unreadableDays.empty())
        return report(commandError(GlucoseHistoryError::unreadableHistory,
                                   fmt::format("Readings are missing from this report, of these days: {}.",
                                               fmt::join(content.unreadableDays, ", "))));
    return ExitCode::good;
}

}  // namespace

ExitCode runInsights(const InsightsOptions& options)
{
    if (options.days && (options.from || options.to))
        return report({ExitCode::usage, "--days does not go with --from and --to."});
    if (options.dateOrder && !options.csv)
        return report({ExitCode::usage, "--date-order goes with --csv."});
    const auto request = requestOf(options);
    if (!request)
        return report(request.error());
    return options.csv ? reportOnFile(options, *request) : reportOnHistory(options, *request);
}

}  // namespace tidewell
