#pragma once

#include <cstddef>
#include <functional>

#include "support/HttpClient.h"

namespace tidewell {

/// What goes wrong on the way of an answer. The loopback server does it for real; SimulatedHttpClient gives
/// the result that a client would see.
enum class TransportFault {
    none,
    hang,      ///< The request is read and never answered.
    reset,     ///< The connection is reset instead of an answer.
    cutOff,    ///< The connection ends after `cutAfter` bytes of the body.
    slow,      ///< The body comes at one byte a second.
    endless,   ///< The body never ends.
    gzipBomb,  ///< A small gzip body that decodes to 16 MiB.
};

/// One answer of a simulated service, as it leaves the service: the body is plain, the transport encodes it.
struct SimulatedAnswer {
    HttpResponse response{};
    TransportFault fault = TransportFault::none;
    std::size_t cutAfter = 0;  ///< Of cutOff, in bytes of the plain body.
    bool chunked = false;      ///< Sent in chunks, without a Content-Length.
    bool gzip = false;         ///< The request accepts gzip and the service uses it here.
};

/// A service: the answer to one request at that moment. Called by one thread at a time.
using SimulatedService = std::function<SimulatedAnswer(const HttpRequest& request, Date now)>;

}  // namespace tidewell
