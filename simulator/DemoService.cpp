#include "simulator/DemoService.h"

#include "simulator/LoopbackServer.h"
#include "simulator/SimulatedServices.h"

namespace tidewell {

namespace {

constexpr std::string_view demoRegion = "us";

DemoAccount accountOf(Scenario::Account provider, const LibreLinkUpOptions& libre)
{
    if (provider == Scenario::Account::dexcom) {
        const SimulatedAccount account;
        return {.provider = "dexcom",
                .username = account.name,
                .password = account.password,
                .region = std::string{demoRegion}};
    }
    const auto& account = libre.accounts.front();
    DemoAccount demo{.provider = "libreLinkUp",
                     .username = account.email,
                     .password = account.password,
                     .region = account.homeRegion};
    if (account.people.size() == 1) {
        const auto& person = account.people.front();
        demo.patientID = person.patientId;
        demo.patientName = person.firstName + " " + person.lastName;
    }
    return demo;
}

}  // namespace

struct DemoService::Impl {
    DemoAccount account;
    SimulatedServices services;
    std::unique_ptr<LoopbackServer> server{};
};

std::expected<std::unique_ptr<DemoService>, std::string> DemoService::start(const Clock& clock,
                                                                            DemoOptions options)
{
    auto scenario = Scenario::named(options.scenario);
    if (!scenario)
        return std::unexpected{scenario.error()};
    SimulatedServices::Options services{
        .region = std::string{demoRegion}, .scenario = *std::move(scenario), .seed = options.seed};
    const auto provider = services.scenario.account;
    SimulatedServices simulated{std::move(services), clock.now()};
    auto account = accountOf(provider, simulated.libreLinkUp().options());
    auto impl = std::make_unique<Impl>(std::move(account), std::move(simulated));
    auto server =
        LoopbackServer::start([&served = impl->services](const HttpRequest& request,
                                                         Date now) { return served.handle(request, now); },
                              [&clock] { return clock.now(); }, {.port = options.port});
    if (!server)
        return std::unexpected{server.error()};
    impl->server = *std::move(server);
    return std::unique_ptr<DemoService>{new DemoService{std::move(impl)}};
}

DemoService::DemoService(std::unique_ptr<Impl> impl) : impl_{std::move(impl)} {}

DemoService::~DemoService() = default;

DemoAccount DemoService::account() const { return impl_->account; }

std::string DemoService::endpointsDocument() const
{
    return SimulatedServices::endpointsDocument(impl_->server->origin());
}

}  // namespace tidewell
