#include "sources/LibreLinkUpAnswers.h"

#include <fmt/ranges.h>

#include <boost/json/serialize.hpp>

#include <limits>

#include "sources/LibreBodies.h"
#include "support/TimeText.h"
#include "testing/Texts.h"

namespace tidewell {
namespace {

using Kind = LibreLinkUpError::Kind;
using APIKind = GlucoseAPIError::Kind;

const Date now = dateFromUnix(1'772'438'400);  // 2026-03-02 08:00:00 UTC

json::value parsed(std::string_view text)
{
    auto value = parseJson(text);
    EXPECT_TRUE(value) << text;
    return value ? *value : json::value{};
}

TEST(LibreLinkUpAnswers, everyErrorHasItsTextAndItsPlaceInThePollingLoop)
{
    const std::tuple<Kind, APIKind, const char*> cases[]{
        {Kind::rateLimited, APIKind::rateLimited,
         "LibreLinkUp is limiting requests. Tidewell will wait before trying again."},
        {Kind::serverError, APIKind::serverTrouble, "LibreLinkUp is unavailable (503). Try again later."},
        {Kind::invalidRegion, APIKind::accountActionRequired,
         "LibreLinkUp could not find a supported account region. Check the region in Settings."},
        {Kind::authenticationFailed, APIKind::credentialsRefused,
         "Unable to sign in to LibreLinkUp. Check your email and password in the LibreLinkUp app."},
        {Kind::sessionExpired, APIKind::sessionExpired,
         "Your LibreLinkUp session has expired. Please sign in again."},
        {Kind::termsRequired, APIKind::accountActionRequired,
         "Open the LibreLinkUp app and review its updated terms or privacy notice, then try again."},
        {Kind::accountActionRequired, APIKind::accountActionRequired,
         "Open the LibreLinkUp app and complete the account setup shown there, then try again."},
        {Kind::clientUpdateRequired, APIKind::serverTrouble,
         "LibreLinkUp requires a newer connection version. Check for an update to Tidewell."},
        {Kind::noConnections, APIKind::accountActionRequired,
         "No LibreLinkUp connections were found. Accept a sharing invitation in the LibreLinkUp app first."},
        {Kind::connectionSelectionRequired, APIKind::accountActionRequired,
         "Select the person whose readings you want to display in Settings."},
        {Kind::connectionUnavailable, APIKind::accountActionRequired,
         "The selected LibreLinkUp connection is no longer available. Check sharing in LibreLinkUp and "
         "select "
         "a connection in Settings."},
        {Kind::noReadingsAvailable, APIKind::noReadings,
         "No Libre glucose readings are available. Check that readings appear in the LibreLinkUp app."},
        {Kind::invalidResponse, APIKind::other,
         "LibreLinkUp returned an unexpected response. Try again later."},
        {Kind::invalidReading, APIKind::other,
         "LibreLinkUp returned a reading with an invalid value or timestamp."},
        {Kind::transport, APIKind::transport, "The request timed out."},
    };
    for (const auto& [kind, seen, text] : cases) {
        const LibreLinkUpError error{
            .kind = kind, .wait = 90s, .httpStatus = 503, .network = HttpError{HttpError::Kind::timedOut}};
        GlucoseAPIError expected{.kind = seen, .text = text};
        if (kind == Kind::rateLimited)
            expected.retryAfter = 90s;
        EXPECT_EQ(description(error), text);
        EXPECT_EQ(glucoseAPIError(error), expected) << text;
    }
}

TEST(LibreLinkUpAnswers, whatAnAnswerMeansFollowsFromItsStatusesInTheirOrder)
{
    constexpr const char* page = " \r\n<!DOCTYPE html><title>Attention Required!</title>";
    const auto step = [](std::string_view type) {
        return fmt::format(
            R"({{"status":4,"data":{{"step":{{"type":{},"componentName":"AcceptDocument","props":{{}}}},)"
            R"("user":{{"country":"NL"}},"authTicket":{{"token":"interim","expires":1772441713}}}}}})",
            type);
    };
    const auto locked = [](std::string_view lockout) {
        return fmt::format(
            R"({{"status":429,"data":{{"code":60,"data":{{"failures":3,"lockout":{}}},"message":"locked"}}}})",
            lockout);
    };
    const std::string old = R"({"data":{"minimumVersion":"4.16.0"},"status":920})";

    /// `calls`: s(ign-in), c(onnections), g(raph).
    struct Row {
        const char* calls;
        int status;
        std::string body;
        std::optional<Kind> kind;  ///< Empty: a good answer.
        double wait = 0;
        HttpHeader header{};
    };
    std::vector<Row> rows{
        // Asked to wait, before everything else.
        {"scg", 429, "", Kind::rateLimited},
        {"scg", 429, page, Kind::rateLimited, 30, {"retry-after", "30"}},
        {"scg", 429, step("\"tou\""), Kind::rateLimited, 0, {"Retry-After", "soon"}},
        {"scg", 429, old, Kind::rateLimited},
        {"scg", 200, R"({"status":429})", Kind::rateLimited, 7, {"Retry-After", "7"}},
        {"scg", 200, locked("300"), Kind::rateLimited, 300},
        {"scg", 200, R"({"status":429,"data":{"lockout":120,"data":{"lockout":5}}})", Kind::rateLimited, 120},
        {"scg", 200, R"({"status":429,"data":{"lockout":"x","data":{"lockout":5}}})", Kind::rateLimited, 5},
        {"scg", 200, locked("300"), Kind::rateLimited, 30, {"Retry-After", "30"}},
        {"scg", 200, locked("300"), Kind::rateLimited, 0, {"Retry-After", "Mon, 02 Mar 2026 07:00:00 GMT"}},
        {"scg", 200, locked("300"), Kind::rateLimited, 300, {"Retry-After", "-1"}},
        {"scg", 429, locked("300"), Kind::rateLimited, 300},
        {"scg", 401, locked("12.5"), Kind::rateLimited, 12.5},
        {"scg", 503, locked("1e300"), Kind::rateLimited, 3600},
        {"scg", 200, locked("-300"), Kind::rateLimited},
        {"scg", 200, locked("\"300\""), Kind::rateLimited},
        {"scg", 200, R"({"status":429,"data":[300]})", Kind::rateLimited},
        // A step to take in the service's own app.
        {"scg", 200, step("\"tou\""), Kind::termsRequired},
        {"scg", 200, step("\"pp\""), Kind::termsRequired},
        {"scg", 200, step("\"verifyEmail\""), Kind::accountActionRequired},
        {"scg", 200, step("\"somethingNew\""), Kind::accountActionRequired},
        {"scg", 200, step("7"), Kind::accountActionRequired},
        {"scg", 200, R"({"status":4,"data":{"step":{}}})", Kind::accountActionRequired},
        {"scg", 200, R"({"status":4,"data":{"step":"tou"}})", Kind::accountActionRequired},
        {"sc", 200, R"({"status":4})", Kind::accountActionRequired},
        {"sc", 200, R"({"status":4,"data":{"step":null}})", Kind::accountActionRequired},
        {"g", 200, R"({"status":4})", Kind::connectionUnavailable},
        {"g", 200, R"({"status":4,"error":{"message":"couldNotLoadPatient"}})", Kind::connectionUnavailable},
        {"scg", 401, step("\"tou\""), Kind::termsRequired},
        {"scg", 426, step("\"pp\""), Kind::termsRequired},
        {"scg", 500, step("\"verifyEmail\""), Kind::accountActionRequired},
        // A client that is too old.
        {"scg", 426, "", Kind::clientUpdateRequired},
        {"scg", 426, R"({"status":2})", Kind::clientUpdateRequired},
        {"scg", 403, old, Kind::clientUpdateRequired},
        {"scg", 200, old, Kind::clientUpdateRequired},
        {"scg", 403, R"({"status":920})", Kind::clientUpdateRequired},
        {"scg", 403, R"({"data":{"minimumVersion":"5.0.0"}})", Kind::clientUpdateRequired},
        {"scg", 401, R"({"data":{"minimumVersion":5}})", Kind::clientUpdateRequired},
        // Refused.
        {"s", 401, "", Kind::authenticationFailed},
        {"s", 401, page, Kind::authenticationFailed},
        {"s", 403, "", Kind::authenticationFailed},
        {"s", 403, "{}", Kind::authenticationFailed},
        {"s", 200, R"({"status":2,"error":{"message":"notAuthenticated"}})", Kind::authenticationFailed},
        {"s", 500, R"({"status":2})", Kind::authenticationFailed},
        {"cg", 401, R"({"message":"invalid or expired jwt"})", Kind::sessionExpired},
        {"cg", 401, R"({"status":0,"data":{}})", Kind::sessionExpired},
        {"cg", 403, R"({"data":{"minimumVersion":null}})", Kind::sessionExpired},
        {"cg", 200, R"({"status":2})", Kind::sessionExpired},
        {"cg", 502, R"({"status":2})", Kind::sessionExpired},
        // Away, or the edge in front of it: says nothing about the account.
        {"scg", 403, page, Kind::serverError},
        {"scg", 403, "", Kind::serverError, 0, {"content-type", "Text/HTML; charset=UTF-8"}},
        {"scg", 400, R"({"message":"RequiredHeaderMissing"})", Kind::serverError},
        {"scg", 500, R"({"status":0,"data":{}})", Kind::serverError},
        {"scg", 500, R"({"status":911})", Kind::serverError},
        // Not understood.
        {"s", 200, R"({"status":911})", Kind::invalidRegion},
        {"cg", 200, R"({"status":911})", Kind::invalidResponse},
        // Good.
        {"scg", 200, R"({"status":0,"data":{}})", std::nullopt},
        {"scg", 200, R"({"status":0,"data":{"minimumVersion":"9.0.0"}})", std::nullopt},
        {"scg", 204, R"({"data":[],"status":0.0,"ticket":7})", std::nullopt},
        {"scg", 299, " {\"status\":0}\n", std::nullopt},
    };
    for (const int status : {0, 100, 199, 300, 302, 400, 404, 430, 500, 502, 503, 599, 600})
        for (const char* body : {"", "{}", page})
            rows.push_back({"scg", status, body, Kind::serverError});
    std::vector<std::string> odd = parts(
        R"(|{|[]|null|4|{"data":{}}|{"status":"0","data":{}}|{"status":null}|{"status":0.5}|{"status":true}|)"
        R"({"status":1}|{"status":3}|{"status":-1}|{"status":1e30}|{"status":0,"status":0}|{"status":0}x)");
    odd.insert(odd.end(), {page, "{\"status\":0,\"data\":\"\xc3\x28\"}",
                           R"({"status":0,"data":)" + std::string(40, '[') + std::string(40, ']') + "}",
                           R"({"status":0,"data":")" + std::string(1'100'000, 'x') + "\"}"});
    for (const std::string& body : odd)
        rows.push_back({"scg", 200, body, Kind::invalidResponse});

    for (const Row& row : rows) {
        for (const char letter : std::string_view{row.calls}) {
            SCOPED_TRACE(fmt::format("{} {} {} {}", letter, row.status, row.header.value,
                                     std::string_view{row.body}.substr(0, 200)));
            const auto call = letter == 's'   ? LibreLinkUpCall::signIn
                              : letter == 'c' ? LibreLinkUpCall::connections
                                              : LibreLinkUpCall::graph;
            const HttpResponse response{.status = row.status, .headers = {row.header}, .body = row.body};
            const auto answer = libreAnswerData(call, response, now);
            ASSERT_EQ(answer.has_value(), !row.kind);
            if (answer)
                continue;
            const LibreLinkUpError expected{.kind = *row.kind,
                                            .wait = Seconds{row.wait},
                                            .httpStatus = *row.kind == Kind::serverError ? row.status : 0};
            EXPECT_EQ(answer.error(), expected) << description(answer.error());
        }
    }
    const HttpResponse good{.status = 200, .body = R"({"status":0,"data":{"a":[1]}})"};
    EXPECT_EQ(json::serialize(*libreAnswerData(LibreLinkUpCall::graph, good, now)), R"({"a":[1]})");
}

TEST(LibreLinkUpAnswers, timesAreReadInBothFormsAndArrowsAreWords)
{
    const std::pair<std::string, const char*> times[]{
        {"3/1/2026 7:58:12 PM", "2026-03-01T19:58:12Z"},
        {"3/1/2026 7:58:12 AM", "2026-03-01T07:58:12Z"},
        {"12/31/2025 12:00:00 AM", "2025-12-31T00:00:00Z"},
        {"12/31/2025 12:00:00 PM", "2025-12-31T12:00:00Z"},
        {"12/31/2025 11:59:59 PM", "2025-12-31T23:59:59Z"},
        {"1/1/2026 12:59:59 AM", "2026-01-01T00:59:59Z"},
        {"03/01/2026 07:58:12 PM", "2026-03-01T19:58:12Z"},
        {"2/29/2024 1:00:00 AM", "2024-02-29T01:00:00Z"},
        {"1/2/2025 13:05:00", "2025-01-02T13:05:00Z"},
        {"1/2/2025 0:05:00", "2025-01-02T00:05:00Z"},
        {"1/2/2025 00:05:00", "2025-01-02T00:05:00Z"},
        {"1/2/2025 9:05:07", "2025-01-02T09:05:07Z"},
        {"1/2/2025 23:59:59", "2025-01-02T23:59:59Z"},
        {"1/1/0001 12:00:00 AM", "0001-01-01T00:00:00Z"},
        {"3/29/2026 2:30:00 AM", "2026-03-29T02:30:00Z"},  // A time that summer time skips; UTC has it.
    };
    for (const auto& [text, expected] : times) {
        const auto date = libreFactoryTimestamp(text);
        EXPECT_EQ(date ? isoText(*date) : "none", expected) << text;
    }
    for (const std::string& bad : parts(
             "| |2/29/2026 1:00:00 AM|4/31/2026 1:00:00 AM|13/1/2026 1:00:00 AM|0/1/2026 1:00:00 AM|"
             "1/0/2026 1:00:00 AM|1/32/2026 1:00:00|1/2/2025 24:00:00|1/2/2025 13:05:00 PM|"
             "1/2/2025 0:05:00 AM|1/2/2025 1:60:00|1/2/2025 1:00:60|1/2/2025 1:00:00 am|1/2/2025 1:00:00 XM|"
             "1/2/2025 1:00:00AM|1/2/2025 1:00:00 AM | 1/2/2025 1:00:00 AM|1/2/2025  1:00:00 AM|"
             "1/2/2025 1:00:00 AMAM|1/2/2025 1:0:00|1/2/2025 1:00|1/2/25 1:00:00|1/2/02025 1:00:00|"
             "001/2/2025 1:00:00|1/2/2025 001:00:00|-1/2/2025 1:00:00|+1/2/2025 1:00:00|1/2/2025T1:00:00|"
             "1-2-2025 1:00:00|2025/1/2 1:00:00|2026-03-02T07:55:13Z|1/2/2025 1:00:00.5|"
             "1/2/2025 1:00:00\u202fAM|١/2/2025 1:00:00|99999999999999999999/1/2025 1:00:00"))
        EXPECT_FALSE(libreFactoryTimestamp(bad)) << bad;
    EXPECT_FALSE(libreFactoryTimestamp(std::string_view{"1/2/2025 1:00:00\0", 17}));

    const std::array<std::string_view, 7> words{"NotComputable", "SingleDown", "FortyFiveDown", "Flat",
                                                "FortyFiveUp",   "SingleUp",   "NotComputable"};
    for (std::size_t arrow = 0; arrow < words.size(); ++arrow)
        EXPECT_EQ(libreTrendWord(static_cast<std::int64_t>(arrow)), words[arrow]);
    EXPECT_EQ(libreTrendWord(-1), "NotComputable");
    EXPECT_EQ(libreTrendWord(std::numeric_limits<std::int64_t>::min()), "NotComputable");
    EXPECT_EQ(libreTrendWord({}), "NotComputable");
}

TEST(LibreLinkUpAnswers, aWaitIsAsManySecondsOrUntilADate)
{
    const std::pair<std::string, double> cases[]{
        {"0", 0},
        {"30", 30},
        {"007", 7},
        {"3600", 3600},
        {"3601", 3600},
        {"99999999999999999999999999", 3600},
        {"Mon, 02 Mar 2026 08:00:00 GMT", 0},
        {"Mon, 02 Mar 2026 08:01:30 GMT", 90},
        {"Mon, 02 Mar 2026 09:00:00 GMT", 3600},
        {"Tue, 03 Mar 2026 00:00:00 GMT", 3600},
        {"Fri, 31 Dec 9999 23:59:59 GMT", 3600},
        {"Sun, 01 Mar 2026 23:59:59 GMT", 0},
        {"Sun, 06 Nov 1994 08:49:37 GMT", 0},
    };
    for (const auto& [header, seconds] : cases)
        EXPECT_EQ(retryAfterWait(header, now), Seconds{seconds}) << header;
    // The weekday of the first date is wrong; the last two are older forms that nobody sends.
    for (const std::string& bad :
         parts("| 30|-30|+30|1.5|1e3|0x10|30 seconds|soon|Tue, 02 Mar 2026 08:01:30 GMT|"
               "Mon, 02 Mar 2026 08:01:30 UTC|Mon, 02 Mar 2026 08:01:30 +0000|Mon, 02 Mar 2026 08:01:30|"
               "Mon, 2 Mar 2026 08:01:30 GMT|Mon, 02 Mar 26 08:01:30 GMT|Mon, 02 Mär 2026 08:01:30 GMT|"
               "Mon, 02 Mar 2026 24:00:00 GMT|Mon, 30 Feb 2026 08:01:30 GMT|Monday, 02-Mar-26 08:01:30 GMT|"
               "Mon Mar  2 08:01:30 2026"))
        EXPECT_FALSE(retryAfterWait(bad, now)) << bad;
}

TEST(LibreLinkUpAnswers, aSignInBringsATicketOrAnotherRegion)
{
    const auto dataOf = [](const std::string& body) { return parsed(body).at("data"); };
    const auto good = libreSignIn(dataOf(libreLogin()));
    ASSERT_TRUE(good);
    EXPECT_FALSE(good->redirectRegion);
    EXPECT_EQ(good->token.reveal(), libreToken);
    EXPECT_EQ(unixSeconds(good->expires), 1'787'990'400);
    EXPECT_EQ(good->accountHash, libreUserHash);
    for (const char* odd : {"0", "-5", "1.5", "1e300", "1787990400000"})
        EXPECT_TRUE(libreSignIn(dataOf(libreLogin(libreToken, odd)))) << odd;
    EXPECT_TRUE(libreSignIn(dataOf(libreLogin("x"))));
    EXPECT_TRUE(libreSignIn(dataOf(libreLogin(std::string(8192, 'x')))));
    EXPECT_EQ(libreSignIn(dataOf(libreRedirect("EU2")))->redirectRegion, "eu2");
    EXPECT_EQ(libreSignIn(parsed(R"({"redirect":true,"region":"\u0000","authTicket":7})"))->redirectRegion,
              (std::string{"\0", 1}));

    std::vector<std::string> bad = parts(
        R"(null|[]|"x"|{}|{"redirect":true}|{"redirect":true,"region":7}|{"redirect":true,"region":""}|)"
        R"({"redirect":false,"region":"eu"}|{"redirect":"true","region":"eu"}|)"
        R"({"user":{"id":7},"authTicket":{"token":"x","expires":1}}|)"
        R"({"user":{"id":""},"authTicket":{"token":"x","expires":1}}|)"
        R"({"user":[],"authTicket":{"token":"x","expires":1}}|)"
        R"({"user":{"id":"u"},"authTicket":{"token":7,"expires":1}}|{"user":{"id":"u"},"authTicket":"x"}|)"
        R"({"user":{"id":"u"},"authTicket":{"token":"x"}}|)"
        R"({"user":{"id":"u"},"authTicket":{"token":"x","expires":"1"}}|{"user":{"id":"u"}}|)"
        R"({"authTicket":{"token":"x","expires":1}})");
    for (const std::string& token : parts("|x\\r\\nHost: y|x\\u0000|ü|x |" + std::string(8193, 'x')))
        bad.push_back(json::serialize(dataOf(libreLogin(token))));
    for (const std::string& data : bad) {
        const auto signIn = libreSignIn(parsed(data));
        ASSERT_FALSE(signIn) << data;
        EXPECT_EQ(signIn.error(), LibreLinkUpError{Kind::invalidResponse}) << data;
    }
}

TEST(LibreLinkUpAnswers, peopleStandByNameWithoutWhatCannotBeAnId)
{
    const auto list = [](std::string_view entries) {
        const auto people = libreConnections(parsed(entries));
        std::vector<std::string> texts;
        for (const LibreConnection& person : people.value_or(std::vector<LibreConnection>{}))
            texts.push_back(fmt::format("{}={}", person.patientId, person.displayName()));
        return people ? fmt::format("{}", fmt::join(texts, "|")) : description(people.error());
    };
    const std::string person =
        R"({"patientId":"p2","firstName":"Grace","lastName":"Muster","sensor":null,"glucoseMeasurement":null})";
    const std::string other = R"({"patientId":"p1","firstName":"Ada","lastName":"Muster"})";
    EXPECT_EQ(list("[]"), "");
    EXPECT_EQ(list("[" + person + "]"), "p2=Grace Muster");
    EXPECT_EQ(list("[" + person + "," + other + "]"), "p1=Ada Muster|p2=Grace Muster");
    EXPECT_EQ(list("[" + other + "," + person + "]"), "p1=Ada Muster|p2=Grace Muster");
    EXPECT_EQ(list("[" + person + "," + person + "]"), "p2=Grace Muster");
    EXPECT_EQ(list(R"([{"patientId":"b","firstName":"A"},{"patientId":"a","lastName":"A"}])"), "a=A|b=A");
    EXPECT_EQ(list(R"([{"patientId":"p","firstName":7,"lastName":null}])"), "p=");
    EXPECT_EQ(list(R"([{"patientId":"p","firstName":" \u001b[2J\u0085Zoë","lastName":"\u202eß\u2066\n"}])"),
              "p=[2J Zoë  ß");
    EXPECT_EQ(list(fmt::format(R"([{{"patientId":"p","firstName":"{}ü"}}])", std::string(99, 'n'))),
              "p=" + std::string(99, 'n'));
    for (const std::string& bad :
         parts(R"(7|null|{}|{"patientId":7}|{"patientId":""}|{"patientId":"a\nb"}|{"patientId":"ü"}|)"
               R"({"patientId":")" +
               std::string(129, 'x') + "\"}")) {
        EXPECT_EQ(list("[" + bad + "," + person + "]"), "p2=Grace Muster") << bad;
        EXPECT_EQ(list("[" + bad + "]"), description({Kind::invalidResponse})) << bad;
    }
    for (const char* bad : {"null", "{}", "\"x\"", "7"})
        EXPECT_EQ(list(bad), description({Kind::invalidResponse})) << bad;
}

TEST(LibreLinkUpAnswers, aGraphHoldsThePatientsReadingsOrSaysWhyNot)
{
    const auto read = [](std::string_view data) -> std::string {
        const auto graph = libreReadings(parsed(data), librePatient, now);
        if (!graph)
            return description(graph.error());
        std::vector<std::string> texts;
        for (const GlucoseReading& reading : graph->readings) {
            EXPECT_EQ(reading.source, GlucoseProvider::libreLinkUp);
            EXPECT_EQ(reading, makeReading(reading.mgdL, reading.trendString, reading.date,
                                           reading.sampleDuration, reading.source));
            texts.push_back(fmt::format("{} {} {} {}", reading.mgdL, reading.trendString,
                                        isoText(reading.date).substr(11, 8), reading.sampleDuration.count()));
        }
        if (graph->impossible > 0)
            texts.push_back(fmt::format("without {}", graph->impossible));
        return fmt::format("{}", fmt::join(texts, ", "));
    };
    const std::string none = description({Kind::noReadingsAvailable});
    const std::string unreadable = description({Kind::invalidReading});
    const std::string gone = description({Kind::connectionUnavailable});
    const std::string odd = description({Kind::invalidResponse});
    const std::string current = libreMeasurement("118", "3/2/2026 7:59:13 AM", R"(,"TrendArrow":5)");
    const std::string older = libreMeasurement("131", "3/2/2026 7:35:02 AM");
    const std::string newer = libreMeasurement("126.5", "3/2/2026 7:40:01 AM", R"(,"TrendArrow":1)");
    const auto one = [](const std::string& measurement) { return libreGraphData(measurement, "[]"); };
    const auto inGraph = [&](const std::string& measurement) {
        return libreGraphData(current, "[" + measurement + "]");
    };
    const std::string shown = "118 SingleUp 07:59:13 60";

    const std::pair<std::string, std::string> cases[]{
        {libreGraphData(current, "[" + older + "," + newer + "]"),
         "131 NotComputable 07:35:02 300, 126.5 SingleDown 07:40:01 300, " + shown},
        {libreGraphData("null", "[" + newer + "," + older + "]"),
         "126.5 SingleDown 07:40:01 300, 131 NotComputable 07:35:02 300"},
        {one(current), shown},
        {libreGraphData(current, "null"), shown},
        {fmt::format(R"({{"connection":{{"patientId":"{}","glucoseMeasurement":{}}}}})", librePatient,
                     current),
         shown},
        {fmt::format(R"({{"connection":{{"patientId":"{}"}},"graphData":[{}]}})", librePatient, older),
         "131 NotComputable 07:35:02 300"},
        {fmt::format(R"({{"connection":{{"patientId":"{}"}}}})", librePatient), none},
        {libreGraphData("null", "[]"), none},
        // Nobody, somebody else, or nothing that could be anybody.
        {R"({"graphData":[]})", gone},
        {fmt::format(R"({{"connection":null,"graphData":[{}]}})", older), gone},
        {fmt::format(R"({{"connection":{{"glucoseMeasurement":{}}},"graphData":[{}]}})", current, older),
         gone},
        {libreGraphData(current, "[" + older + "]", "9a7b6c5d-1111-4222-8333-444455556667"), gone},
        {libreGraphData(current, "[]", "9A7B6C5D-1111-4222-8333-444455556666"), gone},
        {libreGraphData("7", "[7]", ""), gone},
        {R"({"connection":{"patientId":7}})", odd},
        {R"({"connection":[]})", odd},
        {R"({"connection":"x"})", odd},
        {libreGraphData(current, "{}"), odd},
        {libreGraphData(current, "\"x\""), odd},
        {"null", odd},
        {"[]", odd},
        {"\"x\"", odd},
        // At the edge of what can be.
        {one(libreMeasurement("13")), "13 NotComputable 07:55:13 60"},
        {one(libreMeasurement("1e3")), "1000 NotComputable 07:55:13 60"},
        {one(libreMeasurement("118", "3/2/2026 9:30:00 AM")), "118 NotComputable 09:30:00 60"},
        {one(libreMeasurement("118", "1/1/1970 12:00:00 AM")), "118 NotComputable 00:00:00 60"},
        {one(libreMeasurement("118", "3/2/2026 19:30:00")), unreadable},
        {one(libreMeasurement("12")), unreadable},
        {libreGraphData(current, "[" + older + "," + libreMeasurement("0") + "]"),
         "131 NotComputable 07:35:02 300, " + shown + ", without 1"},
        {libreGraphData(libreMeasurement("0"), "[" + libreMeasurement("-1") + "]"), unreadable},
    };
    for (const auto& [data, expected] : cases)
        EXPECT_EQ(read(data), expected) << data;

    for (const std::string& impossible :
         {libreMeasurement("0"), libreMeasurement("-118"), libreMeasurement("12"), libreMeasurement("1000.5"),
          libreMeasurement("1e308"), libreMeasurement("118", "3/2/2026 9:30:01 AM"),
          libreMeasurement("118", "12/31/9999 11:59:59 PM"), libreMeasurement("118", "1/1/0001 12:00:00 AM"),
          libreMeasurement("118", "12/31/1969 11:59:59 PM")}) {
        EXPECT_EQ(read(inGraph(impossible)), shown + ", without 1") << impossible;
        EXPECT_EQ(read(one(impossible)), unreadable) << impossible;
    }
    std::vector<std::string> bad =
        parts(R"(7|[]|"x"|{}|{"ValueInMgPerDl":118}|{"ValueInMgPerDl":118,"FactoryTimestamp":1772438113}|)"
              R"({"ValueInMgPerDl":118,"FactoryTimestamp":null,"Timestamp":"3/2/2026 7:55:13 AM"}|)"
              R"({"Value":118,"FactoryTimestamp":"3/2/2026 7:55:13 AM"})");
    for (const char* value : {"\"118\"", "null", "true", "[118]"})
        bad.push_back(libreMeasurement(value));
    for (const char* time : {"", "yesterday", "2026-03-02T07:55:13Z"})
        bad.push_back(libreMeasurement("0", time));
    for (const std::string& measurement : bad) {
        EXPECT_EQ(read(inGraph(measurement)), unreadable) << measurement;
        EXPECT_EQ(read(libreGraphData(measurement, "[" + older + "]")), unreadable) << measurement;
    }
    EXPECT_EQ(read(inGraph("null")), unreadable);
    for (const char* arrow : {"0", "6", "-3", "3.5", "1e300", "null", "\"3\"", "[3]", "true"})
        EXPECT_EQ(read(one(libreMeasurement("118", "3/2/2026 7:55:13 AM",
                                            fmt::format(",\"TrendArrow\":{}", arrow)))),
                  "118 NotComputable 07:55:13 60")
            << arrow;
    EXPECT_EQ(read(one(libreMeasurement("118", "3/2/2026 7:55:13 AM", ",\"TrendArrow\":3.0"))),
              "118 Flat 07:55:13 60");
}

}  // namespace
}  // namespace tidewell
