#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "support/TimeText.h"

namespace tidewell {

/// A moment as a file of readings writes it. Plain values; pure functions.
struct ImportStamp {
    enum class Form : std::uint8_t { absolute, yearFirst, dayFirst, unknownOrder };
    Form form = Form::absolute;
    std::uint8_t first = 0;   ///< The month of yearFirst, else the number that stands first.
    std::uint8_t second = 0;  ///< The other of month and day.
    std::int16_t year = 0;
    double seconds = 0;  ///< Since 1970 for absolute, else since midnight.
};

/// ISO 8601 with or without a zone, 'T' or a space between date and time.
[[nodiscard]] std::optional<ImportStamp> isoStamp(std::string_view text);
/// The same, "31-12-2025 14:05", "12/31/2025 2:05 PM", and with dots, which nobody writes month first.
[[nodiscard]] std::optional<ImportStamp> reportStamp(std::string_view text);

/// The moments at which clocks of a zone show a local time, in order: one, none when the clock skipped it, or
/// two when it went through it twice. Seconds since 1970.
[[nodiscard]] std::vector<double> momentsOf(double local, TimeZone zone);

}  // namespace tidewell
