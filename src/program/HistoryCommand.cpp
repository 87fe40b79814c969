#include <fmt/format.h>

#include <algorithm>

#include "history/HistoryRetention.h"
#include "program/Commands.h"
#include "program/HistorySession.h"
#include "support/Json.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

/// What a person agrees to by `history enable`. A change of its meaning raises currentConsentVersion.
constexpr std::string_view disclosure =
    "Saved history\n"
    "  What       Each glucose reading that Tidewell fetches from now on for this account and person: "
    "value,\n"
    "             trend and time. Nothing from before.\n"
    "  Where      On this computer only, encrypted. Nothing is ever uploaded.\n"
    "  Key        {}\n"
    "  How long   {} days; older readings are removed. \"tidewell history retention\" with 30 or 90 changes "
    "that.\n"
    "  To stop    \"tidewell history disable\"; what is saved stays.\n"
    "  To delete  \"tidewell history delete\"; it removes the readings, and their key last.\n";

std::string dateText(const std::optional<Date>& date) { return date ? isoText(*date) : "not yet"; }

json::value jsonDate(const std::optional<Date>& date)
{
    return date ? json::value(isoText(*date)) : json::value(nullptr);
}

/// "unavailableKey" and so on.
std::string_view nameOf(GlucoseHistoryError error)
{
    switch (error) {
    case GlucoseHistoryError::invalidConfiguration: return "invalidConfiguration";
    case GlucoseHistoryError::invalidRetention: return "invalidRetention";
    case GlucoseHistoryError::accountRequired: return "accountRequired";
    case GlucoseHistoryError::unavailableKey: return "unavailableKey";
    case GlucoseHistoryError::keychainFailure: return "keychainFailure";
    case GlucoseHistoryError::unreadableHistory: return "unreadableHistory";
    case GlucoseHistoryError::storageFailure: return "storageFailure";
    case GlucoseHistoryError::deletionIncomplete: return "deletionIncomplete";
    }
    std::unreachable();
}

/// What is wrong: its name, and how the command ends.
struct HistoryFault {
    std::string_view name;
    CommandError error;
};

HistoryFault faultOf(GlucoseHistoryError error) { return {nameOf(error), commandError(error)}; }

struct HistoryFindings {
    GlucoseHistoryConfiguration configuration{};
    bool hasAccount = true;
    std::size_t otherHistories = 0;
    std::optional<GlucoseHistorySnapshot> snapshot{};
    std::optional<HistoryFault> problem{};
};

/// Looks at everything that is saved. An account that never saved anything needs no key.
HistoryFindings findingsOf(HistorySession& session)
{
    HistoryFindings findings{.configuration = session.status().configuration,
                             .otherHistories = session.otherHistories()};
    if (const auto& missing = session.missingAccount()) {
        findings.hasAccount = false;
        findings.problem = HistoryFault{missing->code == ExitCode::signInNeeded
                                            ? nameOf(GlucoseHistoryError::accountRequired)
                                            : "accountUnreadable",
                                        *missing};
        return findings;
    }
    if (const auto problem = session.status().problem)
        findings.problem = faultOf(*problem);
    if (!findings.configuration.hasPreviouslyEnabled)
        return findings;
    auto snapshot = session.store().snapshot(historyBegin, historyEnd);
    if (snapshot) {
        if (!snapshot->unreadableDays.empty() && !findings.problem)
            findings.problem = faultOf(GlucoseHistoryError::unreadableHistory);
        findings.snapshot = std::move(*snapshot);
    } else if (!findings.problem) {
        findings.problem = faultOf(snapshot.error());
    }
    return findings;
}

json::object jsonOf(const HistoryFindings& findings, const std::filesystem::path& root)
{
    const auto& configuration = findings.configuration;
    json::object object{{"isEnabled", configuration.isEnabled},
                        {"retentionDays", configuration.retentionDays},
                        {"consentVersion", configuration.consentVersion},
                        {"collectionStartedAt", jsonDate(configuration.collectionStartedAt)},
                        {"insightsUnlockedAt", jsonDate(configuration.insightsUnlockedAt)},
                        {"collectionCutoff", jsonDate(configuration.collectionCutoff)},
                        {"pendingDeletion", configuration.pendingDeletion},
                        {"hasPreviouslyEnabled", configuration.hasPreviouslyEnabled},
                        {"collectionIntervalStart", jsonDate(configuration.collectionIntervalStart)}};
    std::optional<Date> first;
    std::optional<Date> last;
    json::array unreadable;
    if (findings.snapshot) {
        if (const auto& readings = findings.snapshot->readings; !readings.empty()) {
            first = readings.front().reading.date;
            last = readings.back().reading.date;
        }
        for (const auto day : findings.snapshot->unreadableDays)
            unreadable.emplace_back(dayList({day}));
    }
    object["readingCount"] = findings.snapshot ? json::value(findings.snapshot->readings.size())
                             : configuration.hasPreviouslyEnabled || !findings.hasAccount
                                 ? json::value(nullptr)
                                 : json::value(0);
    object["firstReadingAt"] = jsonDate(first);
    object["lastReadingAt"] = jsonDate(last);
    object["unreadableDays"] = std::move(unreadable);
    object["otherHistories"] = findings.otherHistories;
    object["folder"] = root.string();
    object["problem"] = findings.problem
                            ? json::value(json::object{{"case", findings.problem->name},
                                                       {"text", findings.problem->error.message}})
                            : json::value(nullptr);
    return object;
}

void printOthers(const HistoryFindings& findings, const std::filesystem::path& root)
{
    if (findings.otherHistories == 0)
        return;
    fmt::print("Other accounts or persons with saved readings: {}, in {}\n", findings.otherHistories,
               root.string());
    fmt::print("To delete the readings of all of them: tidewell history delete --all\n");
}

void printFindings(const HistoryFindings& findings, const HistorySession& session)
{
    const auto& configuration = findings.configuration;
    if (!findings.hasAccount)
        return;
    fmt::print("Saving: {}\n", configuration.isEnabled              ? "on"
                               : configuration.hasPreviouslyEnabled ? "off"
                                                                    : "off, and never was on");
    if (!configuration.hasPreviouslyEnabled) {
        fmt::print("To save readings on this computer: tidewell history enable\n");
        return;
    }
    fmt::print("Kept for: {} days\nCollected since: {}\n", configuration.retentionDays,
               dateText(configuration.collectionStartedAt));
    if (findings.snapshot) {
        const auto& readings = findings.snapshot->readings;
        fmt::print("Saved: {}", counted(readings.size(), "reading"));
        if (!readings.empty())
            fmt::print(", from {} to {}", isoText(readings.front().reading.date),
                       isoText(readings.back().reading.date));
        fmt::print("\n");
        if (!findings.snapshot->unreadableDays.empty())
            fmt::print("Unreadable days: {}\n", dayList(findings.snapshot->unreadableDays));
    }
    fmt::print("Where: {}, encrypted; the key is {}\n", session.root().string(), session.keyPlace());
}

/// Where the key is, and what that is worth.
std::string keySentence(const HistorySession& session)
{
    return fmt::format(
        "{}.{}", session.keyPlace(),
        session.hasKeyring() ? "" : "\n             Whoever can read your files can read the readings too.");
}

/// The newest day that has anything saved.
std::optional<std::int64_t> newestDay(const GlucoseHistorySnapshot& saved)
{
    std::optional<std::int64_t> newest;
    if (!saved.readings.empty())
        newest = historyDayIndex(saved.readings.back().reading.date);
    if (!saved.unreadableDays.empty())
        newest = std::max(newest, std::optional{saved.unreadableDays.back()});
    return newest;
}

/// Asks, unless `yes`, before a retention of `days` deletes readings that would be kept now. Why that is not
/// to be done; else empty.
std::optional<CommandError> refusedShortening(HistorySession& session, std::int64_t days, bool yes)
{
    const auto& present = session.status().configuration;
    if (yes || !present.hasPreviouslyEnabled || days >= present.retentionDays)
        return std::nullopt;
    const auto saved = session.store().snapshot(historyBegin, historyEnd);
    std::string what = "Readings";
    if (saved) {
        const Date oldest = oldestKeptReading(days, session.now(), newestDay(*saved));
        const auto older = std::ranges::count_if(
            saved->readings, [oldest](const StoredReading& each) { return each.reading.date < oldest; });
        const bool damaged = std::ranges::any_of(
            saved->unreadableDays, [day = historyDayIndex(oldest)](std::int64_t each) { return each < day; });
        if (older == 0 && !damaged)
            return std::nullopt;
        what = counted(static_cast<std::size_t>(older), "reading");
        if (damaged)
            what += ", and days that cannot be read,";
    }
    const auto answer =
        askedForYes(fmt::format("{} older than {} days will be deleted. Go on?", what, days), "--yes");
    if (!answer)
        return answer.error();
    if (!*answer)
        return CommandError{ExitCode::failure, "Nothing was changed."};
    return std::nullopt;
}

}  // namespace

ExitCode runHistoryStatus(bool asJson)
{
    const auto session = HistorySession::makeForEveryAccount();
    if (!session)
        return report(session.error());
    const auto findings = findingsOf(**session);
    if (asJson)
        fmt::print("{}", prettyJson(jsonOf(findings, (*session)->root())));
    if (!asJson) {
        printFindings(findings, **session);
        printOthers(findings, (*session)->root());
    }
    return findings.problem ? report(findings.problem->error) : ExitCode::good;
}

ExitCode runHistoryEnable(const HistoryEnableOptions& options)
{
    const auto session = HistorySession::make();
    if (!session)
        return report(session.error());
    auto& store = (*session)->store();
    const auto& present = (*session)->status().configuration;
    const std::int64_t retention = options.retentionDays.value_or(present.retentionDays);
    const bool accepted = present.isEnabled && present.consentVersion >= currentConsentVersion;
    if (!accepted) {
        fmt::print(fmt::runtime(disclosure), keySentence(**session), retention);
        if (!options.accept) {
            const auto yes = askedForYes("Save readings on this computer?", "--accept");
            if (!yes)
                return report(yes.error());
            if (!*yes)
                return report({ExitCode::failure, "Nothing was changed."});
        }
    }
    if (const auto refused = refusedShortening(**session, retention, options.yes))
        return report(*refused);
    const auto enabled = store.enable(retention, currentConsentVersion, (*session)->now());
    if (!enabled)
        return report(commandError(enabled.error()));
    const auto told = (*session)->announceChange();
    fmt::print("Saving is on. Readings are kept for {} days.\n", enabled->configuration.retentionDays);
    if (told == SingleInstance::SendResult::notRunning)
        fmt::print("Tidewell is not running; it saves while it runs, and so does \"tidewell watch\".\n");
    return ExitCode::good;
}

ExitCode runHistoryDisable()
{
    const auto session = HistorySession::make();
    if (!session)
        return report(session.error());
    const auto paused = (*session)->store().pause();
    if (!paused)
        return report(commandError(paused.error()));
    (*session)->announceChange();
    fmt::print(
        "Saving is off. What is saved stays until it is older than {} days, or until \"tidewell "
        "history delete\".\n",
        paused->configuration.retentionDays);
    return ExitCode::good;
}

ExitCode runHistoryRetention(std::int64_t days, bool yes)
{
    const auto session = HistorySession::make();
    if (!session)
        return report(session.error());
    if (const auto refused = refusedShortening(**session, days, yes))
        return report(*refused);
    const auto set = (*session)->store().setRetention(days, (*session)->now());
    if (!set)
        return report(commandError(set.error()));
    (*session)->announceChange();
    fmt::print("Readings are kept for {} days.\n", set->configuration.retentionDays);
    return ExitCode::good;
}

ExitCode runHistoryDelete(bool all, bool yes)
{
    const auto session = all ? HistorySession::makeForEveryAccount() : HistorySession::make();
    if (!session)
        return report(session.error());
    if (!yes) {
        const auto answer =
            askedForYes(all ? "Delete the saved readings of every account and person, with their keys?"
                            : "Delete all saved readings of this account and person, with their key?",
                        "--yes");
        if (!answer)
            return report(answer.error());
        if (!*answer)
            return report({ExitCode::failure, "Nothing was changed."});
    }
    auto& store = (*session)->store();
    const auto deleted = all ? store.deleteAll((*session)->now()) : store.deleteAttached((*session)->now());
    (*session)->announceChange();
    if (!deleted)
        return report(commandError(deleted.error()));
    fmt::print("The saved readings are deleted, and saving is off.\n");
    return ExitCode::good;
}

}  // namespace tidewell
