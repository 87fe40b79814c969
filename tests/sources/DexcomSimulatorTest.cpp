#include "simulator/DexcomShareSimulator.h"

#include "simulator/SimulatedHttpClient.h"
#include "sources/DexcomAPI.h"
#include "testing/FakeClock.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

using ErrorKind = GlucoseAPIError::Kind;

/// The client against a service that was written apart from it.
class DexcomSimulatorTest : public testing::Test {
protected:
    DexcomSimulatorTest()
    {
        http_.route("https://share2.dexcom.com/",
                    [this](const HttpRequest& request, Date now) { return service_.handle(request, now); });
        const SimulatedAccount simulated;
        account_.username = simulated.name;
        account_.password = SecretText{std::string_view{simulated.password}};
        account_.region = "us";
    }
    std::expected<std::vector<GlucoseReading>, GlucoseAPIError> fetch()
    {
        const Running<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>> running{
            io_.get_executor(), api_->fetchLatestReadings()};
        clock_.advance(Seconds{120});
        EXPECT_TRUE(running.ended());
        return running.result();
    }
    ErrorKind failureKind()
    {
        const auto result = fetch();
        EXPECT_FALSE(result);
        return result ? ErrorKind::other : result.error().kind;
    }
    void setUp(const DexcomShareOptions& options)
    {
        service_.setOptions(options, clock_.now());
        service_.endSessions();
    }

    asio::io_context io_;
    FakeClock clock_{io_, dateFromUnix(1'772'438'400)};
    DexcomShareSimulator service_{{}, clock_.now()};
    SimulatedHttpClient http_{clock_};
    GlucoseAccountConfiguration account_;
    std::unique_ptr<DexcomAPI> api_;

    void SetUp() override
    {
        api_ = std::make_unique<DexcomAPI>(io_.get_executor(), http_, clock_, ServiceEndpoints::builtIn(),
                                           account_);
    }
};

TEST_F(DexcomSimulatorTest, readsADayAndOutlivesItsSessions)
{
    const auto newest = service_.readings().newest(clock_.now());
    ASSERT_TRUE(newest);
    const auto day = fetch();
    ASSERT_TRUE(day);
    EXPECT_GT(day->size(), 200U);
    const auto latest = std::ranges::max(*day, {}, &GlucoseReading::date);
    EXPECT_EQ(latest.date, newest->date);
    EXPECT_EQ(latest.mgdL, newest->mgdL);
    EXPECT_EQ(service_.counters().authentications, 1);

    EXPECT_TRUE(fetch());
    EXPECT_EQ(service_.counters().authentications, 1);
    service_.endSessions();
    EXPECT_TRUE(fetch());
    service_.forgetSessions();
    EXPECT_TRUE(fetch());
    EXPECT_EQ(service_.counters().authentications, 3);
    EXPECT_EQ(service_.counters().refusedSignIns, 0);
}

TEST_F(DexcomSimulatorTest, understandsEveryFormOfAnswer)
{
    for (const bool slashes : {false, true}) {
        for (const Seconds ahead : {Seconds{0}, Seconds{3600}, Seconds{-3600}}) {
            DexcomShareOptions options;
            options.readings = {.duplicates = true,
                                .everyTrend = true,
                                .slashes = slashes,
                                .worldTime = !slashes,
                                .systemTimeAhead = ahead};
            setUp(options);
            const auto readings = fetch();
            ASSERT_TRUE(readings);
            for (std::size_t i = 1; i < readings->size(); ++i)
                EXPECT_GT((*readings)[i - 1].date - (*readings)[i].date, Seconds{30});
        }
    }
    DexcomShareOptions numbers;
    numbers.readings.numericTrend = true;
    setUp(numbers);
    const auto refused = fetch();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().text, "Unable to process server response: Missing trend information");
    DexcomShareOptions nothing;
    nothing.readings.empty = true;
    setUp(nothing);
    EXPECT_EQ(failureKind(), ErrorKind::noReadings);
}

}  // namespace
}  // namespace tidewell
