#include "polling/ReadingMerge.h"

#include <cmath>
#include <map>
#include <set>

#include "simulator/LibreReadings.h"
#include "support/Random.h"

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'000);

GlucoseReading at(double seconds, double mgdL, GlucoseProvider source = GlucoseProvider::dexcom,
                  Seconds sample = Seconds{300})
{
    return makeReading(mgdL, "Flat", start + Seconds{seconds}, sample, source);
}

TEST(ReadingMerge, sortsReplacesAndTrims)
{
    // Newest first, as a service may answer; in the same second the later fetch counts.
    const auto merged =
        mergedReadings({at(0, 100), at(300.25, 110)}, {at(600, 130), at(300.75, 111), at(301, 112)});
    EXPECT_EQ(merged, (std::vector{at(0, 100), at(300.75, 111), at(301, 112), at(600, 130)}));

    const double day = 86'400;
    EXPECT_EQ(mergedReadings({at(0, 100), at(1, 101)}, {at(day, 130)}),
              (std::vector{at(0, 100), at(1, 101), at(day, 130)}));
    EXPECT_EQ(mergedReadings({at(0, 100), at(1, 101)}, {at(day + 0.5, 130)}),
              (std::vector{at(1, 101), at(day + 0.5, 130)}));
    EXPECT_EQ(mergedReadings({at(day, 130)}, {at(-5, 90), at(600, 80)}),
              (std::vector{at(600, 80), at(day, 130)}));
    EXPECT_TRUE(mergedReadings({}, {}).empty());
}

constexpr auto libre = GlucoseProvider::libreLinkUp;
GlucoseReading current(double seconds, double mgdL) { return at(seconds, mgdL, libre, Seconds{60}); }
GlucoseReading graph(double seconds, double mgdL) { return at(seconds, mgdL, libre); }

TEST(ReadingMerge, leavesOutGraphValuesOfACurrentValueWhicheverCameFirst)
{
    const auto value = current(1000, 120);
    const std::vector<std::pair<double, bool>> graphValues{{969.9, true},   {970, false},  {1000, false},
                                                           {1000.5, false}, {1030, false}, {1030.1, true}};
    for (const auto& [seconds, stays] : graphValues) {
        SCOPED_TRACE(seconds);
        const auto smoothed = graph(seconds, 119);
        const auto later = current(1200, 125);
        std::vector expected{value, later};
        if (stays)
            expected.insert(seconds < 1000 ? expected.begin() : expected.begin() + 1, smoothed);
        EXPECT_EQ(mergedReadings({value, later}, {smoothed}), expected);
        EXPECT_EQ(mergedReadings({smoothed}, {value, later}), expected);
        EXPECT_EQ(mergedReadings({}, {value, smoothed, later}), expected);
        EXPECT_EQ(mergedReadings({}, {later, smoothed, value}), expected);
    }
    // A value that was corrected replaces its like; what is no graph value is never doubled.
    EXPECT_EQ(mergedReadings({graph(0, 120), value}, {graph(0, 122), current(1000, 121)}),
              (std::vector{graph(0, 122), current(1000, 121)}));
    EXPECT_EQ(mergedReadings({current(0, 120)}, {current(20, 121)}).size(), 2U);
    EXPECT_EQ(mergedReadings({at(0, 120)}, {at(20, 121)}).size(), 2U);
}

TEST(ReadingMerge, newestReadingIsNotTakenAwayByACurrentValueThatLagsBehindTheGraph)
{
    const auto held = mergedReadings({}, {graph(0, 100), graph(300, 110)});
    EXPECT_EQ(mergedReadings(held, {graph(0, 100), graph(300, 112), current(280, 109)}),
              (std::vector{graph(0, 100), graph(300, 112)}));
    // Once there is a newer one it goes by the rule.
    EXPECT_EQ(mergedReadings(held, {current(280, 109), graph(600, 120)}),
              (std::vector{graph(0, 100), current(280, 109), graph(600, 120)}));
    EXPECT_EQ(mergedReadings(held, {current(320, 111)}), (std::vector{graph(0, 100), current(320, 111)}));
}

/// A day and a half of fetches from one sensor's service, and beside it what the merged history must be:
/// worked out from what was sent, minute of the sensor by minute, and from the true course of the glucose.
class FetchedSensor {
public:
    explicit FetchedSensor(std::uint64_t seed) : chance_{seed} {}

    void live()
    {
        while (now_ < start + Seconds{36 * 3600.0} && !testing::Test::HasFailure()) {
            now_ += std::array<Seconds, 8>{70s, 70s, 45s, 2s, 75s, 330s, 330s, 900s}[pick(8)];
            if (pick(60) == 0)
                now_ += Seconds{static_cast<double>(pick(20'000))};
            if (pick(20) == 0)
                readings_.setOptions(drawOptions(), now_);
            if (pick(40) == 0)
                correction_ = static_cast<int>(pick(3)) - 1;
            fetch();
        }
    }

private:
    using Second = std::int64_t;

    [[nodiscard]] std::size_t pick(std::size_t count)
    {
        return static_cast<std::size_t>(chance_.next() % count);
    }
    static Second second(const GlucoseReading& reading)
    {
        return static_cast<Second>(unixSeconds(reading.date));
    }
    static bool isCurrent(const GlucoseReading& reading) { return reading.sampleDuration == Seconds{60}; }
    /// Which of the sensor's measurements a value belongs to.
    static Second minute(Second at) { return std::llround(static_cast<double>(at - origin) / 60); }

    LibreReadingOptions drawOptions()
    {
        LibreReadingOptions options{.graphJitter = graphJitter_};
        switch (pick(8)) {
        case 0: options.frozen = true; break;
        case 1: options.noCurrent = true; break;
        case 2: options.emptyGraph = true; break;
        case 3: options.publishing = false; break;
        case 4: options.gapShare = 0.4; break;
        case 5: options.graphLag = Seconds{static_cast<double>(pick(1300))}; break;
        default: break;
        }
        return options;
    }

    /// Now and then a server that is behind answers, and in any order.
    void fetch()
    {
        std::vector<GlucoseReading> answer;
        for (const auto& [date, mgdL] : readings_.graph(now_))
            answer.push_back(makeReading(mgdL + correction_, "Flat", date, Seconds{300}, libre));
        if (const auto now = readings_.current(now_))
            answer.push_back(makeReading(now->mgdL + correction_, "Flat", now->date, Seconds{60}, libre));
        answers_.push_back(answer);
        if (pick(15) == 0)
            answer = answers_[answers_.size() - 1 - pick(std::min<std::size_t>(answers_.size(), 25))];
        if (pick(3) == 0) {
            for (std::size_t i = answer.size(); i > 1; --i)
                std::swap(answer[i - 1], answer[pick(i)]);
        }

        const std::optional<Second> before =
            kept_.empty() ? std::nullopt : std::optional{second(kept_.back())};
        for (const GlucoseReading& reading : answer) {
            sent_[{second(reading), isCurrent(reading)}] = reading.mgdL;
            if (isCurrent(reading) && before && second(reading) < *before && *before <= second(reading) + 30)
                behindTheGraph_.insert(minute(second(reading)));
        }
        kept_ = mergedReadings(std::move(kept_), std::move(answer));
        SCOPED_TRACE(fmt::format("{} s", (now_ - start).count()));
        if (!sent_.empty())
            check(before);
    }

    void check(std::optional<Second> before) const
    {
        ASSERT_FALSE(kept_.empty());
        const Second newest = second(kept_.back());
        EXPECT_GE(newest, before.value_or(newest));
        EXPECT_GE(newest, sent_.rbegin()->first.first - 30);
        std::map<Second, const GlucoseReading*> byMinute;
        const GlucoseReading* previous = nullptr;
        for (const GlucoseReading& reading : kept_) {
            const Second at = second(reading);
            const auto asSent = sent_.find({at, isCurrent(reading)});
            ASSERT_NE(asSent, sent_.end()) << "never sent";
            EXPECT_EQ(reading.mgdL, asSent->second) << "not as it was sent last";
            EXPECT_TRUE(byMinute.emplace(minute(at), &reading).second) << "one measurement twice";
            if (previous) {
                EXPECT_LT(second(*previous), at);
                const double step = std::abs(reading.mgdL - previous->mgdL);
                // Smoothing, correction and rounding, of both.
                EXPECT_LE(step, std::abs(truth(at) - truth(second(*previous))) + 2 * (2 + 1 + 0.5));
            }
            previous = &reading;
        }
        // Nothing that was sent is lost, and no current value for a graph value.
        for (const auto& [key, mgdL] : sent_) {
            const auto& [at, current] = key;
            if (at < newest - 86'400 + 30)
                continue;
            const auto near = std::ranges::lower_bound(kept_, at - 30, {}, second);
            EXPECT_TRUE(near != kept_.end() && second(*near) <= at + 30) << "lost";
            if (current && !behindTheGraph_.contains(minute(at))) {
                EXPECT_TRUE(byMinute.contains(minute(at)) && isCurrent(*byMinute.at(minute(at))))
                    << "a graph value instead of a current one";
            }
        }
    }

    [[nodiscard]] double truth(Second at) const
    {
        return curve_.mgdL(traceStart_ + static_cast<double>(at - origin));
    }

    static constexpr Second origin = 1'772'438'000 - 20;  // LibreReadingOptions::newestAge before the start.

    SeededRandom chance_;
    Seconds graphJitter_{pick(2) == 0 ? 1 : 29};  ///< With the longer one some values share their second.
    double traceStart_ = static_cast<double>(pick(500'000));
    LibreReadings readings_{
        GlucoseTrace::libre(), traceStart_, chance_.next(), {.graphJitter = graphJitter_}, start};
    TraceCurve curve_{GlucoseTrace::libre()};
    Date now_ = start;
    int correction_ = 0;
    std::vector<std::vector<GlucoseReading>> answers_{};
    std::vector<GlucoseReading> kept_{};
    std::map<std::pair<Second, bool>, double> sent_{};  ///< By time and whether current: the last value.
    std::set<Second> behindTheGraph_{};  ///< Minutes whose current value came after a graph value for them.
};

TEST(ReadingMerge, historyOfALibreSensorIsWhatWasSentWithoutDoubles)
{
    for (std::uint64_t seed = 1; seed <= 12 && !HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        FetchedSensor{seed}.live();
    }
}

}  // namespace
}  // namespace tidewell
