#include "history/LegacyHistory.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "history/HistoryMerge.h"
#include "support/AesGcm.h"

namespace tidewell {

namespace {

using enum GlucoseHistoryError;

constexpr std::string_view configurationName = "configuration.json";

std::expected<void, GlucoseHistoryError> asStorage(std::error_code error)
{
    if (error)
        return std::unexpected{storageFailure};
    return {};
}

void keepEarlier(std::optional<Date>& kept, const std::optional<Date>& other)
{
    if (other && (!kept || *other < *kept))
        kept = other;
}

}  // namespace

/// What became of the days.
struct LegacyHistory::Moved {
    std::vector<std::int64_t> days{};            ///< Whole in the scope.
    std::optional<Date> oldest{};                ///< Of their readings.
    std::optional<GlucoseHistoryError> error{};  ///< The first of the others.
};

LegacyHistory::LegacyHistory(std::filesystem::path root, LocalGlucoseHistoryFileAccess& access,
                             KeychainItemStoring& keychain)
    : root_{std::move(root)}, access_{access}, keychain_{keychain}
{
}

std::expected<bool, GlucoseHistoryError> LegacyHistory::exists()
{
    const auto configuration = access_.exists(root_ / configurationName);
    if (!configuration)
        return std::unexpected{storageFailure};
    if (*configuration)
        return true;
    const auto days = access_.days(root_);
    if (!days)
        return std::unexpected{storageFailure};
    return !days->empty();
}

std::expected<std::optional<GlucoseHistoryConfiguration>, GlucoseHistoryError>
LegacyHistory::readConfiguration()
{
    const auto bytes = access_.read(root_ / configurationName);
    if (!bytes)
        return std::unexpected{storageFailure};
    if (!*bytes)
        return std::nullopt;
    return decodeHistoryConfiguration(**bytes);
}

std::expected<bool, GlucoseHistoryError> LegacyHistory::isBeingDeleted()
{
    const auto configuration = readConfiguration();
    if (!configuration)
        return std::unexpected{configuration.error()};
    return *configuration && (*configuration)->pendingDeletion;
}

std::expected<void, GlucoseHistoryError> LegacyHistory::beginDeletion()
{
    const auto current = readConfiguration();
    if (!current && current.error() == storageFailure)
        return std::unexpected{storageFailure};
    GlucoseHistoryConfiguration configuration;
    if (current && *current)
        configuration = **current;
    configuration.isEnabled = false;
    configuration.pendingDeletion = true;
    return asStorage(access_.writeAtomically(root_ / configurationName, encode(configuration)));
}

std::expected<void, GlucoseHistoryError> LegacyHistory::remove()
{
    const auto days = access_.days(root_);
    if (!days)
        return std::unexpected{storageFailure};
    const auto configuration = access_.exists(root_ / configurationName);
    if (!configuration)
        return std::unexpected{storageFailure};
    if (!*configuration && !days->empty()) {
        // Without it, nothing would tell of the key once the days are gone.
        if (const auto marked = beginDeletion(); !marked)
            return marked;
    }
    for (const std::int64_t day : *days) {
        if (access_.remove(root_ / historyDayFileName(day)))
            return std::unexpected{storageFailure};
    }
    // Before the mark goes: a power cut must not bring days back that nothing deletes any more.
    if (access_.files().syncFolder(root_))
        return std::unexpected{storageFailure};
    if (const auto removed = removeKey(); !removed)
        return removed;
    return removeConfiguration();
}

std::expected<SecretText, GlucoseHistoryError> LegacyHistory::loadKey()
{
    KeychainLookup found = keychain_.read(historyKeychainService, legacyHistoryKeyAccount);
    if (std::holds_alternative<KeychainFailure>(found))
        return std::unexpected{keychainFailure};
    if (auto* const key = std::get_if<SecretText>(&found); key && key->reveal().size() == aesKeySize)
        return std::move(*key);
    return std::unexpected{unavailableKey};
}

std::expected<void, GlucoseHistoryError> LegacyHistory::removeKey()
{
    const std::int32_t status = keychain_.remove(historyKeychainService, legacyHistoryKeyAccount);
    if (status != keychainStatus::success && status != keychainStatus::itemNotFound)
        return std::unexpected{keychainFailure};
    return {};
}

std::expected<void, GlucoseHistoryError> LegacyHistory::removeConfiguration()
{
    if (access_.remove(root_ / configurationName))
        return std::unexpected{storageFailure};
    needsSync_ = true;
    return settle();
}

std::expected<void, GlucoseHistoryError> LegacyHistory::settle()
{
    if (needsSync_ && access_.files().syncFolder(root_))
        return std::unexpected{storageFailure};
    needsSync_ = false;
    return {};
}

std::expected<HistoryDay, GlucoseHistoryError> LegacyHistory::readDay(const SecretText& key, std::int64_t day,
                                                                      const HistoryScopeID& scope)
{
    const std::string name = historyDayFileName(day);
    const auto bytes = access_.read(root_ / name);
    if (!bytes)
        return std::unexpected{storageFailure};
    if (!*bytes)
        return HistoryDay{.accountScope = scope};
    const auto json = openHistoryFile(key, name, **bytes);
    if (!json)
        return std::unexpected{json.error()};
    return decodeLegacyHistoryDay(*json, scope, day);
}

std::expected<LegacyHistory::Moved, GlucoseHistoryError> LegacyHistory::moveDays(
    GlucoseHistoryAccount& account, const HistoryScopeID& scope, const std::vector<std::int64_t>& days,
    const Keys& keys)
{
    Moved moved;
    if (days.empty())
        return moved;
    const auto& legacyKey = keys.legacy;
    if (!legacyKey)
        return std::unexpected{legacyKey.error()};
    const auto key = keys.own || keys.own.error() != unavailableKey ? keys.own : account.loadKey(true);
    if (!key)
        return std::unexpected{key.error()};
    const auto moveDay = [&](std::int64_t day) -> std::expected<void, GlucoseHistoryError> {
        const auto legacy = readDay(*legacyKey, day, scope);
        if (!legacy)
            return std::unexpected{legacy.error()};
        auto existing = account.readDay(*key, day);
        if (!existing)
            return std::unexpected{existing.error()};
        HistoryDay merged = existing->value_or(HistoryDay{.accountScope = scope});
        const auto count = mergeReadings(merged.readings, legacy->readings, HistoryMergeRule::takesOver);
        for (const StoredReading& stored : legacy->readings)
            keepEarlier(moved.oldest, stored.reading.date);
        if (count.changed == 0)
            return {};
        return account.writeDay(*key, day, merged);
    };
    for (const std::int64_t day : days) {
        if (const auto done = moveDay(day); done)
            moved.days.push_back(day);
        else if (!moved.error)
            moved.error = done.error();
    }
    return moved;
}

std::expected<void, GlucoseHistoryError> LegacyHistory::moveConfiguration(GlucoseHistoryAccount& account,
                                                                          const std::optional<Date>& oldest)
{
    const auto legacy = readConfiguration();
    if (!legacy)
        return std::unexpected{legacy.error()};
    const auto own = account.readConfiguration();
    if (!own)
        return std::unexpected{own.error()};
    if (!*legacy && !oldest)
        return {};
    GlucoseHistoryConfiguration merged = own->value_or(legacy->value_or(GlucoseHistoryConfiguration{}));
    const GlucoseHistoryConfiguration legacyOrNone = legacy->value_or(GlucoseHistoryConfiguration{});
    merged.hasPreviouslyEnabled |= legacyOrNone.hasPreviouslyEnabled || oldest;
    keepEarlier(merged.collectionStartedAt,
                legacyOrNone.collectionStartedAt ? legacyOrNone.collectionStartedAt : oldest);
    keepEarlier(merged.insightsUnlockedAt, legacyOrNone.insightsUnlockedAt);
    if (*own == merged && !account.needsConfigurationWrite())
        return {};
    return account.writeConfiguration(merged);
}

std::expected<void, GlucoseHistoryError> LegacyHistory::moveInto(GlucoseHistoryAccount& account,
                                                                 const HistoryScopeID& scope,
                                                                 const std::filesystem::path& scopeFolder,
                                                                 const Keys& keys)
{
    const auto days = access_.days(root_);
    if (!days)
        return std::unexpected{storageFailure};
    const auto moved = moveDays(account, scope, *days, keys);
    if (!moved)
        return std::unexpected{moved.error()};
    const auto configured = moveConfiguration(account, moved->oldest);
    if (!configured && configured.error() != invalidConfiguration)
        return configured;
    const auto hasConfiguration = access_.exists(root_ / configurationName);
    if (!hasConfiguration)
        return std::unexpected{storageFailure};
    // Without it, nothing would tell of the key once the days are gone.
    if (!*hasConfiguration && !moved->days.empty() &&
        access_.writeAtomically(root_ / configurationName, encode(GlucoseHistoryConfiguration{})))
        return std::unexpected{storageFailure};
    if (!moved->days.empty()) {
        // A day that was there already may come from a run that ended before its name was on the disk.
        if (access_.files().syncFolder(scopeFolder))
            return std::unexpected{storageFailure};
        for (const std::int64_t day : moved->days) {
            if (access_.remove(root_ / historyDayFileName(day)))
                return std::unexpected{storageFailure};
        }
    }
    if (moved->error)
        return std::unexpected{*moved->error};
    // A power cut must not bring days back whose key is gone.
    if (access_.files().syncFolder(root_))
        return std::unexpected{storageFailure};
    // The configuration goes after the key, and so tells an interrupted run that the key is still to go.
    if (const auto removed = removeKey(); !removed)
        return removed;
    if (!configured)
        return configured;
    return removeConfiguration();
}

}  // namespace tidewell
