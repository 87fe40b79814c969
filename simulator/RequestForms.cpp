#include "simulator/RequestForms.h"

#include <charconv>

namespace tidewell {

std::optional<std::string_view> requestHeader(const HttpRequest& request, std::string_view name)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    const auto found = std::ranges::find_if(request.headers, [&](const HttpHeader& header) {
        return std::ranges::equal(header.name, name, {}, lower);
    });
    return found == request.headers.end() ? std::nullopt : std::optional<std::string_view>{found->value};
}

bool acceptsGzip(const HttpRequest& request)
{
    return requestHeader(request, "accept-encoding").value_or("").contains("gzip");
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        unsigned char byte = 0;
        if (i + 2 >= text.size() ||
            std::from_chars(text.data() + i + 1, text.data() + i + 3, byte, 16).ptr != text.data() + i + 3)
            return std::nullopt;
        decoded += static_cast<char>(byte);
        i += 2;
    }
    return decoded;
}

}  // namespace tidewell
