#pragma once

#include <memory>
#include <string>

#include "support/HttpClient.h"

namespace tidewell {

/// The HTTP client of the running program, over libcurl.
///
/// Transfers run on `workers` and block one of its threads each; with a pool of two, a third waits its turn,
/// and that wait counts. Connecting may take 15 s, a request its own time-out; both count time asleep.
/// https, and plain http to loopback addresses only; follows at most three redirects, on the same host and
/// port and never from https to http. Connections are reused within 30 s of their last use, counted through
/// sleep, and never after a failure of any of them. Sends no cookies and reads no .netrc.
///
/// Heeds the usual variables: https_proxy, all_proxy and no_proxy (never for loopback), SSL_CERT_FILE.
/// When it goes, its transfers end at once, so it should go before the engine stops.
class CurlHttpClient final : public HttpClient {
public:
    CurlHttpClient(asio::any_io_executor workers, std::string userAgent);
    ~CurlHttpClient() override;

    [[nodiscard]] asio::awaitable<std::expected<HttpResponse, HttpError>> send(HttpRequest request) override;

private:
    struct Transfers;
    asio::any_io_executor workers_;
    std::shared_ptr<Transfers> transfers_;
};

}  // namespace tidewell
