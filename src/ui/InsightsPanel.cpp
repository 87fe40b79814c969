#include "ui/InsightsPanel.h"

#include <fmt/format.h>

#include <QFrame>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "insights/InsightsTexts.h"
#include "ui/DisplayText.h"
#include "ui/InsightsChartView.h"
#include "ui/InsightsEpisodesModel.h"

namespace tidewell {
namespace {

/// Of a card, in widths of an "x".
constexpr int cardLetters = 26;
constexpr int mostCardColumns = 4;
constexpr int tableRows = 8;

QString text(std::string_view words) { return displayText(words); }

template <class... Arguments>
QString formatted(fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    return QString::fromStdString(fmt::format(format, std::forward<Arguments>(arguments)...));
}

QString glucose(double mgdL, GlucoseUnits unit)
{
    return text(formatGlucose(mgdL, unit)) + u' ' + text(rawValue(unit));
}

/// The same for ears.
QString spokenGlucose(double mgdL, GlucoseUnits unit)
{
    return text(formatGlucose(mgdL, unit)) + u' ' + text(spokenName(unit));
}

/// "1 day", "14 days".
QString counted(std::size_t count, const char* one)
{
    return displayText(fmt::format("{} {}{}", count, one, count == 1 ? "" : "s"));
}

QString percent(double fraction) { return formatted("{:.1f}%", fraction * 100); }

/// Rounded down: 70 % stands there only when it is reached.
QString coveredPercent(Seconds covered, Seconds total)
{
    return formatted("{:.0f}%", total > Seconds{0} ? std::floor(covered / total * 100) : 0);
}

QLabel* wrappedLabel(QWidget* parent)
{
    auto* label = new QLabel{parent};
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QFont scaled(QFont font, double factor, bool bold)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(static_cast<int>(std::lround(font.pixelSize() * factor)));
    font.setBold(bold);
    return font;
}

/// One figure: what it is, its value, what it means.
class Card final : public QFrame, public SpokenWidget {
public:
    explicit Card(QWidget* parent) : QFrame{parent}
    {
        setFrameShape(QFrame::StyledPanel);
        auto* layout = new QVBoxLayout{this};
        for (QLabel** label : {&title_, &value_, &meaning_}) {
            *label = wrappedLabel(this);
            layout->addWidget(*label);
        }
        layout->addStretch();
        resizeLetters();
    }

    void present(const QString& title, const QString& value, const QString& meaning)
    {
        title_->setText(title);
        value_->setText(value);
        meaning_->setText(meaning);
        meaning_->setVisible(!meaning.isEmpty());
        setSpokenName(*this, meaning.isEmpty()
                                 ? title + QStringLiteral(": ") + value
                                 : title + QStringLiteral(": ") + value + QStringLiteral(". ") + meaning);
    }
    void resizeLetters() { value_->setFont(scaled(font(), 1.6, true)); }

    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Grouping; }

private:
    QLabel* title_ = nullptr;
    QLabel* value_ = nullptr;
    QLabel* meaning_ = nullptr;
};

/// A frame with a text that has to be noticed, and perhaps a button.
class Notice final : public QFrame, public SpokenWidget {
public:
    enum class Weight { information, doubt };
    Notice(const QString& name, Weight weight, QWidget* parent) : QFrame{parent}, weight_{weight}
    {
        setObjectName(name);
        setFrameShape(QFrame::StyledPanel);
        text_ = wrappedLabel(this);
        layout_ = new QHBoxLayout{this};
        layout_->setContentsMargins(layout_->contentsMargins() + QMargins{stripWidth, 0, 0, 0});
        layout_->addWidget(text_, 1);
        hide();
    }
    void present(const QString& words)
    {
        text_->setText(words);
        setSpokenName(*this, words);
        setVisible(!words.isEmpty());
    }
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Note; }
    QPushButton* addButton(const QString& title)
    {
        auto* button = new QPushButton{title, this};
        layout_->addWidget(button);
        return button;
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QFrame::paintEvent(event);
        QPainter painter{this};
        painter.fillRect(QRect{frameWidth(), frameWidth(), stripWidth, height() - 2 * frameWidth()},
                         weight_ == Weight::doubt
                             ? insightsBandColor(InsightsBand::high, insightsChartStyle(*this, {}, {}).theme)
                             : palette().color(QPalette::Highlight));
    }

private:
    static constexpr int stripWidth = 4;
    Weight weight_;
    QLabel* text_ = nullptr;
    QHBoxLayout* layout_ = nullptr;
};

QString spokenBand(const InsightsBandSummary& band, GlucoseUnits unit)
{
    return text(bandTitle(band.band)) + QStringLiteral(", ") + text(bandLimits(band.band, unit)) + u' ' +
           text(spokenName(unit)) + QStringLiteral(": ") + percent(band.fraction);
}

QString binTime(int minute) { return formatted("{:02}:{:02}", minute / 60, minute % 60); }

QString spokenBin(const InsightsAGPBin& bin, GlucoseUnits unit)
{
    const QString times =
        InsightsPanel::tr("%1 to %2")
            .arg(binTime(bin.startMinute), binTime(bin.startMinute + InsightsAGP::binMinutes));
    if (!bin.percentiles)
        return InsightsPanel::tr("%1: blank, readings from %2 only")
            .arg(times, counted(static_cast<std::size_t>(bin.dayCount), "day"));
    const auto value = [unit](double mgdL) { return text(formatGlucose(mgdL, unit)); };
    const auto& p = *bin.percentiles;
    return InsightsPanel::tr("%1: median %2, middle half %3 to %4, middle 90% %5 to %6, %7")
        .arg(times, spokenGlucose(p.medianMgdl, unit), value(p.p25Mgdl), value(p.p75Mgdl), value(p.p5Mgdl),
             value(p.p95Mgdl), counted(static_cast<std::size_t>(bin.dayCount), "day"));
}

/// The profile in one sentence: where its median is lowest and highest.
QString spokenProfile(const InsightsAGP& agp, GlucoseUnits unit)
{
    const InsightsAGPBin* lowest = nullptr;
    const InsightsAGPBin* highest = nullptr;
    for (const InsightsAGPBin& bin : agp.bins) {
        if (!bin.percentiles)
            continue;
        if (!lowest || bin.percentiles->medianMgdl < lowest->percentiles->medianMgdl)
            lowest = &bin;
        if (!highest || bin.percentiles->medianMgdl > highest->percentiles->medianMgdl)
            highest = &bin;
    }
    if (!lowest)
        return InsightsPanel::tr("Ambulatory glucose profile: blank, too few days with readings");
    return InsightsPanel::tr(
               "Ambulatory glucose profile of %1. The median is lowest at %2, %3, and highest at "
               "%4, %5.")
        .arg(counted(static_cast<std::size_t>(agp.contributingDayCount), "day"), binTime(lowest->startMinute),
             spokenGlucose(lowest->percentiles->medianMgdl, unit), binTime(highest->startMinute),
             spokenGlucose(highest->percentiles->medianMgdl, unit));
}

double widthOfLetters(const InsightsChartStyle& style, double letters)
{
    return letters * 8 * style.textScale;
}

InsightsChart bandsChart(const InsightsReportContent& report)
{
    const auto bands = report.result.summary.bands;
    const GlucoseUnits unit = report.unit;
    InsightsChart chart{.summary = InsightsPanel::tr("Time in ranges"), .count = bands.size(), .row = 1};
    for (const InsightsBandSummary& band : bands)
        chart.summary += QStringLiteral(". ") + spokenBand(band, unit);
    chart.paint = [bands](QPainter& painter, const QRectF& area, const InsightsChartStyle& style,
                          const QRectF&, std::optional<std::size_t> marked) {
        paintInsightsBands(painter, area, bands, style, marked);
    };
    chart.itemAt = [bands](const QRectF& area, const InsightsChartStyle& style, QPointF point) {
        return insightsBandAt(area, bands, style, point);
    };
    chart.spoken = [bands, unit](std::size_t item) { return spokenBand(bands.at(item), unit); };
    chart.height = [](double, const InsightsChartStyle& style) { return insightsBandsHeight(style) + 8; };
    return chart;
}

using Report = std::shared_ptr<const InsightsReportContent>;

InsightsChart profileChart(const Report& report)
{
    constexpr std::size_t binsPerHour = 60 / InsightsAGP::binMinutes;
    InsightsChart chart{.summary = spokenProfile(report->result.summary.agp, report->unit),
                        .count = InsightsAGP::binCount,
                        .page = binsPerHour,
                        .choice = InsightsChart::Choice::keep};
    chart.paint = [report](QPainter& painter, const QRectF& area, const InsightsChartStyle& style,
                           const QRectF&, std::optional<std::size_t> marked) {
        paintInsightsProfile(painter, area, report->result.summary.agp, style, marked);
    };
    chart.itemAt = [](const QRectF& area, const InsightsChartStyle& style, QPointF point) {
        return insightsBinAt(area, style, point);
    };
    chart.spoken = [report](std::size_t item) {
        return spokenBin(report->result.summary.agp.bins.at(item), report->unit);
    };
    chart.height = [](double width, const InsightsChartStyle& style) {
        return std::clamp(0.45 * width, widthOfLetters(style, 28), widthOfLetters(style, 48));
    };
    return chart;
}

std::chrono::weekday firstWeekday()
{
    // Both count Monday as 1; one calls Sunday 0, the other 7.
    return std::chrono::weekday{static_cast<unsigned>(QLocale::system().firstDayOfWeek()) % 7};
}

InsightsChart daysChart(const Report& report, std::function<void(std::size_t)> open)
{
    const std::size_t count = report->days.size();
    const InsightsDayGrid grid{count ? report->days.front().date : std::chrono::sys_days{}, count,
                               firstWeekday()};
    const auto withReadings =
        std::ranges::count_if(report->days, [](const InsightsDay& day) { return !day.points.empty(); });
    InsightsChart chart{.summary = InsightsPanel::tr("Daily curves: %1 of %2 with readings")
                                       .arg(withReadings)
                                       .arg(counted(count, "day")),
                        .count = count,
                        .row = InsightsDayGrid::columns,
                        .page = std::size_t{4} * InsightsDayGrid::columns,
                        .choice = InsightsChart::Choice::open};
    chart.paint = [report, grid](QPainter& painter, const QRectF& area, const InsightsChartStyle& style,
                                 const QRectF& exposed, std::optional<std::size_t> marked) {
        paintInsightsDays(painter, area, report->days, grid, style, exposed, marked);
    };
    chart.itemAt = [grid](const QRectF& area, const InsightsChartStyle&, QPointF point) {
        return grid.dayAt(area, point);
    };
    chart.spoken = [report](std::size_t item) {
        return spokenInsightsDay(report->days.at(item), report->unit);
    };
    chart.open = std::move(open);
    chart.itemArea = [grid](const QRectF& area, std::size_t item) { return grid.cell(area, item); };
    chart.height = [grid](double width, const InsightsChartStyle& style) {
        const double cell = 0.6 * width / InsightsDayGrid::columns + 2.5 * widthOfLetters(style, 1);
        return static_cast<double>(grid.rows()) * cell + 8;
    };
    return chart;
}

InsightsChart dayCoverageChart(const Report& report)
{
    const auto& coverage = report->result.summary.coverage;
    const auto sparse = std::ranges::count_if(coverage.days, [](const InsightsDayCoverage& day) {
        return day.coveredDuration < sufficientCoverage * day.totalDuration;
    });
    InsightsChart chart{.summary = InsightsPanel::tr("Coverage by day: %1 covered, %2 of %3 below 70%")
                                       .arg(coveredPercent(coverage.coveredDuration, coverage.totalDuration))
                                       .arg(sparse)
                                       .arg(counted(coverage.days.size(), "day")),
                        .count = coverage.days.size(),
                        .page = 7};
    chart.paint = [report](QPainter& painter, const QRectF& area, const InsightsChartStyle& style,
                           const QRectF&, std::optional<std::size_t> marked) {
        paintInsightsDayCoverage(painter, area, report->result.summary.coverage.days, style, marked);
    };
    chart.itemAt = [count = chart.count](const QRectF& area, const InsightsChartStyle& style, QPointF point) {
        return insightsColumnAt(area, count, style, point);
    };
    chart.spoken = [report](std::size_t item) {
        const auto& [date, covered, total] = report->result.summary.coverage.days.at(item);
        return InsightsPanel::tr("%1: %2 covered")
            .arg(insightsDateText(date), coveredPercent(covered, total));
    };
    chart.height = [](double, const InsightsChartStyle& style) { return widthOfLetters(style, 16); };
    return chart;
}

InsightsChart hourCoverageChart(const Report& report)
{
    const auto& hours = report->result.summary.coverage.hours;
    InsightsChart chart{
        .summary = InsightsPanel::tr("Coverage by hour of the day"), .count = hours.size(), .page = 6};
    const auto share = [](const InsightsHourCoverage& hour) {
        return hour.totalDuration > Seconds{0} ? hour.coveredDuration / hour.totalDuration : 0;
    };
    if (const auto least = std::ranges::min_element(hours, {}, share); least != hours.end())
        chart.summary +=
            InsightsPanel::tr(": lowest from %1, %2 covered")
                .arg(binTime(60 * least->hour), coveredPercent(least->coveredDuration, least->totalDuration));
    chart.paint = [report](QPainter& painter, const QRectF& area, const InsightsChartStyle& style,
                           const QRectF&, std::optional<std::size_t> marked) {
        paintInsightsHourCoverage(painter, area, report->result.summary.coverage.hours, style, marked);
    };
    chart.itemAt = [count = chart.count](const QRectF& area, const InsightsChartStyle& style, QPointF point) {
        return insightsColumnAt(area, count, style, point);
    };
    chart.spoken = [report](std::size_t item) {
        const auto& [hour, covered, total] = report->result.summary.coverage.hours.at(item);
        return InsightsPanel::tr("%1 to %2: %3 covered")
            .arg(binTime(60 * hour), binTime(60 * (hour + 1)), coveredPercent(covered, total));
    };
    chart.height = [](double, const InsightsChartStyle& style) { return widthOfLetters(style, 16); };
    return chart;
}

/// "Below 70 mg/dL: 12, longest 1 h 5 min, over 2 hours: 1", a line for each kind.
QString episodesSummary(const InsightsReportContent& report)
{
    QStringList lines;
    for (const InsightsEpisodeKind kind : allInsightsEpisodeKinds) {
        int count = 0;
        int extended = 0;
        Seconds longest{};
        for (const InsightsEpisode& episode : report.result.episodes) {
            if (episode.kind != kind)
                continue;
            ++count;
            extended += episode.isExtended ? 1 : 0;
            longest = std::max(longest, episode.interval.duration());
        }
        QString line =
            insightsEpisodeTitle(kind, report.unit) + QStringLiteral(": ") + QString::number(count);
        if (count > 0)
            line += InsightsPanel::tr(", longest %1").arg(text(insightsDurationText(longest)));
        if (extended > 0)
            line += InsightsPanel::tr(", over 2 hours: %1").arg(extended);
        lines << line;
    }
    return lines.join(u'\n');
}

}  // namespace

QString spokenInsightsDay(const InsightsDay& day, GlucoseUnits unit)
{
    const QString date = insightsDateText(day.date);
    if (day.points.empty() || !day.meanMgdl)
        return InsightsPanel::tr("%1: no readings").arg(date);
    return InsightsPanel::tr("%1: mean %2, %3 in range, %4")
        .arg(date, spokenGlucose(*day.meanMgdl, unit), percent(day.inRangeFraction),
             counted(day.points.size(), "reading"));
}

struct InsightsPanel::Impl {
    Handlers handlers;
    Report report{};

    Notice* demonstration = nullptr;
    Notice* completion = nullptr;
    Notice* quality = nullptr;
    Notice* savingOff = nullptr;
    Notice* incomplete = nullptr;
    QLabel* periodText = nullptr;
    QGridLayout* cardGrid = nullptr;
    std::vector<Card*> cards{};
    std::vector<QLabel*> headings{};
    InsightsChartView* bands = nullptr;
    QLabel* profileText = nullptr;
    InsightsChartView* profile = nullptr;
    QToolButton* constructionToggle = nullptr;
    QLabel* construction = nullptr;
    InsightsChartView* days = nullptr;
    InsightsChartView* dayCoverage = nullptr;
    InsightsChartView* hourCoverage = nullptr;
    QLabel* episodesText = nullptr;
    InsightsEpisodesModel* episodes = nullptr;
    QTableView* table = nullptr;

    void addHeading(QVBoxLayout& layout, const QString& title, QWidget* parent)
    {
        auto* label = new QLabel{title, parent};
        label->setFont(scaled(parent->font(), 1.25, true));
        headings.push_back(label);
        layout.addSpacing(12);
        layout.addWidget(label);
    }

    void addText(QVBoxLayout& layout, const QString& words, QWidget* parent)
    {
        QLabel* const label = wrappedLabel(parent);
        label->setText(words);
        layout.addWidget(label);
    }

    InsightsChartView* addChart(QVBoxLayout& layout, const QString& name, QWidget* parent)
    {
        auto* view = new InsightsChartView{name, parent};
        view->onWalk([this, view](QRect area) {
            if (handlers.walkReached)
                handlers.walkReached(*view, area);
        });
        layout.addWidget(view);
        return view;
    }

    void presentCards();
    void arrangeCards(int width);
    void presentNotices(const InsightsViewState& state);
    /// The day of an episode.
    void openEpisode(int row) const
    {
        const auto date = LocalClock{report->zone}.at(episodes->episode(row).interval.start).date;
        const auto day = std::ranges::find(report->days, date, &InsightsDay::date);
        if (day != report->days.end() && handlers.openDay)
            handlers.openDay(static_cast<std::size_t>(day - report->days.begin()));
    }
};

void InsightsPanel::Impl::presentNotices(const InsightsViewState& state)
{
    demonstration->present(
        state.isDemonstration
            ? tr("Demonstration: a week of somebody else's readings, repeated. Nothing of it is kept.")
            : QString{});
    completion->present(state.showsCompletion && !state.readiness.title.empty()
                            ? text(state.readiness.title) + QStringLiteral(". ") + text(state.readiness.text)
                            : QString{});
    quality->present(report->quality ? text(report->quality->message) : QString{});
    if (report->quality)
        quality->setObjectName(text(report->quality->accessibilityIdentifier));
    savingOff->present(state.isSaving ? QString{} : text(insightsSavingOffText));
    QStringList missing;
    if (!report->unreadableDays.empty()) {
        QStringList dates;
        for (const std::string& day : report->unreadableDays)
            dates << text(day);
        missing << tr("The saved readings of these days cannot be read, and are missing here: %1.")
                       .arg(dates.join(QStringLiteral(", ")));
    }
    if (const std::size_t impossible = report->result.impossibleReadings; impossible > 0)
        missing
            << tr("Left out, since no sensor can have measured it: %1.").arg(counted(impossible, "reading"));
    incomplete->present(missing.join(u'\n'));
}

void InsightsPanel::Impl::presentCards()
{
    const InsightsSummary& figures = report->result.summary;
    const GlucoseUnits unit = report->unit;
    const QString none = QStringLiteral("–");
    const auto value = [&](const std::optional<double>& mgdL) { return mgdL ? glucose(*mgdL, unit) : none; };
    const auto& inRange = figures.bands.at(static_cast<std::size_t>(InsightsBand::inRange));
    cards[0]->present(tr("Time in range"), percent(inRange.fraction),
                      text(bandLimits(InsightsBand::inRange, unit)) + u' ' + text(rawValue(unit)));
    cards[1]->present(tr("Mean glucose"), value(figures.meanMgdl), text(insightsMeanExplanation));
    cards[2]->present(
        tr("GMI"), figures.gmi.available ? formatted("{:.1f}%", *figures.gmi.available) : none,
        text(gmiCaption(figures.gmi)) + QStringLiteral(". ") + text(gmiExplanation(figures.gmi, unit)));
    const auto& variation = report->result.coefficientOfVariationPercent;
    cards[3]->present(tr("Variation (CV)"), variation ? formatted("{:.1f}%", *variation) : none,
                      tr("Target: at most %1%").arg(coefficientOfVariationTargetPercent));
    cards[4]->present(tr("Standard deviation"), value(figures.standardDeviationMgdl),
                      text(insightsDeviationExplanation));
    cards[5]->present(tr("Median"), value(figures.medianMgdl),
                      figures.q1Mgdl && figures.q3Mgdl ? tr("The middle half lies from %1 to %2.")
                                                             .arg(text(formatGlucose(*figures.q1Mgdl, unit)),
                                                                  glucose(*figures.q3Mgdl, unit))
                                                       : QString{});
    cards[6]->present(tr("Time active"), formatted("{:.1f}%", report->result.timeActivePercent),
                      tr("%1 of %2")
                          .arg(text(insightsDurationText(figures.coverage.coveredDuration)),
                               text(insightsDurationText(figures.coverage.totalDuration))));
    cards[7]->present(
        tr("Readings"), QLocale::c().toString(static_cast<qulonglong>(figures.readingCount)),
        tr("On %1").arg(counted(static_cast<std::size_t>(figures.agp.contributingDayCount), "day")));
}

void InsightsPanel::Impl::arrangeCards(int width)
{
    const int wanted = cards.front()->fontMetrics().averageCharWidth() * cardLetters;
    int columns = std::clamp(width / std::max(wanted, 1), 1, mostCardColumns);
    columns = columns == 3 ? 2 : columns;  // Eight of them leave no hole in four, two or one.
    if (cardGrid->property("columns").toInt() == columns)
        return;
    cardGrid->setProperty("columns", columns);
    for (int i = 0; i < static_cast<int>(cards.size()); ++i)
        cardGrid->addWidget(cards[static_cast<std::size_t>(i)], i / columns, i % columns);
    for (int column = 0; column < mostCardColumns; ++column)
        cardGrid->setColumnStretch(column, column < columns ? 1 : 0);
}

InsightsPanel::InsightsPanel(Handlers handlers, QWidget* parent)
    : QWidget{parent}, impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    my.handlers = std::move(handlers);
    auto* layout = new QVBoxLayout{this};
    const auto addNotice = [&](const char* name, Notice::Weight weight = Notice::Weight::information) {
        auto* notice = new Notice{QString::fromLatin1(name), weight, this};
        layout->addWidget(notice);
        return notice;
    };
    my.demonstration = addNotice("insightsDemonstrationNotice");
    my.completion = addNotice("insightsReadyNotice");
    QPushButton* const seen = my.completion->addButton(tr("&Dismiss"));
    connect(seen, &QPushButton::clicked, this, [this] {
        impl_->completion->hide();
        if (impl_->handlers.completionSeen)
            impl_->handlers.completionSeen();
    });
    my.quality = addNotice("insightsQualityNotice", Notice::Weight::doubt);
    my.savingOff = addNotice("insightsSavingOffNotice");
    if (my.handlers.openSettings)
        connect(my.savingOff->addButton(tr("&Insights settings")), &QPushButton::clicked, this,
                [this] { impl_->handlers.openSettings(); });
    my.incomplete = addNotice("insightsIncompleteNotice", Notice::Weight::doubt);
    my.periodText = wrappedLabel(this);
    layout->addWidget(my.periodText);

    my.cardGrid = new QGridLayout;
    for (int i = 0; i < 8; ++i)
        my.cards.push_back(new Card{this});
    layout->addLayout(my.cardGrid);

    my.addHeading(*layout, tr("Time in ranges"), this);
    my.bands = my.addChart(*layout, QStringLiteral("insightsBands"), this);
    my.addText(*layout, text(insightsBandsExplanation), this);

    my.addHeading(*layout, tr("Ambulatory glucose profile"), this);
    my.profile = my.addChart(*layout, QStringLiteral("insightsProfile"), this);
    my.profileText = wrappedLabel(this);
    layout->addWidget(my.profileText);
    my.constructionToggle = new QToolButton{this};
    my.constructionToggle->setText(u'&' + text(agpConstructionTitle));
    my.constructionToggle->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    my.constructionToggle->setArrowType(Qt::RightArrow);
    my.constructionToggle->setCheckable(true);
    my.constructionToggle->setAutoRaise(true);
    my.construction = wrappedLabel(this);
    my.construction->setText(text(agpConstruction()));
    my.construction->hide();
    connect(my.constructionToggle, &QToolButton::toggled, this, [this](bool on) {
        impl_->constructionToggle->setArrowType(on ? Qt::DownArrow : Qt::RightArrow);
        impl_->construction->setVisible(on);
    });
    layout->addWidget(my.constructionToggle);
    layout->addWidget(my.construction);

    my.addHeading(*layout, tr("Daily curves"), this);
    my.addText(*layout, tr("A click opens a day, as do the arrow keys and Enter."), this);
    my.days = my.addChart(*layout, QStringLiteral("insightsDays"), this);

    my.addHeading(*layout, tr("Coverage by day"), this);
    my.dayCoverage = my.addChart(*layout, QStringLiteral("insightsDayCoverage"), this);
    my.addHeading(*layout, tr("Coverage by hour"), this);
    my.hourCoverage = my.addChart(*layout, QStringLiteral("insightsHourCoverage"), this);

    my.addHeading(*layout, tr("Episodes"), this);
    my.addText(*layout,
               tr("At least 15 minutes beyond a limit, ended by 15 minutes back. Gaps are never bridged: an "
                  "episode ends where readings are missing. Double-click or Enter opens its day."),
               this);
    my.episodesText = wrappedLabel(this);
    layout->addWidget(my.episodesText);
    my.episodes = new InsightsEpisodesModel{this};
    my.table = new QTableView{this};
    my.table->setObjectName(QStringLiteral("insightsEpisodes"));
    my.table->setAccessibleName(tr("Episodes, the newest first"));
    my.table->setModel(my.episodes);
    my.table->setSelectionBehavior(QAbstractItemView::SelectRows);
    my.table->setSelectionMode(QAbstractItemView::SingleSelection);
    my.table->setTabKeyNavigation(false);
    my.table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    my.table->verticalHeader()->hide();
    my.table->horizontalHeader()->setResizeContentsPrecision(tableRows);
    my.table->horizontalHeader()->setHighlightSections(false);
    connect(my.table, &QTableView::activated, this,
            [this](const QModelIndex& index) { impl_->openEpisode(index.row()); });
    layout->addWidget(my.table);
    layout->addStretch(1);
    my.arrangeCards(width());
}

InsightsPanel::~InsightsPanel() = default;

void InsightsPanel::present(const InsightsViewState& state)
{
    Impl& my = *impl_;
    const bool same = my.report == state.report;
    my.report = state.report;
    my.presentNotices(state);
    if (same)
        return;
    const InsightsReportContent& report = *my.report;
    const auto moment = [&](Date date) {
        const auto shown = LocalClock{report.zone}.at(date).date;
        const int year = static_cast<int>(std::chrono::year_month_day{shown}.year());
        return formatted("{} {} {}", insightsDateText(shown).toStdString(), year,
                         localTimeOfDay(date, report.zone));
    };
    const DateInterval& interval = report.result.summary.interval;
    my.periodText->setText(
        tr("%1 to %2, %3").arg(moment(interval.start), moment(interval.end), text(report.zone.name())));
    my.presentCards();
    const double top = insightsAxisTop(report.result.summary.agp, report.days);
    my.bands->setChart(bandsChart(report), report.unit, top);
    my.profileText->setText(text(agpExplanation(report.unit)));
    my.profile->setChart(profileChart(my.report), report.unit, top);
    my.days->setChart(daysChart(my.report,
                                [this](std::size_t day) {
                                    if (impl_->handlers.openDay)
                                        impl_->handlers.openDay(day);
                                }),
                      report.unit, top);
    my.dayCoverage->setChart(dayCoverageChart(my.report), report.unit, top);
    my.hourCoverage->setChart(hourCoverageChart(my.report), report.unit, top);
    my.episodesText->setText(episodesSummary(report));
    my.episodes->setReport(my.report);
    my.table->setVisible(my.episodes->rowCount() > 0);
    my.table->verticalHeader()->setDefaultSectionSize(my.table->fontMetrics().height() * 3 / 2);
    my.table->resizeColumnsToContents();
    const int rows = std::clamp(my.episodes->rowCount(), 1, tableRows);
    my.table->setFixedHeight(my.table->horizontalHeader()->sizeHint().height() +
                             rows * my.table->verticalHeader()->defaultSectionSize() +
                             2 * my.table->frameWidth());
}

QString InsightsPanel::spokenReport() const
{
    const InsightsReportContent& report = *impl_->report;
    const auto& figures = report.result.summary;
    QStringList parts{impl_->periodText->text()};
    const auto& inRange = figures.bands.at(static_cast<std::size_t>(InsightsBand::inRange));
    parts << tr("Time in range: %1").arg(percent(inRange.fraction));
    if (figures.meanMgdl)
        parts << tr("Mean glucose: %1").arg(spokenGlucose(*figures.meanMgdl, report.unit));
    if (report.quality)
        parts << text(report.quality->message);
    return parts.join(QStringLiteral(". "));
}

void InsightsPanel::resizeEvent(QResizeEvent* event)
{
    impl_->arrangeCards(width());
    QWidget::resizeEvent(event);
}

void InsightsPanel::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::FontChange || !impl_)
        return;
    for (Card* card : impl_->cards)
        card->resizeLetters();
    for (QLabel* heading : impl_->headings)
        heading->setFont(scaled(font(), 1.25, true));
    impl_->arrangeCards(width());
}

}  // namespace tidewell
