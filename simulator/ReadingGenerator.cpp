#include "simulator/ReadingGenerator.h"

#include <fmt/format.h>

#include <boost/json/serialize.hpp>
#include <cmath>
#include <iterator>

#include "support/Json.h"
#include "support/Random.h"

namespace tidewell {

namespace {

constexpr std::int64_t mostMinutes = 1440;
constexpr std::int64_t mostReadings = 288;
/// More than the longest window that a request can ask for, so that late readings still find their place.
constexpr Seconds kept = 26h;
/// Two uploads of one reading, by a phone and by a watch.
constexpr Seconds duplicateDistance = 9s;
/// What a sensor reports beyond its range.
constexpr int low = 39;
constexpr int high = 401;
/// No word of the service.
constexpr std::string_view unknownTrend = "SidewaysLoop";
constexpr std::int64_t trendCount = 11;

enum Purpose : std::uint64_t { driftOf = 1, jitterOf, gapOf, lateOf };

}  // namespace

ReadingGenerator::ReadingGenerator(const GlucoseTrace& trace, std::int64_t startPosition, std::uint64_t seed,
                                   const ReadingOptions& options, Date start)
    : replay_{trace}, seed_{seed}, options_{options}, next_{startPosition}
{
    const Date newest = start - options_.newestAge;
    fillBefore(newest);
    anchor(newest, start);
}

void ReadingGenerator::setOptions(const ReadingOptions& options, Date now)
{
    advance(now);
    const bool lost = options_.publishing && !options.publishing;
    const bool found = !options_.publishing && options.publishing;
    options_ = options;
    if (lost)
        for (auto& entry : entries_)
            entry.withheld = entry.withheld || entry.visible > now;
    if (found && options_.backfill) {
        for (auto& entry : entries_) {
            if (entry.withheld)
                entry.visible = std::max(now, entry.date);
            entry.withheld = false;
        }
    }
    if (found && !options_.backfill)
        std::erase_if(entries_, [](const Entry& entry) { return entry.withheld; });
    for (auto& entry : entries_)
        entry.text = encoded(entry);
}

void ReadingGenerator::restart(Seconds age, Date now)
{
    advance(now);
    const Date newest = now - age;
    std::erase_if(entries_, [newest](const Entry& entry) { return entry.date >= newest; });
    anchor(newest, now);
}

std::string ReadingGenerator::read(std::int64_t minutes, std::int64_t maxCount, Date now)
{
    advance(now);
    const auto limit = std::clamp<std::int64_t>(maxCount, 0, mostReadings);
    const Date oldest = now - std::chrono::minutes{std::clamp<std::int64_t>(minutes, 0, mostMinutes)};
    std::string array{"["};
    std::int64_t count = 0;
    for (auto entry = entries_.rbegin(); entry != entries_.rend() && count < limit && entry->date > oldest;
         ++entry) {
        if (options_.empty || entry->withheld || entry->visible > now)
            continue;
        if (count++ > 0)
            array += ',';
        array += entry->text;
    }
    array += ']';
    return array;
}

std::optional<ReadingGenerator::Newest> ReadingGenerator::newest(Date now)
{
    advance(now);
    const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [now](const Entry& entry) {
        return !entry.withheld && entry.visible <= now;
    });
    if (options_.empty || found == entries_.rend())
        return std::nullopt;
    return Newest{.date = found->date, .mgdL = value(found->position)};
}

/// The day before the newest reading, backwards from it.
void ReadingGenerator::fillBefore(Date newest)
{
    Date grid = newest;
    for (auto position = next_; newest - grid < kept;) {
        grid -= spacing(position);
        addReading(--position, grid, false);
    }
}

/// The sensor's next reading is the service's newest one, whatever the options say of gaps and delays.
void ReadingGenerator::anchor(Date newest, Date now)
{
    Entry entry{.date = rounded(newest), .visible = now, .position = next_, .withheld = false};
    entry.text = encoded(entry);
    insert(std::move(entry));
    nextGrid_ = newest + spacing(++next_);
    while (options_.publishing && nextGrid_ + options_.publicationDelay <= now)
        nextGrid_ += spacing(++next_);
}

void ReadingGenerator::advance(Date now)
{
    // A clock that was put on by weeks leaves out whole rounds instead of making their readings.
    if (const Seconds behind = now - nextGrid_ - 2 * kept; behind > Seconds{replay_.roundSeconds()}) {
        const bool fixed = options_.spacing > Seconds{0};
        const double step = fixed ? options_.spacing.count() : replay_.roundSeconds();
        const double steps = std::floor(behind.count() / step);
        nextGrid_ += Seconds{steps * step};
        next_ += static_cast<std::int64_t>(steps) * (fixed ? 1 : replay_.roundReadings());
    }
    while (nextGrid_ - options_.drift <= now) {
        if (now - nextGrid_ < kept)
            addReading(next_, nextGrid_, !options_.publishing);
        nextGrid_ += spacing(++next_);
    }
    while (!entries_.empty() && now - entries_.front().date > kept)
        entries_.pop_front();
}

void ReadingGenerator::addReading(std::int64_t position, Date grid, bool withheld)
{
    if (options_.gapShare > 0 && std::abs(chance(position, gapOf)) < options_.gapShare)
        return;
    const Date date = rounded(grid + options_.drift * chance(position, driftOf));
    Date visible =
        date + options_.publicationDelay + options_.publicationJitter * std::abs(chance(position, jitterOf));
    if (options_.lateShare > 0 && std::abs(chance(position, lateOf)) < options_.lateShare)
        visible += options_.lateBy;
    Entry entry{.date = date, .visible = visible, .position = position, .withheld = withheld};
    entry.text = encoded(entry);
    if (options_.duplicates) {
        Entry twin = entry;
        twin.date += duplicateDistance;
        twin.visible += duplicateDistance;
        twin.text = encoded(twin);
        insert(std::move(twin));
    }
    insert(std::move(entry));
}

/// Nearly always at one of the ends.
void ReadingGenerator::insert(Entry entry)
{
    const auto later = [](const Entry& a, const Entry& b) { return a.date < b.date; };
    if (entries_.empty() || !later(entry, entries_.back()))
        entries_.push_back(std::move(entry));
    else if (later(entry, entries_.front()))
        entries_.push_front(std::move(entry));
    else
        entries_.insert(std::upper_bound(entries_.begin(), entries_.end(), entry, later), std::move(entry));
}

Seconds ReadingGenerator::spacing(std::int64_t position) const
{
    return options_.spacing > Seconds{0} ? options_.spacing : Seconds{replay_.spacing(position)};
}

Date ReadingGenerator::rounded(Date date) const
{
    const double milliseconds = unixSeconds(date) * 1000;
    return dateFromUnix(options_.wholeSeconds ? std::floor(milliseconds / 1000)
                                              : std::round(milliseconds) / 1000);
}

/// Uniform in -1 ... +1, for each reading and purpose its own, whatever was asked before.
double ReadingGenerator::chance(std::int64_t position, std::uint64_t purpose) const
{
    SeededRandom random{seed_ ^ (static_cast<std::uint64_t>(position) * 0x9E3779B97F4A7C15U) ^
                        (purpose << 56U)};
    return random.unit();
}

int ReadingGenerator::value(std::int64_t position) const
{
    return options_.mgdL.value_or(std::clamp(replay_.mgdL(position), low, high));
}

std::string ReadingGenerator::encoded(const Entry& entry) const
{
    const auto milliseconds = std::llround(unixSeconds(entry.date) * 1000);
    const auto system = milliseconds + std::llround(options_.systemTimeAhead.count() * 1000);
    const std::string_view slash = options_.slashes ? "/" : "";
    const int offset = std::abs(options_.displayOffsetMinutes);
    std::string text{"{"};
    const auto out = std::back_inserter(text);
    if (options_.worldTime)
        fmt::format_to(out, R"("WT":"{0}Date({1}){0}",)", slash, milliseconds);
    fmt::format_to(out,
                   R"("ST":"{0}Date({1}){0}","DT":"{0}Date({2}{3}{4:02}{5:02}){0}","Value":{6},"Trend":)",
                   slash, system, milliseconds, options_.displayOffsetMinutes < 0 ? '-' : '+', offset / 60,
                   offset % 60, value(entry.position));

    const auto turn = (entry.position % trendCount + trendCount) % trendCount;
    const bool unknown = options_.everyTrend && turn == trendCount - 1;
    const auto trend = options_.everyTrend && !unknown ? SimulatedTrend{static_cast<int>(turn)}
                                                       : replay_.trend(entry.position);
    if (options_.trend)
        fmt::format_to(out, "{}}}", json::serialize(*options_.trend));
    else if (options_.numericTrend)
        fmt::format_to(out, "{}}}", unknown ? trendCount : static_cast<std::int64_t>(trend));
    else
        fmt::format_to(out, R"("{}"}})", unknown ? unknownTrend : trendWord(trend));
    return text;
}

}  // namespace tidewell
