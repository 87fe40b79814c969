#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace tidewell {

/// Where the core gets its randomness. Any thread.
class RandomSource {
public:
    virtual ~RandomSource() = default;
    virtual void fill(std::span<std::byte> bytes) = 0;
    /// The same for who can do without: false when there is none to give, and `bytes` are then nothing to
    /// use.
    [[nodiscard]] virtual bool tryFill(std::span<std::byte> bytes)
    {
        fill(bytes);
        return true;
    }

    [[nodiscard]] std::uint64_t next();
    /// Uniform over the closed range -1 ... +1; 0 when there is none to give.
    [[nodiscard]] double unit();
};

/// The operating system's generator, fit for keys. fill() stops the program when the system has none to give.
class SystemRandom final : public RandomSource {
public:
    void fill(std::span<std::byte> bytes) override;
    [[nodiscard]] bool tryFill(std::span<std::byte> bytes) override;
};

/// The same numbers for the same seed on every machine (splitmix64). Never for keys.
class SeededRandom final : public RandomSource {
public:
    explicit SeededRandom(std::uint64_t seed) : state_{seed} {}
    void fill(std::span<std::byte> bytes) override;

private:
    std::atomic<std::uint64_t> state_;
};

/// A random (version 4) UUID, RFC 9562 section 5.4; the nil UUID when default-made.
struct Uuid {
    std::array<std::byte, 16> bytes{};

    [[nodiscard]] static Uuid random(RandomSource& source);
    /// Empty when the source has none to give.
    [[nodiscard]] static std::optional<Uuid> tryRandom(RandomSource& source);
    /// 8-4-4-4-12 hexadecimal digits, lower case.
    [[nodiscard]] std::string text() const;
    auto operator<=>(const Uuid&) const = default;
};

}  // namespace tidewell
