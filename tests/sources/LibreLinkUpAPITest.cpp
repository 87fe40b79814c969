#include "sources/LibreLinkUpAPI.h"

#include <source_location>

#include "sources/ClientFixture.h"
#include "sources/LibreBodies.h"
#include "testing/Texts.h"

namespace tidewell {
namespace {

using Kind = LibreLinkUpError::Kind;
using People = std::expected<LibreConnections, GlucoseAPIError>;

constexpr std::string_view usBase = "https://api-us.libreview.io/llu/";
constexpr std::string_view listBody =
    R"({"status":0,"data":[{"patientId":"p2","firstName":"Grace","lastName":"Muster"},)"
    R"({"patientId":"p1","firstName":"Ada","lastName":""}]})";

/// The call of a URL: s(ign-in), c(onnections), g(raph).
char callOf(const HttpRequest& request)
{
    if (request.url.ends_with("/llu/auth/login"))
        return 's';
    if (request.url.ends_with("/llu/connections"))
        return 'c';
    return request.url.ends_with("/graph") ? 'g' : '?';
}

class LibreLinkUpAPITest : public ClientFixture<LibreLinkUpAPI> {
protected:
    LibreLinkUpAPITest() : ClientFixture{"LibreLinkUpAPI"} { account_.patientID = librePatient; }

    std::string takeCalls() { return takeSteps(callOf); }
    /// Like takeCalls, but the regions of the sign-ins.
    std::string takeRegions()
    {
        std::string regions;
        for (const HttpRequest& request : http_.requests()) {
            EXPECT_EQ(request.body.reveal().empty(), callOf(request) != 's')
                << "every region gets the sign-in";
            const std::string_view host = std::string_view{request.url}.substr(12);  // "https://api-"
            regions += std::string{host.substr(0, host.find('.'))} + " ";
        }
        http_.forgetRequests();
        return regions;
    }
    void answerAll(std::initializer_list<std::string> bodies)
    {
        for (const std::string& body : bodies)
            http_.answer(200, body);
    }
    template <class Result>
    void expectFailure(const Result& result, const LibreLinkUpError& error,
                       std::source_location at = std::source_location::current())
    {
        const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "called"};
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), glucoseAPIError(error)) << result.error().text;
    }
    People list(LibreLinkUpAPI& api) { return ended(api.listConnections()); }
    auto signInAgain(LibreLinkUpAPI& api) { return ended(api.signInAgain()); }
    static std::string lastToken(const HttpRequest& request)
    {
        const auto found = std::ranges::find(request.headers, "Authorization", &HttpHeader::name);
        return found == request.headers.end() ? "" : found->value;
    }
};

TEST_F(LibreLinkUpAPITest, signsInOnceAndReadsWithTheSameTicket)
{
    const auto api = client();
    answerAll({libreLogin(), libreGraph()});
    const Readings readings = fetch(*api);
    ASSERT_TRUE(readings);
    const GlucoseProvider libre = GlucoseProvider::libreLinkUp;
    EXPECT_EQ(*readings, (std::vector{
                             makeReading(131, "NotComputable", dateFromUnix(1'772'436'902), 300s, libre),
                             makeReading(118, "FortyFiveUp", dateFromUnix(1'772'438'353), 60s, libre),
                         }));

    std::vector<HttpHeader> headers{
        {"Content-Type", "application/json;charset=UTF-8"},
        {"Accept", "application/json"},
        {"version", "4.16.0"},
        {"product", "llu.ios"},
        {"User-Agent",
         "Mozilla/5.0 (iPhone; CPU OS 17_4.1 like Mac OS X) AppleWebKit/536.26 (KHTML, like Gecko) "
         "Version/17.4.1 Mobile/10A5355d Safari/8536.25"}};
    ASSERT_EQ(http_.requests().size(), 2U);
    const HttpRequest& login = http_.requests()[0];
    EXPECT_EQ(login.method, HttpMethod::post);
    EXPECT_EQ(login.url, std::string{usBase} + "auth/login");
    EXPECT_EQ(login.body.reveal(), R"({"email":"ada@example.org","password":"correct horse"})");
    EXPECT_EQ(login.headers, headers);
    const HttpRequest& graph = http_.requests()[1];
    EXPECT_EQ(graph.method, HttpMethod::get);
    EXPECT_EQ(graph.url, fmt::format("{}connections/{}/graph", usBase, librePatient));
    EXPECT_TRUE(graph.body.empty());
    headers.push_back({"Authorization", fmt::format("Bearer {}", libreToken)});
    headers.push_back({"Account-Id", std::string{libreUserHash}});
    EXPECT_EQ(graph.headers, headers);
    for (const HttpRequest& request : http_.requests()) {
        EXPECT_EQ(request.timeout, Seconds{60});
        ASSERT_TRUE(request.redirectDelegate);
    }
    constexpr const char* loginLine =
        "Login request: POST https://api-us.libreview.io/llu/auth/login "
        R"(body={"email":"<redacted>","password":"<redacted>"})";
    EXPECT_EQ(log_, (std::vector<std::string>{
                        "No active session; signing in (region=us)",
                        loginLine,
                        fmt::format("Login status=200 bytes={}", libreLogin().size()),
                        "Got authTicket=<redacted>",
                        "Graph request: GET https://api-us.libreview.io/llu/connections/<redacted>/graph",
                        fmt::format("Graph status=200 bytes={}", libreGraph().size()),
                    }));

    takeCalls();
    http_.answer(200, libreGraph());
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(lastToken(http_.requests().back()), fmt::format("Bearer {}", libreToken))
        << "not the refreshed ticket of the last answer";
    EXPECT_EQ(takeCalls(), "g");
}

TEST_F(LibreLinkUpAPITest, whatTheEndpointsSayIsSent)
{
    endpoints_ =
        ServiceEndpoints::parse(
            R"({"libreLinkUp":{"us":"http://127.0.0.1:8081/libre/us/","lab":"https://lab.example.org"},
                         "libreLinkUpClient":{"version":"4.17.0","product":"llu.android","userAgent":"B/1"}})")
            .value();
    account_.region = "US";
    const auto api = client();
    answerAll({libreRedirect("Lab"), libreLogin(), libreGraph()});
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(http_.requests()[0].url, "http://127.0.0.1:8081/libre/us/llu/auth/login");
    EXPECT_EQ(http_.requests()[1].url, "https://lab.example.org/llu/auth/login");
    for (const HttpRequest& request : http_.requests()) {
        EXPECT_EQ(request.headers[2].value, "4.17.0");
        EXPECT_EQ(request.headers[3].value, "llu.android");
        EXPECT_EQ(request.headers[4].value, "B/1");
    }
}

TEST_F(LibreLinkUpAPITest, anAccountThatCannotSignInSendsNothing)
{
    for (const char* region : {"", "uk", "us "}) {
        account_.region = region;
        expectFailure(fetch(*client()), {Kind::invalidRegion});
        expectFailure(list(*client()), {Kind::invalidRegion});
    }
    account_.region = "us";
    account_.password = SecretText{};
    expectFailure(fetch(*client()), {Kind::authenticationFailed});
    account_.password = SecretText{"x"};
    account_.username = "";
    expectFailure(signInAgain(*client()), {Kind::authenticationFailed});
    EXPECT_EQ(takeCalls(), "");
}

TEST_F(LibreLinkUpAPITest, aTicketIsUsedUntilThirtySecondsBeforeItsEnd)
{
    const std::pair<double, const char*> cases[]{{31, "sgg"}, {30.5, "sgg"},  {30, "sgsg"},  {29, "sgsg"},
                                                 {0, "sgsg"}, {-1e9, "sgsg"}, {1e300, "sgg"}};
    for (const auto& [seconds, calls] : cases) {
        SCOPED_TRACE(seconds);
        const std::string login =
            libreLogin(libreToken, fmt::format("{:.17g}", unixSeconds(clock_.now()) + seconds));
        const auto api = client();
        answerAll({login, libreGraph()});
        EXPECT_TRUE(fetch(*api)) << "a new ticket is used for its call";
        if (std::string_view{calls} == "sgsg")
            http_.answer(200, login);
        http_.answer(200, libreGraph());
        EXPECT_TRUE(fetch(*api));
        EXPECT_EQ(takeCalls(), calls);
    }
    const auto api = client();
    answerAll({libreLogin(), libreGraph(), libreGraph(), libreLogin("new", "1803542400"), libreGraph()});
    const Date end = clock_.now() + 180 * 24h;
    EXPECT_TRUE(fetch(*api));
    for (const Seconds before : {31s, 30s}) {
        clock_.setWallClock(end - before);
        EXPECT_TRUE(fetch(*api));  // Too old to be shown, not to be read.
    }
    EXPECT_EQ(lastToken(http_.requests().back()), "Bearer new");
    EXPECT_EQ(takeCalls(), "sggsg");
}

TEST_F(LibreLinkUpAPITest, signInFollowsTheAccountToItsHomeRegion)
{
    struct Case {
        std::string answers;  ///< Regions that the service names, one after the other.
        std::string asked;
        std::optional<Kind> error{};
    };
    for (const Case& c : std::initializer_list<Case>{
             {"eu2", "us eu2 "},
             {"EU2", "us eu2 "},
             {"eu|de|fr", "us eu de fr "},
             {"us", "us ", Kind::invalidResponse},
             {"eu|us", "us eu ", Kind::invalidResponse},
             {"eu|de|eu", "us eu de ", Kind::invalidResponse},
             {"eu|de|fr|jp", "us eu de fr ", Kind::invalidResponse},
             {"zz", "us ", Kind::invalidRegion},
             {"eu|global", "us eu ", Kind::invalidRegion},
             {"evil.example.org/", "us ", Kind::invalidRegion},
             {"eu|de|fr|zz", "us eu de fr ", Kind::invalidRegion},
         }) {
        SCOPED_TRACE(c.answers);
        const auto api = client();
        for (const std::string& region : parts(c.answers))
            http_.answer(200, libreRedirect(region));
        if (!c.error)
            http_.answer(200, libreLogin());
        const auto signedIn = signInAgain(*api);
        EXPECT_EQ(signedIn.has_value(), !c.error);
        if (c.error)
            expectFailure(signedIn, {*c.error});
        EXPECT_EQ(takeRegions(), c.asked);
        EXPECT_EQ(http_.unused(), 0U);
        if (c.error) {
            http_.answer(200, libreLogin());
            EXPECT_TRUE(signInAgain(*api));
            EXPECT_EQ(takeRegions(), "us ") << "a wrong turn was kept";
        }
    }

    const auto api = client();
    answerAll({libreRedirect("eu2"), libreLogin(), std::string{listBody}});
    const People people = list(*api);
    ASSERT_TRUE(people);
    EXPECT_EQ(people->region, "eu2") << "where the account lives, for whoever stores it";
    http_.answer(200, libreLogin());
    EXPECT_TRUE(signInAgain(*api));
    EXPECT_EQ(takeRegions(), "us eu2 eu2 eu2 ") << "the new region is kept";
    EXPECT_TRUE(logged("The account lives in another region (region=eu2)"));
}

TEST_F(LibreLinkUpAPITest, aForeignRegionIsThePersonsFaultOnlyBeforeAnySignIn)
{
    const auto api = client();
    http_.answer(200, R"({"status":911})");
    expectFailure(fetch(*api), {Kind::invalidRegion});
    answerAll({libreLogin(), R"({"status":911})"});
    EXPECT_TRUE(signInAgain(*api));
    expectFailure(signInAgain(*api), {.kind = Kind::serverError, .httpStatus = 911});
}

TEST_F(LibreLinkUpAPITest, nobodyIsShownWhoWasNotSelected)
{
    for (const std::optional<std::string>& nobody :
         {std::optional<std::string>{}, std::optional{std::string{}}}) {
        account_.patientID = nobody;
        const auto api = client();
        answerAll({libreLogin(), std::string{listBody}});
        expectFailure(fetch(*api), {Kind::connectionSelectionRequired});
        http_.answer(200, R"({"status":0,"data":[]})");
        expectFailure(fetch(*api), {Kind::noConnections});
        http_.answer(200, R"({"status":0,"data":[]})");
        EXPECT_EQ(list(*api), (LibreConnections{{}, "us"})) << "nobody is no failure of the list";
        http_.answer(500, "");
        expectFailure(fetch(*api), {.kind = Kind::serverError, .httpStatus = 500});
        EXPECT_EQ(takeCalls(), "scccc");
    }
    account_.patientID = "p1";
    const auto api = client();
    answerAll({libreLogin(), std::string{listBody}});
    EXPECT_EQ(list(*api), (LibreConnections{{{"p1", "Ada", ""}, {"p2", "Grace", "Muster"}}, "us"}));
    EXPECT_EQ(takeCalls(), "sc");
    // Answers about somebody else, nobody, and one that cannot be loaded: the list has the last word.
    for (const std::string& odd :
         {libreGraph(), std::string{R"({"status":0,"data":{}})"},
          std::string{R"({"status":4,"error":{"message":"couldNotLoadPatient"}})"}}) {
        SCOPED_TRACE(odd);
        answerAll({odd, R"({"status":0,"data":[{"patientId":"p2"}]})"});
        expectFailure(fetch(*api), {Kind::connectionUnavailable});
        answerAll({odd, std::string{listBody}});
        expectFailure(fetch(*api), {Kind::invalidResponse});
        http_.answer(200, odd);
        http_.answer(502, "");
        expectFailure(fetch(*api), {.kind = Kind::serverError, .httpStatus = 502});
        EXPECT_EQ(takeCalls(), "gcgcgc");
    }
}

TEST_F(LibreLinkUpAPITest, aPatientIdCannotLeaveItsPlaceInThePath)
{
    const std::pair<std::string, const char*> cases[]{
        {"9a7b_C-d", "9a7b_C-d"},
        {"../connections", "%2E%2E%2Fconnections"},
        {"a/b?c#d%41 &\n", "a%2Fb%3Fc%23d%2541%20%26%0A"},
        {"ü\xff", "%C3%BC%FF"},
        {std::string{"\0", 1}, "%00"},
    };
    for (const auto& [id, segment] : cases) {
        account_.patientID = id;
        answerAll({libreLogin(), "{}"});
        EXPECT_FALSE(fetch(*client()));
        EXPECT_EQ(http_.requests().back().url, fmt::format("{}connections/{}/graph", usBase, segment));
    }
}

TEST_F(LibreLinkUpAPITest, nothingIsSentUntilTheServiceWantsToBeAsked)
{
    const auto api = client();
    const auto expectWait = [&](const auto& result, Seconds wait) {
        expectFailure(result, {.kind = Kind::rateLimited, .wait = wait});
    };
    answerAll({libreLogin()});
    http_.answer(429, "", {{"Retry-After", "120"}});
    expectWait(fetch(*api), 120s);
    clock_.advance(119s);
    takeCalls();
    expectWait(fetch(*api), 1s);
    expectWait(list(*api), 1s);
    expectWait(signInAgain(*api), 1s);
    EXPECT_EQ(takeCalls(), "");
    clock_.advance(1s);
    answerAll({libreLogin(), libreGraph()});
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(takeCalls(), "sg");

    http_.answer(429, "", {{"Retry-After", "Mon, 02 Mar 2026 08:03:00 GMT"}});
    expectWait(fetch(*api), 60s);
    clock_.advance(60s);
    for (const char* past : {"Mon, 02 Mar 2026 08:00:00 GMT", "soon", "-5", ""}) {
        http_.answer(429, "", {{"Retry-After", past}});
        expectWait(fetch(*api), 0s);
    }
    EXPECT_EQ(takeCalls(), "ggggg") << "no wait, no lock: the caller has a least wait of its own";

    http_.answer(200, R"({"status":429,"data":{"code":60,"data":{"lockout":300},"message":"locked"}})");
    expectWait(signInAgain(*api), 300s);
    expectWait(fetch(*api), 300s);
    EXPECT_EQ(takeCalls(), "s");

    http_.answer(429, "", {{"Retry-After", "86400"}});
    clock_.advance(300s);
    expectWait(fetch(*api), 3600s);
    clock_.setWallClock(clock_.now() - 10s);
    answerAll({libreLogin(), libreGraph()});
    EXPECT_TRUE(fetch(*api)) << "a clock that was set back keeps nobody waiting longer than an hour";
    EXPECT_EQ(takeCalls(), "ssg");
}

TEST_F(LibreLinkUpAPITest, aRefusedTicketIsDroppedAndNoOtherFailureDropsIt)
{
    struct Case {
        int status;
        std::string body;
        Kind kind;
    };
    const Case refusals[]{{401, R"({"message":"invalid or expired jwt"})", Kind::sessionExpired},
                          {403, "", Kind::sessionExpired},
                          {200, R"({"status":2})", Kind::sessionExpired}};
    const Case others[]{
        {403, "<html>", Kind::serverError},
        {503, "{}", Kind::serverError},
        {403, R"({"data":{"minimumVersion":"5"},"status":920})", Kind::clientUpdateRequired},
        {200, "{", Kind::invalidResponse},
        {200, "{\"status\":0}", Kind::invalidResponse},
        {200, libreAnswer(libreGraphData(libreMeasurement("null"), "[]")), Kind::invalidReading},
        {200, libreAnswer(libreGraphData("null", "[]")), Kind::noReadingsAvailable},
        {200, R"({"status":4,"data":{"step":{"type":"pp"}}})", Kind::termsRequired}};
    const auto api = client();
    http_.answer(200, libreLogin());
    for (const Case& c : others) {
        http_.answer(c.status, c.body);
        const LibreLinkUpError error{.kind = c.kind, .httpStatus = c.status};
        expectFailure(fetch(*api), error);
        EXPECT_TRUE(logged(fmt::format("Graph failed with mapped error={}", description(error))));
    }
    EXPECT_EQ(takeCalls(), "s" + std::string(std::size(others), 'g'));
    for (const Case& c : refusals) {
        http_.answer(c.status, c.body);
        expectFailure(fetch(*api), {c.kind});
        answerAll({libreLogin("next"), libreGraph()});
        EXPECT_TRUE(fetch(*api));
        EXPECT_EQ(lastToken(http_.requests().back()), "Bearer next");
        EXPECT_EQ(takeCalls(), "gsg") << "the client itself does not try again";
    }
    http_.answer(200, libreAnswer(libreGraphData(libreMeasurement("0"),
                                                 fmt::format("[{}]", libreMeasurement("131")))));
    EXPECT_EQ(fetch(*api)->size(), 1U);
    EXPECT_TRUE(logged("Graph skipped 1 impossible readings"));
}

TEST_F(LibreLinkUpAPITest, aSignInWithoutAGoodTicketLeavesNone)
{
    const std::string interim = R"("authTicket":{"token":"interim","expires":1787990400})";
    const std::pair<std::string, Kind> cases[]{
        {R"({"status":4,"data":{"step":{"type":"tou"},)" + interim + "}}", Kind::termsRequired},
        {R"({"status":4,"data":{"step":{"type":"verifyEmail"},"user":{"id":"u"},)" + interim + "}}",
         Kind::accountActionRequired},
        {R"({"status":0,"data":{)" + interim + "}}", Kind::invalidResponse},
        {R"({"status":2,"error":{"message":"notAuthenticated"}})", Kind::authenticationFailed},
        {libreLogin("x\\r\\nX-Evil: 1"), Kind::invalidResponse},
        {libreLogin("x\\u0000"), Kind::invalidResponse},
        {libreLogin(std::string(8193, 'x')), Kind::invalidResponse},
        {libreLogin(libreToken, "null"), Kind::invalidResponse}};
    for (const auto& [body, kind] : cases) {
        SCOPED_TRACE(body.substr(0, 200));
        const auto api = client();
        answerAll({libreLogin(), body, body});
        EXPECT_TRUE(signInAgain(*api));
        expectFailure(signInAgain(*api), {kind});
        EXPECT_TRUE(logged(fmt::format("Login failed with mapped error={}", description({kind}))));
        expectFailure(fetch(*api), {kind});
        EXPECT_EQ(takeCalls(), "sss") << "neither the interim ticket nor the old one is used";
    }
}

TEST_F(LibreLinkUpAPITest, failuresOfTheTransportPassThroughAndKeepTheTicket)
{
    const auto api = client();
    http_.answer(200, libreLogin());
    EXPECT_TRUE(signInAgain(*api));
    takeCalls();
    for (const HttpError::Kind kind : transportFailures) {
        http_.fail(kind);
        expectFailure(fetch(*api), {.kind = Kind::transport, .network = HttpError{kind}});
    }
    for (const HttpError::Kind kind : {HttpError::Kind::badAnswer, HttpError::Kind::invalidURL}) {
        http_.fail(kind);
        expectFailure(fetch(*api), {Kind::invalidResponse});
    }
    http_.answer(200, libreGraph());
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(takeCalls(), "gggggggggg");
}

TEST_F(LibreLinkUpAPITest, anHttpRedirectIsRefusedAndItsAddressNotLogged)
{
    http_.fail(HttpError::Kind::redirectRefused);
    EXPECT_FALSE(fetch(*client()));
    log_.clear();
    EXPECT_FALSE(http_.requests().back().redirectDelegate->mayFollow(
        "https://api-us.libreview.io/llu/auth/login", "https://api-us.libreview.io/other"));
    EXPECT_EQ(log_, std::vector<std::string>{"Refused an HTTP redirect"});
}

TEST_F(LibreLinkUpAPITest, nothingSecretIsLogged)
{
    SeededRandom random{42};
    const auto draw = [&](std::string text) { return hostileText(random, std::move(text)); };
    for (int round = 0; round < 200; ++round) {
        log_.clear();
        const std::string marker = fmt::format("{:016x}", random.next());
        account_.username = draw("user" + marker);
        const std::string password = draw("word" + marker);
        account_.password = SecretText{std::string_view{password}};
        account_.patientID = draw("patient" + marker);
        const std::string token = "token" + marker;
        const std::string leaky = fmt::format(
            R"({{"status":{},"error":{{"message":"{} {} {}"}},"data":{{"lockout":{}1,"step":{{"type":"{}"}}}}}})",
            round % 7, marker, token, libreUser, round, marker);
        const std::string people = fmt::format(
            R"({{"status":0,"data":[{{"patientId":"{0}","firstName":"Grace{0}","lastName":"{0}"}}]}})",
            marker);
        const std::string graph = libreAnswer(libreGraphData(
            libreMeasurement("118.625"), fmt::format("[{}]", libreMeasurement("131.375")), "other" + marker));

        const auto api = client();
        http_.answer(round % 2 == 0 ? 200 : 500, leaky);
        std::vector errors{signInAgain(*api).error()};
        answerAll({libreRedirect(marker)});
        errors.push_back(signInAgain(*api).error());
        answerAll({libreLogin(token), people, graph, people});
        EXPECT_TRUE(list(*api));
        errors.push_back(fetch(*api).error());
        http_.answer(round % 3 == 0 ? 403 : 200, leaky);
        http_.answer(200, people);
        errors.push_back(fetch(*api).error());
        http_.forgetAnswers();

        const auto sent = parseJson(http_.requests()[0].body.reveal());
        ASSERT_TRUE(sent) << "a password with any characters is a JSON text";
        EXPECT_EQ(requiredText(sent->as_object(), "password"), password);
        EXPECT_EQ(requiredText(sent->as_object(), "email"), account_.username);
        ASSERT_GE(log_.size(), 18U);
        for (const GlucoseAPIError& error : errors)
            log_.push_back(error.text);
        for (const std::string& line : log_) {
            for (const std::string_view secret : std::initializer_list<std::string_view>{
                     marker, libreUser, libreUserHash, "Grace", "118.6", "131.3", "7:55"})
                EXPECT_EQ(line.find(secret), std::string::npos) << line;
        }
        takeCalls();
    }
}

}  // namespace
}  // namespace tidewell
