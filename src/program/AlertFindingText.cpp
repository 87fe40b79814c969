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

}  // namespace

std::string findingLines(const std::vector<AlertFinding>& findings)
{
    std::string lines;
    for (const auto& [severity, subject, text, remedy] : findings)
        lines += fmt::format("{:<9}{}{}{}\n", name(severity), oneLine(text), remedy.empty() ? "" : " — ",
                             oneLine(remedy));
    return lines;
}

std::string findingsDocument(const std::vector<AlertFinding>& findings)
{
    json::array document;
    for (const auto& [severity, subject, text, remedy] : findings)
        document.push_back(json::object{
            {"severity", name(severity)}, {"subject", subject}, {"text", text}, {"remedy", remedy}});
    return compactJson(document) + "\n";
}

}  // namespace tidewell
