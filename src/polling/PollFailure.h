#pragma once

#include <cstdint>
#include <optional>

#include "polling/StatusBarPollingSchedule.h"
#include "sources/GlucoseAPIProtocol.h"
#include "statusbar/StatusBarViewModel.h"

namespace tidewell {

/// Refused sign-ins in a row. The service would rather lock the account than answer a third time.
inline constexpr std::int64_t allowedRefusals = 2;

/// What counts beside the error itself when a poll has failed.
struct PollFailureContext {
    GlucoseProvider provider = GlucoseProvider::dexcom;
    bool signedInAgain = false;            ///< This refresh has tried to sign in again.
    std::int64_t refusedSignIns = 0;       ///< In a row, this one included.
    bool networkReachable = true;          ///< As far as the system knows.
    std::int64_t consecutiveFailures = 0;  ///< Polls before this one that failed.
};

/// What happens after a failed poll. Exactly one of the four is to be done.
struct PollFailureVerdict {
    enum class Action {
        signInAgain,     ///< And fetch again; nothing is recorded yet.
        record,          ///< Record `outcome` and retry by the schedule.
        waitForService,  ///< The same, but not before `wait` has passed.
        waitForPerson,   ///< No request until the person has done something.
    };
    Action action = Action::record;
    StatusBarPollOutcome outcome{};
    Seconds wait{0};     ///< Of waitForService.
    ErrorInfo status{};  ///< What the menu shows; not of signInAgain.
    bool operator==(const PollFailureVerdict&) const = default;
};

/// Classifies a failed fetch or sign-in. Every kind but `noReadings`, which is no failure of the poll.
[[nodiscard]] PollFailureVerdict pollFailureVerdict(const GlucoseAPIError& error,
                                                    const PollFailureContext& context);

/// Whether signing in again is a cure to try.
[[nodiscard]] bool isAuthenticationError(const GlucoseAPIError& error);

/// Texts for states that are no error of a request.
[[nodiscard]] ErrorInfo signInRequiredStatus();
/// Good answers without a reading, and none is held either.
[[nodiscard]] ErrorInfo noDataStatus(GlucoseProvider provider);
/// Good answers without a reading for a while.
[[nodiscard]] ErrorInfo noNewDataStatus(GlucoseProvider provider);
/// The service's newest reading is dated `ahead` after this machine's time.
[[nodiscard]] ErrorInfo clockStatus(Seconds ahead);

}  // namespace tidewell
