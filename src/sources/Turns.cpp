#include "sources/Turns.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/error.hpp>
#include <boost/system/system_error.hpp>

#include <algorithm>

namespace tidewell {

asio::awaitable<Turns::Turn> Turns::next()
{
    if (taken_) {
        const auto wake = std::make_shared<Wake>(executor_);
        waiting_.push_back(wake);
        const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
        if (cancelled) {
            std::erase(waiting_, wake);
            throw boost::system::system_error{asio::error::operation_aborted};
        }
    }
    taken_ = true;
    co_return Turn{*this};
}

void Turns::passOn()
{
    while (!waiting_.empty()) {
        const std::shared_ptr<Wake> wake = std::move(waiting_.front());
        waiting_.pop_front();
        if (wake->try_send(boost::system::error_code{}))
            return;  // The turn stays taken: it is the waiter's from here on.
    }
    taken_ = false;
}

}  // namespace tidewell
