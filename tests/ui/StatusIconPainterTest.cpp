#include "ui/StatusIconPainter.h"

#include <QColor>
#include <cmath>
#include <set>

namespace tidewell {
namespace {

constexpr QRgb red = qRgb(255, 59, 48);
constexpr QRgb white = qRgb(255, 255, 255);
constexpr QRgb orange = qRgb(255, 230, 77);
constexpr QRgb brown = qRgb(153, 102, 0);

StatusItemContent reading(std::string value, std::string arrow,
                          StatusButtonLook look = StatusButtonLook::plain)
{
    StatusItemContent content{.value = std::move(value), .arrow = std::move(arrow)};
    content.iconState = StatusBarIconState::value;
    content.look = look;
    return content;
}

const std::vector<StatusItemContent>& readings()
{
    static const std::vector<StatusItemContent> all{
        reading("120", "→"),
        reading("5.5", "↗"),
        reading("12.3", "↑"),
        reading("401", "↑↑"),
        reading("39", "↓↓"),
        reading("22.2", "↘"),
        reading("188", "?"),
        reading("120 ?", ""),
        reading("-- ?", ""),
        reading("40", "↓", StatusButtonLook::redFill),
        reading("22.2", "↑↑", StatusButtonLook::orangeFill),
    };
    return all;
}

double luminance(QRgb color)
{
    const auto linear = [](int channel) {
        const double c = channel / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

/// The ratio that WCAG 2 defines, 1 to 21.
double contrast(QRgb a, QRgb b)
{
    const auto [low, high] = std::minmax(luminance(a), luminance(b));
    return (high + 0.05) / (low + 0.05);
}

QRgb over(QRgb pixel, QRgb background)
{
    const int alpha = qAlpha(pixel);
    const auto mix = [alpha](int top, int bottom) { return (top * alpha + bottom * (255 - alpha)) / 255; };
    return qRgb(mix(qRed(pixel), qRed(background)), mix(qGreen(pixel), qGreen(background)),
                mix(qBlue(pixel), qBlue(background)));
}

/// How often each colour appears on a panel of this colour.
std::map<QRgb, int> colorsOn(const QImage& image, QRgb panel)
{
    std::map<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            ++counts[over(image.pixel(x, y), panel)];
    }
    return counts;
}

/// The box around all pixels that stand out from the panel and from the plate by at least 2 : 1.
QRect inkBox(const QImage& image, QRgb plate)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 200 && contrast(image.pixel(x, y) | 0xff000000, plate) > 2)
                box |= QRect{x, y, 1, 1};
        }
    }
    return box;
}

QByteArray bytes(const QImage& image)
{
    return {reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()};
}

TEST(StatusIconPainter, textStaysInsideThePictureAndFillsItAtEveryPanelHeight)
{
    for (const int height : {16, 20, 22, 24, 32, 48}) {
        for (const StatusIconShape shape : {StatusIconShape::stacked, StatusIconShape::wide}) {
            for (const StatusItemContent& content : readings()) {
                SCOPED_TRACE(content.value + content.arrow + " at " + std::to_string(height));
                const QImage image = paintStatusIcon(content, {.shape = shape, .height = height});
                EXPECT_EQ(image.format(), QImage::Format_ARGB32);
                EXPECT_EQ(image.height(), height);
                if (shape == StatusIconShape::stacked)
                    EXPECT_EQ(image.width(), height);
                // The plate's own colour, in its upper edge between the rounded corners.
                const int edge = shape == StatusIconShape::wide ? height / 12 : 0;
                const QRgb plate = image.pixel(image.width() / 2, edge) | 0xff000000;
                const QRect ink = inkBox(image, plate);
                EXPECT_TRUE(image.rect().adjusted(1, 1, -1, -1).contains(ink))
                    << "it is cut off or touches the edge";
                if (content.value != "-- ?")
                    EXPECT_GE(ink.height(), height * (shape == StatusIconShape::wide ? 0.5 : 0.75));
            }
        }
    }
}

TEST(StatusIconPainter, threeDigitsAreTenPixelsHighInATwentyFourPixelPanel)
{
    const QImage image = paintStatusIcon(reading("120", "→"), {.height = 24});
    // The row of gaps between value and arrow ends the digits.
    const QRgb plate = image.pixel(12, 0) | 0xff000000;
    int first = -1;
    int end = -1;
    for (int y = 0; y < image.height() && end < 0; ++y) {
        bool lit = false;
        for (int x = 0; x < image.width(); ++x)
            lit |= contrast(image.pixel(x, y) | 0xff000000, plate) > 4.5;
        if (lit && first < 0)
            first = y;
        if (!lit && first >= 0)
            end = y;
    }
    EXPECT_GE(end - first, 10);
}

TEST(StatusIconPainter, fillsAndTheirTextHaveExactlyTheirColors)
{
    for (const StatusIconShape shape : {StatusIconShape::stacked, StatusIconShape::wide}) {
        for (const PanelScheme scheme : {PanelScheme::unknown, PanelScheme::light, PanelScheme::dark}) {
            const StatusIconStyle style{.shape = shape, .height = 48, .scheme = scheme};
            const auto low =
                colorsOn(paintStatusIcon(reading("54", "↓", StatusButtonLook::redFill), style), white);
            const auto high =
                colorsOn(paintStatusIcon(reading("301", "↑", StatusButtonLook::orangeFill), style), 0);
            EXPECT_GT(low.at(red), 48 * 8);
            EXPECT_GT(low.at(white), 48);
            EXPECT_GT(high.at(orange), 48 * 8);
            EXPECT_GT(high.at(brown), 48);
        }
    }
}

TEST(StatusIconPainter, isReadOnEveryPanelThatItsSchemeAllowsFor)
{
    struct Case {
        PanelScheme scheme;
        QRgb panel;
    };
    const QRgb lightPanel = qRgb(246, 245, 244);
    const QRgb darkPanel = qRgb(29, 31, 33);
    for (const Case& one : {Case{PanelScheme::unknown, lightPanel}, Case{PanelScheme::unknown, darkPanel},
                            Case{PanelScheme::unknown, qRgb(110, 130, 150)},
                            Case{PanelScheme::light, lightPanel}, Case{PanelScheme::dark, darkPanel}}) {
        for (const StatusItemContent& content : readings()) {
            for (const StatusIconShape shape : {StatusIconShape::stacked, StatusIconShape::wide}) {
                SCOPED_TRACE(content.value + content.arrow);
                const auto counts =
                    colorsOn(paintStatusIcon(content, {.shape = shape, .height = 24, .scheme = one.scheme}),
                             one.panel);
                // Behind the text lies the most frequent colour, plate or panel.
                const QRgb ground = std::ranges::max_element(counts, {}, [](const auto& entry) {
                                        return entry.second;
                                    })->first;
                int readable = 0;
                for (const auto& [color, count] : counts)
                    readable += contrast(color, ground) >= (content.look == StatusButtonLook::plain ? 4.5 : 3)
                                    ? count
                                    : 0;
                EXPECT_GE(readable, 20);
            }
        }
    }
}

TEST(StatusIconPainter, edgesCarryStraightAlpha)
{
    const QImage image = paintStatusIcon(reading("54", "↓", StatusButtonLook::redFill), {.height = 48});
    int edges = 0;
    for (int x = 0; x < image.width(); ++x) {
        const QRgb pixel = image.pixel(x, 0);
        if (qAlpha(pixel) < 32 || qAlpha(pixel) == 255)
            continue;
        ++edges;
        EXPECT_NEAR(qRed(pixel), 255, 8);
        EXPECT_NEAR(qGreen(pixel), 59, 8);
    }
    EXPECT_GT(edges, 0);
}

TEST(StatusIconPainter, whateverDiffersLooksDifferent)
{
    std::vector<StatusItemContent> contents = readings();
    contents.push_back(reading("121", "→"));
    contents.push_back(reading("120", "↗"));
    contents.push_back(reading("120", ""));
    for (const StatusIndicator indicator : {StatusIndicator::warning, StatusIndicator::updateAvailable}) {
        contents.push_back(reading("120", "→"));
        contents.back().indicator = indicator;
    }
    contents.push_back(reading("120", "→"));
    contents.back().alertsSnoozed = true;
    contents.push_back({.iconState = StatusBarIconState::waiting});
    contents.push_back({.iconState = StatusBarIconState::attention});
    for (const int height : {16, 24}) {
        std::set<QByteArray> pictures;
        for (const StatusItemContent& content : contents)
            pictures.insert(bytes(paintStatusIcon(content, {.height = height})));
        EXPECT_EQ(pictures.size(), contents.size());
    }
}

TEST(StatusIconPainter, theSignOfAnActivityTurnsInEighthsAndStandsBackForAWarning)
{
    StatusItemContent warned = reading("120", "→");
    warned.indicator = StatusIndicator::warning;
    for (const StatusIconShape shape :
         {StatusIconShape::stacked, StatusIconShape::wide, StatusIconShape::dot}) {
        for (const StatusItemContent& content : {reading("120", "→"), StatusItemContent{}}) {
            std::set<QByteArray> pictures{bytes(paintStatusIcon(content, {.shape = shape}))};
            for (int turn = 0; turn < 8; ++turn)
                pictures.insert(bytes(paintStatusIcon(content, {.shape = shape, .activityTurn = turn})));
            EXPECT_EQ(pictures.size(), 9U);
            EXPECT_TRUE(showsActivity(content));
        }
        EXPECT_FALSE(showsActivity(warned));
        EXPECT_EQ(paintStatusIcon(warned, {.shape = shape, .activityTurn = 1}),
                  paintStatusIcon(warned, {.shape = shape}));
    }
}

TEST(StatusIconPainter, badgesDifferInShapeAndNotInColorAlone)
{
    // Of each row of the corner: where the badge's own colour begins.
    const auto outline = [](StatusIndicator indicator, QRgb color) {
        StatusItemContent content = reading("120", "→");
        content.indicator = indicator;
        const QImage image = paintStatusIcon(content, {.height = 24});
        std::vector<int> starts;
        for (int y = 14; y < 24; ++y) {
            int x = 12;
            while (x < 24 && image.pixel(x, y) != color)
                ++x;
            if (x < 24)
                starts.push_back(x);
        }
        return starts;
    };
    const auto triangle = outline(StatusIndicator::warning, qRgb(255, 149, 0));
    EXPECT_GE(triangle.size(), 6U);
    EXPECT_TRUE(std::ranges::is_sorted(triangle, std::ranges::greater{})) << "wider to its foot";
    const auto disc = outline(StatusIndicator::updateAvailable, qRgb(77, 163, 255));
    ASSERT_GE(disc.size(), 6U);
    EXPECT_GT(disc.back(), std::ranges::min(disc)) << "narrower again";
}

TEST(StatusIconPainter, absurdContentStillGivesABoundedPicture)
{
    for (const char* value : {"", " ", "?", "99999999999999999999", "<b>&amp;", "\xff\xfe", "120\n\n120"}) {
        for (const int height : {-5, 0, 1, 24, 1'000'000}) {
            for (const auto shape : {StatusIconShape::stacked, StatusIconShape::wide, StatusIconShape::dot}) {
                const QImage image =
                    paintStatusIcon(reading(value, "nonsense"), {.shape = shape, .height = height});
                EXPECT_GE(image.height(), 8);
                EXPECT_LE(image.height(), 256);
                EXPECT_LE(image.width(), 256 * 40);
            }
        }
    }
}

}  // namespace
}  // namespace tidewell
