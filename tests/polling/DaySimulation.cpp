#include "polling/DaySimulation.h"

#include "simulator/DexcomShareSimulator.h"
#include "simulator/LibreLinkUpSimulator.h"
#include "sources/DexcomAPI.h"
#include "sources/LibreLinkUpAPI.h"

namespace tidewell {
namespace {

ServiceFault broken(ServiceFault::Kind kind, int status = 500, std::vector<HttpHeader> headers = {})
{
    return {.kind = kind, .status = status, .headers = std::move(headers)};
}

ServiceFault transport(TransportFault fault)
{
    return {.kind = ServiceFault::Kind::transport, .transport = fault};
}

using K = ServiceFault::Kind;

struct DexcomShareDay {
    using Options = DexcomShareOptions;
    static constexpr GlucoseProvider provider = GlucoseProvider::dexcom;
    static constexpr Date dawn = dateFromUnix(1'772'409'600);
    static constexpr Seconds sameMeasurement{0};

    static Options usual() { return {}; }
    explicit DexcomShareDay(std::uint64_t seed) : simulator{usual(), dawn, seed} {}
    DexcomShareSimulator simulator;

    static std::shared_ptr<GlucoseAPIProtocol> client(asio::any_io_executor executor, HttpClient& http,
                                                      Clock& clock)
    {
        const ServiceEndpoints endpoints{.dexcom = {{"us",
                                                     {"https://service.test/ShareWebServices/Services",
                                                      "11111111-2222-4333-8444-555555555555"}}}};
        const GlucoseAccountConfiguration account{
            .username = SimulatedAccount{}.name,
            .password = SecretText{std::string_view{SimulatedAccount{}.password}},
            .region = "us"};
        return std::make_shared<DexcomAPI>(executor, http, clock, endpoints, account);
    }
    static bool isSignIn(std::string_view path) { return path.contains("Authenticate"); }
    static bool isRead(std::string_view path) { return path.contains("ReadPublisher"); }

    void endSession(bool forgotten) { forgotten ? simulator.forgetSessions() : simulator.endSessions(); }
    std::vector<DeliveredValue> newest(Date now)
    {
        const auto newest = simulator.readings().newest(now);
        if (!newest || simulator.options().readings.empty)
            return {};
        return {{newest->date, newest->mgdL}};
    }

    static const std::vector<DayFault<Options>>& faults()
    {
        using O = Options;
        using Pace = DayFault<O>::Pace;
        using Place = DayFault<O>::Place;
        constexpr Seconds timeOut{60};
        static const std::vector<DayFault<O>> all{
            {"outage", Pace::failures,
             [](O& o) { o.authenticate = o.login = o.read = broken(K::html, 503); }},
            {"read fails", Pace::failures,
             [](O& o) { o.read = {.kind = K::error, .code = "SessionNotValid"}; }, 1},
            {"sign-in fails", Pace::failures,
             [](O& o) { o = {.authenticate = broken(K::html, 502), .sessionLifetime = Seconds{1}}; }, 1},
            {"read forbidden", Pace::session, [](O& o) { o.read = broken(K::status, 403); }, 2},
            {"not found", Pace::failures, [](O& o) { o.read = broken(K::status, 404); }},
            {"garbage", Pace::failures, [](O& o) { o.read = broken(K::garbage); }, 1},
            {"empty body", Pace::failures, [](O& o) { o.read = broken(K::emptyBody); }, 1},
            {"null ids", Pace::failures, [](O& o) { o = {.login = broken(K::emptyBody), .sessionReads = 1}; },
             1},
            {.name = "read hangs",
             .spoil = [](O& o) { o.read = transport(TransportFault::hang); },
             .call = timeOut},
            {.name = "all hangs",
             .spoil = [](O& o) { o.authenticate = o.login = o.read = transport(TransportFault::hang); },
             .call = timeOut},
            {"resets", Pace::failures, [](O& o) { o.read = transport(TransportFault::reset); }},
            {"cut off", Pace::failures, [](O& o) { o.read = transport(TransportFault::cutOff); }},
            {"endless", Pace::failures, [](O& o) { o.read = transport(TransportFault::endless); }},
            {"no readings", Pace::readings, [](O& o) { o.readings.empty = true; }},
            {"sensor away", Pace::readings, [](O& o) { o.readings.publishing = false; }},
            {"sensor away, backfill", Pace::readings,
             [](O& o) { o.readings = {.publishing = false, .backfill = true}; }},
            {"short sessions", Pace::readings, [](O& o) { o.sessionReads = 1; }, 1},
            {.name = "network off", .place = Place::network},
            {.name = "network off, unnoticed", .place = Place::unnoticedNetwork},
            {"password changed", Pace::person,
             [](O& o) { o = {.refusePasswords = true, .sessionLifetime = Seconds{1}}; }, 2},
        };
        return all;
    }
};

struct LibreLinkUpDay {
    using Options = LibreLinkUpOptions;
    static constexpr GlucoseProvider provider = GlucoseProvider::libreLinkUp;
    static constexpr Date dawn = dateFromUnix(1'772'409'600);
    /// Of a current value and a graph value this near either may be shown.
    static constexpr Seconds sameMeasurement{30};

    /// With a short graph, which keeps the days short.
    static Options usual() { return {.readings = {.graphSpan = Seconds{3 * 3600.0}}}; }
    explicit LibreLinkUpDay(std::uint64_t seed) : simulator{usual(), dawn, seed} {}
    LibreLinkUpSimulator simulator;

    static std::shared_ptr<GlucoseAPIProtocol> client(asio::any_io_executor executor, HttpClient& http,
                                                      Clock& clock)
    {
        ServiceEndpoints endpoints;
        for (const std::string_view region : LibreLinkUpSimulator::regions)
            endpoints.libreLinkUp.emplace(region, fmt::format("https://service.test/{}", region));
        const GlucoseAccountConfiguration account{
            .provider = provider,
            .username = LibreAccount{}.email,
            .password = SecretText{std::string_view{LibreAccount{}.password}},
            .region = "us",
            .patientID = LibrePerson{}.patientId};
        return std::make_shared<LibreLinkUpAPI>(executor, http, clock, endpoints, account);
    }
    static bool isSignIn(std::string_view path) { return path.ends_with("/auth/login"); }
    static bool isRead(std::string_view path) { return path.ends_with("/graph"); }

    void endSession(bool /*forgotten*/) { simulator.revokeTickets(); }
    std::vector<DeliveredValue> newest(Date now)
    {
        std::vector<DeliveredValue> values;
        if (const auto current = simulator.readings().current(now))
            values.push_back({current->date, current->mgdL});
        if (const auto graph = simulator.readings().graph(now); !graph.empty())
            values.push_back({graph.back().date, graph.back().mgdL});
        return values;
    }

    static const std::vector<DayFault<Options>>& faults()
    {
        using O = Options;
        using Pace = DayFault<O>::Pace;
        using Place = DayFault<O>::Place;
        const auto every = [](ServiceFault fault) {
            return [fault](O& o) { o.login = o.connections = o.graph = fault; };
        };
        const auto graph = [](ServiceFault fault) { return [fault](O& o) { o.graph = fault; }; };
        const auto moved = [](LibreRedirect redirect) {
            return [redirect](O& o) {
                o.accounts.front().homeRegion = "de";
                o.redirect = redirect;
            };
        };
        constexpr Seconds timeOut{60};
        static const std::vector<DayFault<O>> all{
            {"blocked by the edge", Pace::failures, every(broken(K::html, 403))},
            {"limited by the edge", Pace::limit, every(broken(K::html, 429))},
            {.name = "limited with a time",
             .pace = Pace::limit,
             .spoil = graph(broken(K::status, 429, {{"Retry-After", "200"}})),
             .wait = Seconds{200}},
            {"outage", Pace::failures, every(broken(K::html, 503))},
            {"sign-in fails", Pace::failures, [](O& o) { o.login = broken(K::html, 502); }, 1, true},
            {"sign-in refused outright", Pace::failures, [](O& o) { o.login = broken(K::status, 430); }, 1,
             true},
            {"newer client required", Pace::failures, graph(broken(K::status, 426))},
            {"version gate", Pace::failures, [](O& o) { o.minimumVersion = "99.0.0"; }},
            {"locked", Pace::limit, [](O& o) { o.locked = true; }, 1, true, Seconds{300}},
            {"terms pending", Pace::person, [](O& o) { o.pendingStep = "tou"; }, 1, true},
            {"something else pending", Pace::person, [](O& o) { o.pendingStep = "-"; }, 1, true},
            {"tickets refused", Pace::session, [](O& o) { o.refuseTickets = true; }, 2},
            {"short tickets", Pace::readings, [](O& o) { o.ticketLifetime = Seconds{40}; }, 1, true},
            {"person removed", Pace::person, [](O& o) { o.removed = true; }},
            {"current value frozen", Pace::readings, [](O& o) { o.readings.frozen = true; }},
            {"no current value", Pace::readings, [](O& o) { o.readings.noCurrent = true; }},
            {"graph empty", Pace::readings, [](O& o) { o.readings.emptyGraph = true; }},
            {"nothing measured", Pace::readings,
             [](O& o) { o.readings = {.noCurrent = true, .missingGraph = true}; }},
            {"phone away", Pace::readings, [](O& o) { o.readings.publishing = false; }},
            {"garbage", Pace::failures, graph(broken(K::garbage))},
            {"empty body", Pace::failures, graph(broken(K::emptyBody))},
            {.name = "graph hangs", .spoil = graph(transport(TransportFault::hang)), .call = timeOut},
            {.name = "all hangs", .spoil = every(transport(TransportFault::hang)), .call = timeOut},
            {"resets", Pace::failures, graph(transport(TransportFault::reset))},
            {"cut off", Pace::failures, graph(transport(TransportFault::cutOff))},
            {"endless", Pace::failures, graph(transport(TransportFault::endless))},
            {"moved in a circle", Pace::failures, moved(LibreRedirect::circle), 4, true},
            {"moved nowhere", Pace::failures, moved(LibreRedirect::self), 1, true},
            {"moved, and refused there", Pace::failures, moved(LibreRedirect::refused), 1, true},
            {"moved to an unknown region", Pace::person, moved(LibreRedirect::unknown), 1, true},
            {.name = "network off", .place = Place::network},
            {.name = "network off, unnoticed", .place = Place::unnoticedNetwork},
            {"password changed", Pace::person, [](O& o) { o.refusePasswords = true; }, 2, true},
        };
        return all;
    }
};

TEST(DaySimulation, dexcomScreenNeverLiesAndDataComesBackWhateverHappens)
{
    liveThroughDays<DexcomShareDay>();
}

TEST(DaySimulation, libreLinkUpScreenNeverLiesAndDataComesBackWhateverHappens)
{
    liveThroughDays<LibreLinkUpDay>();
}

}  // namespace
}  // namespace tidewell
