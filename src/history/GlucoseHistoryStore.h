#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "config/KeychainItemStoring.h"
#include "history/GlucoseHistoryRecords.h"
#include "support/FileSystem.h"
#include "support/Random.h"

namespace tidewell {

/// What is known of the attached scope, for who shows it.
struct GlucoseHistoryStatus {
    std::optional<HistoryScopeID> scope{};  ///< Empty: nobody is signed in.
    GlucoseHistoryConfiguration configuration{};
    std::optional<GlucoseHistoryError> problem{};  ///< Of the last operation that failed and was not mended.
    bool operator==(const GlucoseHistoryStatus&) const = default;
};

/// What an import would change, or has changed.
struct HistoryImportResult {
    std::size_t added = 0;
    std::size_t alreadyThere = 0;                ///< Same second, fetched or imported before: stays as it is.
    std::size_t beyondRetention = 0;             ///< Too old to be kept.
    std::vector<std::int64_t> unreadableDays{};  ///< Their files are damaged; nothing of them is added.
};

/// Saved history: every operation on the tree below the root, for the scope that is signed in and all others.
///
/// Blocking, and one task at a time: callers run it on one strand of the workers. Each changing operation
/// holds a lock across processes and begins from what is on disk, so that a window, a watcher and the command
/// line may share a history. What returned success survives a power cut. No failure destroys: what was saved
/// stays byte for byte, except what retention or a deletion asked for removes.
class GlucoseHistoryStore {
public:
    /// All of it outlives the store.
    struct Parts {
        std::filesystem::path root;  ///< "Tidewell/SavedHistory" below the user's data folder.
        FileSystem& files;
        KeychainItemStoring& keychain;
        RandomSource& random;  ///< Fit for keys.
    };
    explicit GlucoseHistoryStore(Parts parts);
    ~GlucoseHistoryStore();
    GlucoseHistoryStore(const GlucoseHistoryStore&) = delete;
    GlucoseHistoryStore& operator=(const GlucoseHistoryStore&) = delete;

    /// Of a start: removes stray temporary files, ends deletions that were begun, and migration. Each that
    /// fails is tried again at the next start or at the next operation that needs it.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> recover(Date now);

    /// The signed-in account is this one from now on, or none. Older tokens are outdated when it is another.
    /// Never touches the secret store. The scope inherits the single-key layout when there is one.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> attach(
        std::optional<HistoryScopeID> scope, Date now);
    [[nodiscard]] GlucoseHistoryStatus status() const;
    /// Reads the attached scope's configuration again, and what a later start would find.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> reload();
    /// Empty while nobody is signed in, or saving is off.
    [[nodiscard]] std::optional<GlucoseHistoryCollectionToken> collectionToken() const;

    /// Saving begins, or begins again: readings dated before `now` are not saved by it. Makes the key, so
    /// that a secret store that refuses is noticed at once.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> enable(std::int64_t retentionDays,
                                                                                  std::int64_t consentVersion,
                                                                                  Date now);
    /// Saving stops; what is saved stays.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> pause(Date now);
    /// A shorter one removes the older readings at once.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> setRetention(std::int64_t days,
                                                                                        Date now);
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> setInsightsUnlocked(Date now);

    /// Merges readings into their days. The same source and second is one reading, and the later fetch wins;
    /// nothing is written when nothing differs. Ones before the cutoff or the retention are left out. With a
    /// token that is outdated, or saving off, nothing happens and that is good. How many were new or changed.
    ///
    /// A damaged day keeps its file and fails the call after the other days have been saved.
    [[nodiscard]] std::expected<std::size_t, GlucoseHistoryError> save(
        const GlucoseHistoryCollectionToken& token, const std::vector<GlucoseReading>& readings,
        Date fetchedAt);
    /// Removes readings beyond the retention of the attached scope. Once a day.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> trim(Date now);

    /// The attached scope's readings from `begin` up to before `end`. Damaged days are named, the others are
    /// there.
    [[nodiscard]] std::expected<GlucoseHistorySnapshot, GlucoseHistoryError> snapshot(Date begin, Date end);

    /// Adds readings of a file to the attached scope, without replacing any. Needs a scope whose saving was
    /// enabled once. A dry run changes nothing. Moves collectionStartedAt back to the oldest one added.
    [[nodiscard]] std::expected<HistoryImportResult, GlucoseHistoryError> import(
        const std::vector<GlucoseReading>& readings, Date now, bool dryRun);

    /// Saving is off from here on, whatever fails later; readings go, and the key last. deletionIncomplete
    /// when something is left, which the next start or another call removes.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> deleteAttached(Date now);
    /// The same for every scope.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> deleteAll(Date now);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
