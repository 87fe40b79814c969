#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/SimulatedAnswer.h"
#include "support/Clock.h"

namespace tidewell {

/// The HTTP client of tests: requests go to simulated services in the same process, and time is the clock's.
///
/// Keeps the contract of HttpClient: one answer or one error, time-outs by the clock, cancellation leaves at
/// once. Single-threaded: used on the executor of its callers. `clock` and the services outlive it.
class SimulatedHttpClient final : public HttpClient {
public:
    explicit SimulatedHttpClient(Clock& clock) : clock_{clock} {}

    /// Requests whose URL begins with `prefix` go to `service`; the longest prefix wins. Without one a
    /// request fails with cannotResolve.
    void route(std::string prefix, SimulatedService service);

    /// How long every answer takes from now on.
    void setLatency(Seconds latency) { latency_ = latency; }
    /// While set, every request fails with this kind after the latency: no network, for example.
    void setFailure(std::optional<HttpError::Kind> failure) { failure_ = failure; }

    /// What was asked and what came of it, in the order of asking; no bodies and no query.
    struct Exchange {
        Date asked{};
        std::string path{};
        int status = 0;                            ///< 0 while there is no answer.
        std::optional<HttpError::Kind> failure{};  ///< When there was none.
    };
    [[nodiscard]] const std::vector<Exchange>& log() const { return log_; }
    void clearLog();

    [[nodiscard]] asio::awaitable<std::expected<HttpResponse, HttpError>> send(HttpRequest request) override;

private:
    Clock& clock_;
    std::vector<std::pair<std::string, SimulatedService>> routes_{};
    Seconds latency_{0};
    std::optional<HttpError::Kind> failure_{};
    std::vector<Exchange> log_{};
    std::size_t cleared_ = 0;  ///< How many entries the log lost; a request that goes on finds its own.
};

}  // namespace tidewell
