// What one poll of a full day costs, from the service's bytes to what the status item shows.

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <map>
#include <memory>

#include "polling/ReadingMerge.h"
#include "simulator/LibreLinkUpSimulator.h"
#include "simulator/SimulatedServices.h"
#include "sources/DexcomAPI.h"
#include "sources/LibreLinkUpAPI.h"
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

/// Asks LibreLinkUp's simulator each thing once, and answers the same from then on.
class RememberingClient final : public HttpClient {
public:
    explicit RememberingClient(Clock& clock) : clock_{clock}, service_{{}, clock.now()} {}
    asio::awaitable<std::expected<HttpResponse, HttpError>> send(HttpRequest request) override
    {
        auto known = answers_.find(request.url);
        if (known == answers_.end())
            known = answers_.emplace(request.url, service_.handle(request, clock_.now()).response).first;
        co_return known->second;
    }

private:
    Clock& clock_;
    LibreLinkUpSimulator service_;
    std::map<std::string, HttpResponse> answers_{};
};

std::shared_ptr<GlucoseAPIProtocol> dexcomClient(asio::any_io_executor executor, HttpClient& http,
                                                 Clock& clock)
{
    return std::make_shared<DexcomAPI>(
        executor, http, clock, ServiceEndpoints::builtIn(),
        GlucoseAccountConfiguration{.username = "ada", .password = SecretText{"secret"}, .region = "us"});
}

std::shared_ptr<GlucoseAPIProtocol> libreLinkUpClient(asio::any_io_executor executor, HttpClient& http,
                                                      Clock& clock)
{
    const LibreAccount account;
    return std::make_shared<LibreLinkUpAPI>(
        executor, http, clock,
        ServiceEndpoints{.libreLinkUp = {{account.homeRegion, "https://service.test/" + account.homeRegion}}},
        GlucoseAccountConfiguration{.provider = GlucoseProvider::libreLinkUp,
                                    .username = account.email,
                                    .password = SecretText{std::string_view{account.password}},
                                    .region = account.homeRegion,
                                    .patientID = account.people.front().patientId});
}

/// The parts of one poll, on one thread.
struct Poll {
    explicit Poll(GlucoseProvider provider)
    {
        if (provider == GlucoseProvider::dexcom) {
            http = std::make_unique<CannedClient>(dayOfReadings());
            client = dexcomClient(io.get_executor(), *http, clock);
        } else {
            http = std::make_unique<RememberingClient>(clock);
            client = libreLinkUpClient(io.get_executor(), *http, clock);
        }
    }

    asio::io_context io{1};
    SystemClock clock{io};
    SeededRandom random{1};
    std::unique_ptr<HttpClient> http{};
    std::shared_ptr<GlucoseAPIProtocol> client{};
    StatusBarViewModel viewModel{io.get_executor(), clock, random,
                                 [] { return std::optional{AppSettings{}}; }};
    std::vector<GlucoseReading> history;

    std::vector<GlucoseReading> fetch()
    {
        std::vector<GlucoseReading> fetched;
        asio::co_spawn(
            io,
            [this, &fetched]() -> asio::awaitable<void> {
                auto readings = co_await client->fetchLatestReadings();
                if (readings)
                    fetched = std::move(*readings);
            },
            asio::detached);
        io.restart();
        io.poll();
        return fetched;
    }

    /// Holds what a day of polling each minute has brought, up to the newest reading fetched.
    void fillDayOfMinutes()
    {
        const auto fetched = fetch();
        if (fetched.empty())
            return;
        for (int minute = 1440; minute > 0; --minute)
            history.push_back(makeReading(100 + minute % 80, "Flat",
                                          fetched.back().date - std::chrono::minutes{minute}, Seconds{60},
                                          GlucoseProvider::libreLinkUp));
        history = mergedReadings(std::move(history), fetched);
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
    Poll poll{GlucoseProvider::dexcom};
    for (auto _ : state)
        if (poll.fetch().size() != 288)
            state.SkipWithError("not 288 readings");
}
BENCHMARK(decode288Readings)->Unit(benchmark::kMicrosecond);

void merge288Readings(benchmark::State& state)
{
    Poll poll{GlucoseProvider::dexcom};
    const auto fetched = poll.fetch();
    const auto held = mergedReadings({}, fetched);
    for (auto _ : state)
        benchmark::DoNotOptimize(mergedReadings(held, fetched));
}
BENCHMARK(merge288Readings)->Unit(benchmark::kMicrosecond);

void onePollOf288Readings(benchmark::State& state)
{
    Poll poll{GlucoseProvider::dexcom};
    for (auto _ : state) {
        poll.history = mergedReadings(std::move(poll.history), poll.fetch());
        poll.show();
    }
    if (poll.history.size() != 288)
        state.SkipWithError("not 288 readings");
}
BENCHMARK(onePollOf288Readings)->Unit(benchmark::kMicrosecond);

/// A graph of 140 values or so, and the current one.
void decodeLibreLinkUpGraph(benchmark::State& state)
{
    Poll poll{GlucoseProvider::libreLinkUp};
    for (auto _ : state)
        if (poll.fetch().size() < 100)
            state.SkipWithError("no graph");
}
BENCHMARK(decodeLibreLinkUpGraph)->Unit(benchmark::kMicrosecond);

void mergeLibreLinkUpGraphIntoADayOfMinutes(benchmark::State& state)
{
    Poll poll{GlucoseProvider::libreLinkUp};
    poll.fillDayOfMinutes();
    const auto fetched = poll.fetch();
    for (auto _ : state)
        benchmark::DoNotOptimize(mergedReadings(poll.history, fetched));
}
BENCHMARK(mergeLibreLinkUpGraphIntoADayOfMinutes)->Unit(benchmark::kMicrosecond);

void onePollOfLibreLinkUpWithADayOfMinutes(benchmark::State& state)
{
    Poll poll{GlucoseProvider::libreLinkUp};
    poll.fillDayOfMinutes();
    for (auto _ : state) {
        poll.history = mergedReadings(std::move(poll.history), poll.fetch());
        poll.show();
    }
    if (poll.history.size() != 1441)
        state.SkipWithError("not 1441 readings");
}
BENCHMARK(onePollOfLibreLinkUpWithADayOfMinutes)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace tidewell

BENCHMARK_MAIN();
