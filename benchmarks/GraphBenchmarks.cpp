// What drawings cost on the processor: the graph of a day of values, one each minute, at two pixels to a
// point, the days of Insights, and its window.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <cmath>

#include "ui/GlucoseGraphRenderer.h"
#include "ui/InsightsCharts.h"
#include "ui/InsightsWindow.h"

namespace tidewell {

namespace {

constexpr Date now = dateFromUnix(1'772'460'000);
/// As large as in a menu.
constexpr GraphSize view{360, 240};

GlucoseGraphContent dayOfMinutes()
{
    GlucoseGraphContent content{.timeWindow = GraphTimeWindow::hours24, .now = now};
    for (int minute = 1439; minute >= 0; --minute)
        content.glucoseHistory.push_back(
            makeReading(std::round(150 + 110 * std::sin(minute / 70.0) + 4 * std::sin(minute * 1.7)), "Flat",
                        now - std::chrono::minutes{minute}, Seconds{60}, GlucoseProvider::libreLinkUp));
    return content;
}

void layOut1440Readings(benchmark::State& state)
{
    const auto content = dayOfMinutes();
    for ([[maybe_unused]] auto turn : state)
        benchmark::DoNotOptimize(glucoseGraphLayout(content, view, graphTextMeasure()));
}
BENCHMARK(layOut1440Readings)->Unit(benchmark::kMicrosecond);

/// With the layout, as the view does it when it is shown.
void draw1440ReadingsAtTwoPixelsAPoint(benchmark::State& state)
{
    const auto content = dayOfMinutes();
    QImage image{720, 480, QImage::Format_ARGB32_Premultiplied};
    image.setDevicePixelRatio(2);
    image.fill(Qt::white);
    for ([[maybe_unused]] auto turn : state) {
        QPainter painter{&image};
        paintGlucoseGraph(painter, glucoseGraphLayout(content, view, graphTextMeasure()), GraphTheme::light);
    }
}
BENCHMARK(draw1440ReadingsAtTwoPixelsAPoint)->Unit(benchmark::kMicrosecond);

std::vector<InsightsReading> aReadingAMinute(const DateInterval& period)
{
    std::vector<InsightsReading> readings;
    for (Date date = period.start; date < period.end; date += Seconds{60}) {
        const double minute = unixSeconds(date) / 60;
        readings.push_back(
            {.mgdL = std::round(150 + 110 * std::sin(minute / 70) + 4 * std::sin(minute * 1.7)),
             .date = date,
             .sampleDuration = Seconds{60}});
    }
    return readings;
}

/// What a window of Insights paints when it is scrolled by a page: six weeks of a reading a minute.
void drawSixWeeksOfDays(benchmark::State& state)
{
    const DateInterval period{now, now + Seconds{42 * 86'400}};
    auto readings = aReadingAMinute(period);
    const auto days = insightsDays(std::move(readings), period, TimeZone::utc());
    const InsightsDayGrid grid{days.front().date, days.size(), std::chrono::Monday};
    QImage image{960, 700, QImage::Format_ARGB32_Premultiplied};
    image.fill(Qt::white);
    for ([[maybe_unused]] auto turn : state) {
        QPainter painter{&image};
        paintInsightsDays(painter, image.rect(), days, grid, {.textScale = 13.0 / 12}, image.rect());
    }
}
BENCHMARK(drawSixWeeksOfDays)->Unit(benchmark::kMicrosecond);

/// The window of 90 days of a reading a minute, which are there already.
InsightsViewState ninetyDays()
{
    const DateInterval period{now - Seconds{90 * 86'400}, now};
    const auto readings = aReadingAMinute(period);
    auto content = std::make_shared<InsightsReportContent>();
    content->days = insightsDays(readings, period, content->zone);
    content->result =
        calculateInsights({.readings = readings, .interval = period, .collectionStartedAt = period.start});
    return {.phase = InsightsViewState::Phase::report, .period = {.days = 90}, .report = std::move(content)};
}

/// From its making to the first picture.
void openInsightsOver90Days(benchmark::State& state)
{
    const auto shown = ninetyDays();
    for ([[maybe_unused]] auto turn : state) {
        InsightsWindow window{{}};
        window.open();
        window.present(shown);
        QApplication::processEvents();
    }
}
BENCHMARK(openInsightsOver90Days)->Unit(benchmark::kMillisecond);

/// The slowest page on the way from top to bottom: the main thread does nothing else meanwhile.
void scrollInsightsOver90Days(benchmark::State& state)
{
    InsightsWindow window{{}};
    window.open();
    window.present(ninetyDays());
    QApplication::processEvents();
    QScrollBar& bar = *window.findChild<QScrollArea*>()->verticalScrollBar();
    for ([[maybe_unused]] auto turn : state) {
        std::chrono::duration<double> slowest{};
        for (int page = 0; page <= bar.maximum(); page += bar.pageStep()) {
            const auto begin = std::chrono::steady_clock::now();
            bar.setValue(page);
            QApplication::processEvents();
            slowest =
                std::max<std::chrono::duration<double>>(slowest, std::chrono::steady_clock::now() - begin);
        }
        state.SetIterationTime(slowest.count());
    }
}
BENCHMARK(scrollInsightsOver90Days)->UseManualTime()->Iterations(50)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tidewell

int main(int count, char** values)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application{count, values};
    benchmark::Initialize(&count, values);
    benchmark::RunSpecifiedBenchmarks();
}
