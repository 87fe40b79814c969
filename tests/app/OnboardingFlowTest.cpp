// The first-run steps from end to end: the real clients, the simulated services and every store, on one fake
// clock.

#include "app/OnboardingFlow.h"

#include "app/AccountCheck.h"
#include "app/TermsAgreement.h"
#include "config/ConfigTesting.h"
#include "history/HistoryWorld.h"
#include "polling/FakeNotificationCenter.h"
#include "simulator/SimulatedHttpClient.h"
#include "simulator/SimulatedServices.h"
#include "sources/DexcomAPI.h"
#include "testing/FakeClock.h"

namespace tidewell {
namespace {

using Step = OnboardingStep;
using Steps = std::vector<Step>;
using Answer = OnboardingState::TestAlertAnswer;
constexpr auto dexcom = GlucoseProvider::dexcom;
constexpr auto libreLinkUp = GlucoseProvider::libreLinkUp;

/// A desktop's list that a test reads, and that fails as the test says.
class FakeLoginItem final : public LoginItemControlling {
public:
    LoginItemStatus is{};
    std::string failure{};
    bool breaks = false;
    LoginItemStatus status() override { return is; }
    std::expected<void, std::string> setEnabled(bool enabled) override
    {
        if (breaks)
            throw std::runtime_error{"broken"};
        if (!failure.empty())
            return std::unexpected{failure};
        is.isEnabled = enabled;
        return {};
    }
};

/// A machine on which nobody has ever started the program.
struct Newcomer {
    static constexpr Date start = storyNow;

    explicit Newcomer(std::string homeCountry = "US", SimulatedServices::Options options = {})
        : services{std::move(options), start}, country{std::move(homeCountry)}
    {
        http.route("https://service.test/",
                   [this](const HttpRequest& request, Date now) { return services.handle(request, now); });
        http.setLatency(Seconds{0.1});
        launch();
    }
    ~Newcomer()
    {
        flow.reset();
        history.reset();
        manager.reset();
        settle();
    }
    Newcomer(const Newcomer&) = delete;

    /// A process starts, with what the one before left.
    void launch()
    {
        make();
        asio::co_spawn(io, manager->load(), asio::detached);
        settle();
        flow->begin();
        settle();
    }

    /// The same before anything is loaded or shown.
    void make()
    {
        flow.reset();
        history.reset();
        settle();
        manager = std::make_unique<ConfigurationManager>(
            io.get_executor(), io.get_executor(),
            ConfigurationManager::Places{.document = folder / "configuration.json", .keychain = keychain});
        history = std::make_unique<HistoryCoordinator>(
            HistoryCoordinator::Parts{.engine = io.get_executor(),
                                      .main = io.get_executor(),
                                      .workers = (diskIsSlow ? disk : io).get_executor(),
                                      .clock = clock,
                                      .store = std::make_shared<GlucoseHistoryStore>(world.parts())});
        flow = std::make_unique<OnboardingFlow>(OnboardingFlow::Services{
            .main = io.get_executor(),
            .engine = io.get_executor(),
            .workers = io.get_executor(),
            .clock = clock,
            .configuration = *manager,
            .defaults = defaults,
            .makeAPIClient =
                [this](const GlucoseAccountConfiguration& account) -> std::shared_ptr<GlucoseAPIProtocol> {
                if (account.provider == libreLinkUp)
                    return std::make_shared<LibreLinkUpAPI>(io.get_executor(), http, clock, endpoints,
                                                            account);
                return std::make_shared<DexcomAPI>(io.get_executor(), http, clock, endpoints, account);
            },
            .askConnections =
                [this](GlucoseAccountConfiguration account) {
                    auto client =
                        std::make_shared<LibreLinkUpAPI>(io.get_executor(), http, clock, endpoints, account);
                    return askConnections(io.get_executor(), std::move(client));
                },
            .alertDelivery = delivery,
            .lookAtAlertPath = [this]() -> asio::awaitable<AlertPath> {
                if (alertPathBreaks)
                    throw std::runtime_error{"broken"};
                co_return alertPath;
            },
            .history = *history,
            .loginItem = loginItem,
            .country = country,
            .finished = [this] { ++timesFinished; }});
        token = flow->observe([this] { ++changes; });
    }

    /// As long as every answer of the services takes, and a little more.
    void settle() { clock.advance(Seconds{20}); }
    /// Does what a slow disk was asked for.
    void serveDisk()
    {
        do {
            settle();
            disk.restart();
        } while (disk.poll() > 0);
    }
    void forward()
    {
        EXPECT_TRUE(state().canGoForward);
        flow->goForward();
        settle();
    }
    void back()
    {
        EXPECT_TRUE(state().canGoBack);
        flow->goBack();
        settle();
    }
    [[nodiscard]] const OnboardingState& state() const { return flow->state(); }
    [[nodiscard]] std::string problem() const { return state().problem ? state().problem->title : ""; }

    void enter(GlucoseProvider provider, std::string_view password = "correct horse",
               std::string_view username = "ada@example.org", std::string_view region = "")
    {
        flow->setAccount(
            {.provider = provider,
             .username = std::string{username},
             .password = SecretText{password},
             .region = std::string{region.empty() ? (provider == dexcom ? "us" : "de") : region}});
    }

    /// Goes on as a person does who has nothing to change.
    void goTo(Step wanted, GlucoseProvider provider = dexcom)
    {
        for (int presses = 0; state().step != wanted && presses < 12; ++presses) {
            if (state().step == Step::terms)
                flow->setTermsAccepted(true);
            if (state().step == Step::account && !state().hasPassword)
                enter(provider);
            if (state().step == Step::person && !state().people.empty() && !state().patientID)
                flow->choosePerson(state().people.front().patientId);
            forward();
        }
        EXPECT_EQ(state().step, wanted) << problem();
    }

    [[nodiscard]] DexcomShareSimulator::Counters asked() { return services.dexcom("us").counters(); }
    template <class Change>
    void changeDexcom(Change change)
    {
        auto options = services.dexcom("us").options();
        change(options);
        services.dexcom("us").setOptions(std::move(options), clock.now());
    }
    template <class Change>
    void changeLibre(Change change)
    {
        auto options = services.libreLinkUp().options();
        change(options);
        services.libreLinkUp().setOptions(std::move(options), clock.now());
    }
    [[nodiscard]] std::string storedPassword(GlucoseProvider provider = dexcom)
    {
        const auto found =
            keychain->items.read("Tidewell.account", std::string{rawValue(provider)} + ":ada@example.org");
        const auto* secret = std::get_if<SecretText>(&found);
        return secret ? std::string{secret->reveal()} : "";
    }

    asio::io_context io{};
    asio::io_context disk{};
    bool diskIsSlow = false;  ///< Of the next process: saved history waits for serveDisk().
    FakeClock clock{io, start};
    SeededRandom random{7};
    SimulatedServices services;
    SimulatedHttpClient http{clock};
    const ServiceEndpoints endpoints =
        *ServiceEndpoints::parse(SimulatedServices::endpointsDocument("https://service.test"));
    TemporaryFolder folder{};
    std::shared_ptr<FaultyKeychain> keychain = std::make_shared<FaultyKeychain>();
    std::unique_ptr<ConfigurationManager> manager{};
    UserDefaults defaults{};
    FakeNotificationCenter center{clock};
    UserNotificationGlucoseAlertDelivery delivery{io.get_executor(), center, random};
    AlertPath alertPath{.serverAnswers = true, .soundOutput = true};
    bool alertPathBreaks = false;
    HistoryWorld world{};
    std::unique_ptr<HistoryCoordinator> history{};
    std::shared_ptr<FakeLoginItem> loginItem = std::make_shared<FakeLoginItem>();
    std::string country;
    int timesFinished = 0;
    int changes = 0;
    std::unique_ptr<OnboardingFlow> flow{};
    std::shared_ptr<void> token{};
};

TEST(OnboardingFlow, aNewcomerWithDexcomComesToAValueWithOneSignIn)
{
    Newcomer machine;
    const OnboardingState& state = machine.state();
    EXPECT_EQ(state.step, Step::welcome);
    EXPECT_FALSE(state.canGoBack);
    EXPECT_EQ(state.path, (Steps{Step::welcome, Step::terms, Step::account, Step::firstReading, Step::glucose,
                                 Step::alerts, Step::history, Step::login, Step::done}));

    machine.forward();
    EXPECT_FALSE(state.canGoForward) << "the terms are not accepted";
    machine.flow->setTermsAccepted(true);
    EXPECT_FALSE(hasAcceptedCurrentTerms(machine.defaults)) << "only going on accepts";
    machine.forward();
    EXPECT_TRUE(hasAcceptedCurrentTerms(machine.defaults));

    EXPECT_EQ(state.account.region, "us");
    EXPECT_FALSE(state.canGoForward);
    machine.enter(dexcom);
    EXPECT_TRUE(state.account.password.empty());
    machine.flow->goForward();
    EXPECT_TRUE(state.isBusy);
    EXPECT_TRUE(state.canGoBack);
    EXPECT_FALSE(state.canGoForward);
    machine.settle();

    ASSERT_EQ(state.step, Step::firstReading);
    ASSERT_TRUE(state.firstReading);
    EXPECT_EQ(state.firstReading->mgdL,
              machine.services.dexcom("us").readings().newest(Newcomer::start)->mgdL);
    EXPECT_EQ(machine.asked().authentications, 1);
    EXPECT_FALSE(machine.manager->account()) << "nothing is stored before the person has seen the value";
    const Date before = state.now;
    machine.clock.advance(Seconds{30});
    EXPECT_EQ(state.now - before, Seconds{30});

    machine.forward();
    EXPECT_EQ(machine.storedPassword(), "correct horse");
    EXPECT_EQ(state.step, Step::glucose);
    EXPECT_EQ(state.settings, AppSettings{});
    machine.forward();
    EXPECT_EQ(state.authorization, NotificationAuthorizationState::authorized);
    machine.forward();
    EXPECT_FALSE(state.savesHistory);
    machine.forward();
    machine.forward();
    EXPECT_EQ(state.step, Step::done);
    EXPECT_FALSE(machine.defaults.boolean(onboardingCompletedKey));
    EXPECT_EQ(machine.timesFinished, 0);

    machine.forward();
    EXPECT_TRUE(machine.defaults.boolean(onboardingCompletedKey));
    EXPECT_TRUE(machine.defaults.date(accountConfirmedAtKey));
    EXPECT_FALSE(machine.defaults.text(onboardingStepKey));
    EXPECT_EQ(machine.timesFinished, 1);
    machine.flow->goForward();
    machine.flow->goBack();
    EXPECT_EQ(machine.timesFinished, 1);
    EXPECT_EQ(machine.asked().authentications, 1);
    EXPECT_EQ(machine.world.files.files().size(), 1U) << "no history without consent";
}

TEST(OnboardingFlow, aNewcomerWithLibreLinkUpChoosesAPersonAndKeepsTheHomeRegion)
{
    SimulatedServices::Options options;
    options.libreLinkUp.accounts.front().people.push_back(
        {.patientId = "ben", .firstName = "Ben", .traceOffset = 20000});
    Newcomer machine{"GB", std::move(options)};
    const OnboardingState& state = machine.state();
    machine.goTo(Step::account);
    machine.enter(libreLinkUp);
    EXPECT_EQ(state.path.size(), 10U);
    machine.forward();

    ASSERT_EQ(state.step, Step::person);
    ASSERT_EQ(state.people.size(), 2U);
    EXPECT_FALSE(state.patientID) << "nobody is followed by default";
    EXPECT_FALSE(state.canGoForward);
    machine.flow->choosePerson("nobody");
    EXPECT_FALSE(state.canGoForward);
    machine.flow->choosePerson("ben");
    machine.forward();
    ASSERT_TRUE(state.firstReading);
    const auto ofBen = *state.firstReading;

    machine.back();
    EXPECT_EQ(state.patientID, "ben");
    machine.flow->choosePerson(LibrePerson{}.patientId);
    machine.forward();
    ASSERT_TRUE(state.firstReading);
    EXPECT_NE(state.firstReading->mgdL, ofBen.mgdL);

    machine.forward();
    ASSERT_TRUE(machine.manager->account());
    EXPECT_EQ(machine.manager->account()->region, "eu2");
    EXPECT_EQ(machine.manager->account()->patientID, LibrePerson{}.patientId);
    EXPECT_EQ(machine.manager->account()->patientName, "Grace Muster");
    EXPECT_EQ(state.settings.measurementUnit, "mmol/L");
    machine.goTo(Step::done);
    machine.forward();
    EXPECT_EQ(machine.timesFinished, 1);
    EXPECT_EQ(machine.manager->settings().measurementUnit, "mmol/L");
    EXPECT_EQ(machine.manager->settings().lowGlucoseThreshold, 72);
}

struct Trouble {
    const char* name;
    GlucoseProvider provider;
    std::function<void(Newcomer&)> cause;
    std::function<void(Newcomer&)> cure;
    Step step;                 ///< Where it shows.
    std::string_view mention;  ///< In one of the causes.
    bool mayGoOn = false;
    Seconds pause{0};  ///< Before the cure can work.
};

TEST(OnboardingFlow, whatKeepsASignInFromWorkingIsSaidAndItsCureWorks)
{
    using Fault = ServiceFault::Kind;
    const auto offline = [](std::optional<HttpError::Kind> kind) {
        return [kind](Newcomer& machine) { machine.http.setFailure(kind); };
    };
    const auto dexcomReads = [](bool empty) {
        return [empty](Newcomer& machine) {
            machine.changeDexcom([&](DexcomShareOptions& options) { options.readings.empty = empty; });
        };
    };
    const auto step = [](std::string pending) {
        return [pending](Newcomer& machine) {
            machine.changeLibre([&](LibreLinkUpOptions& options) { options.pendingStep = pending; });
        };
    };
    const auto sharing = [](bool shares) {
        return [shares](Newcomer& machine) {
            machine.changeLibre([&](LibreLinkUpOptions& options) { options.removed = !shares; });
        };
    };
    const auto graphs = [](Fault kind) {
        return [kind](Newcomer& machine) {
            machine.changeLibre(
                [&](LibreLinkUpOptions& options) { options.graph = {.kind = kind, .status = 503}; });
        };
    };
    const std::vector<Trouble> troubles{
        {"wrong password", dexcom, [](Newcomer& m) { m.enter(dexcom, "wrong"); },
         [](Newcomer& m) { m.enter(dexcom); }, Step::account, "mistyped"},
        {"wrong region", dexcom,
         [](Newcomer& m) { m.enter(dexcom, "correct horse", "ada@example.org", "ous"); },
         [](Newcomer& m) { m.enter(dexcom); }, Step::account, "region"},
        {"phone number without country", dexcom,
         [](Newcomer& m) { m.enter(dexcom, "correct horse", "0170123456"); },
         [](Newcomer& m) { m.enter(dexcom); }, Step::account, "country code"},
        {"unknown region", dexcom, [](Newcomer& m) { m.enter(dexcom, "x", "ada@example.org", "mars"); },
         [](Newcomer& m) { m.enter(dexcom); }, Step::account, "region"},
        {"offline", dexcom, offline(HttpError::Kind::cannotResolve), offline({}), Step::account, "internet"},
        {"captive portal", dexcom, offline(HttpError::Kind::tls), offline({}), Step::account,
         "time of this computer"},
        {"no follower", dexcom, dexcomReads(true), dexcomReads(false), Step::firstReading, "follower", true},
        {"wrong password", libreLinkUp, [](Newcomer& m) { m.enter(libreLinkUp, "wrong"); },
         [](Newcomer& m) { m.enter(libreLinkUp); }, Step::account, "mistyped"},
        {"terms pending", libreLinkUp, step("tou"), step(""), Step::account, "terms"},
        {"privacy notice pending", libreLinkUp, step("pp"), step(""), Step::account, "privacy notice"},
        {"address not confirmed", libreLinkUp, step("verifyEmail"), step(""), Step::account, "confirmed"},
        {"locked", libreLinkUp,
         [](Newcomer& m) { m.changeLibre([](LibreLinkUpOptions& options) { options.locked = true; }); },
         [](Newcomer& m) { m.changeLibre([](LibreLinkUpOptions& options) { options.locked = false; }); },
         Step::account, "locked", false, Seconds{300}},
        {"nobody shares", libreLinkUp, sharing(false), sharing(true), Step::person, "invited"},
        {"in trouble", libreLinkUp, graphs(Fault::html), graphs(Fault::none), Step::firstReading,
         "maintenance", true},
    };
    for (const Trouble& trouble : troubles) {
        SCOPED_TRACE(fmt::format("{} {}", rawValue(trouble.provider), trouble.name));
        Newcomer machine;
        const OnboardingState& state = machine.state();
        machine.goTo(Step::account);
        machine.enter(trouble.provider);
        trouble.cause(machine);
        machine.forward();
        if (trouble.step == Step::firstReading && trouble.provider == libreLinkUp)
            machine.forward();

        EXPECT_EQ(state.step, trouble.step);
        ASSERT_TRUE(state.problem);
        EXPECT_TRUE(std::ranges::any_of(state.problem->causes, [&](const std::string& cause) {
            return cause.contains(trouble.mention);
        })) << fmt::format("{}", fmt::join(state.problem->causes, "\n"));
        EXPECT_FALSE(state.isBusy);
        EXPECT_FALSE(machine.manager->account());
        EXPECT_EQ(state.canGoForward, trouble.step == Step::account || trouble.mayGoOn);

        trouble.cure(machine);
        machine.clock.advance(trouble.pause);
        trouble.step == Step::account ? machine.flow->goForward() : machine.flow->tryAgain();
        machine.settle();
        EXPECT_EQ(machine.problem(), "");
        machine.goTo(Step::firstReading);
        EXPECT_TRUE(state.firstReading);
        EXPECT_EQ(machine.problem(), "");
    }
}

TEST(OnboardingFlow, anAccountThatWorksMayBeUsedWithoutAValue)
{
    Newcomer machine;
    machine.changeDexcom([](DexcomShareOptions& options) { options.readings.empty = true; });
    machine.goTo(Step::firstReading);
    EXPECT_EQ(machine.problem(), noReadingsProblem(dexcom).title);
    machine.http.setFailure(HttpError::Kind::cannotResolve);
    machine.flow->tryAgain();
    machine.settle();
    EXPECT_EQ(machine.problem(), "The service could not be reached");
    EXPECT_FALSE(machine.state().isProblemOfStoring);
    machine.forward();
    EXPECT_EQ(machine.state().step, Step::glucose) << "saving needs no network";
    EXPECT_EQ(machine.storedPassword(), "correct horse");
}

TEST(OnboardingFlow, refusedCredentialsAreSentTwiceAtMost)
{
    Newcomer machine;
    const OnboardingState& state = machine.state();
    machine.goTo(Step::account);
    machine.enter(dexcom, "wrong");
    for (int press = 0; press < 5; ++press)
        machine.forward();
    EXPECT_EQ(machine.asked().authentications, 2);
    EXPECT_TRUE(state.problem && state.problem->remedy.contains("not sent again"));
    machine.clock.advance(1h);
    EXPECT_EQ(machine.asked().authentications, 2) << "nothing is sent without the person";
    machine.forward();
    EXPECT_EQ(machine.asked().authentications, 3) << "what locked the account is over";

    machine.enter(dexcom, "wrong too");
    EXPECT_EQ(machine.problem(), "");
    machine.forward();
    EXPECT_EQ(machine.asked().authentications, 4);

    // A locked account is left alone at once.
    machine.changeDexcom([](DexcomShareOptions& options) {
        options.authenticate = {.kind = ServiceFault::Kind::error, .code = options.lockedCode};
    });
    machine.enter(dexcom, "wrong again");
    for (int press = 0; press < 3; ++press)
        machine.forward();
    EXPECT_EQ(machine.asked().authentications, 5);
    EXPECT_EQ(machine.problem(), "The account is locked for a while");

    // So is a service that asks to wait, whatever is typed meanwhile.
    const auto logins = [&] { return machine.services.libreLinkUp().counters().logins; };
    machine.changeLibre([](LibreLinkUpOptions& options) { options.locked = true; });
    machine.enter(libreLinkUp);
    machine.forward();
    const auto before = logins();
    machine.enter(libreLinkUp, "another one");
    machine.forward();
    EXPECT_EQ(logins(), before);
    EXPECT_TRUE(state.problem && state.problem->remedy.contains("5 minutes")) << state.problem->remedy;
    machine.clock.advance(4min);
    machine.forward();
    EXPECT_EQ(logins(), before);
    EXPECT_TRUE(state.problem && state.problem->remedy.contains("1 minute,")) << state.problem->remedy;
}

TEST(OnboardingFlow, refusalsAreCountedForTheAccountAndBeyondTheWindow)
{
    Newcomer machine;
    const OnboardingState& state = machine.state();
    const auto tryPassword = [&](std::string_view password) {
        machine.enter(dexcom, password);
        machine.forward();
    };
    machine.goTo(Step::account);
    for (int round = 0; round < 4; ++round) {
        tryPassword("wrong");
        machine.flow->close();
        machine.flow->begin();
        machine.settle();
    }
    EXPECT_EQ(machine.asked().authentications, 2);
    for (int round = 0; round < 6; ++round)
        tryPassword(round % 2 == 0 ? "wronger" : "wrong");
    EXPECT_EQ(machine.asked().authentications, 4);
    EXPECT_EQ(machine.problem(), "The sign-in was refused");
    tryPassword("wrongest");
    EXPECT_EQ(machine.asked().authentications, 5);
    const Date first = machine.clock.now();
    tryPassword("who knows");
    EXPECT_EQ(machine.asked().authentications, 5);
    EXPECT_EQ(machine.problem(), "Too many refused sign-ins");
    EXPECT_TRUE(state.problem->remedy.contains("minutes, then")) << state.problem->remedy;
    machine.enter(dexcom, "wrong", "grace@example.org");
    machine.forward();
    EXPECT_EQ(machine.asked().authentications, 6) << "another account is not to blame";

    machine.clock.advance(first + 15min - machine.clock.now());
    tryPassword("correct horse");
    ASSERT_EQ(state.step, Step::firstReading) << machine.problem();
    machine.forward();

    // A stored password that the service refuses is not sent anew whenever the window opens.
    machine.back();
    machine.changeDexcom([](DexcomShareOptions& options) { options.refusePasswords = true; });
    machine.services.dexcom("us").endSessions();
    machine.flow->tryAgain();
    machine.settle();
    const auto before = machine.asked().authentications;
    for (int round = 0; round < 3; ++round) {
        machine.flow->close();
        machine.flow->begin();
        machine.settle();
        EXPECT_EQ(state.step, Step::firstReading);
        EXPECT_EQ(machine.problem(), "The sign-in was refused");
        EXPECT_FALSE(state.canGoForward);
    }
    EXPECT_EQ(machine.asked().authentications, before);
    machine.changeDexcom([](DexcomShareOptions& options) { options.refusePasswords = false; });
    machine.flow->tryAgain();
    machine.settle();
    EXPECT_TRUE(state.firstReading && state.canGoForward);
}

TEST(OnboardingFlow, aPasswordThatWasRefusedLaterKeepsThePersonFromGoingOn)
{
    Newcomer machine;
    machine.goTo(Step::firstReading);
    machine.changeDexcom([](DexcomShareOptions& options) { options.refusePasswords = true; });
    machine.services.dexcom("us").endSessions();
    machine.flow->tryAgain();
    machine.settle();
    EXPECT_EQ(machine.problem(), "The sign-in was refused");
    EXPECT_FALSE(machine.state().canGoForward);
    EXPECT_FALSE(machine.state().firstReading) << "a value of before would look as if all were well";
    machine.back();
    EXPECT_EQ(machine.state().step, Step::account);

    machine.changeDexcom([](DexcomShareOptions& options) { options.refusePasswords = false; });
    machine.forward();
    EXPECT_EQ(machine.state().step, Step::firstReading);
    EXPECT_TRUE(machine.state().firstReading && machine.state().canGoForward);
}

TEST(OnboardingFlow, aPersonWhoNoLongerSharesIsNotOfferedAgain)
{
    Newcomer machine;
    machine.goTo(Step::firstReading, libreLinkUp);
    machine.changeLibre([](LibreLinkUpOptions& options) { options.removed = true; });
    machine.flow->tryAgain();
    machine.settle();
    EXPECT_EQ(machine.problem(), "This person no longer shares");
    EXPECT_FALSE(machine.state().canGoForward);
    machine.back();
    EXPECT_EQ(machine.problem(), nobodySharesProblem().title);
    EXPECT_FALSE(machine.state().canGoForward);
    machine.changeLibre([](LibreLinkUpOptions& options) { options.removed = false; });
    machine.flow->tryAgain();
    machine.settle();
    EXPECT_EQ(machine.state().patientID, LibrePerson{}.patientId);
    machine.forward();
    EXPECT_TRUE(machine.state().firstReading);
}

TEST(OnboardingFlow, whatKeepsTheAccountFromBeingStoredIsSaidAndNothingIsLost)
{
    Newcomer machine;
    machine.goTo(Step::firstReading);
    machine.keychain->failAlways = true;
    machine.forward();
    EXPECT_EQ(machine.state().step, Step::firstReading);
    EXPECT_EQ(machine.problem(), "The account could not be saved");
    EXPECT_TRUE(machine.state().isProblemOfStoring);
    EXPECT_FALSE(machine.manager->account());
    EXPECT_TRUE(machine.state().firstReading);
    EXPECT_EQ(machine.asked().authentications, 1);

    machine.keychain->failAlways = false;
    {
        const FullDisk disk;
        machine.forward();
        EXPECT_EQ(machine.problem(), "The account could not be saved");
    }
    machine.forward();
    EXPECT_EQ(machine.storedPassword(), "correct horse");
    {
        const FullDisk disk;
        machine.flow->setSettings({.lowGlucoseThreshold = 80});
        machine.forward();
        EXPECT_EQ(machine.state().step, Step::glucose);
        EXPECT_EQ(machine.problem(), "The settings could not be saved");
        EXPECT_EQ(machine.state().settings.lowGlucoseThreshold, 80);
        EXPECT_TRUE(machine.state().isProblemOfStoring);
    }
    machine.forward();
    EXPECT_FALSE(machine.state().isProblemOfStoring);
    EXPECT_EQ(machine.manager->settings().lowGlucoseThreshold, 80);
    EXPECT_EQ(machine.asked().authentications, 1);
}

TEST(OnboardingFlow, aClosedWindowGoesOnWhereItWas)
{
    for (const GlucoseProvider provider : allGlucoseProviders) {
        for (const Step step : {Step::welcome, Step::terms, Step::account, Step::person, Step::firstReading,
                                Step::glucose, Step::alerts, Step::history, Step::login, Step::done}) {
            if (step == Step::person && provider == dexcom)
                continue;
            for (const bool otherProcess : {false, true}) {
                SCOPED_TRACE(
                    fmt::format("{} {} {}", rawValue(provider), static_cast<int>(step), otherProcess));
                Newcomer machine;
                machine.goTo(step, provider);
                machine.flow->close();
                EXPECT_FALSE(machine.state().hasPassword);
                machine.flow->goForward();
                machine.settle();
                EXPECT_EQ(machine.state().step, step) << "a closed window does nothing";
                otherProcess ? machine.launch() : machine.flow->begin();
                machine.settle();
                // What was not stored is asked for again.
                const bool stored = step >= Step::glucose;
                EXPECT_EQ(machine.state().step, stored ? step : std::min(step, Step::account));
                EXPECT_EQ(machine.state().hasPassword, stored);
                machine.goTo(Step::done, provider);
                machine.forward();
                EXPECT_EQ(machine.timesFinished, 1);
            }
        }
    }
}

TEST(OnboardingFlow, aStepIsReachedAgainOnlyWhileWhatItNeedsHolds)
{
    Newcomer machine;
    machine.goTo(Step::alerts, libreLinkUp);
    const auto reachedWith = [&](auto change) {
        machine.flow->close();
        machine.defaults.set(onboardingStepKey, "alerts");
        change();
        machine.launch();
        return machine.state().step;
    };
    EXPECT_EQ(reachedWith([] {}), Step::alerts);
    EXPECT_EQ(reachedWith([&] { machine.defaults.set(onboardingStepKey, "nonsense"); }), Step::welcome);
    EXPECT_EQ(reachedWith([&] { machine.defaults.set(onboardingStepKey, "firstReading"); }),
              Step::firstReading);
    EXPECT_TRUE(machine.state().firstReading);
    EXPECT_EQ(reachedWith([&] { machine.defaults.set(acceptedTermsVersionKey, "0"); }), Step::terms);
    EXPECT_FALSE(machine.state().termsAccepted);
    acceptTerms(machine.defaults, machine.clock.now());

    auto account = *machine.manager->account();
    account.patientID.reset();
    EXPECT_EQ(reachedWith([&] {
                  asio::co_spawn(machine.io, machine.manager->saveAccount(account), asio::detached);
                  machine.settle();
              }),
              Step::person);
    EXPECT_EQ(machine.state().people.size(), 1U) << "the people are asked for";
    EXPECT_EQ(machine.state().patientID, LibrePerson{}.patientId) << "who is alone is marked";

    EXPECT_EQ(reachedWith([&] { machine.keychain->failAlways = true; }), Step::account);
    EXPECT_EQ(machine.problem(), passwordNeededProblem().title);
    EXPECT_EQ(machine.state().account.username, "ada@example.org");
    machine.keychain->failAlways = false;
    EXPECT_EQ(reachedWith([&] {
                  asio::co_spawn(machine.io, machine.manager->saveAccount(std::nullopt), asio::detached);
                  machine.settle();
              }),
              Step::account);
    EXPECT_EQ(machine.problem(), "");
}

TEST(OnboardingFlow, nothingIsShownAsStoredBeforeTheConfigurationIsLoaded)
{
    Newcomer machine;
    machine.goTo(Step::alerts);
    machine.make();
    machine.flow->begin();
    EXPECT_TRUE(machine.state().isBusy);
    EXPECT_FALSE(machine.state().canGoForward);
    EXPECT_EQ(machine.defaults.text(onboardingStepKey), "alerts");
    machine.settle();
    EXPECT_EQ(machine.state().step, Step::alerts);
    EXPECT_EQ(machine.state().account.username, "ada@example.org");
    EXPECT_FALSE(machine.state().isBusy);

    machine.make();
    machine.flow->begin();
    machine.flow->close();
    const int changes = machine.changes;
    machine.settle();
    EXPECT_EQ(machine.changes, changes);
    EXPECT_EQ(machine.defaults.text(onboardingStepKey), "alerts");
}

/// Everything that a person may do while something is under way.
enum class Interruption { back, close, otherAccount, destroy };

/// Runs so many turns of everything that is ready; false when there are not so many.
bool runTurns(Newcomer& machine, int turns)
{
    for (int turn = 0; turn < turns; ++turn) {
        machine.io.restart();
        if (machine.io.poll_one() == 0)
            return false;
    }
    return true;
}

TEST(OnboardingFlow, whatIsGivenUpBringsNothingAnyMore)
{
    constexpr std::array all{Interruption::back, Interruption::close, Interruption::otherAccount,
                             Interruption::destroy};
    for (const auto& [from, provider] : {std::pair{Step::account, dexcom},
                                         {Step::account, libreLinkUp},
                                         {Step::person, libreLinkUp},
                                         {Step::firstReading, dexcom}}) {
        for (const auto what : all) {
            if (what == Interruption::otherAccount && from != Step::account)
                continue;  // There are no fields to change.
            // Between any two turns of what going on takes.
            int turns = 0;
            for (;; ++turns) {
                SCOPED_TRACE(fmt::format("{} {} {} {}", rawValue(provider), static_cast<int>(from),
                                         static_cast<int>(what), turns));
                Newcomer machine;
                machine.http.setLatency(Seconds{0});
                machine.goTo(from, provider);
                if (from == Step::account)
                    machine.enter(provider);
                machine.flow->goForward();
                const Step reached = machine.state().step;
                // A person's values are read in the step after, as soon as it is shown.
                EXPECT_EQ(reached, from == Step::person ? Step::firstReading : from);
                if (!runTurns(machine, turns) || !machine.state().isBusy)
                    break;
                switch (what) {
                case Interruption::back: machine.flow->goBack(); break;
                case Interruption::close: machine.flow->close(); break;
                case Interruption::otherAccount: machine.enter(dexcom, "other", "grace"); break;
                case Interruption::destroy: machine.flow.reset(); break;
                }
                const int changes = machine.changes;
                machine.settle();
                if (from != Step::firstReading)  // A save that was begun ends, and is told.
                    EXPECT_EQ(machine.changes, changes) << "nothing changes by itself any more";
                if (what == Interruption::destroy)
                    continue;
                EXPECT_EQ(machine.state().step, what != Interruption::back ? reached
                                                : reached == Step::account ? Step::terms
                                                : provider == dexcom       ? Step::account
                                                                           : Step::person);
                EXPECT_FALSE(machine.state().isBusy || machine.state().problem);
                if (what == Interruption::close)
                    machine.flow->begin();
                machine.settle();
                if (what == Interruption::otherAccount)
                    machine.enter(provider);
                machine.goTo(Step::firstReading, provider);
                EXPECT_TRUE(machine.state().firstReading);
            }
            EXPECT_GE(turns, 4) << "there was nothing to interrupt";
        }
    }
}

TEST(OnboardingFlow, whatIsStoredWhileThePersonGoesBackIsSeenAgainAsItIs)
{
    struct Beginning {
        Step step;
        std::function<void(OnboardingFlow&)> act;
    };
    const std::vector<Beginning> beginnings{
        {Step::glucose, [](OnboardingFlow& flow) { flow.goForward(); }},
        {Step::alerts, [](OnboardingFlow& flow) { flow.sendTestAlert(); }},
        {Step::history,
         [](OnboardingFlow& flow) {
             flow.setSavesHistory(true);
             flow.goForward();
         }},
        {Step::login, [](OnboardingFlow& flow) { flow.setStartsAtLogin(true); }},
    };
    for (const Beginning& beginning : beginnings) {
        int turns = 0;
        for (;; ++turns) {
            SCOPED_TRACE(fmt::format("{} {}", static_cast<int>(beginning.step), turns));
            Newcomer machine;
            const OnboardingState& state = machine.state();
            machine.goTo(beginning.step);
            beginning.act(*machine.flow);
            if (!runTurns(machine, turns) || state.step != beginning.step ||
                !(state.isBusy || state.isSendingTestAlert))
                break;
            machine.flow->goBack();
            const Step before = state.step;
            EXPECT_LT(before, beginning.step);
            machine.settle();
            EXPECT_EQ(state.step, before);
            EXPECT_FALSE(state.isBusy || state.isSendingTestAlert || state.problem);
            EXPECT_EQ(state.testAlertAnswer, Answer::none);
            machine.goTo(beginning.step);
            EXPECT_EQ(state.startsAtLogin, machine.loginItem->is.isEnabled);
            EXPECT_EQ(state.settings, machine.manager->settings());
        }
        EXPECT_GE(turns, 2) << "there was nothing to interrupt";
    }
}

TEST(OnboardingFlow, namesAndPasswordsArriveAsTheyWereMeant)
{
    const std::string longOne(1000, 'x');
    const std::string foreign = "pässwörd \U0001F4A7\" \\ ";
    for (const std::string& password : {longOne, foreign, std::string{" spaces count "}}) {
        for (const std::string_view name : {"ada@example.org", "  ada@example.org\n", "\r\nada@example.org ",
                                            "\u00A0ada@example.org\u200B", "\tada@exam\nple.org"}) {
            SimulatedServices::Options options;
            options.dexcom.accounts.front().password = password;
            Newcomer machine{"US", std::move(options)};
            machine.goTo(Step::account);
            machine.enter(dexcom, password + (name.contains('\n') ? "\r\n" : ""), name);
            EXPECT_EQ(machine.state().account.username, "ada@example.org");
            machine.forward();
            EXPECT_EQ(machine.state().step, Step::firstReading) << machine.problem();
            machine.forward();
            EXPECT_EQ(machine.storedPassword(), password);
            EXPECT_FALSE(bytesOf(machine.folder / "configuration.json").contains(password.substr(0, 8)));
        }
    }
    Newcomer machine;
    machine.goTo(Step::account);
    machine.enter(dexcom, "secret", " \n ");
    EXPECT_FALSE(machine.state().canGoForward);
    // What was typed and taken out again is no password.
    machine.enter(dexcom, "s");
    machine.enter(dexcom, "");
    EXPECT_FALSE(machine.state().canGoForward);
}

TEST(OnboardingFlow, thePasswordThatIsKnownNeedNotBeTypedAgain)
{
    Newcomer machine;
    machine.goTo(Step::glucose);
    machine.back();
    machine.back();
    ASSERT_EQ(machine.state().step, Step::account);
    machine.enter(dexcom, "");
    EXPECT_TRUE(machine.state().hasPassword);
    machine.enter(dexcom, "", "grace");
    EXPECT_FALSE(machine.state().hasPassword);
    machine.enter(libreLinkUp, "");
    EXPECT_FALSE(machine.state().hasPassword) << "another service's account of the same name";
    machine.enter(dexcom, "");
    machine.forward();
    EXPECT_EQ(machine.state().step, Step::firstReading);
    EXPECT_LE(machine.asked().authentications, 2);
}

TEST(OnboardingFlow, onlyWhatThePickersOfferIsTaken)
{
    Newcomer machine;
    machine.goTo(Step::glucose);
    const AppSettings& settings = machine.state().settings;
    const auto set = [&](auto change) {
        AppSettings wanted = settings;
        change(wanted);
        machine.flow->setSettings(wanted);
    };
    const AppSettings before = settings;
    for (const double refused : {64.0, 91.0, 72.5, std::nan(""), 0.0})
        set([&](AppSettings& wanted) { wanted.lowGlucoseThreshold = refused; });
    for (const double refused : {107.0, 361.0, 180.5})
        set([&](AppSettings& wanted) { wanted.highGlucoseThreshold = refused; });
    set([](AppSettings& wanted) { wanted.measurementUnit = "stones"; });
    set([](AppSettings& wanted) { wanted.quietHoursEnabled = true; });
    EXPECT_EQ(settings, before);

    set([](AppSettings& wanted) { wanted.lowGlucoseThreshold = 80, wanted.highGlucoseThreshold = 181; });
    set([](AppSettings& wanted) { wanted.measurementUnit = "mmol/L"; });
    EXPECT_EQ(settings.lowGlucoseThreshold, 79) << "4.4 mmol/L";
    EXPECT_EQ(settings.highGlucoseThreshold, 180) << "10.0 mmol/L";
    set([](AppSettings& wanted) { wanted.alertOnRapidRise = false; });
    machine.goTo(Step::history);
    EXPECT_EQ(machine.manager->settings(), settings);
    EXPECT_FALSE(machine.manager->settings().alertOnRapidRise);
}

TEST(OnboardingFlow, whatOthersChangeMeanwhileStaysWhereNothingElseWasChosen)
{
    for (const bool noticed : {true, false}) {
        Newcomer machine{"GB"};
        const AppSettings& settings = machine.state().settings;
        machine.goTo(Step::glucose);
        EXPECT_EQ(settings.measurementUnit, "mmol/L") << "as in this country";
        AppSettings wanted = settings;
        wanted.lowGlucoseThreshold = 79;
        wanted.alertOnRapidFall = false;
        machine.flow->setSettings(wanted);

        ConfigurationManager other{
            machine.io.get_executor(),
            machine.io.get_executor(),
            {.document = machine.folder / "configuration.json", .keychain = machine.keychain}};
        ConfigurationManager& changer = noticed ? *machine.manager : other;
        asio::co_spawn(machine.io, other.load(), asio::detached);
        machine.settle();
        const AppSettings before = changer.settings();
        AppSettings after = before;
        after.lowGlucoseThreshold = 75;
        after.alertOnHighThreshold = false;
        after.quietHoursEnabled = true;
        after.graphTimeWindowHours = 12;
        asio::co_spawn(machine.io, changer.changeSettings(before, after), asio::detached);
        machine.settle();
        EXPECT_EQ(settings.alertOnHighThreshold, !noticed);
        EXPECT_EQ(settings.lowGlucoseThreshold, 79) << "chosen here";
        EXPECT_EQ(settings.measurementUnit, "mmol/L");
        machine.forward();

        AppSettings all = after;
        all.measurementUnit = "mmol/L";
        all.lowGlucoseThreshold = 79;
        all.alertOnRapidFall = false;
        all.highGlucoseThreshold = settings.highGlucoseThreshold;
        EXPECT_EQ(machine.manager->settings(), all);
        EXPECT_EQ(settings, all);
    }
}

TEST(OnboardingFlow, aTestAlertAsksWhetherItWasSeen)
{
    Newcomer machine;
    const OnboardingState& state = machine.state();
    machine.center.state = NotificationAuthorizationState::notDetermined;
    machine.center.delay = 1s;
    machine.goTo(Step::alerts);
    EXPECT_EQ(state.authorization, NotificationAuthorizationState::notDetermined);
    EXPECT_TRUE(std::ranges::none_of(state.alertFindings, [](const AlertFinding& finding) {
        return finding.severity == AlertFinding::Severity::good;
    }));
    machine.flow->answerTestAlert(true);
    EXPECT_EQ(state.testAlertAnswer, Answer::none) << "none was sent";

    machine.flow->sendTestAlert();
    machine.flow->sendTestAlert();
    EXPECT_TRUE(state.isSendingTestAlert);
    EXPECT_EQ(state.testAlertMessage, "Sending test alert");
    machine.settle();
    EXPECT_EQ(machine.center.posted.size(), 1U);
    EXPECT_EQ(state.testAlertMessage, "Test alert sent.");
    EXPECT_EQ(state.testAlertAnswer, Answer::asked);
    EXPECT_EQ(state.authorization, NotificationAuthorizationState::authorized);

    machine.alertPath.inhibited = true;
    machine.flow->answerTestAlert(false);
    machine.settle();
    EXPECT_EQ(state.testAlertAnswer, Answer::notSeen);
    ASSERT_FALSE(state.alertFindings.empty());
    EXPECT_EQ(state.alertFindings.front().subject, "doNotDisturb");

    machine.center.state = NotificationAuthorizationState::denied;
    machine.flow->sendTestAlert();
    machine.settle();
    EXPECT_EQ(state.testAlertMessage, "Notifications are disabled.");
    EXPECT_EQ(state.testAlertAnswer, Answer::none);
    EXPECT_EQ(state.authorization, NotificationAuthorizationState::denied);

    machine.flow->sendTestAlert();
    machine.flow->goForward();
    machine.settle();
    EXPECT_EQ(state.step, Step::history) << "a test alert under way holds up nobody";
    EXPECT_FALSE(state.isSendingTestAlert);
}

TEST(OnboardingFlow, historyIsSavedWithConsentOnly)
{
    Newcomer machine;
    const OnboardingState& state = machine.state();
    const auto isOn = [&] { return machine.history->status().configuration.isEnabled; };
    machine.goTo(Step::history);
    machine.flow->setSavesHistory(true);
    EXPECT_FALSE(isOn()) << "not before the step is left";

    machine.world.plan = {.kind = FaultPlan::Kind::error,
                          .at = 1,
                          .forEver = true,
                          .error = std::make_error_code(std::errc::no_space_on_device)};
    machine.forward();
    EXPECT_EQ(state.step, Step::history);
    EXPECT_EQ(machine.problem(), "Saving could not be switched on");
    machine.world.plan = {};
    machine.forward();
    EXPECT_EQ(state.step, Step::login);
    EXPECT_TRUE(isOn());
    EXPECT_EQ(machine.history->status().configuration.retentionDays, 90);
    EXPECT_EQ(machine.history->status().configuration.consentVersion, currentConsentVersion);

    // Another process goes on, and shows what was decided; taking it back pauses.
    machine.launch();
    machine.back();
    EXPECT_TRUE(machine.state().savesHistory);
    machine.flow->setSavesHistory(false);
    machine.forward();
    EXPECT_FALSE(isOn());
    EXPECT_EQ(machine.state().step, Step::login);
}

TEST(OnboardingFlow, aHistoryThatWasPausedIsKeptAsLongAsBefore)
{
    Newcomer machine;
    machine.goTo(Step::history);
    asio::co_spawn(machine.io, machine.history->enable(30, currentConsentVersion), asio::detached);
    asio::co_spawn(machine.io, machine.history->pause(), asio::detached);
    machine.settle();
    EXPECT_FALSE(machine.state().savesHistory);
    machine.flow->setSavesHistory(true);
    machine.forward();
    EXPECT_TRUE(machine.history->status().configuration.isEnabled);
    EXPECT_EQ(machine.history->status().configuration.retentionDays, 30);
}

TEST(OnboardingFlow, consentThatIsTakenBackHoldsWhateverIsStillUnderWay)
{
    Newcomer machine;
    machine.goTo(Step::history);
    machine.diskIsSlow = true;
    machine.launch();
    machine.serveDisk();
    ASSERT_EQ(machine.state().step, Step::history);
    const auto mark = machine.history->mark();
    machine.flow->setSavesHistory(true);
    machine.forward();
    EXPECT_TRUE(machine.state().isBusy);
    machine.back();
    machine.forward();
    machine.flow->setSavesHistory(false);
    machine.forward();
    machine.serveDisk();
    EXPECT_EQ(machine.state().step, Step::login);
    EXPECT_FALSE(machine.history->status().configuration.isEnabled);
    EXPECT_EQ(machine.history->mark(), mark) << "the same account is followed once";

    // Saving is on, and the next process does not know it yet.
    machine.back();
    machine.flow->setSavesHistory(true);
    machine.flow->goForward();
    machine.serveDisk();
    machine.back();
    ASSERT_TRUE(machine.history->status().configuration.isEnabled);
    machine.launch();
    machine.flow->setSavesHistory(false);
    machine.forward();
    machine.serveDisk();
    EXPECT_FALSE(machine.history->status().configuration.isEnabled);
    EXPECT_EQ(machine.state().step, Step::login);
}

TEST(OnboardingFlow, withoutConsentNoFaultOfSavedHistoryHoldsUpAnybody)
{
    Newcomer machine;
    machine.goTo(Step::history);
    machine.world.plan = {.kind = FaultPlan::Kind::error,
                          .at = 1,
                          .forEver = true,
                          .error = std::make_error_code(std::errc::io_error)};
    machine.forward();
    EXPECT_EQ(machine.state().step, Step::login);
}

TEST(OnboardingFlow, whatBreaksIsToldAndHoldsUpNobody)
{
    Newcomer machine;
    const OnboardingState& state = machine.state();
    machine.alertPathBreaks = true;
    machine.goTo(Step::alerts);
    EXPECT_EQ(state.authorization, NotificationAuthorizationState::authorized);
    machine.alertPathBreaks = false;
    machine.alertPath.inhibited = true;
    machine.flow->begin();  // The window came to the front.
    machine.settle();
    ASSERT_FALSE(state.alertFindings.empty());
    EXPECT_EQ(state.alertFindings.front().subject, "doNotDisturb");

    machine.goTo(Step::login);
    machine.loginItem->breaks = true;
    machine.flow->setStartsAtLogin(true);
    machine.settle();
    EXPECT_FALSE(state.isBusy || state.startsAtLogin);
    EXPECT_NE(state.loginItemProblem, "");
    machine.goTo(Step::done);
}

TEST(OnboardingFlow, theLoginItemShowsWhatIsSo)
{
    Newcomer machine;
    const OnboardingState& state = machine.state();
    machine.goTo(Step::login);
    EXPECT_FALSE(state.startsAtLogin);
    machine.loginItem->failure = "The folder cannot be written to.";
    machine.flow->setStartsAtLogin(true);
    machine.settle();
    EXPECT_FALSE(state.startsAtLogin);
    EXPECT_EQ(state.loginItemProblem, "The folder cannot be written to.");

    machine.loginItem->failure.clear();
    machine.flow->setStartsAtLogin(true);
    EXPECT_TRUE(state.isBusy);
    machine.settle();
    EXPECT_TRUE(state.startsAtLogin);
    EXPECT_EQ(state.loginItemProblem, "");
    // The last of several wishes counts.
    for (const bool wish : {false, true, false})
        machine.flow->setStartsAtLogin(wish);
    machine.settle();
    EXPECT_FALSE(state.startsAtLogin || machine.loginItem->is.isEnabled || state.isBusy);
    machine.flow->setStartsAtLogin(true);
    machine.settle();

    machine.loginItem->is.isEnabled = false;  // Someone removed it.
    machine.flow->begin();
    EXPECT_TRUE(state.canGoForward) << "a look holds up nobody";
    machine.settle();
    EXPECT_FALSE(state.startsAtLogin);
    machine.flow->setStartsAtLogin(true);
    machine.settle();
    machine.forward();
    EXPECT_TRUE(machine.manager->settings().startAtLogin);
}

TEST(OnboardingFlow, finishingHoldsWhateverOtherProcessesDid)
{
    Newcomer machine;
    machine.goTo(Step::done);
    asio::co_spawn(machine.io, machine.manager->saveAccount(std::nullopt), asio::detached);
    machine.settle();
    machine.forward();
    EXPECT_EQ(machine.state().step, Step::account) << "signed out elsewhere";
    EXPECT_FALSE(machine.defaults.boolean(onboardingCompletedKey));

    machine.enter(dexcom);
    machine.goTo(Step::done);
    machine.defaults.set(acceptedTermsVersionKey, "0");
    machine.forward();
    EXPECT_EQ(machine.state().step, Step::terms);
    EXPECT_FALSE(machine.state().canGoForward);

    machine.goTo(Step::alerts);
    machine.defaults.set(onboardingCompletedKey, true);  // Signed in from a terminal.
    machine.goTo(Step::done);
    machine.forward();
    EXPECT_EQ(machine.timesFinished, 1);
    machine.flow->close();
    machine.flow->begin();
    EXPECT_EQ(machine.state().step, Step::welcome) << "the steps may be gone through again";
    machine.goTo(Step::done);
    machine.forward();
    EXPECT_EQ(machine.timesFinished, 2);
}

}  // namespace
}  // namespace tidewell
