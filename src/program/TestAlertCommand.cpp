#include <fmt/format.h>

#include "platform/linux/NotificationCenter.h"
#include "polling/UserNotificationGlucoseAlertDelivery.h"
#include "program/Commands.h"
#include "program/EventLoopRun.h"
#include "program/Process.h"
#include "support/Engine.h"
#include "support/SystemClock.h"

namespace tidewell {

namespace {

constexpr std::chrono::milliseconds engineGrace{500};

/// Sends it the way a glucose alert goes. A sound of ours is heard to its end.
asio::awaitable<UserNotificationGlucoseAlertDelivery::TestResult> sendAndListen(
    UserNotificationGlucoseAlertDelivery& delivery, AlertSound& sound)
{
    const auto result = co_await delivery.sendTestAlert();
    co_await sound.finished();
    co_return result;
}

}  // namespace

ExitCode runTestAlert()
{
    QCoreApplication application{processArguments().count, processArguments().values};
    Engine engine;
    SystemClock clock{engine.context()};
    SystemRandom random;
    QtMainLoop loop;
    engine.start();
    ExitCode code = ExitCode::good;
    {
        AlertSound sound{loop.executor()};
        NotificationCenter center{loop.executor(), clock, sound};
        UserNotificationGlucoseAlertDelivery delivery{engine.executor(), center, random};
        const auto result = runInEventLoop(loop, sendAndListen(delivery, sound));
        if (result.sent)
            fmt::print("{}\n", result.message);
        else
            code = report({ExitCode::failure, result.message + " \"tidewell doctor\" says why."});
        if (!sound.problem().empty())
            fmt::print(stderr, "tidewell: {}\n", sound.problem());
    }
    endProcessUnless(engine.stop(engineGrace), code);
    return code;
}

}  // namespace tidewell
