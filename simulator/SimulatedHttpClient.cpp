#include "simulator/SimulatedHttpClient.h"

namespace tidewell {

namespace {

/// What HttpResponse promises at most.
constexpr std::size_t longestBody = 4 * 1024 * 1024;

std::string pathOf(std::string_view url)
{
    if (const auto scheme = url.find("://"); scheme != std::string_view::npos) {
        url.remove_prefix(scheme + 3);
        url.remove_prefix(std::min(url.size(), url.find('/')));
    }
    return std::string{url.substr(0, url.find('?'))};
}

}  // namespace

void SimulatedHttpClient::route(std::string prefix, SimulatedService service)
{
    routes_.emplace_back(std::move(prefix), std::move(service));
}

void SimulatedHttpClient::clearLog()
{
    cleared_ += log_.size();
    log_.clear();
}

asio::awaitable<std::expected<HttpResponse, HttpError>> SimulatedHttpClient::send(HttpRequest request)
{
    const auto asked = log_.size() + cleared_;
    log_.push_back({.asked = clock_.now(), .path = pathOf(request.url)});
    const auto outcome = [this, asked](int status, std::optional<HttpError::Kind> failure) {
        if (asked < cleared_)
            return;
        log_[asked - cleared_].status = status;
        log_[asked - cleared_].failure = failure;
    };

    const SimulatedService* service = nullptr;
    std::size_t longest = 0;
    for (const auto& [prefix, candidate] : routes_) {
        if (request.url.starts_with(prefix) && (!service || prefix.size() > longest)) {
            service = &candidate;
            longest = prefix.size();
        }
    }
    auto failure = failure_;
    if (!failure && !service)
        failure = HttpError::Kind::cannotResolve;
    SimulatedAnswer answer;
    if (!failure)
        answer = (*service)(request, clock_.now());

    Seconds duration = latency_;
    using enum HttpError::Kind;
    switch (failure ? TransportFault::none : answer.fault) {
    case TransportFault::none: break;
    case TransportFault::hang: duration = Seconds::max(); break;
    case TransportFault::slow: duration += Seconds{static_cast<double>(answer.response.body.size())}; break;
    case TransportFault::reset:
    case TransportFault::cutOff: failure = connectionLost; break;
    case TransportFault::endless:
    case TransportFault::gzipBomb: failure = answerTooLarge; break;
    }
    if (!failure && answer.response.body.size() > longestBody)
        failure = answerTooLarge;
    if (duration >= request.timeout) {
        duration = request.timeout;
        failure = timedOut;
    }
    if (duration > Seconds{0})
        co_await clock_.sleepFor(std::chrono::ceil<std::chrono::milliseconds>(duration));
    if (failure) {
        outcome(0, failure);
        co_return std::unexpected{HttpError{.kind = *failure}};
    }
    outcome(answer.response.status, std::nullopt);
    co_return std::move(answer.response);
}

}  // namespace tidewell
