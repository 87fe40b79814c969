#pragma once

#include <thread>

#include "support/Asio.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/thread_pool.hpp>

namespace tidewell {

/// The engine thread (one io_context, one thread) and the pool of two worker threads.
/// Made and stopped on the main thread. stop() ends the engine's loop after its current turn; workers that
/// still block are not waited for longer than `grace` (a hanging keyring must not hold up the exit).
class Engine {
public:
    Engine();
    ~Engine();

    [[nodiscard]] asio::io_context& context() { return context_; }
    [[nodiscard]] asio::any_io_executor executor() { return context_.get_executor(); }
    [[nodiscard]] asio::any_io_executor workers() { return pool_->get_executor(); }

    /// Begins to run; before that, work can be posted but waits.
    void start();
    /// True when every thread has ended; false when a worker still blocks, and the process should leave
    /// with _exit after its own cleaning up.
    bool stop(std::chrono::milliseconds grace);

private:
    asio::io_context context_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::unique_ptr<asio::thread_pool> pool_;
    std::thread thread_;
};

}  // namespace tidewell
