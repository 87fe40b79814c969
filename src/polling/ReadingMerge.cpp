#include "polling/ReadingMerge.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "sources/LibreSampling.h"

namespace tidewell {

namespace {

/// Its second, and whose it is.
using Identity = std::pair<double, GlucoseProvider>;

Identity identity(const GlucoseReading& reading)
{
    return {std::floor(unixSeconds(reading.date)), reading.source};
}

/// Of two readings in the same second the one fetched later, but no graph value for a current one.
void replace(GlucoseReading& reading, GlucoseReading&& later)
{
    if (!(isCurrentValue(reading) && isGraphValue(later)))
        reading = std::move(later);
}

/// Both by time, one reading to a second. A day of `held` is long, and in order already.
std::vector<GlucoseReading> onePerSecond(std::vector<GlucoseReading> held,
                                         std::vector<GlucoseReading> fetched)
{
    std::map<Identity, GlucoseReading> byIdentity;
    for (GlucoseReading& reading : fetched) {
        const auto [place, isNew] = byIdentity.try_emplace(identity(reading), std::move(reading));
        if (!isNew)
            replace(place->second, std::move(reading));
    }
    std::vector<GlucoseReading> all;
    all.reserve(held.size() + byIdentity.size());
    auto next = byIdentity.begin();
    for (GlucoseReading& reading : held) {
        for (; next != byIdentity.end() && next->first < identity(reading); ++next)
            all.push_back(std::move(next->second));
        all.push_back(std::move(reading));
        if (next != byIdentity.end() && next->first == identity(all.back()))
            replace(all.back(), std::move((next++)->second));
    }
    for (; next != byIdentity.end(); ++next)
        all.push_back(std::move(next->second));
    return all;
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

/// The current value may lag behind the graph. One that is a little older than `newest`, the newest reading
/// so far, would take its place, and the history would end earlier than before: then it is the current value
/// that goes.
void keepNewest(std::vector<GlucoseReading>& readings, const GlucoseReading& newest)
{
    if (!readings.empty() && identity(readings.back()) >= identity(newest))
        return;
    std::erase_if(readings, [&](const GlucoseReading& reading) {
        return isCurrentValue(reading) && reading.date >= newest.date - sameMeasurement;
    });
    readings.push_back(newest);
}

}  // namespace

std::vector<GlucoseReading> mergedReadings(std::vector<GlucoseReading> held,
                                           std::vector<GlucoseReading> fetched)
{
    const auto newestHeld = held.empty() ? std::nullopt : std::optional{identity(held.back())};
    std::vector<GlucoseReading> merged = onePerSecond(std::move(held), std::move(fetched));
    if (newestHeld) {
        const GlucoseReading newest = *std::ranges::lower_bound(merged, *newestHeld, {}, identity);
        removeDoubledGraphValues(merged);
        keepNewest(merged, newest);
    } else {
        removeDoubledGraphValues(merged);
    }
    if (!merged.empty()) {
        const Date earliest = merged.back().date - historyLength;
        std::erase_if(merged, [&](const GlucoseReading& reading) { return reading.date < earliest; });
    }
    return merged;
}

}  // namespace tidewell
