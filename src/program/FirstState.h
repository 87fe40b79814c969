#pragma once

#include <memory>

#include "program/Core.h"
#include "program/ExitCode.h"

namespace tidewell {

/// Waits for the first state that holds a reading or a problem, and then ends the event loop: for commands
/// that show one state. Main thread.
///
/// The state is that of the process that polls, when there is one. Else the service is asked at once: who
/// asks once does not wait for the schedule, and ends with what is known when the request has ended.
class FirstState {
public:
    /// Begins to wait; `core` has been launched and outlives the event loop.
    explicit FirstState(Core& core);
    ~FirstState();
    FirstState(const FirstState&) = delete;
    FirstState& operator=(const FirstState&) = delete;

    [[nodiscard]] bool came() const;
    /// How a command ends that shows this state.
    [[nodiscard]] ExitCode exitCode() const;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
