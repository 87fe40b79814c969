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
    /// What keeps readings from being saved, kept, read or deleted as asked; gone once the same has worked.
    /// deletionIncomplete as long as the configuration is one whose readings are to be deleted.
    std::optional<GlucoseHistoryError> problem{};
    bool operator==(const GlucoseHistoryStatus&) const = default;
};

/// What an import would change, or has changed.
struct HistoryImportResult {
    std::size_t added = 0;
    std::size_t alreadyThere = 0;                ///< Same second, fetched or imported before: stays as it is.
    std::size_t beyondRetention = 0;             ///< Too old to be kept.
    std::size_t refused = 0;                     ///< No JSON form: not a number, not UTF-8, no such date.
    std::vector<std::int64_t> unreadableDays{};  ///< Their files are damaged; nothing of them is added.
};

/// Saved history: every operation on the tree below the root, for the scope that is signed in and all others.
///
/// Blocking, and one task at a time: callers run it on one strand of the workers. Each changing operation
/// holds a lock across processes and begins from what is on disk, so that a window, a watcher and the command
/// line may share a history. What returned success survives a power cut. No failure destroys: what was saved
/// stays byte for byte, except what retention or a deletion asked for removes.
///
/// Retention counts as oldestKeptReading() does, for every operation: a clock that runs ahead removes
/// nothing.
///
/// After an error, the same operation may be called again, and does what is missing. While the manifest does
/// not decode, every operation but deleteAll() is invalidConfiguration and touches nothing.
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

    /// Of a start, and again whenever status() tells of a deletion that is incomplete: removes stray
    /// temporary files, ends deletions that were begun, and migration. What fails is tried again by the next
    /// call, and by the operations that need it. Makes nothing where there is no history yet.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> recover(Date now);

    /// The signed-in account is this one from now on, or none, also after an error. Older tokens are outdated
    /// when it is another. Never touches the secret store, and writes nothing before saving is enabled for
    /// the first time. The scope inherits the single-key layout when there is one.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> attach(
        std::optional<HistoryScopeID> scope);
    [[nodiscard]] GlucoseHistoryStatus status() const;
    /// Reads the attached scope's configuration again, and what a later start would find.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> reload();
    /// Empty while nobody is signed in, or saving is off.
    [[nodiscard]] std::optional<GlucoseHistoryCollectionToken> collectionToken() const;

    /// Saving begins, or begins again: readings dated before `now` are not saved by it. Makes the key, so
    /// that a secret store that refuses is noticed at once. While it is on already, only retention and
    /// consent change, and times of collection that are still to come become `now`.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> enable(std::int64_t retentionDays,
                                                                                  std::int64_t consentVersion,
                                                                                  Date now);
    /// Saving stops; what is saved stays.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> pause();
    /// A shorter one removes the older readings at once; an error may come after it has been set.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> setRetention(std::int64_t days,
                                                                                        Date now);
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> setInsightsUnlocked(Date now);

    /// Merges readings into their days. The same source and second is one reading, and the later fetch wins;
    /// nothing is written when nothing differs. Ones before the cutoff or the retention are left out. With a
    /// token that is outdated, or saving off, nothing happens and that is good. How many were new or changed.
    /// A cutoff after `fetchedAt` was set by a clock that ran ahead, and becomes `fetchedAt`.
    ///
    /// A damaged day keeps its file and fails the call after the other days have been saved. Also removes the
    /// days that are beyond the retention as a whole.
    [[nodiscard]] std::expected<std::size_t, GlucoseHistoryError> save(
        const GlucoseHistoryCollectionToken& token, const std::vector<GlucoseReading>& readings,
        Date fetchedAt);
    /// Removes readings beyond the retention of the attached scope, and whole days beyond that of the other
    /// ones, also while nobody is attached. Once a day.
    [[nodiscard]] std::expected<void, GlucoseHistoryError> trim(Date now);

    /// The attached scope's readings from `begin` up to before `end`. Damaged days are named, the others are
    /// there. Empty from the beginning of a deletion on. Waits for no lock but to migrate.
    [[nodiscard]] std::expected<GlucoseHistorySnapshot, GlucoseHistoryError> snapshot(Date begin, Date end);

    /// Adds readings of a file to the attached scope, without replacing any. accountRequired for a scope
    /// whose saving was never enabled. A dry run changes nothing. Moves collectionStartedAt back to the
    /// oldest one.
    [[nodiscard]] std::expected<HistoryImportResult, GlucoseHistoryError> import(
        const std::vector<GlucoseReading>& readings, Date now, bool dryRun);

    /// Saving is off from here on, whatever fails later; readings go, and the key last. storageFailure when
    /// not even that could be written and nothing is deleted; deletionIncomplete when something is left,
    /// which recover() or another call removes. Also mends a configuration that does not decode.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> deleteAttached(Date now);
    /// The same for every scope, and for the single-key layout. Also mends a manifest that does not decode.
    [[nodiscard]] std::expected<GlucoseHistoryStatus, GlucoseHistoryError> deleteAll(Date now);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
