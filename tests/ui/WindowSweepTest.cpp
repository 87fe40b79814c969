#include <gtest/gtest.h>
#include <QApplication>
#include <QFont>
#include <QLabel>
#include <cmath>
#include <functional>

#include "insights/InsightsTexts.h"
#include "ui/InsightsDayDialog.h"
#include "ui/InsightsReportDialog.h"
#include "ui/InsightsWindow.h"
#include "ui/MenuPanel.h"
#include "ui/Translations.h"
#include "ui/WindowWalk.h"

namespace tidewell {
namespace {

constexpr Seconds day{86'400};
const Date start = dateFromIso("2026-03-02T00:00:00Z").value();

std::shared_ptr<const InsightsReportContent> fortnight()
{
    std::vector<InsightsReading> readings;
    for (int i = 0; i < 14 * 288; ++i)
        if (i / 288 != 4)
            readings.push_back({.mgdL = std::round(170 - 130 * std::cos(i / 144.0 * 3.14159265)),
                                .date = start + Seconds{300.0 * i},
                                .sampleDuration = Seconds{300}});
    const DateInterval interval{start, start + 14 * day};
    auto content = std::make_shared<InsightsReportContent>();
    content->days = insightsDays(readings, interval, content->zone);
    content->result =
        calculateInsights({.readings = readings, .interval = interval, .collectionStartedAt = start});
    content->quality = insightsReportQuality(content->result.summary, {});
    return content;
}

/// A window and the words that name it in messages and pictures.
struct Subject {
    std::string name;
    std::function<std::unique_ptr<QWidget>()> make;
};

std::unique_ptr<QWidget> insights(const InsightsViewState& state)
{
    auto window =
        std::make_unique<InsightsWindow>(InsightsWindow::Handlers{.periodPicked = [](InsightsPeriod) {},
                                                                  .refresh = [] {},
                                                                  .completionSeen = [] {},
                                                                  .saveReport = [] {},
                                                                  .closed = [] {}});
    window->present(state);
    window->open();
    return window;
}

std::vector<Subject> subjects()
{
    using Phase = InsightsViewState::Phase;
    std::vector<Subject> all;
    for (const auto& [name, phase] :
         std::initializer_list<std::pair<const char*, Phase>>{{"loading", Phase::loading},
                                                              {"calculating", Phase::calculating},
                                                              {"unavailable", Phase::unavailable}})
        all.push_back({std::string{"insights-"} + name, [phase] { return insights({.phase = phase}); }});
    all.push_back({"insights-report", [] {
                       return insights({.phase = Phase::report, .report = fortnight(), .isSaving = false});
                   }});
    all.push_back(
        {"insights-demonstration",
         [] { return insights({.phase = Phase::report, .report = fortnight(), .isDemonstration = true}); }});
    for (const auto status : {InsightsCollectionStatus::getStarted, InsightsCollectionStatus::building})
        all.push_back(
            {"insights-" + std::string{rawValue(status)}, [status] {
                 const InsightsCollectionStatusState state{
                     .collectionStatus = status,
                     .progress = InsightsCollectionProgress{.collected = 1.5 * day, .coverage = 0.5}};
                 return insights({.phase = Phase::collecting, .readiness = insightsReadiness(state)});
             }});
    all.push_back({"insights-day", [] {
                       auto dialog = std::make_unique<InsightsDayDialog>();
                       dialog->present(fortnight(), 2);
                       return dialog;
                   }});
    all.push_back({"insights-save", [] {
                       auto dialog = std::make_unique<InsightsReportDialog>();
                       dialog->present(InsightsReportPaper::a4, QStringLiteral("report"));
                       return dialog;
                   }});
    all.push_back({"menu", [] {
                       StatusBarState state{.lastUpdateAt = start};
                       state.currentError =
                           ErrorInfo{.title = "Unable to connect",
                                     .message = "Unable to connect to Dexcom servers.",
                                     .remediation = "Check your internet connection and try again."};
                       state.alertsSnoozedUntil = start + day;
                       auto panel = std::make_unique<MenuPanel>([](MenuCommand) {});
                       panel->setWindowTitle(QStringLiteral("Tidewell"));
                       panel->setItems(statusBarMenu(state, {}, {.insights = true, .settings = true}, start,
                                                     TimeZone::utc()));
                       panel->resize(panel->fitInto({1024, 700}));
                       panel->show();
                       return panel;
                   }});
    return all;
}

class WindowSweep : public testing::Test {
protected:
    void TearDown() override { QApplication::setFont(font_); }

    /// Looks at every window, with letters of the usual size and of twice that.
    void sweep(const QString& language, const std::function<void(QWidget&)>& more = {}) const
    {
        for (const int scale : {1, 2}) {
            QFont larger = font_;
            larger.setPixelSize(13 * scale);
            QApplication::setFont(larger);
            for (const Subject& subject : subjects()) {
                const testing::ScopedTrace trace{
                    __FILE__, __LINE__,
                    subject.name + " in " + language.toStdString() + ", size " + std::to_string(scale)};
                const auto window = subject.make();
                QApplication::processEvents();
                expectEveryControlNamed(*window);
                expectUniqueMnemonics(*window);
                expectNothingCut(*window);
                expectKeyboardReachesAll(*window);
                if (more)
                    more(*window);
                saveScreenshot(*window, QStringLiteral("%1-%2-%3")
                                            .arg(QString::fromStdString(subject.name), language)
                                            .arg(scale));
            }
        }
    }

    const QFont font_ = QApplication::font();
};

TEST_F(WindowSweep, keepsItsPromisesInEnglish) { sweep(QStringLiteral("en")); }

TEST_F(WindowSweep, keepsItsPromisesInEveryLanguage)
{
    for (const QString& language : translatedLanguages()) {
        if (language == QLatin1String("en"))
            continue;
        const SpokenLanguage spoken{language};
        sweep(language);
    }
}

TEST_F(WindowSweep, hasNothingThatCannotBeTranslated)
{
    const PseudoLanguage language;
    sweep(QStringLiteral("pseudo"), [](QWidget& window) {
        expectAllTranslated(window, {QStringLiteral("UTC"), QStringLiteral("Dexcom")});
    });
}

}  // namespace
}  // namespace tidewell
