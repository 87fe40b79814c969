#pragma once

#include <memory>
#include <optional>
#include <thread>

#include "support/Asio.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/thread_pool.hpp>

namespace tidewell {

/// The engine thread (one io_context, one thread), the pool of two worker threads, and a third one for work
/// that waits for people.
///
/// Made, stopped and destroyed on the main thread. Signals that ask a program to end never arrive on these
/// threads. Work that still waits when stop() is called is dropped undone.
class Engine {
public:
    Engine();
    ~Engine();

    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    [[nodiscard]] asio::io_context& context() { return *context_; }
    [[nodiscard]] asio::any_io_executor executor() { return context_->get_executor(); }
    [[nodiscard]] asio::any_io_executor workers() { return pool_->get_executor(); }
    /// One thread, begun with the first call, for what may wait for a person to answer a dialog: it never
    /// takes a thread of workers() away from the network.
    [[nodiscard]] asio::any_io_executor patientWorker();

    /// Begins to run; before that, work can be posted but waits.
    void start();
    /// Ends the engine's loop after its current turn and the workers after their current piece of work, and
    /// waits for both, for `grace` in total: a hanging keyring must not hold up the exit. True when every
    /// thread has ended. False when one still blocks: it keeps what it may touch, so nothing of that is
    /// freed, and the process should leave with _exit after its own cleaning up. Calling it again returns the
    /// same.
    bool stop(std::chrono::milliseconds grace);

private:
    /// One that lets go of what still waits in it while it, and the others, live on.
    template <class Context>
    struct Ending final : Context {
        using Context::Context;
        void dropWaiting() { this->shutdown(); }
    };
    using EndingContext = Ending<asio::io_context>;
    using EndingPool = Ending<asio::thread_pool>;

    std::unique_ptr<EndingContext> context_;
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::unique_ptr<EndingPool> pool_;
    std::unique_ptr<EndingPool> patientPool_;  ///< Once somebody asked for it.
    std::thread thread_;
    std::optional<bool> stopped_;  ///< What stop() returned.
};

}  // namespace tidewell
