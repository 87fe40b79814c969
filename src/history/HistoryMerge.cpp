#include "history/HistoryMerge.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "sources/LibreSampling.h"

namespace tidewell {

namespace {

/// A stored time differs from the one received by the rounding to milliseconds at most.
constexpr Seconds storedTimePrecision{0.001};

bool sortsBefore(const StoredReading& left, const StoredReading& right)
{
    return std::tuple{left.reading.date, left.reading.source} <
           std::tuple{right.reading.date, right.reading.source};
}

double secondOf(Date date) { return std::floor(unixSeconds(date)); }

/// The reading of the same source within the same second; the end when there is none.
std::vector<StoredReading>::iterator counterpart(std::vector<StoredReading>& readings,
                                                 const GlucoseReading& reading)
{
    const double second = secondOf(reading.date);
    auto found = std::ranges::lower_bound(readings, dateFromUnix(second), {},
                                          [](const StoredReading& stored) { return stored.reading.date; });
    while (found != readings.end() && secondOf(found->reading.date) == second) {
        if (found->reading.source == reading.source)
            return found;
        ++found;
    }
    return readings.end();
}

bool hasCurrentValueNear(const std::vector<StoredReading>& readings, Date date)
{
    auto near = std::ranges::lower_bound(readings, date - sameMeasurement, {},
                                         [](const StoredReading& stored) { return stored.reading.date; });
    for (; near != readings.end() && near->reading.date <= date + sameMeasurement; ++near) {
        if (isCurrentValue(near->reading))
            return true;
    }
    return false;
}

/// Whether the later one takes the earlier one's place.
bool replaces(const StoredReading& one, const StoredReading& existing, HistoryMergeRule rule)
{
    if (rule == HistoryMergeRule::keepsExisting || existing.reading == one.reading ||
        one.fetchedAt < existing.fetchedAt)
        return false;
    return rule == HistoryMergeRule::takesOver ||
           !(isCurrentValue(existing.reading) && isGraphValue(one.reading));
}

void mergeOne(std::vector<StoredReading>& readings, const StoredReading& one, HistoryMergeRule rule,
              HistoryMergeCount& count)
{
    const auto existing = counterpart(readings, one.reading);
    const bool isThere = existing != readings.end();
    const bool isDoubled = !isThere && rule == HistoryMergeRule::laterFetchWins &&
                           isGraphValue(one.reading) && hasCurrentValueNear(readings, one.reading.date);
    if (isDoubled || (isThere && !replaces(one, *existing, rule))) {
        ++count.same;
        return;
    }
    if (isThere)
        readings.erase(existing);  // Its fraction of a second may give the new one another place.
    readings.insert(std::ranges::upper_bound(readings, one, sortsBefore), one);
    ++count.changed;
}

}  // namespace

std::optional<GlucoseReading> storableReading(const GlucoseReading& reading)
{
    if (!std::isfinite(reading.mgdL) || !std::isfinite(unixSeconds(reading.date)))
        return std::nullopt;
    GlucoseReading finite = reading;
    if (!std::isfinite(finite.sampleDuration.count()))
        finite.sampleDuration = Seconds{0};  // Decoding gives it the duration of one that is unknown.
    // Through its text, and no shorter way: whatever that would not give back would damage the whole day.
    const auto document = parseJson(compactJson(encode(finite)));
    if (!document)
        return std::nullopt;
    const auto stored = decodeReading(*document);
    if (!stored || std::chrono::abs(stored->date - reading.date) > storedTimePrecision)
        return std::nullopt;
    return *stored;
}

HistoryMergeCount mergeReadings(std::vector<StoredReading>& readings, std::span<const StoredReading> more,
                                HistoryMergeRule rule)
{
    HistoryMergeCount count;
    // Graph values last: it makes no difference which of them and the current ones came first.
    for (const bool graphValues : {false, true}) {
        for (const StoredReading& one : more) {
            if ((rule == HistoryMergeRule::laterFetchWins && isGraphValue(one.reading)) == graphValues)
                mergeOne(readings, one, rule, count);
        }
    }
    return count;
}

std::size_t dropReadingsBefore(std::vector<StoredReading>& readings, Date oldest)
{
    return std::erase_if(readings, [&](const StoredReading& stored) { return stored.reading.date < oldest; });
}

}  // namespace tidewell
