#include "platform/linux/QtMainLoop.h"

#include <sys/eventfd.h>
#include <unistd.h>
#include <QSocketNotifier>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "platform/linux/UniqueFd.h"

namespace tidewell {

struct QtMainLoop::Impl {
    UniqueFd wake{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    MainLoop loop{[this] {
        // Fails only when the counter is full, and then the event loop has been woken already.
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = ::write(wake.get(), &one, sizeof one);
    }};
    QSocketNotifier notifier{wake.get(), QSocketNotifier::Read};
};

QtMainLoop::QtMainLoop() : impl_{std::make_unique<Impl>()}
{
    if (!impl_->wake)
        throw std::system_error{errno, std::system_category(), "eventfd"};
    QObject::connect(&impl_->notifier, &QSocketNotifier::activated, [impl = impl_.get()] {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t taken = ::read(impl->wake.get(), &count, sizeof count);
        impl->loop.runPending();
    });
}

QtMainLoop::~QtMainLoop() = default;

asio::any_io_executor QtMainLoop::executor() { return impl_->loop.executor(); }

MainLoop& QtMainLoop::loop() { return impl_->loop; }

}  // namespace tidewell
