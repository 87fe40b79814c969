#pragma once

#include "polling/FakeNotificationCenter.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"

namespace tidewell {

/// A service that answers what the test says, after as long as the test says.
class ScriptedGlucoseAPI final : public GlucoseAPIProtocol {
public:
    using Fetched = std::expected<std::vector<GlucoseReading>, GlucoseAPIError>;
    using SignedIn = std::expected<void, GlucoseAPIError>;

    explicit ScriptedGlucoseAPI(Clock& clock) : clock_{clock} {}

    std::function<Fetched()> onFetch{};
    std::function<SignedIn()> onSignIn = [] { return SignedIn{}; };
    Seconds duration{0};          ///< Of every call.
    std::vector<Date> fetches{};  ///< When each began.
    std::vector<Date> signIns{};

    asio::awaitable<Fetched> fetchLatestReadings() override
    {
        fetches.push_back(clock_.now());
        co_await pass();
        co_return onFetch();
    }
    asio::awaitable<SignedIn> signInAgain() override
    {
        signIns.push_back(clock_.now());
        co_await pass();
        co_return onSignIn();
    }

private:
    asio::awaitable<void> pass()
    {
        if (duration > Seconds{0})
            co_await clock_.sleepFor(std::chrono::ceil<std::chrono::milliseconds>(duration));
    }

    Clock& clock_;
};

/// Passes sleeps on and can stop something as, or while, a chosen one of them goes on.
class InterruptingClock final : public Clock {
public:
    explicit InterruptingClock(Clock& inner) : inner_{inner} {}

    std::function<void()> interrupt{};
    std::optional<int> atEndOf{};  ///< Calls `interrupt` after that sleep, before the sleeper goes on.
    std::optional<int> inside{};   ///< Calls it half-way.
    int sleeps = 0;

    Date now() const override { return inner_.now(); }
    asio::awaitable<void> sleepFor(std::chrono::milliseconds delay) override
    {
        const int index = sleeps++;
        if (inside == index) {
            co_await inner_.sleepFor(delay / 2);
            interrupt();
            delay -= delay / 2;
        }
        co_await inner_.sleepFor(delay);
        if (atEndOf == index)
            interrupt();
    }

private:
    Clock& inner_;
};

/// Coordinator and view model on one thread and one fake clock, with a scripted service.
struct PollingFixture {
    static constexpr Date start = dateFromUnix(1'772'438'000);
    static constexpr GlucoseProvider libre = GlucoseProvider::libreLinkUp;
    using Kind = GlucoseAPIError::Kind;
    using Fetched = ScriptedGlucoseAPI::Fetched;

    asio::io_context io{};
    FakeClock clock{io, start};
    InterruptingClock coordinatorClock{clock};
    SeededRandom random{11};
    UserDefaults defaults{};
    FakeNetworkPath path{};
    NetworkMonitor network{coordinatorClock, random, path.monitoring()};
    AppSettings settings{};
    FakeNotificationCenter center{coordinatorClock};
    UserNotificationGlucoseAlertDelivery delivery{io.get_executor(), center, random};
    StatusBarViewModel viewModel{io.get_executor(), clock, random, [this] { return settings; }};
    std::optional<PollingProgress> progress{};  ///< As told last.
    std::shared_ptr<ScriptedGlucoseAPI> service = std::make_shared<ScriptedGlucoseAPI>(coordinatorClock);
    std::optional<StatusBarPollingCoordinator> coordinator{std::in_place, parts()};

    [[nodiscard]] StatusBarPollingCoordinator::Parts parts()
    {
        return {.engine = io.get_executor(),
                .main = io.get_executor(),
                .clock = coordinatorClock,
                .random = random,
                .viewModel = viewModel,
                .networkMonitor = network,
                .defaults = defaults,
                .settings = [this] { return settings; },
                .alertDelivery = delivery,
                .progressDidChange = [this](const PollingProgress& now) { progress = now; }};
    }

    PollingFixture()
    {
        path.report(true);
        succeed();
    }

    [[nodiscard]] const StatusBarState& state() const { return viewModel.state(); }
    [[nodiscard]] std::string errorTitle() const
    {
        return state().currentError ? state().currentError->title : std::string{};
    }

    static GlucoseReading reading(Date date, double mgdL = 120)
    {
        return makeReading(mgdL, "Flat", date, Seconds{300}, GlucoseProvider::dexcom);
    }
    /// What a healthy service answers now: a reading every five minutes, newest first.
    [[nodiscard]] Fetched readings() const
    {
        const double newest = std::floor(unixSeconds(clock.now()) / 300) * 300;
        return std::vector{reading(dateFromUnix(newest)), reading(dateFromUnix(newest - 300))};
    }
    /// The same of LibreLinkUp: a current value each minute.
    [[nodiscard]] Fetched currentValue() const
    {
        const double newest = std::floor(unixSeconds(clock.now()) / 60) * 60;
        return std::vector{makeReading(120, "Flat", dateFromUnix(newest), Seconds{60}, libre)};
    }
    static Fetched failure(Kind kind, std::string text = "Text")
    {
        return std::unexpected{GlucoseAPIError{.kind = kind, .text = std::move(text)}};
    }
    void failWith(Kind kind, std::optional<Seconds> retryAfter = {})
    {
        service->onFetch = [=] { return Fetched{std::unexpect, GlucoseAPIError{kind, "Text", retryAfter}}; };
    }
    void succeed()
    {
        service->onFetch = [this] { return readings(); };
    }
    void signInCures()
    {
        service->onSignIn = [this] {
            succeed();
            return ScriptedGlucoseAPI::SignedIn{};
        };
    }

    void run() { coordinator->start(service, GlucoseProvider::dexcom); }
    /// Until the first poll has ended well.
    void runToFirstReading()
    {
        run();
        clock.advance(Seconds{5});
        ASSERT_EQ(service->fetches.size(), 1U);
        ASSERT_TRUE(state().presentedReading);
    }
    /// Between one fetch and the next.
    [[nodiscard]] Seconds shortestSpacing() const
    {
        Seconds shortest = Seconds::max();
        for (std::size_t i = 1; i < service->fetches.size(); ++i)
            shortest = std::min(shortest, service->fetches[i] - service->fetches[i - 1]);
        return shortest;
    }
    /// Advances to the moment of the next fetch and through it; how long that was.
    Seconds untilNextFetch(Seconds limit = Seconds{4000})
    {
        const Date from = clock.now();
        const std::size_t before = service->fetches.size();
        clock.runReady();
        while (service->fetches.size() == before && clock.now() - from < limit && clock.sleepers() > 0)
            clock.advance(clock.untilNextWake());
        return service->fetches.size() > before ? service->fetches.back() - from : limit;
    }
};

}  // namespace tidewell
