#pragma once

#include <string_view>

namespace tidewell {

/// Whether `text` has the form of a UUID: 8-4-4-4-12 hexadecimal digits in any case, nothing around them.
[[nodiscard]] constexpr bool isUuidText(std::string_view text)
{
    constexpr std::string_view form = "00000000-0000-0000-0000-000000000000";
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const char c = text[i];
        const bool digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        if (form[i] == '-' ? c != '-' : !digit)
            return false;
    }
    return true;
}

}  // namespace tidewell
