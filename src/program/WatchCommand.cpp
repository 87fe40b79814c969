#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <utility>

#include "platform/linux/UnixSignals.h"
#include "program/Commands.h"
#include "program/Core.h"
#include "program/LineWriter.h"
#include "program/Process.h"
#include "program/WatchBarLine.h"

namespace tidewell {

namespace {

/// Prints states until it is told to stop. Main thread.
class Watcher {
public:
    Watcher(Core& core, const WatchOptions& options)
        : core_{core},
          options_{options},
          writer_{STDOUT_FILENO, [this] { asio::post(core_.main(), [] { QCoreApplication::quit(); }); }}
    {
        observer_ = core_.viewModel().observe([this](const StatusBarState&) { print(); });
    }

    void print()
    {
        // A bar that runs the command by interval takes one line only.
        if (options_.once && isBarFormat(options_.format) && !ended_)
            return;
        const auto& state = core_.viewModel().state();
        auto line = watchLine(options_.format, state, core_.configuration().settings(), core_.clock().now(),
                              TimeZone::current());
        if (line.content == last_)
            return;
        last_ = std::move(line.content);
        writer_.write(std::move(line.text));
    }

    /// Of --once: ends with the first state that holds a reading or a problem. Whoever is told to stop in the
    /// meantime takes the watcher down first.
    static asio::awaitable<void> finishOnce(std::weak_ptr<Watcher> weak, Core& core)
    {
        co_await core.launched();
        if (weak.expired())
            co_return;
        // Who asks once waits for the answer, not for the schedule.
        co_await core.coordinator().refreshNow();
        if (const auto watcher = weak.lock())
            watcher->endWhenSettled();
    }

    /// After the last line has been written, or could not be.
    [[nodiscard]] ExitCode finish()
    {
        // Most bars keep the last line, and nobody would know how old it is.
        if (!options_.once && isBarFormat(options_.format))
            writer_.write(watchBarEndLine(options_.format).text);
        if (const auto error = writer_.finish())
            return report({ExitCode::failure, "The output cannot be written: " + error.message() + "."});
        return exitCode_;
    }

private:
    void endWhenSettled()
    {
        if (watchIsSettled(core_.viewModel().state()))
            end();
        else
            once_ = core_.viewModel().observe([this](const StatusBarState& state) {
                if (watchIsSettled(state))
                    end();
            });
    }

    void end()
    {
        if (std::exchange(ended_, true))
            return;
        print();
        const auto& problem = core_.configuration().problem();
        exitCode_ = problem && problem->error.kind == ConfigurationError::Kind::keychainError
                        ? ExitCode::keyring
                        : watchExitCode(core_.viewModel().state());
        QCoreApplication::quit();
    }

    Core& core_;
    const WatchOptions& options_;
    std::string last_;
    bool ended_ = false;  ///< Of --once: the state that it waits for has come.
    ExitCode exitCode_ = ExitCode::good;
    LineWriter writer_;
    std::shared_ptr<void> observer_;
    std::shared_ptr<void> once_;
};

}  // namespace

ExitCode runWatch(const WatchOptions& options)
{
    endAtOnceOn(endingSignals);
    QCoreApplication application{processArguments().count, processArguments().values};
    const UnixSignals signals{endingSignals, [](int) { QCoreApplication::quit(); }};
    auto core = Core::make({.demo = options.demo, .demoScenario = options.demoScenario});
    if (!core)
        return report(core.error());
    ExitCode code = ExitCode::good;
    {
        const auto watcher = std::make_shared<Watcher>(**core, options);
        watcher->print();
        (*core)->launch({}, nullptr);
        if (options.once)
            asio::co_spawn((*core)->main(), Watcher::finishOnce(watcher, **core), asio::detached);
        QCoreApplication::exec();
        code = watcher->finish();
    }
    endProcessUnless((*core)->shutDown(), code);
    return code;
}

}  // namespace tidewell
