#include "statusbar/GlucoseGraphLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "config/AppSettingsKeys.h"
#include "sources/GlucoseUnits.h"

namespace tidewell {

namespace {

namespace chrono = std::chrono;

// Measures in points, at a text scale of 1.
constexpr double edge = 15;  ///< Left of everything, and right of it.
constexpr double labelGap = 8;
constexpr double headerHeight = 70;
constexpr double footerHeight = 30;
constexpr double valuePoints = 28;
constexpr double valueDepth = 40;  ///< Below the top of the view.
constexpr double unitPoints = 11;
constexpr double unitDepth = 60;
constexpr double labelPoints = 9;
constexpr double lastReadingHeight = 6;
constexpr double timeLabelHeight = 17;
constexpr double changeGap = 9;
constexpr double timeLabelGap = 6;

/// The shaded band ends here, however high the threshold of alerts is: the upper end of the consensus target
/// range (Battelino et al., Diabetes Care 2019).
constexpr double targetHighMgdL = 180;
constexpr double targetHighMmolL = 10.0;

/// A reading that is dated further ahead is not of this clock; the poll takes no answer with one either.
constexpr Seconds furthestAhead{300};
/// Between readings of a sensor that publishes each minute, too: its graph has one for each five.
constexpr Seconds shortestInterval{300};
/// How late a reading may be, so that an interval still counts as two.
constexpr Seconds lateness{30};

constexpr double smallestRadius = 1.2;
constexpr double largestRadius = 3.2;
/// Of the newest reading while it is current; it may lie apart from the others.
constexpr double newestRadius = 4;
/// What lies outside the range must not get lost among a day of readings.
constexpr double smallestRadiusOutside = 1.6;

constexpr chrono::minutes tickGrid{15};

/// The window and the readings in it, by time.
struct Shown {
    Date start;
    Date end;
    std::vector<const GlucoseReading*> readings;
};

GlucoseUnits displayUnit(const AppSettings& settings)
{
    return glucoseUnits(settings.measurementUnit).value_or(GlucoseUnits::mgdL);
}

/// A value as the axis has it: mg/dL as they are, mmol/L rounded to a tenth.
double onAxis(double mgdL, GlucoseUnits unit)
{
    return unit == GlucoseUnits::mgdL ? mgdL : displayValue(mgdL, unit);
}

std::string axisText(double value, GlucoseUnits unit)
{
    if (unit == GlucoseUnits::mmolL)
        return fmt::format("{:.1f}", value);
    return fmt::format("{:.0f}", std::round(value) + 0.0);
}

bool isShown(const GlucoseReading& reading, Date now)
{
    return std::isfinite(reading.mgdL) && std::isfinite(unixSeconds(reading.date)) &&
           reading.date <= now + furthestAhead;
}

Shown shownReadings(const GlucoseGraphContent& content)
{
    Shown shown{.end = content.now};
    shown.readings.reserve(content.glucoseHistory.size());
    for (const GlucoseReading& one : content.glucoseHistory) {
        if (!isShown(one, content.now))
            continue;
        shown.readings.push_back(&one);
        shown.end = std::max(shown.end, one.date);
    }
    shown.start = shown.end - chrono::hours{static_cast<int>(content.timeWindow)};
    std::erase_if(shown.readings, [&](const GlucoseReading* one) { return one->date < shown.start; });
    std::ranges::sort(shown.readings, [](const GlucoseReading* one, const GlucoseReading* other) {
        return std::pair{one->date, one} < std::pair{other->date, other};
    });
    return shown;
}

/// Newest first: the two that the header is about.
std::array<const GlucoseReading*, 2> newestTwo(const GlucoseGraphContent& content)
{
    std::array<const GlucoseReading*, 2> newest{};
    for (const GlucoseReading& one : content.glucoseHistory) {
        if (!isShown(one, content.now))
            continue;
        if (!newest[0] || one.date >= newest[0]->date)
            newest = {&one, newest[0]};
        else if (!newest[1] || one.date >= newest[1]->date)
            newest[1] = &one;
    }
    return newest;
}

std::optional<GlucoseReading> lastReading(const GlucoseGraphContent& content)
{
    const GlucoseReading* const last = newestTwo(content)[0];
    return last ? std::optional{*last} : std::nullopt;
}

bool joins(const GlucoseReading& earlier, const GlucoseReading& later)
{
    const Seconds interval = std::max({shortestInterval, std::min(earlier.sampleDuration, staleAge),
                                       std::min(later.sampleDuration, staleAge)});
    return later.date - earlier.date <= 2 * interval + lateness;
}

std::string hoursPhrase(GraphTimeWindow window)
{
    const int hours = static_cast<int>(window);
    return fmt::format("{} {}", hours, hours == 1 ? "hour" : "hours");
}

chrono::minutes tickStep(GraphTimeWindow window)
{
    using enum GraphTimeWindow;
    switch (window) {
    case hours24: return chrono::hours{4};
    case hours12: return chrono::hours{2};
    case hours6: return chrono::hours{1};
    case hours3: return chrono::minutes{30};
    case hours1: return chrono::minutes{15};
    }
    std::unreachable();
}

/// Seconds since 1970 on the clock on the wall.
chrono::sys_seconds wallClock(Date at, TimeZone zone)
{
    return chrono::floor<chrono::seconds>(at) + zone.offset(at);
}

/// "Mon 2".
std::string dayText(chrono::sys_days day)
{
    constexpr std::array<std::string_view, 7> names{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    const chrono::year_month_day date{day};
    return fmt::format("{} {}", names[chrono::weekday{day}.c_encoding()], unsigned{date.day()});
}

/// Writes and draws into one layout; its members go from the scale to the details.
class Builder {
public:
    Builder(const GlucoseGraphContent& content, GraphSize viewSize, const GraphTextMeasure& measure,
            double textScale)
        : content_{content},
          measure_{measure},
          scale_{std::clamp(textScale, 0.5, 4.0)},
          unit_{displayUnit(content.settings)},
          shown_{shownReadings(content)}
    {
        layout_.viewSize = viewSize;
    }

    GlucoseGraphLayout build()
    {
        setScale();
        setPlot();
        addHeader();
        addAxis();
        addTicks();
        addPoints();
        return std::move(layout_);
    }

private:
    [[nodiscard]] double x(Date at) const
    {
        const double share = (at - shown_.start) / (shown_.end - shown_.start);
        return layout_.graphRect.x + share * layout_.graphRect.width;
    }

    /// Values that the axis does not reach lie at its ends.
    [[nodiscard]] double y(double value) const
    {
        const double share = std::clamp((value - layout_.minValue) / layout_.range, 0.0, 1.0);
        return layout_.graphRect.y + share * layout_.graphRect.height;
    }

    [[nodiscard]] GraphText makeText(GraphTextRole role, std::string text, double points) const
    {
        const GraphSize size = measure_(text, points * scale_);
        return {.role = role, .text = std::move(text), .points = points * scale_, .size = size};
    }

    const GraphText& add(GraphText text, GraphPosition origin)
    {
        text.origin = origin;
        return layout_.texts.emplace_back(std::move(text));
    }

    void setScale()
    {
        const double low = onAxis(content_.settings.lowGlucoseThreshold, unit_);
        const double high = onAxis(content_.settings.highGlucoseThreshold, unit_);
        layout_.minValue = low;
        layout_.maxValue = high;
        for (const GlucoseReading* one : shown_.readings) {
            layout_.minValue = std::min(layout_.minValue, onAxis(one->mgdL, unit_));
            layout_.maxValue = std::max(layout_.maxValue, onAxis(one->mgdL, unit_));
        }
        layout_.epsilon = unit_ == GlucoseUnits::mgdL ? 1 : 0.1;
        layout_.range = std::max(layout_.maxValue - layout_.minValue, layout_.epsilon);
        const double bandLimit = unit_ == GlucoseUnits::mgdL ? targetHighMgdL : targetHighMmolL;
        layout_.targetLowDisplay = low;
        layout_.effectiveTargetHighDisplay = std::max(low, std::min(high, bandLimit));
        layout_.maxText = axisText(layout_.maxValue, unit_);
        layout_.minText = axisText(layout_.minValue, unit_);
        layout_.labelAttributes.points = labelPoints * scale_;
        layout_.maxTextSize = measure_(layout_.maxText, labelPoints * scale_);
        layout_.minTextSize = measure_(layout_.minText, labelPoints * scale_);
    }

    void setPlot()
    {
        layout_.labelGap = labelGap * scale_;
        layout_.rightPadding = edge * scale_;
        const double labels = std::max(layout_.maxTextSize.width, layout_.minTextSize.width);
        const double width = layout_.viewSize.width - (2 * edge + labelGap) * scale_ - labels;
        const double height = layout_.viewSize.height - (headerHeight + footerHeight) * scale_;
        layout_.graphRect = {.x = edge * scale_,
                             .y = footerHeight * scale_,
                             .width = std::max(width, 0.0),
                             .height = std::max(height, 0.0)};
        layout_.targetBottom = y(layout_.targetLowDisplay);
        layout_.targetTop = y(layout_.effectiveTargetHighDisplay);
    }

    void addHeader()
    {
        const auto last = lastReading(content_);
        const double top = layout_.viewSize.height;
        const GraphText unit = makeText(GraphTextRole::unit, std::string{rawValue(unit_)}, unitPoints);
        const double changeX = edge * scale_ + unit.size.width + changeGap * scale_;
        add(unit, {edge * scale_, top - unitDepth * scale_});
        if (!last)
            return;
        const ReadingFreshness freshness = readingFreshness(last->date, content_.now);
        const bool current = freshness == ReadingFreshness::current;
        layout_.valueColor = current ? titleColor(*last, content_.settings) : TitleColor::primary;
        add(makeText(current ? GraphTextRole::currentValue : GraphTextRole::agedValue,
                     statusTitle(*last, freshness, content_.settings), valuePoints),
            {edge * scale_, top - valueDepth * scale_});
        const std::string change =
            current ? glucoseChangeText(content_) : elapsedPhrase(content_.now - last->date) + " ago";
        if (!change.empty())
            add(makeText(GraphTextRole::change, change, unitPoints), {changeX, top - unitDepth * scale_});
        const GraphText time =
            makeText(GraphTextRole::lastReading, "Last reading: " + localTimeOfDay(last->date, content_.zone),
                     labelPoints);
        add(time, {layout_.viewSize.width - edge * scale_ - time.size.width, lastReadingHeight * scale_});
    }

    /// Right of the plot, flush right, its middle at `middle`.
    void addAxisLabel(GraphTextRole role, const std::string& value, double middle)
    {
        const GraphText label = makeText(role, value, labelPoints);
        add(label, {layout_.viewSize.width - layout_.rightPadding - label.size.width,
                    middle - label.size.height / 2});
    }

    /// A threshold's line, and its value where the ends of the axis leave room.
    std::optional<GraphThreshold> addThreshold(double mgdL, GraphTextRole role)
    {
        const double value = onAxis(mgdL, unit_);
        if (!(value >= layout_.minValue && value <= layout_.maxValue))
            return {};
        const double line = y(value);
        std::string label = axisText(value, unit_);
        const bool roomForLabel = std::ranges::none_of(layout_.texts, [&](const GraphText& text) {
            const bool onThisAxis =
                text.role == GraphTextRole::axisLimit || text.role == GraphTextRole::lowThreshold;
            return onThisAxis &&
                   std::abs(text.origin.y + text.size.height / 2 - line) < 0.9 * text.size.height;
        });
        if (roomForLabel)
            addAxisLabel(role, label, line);
        return GraphThreshold{.y = line, .text = std::move(label)};
    }

    void addAxis()
    {
        const GraphRect& plot = layout_.graphRect;
        addAxisLabel(GraphTextRole::axisLimit, layout_.maxText, plot.top());
        addAxisLabel(GraphTextRole::axisLimit, layout_.minText, plot.y);
        layout_.lowLine = addThreshold(content_.settings.lowGlucoseThreshold, GraphTextRole::lowThreshold);
        layout_.highLine = addThreshold(content_.settings.highGlucoseThreshold, GraphTextRole::highThreshold);
        if (!shown_.readings.empty())
            return;
        const GraphText nothing =
            makeText(GraphTextRole::nothingToShow,
                     content_.timeWindow == GraphTimeWindow::hours1
                         ? std::string{"No readings in the last hour"}
                         : "No readings in the last " + hoursPhrase(content_.timeWindow),
                     unitPoints);
        add(nothing, {plot.x + (plot.width - nothing.size.width) / 2,
                      plot.y + (plot.height - nothing.size.height) / 2});
    }

    /// A tick at each full step of the clock on the wall, and where a day begins, which is not at midnight
    /// where summer time does. Days have their names first; times follow where there is room.
    void addTicks()
    {
        const chrono::minutes step = tickStep(content_.timeWindow);
        const auto beforeStart = wallClock(shown_.start, content_.zone);
        const auto offset = content_.zone.offset(shown_.start);
        std::vector<GraphText> times;
        std::vector<GraphText> days;
        auto previous = beforeStart;
        for (auto local = chrono::ceil<chrono::minutes>(beforeStart);; local += chrono::minutes{1}) {
            if (local.time_since_epoch() % tickGrid != chrono::minutes{0})
                continue;
            const Date at{Seconds{(local.time_since_epoch() - offset)}};
            if (at > shown_.end)
                break;
            const auto wall = wallClock(at, content_.zone);
            const auto day = chrono::floor<chrono::days>(wall);
            const bool beginsDay = day != chrono::floor<chrono::days>(previous);
            previous = wall;
            if (!beginsDay && (wall - day) % step != chrono::seconds{0})
                continue;
            layout_.ticks.push_back({.x = x(at), .beginsDay = beginsDay});
            GraphText text =
                makeText(beginsDay ? GraphTextRole::day : GraphTextRole::timeOfDay,
                         beginsDay ? dayText(day) : localTimeOfDay(at, content_.zone), labelPoints);
            text.origin = {x(at) - text.size.width / 2, timeLabelHeight * scale_};
            (beginsDay ? days : times).push_back(std::move(text));
        }
        placeTimeLabels(std::move(days));
        placeTimeLabels(std::move(times));
    }

    void placeTimeLabels(std::vector<GraphText> labels)
    {
        for (GraphText& label : labels) {
            const double gap = timeLabelGap * scale_;
            const double end = label.origin.x + label.size.width;
            const bool overlaps = std::ranges::any_of(layout_.texts, [&](const GraphText& other) {
                const bool below = other.role == GraphTextRole::day || other.role == GraphTextRole::timeOfDay;
                return below && label.origin.x < other.origin.x + other.size.width + gap &&
                       other.origin.x < end + gap;
            });
            if (!overlaps && label.origin.x >= 2 && end <= layout_.graphRect.right() + layout_.labelGap)
                layout_.texts.push_back(std::move(label));
        }
    }

    void addPoints()
    {
        const double pointsPerSecond = layout_.graphRect.width / Seconds{shown_.end - shown_.start}.count();
        layout_.points.reserve(shown_.readings.size());
        const GlucoseReading* previous = nullptr;
        for (const GlucoseReading* one : shown_.readings) {
            const GlucoseRange range = glucoseRange(one->mgdL, content_.settings);
            const double smallest = range == GlucoseRange::inRange ? smallestRadius : smallestRadiusOutside;
            // Dots of one kind nearly touch, until they would be too small to be seen.
            const double room = 0.4 * one->sampleDuration.count() * pointsPerSecond / scale_;
            layout_.points.push_back(
                {.at = {x(one->date), y(onAxis(one->mgdL, unit_))},
                 .radius = std::clamp(room, smallest, largestRadius) * scale_,
                 .range = range,
                 .joinsPrevious = previous && joins(*previous, *one),
                 .reading = static_cast<std::size_t>(one - content_.glucoseHistory.data())});
            previous = one;
        }
        if (previous && readingFreshness(previous->date, content_.now) == ReadingFreshness::current)
            layout_.points.back().radius = newestRadius * scale_;
    }

    const GlucoseGraphContent& content_;
    const GraphTextMeasure& measure_;
    double scale_;
    GlucoseUnits unit_;
    Shown shown_;
    GlucoseGraphLayout layout_;
};

}  // namespace

GraphTimeWindow graphTimeWindow(std::optional<std::int64_t> hours)
{
    if (hours && std::ranges::find(graphTimeWindowHourOptions, *hours) != graphTimeWindowHourOptions.end())
        return static_cast<GraphTimeWindow>(*hours);
    return GraphTimeWindow::hours6;
}

GlucoseGraphLayout glucoseGraphLayout(const GlucoseGraphContent& content, GraphSize viewSize,
                                      const GraphTextMeasure& measure, double textScale)
{
    return Builder{content, viewSize, measure, textScale}.build();
}

std::string graphAccessibilityLabel(const GlucoseGraphContent& content)
{
    const auto last = lastReading(content);
    const std::size_t count = shownReadings(content).readings.size();
    std::string label = fmt::format(
        "Glucose graph, last {}. {} {} in this time window. {}", hoursPhrase(content.timeWindow), count,
        count == 1 ? "reading" : "readings", spokenGlucose(last, content.now, content.settings));
    if (last)
        label += " Last reading: " + localTimeOfDay(last->date, content.zone);
    return label;
}

std::string spokenGraphReading(const GlucoseReading& reading, const AppSettings& settings, TimeZone zone)
{
    return fmt::format("{}, {} {}, {}, {}.", localTimeOfDay(reading.date, zone), valueText(reading, settings),
                       spokenName(displayUnit(settings)), rangePhrase(glucoseRange(reading.mgdL, settings)),
                       trendPhrase(reading.trendString));
}

std::string glucoseChangeText(const GlucoseGraphContent& content)
{
    const auto [last, previous] = newestTwo(content);
    if (!last || !previous || !joins(*previous, *last) ||
        readingFreshness(last->date, content.now) != ReadingFreshness::current)
        return {};
    const GlucoseUnits unit = displayUnit(content.settings);
    const int decimals = unit == GlucoseUnits::mgdL ? 0 : 1;
    // Of the values as they are shown, so that the sum comes out right for whoever checks it.
    const double change = displayValue(last->mgdL, unit) - displayValue(previous->mgdL, unit);
    const std::string amount = fmt::format("{:.{}f}", std::abs(change), decimals);
    const bool none = std::abs(change) < (decimals == 0 ? 0.5 : 0.05);
    const double minutes = std::max(1.0, std::round((last->date - previous->date).count() / 60));
    return fmt::format("{}{} in {:.0f} min", none ? "±" : change > 0 ? "+" : "−", amount, minutes);
}

}  // namespace tidewell
