#include "program/DoctorFindings.h"

#include <QString>
#include <algorithm>

#include "platform/linux/StatusAreaAdvice.h"

namespace tidewell {

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

void addBeforeGood(std::vector<AlertFinding>& findings, AlertFinding finding)
{
    const auto firstGood = std::ranges::find_if(
        findings, [](const AlertFinding& f) { return f.severity == AlertFinding::Severity::good; });
    findings.insert(firstGood, std::move(finding));
}

}  // namespace tidewell
