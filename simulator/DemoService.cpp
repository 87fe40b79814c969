#include "simulator/DemoService.h"

#include "simulator/LoopbackServer.h"
#include "simulator/SimulatedServices.h"

namespace tidewell {

namespace {

constexpr std::string_view demoRegion = "us";

}  // namespace

struct DemoService::Impl {
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
    auto impl = std::make_unique<Impl>(SimulatedServices{std::move(services), clock.now()});
    auto server = LoopbackServer::start(
        [&simulated = impl->services](const HttpRequest& request, Date now) {
            return simulated.handle(request, now);
        },
        [&clock] { return clock.now(); }, {.port = options.port});
    if (!server)
        return std::unexpected{server.error()};
    impl->server = *std::move(server);
    return std::unique_ptr<DemoService>{new DemoService{std::move(impl)}};
}

DemoService::DemoService(std::unique_ptr<Impl> impl) : impl_{std::move(impl)} {}

DemoService::~DemoService() = default;

DemoAccount DemoService::account() const
{
    const SimulatedAccount account;
    return {.username = account.name, .password = account.password, .region = std::string{demoRegion}};
}

std::string DemoService::endpointsDocument() const
{
    return SimulatedServices::endpointsDocument(impl_->server->origin());
}

}  // namespace tidewell
