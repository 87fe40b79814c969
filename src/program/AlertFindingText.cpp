#include "program/AlertFindingText.h"

#include <fmt/format.h>

#include "support/Json.h"

namespace tidewell {

namespace {

std::string_view name(AlertFinding::Severity severity)
{
    switch (severity) {
    case AlertFinding::Severity::problem: return "problem";
    case AlertFinding::Severity::caution: return "caution";
    case AlertFinding::Severity::note: return "note";
    case AlertFinding::Severity::good: return "good";
    }
    std::unreachable();
}

/// Texts of services and desktops are others' words; each finding keeps to its line.
std::string oneLine(std::string text)
{
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F')
            c = ' ';
    return text;
}

/// "Start Tidewell: tidewell".
std::string remedyLine(const AlertFinding& finding)
{
    std::string line = oneLine(finding.remedy);
    if (finding.command.empty())
        return line;
    if (line.ends_with('.'))
        line.pop_back();
    return line + (line.empty() ? "" : ": ") + oneLine(finding.command);
}

}  // namespace

std::string findingLines(const std::vector<AlertFinding>& findings)
{
    std::string lines;
    for (const AlertFinding& finding : findings) {
        const std::string remedy = remedyLine(finding);
        lines += fmt::format("{:<9}{}{}{}\n", name(finding.severity), oneLine(finding.text),
                             remedy.empty() ? "" : " — ", remedy);
    }
    return lines;
}

std::string findingsDocument(const std::vector<AlertFinding>& findings)
{
    json::array document;
    for (const auto& [severity, subject, text, remedy, command] : findings)
        document.push_back(json::object{{"severity", name(severity)},
                                        {"subject", subject},
                                        {"text", text},
                                        {"remedy", remedy},
                                        {"command", command}});
    return compactJson(document) + "\n";
}

}  // namespace tidewell
