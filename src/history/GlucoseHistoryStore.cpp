#include "history/GlucoseHistoryStore.h"

#include <algorithm>
#include <array>
#include <map>
#include <ranges>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "history/GlucoseHistoryAccount.h"
#include "history/HistoryMerge.h"
#include "history/HistoryRetention.h"
#include "history/LegacyHistory.h"
#include "history/LocalGlucoseHistoryFileAccess.h"

namespace tidewell {

namespace {

using enum GlucoseHistoryError;
using Failure = std::unexpected<GlucoseHistoryError>;
template <class T>
using Result = std::expected<T, GlucoseHistoryError>;
using OptionalConfiguration = std::optional<GlucoseHistoryConfiguration>;

constexpr std::string_view manifestName = "manifest.json";
constexpr std::string_view lockName = ".lock";
constexpr std::string_view accountsName = "accounts";
constexpr std::string_view historySuffix = ".history";
/// What day indices are computed of: 1970 to the year 9999, whatever a caller asks for.
constexpr Date firstDate{};
constexpr Date lastDate = dateFromUnix(253'402'300'799);

/// What can be wrong at once, the gravest first.
enum class Area { manifest, configuration, deletion, saving, manifestWrite, migration, trimming, reading };
constexpr std::size_t areaCount = 8;

bool isRetention(std::int64_t days) { return days == 30 || days == 90; }

std::int64_t dayOf(Date date) { return historyDayIndex(std::clamp(date, firstDate, lastDate)); }

/// Keeps the first error of a row of steps that all are to be tried.
/// Of the days of one operation: a disk that fails is more urgent than a day that is damaged.
void keepGravest(Result<void>& kept, const Result<void>& other)
{
    if (!other && (kept || (kept.error() == unreadableHistory && other.error() != unreadableHistory)))
        kept = other;
}

void keepFirst(Result<void>& kept, const Result<void>& other)
{
    if (kept && !other)
        kept = other;
}

/// Times of collection that are still to come were taken from a clock that ran ahead. Whether there were any.
bool endFuture(GlucoseHistoryConfiguration& configuration, Date now)
{
    bool changed = false;
    for (std::optional<Date>* const date :
         {&configuration.collectionCutoff, &configuration.collectionIntervalStart,
          &configuration.collectionStartedAt}) {
        if (*date > now) {
            *date = now;
            changed = true;
        }
    }
    return changed;
}

using Batch = std::map<std::int64_t, std::vector<StoredReading>>;  ///< By day.

std::optional<std::int64_t> newestDay(const Batch& batch)
{
    return batch.empty() ? std::nullopt : std::optional{batch.rbegin()->first};
}

/// Removes the readings dated before `oldest`; how many.
std::size_t dropBefore(Batch& batch, Date oldest)
{
    std::size_t dropped = 0;
    for (auto& [day, readings] : batch)
        dropped += dropReadingsBefore(readings, oldest);
    std::erase_if(batch, [](const auto& day) { return day.second.empty(); });
    return dropped;
}

/// A lock across processes; let go when it goes.
class HistoryLock {
public:
    HistoryLock(FileSystem& files, FileHandle handle) : files_{&files}, handle_{handle} {}
    HistoryLock(HistoryLock&& other) noexcept
        : files_{std::exchange(other.files_, nullptr)}, handle_{other.handle_}
    {
    }
    HistoryLock& operator=(HistoryLock&&) = delete;
    ~HistoryLock()
    {
        if (files_)
            std::ignore = files_->close(handle_);
    }

private:
    FileSystem* files_;
    FileHandle handle_;
};

}  // namespace

struct GlucoseHistoryStore::Impl {
    /// What a changing operation begins with: the lock, and the manifest read under it.
    struct Turn {
        HistoryLock lock;
        GlucoseHistoryManifest manifest;
    };
    /// One with a key, which is read before the lock: a secret store may make its caller wait for a person.
    struct KeyedTurn {
        Turn turn;
        OptionalConfiguration configuration;      ///< Of the attached scope, as it was when the key was read.
        std::optional<Result<SecretText>> key{};  ///< Empty when it was not asked for.
    };

    explicit Impl(Parts given)
        : parts{std::move(given)},
          access{parts.files, parts.random},
          legacy{parts.root, access, parts.keychain}
    {
    }

    // --- Where things lie, and who reads them

    [[nodiscard]] std::filesystem::path accountsFolder() const { return parts.root / accountsName; }
    [[nodiscard]] std::filesystem::path folderOf(const HistoryScopeID& scope) const
    {
        return accountsFolder() / scope.text();
    }
    GlucoseHistoryAccount& account(const HistoryScopeID& scope)
    {
        const auto found = accounts.find(scope);
        if (found != accounts.end())
            return found->second;
        return accounts
            .try_emplace(scope, GlucoseHistoryAccount::Parts{.folder = folderOf(scope),
                                                             .scope = scope,
                                                             .access = access,
                                                             .keychain = parts.keychain,
                                                             .random = parts.random})
            .first->second;
    }

    /// The scopes that the manifest names, and those whose folders are there without it.
    Result<std::vector<HistoryScopeID>> allScopes(const GlucoseHistoryManifest& manifest)
    {
        const auto names = parts.files.list(accountsFolder());
        if (!names)
            return Failure{storageFailure};
        std::set<HistoryScopeID> scopes{manifest.scopes.begin(), manifest.scopes.end()};
        for (const std::string& name : *names) {
            if (const auto scope = HistoryScopeID::parse(name))
                scopes.insert(*scope);
        }
        return std::vector<HistoryScopeID>{scopes.begin(), scopes.end()};
    }

    // --- What is wrong

    /// Remembers how the last try in an area ended, for status().
    template <class T>
    Result<T> noted(Area area, Result<T> result)
    {
        auto& problem = problems[static_cast<std::size_t>(area)];
        if (result)
            problem.reset();
        else if (lasts(area, result.error()))
            problem = result.error();
        return result;
    }
    /// Whether an error is still true after the call that it ended.
    static bool lasts(Area area, GlucoseHistoryError error)
    {
        switch (area) {
        case Area::deletion:
            return error == deletionIncomplete;  // Else nothing was begun, and whoever asked knows.
        case Area::saving:
        case Area::trimming:
        case Area::reading:
            // The areas of the records tell of a damaged one, until it is mended.
            return error != accountRequired && error != invalidConfiguration;
        case Area::manifest:
        case Area::configuration:
        case Area::manifestWrite:
        case Area::migration: return true;
        }
        std::unreachable();
    }
    void forget(std::initializer_list<Area> areas)
    {
        for (const Area area : areas)
            problems[static_cast<std::size_t>(area)].reset();
    }
    [[nodiscard]] GlucoseHistoryStatus status() const
    {
        GlucoseHistoryStatus status{.scope = attached,
                                    .configuration = known.value_or(GlucoseHistoryConfiguration{})};
        // Of another process, or of a start that could not end it: it is under way until it is done.
        const bool isBeingDeleted = known && known->pendingDeletion;
        for (std::size_t area = 0; area < areaCount && !status.problem; ++area) {
            status.problem = problems[area];
            if (isBeingDeleted && area == static_cast<std::size_t>(Area::deletion))
                status.problem = deletionIncomplete;
        }
        return status;
    }
    template <class T>
    Result<GlucoseHistoryStatus> statusAfter(const Result<T>& result) const
    {
        if (!result)
            return Failure{result.error()};
        return status();
    }

    // --- Records

    Result<std::optional<GlucoseHistoryManifest>> readManifest()
    {
        const auto bytes = access.read(parts.root / manifestName);
        if (!bytes)
            return Failure{storageFailure};
        if (!*bytes)
            return std::nullopt;
        auto manifest = decodeManifest(**bytes);
        if (!manifest)
            return Failure{manifest.error()};
        return *std::move(manifest);
    }

    Result<void> writeManifest(const GlucoseHistoryManifest& manifest)
    {
        manifestNeedsWrite = true;
        if (access.writeAtomically(parts.root / manifestName, encode(manifest)))
            return Failure{storageFailure};
        manifestNeedsWrite = false;
        return {};
    }

    /// The manifest as it is to be while our account is attached.
    Result<GlucoseHistoryManifest> withAttachment(GlucoseHistoryManifest manifest)
    {
        manifest.attachedScopeID = attached;
        if (!attached)
            return manifest;
        if (std::ranges::find(manifest.scopes, *attached) == manifest.scopes.end())
            manifest.scopes.push_back(*attached);
        if (!manifest.legacyMigrationScope) {
            const auto inherits = legacy.exists();
            if (!inherits)
                return Failure{inherits.error()};
            if (*inherits)
                manifest.legacyMigrationScope = attached;
        }
        return manifest;
    }

    Result<HistoryLock> lock()
    {
        // One by one, so that each has its name on the disk even when an earlier try ended half-way.
        for (const auto& folder : {parts.root.parent_path(), parts.root, accountsFolder()}) {
            if (access.makeFolder(folder))
                return Failure{storageFailure};
        }
        const auto handle = parts.files.lock(parts.root / lockName);
        if (!handle)
            return Failure{storageFailure};
        return HistoryLock{parts.files, *handle};
    }

    /// Under the lock; writes the manifest when that is still to do. The operation goes on when it cannot.
    Result<Turn> begin()
    {
        auto locked = lock();
        if (!locked)
            return Failure{locked.error()};
        auto manifest = noted(Area::manifest, readManifest());
        if (!manifest)
            return Failure{manifest.error()};
        GlucoseHistoryManifest current = std::move(*manifest).value_or(GlucoseHistoryManifest{});
        if (manifestNeedsWrite) {
            auto wanted = withAttachment(current);
            const Result<void> written =
                wanted ? writeManifest(*wanted) : Result<void>{Failure{wanted.error()}};
            if (noted(Area::manifestWrite, written))
                current = *std::move(wanted);
        }
        return Turn{*std::move(locked), std::move(current)};
    }

    /// What the attached scope's configuration is from now on. Outdates tokens when another process has
    /// deleted meanwhile, and when saving begins again: a fetch of before must not save anything then.
    void adopt(const OptionalConfiguration& read)
    {
        const GlucoseHistoryConfiguration fresh = read.value_or(GlucoseHistoryConfiguration{});
        if (known) {
            const bool restarted =
                known->collectionStartedAt &&
                (!fresh.collectionStartedAt || *fresh.collectionStartedAt > *known->collectionStartedAt);
            if (restarted || fresh.collectionCutoff > known->collectionCutoff ||
                (fresh.pendingDeletion && !known->pendingDeletion))
                ++epoch;
        }
        known = fresh;
    }

    /// The attached scope's configuration, read again.
    Result<OptionalConfiguration> currentConfiguration()
    {
        auto configuration = noted(Area::configuration, account(*attached).readConfiguration());
        if (configuration)
            adopt(*configuration);
        else
            known.reset();
        return configuration;
    }

    /// Writes the attached scope's configuration. Also a write that failed may have taken effect.
    Result<void> commit(const GlucoseHistoryConfiguration& configuration)
    {
        const auto written = account(*attached).writeConfiguration(configuration);
        if (written)
            adopt(configuration);
        else if (const auto read = account(*attached).readConfiguration())
            adopt(*read);
        return written;
    }

    // --- The key

    /// The lock and the attached scope's key. Begins again when somebody changes the configuration while the
    /// secret store is asked, since a deletion changes the key too. `wantsKey` tells by the configuration
    /// whether it is asked at all; with `needsKey`, one that fails ends it.
    template <class WantsKey>
    Result<KeyedTurn> beginWithKey(const WantsKey& wantsKey, bool needsKey)
    {
        constexpr int mostTries = 3;
        for (int tries = 0; tries < mostTries; ++tries) {
            auto seen = currentConfiguration();
            if (!seen)
                return Failure{seen.error()};
            std::optional<Result<SecretText>> key;
            if (wantsKey(*seen))
                key = account(*attached).loadKey(false);
            if (needsKey && key && !*key && key->error() != unavailableKey)
                return Failure{key->error()};
            auto turn = begin();
            if (!turn)
                return Failure{turn.error()};
            const auto configuration = currentConfiguration();
            if (!configuration)
                return Failure{configuration.error()};
            if (*configuration == *seen)
                return KeyedTurn{*std::move(turn), *std::move(seen), std::move(key)};
        }
        return Failure{storageFailure};
    }

    /// The key to seal with: made when it is missing and may be, which only the lock makes safe.
    Result<SecretText> sealingKey(const KeyedTurn& keyed)
    {
        if (keyed.key && (*keyed.key || keyed.key->error() != unavailableKey))
            return *keyed.key;
        return account(*attached).loadKey(true);
    }

    // --- Days

    /// Merges a batch into the days of the attached scope. `each` gets what became of each day.
    template <class Each>
    Result<void> mergeDays(const SecretText& key, const Batch& batch, HistoryMergeRule rule, bool dryRun,
                           const Each& each)
    {
        GlucoseHistoryAccount& own = account(*attached);
        Result<void> result;
        bool written = false;
        for (const auto& [index, readings] : batch) {
            const auto existing = own.readDay(key, index);
            if (!existing) {
                keepGravest(result, Failure{existing.error()});
                each(index, Result<HistoryMergeCount>{Failure{existing.error()}});
                continue;
            }
            HistoryDay day = existing->value_or(HistoryDay{.accountScope = *attached});
            const HistoryMergeCount count = mergeReadings(day.readings, readings, rule);
            if (count.changed > 0 && !dryRun) {
                if (const auto stored = own.writeDay(key, index, day); !stored) {
                    keepGravest(result, stored);
                    each(index, Result<HistoryMergeCount>{Failure{stored.error()}});
                    continue;
                }
                written = true;
            }
            each(index, Result<HistoryMergeCount>{count});
        }
        // What is there already may come from a run that ended before its name was on the disk; a write has
        // seen to that for the whole folder.
        if (result && !written && !dryRun && !batch.empty() && parts.files.syncFolder(folderOf(*attached)))
            return Failure{storageFailure};
        return result;
    }

    /// What the attached scope keeps from; `newestToCome` is the newest day that is about to be saved.
    Result<Date> oldestKept(const GlucoseHistoryConfiguration& configuration, Date now,
                            std::optional<std::int64_t> newestToCome = std::nullopt)
    {
        const auto days = account(*attached).days();
        if (!days)
            return Failure{days.error()};
        const auto newestSaved = days->empty() ? std::nullopt : std::optional{days->back()};
        return oldestKeptReading(configuration.retentionDays, now, std::max(newestSaved, newestToCome));
    }

    /// Removes whole days beyond the retention, which needs no key.
    Result<void> removeOldDays(const HistoryScopeID& scope, const GlucoseHistoryConfiguration& configuration,
                               Date now)
    {
        GlucoseHistoryAccount& own = account(scope);
        const auto days = own.days();
        if (!days)
            return Failure{days.error()};
        Result<void> result;
        if (days->empty())
            return {};
        const std::int64_t firstKept =
            dayOf(oldestKeptReading(configuration.retentionDays, now, days->back()));
        if (days->front() >= firstKept)
            return {};
        for (const std::int64_t day : *days) {
            if (day < firstKept)
                keepFirst(result, own.removeDay(day));
        }
        if (parts.files.syncFolder(folderOf(scope)))
            keepFirst(result, Failure{storageFailure});
        return result;
    }

    /// The readings of the day that the retention ends in. A damaged one goes when all of it is too old.
    Result<void> trimBoundaryDay(const SecretText& key, Date oldest)
    {
        GlucoseHistoryAccount& own = account(*attached);
        auto day = own.readDay(key, dayOf(oldest));
        if (!day && day.error() != unreadableHistory)
            return Failure{day.error()};
        if (!day || !*day || dropReadingsBefore((*day)->readings, oldest) == 0)
            return {};
        if ((*day)->readings.empty())
            return own.removeDay(dayOf(oldest));
        return own.writeDay(key, dayOf(oldest), **day);
    }

    /// The oldest time that is kept, when a day is saved that it may be in the midst of.
    Result<std::optional<Date>> boundary(const GlucoseHistoryConfiguration& configuration, Date now)
    {
        const auto oldest = oldestKept(configuration, now);
        if (!oldest)
            return Failure{oldest.error()};
        const auto days = account(*attached).days();
        if (!days)
            return Failure{days.error()};
        return std::ranges::binary_search(*days, dayOf(*oldest)) ? std::optional{*oldest} : std::nullopt;
    }

    /// Whether a day has to be opened to trim the attached scope.
    bool wantsKeyToTrim(const OptionalConfiguration& configuration, Date now)
    {
        if (!configuration || configuration->pendingDeletion)
            return false;
        const auto oldest = boundary(*configuration, now);
        return !oldest || *oldest;
    }

    /// Without a key, a day that the retention ends in, which somebody else has just saved, waits.
    Result<void> trimAll(const std::optional<Result<SecretText>>& key,
                         const GlucoseHistoryConfiguration& configuration, Date now)
    {
        Result<void> result = removeOldDays(*attached, configuration, now);
        const auto oldest = boundary(configuration, now);
        if (!oldest)
            keepFirst(result, Failure{oldest.error()});
        else if (*oldest && key)
            keepFirst(result, *key ? trimBoundaryDay(**key, **oldest) : Result<void>{Failure{key->error()}});
        // What an earlier try removed may still come back with a power cut.
        if (parts.files.syncFolder(folderOf(*attached)))
            keepFirst(result, Failure{storageFailure});
        return result;
    }

    // --- The single-key layout

    /// Takes the single-key layout over. Its keys are read before the lock, as those of a KeyedTurn.
    Result<void> migrate()
    {
        const auto result = noted(Area::migration, migrateOnce());
        // A damaged day will not mend by itself until the next poll; whatever else may.
        migrationDue = !result && result.error() != unreadableHistory;
        return result;
    }

    Result<void> migrateOnce()
    {
        constexpr int mostTries = 3;
        for (int tries = 0; tries < mostTries; ++tries) {
            auto left = legacy.exists();
            if (!left)
                return Failure{left.error()};
            const auto manifest = readManifest();
            if (!manifest)
                return Failure{manifest.error()};
            const auto heir = *manifest ? (*manifest)->legacyMigrationScope : std::nullopt;
            OptionalConfiguration seen;
            std::optional<LegacyHistory::Keys> keys;
            if (*left && heir) {
                const auto configuration = account(*heir).readConfiguration();
                if (!configuration)
                    return Failure{configuration.error()};
                seen = *configuration;
                if (!seen || !seen->pendingDeletion)
                    keys.emplace(legacy.loadKey(), account(*heir).loadKey(false));
            }
            const auto turn = begin();
            if (!turn)
                return Failure{turn.error()};
            const auto& now = turn->manifest.legacyMigrationScope;
            if (!now)
                return {};
            left = legacy.exists();
            if (!left)
                return Failure{left.error()};
            if (!*left)
                return legacy.settle();
            const auto configuration = account(*now).readConfiguration();
            if (!configuration)
                return Failure{configuration.error()};
            if (*configuration && (*configuration)->pendingDeletion)
                return Failure{deletionIncomplete};  // It goes with the rest.
            if (now != heir || !keys || *configuration != seen)
                continue;
            const auto moved = legacy.moveInto(account(*now), *now, folderOf(*now), *keys);
            if (now == attached)
                std::ignore = currentConfiguration();
            return moved;
        }
        return Failure{storageFailure};
    }

    /// For operations that want the inherited readings but do without them when they have to.
    void migrateWhenDue()
    {
        if (migrationDue && attached)
            std::ignore = migrate();
    }

    // --- Deletion

    /// Phase one: saving is off, and a later start knows that the rest is to go.
    Result<void> beginDeletion(const HistoryScopeID& scope)
    {
        const auto current = account(scope).readConfiguration();
        if (!current && current.error() != invalidConfiguration)
            return Failure{current.error()};
        GlucoseHistoryConfiguration marked;
        if (current && *current)
            marked = **current;
        else
            marked.hasPreviouslyEnabled = true;
        marked.isEnabled = false;
        marked.pendingDeletion = true;
        marked.collectionIntervalStart.reset();
        if (scope == attached)
            return commit(marked);
        return account(scope).writeConfiguration(marked);
    }

    /// All the other phases; can be repeated.
    Result<void> finishDeletion(const HistoryScopeID& scope, const GlucoseHistoryManifest& manifest, Date now)
    {
        GlucoseHistoryAccount& own = account(scope);
        const auto steps = [&]() -> Result<void> {
            const auto names = parts.files.list(folderOf(scope));
            if (!names)
                return Failure{storageFailure};
            for (const std::string& name : *names) {
                if (name.ends_with(historySuffix) && access.remove(folderOf(scope) / name))
                    return Failure{storageFailure};
            }
            access.removeStrayTemporaries(folderOf(scope));
            if (manifest.legacyMigrationScope == scope) {
                const auto left = legacy.exists();
                if (!left)
                    return Failure{left.error()};
                if (*left) {
                    if (const auto removed = legacy.remove(); !removed)
                        return removed;
                } else if (parts.files.syncFolder(parts.root))
                    return Failure{storageFailure};  // The last try may have ended before this.
            }
            if (const auto removed = own.removeKey(); !removed)
                return removed;
            const auto current = own.readConfiguration();
            if (!current)
                return Failure{current.error()};
            GlucoseHistoryConfiguration final = current->value_or(GlucoseHistoryConfiguration{});
            final.isEnabled = false;
            final.pendingDeletion = false;
            final.collectionStartedAt.reset();
            final.insightsUnlockedAt.reset();
            final.collectionIntervalStart.reset();
            final.collectionCutoff = now;
            return scope == attached ? commit(final) : own.writeConfiguration(final);
        };
        if (!steps())
            return Failure{deletionIncomplete};
        if (scope == attached)
            forget({Area::saving, Area::trimming, Area::reading});
        return {};
    }

    /// Whether a scope has anything that could be deleted.
    Result<bool> hasAnything(const HistoryScopeID& scope)
    {
        const auto configuration = account(scope).readConfiguration();
        if (!configuration && configuration.error() != invalidConfiguration)
            return Failure{configuration.error()};
        if (!configuration || *configuration)
            return true;
        const auto files = access.hasHistoryFiles(folderOf(scope));
        if (!files)
            return Failure{storageFailure};
        return *files;
    }

    // --- Operations

    Result<void> recover(Date now)
    {
        const auto there = access.exists(parts.root);
        if (!there)
            return Failure{storageFailure};
        if (!*there)
            return {};
        bool migrates = false;
        auto result = endDeletions(now, migrates);
        if (migrates)
            keepFirst(result, migrate());
        return result;
    }

    /// Deletion first: what a person wanted gone must not be taken over.
    Result<void> endDeletions(Date now, bool& migrates)
    {
        const auto turn = begin();
        if (!turn)
            return Failure{turn.error()};
        const auto scopes = allScopes(turn->manifest);
        if (!scopes)
            return Failure{scopes.error()};
        access.removeStrayTemporaries(parts.root);
        Result<void> result;
        Result<void> deletions;
        for (const HistoryScopeID& scope : *scopes) {
            access.removeStrayTemporaries(folderOf(scope));
            const auto configuration = account(scope).readConfiguration();
            if (!configuration)
                keepFirst(result, Failure{configuration.error()});
            else if (*configuration && (*configuration)->pendingDeletion)
                keepFirst(deletions, finishDeletion(scope, turn->manifest, now));
        }
        const auto legacyGoes = legacy.isBeingDeleted();
        if (legacyGoes && *legacyGoes && !legacy.remove())
            keepFirst(deletions, Failure{deletionIncomplete});
        keepFirst(result, noted(Area::deletion, deletions));
        if (!legacyGoes && legacyGoes.error() != invalidConfiguration)
            keepFirst(result, Failure{legacyGoes.error()});
        else
            migrates = turn->manifest.legacyMigrationScope && (!legacyGoes || !*legacyGoes);
        return result;
    }

    Result<void> attach(std::optional<HistoryScopeID> scope)
    {
        if (scope != attached) {
            ++epoch;
            forget({Area::saving, Area::trimming, Area::reading});
            attached = std::move(scope);
            known.reset();
        }
        Result<void> result = recordAttachment();
        if (attached) {
            if (const auto configuration = currentConfiguration(); !configuration)
                keepFirst(result, Failure{configuration.error()});
        }
        return result;
    }

    Result<void> recordAttachment()
    {
        const bool wasDue = std::exchange(manifestNeedsWrite, true);
        const auto manifest = noted(Area::manifest, readManifest());
        if (!manifest)
            return Failure{manifest.error()};
        const GlucoseHistoryManifest current = manifest->value_or(GlucoseHistoryManifest{});
        const auto wanted = noted(Area::manifestWrite, withAttachment(current));
        if (!wanted)
            return Failure{wanted.error()};
        migrationDue = attached && wanted->legacyMigrationScope == attached;
        if (!wasDue && *manifest && *wanted == current) {
            manifestNeedsWrite = false;
            return {};
        }
        if (!*manifest && !wanted->legacyMigrationScope)
            return {};  // Written with the first thing that is saved.
        if (const auto turn = begin(); !turn)
            return noted(Area::manifestWrite, Result<void>{Failure{turn.error()}});
        if (manifestNeedsWrite)
            return Failure{storageFailure};
        return {};
    }

    Result<void> enable(std::int64_t retentionDays, std::int64_t consentVersion, Date now)
    {
        if (!isRetention(retentionDays))
            return Failure{invalidRetention};
        if (!attached)
            return Failure{accountRequired};
        migrateWhenDue();
        auto keyed = beginWithKey([](const auto&) { return true; }, true);
        if (!keyed)
            return Failure{keyed.error()};
        if (keyed->configuration && keyed->configuration->pendingDeletion) {
            if (const auto deleted =
                    noted(Area::deletion, finishDeletion(*attached, keyed->turn.manifest, now));
                !deleted)
                return deleted;
            const auto configuration = currentConfiguration();
            if (!configuration)
                return Failure{configuration.error()};
            keyed->configuration = *configuration;
            keyed->key.reset();  // It went with the rest.
        }
        const auto key = sealingKey(*keyed);
        if (!key)
            return Failure{key.error()};
        GlucoseHistoryConfiguration next = keyed->configuration.value_or(GlucoseHistoryConfiguration{});
        if (!next.isEnabled) {
            next.isEnabled = true;
            next.hasPreviouslyEnabled = true;
            next.collectionCutoff = now;
            next.collectionIntervalStart = now;
        }
        std::ignore = endFuture(next, now);
        next.retentionDays = retentionDays;
        next.consentVersion = consentVersion;
        if (const auto written = commit(next); !written)
            return written;
        return noted(Area::trimming, trimAll(key, next, now));
    }

    Result<void> pause()
    {
        if (!attached)
            return Failure{accountRequired};
        if (const auto seen = currentConfiguration(); !seen || !*seen)
            return seen ? Result<void>{} : Failure{seen.error()};
        const auto turn = begin();
        if (!turn)
            return Failure{turn.error()};
        const auto configuration = currentConfiguration();
        if (!configuration)
            return Failure{configuration.error()};
        if (!*configuration)
            return {};
        GlucoseHistoryConfiguration next = **configuration;
        next.isEnabled = false;
        next.collectionIntervalStart.reset();
        const auto written = commit(next);
        if (written)
            forget({Area::saving});
        return written;
    }

    Result<void> setRetention(std::int64_t days, Date now)
    {
        if (!isRetention(days))
            return Failure{invalidRetention};
        if (!attached)
            return Failure{accountRequired};
        const auto wantsKey = [&](OptionalConfiguration configuration) {
            if (configuration)
                configuration->retentionDays = days;
            return wantsKeyToTrim(configuration, now);
        };
        const auto keyed = beginWithKey(wantsKey, false);
        if (!keyed)
            return Failure{keyed.error()};
        GlucoseHistoryConfiguration next = keyed->configuration.value_or(GlucoseHistoryConfiguration{});
        next.retentionDays = days;
        if (const auto written = commit(next); !written)
            return written;
        if (next.pendingDeletion)
            return {};
        return noted(Area::trimming, trimAll(keyed->key, next, now));
    }

    Result<void> setInsightsUnlocked(Date now)
    {
        if (!attached)
            return Failure{accountRequired};
        const auto turn = begin();
        if (!turn)
            return Failure{turn.error()};
        const auto configuration = currentConfiguration();
        if (!configuration)
            return Failure{configuration.error()};
        if (!*configuration || (*configuration)->pendingDeletion)
            return {};
        GlucoseHistoryConfiguration next = **configuration;
        if (next.insightsUnlockedAt && !account(*attached).needsConfigurationWrite())
            return {};
        if (!next.insightsUnlockedAt)
            next.insightsUnlockedAt = now;
        return commit(next);
    }

    [[nodiscard]] bool isCurrent(const GlucoseHistoryCollectionToken& token) const
    {
        return attached == token.accountScope && epoch == token.epoch;
    }

    static bool collects(const OptionalConfiguration& configuration)
    {
        return configuration && configuration->isEnabled && !configuration->pendingDeletion;
    }

    Result<std::size_t> save(const GlucoseHistoryCollectionToken& token,
                             const std::vector<GlucoseReading>& readings, Date fetchedAt)
    {
        if (!isCurrent(token))
            return 0;
        migrateWhenDue();
        const auto seen = currentConfiguration();
        if (!seen)
            return Failure{seen.error()};
        if (!collects(*seen) || !isCurrent(token))
            return 0;
        const auto keyed = beginWithKey(collects, true);
        if (!keyed)
            return Failure{keyed.error()};
        if (!collects(keyed->configuration) || !isCurrent(token))
            return 0;
        const auto key = sealingKey(*keyed);
        if (!key)
            return Failure{key.error()};
        GlucoseHistoryConfiguration configuration = *keyed->configuration;
        if (endFuture(configuration, fetchedAt)) {
            if (const auto written = commit(configuration); !written)
                return Failure{written.error()};
        }

        Batch batch;
        for (const GlucoseReading& reading : readings) {
            if (const auto stored = storableReading(reading))
                batch[historyDayIndex(stored->date)].push_back({*stored, fetchedAt});
        }
        const auto kept = oldestKept(configuration, fetchedAt, newestDay(batch));
        if (!kept)
            return Failure{kept.error()};
        std::ignore = dropBefore(batch, std::max(*kept, configuration.collectionCutoff.value_or(firstDate)));
        std::size_t changed = 0;
        Result<void> result =
            mergeDays(*key, batch, HistoryMergeRule::laterFetchWins, false,
                      [&](std::int64_t, const auto& count) { changed += count ? count->changed : 0; });
        if (result && !batch.empty())
            result = recordCollection(configuration, fetchedAt);
        keepFirst(result, removeOldDays(*attached, configuration, fetchedAt));
        if (!result)
            return Failure{result.error()};
        return changed;
    }

    /// After a save or an import: when collection began, where that is not known or later.
    Result<void> recordCollection(GlucoseHistoryConfiguration configuration, Date begin,
                                  bool movesBack = false)
    {
        const bool moves =
            !configuration.collectionStartedAt || (movesBack && begin < *configuration.collectionStartedAt);
        if (!moves && !account(*attached).needsConfigurationWrite())
            return {};
        if (moves)
            configuration.collectionStartedAt = begin;
        return commit(configuration);
    }

    Result<void> trim(Date now)
    {
        const auto there = access.exists(parts.root);
        if (!there)
            return Failure{storageFailure};
        if (!*there)
            return {};
        Result<void> result;
        if (attached)
            result = trimAttached(now);
        keepFirst(result, trimOthers(now));
        return result;
    }

    Result<void> trimAttached(Date now)
    {
        migrationDue |= problems[static_cast<std::size_t>(Area::migration)].has_value();
        migrateWhenDue();
        const auto keyed = beginWithKey(
            [&](const auto& configuration) { return wantsKeyToTrim(configuration, now); }, false);
        if (!keyed)
            return Failure{keyed.error()};
        if (!keyed->configuration || keyed->configuration->pendingDeletion)
            return {};
        return trimAll(keyed->key, *keyed->configuration, now);
    }

    /// What a person asked for holds for accounts that are signed out too.
    Result<void> trimOthers(Date now)
    {
        const auto turn = begin();
        if (!turn)
            return Failure{turn.error()};
        const auto scopes = allScopes(turn->manifest);
        if (!scopes)
            return Failure{scopes.error()};
        Result<void> result;
        for (const HistoryScopeID& scope : *scopes) {
            if (scope == attached)
                continue;
            const auto configuration = account(scope).readConfiguration();
            if (!configuration && configuration.error() == invalidConfiguration)
                continue;  // Told when it is signed in; how long it is to be kept is not known.
            if (!configuration)
                keepFirst(result, Failure{configuration.error()});
            else if (*configuration && !(*configuration)->pendingDeletion) {
                keepFirst(result, removeOldDays(scope, **configuration, now));
                if (parts.files.syncFolder(folderOf(scope)))  // As in trimAll().
                    keepFirst(result, Failure{storageFailure});
            }
        }
        return result;
    }

    Result<GlucoseHistorySnapshot> snapshot(Date begin, Date end)
    {
        if (!attached)
            return Failure{accountRequired};
        migrateWhenDue();
        if (const auto manifest = noted(Area::manifest, readManifest()); !manifest)
            return Failure{manifest.error()};
        const auto configuration = currentConfiguration();
        if (!configuration)
            return Failure{configuration.error()};
        GlucoseHistorySnapshot snapshot{
            .configuration = configuration->value_or(GlucoseHistoryConfiguration{}),
            .accountScope = *attached,
            .epoch = epoch};
        if (snapshot.configuration.pendingDeletion || begin >= end)
            return snapshot;
        auto days = account(*attached).days();
        if (!days)
            return Failure{days.error()};
        std::erase_if(*days, [&](std::int64_t day) { return day < dayOf(begin) || day > dayOf(end); });
        if (days->empty())
            return snapshot;
        const auto key = account(*attached).loadKey(false);
        if (!key)
            return Failure{key.error()};
        std::optional<GlucoseHistoryError> firstError;
        for (const std::int64_t index : *days) {
            auto day = account(*attached).readDay(*key, index);
            if (!day) {
                snapshot.unreadableDays.push_back(index);
                firstError = firstError.value_or(day.error());
            } else if (*day) {
                std::ranges::copy_if(std::move(**day).readings, std::back_inserter(snapshot.readings),
                                     [&](const StoredReading& stored) {
                                         return stored.reading.date >= begin && stored.reading.date < end;
                                     });
            }
        }
        // One file that the disk does not give back is a damaged day; all of them are a disk that fails.
        if (firstError == storageFailure && snapshot.unreadableDays.size() == days->size())
            return Failure{storageFailure};
        return snapshot;
    }

    Result<HistoryImportResult> import(const std::vector<GlucoseReading>& readings, Date now, bool dryRun)
    {
        if (!attached)
            return Failure{accountRequired};
        if (!dryRun)
            migrateWhenDue();
        const auto seen = currentConfiguration();
        if (!seen)
            return Failure{seen.error()};
        if (const auto refused = refusesImport(*seen))
            return Failure{*refused};
        if (dryRun) {
            if (const auto manifest = readManifest(); !manifest)
                return Failure{manifest.error()};
            return importInto(**seen, account(*attached).loadKey(false), readings, now, true);
        }
        const auto keyed = beginWithKey([](const auto&) { return true; }, true);
        if (!keyed)
            return Failure{keyed.error()};
        if (const auto refused = refusesImport(keyed->configuration))
            return Failure{*refused};
        return importInto(*keyed->configuration, sealingKey(*keyed), readings, now, false);
    }

    static std::optional<GlucoseHistoryError> refusesImport(const OptionalConfiguration& configuration)
    {
        if (!configuration || !configuration->hasPreviouslyEnabled)
            return accountRequired;
        if (configuration->pendingDeletion)
            return deletionIncomplete;
        return std::nullopt;
    }

    Result<HistoryImportResult> importInto(const GlucoseHistoryConfiguration& configuration,
                                           const Result<SecretText>& key,
                                           const std::vector<GlucoseReading>& readings, Date now, bool dryRun)
    {
        HistoryImportResult imported;
        Batch batch;
        for (const GlucoseReading& reading : readings) {
            if (const auto stored = storableReading(reading))
                batch[historyDayIndex(stored->date)].push_back({*stored, now});
            else
                ++imported.refused;
        }
        // What is imported is no sign of how late it is: an old file would be kept only until the next save.
        const auto kept = oldestKept(configuration, now);
        if (!kept)
            return Failure{kept.error()};
        imported.beyondRetention = dropBefore(batch, *kept);
        if (batch.empty())
            return imported;
        std::optional<Date> oldest;
        const auto count = [&](std::int64_t day, const Result<HistoryMergeCount>& merged) {
            if (!merged) {
                imported.unreadableDays.push_back(day);
                return;
            }
            imported.added += merged->changed;
            imported.alreadyThere += merged->same;
            for (const StoredReading& stored : batch[day])
                oldest = std::min(oldest.value_or(stored.reading.date), stored.reading.date);
        };
        if (!key && !(dryRun && key.error() == unavailableKey))
            return Failure{key.error()};
        if (!key) {
            // The key is made with the first reading: nothing can be there yet, or nothing can be added.
            const auto files = access.hasHistoryFiles(folderOf(*attached));
            if (!files || *files || configuration.collectionStartedAt)
                return Failure{files ? unavailableKey : storageFailure};
            for (auto& [day, ofDay] : batch) {
                std::vector<StoredReading> none;
                count(day, mergeReadings(none, ofDay, HistoryMergeRule::keepsExisting));
            }
            return imported;
        }
        const auto merged = mergeDays(*key, batch, HistoryMergeRule::keepsExisting, dryRun, count);
        if (!merged && merged.error() != unreadableHistory)
            return Failure{merged.error()};
        if (!dryRun && oldest) {
            if (const auto recorded = recordCollection(configuration, *oldest, true); !recorded)
                return Failure{recorded.error()};
        }
        return imported;
    }

    Result<void> deleteAttached(Date now)
    {
        if (!attached)
            return Failure{accountRequired};
        auto turn = begin();
        if (!turn)
            return Failure{turn.error()};
        const auto legacyLeft = legacy.exists();
        const auto any = hasAnything(*attached);
        if (!legacyLeft || !any)
            return Failure{storageFailure};
        if (*legacyLeft && !turn->manifest.legacyMigrationScope) {
            turn->manifest.legacyMigrationScope = attached;
            if (const auto written = writeManifest(turn->manifest); !written)
                return written;
        }
        const bool inherits = *legacyLeft && turn->manifest.legacyMigrationScope == attached;
        if (!*any && !inherits)
            return {};
        if (const auto begun = beginDeletion(*attached); !begun)
            return begun;
        ++epoch;
        const auto finished = finishDeletion(*attached, turn->manifest, now);
        if (finished && inherits)
            forget({Area::migration});
        return finished;
    }

    Result<void> deleteAll(Date now)
    {
        const auto there = access.exists(parts.root);
        if (!there)
            return Failure{storageFailure};
        if (!*there)
            return {};
        const auto locked = lock();
        if (!locked)
            return Failure{locked.error()};
        auto read = readManifest();
        if (!read && read.error() != invalidConfiguration)
            return Failure{read.error()};
        GlucoseHistoryManifest manifest;
        if (read)
            manifest = std::move(*read).value_or(GlucoseHistoryManifest{});
        const auto scopes = allScopes(manifest);
        const auto legacyLeft = legacy.exists();
        if (!scopes || !legacyLeft)
            return Failure{storageFailure};
        if (!read) {
            // A damaged one would keep every later start from ending this deletion.
            manifest = {.scopes = *scopes, .attachedScopeID = attached};
            if (const auto written = noted(Area::manifestWrite, writeManifest(manifest)); !written)
                return written;
        }
        std::vector<HistoryScopeID> going;
        for (const HistoryScopeID& scope : *scopes) {
            const auto any = hasAnything(scope);
            if (!any)
                return Failure{any.error()};
            if (*any)
                going.push_back(scope);
        }
        // What a scope inherits goes with that scope.
        const bool ownerless =
            *legacyLeft && (!manifest.legacyMigrationScope ||
                            std::ranges::find(going, *manifest.legacyMigrationScope) == going.end());
        if (ownerless) {
            if (const auto begun = legacy.beginDeletion(); !begun)
                return begun;
        }
        for (const HistoryScopeID& scope : going) {
            if (const auto begun = beginDeletion(scope); !begun)
                return begun;
        }
        ++epoch;
        Result<void> result;
        if (ownerless && !legacy.remove())
            result = Failure{deletionIncomplete};
        for (const HistoryScopeID& scope : going)
            keepFirst(result, finishDeletion(scope, manifest, now));
        if (result)
            forget({Area::migration});
        return result;
    }

    Parts parts;
    LocalGlucoseHistoryFileAccess access;
    LegacyHistory legacy;
    std::map<HistoryScopeID, GlucoseHistoryAccount> accounts{};
    std::optional<HistoryScopeID> attached{};
    OptionalConfiguration known{};  ///< Of the attached scope; empty while it could not be read.
    std::uint64_t epoch = 1;
    bool manifestNeedsWrite = false;
    bool migrationDue = false;
    std::array<std::optional<GlucoseHistoryError>, areaCount> problems{};
};

GlucoseHistoryStore::GlucoseHistoryStore(Parts parts) : impl_{std::make_unique<Impl>(std::move(parts))} {}
GlucoseHistoryStore::~GlucoseHistoryStore() = default;

Result<void> GlucoseHistoryStore::recover(Date now) { return impl_->recover(now); }

Result<GlucoseHistoryStatus> GlucoseHistoryStore::attach(std::optional<HistoryScopeID> scope)
{
    return impl_->statusAfter(impl_->attach(std::move(scope)));
}

GlucoseHistoryStatus GlucoseHistoryStore::status() const { return impl_->status(); }

Result<GlucoseHistoryStatus> GlucoseHistoryStore::reload()
{
    if (const auto manifest = impl_->noted(Area::manifest, impl_->readManifest()); !manifest)
        return Failure{manifest.error()};
    if (!impl_->attached)
        return impl_->status();
    return impl_->statusAfter(impl_->currentConfiguration());
}

std::optional<GlucoseHistoryCollectionToken> GlucoseHistoryStore::collectionToken() const
{
    // While the configuration is unknown, the next save finds out.
    if (!impl_->attached || (impl_->known && !Impl::collects(impl_->known)))
        return std::nullopt;
    return GlucoseHistoryCollectionToken{*impl_->attached, impl_->epoch};
}

Result<GlucoseHistoryStatus> GlucoseHistoryStore::enable(std::int64_t retentionDays,
                                                         std::int64_t consentVersion, Date now)
{
    return impl_->statusAfter(impl_->enable(retentionDays, consentVersion, now));
}

Result<GlucoseHistoryStatus> GlucoseHistoryStore::pause() { return impl_->statusAfter(impl_->pause()); }

Result<GlucoseHistoryStatus> GlucoseHistoryStore::setRetention(std::int64_t days, Date now)
{
    return impl_->statusAfter(impl_->setRetention(days, now));
}

Result<GlucoseHistoryStatus> GlucoseHistoryStore::setInsightsUnlocked(Date now)
{
    return impl_->statusAfter(impl_->setInsightsUnlocked(now));
}

Result<std::size_t> GlucoseHistoryStore::save(const GlucoseHistoryCollectionToken& token,
                                              const std::vector<GlucoseReading>& readings, Date fetchedAt)
{
    return impl_->noted(Area::saving, impl_->save(token, readings, fetchedAt));
}

Result<void> GlucoseHistoryStore::trim(Date now) { return impl_->noted(Area::trimming, impl_->trim(now)); }

Result<GlucoseHistorySnapshot> GlucoseHistoryStore::snapshot(Date begin, Date end)
{
    auto snapshot = impl_->noted(Area::reading, impl_->snapshot(begin, end));
    if (snapshot && !snapshot->unreadableDays.empty())
        std::ignore = impl_->noted(Area::reading, Result<void>{Failure{unreadableHistory}});
    return snapshot;
}

Result<HistoryImportResult> GlucoseHistoryStore::import(const std::vector<GlucoseReading>& readings, Date now,
                                                        bool dryRun)
{
    return impl_->import(readings, now, dryRun);
}

Result<GlucoseHistoryStatus> GlucoseHistoryStore::deleteAttached(Date now)
{
    return impl_->statusAfter(impl_->noted(Area::deletion, impl_->deleteAttached(now)));
}

Result<GlucoseHistoryStatus> GlucoseHistoryStore::deleteAll(Date now)
{
    return impl_->statusAfter(impl_->noted(Area::deletion, impl_->deleteAll(now)));
}

}  // namespace tidewell
