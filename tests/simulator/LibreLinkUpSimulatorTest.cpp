#include "simulator/LibreLinkUpSimulator.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <set>

#include "support/Json.h"
#include "support/Sha256.h"

namespace tidewell {
namespace {

const Date start = dateFromUnix(1772438113);
const std::string grace = LibrePerson{}.patientId;

/// A client's side of the conversation, which sends everything that it should.
struct Talk {
    LibreLinkUpSimulator simulator;
    Date now = start;
    std::string region = "eu2";
    std::map<std::string, std::string> headers{{"Version", "4.16.0"}, {"PRODUCT", "llu.ios"}};

    explicit Talk(LibreLinkUpOptions options = {}, std::uint64_t seed = 1)
        : simulator{std::move(options), start, seed}
    {
    }

    SimulatedAnswer send(HttpMethod method, const std::string& path, std::string_view body = "")
    {
        HttpRequest request{.method = method,
                            .url = "https://service.example/libre/" + region + "/llu/" + path,
                            .body = SecretText{body}};
        for (const auto& [name, value] : headers)
            request.headers.push_back({name, value});
        return simulator.handle(request, now);
    }
    SimulatedAnswer login(std::string_view password = "correct horse",
                          std::string_view email = "ada@example.org")
    {
        return send(HttpMethod::post, "auth/login",
                    json::serialize(json::object{{"email", email}, {"password", password}}));
    }
    SimulatedAnswer connections() { return send(HttpMethod::get, "connections"); }
    SimulatedAnswer graph(const std::string& id = grace)
    {
        return send(HttpMethod::get, "connections/" + id + "/graph");
    }
    /// Signs in and sends what came of it from now on.
    void signIn()
    {
        const auto data = json::parse(login().response.body).at("data");
        headers["Authorization"] = "Bearer " + std::string{data.at("authTicket").at("token").as_string()};
        headers["Account-Id"] = sha256Hex(data.at("user").at("id").as_string());
    }
    void set(LibreLinkUpOptions options) { simulator.setOptions(std::move(options), now); }
};

/// "200 good" for an envelope status of 0, else the status and the body, without random parts.
std::string outcome(const SimulatedAnswer& answer)
{
    const auto& body = answer.response.body;
    return std::to_string(answer.response.status) + ' ' +
           (body.starts_with(R"({"status":0,"data":)") && body.find("redirect") == std::string::npos ? "good"
                                                                                                     : body);
}

const std::string jwtRefused = R"(401 {"message":"invalid or expired jwt"})";
const std::string headerMissing = R"(400 {"message":"RequiredHeaderMissing"})";
const std::string tooOld = R"(403 {"data":{"minimumVersion":"4.16.0"},"status":920})";
const std::string wrongPassword = R"(200 {"status":2,"error":{"message":"notAuthenticated"}})";
const std::string lockedOut =
    R"(200 {"status":429,"data":{"code":60,"data":{"failures":3,"interval":60,"lockout":300},"message":"locked"}})";
const std::string notShared = R"(200 {"status":4,"error":{"message":"couldNotLoadPatient"}})";

std::string names(const json::value& object)
{
    std::string all;
    for (const auto& [name, value] : object.as_object())
        all += (all.empty() ? "" : " ") + std::string{name};
    return all;
}

TEST(LibreLinkUpSimulator, signsInListsPeopleAndServesTheGraph)
{
    Talk talk;
    const auto data = json::parse(talk.login().response.body).at("data");
    EXPECT_EQ(names(data), "user messages notifications authTicket invitations trustedDeviceToken");
    EXPECT_EQ(data.at("user").at("id").as_string(), "5d2c7a10-91f4-4c3b-8e6d-0f1b2a3c4d5e");
    EXPECT_EQ(data.at("user").at("uom").as_string(), "1");
    EXPECT_EQ(names(data.at("authTicket")), "token expires duration");
    EXPECT_EQ(data.at("authTicket").at("expires").as_int64(), 1787990113);
    EXPECT_EQ(data.at("authTicket").at("duration").as_int64(), 15552000000);
    talk.signIn();
    EXPECT_EQ(talk.headers["Account-Id"], "06d8ace5d51c4f78e2c36866d01f95f0416b8de567814096baf4a4d56c84c0b5");

    const auto list = json::parse(talk.connections().response.body);
    EXPECT_EQ(names(list), "status data ticket");
    const auto person = list.at("data").at(0);
    EXPECT_EQ(names(person),
              "id patientId country status firstName lastName targetLow targetHigh uom sensor alarmRules "
              "glucoseMeasurement glucoseItem glucoseAlarm patientDevice created");
    EXPECT_EQ(person.at("glucoseMeasurement"), person.at("glucoseItem"));
    const auto graph = json::parse(talk.graph().response.body).at("data");
    EXPECT_EQ(names(graph), "connection activeSensors graphData");
    EXPECT_EQ(graph.at("connection"), person);
    EXPECT_EQ(graph.at("activeSensors").as_array().size(), 1U);
    EXPECT_EQ(json::serialize(graph.at("graphData")), talk.simulator.readings().graphText(start));
    EXPECT_EQ(outcome(talk.graph("9A7B6C5D-1111-4222-8333-444455556666")), notShared) << "ids are exact";
    EXPECT_EQ(outcome(talk.graph("9a7b6c5d%2D1111-4222-8333-444455556666")), "200 good");

    const LibreLinkUpSimulator::Counters expected{
        .logins = 2, .connections = 1, .graphs = 3, .tickets = 2, .successfulReads = 2};
    EXPECT_EQ(talk.simulator.counters(), expected);
    EXPECT_FALSE(talk.graph().gzip);
    talk.headers["accept-encoding"] = "br, gzip";
    EXPECT_TRUE(talk.graph().gzip);
}

TEST(LibreLinkUpSimulator, aSignInElsewhereIsSentHomeOrAstray)
{
    const auto to = [](std::string_view region) {
        return fmt::format(R"(200 {{"status":0,"data":{{"redirect":true,"region":"{}"}}}})", region);
    };
    using enum LibreRedirect;
    const std::vector<std::tuple<LibreRedirect, std::string, std::string>> cases{
        {home, "eu", to("eu2")},     {home, "us", to("eu2")},      {home, "global", to("eu2")},
        {home, "eu2", "200 good"},   {unknown, "eu", to("zz9")},   {unknown, "eu2", "200 good"},
        {self, "de", to("de")},      {self, "eu2", "200 good"},    {circle, "eu2", to("fr")},
        {circle, "us", to("ae")},    {circle, "global", to("ae")}, {refused, "ap", R"(200 {"status":911})"},
        {refused, "eu2", "200 good"}};
    for (const auto& [redirect, region, expected] : cases) {
        Talk talk{{.redirect = redirect}};
        talk.region = region;
        EXPECT_EQ(outcome(talk.login()), expected) << region;
    }
    Talk talk;
    for (const auto region : LibreLinkUpSimulator::regions) {
        talk.region = region;
        EXPECT_EQ(talk.login().response.status, 200);
    }
    for (const auto* region : {"eu3", "", "EU", "zz9"}) {
        talk.region = region;
        EXPECT_EQ(talk.login().response.status, 404) << region;
    }
    talk.region = "eu2";
    talk.signIn();
    talk.region = "eu";
    EXPECT_EQ(outcome(talk.graph()), jwtRefused) << "a ticket is good in its region";
}

TEST(LibreLinkUpSimulator, pendingStepsGiveATicketThatIsGoodForNothing)
{
    const std::vector<std::pair<std::string, std::string_view>> cases{
        {"tou", R"({"type":"tou","componentName":"AcceptDocument","props":{"reaccept":true,)"
                R"("titleKey":"Common.termsOfUse","type":"tou"}})"},
        {"pp", R"({"type":"pp","componentName":"AcceptDocument","props":{"reaccept":true,)"
               R"("titleKey":"Common.privacyPolicy","type":"pp"}})"},
        {"verifyEmail",
         R"({"type":"verifyEmail","componentName":"VerifyEmail","props":{"email":"ada@example.org"}})"},
        {"realName", R"({"type":"realName","componentName":"RealName","props":{}})"},
        {"-", R"({"componentName":"AcceptDocument","props":{}})"},
    };
    for (const auto& [step, expected] : cases) {
        Talk talk{{.pendingStep = step}};
        const auto answer = json::parse(talk.login().response.body);
        EXPECT_EQ(answer.at("status").as_int64(), 4);
        const auto& data = answer.at("data");
        EXPECT_EQ(names(data), "step user authTicket");
        EXPECT_EQ(json::serialize(data.at("step")), expected);
        EXPECT_EQ(names(data.at("user")), "accountType country uiLanguage") << "no id";
        EXPECT_EQ(data.at("authTicket").at("duration").as_int64(), 3'600'000);
        talk.headers["Authorization"] =
            "Bearer " + std::string{data.at("authTicket").at("token").as_string()};
        EXPECT_EQ(outcome(talk.connections()), jwtRefused);
        talk.headers["Account-Id"] = sha256Hex(LibreAccount{}.userId);
        EXPECT_EQ(outcome(talk.graph()), jwtRefused);
        EXPECT_EQ(talk.simulator.counters().tickets, 0);
        EXPECT_EQ(outcome(talk.login("wrong")), wrongPassword);
    }
}

TEST(LibreLinkUpSimulator, locksAnAccountAfterRefusedSignInsWithinAWindow)
{
    Talk talk;
    const auto tryAt = [&talk](double seconds, std::string_view password) {
        talk.now = start + Seconds{seconds};
        return outcome(talk.login(password));
    };
    EXPECT_EQ(tryAt(0, "wrong"), wrongPassword);
    EXPECT_EQ(tryAt(50, "wrong"), wrongPassword);
    EXPECT_EQ(tryAt(61, "wrong"), wrongPassword);
    EXPECT_EQ(tryAt(62, "correct horse"), "200 good") << "only two of them lie within a minute";
    for (const double at : {70.0, 71.0, 72.0})
        EXPECT_EQ(tryAt(at, "wrong"), wrongPassword);
    EXPECT_EQ(tryAt(73, "correct horse"), lockedOut);
    EXPECT_EQ(tryAt(371, "correct horse"), lockedOut);
    EXPECT_EQ(outcome(talk.login("x", "someone@else.example")), wrongPassword);
    EXPECT_EQ(tryAt(372, "correct horse"), "200 good");
    EXPECT_EQ(talk.simulator.counters().refusedSignIns, 9);

    talk.set({.locked = true});
    EXPECT_EQ(tryAt(400, "correct horse"), lockedOut);
    talk.set({.refusePasswords = true, .lockAfter = 0});
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(tryAt(401, "correct horse"), wrongPassword);
}

TEST(LibreLinkUpSimulator, refusesRequestsThatLackSomethingAndOnlyThose)
{
    const auto with = [](LibreLinkUpOptions options, const std::string& name,
                         const std::optional<std::string>& value) {
        Talk talk{std::move(options)};
        talk.signIn();
        if (value)
            talk.headers[name] = *value;
        else
            talk.headers.erase(name);
        const auto graph = outcome(talk.graph());
        EXPECT_EQ(outcome(talk.connections()), graph);
        return graph;
    };
    const auto hash = sha256Hex(LibreAccount{}.userId);
    using Value = std::optional<std::string>;
    const std::vector<std::tuple<LibreLinkUpOptions, std::string, Value, std::string>> cases{
        {{}, "Version", "4.16.0", "200 good"},
        {{}, "Version", "4.16", tooOld},
        {{}, "Version", "4.9.99", tooOld},
        {{}, "Version", "5", "200 good"},
        {{}, "Version", "4.17.0", "200 good"},
        {{}, "Version", "latest", tooOld},
        {{}, "Version", "99999999999.0", tooOld},
        {{}, "Version", std::nullopt, tooOld},
        {{.minimumVersion = ""}, "Version", std::nullopt, "200 good"},
        {{}, "PRODUCT", std::nullopt, headerMissing},
        {{}, "PRODUCT", "llu.windows", headerMissing},
        {{}, "PRODUCT", "llu.android", "200 good"},
        {{.requireProduct = false}, "PRODUCT", std::nullopt, "200 good"},
        {{}, "Account-Id", std::nullopt, headerMissing},
        {{}, "Account-Id", "", jwtRefused},
        {{}, "Account-Id", sha256Hex("someone else"), jwtRefused},
        {{.requireAccountId = false}, "Account-Id", std::nullopt, "200 good"},
        {{}, "Authorization", std::nullopt, jwtRefused},
        {{}, "Authorization", "Bearer x", jwtRefused},
        {{}, "Authorization", "Bearer a.b.c", jwtRefused},
        {{}, "Authorization", "Bearer " + std::string(10'000, '.'), jwtRefused},
        {{.refuseTickets = true}, "Account-Id", hash, jwtRefused},
        {{.ticketLifetime = 0s}, "Account-Id", hash, jwtRefused},
    };
    for (const auto& [options, name, value, expected] : cases)
        EXPECT_EQ(with(options, name, value), expected) << name << ": " << value.value_or("(absent)");

    Talk talk;
    talk.headers["Version"] = "1.0";
    EXPECT_EQ(outcome(talk.login()), "200 good") << "an old version may sign in";
    talk.headers.erase("PRODUCT");
    EXPECT_EQ(outcome(talk.login()), headerMissing);
}

TEST(LibreLinkUpSimulator, ticketsEndByTimeByOrderAndWhenTheyWereChanged)
{
    Talk talk{{.ticketLifetime = 100s}};
    talk.signIn();
    talk.now = start + 99s;
    EXPECT_EQ(outcome(talk.graph()), "200 good");
    const auto refreshed = json::parse(talk.graph().response.body).at("ticket");
    EXPECT_EQ(refreshed.at("expires").as_int64(), 1772438113 + 199);
    talk.now = start + 100s;
    EXPECT_EQ(outcome(talk.graph()), jwtRefused);
    talk.headers["Authorization"] = "Bearer " + std::string{refreshed.at("token").as_string()};
    EXPECT_EQ(outcome(talk.graph()), "200 good") << "the refreshed one goes on";
    talk.simulator.revokeTickets();
    EXPECT_EQ(outcome(talk.graph()), jwtRefused);
    talk.signIn();
    EXPECT_EQ(outcome(talk.graph()), "200 good");
    const auto token = talk.headers["Authorization"];
    for (std::size_t i = 7; i < token.size(); i += 13) {
        talk.headers["Authorization"][i] ^= 1;
        EXPECT_EQ(outcome(talk.graph()), jwtRefused) << i;
        talk.headers["Authorization"] = token;
    }
}

TEST(LibreLinkUpSimulator, showsWhoSharesAndNobodyElse)
{
    LibreLinkUpOptions options;
    auto& people = options.accounts.front().people;
    people.push_back({.patientId = "11111111-2222-4333-8444-555555555555",
                      .firstName = "Zoë \"Z\"",
                      .traceOffset = -86400,
                      .activeSensor = false});
    people.push_back({.patientId = "66666666-2222-4333-8444-555555555555", .measurement = false});
    Talk talk{options};
    talk.signIn();
    std::set<std::string> orders;
    std::map<std::string, json::value> seen;
    for (int i = 0; i < 6; ++i) {
        std::string order;
        const auto answer = json::parse(talk.connections().response.body);
        for (const auto& person : answer.at("data").as_array()) {
            order += person.at("patientId").as_string().front();
            seen[std::string{person.at("patientId").as_string()}] = person;
        }
        orders.insert(order);
    }
    EXPECT_EQ(orders, (std::set<std::string>{"916", "169", "691"}));
    const auto& without = seen[people[1].patientId];
    EXPECT_EQ(without.at("firstName").as_string(), "Zoë \"Z\"");
    EXPECT_TRUE(without.at("sensor").is_null());
    EXPECT_TRUE(without.at("glucoseMeasurement").at("FactoryTimestamp").as_string().starts_with("11/25/2025"))
        << "months old, and still shown";
    EXPECT_TRUE(seen[people[2].patientId].at("glucoseMeasurement").is_null());
    EXPECT_NE(talk.graph(people[2].patientId).response.body.find(R"("graphData":[])"), std::string::npos);
    EXPECT_NE(talk.graph(people[1].patientId).response.body.find(R"("activeSensors":[],"graphData":[])"),
              std::string::npos);

    options.removed = true;
    talk.set(options);
    EXPECT_EQ(outcome(talk.graph()), notShared);
    EXPECT_EQ(json::parse(talk.connections().response.body).at("data").as_array().size(), 2U);
    options.accounts.front().people.clear();
    talk.set(options);
    EXPECT_TRUE(talk.connections().response.body.starts_with(R"({"status":0,"data":[],"ticket":{)"));
    EXPECT_EQ(outcome(talk.graph("no-uuid")), R"(200 {"status":4,"error":{"message":"MissingCachedUser"}})");
    talk.set({.readings = {.missingGraph = true}});
    EXPECT_NE(talk.graph().response.body.find(R"("activeSensors":[{)"), std::string::npos);
    EXPECT_EQ(talk.graph().response.body.find("graphData"), std::string::npos);
}

TEST(LibreLinkUpSimulator, aFaultTakesTheCallsPlaceForAsLongAsItShould)
{
    using Kind = ServiceFault::Kind;
    Talk talk;
    talk.signIn();
    const auto with = [&talk](const ServiceFault& fault) {
        talk.set({.graph = fault});
        EXPECT_EQ(outcome(talk.connections()), "200 good");
        return talk.graph();
    };
    const std::vector<std::tuple<ServiceFault, std::string_view, std::string_view>> cases{
        {{.kind = Kind::html, .status = 403}, "text/html", "403 <!DOCTYPE html>"},
        {{.kind = Kind::html, .status = 429}, "text/html", "429 <!DOCTYPE html>"},
        {{.kind = Kind::html, .status = 503}, "text/html", "503 <!DOCTYPE html>"},
        {{.kind = Kind::status, .status = 430}, "application/json", "430 {}"},
        {{.kind = Kind::body, .status = 426, .body = "x"}, "application/json", "426 x"},
        {{.kind = Kind::emptyBody}, "application/json", "200 "},
    };
    for (const auto& [fault, type, expected] : cases) {
        const auto answer = with(fault);
        EXPECT_TRUE(answer.response.header("Content-Type").starts_with(type));
        EXPECT_TRUE(outcome(answer).starts_with(expected)) << outcome(answer);
    }
    EXPECT_NE(with({.kind = Kind::html, .status = 403}).response.body.find("you have been blocked"),
              std::string::npos);
    const std::vector<std::pair<ServiceFault, std::string_view>> waits{
        {{.headers = {{"Retry-After", "30"}}}, "30"},
        {{.headers = {{"Retry-After", "soon"}}}, "soon"},
        {{.retryAfterDate = 90s}, "Mon, 02 Mar 2026 07:56:43 GMT"},
        {{.retryAfterDate = -3600s}, "Mon, 02 Mar 2026 06:55:13 GMT"},
        {{}, ""},
    };
    for (auto [fault, expected] : waits) {
        fault.kind = Kind::html;
        fault.status = 429;
        EXPECT_EQ(with(fault).response.header("Retry-After"), expected);
    }
    EXPECT_EQ(with({.kind = Kind::transport, .transport = TransportFault::hang}).fault, TransportFault::hang);
    EXPECT_EQ(with({.kind = Kind::status, .status = 502, .times = 1}).response.status, 502);
    EXPECT_EQ(outcome(talk.graph()), "200 good");

    std::set<std::string> garbage;
    talk.set({.graph = {.kind = Kind::garbage}});
    for (int i = 0; i < 12; ++i)
        garbage.insert(talk.graph().response.body);
    EXPECT_EQ(garbage.size(), 6U);
}

TEST(LibreLinkUpSimulator, survivesWhateverItIsAsked)
{
    Talk talk;
    talk.signIn();
    const std::vector<std::string> paths{"",
                                         "auth",
                                         "auth/login/",
                                         "connections/",
                                         "connections/graph",
                                         "connections//graph",
                                         "connections/%/graph",
                                         "connections/%zz/graph",
                                         "connections/..%2f../graph",
                                         "connections/" + std::string(10'000, 'x') + "/graph",
                                         "connections/llu/llu/graph",
                                         "config/country"};
    for (const auto& path : paths)
        for (const auto method : {HttpMethod::get, HttpMethod::post}) {
            const auto status = talk.send(method, path, "{}").response.status;
            EXPECT_TRUE(status == 404 || status == 405 || status == 200) << path << ": " << status;
        }
    EXPECT_EQ(talk.send(HttpMethod::get, "auth/login").response.status, 405);
    EXPECT_EQ(talk.send(HttpMethod::post, "connections").response.status, 405);
    const std::vector<std::string> bodies{"",
                                          "[]",
                                          "{}",
                                          "null",
                                          R"({"email":5,"password":"x"})",
                                          R"({"email":"ada@example.org"})",
                                          R"({"email":"a","email":"b","password":"x"})",
                                          std::string(70'000, '['),
                                          "\xff\xfe"};
    for (const auto& body : bodies)
        EXPECT_EQ(talk.send(HttpMethod::post, "auth/login", body).response.status, 400) << body.substr(0, 40);
    EXPECT_EQ(outcome(talk.login("", "")), wrongPassword);
    const HttpRequest bare{.url = "/llu/connections"};
    EXPECT_EQ(talk.simulator.handle(bare, start).response.status, 404);
    // A clock that jumps.
    for (const double at : {-1e9, 4e9, 0.0}) {
        talk.now = start + Seconds{at};
        talk.signIn();
        EXPECT_EQ(outcome(talk.graph()), "200 good") << at;
    }
}

TEST(LibreLinkUpSimulator, theSameSeedAndRequestsGiveTheSameBytes)
{
    const auto bytes = [](std::uint64_t seed) {
        Talk talk{{}, seed};
        talk.signIn();
        std::string all = talk.login().response.body;
        for (const auto& answer : {talk.connections(), talk.graph()}) {
            all += answer.response.body;
            all += answer.response.header("x-request-id");
        }
        return all;
    };
    EXPECT_EQ(bytes(1), bytes(1));
    EXPECT_NE(bytes(1), bytes(2));
}

}  // namespace
}  // namespace tidewell
