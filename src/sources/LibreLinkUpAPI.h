#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/AppConfiguration.h"
#include "sources/GlucoseAPIProtocol.h"
#include "sources/ServiceEndpoints.h"
#include "support/Clock.h"
#include "support/HttpClient.h"

namespace tidewell {

/// Why a LibreLinkUp request failed. Returned, never thrown.
struct LibreLinkUpError {
    enum class Kind {
        rateLimited,
        serverError,
        invalidRegion,
        authenticationFailed,
        sessionExpired,
        termsRequired,
        accountActionRequired,
        clientUpdateRequired,
        noConnections,
        connectionSelectionRequired,
        connectionUnavailable,
        noReadingsAvailable,
        invalidResponse,
        invalidReading,
        transport,
    };
    Kind kind;
    Seconds wait{0};                     ///< Of rateLimited: what the service asked for, 0 ... one hour.
    int httpStatus = 0;                  ///< Of serverError.
    std::optional<HttpError> network{};  ///< Of transport.
    bool operator==(const LibreLinkUpError&) const = default;
};

[[nodiscard]] std::string description(const LibreLinkUpError& error);
/// The same failure as the polling coordinator sees it. What only the person can resolve, in the service's
/// own app or by choosing another person or region, is accountActionRequired.
[[nodiscard]] GlucoseAPIError glucoseAPIError(const LibreLinkUpError& error);

/// Someone who shares readings with the account.
struct LibreConnection {
    std::string patientId;  ///< Who it is, in requests. Never empty; printable ASCII.
    std::string firstName{};
    std::string lastName{};
    bool operator==(const LibreConnection&) const = default;

    /// First and last name, joined by a space; empty when the service knows neither. Without control
    /// characters: it may be printed.
    [[nodiscard]] std::string displayName() const;
};

/// Who shares with an account.
struct LibreConnections {
    std::vector<LibreConnection> people{};  ///< By name, then id: the service's own order changes.
    std::string region{};                   ///< Code of the region where the account lives.
    bool operator==(const LibreConnections&) const = default;
};

/// The service redirects over HTTP never: another region is named in an answer's body. What redirects a
/// request stands between us and the service (a captive portal), and must see neither password nor ticket.
/// So each redirect is refused and noted in the log, without the address. Any thread.
class LibreLinkUpRedirectDelegate final : public HttpRedirectDelegate {
public:
    [[nodiscard]] bool mayFollow(std::string_view from, std::string_view to) override;
};

/// Reads the values of one person who shares with a LibreLinkUp account.
///
/// Keeps ticket, account hash and home region in memory between calls; signs in when there is no ticket that
/// is good for another 30 s. One request at a time. After the service has asked to wait, calls fail with
/// rateLimited and nothing is sent until then. Never shows another person's values than the selected one's.
/// Lives on `executor`; `http` and `clock` outlive it and its running calls. A dropped client's running call
/// goes on to its end. A call that is cancelled leaves with operation_aborted and lets the next one in.
class LibreLinkUpAPI final : public GlucoseAPIProtocol {
public:
    LibreLinkUpAPI(asio::any_io_executor executor, HttpClient& http, Clock& clock,
                   const ServiceEndpoints& endpoints, const GlucoseAccountConfiguration& account);
    ~LibreLinkUpAPI() override;

    /// The graph's values (five minutes each, oldest first by custom), then the current one (one minute).
    [[nodiscard]] asio::awaitable<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>>
    fetchLatestReadings() override;
    [[nodiscard]] asio::awaitable<std::expected<void, GlucoseAPIError>> signInAgain() override;
    /// Whom the account may follow: nobody, when nobody shares with it.
    [[nodiscard]] asio::awaitable<std::expected<LibreConnections, GlucoseAPIError>> listConnections();

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;  ///< Shared with the running call, which may outlive a dropped client.
};

}  // namespace tidewell
