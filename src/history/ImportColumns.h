#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "history/CsvReader.h"
#include "history/HistoryImport.h"

namespace tidewell {

/// Where the columns of a CSV file of readings stand. Plain values; pure functions.
struct ImportColumns {
    HistoryFileFormat format{};
    std::size_t count = 0;
    std::optional<std::size_t> time{};
    std::optional<std::size_t> epoch{};
    std::optional<std::size_t> mgdL{};
    std::optional<std::size_t> mmolL{};
    std::optional<std::size_t> trend{};
    std::optional<std::size_t> duration{};
    std::optional<std::size_t> source{};
    std::optional<std::size_t> kind{};  ///< Event or record type.
    std::optional<std::size_t> scan{};  ///< Beside mgdL or mmolL, in the same unit.
};

/// The column names of a record in lower case.
[[nodiscard]] std::vector<std::string> columnNames(const std::vector<CsvField>& fields);

/// Each is empty for names that are not of that file.
[[nodiscard]] std::optional<ImportColumns> clarityColumns(const std::vector<std::string>& names);
[[nodiscard]] std::optional<ImportColumns> libreViewColumns(const std::vector<std::string>& names);
/// Also Tidewell's own.
[[nodiscard]] std::optional<ImportColumns> genericColumns(const std::vector<std::string>& names);

/// What makes the columns ambiguous, as a sentence: one that counts and stands twice.
[[nodiscard]] std::optional<std::string> ambiguity(const ImportColumns& columns,
                                                   const std::vector<std::string>& names);

}  // namespace tidewell
