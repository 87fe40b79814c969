#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

/// The unit on display. Values are mg/dL everywhere else.
enum class GlucoseUnits { mgdL, mmolL };

inline constexpr std::array allGlucoseUnits{GlucoseUnits::mgdL, GlucoseUnits::mmolL};

/// mg/dL for one mmol/L, in both directions.
inline constexpr double mgdLPerMmolL = 18.0;

/// "mg/dL" or "mmol/L".
[[nodiscard]] std::string_view rawValue(GlucoseUnits unit);
[[nodiscard]] std::optional<GlucoseUnits> glucoseUnits(std::string_view rawValue);
/// "milligrams per deciliter" or "millimoles per liter".
[[nodiscard]] std::string_view spokenName(GlucoseUnits unit);

/// A value as the unit shows it, as a number: whole in mg/dL, rounded to a tenth in mmol/L, half away from
/// zero.
[[nodiscard]] double displayValue(double mgdL, GlucoseUnits unit);
/// The same as text, without the unit's name: "99", "5.5". Independent of the C locale.
[[nodiscard]] std::string formatGlucose(double mgdL, GlucoseUnits unit);
/// What is stored for a threshold chosen in mmol/L: whole mg/dL, half away from zero.
[[nodiscard]] double mgdLFromMmolL(double mmolL);

/// The unit that is usual in a region, by its ISO 3166 code in any case; mmol/L for an unknown or empty one.
[[nodiscard]] GlucoseUnits defaultGlucoseUnits(std::string_view regionCode);

}  // namespace tidewell
