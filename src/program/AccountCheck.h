#pragma once

#include <memory>
#include <optional>

#include "sources/GlucoseAPIProtocol.h"

namespace tidewell {

/// What asking the service about an account brought to light.
struct AccountCheck {
    enum class Result {
        good,         ///< Signed in; there may be no readings yet.
        refused,      ///< Name, password or region were refused, or the account needs the person.
        unreachable,  ///< Nothing is known: no answer, or the service is in trouble.
    };
    Result result = Result::good;
    std::optional<GlucoseAPIError> error{};  ///< What the service said; of noReadings with `good` too.
    std::optional<GlucoseReading> newest{};
};

/// Asks the service for readings as the account's owner would. One sign-in. Awaited on any executor; `client`
/// lives on `engine`.
[[nodiscard]] asio::awaitable<AccountCheck> checkAccount(asio::any_io_executor engine,
                                                         std::shared_ptr<GlucoseAPIProtocol> client);

}  // namespace tidewell
