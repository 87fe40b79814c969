#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/AppConfiguration.h"
#include "sources/GlucoseReading.h"
#include "statusbar/ReadingPresentation.h"
#include "support/TimeText.h"

namespace tidewell {

/// How far back the graph looks; each value is its hours.
enum class GraphTimeWindow { hours24 = 24, hours12 = 12, hours6 = 6, hours3 = 3, hours1 = 1 };

/// The window of that many hours; six hours without a choice, and for one that is not offered.
[[nodiscard]] GraphTimeWindow graphTimeWindow(std::optional<std::int64_t> hours);

/// What a graph shows, and when.
struct GlucoseGraphContent {
    std::vector<GlucoseReading> glucoseHistory{};
    AppSettings settings{};
    GraphTimeWindow timeWindow = GraphTimeWindow::hours6;
    Date now{};
    TimeZone zone = TimeZone::utc();
};

struct GraphSize {
    double width = 0;
    double height = 0;
    bool operator==(const GraphSize&) const = default;
};

/// Of a view whose origin is at its bottom left, as all positions of the graph.
struct GraphPosition {
    double x = 0;
    double y = 0;
    bool operator==(const GraphPosition&) const = default;
};

struct GraphRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    [[nodiscard]] double right() const { return x + width; }
    [[nodiscard]] double top() const { return y + height; }
    bool operator==(const GraphRect&) const = default;
};

/// The size of a line of text in a font of that many points.
using GraphTextMeasure = std::function<GraphSize(std::string_view text, double points)>;

/// What a text is, which decides its colour.
enum class GraphTextRole {
    currentValue,   ///< The value and arrow of a reading under 900 s of age, large.
    agedValue,      ///< The same place, of an older one: "120 ?", then "-- ?".
    unit,           ///< "mg/dL" or "mmol/L".
    change,         ///< "+4 in 5 min", or how old an aged value is.
    lastReading,    ///< "Last reading: 14:05".
    axisLimit,      ///< The ends of the value axis.
    lowThreshold,   ///< Beside its line.
    highThreshold,  ///< Beside its line.
    timeOfDay,      ///< "14:00", below the plot.
    day,            ///< "Mon 2", below the line where a day begins.
    nothingToShow,  ///< In the middle of a plot without readings.
};

/// One line of text; `origin` is the bottom left corner of its box.
struct GraphText {
    GraphTextRole role{};
    std::string text{};
    double points = 9;
    GraphPosition origin{};
    GraphSize size{};
    bool operator==(const GraphText&) const = default;
};

/// One reading of the plot.
struct GraphPoint {
    GraphPosition at{};
    double radius = 0;
    GlucoseRange range{};
    bool joinsPrevious = false;  ///< No gap lies between this reading and the one before.
    std::size_t reading = 0;     ///< Its place in the content's glucoseHistory.
    bool operator==(const GraphPoint&) const = default;
};

/// A vertical line of the plot.
struct GraphTick {
    double x = 0;
    bool beginsDay = false;
    bool operator==(const GraphTick&) const = default;
};

/// A threshold's line.
struct GraphThreshold {
    double y = 0;
    std::string text{};  ///< Its value. Also among the texts where the ends of the axis leave room for it.
    bool operator==(const GraphThreshold&) const = default;
};

/// How the labels of the value axis are drawn.
struct GraphLabelAttributes {
    double points = 9;
    GraphTextRole role = GraphTextRole::axisLimit;
    bool operator==(const GraphLabelAttributes&) const = default;
};

/// The graph as values: what is drawn, and where. Values on the axis are in the unit that is shown.
struct GlucoseGraphLayout {
    double minValue = 0;
    double maxValue = 0;
    double range = 0;                       ///< At least `epsilon`.
    double targetLowDisplay = 0;            ///< Lower edge of the shaded band.
    double effectiveTargetHighDisplay = 0;  ///< Upper edge: never above 180 mg/dL or 10.0 mmol/L.
    std::string maxText{};
    std::string minText{};
    GraphLabelAttributes labelAttributes{};
    GraphSize maxTextSize{};
    GraphSize minTextSize{};
    GraphRect graphRect{};    ///< The plot. Empty when the view has no room for one.
    double labelGap = 0;      ///< Between the plot and the labels right of it.
    double rightPadding = 0;  ///< Right of the labels.
    double epsilon = 0;       ///< The smallest range: one step of what the unit shows.

    GraphSize viewSize{};
    double targetBottom = 0;  ///< The band's edges in the view.
    double targetTop = 0;
    std::optional<GraphThreshold> lowLine{};  ///< None for a threshold that the axis does not reach.
    std::optional<GraphThreshold> highLine{};
    std::vector<GraphPoint> points{};  ///< By time.
    std::vector<GraphTick> ticks{};    ///< By time.
    std::vector<GraphText> texts{};
    TitleColor valueColor = TitleColor::primary;  ///< Of the current value.
};

/// Lays the graph out in a view of that size. Pure.
///
/// All measures grow with `textScale` (0.5 to 4), so that larger letters keep their room; 1 is 28, 11 and
/// 9 points. Readings that are no numbers are left out, as are those dated more than five minutes ahead, and
/// those before the window. With readings up to five minutes ahead, the window ends at the newest.
/// Two readings are joined when no more than one between them can be missing.
[[nodiscard]] GlucoseGraphLayout glucoseGraphLayout(const GlucoseGraphContent& content, GraphSize viewSize,
                                                    const GraphTextMeasure& measure, double textScale = 1);

/// What a screen reader says of the graph: window, number of readings, and the last one with its time.
[[nodiscard]] std::string graphAccessibilityLabel(const GlucoseGraphContent& content);

/// What it says of one reading in it: "14:05, 120 milligrams per deciliter, in range, rising slightly."
[[nodiscard]] std::string spokenGraphReading(const GlucoseReading& reading, const AppSettings& settings,
                                             TimeZone zone);

/// "+4 in 5 min": how the newest reading differs from the one before, in what the unit shows. Empty for less
/// than two readings, across a gap, and when the newest is no longer current.
[[nodiscard]] std::string glucoseChangeText(const GlucoseGraphContent& content);

}  // namespace tidewell
