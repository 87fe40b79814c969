#include "support/MainLoop.h"

#include <boost/asio/execution.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/require.hpp>

#include <atomic>
#include <utility>

namespace tidewell {

namespace {

/// So many pieces of work make one turn. A coroutine that never pauses then cannot keep the desktop waiting.
constexpr int longestTurn = 256;

}  // namespace

struct MainLoop::Impl {
    explicit Impl(std::function<void()> wake) : wakeUp{std::move(wake)} {}

    /// Something was queued.
    void posted()
    {
        if (!awake.exchange(true))
            wakeUp();
    }

    const std::function<void()> wakeUp;
    /// Not made with the hint that one thread runs it: what a piece of work posts would then wait for the end
    /// of that work, and what other threads post in the meantime would overtake it.
    asio::io_context context;
    /// Without it the context would stop whenever it ran dry.
    asio::executor_work_guard<asio::io_context::executor_type> work{context.get_executor()};
    std::atomic<bool> awake = false;  ///< The event loop knows that it has to call runPending().

    template <class Inner>
    class Executor;
};

/// The context's own executor, but whoever hands it work also wakes the event loop.
template <class Inner>
class MainLoop::Impl::Executor {
public:
    Executor(Inner inner, Impl* loop) : inner_{std::move(inner)}, loop_{loop} {}

    template <class Property>
        requires asio::can_require_v<const Inner&, Property>
    auto require(const Property& property) const
    {
        auto changed = asio::require(inner_, property);
        return Executor<decltype(changed)>{std::move(changed), loop_};
    }

    template <class Property>
        requires asio::can_query_v<const Inner&, Property>
    decltype(auto) query(const Property& property) const
    {
        return asio::query(inner_, property);
    }

    template <class Function>
    void execute(Function&& function) const
    {
        Impl* const loop = loop_;  // The work may end what holds this executor.
        inner_.execute(std::forward<Function>(function));
        loop->posted();
    }

    bool operator==(const Executor&) const = default;

private:
    Inner inner_;
    Impl* loop_;
};

MainLoop::MainLoop(std::function<void()> wakeUp) : impl_{std::make_unique<Impl>(std::move(wakeUp))} {}

MainLoop::~MainLoop() = default;

asio::any_io_executor MainLoop::executor()
{
    return Impl::Executor<asio::io_context::executor_type>{impl_->context.get_executor(), impl_.get()};
}

void MainLoop::runPending()
{
    impl_->awake = true;  // What the work itself posts is run in this turn.
    for (int done = 0; done < longestTurn; ++done) {
        if (impl_->context.poll_one() != 0)
            continue;
        // From here on posting wakes the event loop again; what came just before is still run.
        impl_->awake = false;
        if (impl_->context.poll_one() == 0)
            return;
        impl_->awake = true;
    }
    impl_->awake = true;
    impl_->wakeUp();  // More waits: the event loop may do its own work first.
}

}  // namespace tidewell
