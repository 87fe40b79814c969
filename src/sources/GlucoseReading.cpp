#include "sources/GlucoseReading.h"

#include <boost/json/array.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "support/TimeText.h"

namespace tidewell {

namespace {

/// Both services publish a value every five minutes; a stored reading without a duration is one of those.
constexpr Seconds usualSampleDuration{300};
/// A sample stands for no longer, however long the gap after it: what came between was not measured.
constexpr Seconds longestSampleDuration{900};
/// For a stored duration that cannot be true.
constexpr Seconds fallbackSampleDuration{60};

struct Trend {
    std::string_view word;  ///< In lower case.
    std::string_view arrow;
    std::string_view phrase;
};

constexpr std::array trends{
    Trend{"doubleup", "↑↑", "rising quickly"},       Trend{"singleup", "↑", "rising"},
    Trend{"fortyfiveup", "↗", "rising slightly"},    Trend{"flat", "→", "steady"},
    Trend{"fortyfivedown", "↘", "falling slightly"}, Trend{"singledown", "↓", "falling"},
    Trend{"doubledown", "↓↓", "falling quickly"},
};
constexpr Trend unknownTrend{"", "?", "unknown trend"};

const Trend& trendOf(std::string_view word)
{
    const auto found = std::ranges::find(trends, lowerCased(word), &Trend::word);
    return found == trends.end() ? unknownTrend : *found;
}

bool skipPrefix(std::string_view& text, std::string_view prefix)
{
    if (!text.starts_with(prefix))
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

std::string_view takeDigits(std::string_view& text)
{
    const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
    text.remove_prefix(digits.size());
    return digits;
}

/// The milliseconds since 1970 of "Date(1772438113482)", with or without an offset ("-0500") before the
/// closing parenthesis and a slash at either end. The count is absolute: the offset only says how a phone
/// showed it.
std::optional<std::int64_t> dexcomMilliseconds(std::string_view text)
{
    skipPrefix(text, "/");
    if (!skipPrefix(text, "Date("))
        return std::nullopt;
    const std::string_view digits = takeDigits(text);
    if (skipPrefix(text, "+") || skipPrefix(text, "-")) {
        if (takeDigits(text).empty())
            return std::nullopt;
    }
    if (!skipPrefix(text, ")"))
        return std::nullopt;
    skipPrefix(text, "/");
    std::int64_t milliseconds = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), milliseconds);
    if (!text.empty() || error != std::errc{})
        return std::nullopt;
    return milliseconds;
}

/// A whole number without the exponent that JSON text would otherwise give a double.
json::value numberValue(double number)
{
    constexpr double wholeBelow = 1e15;
    if (std::abs(number) < wholeBelow && number == std::trunc(number))
        return static_cast<std::int64_t>(number);
    return number;
}

Seconds sampleDurationOf(std::optional<double> stored)
{
    if (!stored)
        return usualSampleDuration;
    if (!std::isfinite(*stored) || *stored <= 0)
        return fallbackSampleDuration;
    return std::min(Seconds{*stored}, longestSampleDuration);
}

}  // namespace

GlucoseReading makeReading(double mgdL, std::string trend, Date date, Seconds sampleDuration,
                           GlucoseProvider source)
{
    std::string arrow{trendArrow(trend)};
    return {.mgdL = mgdL,
            .trendString = std::move(trend),
            .trendArrow = std::move(arrow),
            .date = date,
            .sampleDuration = sampleDuration,
            .source = source};
}

std::string description(GlucoseReadingError error)
{
    switch (error) {
    case GlucoseReadingError::invalidFormat: return "Invalid glucose reading format";
    case GlucoseReadingError::missingValue: return "Missing glucose value";
    case GlucoseReadingError::missingTrend: return "Missing trend information";
    case GlucoseReadingError::invalidTimestamp: return "Missing or invalid glucose reading timestamp";
    }
    std::unreachable();
}

std::string_view trendArrow(std::string_view trendWord) { return trendOf(trendWord).arrow; }

std::string_view trendPhrase(std::string_view trendWord) { return trendOf(trendWord).phrase; }

std::string lowerCased(std::string_view text)
{
    std::string lower{text};
    std::ranges::transform(lower, lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

std::expected<GlucoseReading, GlucoseReadingError> readingFromDexcom(const json::value& value)
{
    const json::object* object = value.if_object();
    if (!object)
        return std::unexpected{GlucoseReadingError::invalidFormat};

    const json::value* member = object->if_contains("Value");
    const std::optional<double> mgdL = member ? numberOf(*member) : std::nullopt;
    if (!mgdL)
        return std::unexpected{GlucoseReadingError::missingValue};

    const json::value* trend = object->if_contains("Trend");
    if (!trend || !trend->is_string())
        return std::unexpected{GlucoseReadingError::missingTrend};

    for (const std::string_view key : {"ST", "WT", "DT"}) {
        const json::value* time = object->if_contains(key);
        if (!time || !time->is_string())
            continue;
        if (const auto milliseconds = dexcomMilliseconds(time->get_string())) {
            return makeReading(*mgdL, std::string{trend->get_string()}, dateFromMilliseconds(*milliseconds),
                               usualSampleDuration, GlucoseProvider::dexcom);
        }
    }
    return std::unexpected{GlucoseReadingError::invalidTimestamp};
}

json::object encode(const GlucoseReading& reading)
{
    std::string date;
    appendStoredDate(date, reading.date);
    return {{"mgdL", numberValue(reading.mgdL)},
            {"trendString", reading.trendString},
            {"date", date},
            {"sampleDuration", numberValue(reading.sampleDuration.count())},
            {"source", rawValue(reading.source)}};
}

std::expected<GlucoseReading, GlucoseReadingError> decodeReading(const json::value& value)
{
    const json::object* object = value.if_object();
    if (!object)
        return std::unexpected{GlucoseReadingError::invalidFormat};

    // What has another type than it should counts as missing where a value is required.
    const auto mgdL = optionalNumber(*object, "mgdL");
    const auto trend = optionalText(*object, "trendString");
    const auto date = optionalText(*object, "date");
    const auto duration = optionalNumber(*object, "sampleDuration");
    const auto source = optionalText(*object, "source");
    const auto reading = readingOf({.mgdL = mgdL.value_or(std::nullopt),
                                    .trendString = trend.value_or(std::nullopt),
                                    .date = date.value_or(std::nullopt),
                                    .sampleDuration = duration.value_or(std::nullopt),
                                    .source = source.value_or(std::nullopt)});
    if (reading && (!duration || !source))
        return std::unexpected{GlucoseReadingError::invalidFormat};
    return reading;
}

std::expected<GlucoseReading, GlucoseReadingError> readingOf(const StoredReadingMembers& members)
{
    if (!members.mgdL || !std::isfinite(*members.mgdL))
        return std::unexpected{GlucoseReadingError::missingValue};
    if (!members.trendString)
        return std::unexpected{GlucoseReadingError::missingTrend};
    const std::optional<Date> date = members.date ? dateFromStored(*members.date) : std::nullopt;
    if (!date)
        return std::unexpected{GlucoseReadingError::invalidTimestamp};
    const std::optional<GlucoseProvider> source =
        members.source ? glucoseProvider(*members.source) : GlucoseProvider::dexcom;
    if (!source)
        return std::unexpected{GlucoseReadingError::invalidFormat};
    return makeReading(*members.mgdL, std::string{*members.trendString}, *date,
                       sampleDurationOf(members.sampleDuration), *source);
}

}  // namespace tidewell
