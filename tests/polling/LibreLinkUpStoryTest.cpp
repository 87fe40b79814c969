// What a person who follows somebody with LibreLinkUp lives through, from the service's answers to the words
// in the menu: the real client and the simulated service on one fake clock.

#include "polling/FakeNotificationCenter.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "simulator/LibreLinkUpSimulator.h"
#include "simulator/SimulatedHttpClient.h"
#include "sources/LibreLinkUpAPI.h"
#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"

namespace tidewell {
namespace {

using Options = LibreLinkUpOptions;
using K = ServiceFault::Kind;

ServiceEndpoints thirteenRegions()
{
    ServiceEndpoints endpoints;
    for (const std::string_view region : LibreLinkUpSimulator::regions)
        endpoints.libreLinkUp.emplace(region, fmt::format("https://service.test/{}", region));
    return endpoints;
}

struct Story {
    static constexpr Date start = dateFromUnix(1'772'438'000);

    explicit Story(Options options = {}, std::string region = "us",
                   std::optional<std::string> patientID = LibrePerson{}.patientId)
        : service{std::move(options), start},
          client{std::make_shared<LibreLinkUpAPI>(
              io.get_executor(), http, clock, thirteenRegions(),
              GlucoseAccountConfiguration{.provider = GlucoseProvider::libreLinkUp,
                                          .username = LibreAccount{}.email,
                                          .password = SecretText{std::string_view{LibreAccount{}.password}},
                                          .region = std::move(region),
                                          .patientID = std::move(patientID)})}
    {
        http.route("https://service.test/",
                   [this](const HttpRequest& request, Date now) { return service.handle(request, now); });
        http.setLatency(Seconds{0.1});
        path.report(true);
        coordinator->start(client, GlucoseProvider::libreLinkUp);
        clock.runReady();
    }
    ~Story()
    {
        coordinator.reset();
        clock.runReady();
    }
    Story(const Story&) = delete;
    Story& operator=(const Story&) = delete;

    asio::io_context io{};
    FakeClock clock{io, start};
    SeededRandom random{5};
    LibreLinkUpSimulator service;
    SimulatedHttpClient http{clock};
    FakeNetworkPath path{};
    NetworkMonitor network{clock, random, path.monitoring()};
    UserDefaults defaults{};
    FakeNotificationCenter center{clock};
    UserNotificationGlucoseAlertDelivery delivery{io.get_executor(), center, random};
    StatusBarViewModel viewModel{io.get_executor(), clock, random, [] { return AppSettings{}; }};
    std::shared_ptr<LibreLinkUpAPI> client;
    std::optional<StatusBarPollingCoordinator> coordinator{
        std::in_place, StatusBarPollingCoordinator::Parts{.engine = io.get_executor(),
                                                          .main = io.get_executor(),
                                                          .clock = clock,
                                                          .random = random,
                                                          .viewModel = viewModel,
                                                          .networkMonitor = network,
                                                          .defaults = defaults,
                                                          .settings = [] { return AppSettings{}; },
                                                          .alertDelivery = delivery}};

    [[nodiscard]] const StatusBarState& state() const { return viewModel.state(); }
    void become(Options options) { service.setOptions(std::move(options), clock.now()); }

    /// Goes from wake to wake until `done`, at most so long. Whether it is.
    template <class Done>
    bool goOnUntil(Done done, Seconds limit = Seconds{4000})
    {
        const Date end = clock.now() + limit;
        while (!done() && clock.now() < end && clock.sleepers() > 0)
            clock.advance(std::min(clock.untilNextWake(), end - clock.now()));
        return done();
    }
    /// Through the next poll that brings something.
    void expectValue()
    {
        EXPECT_TRUE(goOnUntil([this] {
            return !state().currentError && state().freshness == ReadingFreshness::current;
        })) << state().statusTitle;
        const auto newest = service.readings().current(clock.now());
        EXPECT_TRUE(state().statusTitle.starts_with(fmt::format("{} ", newest ? newest->mgdL : -1)))
            << state().statusTitle;
    }
    /// The paths asked for since the last look, without what they have in common.
    std::vector<std::string> requests()
    {
        std::vector<std::string> paths;
        for (const auto& exchange : http.log()) {
            const std::string_view asked{exchange.path};
            const std::string region = std::string{asked.substr(1, asked.find("/llu/") - 1)};
            paths.push_back(region + (asked.ends_with("/auth/login") ? " login"
                                      : asked.ends_with("/graph")    ? " graph"
                                                                     : " connections"));
        }
        http.clearLog();
        return paths;
    }
    std::int64_t signIns()
    {
        return std::ranges::count_if(requests(), [](const auto& path) { return path.ends_with(" login"); });
    }
};

/// How long until the next request, from the moment when the failure shows; empty: not before the person has
/// done something.
using Next = std::optional<std::pair<double, double>>;
constexpr std::pair<double, double> firstBackoff{24, 36};

const std::string busy = "LibreLinkUp is limiting requests. Tidewell will wait before trying again.";
const std::string shortly = "The app will retry automatically.";

ErrorInfo attention(std::string message)
{
    return {.title = "LibreLinkUp needs attention",
            .message = std::move(message),
            .remediation = "Resolve the issue, then choose Reconnect in Account settings.",
            .needsSignIn = true,
            .canReconnect = true};
}
ErrorInfo limited() { return {"LibreLinkUp busy", busy, "Tidewell will wait before trying again."}; }
ErrorInfo unexpected(const std::string& text)
{
    return {"An unexpected error occurred: " + text, "", shortly};
}
ErrorInfo unavailable(int status)
{
    return unexpected(fmt::format("LibreLinkUp is unavailable ({}). Try again later.", status));
}

const std::string reviewTerms =
    "Open the LibreLinkUp app and review its updated terms or privacy notice, then try again.";
const std::string completeSetup =
    "Open the LibreLinkUp app and complete the account setup shown there, then try again.";
const std::string noRegion =
    "LibreLinkUp could not find a supported account region. Check the region in Settings.";
const std::string newerVersion =
    "LibreLinkUp requires a newer connection version. Check for an update to Tidewell.";
const std::string notUnderstood = "LibreLinkUp returned an unexpected response. Try again later.";

/// Shows `error` at the next poll, after so many requests to sign in, and asks again in time.
void expectProblem(Story& story, const ErrorInfo& error, const Next& next, std::int64_t signIns)
{
    story.requests();
    story.clock.runReady();
    ASSERT_TRUE(story.goOnUntil([&] { return story.state().currentError.has_value(); }));
    EXPECT_EQ(story.state().currentError->title, error.title);
    EXPECT_EQ(story.state().currentError->message, error.message);
    EXPECT_EQ(story.state().currentError->remediation, error.remediation);
    EXPECT_EQ(story.state().currentError, error);
    EXPECT_EQ(story.signIns(), signIns);
    EXPECT_FALSE(story.state().activity);
    const Date shown = story.clock.now();
    const std::optional<Date> retry = story.state().nextRetryAt;
    EXPECT_EQ(retry.has_value(), next.has_value());
    const Seconds limit{next ? 4000.0 : 86'400.0};
    const bool asked = story.goOnUntil([&] { return !story.http.log().empty(); }, limit);
    ASSERT_EQ(asked, next.has_value()) << "no request until the person has done something";
    if (!asked)
        return;
    const Date at = story.http.log().front().asked;
    EXPECT_GE((at - shown).count(), next->first - 0.001);
    EXPECT_LE((at - shown).count(), next->second + 0.002);
    EXPECT_NEAR(unixSeconds(at), unixSeconds(*retry), 0.002);
}

struct Chapter {
    std::string name;
    std::function<void(Options&)> spoil;
    ErrorInfo error;
    Next next{};
    std::int64_t signIns = 0;
    bool ticketsRevoked = false;
};

ServiceFault html(int status, std::vector<HttpHeader> headers = {})
{
    return {.kind = K::html, .status = status, .headers = std::move(headers)};
}

const std::vector<Chapter> chapters{
    {"terms", [](Options& o) { o.pendingStep = "tou"; }, attention(reviewTerms), {}, 1, true},
    {"privacy notice", [](Options& o) { o.pendingStep = "pp"; }, attention(reviewTerms), {}, 1, true},
    {"e-mail", [](Options& o) { o.pendingStep = "verifyEmail"; }, attention(completeSetup), {}, 1, true},
    {"step without a type", [](Options& o) { o.pendingStep = "-"; }, attention(completeSetup), {}, 1, true},
    {"person removed", [](Options& o) { o.removed = true; },
     attention("The selected LibreLinkUp connection is no longer available. Check sharing in LibreLinkUp and "
               "select a connection in Settings.")},
    {"password changed",
     [](Options& o) { o.refusePasswords = true; },
     {"Authentication failed", "Unable to authenticate with LibreLinkUp.",
      "Check your username and password in Settings.", true},
     {},
     1,
     true},
    {"locked", [](Options& o) { o.locked = true; }, limited(), {{300, 300}}, 1, true},
    {"edge limit", [](Options& o) { o.login = o.graph = html(429); }, limited(), {{60, 60}}},
    {"edge limit with a short time",
     [](Options& o) { o.graph = html(429, {{"Retry-After", "30"}}); },
     limited(),
     {{60, 60}}},
    {"limit with a long time",
     [](Options& o) { o.graph = html(429, {{"Retry-After", "200"}}); },
     limited(),
     {{200, 200}}},
    {"limit beyond reason",
     [](Options& o) { o.graph = html(429, {{"Retry-After", "999999"}}); },
     limited(),
     {{3600, 3600}}},
    {"edge block", [](Options& o) { o.login = o.graph = html(403); }, unavailable(403), firstBackoff},
    {"outage", [](Options& o) { o.login = o.graph = html(503); }, unavailable(503), firstBackoff},
    {"sign-in refused outright", [](Options& o) { o.login = {.kind = K::status, .status = 430}; },
     unavailable(430), firstBackoff, 1, true},
    {"version gate", [](Options& o) { o.minimumVersion = "5.0.0"; }, unexpected(newerVersion), firstBackoff},
    {"upgrade required", [](Options& o) { o.graph = {.kind = K::status, .status = 426}; },
     unexpected(newerVersion), firstBackoff},
    {"empty answer", [](Options& o) { o.graph = {.kind = K::emptyBody}; }, unexpected(notUnderstood),
     firstBackoff},
    {"moved in a circle",
     [](Options& o) {
         o.accounts.front().homeRegion = "de";
         o.redirect = LibreRedirect::circle;
     },
     unexpected(notUnderstood), firstBackoff, 4, true},
    {"moved to a region that nobody knows",
     [](Options& o) {
         o.accounts.front().homeRegion = "de";
         o.redirect = LibreRedirect::unknown;
     },
     attention(noRegion),
     {},
     1,
     true},
    {"tickets refused",
     [](Options& o) { o.refuseTickets = true; },
     {"Authentication required", "Cannot authenticate with LibreLinkUp.",
      "Verify your credentials in Settings."},
     {{2160, 3240}},
     1},
    {"no answer",
     [](Options& o) { o.graph = {.kind = K::transport, .transport = TransportFault::hang}; },
     {"Unable to connect", "Unable to connect to FreeStyle Libre servers.",
      "Check your internet connection and try again."},
     firstBackoff},
};

TEST(LibreLinkUpStory, eachTroubleHasItsWordsItsPaceAndItsEnd)
{
    for (const Chapter& chapter : chapters) {
        SCOPED_TRACE(chapter.name);
        Story story;
        story.expectValue();
        Options options;
        chapter.spoil(options);
        story.become(options);
        if (chapter.ticketsRevoked)
            story.service.revokeTickets();
        expectProblem(story, chapter.error, chapter.next, chapter.signIns);

        // When it is over the value is back, at the next poll or when the person says so.
        story.become({});
        story.requests();
        if (!chapter.next) {
            story.coordinator->reconnect();
            story.clock.advance(Seconds{2});
        }
        story.expectValue();
        EXPECT_LE(story.signIns(), 2);
    }
}

TEST(LibreLinkUpStory, whatIsMissingAtTheFirstPollIsSaidThere)
{
    struct Beginning {
        std::string name;
        ErrorInfo error;
        Next next{};
        std::int64_t signIns = 2;  // At the region that was chosen, and at home.
        Options options{};
        std::string region = "us";
        std::optional<std::string> patientID = LibrePerson{}.patientId;
    };
    Options nobody;
    nobody.accounts.front().people.clear();
    const std::vector<Beginning> beginnings{
        {.name = "no person selected",
         .error = attention("Select the person whose readings you want to display in Settings."),
         .patientID = std::nullopt},
        {.name = "nobody shares",
         .error = attention(
             "No LibreLinkUp connections were found. Accept a sharing invitation in the LibreLinkUp app "
             "first."),
         .options = nobody,
         .patientID = std::nullopt},
        {.name = "a region that nobody knows",
         .error = attention(noRegion),
         .signIns = 0,
         .region = "atlantis"},
        {.name = "a region that does not redirect",
         .error = attention(noRegion),
         .signIns = 1,
         .options = {.redirect = LibreRedirect::refused}},
        {.name = "wrong password",
         .error = {"Authentication failed", "Unable to authenticate with LibreLinkUp.",
                   "Check your username and password in Settings.", true},
         .signIns = 4,  // The home region is kept once it has let us in, not before.
         .options = {.refusePasswords = true}},
        {.name = "nothing measured yet",
         .error = {"No data available", "No glucose readings available from FreeStyle Libre.",
                   "Ensure your sensor is active and readings appear in LibreLinkUp."},
         .next = {{720, 1080}},
         .options = {.readings = {.noCurrent = true, .emptyGraph = true}}},
    };
    for (const Beginning& beginning : beginnings) {
        SCOPED_TRACE(beginning.name);
        Story story{beginning.options, beginning.region, beginning.patientID};
        expectProblem(story, beginning.error, beginning.next, beginning.signIns);
    }
}

TEST(LibreLinkUpStory, homeRegionIsFoundOnceAndATicketLastsHalfAYear)
{
    Story story;
    story.expectValue();
    EXPECT_EQ(story.requests(), (std::vector<std::string>{"us login", "eu2 login", "eu2 graph"}));
    const Date signedIn = story.clock.now();
    story.clock.advance(Seconds{3600});
    EXPECT_EQ(std::ranges::count(story.requests(), "eu2 graph"), 60);

    const Seconds halfYear{180 * 86'400.0};
    story.clock.suspend(signedIn + halfYear - Seconds{7200} - story.clock.now());
    story.expectValue();
    EXPECT_EQ(story.signIns(), 0);
    story.clock.suspend(signedIn + halfYear - Seconds{30} - story.clock.now());
    story.expectValue();
    EXPECT_EQ(story.requests(), (std::vector<std::string>{"eu2 login", "eu2 graph"}));

    // One that is refused before its time costs one sign-in, and nobody sees a word of it.
    story.service.revokeTickets();
    bool told = false;
    const auto token = story.viewModel.observe(
        [&told](const StatusBarState& state) { told = told || state.currentError.has_value(); });
    EXPECT_TRUE(story.goOnUntil([&story] { return story.http.log().size() == 3; }));
    story.clock.advance(Seconds{0.1});
    EXPECT_EQ(story.requests(), (std::vector<std::string>{"eu2 graph", "eu2 login", "eu2 graph"}));
    EXPECT_FALSE(told);
    story.expectValue();
}

TEST(LibreLinkUpStory, reconnectBeforeTheTermsAreAcceptedAsksOnceMoreAndWaitsAgain)
{
    Story story;
    story.expectValue();
    story.become({.pendingStep = "tou"});
    story.service.revokeTickets();
    expectProblem(story, attention(reviewTerms), {}, 1);
    story.coordinator->reconnect();
    expectProblem(story, attention(reviewTerms), {}, 1);
    EXPECT_EQ(story.state().statusTitle, "-- ?");
    story.become({});
    story.coordinator->reconnect();
    story.clock.runReady();
    story.expectValue();
    EXPECT_EQ(story.requests(), (std::vector<std::string>{"eu2 login", "eu2 graph"}));
}

TEST(LibreLinkUpStory, currentValueThatStandsStillAgesUntilTheGraphOvertakesIt)
{
    Story story;
    story.expectValue();
    story.become({.readings = {.frozen = true}});
    const Date frozen = story.state().presentedReading->date;
    story.clock.advance(frozen + Seconds{899} - story.clock.now());
    EXPECT_EQ(story.state().freshness, ReadingFreshness::current);
    story.clock.advance(Seconds{1.1});
    EXPECT_EQ(story.state().freshness, ReadingFreshness::stale);
    EXPECT_TRUE(story.state().statusTitle.ends_with(" ?"));
    ASSERT_TRUE(story.state().freshnessWarning);
    EXPECT_EQ(story.state().presentedReading->date, frozen);
    EXPECT_TRUE(story.goOnUntil([&] { return story.state().presentedReading->date > frozen; }));
    EXPECT_EQ(story.state().presentedReading->sampleDuration, Seconds{300});
    EXPECT_EQ(story.state().presentedReading->date, story.service.readings().newest(story.clock.now())->date);
    EXPECT_EQ(story.state().freshness, ReadingFreshness::stale);
    EXPECT_FALSE(story.state().currentError);
    story.become({});
    story.expectValue();
}

TEST(LibreLinkUpStory, sensorThatFallsSilentIsToldWhenItIsNoMomentaryGap)
{
    Story story;
    story.expectValue();
    story.become({.readings = {.noCurrent = true, .missingGraph = true}});
    story.requests();
    expectProblem(story,
                  {"No new data", "Unable to retrieve new glucose readings from FreeStyle Libre.",
                   "Check your internet connection and LibreLinkUp settings."},
                  {{60, 90}}, 0);
    story.become({});
    story.expectValue();
}

}  // namespace
}  // namespace tidewell
