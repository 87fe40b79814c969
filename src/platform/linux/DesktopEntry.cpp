#include "platform/linux/DesktopEntry.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <utility>

namespace tidewell {

namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

constexpr std::array<std::pair<char, char>, 4> escapes{{{'\\', '\\'}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}}};

std::string escaped(std::string_view value)
{
    std::string text;
    for (const char c : value) {
        if (const auto escape = std::ranges::find(escapes, c, &std::pair<char, char>::second);
            escape != escapes.end())
            text += {'\\', escape->first};
        else if (c == ' ' && text.empty())
            text += "\\s";
        else
            text += c;
    }
    return text;
}

std::string unescaped(std::string_view text)
{
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            value += text[i];
            continue;
        }
        const char c = text[++i];
        if (const auto escape = std::ranges::find(escapes, c, &std::pair<char, char>::first);
            escape != escapes.end())
            value += escape->second;
        else if (c == 's')
            value += ' ';
        else
            (value += '\\') += c;
    }
    return value;
}

/// What has a meaning to a shell or to who reads Exec; in quotes, the last four still have.
constexpr std::string_view reserved = " \t\n'><~|&;*?#()\"`$\\";
constexpr std::string_view escapedInQuotes = "\"`$\\";

std::string quotedArgument(std::string_view argument)
{
    std::string text;
    for (const char c : argument) {
        if (escapedInQuotes.contains(c))
            text += '\\';
        text += c;
        if (c == '%')
            text += c;
    }
    return argument.empty() || argument.find_first_of(reserved) != std::string_view::npos ? '"' + text + '"'
                                                                                          : text;
}

/// Without its field codes: "%%" is a percent sign, and nothing else is passed to us.
std::string withoutFieldCodes(std::string_view argument)
{
    std::string text;
    for (std::size_t i = 0; i < argument.size(); ++i) {
        if (argument[i] != '%')
            text += argument[i];
        else if (++i < argument.size() && argument[i] == '%')
            text += '%';
    }
    return text;
}

}  // namespace

std::string_view DesktopEntry::Line::key() const
{
    const std::size_t equals = text.find('=');
    const std::string_view start = trimmed(text);
    if (!inEntry || equals == std::string::npos || start.starts_with('#') || start.starts_with('['))
        return {};
    return trimmed(std::string_view{text}.substr(0, equals));
}

std::optional<DesktopEntry> DesktopEntry::parse(std::string_view text)
{
    if (text.contains('\0'))
        return std::nullopt;
    DesktopEntry entry;
    bool found = false;
    bool inEntry = false;
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    for (const auto range : std::views::split(text, '\n')) {
        const std::string_view line{range};
        if (trimmed(line).starts_with('[')) {
            inEntry = trimmed(line) == "[Desktop Entry]";
            found = found || inEntry;
        }
        entry.lines_.push_back({std::string{line}, inEntry});
    }
    return found ? std::optional{std::move(entry)} : std::nullopt;
}

const DesktopEntry::Line* DesktopEntry::find(std::string_view key) const
{
    const auto last = std::ranges::find(lines_ | std::views::reverse, key, &Line::key);
    return last == lines_.rend() ? nullptr : &*last;
}

std::optional<std::string> DesktopEntry::value(std::string_view key) const
{
    const Line* const line = find(key);
    if (!line)
        return std::nullopt;
    return unescaped(trimmed(std::string_view{line->text}.substr(line->text.find('=') + 1)));
}

bool DesktopEntry::flag(std::string_view key, bool otherwise) const
{
    const auto text = value(key);
    if (text == "true" || text == "1")
        return true;
    return text == "false" || text == "0" ? false : otherwise;
}

std::vector<std::string> DesktopEntry::list(std::string_view key) const
{
    std::vector<std::string> parts;
    for (const auto range : std::views::split(value(key).value_or(""), ';'))
        if (const std::string_view part = trimmed(std::string_view{range}); !part.empty())
            parts.emplace_back(part);
    return parts;
}

void DesktopEntry::setRaw(std::string_view key, const std::string& value)
{
    const std::string text = std::string{key} + '=' + value;
    if (const Line* const line = find(key)) {
        lines_[static_cast<std::size_t>(line - lines_.data())].text = text;
        return;
    }
    // Behind the last line of the group that says something.
    const auto last = std::ranges::find_if(lines_ | std::views::reverse, [](const Line& line) {
        return line.inEntry && !trimmed(line.text).empty();
    });
    lines_.insert(last.base(), {text, true});
}

void DesktopEntry::set(std::string_view key, std::string_view value) { setRaw(key, escaped(value)); }

void DesktopEntry::set(std::string_view key, const std::vector<std::string>& list)
{
    if (list.empty()) {
        remove(key);
        return;
    }
    std::string text;
    for (const std::string& part : list)
        text += escaped(part) + ';';
    setRaw(key, text);
}

void DesktopEntry::remove(std::string_view key)
{
    std::erase_if(lines_, [key](const Line& line) { return line.key() == key; });
}

std::string DesktopEntry::text() const
{
    std::string text;
    for (const Line& line : lines_)
        (text += line.text) += '\n';
    return text;
}

std::string execValue(std::span<const std::string> arguments)
{
    std::string value;
    for (const std::string& argument : arguments) {
        if (!value.empty())
            value += ' ';
        value += quotedArgument(argument);
    }
    return value;
}

std::vector<std::string> execArguments(std::string_view value)
{
    std::vector<std::string> arguments;
    std::optional<std::string> argument;
    char quote = 0;  ///< The one that is open. Some desktops take single ones too.
    const auto finish = [&](bool wasQuoted) {
        // A field code that stands alone is an argument only when there is something to put there.
        if (argument && (wasQuoted || !argument->starts_with('%') || argument->starts_with("%%")))
            arguments.push_back(withoutFieldCodes(*argument));
        argument.reset();
    };
    bool wasQuoted = false;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (quote == 0 && (c == ' ' || c == '\t')) {
            finish(std::exchange(wasQuoted, false));
            continue;
        }
        if (!argument)
            argument.emplace();
        if (c == quote || (quote == 0 && (c == '"' || c == '\''))) {
            quote = quote == 0 ? c : '\0';
            wasQuoted = true;
        } else if (c == '\\' && quote != '\'' && i + 1 < value.size()) {
            *argument += value[++i];
        } else {
            *argument += c;
        }
    }
    if (quote != 0)
        return {};
    finish(wasQuoted);
    return arguments;
}

}  // namespace tidewell
