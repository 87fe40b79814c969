#include "platform/linux/StatusAreaAdvice.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <ranges>
#include <string>
#include <utility>

namespace tidewell {
namespace {

/// Desktops by the name that they give themselves, in small letters. The first that is named decides: those
/// that are built on GNOME come before it.
constexpr auto advices = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"budgie", "Add the applet \"System Tray\" to the panel."},
    {"pantheon", "Install an indicator for AppIndicators, such as wingpanel-indicator-ayatana."},
    {"gnome", "Install and switch on the GNOME extension \"AppIndicator and KStatusNotifierItem Support\"."},
    {"kde", "Add the widget \"System Tray\" to a panel."},
    {"xfce", "Add the item \"Status Tray Plugin\" to the panel."},
    {"lxqt", "Add the widget \"Status Notifier\" to the panel."},
    {"lxde", "Add the applet \"System Tray\" to the panel."},
    {"mate", "Add the applet \"Indicator Applet\" or \"Notification Area\" to the panel."},
    {"cinnamon", "Add the applet \"XApp Status Applet\" to the panel."},
    {"x-cinnamon", "Add the applet \"XApp Status Applet\" to the panel."},
    {"sway", "Use a bar with a tray, such as waybar, or let your bar run \"tidewell watch\"."},
    {"hyprland", "Use a bar with a tray, such as waybar, or let your bar run \"tidewell watch\"."},
    {"i3", "Switch on the tray of i3bar, or let your bar run \"tidewell watch\"."},
});
constexpr std::string_view otherwise =
    "Use a panel or bar with a tray, or let your bar run \"tidewell watch\".";

bool names(std::string_view list, std::string_view desktop)
{
    return std::ranges::any_of(std::views::split(list, ':'), [desktop](const auto& part) {
        return std::ranges::equal(part, desktop, {},
                                  [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    });
}

}  // namespace

std::string_view statusAreaAdvice(std::string_view currentDesktop)
{
    const auto found = std::ranges::find_if(
        advices, [currentDesktop](const auto& advice) { return names(currentDesktop, advice.first); });
    return found == advices.end() ? otherwise : found->second;
}

}  // namespace tidewell
