#include "simulator/SimulatedHttpClient.h"

#include "testing/FakeClock.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

using Result = std::expected<HttpResponse, HttpError>;

struct Setting {
    asio::io_context io{};
    FakeClock clock{io, dateFromUnix(1772438000)};
    SimulatedHttpClient http{clock};
    SimulatedAnswer answer{.response = {.status = 200, .body = "twelve bytes"}};

    Setting()
    {
        http.route("https://a.example/", [this](const HttpRequest&, Date) { return answer; });
        http.route("https://a.example/other",
                   [](const HttpRequest&, Date) { return SimulatedAnswer{.response = {.status = 404}}; });
    }
    Running<Result> send(std::string url, Seconds timeout = 60s)
    {
        HttpRequest request{.url = std::move(url), .timeout = timeout};
        Running<Result> running{io.get_executor(), http.send(std::move(request))};
        clock.runReady();
        return running;
    }
};

TEST(SimulatedHttpClient, asksTheServiceOfTheLongestPrefixAndLogsWithoutQueries)
{
    Setting setting;
    EXPECT_EQ(setting.send("https://a.example/x?secret=1").result()->status, 200);
    EXPECT_EQ(setting.send("https://a.example/other/x").result()->status, 404);
    EXPECT_EQ(setting.send("https://b.example/").result().error().kind, HttpError::Kind::cannotResolve);
    setting.http.setFailure(HttpError::Kind::cannotConnect);
    EXPECT_EQ(setting.send("https://a.example/").result().error().kind, HttpError::Kind::cannotConnect);
    const auto& log = setting.http.log();
    ASSERT_EQ(log.size(), 4U);
    EXPECT_EQ(log[0].path, "/x");
    EXPECT_EQ(log[1].status, 404);
    EXPECT_EQ(log[3].failure, HttpError::Kind::cannotConnect);
}

TEST(SimulatedHttpClient, faultsTakeTheClocksTimeAndEndAsARealClientSeesThem)
{
    using Kind = HttpError::Kind;
    // Twelve bytes at one a second fit into a minute and not into ten seconds.
    const std::vector<std::tuple<TransportFault, double, double, std::optional<Kind>>> cases{
        {TransportFault::none, 60, 0, std::nullopt},
        {TransportFault::hang, 60, 60, Kind::timedOut},
        {TransportFault::hang, 5, 5, Kind::timedOut},
        {TransportFault::slow, 60, 12, std::nullopt},
        {TransportFault::slow, 10, 10, Kind::timedOut},
        {TransportFault::reset, 60, 0, Kind::connectionLost},
        {TransportFault::cutOff, 60, 0, Kind::connectionLost},
        {TransportFault::endless, 60, 0, Kind::answerTooLarge},
        {TransportFault::gzipBomb, 60, 0, Kind::answerTooLarge}};
    for (const auto& [fault, timeout, duration, expected] : cases) {
        Setting setting;
        setting.answer.fault = fault;
        auto running = setting.send("https://a.example/", Seconds{timeout});
        EXPECT_EQ(running.ended(), duration == 0);
        if (duration > 0)
            setting.clock.advance(Seconds{duration - 0.001});
        EXPECT_EQ(running.ended(), duration == 0);
        setting.clock.advance(1ms);
        ASSERT_TRUE(running.ended());
        const auto& result = running.result();
        EXPECT_EQ(result ? std::nullopt : std::optional{result.error().kind}, expected);
        EXPECT_EQ(setting.http.log()[0].failure, expected);
    }
}

TEST(SimulatedHttpClient, aCancelledCallerLeavesAtOnceAndALogClearedMeanwhileStaysWhole)
{
    Setting setting;
    setting.http.setLatency(2s);
    auto first = setting.send("https://a.example/1");
    setting.http.clearLog();
    auto second = setting.send("https://a.example/2");
    auto third = setting.send("https://a.example/3");
    second.cancel();
    setting.clock.runReady();
    EXPECT_TRUE(second.cancelled());
    EXPECT_FALSE(third.ended());
    setting.clock.advance(2s);
    EXPECT_TRUE(first.ended() && third.ended());
    ASSERT_EQ(setting.http.log().size(), 2U);
    EXPECT_EQ(setting.http.log()[0].status, 0);
    EXPECT_EQ(setting.http.log()[1].status, 200);
}

}  // namespace
}  // namespace tidewell
