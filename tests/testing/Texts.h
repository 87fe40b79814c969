#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// The parts of a text between its bars: "a||b" are three, one of them empty.
inline std::vector<std::string> parts(std::string_view text)
{
    std::vector<std::string> all{""};
    for (const char c : text)
        c == '|' ? void(all.emplace_back()) : all.back().push_back(c);
    return all;
}

/// One of each of the 256 bytes.
inline std::string everyByte()
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

}  // namespace tidewell
