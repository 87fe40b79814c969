#include <tuple>

#include "InsightsTesting.h"
#include "insights/InsightsCollection.h"
#include "insights/InsightsReportQuality.h"
#include "insights/InsightsTexts.h"

// What a report says beside its figures.

namespace tidewell {
namespace {

struct QualityCase {
    std::size_t readings;
    double collectedDays;  ///< Negative: unknown.
    double collected;      ///< Coverage since saving began; negative: no time at all.
    double covered;
    bool night;
    std::string_view identifier;
    std::string_view message;
};

TEST(InsightsReportQuality, carriesOneNoticeAtMost)
{
    constexpr std::string_view early = "insightsEarlyDataNotice";
    constexpr std::string_view limited = "insightsLimitedDataNotice";
    constexpr std::string_view overnight = "insightsMissingNightWarning";
    constexpr std::string_view earlyText = "Early insights. Patterns may change as more history is saved.";
    constexpr std::string_view earlyNightText =
        "Early insights. Overnight readings are often missing; patterns may change as more history is saved.";
    constexpr std::string_view limitedText =
        "Limited data. Gaps in the selected period may affect these insights.";
    constexpr std::string_view limitedNightText =
        "Limited data. Overnight readings are often missing; these insights may not reflect your usual "
        "glucose.";
    const std::vector<QualityCase> cases{
        {0, 3, 1, 1, true, "", ""},
        {1, 13.99, 0.7, 0.2, false, early, earlyText},
        {1, 13.99, 0.7, 0.7, true, early, earlyNightText},
        {1, -1, 0.9, 0.9, false, early, earlyText},
        {1, 14, 0.9, 0.9, false, "", ""},
        {1, 14, 0.9, 0.7, true, overnight,
         "Overnight readings are often missing. These insights may not represent your usual glucose."},
        {1, 14, 0.9, 0.69, false, limited, limitedText},
        {1, 14, 0.9, 0.69, true, limited, limitedNightText},
        {1, 5, 0.69, 0.69, true, limited, limitedNightText},
        {1, 5, 0.69, 0.9, false, limited, limitedText},
        {1, -1, -1, -1, false, limited, limitedText},
    };
    const auto coverage = [](double fraction) {
        return fraction < 0 ? InsightsCoverage{}
                            : InsightsCoverage{.coveredDuration = Seconds{fraction * 1000},
                                               .totalDuration = Seconds{1000}};
    };
    const Date end = utc("2024-06-01T00:00:00Z");
    for (const auto& [readings, days, collected, covered, night, identifier, message] : cases) {
        SCOPED_TRACE(message);
        InsightsSummary summary{.interval = {end - Seconds{86'400}, end}, .readingCount = readings};
        summary.coverage = coverage(covered);
        summary.collectionCoverage = coverage(collected);
        summary.collectionCoverage.hasMissingNightWarning = night;
        const auto quality = insightsReportQuality(
            summary, days < 0 ? std::nullopt : std::optional{end - Seconds{days * 86'400}});
        ASSERT_EQ(quality.has_value(), !identifier.empty());
        if (!quality)
            continue;
        EXPECT_EQ(quality->accessibilityIdentifier, identifier);
        EXPECT_EQ(quality->message, message);
        EXPECT_EQ(quality->symbolName, identifier == overnight ? "moon.zzz.fill" : "chart.bar.xaxis");
    }
}

TEST(InsightsCollection, isCompleteAfterThreeDaysOfWhichTheLatestAreCovered)
{
    const Date now = utc("2024-06-01T12:00:00Z");
    const auto progress = [now](double collectedHours, double observedHours) {
        std::vector<InsightsReading> readings;
        addSteady(readings, now - Seconds{observedHours * 3600}, now);
        return insightsCollectionProgress(readings, now - Seconds{collectedHours * 3600}, now);
    };
    EXPECT_FALSE(progress(71.99, 72).isComplete());
    EXPECT_TRUE(progress(72, 50.4).isComplete());
    EXPECT_FALSE(progress(72, 50.3).isComplete());
    EXPECT_EQ(progress(500, 500).coverage, 1);
    EXPECT_EQ(progress(500, 500).collected, initialCollection);
    EXPECT_EQ(progress(-5, 0).collected, Seconds{0});  // A clock that was set back.
    EXPECT_FALSE(insightsCollectionProgress({}, {}, now).isComplete());
}

TEST(InsightsCollection, saysWhereItStandsAndWhatIsMissing)
{
    using enum InsightsCollectionStatus;
    const InsightsCollectionProgress begun{Seconds{1.46 * 86'400}, 0.479};
    const InsightsCollectionProgress gappy{initialCollection, 0.699};
    const InsightsCollectionProgress complete{initialCollection, 0.7};
    struct Case {
        InsightsCollectionFacts facts;
        std::optional<InsightsCollectionProgress> progress;
        InsightsCollectionStatus status;
        std::string_view title;
        std::string_view textBegins;
        std::string_view progressBegins;
    };
    const std::vector<Case> cases{
        {{}, {}, getStarted, "Get started with Insights", "Explore your glucose patterns", ""},
        {{.isSaving = true}, {}, checking, "Checking saved history", "Checking your saved history.", ""},
        {{.isSaving = true},
         begun,
         waiting,
         "Waiting for readings",
         "Readings are saved after a successful glucose refresh. Insights needs 3 days",
         "1.4 of 3 days\n"},
        {{.isSaving = true, .hasSavedReadings = true},
         begun,
         building,
         "Building your insights",
         "2 days left in the initial 3-day collection period. Insights also needs at least 70%",
         "1.4 of 3 days\nLatest 3 days: 47% saved (70% target)\n\nProgress always uses the latest 3 days, "
         "regardless of the report period."},
        {{.isSaving = true, .hasSavedReadings = true},
         InsightsCollectionProgress{Seconds{2.99 * 86'400}, 1},
         building,
         "Building your insights",
         "1 hour left in",
         "2.9 of 3 days\nLatest 3 days: 100% saved"},
        {{.isSaving = true, .hasSavedReadings = true},
         gappy,
         moreReadingsNeeded,
         "More readings needed",
         "Insights needs at least 70% coverage over the latest 3 days.",
         "3 of 3 days\nLatest 3 days: 69% saved"},
        {{.hasSavedBefore = true, .hasSavedReadings = true},
         begun,
         paused,
         "History collection is paused",
         "Resume saving in Insights settings",
         "1.4 of 3 days"},
        {{.isSaving = true, .hasSavedReadings = true},
         complete,
         preparing,
         "Preparing insights",
         "Your history is ready for insights.",
         ""},
        // Once open, it stays open: through gaps, pauses and a week without readings.
        {{.hasSavedBefore = true, .hasUnlockedInsights = true},
         InsightsCollectionProgress{initialCollection, 0},
         ready,
         "Your insights are ready",
         "Your history is ready",
         ""},
    };
    for (const auto& [facts, progress, status, title, text, progressText] : cases) {
        SCOPED_TRACE(title);
        const auto readiness = insightsReadiness(insightsCollectionStatus(facts, progress));
        EXPECT_EQ(readiness.kind, status);
        EXPECT_EQ(readiness.title, title);
        EXPECT_TRUE(readiness.text.starts_with(text)) << readiness.text;
        EXPECT_TRUE(readiness.progress.starts_with(progressText)) << readiness.progress;
        EXPECT_EQ(readiness.progress.empty(), progressText.empty());
    }
    EXPECT_EQ(insightsProgressPhase(false, false), InsightsProgressPhase::collecting);
    EXPECT_EQ(insightsProgressPhase(true, false), InsightsProgressPhase::complete);
    EXPECT_EQ(insightsProgressPhase(true, true), InsightsProgressPhase::hidden);
}

TEST(InsightsTexts, sayWhatTheIndicatorNeeds)
{
    using enum InsightsGMIUnavailableReason;
    struct Case {
        InsightsGMI gmi;
        std::string_view caption;
        std::string_view explanation;
    };
    const std::vector<Case> cases{
        {{.unavailable = noReadings},
         "Needs saved readings",
         "GMI needs saved readings, 14 days of history, and at least 70% collected coverage."},
        {{.unavailable = collectingHistory},
         "Needs 14 days of history",
         "Available after 14 days of history with at least 70% collected coverage."},
        {{.unavailable = shortInterval}, "Needs a 14-day period", "Choose a period of at least 14 days."},
        {{.unavailable = insufficientCoverage},
         "Needs 70% coverage",
         "Available after 14 days of history with at least 70% collected coverage."},
        {{.available = 7}, "Not a lab HbA1c result", "3.31 + 0.43056 × mean glucose in mmol/L"},
    };
    for (const auto& [gmi, caption, explanation] : cases) {
        EXPECT_EQ(gmiCaption(gmi), caption);
        EXPECT_EQ(gmiExplanation(gmi, GlucoseUnits::mmolL), explanation);
    }
    EXPECT_EQ(bandLimits(InsightsBand::high, GlucoseUnits::mmolL), "above 10.0 to 13.9");
    EXPECT_EQ(bandLimits(InsightsBand::low, GlucoseUnits::mgdL), "54 to below 70");
    EXPECT_NE(agpExplanation(GlucoseUnits::mgdL)
                  .find("The green shading marks the 70–180 mg/dL target range. Times of "
                        "day with readings from fewer than 3 different days are left "
                        "blank."),
              std::string::npos);
}

}  // namespace
}  // namespace tidewell
