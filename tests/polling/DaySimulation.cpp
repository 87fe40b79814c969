// Whole days of polling against the simulated service, with everything that goes wrong in them. After each
// step the screen is compared with what the service has really delivered.

#include <cmath>

#include "polling/StatusBarPollingCoordinator.h"
#include "simulator/DexcomShareSimulator.h"
#include "simulator/SimulatedHttpClient.h"
#include "sources/DexcomAPI.h"
#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"

namespace tidewell {
namespace {

constexpr Date dawn = dateFromUnix(1'772'409'600);
constexpr Seconds dayLength{86'400};
constexpr Seconds latency{0.1};
/// The longest regular backoff with its jitter, a poll that runs into time-outs on its way, and a little.
constexpr Seconds usualRecovery{1080 + 60 + 20};
/// After a session that could not be renewed.
constexpr Seconds sessionRecovery{3240 + 20};
/// When the system says that the network is back.
constexpr Seconds networkRecovery{45};

/// One thing that goes wrong for a while.
struct Fault {
    std::string name;
    Seconds recovery;  ///< From its end until data must be back.
    std::function<void(DexcomShareOptions&)> spoil{};
    enum class Place { service, network, unnoticedNetwork, password } place = Place::service;
};

ServiceFault broken(ServiceFault::Kind kind, int status = 500) { return {.kind = kind, .status = status}; }

ServiceFault transport(TransportFault fault)
{
    return {.kind = ServiceFault::Kind::transport, .transport = fault};
}

const std::vector<Fault>& faults()
{
    using K = ServiceFault::Kind;
    using O = DexcomShareOptions;
    static const std::vector<Fault> all{
        {"outage", usualRecovery, [](O& o) { o.authenticate = o.login = o.read = broken(K::html, 503); }},
        {"read fails", usualRecovery, [](O& o) { o.read = {.kind = K::error, .code = "SessionNotValid"}; }},
        {"sign-in fails", usualRecovery,
         [](O& o) { o = {.authenticate = broken(K::html, 502), .sessionLifetime = Seconds{1}}; }},
        {"read forbidden", sessionRecovery, [](O& o) { o.read = broken(K::status, 403); }},
        {"not found", usualRecovery, [](O& o) { o.read = broken(K::status, 404); }},
        {"garbage", usualRecovery, [](O& o) { o.read = broken(K::garbage); }},
        {"empty body", usualRecovery, [](O& o) { o.read = broken(K::emptyBody); }},
        {"null ids", usualRecovery, [](O& o) { o = {.login = broken(K::emptyBody), .sessionReads = 1}; }},
        {"read hangs", usualRecovery, [](O& o) { o.read = transport(TransportFault::hang); }},
        {"all hangs", usualRecovery,
         [](O& o) { o.authenticate = o.login = o.read = transport(TransportFault::hang); }},
        {"resets", usualRecovery, [](O& o) { o.read = transport(TransportFault::reset); }},
        {"cut off", usualRecovery, [](O& o) { o.read = transport(TransportFault::cutOff); }},
        {"endless", usualRecovery, [](O& o) { o.read = transport(TransportFault::endless); }},
        {"no readings", usualRecovery, [](O& o) { o.readings.empty = true; }},
        {"sensor away", usualRecovery, [](O& o) { o.readings.publishing = false; }},
        {"sensor away, backfill", usualRecovery,
         [](O& o) { o.readings = {.publishing = false, .backfill = true}; }},
        {"short sessions", usualRecovery, [](O& o) { o.sessionReads = 1; }},
        {"network off", networkRecovery, {}, Fault::Place::network},
        {"network off, unnoticed", usualRecovery, {}, Fault::Place::unnoticedNetwork},
        {"password changed", networkRecovery,
         [](O& o) { o = {.refusePasswords = true, .sessionLifetime = Seconds{1}}; }, Fault::Place::password},
    };
    return all;
}

class Day {
public:
    explicit Day(std::uint64_t seed) : chance_{seed}
    {
        http_.route("https://share.test/", [this](const HttpRequest& request, Date now) {
            SimulatedAnswer answer = service_.handle(request, now);
            const bool good = request.url.contains("ReadPublisher") && answer.response.status == 200 &&
                              answer.fault == TransportFault::none &&
                              service_.options().read.kind == ServiceFault::Kind::none;
            if (good && answer.response.body.size() > 2) {
                delivered_ = newest_;
                newest_ = service_.readings().newest(now);
                deliveredAt_ = now + latency;
            }
            if (good)
                lastGoodAnswer_ = now + latency;
            return answer;
        });
        http_.setLatency(latency);
        path_.report(true);
        token_ = viewModel_.observe([this](const StatusBarState& state) { trace(state); });
        plan();
    }

    ~Day()
    {
        coordinator_.reset();
        clock_.runReady();
    }
    Day(const Day&) = delete;
    Day& operator=(const Day&) = delete;

    void live()
    {
        coordinator_->start(client_, GlucoseProvider::dexcom);
        clock_.runReady();
        while (clock_.now() < dawn + dayLength && !testing::Test::HasFailure()) {
            const Seconds untilEvent = events_.empty() ? dayLength : events_.begin()->first - clock_.now();
            if (untilEvent <= Seconds{0}) {
                const auto event = events_.extract(events_.begin());
                event.mapped()();
                clock_.runReady();
            } else {
                clock_.advance(std::min(untilEvent, clock_.untilNextWake()));
            }
            ++steps_;
            SCOPED_TRACE(fmt::format("{:.1f} s into the day, {}", (clock_.now() - dawn).count(),
                                     fault_ ? fault_->name : "all well"));
            check();
        }
        checkRequests();
    }

    [[nodiscard]] std::uint64_t hash() const { return hash_; }
    [[nodiscard]] std::int64_t steps() const { return steps_; }
    [[nodiscard]] std::size_t requests() const { return http_.log().size(); }
    [[nodiscard]] double minutesCurrent() const { return current_.count() / 60; }

private:
    [[nodiscard]] double uniform(double from, double to)
    {
        return from + (to - from) * (chance_.unit() + 1) / 2;
    }
    [[nodiscard]] std::size_t pick(std::size_t count)
    {
        return static_cast<std::size_t>(chance_.next() % count);
    }

    /// Draws the day: one fault after another with time to recover, and between them naps and impatience.
    void plan()
    {
        Date at = dawn + Seconds{uniform(0, 900)};
        while (at < dawn + dayLength) {
            const Fault& fault = faults()[pick(faults().size())];
            const Date end = at + Seconds{std::exp(uniform(std::log(20), std::log(7200)))};
            events_.emplace(at, [this, &fault] { begin(fault); });
            events_.emplace(end, [this] { endFault(); });
            events_.emplace(end + fault.recovery, [this, end, &fault] { expectDataSince(end, fault); });
            at = end + fault.recovery + Seconds{uniform(1, 3000)};
        }
        for (std::size_t naps = pick(6); naps > 0; --naps) {
            const Seconds length{std::exp(uniform(std::log(5), std::log(20'000)))};
            events_.emplace(dawn + Seconds{uniform(60, 80'000)},
                            [this, length, told = pick(3) > 0] { nap(length, told); });
        }
        for (std::size_t presses = pick(40); presses > 0; --presses) {
            const Date press = dawn + Seconds{uniform(1, 86'000)};
            for (std::size_t again = 1 + pick(4); again > 0; --again)
                events_.emplace(press + Seconds{uniform(0, 3)}, [this] { refresh(); });
        }
        for (int ends = 0; ends < 2; ++ends) {
            events_.emplace(dawn + Seconds{uniform(1, 86'000)}, [this] { service_.endSessions(); });
            events_.emplace(dawn + Seconds{uniform(1, 86'000)}, [this] { service_.forgetSessions(); });
        }
    }

    void begin(const Fault& fault)
    {
        fault_ = &fault;
        faultSince_ = clock_.now();
        refusedBefore_ = service_.counters().refusedSignIns;
        DexcomShareOptions options;
        if (fault.spoil)
            fault.spoil(options);
        service_.setOptions(options, clock_.now());
        if (fault.place == Fault::Place::network || fault.place == Fault::Place::unnoticedNetwork)
            http_.setFailure(HttpError::Kind::cannotResolve);
        if (fault.place == Fault::Place::network)
            path_.report(false);
        mark(fault.name);
    }

    void endFault()
    {
        if (fault_->place == Fault::Place::password) {
            EXPECT_LE(service_.counters().refusedSignIns - refusedBefore_, 2)
                << "a refused password was sent again";
        }
        service_.setOptions({}, clock_.now());
        http_.setFailure(std::nullopt);
        if (fault_->place == Fault::Place::network)
            path_.report(true);
        if (fault_->place == Fault::Place::password)
            coordinator_->reconnect();
        fault_ = nullptr;
        mark("end");
    }

    void expectDataSince(Date end, const Fault& fault)
    {
        if (lastNap_ && *lastNap_ > end)
            return;  // The machine slept through its time to recover.
        EXPECT_TRUE(lastGoodAnswer_ && *lastGoodAnswer_ >= end) << "no data after: " << fault.name;
        EXPECT_FALSE(viewModel_.state().currentError) << "still an error after: " << fault.name;
    }

    void nap(Seconds length, bool told)
    {
        clock_.suspend(length);
        lastNap_ = clock_.now();
        faultSince_ = clock_.now();
        if (told)
            coordinator_->refreshAfterWake();
        mark("nap");
    }

    void refresh()
    {
        asio::co_spawn(io_, coordinator_->refreshNow(), asio::detached);
        mark("refresh");
    }

    /// The title that a reading must have, worked out here once more.
    [[nodiscard]] bool shows(const std::string& title,
                             const std::optional<ReadingGenerator::Newest>& newest) const
    {
        if (!newest)
            return title.empty();
        const double age = (clock_.now() - newest->date).count();
        if (age >= 3600)
            return title == "-- ?";
        if (age >= 900)
            return title == fmt::format("{} ?", newest->mgdL);
        return title.starts_with(fmt::format("{} ", newest->mgdL)) &&
               (age < 0 || !title.ends_with(" ?") || title.size() < 7);
    }

    void check()
    {
        const StatusBarState& state = viewModel_.state();
        const Date now = clock_.now();

        // Never old as new: what is on the screen is what was delivered, with its age of this moment.
        const bool arriving = deliveredAt_ && now <= *deliveredAt_ + Seconds{0.01};
        EXPECT_TRUE(shows(state.statusTitle, newest_) || (arriving && shows(state.statusTitle, delivered_)))
            << state.statusTitle << " with a newest reading of "
            << (newest_ ? fmt::format("{}, {} s old", newest_->mgdL, (now - newest_->date).count()) : "none");
        if (state.freshness == ReadingFreshness::current)
            current_ += now - lastChecked_;
        lastChecked_ = now;

        // Never in silence: a poll that brought nothing has left a text, and nothing stays without one for
        // 900 s.
        const auto& log = http_.log();
        const bool busy = !log.empty() && log.back().status == 0 && !log.back().failure;
        if (busy || log.size() != logSize_)
            idleSince_ = now;
        logSize_ = log.size();
        const bool broughtNothing =
            !log.empty() &&
            (!lastGoodAnswer_ || log.back().asked + latency > *lastGoodAnswer_ + Seconds{0.01});
        if (!busy && broughtNothing && now - idleSince_ > Seconds{20}) {
            EXPECT_TRUE(state.currentError) << "a failed poll says nothing";
        }
        if (fault_ && now - faultSince_ > Seconds{900} && !state.freshnessWarning && !state.currentError) {
            EXPECT_EQ(state.freshness, ReadingFreshness::current) << "no value, no text";
        }
        EXPECT_EQ(state.hasWarning, state.currentError || state.freshnessWarning);
        if (state.currentError) {
            EXPECT_FALSE(state.currentError->title.empty());
        }
    }

    /// No storms.
    void checkRequests() const
    {
        std::optional<Date> lastRead;
        std::vector<Date> signIns;
        for (const SimulatedHttpClient::Exchange& exchange : http_.log()) {
            if (exchange.path.contains("ReadPublisher")) {
                if (lastRead) {
                    EXPECT_GE((exchange.asked - *lastRead).count(), 1.0 - 1e-6);
                }
                lastRead = exchange.asked;
            }
            if (exchange.path.contains("Authenticate"))
                signIns.push_back(exchange.asked);
        }
        for (std::size_t i = 30; i < signIns.size(); ++i)
            EXPECT_GT((signIns[i] - signIns[i - 30]).count(), 900) << "30 sign-ins in a quarter of an hour";
        EXPECT_LT(http_.log().size(), 4000U);
    }

    void mark(std::string_view text)
    {
        for (const char c : text)
            mix(static_cast<unsigned char>(c));
        mix(static_cast<std::uint64_t>(std::llround(unixSeconds(clock_.now()) * 1000)));
    }
    void trace(const StatusBarState& state)
    {
        mark(state.statusTitle);
        mark(state.currentError ? state.currentError->title + state.currentError->message : "");
        mark(state.accessibilityValue);
        mix(state.nextRetryAt
                ? static_cast<std::uint64_t>(std::llround(unixSeconds(*state.nextRetryAt) * 1000))
                : 0);
    }
    void mix(std::uint64_t value) { hash_ = (hash_ ^ value) * 1099511628211U; }  // FNV-1a

    asio::io_context io_{};
    FakeClock clock_{io_, dawn};
    SeededRandom chance_;
    SeededRandom random_{chance_.next()};
    DexcomShareSimulator service_{{}, dawn, chance_.next()};
    SimulatedHttpClient http_{clock_};
    FakeNetworkPath path_{};
    NetworkMonitor network_{clock_, random_, path_.monitoring()};
    UserDefaults defaults_{};
    StatusBarViewModel viewModel_{io_.get_executor(), clock_, random_, [] { return AppSettings{}; }};
    std::shared_ptr<DexcomAPI> client_ = std::make_shared<DexcomAPI>(
        io_.get_executor(), http_, clock_,
        ServiceEndpoints{.dexcom = {{"us",
                                     {"https://share.test/ShareWebServices/Services",
                                      "11111111-2222-4333-8444-555555555555"}}}},
        GlucoseAccountConfiguration{.username = SimulatedAccount{}.name,
                                    .password = SecretText{std::string_view{SimulatedAccount{}.password}},
                                    .region = "us"});
    std::optional<StatusBarPollingCoordinator> coordinator_{
        std::in_place, StatusBarPollingCoordinator::Parts{.engine = io_.get_executor(),
                                                          .main = io_.get_executor(),
                                                          .clock = clock_,
                                                          .random = random_,
                                                          .viewModel = viewModel_,
                                                          .networkMonitor = network_,
                                                          .defaults = defaults_}};
    std::shared_ptr<void> token_{};

    std::multimap<Date, std::function<void()>> events_{};
    const Fault* fault_ = nullptr;
    Date faultSince_{};
    std::int64_t refusedBefore_ = 0;
    std::optional<Date> lastNap_{};

    std::optional<ReadingGenerator::Newest> newest_{};     ///< Of the last answer with readings.
    std::optional<ReadingGenerator::Newest> delivered_{};  ///< Of the one before.
    std::optional<Date> deliveredAt_{};
    std::optional<Date> lastGoodAnswer_{};
    Date idleSince_ = dawn;
    Date lastChecked_ = dawn;
    std::size_t logSize_ = 0;
    Seconds current_{0};

    std::uint64_t hash_ = 14695981039346656037U;
    std::int64_t steps_ = 0;
};

TEST(DaySimulation, screenNeverLiesAndDataComesBackWhateverHappens)
{
    std::vector<std::uint64_t> hashes;
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Day day{seed};
        day.live();
        if (HasFailure())
            return;
        EXPECT_GT(day.steps(), 1000);
        EXPECT_GT(day.requests(), 150U);
        EXPECT_GT(day.minutesCurrent(), 300);
        hashes.push_back(day.hash());
    }
    Day again{12};
    again.live();
    EXPECT_EQ(again.hash(), hashes.back()) << "the same seed, another day";
    std::ranges::sort(hashes);
    EXPECT_EQ(std::ranges::adjacent_find(hashes), hashes.end()) << "different seeds, the same day";
}

}  // namespace
}  // namespace tidewell
