#pragma once

#include <QByteArray>
#include <QRectF>
#include <QString>
#include <string>
#include <vector>

#include "insights/InsightsCalculation.h"
#include "insights/InsightsDays.h"
#include "insights/InsightsReportQuality.h"
#include "sources/GlucoseUnits.h"

class QPainter;

namespace tidewell {

/// What the page is printed on: 210 x 297 mm, or 8.5 x 11 in.
enum class InsightsReportPaper { a4, letter };
enum class InsightsReportFormat { pdf, png };

/// What the page says, all of it: nothing is added that stands for a person, an account or a computer.
struct InsightsReportContent {
    InsightsCalculationResult result{};
    std::vector<InsightsDay> days{};  ///< Of the period, oldest first; the newest 14 get curves.
    std::optional<InsightsReportQuality> quality{};
    std::optional<Date> collectionStartedAt{};
    std::vector<std::string> unreadableDays{};  ///< Dates in UTC of which saved readings cannot be read.
    TimeZone zone = TimeZone::utc();
    GlucoseUnits unit = GlucoseUnits::mgdL;
    std::string name{};  ///< Only what a person asked for; shown as one line.
    Date madeAt{};
    std::string version{};         ///< Of the program.
    bool isDemonstration = false;  ///< The readings are nobody's own, and the page says so.
};

/// One page to take along: figures with their targets, bands, profile, episodes, the newest days, and how all
/// of it was calculated. The letters of the PDF are in it and can be selected; the picture has 200 pixels to
/// an inch. Both are made in memory. Needs a QGuiApplication (fonts); any thread, some 100 ms.
[[nodiscard]] QByteArray insightsReport(const InsightsReportContent& content, InsightsReportPaper paper,
                                        InsightsReportFormat format);

/// A text of the page and the place that it takes.
struct InsightsReportText {
    QRectF area{};  ///< In points from the page's top left corner.
    QString text{};
};
/// What the page says apart from the words and numbers in its charts, in the order of reading.
[[nodiscard]] std::vector<InsightsReportText> insightsReportTexts(const InsightsReportContent& content,
                                                                  InsightsReportPaper paper);

}  // namespace tidewell
