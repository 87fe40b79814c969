#pragma once

#include <filesystem>
#include <memory>

#include "history/GlucoseHistoryStore.h"
#include "program/Environment.h"

namespace tidewell {

/// Where saved history lies.
[[nodiscard]] std::filesystem::path historyRoot(const Folders& folders);

/// The store of this user's saved history, with all that it refers to: a call that hangs on a worker may
/// outlive everything else.
[[nodiscard]] std::shared_ptr<GlucoseHistoryStore> makeHistoryStore(const Environment& environment);

}  // namespace tidewell
