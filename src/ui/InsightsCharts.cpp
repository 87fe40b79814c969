#include "ui/InsightsCharts.h"

#include <fmt/format.h>

#include <QDate>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "insights/InsightsTexts.h"
#include "ui/DisplayText.h"

namespace tidewell {
namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(InsightsCharts)
};

constexpr double letterHeight = 11;
constexpr double minutesPerDay = 1440;
constexpr double secondsPerDay = 86'400;
/// A line that every value axis has: the limits of the bands.
constexpr std::array bandEdges{veryLowBelow, lowBelow, highAbove, veryHighAbove};

struct Palette {
    QColor background;
    QColor text;
    QColor faintText;
    QColor grid;
    QColor target;      ///< The range of 70 to 180 mg/dL.
    QColor targetEdge;  ///< Its limits.
    QColor middle90;
    QColor middle50;
    QColor line;  ///< The median, and a curve in range.
    QColor mark;
    QColor column;        ///< Covered time ...
    QColor sparseColumn;  ///< ... of less than 70 %.
    std::array<QColor, 5> bands;
};

const Palette& palette(GraphTheme theme)
{
    static const Palette light{.background{255, 255, 255},
                               .text{29, 29, 31},
                               .faintText{99, 99, 106},
                               .grid{0, 0, 0, 24},
                               .target{46, 160, 90, 38},
                               .targetEdge{30, 125, 70, 150},
                               .middle90{0, 104, 181, 52},
                               .middle50{0, 104, 181, 96},
                               .line{0, 70, 130},
                               .mark{29, 29, 31},
                               .column{0, 104, 181},
                               .sparseColumn{196, 110, 0},
                               .bands{QColor{130, 10, 36}, QColor{224, 98, 94}, QColor{30, 132, 73},
                                      QColor{214, 140, 0}, QColor{150, 66, 0}}};
    static const Palette dark{.background{30, 31, 34},
                              .text{242, 242, 245},
                              .faintText{166, 167, 174},
                              .grid{255, 255, 255, 28},
                              .target{70, 190, 120, 40},
                              .targetEdge{90, 200, 130, 150},
                              .middle90{140, 196, 255, 84},
                              .middle50{0, 84, 166, 190},
                              .line{170, 214, 255},
                              .mark{242, 242, 245},
                              .column{98, 176, 255},
                              .sparseColumn{255, 178, 66},
                              .bands{QColor{206, 48, 84}, QColor{255, 122, 116}, QColor{82, 186, 120},
                                     QColor{255, 206, 92}, QColor{240, 128, 48}}};
    return theme == GraphTheme::light ? light : dark;
}

QString text(std::string_view words) { return displayText(words); }

QFont chartFont(const InsightsChartStyle& style, bool bold = false)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(letterHeight * style.textScale))));
    font.setBold(bold);
    return font;
}

QString timeText(std::int64_t minuteOfDay)
{
    return QString::fromStdString(fmt::format("{:02}:{:02}", minuteOfDay / 60, minuteOfDay % 60));
}

QString value(double mgdL, const InsightsChartStyle& style)
{
    return QString::fromStdString(formatGlucose(mgdL, style.unit));
}

/// Restores the painter, which it sets up for lines and letters of a style.
class Pen {
public:
    Pen(QPainter& painter, const InsightsChartStyle& style) : painter_{painter}
    {
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setFont(chartFont(style));
    }
    ~Pen() { painter_.restore(); }
    Pen(const Pen&) = delete;
    Pen& operator=(const Pen&) = delete;

private:
    QPainter& painter_;
};

/// Where a day's values lie in a plot.
struct Plot {
    QRectF area;
    double top = 300;  ///< mg/dL.

    [[nodiscard]] double y(double mgdL) const
    {
        return area.bottom() - std::clamp(mgdL / top, 0.0, 1.0) * area.height();
    }
    [[nodiscard]] double xOfMinute(double minute) const
    {
        return area.left() + minute / minutesPerDay * area.width();
    }
    [[nodiscard]] double xOfSecond(double second) const
    {
        return area.left() + second / secondsPerDay * area.width();
    }
};

/// With room for the axes: values left, times below.
Plot plotWithAxes(const QRectF& area, const InsightsChartStyle& style)
{
    const QFontMetricsF metrics{chartFont(style)};
    const double gap = 6 * style.textScale;
    const double left = std::max(metrics.horizontalAdvance(QStringLiteral("600")),
                                 metrics.horizontalAdvance(QStringLiteral("33.3"))) +
                        gap;
    const double right = metrics.horizontalAdvance(QStringLiteral("24:00")) / 2;
    const double above = 1.3 * metrics.height();
    const double below = metrics.height() + gap;
    return {QRectF{area.left() + left, area.top() + above, std::max(0.0, area.width() - left - right),
                   std::max(0.0, area.height() - above - below)},
            style.axisTopMgdl};
}

void paintTarget(QPainter& painter, const Plot& plot, const Palette& colors, double line)
{
    painter.fillRect(
        QRectF{QPointF{plot.area.left(), plot.y(highAbove)}, QPointF{plot.area.right(), plot.y(lowBelow)}},
        colors.target);
    painter.setPen(QPen{colors.targetEdge, line});
    for (const double edge : {lowBelow, highAbove})
        painter.drawLine(QPointF{plot.area.left(), plot.y(edge)}, QPointF{plot.area.right(), plot.y(edge)});
}

/// The limits of the bands with their values, and the hours with their times.
void paintAxes(QPainter& painter, const Plot& plot, const InsightsChartStyle& style)
{
    const Palette& colors = palette(style.theme);
    const QFontMetricsF metrics{painter.font()};
    const double line = style.textScale;
    const double gap = 6 * line;
    painter.setPen(colors.faintText);
    painter.drawText(QPointF{plot.area.left(), plot.area.top() - 0.4 * metrics.height()},
                     text(rawValue(style.unit)));
    for (const double edge : bandEdges) {
        painter.setPen(QPen{colors.grid, line});
        painter.drawLine(QPointF{plot.area.left(), plot.y(edge)}, QPointF{plot.area.right(), plot.y(edge)});
    }
    // The target range first: where there is no room, the others go without a label.
    std::vector<double> labelled;
    painter.setPen(colors.faintText);
    for (const double edge : {lowBelow, highAbove, plot.top, veryHighAbove, veryLowBelow}) {
        const double y = plot.y(edge);
        if (std::ranges::any_of(labelled,
                                [&](double other) { return std::abs(other - y) < 0.9 * metrics.height(); }))
            continue;
        labelled.push_back(y);
        painter.drawText(
            QRectF{plot.area.left() - 1000, y - metrics.height(), 1000 - gap, 2 * metrics.height()},
            Qt::AlignRight | Qt::AlignVCenter, value(edge, style));
    }

    const double perHour = plot.area.width() / 24;
    const double needed = 1.6 * metrics.horizontalAdvance(QStringLiteral("00:00"));
    const int step = 3 * perHour >= needed ? 3 : 6 * perHour >= needed ? 6 : 12;
    for (int hour = 0; hour <= 24; hour += step) {
        const double x = plot.xOfMinute(hour * 60);
        painter.setPen(QPen{colors.grid, line});
        painter.drawLine(QPointF{x, plot.area.top()}, QPointF{x, plot.area.bottom()});
        painter.setPen(colors.faintText);
        painter.drawText(QRectF{x - 500, plot.area.bottom() + 0.5 * gap, 1000, metrics.height()},
                         Qt::AlignHCenter | Qt::AlignTop, timeText(hour * 60));
    }
}

/// A line across the plot and a plate with these lines of text beside it.
void paintMark(QPainter& painter, const Plot& plot, double x, const std::vector<QString>& lines,
               const InsightsChartStyle& style)
{
    const Palette& colors = palette(style.theme);
    const QFontMetricsF metrics{painter.font()};
    const double line = style.textScale;
    const double margin = 6 * line;
    painter.setPen(QPen{colors.mark, line});
    painter.drawLine(QPointF{x, plot.area.top()}, QPointF{x, plot.area.bottom()});
    double width = 0;
    for (const QString& one : lines)
        width = std::max(width, metrics.horizontalAdvance(one));
    QRectF plate{0, 0, width + 2 * margin, static_cast<double>(lines.size()) * metrics.height() + margin};
    // On the side that has more room.
    const bool left = x > plot.area.center().x();
    plate.moveTop(plot.area.top());
    plate.moveLeft(left ? x - margin - plate.width() : x + margin);
    plate.moveLeft(std::max(plot.area.left(), std::min(plate.left(), plot.area.right() - plate.width())));
    painter.setPen(QPen{colors.faintText, line});
    painter.setBrush(colors.background);
    painter.drawRoundedRect(plate, margin / 2, margin / 2);
    painter.setPen(colors.text);
    double y = plate.top() + margin / 2 + metrics.ascent();
    for (const QString& one : lines) {
        painter.drawText(QPointF{plate.left() + margin, y}, one);
        y += metrics.height();
    }
}

/// Bins without a blank one between them.
struct Run {
    std::size_t first;
    std::size_t last;
};

std::vector<Run> runs(const InsightsAGP& agp)
{
    std::vector<Run> found;
    for (std::size_t i = 0; i < agp.bins.size(); ++i) {
        if (!agp.bins[i].percentiles)
            continue;
        if (!found.empty() && found.back().last + 1 == i)
            found.back().last = i;
        else
            found.push_back({i, i});
    }
    return found;
}

/// One percentile along a run: through the middle of each bin, level from the run's ends to the first and
/// last middle. Between the bins a cubic that never leaves the values at its ends, so that percentiles do not
/// cross (Fritsch and Carlson 1980, doi 10.1137/0717021; slopes as harmonic means, Fritsch and Butland 1984,
/// doi 10.1137/0905021).
QPainterPath curve(const InsightsAGP& agp, const Run& run, double InsightsAGPPercentiles::* which,
                   const Plot& plot, bool backwards = false)
{
    std::vector<QPointF> points;
    for (std::size_t i = run.first; i <= run.last; ++i)
        points.emplace_back(plot.xOfMinute(agp.bins[i].startMinute + InsightsAGP::binMinutes / 2.0),
                            plot.y((*agp.bins[i].percentiles).*which));
    const double step = plot.xOfMinute(InsightsAGP::binMinutes) - plot.xOfMinute(0);
    std::vector<double> slopes(points.size(), 0);  // Level at both ends.
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const double before = points[i].y() - points[i - 1].y();
        const double after = points[i + 1].y() - points[i].y();
        if (before * after > 0)
            slopes[i] = 2 * before * after / (before + after);
    }
    const QPointF start{points.front().x() - step / 2, points.front().y()};
    const QPointF end{points.back().x() + step / 2, points.back().y()};
    QPainterPath path;
    if (!backwards) {
        path.moveTo(start);
        path.lineTo(points.front());
        for (std::size_t i = 0; i + 1 < points.size(); ++i)
            path.cubicTo(points[i] + QPointF{step / 3, slopes[i] / 3},
                         points[i + 1] - QPointF{step / 3, slopes[i + 1] / 3}, points[i + 1]);
        path.lineTo(end);
        return path;
    }
    path.moveTo(end);
    path.lineTo(points.back());
    for (std::size_t i = points.size() - 1; i > 0; --i)
        path.cubicTo(points[i] - QPointF{step / 3, slopes[i] / 3},
                     points[i - 1] + QPointF{step / 3, slopes[i - 1] / 3}, points[i - 1]);
    path.lineTo(start);
    return path;
}

QPainterPath area(const InsightsAGP& agp, const Run& run, double InsightsAGPPercentiles::* lower,
                  double InsightsAGPPercentiles::* upper, const Plot& plot)
{
    QPainterPath path = curve(agp, run, upper, plot);
    path.connectPath(curve(agp, run, lower, plot, true));
    path.closeSubpath();
    return path;
}

/// What the line and the areas are, above the plot and right of the unit.
void paintLegend(QPainter& painter, const Plot& plot, const InsightsChartStyle& style)
{
    const Palette& colors = palette(style.theme);
    const QFontMetricsF metrics{painter.font()};
    const double side = 0.7 * metrics.height();
    struct Entry {
        QString name;
        QColor color;
        bool isLine;
    };
    const std::array entries{Entry{Words::tr("median"), colors.line, true},
                             Entry{Words::tr("middle 50%"), colors.middle50, false},
                             Entry{Words::tr("middle 90%"), colors.middle90, false},
                             Entry{Words::tr("target range"), colors.target, false}};
    double width = 0;
    for (const Entry& entry : entries)
        width += 2.6 * side + metrics.horizontalAdvance(entry.name);
    double x = plot.area.right() - width + side;
    if (x < plot.area.left() + metrics.horizontalAdvance(text(rawValue(style.unit))) + side)
        return;
    const double y = plot.area.top() - 0.7 * metrics.height();
    for (const Entry& entry : entries) {
        if (entry.isLine) {
            painter.fillRect(QRectF{x, y - style.textScale, side, 2 * style.textScale}, entry.color);
        } else {
            painter.fillRect(QRectF{x, y - side / 2, side, side}, entry.color);
        }
        painter.setPen(colors.faintText);
        painter.drawText(QRectF{x + 1.4 * side, y - metrics.height(), 1000, 2 * metrics.height()},
                         Qt::AlignLeft | Qt::AlignVCenter, entry.name);
        x += 2.6 * side + metrics.horizontalAdvance(entry.name);
    }
}

/// A day's curve in the colours of its bands. Of readings that lie closer than a unit, the lowest and the
/// highest are drawn: it looks the same, and a sensor may give one a minute.
void paintCurve(QPainter& painter, const Plot& plot, const InsightsDay& day, const InsightsChartStyle& style,
                double width)
{
    const Palette& colors = palette(style.theme);
    struct Shown {
        QPointF at;
        std::size_t band;
        bool joinsPrevious;
    };
    std::vector<Shown> shown;
    const auto& points = day.points;
    for (std::size_t i = 0; i < points.size();) {
        std::size_t low = i;
        std::size_t high = i;
        std::size_t end = i + 1;
        const double x = plot.xOfSecond(points[i].secondOfDay);
        while (end < points.size() && points[end].joinsPrevious &&
               plot.xOfSecond(points[end].secondOfDay) - x < style.textScale) {
            low = points[end].mgdL < points[low].mgdL ? end : low;
            high = points[end].mgdL > points[high].mgdL ? end : high;
            ++end;
        }
        const auto show = [&](std::size_t index, bool joins) {
            const InsightsDay::Point& point = points[index];
            shown.push_back({{plot.xOfSecond(point.secondOfDay), plot.y(point.mgdL)},
                             static_cast<std::size_t>(insightsBand(point.mgdL)),
                             joins});
        };
        show(std::min(low, high), i > 0 && points[i].joinsPrevious);
        if (low != high)
            show(std::max(low, high), true);
        i = end;
    }
    std::array<QList<QLineF>, allInsightsBands.size()> lines;
    std::array<QList<QPointF>, allInsightsBands.size()> dots;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const auto& [at, band, joins] = shown[i];
        if (joins)
            lines[band].append({shown[i - 1].at, at});
        else if (i + 1 == shown.size() || !shown[i + 1].joinsPrevious)
            dots[band].append(at);
    }
    for (std::size_t band = 0; band < lines.size(); ++band) {
        const bool inRange = band == static_cast<std::size_t>(InsightsBand::inRange);
        const QColor& color = inRange ? colors.line : colors.bands[band];
        painter.setPen(QPen{color, width, Qt::SolidLine, Qt::FlatCap});
        painter.drawLines(lines[band]);
        painter.setPen(QPen{color, 2 * width, Qt::SolidLine, Qt::RoundCap});
        painter.drawPoints(dots[band].data(), static_cast<int>(dots[band].size()));
    }
}

/// With room for "100%" left and a line of text below.
QRectF coveragePlot(const QRectF& area, const InsightsChartStyle& style)
{
    const QFontMetricsF metrics{chartFont(style)};
    const double gap = 6 * style.textScale;
    return {area.left() + metrics.horizontalAdvance(QStringLiteral("100%")) + gap,
            area.top() + metrics.height() / 2,
            std::max(0.0, area.width() - metrics.horizontalAdvance(QStringLiteral("100%")) - 4 * gap),
            std::max(0.0, area.height() - 1.5 * metrics.height() - gap)};
}

struct Column {
    double fraction;
    QString label;
};

void paintColumns(QPainter& painter, const QRectF& area, const std::vector<Column>& columns,
                  const InsightsChartStyle& style, std::optional<std::size_t> marked)
{
    const Pen pen{painter, style};
    const Palette& colors = palette(style.theme);
    const QFontMetricsF metrics{painter.font()};
    const QRectF plot = coveragePlot(area, style);
    if (columns.empty() || plot.width() <= 0 || plot.height() <= 0)
        return;
    const double line = style.textScale;
    const double width = plot.width() / static_cast<double>(columns.size());
    const double gap = std::min(2 * line, 0.2 * width);
    double nextLabel = plot.left() - 1000;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto& [fraction, label] = columns[i];
        const double x = plot.left() + static_cast<double>(i) * width;
        painter.fillRect(QRectF{x + gap / 2, plot.top(), width - gap, plot.height()}, colors.grid);
        const double height = std::clamp(fraction, 0.0, 1.0) * plot.height();
        painter.fillRect(QRectF{x + gap / 2, plot.bottom() - height, width - gap, height},
                         fraction < sufficientCoverage ? colors.sparseColumn : colors.column);
        const double labelWidth = metrics.horizontalAdvance(label);
        // Centred below its column, and left out where it does not fit.
        const double labelLeft =
            std::clamp(x + width / 2 - labelWidth / 2, area.left(), area.right() - labelWidth);
        if (labelLeft >= nextLabel) {
            painter.setPen(colors.faintText);
            painter.drawText(QRectF{labelLeft, plot.bottom() + 3 * line, labelWidth + 1, metrics.height()},
                             Qt::AlignLeft | Qt::AlignTop, label);
            nextLabel = labelLeft + 1.6 * labelWidth;
        }
        if (marked == i) {
            painter.setPen(QPen{colors.mark, 2 * line});
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(QRectF{x, plot.top() - line, width, plot.height() + 2 * line});
        }
    }
    painter.setPen(QPen{colors.text, line, Qt::DashLine});
    const double target = plot.bottom() - sufficientCoverage * plot.height();
    painter.drawLine(QPointF{plot.left(), target}, QPointF{plot.right(), target});
    painter.setPen(colors.faintText);
    for (const auto& [percent, y] :
         {std::pair{QStringLiteral("100%"), plot.top()}, std::pair{QStringLiteral("70%"), target},
          std::pair{QStringLiteral("0%"), plot.bottom()}})
        painter.drawText(QRectF{area.left(), y - metrics.height(), plot.left() - area.left() - 5 * line,
                                2 * metrics.height()},
                         Qt::AlignRight | Qt::AlignVCenter, percent);
}

/// A row below the bar.
double bandRowHeight(const InsightsChartStyle& style)
{
    return 1.7 * QFontMetricsF{chartFont(style)}.height();
}
double bandBarHeight(const InsightsChartStyle& style) { return 26 * style.textScale; }
double bandBarGap(const InsightsChartStyle& style) { return 8 * style.textScale; }

/// The longest is that of the high band.
QString limitsText(InsightsBand band, const InsightsChartStyle& style)
{
    return text(bandLimits(band, style.unit)) + u' ' + text(rawValue(style.unit));
}

/// The segments of the bar: by share, but wide enough to be seen.
std::array<QRectF, 5> bandSegments(const QRectF& area, const std::array<InsightsBandSummary, 5>& bands,
                                   const InsightsChartStyle& style)
{
    const double least = 3 * style.textScale;
    std::array<double, 5> widths{};
    double total = 0;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        widths[i] = bands[i].fraction > 0 ? std::max(least, bands[i].fraction * area.width()) : 0;
        total += widths[i];
    }
    std::array<QRectF, 5> segments{};
    double x = area.left();
    for (std::size_t i = 0; i < bands.size(); ++i) {
        const double width = total > 0 ? widths[i] / total * area.width() : 0;
        segments[i] = QRectF{x, area.top(), width, bandBarHeight(style)};
        x += width;
    }
    return segments;
}

/// Without the weekday, which a column stands for, where it has no room; at last the day alone. The same for
/// all days of a calendar: a long date decides.
QString shortDateText(std::chrono::sys_days date, const QFontMetricsF& metrics, double width)
{
    using namespace std::chrono;
    constexpr sys_days longDate{year{2026} / 9 / 30};  // A Wednesday.
    const auto fits = [&](const QString& words) {
        return !words.isEmpty() && metrics.horizontalAdvance(words) <= width;
    };
    const auto withoutWeekday = [](const QString& words) { return words.section(QStringLiteral(", "), 1); };
    const QString whole = insightsDateText(date);
    if (fits(whole) && fits(insightsDateText(longDate)))
        return whole;
    if (fits(withoutWeekday(whole)))
        return withoutWeekday(whole);
    return QString::number(static_cast<unsigned>(year_month_day{date}.day()));
}

}  // namespace

double insightsAxisTop(double highestMgdl)
{
    return std::clamp(std::ceil(highestMgdl / 50) * 50, 300.0, 600.0);
}

double insightsAxisTop(const InsightsAGP& agp, std::span<const InsightsDay> days)
{
    double highest = 0;
    for (const InsightsAGPBin& bin : agp.bins)
        highest = std::max(highest, bin.percentiles ? bin.percentiles->p95Mgdl : 0);
    for (const InsightsDay& day : days)
        for (const InsightsDay::Point& point : day.points)
            highest = std::max(highest, point.mgdL);
    return insightsAxisTop(highest);
}

QColor insightsBandColor(InsightsBand band, GraphTheme theme)
{
    return palette(theme).bands.at(static_cast<std::size_t>(band));
}
QColor insightsTextColor(GraphTheme theme) { return palette(theme).text; }
QColor insightsFaintTextColor(GraphTheme theme) { return palette(theme).faintText; }

double insightsBandsHeight(const InsightsChartStyle& style)
{
    return bandBarHeight(style) + bandBarGap(style) + 5 * bandRowHeight(style);
}

void paintInsightsBands(QPainter& painter, const QRectF& area,
                        const std::array<InsightsBandSummary, 5>& bands, const InsightsChartStyle& style,
                        std::optional<std::size_t> marked)
{
    const Pen pen{painter, style};
    const Palette& colors = palette(style.theme);
    const QFontMetricsF metrics{painter.font()};
    const auto segments = bandSegments(area, bands, style);
    const double gap = style.textScale;
    const double rowHeight = bandRowHeight(style);
    const double side = 0.8 * metrics.height();
    double nameWidth = 0;
    double limitsWidth = 0;
    for (const InsightsBandSummary& band : bands) {
        nameWidth = std::max(nameWidth, metrics.horizontalAdvance(text(bandTitle(band.band))) + 2.4 * side);
        limitsWidth = std::max(limitsWidth, metrics.horizontalAdvance(limitsText(band.band, style)) + side);
    }
    const double shareWidth = metrics.horizontalAdvance(QStringLiteral("100.0%")) + 2 * side;
    painter.fillRect(QRectF{area.left(), area.top(), area.width(), bandBarHeight(style)}, colors.grid);
    for (std::size_t i = 0; i < bands.size(); ++i) {
        const QColor& color = colors.bands[i];
        QRectF segment = segments[i];
        if (segment.width() > 0) {
            segment.setRight(segment.right() - (i + 1 < bands.size() ? gap : 0));
            painter.fillRect(segment, color);
        }
        const double top =
            area.top() + bandBarHeight(style) + bandBarGap(style) + static_cast<double>(i) * rowHeight;
        const QRectF row{area.left(), top, area.width(), rowHeight};
        if (marked == i) {
            painter.setPen(QPen{colors.mark, 2 * gap});
            painter.setBrush(Qt::NoBrush);
            if (segment.width() > 0)
                painter.drawRect(segments[i].adjusted(gap, gap, -gap, -gap));
            painter.drawRect(row.adjusted(gap, gap, -gap, -gap));
        }
        painter.fillRect(QRectF{row.left() + 0.4 * side, row.center().y() - side / 2, side, side}, color);
        const auto put = [&](double left, double width, Qt::Alignment alignment, const QString& words) {
            painter.drawText(QRectF{row.left() + left, row.top(), width, row.height()},
                             static_cast<int>(alignment | Qt::AlignVCenter), words);
        };
        painter.setPen(colors.text);
        put(1.8 * side, nameWidth, Qt::AlignLeft, text(bandTitle(bands[i].band)));
        painter.setFont(chartFont(style, true));
        put(nameWidth, shareWidth, Qt::AlignRight,
            QString::fromStdString(fmt::format("{:.1f}%", bands[i].fraction * 100)));
        painter.setFont(chartFont(style));
        painter.setPen(colors.faintText);
        put(nameWidth + shareWidth + side, limitsWidth, Qt::AlignLeft, limitsText(bands[i].band, style));
        const double rest = nameWidth + shareWidth + side + limitsWidth;
        const QString perDay = text(insightsPerDayText(bands[i].fraction));
        if (rest + metrics.horizontalAdvance(perDay) <= row.width())
            put(rest, row.width() - rest, Qt::AlignLeft, perDay);
    }
}

std::optional<std::size_t> insightsBandAt(const QRectF& area, const std::array<InsightsBandSummary, 5>& bands,
                                          const InsightsChartStyle& style, QPointF point)
{
    const auto segments = bandSegments(area, bands, style);
    for (std::size_t i = 0; i < segments.size(); ++i)
        if (segments[i].contains(point))
            return i;
    const double below = point.y() - area.top() - bandBarHeight(style) - bandBarGap(style);
    const double row = below / bandRowHeight(style);
    if (row >= 0 && row < 5 && area.contains(point))
        return static_cast<std::size_t>(row);
    return {};
}

void paintInsightsProfile(QPainter& painter, const QRectF& area_, const InsightsAGP& agp,
                          const InsightsChartStyle& style, std::optional<std::size_t> marked)
{
    const Pen pen{painter, style};
    const Palette& colors = palette(style.theme);
    const Plot plot = plotWithAxes(area_, style);
    if (plot.area.width() <= 0 || plot.area.height() <= 0)
        return;
    const double line = style.textScale;
    paintTarget(painter, plot, colors, line);
    paintAxes(painter, plot, style);
    paintLegend(painter, plot, style);
    for (const Run& run : runs(agp)) {
        using P = InsightsAGPPercentiles;
        painter.fillPath(area(agp, run, &P::p5Mgdl, &P::p95Mgdl, plot), colors.middle90);
        painter.fillPath(area(agp, run, &P::p25Mgdl, &P::p75Mgdl, plot), colors.middle50);
        painter.strokePath(curve(agp, run, &P::medianMgdl, plot), QPen{colors.line, 2 * line});
    }
    if (!marked || *marked >= agp.bins.size())
        return;
    const InsightsAGPBin& bin = agp.bins[*marked];
    const double x = plot.xOfMinute(bin.startMinute + InsightsAGP::binMinutes / 2.0);
    std::vector<QString> lines{timeText(bin.startMinute) + QStringLiteral("–") +
                               timeText(bin.startMinute + InsightsAGP::binMinutes) + QStringLiteral(", ") +
                               text(fmt::format("{} day{}", bin.dayCount, bin.dayCount == 1 ? "" : "s"))};
    const auto range = [&](double from, double to) {
        return value(from, style) + QStringLiteral("–") + value(to, style) + u' ' +
               text(rawValue(style.unit));
    };
    if (const auto& percentiles = bin.percentiles) {
        lines.push_back(Words::tr("median %1")
                            .arg(value(percentiles->medianMgdl, style) + u' ' + text(rawValue(style.unit))));
        lines.push_back(Words::tr("middle 50%: %1").arg(range(percentiles->p25Mgdl, percentiles->p75Mgdl)));
        lines.push_back(Words::tr("middle 90%: %1").arg(range(percentiles->p5Mgdl, percentiles->p95Mgdl)));
    } else {
        lines.push_back(Words::tr("fewer than %1 days").arg(InsightsAGP::minimumDays));
    }
    paintMark(painter, plot, x, lines, style);
    if (bin.percentiles) {
        painter.setPen(QPen{colors.background, line});
        painter.setBrush(colors.line);
        painter.drawEllipse(QPointF{x, plot.y(bin.percentiles->medianMgdl)}, 4 * line, 4 * line);
    }
}

std::optional<std::size_t> insightsBinAt(const QRectF& area, const InsightsChartStyle& style, QPointF point)
{
    const Plot plot = plotWithAxes(area, style);
    if (plot.area.width() <= 0 || !plot.area.contains(point))
        return {};
    const double part = (point.x() - plot.area.left()) / plot.area.width();
    return std::min(static_cast<std::size_t>(part * InsightsAGP::binCount), InsightsAGP::binCount - 1);
}

void paintInsightsSmallDay(QPainter& painter, const QRectF& area, const InsightsDay& day,
                           const InsightsChartStyle& style, bool marked)
{
    const Pen pen{painter, style};
    const Palette& colors = palette(style.theme);
    const QFontMetricsF metrics{painter.font()};
    const double line = style.textScale;
    const double head = metrics.height();
    const Plot plot{area.adjusted(2 * line, head, -2 * line, -2 * line), style.axisTopMgdl};
    if (plot.area.width() <= 0 || plot.area.height() <= 0)
        return;
    painter.setPen(day.points.empty() ? colors.faintText : colors.text);
    painter.drawText(QRectF{area.left() + 2 * line, area.top(), area.width() - 4 * line, head},
                     Qt::AlignLeft | Qt::AlignVCenter,
                     shortDateText(day.date, metrics, area.width() - 4 * line));
    QColor ground = colors.grid;
    ground.setAlpha(ground.alpha() / 2);
    painter.fillRect(plot.area, ground);
    paintTarget(painter, plot, colors, 0.7 * line);
    painter.save();
    painter.setClipRect(plot.area, Qt::IntersectClip);
    // Lines of one pixel take the toolkit two thirds of the time of wider ones; there may be a hundred days.
    paintCurve(painter, plot, day, style, line < 2 ? std::min(line, 1.0) : line);
    painter.restore();
    if (day.points.empty()) {
        painter.setPen(colors.faintText);
        const QString words = Words::tr("no readings");
        const bool fits = metrics.horizontalAdvance(words) <= plot.area.width();
        painter.drawText(plot.area, Qt::AlignCenter, fits ? words : QStringLiteral("–"));
    }
    if (marked) {
        painter.setPen(QPen{colors.mark, 2 * line});
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(area.adjusted(-line, -line, line, line));
    }
}

void paintInsightsDay(QPainter& painter, const QRectF& area, const InsightsDay& day,
                      const InsightsChartStyle& style, std::optional<std::size_t> marked)
{
    const Pen pen{painter, style};
    const Palette& colors = palette(style.theme);
    const Plot plot = plotWithAxes(area, style);
    if (plot.area.width() <= 0 || plot.area.height() <= 0)
        return;
    const double line = style.textScale;
    paintTarget(painter, plot, colors, line);
    paintAxes(painter, plot, style);
    paintCurve(painter, plot, day, style, 2 * line);
    if (!marked || *marked >= day.points.size())
        return;
    const InsightsDay::Point& point = day.points[*marked];
    const double x = plot.xOfSecond(point.secondOfDay);
    paintMark(painter, plot, x,
              {timeText(point.secondOfDay / 60) + QStringLiteral("   ") + value(point.mgdL, style) + u' ' +
               text(rawValue(style.unit))},
              style);
    painter.setPen(QPen{colors.background, line});
    painter.setBrush(colors.mark);
    painter.drawEllipse(QPointF{x, plot.y(point.mgdL)}, 4 * line, 4 * line);
}

std::optional<std::size_t> insightsPointAt(const QRectF& area, const InsightsDay& day,
                                           const InsightsChartStyle& style, QPointF point)
{
    const Plot plot = plotWithAxes(area, style);
    const double reach = 24 * style.textScale;
    std::optional<std::size_t> nearest;
    double distance = reach;
    for (std::size_t i = 0; i < day.points.size(); ++i) {
        const double away = std::abs(plot.xOfSecond(day.points[i].secondOfDay) - point.x());
        if (away < distance) {
            distance = away;
            nearest = i;
        }
    }
    return nearest;
}

InsightsDayGrid::InsightsDayGrid(std::chrono::sys_days firstDate, std::size_t days,
                                 std::chrono::weekday firstWeekday)
    : days_{days}, blanks_{static_cast<std::size_t>((std::chrono::weekday{firstDate} - firstWeekday).count())}
{
}

std::size_t InsightsDayGrid::rows() const
{
    return days_ == 0 ? 0 : (blanks_ + days_ + columns - 1) / columns;
}

QRectF InsightsDayGrid::cell(const QRectF& area, std::size_t day) const
{
    const double width = area.width() / columns;
    const double height = area.height() / static_cast<double>(std::max<std::size_t>(rows(), 1));
    const std::size_t place = blanks_ + day;
    return {area.left() + static_cast<double>(place % columns) * width,
            area.top() + static_cast<double>(place / columns) * height, width, height};
}

std::optional<std::size_t> InsightsDayGrid::dayAt(const QRectF& area, QPointF point) const
{
    for (std::size_t day = 0; day < days_; ++day)
        if (cell(area, day).contains(point))
            return day;
    return {};
}

void paintInsightsDays(QPainter& painter, const QRectF& area, std::span<const InsightsDay> days,
                       const InsightsDayGrid& grid, const InsightsChartStyle& style, const QRectF& exposed,
                       std::optional<std::size_t> marked)
{
    const double gap = 3 * style.textScale;
    for (std::size_t i = 0; i < days.size(); ++i) {
        const QRectF cell = grid.cell(area, i);
        if (cell.intersects(exposed))
            paintInsightsSmallDay(painter, cell.adjusted(gap, gap, -gap, -gap), days[i], style, marked == i);
    }
}

void paintInsightsDayCoverage(QPainter& painter, const QRectF& area,
                              std::span<const InsightsDayCoverage> days, const InsightsChartStyle& style,
                              std::optional<std::size_t> marked)
{
    std::vector<Column> columns;
    columns.reserve(days.size());
    for (const auto& [date, covered, total] : days)
        columns.push_back({total > Seconds{0} ? covered / total : 0, insightsDateText(date)});
    paintColumns(painter, area, columns, style, marked);
}

void paintInsightsHourCoverage(QPainter& painter, const QRectF& area,
                               std::span<const InsightsHourCoverage> hours, const InsightsChartStyle& style,
                               std::optional<std::size_t> marked)
{
    std::vector<Column> columns;
    columns.reserve(hours.size());
    for (const auto& [hour, covered, total] : hours)
        columns.push_back({total > Seconds{0} ? covered / total : 0, timeText(std::int64_t{hour} * 60)});
    paintColumns(painter, area, columns, style, marked);
}

std::optional<std::size_t> insightsColumnAt(const QRectF& area, std::size_t count,
                                            const InsightsChartStyle& style, QPointF point)
{
    const QRectF plot = coveragePlot(area, style);
    if (count == 0 || plot.width() <= 0 || !plot.contains(point))
        return {};
    const double part = (point.x() - plot.left()) / plot.width();
    return std::min(static_cast<std::size_t>(part * static_cast<double>(count)), count - 1);
}

QString insightsDateText(std::chrono::sys_days date)
{
    const QDate shown = QDate{1970, 1, 1}.addDays(date.time_since_epoch().count());
    return displayDate(shown, QStringLiteral("ddd, d MMM"));
}

}  // namespace tidewell
