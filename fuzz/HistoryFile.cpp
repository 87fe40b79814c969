// A file of readings for import; the first byte chooses how large the pieces are, the zone and the date
// order.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Require.h"
#include "history/HistoryExport.h"
#include "history/HistoryImport.h"

using namespace tidewell;

namespace {

const Date now = dateFromUnix(1'772'452'800);

HistoryImportFile read(std::string_view text, std::size_t piece, HistoryImportReader::Options options)
{
    options.now = now;
    HistoryImportReader reader{options};
    for (std::size_t at = 0; at < text.size() && reader.feed(text.substr(at, piece)); at += piece) {
    }
    return reader.finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    static const auto berlin = TimeZone::named("Europe/Berlin");
    HistoryImportReader::Options options;
    if (data[0] & 1)
        options.zone = berlin;
    if (data[0] & 2)
        options.dateOrder = (data[0] & 4) ? DateOrder::dayFirst : DateOrder::monthFirst;
    const std::string_view text{reinterpret_cast<const char*>(data + 1), size - 1};
    const auto file = read(text, 1 + (data[0] >> 3), options);

    require(file.refusals.size() <= HistoryImportFile::mostListedRefusals, "the list is bounded");
    require(file.refusals.size() <= file.refused, "what is listed is counted");
    const auto readings = file.readings(0, file.count());
    require(!file.problem || readings.empty(), "a problem takes nothing");
    require(file.problem || file.count() + file.refused + file.otherRows + file.repeated == file.rows,
            "each row is accounted for");
    std::vector<StoredReading> stored;
    for (const auto& reading : readings) {
        require(std::isfinite(reading.mgdL) && reading.mgdL > 12 && reading.mgdL <= 1000, "a possible value");
        require(reading.date >= Date{} && reading.date <= now + Seconds{5400}, "a possible time");
        require(reading.sampleDuration > Seconds{0} && reading.sampleDuration <= Seconds{900}, "a duration");
        require(stored.empty() || stored.back().reading.date <= reading.date, "by time");
        stored.push_back({reading, now});
    }
    const auto whole = read(text, std::max<std::size_t>(text.size(), 1), options);
    require(whole.problem == file.problem && whole.readings(0, whole.count()) == readings,
            "however it is cut");
    for (const auto format : {HistoryExportFormat::csv, HistoryExportFormat::json}) {
        const auto back = read(exportHistory(stored, format), 4096, {});
        require(!back.problem && back.readings(0, back.count()) == readings, "it survives an export");
    }
    return 0;
}
