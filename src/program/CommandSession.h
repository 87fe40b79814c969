#pragma once

#include <expected>
#include <memory>
#include <optional>

#include "config/ConfigurationManager.h"
#include "config/UserDefaults.h"
#include "platform/linux/SingleInstance.h"
#include "program/Environment.h"
#include "program/ServiceClient.h"
#include "support/CurlHttpClient.h"
#include "support/Engine.h"
#include "support/SystemClock.h"

namespace tidewell {

/// What a short command needs of the core: configuration, secrets, and service clients; no desktop, no Qt.
/// Its main executor runs only inside run().
class CommandSession {
public:
    [[nodiscard]] static std::expected<std::unique_ptr<CommandSession>, CommandError> make();
    ~CommandSession();
    CommandSession(const CommandSession&) = delete;
    CommandSession& operator=(const CommandSession&) = delete;

    [[nodiscard]] Engine& engine() { return engine_; }
    [[nodiscard]] Clock& clock() { return clock_; }
    [[nodiscard]] ConfigurationManager& configuration() { return *configuration_; }
    [[nodiscard]] const Environment& environment() const { return environment_; }
    [[nodiscard]] UserDefaults& defaults() { return defaults_; }
    /// For the clients of accounts that are checked here.
    [[nodiscard]] ServiceClientParts clientParts();

    /// Tells the running application, if there is one, that something stored changed. It notices by itself
    /// too, but not on every file system. Blocks for a second at most.
    SingleInstance::SendResult announceChange(InstanceWord what = InstanceWord::configurationChanged);

    /// Runs a coroutine on this thread to its end and returns its result.
    template <class T>
    [[nodiscard]] T run(asio::awaitable<T> work)
    {
        std::optional<T> result;
        std::exception_ptr error;
        asio::co_spawn(main_, std::move(work), [&](std::exception_ptr thrown, T value) {
            error = thrown;
            result = std::move(value);
        });
        main_.restart();
        while (!error && !result)
            main_.run_one();
        if (error)
            std::rethrow_exception(error);
        return std::move(*result);
    }

private:
    explicit CommandSession(Environment environment);

    Engine engine_;
    SystemClock clock_{engine_.context()};
    asio::io_context main_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_{main_.get_executor()};
    Environment environment_;
    UserDefaults defaults_;
    CurlHttpClient http_;
    std::unique_ptr<ConfigurationManager> configuration_;
};

}  // namespace tidewell
