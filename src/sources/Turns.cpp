#include "sources/Turns.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/error.hpp>
#include <boost/system/system_error.hpp>

#include <algorithm>

namespace tidewell {

struct Turns::Waiter {
    explicit Waiter(const asio::any_io_executor& executor) : wake{executor} {}

    Wake wake;
    bool hasLeft = false;

    /// Part of the one who waits: an event loop that ends drops them one by one, and whoever goes after them
    /// must not send to them any more.
    struct Presence {
        std::shared_ptr<Waiter> waiter;
        ~Presence() { waiter->hasLeft = true; }
    };
};

asio::awaitable<Turns::Turn> Turns::next()
{
    if (taken_) {
        const auto waiter = std::make_shared<Waiter>(executor_);
        const Waiter::Presence presence{waiter};
        waiting_.push_back(waiter);
        const auto [cancelled] = co_await waiter->wake.async_receive(asio::as_tuple(asio::use_awaitable));
        if (cancelled) {
            std::erase(waiting_, waiter);
            throw boost::system::system_error{asio::error::operation_aborted};
        }
    }
    taken_ = true;
    co_return Turn{*this};
}

void Turns::passOn()
{
    while (!waiting_.empty()) {
        const std::shared_ptr<Waiter> waiter = std::move(waiting_.front());
        waiting_.pop_front();
        if (!waiter->hasLeft && waiter->wake.try_send(boost::system::error_code{}))
            return;  // The turn stays taken: it is the waiter's from here on.
    }
    taken_ = false;
}

}  // namespace tidewell
