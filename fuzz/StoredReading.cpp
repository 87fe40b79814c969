// A reading in its stored form, and an object as Dexcom Share sends it.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Require.h"
#include "sources/GlucoseReading.h"
#include "sources/GlucoseUnits.h"

using namespace tidewell;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto document = parseJson({reinterpret_cast<const char*>(data), size});
    if (!document)
        return 0;

    if (const auto reading = decodeReading(*document)) {
        require(std::isfinite(reading->mgdL), "a value is a number");
        require(reading->sampleDuration > Seconds{0} && reading->sampleDuration <= Seconds{900},
                "a duration is possible");
        require(reading->trendArrow == trendArrow(reading->trendString), "the arrow follows from the word");
        require(decodeReading(encode(*reading)) == *reading, "a reading survives its stored form");
        require(!formatGlucose(reading->mgdL, GlucoseUnits::mgdL).empty(), "a value has a text");
        require(!formatGlucose(reading->mgdL, GlucoseUnits::mmolL).empty(), "a value has a text");
    }
    if (const auto reading = readingFromDexcom(*document)) {
        // Any 64-bit count of milliseconds is a time here; what is stored has a year of four digits.
        const auto stored = decodeReading(encode(*reading));
        if (std::isfinite(reading->mgdL))
            require(stored.has_value() && stored->trendString == reading->trendString, "it can be stored");
    }
    return 0;
}
