#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "app/LoginItem.h"
#include "history/GlucoseHistoryRecords.h"
#include "polling/AlertHealth.h"
#include "statusbar/StatusBarViewModel.h"

namespace tidewell {

// What there is to find beside what decides on alerts: shared by `doctor` and the settings window.

/// How long to wait for what the desktop says of its status area.
inline constexpr std::chrono::milliseconds statusAreaDeadline{2000};

/// No alert needs a status area, so its absence is no more than a note.
[[nodiscard]] AlertFinding statusAreaFinding(bool there);
/// No alert needs saved history, so trouble is no more than a note.
[[nodiscard]] AlertFinding savedHistoryFinding(const GlucoseHistoryConfiguration& configuration,
                                               const std::optional<GlucoseHistoryError>& problem);
/// Of a login item with a problem: a note, since no alert needs the item while Tidewell runs.
[[nodiscard]] AlertFinding loginItemFinding(const LoginItemStatus& item);
/// Replaces what the facts say of account and data by the problem that polling has, at the front.
void replaceAccountFinding(std::vector<AlertFinding>& findings, const ErrorInfo& problem);
/// The first-run steps are not finished, or terms of use were never accepted: nothing is fetched. Comes
/// first, in place of whatever tells of readings and of alerts that come.
void addSetupFinding(std::vector<AlertFinding>& findings);
void addTermsFinding(std::vector<AlertFinding>& findings);
/// Of bookkeepingNotSaved(): a snooze or accepted terms are lost at the next start.
[[nodiscard]] AlertFinding bookkeepingFinding(const std::string& problem);
/// After everything that is as bad or worse, and before what is good.
void addBeforeGood(std::vector<AlertFinding>& findings, AlertFinding finding);

}  // namespace tidewell
