#include <gtest/gtest.h>

#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <cmath>
#include <random>

#include "WindowWalk.h"
#include "ui/InsightsWindow.h"

// The Insights window in each of its states, in both themes, both units and at twice the size.

namespace tidewell {
namespace {

constexpr Seconds day{86'400};
const Date start = dateFromIso("2026-03-02T00:00:00Z").value();  // A Monday.
using Phase = InsightsViewState::Phase;

enum class Flaw { none, early, gaps, nights };

/// Readings of a day that is like the others, but not the same.
double glucose(int date, double hour, std::mt19937& random)
{
    const auto meal = [hour](double at, double height) {
        const double past = hour - at;
        return past > 0 ? height * past * std::exp(1 - past) : 0.0;
    };
    std::normal_distribution<double> noise{0, 4};
    const double drift = 14 * std::sin(date * 1.7);
    return std::round(std::clamp(105 + drift + meal(7, 80 + 5 * (date % 5)) + meal(12.5, 60) +
                                     meal(19, 95 - 6 * (date % 4)) - 55 * std::exp(-std::pow(hour - 3, 2)) +
                                     noise(random),
                                 45.0, 330.0));
}

std::shared_ptr<const InsightsReportContent> report(Flaw flaw, GlucoseUnits unit)
{
    std::mt19937 random{7};
    std::vector<InsightsReading> readings;
    for (int i = 0; i < 14 * 288; ++i) {
        const int date = i / 288;
        const double hour = i % 288 / 12.0;
        const bool missing = (flaw == Flaw::gaps && (date % 3 == 1 || hour > 20)) ||
                             (flaw == Flaw::nights && hour < 5.5) || (date == 9 && hour > 9 && hour < 13);
        if (!missing)
            readings.push_back({.mgdL = glucose(date, hour, random),
                                .date = start + Seconds{300.0 * i},
                                .sampleDuration = Seconds{300}});
    }
    const DateInterval interval{start, start + 14 * day};
    const Date begun = flaw == Flaw::early ? start + 3 * day : start;
    auto content = std::make_shared<InsightsReportContent>();
    content->unit = unit;
    content->collectionStartedAt = begun;
    std::erase_if(readings, [begun](const InsightsReading& one) { return one.date < begun; });
    content->days = insightsDays(readings, interval, content->zone);
    content->result =
        calculateInsights({.readings = readings, .interval = interval, .collectionStartedAt = begun});
    content->quality = insightsReportQuality(content->result.summary, begun);
    return content;
}

struct Shown {
    const char* name;
    InsightsViewState state;
};

InsightsViewState collecting(const InsightsCollectionFacts& facts, double days, double coverage)
{
    const auto status = insightsCollectionStatus(
        facts, InsightsCollectionProgress{.collected = days * day, .coverage = coverage});
    return {.phase = Phase::collecting,
            .readiness = insightsReadiness(status),
            .progress = status.progress,
            .isSaving = facts.isSaving,
            .offersSaving = !facts.isSaving};
}

std::vector<Shown> states(GlucoseUnits unit)
{
    auto empty = std::make_shared<InsightsReportContent>();
    empty->result.summary.interval = {start, start + 7 * day};
    const auto withReport = [unit](Flaw flaw) {
        return InsightsViewState{.phase = Phase::report, .report = report(flaw, unit)};
    };
    std::vector<Shown> all{
        {"getstarted", collecting({}, 0, 0)},
        {"paused", collecting({.hasSavedBefore = true, .hasSavedReadings = true}, 1.2, 0.31)},
        {"building",
         collecting({.isSaving = true, .hasSavedBefore = true, .hasSavedReadings = true}, 1.5, 0.48)},
        {"loading", {}},
        {"unavailable",
         {.phase = Phase::unavailable,
          .advice = "Saved history could not be decrypted or read. Existing files have been preserved."}},
        {"empty", {.phase = Phase::report, .report = empty, .isSaving = false}},
        {"report", withReport(Flaw::none)},
        {"early", withReport(Flaw::early)},
        {"limited", withReport(Flaw::gaps)},
        {"overnight", withReport(Flaw::nights)},
    };
    auto& early = all[7].state;
    early.readiness = insightsReadiness(insightsCollectionStatus({.hasUnlockedInsights = true}, {}));
    early.showsCompletion = true;
    all[8].state.isSaving = false;
    return all;
}

QPalette darkPalette()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor{45, 45, 48});
    dark.setColor(QPalette::Base, QColor{30, 30, 32});
    dark.setColor(QPalette::AlternateBase, QColor{40, 40, 42});
    dark.setColor(QPalette::Button, QColor{60, 60, 64});
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(role, QColor{235, 235, 235});
    dark.setColor(QPalette::Highlight, QColor{70, 120, 190});
    return dark;
}

class InsightsGalleryTest : public testing::TestWithParam<bool> {
protected:
    InsightsGalleryTest()
    {
        if (GetParam())
            QApplication::setPalette(darkPalette());
    }
    ~InsightsGalleryTest() override
    {
        QApplication::setPalette(palette);
        QApplication::setFont(font);
    }
    const QPalette palette = QApplication::palette();
    const QFont font = QApplication::font();
};

TEST_P(InsightsGalleryTest, everyStateIsNamedWholeAndReached)
{
    const std::string theme = GetParam() ? "dark" : "light";
    for (const double scale : {1.0, 2.0}) {
        QFont larger = font;
        larger.setPointSizeF(font.pointSizeF() * scale);
        QApplication::setFont(larger);
        const GlucoseUnits unit = scale == 1 ? GlucoseUnits::mgdL : GlucoseUnits::mmolL;
        for (const auto& [name, state] : states(unit)) {
            SCOPED_TRACE(name + (" " + theme));
            InsightsWindow window{{.saveReport = [] {}, .openSettings = [] {}}};
            window.resize(QSize{1000, 680});
            window.setToday(std::chrono::sys_days{std::chrono::year{2026} / 3 / 16});
            window.open();
            window.present(state);
            QApplication::processEvents();
            expectEveryControlNamed(window);
            expectUniqueMnemonics(window);
            expectNothingCut(window);
            const QString file = QStringLiteral("insights-%1-%2-%3").arg(name, theme.c_str()).arg(scale);
            saveScreenshot(window, file);
            if (!qEnvironmentVariableIsSet("TIDEWELL_SCREENSHOTS") || state.phase != Phase::report ||
                state.report->result.summary.readingCount == 0)
                continue;
            // The rest of the column.
            window.resize(window.width(), 3400);
            QApplication::processEvents();
            saveScreenshot(window, file + QStringLiteral("-whole"));
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Themes, InsightsGalleryTest, testing::Bool());

}  // namespace
}  // namespace tidewell
