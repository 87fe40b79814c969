#include "history/GlucoseHistoryAccount.h"

#include <sys/wait.h>

#include <cstdio>

#include "history/HistoryFormatTesting.h"
#include "support/Base64.h"
#include "support/TimeText.h"

namespace tidewell {
namespace {

namespace fs = std::filesystem;
using enum GlucoseHistoryError;

class GlucoseHistoryAccountTest : public testing::Test, public ScopesOnDisk {
protected:
    GlucoseHistoryAccount account{ScopesOnDisk::account(mine)};
    HistoryDay day{.accountScope = mine,
                   .readings = {storedReading(Seconds{0}, 100), storedReading(Seconds{300}, 104.5)}};
};

/// Runs the reader in the other language; its output and errors in one text.
std::string independentReader(const fs::path& folder, const SecretText& key)
{
    const fs::path input = folder / "key";  // No day file, so it does not count.
    writeBytes(input, base64(key.reveal()));
    const std::string command = "python3 " TIDEWELL_HISTORY_TESTS "/read_history.py '" + folder.string() +
                                "' <'" + input.string() + "' 2>&1";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        output += static_cast<char>(c);
    output += "exit " + std::to_string(WEXITSTATUS(::pclose(pipe)));
    fs::remove(input);
    return output;
}

TEST_F(GlucoseHistoryAccountTest, aKeyIsMadeOnlyWhereNothingWasEverSealed)
{
    enum class Item { found, other, absent, refused };
    enum class Record { absent, fresh, collecting, damaged };
    enum class Files { none, otherNames, day, noDay };
    const auto expectKey = [this](Item item, bool mayCreate, Record record, Files sealed,
                                  std::optional<GlucoseHistoryError> expected) {
        const testing::ScopedTrace trace{
            __FILE__, __LINE__,
            fmt::format("item {} create {} record {} files {}", static_cast<int>(item), mayCreate,
                        static_cast<int>(record), static_cast<int>(sealed))};
        fs::remove_all(folderOfScope(mine));
        fs::create_directories(folderOfScope(mine));
        const std::string name = historyKeyAccount(mine);
        static_cast<void>(keychain.items.remove(historyKeychainService, name));
        if (item == Item::found || item == Item::other)
            putKey(mine, item == Item::found ? key.reveal() : "short");
        keychain.failAlways = item == Item::refused;
        if (record == Record::damaged)
            writeBytes(folderOfScope(mine) / "configuration.json", "{");
        else if (record != Record::absent)
            ASSERT_TRUE(account.writeConfiguration(
                {.isEnabled = true,
                 .collectionStartedAt =
                     record == Record::collecting ? std::optional{dateFromUnix(0)} : std::nullopt}));
        if (sealed != Files::none)
            writeBytes(folderOfScope(mine) / (sealed == Files::day     ? "20771.history"
                                              : sealed == Files::noDay ? "020771.history"
                                                                       : "20771.history.tmp"),
                       "x");
        const auto loaded = account.loadKey(mayCreate);
        keychain.failAlways = false;
        const KeychainLookup after = keychain.items.read(historyKeychainService, name);
        if (expected) {
            ASSERT_FALSE(loaded);
            EXPECT_EQ(loaded.error(), *expected);
            EXPECT_EQ(std::holds_alternative<KeychainItemNotFound>(after),
                      item == Item::absent || item == Item::refused);
        } else {
            ASSERT_TRUE(loaded);
            EXPECT_EQ(std::get<SecretText>(after), *loaded);
            EXPECT_EQ(loaded->reveal().size(), 32U);
            EXPECT_EQ(*loaded == key, item == Item::found);
        }
    };
    for (const bool mayCreate : {false, true})
        for (const auto record : {Record::absent, Record::fresh, Record::collecting, Record::damaged})
            for (const auto sealed : {Files::none, Files::otherNames, Files::day, Files::noDay}) {
                expectKey(Item::found, mayCreate, record, sealed, std::nullopt);
                expectKey(Item::other, mayCreate, record, sealed, unavailableKey);
                expectKey(Item::refused, mayCreate, record, sealed, keychainFailure);
                std::optional<GlucoseHistoryError> absent;
                if (!mayCreate || record == Record::collecting)
                    absent = unavailableKey;
                else if (record == Record::damaged)
                    absent = invalidConfiguration;
                else if (sealed == Files::day || sealed == Files::noDay)
                    absent = unavailableKey;
                expectKey(Item::absent, mayCreate, record, sealed, absent);
            }
}

TEST_F(GlucoseHistoryAccountTest, aKeyHas32BytesAndAFailureToStoreOneIsTold)
{
    for (std::size_t size : {0U, 16U, 31U, 33U, 64U}) {
        putKey(mine, std::string(size, 'k'));
        EXPECT_EQ(account.loadKey(true).error(), unavailableKey) << size;
    }
    ASSERT_TRUE(account.removeKey());
    ASSERT_TRUE(account.removeKey());  // An absent one is gone.

    keychain.calls = 0;
    keychain.failAt = 2;  // The write.
    EXPECT_EQ(account.loadKey(true).error(), keychainFailure);
    const auto made = account.loadKey(true);
    ASSERT_TRUE(made);
    EXPECT_EQ(account.loadKey(false), made);
    EXPECT_NE(ScopesOnDisk::account(other).loadKey(true), made);

    // A key that goes while the program runs is missed at once, and comes back.
    static_cast<void>(keychain.items.remove(historyKeychainService, historyKeyAccount(mine)));
    EXPECT_EQ(account.loadKey(false).error(), unavailableKey);
    putKey(mine, made->reveal());
    EXPECT_EQ(account.loadKey(false), made);
    keychain.failAlways = true;
    EXPECT_EQ(account.removeKey().error(), keychainFailure);
}

TEST_F(GlucoseHistoryAccountTest, aConfigurationWaitsToBeWrittenUntilItIs)
{
    const GlucoseHistoryConfiguration first{.isEnabled = true, .retentionDays = 30};
    const GlucoseHistoryConfiguration second{.retentionDays = 90};
    EXPECT_EQ(account.readConfiguration(), std::nullopt);
    ASSERT_TRUE(account.writeConfiguration(first));
    EXPECT_FALSE(account.needsConfigurationWrite());
    {
        FullDisk full;
        EXPECT_EQ(account.writeConfiguration(second).error(), storageFailure);
    }
    EXPECT_TRUE(account.needsConfigurationWrite());
    EXPECT_EQ(account.readConfiguration(), first);
    ASSERT_TRUE(account.writeConfiguration(second));
    EXPECT_FALSE(account.needsConfigurationWrite());
    EXPECT_EQ(account.readConfiguration(), second);

    writeBytes(folderOfScope(mine) / "configuration.json", "");
    EXPECT_EQ(account.readConfiguration().error(), invalidConfiguration);
    fs::remove(folderOfScope(mine) / "configuration.json");
    fs::create_directory(folderOfScope(mine) / "configuration.json");
    EXPECT_EQ(account.readConfiguration().error(), storageFailure);
}

TEST_F(GlucoseHistoryAccountTest, everyDamageOfADayIsToldAndLeavesTheOthers)
{
    ASSERT_TRUE(account.writeDay(key, testDay, day));
    const HistoryDay next{.accountScope = mine, .readings = {storedReading(Seconds{60}, 90, testDay + 1)}};
    ASSERT_TRUE(account.writeDay(key, testDay + 1, next));
    const std::string whole = bytesOf(file(testDay));
    const auto expectUnreadable = [this](std::string_view bytes, std::size_t place) {
        fs::remove(file(testDay));  // Some file systems write a file at once whose content is replaced.
        writeBytes(file(testDay), bytes);
        const auto read = account.readDay(key, testDay);
        ASSERT_FALSE(read) << place;
        ASSERT_EQ(read.error(), unreadableHistory) << place;
        ASSERT_EQ(bytesOf(file(testDay)), bytes) << place;
    };
    for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
        std::string damaged = whole;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
        expectUnreadable(damaged, bit);
    }
    for (std::size_t size = 0; size < whole.size(); ++size)
        expectUnreadable(whole.substr(0, size), size);
    expectUnreadable(bytesOf(file(testDay + 1)), 0);
    EXPECT_EQ(account.readDay(key, testDay + 1), next);

    writeBytes(file(testDay), whole);
    EXPECT_EQ(account.readDay(key, testDay), day);
    EXPECT_EQ(account.readDay(SecretText{std::string(32, 'k')}, testDay).error(), unreadableHistory);
    // The same key, another scope: what the file says of its owner counts.
    fs::copy(folderOfScope(mine), folderOfScope(other));
    EXPECT_EQ(ScopesOnDisk::account(other).readDay(key, testDay).error(), unreadableHistory);

    fs::remove(file(testDay));
    EXPECT_EQ(account.readDay(key, testDay), std::nullopt);
    fs::create_symlink(file(testDay + 1), file(testDay));
    EXPECT_EQ(account.readDay(key, testDay).error(), unreadableHistory);
    fs::remove(file(testDay));
    fs::create_directory(file(testDay));
    EXPECT_EQ(account.readDay(key, testDay).error(), unreadableHistory);
    writeBytes(file(testDay + 1), "");
    fs::resize_file(file(testDay + 1), 64 * 1024 * 1024 + 1);
    EXPECT_EQ(account.readDay(key, testDay + 1).error(), unreadableHistory);
}

TEST_F(GlucoseHistoryAccountTest, aDayIsSealedAnewWithEachWriteAndOnlyWhereItCanBeRead)
{
    ASSERT_TRUE(account.writeDay(key, testDay, day));
    const std::string first = bytesOf(file(testDay));
    ASSERT_TRUE(account.writeDay(key, testDay, day));
    const std::string second = bytesOf(file(testDay));
    EXPECT_EQ(first.size(), second.size());
    EXPECT_NE(first.substr(0, 12), second.substr(0, 12));
    EXPECT_EQ(first.find("mgdL"), std::string::npos);

    HistoryDay foreign = day;
    foreign.accountScope = other;
    HistoryDay newer = day;
    newer.schemaVersion = 2;
    for (const HistoryDay& wrong : {foreign, newer})
        EXPECT_EQ(account.writeDay(key, testDay, wrong).error(), storageFailure);
    EXPECT_EQ(account.writeDay(key, testDay + 1, day).error(), storageFailure);
    EXPECT_EQ(account.writeDay(SecretText{"short"}, testDay, day).error(), storageFailure);
    {
        FullDisk full;
        EXPECT_EQ(account.writeDay(key, testDay, day).error(), storageFailure);
    }
    EXPECT_EQ(bytesOf(file(testDay)), second);
    EXPECT_EQ(account.days(), std::vector{testDay});
    ASSERT_TRUE(account.removeDay(testDay));
    ASSERT_TRUE(account.removeDay(testDay));
    EXPECT_EQ(account.days(), std::vector<std::int64_t>{});
}

/// Gives as often as it is told to, and then nothing any more.
class EndingRandom final : public RandomSource {
public:
    explicit EndingRandom(int draws) : left_{draws} {}
    void fill(std::span<std::byte> bytes) override { more_.fill(bytes); }
    bool tryFill(std::span<std::byte> bytes) override
    {
        if (left_-- <= 0)
            return false;
        fill(bytes);
        return true;
    }

private:
    SeededRandom more_{7};
    int left_;
};

TEST_F(GlucoseHistoryAccountTest, withoutRandomnessNothingIsSealedAndNothingReplaced)
{
    ASSERT_TRUE(account.writeDay(key, testDay, day));
    const std::string before = bytesOf(file(testDay));
    const std::optional failed{storageFailure};
    const auto errorOf = [](const auto& result) {
        return result ? std::nullopt : std::optional{result.error()};
    };
    // Key, nonce and the temporary file's name are a draw each; one more and all is well.
    for (int draws = 0; draws <= 3; ++draws) {
        SCOPED_TRACE(draws);
        EndingRandom random{draws};
        LocalGlucoseHistoryFileAccess limited{files, random};
        GlucoseHistoryAccount fresh{{.folder = folderOfScope(other),
                                     .scope = other,
                                     .access = limited,
                                     .keychain = keychain,
                                     .random = random}};
        const auto made = fresh.loadKey(true);
        EXPECT_EQ(errorOf(made), draws > 0 ? std::nullopt : failed);
        const KeychainLookup item = keychain.items.read(historyKeychainService, historyKeyAccount(other));
        EXPECT_EQ(std::holds_alternative<KeychainItemNotFound>(item), draws == 0);
        static_cast<void>(keychain.items.remove(historyKeychainService, historyKeyAccount(other)));
        GlucoseHistoryAccount mineWithout{{.folder = folderOfScope(mine),
                                           .scope = mine,
                                           .access = limited,
                                           .keychain = keychain,
                                           .random = random}};
        const auto written = mineWithout.writeDay(key, testDay, day);
        EXPECT_EQ(errorOf(written), draws == 3 ? std::nullopt : failed);
        EXPECT_EQ(bytesOf(file(testDay)) == before, draws < 3);
        EXPECT_EQ(std::distance(fs::directory_iterator{folderOfScope(mine)}, {}), 1) << "a stray file";
    }
}

TEST_F(GlucoseHistoryAccountTest, aProgramInAnotherLanguageReadsTheSame)
{
    SystemRandom chance;
    std::string expected;
    for (const std::int64_t index : {std::int64_t{-1}, std::int64_t{0}, testDay}) {
        HistoryDay written{.accountScope = mine};
        for (int i = 0; i < 3; ++i) {
            const StoredReading stored =
                storedReading(Seconds{i * 43'199.999}, 60 + i * 0.1 + chance.unit(), index);
            written.readings.push_back(stored);
            std::string date;
            std::string fetched;
            appendStoredDate(date, stored.reading.date);
            appendStoredDate(fetched, stored.fetchedAt);
            expected += fmt::format("[\"{}\", {}, \"FortyFiveDown\", 300, \"libreLinkUp\", \"{}\"]\n", date,
                                    stored.reading.mgdL, fetched);
        }
        ASSERT_TRUE(account.writeDay(key, index, written));
    }
    EXPECT_EQ(independentReader(folderOfScope(mine), key), expected + "exit 0");
    fs::copy(file(testDay), file(1));
    const std::string damaged = independentReader(folderOfScope(mine), key);
    EXPECT_TRUE(damaged.contains("1.history: unreadable (InvalidTag)")) << damaged;
    EXPECT_TRUE(damaged.contains(expected.substr(expected.rfind("\n[\"2026"))) && damaged.ends_with("exit 1"))
        << damaged;
}

TEST_F(GlucoseHistoryAccountTest, aWriteMakesPrivateFoldersAndLeavesNothingBeside)
{
    ASSERT_TRUE(account.writeDay(key, testDay, day));
    for (fs::path folder = folderOfScope(mine); folder != temporary.path(); folder = folder.parent_path())
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all) << folder;
    EXPECT_EQ(fs::status(file(testDay)).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    // A file in the folder's place; a folder in the file's place; a full disk.
    writeBytes(folderOfScope(mine) / "plain", "x");
    EXPECT_EQ(access.writeAtomically(folderOfScope(mine) / "plain" / "a", "x"), std::errc::not_a_directory);
    fs::create_directory(folderOfScope(mine) / "folder");
    EXPECT_TRUE(access.writeAtomically(folderOfScope(mine) / "folder", "x"));
    {
        FullDisk full;
        EXPECT_EQ(access.writeAtomically(folderOfScope(mine) / "plain", "longer"), std::errc::file_too_large);
    }
    EXPECT_EQ(bytesOf(folderOfScope(mine) / "plain"), "x");
    // A link is replaced, and what it led to stays.
    fs::create_symlink("plain", folderOfScope(mine) / "link");
    EXPECT_FALSE(access.writeAtomically(folderOfScope(mine) / "link", "y"));
    EXPECT_FALSE(fs::is_symlink(folderOfScope(mine) / "link"));
    EXPECT_EQ(bytesOf(folderOfScope(mine) / "plain"), "x");
    EXPECT_EQ(std::distance(fs::directory_iterator{folderOfScope(mine)}, {}), 4);
}

TEST_F(GlucoseHistoryAccountTest, strayTemporariesAreOursAloneAndFoldersGoWithoutFollowingLinks)
{
    const fs::path folder = folderOfScope(mine);
    ASSERT_TRUE(account.writeDay(key, testDay, day));
    const std::string uuid = "0f3c2a41-5d6e-4f70-8a9b-0c1d2e3f4a5b";
    for (const std::string& name :
         {".tidewell-history-" + uuid + ".tmp", std::string{".tidewell-history-.tmp"}, uuid + ".tmp",
          ".tidewell-history-" + uuid + ".tmp2", std::string{".tidewell-0123456789abcdef.tmp"}})
        writeBytes(folder / name, "x");
    access.removeStrayTemporaries(folder);
    access.removeStrayTemporaries(folder / "missing");
    EXPECT_EQ(std::distance(fs::directory_iterator{folder}, {}), 5);
    EXPECT_EQ(access.days(folder), std::vector{testDay});
    EXPECT_EQ(access.days(folder / "missing"), std::vector<std::int64_t>{});
    EXPECT_TRUE(access.hasHistoryFiles(folder).value());

    fs::create_directories(temporary / "elsewhere");
    writeBytes(temporary / "elsewhere" / "kept", "x");
    fs::create_directory_symlink(temporary / "elsewhere", folder / "link");
    fs::create_directories(folder / "deep" / "er");
    EXPECT_FALSE(access.remove(folder));
    EXPECT_FALSE(access.remove(folder));
    EXPECT_FALSE(access.exists(folder).value());
    EXPECT_EQ(bytesOf(temporary / "elsewhere" / "kept"), "x");
}

}  // namespace
}  // namespace tidewell
