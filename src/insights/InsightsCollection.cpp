#include "insights/InsightsCollection.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "insights/InsightsCoverage.h"

namespace tidewell {

namespace {

using enum InsightsCollectionStatus;

std::string_view titleOf(InsightsCollectionStatus status)
{
    switch (status) {
    case checking: return "Checking saved history";
    case getStarted: return "Get started with Insights";
    case paused: return "History collection is paused";
    case waiting: return "Waiting for readings";
    case building: return "Building your insights";
    case moreReadingsNeeded: return "More readings needed";
    case preparing: return "Preparing insights";
    case ready: return "Your insights are ready";
    }
    std::unreachable();
}

/// "2 days left", rounded up, so that it never promises too much.
std::string timeLeft(Seconds collected)
{
    const Seconds left = initialCollection - collected;
    const auto count = [left](Seconds unit) { return static_cast<int>(std::ceil(left / unit)); };
    const bool inHours = left <= Seconds{24h};
    const int number = inHours ? std::max(1, count(Seconds{1h})) : count(Seconds{24h});
    return fmt::format("{} {}{} left", number, inHours ? "hour" : "day", number == 1 ? "" : "s");
}

std::string textOf(const InsightsCollectionStatusState& state)
{
    switch (state.collectionStatus) {
    case checking: return "Checking your saved history.";
    case getStarted:
        return "Explore your glucose patterns using readings saved on this Mac. Your report will appear once "
               "enough "
               "history has been collected.";
    case paused: return "Resume saving in Insights settings to keep building your report.";
    case waiting:
        return "Readings are saved after a successful glucose refresh. Insights needs 3 days of collection "
               "and at "
               "least 70% coverage over the latest 3 days.";
    case building:
        return timeLeft(state.progress.value_or(InsightsCollectionProgress{}).collected) +
               " in the initial 3-day collection period. Insights also needs at least 70% coverage over the "
               "latest "
               "3 days. Keep Tidewell running to build your report.";
    case moreReadingsNeeded:
        return "Insights needs at least 70% coverage over the latest 3 days. Keep Tidewell running to build "
               "your "
               "report.";
    case preparing:
    case ready: return "Your history is ready for insights.";
    }
    std::unreachable();
}

/// Rounded down: 70 % or 3 days stand there only when they are reached.
std::string progressText(const InsightsCollectionProgress& progress)
{
    const double days = std::floor(progress.collected / Seconds{24h} * 10) / 10;
    return fmt::format(
        "{} of 3 days\nLatest 3 days: {}% saved (70% target)\n\nProgress always uses the latest 3 days, "
        "regardless "
        "of the report period. Meeting these targets does not guarantee representative data.",
        days, std::floor(progress.coverage * 100));
}

}  // namespace

bool InsightsCollectionProgress::isComplete() const
{
    return collected >= initialCollection && coverage >= sufficientCoverage;
}

InsightsCollectionProgress insightsCollectionProgress(std::vector<InsightsReading> readings,
                                                      const std::optional<Date>& collectionStartedAt,
                                                      Date now)
{
    (void)arrangeReadings(readings);
    const DateInterval latest{now - initialCollection, now};
    const auto observed = observedIntervals(weightedReadings(readings, latest));
    const Seconds collected = collectionStartedAt ? now - *collectionStartedAt : Seconds{0};
    return {.collected = std::clamp(collected, Seconds{0}, initialCollection),
            .coverage = insightsCoverage(observed, latest, TimeZone::utc()).fraction()};
}

std::string_view rawValue(InsightsCollectionStatus status)
{
    switch (status) {
    case checking: return "checking";
    case getStarted: return "getStarted";
    case paused: return "paused";
    case waiting: return "waiting";
    case building: return "building";
    case moreReadingsNeeded: return "moreReadingsNeeded";
    case preparing: return "preparing";
    case ready: return "ready";
    }
    std::unreachable();
}

InsightsCollectionStatusState insightsCollectionStatus(
    const InsightsCollectionFacts& facts, const std::optional<InsightsCollectionProgress>& progress)
{
    const auto status = [&] {
        if (facts.hasUnlockedInsights)
            return ready;
        if (!facts.isSaving && !facts.hasSavedBefore)
            return getStarted;
        if (!progress)
            return checking;
        if (progress->isComplete())
            return preparing;
        if (!facts.isSaving)
            return paused;
        if (!facts.hasSavedReadings)
            return waiting;
        return progress->collected < initialCollection ? building : moreReadingsNeeded;
    }();
    InsightsCollectionStatusState state{
        .collectionStatus = status, .isSaving = facts.isSaving, .hasSavedReadings = facts.hasSavedReadings};
    if (status == paused || status == waiting || status == building || status == moreReadingsNeeded)
        state.progress = progress;
    return state;
}

InsightsReadinessPresentation insightsReadiness(const InsightsCollectionStatusState& state)
{
    InsightsReadinessPresentation presentation{.kind = state.collectionStatus,
                                               .title = std::string{titleOf(state.collectionStatus)},
                                               .text = textOf(state)};
    if (state.progress)
        presentation.progress = progressText(*state.progress);
    return presentation;
}

InsightsProgressPhase insightsProgressPhase(bool hasUnlockedInsights, bool hasAcknowledgedUnlock)
{
    if (!hasUnlockedInsights)
        return InsightsProgressPhase::collecting;
    return hasAcknowledgedUnlock ? InsightsProgressPhase::hidden : InsightsProgressPhase::complete;
}

}  // namespace tidewell
