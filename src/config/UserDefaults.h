#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <variant>

#include "support/Time.h"

namespace tidewell {

/// The application's own bookkeeping: flags and moments under keys that begin with "Tidewell".
///
/// Values are held in memory and may be read and set from any thread without waiting. save() writes
/// them; the owner calls it on a worker after the change handler said so, and at exit.
class UserDefaults {
public:
    /// In memory only: for tests and demonstrations.
    UserDefaults() = default;
    /// Kept in `file`. A file that does not decode is moved aside as "<file>.unreadable" at the first save.
    explicit UserDefaults(std::filesystem::path file);

    /// Blocks; at start-up. An error when there is a file that cannot be read; then nothing is set.
    [[nodiscard]] std::error_code load();
    /// Writes the values when they changed since the last save. Blocks; one thread at a time.
    [[nodiscard]] std::error_code save();

    /// A value of another type counts as absent.
    [[nodiscard]] bool boolean(std::string_view key) const;
    [[nodiscard]] std::optional<Date> date(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> text(std::string_view key) const;
    void set(std::string_view key, bool value);
    void set(std::string_view key, Date value);
    void set(std::string_view key, std::string value);
    void remove(std::string_view key);

    /// Called on the thread that changed a value, without a lock held.
    void setChangeHandler(std::function<void()> handler);

private:
    using Value = std::variant<bool, double, std::string>;
    void store(std::string_view key, Value value);

    std::filesystem::path file_;
    mutable std::mutex mutex_;
    std::map<std::string, Value, std::less<>> values_;
    bool changed_ = false;
    bool unreadable_ = false;
    std::function<void()> handler_;
};

inline constexpr std::string_view onboardingCompletedKey = "TidewellOnboardingCompleted";
inline constexpr std::string_view alertsSnoozedUntilKey = "TidewellAlertsSnoozedUntil";

}  // namespace tidewell
