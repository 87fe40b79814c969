#include "sources/Turns.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/system_error.hpp>

#include <algorithm>

namespace tidewell {

struct Turns::Waiter {
    explicit Waiter(const asio::any_io_executor& executor)
        : wake{executor, asio::steady_timer::time_point::max()}
    {
    }

    asio::steady_timer wake;  ///< Never ends; cancelling it wakes, also while its event loop goes.
    bool hasTurn = false;
    bool hasLeft = false;

    /// Part of the one who waits: an event loop that ends drops them one by one, and whoever goes after them
    /// must not pass the turn to them any more.
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
        (void)co_await waiter->wake.async_wait(asio::as_tuple(asio::use_awaitable));
        // Who is cancelled in the moment of the turn has it, and passes it on by leaving.
        if (!waiter->hasTurn) {
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
        if (waiter->hasLeft)
            continue;
        waiter->hasTurn = true;
        waiter->wake.cancel();
        return;  // The turn stays taken: it is the waiter's from here on.
    }
    taken_ = false;
}

}  // namespace tidewell
