// The records of saved history: the first byte chooses manifest, configuration, a day, or a sealed day file.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Require.h"
#include "history/GlucoseHistoryAccount.h"
#include "support/TimeText.h"

using namespace tidewell;

namespace {

constexpr std::int64_t day = 20'771;
const HistoryScopeID scope =
    HistoryScopeID::parse("4f1d3c5b7a99e8d6c4b2a1908f7e6d5c4b3a29180f1e2d3c4b5a69788796a5b4").value();

/// Unknown members keep their values; of numbers, "-0.0" may come back as "0".
template <class Record>
bool survives(Record record, std::expected<Record, GlucoseHistoryError> again)
{
    if (!again || again->unknown.size() != record.unknown.size())
        return false;
    record.unknown.clear();
    again->unknown.clear();
    return again == record;
}

/// Whether two ways to read the same text come to the same readings.
void compareReadings(std::string_view text, const HistoryDay& held)
{
    const auto document = parseJson(text, {.bytes = text.size(), .depth = 2000});
    require(document.has_value() || document.error().message == "A key stands twice",
            "what is a day is strict JSON");
    if (!document)
        return;  // A key that nobody knows, twice.
    const auto& list = document->as_object().at("readings").as_array();
    require(list.size() == held.readings.size(), "every reading counts");
    for (const json::value& element : list) {
        const auto reading = decodeReading(element.as_object().at("reading"));
        require(reading.has_value(), "the other decoder takes it too");
        bool found = false;
        for (const StoredReading& stored : held.readings)
            found = found || stored.reading == *reading;
        require(found, "and reads the same");
    }
}

void readDay(std::string_view text)
{
    const auto held = decodeHistoryDay(text, scope, day);
    const auto legacy = decodeLegacyHistoryDay(text, scope, day);
    if (held)
        require(legacy == held, "the older layout allows more, and nothing else");
    if (!legacy)
        return;
    Date before = dateFromUnix(-1e300);
    for (const StoredReading& stored : legacy->readings) {
        require(historyDayIndex(stored.reading.date) == day, "a reading is of its day");
        require(stored.reading.date >= before, "readings are in order");
        before = stored.reading.date;
        require(std::isfinite(stored.reading.mgdL), "a value is a number");
        require(stored.reading.sampleDuration > Seconds{0} && stored.reading.sampleDuration <= Seconds{900},
                "a duration is possible");
    }
    require(decodeHistoryDay(encode(*legacy), scope, day) == legacy, "a day survives its stored form");
    if (held)
        compareReadings(text, *held);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view text{reinterpret_cast<const char*>(data + 1), size - 1};
    switch (data[0] % 4) {
    case 0:
        if (const auto manifest = decodeManifest(text))
            require(survives(*manifest, decodeManifest(encode(*manifest))),
                    "a manifest survives its stored form");
        break;
    case 1:
        if (const auto configuration = decodeHistoryConfiguration(text)) {
            require(configuration->retentionDays == 30 || configuration->retentionDays == 90,
                    "a retention is one that can be chosen");
            require(survives(*configuration, decodeHistoryConfiguration(encode(*configuration))),
                    "a configuration survives its stored form");
        }
        break;
    case 2: readDay(text); break;
    default: {
        // Nobody makes a file that opens without the key; every one that does is a finding.
        static const SecretText key{std::string_view{"a key that no input was sealed by"}.substr(0, 32)};
        require(!openHistoryFile(key, historyDayFileName(day), text), "no file opens by chance");
        if (const auto named = historyDayOfFileName(text))
            require(historyDayFileName(*named) == text, "a day has one name");
        break;
    }
    }
    return 0;
}
