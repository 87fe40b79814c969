#include "statusbar/StatusBarViewModel.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "support/Asio.h"

namespace tidewell {

namespace {

/// The longest the shown reading goes without a look at its age, and a snooze at its end. The clock that we
/// sleep on does not notice that the wall clock was set; two minutes bound the error for half a wake-up a
/// minute.
constexpr std::chrono::milliseconds longestSleep = 2min;

std::string_view spokenActivity(StatusBarActivity activity)
{
    switch (activity) {
    case StatusBarActivity::loading: return "Loading glucose";
    case StatusBarActivity::refreshing: return "Refreshing glucose";
    case StatusBarActivity::authenticating: return "Signing in";
    }
    std::unreachable();
}

}  // namespace

ErrorInfo staleReadingWarning(Seconds age)
{
    return {.title = "Stale glucose reading",
            .message = "Last glucose reading was " + elapsedPhrase(age) + " ago.",
            .remediation = "Check your sensor connection and sensor app if readings do not resume."};
}

std::string spokenStatus(std::string glucose, std::optional<StatusBarActivity> activity,
                         const std::optional<ErrorInfo>& error)
{
    if (!error)
        return activity ? std::string{spokenActivity(*activity)} + ". " + glucose : glucose;
    for (const std::string& sentence : {error->title, error->message}) {
        if (sentence.empty())
            continue;
        glucose += " " + sentence;
        if (!sentence.ends_with('.'))
            glucose += '.';
    }
    return glucose;
}

struct StatusBarViewModel::Impl : std::enable_shared_from_this<Impl> {
    struct Observation {
        Observer call;
    };

    Impl(asio::any_io_executor executor, Clock& theClock, RandomSource& source, SettingsSource settingsSource)
        : main{std::move(executor)}, clock{theClock}, random{source}, settings{std::move(settingsSource)}
    {
    }

    asio::any_io_executor main;
    Clock& clock;
    RandomSource& random;
    SettingsSource settings;
    StatusBarState state{};

    /// Of the presented reading, at `presentedAt`; at least what the wall clock says.
    Seconds age{0};
    Date presentedAt{};

    Uuid freshnessGeneration{};
    Task<void> freshnessRefreshTask{};
    Task<void> snoozeTask{};  ///< Waits for the end of the snooze that the state tells of.

    std::vector<std::weak_ptr<Observation>> observations{};
    int openBatches = 0;
    bool changed = false;
    bool notifying = false;

    template <class T>
    void set(T& member, T value)
    {
        if (member == value)
            return;
        member = std::move(value);
        changed = true;
    }

    /// Runs `changes` and then tells the observers, once for the outermost call.
    template <class Changes>
    void change(Changes changes)
    {
        ++openBatches;
        changes();
        --openBatches;
        if (openBatches == 0 && !notifying)
            notify();
    }

    void notify()
    {
        notifying = true;
        while (std::exchange(changed, false)) {
            std::erase_if(observations, [](const auto& entry) { return entry.expired(); });
            const auto present = observations;
            for (const auto& entry : present) {
                if (const auto observation = entry.lock())
                    observation->call(state);
            }
        }
        notifying = false;
    }

    /// The moment at which the shown reading has the age that we give it.
    [[nodiscard]] Date presentedNow() const
    {
        return state.presentedReading ? state.presentedReading->date + age : clock.now();
    }

    void updateWarning() { set(state.hasWarning, state.currentError || state.freshnessWarning); }

    void speak(std::string glucose)
    {
        set(state.accessibilityValue, spokenStatus(std::move(glucose), state.activity, state.currentError));
    }

    void speak()
    {
        std::optional<GlucoseReading> reading = state.presentedReading;
        if (!reading && !state.glucoseHistory.empty())
            reading = state.glucoseHistory.back();
        speak(spokenGlucose(reading, presentedNow(), settings()));
    }

    void present(const GlucoseReading& reading, Date now)
    {
        const Seconds byWallClock = std::max(now - reading.date, Seconds{0});
        const auto& shown = state.presentedReading;
        if (shown && shown->date == reading.date && shown->source == reading.source)
            age = std::max(byWallClock, age + std::max(now - presentedAt, Seconds{0}));
        else
            age = byWallClock;
        presentedAt = now;
        set(state.ageMinutes,
            std::optional{age < recentAge ? 0 : static_cast<std::int64_t>(age / Seconds{60})});
        set(state.presentedReading, std::optional{reading});

        const std::optional<AppSettings> chosen = settings();
        const ReadingFreshness freshness = readingFreshness(reading.date, presentedNow());
        set(state.freshness, std::optional{freshness});
        set(state.statusTitle, statusTitle(reading, freshness, chosen));
        set(state.iconState, StatusBarIconState::value);
        if (freshness == ReadingFreshness::current) {
            set(state.freshnessWarning, std::optional<ErrorInfo>{});
            set(state.titleColor, titleColor(reading, chosen));
            speak();
        } else {
            set(state.freshnessWarning, std::optional{staleReadingWarning(age)});
            set(state.titleColor, TitleColor::primary);
            speak(spokenStaleReading(reading, presentedNow(), chosen));
        }
        updateWarning();
        scheduleFreshnessCheck(freshness);
    }

    void presentAgain(Date now)
    {
        if (state.presentedReading)
            present(GlucoseReading{*state.presentedReading}, now);
        else
            speak();
    }

    void scheduleFreshnessCheck(ReadingFreshness freshness)
    {
        cancelFreshnessCheck();
        if (freshness == ReadingFreshness::expired)
            return;
        const Seconds remaining = (freshness == ReadingFreshness::current ? staleAge : expiredAge) - age;
        const auto delay =
            std::clamp(std::chrono::ceil<std::chrono::milliseconds>(remaining), 1ms, longestSleep);
        freshnessRefreshTask =
            startTask(main, checkFreshness(weak_from_this(), &clock, delay, freshnessGeneration));
    }

    void cancelFreshnessCheck()
    {
        freshnessRefreshTask.cancel();
        freshnessRefreshTask = {};
        freshnessGeneration = Uuid::random(random);
    }

    static asio::awaitable<void> checkFreshness(std::weak_ptr<Impl> owner, Clock* clock,
                                                std::chrono::milliseconds delay, Uuid generation)
    {
        co_await clock->sleepFor(delay);
        const auto self = owner.lock();
        if (self && self->freshnessGeneration == generation)
            self->change([&] { self->presentAgain(clock->now()); });
    }

    void scheduleSnoozeEnd()
    {
        snoozeTask.cancel();
        snoozeTask = {};
        const auto until = state.alertsSnoozedUntil;
        if (until && *until > clock.now())
            snoozeTask = startTask(main, tellSnoozeEnd(weak_from_this(), &clock, *until));
    }

    static asio::awaitable<void> tellSnoozeEnd(std::weak_ptr<Impl> owner, Clock* clock, Date until)
    {
        for (Seconds left = until - clock->now(); left > Seconds{0}; left = until - clock->now())
            co_await clock->sleepFor(
                std::clamp(std::chrono::ceil<std::chrono::milliseconds>(left), 1ms, longestSleep));
        const auto self = owner.lock();
        if (self && self->state.alertsSnoozedUntil == until)
            self->change([&] { self->changed = true; });
    }
};

StatusBarViewModel::StatusBarViewModel(asio::any_io_executor main, Clock& clock, RandomSource& random,
                                       SettingsSource settings)
    : impl_{std::make_shared<Impl>(std::move(main), clock, random, std::move(settings))}
{
    impl_->speak();
    impl_->changed = false;
}

StatusBarViewModel::~StatusBarViewModel()
{
    impl_->cancelFreshnessCheck();
    impl_->snoozeTask.cancel();
}

const StatusBarState& StatusBarViewModel::state() const { return impl_->state; }

void StatusBarViewModel::setActivity(std::optional<StatusBarActivity> activity, Date now)
{
    impl_->change([&] {
        StatusBarState& state = impl_->state;
        impl_->set(state.activity, activity);
        impl_->set(state.currentError, std::optional<ErrorInfo>{});
        impl_->updateWarning();
        if (state.presentedReading)
            impl_->presentAgain(now);
        else if (!state.glucoseHistory.empty())
            impl_->present(GlucoseReading{state.glucoseHistory.back()}, now);
        else
            impl_->set(state.iconState, StatusBarIconState::waiting);
        impl_->speak();
    });
}

void StatusBarViewModel::finishActivity()
{
    impl_->change([&] {
        StatusBarState& state = impl_->state;
        impl_->set(state.activity, std::optional<StatusBarActivity>{});
        if (state.iconState == StatusBarIconState::waiting)
            impl_->set(state.iconState,
                       state.presentedReading ? StatusBarIconState::value : StatusBarIconState::attention);
        impl_->speak();
    });
}

void StatusBarViewModel::presentReading(const GlucoseReading& reading, Date now)
{
    impl_->change([&] { impl_->present(GlucoseReading{reading}, now); });
}

void StatusBarViewModel::setGlucoseHistory(std::vector<GlucoseReading> history)
{
    impl_->change([&] { impl_->set(impl_->state.glucoseHistory, std::move(history)); });
}

void StatusBarViewModel::setCurrentError(std::optional<ErrorInfo> error)
{
    impl_->change([&] {
        StatusBarState& state = impl_->state;
        impl_->set(state.currentError, std::move(error));
        impl_->updateWarning();
        if (state.currentError && !state.presentedReading)
            impl_->set(state.iconState, StatusBarIconState::attention);
        impl_->speak();
    });
}

void StatusBarViewModel::setNextRetryAt(std::optional<Date> date)
{
    impl_->change([&] { impl_->set(impl_->state.nextRetryAt, date); });
}

void StatusBarViewModel::setLastUpdateAt(std::optional<Date> date)
{
    impl_->change([&] { impl_->set(impl_->state.lastUpdateAt, date); });
}

void StatusBarViewModel::setUpdateAvailable(bool available)
{
    impl_->change([&] { impl_->set(impl_->state.updateAvailable, available); });
}

void StatusBarViewModel::setAlertsSnoozedUntil(std::optional<Date> date)
{
    impl_->change([&] {
        impl_->set(impl_->state.alertsSnoozedUntil, date);
        impl_->scheduleSnoozeEnd();
    });
}

void StatusBarViewModel::setAlertProblem(std::optional<std::string> problem)
{
    impl_->change([&] { impl_->set(impl_->state.alertProblem, std::move(problem)); });
}

void StatusBarViewModel::setHistoryProblem(std::optional<std::string> problem)
{
    impl_->change([&] { impl_->set(impl_->state.historyProblem, std::move(problem)); });
}

void StatusBarViewModel::setBookkeepingProblem(std::optional<std::string> problem)
{
    impl_->change([&] { impl_->set(impl_->state.bookkeepingProblem, std::move(problem)); });
}

void StatusBarViewModel::setTermsPending(bool pending)
{
    impl_->change([&] { impl_->set(impl_->state.termsPending, pending); });
}

void StatusBarViewModel::clear()
{
    impl_->change([&] {
        impl_->cancelFreshnessCheck();
        StatusBarState empty;
        empty.alertsSnoozedUntil = impl_->state.alertsSnoozedUntil;
        empty.alertProblem = impl_->state.alertProblem;
        empty.historyProblem = impl_->state.historyProblem;
        empty.bookkeepingProblem = impl_->state.bookkeepingProblem;
        empty.termsPending = impl_->state.termsPending;
        empty.updateAvailable = impl_->state.updateAvailable;
        empty.accessibilityValue = spokenGlucose(std::nullopt, impl_->clock.now(), impl_->settings());
        impl_->set(impl_->state, std::move(empty));
    });
}

void StatusBarViewModel::appSettingsDidUpdate()
{
    impl_->change([&] { impl_->presentAgain(impl_->clock.now()); });
}

void StatusBarViewModel::refreshFreshness()
{
    impl_->change([&] { impl_->presentAgain(impl_->clock.now()); });
}

void StatusBarViewModel::batch(const std::function<void()>& changes) { impl_->change(changes); }

std::shared_ptr<void> StatusBarViewModel::observe(Observer observer)
{
    auto observation = std::make_shared<Impl::Observation>(std::move(observer));
    impl_->observations.push_back(observation);
    return observation;
}

}  // namespace tidewell
