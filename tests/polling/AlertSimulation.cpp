#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "polling/AlertModel.h"
#include "polling/FakeNotificationCenter.h"
#include "polling/SensorService.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "testing/FakeClock.h"
#include "testing/FakeNetworkPath.h"

namespace tidewell {
namespace {

/// What goes wrong with the service for a while.
enum class Trouble {
    none,
    unreachable,
    networkOff,
    hangs,
    serverTrouble,
    rateLimited,
    noReadings,
    frozen,        ///< It answers as it did when that began.
    sessionEnded,  ///< Once; signing in again helps.
    sessionLost,   ///< Signing in again does not help.
    refused,       ///< Ends when the person reconnects, as do the next two.
    locked,
    needsPerson,
    broken,  ///< The client throws.
    count,
};

bool waitsForPerson(Trouble trouble)
{
    return trouble == Trouble::refused || trouble == Trouble::locked || trouble == Trouble::needsPerson;
}

/// A desktop that tells what it is asked, and when it has answered.
class WatchedNotificationCenter final : public UserNotificationCenter {
public:
    explicit WatchedNotificationCenter(Clock& clock) : fake{clock} {}

    FakeNotificationCenter fake;
    std::function<void()> asks{};
    std::function<void(NotificationAuthorizationState)> answers{};
    std::function<void(bool)> personAnswers{};
    std::function<void(const UserNotification&)> posts{};
    std::function<void(const UserNotification&, bool)> hasPosted{};

    asio::awaitable<NotificationAuthorizationState> authorizationStatus() override
    {
        asks();
        const NotificationAuthorizationState state = co_await fake.authorizationStatus();
        answers(state);
        co_return state;
    }
    asio::awaitable<std::expected<bool, NotificationError>> requestAuthorization() override
    {
        const auto granted = co_await fake.requestAuthorization();
        personAnswers(granted && *granted);
        co_return granted;
    }
    asio::awaitable<std::expected<void, NotificationError>> add(UserNotification notification) override
    {
        posts(notification);
        const UserNotification copy = notification;
        const auto posted = co_await fake.add(std::move(notification));
        fake.posted.clear();
        hasPosted(copy, posted.has_value());
        co_return posted;
    }
};

/// A month of one person, with everything that goes wrong in it, minute by minute beside the model.
class Month {
public:
    static constexpr True length{30 * 86'400.0};
    /// Of a desktop's answer, when it is well.
    static constexpr std::chrono::milliseconds usualDelay{1};

    explicit Month(std::uint64_t seed) : chance_{seed}
    {
        center_.fake.delay = usualDelay;
        center_.asks = [this] { askedForPermission(); };
        center_.answers = [this](NotificationAuthorizationState state) { permissionIs(state); };
        center_.personAnswers = [this](bool granted) { granted ? permitted() : denied(); };
        center_.posts = [this](const UserNotification& notification) { posting(notification); };
        center_.hasPosted = [this](const UserNotification& notification, bool well) {
            posted(notification, well);
        };
        path_.report(true);
        launch();
        plan();
    }
    ~Month()
    {
        coordinator_.reset();
        clock_.runReady();
    }
    Month(const Month&) = delete;
    Month& operator=(const Month&) = delete;

    void live()
    {
        while (now() < length && !testing::Test::HasFailure()) {
            const True untilEvent = events_.begin()->first - now();
            if (untilEvent < True{1e-6}) {
                const auto event = events_.extract(events_.begin());
                event.mapped()();
                clock_.runReady();
            } else {
                const Seconds untilWake = clock_.sleepers() > 0 ? clock_.untilNextWake() : length;
                clock_.advance(std::min(untilEvent, untilWake));
            }
            check();
        }
    }

    /// How often what has happened; notifications by their titles.
    using Counts = std::map<std::string, std::int64_t>;
    [[nodiscard]] const Counts& counts() const { return counts_; }

private:
    // --- Time ---

    /// True time.
    [[nodiscard]] True now() const { return clock_.now() - SensorService::zero - clockOff_; }
    [[nodiscard]] Date wall() const { return clock_.now(); }

    void fail(const std::string& text) const
    {
        ADD_FAILURE() << text << "\n  at " << now().count() << " s (" << isoText(wall()) << " by our clock), "
                      << (trouble_ == Trouble::none ? "service well" : "service in trouble ")
                      << static_cast<int>(trouble_) << ", clock off by " << clockOff_.count()
                      << " s, newest reading "
                      << (model_.newest() ? fmt::format("{} s old", (wall() - model_.newest()->date).count())
                                          : "none")
                      << ", alerts " << (settings_.alertsEnabled ? "on" : "off");
    }
    void require(bool holds, const char* text) const
    {
        if (!holds)
            fail(text);
    }

    // --- What happens ---

    void later(True delay, std::function<void()> action)
    {
        events_.emplace(now() + delay, std::move(action));
    }
    /// Now and then, about `interval` seconds apart.
    void repeat(double interval, std::function<void()> action)
    {
        later(True{chance_.spread(interval / 10, interval * 3)}, [this, interval, action] {
            action();
            repeat(interval, action);
        });
    }

    void plan()
    {
        constexpr double hour = 3600;
        repeat(6 * hour,
               [this] { begin(static_cast<Trouble>(1 + chance_.pick(std::size_t(Trouble::count) - 1))); });
        repeat(8 * hour, [this] { spoilDesktop(); });
        repeat(4 * hour, [this] { changeSettings(); });
        repeat(5 * hour, [this] { snooze(); });
        repeat(9 * hour, [this] { nap(True{chance_.spread(3, 30'000)}); });
        repeat(30 * hour, [this] { setClock(); });
        repeat(5 * hour, [this] {
            for (std::size_t presses = 1 + chance_.pick(3); presses > 0; --presses)
                later(True{chance_.uniform(0, 4)}, [this] { refresh(); });
        });
        repeat(60 * hour, [this] {
            coordinator_->reconnect();
            model_.forgetTold();
            ++extraPolls_;
        });
        repeat(90 * hour, [this] { follow(); });
        repeat(110 * hour, [this] {
            coordinator_.reset();
            clock_.runReady();
            launch();
        });
    }

    void refresh()
    {
        asio::co_spawn(io_, coordinator_->refreshNow(), asio::detached);
        ++extraPolls_;
    }

    /// The program starts; its files are as it left them.
    void launch()
    {
        delivery_.emplace(io_.get_executor(), center_, random_);
        personWasAsked_ = false;
        center_.fake.answer = chance_.once(0.5);
        coordinator_.emplace(StatusBarPollingCoordinator::Parts{.engine = io_.get_executor(),
                                                                .main = io_.get_executor(),
                                                                .clock = clock_,
                                                                .random = random_,
                                                                .viewModel = viewModel_,
                                                                .networkMonitor = network_,
                                                                .defaults = defaults_,
                                                                .settings = [this] { return settingsRead(); },
                                                                .alertDelivery = *delivery_});
        model_.resume();
        follow();
    }

    /// The program follows another account.
    void follow()
    {
        const GlucoseProvider provider =
            chance_.once(0.5) ? GlucoseProvider::dexcom : GlucoseProvider::libreLinkUp;
        service_ = std::make_shared<SensorService>(provider, now(), length, chance_);
        client_ = std::make_shared<Client>(*this, service_);
        coordinator_->resetForNewConfiguration(client_, provider);
        model_.begin(wall());
        model_.loadSnooze(defaults_.date(alertsSnoozedUntilKey), wall());
        pass_.reset();
        passWaits_ = untold_ = false;
        rateLimitedAt_.reset();
        disturb(0);
        lastFetch_.reset();
        clock_.runReady();
    }

    void begin(Trouble trouble)
    {
        if (trouble_ != Trouble::none)
            return;
        trouble_ = trouble;
        troubledSince_ = now();
        if (trouble == Trouble::networkOff)
            path_.report(false);
        if (trouble == Trouble::sessionEnded)
            return;  // Ends by itself.
        later(True{chance_.spread(20, 12'000)}, [this] { end(); });
    }

    void end()
    {
        const Trouble was = std::exchange(trouble_, Trouble::none);
        if (was == Trouble::networkOff)
            path_.report(true);
        if (waitsForPerson(was)) {
            coordinator_->reconnect();
            model_.forgetTold();
            ++extraPolls_;
        }
        disturb(waitAfter(was, now() - troubledSince_));
    }

    /// Seconds of the longest wait that may have begun just before a trouble ended that lasted so long.
    static double waitAfter(Trouble trouble, True lasted)
    {
        switch (trouble) {
        case Trouble::networkOff: return 60;
        case Trouble::sessionLost: return 3240;
        case Trouble::unreachable:
        case Trouble::hangs:
        case Trouble::serverTrouble:
        case Trouble::broken: return std::min(120 + 4 * lasted.count(), 1080.0);  // Each twice the last one.
        default: return 1080;
        }
    }

    void spoilDesktop()
    {
        FakeNotificationCenter& fake = center_.fake;
        missingBlockedAt_ = now();
        switch (chance_.pick(5)) {
        case 0: fake.state = NotificationAuthorizationState::denied; break;
        case 1: fake.failure = NotificationError{"The notification server answered with an error."}; break;
        case 2: fake.state = NotificationAuthorizationState::notDetermined; break;
        default: fake.delay = std::chrono::milliseconds{1 + chance_.pick(5000)}; break;
        }
        later(True{chance_.spread(30, 20'000)}, [this] {
            FakeNotificationCenter& repaired = center_.fake;
            missingBlockedAt_ = now();
            repaired.state = NotificationAuthorizationState::authorized;
            repaired.failure.reset();
            repaired.delay = usualDelay;
            if (chance_.once(0.5) && now() > recoveredAt_ + True{61}) {
                coordinator_->alertPathDidRecover();
                recoveredAt_ = now();
                recoveredInPass_ = pass_.has_value();
            }
        });
    }

    void changeSettings()
    {
        if (!mayInterfere())
            return later(True{15}, [this] { changeSettings(); });
        if (missingUnderWay_)
            missingBlockedAt_ = now();  // It begins anew.
        const auto often = [this] { return chance_.once(0.85); };
        const auto halfOfThem = [this] { return chance_.once(0.5); };
        switch (chance_.pick(4)) {
        case 0: settings_.alertsEnabled = often(); break;
        case 1:
            settings_.lowGlucoseThreshold = std::round(chance_.uniform(60, 110));
            settings_.highGlucoseThreshold = std::round(chance_.uniform(105, 280));
            settings_.lowAlertRepeatMinutes = chance_.of<std::int64_t>({0, 5, 15, 15, 30});
            settings_.measurementUnit = chance_.of({"mg/dL", "mmol/L"});
            break;
        case 2:
            settings_.alertOnLowThreshold = often();
            settings_.alertOnHighThreshold = often();
            settings_.alertOnRapidFall = often();
            settings_.alertOnRapidRise = often();
            settings_.alertOnMissingData = often();
            settings_.snoozeLowAlerts = often();
            settings_.snoozeHighAlerts = often();
            settings_.snoozeRapidChangeAlerts = halfOfThem();
            break;
        default:
            settings_.quietHoursEnabled = halfOfThem();
            settings_.quietHoursStartMinutes = static_cast<std::int64_t>(chance_.pick(1440));
            settings_.quietHoursEndMinutes = chance_.once(0.1)
                                                 ? settings_.quietHoursStartMinutes
                                                 : static_cast<std::int64_t>(chance_.pick(1440));
            settings_.allowLowAlertsDuringQuietHours = halfOfThem();
        }
        coordinator_->alertSettingsDidUpdate();
        if (pass_)
            pass_->disturbed = true;
    }

    void snooze()
    {
        if (!mayInterfere())
            return later(True{15}, [this] { snooze(); });
        if (missingUnderWay_)
            missingBlockedAt_ = now();  // It begins anew.
        if (chance_.once(0.25)) {
            coordinator_->resumeAlerts();
            model_.resume();
        } else if (chance_.once(0.3)) {
            // Another process stored one, a wrong one, one that lasts too long, is over, or is sound.
            const Seconds ahead{chance_.of({0.0, 1e6, -100.0, 1800.0, 7200.0})};
            if (ahead == Seconds{0})
                defaults_.set(alertsSnoozedUntilKey, "tomorrow");
            else
                defaults_.set(alertsSnoozedUntilKey, wall() + ahead);
            coordinator_->alertSnoozeDidReload();
            const auto before = model_.snoozedUntil();
            model_.loadSnooze(defaults_.date(alertsSnoozedUntilKey), wall());
            if (model_.snoozedUntil() == before)
                return;
        } else {
            const Seconds duration{chance_.of({5.0, 1800.0, 1800.0, 7200.0, 1e6})};
            coordinator_->snoozeAlerts(duration);
            model_.snooze(duration, wall());
        }
        if (pass_)
            pass_->disturbed = true;
    }

    /// Whom it would reach cannot be told while both kinds of notification wait for the desktop.
    [[nodiscard]] bool mayInterfere() const { return !(pass_ && missingUnderWay_); }

    void nap(True duration)
    {
        const bool before = model_.isMissing(wall() + Seconds{2}).value_or(true);
        // What else would have happened meanwhile happens soon afterwards.
        while (!events_.empty() && events_.begin()->first < now() + duration) {
            auto event = events_.extract(events_.begin());
            event.key() = now() + duration + True{chance_.uniform(0, 100)};
            events_.insert(std::move(event));
        }
        clock_.suspend(duration);
        disturb(0);
        const bool told = chance_.once(0.7);
        // Readings are missing only because nobody looked: that is no gap before somebody has.
        const bool slept = !before && model_.isMissing(wall() - Seconds{2}).value_or(false);
        if (told || slept)
            looksFirstUntil_ = now() + True{59};
        if (told) {
            coordinator_->refreshAfterWake();
            ++extraPolls_;
        }
    }

    void setClock()
    {
        if (clockOff_ != True{0})
            return;
        const auto move = [this](True off) {
            const Date right = wall() - clockOff_;
            clockOff_ = off;
            clock_.setWallClock(right + off);
            clockSetAt_ = now();
            disturb(1080);
        };
        move(True{chance_.spread(5, 15'000) * (chance_.once(0.5) ? 1 : -1)});
        later(True{chance_.spread(60, 10'000)}, [move] { move(True{0}); });
    }

    // --- The service ---

    class Client final : public GlucoseAPIProtocol {
    public:
        Client(Month& month, std::shared_ptr<SensorService> service)
            : month_{month}, service_{std::move(service)}
        {
        }
        using Kind = GlucoseAPIError::Kind;
        using Fetched = std::expected<std::vector<GlucoseReading>, GlucoseAPIError>;

        asio::awaitable<Fetched> fetchLatestReadings() override
        {
            month_.fetchBegins();
            co_await month_.clock_.sleepFor(200ms);
            if (month_.trouble_ == Trouble::hangs)
                co_await month_.clock_.sleepFor(60s);
            month_.looksFirstUntil_ = {};
            Fetched fetched = answer();
            month_.fetchEnds(fetched);
            co_return fetched;
        }

        asio::awaitable<std::expected<void, GlucoseAPIError>> signInAgain() override
        {
            co_await month_.clock_.sleepFor(200ms);
            if (month_.trouble_ == Trouble::sessionEnded)
                month_.trouble_ = Trouble::none;
            if (const auto error = failure())
                co_return std::unexpected{*error};
            co_return std::expected<void, GlucoseAPIError>{};
        }

    private:
        Fetched answer()
        {
            if (month_.trouble_ == Trouble::broken)
                throw std::runtime_error{"broken"};
            if (const auto error = failure())
                return std::unexpected{*error};
            const True moment = month_.trouble_ == Trouble::frozen ? month_.troubledSince_ : month_.now();
            std::vector<GlucoseReading> readings = service_->answer(std::max(moment, frozenAt_));
            frozenAt_ = std::max(moment, frozenAt_);
            if (readings.empty())
                return std::unexpected{GlucoseAPIError{.kind = Kind::noReadings, .text = "No readings"}};
            return readings;
        }

        std::optional<GlucoseAPIError> failure()
        {
            const auto error = [](Kind kind, std::string text, std::optional<Seconds> wait = {}) {
                return GlucoseAPIError{.kind = kind, .text = std::move(text), .retryAfter = wait};
            };
            switch (month_.trouble_) {
            case Trouble::none:
            case Trouble::frozen: return std::nullopt;
            case Trouble::unreachable:
            case Trouble::networkOff:
            case Trouble::hangs: return error(Kind::transport, "No answer");
            case Trouble::serverTrouble: return error(Kind::serverTrouble, "Server error (500)");
            case Trouble::rateLimited: return error(Kind::rateLimited, "Too many requests", Seconds{300});
            case Trouble::noReadings: return error(Kind::noReadings, "No readings");
            case Trouble::sessionEnded:
            case Trouble::sessionLost: return error(Kind::sessionExpired, "Session expired");
            case Trouble::refused: return error(Kind::credentialsRefused, "Wrong password");
            case Trouble::locked: return error(Kind::accountLocked, "Account locked");
            case Trouble::needsPerson: return error(Kind::accountActionRequired, "Accept the terms.");
            case Trouble::broken:
            case Trouble::count: break;
            }
            std::unreachable();
        }

        Month& month_;
        std::shared_ptr<SensorService> service_;
        True frozenAt_{-1e9};  ///< A service does not go back.
    };

    void fetchBegins()
    {
        ++requests_;
        const bool clockJustSet = now() - clockSetAt_ < True{2};
        require(!lastFetch_ || clockJustSet || now() - *lastFetch_ > True{1 - 1e-3},
                "two requests within a second");
        lastFetch_ = now();
    }

    void fetchEnds(const Client::Fetched& fetched)
    {
        if (!fetched) {
            if (fetched.error().kind == GlucoseAPIError::Kind::rateLimited)
                rateLimitedAt_ = now();
            return;
        }
        if (!model_.receive(std::ranges::max(*fetched, {}, &GlucoseReading::date), wall()))
            return;
        ++counts_["passes"];
        if (pass_)
            passWaits_ = true;
        else
            startPass();
    }

    // --- The pass ---

    /// A pass that has something to post.
    struct Pass {
        GlucoseReading reading;
        AlertNotice due;
        Date at;
        bool asked = false;      ///< Whether it may post.
        bool permitted = false;  ///< It has to post now.
        bool posting = false;
        bool disturbed = false;  ///< Preferences or snooze have changed since.
    };

    void didNotTell()
    {
        untold_ = true;
        untoldAt_ = now();
    }

    /// What did not get through is tried again a minute later, or when the desktop says that it is back.
    AppSettings settingsRead()
    {
        const bool tries = now() >= untoldAt_ + True{60 - 1e-3} || now() == recoveredAt_ || recoveredInPass_;
        if (untold_ && !pass_ && tries)
            startPass();
        return settings_;
    }

    void startPass()
    {
        passWaits_ = untold_ = recoveredInPass_ = false;
        model_.pass(settings_, wall());
        if (const auto due = model_.due(wall()))
            pass_ = Pass{.reading = *model_.newest(), .due = *due, .at = wall()};
        else
            pass_.reset();
    }

    void closePass()
    {
        pass_.reset();
        if (std::exchange(passWaits_, false))
            startPass();
    }

    void askedForPermission()
    {
        passAsks_ = pass_ && !pass_->asked;
        if (passAsks_)
            pass_->asked = true;
        else
            missingUnderWay_ = true;
        if (center_.fake.delay > usualDelay && chance_.once(0.8))
            interfere();
    }

    /// While the desktop takes its time, something else happens.
    void interfere()
    {
        const True soon = std::chrono::duration_cast<True>(center_.fake.delay) * chance_.uniform(0, 2);
        switch (chance_.pick(10)) {
        case 0: return later(soon, [this] { follow(); });
        case 1: return later(soon, [this] { nap(True{chance_.spread(1, 1000)}); });
        case 2: return later(soon, [this] { spoilDesktop(); });
        case 3: return later(soon, [this] { refresh(); });
        case 4:
        case 5: return later(soon, [this] { setClock(); });
        case 6:
        case 7: return later(soon, [this] { snooze(); });
        default: return later(soon, [this] { changeSettings(); });
        }
    }

    void permissionIs(NotificationAuthorizationState state)
    {
        if (state == NotificationAuthorizationState::authorized)
            return permitted();
        if (state == NotificationAuthorizationState::notDetermined && !std::exchange(personWasAsked_, true))
            return;  // The person answers next.
        denied();
    }

    void denied()
    {
        if (passAsks_) {
            ++counts_["not let"];
            didNotTell();
            closePass();
        } else {
            missingUnderWay_ = false;
        }
    }

    void permitted()
    {
        if (!passAsks_ || !pass_)
            return;
        if (!pass_->disturbed && model_.newest() == pass_->reading && model_.due(wall()) == pass_->due) {
            pass_->permitted = true;
            return;
        }
        ++counts_["overtaken"];
        if (pass_->disturbed || model_.newest() == pass_->reading)
            startPass();
        else
            pass_.reset();
        if (!pass_)
            closePass();
    }

    void posting(const UserNotification& notification)
    {
        const AlertNotice notice{.title = notification.title,
                                 .body = notification.body,
                                 .urgent = notification.tone == NotificationTone::urgent};
        if (notice.title == "No glucose data")
            return postingMissing(notice, notification.offersSnooze);
        if (!pass_ || !pass_->permitted || pass_->posting)
            return fail("posted although nothing is due: " + notice.title + ": " + notice.body);
        pass_->posting = true;
        if (notice != pass_->due)
            fail("posted " + notice.title + ": " + notice.body + " instead of " + pass_->due.title + ": " +
                 pass_->due.body);
        const Seconds age = wall() - model_.newest()->date;
        require(age < Seconds{900 + 5} && age >= Seconds{-60}, "posted for an old value");
        require(notification.offersSnooze, "no snooze offered");
    }

    void posted(const UserNotification& notification, bool well)
    {
        ++counts_[well ? notification.title : "failed posts"];
        if (notification.title == "No glucose data") {
            missingUnderWay_ = false;
            if (well)
                model_.toldMissing(missingGap_);
            return;
        }
        if (!well)
            didNotTell();
        if (well && pass_)
            model_.posted(pass_->due, pass_->at);
        closePass();
    }

    // --- Missing data ---

    void postingMissing(const AlertNotice& notice, bool offersSnooze)
    {
        missingGap_ = model_.gap();
        require(model_.mayTellMissing(settings_, wall()), "missing data told while held back");
        require(!model_.wasToldMissing(), "the same gap told twice");
        require(model_.isMissing(wall()).value_or(true), "missing data told while there is some");
        require(!offersSnooze, "a snooze offered for missing data");
        require(now() >= looksFirstUntil_, "missing data told before a look at the service after sleep");
        if (model_.isMissing(wall()) && model_.trustsNewest() && clockOff_ == True{0}) {
            const StatusBarState& state = viewModel_.state();
            const AlertNotice expected =
                model_.missingNotice(state.activity ? problem_ : state.currentError, wall());
            if (notice != expected)
                fail("told \"" + notice.body + "\" instead of \"" + expected.body + "\"");
        }
    }

    // --- Looking after each step ---

    /// Something was in the way up to now, and may have its effect for `effect` seconds more.
    void disturb(double effect)
    {
        disturbedAt_ = now();
        disturbedUntil_ = std::max(disturbedUntil_, now() + True{effect});
    }

    void check()
    {
        if (center_.fake.running == 0) {
            if (pass_)
                fail("missed: " + pass_->due.title + ": " + pass_->due.body);
            missingUnderWay_ = false;
        }
        if (!viewModel_.state().activity)
            problem_ = viewModel_.state().currentError;
        checkSnooze();
        checkMissing();
        checkArrival();
        require(static_cast<double>(requests_) < 100 + now().count() / 36 + extraPolls_ * 3,
                "polls too often");
    }

    void checkSnooze()
    {
        if (pass_ || passWaits_)
            return;
        const auto shown = viewModel_.state().alertsSnoozedUntil;
        if (shown != model_.snoozedUntil() && !model_.mayFollow(shown, wall()))
            fail(fmt::format("snoozed until {} instead of {}", shown ? isoText(*shown) : "-",
                             model_.snoozedUntil() ? isoText(*model_.snoozedUntil()) : "-"));
        require(defaults_.date(alertsSnoozedUntilKey) == shown, "another snooze stored than shown");
    }

    /// A gap is told at once; behind what kept us from it, within two looks. A clock that was set is noticed
    /// with the next poll or look.
    void checkMissing()
    {
        const FakeNotificationCenter& fake = center_.fake;
        if (fake.state != NotificationAuthorizationState::authorized || fake.failure ||
            !model_.mayTellMissing(settings_, wall()))
            missingBlockedAt_ = now();
        const True excused =
            std::max({missingBlockedAt_ + True{135}, disturbedAt_ + True{135}, clockSetAt_ + True{1000}});
        if (now() < excused || model_.wasToldMissing())
            return;
        const Date then = wall() - Seconds{1} - fake.delay * 4;
        require(!model_.isMissing(then).value_or(now() > clockSetAt_ + True{2000}), "missing data not told");
    }

    /// What the service has reaches us as soon as the schedule promises.
    void checkArrival()
    {
        if (trouble_ != Trouble::none || clockOff_ != True{0}) {
            disturbedUntil_ = std::max(disturbedUntil_, now());
            return;
        }
        const SensorService::Sample* const there = service_->newest(now());
        if (!there)
            return;
        const Date date = SensorService::zero + there->measured;
        if (model_.newest() && model_.newest()->date >= date)
            return;
        const True held = model_.newest() ? model_.newest()->date - SensorService::zero : True{-1e9};
        // Aimed behind the next reading, or chased by the age of the last one.
        const True age = there->visible - held;
        const double wait = age < True{600} ? 90 : age < True{1800} ? 180 : age < True{3600} ? 504 : 1080;
        const bool restrained = rateLimitedAt_ && now() - *rateLimitedAt_ < True{3600 + 400};
        const True aim{restrained || service_->provider() == GlucoseProvider::dexcom ? 330 : 70};
        const True latest =
            std::max({there->visible + True{wait}, disturbedUntil_ + True{wait}, held + aim}) + True{15};
        if (now() > latest)
            fail(fmt::format("a reading of {} s ago, there since {} s, has not been fetched",
                             (now() - there->measured).count(), (now() - there->visible).count()));
    }

    asio::io_context io_{};
    FakeClock clock_{io_, SensorService::zero};
    Chance chance_;
    SeededRandom random_{chance_.seed()};
    FakeNetworkPath path_{};
    NetworkMonitor network_{clock_, random_, path_.monitoring()};
    UserDefaults defaults_{};
    AppSettings settings_{.lowAlertRepeatMinutes = 15};
    StatusBarViewModel viewModel_{io_.get_executor(), clock_, random_, [this] { return settings_; }};
    WatchedNotificationCenter center_{clock_};
    std::optional<UserNotificationGlucoseAlertDelivery> delivery_{};
    std::optional<StatusBarPollingCoordinator> coordinator_{};
    std::shared_ptr<SensorService> service_{};
    std::shared_ptr<Client> client_{};

    std::multimap<True, std::function<void()>> events_{};
    Trouble trouble_ = Trouble::none;
    True troubledSince_{0};
    True clockOff_{0};  ///< Our clock less the true time.
    True clockSetAt_{0};
    True disturbedAt_{0};      ///< When something last happened that polls and waits have to recover from.
    True disturbedUntil_{0};   ///< Until then polls may be late for it.
    True looksFirstUntil_{0};  ///< Until then a poll has to end first.
    std::optional<True> lastFetch_{};
    std::optional<True> rateLimitedAt_{};
    std::int64_t requests_ = 0;
    double extraPolls_ = 0;  ///< Those that the loop did not ask for.

    AlertModel model_{TimeZone::current()};
    std::optional<Pass> pass_{};
    bool passWaits_ = false;  ///< For the one that is under way.
    bool untold_ = false;     ///< The last pass did not get through.
    bool recoveredInPass_ = false;
    True untoldAt_{0};
    True recoveredAt_{-1e9};
    bool passAsks_ = false;  ///< Whose call for permission goes on: the pass's, else that of missing data.
    bool personWasAsked_ = false;
    bool missingUnderWay_ = false;
    std::uint64_t missingGap_ = 0;
    std::optional<ErrorInfo> problem_{};  ///< The last that was on screen; an activity hides it.
    True missingBlockedAt_{0};

    Counts counts_{};
};

/// Quiet hours go by the local time; in this zone the clock changes within the month.
class LocalZone {
public:
    LocalZone() { ::setenv("TZ", "Europe/Berlin", 1); }
    ~LocalZone() { before_ ? ::setenv("TZ", before_->c_str(), 1) : ::unsetenv("TZ"); }
    LocalZone(const LocalZone&) = delete;
    LocalZone& operator=(const LocalZone&) = delete;

private:
    std::optional<std::string> before_ =
        std::getenv("TZ") ? std::optional<std::string>{std::getenv("TZ")} : std::nullopt;
};

/// Sanitizers make it several times slower, and look for something else.
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr std::uint64_t lives = 2;
#else
constexpr std::uint64_t lives = 20;
#endif

TEST(AlertSimulation, missesNoneDoublesNoneAndTellsEachGapOnceWhateverHappens)
{
    const LocalZone zone;
    std::map<std::string, std::int64_t> counts;
    for (std::uint64_t seed = 1; seed <= lives; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Month month{seed};
        month.live();
        if (testing::Test::HasFailure())
            return;
        for (const auto& [name, count] : month.counts())
            counts[name] += count;
    }
    // Enough of each has happened for that to say something; in each month, on average.
    const std::pair<std::string, double> least[]{{"passes", 10'000},         {"Low glucose alert", 80},
                                                 {"High glucose alert", 20}, {"Rapid glucose drop", 50},
                                                 {"Rapid glucose rise", 10}, {"No glucose data", 25},
                                                 {"failed posts", 10},       {"not let", 10},
                                                 {"overtaken", 0.3}};
    for (const auto& [name, count] : least)
        EXPECT_GE(static_cast<double>(counts[name]), count * static_cast<double>(lives)) << name;
    for (const auto& [name, count] : counts)
        RecordProperty(name, fmt::format("{}", count));
}

}  // namespace
}  // namespace tidewell
