#pragma once

#include <optional>
#include <string>
#include <vector>

#include "statusbar/StatusBarMenu.h"
#include "statusbar/StatusBarViewModel.h"
#include "support/TimeText.h"

namespace tidewell {

/// The badge in the icon's corner.
enum class StatusIndicator {
    none,
    /// "warningBadge": the value cannot be relied on, or there is none; or alerts or saved history are in
    /// trouble.
    warning,
    updateAvailable  ///< "updateBadge": of the program.
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
    StatusIndicator indicator = StatusIndicator::none;
    std::optional<StatusBarActivity> activity{};
    bool alertsSnoozed = false;        ///< And some would come otherwise.
    std::string tooltipTitle{};        ///< Value with unit and trend: "120 mg/dL →".
    std::string tooltipText{};         ///< Age and any problem, lines separated by '\n'; plain text.
    std::string accessibilityLabel{};  ///< "Tidewell".
    std::string accessibilityValue{};
    std::string accessibilityHelp{};  ///< What the item is for.
    std::vector<MenuItem> menu{};     ///< All of statusBarMenu().
    bool operator==(const StatusItemContent&) const = default;
};

/// The content for a state at a moment. Pure. A reading that has aged since the state was made is shown with
/// the age that it has now. `places` are what the menu can lead to.
[[nodiscard]] StatusItemContent statusItemContent(const StatusBarState& state, const AppSettings& settings,
                                                  Date now, TimeZone zone, const MenuPlaces& places = {});

}  // namespace tidewell
