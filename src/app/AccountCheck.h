#pragma once

#include <memory>
#include <optional>
#include <string>

#include "sources/GlucoseAPIProtocol.h"
#include "sources/LibreLinkUpAPI.h"

namespace tidewell {

/// What asking the service about an account brought to light.
struct AccountCheck {
    enum class Result {
        good,            ///< Signed in; there may be no readings yet.
        refused,         ///< Name or password were refused.
        actionRequired,  ///< Only the person can resolve it; the error's text says how.
        unreachable,     ///< Nothing is known: no answer, or the service is in trouble.
    };
    Result result = Result::good;
    std::optional<GlucoseAPIError> error{};  ///< What the service said; of noReadings with `good` too.
    std::optional<GlucoseReading> newest{};
};

/// Asks the service for readings as the account's owner would. One sign-in. Awaited on any executor; `client`
/// lives on `engine`.
[[nodiscard]] asio::awaitable<AccountCheck> checkAccount(asio::any_io_executor engine,
                                                         std::shared_ptr<GlucoseAPIProtocol> client);

/// What a failed request says of the account.
[[nodiscard]] AccountCheck::Result accountCheckResult(const GlucoseAPIError& error);

/// What LibreLinkUp's client says when nobody shares.
[[nodiscard]] std::string noConnectionsText();

/// Signs in to a LibreLinkUp account and asks whom it may follow; nobody is no error here. Awaited on any
/// executor; `client` lives on `engine`.
[[nodiscard]] asio::awaitable<std::expected<LibreConnections, GlucoseAPIError>> askConnections(
    asio::any_io_executor engine, std::shared_ptr<LibreLinkUpAPI> client);

}  // namespace tidewell
