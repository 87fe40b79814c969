#pragma once

#include <gtest/gtest.h>

#include "MemoryStorage.h"
#include "history/GlucoseHistoryAccount.h"
#include "history/GlucoseHistoryStore.h"

namespace tidewell {

/// 2026-11-14 10:00 UTC.
inline constexpr Date storyNow = dateFromUnix(20771 * 86400.0 + 36000);
inline constexpr Seconds oneHour{3600};
inline constexpr Seconds dayLength{86400};

inline HistoryScopeID scopeOf(std::string_view user)
{
    return *HistoryScopeID::of({.provider = GlucoseProvider::dexcom, .username = std::string{user}});
}

inline GlucoseReading readingAt(Date date, double mgdL = 100)
{
    return makeReading(mgdL, "Flat", date, Seconds{300}, GlucoseProvider::dexcom);
}

/// What a history holds, by second.
using Values = std::map<std::int64_t, double>;

inline Values valuesOf(const std::vector<StoredReading>& readings)
{
    Values values;
    for (const StoredReading& stored : readings)
        values[static_cast<std::int64_t>(unixSeconds(stored.reading.date))] = stored.reading.mgdL;
    return values;
}

/// A disk, a secret store and a process that uses them.
struct HistoryWorld {
    HistoryWorld() : files{plan}, keychain{plan}, random{1}
    {
        files.put("/data/other", "");
        watchLock();
    }
    /// What is left of another one. `seed` makes names and nonces of its own.
    HistoryWorld(const HistoryWorld& other, Survival survival, std::uint64_t seed)
        : files{other.files.after(survival, plan)}, keychain{other.keychain, plan}, random{seed}
    {
        watchLock();
    }
    void watchLock()
    {
        keychain.isLocked = [this] { return files.isOpen(root / ".lock"); };
    }
    HistoryWorld(const HistoryWorld&) = delete;

    [[nodiscard]] GlucoseHistoryStore::Parts parts()
    {
        return {.root = root, .files = files, .keychain = keychain, .random = random};
    }
    [[nodiscard]] std::string key(std::string_view account) const
    {
        const auto found = keychain.items.find({std::string{historyKeychainService}, std::string{account}});
        return found == keychain.items.end() ? "" : found->second;
    }

    const std::filesystem::path root = "/data/Tidewell/SavedHistory";
    FaultPlan plan{};
    MemoryFileSystem files;
    PlannedKeychain keychain;
    SeededRandom random;
};

/// What a start finds of one scope.
struct ScopeState {
    GlucoseHistoryConfiguration configuration{};
    Values values{};
    bool hasKey = false;
    bool operator==(const ScopeState&) const = default;
};

/// What a start finds on a disk.
struct HistoryState {
    std::map<HistoryScopeID, ScopeState> scopes{};
    std::optional<GlucoseHistoryManifest> manifest{};  ///< Before that start.
    bool hasLegacy = false;                            ///< Files or key of the single-key layout.
    bool operator==(const HistoryState&) const = default;
};

/// Starts a new process on a copy of what is left, without faults, and looks at everything.
inline HistoryState stateOf(const HistoryWorld& world, Survival survival, Date now,
                            const std::vector<HistoryScopeID>& scopes)
{
    HistoryWorld fresh{world, survival, 999};
    HistoryState state;
    const auto before = fresh.files.files();
    if (const auto manifest = before.find(fresh.root / "manifest.json"); manifest != before.end()) {
        const auto decoded = decodeManifest(manifest->second);
        EXPECT_TRUE(decoded) << "a manifest that cannot be read";
        if (decoded)
            state.manifest = *decoded;
    }
    GlucoseHistoryStore store{fresh.parts()};
    EXPECT_TRUE(store.recover(now));
    for (const auto& [path, content] : fresh.files.files())
        EXPECT_FALSE(path.ends_with(".tmp")) << path << " was left behind";
    for (const HistoryScopeID& scope : scopes) {
        EXPECT_TRUE(store.attach(scope));
        const auto all = store.snapshot(dateFromUnix(0), dateFromUnix(4e9));
        EXPECT_TRUE(all) << "a history that cannot be read";
        if (!all)
            continue;
        EXPECT_TRUE(all->unreadableDays.empty());
        state.scopes[scope] = {all->configuration, valuesOf(all->readings),
                               !fresh.key(historyKeyAccount(scope)).empty()};
    }
    state.hasLegacy = !fresh.key(legacyHistoryKeyAccount).empty();
    for (const auto& [path, content] : before)
        state.hasLegacy |= path.find('/', fresh.root.native().size() + 1) == std::string::npos &&
                           !path.ends_with("manifest.json") && !path.ends_with(".tmp") &&
                           path.starts_with(fresh.root.native());
    return state;
}

}  // namespace tidewell
