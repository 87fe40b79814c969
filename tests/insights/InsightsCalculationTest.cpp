#include "insights/InsightsCalculation.h"

#include <charconv>
#include <fstream>
#include <random>

#include "InsightsOracle.h"

namespace tidewell {
namespace {

InsightsCalculationInput randomInput(std::mt19937& random, std::string_view zone, std::string_view start,
                                     int days)
{
    InsightsCalculationInput input{.zone = zoneNamed(zone)};
    const Date begin = utc(start);
    input.interval = {begin, begin + Seconds{days * 86'400.0}};
    const auto pick = [&random](std::int64_t from, std::int64_t to) {
        return from + static_cast<std::int64_t>(random()) % (to - from + 1);
    };
    // Each input has one way of its own: steps of a sensor, jitter, minutes among quarters, long gaps.
    const auto manner = pick(0, 3);
    const double usual = manner == 2 ? 900 : 300;
    double second = unixSeconds(begin) - static_cast<double>(pick(0, 2000));
    while (second < unixSeconds(input.interval.end) + 600) {
        const double duration = manner == 3 && pick(0, 1) == 1 ? 60 : usual;
        input.readings.push_back(
            sample(second, static_cast<double>(pick(40, 320)), duration, static_cast<double>(pick(0, 5))));
        if (pick(0, 19) == 0)
            input.readings.push_back(sample(second, static_cast<double>(pick(40, 320)), duration,
                                            static_cast<double>(pick(6, 9))));
        const bool gap = pick(0, 60) == 0;
        second += gap ? static_cast<double>(pick(1000, 40'000))
                      : duration + (manner == 1 ? static_cast<double>(pick(-200, 200)) : 0);
    }
    std::ranges::shuffle(input.readings, random);
    return input;
}

void expectLikeOracle(const InsightsCalculationInput& input)
{
    const InsightsOracle oracle{input};
    const auto result = calculateInsights(input);
    const InsightsSummary& summary = result.summary;
    ASSERT_EQ(summary.readingCount, oracle.valuesAndSeconds.size());
    ASSERT_GT(summary.readingCount, 0U);
    expectClose(summary.meanMgdl.value(), oracle.mean, "mean");
    expectClose(summary.standardDeviationMgdl.value(), oracle.deviation, "deviation");
    expectClose(summary.medianMgdl.value(), *InsightsOracle::percentile(oracle.valuesAndSeconds, 50),
                "median");
    expectClose(summary.q1Mgdl.value(), *InsightsOracle::percentile(oracle.valuesAndSeconds, 25), "q1");
    expectClose(summary.q3Mgdl.value(), *InsightsOracle::percentile(oracle.valuesAndSeconds, 75), "q3");
    expectClose(summary.iqrMgdl.value(), *summary.q3Mgdl - *summary.q1Mgdl, "iqr");
    double fractions = 0;
    for (std::size_t band = 0; band < summary.bands.size(); ++band) {
        EXPECT_EQ(summary.bands[band].count, oracle.bandCounts[band]);
        expectClose(summary.bands[band].fraction,
                    static_cast<double>(oracle.bandSeconds[band]) / static_cast<double>(oracle.total),
                    "band");
        fractions += summary.bands[band].fraction;
    }
    expectClose(fractions, 1, "fractions");
    EXPECT_EQ(summary.coverage.coveredDuration.count(), static_cast<double>(oracle.total));
    EXPECT_EQ(summary.coverage.hasMissingNightWarning, oracle.missesNights);
    ASSERT_EQ(summary.coverage.days.size(), oracle.days.size());
    for (const auto& day : summary.coverage.days) {
        const auto& share = oracle.days.at(day.date.time_since_epoch().count());
        EXPECT_EQ(day.coveredDuration.count(), static_cast<double>(share.covered));
        EXPECT_EQ(day.totalDuration.count(), static_cast<double>(share.total));
    }
    for (std::size_t hour = 0; hour < 24; ++hour) {
        EXPECT_EQ(summary.coverage.hours[hour].coveredDuration.count(),
                  static_cast<double>(oracle.hours[hour].covered));
        EXPECT_EQ(summary.coverage.hours[hour].totalDuration.count(),
                  static_cast<double>(oracle.hours[hour].total));
    }
    for (std::size_t bin = 0; bin < summary.agp.bins.size(); ++bin) {
        const auto& [startMinute, dayCount, percentiles] = summary.agp.bins[bin];
        EXPECT_EQ(startMinute, static_cast<int>(bin) * 15);
        EXPECT_EQ(dayCount, oracle.bins[bin].dayCount) << bin;
        ASSERT_EQ(percentiles.has_value(), oracle.bins[bin].percentiles[2].has_value()) << bin;
        if (!percentiles)
            continue;
        const std::array values{percentiles->p5Mgdl, percentiles->p25Mgdl, percentiles->medianMgdl,
                                percentiles->p75Mgdl, percentiles->p95Mgdl};
        for (std::size_t i = 0; i < values.size(); ++i)
            expectClose(values[i], *oracle.bins[bin].percentiles[i], "bin");
    }
}

TEST(InsightsCalculation, agreesWithCountingEachSecondByItself)
{
    struct Place {
        std::string_view zone;
        std::string_view start;
    };
    const std::vector<Place> places{
        {"UTC", "2024-02-27T00:00:00Z"},
        {"Europe/London", "2023-10-27T23:00:00Z"},        // Clocks go back.
        {"America/Los_Angeles", "2024-03-08T08:00:00Z"},  // Clocks go on.
        {"Australia/Lord_Howe", "2024-04-05T03:17:11Z"},  // By half an hour.
        {"Asia/Kathmandu", "2024-04-05T03:17:11Z"},       // 05:45 from UTC.
        {"America/Havana", "2024-11-01T04:00:00Z"},       // Midnight comes twice.
    };
    for (unsigned seed = 0; seed < 24; ++seed) {
        const auto& place = places[seed % places.size()];
        SCOPED_TRACE(std::string{place.zone} + " " + std::to_string(seed));
        std::mt19937 random{seed};
        expectLikeOracle(randomInput(random, place.zone, place.start, 4 + static_cast<int>(seed) % 2));
    }
}

TEST(InsightsCalculation, keepsItsFiguresWhereTheReadingsSayTheSame)
{
    for (unsigned seed = 100; seed < 112; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random{seed};
        auto input = randomInput(random, "UTC", "2024-05-01T00:00:00Z", 6);
        (void)arrangeReadings(input.readings);
        const auto whole = calculateInsights(input).summary;

        // Each value twice at half the interval.
        auto halved = input;
        halved.readings.clear();
        for (const auto& weighted : weightedReadings(input.readings, input.interval)) {
            const Seconds half = weighted.duration / 2;
            halved.readings.push_back({weighted.reading.mgdL, weighted.observed.start, half});
            halved.readings.push_back({weighted.reading.mgdL, weighted.observed.start + half, half});
        }
        const auto same = calculateInsights(halved).summary;
        expectClose(*same.meanMgdl, *whole.meanMgdl, "mean");
        expectClose(*same.standardDeviationMgdl, *whole.standardDeviationMgdl, "deviation");

        // Some days later, over a leap day.
        auto later = input;
        for (auto& reading : later.readings)
            reading.date += Seconds{86'400.0 * 1400};
        later.interval = {input.interval.start + Seconds{86'400.0 * 1400},
                          input.interval.end + Seconds{86'400.0 * 1400}};
        const auto moved = calculateInsights(later).summary;
        EXPECT_EQ(moved.meanMgdl, whole.meanMgdl);
        EXPECT_EQ(moved.standardDeviationMgdl, whole.standardDeviationMgdl);
        EXPECT_EQ(moved.medianMgdl, whole.medianMgdl);

        // In two parts, joined by their weights.
        auto first = input;
        auto second = input;
        first.interval.end = second.interval.start = input.interval.start + Seconds{211'111.5};
        const auto a = calculateInsights(first).summary;
        const auto b = calculateInsights(second).summary;
        const double ta = a.coverage.coveredDuration.count();
        const double tb = b.coverage.coveredDuration.count();
        expectClose(ta + tb, whole.coverage.coveredDuration.count(), "covered");
        expectClose((*a.meanMgdl * ta + *b.meanMgdl * tb) / (ta + tb), *whole.meanMgdl, "mean of parts");
        for (std::size_t band = 0; band < whole.bands.size(); ++band) {
            expectClose((a.bands[band].fraction * ta + b.bands[band].fraction * tb) / (ta + tb),
                        whole.bands[band].fraction, "band of parts");
            expectClose(same.bands[band].fraction, whole.bands[band].fraction, "band");
            EXPECT_EQ(moved.bands[band].fraction, whole.bands[band].fraction);
        }
        for (std::size_t bin = 0; bin < whole.agp.bins.size(); ++bin) {
            ASSERT_EQ(moved.agp.bins[bin].percentiles.has_value(),
                      whole.agp.bins[bin].percentiles.has_value());
            if (whole.agp.bins[bin].percentiles)
                EXPECT_EQ(moved.agp.bins[bin].percentiles->p25Mgdl, whole.agp.bins[bin].percentiles->p25Mgdl);
        }
    }
}

struct TraceFigures {
    std::string_view file;
    std::string_view zone;
    double sampleDuration;
    std::size_t readingCount;
    double mean, deviation, q1, median, q3;
    std::array<double, 5> fractions;
    double covered, total;
    std::array<double, 5> atHalfPastTwelve;
};

/// The moment of a local time that the zone has once.
Date momentOf(const std::string& local, TimeZone zone)
{
    const Date asUtc = utc(local + "Z");
    return asUtc - zone.offset(asUtc - zone.offset(asUtc));
}

// The figures were computed with exact fractions by another program.
TEST(InsightsCalculation, agreesWithIndependentFiguresOfRealTraces)
{
    const std::vector<TraceFigures> traces{
        {"adult-g6-week.csv",
         "America/Chicago",
         300,
         2012,
         140.61602483585736,
         49.11478583007332,
         104.17349916620344,
         130.80069370330844,
         169.52482339089482,
         {0.003481135002663118, 0.027573642266089465, 0.7649752686762561, 0.1736253416008907,
          0.03034461245410062},
         602'677,
         691'200,
         {96.0, 102.25876460767947, 130.0, 156.32444444444445, 175.48080133555928}},
        {"adult-libre2-week.csv",
         "Europe/London",
         900,
         668,
         141.06023374288282,
         46.51477057489917,
         109.93909090909091,
         136.44,
         167.41125,
         {0.004495055439017081, 0.050943961642193586, 0.7542703026670662, 0.17380881030866047,
          0.01648186994306263},
         600'660,
         604'800,
         {69.84, 89.1, 113.4, 143.1, 177.84}},
        {"adult-libre2-week.csv",
         "Europe/London",
         300,
         668,
         141.09520958083831,
         46.5085071200626,
         109.8,
         136.8,
         167.4,
         {0.004491017964071856, 0.05089820359281437, 0.7544910179640718, 0.17365269461077845,
          0.016467065868263474},
         200'400,
         604'800,
         {69.84, 89.1, 113.4, 143.1, 177.84}},
    };
    for (const auto& trace : traces) {
        SCOPED_TRACE(trace.file);
        InsightsCalculationInput input{.zone = zoneNamed(trace.zone)};
        std::ifstream file{std::string{TIDEWELL_TRACES "/"} + std::string{trace.file}};
        std::string line;
        for (std::getline(file, line); std::getline(file, line);) {
            double mgdl = 0;
            const char* const end = line.data() + line.size();
            ASSERT_EQ(std::from_chars(line.data() + 20, end, mgdl).ptr, end) << line;
            input.readings.push_back(
                sample(unixSeconds(momentOf(line.substr(0, 19), input.zone)), mgdl, trace.sampleDuration));
        }
        ASSERT_FALSE(input.readings.empty());
        LocalClock clock{input.zone};
        const auto firstDate = clock.at(input.readings.front().date).date;
        const auto lastDate = clock.at(input.readings.back().date).date;
        input.interval = {startOfLocalDate(firstDate, input.zone),
                          startOfLocalDate(lastDate + std::chrono::days{1}, input.zone)};
        input.collectionStartedAt = input.readings.front().date;

        const auto result = calculateInsights(input);
        const auto& summary = result.summary;
        EXPECT_EQ(summary.readingCount, trace.readingCount);
        expectClose(summary.meanMgdl.value(), trace.mean, "mean");
        expectClose(summary.standardDeviationMgdl.value(), trace.deviation, "deviation");
        expectClose(summary.q1Mgdl.value(), trace.q1, "q1");
        expectClose(summary.medianMgdl.value(), trace.median, "median");
        expectClose(summary.q3Mgdl.value(), trace.q3, "q3");
        expectClose(result.coefficientOfVariationPercent.value(), 100 * trace.deviation / trace.mean,
                    "variation");
        for (std::size_t band = 0; band < trace.fractions.size(); ++band)
            expectClose(summary.bands[band].fraction, trace.fractions[band], "band");
        EXPECT_EQ(summary.coverage.coveredDuration.count(), trace.covered);
        EXPECT_EQ(summary.coverage.totalDuration.count(), trace.total);
        const auto bin = summary.agp.bins[50].percentiles.value();
        expectClose(bin.p5Mgdl, trace.atHalfPastTwelve[0], "p5");
        expectClose(bin.p25Mgdl, trace.atHalfPastTwelve[1], "p25");
        expectClose(bin.medianMgdl, trace.atHalfPastTwelve[2], "p50");
        expectClose(bin.p75Mgdl, trace.atHalfPastTwelve[3], "p75");
        expectClose(bin.p95Mgdl, trace.atHalfPastTwelve[4], "p95");
    }
}

TEST(InsightsCalculation, bandsByTheExactValue)
{
    using enum InsightsBand;
    const std::vector<std::pair<double, InsightsBand>> cases{
        {53.999, veryLow}, {54, low},     {69.999, low}, {70, inRange},      {180, inRange},
        {180.001, high},   {180.4, high}, {250, high},   {250.001, veryHigh}};
    for (const auto& [value, band] : cases)
        EXPECT_EQ(insightsBand(value), band) << value;
}

TEST(InsightsCalculation, hasNoFiguresWithoutReadings)
{
    const DateInterval day{utc("2024-05-01T00:00:00Z"), utc("2024-05-02T00:00:00Z")};
    const std::vector<InsightsCalculationInput> inputs{
        {.interval = day},
        {.readings = {sample(0, 100)}, .interval = day},
        {.readings = {sample(unixSeconds(day.start), 100)}, .interval = {day.end, day.start}},
        {.readings = {sample(unixSeconds(day.start), -100)}, .interval = day},
    };
    for (const auto& input : inputs) {
        const auto result = calculateInsights(input);
        EXPECT_EQ(result.summary.readingCount, 0U);
        EXPECT_FALSE(result.summary.meanMgdl || result.summary.standardDeviationMgdl ||
                     result.summary.medianMgdl || result.summary.q1Mgdl || result.summary.q3Mgdl ||
                     result.summary.iqrMgdl || result.coefficientOfVariationPercent ||
                     result.summary.gmi.available);
        EXPECT_EQ(result.summary.gmi.unavailable, InsightsGMIUnavailableReason::noReadings);
        EXPECT_EQ(result.summary.bands[2].fraction, 0);
        EXPECT_EQ(result.summary.bands[4].band, InsightsBand::veryHigh);
        EXPECT_EQ(result.timeActivePercent, 0);
        EXPECT_TRUE(result.episodes.empty());
    }
    const auto alone =
        calculateInsights({.readings = {sample(unixSeconds(day.start) + 60, 123)}, .interval = day}).summary;
    EXPECT_EQ(alone.meanMgdl, 123);
    EXPECT_EQ(alone.standardDeviationMgdl, 0);
    EXPECT_EQ(alone.iqrMgdl, 0);
    EXPECT_EQ(alone.coverage.coveredDuration, Seconds{300});
}

struct GmiCase {
    std::string_view name;
    double collectedDays;  ///< Before the end of the period; negative: unknown.
    double periodDays;
    double observedDays;  ///< From the end.
    std::optional<InsightsGMIUnavailableReason> reason;
};

TEST(InsightsCalculation, givesTheFirstReasonForNoGMI)
{
    using enum InsightsGMIUnavailableReason;
    const std::vector<GmiCase> cases{
        {"all there", 14, 14, 14, {}},
        {"long ago", 60, 30, 30, {}},
        {"no start", -1, 14, 14, collectingHistory},
        {"a second short of history", 14 - 1 / 86'400.0, 14, 14, collectingHistory},
        {"not begun yet", 0, 14, 14, collectingHistory},
        {"13 days and 23 hours", 60, 13 + 23 / 24.0, 13 + 23 / 24.0, shortInterval},
        {"just covered", 20, 20, 14, {}},
        {"just not covered", 20, 20, 13.99, insufficientCoverage},
        {"only what was collected counts", 15, 60, 15, {}},
        {"none", 60, 60, 0, noReadings},
    };
    const Date end = utc("2024-06-01T00:00:00Z");
    for (const auto& [name, collectedDays, periodDays, observedDays, reason] : cases) {
        SCOPED_TRACE(name);
        InsightsCalculationInput input{.interval = {end - Seconds{periodDays * 86'400}, end}};
        if (collectedDays >= 0)
            input.collectionStartedAt = end - Seconds{collectedDays * 86'400};
        addSteady(input.readings, end - Seconds{std::round(observedDays * 288) * 300}, end, 154);
        const auto gmi = calculateInsights(std::move(input)).summary.gmi;
        if (reason) {
            EXPECT_FALSE(gmi.available);
            EXPECT_EQ(gmi.unavailable, *reason);
        } else {
            EXPECT_DOUBLE_EQ(gmi.available.value_or(0), 3.31 + 0.02392 * 154);
        }
    }
}

TEST(InsightsCalculation, judgesCollectionFromWhenSavingBegan)
{
    const Date end = utc("2024-06-01T00:00:00Z");
    InsightsCalculationInput input{.interval = {end - Seconds{10 * 86'400}, end},
                                   .collectionStartedAt = end - Seconds{2 * 86'400}};
    addSteady(input.readings, *input.collectionStartedAt, end);
    const auto across = calculateInsights(input).summary;
    EXPECT_EQ(across.availableInterval, (DateInterval{*input.collectionStartedAt, end}));
    EXPECT_EQ(across.collectionCoverage.fraction(), 1);
    EXPECT_EQ(across.coverage.fraction(), 0.2);
    EXPECT_FALSE(across.coverage.hasMissingNightWarning);
    input.collectionStartedAt = end + Seconds{1};
    const auto before = calculateInsights(input).summary;
    EXPECT_EQ(before.availableInterval, (DateInterval{end, end}));
    EXPECT_FALSE(before.collectionCoverage.isSufficient());
    input.collectionStartedAt.reset();
    EXPECT_EQ(calculateInsights(input).summary.availableInterval, input.interval);
}

TEST(InsightsCalculation, leavesBinsOfFewerThanThreeDatesBlank)
{
    const Date day = utc("2024-05-01T00:00:00Z");
    InsightsCalculationInput input{.interval = {day, day + Seconds{3 * 86'400}}};
    const auto at = [&](int date, int second, double mgdL) {
        input.readings.push_back(sample(unixSeconds(day) + date * 86'400 + second, mgdL));
    };
    for (int date = 0; date < 3; ++date) {
        at(date, 14 * 60 + 59, 100 + 10 * date);
        if (date < 2)
            for (int minute = 15; minute < 30; minute += 5)
                at(date, minute * 60 + 60, 100);
    }
    const auto agp = calculateInsights(input).summary.agp;
    EXPECT_EQ(agp.contributingDayCount, 3);
    EXPECT_EQ(agp.timeZoneIdentifier, "UTC");
    EXPECT_EQ(agp.bins[0].dayCount, 3);
    EXPECT_EQ(agp.bins[1].dayCount, 2);
    EXPECT_FALSE(agp.bins[1].percentiles);
    // The first two stand for a minute, the last one for five.
    EXPECT_TRUE(agp.bins[0].percentiles);
    // One from the evening before reaches into the period: its bin has one date more, and so has the profile.
    auto evening = input;
    evening.readings.push_back(sample(unixSeconds(day) - 1, 100));
    const auto four = calculateInsights(evening).summary.agp;
    EXPECT_EQ(four.bins[95].dayCount, 1);
    EXPECT_EQ(four.contributingDayCount, 4);
    input.interval.end -= Seconds{86'400};
    const auto two = calculateInsights(input).summary.agp;
    EXPECT_EQ(two.contributingDayCount, 2);
    EXPECT_TRUE(std::ranges::none_of(two.bins, [](const auto& bin) { return bin.percentiles.has_value(); }));
}

}  // namespace
}  // namespace tidewell
