#pragma once

#include <array>
#include <cstddef>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "support/SecretText.h"

namespace tidewell {

inline constexpr std::size_t aesKeySize = 32;
inline constexpr std::size_t aesNonceSize = 12;
inline constexpr std::size_t aesTagSize = 16;

/// Seals bytes with AES-256-GCM (NIST SP 800-38D): the nonce, the ciphertext, and the 16-byte tag, in that
/// order. `key` has 32 bytes. One nonce never serves twice under one key: make it of a RandomSource fit for
/// keys. Empty when the library fails, or when its self-test with published vectors did. Any thread.
[[nodiscard]] std::optional<std::string> aesGcmSeal(const SecretText& key,
                                                    std::span<const std::byte, aesNonceSize> nonce,
                                                    std::string_view associatedData, std::string_view plain);

/// What aesGcmSeal() sealed, when key, associated data and every bit are the same; else empty.
[[nodiscard]] std::optional<std::string> aesGcmOpen(const SecretText& key, std::string_view associatedData,
                                                    std::string_view sealed);

/// Compares with published test vectors, once per process; false when the library computes something else.
[[nodiscard]] bool aesGcmWorks();

}  // namespace tidewell
