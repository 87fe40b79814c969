#include "app/AccountCheck.h"

#include <algorithm>

#include "support/OnExecutor.h"

namespace tidewell {

asio::awaitable<AccountCheck> checkAccount(asio::any_io_executor engine,
                                           std::shared_ptr<GlucoseAPIProtocol> client)
{
    auto fetch = client->fetchLatestReadings();
    const auto readings = co_await runOnExecutor(engine, std::move(fetch));
    if (readings) {
        const auto newest = std::ranges::max_element(*readings, {}, &GlucoseReading::date);
        co_return AccountCheck{.newest = *newest};
    }
    co_return AccountCheck{.result = accountCheckResult(readings.error()), .error = readings.error()};
}

AccountCheck::Result accountCheckResult(const GlucoseAPIError& error)
{
    switch (error.kind) {
    case GlucoseAPIError::Kind::noReadings: return AccountCheck::Result::good;
    case GlucoseAPIError::Kind::credentialsRefused:
    case GlucoseAPIError::Kind::accountLocked: return AccountCheck::Result::refused;
    case GlucoseAPIError::Kind::accountActionRequired: return AccountCheck::Result::actionRequired;
    case GlucoseAPIError::Kind::transport:
    case GlucoseAPIError::Kind::sessionExpired:
    case GlucoseAPIError::Kind::rateLimited:
    case GlucoseAPIError::Kind::serverTrouble:
    case GlucoseAPIError::Kind::other: return AccountCheck::Result::unreachable;
    }
    std::unreachable();
}

asio::awaitable<std::expected<LibreConnections, GlucoseAPIError>> askConnections(
    asio::any_io_executor engine, std::shared_ptr<LibreLinkUpAPI> client)
{
    auto list = client->listConnections();
    co_return co_await runOnExecutor(engine, std::move(list));
}

std::string noConnectionsText()
{
    return description(LibreLinkUpError{.kind = LibreLinkUpError::Kind::noConnections});
}

}  // namespace tidewell
