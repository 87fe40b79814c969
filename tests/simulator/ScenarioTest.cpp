#include "simulator/Scenario.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "simulator/SimulatedServices.h"
#include "support/Json.h"
#include "support/Sha256.h"

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

/// The same of LibreLinkUp: what comes of signing in, when there is no ticket, and of asking for the graph.
struct LibreClient {
    SimulatedServices services;
    std::string base{};
    std::vector<HttpHeader> ticket{};

    explicit LibreClient(Scenario scenario) : services{{.scenario = std::move(scenario)}, start}
    {
        const auto document = json::parse(SimulatedServices::endpointsDocument("http://127.0.0.1:1"));
        base = document.at("libreLinkUp").at("eu2").as_string();
    }

    /// The data of a good answer, or in one or two words what went wrong.
    std::expected<json::value, std::string> ask(std::string_view path, Date now, std::string_view body = "")
    {
        HttpRequest request{.method = body.empty() ? HttpMethod::get : HttpMethod::post,
                            .url = base + std::string{path},
                            .headers = ticket,
                            .body = SecretText{body}};
        request.headers.push_back({"product", "llu.ios"});
        request.headers.push_back({"version", "4.16.0"});
        const auto answer = services.handle(request, now);
        const auto status = std::to_string(answer.response.status);
        if (answer.fault != TransportFault::none)
            return std::unexpected{"fault"};
        boost::system::error_code notJson;
        const auto value = json::parse(answer.response.body, notJson);
        if (notJson || !value.is_object() || !value.get_object().contains("status"))
            return std::unexpected{status};
        const auto& envelope = value.get_object();
        if (envelope.at("status") != 0)
            return std::unexpected{status + ' ' + json::serialize(envelope.at("status"))};
        return envelope.at("data");
    }

    std::string signIn(Date now)
    {
        const auto data =
            ask("/llu/auth/login", now, R"({"email":"ada@example.org","password":"correct horse"})");
        if (!data)
            return data.error();
        if (data->as_object().contains("redirect"))
            return "to " + std::string{data->at("region").as_string()};
        ticket = {{"Account-Id", sha256Hex(data->at("user").at("id").as_string())},
                  {"Authorization", "Bearer " + std::string{data->at("authTicket").at("token").as_string()}}};
        return "good";
    }

    /// "age 20" of the current value, "no value", or what went wrong.
    std::string read(double seconds)
    {
        const Date now = start + Seconds{seconds};
        if (ticket.empty())
            if (auto error = signIn(now); error != "good")
                return error;
        const auto data = ask("/llu/connections/" + LibrePerson{}.patientId + "/graph", now);
        if (!data)
            return data.error();
        const auto current = services.libreLinkUp().readings().current(now);
        EXPECT_EQ(data->at("connection").at("glucoseMeasurement").is_null(), !current);
        return current ? fmt::format("age {}", std::lround((now - current->date).count())) : "no value";
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
        {R"({"fault": {"kind": "html", "retryAfterDate": "x"}})", R"(fault: "retryAfterDate" must be)"},
        {R"({"account": "libre"})", R"("account" must be one of dexcom, libreLinkUp)"},
        {R"({"libreLinkUp": []})", R"("libreLinkUp" must be an object)"},
        {R"({"libreLinkUp": {"read": {}}})", R"(libreLinkUp: "read" is not known here)"},
        {R"({"libreLinkUp": {"service": {"people": 5}}})", R"(libreLinkUp: service: "people" must be)"},
        {R"({"libreLinkUp": {"service": {"redirect": "away"}}})", "one of home, unknown, self, circle"},
        {R"({"libreLinkUp": {"readings": {"currentInterval": 0}}})", R"("currentInterval" must be a number)"},
        {R"({"steps": [{"at": 1, "libreLinkUp": {"readings": {"graphInterval": 1}}}]})",
         R"(Step 1: libreLinkUp: readings: "graphInterval" must be)"},
        {R"({"libreLinkUp": {"fault": {"kind": "error", "code": "x"}}})",
         R"(libreLinkUp: fault: "kind" must not be error or nullId)"},
        {R"({"libreLinkUp": {"fault": {"kind": "nullId"}}})", "must not be error or nullId"},
        {R"({"libreLinkUp": {"fault": {"kind": "hang", "steps": ["read"]}}})",
         R"("steps" may hold login, connections, graph)"},
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

TEST(Scenario, builtInOnesOfLibreLinkUpDoWhatTheirNamesSay)
{
    const std::vector<std::tuple<std::string_view, double, std::string_view>> cases{
        {"libre", 0, "age 20"},
        {"libre", 45, "age 5"},
        {"libre-terms", 119, "200 4"},
        {"libre-terms", 120, "age 20"},
        {"libre-action", 0, "200 4"},
        {"libre-locked", 119, "200 429"},
        {"libre-locked", 120, "age 20"},
        {"libre-version", 0, "403 920"},
        {"libre-wrong-password", 0, "200 2"},
        {"libre-none", 0, "200 4"},
        {"libre-several", 0, "age 20"},
        {"libre-frozen", 600, "age 1440"},
        {"libre-empty", 0, "no value"},
        {"libre-redirects", 0, "to fr"},
        {"libre-redirects", 60, "age 20"},
        {"libre-rough", 0, "age 20"},
        {"steady", 0, "age 20"},
    };
    for (const auto& [name, seconds, expected] : cases) {
        LibreClient client{*Scenario::named(name)};
        std::ignore = client.services.handle({.url = "/"}, start + Seconds{seconds});
        if (name == "libre-none") {
            EXPECT_EQ(client.signIn(start), "good");
            EXPECT_EQ(client.ask("/llu/connections", start), json::array{});
        }
        EXPECT_EQ(client.read(seconds), expected) << name << " at " << seconds;
        EXPECT_EQ(Scenario::named(name)->account == Scenario::Account::libreLinkUp, name != "steady");
    }
    LibreClient removed{*Scenario::named("libre-removed")};
    EXPECT_EQ(removed.read(0), "age 20");
    EXPECT_EQ(removed.read(60), "200 4");
    LibreClient edge{*Scenario::named("libre-edge")};
    EXPECT_EQ(edge.read(0), "age 20");
    for (const auto& [seconds, expected] :
         {std::pair{60, "403"}, {89, "403"}, {90, "429"}, {239, "429"}, {240, "502"}, {389, "502"}})
        EXPECT_EQ(edge.read(seconds), expected) << seconds;
    EXPECT_TRUE(edge.read(390).starts_with("age"));
}

/// A client that polls by its readings and by its backoff, with jitter -1 ... +1: first after 5 s, 70 s past
/// each new value, or, when that is not five seconds ahead, 45 or 75 s later; 30 s after a failure, 60 s
/// after a lock. It signs in when its ticket lasts no longer than half a minute, and once more when it was
/// refused.
struct StoryReader {
    LibreClient client{*Scenario::named("libre-story")};
    std::vector<std::string> seen{};
    double now = 5;

    /// One poll; returns when the next is due.
    double poll(double jitter)
    {
        if (client.services.libreLinkUp().options().ticketLifetime <= Seconds{30})
            client.ticket.clear();
        auto outcome = client.read(now);
        if (outcome == "401") {
            client.ticket.clear();
            outcome = client.read(now);
        }
        const bool good = outcome.starts_with("age ");
        const double age = good ? std::stod(outcome.substr(4)) : 0;
        const bool isNew = good && now - age > newest_;
        const std::string word = good ? isNew ? "new" : "old" : outcome;
        if (seen.empty() || seen.back() != word)
            seen.push_back(word);
        if (good)
            newest_ = now - age;
        if (good && newest_ + 70 - now >= 5)
            return newest_ + 70;
        if (word == "200 429")
            return now + 60;
        return now + (good ? isNew ? 45 + 9 * jitter : 75 + 15 * jitter : 30 + 6 * jitter);
    }

private:
    double newest_ = -1e9;
};

TEST(Scenario, theLibreStoryFollowsAClientThatPollsByItsReadings)
{
    for (const double jitter : {-1.0, 0.0, 1.0}) {
        StoryReader story;
        std::vector<std::string> notes;
        story.client.services.onStep([&](Seconds, std::string_view note) { notes.emplace_back(note); });
        EXPECT_NEAR(story.poll(jitter), 35, 6) << "the terms wait; nothing before the user reconnects";
        for (story.now = 18; story.seen.size() < 11 && story.now < 600;)
            story.now = story.poll(jitter);
        const std::vector<std::string> expected{"200 4", "new",     "old", "503",     "new",  "403",
                                                "new",   "403 920", "new", "200 429", "200 4"};
        EXPECT_EQ(story.seen, expected) << jitter;
        EXPECT_TRUE(story.now > 240 && story.now < 420) << story.now;
        EXPECT_EQ(notes.size(), 10U);
    }
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

TEST(Scenario, readsOfEitherServiceMoveItOnAndItsFaultsAreOfOneServiceOnly)
{
    const auto document = R"({"steps": [
        {"afterReads": 2, "libreLinkUp": {"fault": {"steps": ["graph"], "kind": "status", "status": 502,
                                                    "times": 1}}},
        {"afterReads": 1, "revokeTickets": true},
        {"afterSeconds": 1, "libreLinkUp": {"readings": {"newestAge": 1000, "publishing": false}}}]})";
    LibreClient client{parsed(document)};
    EXPECT_EQ(client.read(0), "age 20");
    EXPECT_EQ(client.read(1), "age 21");
    EXPECT_EQ(client.read(2), "502");
    EXPECT_EQ(client.read(3), "age 23");
    EXPECT_EQ(client.read(3.5), "401");
    EXPECT_EQ(client.signIn(start + 4s), "good");
    EXPECT_EQ(client.read(10), "age 1006");

    Client dexcom{parsed(document)};
    EXPECT_EQ(dexcom.read(0), "age 60");
    EXPECT_EQ(dexcom.read(1), "age 61");
    EXPECT_EQ(dexcom.read(2), "age 62");
    EXPECT_EQ(dexcom.services.libreLinkUp().options().graph.status, 502);
}

TEST(SimulatedServices, aLoggedPathNamesNobody)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"/libre/eu2/llu/connections", "/libre/eu2/llu/connections"},
        {"/libre/eu2/llu/connections/9a7b/graph", "/libre/eu2/llu/connections/…/graph"},
        {"/llu/connections/9a7b", "/llu/connections/…"},
        {"/llu/connections//graph", "/llu/connections/…/graph"},
        {"/us/ShareWebServices/Services/x", "/us/ShareWebServices/Services/x"},
    };
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(SimulatedServices::loggedPath(path), expected);
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
