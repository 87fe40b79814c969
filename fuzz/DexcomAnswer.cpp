// The bodies of Dexcom Share's answers: readings, ids and errors.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Require.h"
#include "sources/DexcomAnswers.h"

using namespace tidewell;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view body{reinterpret_cast<const char*>(data), size};
    const Date now = dateFromUnix(1'772'438'400);

    auto answer = dexcomReadings(body, now);
    if (answer) {
        require(!answer->readings.empty(), "a good answer holds a reading");
        for (const GlucoseReading& reading : answer->readings) {
            require(reading.mgdL > 12 && reading.mgdL <= 1000, "a value is possible");
            require(reading.date <= now + Seconds{5400}, "a time is not far ahead");
            require(unixSeconds(reading.date) >= 0, "a time is after 1970");
            require(reading.trendString.size() <= 64, "a trend is a word");
            const auto back = decodeReading(encode(reading));
            require(back == reading, "a reading survives its stored form");
        }
        require(removeCloseDuplicates(answer->readings) == 0, "no duplicate is left");
    } else {
        require(description(answer.error()).size() < 200, "an error does not quote the body");
    }

    const std::string_view id = dexcomId(body);
    require(id.empty() || (id.data() >= body.data() && id.data() + id.size() <= body.data() + body.size()),
            "an id is a part of the body");
    require(dexcomErrorCode(body).size() < 64, "a code is one of ours");
    return 0;
}
