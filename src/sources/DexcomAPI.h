#pragma once

#include <memory>
#include <optional>
#include <string>

#include "config/AppConfiguration.h"
#include "sources/GlucoseAPIProtocol.h"
#include "sources/ServiceEndpoints.h"
#include "support/Clock.h"
#include "support/HttpClient.h"

namespace tidewell {

/// Why a Dexcom Share request failed. Returned, never thrown.
struct DexcomError {
    enum class Kind {
        invalidURL,
        authenticationFailed,
        loginFailed,
        parsingFailed,
        serverError,
        invalidRegion,
        sessionExpired,
        noReadingsAvailable,
        invalidResponse,
        transport,
    };
    Kind kind;
    std::string message{};  ///< The endpoint's name in invalidURL, the reason in ...Failed.
    int httpStatus = 0;     ///< The service's answer, of serverError, sessionExpired and invalidResponse.
    std::string code{};     ///< Of serverError: the service's own word for it, when it is one that we know.
    std::optional<HttpError> network{};  ///< Of transport.
    bool signingIn = false;              ///< Whether a step of the sign-in failed; else it was the read.
    bool operator==(const DexcomError&) const = default;
};

[[nodiscard]] std::string description(const DexcomError& error);
/// The same failure as the polling coordinator sees it. A sign-in that was refused for its name or password
/// is credentialsRefused, whatever status it came with; an unknown region waits for the person.
[[nodiscard]] GlucoseAPIError glucoseAPIError(const DexcomError& error);

/// Reads the latest values of a Dexcom Share publisher account. Keeps its session in memory between calls.
/// Asks for data once a second at most. Lives on `executor`; `http` and `clock` outlive it and its running
/// calls. A dropped client's running call goes on to its end. A call that is cancelled leaves with
/// operation_aborted and lets the next one in.
class DexcomAPI final : public GlucoseAPIProtocol {
public:
    DexcomAPI(asio::any_io_executor executor, HttpClient& http, Clock& clock,
              const ServiceEndpoints& endpoints, const GlucoseAccountConfiguration& account);
    ~DexcomAPI() override;

    [[nodiscard]] asio::awaitable<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>>
    fetchLatestReadings() override;
    [[nodiscard]] asio::awaitable<std::expected<void, GlucoseAPIError>> signInAgain() override;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;  ///< Shared with the running call, which may outlive a dropped client.
};

}  // namespace tidewell
