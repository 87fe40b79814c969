#include <fstream>
#include <functional>
#include <thread>

#include "HistoryWorld.h"
#include "config/ConfigTesting.h"
#include "history/HistoryMerge.h"

namespace tidewell {
namespace {

using enum GlucoseHistoryError;

const HistoryScopeID anna = scopeOf("anna");
const HistoryScopeID bert = scopeOf("bert");
constexpr Date endOfTime = dateFromUnix(4e9);

template <class T>
std::optional<GlucoseHistoryError> errorOf(const std::expected<T, GlucoseHistoryError>& result)
{
    return result ? std::nullopt : std::optional{result.error()};
}

/// A world with two accounts that have three days each; `anna` is attached.
class GlucoseHistoryStoreTest : public testing::Test {
protected:
    GlucoseHistoryStoreTest()
    {
        for (const HistoryScopeID& scope : {bert, anna}) {
            EXPECT_TRUE(store.attach(scope));
            EXPECT_TRUE(store.enable(90, 1, storyNow - 3 * dayLength));
            for (const double daysAgo : {2.0, 1.0, 0.0})
                EXPECT_TRUE(save(store, storyNow - daysAgo * dayLength));
        }
    }

    static std::expected<std::size_t, GlucoseHistoryError> save(GlucoseHistoryStore& into, Date date,
                                                                double mgdL = 100)
    {
        return into.save(*into.collectionToken(), {readingAt(date, mgdL)}, date);
    }
    static std::size_t count(GlucoseHistoryStore& of)
    {
        const auto all = of.snapshot(dateFromUnix(0), endOfTime);
        return all ? all->readings.size() : 0;
    }
    std::string folderOf(const HistoryScopeID& scope) const
    {
        return (world.root / "accounts" / scope.text()).string();
    }
    std::string dayFile(const HistoryScopeID& scope, double daysAgo) const
    {
        return folderOf(scope) + "/" + historyDayFileName(historyDayIndex(storyNow - daysAgo * dayLength));
    }
    std::string& key(const HistoryScopeID& scope)
    {
        return world.keychain.items[{std::string{historyKeychainService}, historyKeyAccount(scope)}];
    }

    /// Every operation of the attached account but the deletions.
    static std::vector<std::optional<GlucoseHistoryError>> errorsOfAll(GlucoseHistoryStore& of)
    {
        return {errorOf(of.attach(anna)),
                errorOf(of.reload()),
                errorOf(of.enable(30, 1, storyNow)),
                errorOf(of.pause()),
                errorOf(of.setRetention(30, storyNow)),
                errorOf(of.setInsightsUnlocked(storyNow)),
                errorOf(of.save(of.collectionToken().value_or(GlucoseHistoryCollectionToken{anna}),
                                {readingAt(storyNow + oneHour)}, storyNow)),
                errorOf(of.trim(storyNow + 100 * dayLength)),
                errorOf(of.snapshot(dateFromUnix(0), endOfTime)),
                errorOf(of.import({readingAt(storyNow + oneHour)}, storyNow, true)),
                errorOf(of.import({readingAt(storyNow + oneHour)}, storyNow, false))};
    }

    HistoryWorld world{};
    GlucoseHistoryStore store{world.parts()};
};

/// What may have become of a record: cut at every byte, and more.
std::vector<std::string> damages(const std::string& record)
{
    std::vector<std::string> all{std::string(record.size(), '\0'),
                                 "[]",
                                 "null",
                                 R"({"scopes": 7, "isEnabled": "yes"})",
                                 R"({"scopes": ["../.."], "retentionDays": 60})",
                                 record + "}"};
    for (std::size_t length = 0; length + 2 < record.size(); ++length)
        all.push_back(record.substr(0, length));
    return all;
}

TEST_F(GlucoseHistoryStoreTest, aDamagedManifestPausesAllAndStaysUntilAllIsDeleted)
{
    const auto intact = world.files.files();
    const std::string manifest = (world.root / "manifest.json").string();
    for (const std::string& damage : damages(intact.at(manifest))) {
        world.files.put(manifest, damage);
        const auto damaged = world.files.files();
        GlucoseHistoryStore next{world.parts()};
        EXPECT_EQ(errorOf(next.recover(storyNow)), invalidConfiguration) << damage;
        for (const auto& error : errorsOfAll(next))
            EXPECT_EQ(error, invalidConfiguration) << damage;
        EXPECT_EQ(errorOf(next.deleteAttached(storyNow)), invalidConfiguration);
        EXPECT_EQ(next.status().problem, invalidConfiguration);
        EXPECT_EQ(world.files.files(), damaged) << damage;
        // Mended by whoever damaged it: all is back without another start.
        world.files.put(manifest, intact.at(manifest));
        EXPECT_TRUE(next.reload());
        EXPECT_EQ(count(next), 3U);
        ASSERT_FALSE(HasFailure());
    }
    world.files.put(manifest, "");
    GlucoseHistoryStore next{world.parts()};
    EXPECT_FALSE(next.attach(anna));
    EXPECT_TRUE(next.deleteAll(storyNow));
    EXPECT_TRUE(next.enable(30, 1, storyNow));
    EXPECT_EQ(next.status().problem, std::nullopt);
    EXPECT_EQ(world.files.files().count(dayFile(bert, 0)), 0U);
}

TEST_F(GlucoseHistoryStoreTest, aDamagedConfigurationPausesItsScopeAloneAndStaysUntilThatIsDeleted)
{
    const auto intact = world.files.files();
    const std::string configuration = folderOf(anna) + "/configuration.json";
    for (const std::string& damage : damages(intact.at(configuration))) {
        world.files.put(configuration, damage);
        const auto damaged = world.files.files();
        GlucoseHistoryStore next{world.parts()};
        EXPECT_EQ(errorOf(next.recover(storyNow)), invalidConfiguration) << damage;
        for (const auto& error : errorsOfAll(next))
            EXPECT_EQ(error, invalidConfiguration) << damage;
        EXPECT_EQ(next.status().problem, invalidConfiguration);
        EXPECT_EQ(world.files.files(), damaged) << damage;
        world.files.put(configuration, intact.at(configuration));
        EXPECT_EQ(errorOf(save(next, storyNow)), std::nullopt);
        EXPECT_EQ(next.status().problem, std::nullopt);
        ASSERT_FALSE(HasFailure());
    }
    world.files.put(configuration, "");
    EXPECT_TRUE(store.attach(bert));
    EXPECT_EQ(count(store), 3U);
    EXPECT_FALSE(store.attach(anna));
    EXPECT_TRUE(store.deleteAttached(storyNow));
    EXPECT_TRUE(store.enable(30, 1, storyNow));
    EXPECT_EQ(count(store), 0U);
}

TEST_F(GlucoseHistoryStoreTest, aDamagedDayStaysAndTheOthersGoOn)
{
    const std::string damagedDay = dayFile(anna, 1);
    std::string damage = world.files.files().at(damagedDay);
    damage[damage.size() / 2] ^= 1;
    world.files.put(damagedDay, damage);

    const auto token = *store.collectionToken();
    const std::vector<GlucoseReading> readings{readingAt(storyNow - dayLength + oneHour),
                                               readingAt(storyNow + oneHour)};
    EXPECT_EQ(errorOf(store.save(token, readings, storyNow)), unreadableHistory);
    EXPECT_EQ(store.status().problem, unreadableHistory);
    const auto all = store.snapshot(dateFromUnix(0), endOfTime);
    ASSERT_TRUE(all);
    EXPECT_EQ(all->readings.size(), 3U);
    EXPECT_EQ(all->unreadableDays, std::vector{historyDayIndex(storyNow - dayLength)});
    const auto imported = store.import(readings, storyNow, false);
    ASSERT_TRUE(imported);
    EXPECT_EQ(imported->unreadableDays, all->unreadableDays);
    EXPECT_EQ(imported->alreadyThere, 1U);
    for (int at = 1; at < 80; ++at) {
        // A disk that is full besides is told, and not taken for damage.
        world.plan = {.kind = FaultPlan::Kind::error,
                      .at = at,
                      .error = std::make_error_code(std::errc::no_space_on_device)};
        const auto again =
            store.import({readings[0], readingAt(storyNow + Seconds{10.0 * at})}, storyNow, false);
        world.plan.kind = FaultPlan::Kind::none;
        if (again) {
            EXPECT_EQ(again->added, 1U) << at;
        } else {
            EXPECT_EQ(again.error(), storageFailure);
        }
    }
    EXPECT_TRUE(store.import({readingAt(storyNow + 92 * dayLength)}, storyNow, false));
    EXPECT_TRUE(store.trim(storyNow + 89 * dayLength + oneHour)) << "the day that the retention ends in";
    EXPECT_EQ(world.files.files().at(damagedDay), damage);
    EXPECT_TRUE(store.trim(storyNow + 91 * dayLength));
    EXPECT_FALSE(world.files.files().contains(damagedDay)) << "its name tells that it is too old";
}

TEST_F(GlucoseHistoryStoreTest, aLostOrMalformedKeyIsNeverReplacedAndAllIsBackWithIt)
{
    const auto files = world.files.files();
    const auto items = world.keychain.items;
    const auto damage = [&](const std::string& content) {
        content.empty()
            ? void(world.keychain.items.erase({std::string{historyKeychainService}, historyKeyAccount(anna)}))
            : void(key(anna) = content);
        const auto damaged = world.keychain.items;
        EXPECT_EQ(errorOf(save(store, storyNow + oneHour)), unavailableKey);
        EXPECT_EQ(errorOf(store.snapshot(dateFromUnix(0), endOfTime)), unavailableKey);
        GlucoseHistoryStore next{world.parts()};
        EXPECT_TRUE(next.recover(storyNow));
        EXPECT_TRUE(next.attach(anna));
        EXPECT_EQ(errorOf(next.enable(90, 1, storyNow)), unavailableKey);
        EXPECT_EQ(errorOf(next.import({readingAt(storyNow)}, storyNow, true)), unavailableKey);
        EXPECT_EQ(world.keychain.items, damaged);
        EXPECT_EQ(world.files.files(), files);
        world.keychain.items = items;
        EXPECT_TRUE(save(store, storyNow));
        EXPECT_EQ(count(next), 3U);
        EXPECT_EQ(store.status().problem, unavailableKey) << "until what failed has worked";
        EXPECT_EQ(count(store), 3U);
        EXPECT_EQ(store.status().problem, std::nullopt);
    };
    damage("");
    damage(std::string(16, 'k'));
    damage(std::string(33, 'k'));
    // The right length, and another key.
    key(anna) = std::string(32, 'k');
    EXPECT_EQ(errorOf(save(store, storyNow + oneHour)), unreadableHistory);
    EXPECT_EQ(world.files.files(), files);
}

TEST_F(GlucoseHistoryStoreTest, aLateSaveNeverLandsBehindADeletionOrInAnotherScope)
{
    const auto late = *store.collectionToken();
    EXPECT_TRUE(store.attach(bert));
    EXPECT_EQ(store.save(late, {readingAt(storyNow + oneHour)}, storyNow).value_or(9), 0U);
    EXPECT_TRUE(store.attach(anna));
    EXPECT_EQ(store.save(late, {readingAt(storyNow + oneHour)}, storyNow).value_or(9), 0U)
        << "between the two, somebody else was signed in";

    // Another process deletes, and saving begins again there, under another key.
    const auto mine = *store.collectionToken();
    const std::string oldKey = key(anna);
    GlucoseHistoryStore other{world.parts()};
    EXPECT_TRUE(other.attach(anna));
    EXPECT_TRUE(other.deleteAttached(storyNow));
    EXPECT_TRUE(other.enable(90, 1, storyNow));
    EXPECT_TRUE(save(other, storyNow + oneHour));
    EXPECT_NE(key(anna), oldKey);
    EXPECT_EQ(store.save(mine, {readingAt(storyNow + 2 * oneHour)}, storyNow).value_or(9), 0U);
    EXPECT_TRUE(save(store, storyNow + 3 * oneHour));
    EXPECT_EQ(count(other), 2U);

    // Another process pauses.
    EXPECT_TRUE(other.pause());
    EXPECT_EQ(save(store, storyNow + 4 * oneHour).value_or(9), 0U);
    EXPECT_EQ(store.collectionToken(), std::nullopt);
    EXPECT_TRUE(other.enable(90, 1, storyNow + 5 * oneHour));
    EXPECT_TRUE(store.reload());
    EXPECT_EQ(save(store, storyNow + 6 * oneHour).value_or(9), 1U);
}

/// Lets something happen within a call to the secret store.
class InterruptedKeychain final : public KeychainItemStoring {
public:
    explicit InterruptedKeychain(KeychainItemStoring& items) : items_{items} {}
    KeychainLookup read(std::string_view service, std::string_view account) override
    {
        KeychainLookup found = items_.read(service, account);
        if (const auto happens = std::exchange(afterRead, nullptr))
            happens();
        return found;
    }
    std::int32_t write(std::string_view service, std::string_view account, const SecretText& data) override
    {
        return items_.write(service, account, data);
    }
    std::int32_t remove(std::string_view service, std::string_view account) override
    {
        return items_.remove(service, account);
    }
    std::function<void()> afterRead{};

private:
    KeychainItemStoring& items_;
};

TEST_F(GlucoseHistoryStoreTest, aKeyThatChangesWhileTheLockIsAwaitedSealsNothing)
{
    EXPECT_TRUE(store.deleteAttached(storyNow));
    EXPECT_TRUE(store.enable(90, 1, storyNow));
    InterruptedKeychain keychain{world.keychain};
    GlucoseHistoryStore slow{
        {.root = world.root, .files = world.files, .keychain = keychain, .random = world.random}};
    EXPECT_TRUE(slow.attach(anna));
    keychain.afterRead = [&] {
        EXPECT_TRUE(store.deleteAttached(storyNow));
        EXPECT_TRUE(store.enable(90, 1, storyNow + Seconds{1}));
    };
    EXPECT_EQ(save(slow, storyNow + oneHour).value_or(9), 0U) << "asked for before the deletion";
    EXPECT_EQ(save(slow, storyNow + oneHour).value_or(9), 1U);
    EXPECT_EQ(count(store), 1U);
    // Another retention is no reason to save nothing: it begins again.
    keychain.afterRead = [&] { EXPECT_TRUE(store.setRetention(30, storyNow)); };
    EXPECT_EQ(save(slow, storyNow + 2 * oneHour).value_or(9), 1U);
    EXPECT_EQ(slow.status().configuration.retentionDays, 30);
}

TEST_F(GlucoseHistoryStoreTest, whatNoFileCanHoldDoesNotSpoilTheDay)
{
    std::vector<GlucoseReading> readings(5, readingAt(storyNow + oneHour));
    readings[0].mgdL = std::numeric_limits<double>::quiet_NaN();
    readings[1].trendString = "\xff\xfe";
    readings[2].date = dateFromUnix(1e13);
    readings[3].date = dateFromUnix(std::numeric_limits<double>::infinity());
    readings[4].sampleDuration = Seconds{std::numeric_limits<double>::infinity()};
    EXPECT_EQ(store.save(*store.collectionToken(), readings, storyNow).value_or(9), 1U);
    // The last half millisecond of a day belongs to the next one, as it will be written.
    EXPECT_EQ(save(store, dateFromUnix(20773 * 86400.0 - 0.0004)).value_or(9), 1U);
    EXPECT_EQ(count(store), 5U);
    const auto imported = store.import(readings, storyNow, true);
    ASSERT_TRUE(imported);
    EXPECT_EQ(imported->refused, 4U);
}

TEST_F(GlucoseHistoryStoreTest, aClockThatRunsAheadRemovesNothingAndSavingGoesOn)
{
    const Date ahead = storyNow + 366 * dayLength;
    const auto files = world.files.files();
    EXPECT_EQ(store.save(*store.collectionToken(), {readingAt(storyNow)}, ahead).value_or(9), 0U);
    EXPECT_TRUE(store.trim(ahead));
    EXPECT_TRUE(store.setRetention(90, ahead));
    EXPECT_TRUE(store.enable(90, 1, ahead));
    GlucoseHistoryStore next{world.parts()};
    EXPECT_TRUE(next.recover(ahead));
    EXPECT_TRUE(next.attach(anna));
    EXPECT_TRUE(next.trim(ahead));
    EXPECT_EQ(world.files.files(), files);
    // What the service gives is dated really.
    EXPECT_EQ(next.save(*next.collectionToken(), {readingAt(storyNow + oneHour)}, ahead).value_or(9), 1U);
    const auto imported = next.import({readingAt(storyNow - dayLength + oneHour)}, ahead, false);
    EXPECT_TRUE(imported && imported->added == 1);
    EXPECT_EQ(count(next), 5U);
    // Days go as newer ones come, and from the clock's time on when that is earlier.
    EXPECT_EQ(next.save(*next.collectionToken(), {readingAt(storyNow + 91 * dayLength)}, ahead).value_or(9),
              1U);
    EXPECT_EQ(count(next), 1U);
}

TEST_F(GlucoseHistoryStoreTest, aClockThatRanAheadWhenSavingBeganStopsNothing)
{
    const Date ahead = storyNow + 366 * dayLength;
    const auto begin = [&](bool deletes) {
        EXPECT_TRUE(deletes ? store.deleteAttached(ahead) : store.pause());
        EXPECT_TRUE(store.enable(90, 1, ahead));
        EXPECT_TRUE(store.save(*store.collectionToken(), {readingAt(storyNow)}, ahead));
    };
    for (const bool deletes : {true, false}) {
        begin(deletes);
        EXPECT_EQ(save(store, storyNow + oneHour, deletes ? 101 : 102).value_or(9), 1U);
        const auto configuration = store.status().configuration;
        EXPECT_LE(configuration.collectionCutoff, storyNow + oneHour);
        EXPECT_LE(configuration.collectionIntervalStart, storyNow + oneHour);
        EXPECT_LE(configuration.collectionStartedAt, storyNow + oneHour);
    }
    begin(false);
    EXPECT_TRUE(store.enable(90, 1, storyNow));
    EXPECT_EQ(store.status().configuration.collectionCutoff, storyNow);
    EXPECT_EQ(store.status().configuration.collectionIntervalStart, storyNow);
}

TEST_F(GlucoseHistoryStoreTest, aFetchOfBeforeAPauseSavesNothingAndMovesNoCutoff)
{
    const auto late = *store.collectionToken();
    GlucoseHistoryStore other{world.parts()};
    EXPECT_TRUE(other.attach(anna));
    EXPECT_TRUE(other.pause());
    EXPECT_TRUE(other.enable(90, 1, storyNow + 5 * oneHour));
    EXPECT_EQ(store.save(late, {readingAt(storyNow + oneHour)}, storyNow + oneHour).value_or(9), 0U);
    EXPECT_EQ(store.status().configuration.collectionCutoff, storyNow + 5 * oneHour);
    EXPECT_EQ(count(store), 3U);
}

TEST(HistoryMerge, aGraphValueNeverCountsAgainstACurrentOne)
{
    const auto stored = [](double seconds, double duration, double fetched) {
        return StoredReading{makeReading(duration, "Flat", storyNow + Seconds{seconds}, Seconds{duration},
                                         GlucoseProvider::libreLinkUp),
                             storyNow + Seconds{fetched}};
    };
    const auto current = stored(0, 60, 1);
    const auto later = stored(0.5, 60, 2);
    struct Case {
        StoredReading graph;
        bool staysOut;
    };
    for (const auto& [graph, staysOut] :
         {Case{stored(0.2, 900, 9), true}, Case{stored(30, 900, 9), true}, Case{stored(-30, 900, 9), true},
          Case{stored(31, 900, 9), false}, Case{stored(-31, 900, 9), false}}) {
        for (const auto& batch : {std::vector{graph, current}, std::vector{current, graph}}) {
            std::vector<StoredReading> day;
            EXPECT_EQ(mergeReadings(day, batch, HistoryMergeRule::laterFetchWins).changed,
                      staysOut ? 1U : 2U);
            EXPECT_EQ(mergeReadings(day, batch, HistoryMergeRule::laterFetchWins).changed, 0U);
            EXPECT_EQ(mergeReadings(day, std::vector{later}, HistoryMergeRule::laterFetchWins).changed, 1U);
        }
        // Of saved ones none is lost.
        std::vector<StoredReading> taken{current};
        EXPECT_EQ(mergeReadings(taken, std::vector{graph}, HistoryMergeRule::takesOver).changed, 1U);
    }
}

TEST_F(GlucoseHistoryStoreTest, refusesWhatNeedsAnAccountOrAnotherRetention)
{
    for (const std::int64_t days : {-30, 0, 29, 60, 91})
        EXPECT_EQ(errorOf(store.setRetention(days, storyNow)), invalidRetention);
    EXPECT_TRUE(store.attach(scopeOf("carla")));
    EXPECT_EQ(errorOf(store.import({readingAt(storyNow)}, storyNow, false)), accountRequired);
    EXPECT_EQ(count(store), 0U);
    const auto files = world.files.files();
    EXPECT_TRUE(store.attach(std::nullopt));
    EXPECT_EQ(errorOf(store.enable(90, 1, storyNow)), accountRequired);
    EXPECT_EQ(errorOf(store.snapshot(dateFromUnix(0), endOfTime)), accountRequired);
    EXPECT_EQ(errorOf(store.deleteAttached(storyNow)), accountRequired);
    EXPECT_EQ(store.status(), GlucoseHistoryStatus{});

    HistoryWorld untouched;
    const auto before = untouched.files.files();
    GlucoseHistoryStore next{untouched.parts()};
    EXPECT_TRUE(next.recover(storyNow));
    EXPECT_TRUE(next.attach(anna));
    EXPECT_TRUE(next.trim(storyNow));
    EXPECT_TRUE(next.pause());
    EXPECT_EQ(count(next), 0U);
    EXPECT_TRUE(next.deleteAll(storyNow));
    EXPECT_EQ(untouched.files.files(), before) << "nothing is written before the person says yes";
}

TEST(LegacyHistory, aDamagedDayStaysWithItsKeyAndTheFirstAccountInheritsTheRest)
{
    HistoryWorld world;
    auto& legacyKey =
        world.keychain.items[{std::string{historyKeychainService}, std::string{legacyHistoryKeyAccount}}];
    legacyKey = std::string(32, 'k');
    const auto putDay = [&](Date date, std::string_view name) {
        HistoryDay day{.accountScope = anna};
        day.readings.push_back({readingAt(date), date});
        world.files.put(world.root / name,
                        *sealHistoryFile(SecretText{legacyKey}, historyDayFileName(historyDayIndex(date)),
                                         encode(day), world.random));
    };
    putDay(storyNow, "20771.history");
    putDay(storyNow - dayLength, "20770.history");
    putDay(storyNow, "20769.history");  // Under another day's name.
    const std::string damaged = world.files.files().at((world.root / "20769.history").string());

    GlucoseHistoryStore store{world.parts()};
    EXPECT_TRUE(store.recover(storyNow));
    EXPECT_TRUE(store.attach(anna));
    const auto untouched = world.files.files();
    EXPECT_EQ(errorOf(store.import({readingAt(storyNow)}, storyNow, true)), accountRequired);
    EXPECT_EQ(world.files.files(), untouched) << "a dry run takes nothing over";
    world.plan = {.kind = FaultPlan::Kind::error, .forEver = true, .status = keychainStatus::notAvailable};
    EXPECT_TRUE(store.snapshot(dateFromUnix(0), endOfTime));
    EXPECT_EQ(store.status().problem, keychainFailure);
    world.plan = {};
    const auto all = store.snapshot(dateFromUnix(0), endOfTime);
    ASSERT_TRUE(all);
    EXPECT_EQ(all->readings.size(), 2U) << "what could not be inherited before is so without another start";
    EXPECT_EQ(all->configuration.collectionStartedAt, storyNow - dayLength);
    EXPECT_EQ(store.status().problem, unreadableHistory);
    EXPECT_EQ(world.files.files().at((world.root / "20769.history").string()), damaged);
    EXPECT_FALSE(world.files.files().contains((world.root / "20770.history").string()));
    EXPECT_FALSE(world.key(legacyHistoryKeyAccount).empty());

    EXPECT_TRUE(store.attach(bert));
    const auto ofBert = store.snapshot(dateFromUnix(0), endOfTime);
    ASSERT_TRUE(ofBert);
    EXPECT_TRUE(ofBert->readings.empty());
    EXPECT_TRUE(store.attach(anna));
    EXPECT_TRUE(store.deleteAttached(storyNow));
    EXPECT_TRUE(world.key(legacyHistoryKeyAccount).empty());
    EXPECT_FALSE(world.files.files().contains((world.root / "20769.history").string()));
    EXPECT_EQ(store.status().problem, std::nullopt);
}

TEST(LegacyHistory, itsKeyGoesAlsoWithoutAConfigurationWhateverFails)
{
    int failed = 0;
    for (int at = 1; at < 120; ++at) {
        HistoryWorld world;
        const std::string legacyKey(32, 'k');
        world.keychain.items[{std::string{historyKeychainService}, std::string{legacyHistoryKeyAccount}}] =
            legacyKey;
        HistoryDay day{.accountScope = anna};
        day.readings.push_back({readingAt(storyNow), storyNow});
        world.files.put(world.root / "20771.history",
                        *sealHistoryFile(SecretText{legacyKey}, "20771.history", encode(day), world.random));
        GlucoseHistoryStore store{world.parts()};
        EXPECT_TRUE(store.attach(anna));
        world.plan = {.kind = FaultPlan::Kind::error, .at = at, .status = keychainStatus::notAvailable};
        std::ignore = store.recover(storyNow);
        failed += world.plan.hit;
        world.plan = {};
        EXPECT_TRUE(store.recover(storyNow));
        EXPECT_TRUE(world.key(legacyHistoryKeyAccount).empty()) << at;
        EXPECT_EQ(store.snapshot(dateFromUnix(0), endOfTime)->readings.size(), 1U);
    }
    EXPECT_GT(failed, 3);
}

/// Real files, with secrets in memory.
class RealHistoryFiles : public testing::Test {
protected:
    GlucoseHistoryStore::Parts parts()
    {
        return {.root = folder.path() / "Tidewell" / "SavedHistory",
                .files = files,
                .keychain = keychain,
                .random = random};
    }
    TemporaryFolder folder{};
    SystemFileSystem files{};
    MemoryKeychainItemStore keychain{};
    SystemRandom random{};
};

TEST_F(RealHistoryFiles, aFullDiskLosesNothingAndSavingGoesOnOnceItIsFreed)
{
    GlucoseHistoryStore store{parts()};
    EXPECT_TRUE(store.attach(anna));
    EXPECT_TRUE(store.enable(90, 1, storyNow));
    const auto token = *store.collectionToken();
    EXPECT_TRUE(store.save(token, {readingAt(storyNow)}, storyNow));
    const auto before = contentOf(folder);
    {
        const FullDisk full;
        EXPECT_EQ(errorOf(store.save(token, {readingAt(storyNow + oneHour)}, storyNow)), storageFailure);
        EXPECT_EQ(errorOf(store.pause()), storageFailure);
        EXPECT_EQ(errorOf(store.deleteAttached(storyNow)), storageFailure);
        EXPECT_EQ(store.snapshot(dateFromUnix(0), endOfTime)->readings.size(), 1U);
    }
    EXPECT_EQ(contentOf(folder), before) << "not even a temporary file is left";
    EXPECT_TRUE(store.save(token, {readingAt(storyNow + oneHour)}, storyNow));
    GlucoseHistoryStore next{parts()};
    EXPECT_TRUE(next.attach(anna));
    EXPECT_EQ(next.snapshot(dateFromUnix(0), endOfTime)->readings.size(), 2U);
}

TEST_F(RealHistoryFiles, storesThatSaveAtTheSameTimeKeepAllReadings)
{
    constexpr int each = 12;
    const auto live = [&](int which) {
        GlucoseHistoryStore store{parts()};
        EXPECT_TRUE(store.recover(storyNow));
        EXPECT_TRUE(store.attach(anna));
        EXPECT_TRUE(store.enable(90, 1, storyNow));
        for (int i = 0; i < each; ++i)
            EXPECT_TRUE(store.save(*store.collectionToken(),
                                   {readingAt(storyNow + Seconds{static_cast<double>(2 * i + which)})},
                                   storyNow));
    };
    std::thread first{live, 0};
    std::thread second{live, 1};
    first.join();
    second.join();
    GlucoseHistoryStore store{parts()};
    EXPECT_TRUE(store.attach(anna));
    EXPECT_EQ(store.snapshot(dateFromUnix(0), endOfTime)->readings.size(), 2U * each);
}

/// A folder that may only be read, also by a test that runs as root.
class ReadOnlyFileSystem final : public FileSystem {
public:
    explicit ReadOnlyFileSystem(FileSystem& files) : files_{files} {}
    std::error_code makeFolder(const std::filesystem::path& folder) override
    {
        const auto there = files_.exists(folder);
        return there && *there ? std::make_error_code(std::errc::file_exists) : refused;
    }
    std::expected<FileHandle, std::error_code> createNew(const std::filesystem::path&) override
    {
        return std::unexpected{refused};
    }
    std::expected<std::size_t, std::error_code> write(FileHandle, std::string_view) override
    {
        return std::unexpected{refused};
    }
    std::error_code sync(FileHandle) override { return refused; }
    std::error_code close(FileHandle file) override { return files_.close(file); }
    std::error_code rename(const std::filesystem::path&, const std::filesystem::path&) override
    {
        return refused;
    }
    std::error_code syncFolder(const std::filesystem::path& folder) override
    {
        return files_.syncFolder(folder);
    }
    std::expected<std::optional<std::string>, std::error_code> read(const std::filesystem::path& file,
                                                                    std::size_t limit) override
    {
        return files_.read(file, limit);
    }
    std::expected<std::vector<std::string>, std::error_code> list(
        const std::filesystem::path& folder) override
    {
        return files_.list(folder);
    }
    std::error_code removeFile(const std::filesystem::path&) override { return refused; }
    std::error_code removeFolder(const std::filesystem::path&) override { return refused; }
    std::expected<bool, std::error_code> exists(const std::filesystem::path& path) override
    {
        return files_.exists(path);
    }
    std::expected<FileHandle, std::error_code> lock(const std::filesystem::path&) override
    {
        return std::unexpected{refused};
    }

private:
    static inline const std::error_code refused = std::make_error_code(std::errc::read_only_file_system);
    FileSystem& files_;
};

TEST_F(GlucoseHistoryStoreTest, aReadOnlyFolderIsReadAndEveryChangeTold)
{
    const auto before = world.files.files();
    ReadOnlyFileSystem readOnly{world.files};
    GlucoseHistoryStore next{
        {.root = world.root, .files = readOnly, .keychain = world.keychain, .random = world.random}};
    EXPECT_EQ(errorOf(next.recover(storyNow)), storageFailure);
    EXPECT_TRUE(next.attach(anna)) << "nothing has to be written for that";
    EXPECT_EQ(count(next), 3U);
    EXPECT_EQ(errorOf(save(next, storyNow + oneHour)), storageFailure);
    EXPECT_EQ(next.status().problem, storageFailure);
    EXPECT_EQ(errorOf(next.pause()), storageFailure);
    EXPECT_EQ(errorOf(next.deleteAll(storyNow)), storageFailure);
    EXPECT_EQ(errorOf(next.attach(bert)), storageFailure);
    EXPECT_EQ(count(next), 3U) << "attached for all that";
    EXPECT_EQ(world.files.files(), before);
}

}  // namespace
}  // namespace tidewell
