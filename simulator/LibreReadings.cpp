#include "simulator/LibreReadings.h"

#include <fmt/format.h>

#include <cmath>

#include "support/Random.h"

namespace tidewell {

namespace {

/// What a sensor shows at most; beyond it writes LO and HI.
constexpr double lowest = 40;
constexpr double highest = 400;
/// Where the colours of a measurement change, mg/dL.
constexpr int targetLow = 70;
constexpr int targetHigh = 180;
constexpr int farAbove = 250;
/// The arrow shows the change over the last quarter of an hour.
constexpr double slopeMinutes = 15;
/// 0 to 6, null and absent.
constexpr std::int64_t arrowForms = 9;
/// Longer than any graph, so that no measurement in it needs an older offset.
constexpr Seconds offsetsKept = 48h;
constexpr std::size_t mostOffsets = 100;

enum Purpose : std::uint64_t { jitterOf = 1, gapOf, smoothingOf, phaseOf };

Date wholeSecond(Date date) { return dateFromUnix(std::floor(unixSeconds(date))); }

/// "3/2/2026 7:55:13 AM", or "3/2/2026 7:55:13" with hours to 23.
std::string timeText(Date date, bool twentyFourHours)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss time{seconds - day};
    const auto hour = time.hours().count();
    const auto text = fmt::format("{}/{}/{} {}:{:02}:{:02}", unsigned{ymd.month()}, unsigned{ymd.day()},
                                  int{ymd.year()}, twentyFourHours ? hour : (hour + 11) % 12 + 1,
                                  time.minutes().count(), time.seconds().count());
    return twentyFourHours ? text : text + (hour < 12 ? " AM" : " PM");
}

int colour(int mgdL)
{
    if (mgdL < targetLow)
        return 4;
    return mgdL <= targetHigh ? 1 : mgdL <= farAbove ? 2 : 3;
}

}  // namespace

LibreReadings::LibreReadings(const GlucoseTrace& trace, double startSeconds, std::uint64_t seed,
                             const LibreReadingOptions& options, Date start)
    : curve_{trace},
      startSeconds_{startSeconds},
      seed_{seed},
      options_{options},
      origin_{wholeSecond(start - options.newestAge)},
      offsets_{{Date{}, options.timestampOffsetMinutes}}
{
    restart(options_.newestAge, start);
}

void LibreReadings::setOptions(const LibreReadingOptions& options, Date now)
{
    anchor_ = newestMeasured(now);
    since_ = options.publishing && !options_.publishing ? Date{} : now;
    if (options.frozen && !options_.frozen)
        frozen_ = anchor_;
    else if (!options.frozen)
        frozen_.reset();
    if (options.timestampOffsetMinutes != options_.timestampOffsetMinutes) {
        while (offsets_.size() == mostOffsets ||
               (offsets_.size() > 1 && now - offsets_[1].first > offsetsKept))
            offsets_.erase(offsets_.begin());
        offsets_.emplace_back(now, options.timestampOffsetMinutes);
    }
    options_ = options;
}

void LibreReadings::restart(Seconds age, Date now)
{
    anchor_ = wholeSecond(now - age);
    since_ = options_.frozen ? Date{} : now;
    if (options_.frozen)
        frozen_ = anchor_;
}

std::optional<LibreReadings::Measurement> LibreReadings::current(Date now) const
{
    if (options_.noCurrent)
        return std::nullopt;
    return measured(frozen_ ? *frozen_ : newestMeasured(now), 0);
}

std::vector<LibreReadings::Measurement> LibreReadings::graph(Date now) const
{
    std::vector<Measurement> all;
    if (options_.emptyGraph || options_.missingGraph)
        return all;
    const double interval = std::max(options_.graphInterval.count(), 1.0);
    const double phase = chance(0, phaseOf) * interval / 2;
    const auto slot = [&](Date date) {
        return static_cast<std::int64_t>(std::floor((unixSeconds(date) - phase) / interval));
    };
    const Date newest = newestMeasured(now);
    const auto last = slot(newest - options_.graphLag + options_.graphInterval / 2);
    // A clock that was set back does not make the graph longer.
    for (auto at = slot(std::max(now, newest) - options_.graphLag - options_.graphSpan) + 1; at <= last;
         ++at) {
        if (options_.gapShare > 0 && std::abs(chance(at, gapOf)) < options_.gapShare)
            continue;
        const Date date = dateFromUnix(phase + static_cast<double>(at) * interval) +
                          options_.graphJitter * chance(at, jitterOf);
        all.push_back(measured(wholeSecond(date), options_.smoothing * chance(at, smoothingOf)));
    }
    return all;
}

std::optional<LibreReadings::Measurement> LibreReadings::newest(Date now) const
{
    auto newest = current(now);
    if (const auto values = graph(now); !values.empty() && (!newest || values.back().date > newest->date))
        newest = values.back();
    return newest;
}

std::string LibreReadings::currentText(Date now) const
{
    const auto measurement = current(now);
    return measurement ? text(*measurement, true) : "null";
}

std::string LibreReadings::graphText(Date now) const
{
    std::string list{"["};
    for (const auto& measurement : graph(now)) {
        if (list.size() > 1)
            list += ',';
        list += text(measurement, false);
    }
    return list + ']';
}

/// The time of the newest measurement that has reached the service.
Date LibreReadings::newestMeasured(Date now) const
{
    if (!options_.publishing)
        return anchor_;
    const double interval = std::max(options_.currentInterval.count(), 1.0);
    const double steps = std::floor((now - options_.publicationDelay - anchor_).count() / interval);
    const Date newest = anchor_ + Seconds{std::max(steps, 0.0) * interval};
    return newest + options_.publicationDelay > since_ ? wholeSecond(newest) : anchor_;
}

LibreReadings::Measurement LibreReadings::measured(Date date, double difference) const
{
    const double value = curve_.mgdL(startSeconds_ + (date - origin_).count()) + difference;
    return {
        .date = date,
        .mgdL = options_.mgdL.value_or(static_cast<int>(std::lround(std::clamp(value, lowest, highest))))};
}

/// "TrendArrow" and its value, with the comma after it; empty when it is absent.
std::string LibreReadings::arrowText(Date date) const
{
    if (options_.noArrow)
        return {};
    if (options_.everyArrow) {
        const auto turn = static_cast<std::int64_t>(
            std::floor(unixSeconds(date) / std::max(options_.currentInterval.count(), 1.0)));
        const auto form = (turn % arrowForms + arrowForms) % arrowForms;
        if (form == arrowForms - 1)
            return {};
        return form == arrowForms - 2 ? R"("TrendArrow":null,)" : fmt::format(R"("TrendArrow":{},)", form);
    }
    const double at = startSeconds_ + (date - origin_).count();
    const double perMinute = (curve_.mgdL(at) - curve_.mgdL(at - slopeMinutes * 60)) / slopeMinutes;
    const int steps = std::abs(perMinute) <= 1 ? 0 : std::abs(perMinute) <= 2 ? 1 : 2;
    return fmt::format(R"("TrendArrow":{},)", options_.arrow.value_or(perMinute < 0 ? 3 - steps : 3 + steps));
}

std::string LibreReadings::text(const Measurement& measurement, bool isCurrent) const
{
    auto offset = offsets_.rbegin();
    while (offset + 1 != offsets_.rend() && offset->first > measurement.date)
        ++offset;
    const Date local = measurement.date + std::chrono::minutes{offset->second};
    const std::string trend =
        isCurrent ? arrowText(measurement.date) + R"("TrendMessage":null,)" : std::string{};
    // The service's mmol/L have one decimal.
    const double value = options_.mmolPerLitre ? std::round(measurement.mgdL / 1.8) / 10
                                               : static_cast<double>(measurement.mgdL);
    return fmt::format(
        R"({{"FactoryTimestamp":"{}","Timestamp":"{}","type":{},"ValueInMgPerDl":{},{}"MeasurementColor":{},)"
        R"("GlucoseUnits":{},"Value":{},"isHigh":false,"isLow":false}})",
        timeText(measurement.date, options_.twentyFourHours), timeText(local, options_.twentyFourHours),
        isCurrent ? 1 : 0, measurement.mgdL, trend, colour(measurement.mgdL), options_.mmolPerLitre ? 0 : 1,
        value);
}

/// Uniform in -1 ... +1, for each slot of the graph and each purpose its own, whatever was asked before.
double LibreReadings::chance(std::int64_t slot, std::uint64_t purpose) const
{
    SeededRandom random{seed_ ^ (static_cast<std::uint64_t>(slot) * 0x9E3779B97F4A7C15U) ^ (purpose << 56U)};
    return random.unit();
}

}  // namespace tidewell
