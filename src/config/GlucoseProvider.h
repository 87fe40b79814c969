#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tidewell {

/// Which cloud service the readings come from.
enum class GlucoseProvider { dexcom, libreLinkUp };

inline constexpr std::array allGlucoseProviders{GlucoseProvider::dexcom, GlucoseProvider::libreLinkUp};

/// "dexcom" or "libreLinkUp", as documents and the command line write it.
[[nodiscard]] std::string_view rawValue(GlucoseProvider provider);
[[nodiscard]] std::optional<GlucoseProvider> glucoseProvider(std::string_view rawValue);

}  // namespace tidewell
