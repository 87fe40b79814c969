#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "sources/GlucoseReading.h"
#include "statusbar/StatusBarViewModel.h"
#include "support/Time.h"

namespace tidewell {

/// What another process has to know to go on polling the same account as if nobody had changed.
struct PollingProgress {
    std::optional<Date> nextPollDate{};    ///< Of the next request; empty while none is planned.
    std::optional<Date> retryNotBefore{};  ///< The service asked to wait until then.
    std::int64_t refusedSignIns = 0;       ///< In a row.
    bool requiresAccountAction = false;    ///< Nothing is requested until the person has done something.
    bool operator==(const PollingProgress&) const = default;
};

/// What a run goes on from that another one began, here or in another process.
struct PollingResumption {
    PollingProgress progress{};
    std::vector<GlucoseReading> glucoseHistory{};  ///< Oldest first.
    std::optional<ErrorInfo> problem{};            ///< What the last poll had left to say.
    std::optional<Date> nextRetryAt{};             ///< As told together with it.
    /// Between the end of one request and the start of the next, whoever asks.
    std::chrono::milliseconds fetchSpacing = 1s;
};

}  // namespace tidewell
