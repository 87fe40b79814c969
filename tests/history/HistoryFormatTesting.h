#pragma once

#include <filesystem>
#include <string>

#include "config/ConfigTesting.h"
#include "history/GlucoseHistoryAccount.h"
#include "support/FileSystem.h"
#include "testing/TemporaryFolder.h"

namespace tidewell {

/// 2026-11-14.
inline constexpr std::int64_t testDay = 20'771;

inline StoredReading storedReading(Seconds sinceMidnight, double mgdL, std::int64_t day = testDay)
{
    const Date date = dateFromUnix(static_cast<double>(day) * 86'400) + sinceMidnight;
    return {.reading = makeReading(mgdL, "FortyFiveDown", date, Seconds{300}, GlucoseProvider::libreLinkUp),
            .fetchedAt = date + Seconds{9.5}};
}

inline HistoryScopeID scopeOf(std::string name)
{
    return HistoryScopeID::of({.username = std::move(name)}).value();
}

/// Two scopes below one root, the real file system, and a secret store that can fail.
struct ScopesOnDisk {
    GlucoseHistoryAccount account(const HistoryScopeID& scope)
    {
        return GlucoseHistoryAccount{{.folder = folderOfScope(scope),
                                      .scope = scope,
                                      .access = access,
                                      .keychain = keychain,
                                      .random = random}};
    }
    [[nodiscard]] std::filesystem::path folderOfScope(const HistoryScopeID& scope) const
    {
        return temporary / "Tidewell" / "SavedHistory" / "accounts" / scope.text();
    }
    [[nodiscard]] std::filesystem::path file(std::int64_t day) const
    {
        return folderOfScope(mine) / historyDayFileName(day);
    }
    void putKey(const HistoryScopeID& scope, std::string_view bytes)
    {
        ASSERT_EQ(keychain.items.write(historyKeychainService, historyKeyAccount(scope), SecretText{bytes}),
                  keychainStatus::success);
    }

    TemporaryFolder temporary;
    SystemFileSystem files;
    SeededRandom random{20'771};
    FaultyKeychain keychain;
    LocalGlucoseHistoryFileAccess access{files, random};
    HistoryScopeID mine = scopeOf("ada");
    HistoryScopeID other = scopeOf("grace");
    SecretText key{std::string_view{"0123456789abcdef0123456789ABCDEF"}};
};

}  // namespace tidewell
