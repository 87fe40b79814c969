#include "polling/PollingAlerts.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <boost/asio/experimental/awaitable_operators.hpp>

#include "polling/Calls.h"

namespace tidewell {

namespace {

using Milliseconds = std::chrono::milliseconds;

/// A wait that ended this much late was no ordinary one: the machine slept, or its time was set.
constexpr Seconds shortestNap{2};
/// How much later than made for a snooze may end before that counts as a clock that was set back.
constexpr Seconds snoozeTolerance{30};

NotificationTone alertTone(GlucoseAlertKind kind)
{
    switch (kind) {
    case GlucoseAlertKind::lowThreshold:
    case GlucoseAlertKind::rapidFall: return NotificationTone::urgent;
    case GlucoseAlertKind::highThreshold:
    case GlucoseAlertKind::rapidRise: return NotificationTone::standard;
    }
    std::unreachable();
}

}  // namespace

PollingAlerts::PollingAlerts(StatusBarPollingCoordinator::Parts parts,
                             std::shared_ptr<const RunGeneration> generation)
    : parts_{std::move(parts)}, generation_{std::move(generation)}
{
    loadSnooze();
}

// --- Run ---

void PollingAlerts::begin(const Uuid& run)
{
    hurriedAt_.reset();
    missingData_.beginRun(parts_.clock.now(), pollsBegun_);
    missingDataTask_ = startTask(parts_.engine, watchForMissingData(shared_from_this(), run));
}

void PollingAlerts::end()
{
    for (Task<void>* task : {&passTask_, &missingDataTask_}) {
        task->cancel();
        *task = {};
    }
    wake_.reset();
    passWake_.reset();
    passWanted_ = passUntold_ = missingUntold_ = false;
}

void PollingAlerts::forgetAccount()
{
    rearm();
    missingData_ = {};
    newest_.reset();
    problem_.reset();
}

void PollingAlerts::recordReading(GlucoseReading newest)
{
    missingData_.recordReading(newest.date, parts_.clock.now());
    newest_ = std::move(newest);
}

void PollingAlerts::pollEnded(std::uint64_t number)
{
    missingData_.pollEnded(number);
    lookForMissingData();
}

void PollingAlerts::machineWoke() { missingData_.hold(parts_.clock.now(), pollsBegun_); }

// --- What every alert needs ---

/// The preferences, read on `main`.
asio::awaitable<GlucoseAlertSettings> PollingAlerts::settingsInForce(Self self)
{
    struct Answer {
        explicit Answer(const asio::any_io_executor& engine) : ready{engine, 1} {}
        Wake ready;
        GlucoseAlertSettings settings{};
    };
    const auto answer = std::make_shared<Answer>(self->parts_.engine);
    const std::weak_ptr awaited = answer;  // A caller who gave up waits no longer.
    asio::post(self->parts_.main, [self, awaited] {
        if (self->closed_)
            return;
        const GlucoseAlertSettings settings = glucoseAlertSettings(self->parts_.settings());
        asio::post(self->parts_.engine, [awaited, settings] {
            const auto waiting = awaited.lock();
            if (!waiting)
                return;
            waiting->settings = settings;
            waiting->ready.try_send(boost::system::error_code{});
        });
    });
    co_await answer->ready.async_receive(asio::use_awaitable);
    co_return answer->settings;
}

GlucoseAlertEvaluator::Pass PollingAlerts::moment() const
{
    return {.now = parts_.clock.now(), .snoozedUntil = snoozedUntil_, .zone = TimeZone::current()};
}

asio::awaitable<bool> PollingAlerts::mayPost()
{
    return guarded(parts_.alertDelivery.requestAuthorizationIfNeeded(), false);
}

asio::awaitable<PollingAlerts::Posted> PollingAlerts::post(GlucoseAlertContent content, NotificationTone tone,
                                                           bool offersSnooze)
{
    return guarded(parts_.alertDelivery.sendNotification(std::move(content.title), std::move(content.body),
                                                         tone, offersSnooze),
                   Posted{std::unexpect, "The notification centre failed."});
}

void PollingAlerts::logFailedPost(const NotificationError& error) const
{
    log_.error("Failed to post glucose alert notification: " + error.message);
}

// --- The pass ---

void PollingAlerts::startPass(const Uuid& run)
{
    passWanted_ = true;
    if (passing_ && passTask_.running()) {
        if (passWake_)
            passWake_->try_send(boost::system::error_code{});
        return;
    }
    passing_ = true;
    passTask_ = startTask(parts_.engine, passes(shared_from_this(), run));
}

/// One at a time: a notification centre that hangs may hold up the earlier one for seconds. What the desktop
/// did not take is tried again every minute, as long as it is due.
asio::awaitable<void> PollingAlerts::passes(Self self, Uuid run)
{
    while (self->isCurrent(run)) {
        self->recovered_ = false;
        const PassEnd end = co_await pass(self, run);
        self->passUntold_ = end == PassEnd::untold;
        if (end == PassEnd::overtaken || self->passWanted_ || (self->passUntold_ && self->recovered_))
            continue;
        if (end == PassEnd::settled) {
            // The task itself may end a turn later, and no wish for a pass may get lost in between.
            if (self->isCurrent(run))
                self->passing_ = false;
            co_return;
        }
        self->passWake_ = std::make_shared<Wake>(self->parts_.engine, 1);
        co_await pause(self, self->passWake_, self->parts_.clock.now() + MissingDataAlert::lookInterval);
        self->passWake_.reset();
    }
}

/// Posts what is due by the newest reading, at most one notification. It has to begin anew when something
/// else has to be posted by the time that the desktop has kept us waiting, or snooze or preferences have
/// changed. A newer reading has a pass of its own.
asio::awaitable<PollingAlerts::PassEnd> PollingAlerts::pass(Self self, Uuid run)
{
    const GlucoseAlertSettings settings = co_await settingsInForce(self);
    self->passWanted_ = false;
    if (!self->isCurrent(run) || !self->newest_)
        co_return PassEnd::settled;
    self->followSnooze();
    const GlucoseReading reading = *self->newest_;
    const std::uint64_t revision = self->revision_;
    const GlucoseAlertEvaluator::Pass pass = self->moment();
    const auto kind = self->evaluator_.evaluate(reading, settings, pass);
    if (!kind)
        co_return PassEnd::settled;
    const bool granted = co_await self->mayPost();
    if (!self->isCurrent(run))
        co_return PassEnd::settled;
    if (!granted)
        co_return PassEnd::untold;
    if (self->revision_ != revision)
        co_return PassEnd::overtaken;
    if (!self->isStillDue(*kind, reading, settings))
        co_return self->newest_ == reading ? PassEnd::overtaken : PassEnd::settled;
    const Posted posted =
        co_await self->post(GlucoseAlertEvaluator::content(*kind, reading, settings), alertTone(*kind), true);
    if (!self->isCurrent(run))
        co_return PassEnd::settled;
    if (!posted) {
        self->logFailedPost(posted.error());
        co_return PassEnd::untold;
    }
    self->evaluator_.recordPosted(*kind, pass.now);
    co_return PassEnd::settled;
}

void PollingAlerts::alertPathDidRecover()
{
    const Date now = parts_.clock.now();
    const bool justTried =
        hurriedAt_ && now >= *hurriedAt_ && now - *hurriedAt_ < MissingDataAlert::lookInterval;
    if (justTried || !(passUntold_ || missingUntold_ || passTask_.running()))
        return;
    hurriedAt_ = now;
    recovered_ = true;
    if (passWake_)
        passWake_->try_send(boost::system::error_code{});
    lookForMissingData();
}

/// What was due when the desktop was asked may be too old, or overtaken, when it answers.
bool PollingAlerts::isStillDue(GlucoseAlertKind kind, const GlucoseReading& reading,
                               const GlucoseAlertSettings& settings) const
{
    GlucoseAlertEvaluator asOfNow = evaluator_;
    return newest_ == reading && asOfNow.evaluate(reading, settings, moment()) == kind;
}

// --- Missing data ---

/// Has the wait planned anew.
void PollingAlerts::lookForMissingData()
{
    changed_ = true;
    if (wake_)
        wake_->try_send(boost::system::error_code{});
}

asio::awaitable<void> PollingAlerts::watchForMissingData(Self self, Uuid run)
{
    while (self->isCurrent(run)) {
        self->changed_ = false;
        const GlucoseAlertSettings settings = co_await settingsInForce(self);
        if (!self->isCurrent(run))
            co_return;
        self->followSnooze();
        MissingDataAlert::Look look = self->missingData_.look(settings, self->moment());
        if (look.post) {
            if (co_await tellOfMissingData(self, run, settings))
                continue;
            look.again = self->parts_.clock.now() + MissingDataAlert::lookInterval;
        }
        self->missingUntold_ = look.post;
        if (self->isCurrent(run) && !self->changed_)
            co_await pauseWatch(self, look.again);
    }
}

/// Until that moment, or something has changed.
asio::awaitable<void> PollingAlerts::pauseWatch(Self self, std::optional<Date> until)
{
    Clock& clock = self->parts_.clock;
    const Date began = clock.now();
    self->wake_ = std::make_shared<Wake>(self->parts_.engine, 1);
    co_await pause(self, self->wake_, until);
    if (until && clock.now() - std::max(*until, began) > shortestNap)
        self->missingData_.hold(clock.now(), self->pollsBegun_);
}

/// Until that moment, or a word through `wake`: each wait has its own, since a channel does not take what is
/// sent after a receive that was cancelled.
asio::awaitable<void> PollingAlerts::pause(Self self, std::shared_ptr<Wake> wake, std::optional<Date> until)
{
    using namespace asio::experimental::awaitable_operators;
    if (!until) {
        co_await wake->async_receive(asio::use_awaitable);
        co_return;
    }
    Clock& clock = self->parts_.clock;
    const auto delay =
        std::max(std::chrono::ceil<Milliseconds>(timeUntil(*until, clock.now())), Milliseconds{1});
    co_await (wake->async_receive(asio::use_awaitable) || clock.sleepFor(delay));
}

/// False when it could not be posted and has to be tried again later.
asio::awaitable<bool> PollingAlerts::tellOfMissingData(Self self, Uuid run, GlucoseAlertSettings settings)
{
    const std::uint64_t gap = self->missingData_.gap();
    const std::uint64_t revision = self->revision_;
    const bool granted = co_await self->mayPost();
    if (!granted || !self->isCurrent(run))
        co_return false;
    // While the desktop made up its mind, a reading may have come, or somebody has snoozed.
    if (self->revision_ != revision || !self->missingData_.look(settings, self->moment()).post)
        co_return true;
    const Date now = self->parts_.clock.now();
    const Posted posted =
        co_await self->post(self->missingData_.content(self->problem_, now, TimeZone::current()),
                            NotificationTone::urgent, false);
    if (!self->isCurrent(run))
        co_return false;
    if (posted)
        self->missingData_.recordTold(gap);
    else
        self->logFailedPost(posted.error());
    co_return posted.has_value();
}

// --- Snooze and preferences ---

void PollingAlerts::snooze(Seconds duration)
{
    // Written so that what is no number counts as the shortest.
    snoozeLength_ = duration > shortestSnooze ? std::min(duration, longestSnooze) : shortestSnooze;
    storeSnooze(parts_.clock.now() + snoozeLength_);
    lookForMissingData();
}

void PollingAlerts::resume()
{
    storeSnooze(std::nullopt);
    lookForMissingData();
}

void PollingAlerts::reloadSnooze()
{
    loadSnooze();
    publishSnooze();
    lookForMissingData();
}

void PollingAlerts::publishSnooze()
{
    asio::post(parts_.main, [self = shared_from_this(), until = snoozedUntil_] {
        if (!self->closed_)
            self->parts_.viewModel.setAlertsSnoozedUntil(until);
    });
}

void PollingAlerts::settingsDidUpdate()
{
    ++revision_;
    lookForMissingData();
}

/// Reads the stored snooze. What no snooze of ours can be is ignored, and removed when it would be long.
void PollingAlerts::loadSnooze()
{
    std::optional<Date> until = parts_.defaults.date(alertsSnoozedUntilKey);
    const Date now = parts_.clock.now();
    if (until && *until - now > longestSnooze) {
        parts_.defaults.remove(alertsSnoozedUntilKey);
        until.reset();
    }
    if (until == snoozedUntil_)
        return;
    snoozedUntil_ = until;
    snoozeLength_ = until ? *until - now : Seconds{0};
    ++revision_;
}

void PollingAlerts::storeSnooze(std::optional<Date> until)
{
    snoozedUntil_ = until;
    ++revision_;
    if (until)
        parts_.defaults.set(alertsSnoozedUntilKey, *until);
    else
        parts_.defaults.remove(alertsSnoozedUntilKey);
    publishSnooze();
}

/// Clears a snooze that has ended. One that ends later than it was made for, because the clock was set back,
/// begins anew.
void PollingAlerts::followSnooze()
{
    if (!snoozedUntil_)
        return;
    const Date now = parts_.clock.now();
    if (*snoozedUntil_ <= now)
        storeSnooze(std::nullopt);
    else if (*snoozedUntil_ - now > snoozeLength_ + snoozeTolerance)
        storeSnooze(now + snoozeLength_);
}

}  // namespace tidewell
