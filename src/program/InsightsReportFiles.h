#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "history/GlucoseHistoryRecords.h"
#include "ui/InsightsReportPage.h"

namespace tidewell {

/// A file that a person asked for.
struct InsightsReportFile {
    std::filesystem::path path{};
    std::string content{};
    bool replace = false;  ///< Should it exist.
};

/// Where the readings of a report go: the same name, which then ends in ".csv".
[[nodiscard]] std::filesystem::path readingsBeside(const std::filesystem::path& page);

/// The readings of a report as CSV. Days (in UTC) of which saved readings cannot be read stand in a last line
/// that begins with "#", as nobody else would know that they are missing.
[[nodiscard]] std::string attachedReadings(const std::vector<StoredReading>& readings,
                                           const std::vector<std::string>& unreadableDays);

/// Why a file is not to be written: it exists, and nobody said that it may be replaced. Else empty.
[[nodiscard]] std::optional<std::string> existsAlready(const std::filesystem::path& path, bool replace);

/// Writes each as a whole and for its owner alone; none when one of them exists that is not to be replaced.
/// Returns why it was not done, for the person, with the names of those that were written before. Blocks.
[[nodiscard]] std::optional<std::string> writeReportFiles(const std::vector<InsightsReportFile>& files);

/// The paper of the locale (LC_PAPER), which only knows two that matter: A4 and US Letter.
[[nodiscard]] InsightsReportPaper usualPaper();

}  // namespace tidewell
