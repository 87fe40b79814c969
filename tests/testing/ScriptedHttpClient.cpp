#include "testing/ScriptedHttpClient.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>

#include <gtest/gtest.h>

#include <utility>

namespace tidewell {

asio::awaitable<std::expected<HttpResponse, HttpError>> ScriptedHttpClient::send(HttpRequest request)
{
    struct Running {
        int& count;
        explicit Running(int& counter) : count{counter} { ++count; }
        ~Running() { --count; }
    } const running{running_};

    requests_.push_back(std::move(request));
    if (script_.empty()) {
        ADD_FAILURE() << "A request without an answer in the script: " << requests_.back().url;
        co_return std::unexpected{HttpError{HttpError::Kind::cannotConnect}};
    }
    Scripted next = std::move(script_.front());
    script_.pop_front();
    if (next.hangs) {
        asio::experimental::channel<void(boost::system::error_code)> never{
            co_await asio::this_coro::executor};
        co_await never.async_receive(asio::as_tuple(asio::use_awaitable));
        throw boost::system::system_error{asio::error::operation_aborted};
    }
    co_await asio::post(asio::use_awaitable);
    if (next.failure)
        co_return std::unexpected{HttpError{*next.failure}};
    co_return HttpResponse{
        .status = next.status, .headers = std::move(next.headers), .body = std::move(next.body)};
}

}  // namespace tidewell
