#include "simulator/LoopbackServer.h"

#include <fmt/format.h>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <future>
#include <thread>

#include "simulator/Gzip.h"

namespace tidewell {

namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::uint32_t longestHead = 16 * 1024;
constexpr std::uint64_t longestBody = 64 * 1024;
constexpr int mostConnections = 256;
constexpr auto idleTime = 60s;
constexpr std::size_t chunkSize = 4096;
/// An endless body comes at about 12 MB a second: fast enough to hit any limit, and it leaves the processor
/// some rest.
constexpr std::size_t endlessChunk = 64 * 1024;
constexpr auto endlessPause = 5ms;
constexpr std::size_t bombSize = 16 * 1024 * 1024;

using Request = http::request<http::string_body>;

/// Where to write, and what the coroutines of one connection share.
struct Connection {
    beast::tcp_stream stream;
    bool keepAlive = true;
};

asio::awaitable<bool> write(Connection& connection, std::string_view bytes)
{
    connection.stream.expires_after(idleTime);
    error_code error;
    co_await asio::async_write(connection.stream, asio::buffer(bytes),
                               asio::redirect_error(asio::use_awaitable, error));
    co_return !error;
}

asio::awaitable<void> pause(Connection& connection, std::chrono::milliseconds time)
{
    asio::steady_timer timer{connection.stream.get_executor(), time};
    error_code ignored;
    co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
}

/// Until the other side closes.
asio::awaitable<void> hang(Connection& connection)
{
    connection.stream.expires_never();
    std::array<char, 1024> ignored;
    error_code error;
    while (!error)
        co_await connection.stream.async_read_some(asio::buffer(ignored),
                                                   asio::redirect_error(asio::use_awaitable, error));
    connection.keepAlive = false;
}

void reset(Connection& connection)
{
    error_code ignored;
    auto& socket = connection.stream.socket();
    socket.set_option(tcp::socket::linger{true, 0}, ignored);
    socket.close(ignored);
    connection.keepAlive = false;
}

/// Ends the connection so that what was sent still arrives.
asio::awaitable<void> close(Connection& connection)
{
    connection.keepAlive = false;
    error_code error;
    connection.stream.socket().shutdown(tcp::socket::shutdown_send, error);
    std::array<char, 1024> ignored;
    connection.stream.expires_after(1s);
    while (!error)
        co_await connection.stream.async_read_some(asio::buffer(ignored),
                                                   asio::redirect_error(asio::use_awaitable, error));
}

std::string headText(const SimulatedAnswer& answer, std::string_view encodingLines, bool keepAlive)
{
    // A status without a standard meaning, such as 430, comes without a reason.
    const auto status = http::int_to_status(static_cast<unsigned>(answer.response.status));
    const std::string reason =
        status == http::status::unknown ? "" : std::string{http::obsolete_reason(status)};
    std::string head = fmt::format("HTTP/1.1 {} {}\r\n", answer.response.status, reason);
    for (const auto& header : answer.response.headers)
        head += fmt::format("{}: {}\r\n", header.name, header.value);
    head += encodingLines;
    head += keepAlive ? "Connection: keep-alive\r\n\r\n" : "Connection: close\r\n\r\n";
    return head;
}

std::string chunked(std::string_view body)
{
    std::string text;
    while (!body.empty()) {
        const auto part = body.substr(0, chunkSize);
        body.remove_prefix(part.size());
        text += fmt::format("{:x}\r\n{}\r\n", part.size(), part);
    }
    return text + "0\r\n\r\n";
}

asio::awaitable<void> sendEndless(Connection& connection, std::string head)
{
    if (!co_await write(connection, head))
        co_return;
    const std::string chunk = fmt::format("{:x}\r\n{}\r\n", endlessChunk, std::string(endlessChunk, ' '));
    while (co_await write(connection, chunk))
        co_await pause(connection, endlessPause);
    connection.keepAlive = false;
}

/// One byte a second, and no answer is ever long enough to wait for.
asio::awaitable<void> sendSlowly(Connection& connection, std::string head, std::string body)
{
    bool open = co_await write(connection, head);
    for (std::size_t i = 0; open && i < body.size(); ++i) {
        co_await pause(connection, 1s);
        open = co_await write(connection, std::string_view{body}.substr(i, 1));
    }
    connection.keepAlive = connection.keepAlive && open;
}

asio::awaitable<void> send(Connection& connection, SimulatedAnswer answer)
{
    switch (answer.fault) {
    case TransportFault::hang: co_await hang(connection); co_return;
    case TransportFault::reset: reset(connection); co_return;
    case TransportFault::endless: {
        std::string head = headText(answer, "Transfer-Encoding: chunked\r\n", connection.keepAlive);
        co_await sendEndless(connection, std::move(head));
        co_return;
    }
    case TransportFault::gzipBomb: {
        static const std::string bomb = gzipOfBlanks(bombSize);
        answer.response.body = bomb;
        break;
    }
    case TransportFault::none:
    case TransportFault::cutOff:
    case TransportFault::slow: break;
    }

    const bool plain = answer.fault == TransportFault::cutOff || answer.fault == TransportFault::slow;
    const bool zip = answer.gzip && answer.fault == TransportFault::none;
    const bool inChunks = answer.chunked && !plain;
    std::string body = zip ? gzip(answer.response.body) : std::move(answer.response.body);
    std::string lines =
        inChunks ? "Transfer-Encoding: chunked\r\n" : fmt::format("Content-Length: {}\r\n", body.size());
    if (zip || answer.fault == TransportFault::gzipBomb)
        lines += "Content-Encoding: gzip\r\n";
    std::string head = headText(answer, lines, connection.keepAlive);
    if (inChunks)
        body = chunked(body);
    if (answer.fault == TransportFault::slow) {
        co_await sendSlowly(connection, std::move(head), std::move(body));
        co_return;
    }
    const bool cut = answer.fault == TransportFault::cutOff && answer.cutAfter < body.size();
    if (cut)
        body.resize(answer.cutAfter);
    head += body;
    if (!co_await write(connection, head))
        connection.keepAlive = false;
    if (cut)
        co_await close(connection);
}

SimulatedAnswer refusal(int status) { return {.response = {.status = status, .body = ""}}; }

}  // namespace

struct LoopbackServer::Impl {
    SimulatedService service;
    std::function<Date()> now;
    Options options;
    int connections = 0;
    asio::io_context context{1};
    tcp::acceptor acceptor{context};
    asio::steady_timer roomLeft{context};  ///< Cancelled when a connection ends.
    std::thread thread{};

    /// The answer to a request as the parser saw it, with the status to report.
    SimulatedAnswer answerTo(const Request& request)
    {
        if (request.method() != http::verb::get && request.method() != http::verb::post)
            return refusal(405);
        HttpRequest asked{.method = request.method() == http::verb::get ? HttpMethod::get : HttpMethod::post,
                          .url = std::string{request.target()},
                          .body = SecretText{std::string_view{request.body()}}};
        for (const auto& field : request)
            asked.headers.push_back({std::string{field.name_string()}, std::string{field.value()}});
        return service(asked, now());
    }

    void report(std::string_view target, const SimulatedAnswer& answer) const
    {
        const bool withheld = answer.fault == TransportFault::hang || answer.fault == TransportFault::reset;
        if (options.onRequest)
            options.onRequest(std::string{target.substr(0, target.find('?'))},
                              withheld ? 0 : answer.response.status);
    }

    asio::awaitable<void> serve(tcp::socket socket)
    {
        Connection connection{.stream = beast::tcp_stream{std::move(socket)}};
        beast::flat_buffer buffer;
        while (connection.keepAlive) {
            http::request_parser<http::string_body> parser;
            parser.header_limit(longestHead);
            parser.body_limit(longestBody);
            connection.stream.expires_after(idleTime);
            error_code error;
            co_await http::async_read(connection.stream, buffer, parser,
                                      asio::redirect_error(asio::use_awaitable, error));
            const bool tooLarge = error == http::error::header_limit || error == http::error::body_limit;
            if (error && !tooLarge &&
                (error.category() != http::make_error_code(http::error::end_of_stream).category() ||
                 error == http::error::end_of_stream || error == http::error::partial_message))
                break;
            if (error) {
                connection.keepAlive = false;
                SimulatedAnswer answer = refusal(tooLarge ? 413 : 400);
                report("(no request)", answer);
                co_await send(connection, std::move(answer));
                co_await close(connection);
                break;
            }
            connection.keepAlive = parser.get().keep_alive();
            SimulatedAnswer answer = answerTo(parser.get());
            report(parser.get().target(), answer);
            co_await send(connection, std::move(answer));
        }
        error_code ignored;
        connection.stream.socket().shutdown(tcp::socket::shutdown_both, ignored);
        connections -= 1;
        roomLeft.cancel();
    }

    asio::awaitable<void> listen()
    {
        for (;;) {
            error_code error;
            while (connections >= mostConnections) {
                roomLeft.expires_after(1h);
                co_await roomLeft.async_wait(asio::redirect_error(asio::use_awaitable, error));
            }
            tcp::socket socket{context};
            co_await acceptor.async_accept(socket, asio::redirect_error(asio::use_awaitable, error));
            if (error == asio::error::operation_aborted)
                co_return;
            if (error) {
                // Out of descriptors, for example: not a reason to stop, nor to spin.
                asio::steady_timer timer{context, 50ms};
                co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, error));
                continue;
            }
            connections += 1;
            socket.set_option(tcp::no_delay{true}, error);
            asio::co_spawn(context, serve(std::move(socket)), asio::detached);
        }
    }
};

std::expected<std::unique_ptr<LoopbackServer>, std::string> LoopbackServer::start(SimulatedService service,
                                                                                  std::function<Date()> now,
                                                                                  Options options)
{
    error_code error;
    const auto address = asio::ip::make_address(options.host, error);
    if (error || !address.is_loopback())
        return std::unexpected{fmt::format("{} is not a loopback address such as 127.0.0.1", options.host)};
    const tcp::endpoint endpoint{address, options.port};
    auto impl = std::make_unique<Impl>(std::move(service), std::move(now), std::move(options));
    auto& acceptor = impl->acceptor;
    acceptor.open(endpoint.protocol(), error);
    if (!error)
        acceptor.set_option(asio::socket_base::reuse_address{true}, error);
    if (!error)
        acceptor.bind(endpoint, error);
    if (!error)
        acceptor.listen(asio::socket_base::max_listen_connections, error);
    if (error)
        return std::unexpected{
            error == asio::error::address_in_use
                ? fmt::format("Port {} is in use by another program", endpoint.port())
                : fmt::format("Cannot listen on port {}: {}", endpoint.port(), error.message())};
    asio::co_spawn(impl->context, impl->listen(), asio::detached);
    impl->thread = std::thread{[&context = impl->context] { context.run(); }};
    return std::unique_ptr<LoopbackServer>{new LoopbackServer{std::move(impl)}};
}

LoopbackServer::LoopbackServer(std::unique_ptr<Impl> impl) : impl_{std::move(impl)} {}

LoopbackServer::~LoopbackServer()
{
    impl_->context.stop();
    impl_->thread.join();
}

std::uint16_t LoopbackServer::port() const { return impl_->acceptor.local_endpoint().port(); }

std::string LoopbackServer::origin() const
{
    const auto endpoint = impl_->acceptor.local_endpoint();
    const auto host = endpoint.address().to_string();
    return endpoint.address().is_v6() ? fmt::format("http://[{}]:{}", host, endpoint.port())
                                      : fmt::format("http://{}:{}", host, endpoint.port());
}

void LoopbackServer::perform(std::function<void()> work)
{
    std::packaged_task<void()> task{std::move(work)};
    auto done = task.get_future();
    asio::post(impl_->context, [&task] { task(); });
    done.get();
}

}  // namespace tidewell
