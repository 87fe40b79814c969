#pragma once

#include <optional>
#include <string>
#include <vector>

#include "statusbar/StatusBarViewModel.h"
#include "support/TimeText.h"

namespace tidewell {

/// What a menu item does when it is chosen.
enum class MenuCommand {
    none,
    refresh,
    reconnect,
    signIn,
    snooze30Minutes,
    snooze2Hours,
    resumeAlerts,
    quit
};

/// One line of the status item's menu.
struct MenuItem {
    enum class Kind { action, text, separator };
    Kind kind = Kind::action;
    std::string title{};
    MenuCommand command = MenuCommand::none;
    bool enabled = true;
    bool operator==(const MenuItem&) const = default;
};

/// How the button is filled behind the value.
enum class StatusButtonLook { plain, redFill, orangeFill };

/// What a status item presents, whatever panel shows it: decided here, drawn elsewhere.
struct StatusItemContent {
    std::string value{};  ///< "120", "5.5", "120 ?", "-- ?"; empty while waiting or when attention is needed.
    std::string arrow{};  ///< "→"; empty when the reading is not current.
    std::string label{};  ///< The status title: value, space, arrow.
    StatusBarIconState iconState = StatusBarIconState::waiting;
    StatusButtonLook look = StatusButtonLook::plain;
    std::optional<ReadingFreshness> freshness{};  ///< Of the reading that is shown, if any, at that moment.
    std::optional<GlucoseRange> range{};          ///< Of a current reading only: an old one is nowhere now.
    bool warningBadge = false;
    std::string tooltipTitle{};        ///< Value with unit and trend: "120 mg/dL →".
    std::string tooltipText{};         ///< Age and any problem, lines separated by '\n'; plain text.
    std::string accessibilityLabel{};  ///< "Tidewell".
    std::string accessibilityValue{};
    std::vector<MenuItem> menu{};
    bool operator==(const StatusItemContent&) const = default;
};

/// The content for a state at a moment. Pure. A reading that has aged since the state was made is shown with
/// the age that it has now. The menu begins with the problem, if any, and with what keeps alerts from being
/// noticed. What helps comes first among its commands: "Reconnect" when the same account may be tried again,
/// then "Sign in…", which is called "Switch account…" and stands further down when nothing waits for the
/// person.
[[nodiscard]] StatusItemContent statusItemContent(const StatusBarState& state, const AppSettings& settings,
                                                  Date now, TimeZone zone);

/// "Low, high and rapid-change alerts snoozed until 14:30": what the preferences let a snooze silence.
[[nodiscard]] std::string snoozeLine(Date until, const AppSettings& settings, TimeZone zone);

}  // namespace tidewell
