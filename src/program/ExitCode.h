#pragma once

#include <string>

namespace tidewell {

/// How the program ends. Part of the product: scripts depend on the numbers.
enum class ExitCode {
    good = 0,
    failure = 1,
    usage = 2,
    notRunning = 3,
    noFreshReading = 4,
    signInNeeded = 5,
    keyring = 6,
};

/// Why a command ends early: one line for standard error, and the code.
struct CommandError {
    ExitCode code = ExitCode::failure;
    std::string message{};
};

}  // namespace tidewell
