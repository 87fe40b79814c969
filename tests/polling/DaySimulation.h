#pragma once

#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "polling/FakeNotificationCenter.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "simulator/SimulatedHttpClient.h"
#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"

namespace tidewell {

/// One thing that goes wrong for a while with a service whose simulator has `Options`.
template <class Options>
struct DayFault {
    /// What decides how soon the loop asks again while it lasts.
    enum class Pace {
        failures,  ///< The backoff that grows with each failed poll.
        session,   ///< The long one of a session that could not be renewed.
        limit,     ///< `wait`, which the service named; nobody gets through before.
        person,    ///< Nothing at all until the person has done something, which is when it ends.
        readings,  ///< Good answers: the age of the newest reading.
    };
    enum class Place { service, network, unnoticedNetwork };

    std::string name;
    Pace pace = Pace::failures;
    std::function<void(Options&)> spoil{};
    int signIns = 0;           ///< Requests to sign in that a refresh may need, or a person's fault in all.
    bool endsSession = false;  ///< At its beginning.
    Seconds wait{60};
    Seconds call{5};  ///< What a refresh takes at most: its own waits, and time-outs.
    Place place = Place::service;

    /// Polls of the loop itself in `length` seconds of it, at most.
    [[nodiscard]] double polls(Seconds length) const
    {
        switch (pace) {
        case Pace::failures: {
            double count = 1;
            for (Seconds left = length; left > failureBase(count) * 0.8; ++count)
                left -= failureBase(count) * 0.8;
            return count;
        }
        case Pace::session: return 1 + std::floor(length / Seconds{2160});
        case Pace::limit: return 1 + std::floor(length / wait);
        case Pace::person: return 1;
        case Pace::readings: return 1 + std::floor(length / Seconds{36});
        }
        std::unreachable();
    }

    /// From its end until there is a good answer again, at most. `refreshes` may have failed, and the newest
    /// reading was `age` old at the end.
    [[nodiscard]] Seconds recovery(double refreshes, Seconds age) const
    {
        if (place == Place::network)
            return Seconds{20 + 10 + 0.4} + call;  // Looked at each 20 s, refreshed each 10 s.
        switch (pace) {
        case Pace::failures: return failureBase(refreshes + 1) * 1.2 + call;
        case Pace::session: return Seconds{3240} + call;
        case Pace::limit: return wait + call;
        case Pace::person: return call;
        case Pace::readings: return std::max(Seconds{360}, ageBase(age) * 1.2) + call;
        }
        std::unreachable();
    }

private:
    static Seconds failureBase(double failures)
    {
        constexpr std::array<double, 7> bases{15, 30, 60, 120, 300, 600, 900};
        return Seconds{bases[static_cast<std::size_t>(std::min(failures, 6.0))]};
    }
    static Seconds ageBase(Seconds age)
    {
        return Seconds{age < Seconds{600}    ? 75.0
                       : age < Seconds{1800} ? 150.0
                       : age < Seconds{3600} ? 420.0
                                             : 900.0};
    }
};

/// A value that a service has delivered.
struct DeliveredValue {
    Date date;
    int mgdL;
};

/// A whole day of polling against a simulated service, with everything that goes wrong in it. After each step
/// the screen is compared with what the service has really delivered.
///
/// `Service` names the provider, makes client and simulator, lists the faults, and tells what was delivered.
template <class Service>
class Day {
public:
    static constexpr Date dawn = Service::dawn;
    static constexpr Seconds length{86'400};

    explicit Day(std::uint64_t seed) : chance_{seed}
    {
        http_.route("https://service.test/", [this](const HttpRequest& request, Date now) {
            const std::int64_t before = service_.simulator.counters().successfulReads;
            SimulatedAnswer answer = service_.simulator.handle(request, now);
            if (service_.simulator.counters().successfulReads > before &&
                answer.fault == TransportFault::none) {
                lastGoodAnswer_ = now + latency;
                deliver(now);
            }
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
        coordinator_->start(client_, Service::provider);
        clock_.runReady();
        while (clock_.now() < dawn + length && !testing::Test::HasFailure()) {
            const Seconds untilEvent = events_.empty() ? length : events_.begin()->first - clock_.now();
            const testing::ScopedTrace where{
                __FILE__, __LINE__,
                fmt::format("{:.1f} s into the day, {}", (clock_.now() - dawn).count(),
                            fault_ ? fault_->name : "all well")};
            if (untilEvent <= Seconds{0}) {
                const auto event = events_.extract(events_.begin());
                event.mapped()();
                clock_.runReady();
            } else {
                clock_.advance(std::min(untilEvent, clock_.untilNextWake()));
            }
            ++steps_;
            check();
        }
    }

    [[nodiscard]] std::uint64_t hash() const { return hash_; }
    [[nodiscard]] std::int64_t steps() const { return steps_; }
    [[nodiscard]] std::size_t requests() const { return http_.log().size(); }
    [[nodiscard]] double minutesCurrent() const { return current_.count() / 60; }
    [[nodiscard]] std::int64_t faults() const { return faults_; }

private:
    using Fault = DayFault<typename Service::Options>;
    using Pace = Fault::Pace;
    using Place = Fault::Place;
    static constexpr Seconds latency{0.1};

    [[nodiscard]] double uniform(double from, double to)
    {
        return from + (to - from) * (chance_.unit() + 1) / 2;
    }
    [[nodiscard]] std::size_t pick(std::size_t count)
    {
        return static_cast<std::size_t>(chance_.next() % count);
    }
    void later(Seconds delay, std::function<void()> action)
    {
        events_.emplace(clock_.now() + delay, std::move(action));
    }

    /// Draws the day: one fault after another, each when the last one is over, and between them naps and
    /// impatience.
    void plan()
    {
        later(Seconds{uniform(30, 900)}, [this] { begin(); });
        for (std::size_t naps = pick(6); naps > 0; --naps) {
            const Seconds nap{std::exp(uniform(std::log(5), std::log(20'000)))};
            later(Seconds{uniform(60, 80'000)}, [this, nap, told = pick(3) > 0] { sleep(nap, told); });
        }
        for (std::size_t presses = pick(40); presses > 0; --presses) {
            const double press = uniform(1, 86'000);
            for (std::size_t again = 1 + pick(4); again > 0; --again)
                later(Seconds{press + uniform(0, 3)}, [this] { refresh(); });
        }
        for (const bool forgotten : {false, true, false, true})
            later(Seconds{uniform(1, 86'000)}, [this, forgotten] { endSession(forgotten); });
    }

    void begin()
    {
        checkSignIns(2 + extraSignIns_);  // Another region may have to be found again.
        ++faults_;
        fault_ = &Service::faults()[pick(Service::faults().size())];
        since_ = clock_.now();
        troubledSince_ = since_;
        requestsBefore_ = http_.log().size();
        // One that somebody has asked for just before will see the fault too.
        const bool woken = lastNap_ && since_ - *lastNap_ < Seconds{15};
        extraRefreshes_ = viewModel_.state().activity || woken ? 1 : 0;
        // Lost, and nobody has noticed yet.
        const bool lost =
            sessionLostAt_ && (!lastGoodAnswer_ || *sessionLostAt_ >= *lastGoodAnswer_ - latency);
        extraSignIns_ = lost ? 1 : 0;
        typename Service::Options options = Service::usual();
        if (fault_->spoil)
            fault_->spoil(options);
        service_.simulator.setOptions(options, since_);
        if (fault_->endsSession) {
            service_.endSession(false);
            sessionLostAt_ = since_;
        }
        if (fault_->place != Place::service)
            http_.setFailure(HttpError::Kind::cannotResolve);
        if (fault_->place == Place::network)
            path_.report(false);
        mark(fault_->name);
        later(Seconds{std::exp(uniform(std::log(20), std::log(7200)))}, [this] { end(); });
    }

    void end()
    {
        const Fault& fault = *std::exchange(fault_, nullptr);
        const Date now = clock_.now();
        const bool everybodyWaits = fault.pace == Pace::person || fault.pace == Pace::limit;
        const double polls = fault.polls(now - since_);
        checkSignIns(fault.signIns * (polls + (everybodyWaits ? 0 : extraRefreshes_)) + extraSignIns_);
        service_.simulator.setOptions(Service::usual(), now);
        http_.setFailure(std::nullopt);
        if (fault.place == Place::network)
            path_.report(true);
        if (fault.pace == Pace::person)
            coordinator_->reconnect();
        extraSignIns_ = fault.signIns + fault.endsSession;  // One that is on its way, or has yet to be.
        const bool noticed = fault.pace == Pace::person || http_.log().size() > requestsBefore_;
        const Seconds age = valid_.empty() ? Seconds{1e9} : now - valid_.back().date;
        const Seconds recovery = fault.recovery(polls + extraRefreshes_, age);
        later(noticed ? recovery : Seconds{0},
              [this, noticed, now, name = fault.name] { recovered(noticed, now, name); });
        mark("end");
    }

    void recovered(bool noticed, Date end, const std::string& name)
    {
        if (noticed && !(lastNap_ && *lastNap_ > end)) {
            EXPECT_TRUE(lastGoodAnswer_ && *lastGoodAnswer_ >= end) << "no data after: " << name;
            EXPECT_FALSE(viewModel_.state().currentError) << "still an error after: " << name;
        }
        later(Seconds{uniform(1, 3000)}, [this] { begin(); });
    }

    void sleep(Seconds nap, bool told)
    {
        clock_.suspend(nap);
        lastNap_ = clock_.now();
        troubledSince_ = clock_.now();
        extraRefreshes_ += 2;  // What was under way may have ended with it, and waking up is one.
        if (told)
            coordinator_->refreshAfterWake();
        mark("nap");
    }

    void refresh()
    {
        ++extraRefreshes_;
        asio::co_spawn(io_, coordinator_->refreshNow(), asio::detached);
        mark("refresh");
    }

    void endSession(bool forgotten)
    {
        service_.endSession(forgotten);
        sessionLostAt_ = clock_.now();
        ++extraSignIns_;
    }

    void deliver(Date now)
    {
        const std::vector<DeliveredValue> values = service_.newest(now);
        if (values.empty())
            return;
        validBefore_ = valid_;
        deliveredAt_ = now + latency;
        valid_.insert(valid_.end(), values.begin(), values.end());
        std::ranges::sort(valid_, {}, &DeliveredValue::date);
        const Date newest = valid_.back().date;
        std::erase_if(valid_, [newest](const DeliveredValue& value) {
            return value.date < newest - Service::sameMeasurement;
        });
    }

    /// The title that a reading must have, worked out here once more.
    [[nodiscard]] bool shows(const std::string& title, const std::vector<DeliveredValue>& values) const
    {
        const auto shownAtAge = [&](const DeliveredValue& value, double age) {
            if (age >= 3600)
                return title == "-- ?";
            if (age >= 900)
                return title == fmt::format("{} ?", value.mgdL);
            return title.starts_with(fmt::format("{} ", value.mgdL));
        };
        // Timers count whole milliseconds: of two that are due together, one may be that much later.
        const auto shown = [&](const DeliveredValue& value) {
            const double age = (clock_.now() - value.date).count();
            return shownAtAge(value, age) || shownAtAge(value, age - 0.001);
        };
        return values.empty() ? title.empty() : std::ranges::any_of(values, shown);
    }

    void check()
    {
        const StatusBarState& state = viewModel_.state();
        const Date now = clock_.now();

        // Never old as new: what is on the screen is what was delivered, with its age of this moment.
        const bool arriving = deliveredAt_ && now <= *deliveredAt_ + Seconds{0.01};
        EXPECT_TRUE(shows(state.statusTitle, valid_) || (arriving && shows(state.statusTitle, validBefore_)))
            << state.statusTitle << " with a newest reading of "
            << (valid_.empty()
                    ? "none"
                    : fmt::format("{}, {} s old", valid_.back().mgdL, (now - valid_.back().date).count()));
        if (state.freshness == ReadingFreshness::current)
            current_ += now - lastChecked_;
        lastChecked_ = now;

        // Never in silence: a poll that brought nothing has left a text, and nothing stays without one for
        // 900 s.
        const auto& log = http_.log();
        const bool busy = !log.empty() && log.back().status == 0 && !log.back().failure;
        if (busy || log.size() != logSize_)
            idleSince_ = now;
        for (; logSize_ < log.size(); ++logSize_)
            checkRequest(log[logSize_]);
        const bool broughtNothing =
            !log.empty() &&
            (!lastGoodAnswer_ || log.back().asked + latency > *lastGoodAnswer_ + Seconds{0.01});
        if (!busy && !state.activity && broughtNothing && now - idleSince_ > Seconds{20}) {
            EXPECT_TRUE(state.currentError) << "a failed poll says nothing";
        }
        if (fault_ && now - troubledSince_ > Seconds{900} && !state.freshnessWarning && !state.currentError) {
            EXPECT_EQ(state.freshness, ReadingFreshness::current) << "no value, no text";
        }
        EXPECT_EQ(state.hasWarning, state.currentError || state.freshnessWarning);
        if (state.currentError) {
            EXPECT_FALSE(state.currentError->title.empty());
        }
    }

    /// No storms.
    void checkRequest(const SimulatedHttpClient::Exchange& exchange)
    {
        if (Service::isSignIn(exchange.path))
            ++signIns_;
        if (!Service::isRead(exchange.path))
            return;
        if (lastRead_) {
            EXPECT_GE((exchange.asked - *lastRead_).count(), 1.0 - 1e-6);
        }
        lastRead_ = exchange.asked;
    }
    void checkSignIns(double allowed)
    {
        EXPECT_LE(static_cast<double>(signIns_), allowed) << "in " << (clock_.now() - since_).count() << " s";
        signIns_ = 0;
    }

    void mark(std::string_view text)
    {
        for (const char c : text)
            mix(static_cast<unsigned char>(c));
        mix(static_cast<std::uint64_t>(std::llround(unixSeconds(clock_.now()) * 1000)));
    }
    void trace(const StatusBarState& state)
    {
        if (state.presentedReading) {
            EXPECT_GE(state.presentedReading->date, newestShown_) << "the screen went back";
            newestShown_ = state.presentedReading->date;
        }
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
    Service service_{chance_.next()};
    SimulatedHttpClient http_{clock_};
    FakeNetworkPath path_{};
    NetworkMonitor network_{clock_, random_, path_.monitoring()};
    UserDefaults defaults_{};
    FakeNotificationCenter center_{clock_};
    UserNotificationGlucoseAlertDelivery delivery_{io_.get_executor(), center_, random_};
    StatusBarViewModel viewModel_{io_.get_executor(), clock_, random_, [] { return AppSettings{}; }};
    std::shared_ptr<GlucoseAPIProtocol> client_ = Service::client(io_.get_executor(), http_, clock_);
    std::optional<StatusBarPollingCoordinator> coordinator_{
        std::in_place, StatusBarPollingCoordinator::Parts{.engine = io_.get_executor(),
                                                          .main = io_.get_executor(),
                                                          .clock = clock_,
                                                          .random = random_,
                                                          .viewModel = viewModel_,
                                                          .networkMonitor = network_,
                                                          .defaults = defaults_,
                                                          .settings = [] { return AppSettings{}; },
                                                          .alertDelivery = delivery_}};
    std::shared_ptr<void> token_{};

    std::multimap<Date, std::function<void()>> events_{};
    const Fault* fault_ = nullptr;
    Date since_ = dawn;          ///< When the fault began.
    Date troubledSince_ = dawn;  ///< The same, or when the machine last woke up.
    std::size_t requestsBefore_ = 0;
    double extraRefreshes_ = 0;  ///< Since then: those that are not the loop's own.
    double extraSignIns_ = 0;    ///< Sessions that were lost since then, or just before.
    std::optional<Date> sessionLostAt_{};
    std::optional<Date> lastNap_{};
    std::int64_t faults_ = 0;

    std::vector<DeliveredValue> valid_{};        ///< What may be shown: the newest, and its like.
    std::vector<DeliveredValue> validBefore_{};  ///< Before the last answer.
    std::optional<Date> deliveredAt_{};
    std::optional<Date> lastGoodAnswer_{};
    std::optional<Date> lastRead_{};
    std::int64_t signIns_ = 0;  ///< Since the last look.
    Date newestShown_{};
    Date idleSince_ = dawn;
    Date lastChecked_ = dawn;
    std::size_t logSize_ = 0;
    Seconds current_{0};

    std::uint64_t hash_ = 14695981039346656037U;
    std::int64_t steps_ = 0;
};

/// Lives through a dozen days. The last one a second time: one seed, one day.
template <class Service>
void liveThroughDays()
{
    std::vector<std::uint64_t> hashes;
    for (const std::uint64_t seed : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U, 11U, 12U, 12U}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Day<Service> day{seed};
        day.live();
        if (testing::Test::HasFailure())
            return;
        EXPECT_GT(day.steps(), 1000);
        EXPECT_GT(day.requests(), 150U);
        EXPECT_LT(day.requests(), 4000U);
        EXPECT_GT(day.faults(), 8);
        EXPECT_GT(day.minutesCurrent(), 300);
        hashes.push_back(day.hash());
    }
    EXPECT_EQ(hashes.back(), hashes[hashes.size() - 2]) << "the same seed, another day";
    hashes.pop_back();
    std::ranges::sort(hashes);
    EXPECT_EQ(std::ranges::adjacent_find(hashes), hashes.end()) << "different seeds, the same day";
}

}  // namespace tidewell
