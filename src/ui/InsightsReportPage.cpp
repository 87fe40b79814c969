#include "ui/InsightsReportPage.h"

#include <fmt/format.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QDate>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QLocale>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "insights/InsightsTexts.h"
#include "ui/DisplayText.h"
#include "ui/InsightsCharts.h"
#include "ui/PersonName.h"

namespace tidewell {
namespace {

/// Units of the page to a point: fine enough for whole units in sizes of letters.
constexpr double pt = 5;
constexpr double unitsPerInch = 72 * pt;
constexpr double pictureDotsPerInch = 200;
constexpr double inch = unitsPerInch;

constexpr double margin = 34 * pt;
constexpr double sectionGap = 9 * pt;
constexpr double columnGap = 16 * pt;
constexpr double leftShare = 0.53;  ///< Of the bands and episodes; figures have the rest.
constexpr double ruleWidth = 0.6 * pt;
constexpr double bandPoints = 7;
/// Of charts, by letters of 11 units at a scale of 1.
constexpr double chartLetter = 11;

constexpr std::size_t mostDays = 14;
constexpr double leastProfile = 110 * pt;
constexpr double mostProfile = 230 * pt;
constexpr double leastDay = 45 * pt;  ///< Of a row of days ...
constexpr double mostDay = 76 * pt;   ///< ... where there is room.

QString fromText(std::string_view words) { return displayText(words); }

/// "2 Mar 2026"; of a local date, as if the local time were UTC.
QString dateText(std::chrono::sys_days date)
{
    return displayDate(QDate{1970, 1, 1}.addDays(date.time_since_epoch().count()),
                       QStringLiteral("d MMM yyyy"));
}

std::chrono::sys_days localDate(Date moment, TimeZone zone) { return LocalClock{zone}.at(moment).date; }

QString momentText(Date moment, TimeZone zone)
{
    return dateText(localDate(moment, zone)) + QStringLiteral(", ") + fromText(localTimeOfDay(moment, zone));
}

bool beginsDate(Date moment, TimeZone zone)
{
    return startOfLocalDate(localDate(moment, zone), zone) == moment;
}

QSizeF unitsOf(InsightsReportPaper paper)
{
    constexpr double millimetre = unitsPerInch / 25.4;
    return paper == InsightsReportPaper::a4 ? QSizeF{210 * millimetre, 297 * millimetre}
                                            : QSizeF{8.5 * inch, 11 * inch};
}

/// How letters look; sizes in points.
struct Letters {
    double points = 8;
    bool bold = false;
    bool faint = false;
};
constexpr Letters titleLetters{.points = 17, .bold = true};
constexpr Letters nameLetters{.points = 11, .bold = true};
constexpr Letters headLetters{.points = 8.4};
constexpr Letters periodLetters{.points = 8.4, .bold = true};
constexpr Letters sectionLetters{.points = 9, .bold = true};
constexpr Letters tableLetters{.points = 8};
constexpr Letters strongTableLetters{.points = 8, .bold = true};
constexpr Letters smallLetters{.points = 6.8, .faint = true};
constexpr Letters noteLetters{.points = 6.4};

QFont fontOf(const Letters& letters)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(static_cast<int>(std::lround(letters.points * pt)));
    font.setBold(letters.bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    // Next to nothing, but with it there are no ligatures, which a search in the PDF would not find.
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.05);
    return font;
}

double lineHeight(const Letters& letters) { return QFontMetricsF{fontOf(letters)}.height(); }

/// What a row of figures says.
struct Figure {
    QString name;
    QString value;
    QString remark;  ///< Its target, or what else is to be known.
};

/// Lays the page out, from above, and paints it where there is a painter.
class Page {
public:
    Page(const InsightsReportContent& content, InsightsReportPaper paper, QPainter* painter)
        : content_{content},
          painter_{painter},
          size_{unitsOf(paper)},
          left_{margin},
          width_{size_.width() - 2 * margin},
          y_{margin}
    {
    }

    std::vector<InsightsReportText> make()
    {
        if (painter_)
            painter_->setRenderHint(QPainter::Antialiasing);
        addHead();
        if (summary().readingCount == 0) {
            y_ += sectionGap;
            addText(left_, width_, sectionLetters, Qt::AlignLeft, fromText(insightsEmptyTitle));
            return std::move(texts_);
        }
        addNotices();
        // What comes below the profile is measured first: the profile has the rest.
        const QString notes = methodNotes();
        const double notesTop = size_.height() - margin - heightOf(notes, width_, noteLetters) -
                                lineHeight(sectionLetters) - sectionGap / 2;
        const auto newest = newestDays();
        const double daysHeight = newest.empty() ? 0
                                                 : lineHeight(sectionLetters) + lineHeight(smallLetters) +
                                                       rowsOf(newest) * leastDay;
        const double available = notesTop - y_ - figuresHeight() - daysHeight - 3 * sectionGap;
        const double profileHeight = hasProfile() ? std::clamp(available, leastProfile, mostProfile)
                                                  : lineHeight(sectionLetters) + lineHeight(tableLetters);
        if (!newest.empty())
            dayRowHeight_ = std::clamp(leastDay + (available - profileHeight) / rowsOf(newest), leastDay,
                                       hasProfile() ? mostDay : mostProfile);
        addProfile(profileHeight);
        addFigures();
        addDays(newest);
        y_ = notesTop;
        addNotes(notes);
        return std::move(texts_);
    }

private:
    Q_DECLARE_TR_FUNCTIONS(InsightsReportPage)

    [[nodiscard]] const InsightsSummary& summary() const { return content_.result.summary; }
    [[nodiscard]] QString value(double mgdL) const { return fromText(formatGlucose(mgdL, content_.unit)); }
    [[nodiscard]] QString unit() const { return fromText(rawValue(content_.unit)); }
    [[nodiscard]] static QString percent(double number) { return fromText(fmt::format("{:.1f}%", number)); }

    [[nodiscard]] static double heightOf(const QString& text, double width, const Letters& letters)
    {
        return QFontMetricsF{fontOf(letters)}
            .boundingRect(QRectF{0, 0, width, 1e6}, Qt::TextWordWrap, text)
            .height();
    }

    /// One text, in lines as they fit into the area.
    void put(const QRectF& area, const Letters& letters, Qt::Alignment alignment, const QString& text)
    {
        if (text.isEmpty())
            return;
        texts_.push_back({QRectF{area.topLeft() / pt, area.size() / pt}, text});
        if (!painter_)
            return;
        QFont font = fontOf(letters);
        // Of a text that has one line to itself, the letters get smaller where a font is wide.
        const double wanted = QFontMetricsF{font}.horizontalAdvance(text);
        if (wanted > area.width() && area.height() < 1.5 * QFontMetricsF{font}.height())
            font.setPixelSize(static_cast<int>(font.pixelSize() * area.width() / wanted));
        painter_->setFont(font);
        painter_->setPen(letters.faint ? insightsFaintTextColor(GraphTheme::light)
                                       : insightsTextColor(GraphTheme::light));
        painter_->drawText(area, static_cast<int>(alignment) | Qt::TextWordWrap, text);
    }

    /// The same at the place that was reached, which then is below it.
    void addText(double left, double width, const Letters& letters, Qt::Alignment alignment,
                 const QString& text)
    {
        const double height = heightOf(text, width, letters);
        put({left, y_, width, height}, letters, alignment | Qt::AlignTop, text);
        y_ += height;
    }

    void rule(double y, double left, double width)
    {
        if (!painter_)
            return;
        painter_->setPen(QPen{QColor{176, 176, 180}, ruleWidth});
        painter_->drawLine(QPointF{left, y}, QPointF{left + width, y});
    }

    [[nodiscard]] InsightsChartStyle chartStyle(double letterPoints) const
    {
        return {
            .theme = GraphTheme::light, .unit = content_.unit, .textScale = letterPoints * pt / chartLetter};
    }

    // --- The head: what, whose, when, how much -------------------------------------------------------------

    void addHead()
    {
        const double half = width_ / 2;
        const double top = y_;
        addText(left_, half, titleLetters, Qt::AlignLeft, tr("Glucose report"));
        const double below = y_;
        y_ = top + 2 * pt;
        addText(left_ + half, half, smallLetters, Qt::AlignRight,
                tr("Made on %1 (%2)")
                    .arg(momentText(content_.madeAt, content_.zone), fromText(content_.zone.name())));
        addText(left_ + half, half, smallLetters, Qt::AlignRight,
                tr("with Tidewell %1, offline on this computer").arg(fromText(content_.version)));
        y_ = std::max(below, y_);
        if (!content_.name.empty())
            addText(left_, width_, nameLetters, Qt::AlignLeft,
                    QFontMetricsF{fontOf(nameLetters)}.elidedText(personName(content_.name, {}),
                                                                  Qt::ElideRight, width_));
        addText(left_, width_, periodLetters, Qt::AlignLeft, periodText());
        if (summary().readingCount > 0)
            addText(left_, width_, headLetters, Qt::AlignLeft, coverageText());
        y_ += 3 * pt;
        rule(y_, left_, width_);
        y_ += 5 * pt;
    }

    [[nodiscard]] QString periodText() const
    {
        const auto& [start, end] = summary().interval;
        const auto zone = content_.zone;
        const QString length = fromText(insightsDurationText(summary().interval.duration()));
        if (beginsDate(start, zone) && beginsDate(end, zone)) {
            const auto first = localDate(start, zone);
            const auto last = localDate(end - Seconds{1}, zone);
            const auto days = (last - first).count() + 1;
            return tr("%1 to %2, %3, time zone %4")
                .arg(dateText(first), dateText(last), days == 1 ? tr("1 day") : tr("%1 days").arg(days),
                     fromText(zone.name()));
        }
        return tr("%1 to %2, %3, time zone %4")
            .arg(momentText(start, zone), momentText(end, zone), length, fromText(zone.name()));
    }

    [[nodiscard]] QString coverageText() const
    {
        const auto& coverage = summary().coverage;
        const QLocale english{QLocale::English};
        QString text = tr("Sensor active %1 of the time: %2 of %3, %4 readings")
                           .arg(percent(content_.result.timeActivePercent),
                                fromText(insightsDurationText(coverage.coveredDuration)),
                                fromText(insightsDurationText(coverage.totalDuration)),
                                english.toString(static_cast<qulonglong>(summary().readingCount)));
        if (content_.collectionStartedAt)
            text += tr(". History since %1")
                        .arg(dateText(localDate(*content_.collectionStartedAt, content_.zone)));
        return text + u'.';
    }

    void addNotices()
    {
        QString text;
        const auto add = [&text](const QString& sentence) {
            text += (text.isEmpty() ? QString{} : QStringLiteral("\n")) + sentence;
        };
        if (content_.isDemonstration)
            add(tr("Demonstration: these readings are not those of the person who made this page."));
        if (content_.quality)
            add(fromText(content_.quality->message));
        if (!content_.unreadableDays.empty())
            add(tr("Saved readings of these days could not be read and are missing: %1.")
                    .arg(unreadableText()));
        if (const auto impossible = content_.result.impossibleReadings; impossible > 0)
            add(impossible == 1
                    ? tr("Left out, since no sensor can have measured it: 1 reading.")
                    : tr("Left out, since no sensor can have measured them: %1 readings.").arg(impossible));
        if (text.isEmpty())
            return;
        const double inset = 5 * pt;
        const double height = heightOf(text, width_ - 3 * inset, tableLetters);
        if (painter_) {
            painter_->setPen(QPen{insightsTextColor(GraphTheme::light), ruleWidth});
            painter_->setBrush(QColor{240, 240, 240});
            painter_->drawRect(QRectF{left_, y_, width_, height + 2 * inset});
            painter_->fillRect(QRectF{left_, y_, inset / 2, height + 2 * inset},
                               insightsTextColor(GraphTheme::light));
        }
        put({left_ + 2 * inset, y_ + inset, width_ - 3 * inset, height}, tableLetters,
            Qt::AlignLeft | Qt::AlignTop, text);
        y_ += height + 2 * inset + 6 * pt;
    }

    [[nodiscard]] QString unreadableText() const
    {
        constexpr std::size_t mostNamed = 8;
        QStringList named;
        for (const auto& day :
             std::span{content_.unreadableDays}.first(std::min(mostNamed, content_.unreadableDays.size())))
            named.append(fromText(day));
        if (content_.unreadableDays.size() > mostNamed)
            named.append(tr("and %1 more").arg(content_.unreadableDays.size() - mostNamed));
        return named.join(QStringLiteral(", "));
    }

    [[nodiscard]] bool hasProfile() const
    {
        return summary().agp.contributingDayCount >= InsightsAGP::minimumDays;
    }

    // --- The profile ---------------------------------------------------------------------------------------

    void addProfile(double height)
    {
        const int days = summary().agp.contributingDayCount;
        addText(left_, width_, sectionLetters, Qt::AlignLeft,
                days == 1 ? tr("Profile of a day, from 1 day with readings")
                          : tr("Profile of a day, from %1 days with readings").arg(days));
        const QRectF area{left_, y_, width_, height - lineHeight(sectionLetters)};
        if (!hasProfile())
            put(area, tableLetters, Qt::AlignLeft | Qt::AlignTop,
                tr("The profile needs readings of at least %1 different days.")
                    .arg(InsightsAGP::minimumDays));
        if (painter_ && hasProfile()) {
            auto style = chartStyle(7.6);
            // Its own: one high value of a day is not to press it flat.
            style.axisTopMgdl = insightsAxisTop(summary().agp, {});
            paintInsightsProfile(*painter_, area, summary().agp, style);
        }
        y_ = area.bottom() + sectionGap;
    }

    // --- Bands and episodes left, figures with targets right
    // -------------------------------------------------

    [[nodiscard]] double rowHeight() const { return 1.22 * lineHeight(tableLetters); }
    [[nodiscard]] double bandsHeight() const
    {
        return lineHeight(sectionLetters) + 2 * pt + insightsBandsHeight(chartStyle(bandPoints));
    }
    [[nodiscard]] double episodesHeight() const
    {
        return lineHeight(sectionLetters) + rowHeight() * (1 + allInsightsEpisodeKinds.size()) +
               (summary().coverage.isSufficient() ? 0 : 2 * pt + lineHeight(smallLetters));
    }
    [[nodiscard]] double figuresHeight() const
    {
        const double right = lineHeight(sectionLetters) +
                             rowHeight() * (1 + static_cast<double>(figures().size())) +
                             2 * lineHeight(smallLetters);
        return std::max(bandsHeight() + sectionGap + episodesHeight(), right);
    }

    void addFigures()
    {
        const double leftWidth = (width_ - columnGap) * leftShare;
        const double right = left_ + leftWidth + columnGap;
        const double rightWidth = width_ - leftWidth - columnGap;
        const double top = y_;
        addText(left_, leftWidth, sectionLetters, Qt::AlignLeft, tr("Time in ranges"));
        y_ += 2 * pt;
        if (painter_)
            paintInsightsBands(*painter_, {left_, y_, leftWidth, 0}, summary().bands, chartStyle(bandPoints));
        y_ = top + bandsHeight() + sectionGap;
        addEpisodes(leftWidth);

        y_ = top;
        const double valueAt = right + 0.37 * rightWidth;
        const double targetAt = right + 0.67 * rightWidth;
        addText(right, rightWidth, sectionLetters, Qt::AlignLeft, tr("Figures and their targets"));
        const auto row = [&](const Figure& figure, bool head) {
            const auto cell = [&](double x, double end) { return QRectF{x, y_, end - x, rowHeight()}; };
            const auto flags = Qt::AlignLeft | Qt::AlignVCenter;
            const Letters& named = head ? smallLetters : tableLetters;
            put(cell(right, valueAt), named, flags, figure.name);
            put(cell(valueAt, figure.remark.isEmpty() ? right + rightWidth : targetAt), strongTableLetters,
                flags, figure.value);
            // Without a value, why.
            put(cell(figure.value.isEmpty() && !head ? valueAt : targetAt, right + rightWidth), smallLetters,
                flags, figure.remark);
            y_ += rowHeight();
            rule(y_, right, rightWidth);
        };
        row({.name = tr("by observed time"), .remark = tr("target")}, true);
        for (const Figure& figure : figures())
            row(figure, false);
        y_ += 2 * pt;
        addText(
            right, rightWidth, smallLetters, Qt::AlignLeft,
            tr("Targets of the international consensus for most adults with diabetes; yours may differ."));
        y_ = top + figuresHeight() + sectionGap;
    }

    [[nodiscard]] std::vector<Figure> figures() const
    {
        const auto& of = summary();
        const auto share = [&](std::initializer_list<InsightsBand> bands) {
            double sum = 0;
            for (const InsightsBand band : bands)
                sum += of.bands.at(static_cast<std::size_t>(band)).fraction;
            return percent(sum * 100);
        };
        using enum InsightsBand;
        const auto glucose = [&](const std::optional<double>& mgdL) {
            return mgdL ? value(*mgdL) + u' ' + unit() : tr("none");
        };
        return {{tr("Mean glucose"), glucose(of.meanMgdl), {}},
                {tr("GMI"), of.gmi.available ? percent(*of.gmi.available) : QString{},
                 fromText(gmiCaption(of.gmi))},
                {tr("Standard deviation"), glucose(of.standardDeviationMgdl), {}},
                {tr("Variation (CV)"),
                 content_.result.coefficientOfVariationPercent
                     ? percent(*content_.result.coefficientOfVariationPercent)
                     : tr("none"),
                 tr("at most %1%").arg(coefficientOfVariationTargetPercent)},
                {tr("Median"), glucose(of.medianMgdl), {}},
                {tr("Middle half"),
                 of.q1Mgdl && of.q3Mgdl ? value(*of.q1Mgdl) + u'–' + value(*of.q3Mgdl) + u' ' + unit()
                                        : tr("none"),
                 {}},
                {tr("%1 to %2").arg(value(lowBelow), value(highAbove)), share({inRange}), tr("over 70%")},
                {tr("Below %1").arg(value(lowBelow)), share({veryLow, low}), tr("under 4%")},
                {tr("Below %1").arg(value(veryLowBelow)), share({veryLow}), tr("under 1%")},
                {tr("Above %1").arg(value(highAbove)), share({high, veryHigh}), tr("under 25%")},
                {tr("Above %1").arg(value(veryHighAbove)), share({veryHigh}), tr("under 5%")},
                {tr("Sensor active"), percent(content_.result.timeActivePercent), tr("at least 70%")}};
    }

    void addEpisodes(double width)
    {
        const std::array columns{left_, left_ + 0.26 * width, left_ + 0.42 * width, left_ + 0.58 * width,
                                 left_ + width};
        addText(left_, width, sectionLetters, Qt::AlignLeft, tr("Episodes of at least 15 minutes"));
        const auto row = [&](const std::array<QString, 4>& cells, bool head) {
            for (std::size_t i = 0; i < cells.size(); ++i)
                put({columns[i], y_, columns[i + 1] - columns[i], rowHeight()},
                    head     ? smallLetters
                    : i == 1 ? strongTableLetters
                             : tableLetters,
                    Qt::AlignLeft | Qt::AlignVCenter, cells[i]);
            y_ += rowHeight();
            rule(y_, left_, width);
        };
        row({unit(), tr("number"), tr("a week"), tr("longest")}, true);
        const double weeks = summary().coverage.coveredDuration / Seconds{7 * 86'400.0};
        const std::array thresholds{lowBelow, veryLowBelow, highAbove, veryHighAbove};
        for (const InsightsEpisodeKind kind : allInsightsEpisodeKinds) {
            int count = 0;
            int extended = 0;
            Seconds longest{};
            for (const auto& episode : content_.result.episodes) {
                if (episode.kind != kind)
                    continue;
                ++count;
                extended += episode.isExtended ? 1 : 0;
                longest = std::max(longest, episode.interval.duration());
            }
            const QString threshold = value(thresholds.at(static_cast<std::size_t>(kind)));
            const bool low = kind == InsightsEpisodeKind::low || kind == InsightsEpisodeKind::veryLow;
            QString most = count > 0 ? fromText(insightsDurationText(longest)) : QString{};
            if (extended > 0)
                most += tr(", %1 over 2 h").arg(extended);
            row({low ? tr("Below %1").arg(threshold) : tr("Above %1").arg(threshold), QString::number(count),
                 weeks > 0 ? fromText(fmt::format("{:.1f}", count / weeks)) : QString{}, most},
                false);
        }
        if (summary().coverage.isSufficient())
            return;
        y_ += 2 * pt;
        addText(left_, width, smallLetters, Qt::AlignLeft,
                tr("Gaps may hide further episodes, and longer ones."));
    }

    // --- The newest days -----------------------------------------------------------------------------------

    [[nodiscard]] std::span<const InsightsDay> newestDays() const
    {
        const std::span<const InsightsDay> days{content_.days};
        return days.last(std::min(days.size(), mostDays));
    }
    /// One or two days have room for axes.
    [[nodiscard]] static std::size_t daysToRow(std::span<const InsightsDay> days)
    {
        return days.size() <= 2 ? 1 : 5;
    }
    [[nodiscard]] static double rowsOf(std::span<const InsightsDay> days)
    {
        return static_cast<double>((days.size() + daysToRow(days) - 1) / daysToRow(days));
    }
    void addDays(std::span<const InsightsDay> days)
    {
        if (days.empty())
            return;
        addText(left_, width_, sectionLetters, Qt::AlignLeft,
                days.size() == content_.days.size()
                    ? tr("Days")
                    : tr("The newest %1 of %2 days").arg(days.size()).arg(content_.days.size()));
        auto style = chartStyle(smallLetters.points);
        style.axisTopMgdl = insightsAxisTop({}, days);
        addText(left_, width_, smallLetters, Qt::AlignLeft,
                tr("From midnight to midnight; the shading is the range from %1 to %2 %3, the upper edge is "
                   "%4. The share is the time in range.")
                    .arg(value(lowBelow), value(highAbove), unit(), value(style.axisTopMgdl)));
        const std::size_t columns = daysToRow(days);
        const double cellWidth = width_ / static_cast<double>(columns);
        const double gap = 2 * pt;
        for (std::size_t i = 0; i < days.size(); ++i) {
            const QRectF cell =
                QRectF{left_ + static_cast<double>(i % columns) * cellWidth,
                       y_ + static_cast<double>(i / columns) * dayRowHeight_, cellWidth, dayRowHeight_}
                    .adjusted(gap, gap, -gap, -gap);
            const QRectF above{cell.left(), cell.top(), cell.width() - gap, lineHeight(smallLetters)};
            if (painter_ && columns > 1)
                paintInsightsSmallDay(*painter_, cell, days[i], style);
            else if (painter_)
                paintInsightsDay(*painter_, cell, days[i], style);
            const QString share = days[i].points.empty()
                                      ? QString{}
                                      : fromText(fmt::format("{:.0f}%", days[i].inRangeFraction * 100));
            put(above, smallLetters, Qt::AlignRight | Qt::AlignVCenter,
                columns == 1 ? insightsDateText(days[i].date) + QStringLiteral("   ") + share : share);
        }
        y_ += rowsOf(days) * dayRowHeight_ + sectionGap;
    }

    // --- How it was calculated -----------------------------------------------------------------------------

    void addNotes(const QString& notes)
    {
        rule(y_, left_, width_);
        y_ += sectionGap / 2;
        addText(left_, width_, sectionLetters, Qt::AlignLeft, tr("How this was calculated"));
        addText(left_, width_, noteLetters, Qt::AlignLeft, notes);
    }

    [[nodiscard]] QString methodNotes() const
    {
        const auto& gmi = summary().gmi;
        QStringList notes{
            tr("Weighting: each reading stands for the time until the next one, at most for its sample "
               "duration. What is missing beyond that is a gap. Gaps are never bridged: they weigh nothing, "
               "curves stop at them, and episodes end there."),
            tr("Mean, standard deviation (of the population, no n−1), percentiles and shares are weighted by "
               "that time. Variation is standard deviation by mean."),
            tr("Bands, by exact values in mg/dL: very low below 54, low 54 to below 70, in range 70 to 180, "
               "high above 180 to 250, very high above 250. %1 In mmol/L values are divided by 18.")
                .arg(fromText(insightsBandsExplanation)),
            gmi.available ? tr("GMI = %1. %2.")
                                .arg(fromText(gmiExplanation(gmi, content_.unit)), fromText(gmiCaption(gmi)))
                          : tr("GMI: %1. %2")
                                .arg(fromText(gmiCaption(gmi)), fromText(gmiExplanation(gmi, content_.unit))),
            tr("Profile: readings of all days by quarters of an hour of the local clock; the line is the "
               "median, the areas hold the middle 50% and 90%. Quarters with readings of fewer than %1 dates "
               "stay blank; curves are smoothed for display only.")
                .arg(InsightsAGP::minimumDays),
            tr("Episodes: at least 15 minutes beyond a threshold, ended by 15 minutes back; a week is a week "
               "of observed time. A low of over 2 hours is an extended one."),
            tr("Sources: bands, targets and coverage Battelino et al. 2019, doi 10.2337/dci19-0028; episodes "
               "Battelino et al. 2023, doi 10.1016/S2213-8587(22)00319-9; GMI Bergenstal et al. 2018, doi "
               "10.2337/dc18-1581."),
            tr("Tidewell is no medical device. Nothing was sent anywhere to make this page.")};
        return notes.join(u'\n');
    }

    const InsightsReportContent& content_;
    QPainter* painter_;
    QSizeF size_;
    double left_;
    double width_;
    double dayRowHeight_ = leastDay;
    double y_;  ///< How far down the page is filled.
    std::vector<InsightsReportText> texts_;
};

QByteArray asPdf(const InsightsReportContent& content, InsightsReportPaper paper)
{
    QByteArray bytes;
    QBuffer buffer{&bytes};
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer{&buffer};
    writer.setResolution(static_cast<int>(unitsPerInch));
    writer.setPageLayout(
        QPageLayout{QPageSize{paper == InsightsReportPaper::a4 ? QPageSize::A4 : QPageSize::Letter},
                    QPageLayout::Portrait, QMarginsF{}});
    // All that a file says of itself: no name, no account, no computer.
    writer.setTitle(QStringLiteral("Glucose report"));
    writer.setCreator(QStringLiteral("Tidewell ") + fromText(content.version));
    QPainter painter;
    if (!painter.begin(&writer))
        return {};
    (void)Page{content, paper, &painter}.make();
    painter.end();
    return bytes;
}

QByteArray asPng(const InsightsReportContent& content, InsightsReportPaper paper)
{
    constexpr double scale = pictureDotsPerInch / unitsPerInch;
    QImage image{(unitsOf(paper) * scale).toSize(), QImage::Format_RGB32};
    constexpr double inchesPerMetre = 1 / 0.0254;
    image.setDotsPerMeterX(static_cast<int>(std::lround(pictureDotsPerInch * inchesPerMetre)));
    image.setDotsPerMeterY(image.dotsPerMeterX());
    image.fill(Qt::white);
    QPainter painter{&image};
    painter.scale(scale, scale);
    (void)Page{content, paper, &painter}.make();
    painter.end();
    QByteArray bytes;
    QBuffer buffer{&bytes};
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? bytes : QByteArray{};
}

}  // namespace

QByteArray insightsReport(const InsightsReportContent& content, InsightsReportPaper paper,
                          InsightsReportFormat format)
{
    return format == InsightsReportFormat::pdf ? asPdf(content, paper) : asPng(content, paper);
}

std::vector<InsightsReportText> insightsReportTexts(const InsightsReportContent& content,
                                                    InsightsReportPaper paper)
{
    return Page{content, paper, nullptr}.make();
}

}  // namespace tidewell
