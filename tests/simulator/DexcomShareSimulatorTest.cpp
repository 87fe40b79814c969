#include "simulator/DexcomShareSimulator.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <source_location>

#include "support/Json.h"

namespace tidewell {
namespace {

const Date start = dateFromUnix(1772438000);
const std::string base = "https://share.example/ShareWebServices/Services/";
const std::string application = "11111111-2222-4333-8444-555555555555";
const std::string nullUuid = "\"00000000-0000-0000-0000-000000000000\"";
const std::string readPath = "Publisher/ReadPublisherLatestGlucoseValues";

/// A client's side of the conversation.
struct Talk {
    DexcomShareSimulator simulator;
    Date now = start;

    explicit Talk(DexcomShareOptions options = {}) : simulator{std::move(options), start} {}

    SimulatedAnswer post(const std::string& path, const std::string& body,
                         std::vector<HttpHeader> headers = {})
    {
        return simulator.handle({.method = HttpMethod::post,
                                 .url = base + path,
                                 .headers = std::move(headers),
                                 .body = SecretText{std::string_view{body}}},
                                now);
    }
    SimulatedAnswer authenticate(std::string_view name = "ada@example.org",
                                 std::string_view password = "correct horse",
                                 std::string_view id = application)
    {
        return post("General/AuthenticatePublisherAccount",
                    json::serialize(
                        json::object{{"accountName", name}, {"password", password}, {"applicationId", id}}));
    }
    SimulatedAnswer login(std::string_view account, std::string_view password = "correct horse")
    {
        return post("General/LoginPublisherAccountById",
                    json::serialize(json::object{
                        {"accountId", account}, {"password", password}, {"applicationId", application}}));
    }
    SimulatedAnswer read(std::string_view session)
    {
        return post(readPath, json::serialize(json::object{
                                  {"sessionId", session}, {"minutes", 1440}, {"maxCount", 288}}));
    }
    std::string signIn()
    {
        const auto account = authenticate().response.body;
        const auto session = login(account.substr(1, 36)).response.body;
        return session.substr(1, 36);
    }
};

void expectError(const SimulatedAnswer& answer, std::string_view code, std::string_view message = "",
                 std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "called"};
    EXPECT_EQ(answer.response.status, 500);
    const auto body = json::parse(answer.response.body);
    EXPECT_EQ(body.at("Code").as_string(), code);
    EXPECT_NE(std::string_view{body.at("Message").as_string()}.find(message), std::string_view::npos);
    EXPECT_EQ(body.at("TypeName").as_string(), "FaultException");
    EXPECT_TRUE(body.at("SubCode").is_string());
}

TEST(DexcomShareSimulator, signsInAndServesReadings)
{
    Talk talk;
    const auto session = talk.signIn();
    const auto answer = talk.read(session);
    EXPECT_EQ(answer.response.status, 200);
    EXPECT_EQ(answer.response.header("content-type"), "application/json");
    EXPECT_TRUE(answer.chunked);
    EXPECT_FALSE(answer.gzip);
    EXPECT_GT(json::parse(answer.response.body).as_array().size(), 250U);
    EXPECT_TRUE(talk.post(readPath, "{}", {{"ACCEPT-encoding", "deflate, gzip"}}).response.status == 500);
    EXPECT_TRUE(
        talk.post(readPath + "?sessionId=" + session, "", {{"ACCEPT-encoding", "deflate, gzip"}}).gzip);
    const DexcomShareSimulator::Counters expected{
        .authentications = 1, .logins = 1, .reads = 3, .sessionsOpened = 1, .successfulReads = 2};
    EXPECT_EQ(talk.simulator.counters(), expected);
    ASSERT_EQ(talk.simulator.sessions().size(), 1U);
    EXPECT_EQ(talk.simulator.sessions()[0].reads, 2);
}

TEST(DexcomShareSimulator, refusesSignInsAsTheServiceDoes)
{
    Talk talk{{.applicationId = application}};
    expectError(talk.authenticate("ada@example.org", "wrong"), "AccountPasswordInvalid");
    expectError(talk.authenticate("someone.else"), "AccountPasswordInvalid");
    expectError(talk.authenticate(""), "InvalidArgument", "accountName");
    expectError(talk.authenticate("ada@example.org", ""), "InvalidArgument", "password");
    expectError(talk.authenticate("ada@example.org", "correct horse", "no-uuid"), "InvalidArgument", "UUID");
    expectError(talk.authenticate("ada@example.org", "correct horse", "11111111-2222-4333-8444-000000000000"),
                "InvalidArgument", "applicationId");
    EXPECT_EQ(talk.login("").response.body, nullUuid);
    expectError(talk.login("not-a-uuid"), "InvalidArgument", "UUID");
    expectError(talk.login(application), "AccountPasswordInvalid");
    const auto account = talk.authenticate().response.body.substr(1, 36);
    expectError(talk.login(account, "wrong"), "AccountPasswordInvalid");
    EXPECT_EQ(talk.post("General/LoginPublisherAccountByName", "{}").response.body, nullUuid);
    EXPECT_EQ(talk.post("General/Elsewhere", "{}").response.status, 404);
    EXPECT_EQ(talk.post("General/AuthenticatePublisherAccount", "[1").response.status, 400);
    EXPECT_EQ(talk.post("General/AuthenticatePublisherAccount", R"({"accountName":5})").response.status, 400);
    EXPECT_EQ(talk.simulator.counters().refusedSignIns, 4);

    Talk refusing{{.refusePasswords = true, .lockAfter = 0}};
    for (int i = 0; i < 50; ++i)
        expectError(refusing.authenticate(), "AccountPasswordInvalid");
}

TEST(DexcomShareSimulator, writesEachFormOfErrorObject)
{
    Talk single{{.refusal = RefusalForm::singleSignOn}};
    expectError(single.authenticate("a<b", "x"), "SSO_InternalError",
                "Cannot Authenticate by AccountName='a<b'");
    Talk legacy{{.refusal = RefusalForm::legacy, .xmlSubCode = true}};
    expectError(legacy.authenticate("ada@example.org", "x"), "SSO_AuthenticatePasswordInvalid");
    const auto unknown = legacy.authenticate("x", "x");
    expectError(unknown, "SSO_AuthenticateAccountNotFound", "Simulate SSO");
    const auto xml = json::parse(unknown.response.body).at("SubCode").as_string();
    EXPECT_TRUE(xml.starts_with(R"(<OnlineException DateThrownLocal="2026-03-02T07:53:20.000000000Z")"))
        << xml;
    Talk talk;
    const auto ended = talk.read(application);
    const auto inner = json::parse(json::parse(ended.response.body).at("SubCode").as_string());
    EXPECT_EQ(inner.at("OnlineException").at("Type").as_int64(), 5);
}

TEST(DexcomShareSimulator, takesReadParametersFromBodyAndQuery)
{
    Talk talk;
    const auto session = talk.signIn();
    const auto count = [&](const std::string& query, const std::string& body) {
        const auto answer = talk.post(readPath + query, body);
        return answer.response.status == 200 ? std::ssize(json::parse(answer.response.body).as_array()) : -1;
    };
    EXPECT_EQ(count("", R"({"sessionId":")" + session + R"(","minutes":1440,"maxCount":3})"), 3);
    EXPECT_EQ(count("?sessionId=" + session + "&minutes=1440&maxCount=3", "{}"), 3);
    EXPECT_EQ(count("?sessionID=" + session + "&minutes=1440&maxCount=3", ""), 3);
    EXPECT_EQ(count("?minutes=1440&maxCount=%33", R"({"sessionId":")" + session + R"("})"), 3);
    EXPECT_EQ(count("?sessionId=" + session, ""), 0) << "no numbers count as zero";
    EXPECT_EQ(count("?sessionId=" + session + "&minutes=x", ""), -1);
    EXPECT_EQ(count("?sessionId=%zz", ""), -1);
    EXPECT_EQ(count("", R"({"sessionId":")" + session + R"(","minutes":"1440"})"), -1);
    const HttpRequest get{.url = base + readPath + "?sessionId=" + session + "&minutes=1440&maxCount=2"};
    EXPECT_EQ(talk.simulator.handle(get, start).response.status, 200);
}

TEST(DexcomShareSimulator, sessionsEndByTimeByReadsAndByOrder)
{
    Talk talk;
    auto session = talk.signIn();
    talk.now = start + 24h - 1s;
    EXPECT_EQ(talk.read(session).response.status, 200);
    talk.now = start + 24h;
    expectError(talk.read(session), "SessionNotValid", session);
    expectError(talk.read(application), "SessionIdNotFound", application);
    expectError(talk.read(""), "SessionIdNotFound");
    EXPECT_EQ(talk.read("00000000-0000-0000-0000-000000000000").response.body, "");
    session = talk.signIn();
    const auto second = talk.signIn();
    EXPECT_EQ(talk.read(session).response.status, 200) << "several sessions are open at once";
    talk.simulator.endSessions();
    expectError(talk.read(session), "SessionNotValid");
    talk.simulator.forgetSessions();
    expectError(talk.read(second), "SessionIdNotFound");

    Talk brief{{.sessionReads = 2}};
    session = brief.signIn();
    EXPECT_EQ(brief.read(session).response.status, 200);
    EXPECT_EQ(brief.read(session).response.status, 200);
    expectError(brief.read(session), "SessionNotValid");
}

TEST(DexcomShareSimulator, locksAnAccountAfterRefusedSignInsWithinAWindow)
{
    Talk talk{{.lockAfter = 3, .lockWindow = 60s, .lockDuration = 600s}};
    const auto tryAt = [&talk](double seconds, std::string_view password) {
        talk.now = start + Seconds{seconds};
        return talk.authenticate("ada@example.org", password);
    };
    expectError(tryAt(0, "wrong"), "AccountPasswordInvalid");
    expectError(tryAt(50, "wrong"), "AccountPasswordInvalid");
    expectError(tryAt(61, "wrong"), "AccountPasswordInvalid");
    EXPECT_EQ(tryAt(62, "correct horse").response.status, 200) << "only two of them lie within a minute";
    expectError(tryAt(70, "wrong"), "AccountPasswordInvalid");
    expectError(tryAt(71, "correct horse"), "SSO_AuthenticateMaxAttemptsExceeed");
    expectError(tryAt(669, "correct horse"), "SSO_AuthenticateMaxAttemptsExceeed");
    EXPECT_EQ(talk.authenticate("someone.else", "x").response.body.find("MaxAttempts"), std::string::npos);
    EXPECT_EQ(tryAt(670, "correct horse").response.status, 200);
}

TEST(DexcomShareSimulator, aFaultTakesTheStepsPlaceForAsLongAsItShould)
{
    using Kind = ServiceFault::Kind;
    Talk talk;
    const auto session = talk.signIn();
    const auto readWith = [&](ServiceFault fault) {
        DexcomShareOptions options;
        options.read = std::move(fault);
        talk.simulator.setOptions(options, start);
        return talk.read(session);
    };
    expectError(readWith({.kind = Kind::error, .code = "Whatever"}), "Whatever");
    EXPECT_EQ(readWith({.kind = Kind::nullId}).response.body, nullUuid);
    EXPECT_EQ(readWith({.kind = Kind::emptyBody}).response.body, "");
    const auto page = readWith({.kind = Kind::html, .status = 403, .headers = {{"Retry-After", "30"}}});
    EXPECT_EQ(page.response.status, 403);
    EXPECT_TRUE(page.response.header("Content-Type").starts_with("text/html"));
    EXPECT_EQ(page.response.header("Retry-After"), "30");
    EXPECT_EQ(readWith({.kind = Kind::status, .status = 429}).response.status, 429);
    EXPECT_EQ(readWith({.kind = Kind::body, .status = 200, .body = "[1"}).response.body, "[1");
    const auto cut = readWith({.kind = Kind::transport, .transport = TransportFault::cutOff, .cutAfter = 7});
    EXPECT_EQ(cut.fault, TransportFault::cutOff);
    EXPECT_EQ(cut.cutAfter, 7U);

    const auto first = readWith({.kind = Kind::garbage}).response.body;
    std::vector<std::string> bodies{first};
    for (int i = 0; i < 6; ++i)
        bodies.push_back(talk.read(session).response.body);
    EXPECT_EQ(bodies[6], first) << "goes round";
    EXPECT_NE(bodies[1], first);

    EXPECT_EQ(readWith({.kind = Kind::status, .status = 502, .times = 2}).response.status, 502);
    EXPECT_EQ(talk.read(session).response.status, 502);
    EXPECT_EQ(talk.read(session).response.status, 200);
}

TEST(DexcomShareSimulator, theSameSeedAndRequestsGiveTheSameBytes)
{
    Talk one;
    Talk two;
    EXPECT_EQ(one.signIn(), two.signIn());
    EXPECT_EQ(one.authenticate("x", "y").response.body, two.authenticate("x", "y").response.body);
}

}  // namespace
}  // namespace tidewell
