#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "statusbar/StatusBarViewModel.h"
#include "support/TimeText.h"

namespace tidewell {

/// The reading that a state presents, seen at a moment: it may have aged since the state was made.
struct SeenReading {
    GlucoseReading reading;
    ReadingFreshness freshness;  ///< At least as bad as the state knows it to be.
    Seconds age;                 ///< At least what the freshness says.
};

/// Empty when the state presents none.
[[nodiscard]] std::optional<SeenReading> seenReading(const StatusBarState& state, Date now);

/// The problem that is shown: there is room for one, and an error explains a stale reading.
[[nodiscard]] std::optional<ErrorInfo> shownProblem(const StatusBarState& state,
                                                    const std::optional<SeenReading>& seen);

/// What is going on, in words.
[[nodiscard]] std::string_view activityLine(StatusBarActivity activity);

/// "Next retry at 14:05".
[[nodiscard]] std::string nextRetryLine(Date date, TimeZone zone);

/// The value as one line: "120 mg/dL →" while current, "120 mg/dL ?" while stale, then "-- ?".
[[nodiscard]] std::string readingTitle(const SeenReading& seen, const AppSettings& settings);

}  // namespace tidewell
