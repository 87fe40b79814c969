#include "sources/DexcomAPI.h"

#include <source_location>

#include "sources/ClientFixture.h"

namespace tidewell {
namespace {

using ErrorKind = GlucoseAPIError::Kind;
constexpr std::string_view accountId = "3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa";
constexpr std::string_view sessionId = "7c1f0b52-3f4e-4d0a-9a53-1be0c2d4e611";
constexpr std::string_view nullId = "00000000-0000-0000-0000-000000000000";
constexpr std::string_view usBase = "https://share2.dexcom.com/ShareWebServices/Services/";
constexpr std::string_view oneReading =
    R"json([{"WT":"Date(1772438113482)","ST":"Date(1772438113482)","DT":"Date(1772438113482+0100)",)json"
    R"json("Value":118,"Trend":"Flat"}])json";

constexpr const char* noSession = "Login failed: Unable to start a Dexcom session.";

std::string idBody(std::string_view text) { return fmt::format("\"{}\"", text); }
std::string errorBody(std::string_view code, std::string_view message = "text")
{
    return fmt::format(R"({{"Code":"{}","Message":"{}","SubCode":"","TypeName":"FaultException"}})", code,
                       message);
}

/// The step of a URL, by its first letter: a(uthenticate), l(ogin), r(ead).
char stepOf(const HttpRequest& request)
{
    if (request.url.ends_with("General/AuthenticatePublisherAccount"))
        return 'a';
    if (request.url.ends_with("General/LoginPublisherAccountById"))
        return 'l';
    return request.url.ends_with("Publisher/ReadPublisherLatestGlucoseValues") ? 'r' : '?';
}

class DexcomAPITest : public ClientFixture<DexcomAPI> {
protected:
    DexcomAPITest() : ClientFixture{"DexcomAPI"} {}

    void answerSignIn()
    {
        http_.answer(200, idBody(accountId));
        http_.answer(200, idBody(sessionId));
    }
    auto signInAgain(DexcomAPI& api) { return ended(api.signInAgain()); }
    void expectError(const Readings& result, ErrorKind kind, std::string_view text,
                     std::source_location at = std::source_location::current())
    {
        const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "called"};
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), (GlucoseAPIError{.kind = kind, .text = std::string{text}}));
    }
    std::string takeSteps() { return ClientFixture::takeSteps(stepOf); }
};

TEST_F(DexcomAPITest, signsInOnceAndReadsWithTheSameSession)
{
    const auto api = client();
    answerSignIn();
    http_.answer(200, std::string{oneReading});
    const Readings readings = fetch(*api);
    ASSERT_TRUE(readings);
    ASSERT_EQ(readings->size(), 1U);
    EXPECT_EQ(unixSeconds(readings->front().date), 1772438113.482);

    ASSERT_EQ(http_.requests().size(), 3U);
    const std::string bodies[]{
        R"({"accountName":"ada@example.org","password":"correct horse","applicationId":"3c0f9a7e-52b1-4d8e-a6f3-1e9b7c24d05a"})",
        R"({"accountId":"3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa","password":"correct horse","applicationId":"3c0f9a7e-52b1-4d8e-a6f3-1e9b7c24d05a"})",
        R"({"sessionId":"7c1f0b52-3f4e-4d0a-9a53-1be0c2d4e611","minutes":1440,"maxCount":288})"};
    const std::string paths[]{"General/AuthenticatePublisherAccount", "General/LoginPublisherAccountById",
                              "Publisher/ReadPublisherLatestGlucoseValues"};
    for (std::size_t i = 0; i < 3; ++i) {
        const HttpRequest& request = http_.requests()[i];
        EXPECT_EQ(request.method, HttpMethod::post);
        EXPECT_EQ(request.url, std::string{usBase} + paths[i]);
        EXPECT_EQ(request.body.reveal(), bodies[i]);
        EXPECT_EQ(request.timeout, Seconds{60});
        EXPECT_EQ(request.headers, (std::vector<HttpHeader>{{"Content-Type", "application/json"},
                                                            {"Accept", "application/json"}}));
    }
    const std::vector<std::string> expectedLog{
        "No active session; authenticating (region=us)",
        "Auth request: POST "
        "https://share2.dexcom.com/ShareWebServices/Services/General/AuthenticatePublisherAccount "
        R"(body={"accountName":"<redacted>","password":"<redacted>","applicationId":"3c0f9a7e-52b1-4d8e-a6f3-1e9b7c24d05a"})",
        "AuthenticatePublisherAccount status=200 bytes=38",
        "Got accountId=<redacted>",
        "Login request: POST "
        "https://share2.dexcom.com/ShareWebServices/Services/General/LoginPublisherAccountById "
        R"(body={"accountId":"<redacted>","password":"<redacted>","applicationId":"3c0f9a7e-52b1-4d8e-a6f3-1e9b7c24d05a"})",
        "LoginPublisherAccountById status=200 bytes=38",
        "Established sessionId=<redacted>",
        "Authentication complete",
        "History request: POST "
        "https://share2.dexcom.com/ShareWebServices/Services/Publisher/ReadPublisherLatestGlucoseValues "
        R"(body={"sessionId":"<redacted>","minutes":1440,"maxCount":288})",
        fmt::format("ReadPublisherLatestGlucoseValues status=200 bytes={}", oneReading.size()),
    };
    EXPECT_EQ(log_, expectedLog);

    takeSteps();
    http_.answer(204, std::string{oneReading});  // Any status from 200 to 299 will do.
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(takeSteps(), "r");
}

TEST_F(DexcomAPITest, eachRegionHasItsOwnAddressAndApplicationId)
{
    const std::array<const char*, 3> cases[]{
        {"ous", "https://shareous1.dexcom.com/ShareWebServices/Services/General/AuthenticatePublisherAccount",
         "3c0f9a7e-52b1-4d8e-a6f3-1e9b7c24d05a"},
        {"jp", "https://share.dexcom.jp/ShareWebServices/Services/General/AuthenticatePublisherAccount",
         "9e6b2d14-7a3c-4f05-b81e-5c2a0d93f6e7"}};
    for (const auto& [region, url, applicationId] : cases) {
        account_.region = region;
        http_.fail(HttpError::Kind::timedOut);
        EXPECT_FALSE(fetch(*client()));
        EXPECT_EQ(http_.requests().back().url, url);
        EXPECT_TRUE(http_.requests().back().body.reveal().contains(applicationId)) << region;
    }
}

TEST_F(DexcomAPITest, anAccountThatCannotSignInSendsNothing)
{
    account_.region = "uk";
    expectError(fetch(*client()), ErrorKind::accountActionRequired, "Invalid region");
    EXPECT_TRUE(logged("No active session; authenticating (region=uk)"));
    EXPECT_EQ(signInAgain(*client()).error().kind, ErrorKind::accountActionRequired);
    account_.region = "us";
    account_.password = SecretText{};
    expectError(fetch(*client()), ErrorKind::credentialsRefused,
                "Authentication failed: Password is required");
    EXPECT_TRUE(logged("Authentication failed: Password is required"));
    account_.username = "";
    expectError(fetch(*client()), ErrorKind::credentialsRefused,
                "Authentication failed: Username is required");
    EXPECT_TRUE(logged("Authentication failed: Username is required"));
    EXPECT_EQ(takeSteps(), "");
}

TEST_F(DexcomAPITest, everyStatusAtEveryStepHasItsError)
{
    using enum ErrorKind;
    struct Case {
        int status;
        std::string text = "Invalid response from server";
        ErrorKind atSignIn = other, atRead = other;
    };
    std::vector<Case> cases{{100}, {199}, {300}, {400}, {404}, {600}};
    cases.push_back({401, "Session expired", credentialsRefused, sessionExpired});
    cases.push_back({403, "Session expired", serverTrouble, sessionExpired});
    for (const int status : {429, 500, 502, 599})
        cases.push_back(
            {status, fmt::format("Dexcom server error ({})", status), serverTrouble, serverTrouble});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.status);
        const auto api = client();
        http_.answer(c.status, "<html>");
        expectError(fetch(*api), c.atSignIn, c.text);
        EXPECT_EQ(takeSteps(), "a");
        EXPECT_TRUE(logged(fmt::format("AuthenticatePublisherAccount failed with mapped error={}", c.text)));

        http_.answer(200, idBody(accountId));
        http_.answer(c.status, "");
        expectError(fetch(*api), c.atSignIn, c.text);
        EXPECT_EQ(takeSteps(), "al");
        EXPECT_TRUE(logged(fmt::format("LoginPublisherAccountById failed with mapped error={}", c.text)));

        answerSignIn();
        http_.answer(c.status, "{}");
        if (c.status == 500) {
            answerSignIn();
            http_.answer(c.status, "{}");
        }
        expectError(fetch(*api), c.atRead, c.text);
        EXPECT_EQ(takeSteps(), c.status == 500 ? "alralr" : "alr");
        EXPECT_TRUE(
            logged(fmt::format("ReadPublisherLatestGlucoseValues failed with mapped error={}", c.text)));

        const bool signsInAnew = c.atRead == ErrorKind::sessionExpired;
        if (signsInAnew)
            answerSignIn();
        http_.answer(200, std::string{oneReading});
        EXPECT_TRUE(fetch(*api));
        EXPECT_EQ(takeSteps(), signsInAnew ? "alr" : "r");
    }
}

TEST_F(DexcomAPITest, aReadAnswered500IsRepeatedOnceWithANewSession)
{
    const auto api = client();
    answerSignIn();
    http_.answer(500, errorBody("SessionNotValid"));
    http_.answer(200, idBody(accountId));
    http_.answer(200, idBody("11111111-2222-4333-8444-555555555555"));
    http_.answer(200, std::string{oneReading});
    const auto running = startFetch(*api);
    clock_.advance(999ms);
    EXPECT_EQ(takeSteps(), "alral") << "one read a second at most";
    clock_.advance(1ms);
    EXPECT_TRUE(running.ended() && running.result());
    EXPECT_TRUE(http_.requests().back().body.reveal().contains("11111111-2222-4333-8444-555555555555"));
    EXPECT_EQ(takeSteps(), "r");
    EXPECT_TRUE(logged(
        "ReadPublisherLatestGlucoseValues received HTTP 500; invalidated session and retrying auth flow"));

    http_.answer(500, "");
    http_.answer(500, errorBody("AccountPasswordInvalid"));
    expectError(fetch(*api), ErrorKind::credentialsRefused, "Dexcom server error (500)");
    EXPECT_EQ(takeSteps(), "ra") << "the password was changed elsewhere: it is tried once";

    answerSignIn();
    http_.answer(500, "");
    answerSignIn();
    http_.answer(503, "");
    expectError(fetch(*api), ErrorKind::serverTrouble, "Dexcom server error (503)");
    EXPECT_EQ(takeSteps(), "alralr");
    EXPECT_EQ(http_.unused(), 0U);
}

TEST_F(DexcomAPITest, theServicesWordsDecideWhatARefusalIs)
{
    using enum ErrorKind;
    const std::pair<std::string, ErrorKind> cases[]{
        {errorBody("AccountPasswordInvalid"), credentialsRefused},
        {errorBody("SSO_AuthenticatePasswordInvalid"), credentialsRefused},
        {errorBody("SSO_AuthenticateAccountNotFound"), credentialsRefused},
        {errorBody("SSO_InternalError", "Cannot Authenticate by AccountName='ada'"), credentialsRefused},
        {errorBody("SSO_InternalError", "Timeout"), serverTrouble},
        {errorBody("InvalidArgument"), credentialsRefused},
        {errorBody("SSO_AuthenticateMaxAttemptsExceeed"), accountLocked},
        {errorBody("SSO_AuthenticateMaxAttemptsExceeded"), accountLocked},
        {errorBody("SessionIdNotFound"), serverTrouble},
        {errorBody("SomethingNew"), serverTrouble},
        {"<html>500</html>", serverTrouble}};
    for (const auto& [body, atSignIn] : cases) {
        SCOPED_TRACE(body);
        const auto api = client();
        http_.answer(500, body);
        expectError(fetch(*api), atSignIn, "Dexcom server error (500)");
        http_.answer(200, idBody(accountId));
        http_.answer(500, body);
        expectError(fetch(*api), atSignIn, "Dexcom server error (500)");
        for (int i = 0; i < 2; ++i) {
            answerSignIn();
            http_.answer(500, body);
        }
        // A read shows no password: only a lock is a refusal there.
        expectError(fetch(*api), atSignIn == accountLocked ? accountLocked : serverTrouble,
                    "Dexcom server error (500)");
    }
}

TEST_F(DexcomAPITest, anIdThatIsNoneEndsTheSignIn)
{
    using enum ErrorKind;
    struct Case {
        std::string body;
        ErrorKind kind = other;
        const char* atAuthenticate = "Unable to process server response: Expected an account id";
        ErrorKind kindAtLogin = other;
        const char* atLogin = "Unable to process server response: Expected a session id";
    };
    for (const Case& c : std::initializer_list<Case>{
             {idBody(nullId), credentialsRefused, "Authentication failed: Please check your credentials.",
              credentialsRefused, "Login failed: Please check your credentials."},
             {.body = "", .kindAtLogin = serverTrouble, .atLogin = noSession},
             {.body = "\"\"", .kindAtLogin = serverTrouble, .atLogin = noSession},
             {"<html>Sign in to the hotel's network</html>"},
             {idBody("3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0a")},
             {idBody("3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa\\\",\\\"x")}}) {
        SCOPED_TRACE(c.body);
        const auto api = client();
        http_.answer(200, c.body);
        expectError(fetch(*api), c.kind, c.atAuthenticate);
        EXPECT_EQ(takeSteps(), "a");
        http_.answer(200, idBody(accountId));
        http_.answer(200, c.body);
        expectError(fetch(*api), c.kindAtLogin, c.atLogin);
        EXPECT_EQ(takeSteps(), "al");
    }
}

TEST_F(DexcomAPITest, aGoodAnswerKeepsTheSessionWhateverItLacks)
{
    const auto api = client();
    answerSignIn();
    http_.answer(200, "[]");
    expectError(fetch(*api), ErrorKind::noReadings, "No glucose readings available");
    http_.answer(200, "{}");
    expectError(fetch(*api), ErrorKind::other,
                "Unable to process server response: Expected an array of glucose readings");
    http_.answer(200, "[7," + std::string{oneReading}.substr(1));
    EXPECT_EQ(fetch(*api)->size(), 1U);
    EXPECT_TRUE(logged("History skipped 1 unreadable readings"));
    EXPECT_EQ(takeSteps(), "alrrr");

    // An empty body is what an unknown session gets: the next fetch begins anew.
    http_.answer(200, "");
    expectError(fetch(*api), ErrorKind::other,
                "Unable to process server response: Expected an array of glucose readings");
    answerSignIn();
    http_.answer(200, std::string{oneReading});
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(takeSteps(), "ralr");

    http_.answer(200, R"json([{"ST":"Date(1772438113000)","Value":118,"Trend":"Flat"},)json"
                      R"json({"ST":"Date(1772438104000)","Value":118,"Trend":"Flat"}])json");
    EXPECT_EQ(fetch(*api)->size(), 1U);
    EXPECT_TRUE(logged("History removed 1 closely spaced duplicate readings"));
}

TEST_F(DexcomAPITest, failuresOfTheTransportPassThroughAndKeepTheSession)
{
    const auto api = client();
    answerSignIn();
    http_.answer(200, std::string{oneReading});
    EXPECT_TRUE(fetch(*api));
    takeSteps();
    using enum HttpError::Kind;
    for (const HttpError::Kind kind : transportFailures) {
        http_.fail(kind);
        expectError(fetch(*api), ErrorKind::transport, description(HttpError{kind}));
    }
    http_.fail(badAnswer);
    expectError(fetch(*api), ErrorKind::other, "Invalid response from server");
    EXPECT_TRUE(logged("ReadPublisherLatestGlucoseValues failed: non-HTTP response"));
    http_.fail(invalidURL);
    expectError(fetch(*api), ErrorKind::other, "Invalid ReadPublisherLatestGlucoseValues URL");
    EXPECT_EQ(takeSteps(), "rrrrrrrrr");
}

TEST_F(DexcomAPITest, signingInAgainDropsTheSession)
{
    const auto api = client();
    answerSignIn();
    EXPECT_TRUE(signInAgain(*api));
    answerSignIn();
    EXPECT_TRUE(signInAgain(*api));
    EXPECT_EQ(takeSteps(), "alal");
    http_.answer(200, std::string{oneReading});
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(takeSteps(), "r");

    http_.answer(500, errorBody("AccountPasswordInvalid"));
    EXPECT_EQ(signInAgain(*api).error().kind, ErrorKind::credentialsRefused);
    answerSignIn();
    http_.answer(200, std::string{oneReading});
    EXPECT_TRUE(fetch(*api));
    EXPECT_EQ(takeSteps(), "aalr") << "the old session is gone";
}

TEST_F(DexcomAPITest, nothingSecretIsLogged)
{
    SeededRandom random{42};
    const auto draw = [&](std::string text) { return hostileText(random, std::move(text)); };
    for (int round = 0; round < 200; ++round) {
        log_.clear();
        const std::string marker = fmt::format("{:016x}", random.next());
        account_.username = draw("user" + marker);
        const std::string password = draw("word" + marker);
        account_.password = SecretText{std::string_view{password}};
        const auto api = client();
        const std::string leakyError =
            errorBody("SessionNotValid", fmt::format("[SessionId = {}] {}", sessionId, marker));
        answerSignIn();
        http_.answer(500, leakyError);
        answerSignIn();
        http_.answer(round % 2 == 0 ? 200 : 500,
                     round % 2 == 0 ? marker + std::string{sessionId} : leakyError);
        const Readings result = fetch(*api);
        ASSERT_FALSE(result);

        const auto sent = parseJson(http_.requests()[0].body.reveal());
        ASSERT_TRUE(sent) << "a password with any characters is a JSON text";
        EXPECT_EQ(requiredText(sent->as_object(), "password"), password);
        EXPECT_EQ(requiredText(sent->as_object(), "accountName"), account_.username);
        log_.push_back(result.error().text);
        ASSERT_GE(log_.size(), 16U);
        for (const std::string& line : log_) {
            for (const std::string_view secret : {std::string_view{marker}, accountId, sessionId})
                EXPECT_EQ(line.find(secret), std::string::npos) << line;
        }
        takeSteps();
    }
}

}  // namespace
}  // namespace tidewell
