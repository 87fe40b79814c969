#include "ui/GlucoseGraphRenderer.h"

#include <QFile>
#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>
#include <cmath>
#include <cstdlib>
#include <filesystem>

namespace tidewell {
namespace {

/// Monday, 2 March 2026, 14:00 UTC.
constexpr Date now = dateFromUnix(1'772'460'000);

/// A day of a body: calm, a rise after breakfast, a low before lunch.
double valueAt(double minutesAgo)
{
    const double hour = (1440 - minutesAgo) / 60;
    return 125 + 55 * std::sin(hour * 0.9) + 110 * std::exp(-std::pow(hour - 14, 2)) -
           45 * std::exp(-std::pow((hour - 20) * 1.5, 2));
}

std::vector<GlucoseReading> every(double minutes, double from, double to)
{
    std::vector<GlucoseReading> readings;
    for (double ago = from; ago >= to; ago -= minutes)
        readings.push_back(makeReading(std::round(valueAt(ago)), "FortyFiveUp", now - Seconds{60 * ago},
                                       Seconds{60 * minutes}, GlucoseProvider::dexcom));
    return readings;
}

std::vector<GlucoseReading> together(std::vector<GlucoseReading> first, std::vector<GlucoseReading> second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

struct Situation {
    const char* name;
    GlucoseGraphContent content;
    GraphPictureStyle style{};
};

std::vector<Situation> situations()
{
    auto low = every(5, 170, 2);
    for (GlucoseReading& one : low)
        one = makeReading(40 + 0.1 * one.mgdL, "SingleDown", one.date, one.sampleDuration, one.source);
    const GraphPictureStyle small{.size = {360, 240}};
    GraphPictureStyle dark = small;
    dark.theme = GraphTheme::dark;
    GraphPictureStyle large{.size = {540, 360}, .textScale = 1.5};
    return {
        {"empty", {.now = now}, small},
        {"one-reading", {.glucoseHistory = every(5, 3, 3), .now = now}, dark},
        {"day",
         {.glucoseHistory = every(5, 1439, 2), .timeWindow = GraphTimeWindow::hours24, .now = now},
         small},
        {"gap", {.glucoseHistory = together(every(5, 350, 200), every(5, 120, 20)), .now = now}, dark},
        {"all-low",
         {.glucoseHistory = low,
          .settings = {.measurementUnit = "mmol/L"},
          .timeWindow = GraphTimeWindow::hours3,
          .now = now},
         large},
        {"mixed",
         {.glucoseHistory = together(every(5, 175, 60), every(1, 59, 1)),
          .settings = {.highGlucoseThreshold = 160},
          .timeWindow = GraphTimeWindow::hours3,
          .now = now},
         small},
    };
}

/// How many pixels of a part differ visibly.
int differing(const QImage& one, const QImage& other, const QRect& part)
{
    if (one.size() != other.size())
        return one.width() * one.height();
    int count = 0;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            const int distance =
                std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
            count += distance > 48 ? 1 : 0;
        }
    return count;
}

/// The same as a share of the whole.
double difference(const QImage& one, const QImage& other)
{
    return double{1} * differing(one, other, one.rect()) / (one.width() * one.height());
}

/// The inside of the plot, without what is written around it.
QRect plotOf(const Situation& one)
{
    const GraphRect plot =
        glucoseGraphLayout(one.content, one.style.size, graphTextMeasure(), one.style.textScale).graphRect;
    return QRectF{plot.x, one.style.size.height - plot.top(), plot.width, plot.height}.toRect();
}

/// Letters may be smoothed otherwise by another font library; the plot has none while it has readings.
constexpr double textTolerance = 0.01;
constexpr int plotTolerance = 4;

class GlucoseGraphRenderer : public testing::Test {
protected:
    GlucoseGraphRenderer() : font_{QGuiApplication::font()}
    {
        QFont font{QStringLiteral("DejaVu Sans")};
        font.setHintingPreference(QFont::PreferNoHinting);
        QGuiApplication::setFont(font);
    }
    ~GlucoseGraphRenderer() override { QGuiApplication::setFont(font_); }

private:
    QFont font_;
};

TEST_F(GlucoseGraphRenderer, drawsWhatItsGoldenImagesShow)
{
    for (const Situation& one : situations()) {
        const QImage image = glucoseGraphImage(one.content, one.style);
        const QImage golden{QStringLiteral(TIDEWELL_GOLDEN_IMAGES "/%1.png").arg(QLatin1String{one.name})};
        // Whoever changes the drawing looks at what came out, and puts it in the place of the golden image.
        const auto actual =
            std::filesystem::path{testing::TempDir()} / (std::string{"graph-"} + one.name + ".png");
        image.save(QString::fromStdString(actual.string()));
        ASSERT_EQ(image.size(), golden.size()) << one.name << ": see " << actual;
        EXPECT_LE(difference(image, golden), textTolerance) << one.name << ": see " << actual;
        if (!one.content.glucoseHistory.empty())
            EXPECT_LE(differing(image, golden, plotOf(one)), plotTolerance) << one.name << ": see " << actual;
    }
}

TEST_F(GlucoseGraphRenderer, oneReadingLessIsMoreThanTheTolerance)
{
    for (Situation& one : situations()) {
        auto& history = one.content.glucoseHistory;
        if (history.empty())
            continue;
        const QImage image = glucoseGraphImage(one.content, one.style);
        const QRect plot = plotOf(one);
        history.erase(history.begin() + static_cast<std::ptrdiff_t>(history.size() / 3));
        EXPECT_GT(differing(glucoseGraphImage(one.content, one.style), image, plot), plotTolerance)
            << one.name;
    }
}

TEST_F(GlucoseGraphRenderer, keepsItsPlacesAtEachPixelRatio)
{
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        for (Situation& one : situations()) {
            one.style.pixelRatio = ratio;
            QImage image = glucoseGraphImage(one.content, one.style);
            EXPECT_EQ(image.size(), (QSizeF{one.style.size.width, one.style.size.height} * ratio).toSize());
            one.style.pixelRatio = 1;
            image.setDevicePixelRatio(1);
            const QImage reduced =
                image.scaled(static_cast<int>(one.style.size.width), static_cast<int>(one.style.size.height),
                             Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            EXPECT_LE(difference(reduced, glucoseGraphImage(one.content, one.style)), 0.05)
                << one.name << ratio;
        }
    }
}

TEST_F(GlucoseGraphRenderer, svgShowsTheSamePictureAndSaysTheSame)
{
    for (const Situation& one : situations()) {
        const QByteArray svg = glucoseGraphSvg(one.content, one.style);
        const std::string label = graphAccessibilityLabel(one.content);
        EXPECT_TRUE(svg.contains(QByteArray::fromStdString("<desc>" + label + "</desc>"))) << one.name;
        const QImage image = glucoseGraphImage(one.content, one.style);
        EXPECT_EQ(image.text(QStringLiteral("Description")).toStdString(), label);
        QSvgRenderer renderer{svg};
        ASSERT_TRUE(renderer.isValid()) << one.name;
        QImage drawn{image.size(), QImage::Format_ARGB32_Premultiplied};
        drawn.fill(Qt::magenta);
        QPainter painter{&drawn};
        renderer.render(&painter);
        painter.end();
        EXPECT_LE(difference(image, drawn), 0.05) << one.name;
    }
}

double luminance(QRgb color)
{
    const auto linear = [](int channel) {
        const double c = channel / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

TEST_F(GlucoseGraphRenderer, readingsStandOutInBothThemes)
{
    for (const GraphTheme theme : {GraphTheme::light, GraphTheme::dark})
        for (const double value : {50.0, 120.0, 300.0}) {
            const GlucoseGraphContent content{
                .glucoseHistory = {makeReading(value, "Flat", now - Seconds{3 * 3600}, Seconds{300},
                                               GlucoseProvider::dexcom)},
                .now = now};
            const GraphPictureStyle style{.theme = theme, .pixelRatio = 4};
            const QImage image = glucoseGraphImage(content, style);
            const auto layout = glucoseGraphLayout(content, style.size, graphTextMeasure());
            const GraphPosition at = layout.points.at(0).at;
            const QRgb ink =
                image.pixel(static_cast<int>(4 * at.x), static_cast<int>(4 * (style.size.height - at.y)));
            const QRgb beside = image.pixel(static_cast<int>(4 * (at.x + 12)),
                                            static_cast<int>(4 * (style.size.height - at.y)) - 12);
            const auto [dim, bright] = std::minmax(luminance(ink), luminance(beside));
            EXPECT_GE((bright + 0.05) / (dim + 0.05), 3) << value;
        }
}

TEST_F(GlucoseGraphRenderer, absurdContentStillGivesAPicture)
{
    const std::vector<GlucoseReading> odd{
        makeReading(0, "", now - Seconds{7200}, Seconds{0}, GlucoseProvider::dexcom),
        makeReading(2000, "?", now - Seconds{3600}, Seconds{1e300}, GlucoseProvider::dexcom),
        makeReading(-1e300, "<b>", now - Seconds{600}, Seconds{-5}, GlucoseProvider::dexcom),
        makeReading(1e300, "<&>", now + Seconds{299}, Seconds{300}, GlucoseProvider::libreLinkUp)};
    for (const GraphSize size : {GraphSize{1, 1}, GraphSize{50, 400}, GraphSize{480, 270}})
        for (const double scale : {-1.0, 1.0, 1e9}) {
            const GlucoseGraphContent content{
                .glucoseHistory = odd,
                .settings = {.lowGlucoseThreshold = 300, .highGlucoseThreshold = 50},
                .now = now};
            const GraphPictureStyle style{.size = size, .pixelRatio = scale, .textScale = scale};
            EXPECT_FALSE(glucoseGraphImage(content, style).isNull());
            EXPECT_TRUE(QSvgRenderer{glucoseGraphSvg(content, style)}.isValid());
        }
}

}  // namespace
}  // namespace tidewell
