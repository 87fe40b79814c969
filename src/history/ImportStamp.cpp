#include "history/ImportStamp.h"

#include <algorithm>
#include <string>

#include "sources/GlucoseReading.h"

namespace tidewell {

namespace {

constexpr double secondsOfDay = 86400;

class Digits {
public:
    explicit Digits(std::string_view text) : rest_{text} {}
    /// A number of one to `most` digits.
    std::optional<int> number(std::size_t least, std::size_t most)
    {
        std::size_t count = 0;
        int value = 0;
        while (count < most && count < rest_.size() && rest_[count] >= '0' && rest_[count] <= '9')
            value = value * 10 + (rest_[count++] - '0');
        if (count < least)
            return {};
        rest_.remove_prefix(count);
        return value;
    }
    bool accept(std::string_view oneOf)
    {
        if (rest_.empty() || !oneOf.contains(rest_.front()))
            return false;
        rest_.remove_prefix(1);
        return true;
    }
    [[nodiscard]] std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
};

/// "14:05", "14:05:59.5", "2:05 PM": seconds since midnight.
std::optional<double> timeOfDay(Digits digits)
{
    const auto hour = digits.number(1, 2);
    if (!hour || !digits.accept(":"))
        return {};
    const auto minute = digits.number(2, 2);
    if (!minute || *minute > 59)
        return {};
    double seconds = 0;
    if (digits.accept(":")) {
        const auto whole = digits.number(2, 2);
        if (!whole || *whole > 59)
            return {};
        seconds = *whole;
        if (digits.accept(".")) {
            const auto milliseconds = digits.number(1, 3);
            if (!milliseconds)
                return {};
            seconds += *milliseconds / 1000.0;
        }
    }
    int hours = *hour;
    if (digits.accept(" ")) {
        const std::string half = lowerCased(digits.rest());
        if (!(half == "am" || half == "pm") || hours < 1 || hours > 12)
            return {};
        hours = hours % 12 + (half == "pm" ? 12 : 0);
    } else if (!digits.rest().empty()) {
        return {};
    }
    if (hours > 23)
        return {};
    return hours * 3600.0 + *minute * 60.0 + seconds;
}

}  // namespace

std::optional<ImportStamp> isoStamp(std::string_view text)
{
    std::string iso{text};
    if (iso.size() > 10 && iso[10] == ' ')
        iso[10] = 'T';
    if (const auto date = dateFromIso(iso))
        return ImportStamp{.seconds = unixSeconds(*date)};
    Digits digits{iso};
    const auto year = digits.number(4, 4);
    if (!year || !digits.accept("-/"))
        return {};
    const auto month = digits.number(1, 2);
    if (!month || !digits.accept("-/"))
        return {};
    const auto day = digits.number(1, 2);
    if (!day || !digits.accept("T "))
        return {};
    const auto time = timeOfDay(digits);
    if (!time)
        return {};
    return ImportStamp{.form = ImportStamp::Form::yearFirst,
                       .first = static_cast<std::uint8_t>(*month),
                       .second = static_cast<std::uint8_t>(*day),
                       .year = static_cast<std::int16_t>(*year),
                       .seconds = *time};
}

std::optional<ImportStamp> reportStamp(std::string_view text)
{
    if (const auto stamp = isoStamp(text))
        return stamp;
    Digits digits{text};
    const auto first = digits.number(1, 2);
    const bool dots = digits.rest().starts_with('.');
    if (!first || !digits.accept("-/."))
        return {};
    const auto second = digits.number(1, 2);
    if (!second || !digits.accept(dots ? "." : "-/"))
        return {};
    const auto year = digits.number(4, 4);
    if (!year || !digits.accept(" T"))
        return {};
    const auto time = timeOfDay(digits);
    if (!time)
        return {};
    return ImportStamp{.form = dots ? ImportStamp::Form::dayFirst : ImportStamp::Form::unknownOrder,
                       .first = static_cast<std::uint8_t>(*first),
                       .second = static_cast<std::uint8_t>(*second),
                       .year = static_cast<std::int16_t>(*year),
                       .seconds = *time};
}

std::vector<double> momentsOf(double local, TimeZone zone)
{
    // Zones change their offset by less than a day, and not twice within two.
    const double before = static_cast<double>(zone.offset(dateFromUnix(local - secondsOfDay)).count());
    const double after = static_cast<double>(zone.offset(dateFromUnix(local + secondsOfDay)).count());
    std::vector<double> moments;
    for (const double offset : {std::max(before, after), std::min(before, after)}) {
        const double moment = local - offset;
        if (static_cast<double>(zone.offset(dateFromUnix(moment)).count()) == offset &&
            (moments.empty() || moments.front() != moment))
            moments.push_back(moment);
    }
    return moments;
}

}  // namespace tidewell
