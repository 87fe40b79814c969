#include "statusbar/GlucoseGraphLayout.h"

#include <algorithm>
#include <limits>

namespace tidewell {
namespace {

using enum GraphTimeWindow;
using enum GraphTextRole;

/// Monday, 2 March 2026, 14:00 UTC.
constexpr Date now = dateFromUnix(1'772'460'000);

/// A font whose letters are half as wide as high.
GraphSize measure(std::string_view text, double points)
{
    return {0.5 * points * static_cast<double>(text.size()), 1.2 * points};
}

GlucoseReading reading(double mgdL, double minutesAgo, double duration = 300, std::string trend = "Flat")
{
    return makeReading(mgdL, std::move(trend), now - Seconds{60 * minutesAgo}, Seconds{duration},
                       GlucoseProvider::dexcom);
}

GlucoseGraphLayout layoutOf(const GlucoseGraphContent& content, double textScale = 1)
{
    return glucoseGraphLayout(content, {400, 240}, measure, textScale);
}

GlucoseGraphLayout layoutOf(std::vector<GlucoseReading> history, AppSettings settings = {},
                            GraphTimeWindow window = hours6)
{
    return layoutOf({.glucoseHistory = std::move(history),
                     .settings = std::move(settings),
                     .timeWindow = window,
                     .now = now});
}

AppSettings mmol(double low = 72, double high = 270)
{
    return {.measurementUnit = "mmol/L", .lowGlucoseThreshold = low, .highGlucoseThreshold = high};
}

AppSettings mgdL(double low, double high)
{
    return {.lowGlucoseThreshold = low, .highGlucoseThreshold = high};
}

std::vector<const GraphText*> textsOf(const GlucoseGraphLayout& layout, GraphTextRole role)
{
    std::vector<const GraphText*> found;
    for (const GraphText& text : layout.texts)
        if (text.role == role)
            found.push_back(&text);
    return found;
}

std::string textOf(const GlucoseGraphLayout& layout, GraphTextRole role)
{
    const auto found = textsOf(layout, role);
    return found.empty() ? "" : found.front()->text;
}

TEST(GlucoseGraphLayout, scalesFromThresholdsAndReadingsInTheShownUnit)
{
    struct Case {
        std::vector<double> values;
        AppSettings settings;
        double minValue, maxValue, range;
        std::string minText, maxText;
    };
    const Case cases[]{
        {{}, {}, 72, 270, 198, "72", "270"},
        {{100}, {}, 72, 270, 198, "72", "270"},
        {{72, 270}, {}, 72, 270, 198, "72", "270"},
        {{71.4}, {}, 71.4, 270, 198.6, "71", "270"},  // As it is, not rounded.
        {{39, 401}, {}, 39, 401, 362, "39", "401"},
        {{0, 2000}, {}, 0, 2000, 2000, "0", "2000"},
        {{100}, mmol(), 4, 15, 11, "4.0", "15.0"},
        {{70, 301}, mmol(), 3.9, 16.7, 12.8, "3.9", "16.7"},  // 70 / 18 = 3.89, 301 / 18 = 16.72
        {{}, mmol(77, 108), 4.3, 6, 1.7, "4.3", "6.0"},
        {{100}, mgdL(100, 100), 100, 100, 1, "100", "100"},
        {{100}, mmol(99, 99), 5.5, 5.6, 0.1, "5.5", "5.6"},
        {{}, mgdL(200, 100), 200, 100, 1, "200", "100"},
        {{150}, mgdL(200, 100), 150, 150, 1, "150", "150"},
    };
    for (const Case& one : cases) {
        std::vector<GlucoseReading> history;
        for (const double value : one.values)
            history.push_back(reading(value, 100 - 5.0 * static_cast<double>(history.size())));
        const auto layout = layoutOf(history, one.settings);
        SCOPED_TRACE(one.minText + " " + one.maxText);
        EXPECT_DOUBLE_EQ(layout.minValue, one.minValue);
        EXPECT_DOUBLE_EQ(layout.maxValue, one.maxValue);
        EXPECT_NEAR(layout.range, one.range, 1e-9);
        EXPECT_GE(layout.range, layout.epsilon);
        EXPECT_GT(layout.epsilon, 0);
        EXPECT_EQ(layout.minText, one.minText);
        EXPECT_EQ(layout.maxText, one.maxText);
        EXPECT_EQ(layout.maxTextSize, measure(one.maxText, 9));
        EXPECT_EQ(layout.minTextSize, measure(one.minText, 9));
        for (const GraphPoint& point : layout.points) {
            EXPECT_GE(point.at.y, layout.graphRect.y);
            EXPECT_LE(point.at.y, layout.graphRect.top());
        }
    }
}

TEST(GlucoseGraphLayout, shadesTheTargetUpTo180AndNeverBelowTheLowThreshold)
{
    const std::tuple<AppSettings, double, double> cases[]{
        {mgdL(72, 250), 72, 180},   {mgdL(72, 160), 72, 160},   {mgdL(72, 180), 72, 180},
        {mgdL(200, 250), 200, 200}, {mgdL(200, 100), 200, 200}, {mmol(72, 250), 4, 10},
        {mmol(72, 160), 4, 8.9},    {mmol(198, 250), 11, 11},
    };
    for (const auto& [settings, low, high] : cases) {
        const auto layout = layoutOf({}, settings);
        EXPECT_DOUBLE_EQ(layout.targetLowDisplay, low);
        EXPECT_DOUBLE_EQ(layout.effectiveTargetHighDisplay, high);
        EXPECT_GE(layout.targetTop, layout.targetBottom);
        EXPECT_LE(layout.targetTop, layout.graphRect.top());
    }
}

TEST(GlucoseGraphLayout, leavesThePlotWhatLabelsHeaderAndFooterDoNotNeed)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        const auto layout = layoutOf({.glucoseHistory = {reading(2000, 5)}, .now = now}, scale);
        const double widest = 0.5 * 9 * scale * 4;  // "2000"
        EXPECT_DOUBLE_EQ(layout.graphRect.width, 400 - (30 + 8) * scale - widest);
        EXPECT_DOUBLE_EQ(layout.graphRect.height, 240 - (70 + 30) * scale);
        EXPECT_EQ(layout.labelAttributes, (GraphLabelAttributes{.points = 9 * scale, .role = axisLimit}));
        EXPECT_DOUBLE_EQ(layout.graphRect.right() + layout.labelGap + widest + layout.rightPadding, 400);
    }
    for (const GraphSize none : {GraphSize{}, GraphSize{30, 90}, GraphSize{-5, -5}}) {
        const auto layout =
            glucoseGraphLayout({.glucoseHistory = {reading(100, 5)}, .now = now}, none, measure);
        EXPECT_EQ(layout.graphRect.width, 0);
        EXPECT_EQ(layout.graphRect.height, 0);
    }
}

TEST(GlucoseGraphLayout, putsTheHeaderWhereItBelongsAndNeverShowsOldAsNew)
{
    struct Case {
        double ageMinutes;
        GraphTextRole role;
        std::string value, change;
    };
    const Case cases[]{
        {-4, currentValue, "120 →", "+20 in 5 min"},    {2, currentValue, "120 →", "+20 in 5 min"},
        {14.99, currentValue, "120 →", "+20 in 5 min"}, {15, agedValue, "120 ?", "15 minutes ago"},
        {59.99, agedValue, "120 ?", "59 minutes ago"},  {60, agedValue, "-- ?", "1 hour ago"},
    };
    for (const Case& one : cases) {
        const auto layout = layoutOf({reading(100, one.ageMinutes + 5), reading(120, one.ageMinutes)});
        const auto values = textsOf(layout, one.role);
        ASSERT_EQ(values.size(), 1U) << one.ageMinutes;
        EXPECT_EQ(values[0]->text, one.value);
        EXPECT_EQ(values[0]->points, 28);
        EXPECT_EQ(values[0]->origin, (GraphPosition{15, 200}));
        EXPECT_EQ(textOf(layout, change), one.change);
        EXPECT_EQ(textsOf(layout, currentValue).size() + textsOf(layout, agedValue).size(), 1U);
    }
    const auto layout = layoutOf({reading(60, 1)}, mmol());
    const auto* unitText = textsOf(layout, unit).at(0);
    EXPECT_EQ(unitText->text, "mmol/L");
    EXPECT_EQ(unitText->points, 11);
    EXPECT_EQ(unitText->origin, (GraphPosition{15, 180}));
    const auto* last = textsOf(layout, lastReading).at(0);
    EXPECT_EQ(last->text, "Last reading: 13:59");
    EXPECT_EQ(last->points, 9);
    EXPECT_DOUBLE_EQ(last->origin.x + last->size.width, 400 - 15);
    EXPECT_EQ(last->origin.y, 6);
    EXPECT_EQ(layout.valueColor, TitleColor::red);
    EXPECT_EQ(layoutOf({reading(60, 20)}).valueColor, TitleColor::primary);
}

TEST(GlucoseGraphLayout, saysHowTheValueChangedSinceThePreviousReading)
{
    struct Case {
        std::vector<GlucoseReading> history;
        AppSettings settings;
        std::string expected;
    };
    const Case cases[]{
        {{reading(100, 6), reading(104, 1)}, {}, "+4 in 5 min"},
        {{reading(104, 6), reading(100, 1)}, {}, "−4 in 5 min"},
        {{reading(100.2, 6), reading(100.4, 1)}, {}, "±0 in 5 min"},
        {{reading(99, 6), reading(100, 1)}, mmol(), "+0.1 in 5 min"},
        {{reading(100, 6), reading(101, 1)}, mmol(), "±0.0 in 5 min"},
        {{reading(100, 2, 60), reading(101, 1, 60)}, {}, "+1 in 1 min"},
        {{reading(100, 1.1), reading(101, 1)}, {}, "+1 in 1 min"},
        {{reading(100, 11), reading(80, 1)}, {}, "−20 in 10 min"},
        {{reading(104, 1), reading(100, 6)}, {}, "+4 in 5 min"},  // Not in order.
        {{reading(100, 12), reading(80, 1)}, {}, ""},             // A gap.
        {{reading(100, 20), reading(80, 15)}, {}, ""},            // Not current.
        {{reading(100, 1)}, {}, ""},
        {{}, {}, ""},
    };
    for (const Case& one : cases)
        EXPECT_EQ(glucoseChangeText({.glucoseHistory = one.history, .settings = one.settings, .now = now}),
                  one.expected);
}

TEST(GlucoseGraphLayout, showsTheWindowAndNothingThatCannotBeShown)
{
    const double never = std::numeric_limits<double>::quiet_NaN();
    for (const GraphTimeWindow window : {hours24, hours12, hours6, hours3, hours1}) {
        const double length = 60.0 * static_cast<int>(window);
        const auto layout =
            layoutOf({reading(500, length + 0.1), reading(100, length), reading(110, length / 2),
                      reading(120, 0), reading(never, 10), reading(900, -5.1), reading(100, never)},
                     {}, window);
        ASSERT_EQ(layout.points.size(), 3U);
        EXPECT_DOUBLE_EQ(layout.points[0].at.x, layout.graphRect.x);
        EXPECT_DOUBLE_EQ(layout.points[1].at.x, layout.graphRect.x + layout.graphRect.width / 2);
        EXPECT_DOUBLE_EQ(layout.points[2].at.x, layout.graphRect.right());
        EXPECT_EQ(layout.maxValue, 270);
        EXPECT_EQ(textOf(layout, currentValue), "120 →");
    }
    // A clock a little behind the service's loses no reading.
    const auto ahead = layoutOf({reading(100, 360), reading(110, 1), reading(120, -4)});
    ASSERT_EQ(ahead.points.size(), 2U);
    EXPECT_DOUBLE_EQ(ahead.points[1].at.x, ahead.graphRect.right());
    EXPECT_LT(ahead.points[0].at.x, ahead.graphRect.right());

    EXPECT_EQ(textOf(layoutOf(std::vector<GlucoseReading>{}), nothingToShow),
              "No readings in the last 6 hours");
    EXPECT_EQ(textOf(layoutOf({reading(100, 61)}, {}, hours1), nothingToShow),
              "No readings in the last hour");
    EXPECT_EQ(textOf(layoutOf({reading(100, 61)}, {}, hours1), agedValue), "-- ?");
    EXPECT_EQ(graphTimeWindow(3), hours3);
    for (const std::optional<std::int64_t> odd : {std::optional<std::int64_t>{}, {0}, {5}, {-1}, {1LL << 40}})
        EXPECT_EQ(graphTimeWindow(odd), hours6);
}

TEST(GlucoseGraphLayout, joinsNoReadingsAcrossAGap)
{
    // Minutes ago and duration of two readings, and whether no more than one can be missing between them.
    const std::tuple<double, double, double, bool> cases[]{
        {5, 300, 300, true},  {10.5, 300, 300, true}, {10.6, 300, 300, false}, {1, 60, 60, true},
        {10.5, 60, 60, true}, {11, 60, 60, false},    {5, 300, 60, true},      {17, 300, 60, false},
        {30, 900, 300, true}, {31, 900, 300, false},  {31, 1e9, 300, false},
    };
    for (const auto& [apart, earlier, later, joined] : cases) {
        const auto layout = layoutOf({reading(100, 1 + apart, earlier), reading(120, 1, later)});
        ASSERT_EQ(layout.points.size(), 2U);
        EXPECT_FALSE(layout.points[0].joinsPrevious);
        EXPECT_EQ(layout.points[1].joinsPrevious, joined) << apart << " " << earlier << " " << later;
    }
}

TEST(GlucoseGraphLayout, keepsOneMinuteValuesSmallBesideFiveMinuteOnes)
{
    std::vector<GlucoseReading> mixed;
    for (double minutes = 60; minutes > 20; minutes -= 5)
        mixed.push_back(reading(minutes > 40 ? 120 : 60, minutes, 300));
    for (double minutes = 20; minutes > 0; --minutes)
        mixed.push_back(reading(300, minutes, 60));
    const auto layout = layoutOf(mixed, {}, hours3);
    ASSERT_EQ(layout.points.size(), 28U);
    EXPECT_GT(layout.points[0].radius, layout.points[20].radius);
    EXPECT_TRUE(
        std::ranges::all_of(layout.points.begin() + 1, layout.points.end(), &GraphPoint::joinsPrevious));
    EXPECT_TRUE(std::ranges::all_of(
        layout.points, [&](const GraphPoint& p) { return p.radius <= layout.points.back().radius; }));
    EXPECT_EQ(layout.points[0].range, GlucoseRange::inRange);
    EXPECT_EQ(layout.points[5].range, GlucoseRange::low);
    EXPECT_EQ(layout.points[20].range, GlucoseRange::high);
    // However dense, and whatever a sample claims to stand for, a reading can be seen.
    for (const double duration : {1e-9, 60.0, 900.0, 1e300})
        for (const GraphPoint& point :
             layoutOf({reading(50, 30, duration), reading(50, 1)}, {}, hours24).points)
            EXPECT_GE(point.radius, 1.6);
}

TEST(GlucoseGraphLayout, drawsNoThresholdThatTheAxisDoesNotReach)
{
    const auto usual = layoutOf({reading(39, 1), reading(401, 6)});
    EXPECT_EQ(usual.lowLine.value().text, "72");
    EXPECT_EQ(usual.highLine.value().text, "270");
    EXPECT_EQ(textOf(usual, lowThreshold), "72");
    EXPECT_EQ(textOf(usual, highThreshold), "270");
    EXPECT_LT(usual.lowLine->y, usual.targetTop);
    EXPECT_GT(usual.highLine->y, usual.targetTop);
    // At the ends of the axis the line is there, and its value stands there already.
    const auto tight = layoutOf({reading(100, 1)});
    EXPECT_EQ(tight.lowLine.value().y, tight.graphRect.y);
    EXPECT_EQ(tight.highLine.value().y, tight.graphRect.top());
    EXPECT_EQ(textsOf(tight, lowThreshold).size() + textsOf(tight, highThreshold).size(), 0U);
    const auto crossed = layoutOf({reading(150, 1)}, mgdL(200, 100));
    EXPECT_FALSE(crossed.lowLine || crossed.highLine);
}

TEST(GlucoseGraphLayout, labelsOfTheAxesDoNotTouch)
{
    for (const GraphTimeWindow window : {hours24, hours12, hours6, hours3, hours1})
        for (const double scale : {1.0, 2.0})
            for (int minute = 0; minute < 24 * 60; minute += 47) {
                const Date at = now + std::chrono::minutes{minute};
                const auto layout = layoutOf({.glucoseHistory = {reading(65, -minute), reading(275, -minute)},
                                              .timeWindow = window,
                                              .now = at,
                                              .zone = TimeZone::utc()},
                                             scale);
                for (std::size_t a = 0; a < layout.texts.size(); ++a)
                    for (std::size_t b = a + 1; b < layout.texts.size(); ++b) {
                        const GraphText& one = layout.texts[a];
                        const GraphText& other = layout.texts[b];
                        const bool apart = one.origin.x + one.size.width <= other.origin.x + 1e-9 ||
                                           other.origin.x + other.size.width <= one.origin.x + 1e-9 ||
                                           one.origin.y + 0.85 * one.size.height <= other.origin.y ||
                                           other.origin.y + 0.85 * other.size.height <= one.origin.y;
                        EXPECT_TRUE(apart) << one.text << " / " << other.text << " " << minute;
                    }
                EXPECT_GE(textsOf(layout, timeOfDay).size(), 1U);
            }
}

TEST(GlucoseGraphLayout, ticksFollowTheClockOnTheWall)
{
    struct Case {
        std::string zone;
        double unix;
        GraphTimeWindow window;
        std::vector<std::string> labels;
    };
    // A label at the edge of the plot would reach into the other axis; its line stays.
    const Case cases[]{
        {"UTC", 1'772'460'000, hours6, {"08:00", "09:00", "10:00", "11:00", "12:00", "13:00"}},
        {"UTC", 1'772'460'000 + 1500, hours3, {"11:30", "12:00", "12:30", "13:00", "13:30", "14:00"}},
        {"UTC", 1'772'460'000 + 60, hours1, {"13:15", "13:30", "13:45", "14:00"}},
        {"UTC", 1'772'460'000, hours24, {"16:00", "20:00", "Mon 2", "04:00", "08:00", "12:00"}},
        {"Asia/Kolkata", 1'772'460'000, hours3, {"16:30", "17:00", "17:30", "18:00", "18:30", "19:00"}},
        {"Asia/Kathmandu", 1'772'460'000, hours1, {"18:45", "19:00", "19:15", "19:30"}},
        // 29 March 2026: 01:59 is followed by 03:00; 25 October: 02:00 comes twice.
        {"Europe/Berlin", 1'774'749'600, hours6, {"21:00", "22:00", "23:00", "Sun 29", "01:00", "03:00"}},
        {"Europe/Berlin", 1'792'893'600, hours6, {"22:00", "23:00", "Sun 25", "01:00", "02:00", "02:00"}},
        // 6 September 2026 begins at 01:00.
        {"America/Santiago", 1'788'674'400, hours6, {"20:00", "21:00", "22:00", "23:00", "Sun 6", "02:00"}},
    };
    for (const Case& one : cases) {
        const auto zone = TimeZone::named(one.zone);
        ASSERT_TRUE(zone) << one.zone;
        const auto layout =
            layoutOf({.timeWindow = one.window, .now = dateFromUnix(one.unix), .zone = *zone});
        std::vector<std::pair<double, std::string>> found;
        for (const GraphText& text : layout.texts)
            if (text.role == timeOfDay || text.role == day)
                found.emplace_back(text.origin.x, text.text);
        std::ranges::sort(found);
        std::vector<std::string> labels;
        for (const auto& [x, text] : found)
            labels.push_back(text);
        EXPECT_EQ(labels, one.labels) << one.zone;
        EXPECT_LE(std::ranges::count(layout.ticks, true, &GraphTick::beginsDay), 1);
        EXPECT_TRUE(std::ranges::is_sorted(layout.ticks, {}, &GraphTick::x));
    }
}

TEST(GlucoseGraphLayout, isSpokenAsAWholeAndReadingByReading)
{
    const auto label = [](std::vector<GlucoseReading> history, GraphTimeWindow window = hours3) {
        return graphAccessibilityLabel(
            {.glucoseHistory = std::move(history), .timeWindow = window, .now = now});
    };
    EXPECT_EQ(
        label({reading(110, 6), reading(120, 1)}),
        "Glucose graph, last 3 hours. 2 readings in this time window. Current glucose: 120 milligrams per "
        "deciliter, in range, steady. Last reading: 13:59");
    EXPECT_EQ(label({reading(300, 20)}, hours1),
              "Glucose graph, last 1 hour. 1 reading in this time window. Stale glucose reading. Last known "
              "glucose: 300 milligrams per deciliter. Trend unavailable. Last reading: 13:40");
    EXPECT_EQ(label({reading(300, 90)}, hours1),
              "Glucose graph, last 1 hour. 0 readings in this time window. Current glucose unavailable. Last "
              "known glucose: 300 milligrams per deciliter. Trend unavailable. Last reading: 12:30");
    EXPECT_EQ(label({}, hours24),
              "Glucose graph, last 24 hours. 0 readings in this time window. No glucose readings available.");
    EXPECT_EQ(spokenGraphReading(reading(72, 30, 300, "SingleDown"), mmol(), TimeZone::utc()),
              "13:30, 4.0 millimoles per liter, at or below the low threshold, falling.");
}

}  // namespace
}  // namespace tidewell
