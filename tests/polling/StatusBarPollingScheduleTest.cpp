#include "polling/StatusBarPollingSchedule.h"

#include <cmath>

namespace tidewell {
namespace {

using enum StatusBarPollOutcome::Kind;

constexpr Date start = dateFromUnix(1'772'438'000);

StatusBarPollingSchedule schedule(double unit = 0)
{
    return {.randomUnit = [unit] { return unit; }};
}

TEST(StatusBarPollingSchedule, takesATargetFromFiveSecondsAheadOnAndTheBackoffBelow)
{
    EXPECT_EQ(schedule().delayForNextPoll(start), 5000);
    // Seconds from now to the target. Without a reading the backoff is that of an expired one.
    const std::pair<double, std::int64_t> cases[]{{5.0, 5000},    {4.9994, 900'000}, {4.9, 900'000},
                                                  {0, 900'000},   {-1e9, 900'000},   {5.0009, 5000},
                                                  {330, 330'000}, {1e12, 86'400'000}};
    for (const auto& [ahead, delay] : cases) {
        StatusBarPollingSchedule aimed = schedule();
        aimed.nextPollDate = dateFromUnix(ahead);
        EXPECT_EQ(aimed.delayForNextPoll(dateFromUnix(0)), delay) << ahead;
    }
}

TEST(StatusBarPollingSchedule, aimsBehindTheNextReadingAndChasesALateOne)
{
    StatusBarPollingSchedule chased = schedule();
    EXPECT_EQ(chased.recordSuccess(start, true), start + Seconds{330});
    EXPECT_EQ(chased.delayForNextPoll(start + Seconds{40}), 290'000);
    const Date late = start + Seconds{330};
    EXPECT_EQ(chased.delayForNextPoll(late), 45'000);
    chased.recordSuccess(start + Seconds{300}, true);
    EXPECT_EQ(chased.fastResumeCycles, 2);  // One was spent; new data fills up to two.
    EXPECT_EQ(chased.delayForNextPoll(start + Seconds{650}), 45'000);
    EXPECT_EQ(chased.delayForNextPoll(start + Seconds{650}), 45'000);
    EXPECT_EQ(chased.delayForNextPoll(start + Seconds{650}), 75'000);

    chased.readingInterval = Seconds{299};
    EXPECT_EQ(chased.recordSuccess(start, false), start + Seconds{309});
    EXPECT_EQ(chased.lastOutcome.kind, noNewData);
    EXPECT_EQ(chased.fastResumeCycles, 0);
}

TEST(StatusBarPollingSchedule, backsOffByOutcomeAndReadingAge)
{
    struct Case {
        StatusBarPollOutcome::Kind outcome;
        double age;  ///< Of the newest reading; negative: there is none.
        std::int64_t failures;
        double base;
    };
    const std::vector<Case> cases{
        {newData, 1000, 0, 75},        {noNewData, 0, 0, 75},       {noNewData, -1, 0, 900},
        {noNewData, 599.9, 0, 75},     {noNewData, 600, 0, 150},    {noNewData, 1799.9, 0, 150},
        {noNewData, 1800, 0, 420},     {noNewData, 3599.9, 0, 420}, {noNewData, 3600, 0, 900},
        {networkError, 0, 0, 15},      {httpError, 0, 1, 30},       {networkError, 9999, 2, 60},
        {httpError, -1, 3, 120},       {networkError, 0, 4, 300},   {networkError, 0, 5, 600},
        {networkError, 0, 6, 900},     {httpError, 0, 20, 900},     {sessionExpired, 0, 1, 2700},
        {sessionExpired, -1, 9, 2700},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(c.outcome) << " " << c.age << " " << c.failures);
        for (const double unit : {-5.0, -1.0, 0.0, 0.5, 1.0, 5.0}) {
            StatusBarPollingSchedule waiting = schedule(unit);
            waiting.lastOutcome.kind = c.outcome;
            waiting.consecutiveFailures = c.failures;
            waiting.nextPollDate = start;
            if (c.age >= 0)
                waiting.lastReadingDate = start - Seconds{c.age};
            const double expected = c.base * (1 + 0.2 * std::clamp(unit, -1.0, 1.0)) * 1000;
            EXPECT_NEAR(static_cast<double>(waiting.delayForNextPoll(start)), expected, 1);
        }
    }
    EXPECT_DEATH((void)schedule().failureBackoff(-1), "");
}

TEST(StatusBarPollingSchedule, countsNoDataWithinItsWindow)
{
    StatusBarPollingSchedule empty = schedule();
    const Seconds window{1800};
    EXPECT_EQ(empty.recordNoData(start, window), 1);
    EXPECT_EQ(empty.recordNoData(start + Seconds{1799.9}, window), 2);
    EXPECT_EQ(empty.recordNoData(start + Seconds{3599.9}, window), 1);  // Exactly the window is outside.
    EXPECT_EQ(empty.recordNoData(start + Seconds{3600}, window), 2);
    empty.recordSuccess(start, true);
    EXPECT_EQ(empty.recordNoData(start + Seconds{3601}, window), 1);
}

TEST(StatusBarPollingSchedule, failureBeforeAnyReadingIsNotTheVeryFirstPollAgain)
{
    StatusBarPollingSchedule failing = schedule();
    failing.recordFailure({.kind = networkError}, start);
    EXPECT_EQ(failing.delayForNextPoll(start), 30'000);
    failing.recordFailure({.kind = networkError}, start + Seconds{30});
    EXPECT_EQ(failing.nextPollDate, start + Seconds{90});
    failing.recordFailure({.kind = sessionExpired}, start + Seconds{90});
    EXPECT_EQ(failing.delayForNextPoll(start + Seconds{90}), 2'700'000);

    StatusBarPollingSchedule reading = schedule();
    reading.recordSuccess(start, true);
    reading.recordFailure({.kind = httpError}, start + Seconds{330});
    EXPECT_EQ(reading.nextPollDate, start + Seconds{330});
    EXPECT_EQ(reading.delayForNextPoll(start + Seconds{330}), 30'000);
}

/// Whatever happened before: never under a second, never over the longest rule, and always the same for one
/// input.
TEST(StatusBarPollingSchedule, sweepStaysWithinBounds)
{
    std::uint64_t seed = 1;
    const auto draw = [&seed](std::uint64_t below) {
        seed = seed * 6364136223846793005U + 1442695040888963407U;
        return (seed >> 33U) % below;
    };
    StatusBarPollingSchedule swept{
        .randomUnit = [&] { return static_cast<double>(draw(2001)) / 1000.0 - 1.0; }};
    Date now = start;
    for (int round = 0; round < 20'000; ++round) {
        switch (draw(4)) {
        case 0: swept.recordSuccess(now - Seconds{static_cast<double>(draw(5000))}, draw(2) == 0); break;
        case 1: swept.recordNoData(now, Seconds{1800}); break;
        case 2: swept.recordFailure({.kind = networkError}, now); break;
        default: swept.recordFailure({.kind = draw(2) == 0 ? httpError : sessionExpired}, now); break;
        }
        const std::int64_t delay = swept.delayForNextPoll(now);
        ASSERT_GE(delay, 1000);
        ASSERT_LE(delay, 3'240'000);
        ASSERT_GE(swept.fastResumeCycles, 0);
        ASSERT_LE(swept.fastResumeCycles, 2);
        now += std::chrono::milliseconds{delay};
    }
}

}  // namespace
}  // namespace tidewell
