#include "support/Random.h"

#include <openssl/rand.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace tidewell {

std::uint64_t RandomSource::next()
{
    std::array<std::byte, 8> bytes{};
    fill(bytes);
    std::uint64_t value = 0;
    for (const std::byte byte : bytes)
        value = (value << 8) | std::to_integer<std::uint64_t>(byte);
    return value;
}

double RandomSource::unit()
{
    constexpr std::uint64_t top = (std::uint64_t{1} << 53) - 1;  // The most that a double holds exactly.
    return 2 * (static_cast<double>(next() >> 11) / static_cast<double>(top)) - 1;
}

void SystemRandom::fill(std::span<std::byte> bytes)
{
    constexpr std::size_t chunk = 1 << 20;  // RAND_bytes counts in int.
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), chunk);
        // A key made of anything less is worse than no program.
        if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(size)) != 1)
            std::abort();
        bytes = bytes.subspan(size);
    }
}

void SeededRandom::fill(std::span<std::byte> bytes)
{
    // Vigna, splitmix64 (public domain, 2015): a Weyl sequence and a mixer.
    constexpr std::uint64_t gamma = 0x9E3779B97F4A7C15;
    while (!bytes.empty()) {
        std::uint64_t mixed = state_.fetch_add(gamma, std::memory_order_relaxed) + gamma;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        mixed ^= mixed >> 31;
        const std::size_t size = std::min<std::size_t>(bytes.size(), 8);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<std::byte>(mixed >> (56 - 8 * i));
        bytes = bytes.subspan(size);
    }
}

Uuid Uuid::random(RandomSource& source)
{
    Uuid uuid;
    source.fill(uuid.bytes);
    uuid.bytes[6] = (uuid.bytes[6] & std::byte{0x0F}) | std::byte{0x40};  // Version 4.
    uuid.bytes[8] = (uuid.bytes[8] & std::byte{0x3F}) | std::byte{0x80};  // The variant of RFC 9562.
    return uuid;
}

std::string Uuid::text() const
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        fmt::format_to(std::back_inserter(text), "{:02x}", std::to_integer<unsigned>(bytes[i]));
    }
    return text;
}

}  // namespace tidewell
