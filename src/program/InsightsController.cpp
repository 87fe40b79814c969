#include "program/InsightsController.h"

#include <algorithm>
#include <utility>

#include "insights/InsightsCollection.h"
#include "insights/InsightsReportQuality.h"
#include "support/Log.h"
#include "support/Workers.h"

namespace tidewell {

namespace {

const Log insightsLog{"Insights"};

/// After a reading came. Its difference to a report of days is small, and a calculation is not free.
constexpr int renewalMilliseconds = 300'000;
/// The longest time that a reading can stand for, so how much earlier one can begin that counts in a period.
constexpr Seconds longestSample{900};

InsightsViewState unavailable(GlucoseHistoryError error)
{
    return {.phase = InsightsViewState::Phase::unavailable, .advice = std::string{description(error)}};
}

std::vector<InsightsReading> insightsReadings(const GlucoseHistorySnapshot& snapshot)
{
    std::vector<InsightsReading> readings;
    readings.reserve(snapshot.readings.size());
    for (const auto& [reading, fetchedAt] : snapshot.readings)
        readings.push_back(insightsReading(reading, fetchedAt));
    return readings;
}

/// Of a day's index.
std::string dateText(std::int64_t day)
{
    return isoText(dateFromUnix(static_cast<double>(day) * 86'400)).substr(0, 10);
}

}  // namespace

DateInterval insightsInterval(const InsightsPeriod& period, Date now, TimeZone zone)
{
    if (period.days)
        return {now - Seconds{86'400.0 * *period.days}, now};
    const auto after = period.to + std::chrono::days{1};
    return {startOfLocalDate(period.from, zone), std::min(now, startOfLocalDate(after, zone))};
}

InsightsController::InsightsController(Core& core) : core_{core}
{
    renewal_.setSingleShot(true);
    renewal_.setInterval(renewalMilliseconds);
    QObject::connect(&renewal_, &QTimer::timeout, [this] { reload(); });
}

InsightsController::~InsightsController()
{
    ++*generation_;
    load_.cancel();
    delete window_;
}

void InsightsController::show()
{
    const bool wasOpen = window_;
    if (!wasOpen)
        makeWindow();
    window_->open();
    if (!wasOpen)
        reload();
}

void InsightsController::makeWindow()
{
    InsightsWindow::Handlers handlers{.periodPicked =
                                          [this](InsightsPeriod picked) {
                                              state_.period = picked;
                                              reload();
                                          },
                                      .refresh = [this] { reload(); },
                                      .completionSeen = [this] { completionSeen(); },
                                      .openSettings = openSettings_,
                                      .closed = [this] { windowClosed(); }};
    if (saveReport_)
        handlers.saveReport = [this] {
            saveReport_({.report = state_.report, .scope = shown_.scope, .window = window_.data()});
        };
    window_ = new InsightsWindow{std::move(handlers)};
    historyObserver_ = core_.history().observe([this](const GlucoseHistoryStatus&) { reload(); });
    settingsObserver_ = core_.configuration().observe([this](ConfigurationChange) { reload(); });
    readingObserver_ = core_.viewModel().observe([this](const StatusBarState&) {
        if (!renewal_.isActive())
            renewal_.start();
    });
}

/// A report takes megabytes; only the picked period is kept.
void InsightsController::windowClosed()
{
    ++*generation_;
    load_.cancel();
    renewal_.stop();
    historyObserver_.reset();
    settingsObserver_.reset();
    readingObserver_.reset();
    state_ = {.period = state_.period};
    shown_ = {};
    if (window_)
        std::exchange(window_, nullptr)->deleteLater();
}

/// Nobody's while the history of another account than the configured one is attached.
InsightsController::Origin InsightsController::followed() const
{
    const GlucoseHistoryStatus& status = core_.history().status();
    const auto& account = core_.configuration().account();
    if (!account || !status.scope || HistoryScopeID::of(*account) != status.scope)
        return {};
    return {status.scope, status.configuration.collectionStartedAt};
}

InsightsController::Request InsightsController::makeRequest()
{
    Request request{.generation = ++*generation_,
                    .latest = generation_,
                    .period = state_.period,
                    .zone = TimeZone::current(),
                    .now = core_.clock().now(),
                    .followed = followed()};
    request.unit =
        glucoseUnits(core_.configuration().settings().measurementUnit).value_or(GlucoseUnits::mgdL);
    request.interval = insightsInterval(request.period, request.now, request.zone);
    return request;
}

void InsightsController::reload()
{
    if (!window_)
        return;
    load_.cancel();
    renewal_.stop();
    const Request request = makeRequest();
    window_->setToday(LocalClock{request.zone}.at(request.now).date);
    InsightsViewState waiting = state_;
    // What was shown stays, unless the person waits for something else, or it is somebody else's.
    const bool isOutdated = shown_ != request.followed;
    if (isOutdated)
        waiting = {.period = state_.period};
    if (waiting.phase == InsightsViewState::Phase::unavailable)
        waiting.phase = InsightsViewState::Phase::loading;
    waiting.isBusy = true;
    present(request, std::move(waiting));
    if (isOutdated && reportGone_)
        reportGone_();
    load_ = startTask(core_.main(), load(request));
}

asio::awaitable<void> InsightsController::load(Request request)
{
    auto state = co_await collection(request);
    if (!state && request.isCurrent())
        state = co_await report(request);
    if (state && request.isCurrent())
        present(request, std::move(*state));
}

asio::awaitable<std::optional<InsightsViewState>> InsightsController::collection(Request request)
{
    using Phase = InsightsViewState::Phase;
    const GlucoseHistoryStatus status = core_.history().status();
    const GlucoseHistoryConfiguration& configuration = status.configuration;
    InsightsCollectionFacts facts{.isSaving = configuration.isEnabled,
                                  .hasSavedBefore = configuration.hasPreviouslyEnabled,
                                  .hasUnlockedInsights = configuration.insightsUnlockedAt.has_value()};
    const auto collecting = [&](const std::optional<InsightsCollectionProgress>& progress,
                                std::string_view advice) {
        const auto state = insightsCollectionStatus(facts, progress);
        return InsightsViewState{.phase = Phase::collecting,
                                 .readiness = insightsReadiness(state),
                                 .progress = state.progress,
                                 .advice = std::string{advice},
                                 .isSaving = facts.isSaving,
                                 .offersSaving = request.followed.scope && !facts.isSaving};
    };
    if (!request.followed.scope) {
        if (!core_.configuration().account())
            co_return collecting({}, description(GlucoseHistoryError::accountRequired));
        if (status.problem)
            co_return unavailable(*status.problem);
        co_return InsightsViewState{.phase = Phase::loading};  // Until the account's history is attached.
    }
    if (facts.hasUnlockedInsights)
        co_return std::nullopt;
    if (status.problem == GlucoseHistoryError::invalidConfiguration)
        co_return unavailable(*status.problem);
    if (!facts.hasSavedBefore && status.problem)
        co_return unavailable(*status.problem);  // Nobody can tell whether it was.
    if (!facts.hasSavedBefore)
        co_return collecting({}, {});
    auto latest = co_await core_.history().snapshot(request.now - initialCollection - longestSample,
                                                    request.now + longestSample);
    if (!request.isCurrent())
        co_return std::nullopt;
    if (!latest)
        co_return unavailable(latest.error());
    if (latest->accountScope != request.followed.scope)
        co_return InsightsViewState{.phase = Phase::loading};  // The status follows.
    facts.hasSavedReadings = !latest->readings.empty();
    if (!facts.hasSavedReadings && !latest->unreadableDays.empty())
        co_return unavailable(GlucoseHistoryError::unreadableHistory);
    auto measure = [snapshot = std::move(*latest), now = request.now] {
        return insightsCollectionProgress(insightsReadings(snapshot),
                                          snapshot.configuration.collectionStartedAt, now);
    };
    const auto progress = co_await runOnWorker(core_.workers(), std::move(measure));
    if (!request.isCurrent())
        co_return std::nullopt;
    if (!progress.isComplete())
        co_return collecting(progress, {});
    // Shown until the report is there.
    present(request, collecting(progress, {}));
    if (const auto noted = co_await core_.history().setInsightsUnlocked(*request.followed.scope); !noted)
        insightsLog.warning("That the report opened was not stored: " +
                            std::string{description(noted.error())});
    co_return std::nullopt;
}

asio::awaitable<InsightsViewState> InsightsController::report(Request request)
{
    using Phase = InsightsViewState::Phase;
    auto saved =
        co_await core_.history().snapshot(request.interval.start - longestSample, request.interval.end);
    if (!request.isCurrent())
        co_return InsightsViewState{};
    if (!saved)
        co_return unavailable(saved.error());
    if (saved->accountScope != request.followed.scope)
        co_return InsightsViewState{.phase = Phase::loading};  // The status follows.
    if (saved->readings.empty() && !saved->unreadableDays.empty())
        co_return unavailable(GlucoseHistoryError::unreadableHistory);
    if (state_.phase == Phase::loading) {
        InsightsViewState waiting = state_;
        waiting.phase = Phase::calculating;
        present(request, std::move(waiting));
    }
    const bool isSaving = saved->configuration.isEnabled;
    auto calculate = [snapshot = std::move(*saved), request] {
        auto readings = insightsReadings(snapshot);
        auto content = std::make_shared<InsightsReportContent>();
        content->days = insightsDays(readings, request.interval, request.zone);
        content->collectionStartedAt = snapshot.configuration.collectionStartedAt;
        content->result = calculateInsights({.readings = std::move(readings),
                                             .interval = request.interval,
                                             .collectionStartedAt = content->collectionStartedAt,
                                             .zone = request.zone});
        content->quality = insightsReportQuality(content->result.summary, content->collectionStartedAt);
        for (const std::int64_t day : snapshot.unreadableDays)
            content->unreadableDays.push_back(dateText(day));
        content->zone = request.zone;
        content->unit = request.unit;
        content->madeAt = request.now;
        content->version = TIDEWELL_VERSION;
        return content;
    };
    InsightsViewState state{.phase = Phase::report, .isSaving = isSaving};
    state.report = co_await runOnWorker(core_.workers(), std::move(calculate));
    if (request.isCurrent() && showsCompletion()) {
        const auto ready = insightsCollectionStatus({.isSaving = isSaving, .hasUnlockedInsights = true}, {});
        state.readiness = insightsReadiness(ready);
        state.showsCompletion = true;
    }
    co_return state;
}

void InsightsController::present(const Request& request, InsightsViewState state)
{
    state.period = request.period;
    shown_ = {request.followed.scope,
              state.report ? state.report->collectionStartedAt : request.followed.collectionStartedAt};
    present(std::move(state));
}

void InsightsController::present(InsightsViewState state)
{
    state.isDemonstration = core_.isDemonstration();
    state_ = std::move(state);
    window_->present(state_);
}

bool InsightsController::showsCompletion() const
{
    const auto unlocked = core_.history().status().configuration.insightsUnlockedAt;
    const auto seen = core_.defaults().date(insightsUnlockSeenKey);
    return insightsProgressPhase(unlocked.has_value(), unlocked && seen && *seen >= *unlocked) ==
           InsightsProgressPhase::complete;
}

void InsightsController::completionSeen()
{
    if (const auto unlocked = core_.history().status().configuration.insightsUnlockedAt)
        core_.defaults().set(insightsUnlockSeenKey, *unlocked);
    state_.showsCompletion = false;
}

}  // namespace tidewell
