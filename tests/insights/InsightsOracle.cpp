#include "InsightsOracle.h"

#include <set>

namespace tidewell {

namespace {

std::int64_t wholeSeconds(Date date) { return static_cast<std::int64_t>(unixSeconds(date)); }

/// Of the local clock. Offsets change on full quarters of an hour in all zones that are tested.
class SlowClock {
public:
    explicit SlowClock(TimeZone zone) : zone_{zone} {}
    std::int64_t local(std::int64_t second)
    {
        if (const auto quarter = second / 900; quarter != quarter_) {
            quarter_ = quarter;
            offset_ = zone_.offset(dateFromUnix(static_cast<double>(quarter * 900))).count();
        }
        return second + offset_;
    }

private:
    TimeZone zone_;
    std::int64_t quarter_ = -1;
    std::int64_t offset_ = 0;
};

}  // namespace

std::optional<double> InsightsOracle::percentile(
    std::vector<std::pair<std::int64_t, std::int64_t>> valuesAndSeconds, int hundredths)
{
    if (valuesAndSeconds.empty())
        return {};
    std::map<std::int64_t, std::int64_t> seconds;
    std::set<std::int64_t> different;
    std::vector<std::int64_t> sorted;
    std::int64_t total = 0;
    for (const auto& [value, duration] : valuesAndSeconds) {
        seconds[value] += duration;
        different.insert(duration);
        sorted.push_back(value);
        total += duration;
    }
    if (different.size() == 1) {
        std::ranges::sort(sorted);
        const auto h = hundredths * (std::ssize(sorted) - 1);  // In hundredths.
        const auto below = static_cast<std::size_t>(h / 100);
        const auto rest = static_cast<double>(h % 100) / 100;
        if (h % 100 == 0)
            return static_cast<double>(sorted[below]);
        return static_cast<double>(sorted[below]) +
               rest * static_cast<double>(sorted[below + 1] - sorted[below]);
    }
    // Everything times 200, so that halves and hundredths are whole.
    const std::int64_t target = 2 * hundredths * total;
    std::optional<std::pair<std::int64_t, std::int64_t>> before;
    std::int64_t below = 0;
    for (const auto& [value, duration] : seconds) {
        const std::int64_t middle = 200 * below + 100 * duration;
        if (target <= middle) {
            if (!before)
                return static_cast<double>(value);
            return static_cast<double>(before->first) + static_cast<double>(target - before->second) *
                                                            static_cast<double>(value - before->first) /
                                                            static_cast<double>(middle - before->second);
        }
        before = {value, middle};
        below += duration;
    }
    return static_cast<double>(before->first);
}

InsightsOracle::InsightsOracle(const InsightsCalculationInput& input)
{
    std::map<std::int64_t, InsightsReading> readings;
    for (const auto& reading : input.readings)
        if (auto& known = readings[wholeSeconds(reading.date)]; reading.fetchedAt >= known.fetchedAt)
            known = reading;
    const auto begin = wholeSeconds(input.interval.start);
    const auto end = wholeSeconds(input.interval.end);
    SlowClock clock{input.zone};
    std::map<std::int64_t, std::int64_t> seconds;  // By the time of the reading.
    std::map<std::int64_t, Share> nights;
    constexpr std::int64_t around = 30 * 3600;
    auto current = readings.end();
    auto next = readings.begin();
    for (std::int64_t second = begin - around; second < end + around; ++second) {
        for (; next != readings.end() && next->first <= second; ++next)
            current = next;
        const bool inside = second >= begin && second < end;
        const bool covered =
            inside && current != readings.end() &&
            second < current->first + static_cast<std::int64_t>(current->second.sampleDuration.count());
        const auto local = clock.local(second);
        const auto date = local / 86'400;
        const auto hour = static_cast<std::size_t>(local % 86'400 / 3600);
        if (hour < 6) {
            nights[date].covered += covered;
            nights[date].total += inside ? 1 : 1'000'000;  // Marks one that the period cuts.
        }
        if (!inside)
            continue;
        for (Share* const share : {&days[date], &hours[hour]}) {
            share->covered += covered;
            ++share->total;
        }
        if (covered)
            ++seconds[current->first];
    }
    std::erase_if(nights, [](const auto& night) { return night.second.total >= 1'000'000; });
    std::int64_t missing = 0;
    for (const auto& [date, night] : nights)
        missing += night.covered * 10 < night.total * 7;
    missesNights = missing >= 3 && missing * 2 >= std::ssize(nights);

    std::int64_t sum = 0;
    std::array<std::vector<std::pair<std::int64_t, std::int64_t>>, 96> values;
    std::array<std::set<std::int64_t>, 96> dates;
    for (const auto& [time, duration] : seconds) {
        const auto value = static_cast<std::int64_t>(readings.at(time).mgdL);
        valuesAndSeconds.emplace_back(value, duration);
        const std::size_t band = value < 54 ? 0 : value < 70 ? 1 : value <= 180 ? 2 : value <= 250 ? 3 : 4;
        bandSeconds[band] += duration;
        ++bandCounts[band];
        total += duration;
        sum += value * duration;
        const auto local = clock.local(time);
        const auto bin = static_cast<std::size_t>(local % 86'400 / 900);
        values[bin].emplace_back(value, duration);
        dates[bin].insert(local / 86'400);
    }
    if (total > 0) {
        mean = static_cast<double>(sum) / static_cast<double>(total);
        // The sum of squares of total x value - sum stays whole, in 128 bits.
        long double squares = 0;
        for (const auto& [value, duration] : valuesAndSeconds) {
            const auto distance = static_cast<long double>(total * value - sum);
            squares += static_cast<long double>(duration) * distance * distance;
        }
        const auto t = static_cast<long double>(total);
        deviation = static_cast<double>(std::sqrt(squares / t) / t);
    }
    for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        bins[bin].dayCount = static_cast<int>(dates[bin].size());
        if (bins[bin].dayCount >= 3)
            for (std::size_t i = 0; i < 5; ++i)
                bins[bin].percentiles[i] = percentile(values[bin], std::array{5, 25, 50, 75, 95}[i]);
    }
}

}  // namespace tidewell
