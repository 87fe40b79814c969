#pragma once

#include "support/Time.h"

namespace tidewell {

// What a service may send in good form and still cannot have measured.

/// mg/dL. Sensors send 39 ("LOW") to 501 ("HIGH"); up to 12 were old receivers' error numbers.
[[nodiscard]] constexpr bool isPossibleValue(double mgdL) { return mgdL > 12 && mgdL <= 1000; }

/// A receiver's clock may run an hour ahead; nothing that we know of runs further. A time beyond that would
/// stay the newest and pass for fresh until then.
[[nodiscard]] constexpr bool isPossibleTime(Date date, Date now)
{
    return date >= Date{} && date <= now + Seconds{90min};
}

}  // namespace tidewell
