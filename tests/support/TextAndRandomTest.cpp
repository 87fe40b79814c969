#include <cstdlib>
#include <limits>
#include <set>

#include "support/Base64.h"
#include "support/Log.h"
#include "support/Random.h"
#include "support/SecretText.h"
#include "support/Sha256.h"
#include "support/TimeText.h"
#include "testing/Texts.h"

namespace tidewell {
namespace {

/// Sets TZ for one scope.
class ZoneVariable {
public:
    explicit ZoneVariable(const char* value)
    {
        if (const char* const before = std::getenv("TZ"))
            before_ = before;
        value ? setenv("TZ", value, 1) : unsetenv("TZ");
    }
    ~ZoneVariable() { before_ ? setenv("TZ", before_->c_str(), 1) : unsetenv("TZ"); }

private:
    std::optional<std::string> before_;
};

TEST(TimeZone, honoursTheVariableAndFallsBackToTheSystem)
{
    std::string system;
    {
        const ZoneVariable none{nullptr};
        system = TimeZone::current().name();
        EXPECT_NE(system, "");
    }
    const std::pair<const char*, std::string> cases[]{{"Europe/London", "Europe/London"},
                                                      {":Europe/London", "Europe/London"},
                                                      {"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
                                                      {":/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
                                                      {"UTC", "UTC"},
                                                      {"", "UTC"},
                                                      {":", "UTC"},
                                                      {"XYZ-3:30", system},
                                                      {"../../etc/passwd", system},
                                                      {"Nowhere/Atall", system}};
    for (const auto& [variable, expected] : cases) {
        const ZoneVariable set{variable};
        EXPECT_EQ(TimeZone::current().name(), expected) << variable;
    }
    EXPECT_FALSE(TimeZone::named("Nowhere/Atall"));
    EXPECT_FALSE(TimeZone::named(""));
}

TEST(TimeZone, changesItsOffsetAtTheSecondOfTheRule)
{
    const TimeZone london = TimeZone::named("Europe/London").value();
    const Date change = dateFromIso("2026-03-29T01:00:00Z").value();
    EXPECT_EQ(london.offset(change - 0.001s), 0s);
    EXPECT_EQ(london.offset(change), 3600s);
    EXPECT_EQ(TimeZone::named("Asia/Kolkata").value().offset(change), 19'800s);
    EXPECT_EQ(localTimeOfDay(change, london), "02:00");
    EXPECT_EQ(localMediumText(change - 1s, london), "Mar 29, 2026 at 00:59:59");
    EXPECT_EQ(localMediumText(dateFromIso("2026-03-02T08:15:42Z").value(), TimeZone::utc()),
              "Mar 2, 2026 at 08:15:42");
    for (const double extreme : {-1e300, 1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_LT(std::chrono::abs(london.offset(dateFromUnix(extreme))), 86'400s);
}

TEST(TimeText, isoTextTruncatesAndStaysWithinFourDigitYears)
{
    EXPECT_EQ(isoText(dateFromUnix(1'772'439'342.999)), "2026-03-02T08:15:42Z");
    EXPECT_EQ(isoText(dateFromUnix(-0.5)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(isoText(dateFromUnix(1e300)), "9999-12-31T23:59:59Z");
    EXPECT_EQ(isoText(dateFromUnix(-1e300)), "0000-01-01T00:00:00Z");
    EXPECT_EQ(isoText(dateFromUnix(std::numeric_limits<double>::quiet_NaN())), "0000-01-01T00:00:00Z");
}

TEST(TimeText, readsIsoDatesAndRefusesEverythingElse)
{
    const std::pair<std::string_view, double> good[]{
        {"1970-01-01T00:00:00Z", 0},
        {"2026-03-02T08:15:42Z", 1'772'439'342},
        {"2026-03-02T08:15:42.25Z", 1'772'439'342.25},
        {"2026-03-02T08:15:42,25Z", 1'772'439'342.25},
        {"2026-03-02T10:15:42+02:00", 1'772'439'342},
        {"2026-03-02T03:45:42-0430", 1'772'439'342},
        {"2026-03-02T10:15:42+02", 1'772'439'342},
        {"2024-02-29T00:00:00Z", 1'709'164'800},
        {"2016-12-31T23:59:60Z", 1'483'228'800},
        {"0000-01-01T00:00:00Z", -62'167'219'200},
        {"2026-03-02T08:15:42.2500000000000000000000000000000000001Z", 1'772'439'342.25}};
    for (const auto& [text, expected] : good) {
        const auto date = dateFromIso(text);
        ASSERT_TRUE(date) << text;
        EXPECT_DOUBLE_EQ(unixSeconds(*date), expected) << text;
    }
    for (const std::string& bad :
         parts("|2026|2026-03-02|2026-03-02T08:15:42|2026-03-02 08:15:42Z|2026-02-29T00:00:00Z|"
               "2026-13-01T00:00:00Z|2026-00-01T00:00:00Z|2026-03-02T24:00:00Z|2026-03-02T08:60:42Z|"
               "2026-03-02T08:15:61Z|2026-03-02T08:15:42.Z|2026-03-02T08:15:42Z | 2026-03-02T08:15:42Z|"
               "2026-03-02T08:15:42+24:00|2026-03-02T08:15:42+02:60|2026-03-02T08:15:42+02:0|"
               "2026-03-02T08:15:42+2|+026-03-02T08:15:42Z|2026-3-02T08:15:42Z|2026-03-02T08:15:42ZZ|"
               "2026-03-02T08:15:42+02:|20260302T081542Z|2026-03-02T08:15:-2Z"))
        EXPECT_FALSE(dateFromIso(bad)) << bad;
}

TEST(TimeText, isoTextAndItsReadingAgreeOverTheYears)
{
    SeededRandom random{1};
    for (int i = 0; i < 2000; ++i) {
        const double second = std::floor(random.unit() * 6e10);
        const auto read = dateFromIso(isoText(dateFromUnix(second)));
        ASSERT_TRUE(read);
        ASSERT_EQ(unixSeconds(*read), second);
    }
}

TEST(SeededRandom, givesTheSameNumbersEverywhere)
{
    SeededRandom random{1234567};  // The reference implementation's first outputs for this seed.
    for (const std::uint64_t expected : {6457827717110365317U, 3203168211198807973U, 9817491932198370423U})
        EXPECT_EQ(random.next(), expected);
    double low = 1;
    double high = -1;
    for (int i = 0; i < 10'000; ++i) {
        const double unit = random.unit();
        ASSERT_TRUE(unit >= -1 && unit <= 1);
        low = std::min(low, unit);
        high = std::max(high, unit);
    }
    EXPECT_LT(low, -0.99);
    EXPECT_GT(high, 0.99);
}

TEST(Uuid, isVersionFourAndNeverTwiceTheSame)
{
    SystemRandom random;
    std::set<Uuid> seen;
    for (int i = 0; i < 1000; ++i) {
        const Uuid uuid = Uuid::random(random);
        const std::string text = uuid.text();
        ASSERT_EQ(text.size(), 36U);
        ASSERT_EQ(text[14], '4');
        ASSERT_NE(std::string_view{"89ab"}.find(text[19]), std::string_view::npos);
        ASSERT_TRUE(seen.insert(uuid).second);
    }
    EXPECT_EQ(Uuid{}.text(), "00000000-0000-0000-0000-000000000000");
}

TEST(SecretText, movesLeaveNothingBehindAndCopiesStandAlone)
{
    std::string source(64, 's');
    const char* const memory = source.data();
    SecretText secret{std::move(source)};
    EXPECT_EQ(std::string_view(memory, 64).find('s'), std::string_view::npos);
    EXPECT_EQ(secret.reveal(), std::string(64, 's'));

    SecretText copy = secret;
    SecretText moved = std::move(secret);
    EXPECT_TRUE(secret.empty());  // NOLINT(bugprone-use-after-move): that is the promise.
    EXPECT_TRUE(copy == moved);
    copy = SecretText{"other"};
    EXPECT_FALSE(copy == moved);
    moved = std::move(copy);
    EXPECT_EQ(moved.reveal(), "other");
    const SecretText& same = moved;
    moved = same;
    EXPECT_EQ(moved.reveal(), "other");
    EXPECT_TRUE(SecretText{} == SecretText{""});
}

TEST(Log, replacesControlCharactersAndCutsLongLines)
{
    std::vector<std::string> lines;
    const LogSink before = setLogSink([&](LogLevel level, std::string_view category, std::string_view line) {
        EXPECT_EQ(level, LogLevel::warning);
        EXPECT_EQ(category, "Poller");
        lines.emplace_back(line);
        Log{"Nested"}.error("A sink that logs must not hang.");
    });
    const Log log{"Poller"};
    log.warning("a\nb\x1b[31m\x7f \xc2\x9b tab\t \xc3\xa4");
    log.warning(std::string(4096, 'x'));
    log.warning(std::string(4092, 'x') + "\xc3\xa4" + std::string(10, 'y'));
    setLogSink([](LogLevel, std::string_view, std::string_view) { throw 1; });
    log.warning("A sink that fails is not the caller's trouble.");
    setLogSink(before);
    log.warning("Nobody listens.");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "a b [31m     tab  \xc3\xa4");
    EXPECT_EQ(lines[1], std::string(4096, 'x'));
    EXPECT_EQ(lines[2], std::string(4092, 'x') + "...");
}

TEST(Log, theSystemSinkWritesFromItsLevelUpToStandardError)
{
    testing::internal::CaptureStderr();
    const LogSink before = setLogSink(systemLogSink(LogLevel::warning));
    const Log log{"Poller"};
    log.debug("too quiet");
    log.warning("loud {} %s enough");
    setLogSink(before);
    const std::string written = testing::internal::GetCapturedStderr();
    EXPECT_EQ(written.find("quiet"), std::string::npos);
    EXPECT_NE(written.find("warning [Poller] loud {} %s enough\n"), std::string::npos) << written;
}

TEST(Base64, isTheStandardAlphabetAndStrict)
{
    // RFC 4648 section 10
    const std::pair<std::string_view, std::string_view> vectors[] = {{"", ""},
                                                                     {"f", "Zg=="},
                                                                     {"fo", "Zm8="},
                                                                     {"foo", "Zm9v"},
                                                                     {"foob", "Zm9vYg=="},
                                                                     {"fooba", "Zm9vYmE="},
                                                                     {"foobar", "Zm9vYmFy"},
                                                                     {"\xfb\xff", "+/8="}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(base64(bytes), text);
        EXPECT_EQ(bytesFromBase64(text), std::string{bytes});
    }
    EXPECT_EQ(bytesFromBase64(base64(everyByte())), everyByte());
    for (const std::string_view bad :
         {"Zg", "Zg=", "Zg===", "====", "=", "Zm9v\n", " Zm9v", "Zh==", "Zm9=", "Zg==Zg==", "Z-_v", "Zm9vé"})
        EXPECT_EQ(bytesFromBase64(bad), std::nullopt) << bad;
}

TEST(Sha256, agreesWithPublishedVectors)
{
    // FIPS 180-4 examples, NIST CSRC.
    EXPECT_EQ(sha256Hex(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256Hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(sha256Hex(std::string(1'000'000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

}  // namespace
}  // namespace tidewell
