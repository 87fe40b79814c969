#include "platform/linux/UnixSignals.h"

#include <fcntl.h>
#include <unistd.h>
#include <QSocketNotifier>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "platform/linux/UniqueFd.h"

namespace tidewell {
namespace {

/// Where the signal handler writes; only one object uses it at a time.
std::atomic<int> signalPipe{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void forwardSignal(int signal)
{
    const int before = errno;
    const auto byte = static_cast<unsigned char>(signal);
    // A full pipe holds thousands of signals that were not looked at yet; one more would say nothing new.
    [[maybe_unused]] const ssize_t written = ::write(signalPipe.load(), &byte, 1);
    errno = before;
}

struct Replaced {
    int signal;
    struct sigaction before;
};

}  // namespace

struct UnixSignals::Impl {
    UniqueFd readEnd{};
    UniqueFd writeEnd{};
    Handler handler{};
    std::vector<Replaced> replaced{};
    std::unique_ptr<QSocketNotifier> notifier{};

    void deliver() const
    {
        unsigned char byte = 0;
        // The handler may end this object's owner, so nothing of it is touched afterwards.
        if (::read(readEnd.get(), &byte, 1) == 1)
            handler(byte);
    }
};

UnixSignals::UnixSignals(const std::vector<int>& signals, Handler handler) : impl_{std::make_unique<Impl>()}
{
    if (signalPipe.load() >= 0)
        std::abort();
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error{errno, std::system_category(), "pipe2"};
    impl_->readEnd = UniqueFd{ends[0]};
    impl_->writeEnd = UniqueFd{ends[1]};
    impl_->handler = std::move(handler);
    impl_->notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(impl_->notifier.get(), &QSocketNotifier::activated,
                     [impl = impl_.get()] { impl->deliver(); });
    signalPipe = ends[1];

    for (const int signal : signals) {
        struct sigaction before{};
        struct sigaction action{};
        action.sa_handler = forwardSignal;
        action.sa_flags = SA_RESTART;
        sigemptyset(&action.sa_mask);
        if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN)
            continue;
        if (::sigaction(signal, &action, nullptr) == 0)
            impl_->replaced.push_back({signal, before});
    }
}

UnixSignals::~UnixSignals()
{
    for (const Replaced& one : impl_->replaced)
        ::sigaction(one.signal, &one.before, nullptr);
    signalPipe = -1;
}

}  // namespace tidewell
