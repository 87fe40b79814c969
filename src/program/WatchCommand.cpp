#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <optional>

#include "platform/linux/UnixSignals.h"
#include "program/Commands.h"
#include "program/Core.h"
#include "program/FirstState.h"
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
        if (options_.once && isBarFormat(options_.format) && !settled_)
            return;
        const auto& state = core_.viewModel().state();
        auto line = watchLine(options_.format, state, core_.configuration().settings(), core_.clock().now(),
                              TimeZone::current());
        if (line.content == last_)
            return;
        last_ = std::move(line.content);
        writer_.write(std::move(line.text));
    }

    /// Of --once: the state that it waits for has come.
    void printSettled()
    {
        settled_ = true;
        print();
    }

    /// After the last line has been written, or could not be.
    [[nodiscard]] ExitCode finish(ExitCode code)
    {
        // Most bars keep the last line, and nobody would know how old it is.
        if (!options_.once && isBarFormat(options_.format))
            writer_.write(watchBarEndLine(options_.format).text);
        if (const auto error = writer_.finish())
            return report({ExitCode::failure, "The output cannot be written: " + error.message() + "."});
        return code;
    }

private:
    Core& core_;
    const WatchOptions& options_;
    std::string last_;
    bool settled_ = false;
    LineWriter writer_;
    std::shared_ptr<void> observer_;
};

}  // namespace

ExitCode runWatch(const WatchOptions& options)
{
    endAtOnceOn(endingSignals);
    QCoreApplication application{processArguments().count, processArguments().values};
    const UnixSignals signals{endingSignals, [](int) { QCoreApplication::quit(); }};
    auto core = Core::make({.demo = options.demo,
                            .demoScenario = options.demoScenario,
                            .sharing = options.once ? SharingKind::asker : SharingKind::watcher});
    if (!core)
        return report(core.error());
    ExitCode code = ExitCode::good;
    {
        Watcher watcher{**core, options};
        watcher.print();
        (*core)->launch({});
        std::optional<FirstState> first;
        if (options.once)
            first.emplace(**core);
        QCoreApplication::exec();
        if (first && first->came()) {
            watcher.printSettled();
            code = first->exitCode();
        }
        code = watcher.finish(code);
    }
    endProcessUnless((*core)->shutDown(), code);
    return code;
}

}  // namespace tidewell
