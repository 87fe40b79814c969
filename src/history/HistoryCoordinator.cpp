#include "history/HistoryCoordinator.h"

#include <boost/asio/experimental/awaitable_operators.hpp>
#include <boost/asio/strand.hpp>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <future>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>

#include "support/Log.h"
#include "support/Task.h"
#include "support/Workers.h"

namespace tidewell {

namespace {

const Log historyLog{"HistoryCoordinator"};

/// What the graph shows.
constexpr Seconds restoredLength{24.0 * 3600};
/// The first request comes five seconds after the start.
constexpr std::chrono::milliseconds restoreDeadline = 3s;
/// How often it is looked whether saving works now, after a restore that did not.
constexpr std::chrono::milliseconds restoreInterval = 60s;
constexpr std::chrono::milliseconds trimInterval = 24h;
/// Two days at one a minute: more than a service gives back. Older ones are dropped first.
constexpr std::size_t mostUnsaved = 2880;

/// Two readings with the same key are one.
struct ReadingKey {
    std::int64_t second;
    GlucoseProvider source;
    auto operator<=>(const ReadingKey&) const = default;
};

ReadingKey keyOf(const GlucoseReading& reading)
{
    return {static_cast<std::int64_t>(std::floor(unixSeconds(reading.date))), reading.source};
}

/// Keeps the newest.
template <class Value>
void bound(std::map<ReadingKey, Value>& readings)
{
    while (readings.size() > mostUnsaved)
        readings.erase(readings.begin());
}

/// What a call of the store left behind.
struct Outcome {
    GlucoseHistoryStatus status{};
    std::optional<GlucoseHistoryCollectionToken> token{};
    std::optional<GlucoseHistoryError> error{};  ///< Of this call.
    std::uint64_t number = 0;                    ///< Outcomes reach the engine in another order at times.
};

/// The store as the strand has it.
struct Desk {
    std::shared_ptr<GlucoseHistoryStore> store;
    std::uint64_t outcomes = 0;

    Outcome outcome(std::optional<GlucoseHistoryError> error)
    {
        Outcome made{.status = store->status(),
                     .token = store->collectionToken(),
                     .error = error,
                     .number = ++outcomes};
        if (error && !made.status.problem)
            made.status.problem = error;
        return made;
    }
};

template <class T>
std::optional<GlucoseHistoryError> errorOf(const std::expected<T, GlucoseHistoryError>& result)
{
    return result ? std::nullopt : std::optional{result.error()};
}

/// Whether an error may be gone at the next poll: damage is not, and need not be looked at again and again.
bool mayMend(GlucoseHistoryError error)
{
    return error != GlucoseHistoryError::invalidConfiguration &&
           error != GlucoseHistoryError::unreadableHistory;
}

/// The readings of one fetch, of which each saves its own time.
using Fetches = std::map<Date, std::vector<GlucoseReading>>;

std::optional<GlucoseHistoryError> saveAll(GlucoseHistoryStore& store,
                                           const GlucoseHistoryCollectionToken& token, const Fetches& fetches)
{
    std::optional<GlucoseHistoryError> error;
    for (const auto& [fetchedAt, readings] : fetches) {
        if (const auto saved = store.save(token, readings, fetchedAt); !saved)
            error = saved.error();
        // Each of the others would wait for the same disk or secret store.
        if (error == GlucoseHistoryError::keychainFailure || error == GlucoseHistoryError::storageFailure)
            break;
    }
    return error;
}

}  // namespace

struct HistoryCoordinator::Impl : std::enable_shared_from_this<Impl> {
    using Self = std::shared_ptr<Impl>;

    explicit Impl(Parts given)
        : parts{std::move(given)},
          desk{std::make_shared<Desk>(parts.store)},
          strand{asio::make_strand(parts.workers)}
    {
    }

    const Parts parts;
    const std::shared_ptr<Desk> desk;  ///< Its content is the strand's.
    const asio::any_io_executor strand;
    std::atomic<Mark> mark = 0;
    std::atomic<bool> ended = false;
    std::mutex mutex;
    std::optional<HistoryScopeID>
        wanted{};  ///< Of the last call of follow(), with its mark; under the mutex.

    // Of main.

    GlucoseHistoryStatus status{};
    std::list<std::weak_ptr<Observer>> observers{};

    // Of the engine.

    Mark followed = 0;
    std::optional<HistoryScopeID> scope{};
    bool needsRecovery = true;
    bool recoveryFailed = false;  ///< Tried again at the next poll, not at once.
    bool needsAttachment = false;
    bool needsReload = false;
    bool needsTrim = false;
    /// Of the scope that is attached, as far as is known.
    std::optional<GlucoseHistoryCollectionToken> token{};
    struct Unsaved {
        GlucoseReading reading;
        Date fetchedAt;
    };
    std::map<ReadingKey, Unsaved> unsaved{};  ///< To be saved by `token`, or by the first one that is known.
    std::map<ReadingKey, GlucoseReading> saved{};  ///< Of this scope, what need not be saved again.
    std::uint64_t worked = 0;                      ///< How many saves did.
    std::uint64_t lastTaken = 0;                   ///< The number of the latest outcome.
    bool working = false;
    std::optional<GlucoseHistoryError> lastProblem{};
    Task<void> workTask{};
    Task<void> trimTask{};

    template <class Work>
    void onEngine(Work work)
    {
        asio::post(parts.engine, [self = shared_from_this(), work = std::move(work)]() mutable {
            if (!self->ended)
                work(*self);
        });
    }

    void follow(Mark newMark, std::optional<HistoryScopeID> newScope)
    {
        followed = newMark;
        if (newScope != scope)
            unsaved.clear();  // Of the same one, they are saved by the token to come.
        scope = std::move(newScope);
        needsAttachment = true;
        token.reset();
        saved.clear();
        triesRecoveryAgain();
        needsTrim = true;
        if (!trimTask)
            trimTask = startTask(parts.engine, trimDaily(shared_from_this()));
        wake();
    }

    void save(Mark given, std::vector<GlucoseReading> readings, Date fetchedAt)
    {
        if (given != followed || given != mark || !scope)
            return;
        // Another process may have switched saving on or off, and what failed is tried again.
        needsReload = needsReload || !token;
        triesRecoveryAgain();
        for (auto& reading : readings) {
            const ReadingKey key = keyOf(reading);
            const auto known = saved.find(key);
            if (known != saved.end() && known->second == reading)
                continue;
            const auto waiting = unsaved.find(key);
            if (waiting == unsaved.end() || waiting->second.reading != reading)
                unsaved.insert_or_assign(key, Unsaved{std::move(reading), fetchedAt});
        }
        bound(unsaved);
        wake();
    }

    void triesRecoveryAgain()
    {
        needsRecovery = needsRecovery || std::exchange(recoveryFailed, false) ||
                        lastProblem == GlucoseHistoryError::deletionIncomplete;
    }

    void wake()
    {
        if (!std::exchange(working, true))
            workTask = startTask(parts.engine, work(shared_from_this()));
    }

    /// Runs a call of the store, which returns its error.
    template <class Call>
    static asio::awaitable<Outcome> run(Self self, Call call)
    {
        auto job = [desk = self->desk, call = std::move(call)]() mutable {
            return desk->outcome(call(*desk->store));
        };
        co_return co_await runOnWorker(self->strand, std::move(job));
    }

    /// Does what there is to do, until there is nothing, or something fails.
    static asio::awaitable<void> work(Self self)
    {
        bool well = true;
        while (well && !self->ended) {
            if (self->needsRecovery || self->needsAttachment || self->needsReload)
                well = co_await attach(self);
            else if (self->token && !self->unsaved.empty())
                well = co_await saveUnsaved(self);
            else if (self->needsTrim)  // After saving, which must not wait for a day that cannot be removed.
                well = co_await trim(self);
            else
                break;
        }
        if (!self->token && !self->needsAttachment)
            self->unsaved.clear();  // Saving is off.
        self->working = false;
    }

    static asio::awaitable<bool> attach(Self self)
    {
        const Mark begun = self->followed;
        const bool recovers = std::exchange(self->needsRecovery, false);
        const bool attaches = std::exchange(self->needsAttachment, false);
        self->needsReload = false;
        const auto fails = std::make_shared<bool>(false);  // Of the worker until its call ends.
        auto call = [recovers, attaches, fails, scope = self->scope,
                     now = self->parts.clock.now()](GlucoseHistoryStore& store) {
            // What cannot be ended now is told by the status; the account's own history may be well.
            if (recovers) {
                const auto recovered = store.recover(now);
                *fails = !recovered && mayMend(recovered.error());
                if (!recovered)
                    historyLog.warning(std::string{description(recovered.error())});
            }
            return attaches ? errorOf(store.attach(scope)) : errorOf(store.reload());
        };
        const Outcome outcome = co_await run(self, std::move(call));
        self->recoveryFailed = self->recoveryFailed || *fails;
        if (begun != self->followed)
            co_return true;  // The next one is waiting.
        if (outcome.error && attaches)
            self->needsAttachment = true;
        self->take(outcome);
        co_return !outcome.error;
    }

    static asio::awaitable<bool> trim(Self self)
    {
        self->needsTrim = false;
        if (!self->scope)
            co_return true;
        const Mark begun = self->followed;
        auto call = [now = self->parts.clock.now()](GlucoseHistoryStore& store) {
            return errorOf(store.trim(now));
        };
        const Outcome outcome = co_await run(self, std::move(call));
        self->needsTrim = outcome.error.has_value();
        if (begun == self->followed)
            self->take(outcome);
        co_return !outcome.error;
    }

    static asio::awaitable<bool> saveUnsaved(Self self)
    {
        const Mark begun = self->followed;
        const auto batch = std::exchange(self->unsaved, {});
        const auto batchToken = *self->token;
        Fetches fetches;
        for (const auto& [key, one] : batch)
            fetches[one.fetchedAt].push_back(one.reading);
        auto call = [batchToken, fetches = std::move(fetches)](GlucoseHistoryStore& store) {
            return saveAll(store, batchToken, fetches);
        };
        const Outcome outcome = co_await run(self, std::move(call));
        const auto keepBatch = [&] {
            self->unsaved.insert(batch.begin(), batch.end());  // A later fetch of the same one stays.
            bound(self->unsaved);
        };
        if (begun != self->followed) {
            if (outcome.error && self->scope == batchToken.accountScope)
                keepBatch();  // Somebody followed the same account again.
            co_return true;
        }
        self->take(outcome);
        if (self->token != batchToken)
            co_return !outcome.error;
        if (outcome.error) {
            keepBatch();
        } else {
            ++self->worked;
            for (const auto& [key, one] : batch)
                self->saved.insert_or_assign(key, one.reading);
            bound(self->saved);
        }
        co_return !outcome.error;
    }

    /// Follows what a call of the store found.
    void take(const Outcome& outcome)
    {
        if (outcome.error && outcome.error != lastProblem)
            historyLog.error(std::string{description(*outcome.error)});
        if (outcome.number < lastTaken)
            return;
        lastTaken = outcome.number;
        lastProblem = outcome.status.problem;
        auto found = outcome.token;
        if (needsAttachment || (found && found->accountScope != scope))
            found.reset();
        if (found != token) {
            saved.clear();
            if (token)
                unsaved.clear();
            token = std::move(found);
            // Saving began, or began again, after what waits was fetched.
            std::erase_if(unsaved, [&](const auto& one) {
                return one.second.fetchedAt < outcome.status.configuration.collectionCutoff;
            });
        }
        publish(outcome.status);
    }

    void publish(GlucoseHistoryStatus found)
    {
        asio::post(parts.main, [self = shared_from_this(), found = std::move(found)]() mutable {
            if (self->ended || self->status == found)
                return;
            self->status = std::move(found);
            for (auto at = self->observers.begin(); at != self->observers.end();) {
                const auto observer = at->lock();
                at = observer ? std::next(at) : self->observers.erase(at);
                if (observer)
                    (*observer)(self->status);
            }
        });
    }

    static asio::awaitable<void> trimDaily(Self self)
    {
        for (;;) {
            self->needsTrim = true;
            self->triesRecoveryAgain();
            self->wake();
            co_await self->parts.clock.sleepFor(trimInterval);
        }
    }

    static asio::awaitable<std::expected<GlucoseHistorySnapshot, GlucoseHistoryError>> snapshot(Self self,
                                                                                                Date begin,
                                                                                                Date end)
    {
        auto job = [desk = self->desk, begin, end] { return desk->store->snapshot(begin, end); };
        co_return co_await runOnWorker(self->strand, std::move(job));
    }

    /// What a change left behind, and what it came to.
    using Change = std::pair<Outcome, Changed>;

    /// Begins a call of the store at once, for the account that is followed now. Nothing cancels it: the
    /// awaitable only waits for its result.
    template <class Call>
    static asio::awaitable<Changed> change(const Self& self, Call call)
    {
        const std::lock_guard lock{self->mutex};
        auto work = [desk = self->desk, scope = self->wanted, now = self->parts.clock.now(),
                     call = std::move(call)] {
            // The account may still wait to be attached. The call itself tells what is wrong with its
            // history.
            if (desk->store->status().scope != scope)
                std::ignore = desk->store->attach(scope);
            Changed changed = call(*desk->store, now);
            if (!changed)
                historyLog.error(std::string{description(changed.error())});
            // Only what lasts is told by the status: whoever asked hears of the rest.
            return Change{desk->outcome(std::nullopt), std::move(changed)};
        };
        const auto task = std::make_shared<std::packaged_task<Change()>>(std::move(work));
        const std::shared_future<Change> done = task->get_future().share();
        asio::post(self->strand, [task] { (*task)(); });
        self->onEngine([mark = self->mark.load(), done](Impl& impl) {
            std::ignore = startTask(impl.parts.engine, takeChange(impl.shared_from_this(), mark, done));
        });
        // The strand keeps the order, so nobody waits in get().
        return runOnWorker(self->strand, [done] { return done.get().second; });
    }

    static asio::awaitable<void> takeChange(Self self, Mark begun, std::shared_future<Change> done)
    {
        auto job = [done = std::move(done)] { return done.get().first; };
        const Outcome outcome = co_await runOnWorker(self->strand, std::move(job));
        if (self->ended || begun != self->followed)
            co_return;
        if (self->needsAttachment)
            self->wake();  // Tried again: the change may have mended what kept it from working.
        else
            self->take(outcome);
    }

    static asio::awaitable<std::expected<void, GlucoseHistoryError>> withoutStatus(
        asio::awaitable<Changed> change)
    {
        const Changed changed = co_await std::move(change);
        if (!changed)
            co_return std::unexpected(changed.error());
        co_return std::expected<void, GlucoseHistoryError>{};
    }

    static asio::awaitable<std::vector<GlucoseReading>> restore(Self self, Mark given)
    {
        for (;;) {
            auto readings = co_await restoreOnce(self, given);
            if (readings)
                co_return *std::move(readings);
            const auto before = self->worked;
            while (self->worked == before) {
                co_await self->parts.clock.sleepFor(restoreInterval);
                if (self->ended || given != self->followed)
                    co_return std::vector<GlucoseReading>{};
            }
        }
    }

    /// Empty when they could not be read.
    static asio::awaitable<std::optional<std::vector<GlucoseReading>>> restoreOnce(Self self, Mark given)
    {
        using namespace asio::experimental::awaitable_operators;
        using Read = std::pair<Outcome, std::vector<StoredReading>>;
        if (given != self->followed || !self->scope)
            co_return std::vector<GlucoseReading>{};
        const Date now = self->parts.clock.now();
        auto job = [desk = self->desk, scope = self->scope, now] {
            GlucoseHistoryStore* const store = desk->store.get();
            Read read;
            std::optional<GlucoseHistoryError> error;
            if (store->status().scope != scope)
                error = errorOf(store->attach(scope));
            // What was never saved needs no key, and asks for none.
            if (!error && store->status().configuration.hasPreviouslyEnabled) {
                auto snapshot = store->snapshot(now - restoredLength, now + restoredLength);
                error = errorOf(snapshot);
                if (snapshot)
                    read.second = std::move(snapshot->readings);
            }
            read.first = desk->outcome(error);
            return read;
        };
        auto reading = runOnWorker(self->strand, std::move(job));
        auto deadline = self->parts.clock.sleepFor(restoreDeadline);
        const auto first = co_await (std::move(reading) || std::move(deadline));
        std::vector<GlucoseReading> readings;
        const auto* const read = std::get_if<Read>(&first);
        if (!read) {
            historyLog.warning("Saved readings were not there in time for the start.");
            co_return std::nullopt;
        }
        if (self->ended || given != self->followed)
            co_return readings;
        if (!self->needsAttachment)
            self->take(read->first);
        if (read->first.error)
            co_return std::nullopt;
        for (const auto& stored : read->second) {
            self->saved.insert_or_assign(keyOf(stored.reading), stored.reading);
            readings.push_back(stored.reading);
        }
        bound(self->saved);
        co_return readings;
    }
};

HistoryCoordinator::HistoryCoordinator(Parts parts) : impl_{std::make_shared<Impl>(std::move(parts))} {}

HistoryCoordinator::~HistoryCoordinator()
{
    impl_->ended = true;
    ++impl_->mark;
    asio::post(impl_->parts.engine, [impl = impl_] {
        impl->workTask.cancel();
        impl->trimTask.cancel();
    });
}

void HistoryCoordinator::follow(std::optional<HistoryScopeID> scope)
{
    const std::lock_guard lock{impl_->mutex};
    const Mark mark = ++impl_->mark;
    impl_->wanted = scope;
    impl_->onEngine([mark, scope = std::move(scope)](Impl& self) mutable {
        if (mark > self.followed)
            self.follow(mark, std::move(scope));
    });
}

HistoryCoordinator::Mark HistoryCoordinator::mark() const { return impl_->mark; }

void HistoryCoordinator::save(Mark mark, std::vector<GlucoseReading> readings, Date fetchedAt)
{
    impl_->onEngine([mark, readings = std::move(readings), fetchedAt](Impl& self) mutable {
        self.save(mark, std::move(readings), fetchedAt);
    });
}

asio::awaitable<std::vector<GlucoseReading>> HistoryCoordinator::restore(Mark mark)
{
    return Impl::restore(impl_, mark);
}

asio::awaitable<std::expected<GlucoseHistorySnapshot, GlucoseHistoryError>> HistoryCoordinator::snapshot(
    Date begin, Date end)
{
    return Impl::snapshot(impl_, begin, end);
}

asio::awaitable<std::expected<void, GlucoseHistoryError>> HistoryCoordinator::setInsightsUnlocked(
    HistoryScopeID scope)
{
    return Impl::withoutStatus(
        Impl::change(impl_, [scope = std::move(scope)](GlucoseHistoryStore& store, Date now) {
            // Not the right of whoever is signed in by now.
            return store.status().scope == scope ? store.setInsightsUnlocked(now) : Changed{store.status()};
        }));
}

asio::awaitable<HistoryCoordinator::Changed> HistoryCoordinator::enable(std::int64_t retentionDays,
                                                                        std::int64_t consentVersion)
{
    return Impl::change(impl_, [=](GlucoseHistoryStore& store, Date now) {
        return store.enable(retentionDays, consentVersion, now);
    });
}

asio::awaitable<HistoryCoordinator::Changed> HistoryCoordinator::pause()
{
    return Impl::change(impl_, [](GlucoseHistoryStore& store, Date) { return store.pause(); });
}

asio::awaitable<HistoryCoordinator::Changed> HistoryCoordinator::setRetention(std::int64_t days)
{
    return Impl::change(
        impl_, [days](GlucoseHistoryStore& store, Date now) { return store.setRetention(days, now); });
}

asio::awaitable<HistoryCoordinator::Changed> HistoryCoordinator::deleteHistory(bool everyAccount)
{
    return Impl::change(impl_, [everyAccount](GlucoseHistoryStore& store, Date now) {
        return everyAccount ? store.deleteAll(now) : store.deleteAttached(now);
    });
}

void HistoryCoordinator::historyDidChange()
{
    impl_->onEngine([](Impl& self) {
        self.needsReload = true;
        self.wake();
    });
}

const GlucoseHistoryStatus& HistoryCoordinator::status() const { return impl_->status; }

std::shared_ptr<void> HistoryCoordinator::observe(Observer observer)
{
    const auto kept = std::make_shared<Observer>(std::move(observer));
    impl_->observers.push_back(kept);
    return kept;
}

}  // namespace tidewell
