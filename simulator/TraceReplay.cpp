#include "simulator/TraceReplay.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>

namespace tidewell {

extern const std::string_view builtInTraceCsv;
extern const std::string_view libreTraceCsv;

namespace {

constexpr std::size_t mostReadings = 200'000;
constexpr std::uintmax_t mostBytes = 32 * 1024 * 1024;
/// A person's glucose is never outside; such a number is a mistake in the file.
constexpr double lowestValue = 1;
constexpr double highestValue = 1000;

std::string_view takeField(std::string_view& line)
{
    const auto comma = line.find(',');
    const auto field = line.substr(0, comma);
    line.remove_prefix(comma == std::string_view::npos ? line.size() : comma + 1);
    return field;
}

template <class Number>
std::optional<Number> number(std::string_view text)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

/// Seconds of "YYYY-MM-DDTHH:MM:SS" since 1970, read as if it were UTC.
std::optional<double> localSeconds(std::string_view text)
{
    if (text.size() != 19 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':' ||
        text[16] != ':')
        return std::nullopt;
    const auto year = number<int>(text.substr(0, 4));
    const auto month = number<unsigned>(text.substr(5, 2));
    const auto day = number<unsigned>(text.substr(8, 2));
    const auto hour = number<unsigned>(text.substr(11, 2));
    const auto minute = number<unsigned>(text.substr(14, 2));
    const auto second = number<unsigned>(text.substr(17, 2));
    if (!year || !month || !day || !hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 60)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year{*year}, std::chrono::month{*month},
                                           std::chrono::day{*day}};
    if (!date.ok())
        return std::nullopt;
    const auto days = std::chrono::sys_days{date}.time_since_epoch().count();
    return static_cast<double>(days) * 86400.0 + static_cast<double>(*hour * 3600 + *minute * 60 + *second);
}

struct Columns {
    int time = -1;
    int value = -1;
    int subject = -1;
};

Columns columnsOf(std::string_view header)
{
    Columns columns;
    for (int index = 0; !header.empty(); ++index) {
        const auto name = takeField(header);
        if (name == "time_local")
            columns.time = index;
        else if (name == "glucose_mgdl")
            columns.value = index;
        else if (name == "subject")
            columns.subject = index;
    }
    return columns;
}

double usualInterval(const std::vector<GlucoseTrace::Point>& points)
{
    std::vector<double> spacings;
    spacings.reserve(points.size());
    for (std::size_t i = 1; i < points.size(); ++i)
        spacings.push_back(points[i].seconds - points[i - 1].seconds);
    const auto middle = spacings.begin() + static_cast<std::ptrdiff_t>(spacings.size() / 2);
    std::nth_element(spacings.begin(), middle, spacings.end());
    return *middle;
}

GlucoseTrace embedded(std::string_view csv)
{
    auto parsed = GlucoseTrace::parse(csv);
    if (!parsed)
        std::abort();
    return *std::move(parsed);
}

}  // namespace

std::expected<GlucoseTrace, std::string> GlucoseTrace::parse(std::string_view csv)
{
    std::optional<Columns> columns;
    std::optional<std::string_view> subject;
    std::optional<double> first;
    GlucoseTrace trace;
    for (std::size_t lineNumber = 1; !csv.empty(); ++lineNumber) {
        const auto end = csv.find('\n');
        auto line = csv.substr(0, end);
        csv.remove_prefix(end == std::string_view::npos ? csv.size() : end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.empty())
            continue;
        if (!columns) {
            columns = columnsOf(line);
            if (columns->time < 0 || columns->value < 0)
                return std::unexpected{
                    fmt::format("Line {} must name the columns time_local and glucose_mgdl", lineNumber)};
            continue;
        }
        std::string_view timeText;
        std::string_view valueText;
        std::string_view subjectText;
        for (int index = 0; !line.empty(); ++index) {
            const auto field = takeField(line);
            if (index == columns->time)
                timeText = field;
            else if (index == columns->value)
                valueText = field;
            else if (index == columns->subject)
                subjectText = field;
        }
        if (subject && *subject != subjectText)
            continue;
        subject = subjectText;
        const auto time = localSeconds(timeText);
        if (!time)
            return std::unexpected{
                fmt::format("Line {} has no time of the form YYYY-MM-DDTHH:MM:SS", lineNumber)};
        const auto value = number<double>(valueText);
        if (!value || !(*value >= lowestValue && *value <= highestValue))
            return std::unexpected{fmt::format("Line {} has no glucose value in mg/dL", lineNumber)};
        const double seconds = *time - first.value_or(*time);
        first = first.value_or(*time);
        if (!trace.points.empty() && seconds < trace.points.back().seconds)
            return std::unexpected{fmt::format("Line {} is earlier than the line before", lineNumber)};
        if (!trace.points.empty() && seconds == trace.points.back().seconds)
            continue;
        if (trace.points.size() == mostReadings)
            return std::unexpected{fmt::format("Line {} is one too many: a trace has at most {} readings",
                                               lineNumber, mostReadings)};
        trace.points.push_back({.seconds = seconds, .mgdL = static_cast<int>(std::lround(*value))});
    }
    if (trace.points.size() < 2)
        return std::unexpected{std::string{"A trace needs at least two readings"}};
    return trace;
}

std::expected<GlucoseTrace, std::string> GlucoseTrace::load(const std::filesystem::path& file)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    std::ifstream stream{file, std::ios::binary};
    if (error || !stream)
        return std::unexpected{fmt::format("Cannot read {}", file.string())};
    if (size > mostBytes)
        return std::unexpected{fmt::format("{} is larger than 32 MiB", file.string())};
    std::ostringstream text;
    text << stream.rdbuf();
    auto trace = parse(text.view());
    if (!trace)
        return std::unexpected{fmt::format("{}: {}", file.string(), trace.error())};
    return trace;
}

const GlucoseTrace& GlucoseTrace::builtIn()
{
    static const GlucoseTrace trace = embedded(builtInTraceCsv);
    return trace;
}

const GlucoseTrace& GlucoseTrace::libre()
{
    static const GlucoseTrace trace = embedded(libreTraceCsv);
    return trace;
}

std::string_view trendWord(SimulatedTrend trend)
{
    using enum SimulatedTrend;
    switch (trend) {
    case none: return "None";
    case doubleUp: return "DoubleUp";
    case singleUp: return "SingleUp";
    case fortyFiveUp: return "FortyFiveUp";
    case flat: return "Flat";
    case fortyFiveDown: return "FortyFiveDown";
    case singleDown: return "SingleDown";
    case doubleDown: return "DoubleDown";
    case notComputable: return "NotComputable";
    case rateOutOfRange: return "RateOutOfRange";
    }
    std::unreachable();
}

TraceReplay::TraceReplay(const GlucoseTrace& trace)
    : trace_{&trace}, usual_{usualInterval(trace.points)}, round_{trace.points.back().seconds + usual_}
{
}

const GlucoseTrace::Point& TraceReplay::point(std::int64_t position) const
{
    const auto count = roundReadings();
    return trace_->points[static_cast<std::size_t>((position % count + count) % count)];
}

int TraceReplay::mgdL(std::int64_t position) const { return point(position).mgdL; }

double TraceReplay::spacing(std::int64_t position) const
{
    const double seconds = point(position).seconds;
    return seconds == 0 ? usual_ : seconds - point(position - 1).seconds;
}

SimulatedTrend TraceReplay::trend(std::int64_t position) const
{
    if (spacing(position) > 1.5 * usual_)
        return SimulatedTrend::notComputable;
    // Least squares through the readings of three intervals; time counts back from the newest.
    double count = 0;
    double sumX = 0;
    double sumY = 0;
    double sumXX = 0;
    double sumXY = 0;
    double x = 0;
    for (auto at = position; x >= -3.2 * usual_; --at) {
        const double y = mgdL(at);
        count += 1;
        sumX += x;
        sumY += y;
        sumXX += x * x;
        sumXY += x * y;
        x -= spacing(at);
    }
    const double perMinute = 60 * (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
    using enum SimulatedTrend;
    const double rate = std::abs(perMinute);
    if (rate <= 1)
        return flat;
    if (rate <= 2)
        return perMinute > 0 ? fortyFiveUp : fortyFiveDown;
    if (rate <= 3)
        return perMinute > 0 ? singleUp : singleDown;
    return perMinute > 0 ? doubleUp : doubleDown;
}

}  // namespace tidewell
