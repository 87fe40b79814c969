#include "support/OnExecutor.h"

#include <boost/asio/experimental/awaitable_operators.hpp>
#include <boost/asio/multiple_exceptions.hpp>

namespace tidewell {

asio::awaitable<void> runUntilDeadline(Clock& clock, std::chrono::milliseconds deadline,
                                       asio::awaitable<void> work)
{
    using namespace asio::experimental::awaitable_operators;
    try {
        co_await (std::move(work) || clock.sleepFor(deadline));
    } catch (const asio::multiple_exceptions& both) {
        std::rethrow_exception(both.first_exception());
    }
}

}  // namespace tidewell
