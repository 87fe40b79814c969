#include "program/AccountCheck.h"

#include <algorithm>

namespace tidewell {

asio::awaitable<AccountCheck> checkAccount(asio::any_io_executor engine,
                                           std::shared_ptr<GlucoseAPIProtocol> client)
{
    auto fetch = client->fetchLatestReadings();
    const auto readings = co_await asio::co_spawn(engine, std::move(fetch), asio::use_awaitable);
    if (readings) {
        const auto newest = std::ranges::max_element(*readings, {}, &GlucoseReading::date);
        co_return AccountCheck{.newest = *newest};
    }
    AccountCheck check{.error = readings.error()};
    switch (readings.error().kind) {
    case GlucoseAPIError::Kind::noReadings: check.result = AccountCheck::Result::good; break;
    case GlucoseAPIError::Kind::credentialsRefused:
    case GlucoseAPIError::Kind::accountLocked:
    case GlucoseAPIError::Kind::accountActionRequired: check.result = AccountCheck::Result::refused; break;
    case GlucoseAPIError::Kind::transport:
    case GlucoseAPIError::Kind::sessionExpired:
    case GlucoseAPIError::Kind::rateLimited:
    case GlucoseAPIError::Kind::serverTrouble:
    case GlucoseAPIError::Kind::other: check.result = AccountCheck::Result::unreachable; break;
    }
    co_return check;
}

}  // namespace tidewell
