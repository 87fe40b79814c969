// What holds of every service's client: one call at a time, and a call that leaves takes nothing with it.

#include "sources/ClientFixture.h"
#include "sources/DexcomAPI.h"
#include "sources/LibreBodies.h"
#include "sources/LibreLinkUpAPI.h"

namespace tidewell {
namespace {

struct Dexcom {
    using Client = DexcomAPI;
    static constexpr const char* name = "DexcomAPI";
    /// The answers to the requests of a first fetch; the last one is the readings'.
    static std::vector<std::string> answers()
    {
        return {"\"3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa\"", "\"7c1f0b52-3f4e-4d0a-9a53-1be0c2d4e611\"",
                R"json([{"ST":"Date(1772438113482)","Value":118,"Trend":"Flat"}])json"};
    }
};

struct LibreLinkUp {
    using Client = LibreLinkUpAPI;
    static constexpr const char* name = "LibreLinkUpAPI";
    static std::vector<std::string> answers() { return {libreLogin(), libreGraph()}; }
};

template <class Service>
class GlucoseClients : public ClientFixture<typename Service::Client> {
protected:
    GlucoseClients() : ClientFixture<typename Service::Client>{Service::name}
    {
        this->account_.patientID = librePatient;
    }
    /// Answers for a first fetch, from its `first` request on.
    void answerFetch(std::size_t first = 0)
    {
        const auto all = Service::answers();
        for (std::size_t i = first; i < all.size(); ++i)
            this->http_.answer(200, all[i]);
    }
    void answerRead() { answerFetch(Service::answers().size() - 1); }
};
using Services = testing::Types<Dexcom, LibreLinkUp>;
TYPED_TEST_SUITE(GlucoseClients, Services);

TYPED_TEST(GlucoseClients, everyWaitCanBeCancelledAndTheNextCallWorks)
{
    const auto all = TypeParam::answers();
    for (std::size_t answered = 0; answered < all.size(); ++answered) {
        SCOPED_TRACE(answered);
        const auto api = this->client();
        for (std::size_t i = 0; i < answered; ++i)
            this->http_.answer(200, all[i]);
        this->http_.hang();
        auto hanging = this->startFetch(*api);
        auto queued = this->startFetch(*api);
        const auto patient = this->startFetch(*api);
        this->clock_.runReady();
        EXPECT_EQ(this->http_.running(), 1);
        EXPECT_FALSE(hanging.ended() || queued.ended());

        queued.cancel();  // While it waits for its turn; it must not take one with it.
        this->clock_.runReady();
        EXPECT_TRUE(queued.cancelled());
        EXPECT_FALSE(hanging.ended());

        const bool signedIn = answered + 1 == all.size();
        signedIn ? this->answerRead() : this->answerFetch();
        hanging.cancel();
        this->clock_.runReady();
        EXPECT_TRUE(hanging.cancelled());
        ASSERT_TRUE(patient.ended());
        EXPECT_TRUE(patient.result());
        EXPECT_EQ(this->http_.running(), 0);
        EXPECT_EQ(this->http_.unused(), 0U);
    }
}

TYPED_TEST(GlucoseClients, aCallCancelledBetweenAnyTwoStepsPassesItsTurnOn)
{
    for (std::size_t cancelledCall : {0U, 1U}) {
        bool both = false;
        for (int steps = 0; !both; ++steps) {
            SCOPED_TRACE(steps);
            const auto api = this->client();
            this->answerFetch();
            this->answerRead();
            std::array calls{this->startFetch(*api), this->startFetch(*api)};
            this->io_.restart();
            for (int i = 0; i < steps; ++i)
                this->io_.poll_one();
            both = calls[0].ended() && calls[1].ended();
            calls[cancelledCall].cancel();
            this->clock_.runReady();
            EXPECT_TRUE(calls[0].ended() && calls[1].ended());

            this->http_.forgetAnswers();
            const auto next = this->startFetch(*api);
            this->answerFetch();
            this->clock_.advance(1s);  // Past the pause before a second read.
            ASSERT_TRUE(next.ended());
            this->http_.forgetAnswers();
        }
    }
}

TYPED_TEST(GlucoseClients, aRunningCallOutlivesItsClient)
{
    auto api = this->client();
    this->answerFetch();
    const auto running = this->startFetch(*api);
    const auto queued = this->startFetch(*api);
    this->io_.poll_one();
    this->answerRead();
    api.reset();
    this->clock_.runReady();
    EXPECT_TRUE(running.ended() && running.result());
    EXPECT_TRUE(queued.ended() && queued.result());
}

}  // namespace
}  // namespace tidewell
