#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// Overwrites memory that held a secret; the compiler may not leave it out.
void wipe(void* data, std::size_t size) noexcept;

/// A password, token or request body: text that is wiped when it goes, and that neither streams nor formats.
/// Always on the heap, so that a move leaves no copy behind.
class SecretText {
public:
    SecretText() = default;
    explicit SecretText(std::string_view text) : bytes_(text.begin(), text.end()) {}
    explicit SecretText(const char* text) : SecretText{std::string_view{text}} {}
    /// Takes the text over and wipes the source.
    explicit SecretText(std::string&& text);
    SecretText(const SecretText&) = default;
    SecretText(SecretText&&) noexcept = default;
    SecretText& operator=(const SecretText& other);
    SecretText& operator=(SecretText&& other) noexcept;
    ~SecretText();

    /// The text itself, for the one call that needs it; valid while this object lives unchanged.
    [[nodiscard]] std::string_view reveal() const { return {bytes_.data(), bytes_.size()}; }
    [[nodiscard]] bool empty() const { return bytes_.empty(); }

    /// Takes the same time wherever the texts differ; their lengths may show.
    bool operator==(const SecretText& other) const;

private:
    std::vector<char> bytes_;
};

}  // namespace tidewell
