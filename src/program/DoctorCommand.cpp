#include <fmt/format.h>

#include <algorithm>

#include "app/AccountCheck.h"
#include "app/TermsAgreement.h"
#include "platform/linux/AlertProbe.h"
#include "platform/linux/AutostartFile.h"
#include "platform/linux/DesktopHelper.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "program/AlertFindingText.h"
#include "program/CommandSession.h"
#include "program/Commands.h"
#include "program/DoctorFindings.h"
#include "program/EventLoopRun.h"
#include "program/HistoryStorage.h"
#include "program/Process.h"
#include "support/OnExecutor.h"

namespace tidewell {

namespace {

/// A sign-in and a request take a second or two; who asks what is wrong should not wait for a minute.
constexpr std::chrono::milliseconds serviceDeadline{30'000};
constexpr std::chrono::milliseconds engineGrace{500};

/// Replaces what the facts say of the account: its password or its document cannot be read.
void addConfigurationProblem(std::vector<AlertFinding>& findings, const ConfigurationProblem& problem)
{
    std::erase_if(findings, [](const AlertFinding& finding) {
        return finding.subject == "account" || finding.subject == "data";
    });
    const bool keyring = problem.error.kind == ConfigurationError::Kind::keychainError;
    findings.insert(findings.begin(),
                    {.severity = AlertFinding::Severity::problem,
                     .subject = "account",
                     .text = problem.message,
                     .remedy = keyring ? "Unlock the keyring, or sign in again from the menu."
                                       : "Mend the file, or sign in again from the menu.",
                     .command = "tidewell account set"});
}

/// Looks whether what is saved of the account can be read. Blocks.
AlertFinding savedHistoryFinding(CommandSession& session, const GlucoseAccountConfiguration& account)
{
    const auto store = makeHistoryStore(session.environment());
    const auto attached = store->attach(HistoryScopeID::of(account));
    const auto status = attached ? *attached : store->status();
    std::optional<GlucoseHistoryError> problem = attached ? status.problem : attached.error();
    if (!problem && status.configuration.hasPreviouslyEnabled) {
        const Date now = session.clock().now();
        const auto day = store->snapshot(now - Seconds{24.0 * 3600}, now);
        if (!day)
            problem = day.error();
        else if (!day->unreadableDays.empty())
            problem = GlucoseHistoryError::unreadableHistory;
    }
    return savedHistoryFinding(status.configuration, problem);
}

asio::awaitable<AccountCheck> askService(CommandSession& session)
{
    auto client = makeServiceClient(session.clientParts(), *session.configuration().account());
    const auto engine = session.engine().executor();
    auto check = co_await within(session.clock(), serviceDeadline, checkAccount(engine, std::move(client)));
    if (check)
        co_return std::move(*check);
    co_return AccountCheck{.result = AccountCheck::Result::unreachable,
                           .error = GlucoseAPIError{.kind = GlucoseAPIError::Kind::transport}};
}

asio::awaitable<AlertHealthFacts> collectFacts(CommandSession& session, AlertProbe& probe)
{
    using namespace asio::experimental::awaitable_operators;
    const auto& account = session.configuration().account();
    AlertHealthFacts facts{.zone = TimeZone::current(),
                           .settings = session.configuration().settings(),
                           .snoozedUntil = session.defaults().date(alertsSnoozedUntilKey),
                           .hasAccount = account.has_value()};
    if (account && !account->password.empty()) {
        auto [path, check] = co_await (probe.look() && askService(session));
        facts.path = std::move(path);
        facts.serviceError = std::move(check.error);
        if (check.newest)
            facts.newestReading = check.newest->date;
    } else {
        facts.path = co_await probe.look();
    }
    facts.now = session.clock().now();
    // The program takes no snooze that is longer than it can be.
    if (facts.snoozedUntil && *facts.snoozedUntil > facts.now + longestSnooze)
        facts.snoozedUntil.reset();
    co_return facts;
}

}  // namespace

ExitCode runDoctor(bool asJson)
{
    QCoreApplication application{processArguments().count, processArguments().values};
    QtMainLoop loop;  // Outlives the engine, whose timers know it.
    const auto made = CommandSession::make();
    if (!made)
        return report(made.error());
    CommandSession& session = **made;
    (void)session.run(session.configuration().load());
    const auto answer = session.announceChange(InstanceWord::areYouThere);

    AlertProbe probe{loop.executor(), session.clock()};
    AlertHealthFacts facts = runInEventLoop(loop, collectFacts(session, probe));
    facts.running = answer != SingleInstance::SendResult::notRunning;
    auto findings = alertFindings(facts);
    const auto& account = session.configuration().account();
    if (const auto& problem = session.configuration().problem();
        problem && (!account || account->password.empty()))
        addConfigurationProblem(findings, *problem);
    else if (account && account->password.empty())
        addConfigurationProblem(findings, {.error = {.kind = ConfigurationError::Kind::keychainError},
                                           .message = "The password is not in the keyring."});
    if (answer == SingleInstance::SendResult::noAnswer) {
        std::erase_if(findings, [](const AlertFinding& f) { return f.subject == "tidewell"; });
        findings.insert(findings.begin(), {.severity = AlertFinding::Severity::problem,
                                           .subject = "tidewell",
                                           .text = "Tidewell is running but does not answer.",
                                           .remedy = "End it and start it again."});
    }
    // Only the application asks for terms: who uses nothing but a terminal has never seen them.
    // Of bookkeeping that cannot be read, nobody knows.
    if (account && !session.defaults().load()) {
        if (!session.defaults().boolean(onboardingCompletedKey))
            addSetupFinding(findings);
        else if (facts.running && !hasAcceptedTerms(session.defaults()))
            addTermsFinding(findings);
    }
    const auto defaultsFile = session.environment().defaults();
    if (const auto error = session.defaults().trySave())
        addBeforeGood(findings, bookkeepingFinding(bookkeepingNotSaved(defaultsFile, error)));
    const DisplayProbe display;
    std::optional<bool> statusArea;
    if (display.answers())
        statusArea = runInEventLoop(loop, statusAreaFromHelper(desktopHelperProgram, statusAreaDeadline));
    if (statusArea)
        addBeforeGood(findings, statusAreaFinding(*statusArea));
    if (account)
        addBeforeGood(findings, savedHistoryFinding(session, *account));
    if (const auto item = AutostartFile{AutostartFile::standardPlaces()}.status(); !item.problem.empty())
        addBeforeGood(findings, loginItemFinding(item));
    fmt::print("{}", asJson ? findingsDocument(findings) : findingLines(findings));
    const bool well = std::ranges::all_of(
        findings, [](const AlertFinding& f) { return f.severity >= AlertFinding::Severity::note; });
    const ExitCode code = well ? ExitCode::good : ExitCode::failure;
    endProcessUnless(session.engine().stop(engineGrace), code);
    return code;
}

}  // namespace tidewell
