#include "support/Task.h"

#include <boost/asio/experimental/channel_error.hpp>
#include <boost/asio/multiple_exceptions.hpp>

namespace tidewell {

bool isCancellation(std::exception_ptr error)
{
    if (!error)
        return false;
    try {
        std::rethrow_exception(error);
    } catch (const boost::system::system_error& thrown) {
        return thrown.code() == asio::error::operation_aborted ||
               thrown.code() == asio::experimental::error::channel_cancelled;
    } catch (const asio::multiple_exceptions& thrown) {
        return isCancellation(thrown.first_exception());
    } catch (...) {
        return false;
    }
}

}  // namespace tidewell
