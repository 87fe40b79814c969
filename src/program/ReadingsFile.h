#pragma once

#include <expected>
#include <filesystem>

#include "history/HistoryImport.h"
#include "program/ExitCode.h"

namespace tidewell {

/// What a file of readings holds. When nothing can be taken of it, why, and which option would help.
[[nodiscard]] std::expected<HistoryImportFile, CommandError> readReadingsFile(
    const std::filesystem::path& path, HistoryImportReader::Options options);

/// The zone that `name` names; a usage error says what names look like.
[[nodiscard]] std::expected<TimeZone, CommandError> timeZoneNamed(const std::string& name);

}  // namespace tidewell
