// What one poll of a full day costs, from the service's bytes to what the status item shows.

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "polling/ReadingMerge.h"
#include "simulator/SimulatedServices.h"
#include "sources/DexcomAPI.h"
#include "statusbar/StatusItemContent.h"
#include "support/Random.h"
#include "support/SystemClock.h"

namespace tidewell {

namespace {

const Date now = dateFromUnix(1'772'438'400);

/// Answers at once with what it was given; sign-ins with an id.
class CannedClient final : public HttpClient {
public:
    explicit CannedClient(std::string readings) : readings_{std::move(readings)} {}
    asio::awaitable<std::expected<HttpResponse, HttpError>> send(HttpRequest request) override
    {
        HttpResponse response{.status = 200};
        if (request.url.ends_with("ReadPublisherLatestGlucoseValues"))
            response.body = readings_;
        else
            response.body = "\"7c1f0b52-3f4e-4d0a-9a53-1be0c2d4e611\"";
        co_return response;
    }

private:
    std::string readings_;
};

std::string dayOfReadings()
{
    std::string body = "[";
    for (int index = 0; index < 288; ++index) {
        const auto milliseconds = static_cast<std::int64_t>(unixSeconds(now) - 60 - 300.0 * index) * 1000;
        if (index > 0)
            body += ',';
        body += fmt::format("{{\"WT\":\"Date({0})\",\"ST\":\"Date({0})\",\"DT\":\"Date({0}+0100)\",",
                            milliseconds);
        body += fmt::format("\"Value\":{},\"Trend\":\"Flat\"}}", 100 + index % 80);
    }
    return body + "]";
}

/// The parts of one poll, on one thread.
struct Poll {
    asio::io_context io{1};
    SystemClock clock{io};
    SeededRandom random{1};
    CannedClient http{dayOfReadings()};
    DexcomAPI client{io.get_executor(),
                     http,
                     clock,
                     ServiceEndpoints::builtIn(),
                     {.username = "ada", .password = SecretText{"secret"}, .region = "us"}};
    StatusBarViewModel viewModel{io.get_executor(), clock, random,
                                 [] { return std::optional{AppSettings{}}; }};
    std::vector<GlucoseReading> history;

    std::vector<GlucoseReading> fetch()
    {
        std::vector<GlucoseReading> fetched;
        asio::co_spawn(
            io,
            [this, &fetched]() -> asio::awaitable<void> {
                auto readings = co_await client.fetchLatestReadings();
                if (readings)
                    fetched = std::move(*readings);
            },
            asio::detached);
        io.restart();
        io.poll();
        return fetched;
    }

    void show()
    {
        viewModel.batch([this] {
            viewModel.setGlucoseHistory(history);
            viewModel.presentReading(history.back(), now);
            viewModel.finishActivity();
        });
        benchmark::DoNotOptimize(statusItemContent(viewModel.state(), AppSettings{}, now, TimeZone::utc()));
    }
};

void decode288Readings(benchmark::State& state)
{
    Poll poll;
    for (auto _ : state)
        if (poll.fetch().size() != 288)
            state.SkipWithError("not 288 readings");
}
BENCHMARK(decode288Readings)->Unit(benchmark::kMicrosecond);

void merge288Readings(benchmark::State& state)
{
    Poll poll;
    const auto fetched = poll.fetch();
    const auto held = mergedReadings({}, fetched);
    for (auto _ : state)
        benchmark::DoNotOptimize(mergedReadings(held, fetched));
}
BENCHMARK(merge288Readings)->Unit(benchmark::kMicrosecond);

void onePollOf288Readings(benchmark::State& state)
{
    Poll poll;
    for (auto _ : state) {
        poll.history = mergedReadings(std::move(poll.history), poll.fetch());
        poll.show();
    }
    if (poll.history.size() != 288)
        state.SkipWithError("not 288 readings");
}
BENCHMARK(onePollOf288Readings)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace tidewell

BENCHMARK_MAIN();
