#pragma once

#include <string_view>

namespace tidewell {

/// What can go wrong with saved history. Returned, never thrown; live monitoring goes on in every case.
enum class GlucoseHistoryError {
    invalidConfiguration,  ///< The manifest or a scope's configuration does not decode. It is left as it is.
    invalidRetention,      ///< Neither 30 nor 90 days.
    accountRequired,       ///< Nobody is signed in.
    unavailableKey,        ///< The key is missing where there must be one, or malformed.
    keychainFailure,       ///< The secret store refused or did not answer.
    unreadableHistory,     ///< A day file cannot be opened or decoded. It is left as it is.
    storageFailure,        ///< A file could not be written, read or removed.
    deletionIncomplete     ///< Saving is off; what is left is deleted at the next start or try.
};

/// The text for the person who reads it, one sentence or two.
[[nodiscard]] std::string_view description(GlucoseHistoryError error);

}  // namespace tidewell
