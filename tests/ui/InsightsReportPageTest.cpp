#include "ui/InsightsReportPage.h"

#include <gtest/gtest.h>

#include <QImage>
#include <algorithm>
#include <cmath>
#include <set>
#include <thread>

#include "insights/InsightsTexts.h"
#include "ui/InsightsCharts.h"

namespace tidewell {
namespace {

constexpr Seconds day{86'400};
const Date start = dateFromIso("2026-03-01T00:00:00Z").value();

/// Days of readings every five minutes that go up and down between 40 and 300 mg/dL, once a day; of a share
/// of each day only.
InsightsReportContent contentOf(int days, double share = 1)
{
    std::vector<InsightsReading> readings;
    for (int i = 0; i < days * 288; ++i)
        if (i % 288 < share * 288)
            readings.push_back({.mgdL = std::round(170 - 130 * std::cos(i / 288.0 * 2 * 3.14159265)),
                                .date = start + Seconds{300.0 * i},
                                .sampleDuration = Seconds{300}});
    const DateInterval interval{start, start + days * day};
    InsightsReportContent content{.collectionStartedAt = start, .madeAt = interval.end, .version = "1.2.3"};
    content.days = insightsDays(readings, interval, content.zone);
    content.result = calculateInsights(
        {.readings = std::move(readings), .interval = interval, .collectionStartedAt = start});
    content.quality = insightsReportQuality(content.result.summary, start);
    return content;
}

/// With everything that takes room.
InsightsReportContent fullContent(int days)
{
    auto content = contentOf(days, 0.5);
    content.name = std::string(200, 'W');
    content.result.impossibleReadings = 12;
    content.unreadableDays.assign(90, "2026-03-02");
    content.isDemonstration = true;
    return content;
}

std::string textOf(const InsightsReportContent& content)
{
    QString all;
    for (const auto& [area, text] : insightsReportTexts(content, InsightsReportPaper::a4))
        all += text + u'\n';
    return all.toStdString();
}

TEST(InsightsReportPage, keepsEveryTextInAPlaceOfItsOwnOnThePage)
{
    for (const int days : {1, 2, 3, 6, 14, 90})
        for (const bool full : {false, true})
            for (const auto paper : {InsightsReportPaper::a4, InsightsReportPaper::letter})
                for (const auto unit : allGlucoseUnits) {
                    auto content = full ? fullContent(days) : contentOf(days);
                    content.unit = unit;
                    SCOPED_TRACE(testing::Message()
                                 << days << " days, full " << full << ", paper " << static_cast<int>(paper));
                    const bool isA4 = paper == InsightsReportPaper::a4;
                    const QRectF page{0, 0, isA4 ? 595.3 : 612.0, isA4 ? 841.9 : 792.0};
                    const auto texts = insightsReportTexts(content, paper);
                    EXPECT_GT(texts.size(), 50U);
                    for (std::size_t i = 0; i < texts.size(); ++i) {
                        EXPECT_TRUE(page.adjusted(30, 30, -30, -30).contains(texts[i].area))
                            << texts[i].text.toStdString();
                        for (std::size_t k = 0; k < i; ++k)
                            EXPECT_FALSE(
                                texts[k].area.adjusted(0.2, 0.2, -0.2, -0.2).intersects(texts[i].area))
                                << texts[k].text.toStdString() << " / " << texts[i].text.toStdString();
                    }
                }
}

TEST(InsightsReportPage, saysWhatWasMeasuredAndHow)
{
    auto content = contentOf(14);
    const auto& summary = content.result.summary;
    ASSERT_TRUE(summary.gmi.available);
    struct Case {
        GlucoseUnits unit;
        std::vector<std::string> texts;
    };
    const std::vector<Case> cases{
        {GlucoseUnits::mgdL,
         {"1 Mar 2026 to 14 Mar 2026, 14 days, time zone UTC", "Made on 15 Mar 2026, 00:00 (UTC)",
          "Sensor active 100.0% of the time: 14 days of 14 days, 4,032 readings. History since 1 Mar 2026.",
          "170 mg/dL", "at most 36%", "70 to 180", "over 70%", "Below 54",
          "3.31 + 0.02392 × mean glucose in mg/dL", "Not a lab HbA1c result", "of the population",
          "Gaps are never bridged", "Tidewell 1.2.3, offline"}},
        {GlucoseUnits::mmolL,
         {"9.4 mmol/L", "3.9 to 10.0", "Below 3.0", "Above 13.9",
          "3.31 + 0.43056 × mean glucose in mmol/L"}}};
    for (const auto& [unit, texts] : cases) {
        content.unit = unit;
        const std::string all = textOf(content);
        for (const std::string& text : texts)
            EXPECT_NE(all.find(text), std::string::npos) << text << "\nin\n" << all;
    }
}

TEST(InsightsReportPage, statesItsDoubtsAndNamesOnlyWhoIsToBeNamed)
{
    const auto has = [](const InsightsReportContent& content, std::string_view text) {
        return textOf(content).find(text) != std::string::npos;
    };
    EXPECT_TRUE(has(contentOf(3), "Early insights."));
    EXPECT_TRUE(has(contentOf(20, 0.5), "Limited data."));
    EXPECT_TRUE(has(contentOf(20, 0.5), "Gaps may hide further episodes"));
    EXPECT_FALSE(has(contentOf(20), "data.\n"));
    EXPECT_TRUE(has(contentOf(7), "Needs 14 days of history"));
    EXPECT_TRUE(has(contentOf(2), "The profile needs readings of at least 3 different days."));
    EXPECT_TRUE(has(contentOf(1), "1 Mar 2026, 1 day, "));
    EXPECT_TRUE(has(fullContent(3), "2026-03-02, and 82 more."));
    EXPECT_TRUE(has(fullContent(3), "Demonstration: "));
    EXPECT_TRUE(has(fullContent(3), "12 readings."));

    auto named = contentOf(3);
    EXPECT_EQ(insightsReportTexts(named, InsightsReportPaper::a4).at(3).text.left(5),
              QStringLiteral("1 Mar"));
    named.name = "Ada\nLovelace";
    EXPECT_TRUE(has(named, "Ada Lovelace\n"));

    InsightsReportContent empty{.madeAt = start};
    empty.result = calculateInsights({.interval = {start, start + day}});
    EXPECT_TRUE(has(empty, std::string{insightsEmptyTitle} + "\n"));
    EXPECT_FALSE(has(empty, "Mean glucose"));
}

TEST(InsightsReportPage, isOnePageWithItsLettersInItAndNobodysName)
{
    for (const int days : {0, 1, 14, 90}) {
        auto content = days == 0 ? InsightsReportContent{} : fullContent(days);
        for (const auto& [paper, box] :
             {std::pair{InsightsReportPaper::a4, "/MediaBox [0 0 595.000000 842.000000]"},
              std::pair{InsightsReportPaper::letter, "/MediaBox [0 0 612.000000 792.000000]"}}) {
            const QByteArray pdf = insightsReport(content, paper, InsightsReportFormat::pdf);
            EXPECT_TRUE(pdf.startsWith("%PDF-"));
            EXPECT_EQ(pdf.count("/Type /Page\n"), 1) << days;
            EXPECT_TRUE(pdf.contains("/Count 1\n"));
            EXPECT_TRUE(pdf.contains(box)) << days;
            EXPECT_EQ(pdf.count("/FontFile2"), pdf.count("/Type /FontDescriptor")) << "all are in it";
            EXPECT_GT(pdf.count("/ToUnicode"), 0) << "text can be selected";
            EXPECT_FALSE(pdf.contains("/Author"));
        }
    }
}

TEST(InsightsReportPage, isTheSamePictureOnEveryThread)
{
    const auto content = contentOf(14);
    for (const auto& [paper, size] : {std::pair{InsightsReportPaper::a4, QSize{1654, 2339}},
                                      std::pair{InsightsReportPaper::letter, QSize{1700, 2200}}}) {
        QByteArray elsewhere;
        std::thread{[&, page = paper] {
            elsewhere = insightsReport(content, page, InsightsReportFormat::png);
        }}.join();
        const auto here = QImage::fromData(insightsReport(content, paper, InsightsReportFormat::png), "PNG");
        EXPECT_EQ(here, QImage::fromData(elsewhere, "PNG"));
        EXPECT_EQ(here.size(), size);
        EXPECT_EQ(here.dotsPerMeterX(), 7874);
        EXPECT_TRUE(here.textKeys().isEmpty());
        std::set<QRgb> colors;
        for (int y = 0; y < here.height(); ++y)
            for (int x = 0; x < here.width(); ++x)
                colors.insert(here.pixel(x, y));
        for (const InsightsBand band : allInsightsBands)
            EXPECT_TRUE(colors.contains(insightsBandColor(band, GraphTheme::light).rgb())) << rawValue(band);
    }
}

}  // namespace
}  // namespace tidewell
