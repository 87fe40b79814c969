#include "program/WatchBarLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <utility>

#include "sources/GlucoseReading.h"
#include "statusbar/StatusItemContent.h"
#include "support/Json.h"

namespace tidewell {

namespace {

/// What a bar shows, whatever its format.
struct BarItem {
    enum class Look { plain, red, orange, dim };
    std::string text{};
    std::string shortText{};  ///< Where there is little room: without the arrow, never without a mark.
    std::string tooltip{};
    std::string_view state{};  ///< One word for range or freshness.
    std::vector<std::string_view> classes{};
    Look look = Look::plain;
};

/// The range of a current reading; of any other, how old it is.
std::string_view stateName(const StatusItemContent& content)
{
    if (!content.freshness)
        return "none";
    switch (*content.freshness) {
    case ReadingFreshness::stale: return "stale";
    case ReadingFreshness::expired: return "expired";
    case ReadingFreshness::current: break;
    }
    switch (content.range.value_or(GlucoseRange::inRange)) {
    case GlucoseRange::low: return "low";
    case GlucoseRange::inRange: return "in-range";
    case GlucoseRange::high: return "high";
    }
    std::unreachable();
}

BarItem::Look look(const StatusItemContent& content)
{
    if (content.freshness != ReadingFreshness::current)
        return BarItem::Look::dim;
    switch (content.look) {
    case StatusButtonLook::plain: return BarItem::Look::plain;
    case StatusButtonLook::redFill: return BarItem::Look::red;
    case StatusButtonLook::orangeFill: return BarItem::Look::orange;
    }
    std::unreachable();
}

BarItem barItem(const StatusBarState& state, const AppSettings& settings, Date now, TimeZone zone)
{
    const StatusItemContent content = statusItemContent(state, settings, now, zone);
    BarItem item{
        .text = content.label.empty() ? "--" : content.label,
        .shortText = content.value.empty() ? "--" : content.value,
        .tooltip = content.tooltipTitle + "\n" + content.tooltipText,
        .state = stateName(content),
        .look = look(content),
    };
    item.classes.push_back(item.state);
    if (content.freshness == ReadingFreshness::current)
        item.classes.emplace_back("current");
    // A quick change alone colours the text too, in range or not.
    if (item.look == BarItem::Look::red)
        item.classes.emplace_back("red");
    if (item.look == BarItem::Look::orange)
        item.classes.emplace_back("orange");
    if (state.currentError) {
        item.text += " !";
        item.shortText += " !";
        item.classes.emplace_back("problem");
    }
    if (state.alertsSnoozedUntil && *state.alertsSnoozedUntil > now)
        item.classes.emplace_back("snoozed");
    return item;
}

/// Pango takes what XML takes; other control characters make it refuse the whole text.
std::string pangoEscaped(std::string_view text)
{
    std::string escaped;
    for (const char character : text) {
        switch (character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        case '\'': escaped += "&#39;"; break;
        case '\n': escaped += '\n'; break;
        default: escaped += std::iscntrl(static_cast<unsigned char>(character)) ? ' ' : character;
        }
    }
    return escaped;
}

/// One line, with `separator` between `mark` and whatever would make a tag of it.
std::string tagFree(std::string_view text, char mark, char separator)
{
    std::string safe;
    for (const char character : text) {
        safe += std::iscntrl(static_cast<unsigned char>(character)) ? ' ' : character;
        if (character == mark)
            safe += separator;
    }
    return safe;
}

std::string waybarLine(const BarItem& item)
{
    json::array classes;
    for (const std::string_view name : item.classes)
        classes.emplace_back(name);
    return compactJson(json::object{
        {"text", pangoEscaped(item.text)},
        {"alt", item.state},
        {"tooltip", pangoEscaped(item.tooltip)},
        {"class", std::move(classes)},
    });
}

std::string i3blocksLine(const BarItem& item)
{
    json::object object{{"full_text", item.text}, {"short_text", item.shortText}};
    // The bar's background is unknown: each has a contrast of three or more with both black and white.
    switch (item.look) {
    case BarItem::Look::plain: break;
    case BarItem::Look::red: object["color"] = "#FF3B30"; break;
    case BarItem::Look::orange: object["color"] = "#D97706"; break;
    case BarItem::Look::dim: object["color"] = "#8A8A8E"; break;
    }
    return compactJson(object);
}

std::string polybarLine(const BarItem& item)
{
    // A tag begins with "%{".
    const std::string text = tagFree(item.text, '%', ' ');
    switch (item.look) {
    case BarItem::Look::plain: return text;
    case BarItem::Look::red: return "%{B#C62828}%{F#FFFFFF} " + text + " %{F-}%{B-}";
    case BarItem::Look::orange: return "%{B#FFE64D}%{F#5C3D00} " + text + " %{F-}%{B-}";
    case BarItem::Look::dim: return "%{F#8A8A8E}" + text + "%{F-}";
    }
    std::unreachable();
}

std::string tmuxLine(const BarItem& item)
{
    // "##" is one "#" that begins nothing.
    const std::string text = tagFree(item.text, '#', '#');
    switch (item.look) {
    case BarItem::Look::plain: return text;
    case BarItem::Look::red: return "#[fg=white,bg=red,bold] " + text + " #[default]";
    case BarItem::Look::orange: return "#[fg=black,bg=yellow] " + text + " #[default]";
    case BarItem::Look::dim: return "#[dim]" + text + "#[default]";
    }
    std::unreachable();
}

}  // namespace

bool isBarFormat(WatchFormat format) { return format != WatchFormat::text && format != WatchFormat::json; }

WatchLine watchBarLine(WatchFormat format, const StatusBarState& state, const AppSettings& settings, Date now,
                       TimeZone zone)
{
    const BarItem item = barItem(state, settings, now, zone);
    std::string line;
    switch (format) {
    case WatchFormat::waybar: line = waybarLine(item); break;
    case WatchFormat::i3blocks: line = i3blocksLine(item); break;
    case WatchFormat::polybar: line = polybarLine(item); break;
    case WatchFormat::tmux: line = tmuxLine(item); break;
    case WatchFormat::text:
    case WatchFormat::json: std::abort();  // No formats of a bar: the caller's bug.
    }
    return {.text = line, .content = line};
}

WatchLine watchBarEndLine(WatchFormat format)
{
    StatusBarState state;
    state.currentError = ErrorInfo{.title = "Tidewell has ended."};
    return watchBarLine(format, state, {}, {}, TimeZone::utc());
}

}  // namespace tidewell
