#include "ui/InsightsWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QTableView>
#include <cmath>

#include "insights/InsightsTexts.h"
#include "ui/Announcer.h"
#include "ui/InsightsChartView.h"
#include "ui/InsightsDayDialog.h"

namespace tidewell {
namespace {

constexpr Seconds day{86'400};
const Date start = dateFromIso("2026-03-02T00:00:00Z").value();  // A Monday.
using Phase = InsightsViewState::Phase;

/// A fortnight that goes up and down once a day; nothing between three and four o'clock, and nothing on the
/// fifth day.
std::shared_ptr<const InsightsReportContent> fortnight(GlucoseUnits unit = GlucoseUnits::mgdL)
{
    std::vector<InsightsReading> readings;
    for (int i = 0; i < 14 * 288; ++i)
        if (i / 288 != 4 && (i % 288 < 36 || i % 288 >= 48))
            readings.push_back({.mgdL = std::round(170 - 130 * std::cos(i / 144.0 * 3.14159265)),
                                .date = start + Seconds{300.0 * i},
                                .sampleDuration = Seconds{300}});
    const DateInterval interval{start, start + 14 * day};
    auto content = std::make_shared<InsightsReportContent>();
    content->unit = unit;
    content->days = insightsDays(readings, interval, content->zone);
    content->result =
        calculateInsights({.readings = readings, .interval = interval, .collectionStartedAt = start});
    content->quality = insightsReportQuality(content->result.summary, {});
    return content;
}

class InsightsWindowTest : public testing::Test {
protected:
    InsightsWindowTest()
    {
        window.setToday(std::chrono::floor<std::chrono::days>(
            std::chrono::sys_seconds{std::chrono::seconds{1'773'600'000}}));
        window.open();
    }

    void present(Phase phase, std::shared_ptr<const InsightsReportContent> report = {})
    {
        window.present({.phase = phase, .report = std::move(report)});
    }
    template <class Widget>
    Widget& widget(const char* name)
    {
        return *window.findChild<Widget*>(QString::fromLatin1(name));
    }
    InsightsChartView& chart(const char* name) { return widget<InsightsChartView>(name); }
    /// Goes to the parents of who does not want it, as keys do.
    static void key(QWidget& receiver, int code)
    {
        QKeyEvent event{QEvent::KeyPress, code, Qt::NoModifier};
        QApplication::sendEvent(&receiver, &event);
    }
    /// Everything that is shown as text.
    QString shown()
    {
        QString all;
        for (const auto* label : window.findChildren<QLabel*>())
            if (label->isVisible())
                all += label->text() + u'\n';
        return all;
    }

    std::vector<InsightsPeriod> picked;
    int settingsOpened = 0;
    int refreshed = 0;
    int seen = 0;
    int closed = 0;
    InsightsWindow window{{.periodPicked = [this](InsightsPeriod period) { picked.push_back(period); },
                           .refresh = [this] { ++refreshed; },
                           .completionSeen = [this] { ++seen; },
                           .closed = [this] { ++closed; }}};
};

TEST_F(InsightsWindowTest, saysWhereThingsStand)
{
    const auto says = [this](std::string_view words) {
        EXPECT_TRUE(shown().contains(QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size()))))
            << words << " is not in:\n"
            << shown().toStdString();
    };
    says(insightsLoadingText);
    present(Phase::calculating);
    says(insightsCalculatingText);
    present(Phase::unavailable);
    says(insightsUnavailableTitle);
    says(insightsUnavailableText);
    widget<QPushButton>("insightsRetry").setFocus();
    key(widget<QPushButton>("insightsRetry"), Qt::Key_Return);
    EXPECT_EQ(refreshed, 1);
    auto empty = std::make_shared<InsightsReportContent>();
    empty->result.summary.interval = {start, start + 14 * day};
    window.present({.phase = Phase::report, .report = std::move(empty), .isDemonstration = true});
    says(insightsEmptyTitle);
    says("2026-03-02 to 2026-03-15");
    says("demonstration");
    const InsightsCollectionProgress progress{.collected = 1.5 * day, .coverage = 0.5};
    for (const bool isSaving : {true, false}) {
        const auto status = insightsCollectionStatus(
            {.isSaving = isSaving, .hasSavedBefore = true, .hasSavedReadings = true}, progress);
        const auto readiness = insightsReadiness(status);
        window.present({.phase = Phase::collecting,
                        .readiness = readiness,
                        .progress = status.progress,
                        .advice = "What helps"});
        for (const std::string& words : {readiness.title, readiness.text, readiness.progress})
            says(words);
        says("What helps");
        EXPECT_FALSE(widget<QComboBox>("insightsPeriod").isVisible()) << "nothing to pick a period for";
    }
    const auto report = fortnight();
    window.present(
        {.phase = Phase::report,
         .readiness = insightsReadiness(insightsCollectionStatus({.hasUnlockedInsights = true}, {})),
         .report = report,
         .isSaving = false,
         .showsCompletion = true});
    for (const std::string_view words :
         {report->quality->message, insightsSavingOffText, insightsMeanExplanation,
          insightsDeviationExplanation, insightsBandsExplanation, gmiCaption(report->result.summary.gmi)})
        says(words);
    says(agpExplanation(GlucoseUnits::mgdL));
    for (auto* button : window.findChildren<QPushButton*>())
        if (button->isVisible() && button->text().contains(QStringLiteral("Dismiss")))
            button->click();
    EXPECT_EQ(seen, 1);
    EXPECT_FALSE(shown().contains(QStringLiteral("Your insights are ready")));
}

TEST_F(InsightsWindowTest, periodHasALengthWhicheverEndMoves)
{
    present(Phase::report, fortnight());
    auto& period = widget<QComboBox>("insightsPeriod");
    auto& from = widget<QDateEdit>("insightsFrom");
    auto& to = widget<QDateEdit>("insightsTo");
    EXPECT_FALSE(from.isVisible());
    const auto pick = [&](int index) {
        period.setCurrentIndex(index);
        Q_EMIT period.activated(index);
    };
    pick(3);
    ASSERT_EQ(picked.size(), 1U);
    EXPECT_EQ(picked.back(), InsightsPeriod{.days = 90});
    pick(4);
    EXPECT_TRUE(from.isVisible());
    ASSERT_EQ(picked.size(), 2U);
    window.present({.phase = Phase::report, .period = picked.back(), .report = fortnight()});
    from.setDate(to.date().addDays(-3));
    window.present({.phase = Phase::report, .period = picked.back(), .report = fortnight()});
    auto& moved = widget<QLabel>("insightsMovedDate");
    EXPECT_FALSE(moved.isVisible());
    to.setDate(from.date().addDays(-2));
    EXPECT_FALSE(picked.back().days);
    EXPECT_EQ(picked.back().from, picked.back().to) << "the other end gave way";
    EXPECT_EQ(from.date(), to.date());
    EXPECT_TRUE(moved.isVisible() && moved.text().startsWith(QStringLiteral("The first day was moved")));
    window.present({.phase = Phase::report, .period = picked.back(), .report = fortnight()});
    EXPECT_TRUE(moved.isVisible()) << "until something else is picked";
    from.setDate(to.date().addDays(1));
    EXPECT_TRUE(moved.text().startsWith(QStringLiteral("The last day was moved")));
    window.present({.phase = Phase::report, .period = picked.back(), .report = fortnight()});
    from.setDate(to.date().addDays(-1));
    EXPECT_FALSE(moved.isVisible());
    to.setDate(QDate{2030, 1, 1});
    EXPECT_EQ(to.date(), to.maximumDate());
    EXPECT_LT(to.date(), QDate(2027, 1, 1)) << "no report of the future";
}

TEST_F(InsightsWindowTest, tellsScreenReadersOfWhatIsNewOnce)
{
    auto& announcer = widget<Announcer>("announcer");
    const auto collecting = [this](double days, bool isSaving = true) {
        const InsightsCollectionProgress progress{.collected = days * day, .coverage = days / 4};
        const auto status = insightsCollectionStatus(
            {.isSaving = isSaving, .hasSavedBefore = true, .hasSavedReadings = true}, progress);
        window.present({.phase = Phase::collecting,
                        .readiness = insightsReadiness(status),
                        .progress = status.progress});
    };
    // Its name is what was said; the next words follow an empty one.
    const auto told = [&announcer] {
        const QString words = announcer.accessibleName();
        announcer.setAccessibleName({});
        return words.toStdString();
    };
    const auto expectTold = [&told](std::initializer_list<const char*> parts) {
        const std::string words = told();
        for (const char* part : parts)
            EXPECT_TRUE(words.find(part) != std::string::npos) << words;
    };
    present(Phase::loading);
    present(Phase::calculating);
    EXPECT_EQ(told(), "") << "what is only waited for is no news";
    collecting(1.1);
    expectTold(
        {"Building your insights. 2 days left", "1.1 of 3 days. Latest 3 days: 27% saved (70% target)"});
    collecting(1.4);
    EXPECT_EQ(told(), "") << "a reading more is no news";
    collecting(2.1);
    expectTold({"2.1 of 3 days"});
    collecting(2.1, false);
    expectTold({"History collection is paused"});
    window.present({.phase = Phase::report, .report = fortnight()});
    expectTold(
        {"2 Mar 2026", "Time in range: ", "Mean glucose: ", "milligrams per deciliter", "Early insights"});
    window.present({.phase = Phase::report, .isBusy = true, .report = fortnight()});
    window.present({.phase = Phase::report, .report = fortnight()});
    EXPECT_EQ(told(), "") << "a renewal is no news";
    window.present({.phase = Phase::unavailable, .advice = "What helps"});
    expectTold({"History unavailable. Your saved history", "What helps"});
    window.present({.phase = Phase::loading, .isBusy = true});
    window.present({.phase = Phase::unavailable, .advice = "What helps"});
    EXPECT_EQ(told(), "");
    widget<QPushButton>("insightsRetry").click();
    window.present({.phase = Phase::unavailable, .advice = "What helps"});
    expectTold({"History unavailable"});
}

TEST_F(InsightsWindowTest, namesTheCommandOnlyWithoutAWayToTheSettings)
{
    const auto collecting = [](InsightsWindow& shown, bool offers) {
        shown.present({.phase = Phase::collecting,
                       .readiness = insightsReadiness(insightsCollectionStatus({}, {})),
                       .isSaving = false,
                       .offersSaving = offers});
    };
    auto* const settings = window.findChild<QPushButton*>(QStringLiteral("insightsSettings"));
    collecting(window, true);
    EXPECT_FALSE(settings->isVisible());
    EXPECT_TRUE(shown().contains(QStringLiteral("tidewell history enable")));

    InsightsWindow withSettings{{.openSettings = [this] { ++settingsOpened; }}};
    withSettings.open();
    auto& button = *withSettings.findChild<QPushButton*>(QStringLiteral("insightsSettings"));
    auto& advice = *withSettings.findChild<QLabel*>(QStringLiteral("insightsAdvice"));
    collecting(withSettings, false);
    EXPECT_FALSE(button.isVisible()) << "nobody is signed in";
    auto empty = std::make_shared<InsightsReportContent>();
    empty->result.summary.interval = {start, start + day};
    int opened = 0;
    for (const auto& state :
         {InsightsViewState{.phase = Phase::collecting, .offersSaving = true},
          InsightsViewState{.phase = Phase::unavailable},
          InsightsViewState{.phase = Phase::report, .report = empty, .isSaving = false}}) {
        withSettings.present(state);
        ASSERT_TRUE(button.isVisible());
        button.click();
        EXPECT_EQ(settingsOpened, ++opened);
        EXPECT_FALSE(advice.text().contains(QStringLiteral("tidewell history")));
    }
    collecting(withSettings, true);
    button.setFocus();
    collecting(withSettings, true);
    EXPECT_EQ(withSettings.focusWidget(), &button) << "a renewal leaves the keyboard where it is";
    withSettings.present({.phase = Phase::report, .report = fortnight(), .isSaving = false});
    for (auto* other : withSettings.findChildren<QPushButton*>())
        if (other->isVisible() && other->text().contains(QStringLiteral("settings")))
            other->click();
    EXPECT_EQ(settingsOpened, 4) << "where saving is off, below the report too";
}

TEST_F(InsightsWindowTest, chartsAreWalkedSpokenAndLeftByKeyboard)
{
    present(Phase::report, fortnight());
    InsightsChartView& profile = chart("insightsProfile");
    const QString summary = profile.accessibleName();
    EXPECT_TRUE(summary.contains(QStringLiteral("highest at 11:45"))) << summary.toStdString();
    key(profile, Qt::Key_Home);
    key(profile, Qt::Key_PageDown);
    key(profile, Qt::Key_Right);
    EXPECT_EQ(profile.markedItem(), 5U);
    EXPECT_TRUE(profile.accessibleName().startsWith(QStringLiteral("01:15 to 01:30: median")));
    key(profile, Qt::Key_Return);
    QFocusEvent away{QEvent::FocusOut, Qt::TabFocusReason};
    QApplication::sendEvent(&profile, &away);
    EXPECT_EQ(profile.markedItem(), 5U) << "it is kept";
    key(profile, Qt::Key_Escape);
    EXPECT_EQ(profile.markedItem(), std::nullopt);
    EXPECT_EQ(profile.accessibleName(), summary);
    for (int i = 0; i < 13; ++i)
        key(profile, Qt::Key_Right);
    EXPECT_TRUE(profile.accessibleName().contains(QStringLiteral("blank")));
    for (const char* name :
         {"insightsBands", "insightsDays", "insightsDayCoverage", "insightsHourCoverage"}) {
        InsightsChartView& view = chart(name);
        const QString whole = view.accessibleName();
        EXPECT_FALSE(whole.isEmpty());
        key(view, Qt::Key_End);
        EXPECT_NE(view.accessibleName(), whole) << name;
        key(view, Qt::Key_Escape);
        EXPECT_EQ(view.accessibleName(), whole) << name;
    }
    EXPECT_EQ(closed, 0);
    key(profile, Qt::Key_Escape);
    key(profile, Qt::Key_Escape);
    EXPECT_EQ(closed, 1);
}

TEST_F(InsightsWindowTest, aDayOpensByKeyByClickAndFromItsEpisode)
{
    present(Phase::report, fortnight(GlucoseUnits::mmolL));
    InsightsChartView& days = chart("insightsDays");
    key(days, Qt::Key_Home);
    key(days, Qt::Key_Down);
    key(days, Qt::Key_Return);
    auto* const dialog = window.findChild<InsightsDayDialog*>();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Monday, 9 March 2026"));
    auto& curve = *dialog->findChild<InsightsChartView*>();
    key(curve, Qt::Key_End);
    EXPECT_EQ(curve.accessibleName(), QStringLiteral("23:55, 2.2 millimoles per liter, Very low"));
    int steps = 0;
    for (auto* button : dialog->findChildren<QPushButton*>())
        while (button->text().contains(QStringLiteral("Later")) && button->isEnabled() && ++steps < 50)
            button->click();
    EXPECT_EQ(steps, 6);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Sunday, 15 March 2026"));

    const QRectF area = QRectF{days.rect()}.adjusted(4, 4, -4, -4);
    const InsightsDayGrid shownGrid{
        std::chrono::sys_days{std::chrono::year{2026} / 3 / 2}, 14,
        std::chrono::weekday{static_cast<unsigned>(QLocale::system().firstDayOfWeek()) % 7}};
    const QPointF middle = shownGrid.cell(area, 4).center();
    QMouseEvent press{QEvent::MouseButtonPress, middle,         middle,
                      Qt::LeftButton,           Qt::LeftButton, Qt::NoModifier};
    QApplication::sendEvent(&days, &press);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Friday, 6 March 2026"));
    auto& table = widget<QTableView>("insightsEpisodes");
    ASSERT_GT(table.model()->rowCount(), 20);
    Q_EMIT table.activated(table.model()->index(table.model()->rowCount() - 1, 0));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Monday, 2 March 2026"));
}

TEST(InsightsCharts, placesAndItemsAreEachOthersInverse)
{
    using namespace std::chrono;
    const QRectF area{10, 20, 500, 300};
    for (unsigned weekday = 0; weekday < 7; ++weekday)
        for (const std::size_t count : {0U, 1U, 7U, 8U, 90U}) {
            const InsightsDayGrid grid{sys_days{year{2026} / 3 / 4}, count, std::chrono::weekday{weekday}};
            for (std::size_t item = 0; item < count; ++item)
                EXPECT_EQ(grid.dayAt(area, grid.cell(area, item).center()), item);
            EXPECT_EQ(grid.dayAt(area, {0, 0}), std::nullopt);
        }
    for (const double scale : {1.0, 2.0}) {
        std::size_t expected = 0;
        std::size_t columns = 0;
        for (double x = area.left(); x < area.right(); x += 0.5) {
            if (const auto bin = insightsBinAt(area, {.textScale = scale}, {x, 150})) {
                EXPECT_TRUE(*bin == expected || *bin == expected + 1) << "none is skipped";
                expected = *bin;
            }
            if (const auto column = insightsColumnAt(area, 24, {.textScale = scale}, {x, 100}))
                columns = std::max(columns, *column);
        }
        EXPECT_EQ(expected, InsightsAGP::binCount - 1);
        EXPECT_EQ(columns, 23U);
    }
}

TEST(InsightsCharts, gapsStayGapsInBothThemesUnitsAndSizes)
{
    for (const GraphTheme theme : {GraphTheme::light, GraphTheme::dark})
        for (const GlucoseUnits unit : allGlucoseUnits)
            for (const double scale : {1.0, 2.0}) {
                const auto report = fortnight(unit);
                const InsightsChartStyle style{.theme = theme, .unit = unit, .textScale = scale};
                const QRectF area{0, 0, 700, 400};
                const auto picture = [&](const InsightsAGP& agp) {
                    QImage image{700, 400, QImage::Format_ARGB32_Premultiplied};
                    image.fill(graphBackground(theme));
                    QPainter painter{&image};
                    paintInsightsProfile(painter, area, agp, style);
                    return image;
                };
                const QImage curves = picture(report->result.summary.agp);
                const QImage blank = picture({});
                for (int x = 0; x < 700; ++x) {
                    // A pixel away from each edge of a bin, since curves are smooth to the pixel.
                    const auto bin = insightsBinAt(area, style, {x + 0.5, 200});
                    if (!bin || bin != insightsBinAt(area, style, {x - 1.5, 200}) ||
                        bin != insightsBinAt(area, style, {x + 2.5, 200}))
                        continue;
                    bool drawn = false;
                    for (int y = 0; y < curves.height(); ++y)
                        drawn = drawn || curves.pixel(x, y) != blank.pixel(x, y);
                    EXPECT_EQ(drawn, report->result.summary.agp.bins[*bin].percentiles.has_value()) << *bin;
                }
            }
}

}  // namespace
}  // namespace tidewell
