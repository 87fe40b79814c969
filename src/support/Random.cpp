#include "support/Random.h"

#include <openssl/rand.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace tidewell {

namespace {

using EightBytes = std::array<std::byte, 8>;

std::uint64_t numberOf(const EightBytes& bytes)
{
    std::uint64_t value = 0;
    for (const std::byte byte : bytes)
        value = (value << 8) | std::to_integer<std::uint64_t>(byte);
    return value;
}

Uuid version4(Uuid uuid)
{
    uuid.bytes[6] = (uuid.bytes[6] & std::byte{0x0F}) | std::byte{0x40};
    uuid.bytes[8] = (uuid.bytes[8] & std::byte{0x3F}) | std::byte{0x80};  // The variant of RFC 9562.
    return uuid;
}

}  // namespace

std::uint64_t RandomSource::next()
{
    EightBytes bytes{};
    fill(bytes);
    return numberOf(bytes);
}

double RandomSource::unit()
{
    constexpr std::uint64_t top = (std::uint64_t{1} << 53) - 1;  // The most that a double holds exactly.
    EightBytes bytes{};
    if (!tryFill(bytes))
        return 0;
    return 2 * (static_cast<double>(numberOf(bytes) >> 11) / static_cast<double>(top)) - 1;
}

void SystemRandom::fill(std::span<std::byte> bytes)
{
    // A key made of anything less is worse than no program.
    if (!tryFill(bytes))
        std::abort();
}

bool SystemRandom::tryFill(std::span<std::byte> bytes)
{
    constexpr std::size_t chunk = 1 << 20;  // RAND_bytes counts in int.
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), chunk);
        if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(size)) != 1)
            return false;
        bytes = bytes.subspan(size);
    }
    return true;
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
    return version4(uuid);
}

std::optional<Uuid> Uuid::tryRandom(RandomSource& source)
{
    Uuid uuid;
    if (!source.tryFill(uuid.bytes))
        return std::nullopt;
    return version4(uuid);
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
