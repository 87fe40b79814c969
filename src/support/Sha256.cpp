#include "support/Sha256.h"

#include <openssl/evp.h>

#include <fmt/format.h>

#include <array>
#include <cstdlib>
#include <iterator>

namespace tidewell {

std::string sha256Hex(std::string_view bytes)
{
    std::array<unsigned char, 32> digest{};
    // Fails only where OpenSSL itself is broken or out of memory.
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
        std::abort();
    std::string text;
    for (const unsigned char byte : digest)
        fmt::format_to(std::back_inserter(text), "{:02x}", byte);
    return text;
}

}  // namespace tidewell
