#include "program/DoctorFindings.h"

#include <QString>
#include <algorithm>
#include <array>

#include "platform/linux/StatusAreaAdvice.h"

namespace tidewell {

namespace {

void addNothingIsFetched(std::vector<AlertFinding>& findings, AlertFinding finding)
{
    constexpr std::array<std::string_view, 5> untrue{"low", "rapidFall", "high", "rapidRise", "missingData"};
    std::erase_if(findings, [&](const AlertFinding& f) {
        return f.subject == "data" || (f.severity == AlertFinding::Severity::good &&
                                       std::ranges::find(untrue, f.subject) != untrue.end());
    });
    findings.insert(findings.begin(), std::move(finding));
}

}  // namespace

AlertFinding statusAreaFinding(bool there)
{
    if (there)
        return {.subject = "statusArea", .text = "The desktop has a status area for the item."};
    return {
        .severity = AlertFinding::Severity::note,
        .subject = "statusArea",
        .text = "The desktop has no status area that shows the item; alerts come all the same.",
        .remedy = std::string{statusAreaAdvice(qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString())}};
}

AlertFinding savedHistoryFinding(const GlucoseHistoryConfiguration& configuration,
                                 const std::optional<GlucoseHistoryError>& problem)
{
    if (problem)
        return {.severity = AlertFinding::Severity::note,
                .subject = "savedHistory",
                .text = std::string{description(*problem)},
                .remedy = "See what is saved in the settings, tab Insights.",
                .command = "tidewell history status"};
    return {.subject = "savedHistory",
            .text = configuration.isEnabled ? "Readings are saved on this computer, encrypted."
                                            : "Saving readings on this computer is off."};
}

AlertFinding loginItemFinding(const LoginItemStatus& item)
{
    if (!item.isChangeable)
        return {.severity = AlertFinding::Severity::note,
                .subject = "startAtLogin",
                .text = item.problem,
                .remedy = "Remove or mend the file."};
    return {.severity = AlertFinding::Severity::note,
            .subject = "startAtLogin",
            .text = item.problem,
            .remedy = "Mend that, or switch “Start Tidewell when I log in” off in the settings, tab General.",
            .command = "tidewell settings set startAtLogin off"};
}

void replaceAccountFinding(std::vector<AlertFinding>& findings, const ErrorInfo& problem)
{
    std::erase_if(findings, [](const AlertFinding& f) { return f.subject == "account"; });
    findings.insert(findings.begin(), {.severity = AlertFinding::Severity::problem,
                                       .subject = "account",
                                       .text = problem.message.empty() ? problem.title : problem.message,
                                       .remedy = problem.remediation});
}

void addSetupFinding(std::vector<AlertFinding>& findings)
{
    addNothingIsFetched(findings,
                        {.severity = AlertFinding::Severity::problem,
                         .subject = "setup",
                         .text = "Setting up is not finished: no readings are fetched and no alert comes.",
                         .remedy = "Choose “Finish setting up…” in the menu."});
}

void addTermsFinding(std::vector<AlertFinding>& findings)
{
    addNothingIsFetched(
        findings,
        {.severity = AlertFinding::Severity::problem,
         .subject = "terms",
         .text = "The terms of use were never accepted: no readings are fetched and no alert comes.",
         .remedy = "Choose “Show terms…” in the menu and accept them."});
}

AlertFinding bookkeepingFinding(const std::string& problem)
{
    const std::size_t line = problem.find('\n');
    return {.severity = AlertFinding::Severity::caution,
            .subject = "bookkeeping",
            .text = "Tidewell cannot remember what you choose: " + problem.substr(0, line),
            .remedy = "Mend the permissions of the folder, or make room on the disk."};
}

void addBeforeGood(std::vector<AlertFinding>& findings, AlertFinding finding)
{
    const auto rank = std::min(finding.severity, AlertFinding::Severity::note);
    const auto firstBetter =
        std::ranges::find_if(findings, [rank](const AlertFinding& f) { return f.severity > rank; });
    findings.insert(firstBetter, std::move(finding));
}

}  // namespace tidewell
