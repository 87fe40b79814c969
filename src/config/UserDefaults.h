#pragma once

#include <boost/json/object.hpp>
#include <expected>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "support/Json.h"
#include "support/Time.h"

namespace tidewell {

/// The application's own bookkeeping: flags and moments under keys that begin with "Tidewell".
///
/// Values are held in memory and may be read and set from any thread without waiting. save() writes
/// them; the owner calls it on a worker after the change handler said so, and at exit.
///
/// The file is one JSON object: flags as true and false, moments as seconds since 1970, texts as texts.
/// Members of other types are kept as they are. Several processes may share it: a save changes only the keys
/// that were changed here, and brings the others up to date.
class UserDefaults {
public:
    /// In memory only: for tests and demonstrations.
    UserDefaults() = default;
    /// Kept in `file`. A file that does not decode is moved aside as "<file>.unreadable" at the first save.
    explicit UserDefaults(std::filesystem::path file);

    /// Blocks. An error when there is a file that cannot be read; then what is held stays as it is.
    /// bad_message when its content does not decode. What was set and is not saved yet stays.
    [[nodiscard]] std::error_code load();
    /// Writes the values when they changed since the last save. Blocks; one thread at a time. After an error
    /// the file is as it was, and the next save tries again.
    [[nodiscard]] std::error_code save();

    /// Whether a save would work now. Blocks; the file stays as it is.
    [[nodiscard]] std::error_code trySave() const;

    /// A value of another type counts as absent.
    [[nodiscard]] bool boolean(std::string_view key) const;
    [[nodiscard]] std::optional<Date> date(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> text(std::string_view key) const;
    void set(std::string_view key, bool value);
    /// A moment that is not finite removes the value.
    void set(std::string_view key, Date value);
    /// UTF-8; the caller's duty.
    void set(std::string_view key, std::string value);
    void set(std::string_view key, const char* value) { set(key, std::string{value}); }
    void remove(std::string_view key);

    /// Called on the thread that changed a value, without a lock held.
    void setChangeHandler(std::function<void()> handler);

private:
    void store(std::string_view key, std::optional<json::value> value);
    [[nodiscard]] std::error_code write(json::object& values, const std::set<std::string>& changed) const;

    std::filesystem::path file_;
    mutable std::mutex mutex_;
    json::object values_;
    std::set<std::string> changed_;  ///< Keys that differ from the file.
    std::function<void()> handler_;
};

/// The content of a defaults file.
[[nodiscard]] std::expected<json::object, JsonError> parseUserDefaults(std::string_view text);

inline constexpr std::string_view onboardingCompletedKey = "TidewellOnboardingCompleted";
/// When a person last signed in from another process; with the same account, nothing else tells of it.
inline constexpr std::string_view accountConfirmedAtKey = "TidewellAccountConfirmedAt";
/// That the person has been told once that nothing shows the status item.
inline constexpr std::string_view statusAreaHintShownKey = "TidewellStatusAreaHintShown";
/// When the report opened of which the person has seen that it did; the moment tells accounts apart.
inline constexpr std::string_view insightsUnlockSeenKey = "TidewellInsightsUnlockSeen";
inline constexpr std::string_view alertsSnoozedUntilKey = "TidewellAlertsSnoozedUntil";
/// Of the terms of use that the person accepted last, and when that was.
inline constexpr std::string_view acceptedTermsVersionKey = "TidewellAcceptedTermsVersion";
inline constexpr std::string_view termsAcceptedAtKey = "TidewellTermsAcceptedAt";
/// The first-run step that was reached last, by name.
inline constexpr std::string_view onboardingStepKey = "TidewellOnboardingStep";

}  // namespace tidewell
