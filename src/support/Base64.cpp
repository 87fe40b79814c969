#include "support/Base64.h"

#include <openssl/evp.h>

#include <cstdlib>
#include <limits>

#include "support/SecretText.h"

namespace tidewell {

namespace {

/// What the library's int lengths can take; far above anything that is encoded here.
constexpr std::size_t longestInput = std::numeric_limits<int>::max() / 2;

unsigned char* bytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }
const unsigned char* bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

std::string base64(std::string_view bytes)
{
    if (bytes.size() > longestInput)
        std::abort();
    // One more byte than the result: the library ends it with a zero.
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(bytesOf(text), bytesOf(bytes), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<std::string> bytesFromBase64(std::string_view text)
{
    if (text.empty())
        return std::string{};
    if (text.size() % 4 != 0 || text.size() > longestInput)
        return std::nullopt;
    std::string bytes(text.size() / 4 * 3, '\0');
    if (EVP_DecodeBlock(bytesOf(bytes), bytesOf(text), static_cast<int>(text.size())) < 0)
        return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    bytes.resize(bytes.size() - padding);
    // The library overlooks blanks around the text, padding inside it and stray bits at its end.
    std::string again = base64(bytes);
    const bool exact = again == text;
    wipe(again.data(), again.size());
    if (exact)
        return bytes;
    wipe(bytes.data(), bytes.size());
    return std::nullopt;
}

}  // namespace tidewell
