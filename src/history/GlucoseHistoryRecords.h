#pragma once

#include <compare>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/AppConfiguration.h"
#include "history/GlucoseHistoryError.h"
#include "sources/GlucoseReading.h"

// The records of saved history and their JSON forms. All functions are pure; docs/history-format.md is their
// contract with other readers.

namespace tidewell {

/// Which account and person a history belongs to: 64 lower-case hexadecimal digits.
class HistoryScopeID {
public:
    /// SHA-256 of a text of provider, account name and person; the region does not count, since a service may
    /// move an account. Letter case and surrounding space of the name do not count either. Empty for an
    /// account that is nobody's (no user name), or of which no person is chosen where one must be.
    [[nodiscard]] static std::optional<HistoryScopeID> of(const GlucoseAccountConfiguration& account);
    /// From a manifest or a folder's name; empty unless it has the form of one, so it is safe in a path.
    [[nodiscard]] static std::optional<HistoryScopeID> parse(std::string_view text);
    [[nodiscard]] const std::string& text() const { return text_; }
    auto operator<=>(const HistoryScopeID&) const = default;

private:
    explicit HistoryScopeID(std::string text) : text_{std::move(text)} {}
    std::string text_;
};

/// The root record: which scopes there are.
struct GlucoseHistoryManifest {
    std::vector<HistoryScopeID> scopes{};  ///< Each once, in the order in which they came.
    std::optional<HistoryScopeID> attachedScopeID{};
    std::optional<HistoryScopeID> legacyMigrationScope{};
    json::object unknown{};  ///< Members that this version does not know; written back as they are.
    bool operator==(const GlucoseHistoryManifest&) const = default;
};

/// How one scope is saved.
struct GlucoseHistoryConfiguration {
    bool isEnabled = false;
    std::int64_t retentionDays = 90;  ///< 30 or 90.
    std::int64_t consentVersion = 0;  ///< Of the disclosure that the person accepted; 0: none.
    std::optional<Date> collectionStartedAt{};
    std::optional<Date> insightsUnlockedAt{};
    std::optional<Date> collectionCutoff{};  ///< Fetched readings dated before it are not saved.
    bool pendingDeletion = false;
    bool hasPreviouslyEnabled = false;
    std::optional<Date> collectionIntervalStart{};
    json::object unknown{};  ///< Members that this version does not know; written back as they are.
    bool operator==(const GlucoseHistoryConfiguration&) const = default;
};

inline constexpr std::int64_t currentConsentVersion = 1;
inline constexpr std::int64_t historySchemaVersion = 1;

/// One reading of a day file.
struct StoredReading {
    GlucoseReading reading{};
    Date fetchedAt{};
    bool operator==(const StoredReading&) const = default;
};

/// One UTC day of one scope, before it is sealed.
struct HistoryDay {
    std::int64_t schemaVersion = historySchemaVersion;
    std::string source = "cloud";
    HistoryScopeID accountScope;
    std::vector<StoredReading> readings{};  ///< By time.
    bool operator==(const HistoryDay&) const = default;
};

/// Whole days since 1970-01-01 00:00 UTC, rounded down, of the millisecond that is stored of `date`.
[[nodiscard]] std::int64_t historyDayIndex(Date date);
/// "20771.history", and back; empty for any other name, also for leading zeros.
[[nodiscard]] std::string historyDayFileName(std::int64_t day);
[[nodiscard]] std::optional<std::int64_t> historyDayOfFileName(std::string_view name);

[[nodiscard]] std::string encode(const GlucoseHistoryManifest& manifest);
[[nodiscard]] std::expected<GlucoseHistoryManifest, GlucoseHistoryError> decodeManifest(
    std::string_view json);
[[nodiscard]] std::string encode(const GlucoseHistoryConfiguration& configuration);
[[nodiscard]] std::expected<GlucoseHistoryConfiguration, GlucoseHistoryError> decodeHistoryConfiguration(
    std::string_view json);
/// A reading whose value or time is no finite number has no JSON form and is left out.
[[nodiscard]] std::string encode(const HistoryDay& day);
/// Refuses another schema version, another scope, a reading of another day, and whatever does not decode:
/// all of it is unreadableHistory.
[[nodiscard]] std::expected<HistoryDay, GlucoseHistoryError> decodeHistoryDay(std::string_view json,
                                                                              const HistoryScopeID& scope,
                                                                              std::int64_t day);
/// The same for a day of the single-key layout, which may lack the scope or hold an empty one.
[[nodiscard]] std::expected<HistoryDay, GlucoseHistoryError> decodeLegacyHistoryDay(
    std::string_view json, const HistoryScopeID& scope, std::int64_t day);

/// What saved history holds of one scope in a period: for the graph, Insights and export.
struct GlucoseHistorySnapshot {
    GlucoseHistoryConfiguration configuration{};
    std::vector<StoredReading> readings{};  ///< By time.
    HistoryScopeID accountScope;
    std::uint64_t epoch = 0;
    std::int64_t schemaVersion = historySchemaVersion;
    std::vector<std::int64_t> unreadableDays{};  ///< Days of the period whose files are damaged; ascending.
};

/// The right to save into a scope; outdated by a deletion, by another account, and when saving begins again.
struct GlucoseHistoryCollectionToken {
    HistoryScopeID accountScope;
    std::uint64_t epoch = 0;
    bool operator==(const GlucoseHistoryCollectionToken&) const = default;
};

}  // namespace tidewell
