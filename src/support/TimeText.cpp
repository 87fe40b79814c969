#include "support/TimeText.h"

#include <date/tz.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <limits>

namespace tidewell {

namespace {

namespace chrono = std::chrono;

/// What the calendar texts can show: the years 0000 to 9999. What lies outside is shown as its edge.
constexpr double earliest = -62'167'219'200.0;
constexpr double latest = 253'402'300'799.0;

/// The whole second that `at` lies in; a date that is no number counts as the earliest.
chrono::sys_seconds wholeSecond(Date at)
{
    const double seconds = unixSeconds(at);
    const double shown = seconds > earliest ? std::min(seconds, latest) : earliest;
    return chrono::floor<chrono::seconds>(dateFromUnix(shown));
}

/// Of stored moments: the first and the last second of the years 1 to 9999.
constexpr double earliestStored = -62'135'596'800.0;
constexpr double latestStored = latest;

struct Calendar {
    int year;
    unsigned month;
    unsigned day;
    chrono::hh_mm_ss<chrono::seconds> time;
};

Calendar calendarOf(chrono::sys_seconds at)
{
    const auto day = chrono::floor<chrono::days>(at);
    const chrono::year_month_day date{day};
    return {int{date.year()}, unsigned{date.month()}, unsigned{date.day()}, chrono::hh_mm_ss{at - day}};
}

Calendar localCalendar(Date date, TimeZone zone) { return calendarOf(wholeSecond(date) + zone.offset(date)); }

/// Takes text apart from the front; once something is missing, `good` stays false.
struct Scanner {
    std::string_view rest;
    bool good = true;

    int digits(std::size_t count)
    {
        int value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (rest.empty() || rest.front() < '0' || rest.front() > '9') {
                good = false;
                return 0;
            }
            value = value * 10 + (rest.front() - '0');
            rest.remove_prefix(1);
        }
        return value;
    }

    bool accept(char wanted)
    {
        if (!good || rest.empty() || rest.front() != wanted)
            return false;
        rest.remove_prefix(1);
        return true;
    }

    void expect(char wanted) { good = accept(wanted) && good; }

    /// The digits after a decimal sign, as a share of one; at least one digit.
    double fraction()
    {
        double value = 0;
        double place = 1;
        good = good && !rest.empty() && rest.front() >= '0' && rest.front() <= '9';
        for (; !rest.empty() && rest.front() >= '0' && rest.front() <= '9'; rest.remove_prefix(1)) {
            if (place >= 1e15)
                continue;  // Beyond what a double of that size holds.
            value = value * 10 + (rest.front() - '0');
            place *= 10;
        }
        return value / place;
    }
};

/// Whatever the database throws (a zone it does not know, no database at all) means "none".
template <class Look>
const date::time_zone* zoneOrNull(Look look)
{
    try {
        return look();
    } catch (const std::exception&) {
        return nullptr;
    }
}

const date::time_zone* zoneNamed(std::string_view name)
{
    return zoneOrNull([name] { return date::locate_zone(name); });
}

/// The zone's name in a value of TZ: ":Europe/London" and "/usr/share/zoneinfo/Europe/London" are usual too.
std::string_view zoneNameIn(std::string_view variable)
{
    if (variable.starts_with(':'))
        variable.remove_prefix(1);
    constexpr std::string_view folder = "/zoneinfo/";
    if (const auto at = variable.find(folder); variable.starts_with('/') && at != std::string_view::npos)
        variable.remove_prefix(at + folder.size());
    return variable;
}

}  // namespace

TimeZone TimeZone::current()
{
    if (const char* const variable = std::getenv("TZ")) {
        const std::string_view name = zoneNameIn(variable);
        if (name.empty())
            return utc();  // As the C library has it.
        if (const auto zone = named(name))
            return *zone;
    }
    return TimeZone{zoneOrNull([] { return date::current_zone(); })};
}

std::optional<TimeZone> TimeZone::named(std::string_view name)
{
    if (name == "UTC")
        return utc();
    if (const date::time_zone* const zone = zoneNamed(name))
        return TimeZone{zone};
    return {};
}

TimeZone TimeZone::utc() { return TimeZone{nullptr}; }

std::string TimeZone::name() const
{
    return zone_ ? static_cast<const date::time_zone*>(zone_)->name() : "UTC";
}

std::chrono::seconds TimeZone::offset(Date at) const
{
    if (!zone_)
        return {};
    const auto second = date::sys_seconds{wholeSecond(at).time_since_epoch()};
    return static_cast<const date::time_zone*>(zone_)->get_info(second).offset;
}

TimeZone::OffsetSpan TimeZone::offsetSpan(Date at) const
{
    constexpr double forever = std::numeric_limits<double>::infinity();
    if (!zone_)
        return {dateFromUnix(-forever), dateFromUnix(forever), {}};
    const auto second = date::sys_seconds{wholeSecond(at).time_since_epoch()};
    const auto info = static_cast<const date::time_zone*>(zone_)->get_info(second);
    return {Date{info.begin.time_since_epoch()}, Date{info.end.time_since_epoch()}, info.offset};
}

std::string isoText(Date date)
{
    const Calendar shown = calendarOf(wholeSecond(date));
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", shown.year, shown.month, shown.day,
                       shown.time.hours().count(), shown.time.minutes().count(),
                       shown.time.seconds().count());
}

std::optional<Date> dateFromIso(std::string_view text)
{
    Scanner scanner{text};
    const int year = scanner.digits(4);
    scanner.expect('-');
    const int month = scanner.digits(2);
    scanner.expect('-');
    const int day = scanner.digits(2);
    scanner.expect('T');
    const int hour = scanner.digits(2);
    scanner.expect(':');
    const int minute = scanner.digits(2);
    scanner.expect(':');
    const int second = scanner.digits(2);
    const double fraction = scanner.accept('.') || scanner.accept(',') ? scanner.fraction() : 0;

    int offsetMinutes = 0;
    if (!scanner.accept('Z')) {
        const bool behind = scanner.accept('-');
        if (!behind)
            scanner.expect('+');
        const int hours = scanner.digits(2);
        int minutes = 0;
        if (scanner.accept(':') || !scanner.rest.empty())
            minutes = scanner.digits(2);
        if (hours > 23 || minutes > 59)
            return {};
        offsetMinutes = (behind ? -1 : 1) * (hours * 60 + minutes);
    }

    const chrono::year_month_day date{chrono::year{year}, chrono::month{static_cast<unsigned>(month)},
                                      chrono::day{static_cast<unsigned>(day)}};
    // Second 60 is a leap second (ISO 8601); POSIX time gives it to the next minute.
    if (!scanner.good || !scanner.rest.empty() || !date.ok() || hour > 23 || minute > 59 || second > 60)
        return {};
    const auto whole = chrono::sys_days{date}.time_since_epoch() + chrono::hours{hour} +
                       chrono::minutes{minute - offsetMinutes} + chrono::seconds{second};
    return Date{Seconds{whole} + Seconds{fraction}};
}

std::int64_t storedMilliseconds(Date date)
{
    const double seconds = unixSeconds(date);
    const double stored = seconds > earliestStored ? std::min(seconds, latestStored) : earliestStored;
    return std::llround(stored * 1000);
}

Date dateFromMilliseconds(std::int64_t milliseconds)
{
    return dateFromUnix(static_cast<double>(milliseconds) / 1000.0);
}

void appendStoredDate(std::string& text, Date date)
{
    const chrono::sys_time<chrono::milliseconds> moment{chrono::milliseconds{storedMilliseconds(date)}};
    const auto second = chrono::floor<chrono::seconds>(moment);
    const Calendar shown = calendarOf(second);
    const auto put = [&text](std::int64_t number, int digits) {
        const std::size_t end = text.size() + static_cast<std::size_t>(digits);
        text.resize(end);
        for (std::size_t i = end; digits > 0; --digits, number /= 10)
            text[--i] = static_cast<char>('0' + number % 10);
    };
    put(shown.year, 4);
    text += '-';
    put(shown.month, 2);
    text += '-';
    put(shown.day, 2);
    text += 'T';
    put(shown.time.hours().count(), 2);
    text += ':';
    put(shown.time.minutes().count(), 2);
    text += ':';
    put(shown.time.seconds().count(), 2);
    text += '.';
    put((moment - second).count(), 3);
    text += 'Z';
}

std::optional<Date> dateFromStored(std::string_view text)
{
    const auto date = dateFromIso(text);
    if (!date || unixSeconds(*date) < earliestStored || unixSeconds(*date) > latestStored)
        return {};
    return dateFromMilliseconds(storedMilliseconds(*date));
}

std::string localMediumText(Date date, TimeZone zone)
{
    constexpr std::array<std::string_view, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const Calendar shown = localCalendar(date, zone);
    return fmt::format("{} {}, {} at {:02}:{:02}:{:02}", months[shown.month - 1], shown.day, shown.year,
                       shown.time.hours().count(), shown.time.minutes().count(),
                       shown.time.seconds().count());
}

std::string localTimeOfDay(Date date, TimeZone zone)
{
    const Calendar shown = localCalendar(date, zone);
    return fmt::format("{:02}:{:02}", shown.time.hours().count(), shown.time.minutes().count());
}

}  // namespace tidewell
