#pragma once

#include <functional>

#include "support/Asio.h"

namespace tidewell {

/// The main thread's side of the executors: coroutines and posted work run inside the desktop's event loop.
///
/// Work may be posted from any thread. The first piece that arrives calls the wake-up, which must make the
/// event loop call runPending() soon, on the main thread. Outlives everything that posts to it.
class MainLoop {
public:
    /// `wakeUp` is called on the posting thread and must not block.
    explicit MainLoop(std::function<void()> wakeUp);
    ~MainLoop();

    [[nodiscard]] asio::any_io_executor executor();

    /// Runs what has been posted, and what that posts, for one turn; returns without waiting.
    void runPending();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
