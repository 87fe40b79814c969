#pragma once

#include <expected>
#include <string>

namespace tidewell {

/// Whether the desktop starts Tidewell when the person logs in: what is so, not what was wished for.
struct LoginItemStatus {
    bool isEnabled = false;
    /// One sentence: why it cannot be told, or what keeps an entry from working; empty when all is well.
    std::string problem{};
    /// False when what is there cannot be read: switching fails as well, until the person has mended that.
    bool isChangeable = true;
    bool operator==(const LoginItemStatus&) const = default;
};

/// The desktop's list of programs that start at login. Implemented by the platform. Every call blocks, and
/// looks at the list as it then is; one call at a time (see SerialLoginItem).
class LoginItemControlling {
public:
    virtual ~LoginItemControlling() = default;
    [[nodiscard]] virtual LoginItemStatus status() = 0;
    /// Adds this program's entry, or removes it without a trace. On failure nothing changes; the error is
    /// one sentence for the person.
    [[nodiscard]] virtual std::expected<void, std::string> setEnabled(bool enabled) = 0;
};

}  // namespace tidewell
