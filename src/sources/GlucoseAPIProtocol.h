#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "sources/GlucoseReading.h"
#include "support/Asio.h"

namespace tidewell {

/// A failed fetch as those see it who decide what happens next: what kind it is, and the service's own text.
/// Each client makes it of its own error type. Holds no account, session or address.
struct GlucoseAPIError {
    enum class Kind {
        transport,              ///< No answer: the network, the connection, a time-out.
        credentialsRefused,     ///< Name or password were refused.
        accountLocked,          ///< Too many refused sign-ins; trying again makes it worse.
        sessionExpired,         ///< The session is gone; signing in again may help.
        rateLimited,            ///< `retryAfter` says how long to wait.
        accountActionRequired,  ///< Only the person can resolve it, in the service's own app or here.
        noReadings,             ///< A good answer without a reading.
        serverTrouble,          ///< The service says that it failed (5xx, 429 without more).
        other,
    };
    Kind kind = Kind::other;
    std::string text{};                   ///< The error's own description.
    std::optional<Seconds> retryAfter{};  ///< Of rateLimited.
    bool operator==(const GlucoseAPIError&) const = default;
};

/// A glucose service that someone has signed in to.
///
/// Serialised: lives on one executor, does one thing at a time; a second call waits for the first.
class GlucoseAPIProtocol {
public:
    virtual ~GlucoseAPIProtocol() = default;

    /// The readings of the last hours in the service's order, never empty. Signs in when there is no session.
    [[nodiscard]] virtual asio::awaitable<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>>
    fetchLatestReadings() = 0;

    /// Drops the session and signs in anew.
    [[nodiscard]] virtual asio::awaitable<std::expected<void, GlucoseAPIError>> signInAgain() = 0;
};

}  // namespace tidewell
