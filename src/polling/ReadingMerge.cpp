#include "polling/ReadingMerge.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace tidewell {

namespace {

/// A graph value this near to a current value is the same measurement.
constexpr Seconds sameMeasurement{30};
/// What a current value of LibreLinkUp stands for at most; a graph value stands for more.
constexpr Seconds longestCurrentSample{60};

std::pair<double, GlucoseProvider> identity(const GlucoseReading& reading)
{
    return {std::floor(unixSeconds(reading.date)), reading.source};
}

bool isCurrentValue(const GlucoseReading& reading)
{
    return reading.source == GlucoseProvider::libreLinkUp && reading.sampleDuration <= longestCurrentSample;
}

bool isGraphValue(const GlucoseReading& reading)
{
    return reading.source == GlucoseProvider::libreLinkUp && reading.sampleDuration > longestCurrentSample;
}

void removeDoubledGraphValues(std::vector<GlucoseReading>& readings)
{
    std::vector<Date> currentDates;
    for (const GlucoseReading& reading : readings) {
        if (isCurrentValue(reading))
            currentDates.push_back(reading.date);
    }
    std::erase_if(readings, [&](const GlucoseReading& reading) {
        if (!isGraphValue(reading))
            return false;
        const auto near = std::ranges::lower_bound(currentDates, reading.date - sameMeasurement);
        return near != currentDates.end() && *near <= reading.date + sameMeasurement;
    });
}

}  // namespace

std::vector<GlucoseReading> mergedReadings(std::vector<GlucoseReading> held,
                                           std::vector<GlucoseReading> fetched)
{
    std::map<std::pair<double, GlucoseProvider>, GlucoseReading> byIdentity;
    for (std::vector<GlucoseReading>* readings : {&held, &fetched}) {
        for (GlucoseReading& reading : *readings)
            byIdentity[identity(reading)] = std::move(reading);
    }
    std::vector<GlucoseReading> merged;
    merged.reserve(byIdentity.size());
    for (auto& [key, reading] : byIdentity)
        merged.push_back(std::move(reading));
    removeDoubledGraphValues(merged);
    if (!merged.empty()) {
        const Date earliest = merged.back().date - historyLength;
        std::erase_if(merged, [&](const GlucoseReading& reading) { return reading.date < earliest; });
    }
    return merged;
}

}  // namespace tidewell
