#pragma once

#include <string>
#include <vector>

#include "polling/AlertHealth.h"

namespace tidewell {

/// What `doctor` prints: a line for each finding, its severity first, the remedy and its command behind a
/// dash.
[[nodiscard]] std::string findingLines(const std::vector<AlertFinding>& findings);

/// The same as a JSON array of objects with the members severity ("problem", "caution", "note", "good"),
/// subject, text, remedy and command.
[[nodiscard]] std::string findingsDocument(const std::vector<AlertFinding>& findings);

}  // namespace tidewell
