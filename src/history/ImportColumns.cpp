#include "history/ImportColumns.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "history/HistoryExport.h"

namespace tidewell {

namespace {

std::optional<std::size_t> columnNamed(const std::vector<std::string>& names, std::string_view name)
{
    const auto found = std::ranges::find(names, name);
    if (found == names.end())
        return {};
    return static_cast<std::size_t>(found - names.begin());
}

std::optional<std::size_t> columnBeginning(const std::vector<std::string>& names, std::string_view begin)
{
    const auto found =
        std::ranges::find_if(names, [begin](const std::string& name) { return name.starts_with(begin); });
    if (found == names.end())
        return {};
    return static_cast<std::size_t>(found - names.begin());
}

/// Puts a column whose name holds its unit into its place; false when it names none.
bool placeByUnit(ImportColumns& columns, const std::vector<std::string>& names, std::size_t at)
{
    if (names[at].contains("mg/dl"))
        columns.mgdL = at;
    else if (names[at].contains("mmol/l"))
        columns.mmolL = at;
    return columns.mgdL || columns.mmolL;
}

}  // namespace

std::vector<std::string> columnNames(const std::vector<CsvField>& fields)
{
    std::vector<std::string> names;
    for (const auto& field : fields)
        names.push_back(lowerCased(field.text));
    return names;
}

std::optional<ImportColumns> clarityColumns(const std::vector<std::string>& names)
{
    ImportColumns columns{.format = HistoryFileFormat::clarityCsv, .count = names.size()};
    columns.time = columnBeginning(names, "timestamp");
    columns.kind = columnNamed(names, "event type");
    const auto value = columnBeginning(names, "glucose value");
    if (!columns.time || !columns.kind || !value || !placeByUnit(columns, names, *value))
        return {};
    return columns;
}

std::optional<ImportColumns> libreViewColumns(const std::vector<std::string>& names)
{
    struct Words {
        std::string_view time, kind, historic, scan;
    };
    constexpr std::array languages{
        Words{"device timestamp", "record type", "historic glucose", "scan glucose"},
        Words{"gerätezeitstempel", "aufzeichnungstyp", "glukosewert-verlauf", "glukose-scan"}};
    for (const auto& words : languages) {
        ImportColumns columns{.format = HistoryFileFormat::libreViewCsv, .count = names.size()};
        columns.time = columnNamed(names, words.time);
        columns.kind = columnNamed(names, words.kind);
        const auto historic = columnBeginning(names, words.historic);
        columns.scan = columnBeginning(names, words.scan);
        if (!columns.time || !columns.kind || !historic || !columns.scan)
            continue;
        const bool sameUnit = names[*historic].contains("mg/dl") == names[*columns.scan].contains("mg/dl");
        if (sameUnit && placeByUnit(columns, names, *historic))
            return columns;
    }
    return {};
}

std::optional<ImportColumns> genericColumns(const std::vector<std::string>& names)
{
    ImportColumns columns{.format = HistoryFileFormat::genericCsv, .count = names.size()};
    std::string joined;
    for (const auto& name : names)
        joined += (joined.empty() ? "" : ",") + name;
    if (joined == historyCsvHeader)
        columns.format = HistoryFileFormat::tidewellCsv;
    columns.time = columnNamed(names, "time");
    columns.epoch = columnNamed(names, "epoch_s");
    columns.mgdL = columnNamed(names, "glucose_mgdl");
    columns.mmolL = columnNamed(names, "glucose_mmoll");
    columns.trend = columnNamed(names, "trend");
    columns.duration = columnNamed(names, "sample_duration_s");
    columns.source = columnNamed(names, "source");
    if ((!columns.time && !columns.epoch) || (!columns.mgdL && !columns.mmolL))
        return {};
    return columns;
}

std::optional<std::string> ambiguity(const ImportColumns& columns, const std::vector<std::string>& names)
{
    if (columns.time && columns.epoch)
        return "The header names both time and epoch_s. Remove one of the two columns.";
    for (const auto& at : {columns.time, columns.epoch, columns.mgdL, columns.mmolL, columns.trend,
                           columns.duration, columns.source, columns.kind, columns.scan})
        if (at && std::ranges::count(names, names[*at]) > 1)
            return "The header names the column \"" + names[*at] + "\" twice.";
    return {};
}

}  // namespace tidewell
