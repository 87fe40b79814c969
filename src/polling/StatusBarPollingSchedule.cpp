#include "polling/StatusBarPollingSchedule.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace tidewell {

namespace {

/// A target nearer than this counts as missed: the poll would come before the reading that it waits for.
constexpr std::int64_t nearestTarget = 5000;  // ms
/// From start to the very first poll.
constexpr std::int64_t firstDelay = 5000;     // ms
constexpr std::int64_t shortestDelay = 1000;  // ms
/// A day: no rule waits longer, so a longer delay comes of a wrong date.
constexpr double longestDelay = 86'400'000;  // ms

/// Short backoffs after new data: the next reading may be late only a little.
constexpr std::int64_t fastResumes = 2;
/// Seconds after 0, 1, 2 ... failures in a row; the last one also serves every later failure.
constexpr std::array<double, 7> failureBases{15, 30, 60, 120, 300, 600, 900};
/// Share of the base. Keeps many installations from retrying in step after an outage.
constexpr double spreadShare = 0.2;

/// Readings below these ages, in seconds, are waited for with these bases.
struct AgeStep {
    double below;
    double base;
};
constexpr std::array<AgeStep, 4> ageSteps{{
    {600, 75},
    {1800, 150},
    {3600, 420},
    {std::numeric_limits<double>::infinity(), 900},
}};

/// `base` seconds, give or take its spread; at least one.
double jittered(double base, const std::function<double()>& randomUnit)
{
    return std::max(base + spreadShare * base * std::clamp(randomUnit(), -1.0, 1.0), 1.0);
}

}  // namespace

std::int64_t StatusBarPollingSchedule::delayForNextPoll(Date now)
{
    if (nextPollDate) {
        const double ahead = std::clamp((*nextPollDate - now).count() * 1000, -longestDelay, longestDelay);
        const auto delay = static_cast<std::int64_t>(ahead);
        if (delay >= nearestTarget)
            return delay;
    } else if (!lastReadingDate) {
        return firstDelay;
    }
    return std::max(static_cast<std::int64_t>(adaptiveBackoff(now) * 1000), shortestDelay);
}

double StatusBarPollingSchedule::adaptiveBackoff(Date now)
{
    using enum StatusBarPollOutcome::Kind;
    const double age =
        lastReadingDate ? (now - *lastReadingDate).count() : std::numeric_limits<double>::infinity();
    switch (lastOutcome.kind) {
    case sessionExpired: return jittered(2700, randomUnit);
    case httpError:
    case networkError: return failureBackoff(consecutiveFailures);
    case newData:
        if (fastResumeCycles > 0) {
            --fastResumeCycles;
            return jittered(45, randomUnit);
        }
        return jittered(75, randomUnit);
    case noNewData: return readingAgeBackoff(age);
    }
    std::abort();
}

double StatusBarPollingSchedule::failureBackoff(std::int64_t failures) const
{
    if (failures < 0)
        std::abort();
    const auto step = std::min(static_cast<std::size_t>(failures), failureBases.size() - 1);
    return jittered(failureBases[step], randomUnit);
}

double StatusBarPollingSchedule::readingAgeBackoff(double ageSeconds) const
{
    for (const AgeStep& step : ageSteps) {
        if (ageSeconds < step.below)
            return jittered(step.base, randomUnit);
    }
    return jittered(ageSteps.back().base, randomUnit);
}

Date StatusBarPollingSchedule::targetBehind(Date reading) const
{
    const Seconds grace{readingInterval < usualReadingInterval ? 10 : 30};
    return reading + readingInterval + grace;
}

Date StatusBarPollingSchedule::recordSuccess(Date newestReading, bool isNew)
{
    consecutiveFailures = 0;
    consecutiveNoData = 0;
    lastNoDataAt.reset();
    lastReadingDate = newestReading;
    lastOutcome = {.kind =
                       isNew ? StatusBarPollOutcome::Kind::newData : StatusBarPollOutcome::Kind::noNewData};
    if (isNew)
        fastResumeCycles = std::max(fastResumeCycles, fastResumes);
    nextPollDate = targetBehind(newestReading);
    return *nextPollDate;
}

std::int64_t StatusBarPollingSchedule::recordNoData(Date now, Seconds window)
{
    const bool within = lastNoDataAt && now - *lastNoDataAt < window;
    consecutiveNoData = within ? consecutiveNoData + 1 : 1;
    lastNoDataAt = now;
    return consecutiveNoData;
}

void StatusBarPollingSchedule::recordFailure(StatusBarPollOutcome outcome, Date now)
{
    lastOutcome = outcome;
    ++consecutiveFailures;
    if (!lastReadingDate)
        nextPollDate = now + Seconds{adaptiveBackoff(now)};
}

}  // namespace tidewell
