#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "support/SecretText.h"

namespace tidewell {

// What the requests of the service clients are made of.

/// A service's base address and a path below it, with one slash between them.
[[nodiscard]] std::string serviceUrl(std::string_view base, std::string_view path);

/// A request's JSON object, built twice: as it is sent, and as the log may show it.
class RequestBody {
public:
    /// The room for all secrets is taken at once, so that growing leaves no copy of one behind.
    explicit RequestBody(std::size_t secretBytes);
    RequestBody(const RequestBody&) = delete;
    RequestBody& operator=(const RequestBody&) = delete;
    ~RequestBody() { wipe(sent_.data(), sent_.size()); }

    void addSecret(std::string_view key, std::string_view text);
    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, int number);

    /// The whole object; leaves this one empty.
    [[nodiscard]] SecretText sent();
    [[nodiscard]] std::string shown() const { return shown_ + '}'; }

private:
    void addKey(std::string_view key);

    std::string sent_;
    std::string shown_;
};

/// What the log shows in place of a secret or of whoever it belongs to.
inline constexpr std::string_view redacted = "<redacted>";

}  // namespace tidewell
