#include "simulator/LoopbackServer.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <charconv>

#include "simulator/DemoService.h"
#include "support/Json.h"

namespace tidewell {
namespace {

using asio::ip::tcp;
using boost::system::error_code;

/// The other end, without a line of HTTP code in common with the server.
struct Wire {
    asio::io_context io{};
    tcp::socket socket{io};
    std::string received{};

    explicit Wire(const std::string& origin)
    {
        unsigned short port = 0;
        const auto digits = std::string_view{origin}.substr(origin.rfind(':') + 1);
        std::from_chars(digits.data(), digits.data() + digits.size(), port);
        socket.connect({asio::ip::address_v4::loopback(), port});
    }
    void send(std::string_view text) { asio::write(socket, asio::buffer(text)); }
    void request(std::string_view path, std::string_view headers = "")
    {
        send(fmt::format("POST {} HTTP/1.1\r\nHost: x\r\nContent-Length: 2\r\n{}\r\n{{}}", path, headers));
    }
    /// Up to and with `end`.
    std::string until(std::string_view end)
    {
        error_code error;
        const auto size = asio::read_until(socket, asio::dynamic_buffer(received), end, error);
        std::string text = received.substr(0, error ? received.size() : size);
        received.erase(0, text.size());
        return text;
    }
    std::string exactly(std::size_t size)
    {
        error_code error;
        if (size > received.size())
            asio::read(socket, asio::dynamic_buffer(received), asio::transfer_exactly(size - received.size()),
                       error);
        std::string text = received.substr(0, size);
        received.erase(0, size);
        return text;
    }
    /// What comes until the connection ends, and how it ends.
    std::pair<std::string, error_code> rest()
    {
        error_code error;
        asio::read(socket, asio::dynamic_buffer(received), error);
        return {std::exchange(received, {}), error};
    }
};

struct Setting {
    std::vector<std::pair<std::string, int>> log{};
    SimulatedAnswer answer{
        .response = {.status = 200, .headers = {{"Content-Type", "text/plain"}}, .body = "hello"}};
    HttpRequest seen{};
    std::unique_ptr<LoopbackServer> server{};

    Setting()
    {
        auto started = LoopbackServer::start(
            [this](const HttpRequest& request, Date) {
                seen = request;
                return answer;
            },
            [] { return dateFromUnix(0); },
            {.onRequest = [this](const std::string& path, int status) { log.emplace_back(path, status); }});
        server = std::move(started).value();
    }
};

TEST(LoopbackServer, keepsConnectionsOpenAndPassesTheRequestOn)
{
    Setting setting;
    Wire wire{setting.server->origin()};
    for (int i = 0; i < 3; ++i) {
        wire.request("/path?query=1", "X-Test: yes\r\n");
        EXPECT_EQ(wire.until("\r\n\r\n"),
                  "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\nConnection: "
                  "keep-alive\r\n\r\n");
        EXPECT_EQ(wire.exactly(5), "hello");
    }
    setting.server->perform([&] { setting.answer.response.status = 430; });
    wire.request("/");
    EXPECT_TRUE(wire.until("\r\n\r\n").starts_with("HTTP/1.1 430 \r\n")) << "no reason of our own making";
    EXPECT_EQ(wire.exactly(5), "hello");
    wire.request("/", "Connection: close\r\n");
    EXPECT_TRUE(wire.rest().first.ends_with("Connection: close\r\n\r\nhello"));
    setting.server->perform([&] {
        EXPECT_EQ(setting.log[0], std::pair(std::string{"/path"}, 200));
        EXPECT_EQ(setting.seen.body.reveal(), "{}");
        EXPECT_EQ(setting.seen.method, HttpMethod::post);
    });
}

TEST(LoopbackServer, sendsChunksAndGzip)
{
    Setting setting;
    setting.server->perform([&] {
        setting.answer.chunked = true;
        setting.answer.response.body = std::string(5000, 'x');
    });
    Wire wire{setting.server->origin()};
    wire.request("/");
    EXPECT_NE(wire.until("\r\n\r\n").find("Transfer-Encoding: chunked\r\n"), std::string::npos);
    EXPECT_EQ(wire.until("0\r\n\r\n"),
              "1000\r\n" + std::string(4096, 'x') + "\r\n388\r\n" + std::string(904, 'x') + "\r\n0\r\n\r\n");

    setting.server->perform([&] { setting.answer.gzip = true; });
    wire.request("/");
    EXPECT_NE(wire.until("\r\n\r\n").find("Content-Encoding: gzip\r\n"), std::string::npos);
    const auto body = wire.until("\r\n0\r\n\r\n");
    EXPECT_LT(body.size(), 200U);
    EXPECT_EQ(body.substr(body.find("\r\n") + 2, 2), "\x1F\x8B");
}

TEST(LoopbackServer, doesOnTheWireWhatAFaultSays)
{
    Setting setting;
    const auto meet = [&](TransportFault fault) {
        setting.server->perform([&] {
            setting.answer.fault = fault;
            setting.answer.cutAfter = 3;
        });
        auto wire = std::make_unique<Wire>(setting.server->origin());
        wire->request("/");
        return wire;
    };
    EXPECT_EQ(meet(TransportFault::reset)->rest().second, asio::error::connection_reset);
    const auto [text, end] = meet(TransportFault::cutOff)->rest();
    EXPECT_TRUE(text.find("Content-Length: 5\r\n") != std::string::npos && text.ends_with("\r\n\r\nhel"))
        << text;
    EXPECT_EQ(end, asio::error::eof);
    EXPECT_EQ(meet(TransportFault::endless)->exactly(1'000'000).size(), 1'000'000U);
    auto bomb = meet(TransportFault::gzipBomb);
    const auto head = bomb->until("\r\n\r\n");
    EXPECT_NE(head.find("Content-Encoding: gzip"), std::string::npos);
    // These two are still under way when the server ends below, which must not wait for them.
    const auto slow = meet(TransportFault::slow);
    EXPECT_NE(slow->until("\r\n\r\n").find("Content-Length: 5"), std::string::npos);
    const auto hanging = meet(TransportFault::hang);
    int last = 200;
    while (last != 0)
        setting.server->perform([&] { last = setting.log.back().second; });
    setting.server.reset();
}

TEST(LoopbackServer, refusesWhatIsNoRequestAndStaysUp)
{
    Setting setting;
    const std::vector<std::pair<std::string, std::string_view>> cases{
        {"hello\r\n\r\n", "HTTP/1.1 400"},
        {std::string{"\x16\x03\x01\x02\0\x01\0\x01", 8} + "\r\n\r\n", "HTTP/1.1 400"},
        {"POST / HTTP/1.1\r\nContent-Length: x\r\n\r\n", "HTTP/1.1 400"},
        {"POST / HTTP/1.1\r\nContent-Length: 70000\r\n\r\n", "HTTP/1.1 413"},
        {"GET / HTTP/1.1\r\nX: " + std::string(20'000, 'x'), "HTTP/1.1 413"},
        {"DELETE / HTTP/1.1\r\n\r\n", "HTTP/1.1 405"},
    };
    for (const auto& [text, expected] : cases) {
        Wire wire{setting.server->origin()};
        wire.send(text);
        EXPECT_TRUE(wire.until("\r\n").starts_with(expected)) << text.substr(0, 40);
    }
    Wire wire{setting.server->origin()};
    wire.request("/");
    EXPECT_EQ(wire.until("\r\n"), "HTTP/1.1 200 OK\r\n");
}

TEST(LoopbackServer, saysWhyItCannotStart)
{
    Setting setting;
    const auto error = [](std::string host, std::uint16_t port) {
        return LoopbackServer::start({}, {}, {.host = std::move(host), .port = port}).error();
    };
    EXPECT_EQ(error("127.0.0.1", setting.server->port()),
              fmt::format("Port {} is in use by another program", setting.server->port()));
    EXPECT_NE(error("192.0.2.1", 0).find("not a loopback address"), std::string::npos);
    EXPECT_NE(error("localhost", 0).find("not a loopback address"), std::string::npos);
}

class FixedClock final : public Clock {
public:
    Date now() const override { return dateFromUnix(1772438000); }
    asio::awaitable<void> sleepFor(std::chrono::milliseconds) override { co_return; }
};

TEST(DemoService, servesItsAccountWhereItsEndpointsSay)
{
    const FixedClock clock;
    const auto demo = DemoService::start(clock).value();
    const auto entry = json::parse(demo->endpointsDocument()).at("dexcom").at(demo->account().region);
    const std::string base{entry.at("base").as_string()};
    const auto path = base.find('/', 8);
    Wire wire{base.substr(0, path)};
    const auto body = json::serialize(json::object{{"accountName", demo->account().username},
                                                   {"password", demo->account().password},
                                                   {"applicationId", entry.at("applicationId")}});
    wire.send(
        fmt::format("POST {}/General/AuthenticatePublisherAccount HTTP/1.1\r\nContent-Length: {}\r\n\r\n{}",
                    base.substr(path), body.size(), body));
    EXPECT_NE(wire.until("\r\n\r\n").find("Content-Length: 38"), std::string::npos);
    EXPECT_EQ(demo->account().provider, "dexcom");

    const auto libre = DemoService::start(clock, {.scenario = "libre"}).value();
    const auto account = libre->account();
    EXPECT_EQ(account.provider, "libreLinkUp");
    EXPECT_EQ(account.patientName, "Grace Muster");
    EXPECT_FALSE(account.patientID.empty());
    const std::string libreBase{
        json::parse(libre->endpointsDocument()).at("libreLinkUp").at(account.region).as_string()};
    Wire libreWire{libreBase.substr(0, libreBase.find('/', 8))};
    libreWire.request(libreBase.substr(libreBase.find('/', 8)) + "/llu/auth/login", "product: llu.ios\r\n");
    EXPECT_EQ(libreWire.until("\r\n"), "HTTP/1.1 400 Bad Request\r\n");
    for (const auto* scenario : {"libre-none", "libre-several"})
        EXPECT_EQ(DemoService::start(clock, {.scenario = scenario}).value()->account().patientID, "")
            << "there is nobody, or one is to be chosen";
    EXPECT_NE(DemoService::start(clock, {.scenario = "none"}).error().find("steady"), std::string::npos);
}

}  // namespace
}  // namespace tidewell
