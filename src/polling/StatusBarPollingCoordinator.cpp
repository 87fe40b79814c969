#include "polling/StatusBarPollingCoordinator.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <boost/system/system_error.hpp>

#include "polling/Calls.h"
#include "polling/PollFailure.h"
#include "polling/PollingAlerts.h"
#include "polling/ReadingMerge.h"
#include "polling/RunGeneration.h"
#include "support/Asio.h"
#include "support/Log.h"
#include "support/OnExecutor.h"
#include "support/Task.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr std::int64_t noDataEscalationThreshold = 3;
constexpr Seconds noDataEscalationWindow{1800};
constexpr Seconds wakeRefreshDebounceInterval{10};
/// How long a wake waits for the network before it tries without.
constexpr Seconds wakeReachabilityTimeout{10};
/// After a wake and after the network's return: names resolve a moment later than the path is there.
constexpr Milliseconds wakeNetworkSettleDelay = 800ms;
constexpr Milliseconds reconnectSettleDelay = 400ms;
constexpr Milliseconds postReauthenticationDelay = 250ms;
constexpr Seconds noDataReachabilityTimeout{5};
constexpr Seconds authReachabilityTimeout{10};
/// A request that is no further away is what the person waits for.
constexpr Milliseconds dueSoon = 5s;
/// Between two looks at an account that waits for the person; nothing is requested at these.
constexpr Seconds accountActionPause{1800};

/// How often LibreLinkUp's current value changes. Dexcom's readings are the schedule's own five minutes
/// apart.
constexpr Seconds libreReadingInterval{60};
/// After LibreLinkUp has asked us to slow down: how long we come less often, and then how often.
constexpr Seconds restraintPeriod{3600};
constexpr Seconds restrainedInterval{300};

/// Between two refreshes because the network returned; a path that comes and goes must not make a storm.
constexpr Seconds reconnectSpacing{10};
/// While polls fail although the path is said to be there: how often to look whether it went and came back.
constexpr Milliseconds pathCheckInterval = 20s;
constexpr Seconds pathWait{3600};

/// A sleep that took this much more or less of the wall clock than asked was no ordinary one: the machine
/// slept, or its time was set.
constexpr Seconds clockJump{30};
/// How far ahead of our clock a reading may be dated. Less than this is two clocks that are a little apart;
/// with more, an old reading could pass for a new one.
constexpr Seconds futureTolerance{300};
/// How far ahead it may be dated for alerts to go by it. One dated further ahead is shown, and the clock is
/// named as wrong.
constexpr Seconds alertTolerance = MissingDataAlert::futureTolerance;
/// The longest backoff, which is the furthest target while no reading is known.
constexpr Seconds longestBackoff{2700 + 540};

using Fetched = std::expected<std::vector<GlucoseReading>, GlucoseAPIError>;

/// The failure of a service call that says nothing of itself.
template <class T>
std::expected<T, GlucoseAPIError> unknownFailure()
{
    return std::unexpected{GlucoseAPIError{}};
}

}  // namespace

struct StatusBarPollingCoordinator::Impl : std::enable_shared_from_this<Impl> {
    using Self = std::shared_ptr<Impl>;

    /// The sleep before the next poll, decided when the last one ended.
    struct Plan {
        std::int64_t delay;  ///< ms
        std::string line;    ///< For the log.
    };

    explicit Impl(Parts given) : parts{std::move(given)} { resetRecoveryState(); }

    const Parts parts;
    const Log log{"StatusBarPollingCoordinator"};
    const std::shared_ptr<RunGeneration> generation = std::make_shared<RunGeneration>(parts.random);
    const std::shared_ptr<PollingAlerts> alerts = std::make_shared<PollingAlerts>(parts, generation);

    // Everything below belongs to the engine.

    std::shared_ptr<GlucoseAPIProtocol> client{};
    GlucoseProvider provider = GlucoseProvider::dexcom;
    std::optional<Date> retryNotBefore{};
    std::optional<Date> rateLimitedAt{};  ///< When the service last asked to wait.
    bool requiresAccountAction = false;
    std::int64_t refusedSignIns = 0;  ///< In a row.
    std::uint64_t reconnects = 0;     ///< How often the person had the account tried again.
    std::vector<GlucoseReading> glucoseHistory{};
    std::size_t lastFetchedHistoryCount = 0;
    bool hasFetched = false;  ///< Any readings of this account; those that are saved do not count.
    HistoryCoordinator::Mark historyMark = 0;  ///< Of this run.
    StatusBarPollingSchedule pollingSchedule{};
    std::optional<Date> lastWakeRefreshAt{};
    std::optional<Date> lastReconnectRefreshAt{};
    std::optional<Date> lastFetchAt{};  ///< Its end, or its start while it runs.
    std::optional<Plan> plan{};
    Milliseconds fetchSpacing = PollingResumption{}.fetchSpacing;

    Task<void> loopTask{};
    Task<void> loopSleep{};
    Task<void> refreshTask{};
    Task<void> wakeTask{};
    Task<void> networkTask{};  ///< Waits for the network's return after failures.
    Task<void> restoreTask{};

    // --- Any thread ---

    [[nodiscard]] bool isCurrent(const Uuid& run) const { return generation->isCurrent(run); }

    /// Runs `work` on the engine if `run` is still the current one then.
    template <class Work>
    void onEngine(Uuid run, Work work)
    {
        asio::post(parts.engine, [self = shared_from_this(), run, work = std::move(work)]() mutable {
            if (self->isCurrent(run))
                work(*self);
        });
    }

    /// On main: the coordinator has gone, and what it told with may have gone too. A run that ends in that
    /// moment may still speak under the generation that ended it.
    bool closed = false;

    /// Lets `changes` reach the view model as one, if `run` is still the current one when main gets to it.
    template <class Changes>
    void onMain(Uuid run, Changes changes)
    {
        asio::post(parts.main, [self = shared_from_this(), run, changes = std::move(changes)]() mutable {
            if (self->closed || !self->isCurrent(run))
                return;
            StatusBarViewModel& viewModel = self->parts.viewModel;
            viewModel.batch([&] { changes(viewModel, self->parts.clock.now()); });
        });
    }

    /// What readings of a run that begins now are saved by.
    [[nodiscard]] HistoryCoordinator::Mark presentMark() const
    {
        return parts.history ? parts.history->mark() : 0;
    }

    /// Another configuration. `missesData`: there is an account, though nobody to ask for its data.
    void reset(std::shared_ptr<GlucoseAPIProtocol> newClient, GlucoseProvider newProvider,
               std::optional<ErrorInfo> problem, bool missesData,
               std::optional<StatusBarActivity> shown = std::nullopt)
    {
        const Uuid run = generation->renew();
        const HistoryCoordinator::Mark mark = presentMark();
        onMain(run, [problem, shown](StatusBarViewModel& viewModel, Date now) {
            viewModel.clear();
            if (shown)
                viewModel.setActivity(shown, now);
            if (problem)
                viewModel.setCurrentError(problem);
        });
        asio::post(parts.engine, [self = shared_from_this(), run, newProvider, missesData, mark,
                                  problem = std::move(problem), newClient = std::move(newClient)] {
            // Also when this run is over already: the next one must not find another account's readings.
            self->forgetAccount();
            if (!self->isCurrent(run))
                return;
            self->historyMark = mark;
            self->begin(run, newClient, newProvider);
            self->showLoading(run);
            if (!missesData)
                return;
            self->alerts->recordProblem(problem);
            self->alerts->begin(run);
        });
    }

    // --- Runs: engine ---

    void begin(const Uuid& run, std::shared_ptr<GlucoseAPIProtocol> newClient, GlucoseProvider newProvider)
    {
        endTasks();
        client = std::move(newClient);
        provider = newProvider;
        alerts->reloadSnooze();
        if (!client)
            return;
        if (parts.history)
            restoreTask = startTask(parts.engine, restore(shared_from_this(), run));
        loopTask = startTask(parts.engine, pollingLoop(shared_from_this(), run));
        alerts->begin(run);
    }

    /// Of a run that is about to ask for its first readings.
    void showLoading(const Uuid& run)
    {
        if (!client || !glucoseHistory.empty())
            return;
        onMain(run, [](StatusBarViewModel& viewModel, Date now) {
            viewModel.setActivity(StatusBarActivity::loading, now);
        });
    }

    /// Goes on where another run stopped.
    void resume(const Uuid& run, std::shared_ptr<GlucoseAPIProtocol> newClient, GlucoseProvider newProvider,
                PollingResumption from)
    {
        const Date now = parts.clock.now();
        const PollingProgress& progress = from.progress;
        forgetAccount();
        fetchSpacing = from.fetchSpacing;
        glucoseHistory = mergedReadings({}, std::move(from.glucoseHistory));
        hasFetched = !glucoseHistory.empty();
        provider = newProvider;
        refusedSignIns = progress.refusedSignIns;
        // Nobody could do anything about what is not shown.
        requiresAccountAction = progress.requiresAccountAction && from.problem;
        if (progress.retryNotBefore && *progress.retryNotBefore > now) {
            retryNotBefore = progress.retryNotBefore;
            rateLimitedAt = now;
        }
        std::optional<Date> next = progress.nextPollDate;
        if (!glucoseHistory.empty()) {
            pollingSchedule.readingInterval = readingInterval(now);
            (void)pollingSchedule.recordSuccess(std::min(glucoseHistory.back().date, now), false);
            if (!next)
                next = pollingSchedule.nextPollDate;
        }
        begin(run, std::move(newClient), newProvider);
        if (!client)
            return;
        alerts->recordProblem(from.problem);
        if (!glucoseHistory.empty()) {
            alerts->recordReading(glucoseHistory.back());
            alerts->startPass(run);
        }
        if (next && !requiresAccountAction)
            plan = resumedPlan(*next, now);
        // What the other one was about is over. Loading says that an answer is near, and hides the problem.
        const bool isDue = !plan || Milliseconds{plan->delay} <= dueSoon;
        if (isDue && glucoseHistory.empty() && !from.problem)
            showLoading(run);
        else
            showStatus(run, std::move(from.problem), from.nextRetryAt);
    }

    /// The sleep before the first request of a run that goes on; `next` is when the other one would have
    /// asked.
    [[nodiscard]] Plan resumedPlan(Date next, Date now)
    {
        if (glucoseHistory.empty())
            pollingSchedule.nextPollDate = next;
        Date first = next;
        if (first <= now)  // Its request may be under way, and ours would be the second within a second.
            first = std::max(now, first + Seconds{PollingResumption{}.fetchSpacing});
        else if (first - now > longestBackoff)  // The clock was set back.
            first = now;
        if (retryNotBefore)
            first = std::max(first, *retryNotBefore);
        const std::int64_t delay = std::chrono::ceil<Milliseconds>(timeUntil(first, now)).count();
        return {delay, fmt::format("⏱️ [Scheduler] {}: goes on in {}ms", isoText(now), delay)};
    }

    void endTasks()
    {
        for (Task<void>* task :
             {&loopTask, &loopSleep, &refreshTask, &wakeTask, &networkTask, &restoreTask}) {
            task->cancel();
            *task = {};
        }
        alerts->end();
        plan.reset();
    }

    /// Back to the first poll. That the service asked us to slow down is no matter of ours: it stays until
    /// there is another account.
    void resetRecoveryState()
    {
        retryNotBefore.reset();
        requiresAccountAction = false;
        refusedSignIns = 0;
        pollingSchedule = {.randomUnit = [&random = parts.random] { return random.unit(); }};
        lastWakeRefreshAt.reset();
        lastReconnectRefreshAt.reset();
        alerts->rearm();
    }

    /// Nothing of an account may be left when there is another one.
    void forgetAccount()
    {
        resetRecoveryState();
        rateLimitedAt.reset();
        fetchSpacing = PollingResumption{}.fetchSpacing;
        glucoseHistory.clear();
        lastFetchedHistoryCount = 0;
        hasFetched = false;
        alerts->forgetAccount();
    }

    // --- Saved history ---

    /// Shows what was saved, also when the first answer is there already: it may not reach back as far.
    static asio::awaitable<void> restore(Self self, Uuid run)
    {
        auto saved = co_await self->parts.history->restore(self->historyMark);
        // One from a time when the clock was ahead would stay the newest.
        const Date latest = self->parts.clock.now() + alertTolerance;
        std::erase_if(saved, [latest](const GlucoseReading& reading) { return reading.date > latest; });
        if (saved.empty() || !self->isCurrent(run))
            co_return;
        // What was fetched meanwhile counts against what was saved.
        self->glucoseHistory = mergedReadings(mergedReadings({}, std::move(saved)), self->glucoseHistory);
        self->onMain(run, [history = self->glucoseHistory](StatusBarViewModel& viewModel, Date now) mutable {
            const GlucoseReading shown = history.back();
            viewModel.setGlucoseHistory(std::move(history));
            viewModel.presentReading(shown, now);
        });
    }

    // --- Loop ---

    static asio::awaitable<void> pollingLoop(Self self, Uuid run)
    {
        while (self->isCurrent(run)) {
            const Milliseconds delay{self->takePlan()};
            const Date before = self->parts.clock.now();
            self->loopSleep = startTask(self->parts.engine, self->parts.clock.sleepFor(delay));
            // Ends early when a refresh that others asked for has changed the plan.
            const bool slept = co_await endedWell(self->loopSleep);
            if (!self->isCurrent(run))
                co_return;
            if (!slept)
                continue;
            // Whatever comes of the poll: the age that is shown in words goes on, for an expired reading too.
            self->onMain(run, [](StatusBarViewModel& viewModel, Date) { viewModel.refreshFreshness(); });
            const Seconds jump = self->parts.clock.now() - before - delay;
            if (std::abs(jump.count()) > clockJump.count()) {
                self->followClock(jump);
                co_await wakeRefresh(self, run);
            } else {
                co_await refresh(self, run, std::nullopt);
            }
        }
    }

    /// The wall clock was set back: moments of our own making move with it, or we would wait for them again.
    void followClock(Seconds jump)
    {
        if (jump > Seconds{0})
            return;
        for (std::optional<Date>* date :
             {&retryNotBefore, &rateLimitedAt, &pollingSchedule.nextPollDate, &pollingSchedule.lastNoDataAt,
              &lastWakeRefreshAt, &lastReconnectRefreshAt, &lastFetchAt}) {
            if (*date)
                **date += jump;
        }
    }

    /// How often a reading is to be expected, and asked for.
    [[nodiscard]] Seconds readingInterval(Date now) const
    {
        if (provider == GlucoseProvider::dexcom)
            return StatusBarPollingSchedule::usualReadingInterval;
        const bool restrained = rateLimitedAt && now - *rateLimitedAt < restraintPeriod;
        return restrained ? restrainedInterval : libreReadingInterval;
    }

    /// The clock was set back while we looked elsewhere: no moment of our own making may then be awaited
    /// again.
    void forgetWhatCannotBe(Date now)
    {
        if (rateLimitedAt && *rateLimitedAt - now > clockJump) {
            rateLimitedAt.reset();
            retryNotBefore.reset();
        }
        std::optional<Date>& target = pollingSchedule.nextPollDate;
        if (!target || requiresAccountAction || retryNotBefore)
            return;
        const Date furthest = pollingSchedule.lastReadingDate
                                  ? pollingSchedule.targetBehind(now + futureTolerance)
                                  : now + longestBackoff;
        if (*target > furthest)
            target = now;
    }

    [[nodiscard]] Plan makePlan(Date now)
    {
        forgetWhatCannotBe(now);
        std::optional<Date>& target = pollingSchedule.nextPollDate;
        if (requiresAccountAction && (!target || *target <= now + Seconds{5}))
            target = now + accountActionPause;

        std::int64_t delay = pollingSchedule.delayForNextPoll(now);
        if (retryNotBefore)
            delay = std::max(delay, std::chrono::ceil<Milliseconds>(timeUntil(*retryNotBefore, now)).count());
        const std::string prefix = "⏱️ [Scheduler] " + isoText(now);
        if (!target)
            return {delay, fmt::format("{}: no target; using adaptive backoff = {}ms", prefix, delay)};
        const auto ahead = static_cast<std::int64_t>(timeUntil(*target, now).count() * 1000);
        if (ahead > 4999)
            return {delay, fmt::format("{}: nextPoll scheduled in {}ms", prefix, delay)};
        return {delay, fmt::format("{}: target in past or too soon ({}ms); using adaptive backoff = {}ms",
                                   prefix, ahead, delay)};
    }

    /// Decides the next sleep anew, and lets the loop take it up at once. Returns when it will end.
    Date replan(Date now)
    {
        plan = makePlan(now);
        loopSleep.cancel();
        const Date next = now + Milliseconds{plan->delay};
        tellProgress(next);
        return next;
    }

    void tellProgress(Date next)
    {
        if (!parts.progressDidChange)
            return;
        const PollingProgress progress{
            .nextPollDate = requiresAccountAction ? std::nullopt : std::optional{next},
            .retryNotBefore = retryNotBefore,
            .refusedSignIns = refusedSignIns,
            .requiresAccountAction = requiresAccountAction};
        onMain(generation->current(), [self = shared_from_this(), progress](StatusBarViewModel&, Date) {
            self->parts.progressDidChange(progress);
        });
    }

    std::int64_t takePlan()
    {
        if (!plan)
            plan = makePlan(parts.clock.now());
        const Plan taken = *std::exchange(plan, std::nullopt);
        log.debug(taken.line);
        return taken.delay;
    }

    // --- Refresh ---

    [[nodiscard]] bool mayRefresh(const Uuid& run) const
    {
        return isCurrent(run) && client && !requiresAccountAction &&
               !(retryNotBefore && *retryNotBefore > parts.clock.now());
    }

    /// Runs a refresh, or joins the one that runs. `shown` is what the screen says meanwhile; the loop's own
    /// polls go unseen.
    static asio::awaitable<void> refresh(Self self, Uuid run, std::optional<StatusBarActivity> shown)
    {
        if (!self->mayRefresh(run))
            co_return;
        if (shown)
            self->onMain(
                run, [shown](StatusBarViewModel& viewModel, Date now) { viewModel.setActivity(shown, now); });
        if (!self->refreshTask.running())
            self->refreshTask = startTask(self->parts.engine, refreshCycle(self, run));
        const bool well = co_await endedWell(self->refreshTask);
        if (!well && self->isCurrent(run))
            self->log.error("A refresh ended without a result");
        // However the refresh ended, what we showed ends with it.
        if (shown)
            self->onMain(run, [](StatusBarViewModel& viewModel, Date) { viewModel.finishActivity(); });
    }

    /// Leaves with operation_aborted, and without a request, when the run has ended meanwhile.
    static asio::awaitable<Fetched> fetch(Self self, Uuid run, std::shared_ptr<GlucoseAPIProtocol> client)
    {
        if (self->lastFetchAt) {
            const Seconds since = std::max(self->parts.clock.now() - *self->lastFetchAt, Seconds{0});
            if (since < self->fetchSpacing)
                co_await self->parts.clock.sleepFor(
                    std::chrono::ceil<Milliseconds>(self->fetchSpacing - since));
        }
        if (!self->isCurrent(run))
            throw boost::system::system_error{asio::error::operation_aborted};
        self->lastFetchAt = self->parts.clock.now();
        Fetched fetched =
            co_await guarded(client->fetchLatestReadings(), unknownFailure<std::vector<GlucoseReading>>());
        self->lastFetchAt = self->parts.clock.now();
        co_return fetched;
    }

    static asio::awaitable<void> refreshCycle(Self self, Uuid run)
    {
        const std::uint64_t poll = self->alerts->pollBegins();
        const bool good = co_await pollOnce(self, run);
        if (!self->isCurrent(run))
            co_return;
        self->alerts->pollEnded(poll);
        if (good)
            self->alerts->startPass(run);
    }

    /// Fetches, and draws the conclusions. True when there are readings to alert by.
    static asio::awaitable<bool> pollOnce(Self self, Uuid run)
    {
        NetworkMonitor& network = self->parts.networkMonitor;
        Clock& clock = self->parts.clock;
        const std::shared_ptr<GlucoseAPIProtocol> client = self->client;
        bool signedInAgain = false;
        bool waitedForNetwork = false;
        std::uint64_t reconnects = self->reconnects;

        Fetched fetched = co_await fetch(self, run, client);
        while (self->isCurrent(run)) {
            if (fetched) {
                co_return self->finishWithReadings(run, std::move(*fetched));
            }
            const GlucoseAPIError error = fetched.error();
            const bool nothingFound = error.kind == GlucoseAPIError::Kind::transport ||
                                      error.kind == GlucoseAPIError::Kind::noReadings;
            self->log.warning("Error updating glucose: " + error.text);

            if (nothingFound && !waitedForNetwork && !network.isReachable()) {
                waitedForNetwork = true;
                if (co_await network.waitUntilReachable(noDataReachabilityTimeout)) {
                    co_await clock.sleepFor(reconnectSettleDelay);
                    fetched = co_await fetch(self, run, client);
                    continue;
                }
                if (!self->isCurrent(run))
                    co_return false;
            }
            if (error.kind == GlucoseAPIError::Kind::noReadings) {
                self->finishWithoutReadings(run);
                co_return false;
            }
            if (error.kind == GlucoseAPIError::Kind::credentialsRefused)
                ++self->refusedSignIns;
            const PollFailureVerdict verdict =
                pollFailureVerdict(error, {.provider = self->provider,
                                           .signedInAgain = signedInAgain,
                                           .refusedSignIns = self->refusedSignIns,
                                           .networkReachable = network.isReachable(),
                                           .consecutiveFailures = self->pollingSchedule.consecutiveFailures});
            if (verdict.action == PollFailureVerdict::Action::waitForPerson &&
                reconnects != self->reconnects) {
                // The person has resolved meanwhile what this was asked before.
                reconnects = self->reconnects;
                self->refusedSignIns = 0;
                signedInAgain = false;
                fetched = co_await fetch(self, run, client);
                continue;
            }
            if (verdict.action != PollFailureVerdict::Action::signInAgain) {
                self->finishWithFailure(run, verdict);
                co_return false;
            }

            signedInAgain = true;
            self->onMain(run, [](StatusBarViewModel& viewModel, Date now) {
                viewModel.setActivity(StatusBarActivity::authenticating, now);
            });
            // Whatever comes of the wait: the path is a hint, and the service is the one to ask.
            co_await network.waitUntilReachable(authReachabilityTimeout);
            if (!self->isCurrent(run))
                co_return false;
            const auto signedIn = co_await guarded(client->signInAgain(), unknownFailure<void>());
            if (!self->isCurrent(run))
                co_return false;
            if (!signedIn) {
                self->log.warning("Reauthentication failed: " + signedIn.error().text);
                fetched = std::unexpected{signedIn.error()};
                continue;
            }
            co_await clock.sleepFor(postReauthenticationDelay);
            fetched = co_await fetch(self, run, client);
        }
        co_return false;
    }

    /// Whether there is something to alert by.
    bool finishWithReadings(const Uuid& run, std::vector<GlucoseReading> fetched)
    {
        const Date now = parts.clock.now();
        lastFetchedHistoryCount = fetched.size();
        if (fetched.empty()) {
            finishWithoutReadings(run);
            return false;
        }
        const Date newestFetched = std::ranges::max(fetched, {}, &GlucoseReading::date).date;
        if (newestFetched - now > futureTolerance) {
            finishWithFailure(run, {.outcome = {.kind = StatusBarPollOutcome::Kind::httpError},
                                    .status = clockStatus(newestFetched - now)});
            return false;
        }

        std::optional<Date> previousNewest;
        if (hasFetched && !glucoseHistory.empty())
            previousNewest = glucoseHistory.back().date;
        glucoseHistory = mergedReadings(std::move(glucoseHistory), std::move(fetched));
        hasFetched = true;
        if (parts.history)
            parts.history->save(historyMark, glucoseHistory, now);
        refusedSignIns = 0;
        retryNotBefore.reset();
        alerts->recordReading(glucoseHistory.back());
        const Date newest = glucoseHistory.back().date;
        std::optional<ErrorInfo> status;
        if (newestFetched - now > alertTolerance)
            status = clockStatus(newestFetched - now);
        alerts->recordProblem(status);

        onMain(run, [history = glucoseHistory, status](StatusBarViewModel& viewModel, Date seen) mutable {
            const GlucoseReading shown = history.back();
            viewModel.setGlucoseHistory(std::move(history));
            viewModel.setCurrentError(std::move(status));
            viewModel.setNextRetryAt(std::nullopt);
            viewModel.setLastUpdateAt(seen);
            viewModel.presentReading(shown, seen);
            viewModel.finishActivity();
        });

        pollingSchedule.readingInterval = readingInterval(now);
        // When our clock is behind, the next reading comes sooner than the date of this one says.
        const Date target =
            pollingSchedule.recordSuccess(std::min(newest, now), !previousNewest || newest > *previousNewest);
        log.debug(fmt::format("⏱️ [Scheduler] nowUTC={} lastReadingUTC={} lastReadingLocal={} nextPollUTC={}",
                              isoText(now), isoText(newest), localMediumText(newest, TimeZone::current()),
                              isoText(target)));
        log.debug(
            fmt::format("Readings fetched: {}, held: {}", lastFetchedHistoryCount, glucoseHistory.size()));
        replan(now);
        return true;
    }

    /// The service answered, and has no reading for us.
    void finishWithoutReadings(const Uuid& run)
    {
        const Date now = parts.clock.now();
        const std::int64_t count = pollingSchedule.recordNoData(now, noDataEscalationWindow);
        pollingSchedule.lastOutcome = {.kind = StatusBarPollOutcome::Kind::noNewData};
        pollingSchedule.consecutiveFailures = 0;
        if (!pollingSchedule.lastReadingDate)
            pollingSchedule.nextPollDate = now + Seconds{pollingSchedule.adaptiveBackoff(now)};
        refusedSignIns = 0;
        retryNotBefore.reset();

        std::optional<ErrorInfo> status;
        if (!hasFetched)
            status = noDataStatus(provider);
        else if (count >= noDataEscalationThreshold)
            status = noNewDataStatus(provider);
        const Date next = replan(now);
        showStatus(run, status, status ? std::optional{next} : std::nullopt);
    }

    void finishWithFailure(const Uuid& run, const PollFailureVerdict& verdict)
    {
        using enum PollFailureVerdict::Action;
        const Date now = parts.clock.now();
        pollingSchedule.recordFailure(verdict.outcome, now);
        retryNotBefore.reset();
        if (verdict.action == waitForService) {
            rateLimitedAt = now;
            retryNotBefore = now + verdict.wait;
            pollingSchedule.nextPollDate = retryNotBefore;
        }
        if (verdict.action == waitForPerson) {
            requiresAccountAction = true;
            pollingSchedule.nextPollDate = now + accountActionPause;
        }
        const Date next = replan(now);
        showStatus(run, verdict.status, requiresAccountAction ? std::nullopt : std::optional{next});
        if (verdict.outcome.kind == StatusBarPollOutcome::Kind::networkError && !networkTask.running())
            networkTask = startTask(parts.engine, refreshWhenNetworkReturns(shared_from_this(), run));
    }

    void showStatus(const Uuid& run, std::optional<ErrorInfo> status, std::optional<Date> nextRetryAt)
    {
        alerts->recordProblem(status);
        onMain(run, [status = std::move(status), nextRetryAt](StatusBarViewModel& viewModel, Date) {
            viewModel.setCurrentError(status);
            viewModel.setNextRetryAt(nextRetryAt);
            viewModel.finishActivity();
        });
    }

    // --- Wake and reconnect ---

    static asio::awaitable<void> wakeRefresh(Self self, Uuid run)
    {
        const Date now = self->parts.clock.now();
        const std::optional<Date> last = self->lastWakeRefreshAt;
        if (last && now >= *last && now - *last < wakeRefreshDebounceInterval)
            co_return;
        self->lastWakeRefreshAt = now;
        if (self->parts.networkMonitor.isReachable())
            co_await self->parts.clock.sleepFor(wakeNetworkSettleDelay);
        else if (co_await self->parts.networkMonitor.waitUntilReachable(wakeReachabilityTimeout))
            co_await self->parts.clock.sleepFor(reconnectSettleDelay);
        // Without a network we try all the same: what the system says about the path is a hint.
        co_await refresh(self, run, std::nullopt);
    }

    [[nodiscard]] bool pollsFailForTheNetwork(const Uuid& run) const
    {
        return isCurrent(run) && pollingSchedule.lastOutcome.kind == StatusBarPollOutcome::Kind::networkError;
    }

    /// Spares the person a long backoff once the network is back.
    static asio::awaitable<void> refreshWhenNetworkReturns(Self self, Uuid run)
    {
        NetworkMonitor& network = self->parts.networkMonitor;
        Clock& clock = self->parts.clock;
        std::uint64_t seen = network.timesReachable();
        while (self->pollsFailForTheNetwork(run)) {
            if (network.isReachable() && network.timesReachable() == seen) {
                co_await clock.sleepFor(pathCheckInterval);
                continue;
            }
            if (!co_await network.waitUntilReachable(pathWait))
                continue;
            seen = network.timesReachable();
            if (self->lastReconnectRefreshAt) {
                const Seconds since = clock.now() - *self->lastReconnectRefreshAt;
                if (since < reconnectSpacing)
                    co_await clock.sleepFor(std::chrono::ceil<Milliseconds>(
                        std::min(reconnectSpacing - since, reconnectSpacing)));
            }
            co_await clock.sleepFor(reconnectSettleDelay);
            if (!network.isReachable() || !self->pollsFailForTheNetwork(run))
                continue;
            self->lastReconnectRefreshAt = clock.now();
            // The backoff grew with the old network; should the new one need a moment, it begins anew.
            self->pollingSchedule.consecutiveFailures = 0;
            co_await refresh(self, run, std::nullopt);
        }
    }

    /// True, since what crosses threads has a result.
    static asio::awaitable<bool> refreshShown(Self self, Uuid run)
    {
        co_await refresh(std::move(self), run, StatusBarActivity::refreshing);
        co_return true;
    }

    static asio::awaitable<void> refreshNow(Self self)
    {
        (void)co_await runOnExecutor(self->parts.engine, refreshShown(self, self->generation->current()));
    }
};

StatusBarPollingCoordinator::StatusBarPollingCoordinator(Parts parts)
    : impl_{std::make_shared<Impl>(std::move(parts))}
{
    impl_->alerts->publishSnooze();
}

StatusBarPollingCoordinator::~StatusBarPollingCoordinator()
{
    impl_->closed = true;
    impl_->alerts->close();
    const Uuid run = impl_->generation->renew();
    impl_->onEngine(run, [](Impl& impl) { impl.endTasks(); });
}

void StatusBarPollingCoordinator::start(std::shared_ptr<GlucoseAPIProtocol> client, GlucoseProvider provider)
{
    const Uuid run = impl_->generation->renew();
    impl_->onEngine(run,
                    [run, client = std::move(client), provider, mark = impl_->presentMark()](Impl& impl) {
                        impl.historyMark = mark;
                        impl.begin(run, client, provider);
                        impl.showLoading(run);
                    });
}

void StatusBarPollingCoordinator::resume(std::shared_ptr<GlucoseAPIProtocol> client, GlucoseProvider provider,
                                         PollingResumption resumption)
{
    const Uuid run = impl_->generation->renew();
    asio::post(impl_->parts.engine,
               [self = impl_, run, client = std::move(client), provider, mark = impl_->presentMark(),
                resumption = std::move(resumption)]() mutable {
                   if (!self->isCurrent(run))
                       return self->forgetAccount();
                   self->historyMark = mark;
                   self->resume(run, std::move(client), provider, std::move(resumption));
               });
}

void StatusBarPollingCoordinator::stop()
{
    const Uuid run = impl_->generation->renew();
    impl_->onMain(run, [](StatusBarViewModel& viewModel, Date) { viewModel.finishActivity(); });
    impl_->onEngine(run, [](Impl& impl) {
        impl.endTasks();
        impl.client.reset();
    });
}

void StatusBarPollingCoordinator::resetForNewConfiguration(std::shared_ptr<GlucoseAPIProtocol> client,
                                                           GlucoseProvider provider,
                                                           std::optional<ErrorInfo> problem)
{
    if (!client && !problem)
        problem = signInRequiredStatus();
    impl_->reset(std::move(client), provider, std::move(problem), false);
}

void StatusBarPollingCoordinator::resetForUnreachableAccount(GlucoseProvider provider, ErrorInfo problem)
{
    impl_->reset(nullptr, provider, std::move(problem), true);
}

void StatusBarPollingCoordinator::resetForFollowing()
{
    impl_->reset(nullptr, GlucoseProvider::dexcom, std::nullopt, false, StatusBarActivity::loading);
}

void StatusBarPollingCoordinator::reconnect()
{
    const Uuid run = impl_->generation->current();
    impl_->onEngine(run, [run](Impl& impl) {
        if (!impl.client)
            return;
        impl.resetRecoveryState();
        ++impl.reconnects;
        asio::co_spawn(impl.parts.engine,
                       Impl::refresh(impl.shared_from_this(), run, StatusBarActivity::refreshing),
                       asio::detached);
    });
}

asio::awaitable<void> StatusBarPollingCoordinator::refreshNow() { return Impl::refreshNow(impl_); }

void StatusBarPollingCoordinator::refreshAfterWake()
{
    const Uuid run = impl_->generation->current();
    impl_->onMain(run, [](StatusBarViewModel& viewModel, Date) { viewModel.refreshFreshness(); });
    impl_->onEngine(run, [run](Impl& impl) {
        if (!impl.client)
            return;
        impl.alerts->machineWoke();
        impl.wakeTask = startTask(impl.parts.engine, Impl::wakeRefresh(impl.shared_from_this(), run));
    });
}

void StatusBarPollingCoordinator::snoozeAlerts(Seconds duration)
{
    asio::post(impl_->parts.engine, [alerts = impl_->alerts, duration] { alerts->snooze(duration); });
}

void StatusBarPollingCoordinator::resumeAlerts()
{
    asio::post(impl_->parts.engine, [alerts = impl_->alerts] { alerts->resume(); });
}

void StatusBarPollingCoordinator::alertSnoozeDidReload()
{
    asio::post(impl_->parts.engine, [alerts = impl_->alerts] { alerts->reloadSnooze(); });
}

void StatusBarPollingCoordinator::alertPathDidRecover()
{
    asio::post(impl_->parts.engine, [alerts = impl_->alerts] { alerts->alertPathDidRecover(); });
}

void StatusBarPollingCoordinator::alertSettingsDidUpdate()
{
    asio::post(impl_->parts.engine, [alerts = impl_->alerts] { alerts->settingsDidUpdate(); });
}

}  // namespace tidewell
