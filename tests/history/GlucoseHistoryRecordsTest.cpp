#include "history/GlucoseHistoryRecords.h"

#include <limits>

#include "history/HistoryFormatTesting.h"
#include "support/Json.h"
#include "testing/Texts.h"

namespace tidewell {
namespace {

const HistoryScopeID mine = scopeOf("ada");
const HistoryScopeID other = scopeOf("grace");

GlucoseHistoryManifest fullManifest()
{
    return {.scopes = {other, mine},
            .attachedScopeID = mine,
            .legacyMigrationScope = other,
            .unknown = {{"since", "4.1"}, {"list", json::array{1, nullptr, 2.5}}}};
}

GlucoseHistoryConfiguration fullConfiguration()
{
    return {.isEnabled = true,
            .retentionDays = 30,
            .consentVersion = 1,
            .collectionStartedAt = dateFromUnix(1'794'650'400.125),
            .insightsUnlockedAt = dateFromUnix(-0.001),
            .collectionCutoff = dateFromUnix(0),
            .pendingDeletion = true,
            .hasPreviouslyEnabled = true,
            .collectionIntervalStart = dateFromUnix(253'402'300'799),
            .unknown = {{"isShared", false}}};
}

/// Each document that is `good` with one member replaced, or removed where the replacement is empty.
std::string withMember(std::string_view good, std::string_view key, std::string_view replacement)
{
    json::object object = parseJson(good).value().as_object();
    if (replacement.empty())
        object.erase(key);
    else
        object[key] = parseJson(replacement).value();
    return compactJson(object);
}

TEST(GlucoseHistoryRecords, aScopeIsProviderAccountAndPerson)
{
    using enum GlucoseProvider;
    // printf 'tidewell-history-scope-v1\ndexcom\nada@example.com\n' | sha256sum
    EXPECT_EQ(HistoryScopeID::of({.username = "ada@example.com"})->text(),
              "21fdce26cc3a7cf9b0fe26b5d92ff6f47de3aa2eaaa8434a8c47a80ef5c3bade");
    EXPECT_EQ(
        HistoryScopeID::of({.provider = libreLinkUp, .username = "ada@example.com", .patientID = "6b1f0c2e"})
            ->text(),
        "67d2606dc912c73453088c7307b066863552113a98a717dde7deb174939c08a1");

    const HistoryScopeID ada = scopeOf("ada");
    EXPECT_EQ(HistoryScopeID::of({.username = " \tADA\n", .region = "us", .patientID = "left over"}), ada);
    EXPECT_EQ(HistoryScopeID::of({.username = "ada", .region = "jp"}), ada);
    const GlucoseAccountConfiguration first{.provider = libreLinkUp, .username = "ada", .patientID = "1"};
    GlucoseAccountConfiguration second = first;
    second.patientID = "2";
    EXPECT_NE(HistoryScopeID::of(first), ada);
    EXPECT_NE(HistoryScopeID::of(first), HistoryScopeID::of(second));

    EXPECT_FALSE(HistoryScopeID::of({}));
    EXPECT_FALSE(HistoryScopeID::of({.username = " \n"}));
    EXPECT_FALSE(HistoryScopeID::of({.provider = libreLinkUp, .username = "ada"}));
    EXPECT_FALSE(HistoryScopeID::of({.provider = libreLinkUp, .username = "ada", .patientID = ""}));

    EXPECT_EQ(HistoryScopeID::parse(ada.text()), ada);
    const std::string digits(64, 'a');
    for (const std::string& bad : {digits.substr(1), digits + "a", "A" + digits.substr(1),
                                   "g" + digits.substr(1), "../" + digits.substr(3), std::string(64, '\0')})
        EXPECT_FALSE(HistoryScopeID::parse(bad)) << bad;
}

TEST(GlucoseHistoryRecords, aDayIsThatOfTheMillisecondThatIsStored)
{
    const double midnight = static_cast<double>(testDay) * 86'400;
    for (const auto& [second, day] :
         std::vector<std::pair<double, std::int64_t>>{{midnight, testDay},
                                                      {midnight - 1, testDay - 1},
                                                      {midnight + 86'399, testDay},
                                                      {midnight + 86'399.999, testDay},
                                                      {midnight - 0.0003, testDay},  // Is stored as midnight.
                                                      {0, 0},
                                                      {-0.001, -1},
                                                      {-86'400, -1},
                                                      {-86'400.001, -2},
                                                      {1e300, 2'932'896},
                                                      {-1e300, -719'162},
                                                      {std::numeric_limits<double>::quiet_NaN(), -719'162}}) {
        EXPECT_EQ(historyDayIndex(dateFromUnix(second)), day) << second;
        EXPECT_EQ(historyDayOfFileName(historyDayFileName(day)), day);
        const HistoryDay held{.accountScope = mine,
                              .readings = {{.reading = {.mgdL = 100, .date = dateFromUnix(second)}}}};
        EXPECT_TRUE(decodeHistoryDay(encode(held), mine, day)) << second;
    }
    EXPECT_EQ(historyDayFileName(testDay), "20771.history");
    for (const std::string& bad : parts("|.history|020771.history|+1.history|-0.history|-.history| "
                                        "1.history|1 .history|1.history |1.HISTORY|"
                                        "1.history.tmp|1.5.history|1e3.history|0x1.history|"
                                        "9223372036854775808.history|history|1history"))
        EXPECT_FALSE(historyDayOfFileName(bad)) << bad;
}

TEST(GlucoseHistoryRecords, comeBackAsTheyWere)
{
    for (const auto& manifest : {fullManifest(), GlucoseHistoryManifest{}})
        EXPECT_EQ(decodeManifest(encode(manifest)), manifest);
    for (const auto& configuration : {fullConfiguration(), GlucoseHistoryConfiguration{}})
        EXPECT_EQ(decodeHistoryConfiguration(encode(configuration)), configuration);
    GlucoseHistoryManifest twice = fullManifest();
    twice.scopes.push_back(mine);
    EXPECT_EQ(decodeManifest(encode(twice)), fullManifest());
    EXPECT_EQ(encode(GlucoseHistoryConfiguration{.collectionCutoff = dateFromUnix(1'794'650'400.125)}),
              "{\n"
              "  \"isEnabled\": false,\n"
              "  \"retentionDays\": 90,\n"
              "  \"consentVersion\": 0,\n"
              "  \"collectionCutoff\": \"2026-11-14T10:00:00.125Z\",\n"
              "  \"pendingDeletion\": false,\n"
              "  \"hasPreviouslyEnabled\": false\n"
              "}\n");
}

TEST(GlucoseHistoryRecords, areWholeOrInvalid)
{
    const auto refusesManifest = [](std::string_view text) {
        return decodeManifest(text) == std::unexpected{GlucoseHistoryError::invalidConfiguration};
    };
    const auto refusesConfiguration = [](std::string_view text) {
        return decodeHistoryConfiguration(text) == std::unexpected{GlucoseHistoryError::invalidConfiguration};
    };
    const std::string manifest = encode(fullManifest());
    const std::string configuration = encode(fullConfiguration());
    // All but the line's end at the end.
    for (std::size_t size = 0; size + 1 < manifest.size(); ++size) {
        EXPECT_TRUE(refusesManifest(manifest.substr(0, size))) << size;
        EXPECT_TRUE(refusesManifest(manifest.substr(0, size) + std::string(manifest.size() - size, '\0')))
            << size;
    }
    for (std::size_t size = 0; size + 1 < configuration.size(); ++size) {
        EXPECT_TRUE(refusesConfiguration(configuration.substr(0, size))) << size;
        EXPECT_TRUE(refusesConfiguration(configuration.substr(0, size) + '\0')) << size;
    }
    for (const std::string& whole : parts("[]|null|7|\"x\"|{}|{\"scopes\":[],\"scopes\":[]}")) {
        EXPECT_TRUE(refusesManifest(whole)) << whole;
        EXPECT_TRUE(refusesConfiguration(whole)) << whole;
    }

    for (const auto& [key, replacements] : std::vector<std::pair<std::string, std::string>>{
             {"scopes", "|null|{}|\"x\"|[null]|[1]|[\"\"]|[\"ABC\"]|[[]]"},
             {"attachedScopeID", "1|\"\"|\"../manifest\"|[]|{}"},
             {"legacyMigrationScope", "true|\"\"|\"x\""}})
        for (const std::string& replacement : parts(replacements))
            EXPECT_TRUE(refusesManifest(withMember(manifest, key, replacement))) << key << replacement;
    const std::string flags = "|null|0|1|\"true\"|[]";
    const std::string dates = "0|\"\"|\"2026-11-14\"|\"2026-02-30T00:00:00Z\"|true|\"0000-01-01T00:00:00Z\"";
    for (const auto& [key, replacements] : std::vector<std::pair<std::string, std::string>>{
             {"isEnabled", flags},
             {"pendingDeletion", flags},
             {"hasPreviouslyEnabled", flags},
             {"retentionDays", "|null|0|31|-30|30.5|\"30\"|99999999999999999999"},
             {"consentVersion", "|null|-1|0.5|\"1\"|99999999999999999999"},
             {"collectionStartedAt", dates},
             {"insightsUnlockedAt", dates},
             {"collectionCutoff", dates},
             {"collectionIntervalStart", dates}})
        for (const std::string& replacement : parts(replacements))
            EXPECT_TRUE(refusesConfiguration(withMember(configuration, key, replacement)))
                << key << replacement;
    EXPECT_FALSE(decodeManifest(withMember(manifest, "attachedScopeID", "null"))->attachedScopeID);
    EXPECT_FALSE(
        decodeHistoryConfiguration(withMember(configuration, "collectionCutoff", ""))->collectionCutoff);
}

TEST(GlucoseHistoryRecords, aDayHoldsWhatCanBeReadAgainAndNothingElse)
{
    HistoryDay day{.accountScope = mine,
                   .readings = {storedReading(Seconds{0}, 39.5), storedReading(Seconds{86'399.999}, 1e300)}};
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double endless = std::numeric_limits<double>::infinity();
    HistoryDay odd = day;
    odd.readings.push_back(storedReading(Seconds{60}, none));
    odd.readings.push_back(storedReading(Seconds{60}, endless));
    odd.readings.push_back({.reading = {.mgdL = 100, .date = dateFromUnix(none)}});
    odd.readings.push_back(storedReading(Seconds{60}, 100));
    odd.readings.back().fetchedAt = dateFromUnix(-endless);
    EXPECT_EQ(decodeHistoryDay(encode(odd), mine, testDay), day);

    // Text that is no UTF-8 must not cost the day. A length that is no number reads as one that cannot be.
    day.readings[0].reading.trendString = "Fl\xE9t \"\\\x01\xC3\xA9";
    day.readings[0].reading.sampleDuration = Seconds{none};
    day.readings[1].reading.trendString = everyByte().substr(0, 128) + "\u2197";
    const auto read = decodeHistoryDay(encode(day), mine, testDay);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->readings[0].reading.trendString, "Fl?t \"\\\x01??");
    EXPECT_EQ(read->readings[0].reading.sampleDuration, Seconds{60});
    EXPECT_EQ(read->readings[1].reading.trendString, day.readings[1].reading.trendString);
}

TEST(GlucoseHistoryRecords, aDayCutAnywhereIsUnreadable)
{
    const std::string json =
        encode(HistoryDay{.accountScope = mine, .readings = {storedReading(Seconds{0}, 100)}});
    ASSERT_TRUE(decodeHistoryDay(json, mine, testDay));
    const auto refuses = [](std::string_view text) {
        return decodeHistoryDay(text, mine, testDay) ==
               std::unexpected{GlucoseHistoryError::unreadableHistory};
    };
    for (std::size_t size = 0; size < json.size(); ++size) {
        EXPECT_TRUE(refuses(json.substr(0, size))) << size;
        EXPECT_TRUE(refuses(json.substr(0, size) + std::string(json.size() - size, '\0'))) << size;
    }
    EXPECT_TRUE(refuses(json + '\0'));
    EXPECT_TRUE(refuses(std::string(100'000, '[')));
    EXPECT_FALSE(decodeHistoryDay(json, other, testDay));
    EXPECT_FALSE(decodeHistoryDay(json, mine, testDay + 1));
}

TEST(GlucoseHistoryError, eachCaseHasItsOwnText)
{
    using enum GlucoseHistoryError;
    std::vector<std::string_view> texts;
    for (const auto error : {invalidConfiguration, invalidRetention, accountRequired, unavailableKey,
                             keychainFailure, unreadableHistory, storageFailure, deletionIncomplete})
        texts.push_back(description(error));
    EXPECT_EQ(texts[3],
              "The saved history encryption key is unavailable. Existing history has been preserved.");
    EXPECT_EQ(
        texts[7],
        "History saving is off, but deletion is incomplete. Tidewell will retry cleanup; you can also try "
        "deleting again.");
    std::ranges::sort(texts);
    EXPECT_EQ(std::ranges::adjacent_find(texts), texts.end());
}

}  // namespace
}  // namespace tidewell
