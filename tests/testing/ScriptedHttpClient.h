#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "support/HttpClient.h"

namespace tidewell {

/// An HTTP client that answers from a queue, in order, each request in a later turn of its executor.
/// A request that finds the queue empty fails the test. Single-threaded; outlives its callers.
class ScriptedHttpClient final : public HttpClient {
public:
    void answer(int status, std::string body, std::vector<HttpHeader> headers = {})
    {
        script_.push_back({.status = status, .body = std::move(body), .headers = std::move(headers)});
    }
    void fail(HttpError::Kind kind) { script_.push_back({.failure = kind}); }
    /// Takes the request and never answers; ends by cancellation only.
    void hang() { script_.push_back({.hangs = true}); }

    /// What was asked so far, bodies and all.
    [[nodiscard]] const std::vector<HttpRequest>& requests() const { return requests_; }
    void forgetRequests() { requests_.clear(); }
    void forgetAnswers() { script_.clear(); }
    /// Answers that nobody has asked for.
    [[nodiscard]] std::size_t unused() const { return script_.size(); }
    /// Requests that are under way.
    [[nodiscard]] int running() const { return running_; }

    [[nodiscard]] asio::awaitable<std::expected<HttpResponse, HttpError>> send(HttpRequest request) override;

private:
    struct Scripted {
        int status = 0;
        std::string body{};
        std::vector<HttpHeader> headers{};
        std::optional<HttpError::Kind> failure{};
        bool hangs = false;
    };

    std::deque<Scripted> script_{};
    std::vector<HttpRequest> requests_{};
    int running_ = 0;
};

}  // namespace tidewell
