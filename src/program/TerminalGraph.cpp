#include "program/TerminalGraph.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tidewell {

namespace {

/// Dots of a braille character.
constexpr int dotsAcross = 2;
constexpr int dotsDown = 4;

/// How many columns a text takes: its code points, all of which are one wide in the texts here.
int columnsOf(std::string_view text)
{
    return static_cast<int>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0) != 0x80; }));
}

/// Dots are the points of this layout, and a character is as large as its dots.
GraphSize measureInDots(std::string_view text, double)
{
    return {.width = double{dotsAcross} * columnsOf(text), .height = dotsDown};
}

enum class Ink { none, faint, strong, inRange, low, high };

const char* sequence(Ink ink)
{
    switch (ink) {
    case Ink::none: return "\x1b[0m";
    case Ink::faint: return "\x1b[2m";
    case Ink::strong: return "\x1b[1m";
    case Ink::inRange: return "\x1b[36m";
    case Ink::low: return "\x1b[1;31m";
    case Ink::high: return "\x1b[33m";
    }
    std::unreachable();
}

Ink inkOf(GlucoseRange range)
{
    switch (range) {
    case GlucoseRange::low: return Ink::low;
    case GlucoseRange::inRange: return Ink::inRange;
    case GlucoseRange::high: return Ink::high;
    }
    std::unreachable();
}

struct Cell {
    std::string glyph{" "};
    Ink ink = Ink::none;
    unsigned dots = 0;  ///< Of a braille character: bit n is dot n + 1.
};

/// One row of characters that grows to the right.
class Line {
public:
    explicit Line(bool color) : color_{color} {}

    void put(std::string_view text, Ink ink = Ink::none)
    {
        if (text.empty())
            return;
        takeInk(ink);
        text_ += text;
        columns_ += columnsOf(text);
    }
    /// Spaces up to that column.
    void goTo(int column)
    {
        if (columns_ < column)
            put(std::string(static_cast<std::size_t>(column - columns_), ' '));
    }
    [[nodiscard]] int columns() const { return columns_; }
    [[nodiscard]] std::string end()
    {
        takeInk(Ink::none);
        // No spaces at the end, where nobody sees them and everybody copies them.
        while (text_.ends_with(' '))
            text_.pop_back();
        return text_ + "\n";
    }

private:
    void takeInk(Ink ink)
    {
        if (!color_ || ink == ink_)
            return;
        if (ink_ != Ink::none)
            text_ += sequence(Ink::none);
        if (ink != Ink::none)
            text_ += sequence(ink);
        ink_ = ink;
    }

    bool color_;
    std::string text_;
    Ink ink_ = Ink::none;
    int columns_ = 0;
};

/// The characters right of the axis.
class Plot {
public:
    Plot(const GlucoseGraphLayout& layout, int columns, int rows, bool braille)
        : layout_{layout},
          columns_{columns},
          rows_{rows},
          braille_{braille},
          cells_(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows))
    {
        for (const GraphTick& tick : layout.ticks)
            if (tick.beginsDay)
                for (int row = 0; row < rows; ++row)
                    at(columnOf(tick.x), row) = {.glyph = braille ? "┊" : "|", .ink = Ink::faint};
        addThreshold(layout.highLine, Ink::high, braille ? "╌" : "-");
        addThreshold(layout.lowLine, Ink::low, braille ? "┄" : "-");
        const GraphPoint* previous = nullptr;
        for (const GraphPoint& point : layout.points) {
            if (point.joinsPrevious)
                join(*previous, point);
            addDot(dotColumn(point.at.x), dotRow(point.at.y), point.range);
            previous = &point;
        }
    }

    [[nodiscard]] int columnOf(double x) const { return dotColumn(x) / dotsAcross; }
    [[nodiscard]] int rowOf(double y) const { return dotRow(y) / dotsDown; }

    void put(Line& line, int row) const
    {
        for (int column = 0; column < columns_; ++column) {
            const Cell& cell = cells_[indexOf(column, row)];
            line.put(cell.dots == 0 ? cell.glyph : braille_ ? brailleGlyph(cell.dots) : "*", cell.ink);
        }
    }

private:
    [[nodiscard]] std::size_t indexOf(int column, int row) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
               static_cast<std::size_t>(column);
    }
    [[nodiscard]] Cell& at(int column, int row) { return cells_[indexOf(column, row)]; }
    [[nodiscard]] int dotColumn(double x) const
    {
        return static_cast<int>(
            std::clamp(std::floor(x - layout_.graphRect.x), 0.0, double{dotsAcross} * columns_ - 1));
    }
    [[nodiscard]] int dotRow(double y) const
    {
        return static_cast<int>(
            std::clamp(std::floor(layout_.graphRect.top() - y), 0.0, double{dotsDown} * rows_ - 1));
    }

    void addThreshold(const std::optional<GraphThreshold>& threshold, Ink ink, const char* glyph)
    {
        if (!threshold)
            return;
        for (int column = 0; column < columns_; ++column)
            at(column, rowOf(threshold->y)) = {.glyph = glyph, .ink = ink};
    }

    void addDot(int column, int row, GlucoseRange range)
    {
        // Braille counts its dots down the left column, down the right one, and then the fourth row.
        constexpr unsigned bits[dotsDown][dotsAcross]{{0x01, 0x08}, {0x02, 0x10}, {0x04, 0x20}, {0x40, 0x80}};
        Cell& cell = at(column / dotsAcross, row / dotsDown);
        const Ink ink = inkOf(range);
        // Where readings of several ranges share a character, the low one must not be hidden.
        if (cell.dots == 0 || ink == Ink::low || (ink == Ink::high && cell.ink == Ink::inRange))
            cell.ink = ink;
        cell.dots |= bits[row % dotsDown][column % dotsAcross];
    }

    void join(const GraphPoint& from, const GraphPoint& to)
    {
        const double steps =
            std::ceil(std::max(std::abs(to.at.x - from.at.x), std::abs(to.at.y - from.at.y)));
        for (double step = 1; step < steps; ++step) {
            const double share = step / steps;
            addDot(dotColumn(std::lerp(from.at.x, to.at.x, share)),
                   dotRow(std::lerp(from.at.y, to.at.y, share)), share < 0.5 ? from.range : to.range);
        }
    }

    [[nodiscard]] static std::string brailleGlyph(unsigned dots)
    {
        const unsigned code = 0x2800 + dots;
        return {static_cast<char>(0xe0 | (code >> 12)), static_cast<char>(0x80 | ((code >> 6) & 0x3f)),
                static_cast<char>(0x80 | (code & 0x3f))};
    }

    const GlucoseGraphLayout& layout_;
    int columns_;
    int rows_;
    bool braille_;
    std::vector<Cell> cells_;
};

const GraphText* find(const GlucoseGraphLayout& layout, GraphTextRole role)
{
    const auto found = std::ranges::find(layout.texts, role, &GraphText::role);
    return found == layout.texts.end() ? nullptr : &*found;
}

std::string header(const GlucoseGraphLayout& layout, int columns, bool color)
{
    Line line{color};
    line.put(" ");
    if (const GraphText* const value = find(layout, GraphTextRole::currentValue))
        line.put(value->text, layout.valueColor == TitleColor::red      ? Ink::low
                              : layout.valueColor == TitleColor::orange ? Ink::high
                                                                        : Ink::strong);
    else if (const GraphText* const aged = find(layout, GraphTextRole::agedValue))
        line.put(aged->text, Ink::faint);
    for (const GraphTextRole role : {GraphTextRole::unit, GraphTextRole::change})
        if (const GraphText* const text = find(layout, role))
            line.put((line.columns() > 1 ? "  " : "") + text->text);
    if (const GraphText* const last = find(layout, GraphTextRole::lastReading)) {
        std::string lines;
        const int start = columns - columnsOf(last->text);
        if (line.columns() + 2 > start) {
            lines = line.end();
            line = Line{color};
        }
        line.goTo(start);
        line.put(last->text, Ink::faint);
        return lines + line.end();
    }
    return line.end();
}

struct AxisLabel {
    std::string_view text{};
    Ink ink = Ink::faint;
};

/// By row. A threshold's own value stands beside its line, even where an end of the axis is as near.
std::vector<AxisLabel> axisLabels(const GlucoseGraphLayout& layout, const Plot& plot, int rows)
{
    std::vector<AxisLabel> labels(static_cast<std::size_t>(rows));
    labels.front() = {.text = layout.maxText};
    labels.back() = {.text = layout.minText};
    const auto put = [&](const std::optional<GraphThreshold>& threshold, Ink ink) {
        if (threshold)
            labels[static_cast<std::size_t>(plot.rowOf(threshold->y))] = {.text = threshold->text,
                                                                          .ink = ink};
    };
    put(layout.highLine, Ink::high);
    put(layout.lowLine, Ink::low);
    return labels;
}

/// The lower edge of the plot, with its ticks and their times.
std::string timeAxis(const GlucoseGraphLayout& layout, const Plot& plot, int axisColumns, int plotColumns,
                     bool color)
{
    std::vector<std::string_view> edge(static_cast<std::size_t>(plotColumns), "─");
    for (const GraphTick& tick : layout.ticks)
        edge[static_cast<std::size_t>(plot.columnOf(tick.x))] = "┴";
    Line axis{color};
    axis.goTo(axisColumns - 1);
    axis.put("└", Ink::faint);
    for (const std::string_view glyph : edge)
        axis.put(glyph, Ink::faint);

    std::vector<const GraphText*> labels;
    for (const GraphText& text : layout.texts)
        if (text.role == GraphTextRole::timeOfDay || text.role == GraphTextRole::day)
            labels.push_back(&text);
    std::ranges::sort(labels, {}, [](const GraphText* text) { return text->origin.x; });
    Line times{color};
    for (const GraphText* const label : labels) {
        const double middle = label->origin.x + label->size.width / 2;
        const int start = axisColumns + plot.columnOf(middle) - columnsOf(label->text) / 2;
        if (start + columnsOf(label->text) > axisColumns + plotColumns)
            continue;
        times.goTo(start);
        times.put(label->text, label->role == GraphTextRole::day ? Ink::strong : Ink::faint);
    }
    return axis.end() + times.end();
}

}  // namespace

std::string terminalGraph(const GlucoseGraphContent& content, const TerminalGraphStyle& style)
{
    const int columns = std::clamp(style.columns, 40, 400);
    const int rows = std::clamp(style.plotRows, 5, 60);
    // A layout is asked for by its view; what lies around the plot is the same in each.
    const GraphSize any{1000, 1000};
    const GlucoseGraphLayout measured = glucoseGraphLayout(content, any, measureInDots);
    const int labelColumns = std::max(columnsOf(measured.maxText), columnsOf(measured.minText));
    const int axisColumns = 1 + labelColumns + 2;  // A margin, the label, and the axis.
    const int plotColumns = std::max(columns - axisColumns, 1);
    const GlucoseGraphLayout layout =
        glucoseGraphLayout(content,
                           {any.width - measured.graphRect.width + dotsAcross * plotColumns,
                            any.height - measured.graphRect.height + dotsDown * rows},
                           measureInDots);
    const Plot plot{layout, plotColumns, rows, style.braille};

    std::string lines = header(layout, columns, style.color) + "\n";
    const std::vector<AxisLabel> labels = axisLabels(layout, plot, rows);
    const GraphText* const nothing = find(layout, GraphTextRole::nothingToShow);
    for (int row = 0; row < rows; ++row) {
        Line line{style.color};
        const AxisLabel& label = labels[static_cast<std::size_t>(row)];
        line.goTo(1 + labelColumns - columnsOf(label.text));
        line.put(label.text, label.ink);
        line.goTo(1 + labelColumns + 1);
        line.put(!label.text.empty() ? "┤" : "│", Ink::faint);
        if (nothing && row == rows / 2) {
            line.goTo(axisColumns + (plotColumns - columnsOf(nothing->text)) / 2);
            line.put(nothing->text);
        } else {
            plot.put(line, row);
        }
        lines += line.end();
    }
    return lines + timeAxis(layout, plot, axisColumns, plotColumns, style.color);
}

}  // namespace tidewell
