#pragma once

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

/// Whether a display server answers where the environment says that there is one.
[[nodiscard]] bool displayAnswers();

}  // namespace tidewell
