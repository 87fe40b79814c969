#include "support/Engine.h"

#include <pthread.h>

#include <csignal>
#include <future>
#include <vector>

#include "support/Time.h"

namespace tidewell {

namespace {

/// As long as a person waits for a program to go.
constexpr auto usualGrace = 2s;

/// Blocks the signals of the threads that are started meanwhile, so that they arrive on the main thread.
/// Those that report a fault of the thread itself stay.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
            sigdelset(&blocked, fault);
        pthread_sigmask(SIG_SETMASK, &blocked, &before_);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

/// A thread that still runs would otherwise find its executors destroyed.
void keepForever(std::shared_ptr<void> thing)
{
    static auto& kept = *new std::vector<std::shared_ptr<void>>;  // Never destroyed, not even at exit.
    kept.push_back(std::move(thing));
}

template <class Pool>
std::unique_ptr<Pool> makePool(std::size_t threads)
{
    const SignalsBlocked blocked;
    return std::make_unique<Pool>(threads);
}

}  // namespace

Engine::Engine()
    // Without the hint that one thread runs it, so that work runs in the order of posting (see MainLoop).
    : context_{std::make_unique<EndingContext>()},
      work_{context_->get_executor()},
      pool_{makePool<EndingPool>(2)}
{
}

Engine::~Engine()
{
    if (!stop(usualGrace)) {
        keepForever(std::move(context_));
        return;
    }
    // Coroutines that wait in one of them may hold executors of the others.
    context_->dropWaiting();
    pool_->dropWaiting();
    if (patientPool_)
        patientPool_->dropWaiting();
}

void Engine::start()
{
    const SignalsBlocked blocked;
    thread_ = std::thread{[context = context_.get()] {
        pthread_setname_np(pthread_self(), "engine");
        context->run();
    }};
}

asio::any_io_executor Engine::patientWorker()
{
    if (!patientPool_) {
        patientPool_ = makePool<EndingPool>(1);
        if (stopped_)
            patientPool_->stop();
    }
    return patientPool_->get_executor();
}

bool Engine::stop(std::chrono::milliseconds grace)
{
    if (stopped_)
        return *stopped_;
    work_.reset();
    context_->stop();
    pool_->stop();
    if (patientPool_)
        patientPool_->stop();
    // Neither a thread nor a pool can be joined for a limited time, so that a third thread does it.
    std::promise<void> ended;
    const std::future<void> end = ended.get_future();
    const SignalsBlocked blocked;
    std::thread joiner{[engine = std::move(thread_), pool = pool_.get(), patient = patientPool_.get(),
                        ended = std::move(ended)]() mutable {
        if (engine.joinable())
            engine.join();
        pool->join();
        if (patient)
            patient->join();
        ended.set_value();
    }};
    stopped_ = end.wait_for(grace) == std::future_status::ready;
    if (*stopped_) {
        joiner.join();
    } else {
        joiner.detach();
        keepForever(std::move(pool_));
        keepForever(std::move(patientPool_));
    }
    return *stopped_;
}

}  // namespace tidewell
