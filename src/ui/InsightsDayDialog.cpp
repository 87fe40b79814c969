#include "ui/InsightsDayDialog.h"

#include <QDate>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "insights/InsightsTexts.h"
#include "ui/DisplayText.h"
#include "ui/InsightsChartView.h"
#include "ui/InsightsPanel.h"

namespace tidewell {
namespace {

QString text(std::string_view words) { return displayText(words); }

/// Readings of five minutes in an hour.
constexpr std::size_t readingsPerPage = 12;
constexpr int leastHeight = 240;

InsightsChart dayChart(const std::shared_ptr<const InsightsReportContent>& report, std::size_t index)
{
    const InsightsDay& day = report->days.at(index);
    InsightsChart chart{
        .summary = spokenInsightsDay(day, report->unit), .count = day.points.size(), .page = readingsPerPage};
    chart.paint = [report, index](QPainter& painter, const QRectF& area, const InsightsChartStyle& style,
                                  const QRectF&, std::optional<std::size_t> marked) {
        paintInsightsDay(painter, area, report->days.at(index), style, marked);
    };
    chart.itemAt = [report, index](const QRectF& area, const InsightsChartStyle& style, QPointF point) {
        return insightsPointAt(area, report->days.at(index), style, point);
    };
    chart.spoken = [report, index](std::size_t item) {
        const InsightsDay::Point& point = report->days.at(index).points.at(item);
        return text(localTimeOfDay(point.date, report->zone)) + QStringLiteral(", ") +
               text(formatGlucose(point.mgdL, report->unit)) + u' ' + text(spokenName(report->unit)) +
               QStringLiteral(", ") + text(bandTitle(insightsBand(point.mgdL)));
    };
    chart.height = [](double, const InsightsChartStyle& style) { return leastHeight * style.textScale; };
    return chart;
}

}  // namespace

struct InsightsDayDialog::Impl {
    std::shared_ptr<const InsightsReportContent> report{};
    std::size_t day = 0;
    QLabel* title = nullptr;
    QLabel* figures = nullptr;
    InsightsChartView* chart = nullptr;
    QPushButton* earlier = nullptr;
    QPushButton* later = nullptr;
};

InsightsDayDialog::InsightsDayDialog(QWidget* parent) : QDialog{parent}, impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    my.title = new QLabel{this};
    QFont strong = my.title->font();
    strong.setBold(true);
    my.title->setFont(strong);
    my.figures = new QLabel{this};
    my.figures->setWordWrap(true);
    my.figures->setTextFormat(Qt::PlainText);
    my.figures->setTextInteractionFlags(Qt::TextSelectableByMouse);
    my.chart = new InsightsChartView{QStringLiteral("insightsDay"), this};
    my.chart->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    my.earlier = new QPushButton{tr("← &Earlier day"), this};
    my.earlier->setAccessibleName(tr("Earlier day"));
    my.later = new QPushButton{tr("&Later day →"), this};
    my.later->setAccessibleName(tr("Later day"));
    auto* close = new QPushButton{tr("&Close"), this};
    for (QPushButton* button : {my.earlier, my.later, close})
        button->setAutoDefault(false);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(my.earlier);
    buttons->addWidget(my.later);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout{this};
    layout->addWidget(my.title);
    layout->addWidget(my.figures);
    layout->addWidget(my.chart, 1);
    layout->addLayout(buttons);
    resize(QSize{54, 28} * fontMetrics().height());
    connect(my.earlier, &QPushButton::clicked, this, [this] { showDay(impl_->day - 1); });
    connect(my.later, &QPushButton::clicked, this, [this] { showDay(impl_->day + 1); });
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
}

InsightsDayDialog::~InsightsDayDialog() = default;

void InsightsDayDialog::present(std::shared_ptr<const InsightsReportContent> report, std::size_t day)
{
    impl_->report = std::move(report);
    showDay(day);
    show();
    raise();
    activateWindow();
    impl_->chart->setFocus();
}

void InsightsDayDialog::showDay(std::size_t day)
{
    Impl& my = *impl_;
    my.day = day;
    const InsightsReportContent& report = *my.report;
    const InsightsDay& shown = report.days.at(day);
    const QDate date = QDate{1970, 1, 1}.addDays(shown.date.time_since_epoch().count());
    const QString title = displayDate(date, QStringLiteral("dddd, d MMMM yyyy"));
    my.title->setText(title);
    setWindowTitle(title);
    QString figures = tr("No readings");
    if (shown.meanMgdl)
        figures = tr("Mean %1 %2, %3% in range, %4 readings")
                      .arg(text(formatGlucose(*shown.meanMgdl, report.unit)), text(rawValue(report.unit)),
                           QString::number(100 * shown.inRangeFraction, 'f', 1))
                      .arg(shown.points.size());
    const auto& days = report.result.summary.coverage.days;
    const auto coverage = std::ranges::find(days, shown.date, &InsightsDayCoverage::date);
    if (coverage != days.end() && coverage->totalDuration > Seconds{0})
        figures += tr(", %1 of %2 covered")
                       .arg(text(insightsDurationText(coverage->coveredDuration)),
                            text(insightsDurationText(coverage->totalDuration)));
    my.figures->setText(figures);
    my.chart->walkTo({});
    my.chart->setChart(dayChart(my.report, day), report.unit,
                       insightsAxisTop(report.result.summary.agp, report.days));
    my.earlier->setEnabled(day > 0);
    my.later->setEnabled(day + 1 < report.days.size());
}

}  // namespace tidewell
