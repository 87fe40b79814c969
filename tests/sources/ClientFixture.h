#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "config/AppConfiguration.h"
#include "sources/GlucoseAPIProtocol.h"
#include "sources/ServiceEndpoints.h"
#include "support/Log.h"
#include "support/Random.h"
#include "testing/FakeClock.h"
#include "testing/Running.h"
#include "testing/ScriptedHttpClient.h"

namespace tidewell {

using Readings = std::expected<std::vector<GlucoseReading>, GlucoseAPIError>;

/// Failures that mean "no answer", whichever service was asked.
inline constexpr std::array transportFailures{
    HttpError::Kind::cannotResolve,  HttpError::Kind::cannotConnect,  HttpError::Kind::tls,
    HttpError::Kind::timedOut,       HttpError::Kind::connectionLost, HttpError::Kind::answerTooLarge,
    HttpError::Kind::redirectRefused};

/// `text` and then what breaks out of carelessly written JSON, logs and headers.
inline std::string hostileText(SeededRandom& random, std::string text)
{
    constexpr std::array<std::string_view, 10> pieces{"\"",   "\\", "ü",    "💧", "\n",
                                                      "pass", "<",  "\x01", "}",  "/"};
    for (int i = 0; i < 8; ++i)
        text += pieces[random.next() % pieces.size()];
    return text;
}

/// One service's client, against a network that answers from a script, at a time that stands still:
/// 2026-03-02 08:00:00 UTC. Every line that is logged must carry the client's name.
template <class Client>
class ClientFixture : public testing::Test {
protected:
    explicit ClientFixture(std::string_view name)
    {
        earlierSink_ = setLogSink([this, name = std::string{name}, prefix = fmt::format("🧪 [{}] ", name)](
                                      LogLevel, std::string_view category, std::string_view line) {
            EXPECT_EQ(category, name);
            EXPECT_TRUE(line.starts_with(prefix)) << line;
            log_.emplace_back(line.substr(std::min(prefix.size(), line.size())));
        });
        account_.username = "ada@example.org";
        account_.password = SecretText{std::string_view{"correct horse"}};
        account_.region = "us";
    }
    ~ClientFixture() override { setLogSink(std::move(earlierSink_)); }

    std::unique_ptr<Client> client()
    {
        return std::make_unique<Client>(io_.get_executor(), http_, clock_, endpoints_, account_);
    }

    Running<Readings> startFetch(Client& api) { return {io_.get_executor(), api.fetchLatestReadings()}; }
    Readings fetch(Client& api)
    {
        const auto running = startFetch(api);
        clock_.runReady();
        if (!running.ended())
            clock_.advance(1s);  // The pause before a read is repeated.
        EXPECT_TRUE(running.ended());
        return running.result();
    }
    /// The result of a call that does not sleep.
    template <class Result>
    Result ended(asio::awaitable<Result> call)
    {
        const Running<Result> running{io_.get_executor(), std::move(call)};
        clock_.runReady();
        EXPECT_TRUE(running.ended());
        return running.result();
    }

    /// The steps asked for since the last call, each as a letter.
    std::string takeSteps(char (*letter)(const HttpRequest&))
    {
        std::string steps;
        for (const HttpRequest& request : http_.requests())
            steps += letter(request);
        http_.forgetRequests();
        return steps;
    }
    bool logged(std::string_view text) const
    {
        return std::ranges::any_of(log_, [&](const auto& line) { return line == text; });
    }

    asio::io_context io_;
    FakeClock clock_{io_, dateFromUnix(1'772'438'400)};
    ScriptedHttpClient http_;
    ServiceEndpoints endpoints_ = ServiceEndpoints::builtIn();
    GlucoseAccountConfiguration account_;
    std::vector<std::string> log_;

private:
    LogSink earlierSink_;
};

}  // namespace tidewell
