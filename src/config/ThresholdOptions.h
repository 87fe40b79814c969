#pragma once

#include <span>
#include <string>

namespace tidewell {

enum class ThresholdKind { low, high };

/// One entry of a threshold picker.
struct ThresholdOption {
    double mgdL = 0;      ///< What is stored: always whole.
    std::string label{};  ///< "72 mg/dL", "4.0 mmol/L".
};

/// The options of a kind, ascending. `mmolL` chooses the unit that is shown.
[[nodiscard]] std::span<const ThresholdOption> thresholdOptions(ThresholdKind kind, bool mmolL);

/// Maps a stored threshold to what the picker shows.
struct ThresholdValidator {
    /// The mg/dL value of the nearest option, of two equally
    /// near ones the smaller; `mgdL` itself without options.
    [[nodiscard]] static double snap(std::span<const ThresholdOption> options, double mgdL);
};

}  // namespace tidewell
