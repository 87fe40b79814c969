#include "sources/DexcomAnswers.h"

#include <boost/json/array.hpp>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "sources/ReadingLimits.h"

namespace tidewell {

namespace {

/// A full day of readings is about 45 KB; the rest is room for growth.
constexpr JsonLimits answerLimits{.bytes = 1024 * 1024, .depth = 8};

constexpr std::size_t longestTrendWord = 64;

/// Within this the same value is the same measurement.
constexpr Seconds duplicateWindow = 30s;

constexpr std::string_view internalError = "SSO_InternalError";
constexpr std::array<std::string_view, 9> knownCodes{
    "AccountPasswordInvalid",
    "SSO_AuthenticatePasswordInvalid",
    "SSO_AuthenticateAccountNotFound",
    "SSO_AuthenticateMaxAttemptsExceeed",
    "SSO_AuthenticateMaxAttemptsExceeded",
    "InvalidArgument",
    "SessionIdNotFound",
    "SessionNotValid",
    internalError,
};

std::expected<GlucoseReading, GlucoseReadingError> possibleReading(const json::value& element, Date now)
{
    auto reading = readingFromDexcom(element);
    if (!reading)
        return reading;
    if (!isPossibleValue(reading->mgdL))
        return std::unexpected{GlucoseReadingError::missingValue};
    if (reading->trendString.size() > longestTrendWord)
        return std::unexpected{GlucoseReadingError::missingTrend};
    if (!isPossibleTime(reading->date, now))
        return std::unexpected{GlucoseReadingError::invalidTimestamp};
    return reading;
}

bool isDuplicate(const GlucoseReading& reading, const GlucoseReading& kept)
{
    // Times of the same binary magnitude (2004 to 2038) are rounded alike, so 30 s apart is exactly 30 here.
    const Seconds apart = kept.date - reading.date;
    return apart >= Seconds{0} && apart <= duplicateWindow && reading.mgdL == kept.mgdL &&
           reading.trendString == kept.trendString;
}

DexcomError parsingFailed(std::string message)
{
    return {.kind = DexcomError::Kind::parsingFailed, .message = std::move(message)};
}

}  // namespace

std::expected<DexcomReadings, DexcomError> dexcomReadings(std::string_view body, Date now)
{
    const auto document = parseJson(body, answerLimits);
    const json::array* elements = document ? document->if_array() : nullptr;
    if (!elements)
        return std::unexpected{parsingFailed("Expected an array of glucose readings")};
    if (elements->empty())
        return std::unexpected{DexcomError{.kind = DexcomError::Kind::noReadingsAvailable}};

    DexcomReadings result;
    std::optional<GlucoseReadingError> firstFault;
    for (const json::value& element : *elements) {
        if (auto reading = possibleReading(element, now)) {
            result.readings.push_back(*std::move(reading));
            continue;
        } else if (!firstFault) {
            firstFault = reading.error();
        }
        ++result.unreadable;
    }
    if (result.readings.empty())
        return std::unexpected{parsingFailed(description(*firstFault))};
    result.duplicates = removeCloseDuplicates(result.readings);
    return result;
}

std::size_t removeCloseDuplicates(std::vector<GlucoseReading>& readings)
{
    // By hand: "equal to the last kept one" is no equivalence, which std::unique would ask for.
    std::vector<GlucoseReading> kept;
    kept.reserve(readings.size());
    for (GlucoseReading& reading : readings) {
        if (kept.empty() || !isDuplicate(reading, kept.back()))
            kept.push_back(std::move(reading));
    }
    const std::size_t removed = readings.size() - kept.size();
    readings = std::move(kept);
    return removed;
}

std::string_view dexcomId(std::string_view body)
{
    constexpr std::string_view around = "\" \t\r\n";
    const std::size_t first = body.find_first_not_of(around);
    if (first == std::string_view::npos)
        return {};
    return body.substr(first, body.find_last_not_of(around) - first + 1);
}

std::string dexcomErrorCode(std::string_view body)
{
    const auto document = parseJson(body, answerLimits);
    const json::object* object = document ? document->if_object() : nullptr;
    if (!object)
        return {};
    const auto code = optionalText(*object, "Code");
    if (!code || !*code || std::ranges::find(knownCodes, **code) == knownCodes.end())
        return {};
    if (**code == internalError) {
        const auto message = optionalText(*object, "Message");
        if (!message || !*message ||
            !((*message)->contains("Cannot Authenticate") || (*message)->contains("401")))
            return {};
    }
    return **code;
}

}  // namespace tidewell
