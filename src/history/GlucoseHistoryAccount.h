#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "config/KeychainItemStoring.h"
#include "history/GlucoseHistoryRecords.h"
#include "history/LocalGlucoseHistoryFileAccess.h"

namespace tidewell {

inline constexpr std::string_view historyKeychainService = "Tidewell.history";
inline constexpr std::string_view legacyHistoryKeyAccount = "encryption-key-v1";
/// "encryption-key-v2-" and the scope.
[[nodiscard]] std::string historyKeyAccount(const HistoryScopeID& scope);

/// The bytes of a day file: its JSON sealed by AES-256-GCM under a random nonce, bound to the file's name.
[[nodiscard]] std::expected<std::string, GlucoseHistoryError> sealHistoryFile(const SecretText& key,
                                                                              std::string_view fileName,
                                                                              std::string_view json,
                                                                              RandomSource& random);
/// Its JSON again; unreadableHistory when a bit, the key or the name differs.
[[nodiscard]] std::expected<std::string, GlucoseHistoryError> openHistoryFile(const SecretText& key,
                                                                              std::string_view fileName,
                                                                              std::string_view bytes);

/// One scope on disk: its configuration, its key and its days. Holds no readings. Blocking; one task at a
/// time. No failure deletes or overwrites a day file or key.
class GlucoseHistoryAccount {
public:
    /// All of it outlives the account.
    struct Parts {
        std::filesystem::path folder;  ///< Of this scope.
        HistoryScopeID scope;
        LocalGlucoseHistoryFileAccess& access;
        KeychainItemStoring& keychain;
        RandomSource& random;  ///< Fit for keys.
    };
    explicit GlucoseHistoryAccount(Parts parts);

    /// The stored configuration; empty when there is none yet. invalidConfiguration when it does not decode.
    [[nodiscard]] std::expected<std::optional<GlucoseHistoryConfiguration>, GlucoseHistoryError>
    readConfiguration();
    /// Writes it whole. After storageFailure, needsConfigurationWrite() is true until a write succeeds.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> writeConfiguration(
        const GlucoseHistoryConfiguration& configuration);
    [[nodiscard]] bool needsConfigurationWrite() const { return needsConfigurationWrite_; }

    /// The scope's key. A missing one is made only when `mayCreate`, no collection has begun and no day file
    /// is there; else it is unavailableKey. Asks the secret store each time: what a key seals that has gone
    /// from there in the meantime, nobody could open after the next start.
    [[nodiscard]] std::expected<SecretText, GlucoseHistoryError> loadKey(bool mayCreate);
    /// Of a deletion, after all files: removes the key item.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> removeKey();

    [[nodiscard]] std::expected<std::vector<std::int64_t>, GlucoseHistoryError> days();
    /// An absent day is empty. unreadableHistory when its file is damaged, storageFailure when the system
    /// would not read it.
    [[nodiscard]] std::expected<std::optional<HistoryDay>, GlucoseHistoryError> readDay(const SecretText& key,
                                                                                        std::int64_t day);
    /// Refuses (storageFailure) what readDay() would not read again: another scope, a reading of another day.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> writeDay(const SecretText& key, std::int64_t index,
                                                                    const HistoryDay& day);
    [[nodiscard]] std::expected<void, GlucoseHistoryError> removeDay(std::int64_t day);

private:
    Parts parts_;
    bool needsConfigurationWrite_ = false;
};

}  // namespace tidewell
