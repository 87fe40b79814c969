#include "history/GlucoseHistoryError.h"

#include <utility>

namespace tidewell {

std::string_view description(GlucoseHistoryError error)
{
    using enum GlucoseHistoryError;
    switch (error) {
    case invalidConfiguration:
        return "Saved history settings could not be read. History collection is paused.";
    case invalidRetention: return "Choose either 30 or 90 days of saved history.";
    case accountRequired: return "Sign in to enable saved history.";
    case unavailableKey:
        return "The saved history encryption key is unavailable. Existing history has been preserved.";
    case keychainFailure:
        return "Saved history could not access macOS Keychain. Try again after unlocking your Mac.";
    case unreadableHistory:
        return "Saved history could not be decrypted or read. Existing files have been preserved.";
    case storageFailure:
        return "Saved history could not be updated on this Mac. Live monitoring is unaffected.";
    case deletionIncomplete:
        return "History saving is off, but deletion is incomplete. Tidewell will retry cleanup; "
               "you can also try deleting again.";
    }
    std::unreachable();
}

}  // namespace tidewell
