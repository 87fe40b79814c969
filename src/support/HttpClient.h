#pragma once

#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/Asio.h"
#include "support/SecretText.h"
#include "support/Time.h"

namespace tidewell {

enum class HttpMethod { get, post };

struct HttpHeader {
    std::string name;
    std::string value;
    bool operator==(const HttpHeader&) const = default;
};

/// Decides whether a request may follow an HTTP redirect. The client's own rules (the same host and port,
/// never from https to http, not too often) hold besides. Called on any thread.
class HttpRedirectDelegate {
public:
    virtual ~HttpRedirectDelegate() = default;
    /// `from` and `to` are absolute URLs. A refused redirect ends the request with redirectRefused.
    [[nodiscard]] virtual bool mayFollow(std::string_view from, std::string_view to) = 0;
};

/// One request. Headers are sent in their order. The body may hold a password: it is wiped with the record.
struct HttpRequest {
    HttpMethod method = HttpMethod::get;
    std::string url;
    std::vector<HttpHeader> headers{};
    SecretText body{};
    Seconds timeout{60};                                       ///< From start to last byte of the answer.
    std::shared_ptr<HttpRedirectDelegate> redirectDelegate{};  ///< Without one only the client's rules count.
};

/// One complete answer, whatever its status. The body is decoded (gzip) and at most 4 MiB long.
struct HttpResponse {
    int status = 0;
    std::vector<HttpHeader> headers{};
    std::string body{};

    /// The first header of that name, compared without regard to case; empty when there is none.
    [[nodiscard]] std::string_view header(std::string_view name) const;
};

/// Why there is no complete answer: a failure of the transport. Returned, never thrown.
struct HttpError {
    enum class Kind {
        invalidURL,  ///< Not http(s), or plain http to another machine.
        cannotResolve,
        cannotConnect,
        tls,  ///< The certificate was refused, or the handshake failed.
        timedOut,
        connectionLost,  ///< Ended before the answer was complete.
        answerTooLarge,
        redirectRefused,  ///< To another host or port, to plain http, or too often.
        badAnswer,        ///< Not HTTP, or an encoding that does not decode.
    };
    Kind kind;
    bool operator==(const HttpError&) const = default;
};

/// A fixed sentence for each kind; never holds a URL, a header or a body.
[[nodiscard]] std::string description(const HttpError& error);

/// Sends requests. Serves several at once. Called from a coroutine on any executor, which is resumed there.
/// A cancelled caller leaves at once with operation_aborted and the transfer is given up.
class HttpClient {
public:
    virtual ~HttpClient() = default;
    [[nodiscard]] virtual asio::awaitable<std::expected<HttpResponse, HttpError>> send(
        HttpRequest request) = 0;
};

}  // namespace tidewell
