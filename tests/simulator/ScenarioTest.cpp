#include "simulator/Scenario.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "simulator/SimulatedServices.h"
#include "support/Json.h"

namespace tidewell {
namespace {

const Date start = dateFromUnix(1772438000);

/// A client that signs in and reads, and that says in one word what came of it.
struct Client {
    SimulatedServices services;
    std::string base;
    std::string application;
    std::string session{};

    explicit Client(Scenario scenario, std::string_view region = "us")
        : services{{.scenario = std::move(scenario)}, start}
    {
        const auto document = json::parse(SimulatedServices::endpointsDocument("http://127.0.0.1:1"));
        const auto& entry = document.at("dexcom").at(region);
        base = entry.at("base").as_string();
        application = entry.at("applicationId").as_string();
    }

    std::string post(const std::string& path, const json::object& body, Date now)
    {
        const auto answer = services.handle(
            {.method = HttpMethod::post, .url = base + path, .body = SecretText{json::serialize(body)}}, now);
        if (answer.fault != TransportFault::none)
            return "fault";
        if (answer.response.status == 200)
            return answer.response.body;
        boost::system::error_code notJson;
        const auto value = json::parse(answer.response.body, notJson);
        return notJson ? std::to_string(answer.response.status) : std::string{value.at("Code").as_string()};
    }

    std::string signIn(Date now)
    {
        const json::object who{{"accountName", "ada@example.org"},
                               {"password", "correct horse"},
                               {"applicationId", application}};
        const auto account = post("/General/AuthenticatePublisherAccount", who, now);
        if (!account.starts_with('"'))
            return account;
        const json::object id{{"accountId", account.substr(1, 36)},
                              {"password", "correct horse"},
                              {"applicationId", application}};
        const auto answer = post("/General/LoginPublisherAccountById", id, now);
        session = answer.substr(1, 36);
        return answer.starts_with('"') ? "good" : answer;
    }

    /// "age 60" of the newest reading, "empty", or what went wrong.
    std::string read(double seconds)
    {
        const Date now = start + Seconds{seconds};
        if (session.empty())
            if (const auto error = signIn(now); error != "good")
                return error;
        const auto answer = post("/Publisher/ReadPublisherLatestGlucoseValues",
                                 {{"sessionId", session}, {"minutes", 1440}, {"maxCount", 288}}, now);
        if (answer == "[]")
            return "empty";
        if (!answer.starts_with("[{\"WT\":\"Date("))
            return answer.substr(0, 20);
        const double time = std::stod(answer.substr(13)) / 1000;
        return "age " + std::to_string(std::lround(unixSeconds(now) - time));
    }
};

Scenario parsed(std::string_view document)
{
    auto scenario = Scenario::parse(document);
    EXPECT_TRUE(scenario) << scenario.error();
    return scenario.value_or(Scenario{});
}

TEST(Scenario, saysWhatIsWrongAndWhere)
{
    const std::vector<std::pair<std::string_view, std::string_view>> cases{
        {"", "before the document is complete"},
        {"[]", "must be a JSON object"},
        {R"({"stepps": []})", R"("stepps" is not known here; known are)"},
        {R"({"steps": {}})", R"("steps" must be a list)"},
        {R"({"steps": [5]})", "Step 1: must be an object"},
        {R"({"steps": [{"note": "x"}]})", "Step 1: needs one of"},
        {R"({"steps": [{"at": 1, "afterReads": 1}]})", "Step 1: needs one of"},
        {R"({"steps": [{"at": -1}]})", R"(Step 1: "at" must be a number from 0)"},
        {R"({"steps": [{"at": 5, "until": 5}]})", R"(Step 1: "until" must be later)"},
        {R"({"steps": [{"at": 5}, {"at": 4}]})", R"(Step 2: "at" is earlier)"},
        {R"({"steps": [{"at": 5, "readings": {"age": 5}}]})", R"(Step 1: readings: "age" is not known)"},
        {R"({"readings": {"publishing": 1}})", R"(readings: "publishing" must be true or false)"},
        {R"({"readings": {"gapShare": 1.5}})", R"(readings: "gapShare" must be a number from 0 to 1)"},
        {R"({"readings": {"spacing": 1}})", R"(readings: "spacing" must be 0 or at least 5)"},
        {R"({"readings": {"mgdL": 100.5}})", R"(readings: "mgdL" must be a whole number)"},
        {R"({"service": {"refusal": "polite"}})",
         R"(service: "refusal" must be one of current, singleSignOn, legacy)"},
        {R"({"fault": {"status": 500}})", R"(fault: "kind" is missing)"},
        {R"({"fault": {"kind": "boom"}})", R"(fault: "kind" must be one of none, error)"},
        {R"({"fault": {"kind": "error"}})", R"(fault: "code" is missing)"},
        {R"({"fault": {"kind": "hang", "steps": ["reed"]}})", R"(fault: "steps" may hold)"},
        {R"({"fault": {"kind": "html", "headers": {"a": 1}}})", R"(fault: "headers" must be)"},
    };
    for (const auto& [document, part] : cases) {
        const auto scenario = Scenario::parse(document);
        ASSERT_FALSE(scenario) << document;
        EXPECT_NE(scenario.error().find(part), std::string::npos) << scenario.error();
        EXPECT_EQ(scenario.error().find('\n'), std::string::npos);
    }
    EXPECT_NE(Scenario::named("stedy").error().find("steady, story, stale"), std::string::npos);
}

TEST(Scenario, builtInOnesDoWhatTheirNamesSay)
{
    const std::vector<std::tuple<std::string_view, double, std::string_view>> cases{
        {"steady", 0, "age 60"},
        {"stale", 0, "age 880"},
        {"stale", 20, "age 900"},
        {"expired", 10, "age 3600"},
        {"no-readings", 0, "empty"},
        {"wrong-password", 0, "AccountPasswordInvalid"},
        {"locked-out", 0, "SSO_AuthenticateMaxAttemptsExceeed"},
        {"slow", 0, "fault"},
        {"endless", 0, "fault"},
        {"garbage", 0, "Something is wrong h"},
        {"recovery", 59, "503"},
        {"recovery", 60, "age 120"},
    };
    for (const auto& [name, seconds, expected] : cases)
        EXPECT_EQ(Client{*Scenario::named(name)}.read(seconds), expected) << name;
    for (const auto& scenario : Scenario::builtIn())
        EXPECT_TRUE(Scenario::named(scenario.name)) << Scenario::named(scenario.name).error();

    Client expiring{*Scenario::named("session-expiry")};
    EXPECT_EQ(expiring.read(0), "age 60");
    EXPECT_EQ(expiring.read(1), "SessionNotValid");
    Client down{*Scenario::named("outage")};
    EXPECT_EQ(down.read(0), "age 400");
    EXPECT_EQ(down.read(89), "500");
    EXPECT_EQ(down.read(91), "fault");
}

TEST(Scenario, theStoryFollowsAClientThatPollsByItsReadings)
{
    Client client{*Scenario::named("story")};
    std::vector<std::string> notes;
    client.services.onStep([&](Seconds, std::string_view note) { notes.emplace_back(note); });
    EXPECT_EQ(client.read(5), "age 3575");
    EXPECT_EQ(client.read(55), "age 880");
    EXPECT_EQ(client.read(100), "age 315");
    const auto next = client.read(115);
    EXPECT_TRUE(next >= "age 305" && next <= "age 320") << next;
    EXPECT_EQ(client.read(131), "503");
    const auto back = client.read(160);
    EXPECT_TRUE(back >= "age 305" && back <= "age 320") << back;
    EXPECT_EQ(client.read(180), "SessionNotValid");
    EXPECT_EQ(client.signIn(start + 180s), "good");
    EXPECT_TRUE(client.read(180).starts_with("age 3"));
    EXPECT_EQ(client.read(195), "SessionNotValid");
    EXPECT_EQ(client.signIn(start + 195s), "AccountPasswordInvalid");
    EXPECT_EQ(notes.size(), 6U);
}

TEST(Scenario, stepsBeginAndEndAtTheirOwnMoments)
{
    Client client{parsed(R"({"readings": {"spacing": 300, "publicationDelay": 0}, "steps": [
        {"at": 10, "until": 30, "fault": {"kind": "html", "status": 502}},
        {"at": 20, "until": 25, "fault": {"kind": "html", "status": 503}},
        {"at": 40, "fault": {"kind": "html", "status": 504, "times": 1}},
        {"afterSeconds": 5, "note": "out of reach", "readings": {"publishing": false}},
        {"at": 1000, "readings": {"publishing": true, "newestAge": 100}}]})")};
    EXPECT_EQ(client.read(9), "age 69");
    EXPECT_EQ(client.read(10), "502");
    EXPECT_EQ(client.read(22), "503");
    EXPECT_EQ(client.read(26), "502");
    EXPECT_EQ(client.read(30), "age 90");
    EXPECT_EQ(client.read(42), "504");
    EXPECT_EQ(client.read(44), "age 104");
    EXPECT_EQ(client.read(46), "age 106") << "a later step does not bring back a fault that is used up";
    EXPECT_EQ(client.read(999), "age 1059");
    EXPECT_EQ(client.read(1010), "age 110") << "the reading is as old as it should be when the step begins";
    // A long sleep: every step has passed at its own time.
    EXPECT_EQ(
        Client{parsed(R"({"steps": [{"at": 10, "readings": {"publishing": false, "newestAge": 20}}]})")}.read(
            500),
        "age 510");
}

TEST(SimulatedServices, regionsHaveSeparateAccounts)
{
    EXPECT_EQ(Client(parsed("{}"), "ous").read(0), "AccountPasswordInvalid");
    EXPECT_EQ(Client(parsed("{}"), "jp").read(0), "AccountPasswordInvalid");
    Client us{parsed("{}")};
    EXPECT_EQ(us.read(0), "age 60");
    us.base = "http://127.0.0.1:1/mars/ShareWebServices/Services";
    EXPECT_EQ(
        us.services.handle({.url = us.base + "/General/AuthenticatePublisherAccount"}, start).response.status,
        404);
}

}  // namespace
}  // namespace tidewell
