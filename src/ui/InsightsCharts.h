#pragma once

#include <QColor>
#include <QRectF>
#include <QString>
#include <array>
#include <optional>
#include <span>

#include "insights/InsightsDays.h"
#include "insights/InsightsSummary.h"
#include "sources/GlucoseUnits.h"
#include "ui/GlucoseGraphRenderer.h"

// The drawings of Insights, for windows, pictures and paper alike: functions of values that paint into an
// area and leave its background as it is. All need a QGuiApplication (fonts) and belong on the main thread.

namespace tidewell {

/// How a chart looks. One unit of the painter is a point on a screen of 96 dots per inch.
struct InsightsChartStyle {
    GraphTheme theme = GraphTheme::light;
    GlucoseUnits unit = GlucoseUnits::mgdL;
    double textScale = 1;      ///< Letters are 11 units high at 1, lines and gaps in proportion; 0.5 to 4.
    double axisTopMgdl = 300;  ///< Upper end of every value axis, so that charts can be compared.
};

/// The upper end that shows this value: 300 mg/dL, or the next fifty above it, at most 600.
[[nodiscard]] double insightsAxisTop(double highestMgdl);
/// The same for the profile and the curves of a report together.
[[nodiscard]] double insightsAxisTop(const InsightsAGP& agp, std::span<const InsightsDay> days);

/// Of a band, told apart by lightness too.
[[nodiscard]] QColor insightsBandColor(InsightsBand band, GraphTheme theme);
[[nodiscard]] QColor insightsTextColor(GraphTheme theme);
[[nodiscard]] QColor insightsFaintTextColor(GraphTheme theme);

/// The bands as one stacked bar, from very low to very high, and below it a line for each with its limits,
/// share and time per day. `marked` is the place of a band among them.
void paintInsightsBands(QPainter& painter, const QRectF& area,
                        const std::array<InsightsBandSummary, 5>& bands, const InsightsChartStyle& style,
                        std::optional<std::size_t> marked = {});
[[nodiscard]] double insightsBandsHeight(const InsightsChartStyle& style);
/// Which of them lies there.
[[nodiscard]] std::optional<std::size_t> insightsBandAt(const QRectF& area,
                                                        const std::array<InsightsBandSummary, 5>& bands,
                                                        const InsightsChartStyle& style, QPointF point);

/// The profile: a median line, a darker and a lighter band, the target range in green, and gaps where bins
/// are blank. `marked` is a bin, whose unsmoothed values stand on a plate.
void paintInsightsProfile(QPainter& painter, const QRectF& area, const InsightsAGP& agp,
                          const InsightsChartStyle& style, std::optional<std::size_t> marked = {});
/// The bin at that place; empty outside the plot.
[[nodiscard]] std::optional<std::size_t> insightsBinAt(const QRectF& area, const InsightsChartStyle& style,
                                                       QPointF point);

/// One day in a small area: the date, the curve over the target range, no axes.
void paintInsightsSmallDay(QPainter& painter, const QRectF& area, const InsightsDay& day,
                           const InsightsChartStyle& style, bool marked = false);
/// One day by itself, with axes. `marked` is one of its points, whose time and value stand on a plate.
void paintInsightsDay(QPainter& painter, const QRectF& area, const InsightsDay& day,
                      const InsightsChartStyle& style, std::optional<std::size_t> marked = {});
/// The point nearest to that place across; empty when none is near.
[[nodiscard]] std::optional<std::size_t> insightsPointAt(const QRectF& area, const InsightsDay& day,
                                                         const InsightsChartStyle& style, QPointF point);

/// The days of a period as a calendar with a week to a row, each in a cell of its own.
class InsightsDayGrid {
public:
    static constexpr int columns = 7;
    /// `firstDate` is that of the first cell; weeks begin on `firstWeekday`.
    InsightsDayGrid(std::chrono::sys_days firstDate, std::size_t days, std::chrono::weekday firstWeekday);
    [[nodiscard]] std::size_t rows() const;
    [[nodiscard]] QRectF cell(const QRectF& area, std::size_t day) const;
    [[nodiscard]] std::optional<std::size_t> dayAt(const QRectF& area, QPointF point) const;

private:
    std::size_t days_;
    std::size_t blanks_;  ///< Cells before the first day.
};
/// All of them; cells that lie outside `exposed` are left out.
void paintInsightsDays(QPainter& painter, const QRectF& area, std::span<const InsightsDay> days,
                       const InsightsDayGrid& grid, const InsightsChartStyle& style, const QRectF& exposed,
                       std::optional<std::size_t> marked = {});

/// How much of each day, and of each hour of the day, is covered, as columns with a line at 70 %.
void paintInsightsDayCoverage(QPainter& painter, const QRectF& area,
                              std::span<const InsightsDayCoverage> days, const InsightsChartStyle& style,
                              std::optional<std::size_t> marked = {});
void paintInsightsHourCoverage(QPainter& painter, const QRectF& area,
                               std::span<const InsightsHourCoverage> hours, const InsightsChartStyle& style,
                               std::optional<std::size_t> marked = {});
/// Which of that many columns lies there.
[[nodiscard]] std::optional<std::size_t> insightsColumnAt(const QRectF& area, std::size_t count,
                                                          const InsightsChartStyle& style, QPointF point);

/// "Mon, 2 Mar".
[[nodiscard]] QString insightsDateText(std::chrono::sys_days date);

}  // namespace tidewell
