#pragma once

#include "platform/linux/UniqueFd.h"
#include "program/ExitCode.h"

namespace tidewell {

/// The arguments as main() got them, for Qt, which keeps a reference to the count.
struct ProcessArguments {
    int count = 0;
    char** values = nullptr;
};
[[nodiscard]] ProcessArguments& processArguments();

/// What every run does first: no core dump may hold a password, and a reader that goes away is no signal.
void hardenProcess();

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
