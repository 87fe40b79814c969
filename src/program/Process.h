#pragma once

#include <csignal>
#include <span>
#include <vector>

#include "platform/linux/UniqueFd.h"
#include "program/ExitCode.h"

namespace tidewell {

/// The arguments as main() got them, for Qt, which keeps a reference to the count.
struct ProcessArguments {
    int count = 0;
    char** values = nullptr;
};
[[nodiscard]] ProcessArguments& processArguments();

/// The signals that ask a program to end.
inline const std::vector<int> endingSignals{SIGTERM, SIGINT, SIGHUP};

/// What every run does first: no core dump may hold a password, a reader that goes away is no signal, and no
/// file that is opened later takes the place of a standard stream that was closed.
void hardenProcess();

/// Ends the process with code 0 at once on any of these signals, unless it ignores them: for the time before
/// the event loop takes them over, when nothing has been begun.
void endAtOnceOn(std::span<const int> signals);

/// The code to end with once what was printed has left the process: a standard output that cannot be written,
/// say on a full disk, is a failure of its own. A reader that went away is none.
[[nodiscard]] ExitCode afterOutput(ExitCode code);

/// Ends the process at once with that code unless every thread has ended by itself: a call that hangs in a
/// library must not hold up the end, nor may what it uses be taken down below it.
void endProcessUnless(bool everyThreadEnded, ExitCode code);

/// A connection to the display server that the environment names.
///
/// Held while the toolkit makes its own: a server may start over when its last client leaves.
class DisplayProbe {
public:
    DisplayProbe();

    /// Whether a server answers, or only the toolkit can tell (a display over the network).
    [[nodiscard]] bool answers() const { return answers_; }

private:
    UniqueFd connection_{};
    bool answers_ = false;
};

}  // namespace tidewell
