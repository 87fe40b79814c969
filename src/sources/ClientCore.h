#pragma once

#include <fmt/format.h>

#include <chrono>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "config/AppConfiguration.h"
#include "sources/GlucoseAPIProtocol.h"
#include "sources/Turns.h"
#include "support/Clock.h"
#include "support/HttpClient.h"
#include "support/Log.h"

namespace tidewell {

/// Between two requests for data: a service is asked once a second at most.
inline constexpr std::chrono::milliseconds readSpacing{1000};

/// What the innards of every service client hold. Lives on the client's executor.
struct ClientCore {
    /// `name` is the type that writes log lines; each line begins with it.
    ClientCore(const asio::any_io_executor& executor, HttpClient& client, Clock& time,
               const GlucoseAccountConfiguration& account, std::string_view name)
        : turns{executor},
          http{client},
          clock{time},
          username{account.username},
          password{account.password},
          log{name},
          logPrefix{fmt::format("🧪 [{}] ", name)}
    {
    }

    /// Does one of the client's tasks when no other is under way. `self` lives until it has ended.
    template <class Impl, class Result, class Error>
    static asio::awaitable<std::expected<Result, GlucoseAPIError>> inTurn(
        std::shared_ptr<Impl> self, asio::awaitable<std::expected<Result, Error>> (Impl::*task)())
    {
        const Turns::Turn turn = co_await self->turns.next();
        auto outcome = co_await (self.get()->*task)();
        if (!outcome)
            co_return std::unexpected{glucoseAPIError(outcome.error())};
        if constexpr (std::is_void_v<Result>)
            co_return std::expected<Result, GlucoseAPIError>{};
        else
            co_return *std::move(outcome);
    }

    void debug(std::string_view line) const { log.debug(logPrefix + std::string{line}); }
    void info(std::string_view line) const { log.info(logPrefix + std::string{line}); }
    void warn(std::string_view line) const { log.warning(logPrefix + std::string{line}); }

    Turns turns;  ///< A call begins with one.
    HttpClient& http;
    Clock& clock;
    std::string username;
    SecretText password;
    Log log;
    std::string logPrefix;
};

}  // namespace tidewell
