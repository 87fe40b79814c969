#pragma once

#include <string>
#include <string_view>

#include "config/AppConfiguration.h"

namespace tidewell {

// What people of a country use, as the first choice of the first-run steps. A country is its ISO 3166-1 code
// of two letters, in any case; anything else counts as unknown. Pure.

/// "mmol/L" where glucose is usually told in it, else "mg/dL".
[[nodiscard]] std::string usualMeasurementUnit(std::string_view country);
/// A region code that the service's client knows.
[[nodiscard]] std::string usualRegion(GlucoseProvider provider, std::string_view country);
/// Preferences before the person has chosen any: the usual unit, and thresholds from its options.
[[nodiscard]] AppSettings initialSettings(std::string_view country);

}  // namespace tidewell
