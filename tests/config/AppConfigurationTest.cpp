#include "config/AppConfiguration.h"

#include <boost/json/serialize.hpp>
#include <source_location>

#include "config/AppSettingsKeys.h"
#include "config/ThresholdOptions.h"

namespace tidewell {
namespace {

/// Every field holds something else than its default.
AppConfiguration fullConfiguration()
{
    return {.account = {.provider = GlucoseProvider::libreLinkUp,
                        .username = "ada@example.org",
                        .password = SecretText{"secret"},
                        .region = "eu2",
                        .patientID = "p-1",
                        .patientName = "Ada \"L\""},
            .app = {.measurementUnit = "mmol/L",
                    .lowGlucoseThreshold = 65.5,
                    .highGlucoseThreshold = 180,
                    .graphTimeWindowHours = 6,
                    .startAtLogin = true,
                    .alertsEnabled = false,
                    .alertOnLowThreshold = false,
                    .alertOnHighThreshold = false,
                    .alertOnRapidFall = false,
                    .alertOnRapidRise = false,
                    .quietHoursEnabled = true,
                    .quietHoursStartMinutes = 1,
                    .quietHoursEndMinutes = 2,
                    .allowLowAlertsDuringQuietHours = true,
                    .lowAlertRepeatMinutes = 15,
                    .snoozeLowAlerts = false,
                    .snoozeHighAlerts = false,
                    .snoozeRapidChangeAlerts = false,
                    .alertOnMissingData = false}};
}

json::value parsed(std::string_view text)
{
    auto document = parseJson(text);
    if (!document)
        throw std::invalid_argument{document.error().message};
    return std::move(*document);
}

constexpr std::string_view minimalApp =
    R"({"measurementUnit":"mg/dL","lowGlucoseThreshold":72,"highGlucoseThreshold":270})";

std::string documentWith(std::string_view account, std::string_view app = minimalApp)
{
    return fmt::format(R"({{{}"app":{}}})", account, app);
}

TEST(AppConfiguration, writesEveryKeyInItsOrderAndReadsItBack)
{
    const auto document = encode(fullConfiguration());
    EXPECT_EQ(json::serialize(document),
              R"({"account":{"provider":"libreLinkUp","username":"ada@example.org","password":"secret",)"
              R"("region":"eu2","patientID":"p-1","patientName":"Ada \"L\""},)"
              R"("app":{"measurementUnit":"mmol/L","lowGlucoseThreshold":6.55E1,"highGlucoseThreshold":180,)"
              R"("graphTimeWindowHours":6,"startAtLogin":true,"alertsEnabled":false,)"
              R"("alertOnLowThreshold":false,"alertOnHighThreshold":false,"alertOnRapidFall":false,)"
              R"("alertOnRapidRise":false,"quietHoursEnabled":true,"quietHoursStartMinutes":1,)"
              R"("quietHoursEndMinutes":2,"allowLowAlertsDuringQuietHours":true,"lowAlertRepeatMinutes":15,)"
              R"("snoozeLowAlerts":false,"snoozeHighAlerts":false,"snoozeRapidChangeAlerts":false,)"
              R"("alertOnMissingData":false}})");
    EXPECT_EQ(decodeAppConfiguration(parsed(prettyJson(document))), fullConfiguration());

    auto sparse = fullConfiguration();
    sparse.account.patientID.reset();
    sparse.account.patientName.reset();
    sparse.app.graphTimeWindowHours.reset();
    const auto sparseDocument = encode(sparse);
    EXPECT_EQ(sparseDocument.at("account").as_object().size(), 4U);
    EXPECT_EQ(sparseDocument.at("app").as_object().size(), 18U);
    EXPECT_EQ(decodeAppConfiguration(sparseDocument), sparse);
    EXPECT_NE(decodeAppConfiguration(sparseDocument), fullConfiguration());
}

TEST(AppConfiguration, missingOptionalKeysTakeTheirDefaults)
{
    const auto minimal = decodeAppSettings(parsed(minimalApp));
    ASSERT_TRUE(minimal);
    EXPECT_EQ(json::serialize(encode(AppConfiguration{.app = *minimal}).at("app")),
              R"({"measurementUnit":"mg/dL","lowGlucoseThreshold":72,"highGlucoseThreshold":270,)"
              R"("startAtLogin":false,"alertsEnabled":true,"alertOnLowThreshold":true,)"
              R"("alertOnHighThreshold":true,"alertOnRapidFall":true,"alertOnRapidRise":true,)"
              R"("quietHoursEnabled":false,"quietHoursStartMinutes":1320,"quietHoursEndMinutes":420,)"
              R"("allowLowAlertsDuringQuietHours":false,"lowAlertRepeatMinutes":0,"snoozeLowAlerts":true,)"
              R"("snoozeHighAlerts":true,"snoozeRapidChangeAlerts":true})");
}

/// Puts each of these in the place of each member in turn, or takes it out, and expects the whole document to
/// fail except where the member's type allows it.
TEST(AppConfiguration, oneWrongMemberFailsTheWholeDocument)
{
    const std::map<std::string, std::string_view, std::less<>> accepted{
        {"text", R"("x")"}, {"flag", "true"}, {"number", "1.5 -7 3.0 1e3"}, {"integer", "-7 3.0 1e3"}};
    const auto typeOf = [](std::string_view key, const json::value& value) -> std::string {
        if (key == "provider")
            return "provider";
        if (value.is_string())
            return "text";
        if (value.is_bool())
            return "flag";
        return key.ends_with("Threshold") ? "number" : "integer";
    };
    const auto isRequired = [](std::string_view part, std::string_view key) {
        return part == "account" ? !key.starts_with("patient")
                                 : key == "measurementUnit" || (key.ends_with("GlucoseThreshold"));
    };
    for (const std::string_view part : {"account", "app"}) {
        for (const auto& member : encode(fullConfiguration()).at(part).as_object()) {
            const std::string key = member.key();
            const auto type = typeOf(key, member.value());
            for (const std::string_view wrong :
                 {"true", "1.5", "-7", "3.0", "1e3", R"("x")", "[]", "{}", "null", "missing"}) {
                auto document = encode(fullConfiguration());
                auto& object = document.at(part).as_object();
                bool good = accepted.contains(type) && accepted.at(type).contains(wrong);
                if (wrong == "missing")
                    object.erase(key);
                else
                    object[key] = parsed(wrong);
                if (wrong == "missing" || wrong == "null")
                    good = !isRequired(part, key);
                EXPECT_EQ(decodeAppConfiguration(document).has_value(), good)
                    << part << " " << key << " " << wrong;
            }
        }
    }
}

TEST(AppConfiguration, documentsAreAcceptedOrRefusedAsAWhole)
{
    const auto account = [](std::string_view provider) {
        return fmt::format(R"({{"provider":"{}","username":"u","password":"","region":"us"}})", provider);
    };
    const std::string_view legacy = R"("dexcom":{"username":"old","password":"p","region":"jp"},)";
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {documentWith("\"account\":" + account("dexcom") + ","), "u"},
        {documentWith(fmt::format("\"account\":{},{}", account("libreLinkUp"), legacy)), "u"},
        {documentWith(fmt::format("\"account\":null,{}", legacy)), "old"},
        {documentWith(legacy), "old"},
        {documentWith("\"account\":" + account("Dexcom") + ","), std::nullopt},
        {documentWith(fmt::format("\"account\":{},{}", account("other"), legacy)), std::nullopt},
        {documentWith(R"("dexcom":{"username":"old","password":"p"},)"), std::nullopt},
        {documentWith(R"("dexcom":[],)"), std::nullopt},
        {documentWith(""), std::nullopt},
        {documentWith(legacy, "null"), std::nullopt},
        {documentWith(legacy, "[]"), std::nullopt},
        {documentWith(legacy,
                      R"({"measurementUnit":"","lowGlucoseThreshold":1e999,"highGlucoseThreshold":1})"),
         std::nullopt},
        {documentWith(legacy,
                      R"({"measurementUnit":"","lowGlucoseThreshold":-5,"highGlucoseThreshold":1e9})"),
         "old"},
        {"[]", std::nullopt},
        {"null", std::nullopt},
        {"{}", std::nullopt},
    };
    for (const auto& [text, username] : cases) {
        const auto document = parseJson(text);
        const auto configuration =
            document ? decodeAppConfiguration(*document) : std::unexpected{ConfigurationError{}};
        ASSERT_EQ(configuration.has_value(), username.has_value()) << text;
        if (configuration)
            EXPECT_EQ(configuration->account.username, *username) << text;
    }
}

TEST(AppConfiguration, theOlderShapeBecomesAnAccountAndIsNotWrittenAgain)
{
    const auto configuration = decodeAppConfiguration(
        parsed(documentWith(R"("dexcom":{"username":"old","password":"p","region":"jp","patientID":"x"},)")));
    ASSERT_TRUE(configuration);
    const GlucoseAccountConfiguration expected{
        .provider = GlucoseProvider::dexcom, .username = "old", .password = SecretText{"p"}, .region = "jp"};
    EXPECT_EQ(configuration->account, expected);
    const auto document = encode(*configuration);
    EXPECT_TRUE(document.contains("account"));
    EXPECT_FALSE(document.contains("dexcom"));
}

TEST(ConfigurationError, hasItsText)
{
    using enum ConfigurationError::Kind;
    EXPECT_EQ(description({.kind = keychainError, .status = -25308}), "Keychain error: -25308");
    EXPECT_EQ(description({.kind = invalidConfiguration}), "Invalid configuration data");
}

TEST(ThresholdOptions, coverTheirRangesWithoutGaps)
{
    const struct {
        ThresholdKind kind;
        bool mmolL;
        std::size_t count;
        std::string_view firstLabel, lastLabel;
        double first, last;
    } lists[] = {
        {ThresholdKind::low, false, 26, "65 mg/dL", "90 mg/dL", 65, 90},
        {ThresholdKind::high, false, 253, "108 mg/dL", "360 mg/dL", 108, 360},
        {ThresholdKind::low, true, 15, "3.6 mmol/L", "5.0 mmol/L", 65, 90},
        {ThresholdKind::high, true, 141, "6.0 mmol/L", "20.0 mmol/L", 108, 360},
    };
    for (const auto& list : lists) {
        const auto options = thresholdOptions(list.kind, list.mmolL);
        ASSERT_EQ(options.size(), list.count);
        EXPECT_EQ(options.front().label, list.firstLabel);
        EXPECT_EQ(options.back().label, list.lastLabel);
        EXPECT_EQ(options.front().mgdL, list.first);
        EXPECT_EQ(options.back().mgdL, list.last);
        for (std::size_t i = 1; i < options.size(); ++i) {
            const double step = options[i].mgdL - options[i - 1].mgdL;
            EXPECT_TRUE(list.mmolL ? step == 1 || step == 2 : step == 1) << options[i].label;
        }
        EXPECT_EQ(options.data(), thresholdOptions(list.kind, list.mmolL).data()) << "built once";
    }
    EXPECT_EQ(thresholdOptions(ThresholdKind::low, true)[4].label, "4.0 mmol/L");
    EXPECT_EQ(thresholdOptions(ThresholdKind::low, true)[4].mgdL, 72);
    EXPECT_EQ(thresholdOptions(ThresholdKind::high, true)[5].mgdL, 117);  // 6.5 × 18
}

TEST(ThresholdValidator, snapsToTheNearestOptionAndTheSmallerOfTwo)
{
    using enum ThresholdKind;
    const std::tuple<ThresholdKind, bool, double, double> cases[] = {
        {low, false, 77.5, 77}, {low, true, 77.5, 77},  {low, false, 77.6, 78},   {low, true, 78, 77},
        {low, true, 66, 65},    {low, false, -1e9, 65}, {low, false, 1e9, 90},    {high, false, 108, 108},
        {high, true, 109, 108}, {high, true, 359, 358}, {high, true, 359.5, 360}, {high, false, 0, 108},
    };
    for (const auto& [kind, mmolL, stored, shown] : cases)
        EXPECT_EQ(ThresholdValidator::snap(thresholdOptions(kind, mmolL), stored), shown) << stored << mmolL;
    EXPECT_EQ(ThresholdValidator::snap({}, 77.5), 77.5);
}

void expectSetting(std::string_view key, std::string_view value, std::string_view shown,
                   std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "called"};
    const auto settings = withSetting({}, key, value);
    ASSERT_TRUE(settings) << settings.error();
    EXPECT_EQ(settingText(*settings, key), shown);
}

TEST(AppSettingsKeys, takeWhatTheSettingsOffer)
{
    expectSetting("measurementUnit", "MMOL/l", "mmol/L");
    expectSetting("lowGlucoseThreshold", "4 mmol/l", "72 mg/dL");
    expectSetting("lowGlucoseThreshold", "72", "72 mg/dL");
    expectSetting("lowGlucoseThreshold", " 73mg/dL ", "73 mg/dL");
    expectSetting("highGlucoseThreshold", "20.0 mmol/L", "360 mg/dL");
    expectSetting("graphTimeWindowHours", "24", "24");
    expectSetting("graphTimeWindowHours", "default", "default");
    expectSetting("startAtLogin", "ON", "true");
    expectSetting("alertsEnabled", "no", "false");
    expectSetting("quietHoursStartMinutes", "0", "00:00");
    expectSetting("quietHoursStartMinutes", "1439", "23:59");
    expectSetting("quietHoursEndMinutes", "7:05", "07:05");
    expectSetting("lowAlertRepeatMinutes", "15", "15");
}

TEST(AppSettingsKeys, refuseEverythingElseInOneLineThatDoesNotRepeatIt)
{
    const std::pair<std::string_view, std::vector<std::string_view>> refused[] = {
        {"measurementUnit", {"", "mg", "mg/dL mmol/L"}},
        {"lowGlucoseThreshold",
         {"64", "91", "72.5", "3.5 mmol/L", "4.05 mmol/L", "4.0", "72 g", "-72", "7e1", "nan", "72 72"}},
        {"highGlucoseThreshold", {"107", "361", "20.1 mmol/L", "5.9mmol/L"}},
        {"graphTimeWindowHours", {"2", "0", "24.0", "-1", "25"}},
        {"startAtLogin", {"", "1", "tru", "true false"}},
        {"quietHoursStartMinutes",
         {"1440", "-1", "24:00", "22:60", "22:0", "022:00", ":00", "22:", "99999999999999999999"}},
        {"lowAlertRepeatMinutes", {"1", "-15", "61", "15 min"}},
        {"noSuchSetting", {"true"}},
    };
    for (const auto& [key, values] : refused) {
        for (const std::string_view value : values) {
            const auto settings = withSetting({}, key, value);
            ASSERT_FALSE(settings) << key << " " << value;
            EXPECT_FALSE(settings.error().empty());
            EXPECT_EQ(settings.error().find('\n'), std::string::npos);
        }
    }
    EXPECT_EQ(settingText({}, "noSuchSetting"), std::nullopt);
    // What stands in the document may lie outside the lists; low still stays below high.
    EXPECT_FALSE(withSetting({.highGlucoseThreshold = 80}, "lowGlucoseThreshold", "80"));
    EXPECT_TRUE(withSetting({.highGlucoseThreshold = 80}, "lowGlucoseThreshold", "79"));
}

TEST(AppSettingsKeys, everyTextIsTakenBack)
{
    EXPECT_EQ(appSettingKeys().size(), 19U);
    for (const AppSettings& settings : {AppSettings{}, fullConfiguration().app}) {
        auto copy = AppSettings{};
        copy.lowGlucoseThreshold = settings.lowGlucoseThreshold;  // 65.5 is not offered
        for (const std::string_view key : appSettingKeys()) {
            if (key == "lowGlucoseThreshold")
                continue;
            const auto changed = withSetting(copy, key, settingText(settings, key).value());
            ASSERT_TRUE(changed) << key << ": " << changed.error();
            copy = *changed;
        }
        EXPECT_EQ(copy, settings);
    }
    for (const bool low : {false, true}) {
        for (const bool mmolL : {false, true}) {
            for (const auto& option : thresholdOptions(low ? ThresholdKind::low : ThresholdKind::high, mmolL))
                expectSetting(low ? "lowGlucoseThreshold" : "highGlucoseThreshold", option.label,
                              fmt::format("{} mg/dL", option.mgdL));
        }
    }
}

}  // namespace
}  // namespace tidewell
