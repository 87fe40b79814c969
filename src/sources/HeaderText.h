#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace tidewell {

/// Whether `text` can stand in an HTTP header as it is: printable ASCII, one to `longest` characters, none of
/// the spaces at its ends that a header would lose.
[[nodiscard]] constexpr bool isHeaderText(std::string_view text, std::size_t longest)
{
    return !text.empty() && text.size() <= longest && text.front() != ' ' && text.back() != ' ' &&
           std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

}  // namespace tidewell
