#pragma once

#include <string>
#include <string_view>

#include "config/GlucoseProvider.h"

namespace tidewell {

/// The region that an account of that country probably belongs to, as the first choice of a sign-in: a code
/// that the service's client knows. `country` is its ISO 3166-1 code of two letters, in any case; anything
/// else counts as unknown. Pure.
///
/// A wrong guess costs nothing with LibreLinkUp, which sends a sign-in on to the account's home; Dexcom
/// refuses it like a wrong password.
[[nodiscard]] std::string usualRegion(GlucoseProvider provider, std::string_view country);

}  // namespace tidewell
