#pragma once

#include <optional>

#include "config/ConfigurationManager.h"

namespace tidewell {

// What loading and saving do to disk and secret store: blocking functions
// on values, for a worker thread. ConfigurationManager keeps the order and
// the memory; here is every step that a crash or a fault may cut short.

/// The configuration as the program uses it: the account with its password, or none.
struct HeldConfiguration {
    std::optional<GlucoseAccountConfiguration> account{};
    AppSettings settings{};
};

/// What a save replaces; the rest stays as the document has it.
struct ConfigurationEdit {
    bool replacesAccount = false;
    std::optional<GlucoseAccountConfiguration> account{};  ///< Without one, or without a username: sign out.
    /// Those values of `settings` are stored that differ from these.
    AppSettings formerSettings{};
    AppSettings settings{};
};

struct StoredOutcome {
    std::optional<HeldConfiguration> held{};  ///< What to hold from now on; empty when nothing changed.
    std::optional<ConfigurationProblem> problem{};
    bool succeeded = false;  ///< A success may still leave a problem to report.
};

[[nodiscard]] StoredOutcome loadStored(const ConfigurationManager::Places& places,
                                       const HeldConfiguration& held);
[[nodiscard]] StoredOutcome saveStored(const ConfigurationManager::Places& places,
                                       const HeldConfiguration& held, ConfigurationEdit edit);

}  // namespace tidewell
