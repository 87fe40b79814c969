#pragma once

#include <expected>

#include "history/GlucoseHistoryStore.h"

namespace tidewell {

/// Saves what the demonstration's sensor would have given in the two weeks before `now`: its trace, as often
/// as that takes, so that Insights has something to show. Blocks.
[[nodiscard]] std::expected<void, GlucoseHistoryError> saveDemoHistory(
    GlucoseHistoryStore& store, const GlucoseAccountConfiguration& account, Date now);

}  // namespace tidewell
