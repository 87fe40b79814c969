#pragma once

#include <boost/json/object.hpp>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/GlucoseProvider.h"
#include "support/Json.h"
#include "support/Time.h"

namespace tidewell {

/// One glucose value, whichever service it came from.
struct GlucoseReading {
    double mgdL = 0;
    std::string trendString{};    ///< The service's word in its own capitalisation.
    std::string trendArrow{};     ///< Follows from trendString; never stored.
    Date date{};                  ///< When it was measured.
    Seconds sampleDuration{300};  ///< What the sample stands for in time weighting.
    GlucoseProvider source = GlucoseProvider::dexcom;
    bool operator==(const GlucoseReading&) const = default;
};

/// A reading with the arrow that belongs to its trend word.
[[nodiscard]] GlucoseReading makeReading(double mgdL, std::string trend, Date date, Seconds sampleDuration,
                                         GlucoseProvider source);

/// Why a reading could not be made of what was received or stored. Returned, never thrown.
enum class GlucoseReadingError { invalidFormat, missingValue, missingTrend, invalidTimestamp };
[[nodiscard]] std::string description(GlucoseReadingError error);

/// "↑↑" for "DoubleUp" in any case, and so on; "?" for an unknown word.
[[nodiscard]] std::string_view trendArrow(std::string_view trendWord);
/// "rising quickly" for "DoubleUp" in any case, and so on; "unknown trend" for an unknown word.
[[nodiscard]] std::string_view trendPhrase(std::string_view trendWord);
/// ASCII lower case, which is all that trend words need.
[[nodiscard]] std::string lowerCased(std::string_view text);

/// A reading from an object of Dexcom Share. The time comes from "ST", else "WT", else "DT".
[[nodiscard]] std::expected<GlucoseReading, GlucoseReadingError> readingFromDexcom(const json::value& object);

/// The stored form: "mgdL", "trendString", "date" (ISO 8601 UTC with milliseconds), "sampleDuration",
/// "source".
[[nodiscard]] json::object encode(const GlucoseReading& reading);
/// Absent or odd "sampleDuration" becomes 300, 60 or at most 900 s; absent "source" is Dexcom.
[[nodiscard]] std::expected<GlucoseReading, GlucoseReadingError> decodeReading(const json::value& object);

/// The members of the stored form as a parser found them; empty where one is absent or null.
struct StoredReadingMembers {
    std::optional<double> mgdL{};
    std::optional<std::string_view> trendString{};
    std::optional<std::string_view> date{};
    std::optional<double> sampleDuration{};
    std::optional<std::string_view> source{};
};
/// What decodeReading() makes of them, for parsers other than Json.h.
[[nodiscard]] std::expected<GlucoseReading, GlucoseReadingError> readingOf(
    const StoredReadingMembers& members);

}  // namespace tidewell
