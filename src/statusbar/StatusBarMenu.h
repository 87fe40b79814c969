#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/AppConfiguration.h"
#include "statusbar/GlucoseGraphLayout.h"
#include "statusbar/StatusBarViewModel.h"
#include "support/TimeText.h"

namespace tidewell {

/// What a menu item does when it is chosen.
enum class MenuCommand {
    none,
    showGraph,     ///< Opens our own menu, which has the picture that a panel's menu cannot hold.
    graphWindow1,  ///< The graph shows the last hour from now on; the next four alike.
    graphWindow3,
    graphWindow6,
    graphWindow12,
    graphWindow24,
    refresh,
    reconnect,
    signIn,
    showTerms,
    finishSetup,  ///< Goes on with the first-run steps.
    installUpdate,
    snooze30Minutes,
    snooze2Hours,
    resumeAlerts,
    showInsights,
    showSettings,
    quit
};

/// The window that a graphWindow command stands for; empty for the other commands.
[[nodiscard]] std::optional<GraphTimeWindow> graphTimeWindow(MenuCommand command);

/// What the command of the last update is called where it stands by itself.
inline constexpr std::string_view refreshTitle = "Refresh";

/// One item of the status item's menu.
struct MenuItem {
    enum class Kind {
        graph,  ///< The picture. `title` is what a line of text shows instead, `children` pick its window.
        lastUpdate,  ///< When data last came, with the command to refresh; `enabled` speaks of the command.
        alert,       ///< A problem: `title`, and further lines in `details`. Cannot be chosen.
        action,
        choice,  ///< One of several; the one in force is `checked`.
        text,    ///< Says something, and cannot be chosen.
        separator
    };
    Kind kind = Kind::action;
    std::string title{};
    std::vector<std::string> details{};
    std::string accessibleText{};  ///< What a screen reader says of it; empty: its texts as they stand.
    MenuCommand command = MenuCommand::none;
    bool enabled = true;
    bool checked = false;
    std::vector<MenuItem> children{};
    bool operator==(const MenuItem&) const = default;
};

/// Which places the menu can lead to; a place that the program does not have is left out.
struct MenuPlaces {
    bool insights = false;
    bool settings = false;
    bool operator==(const MenuPlaces&) const = default;
};

/// The menu for a state at a moment, in its one order: graph, last update, then what is wrong, then an update
/// of the program, the snooze, and the places that it leads to. Pure; every presentation is made of it.
///
/// One alert item stands for an error or, without one, for a reading that is too old; what keeps alerts from
/// being noticed is a second one, what is wrong with saved history a third, and what keeps choices from being
/// remembered a fourth. Then one for each setting that leaves lows silent; a snooze has its line further
/// down. Below them comes what helps: "Reconnect" when the same account may be tried again, "Sign in…" when
/// the person has to, and "Finish setting up…" or "Show terms…" before anything else can be done. "Show
/// terms…" is there without a problem while newer terms wait. Where there are no settings, "Switch account…"
/// stands in their place.
[[nodiscard]] std::vector<MenuItem> statusBarMenu(const StatusBarState& state, const AppSettings& settings,
                                                  const MenuPlaces& places, Date now, TimeZone zone);

/// The same menu for whoever shows nothing but lines of text: an alert becomes lines of bounded length, the
/// last update a text and an action, the graph a line with a submenu of showGraph and its windows. Only the
/// kinds action, choice, text and separator, and children only below an action.
[[nodiscard]] std::vector<MenuItem> menuOfLines(const std::vector<MenuItem>& menu);

/// "Low, high and rapid-change alerts snoozed until 14:30": what the preferences let a snooze silence.
[[nodiscard]] std::string snoozeLine(Date until, const AppSettings& settings, TimeZone zone);

}  // namespace tidewell
