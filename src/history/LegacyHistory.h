#pragma once

#include <expected>
#include <filesystem>
#include <optional>

#include "history/GlucoseHistoryAccount.h"

namespace tidewell {

/// The single-key layout of older versions: one configuration and the days of one person in the root itself,
/// all under one key. It is read, taken over by a scope, and removed; never written again, but for marks that
/// it, or its key, is still to go. Blocking; under the store's lock.
class LegacyHistory {
public:
    /// The references outlive it.
    LegacyHistory(std::filesystem::path root, LocalGlucoseHistoryFileAccess& access,
                  KeychainItemStoring& keychain);

    /// Whether there is anything of it.
    [[nodiscard]] std::expected<bool, GlucoseHistoryError> exists();
    /// Whether a deletion of it was begun.
    [[nodiscard]] std::expected<bool, GlucoseHistoryError> isBeingDeleted();
    [[nodiscard]] std::expected<void, GlucoseHistoryError> beginDeletion();
    /// Removes its days, its key, and what marks the deletion last.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> remove();

    /// Once nothing of it exists any more: sees to it that this is so after a power cut.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> settle();

    /// What moveInto() opens and seals with, or why it cannot.
    struct Keys {
        std::expected<SecretText, GlucoseHistoryError> legacy;
        std::expected<SecretText, GlucoseHistoryError> own;  ///< Of the scope; unavailableKey: is to be made.
    };
    /// May wait for a person; not under the lock.
    [[nodiscard]] std::expected<SecretText, GlucoseHistoryError> loadKey();

    /// Merges each day into the scope, then the configuration, then removes what was taken over, the key
    /// after the days. Can be repeated from wherever it stopped. A day that is damaged here or there stays,
    /// and the key with it: unreadableHistory, after all the others have been moved.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> moveInto(GlucoseHistoryAccount& account,
                                                                    const HistoryScopeID& scope,
                                                                    const std::filesystem::path& scopeFolder,
                                                                    const Keys& keys);

private:
    struct Moved;
    std::expected<void, GlucoseHistoryError> removeKey();
    std::expected<void, GlucoseHistoryError> removeConfiguration();
    std::expected<std::optional<GlucoseHistoryConfiguration>, GlucoseHistoryError> readConfiguration();
    std::expected<HistoryDay, GlucoseHistoryError> readDay(const SecretText& key, std::int64_t day,
                                                           const HistoryScopeID& scope);
    std::expected<Moved, GlucoseHistoryError> moveDays(GlucoseHistoryAccount& account,
                                                       const HistoryScopeID& scope,
                                                       const std::vector<std::int64_t>& days,
                                                       const Keys& keys);
    std::expected<void, GlucoseHistoryError> moveConfiguration(GlucoseHistoryAccount& account,
                                                               const std::optional<Date>& oldest);

    std::filesystem::path root_;
    LocalGlucoseHistoryFileAccess& access_;
    KeychainItemStoring& keychain_;
    bool needsSync_ = false;
};

}  // namespace tidewell
