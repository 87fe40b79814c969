#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "simulator/SimulatedAnswer.h"
#include "support/Time.h"

namespace tidewell {

/// Serves a simulated service over HTTP/1.1 on this machine.
///
/// Has one thread of its own, on which `now` and the service are called, one request at a time. Connections
/// stay open between requests for a minute; what a TransportFault says is done on the wire. Requests that are
/// no HTTP get 400, header fields over 16 KiB or a body over 64 KiB 413, and beyond 256 connections a new one
/// waits. Made and destroyed on one thread; the destructor ends everything within a tenth of a second.
class LoopbackServer {
public:
    struct Options {
        std::string host = "127.0.0.1";  ///< A loopback address.
        std::uint16_t port = 0;          ///< 0: any free one.
        /// Called after each request with its path (no query) and the status; 0 for an answer that is
        /// withheld.
        std::function<void(const std::string& path, int status)> onRequest{};
    };

    /// An error is one sentence: the address is not of this machine's loopback, or the port is taken.
    [[nodiscard]] static std::expected<std::unique_ptr<LoopbackServer>, std::string> start(
        SimulatedService service, std::function<Date()> now, Options options);
    ~LoopbackServer();

    [[nodiscard]] std::uint16_t port() const;
    /// "http://127.0.0.1:8080", without a slash at its end.
    [[nodiscard]] std::string origin() const;

    /// Runs `work` on the server's thread between two requests and waits for it: the way to reach the service
    /// while it is served.
    void perform(std::function<void()> work);

private:
    struct Impl;
    explicit LoopbackServer(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
