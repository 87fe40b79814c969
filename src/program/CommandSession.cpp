#include "program/CommandSession.h"

#include "support/Log.h"

namespace tidewell {

namespace {

const Log sessionLog{"CommandSession"};

}  // namespace

std::expected<std::unique_ptr<CommandSession>, CommandError> CommandSession::make()
{
    auto environment = standardEnvironment();
    if (!environment)
        return std::unexpected(environment.error());
    std::unique_ptr<CommandSession> session{new CommandSession(std::move(*environment))};
    if (const auto error = session->defaults_.load())
        sessionLog.warning(bookkeepingProblem(session->environment_.defaults(), error));
    return session;
}

CommandSession::CommandSession(Environment environment)
    : environment_{std::move(environment)},
      defaults_{environment_.defaults()},
      http_{engine_.workers(), "Tidewell/" TIDEWELL_VERSION},
      configuration_{std::make_unique<ConfigurationManager>(
          main_.get_executor(), engine_.workers(),
          ConfigurationManager::Places{.document = environment_.document(),
                                       .keychain = environment_.keychain})}
{
    engine_.start();
}

CommandSession::~CommandSession() { (void)engine_.stop(std::chrono::milliseconds{500}); }

SingleInstance::SendResult CommandSession::announceChange(InstanceWord what)
{
    return SingleInstance::send(environment_.folders.runtime, what);
}

ServiceClientParts CommandSession::clientParts()
{
    return {
        .engine = engine_.executor(), .http = http_, .clock = clock_, .endpoints = environment_.endpoints};
}

}  // namespace tidewell
