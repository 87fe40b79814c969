#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <boost/asio/signal_set.hpp>
#include <cstdio>
#include <iostream>

#include "simulator/LoopbackServer.h"
#include "simulator/SimulatedServices.h"
#include "support/AtomicFile.h"
#include "support/SystemClock.h"
#include "support/TimeText.h"

namespace tidewell {
namespace {

enum ExitCode { good = 0, failure = 1, usage = 2 };

struct Arguments {
    std::string host = "127.0.0.1";
    std::uint16_t port = 8080;
    std::string scenario = "steady";
    std::string script{};
    std::string trace{};
    std::optional<double> age{};
    std::uint64_t seed = 1;
    std::string user{};
    bool passwordFromInput = false;
    std::string endpointsFile{};
    bool listScenarios = false;
    bool quiet = false;
};

/// Writes one line at once, so that a reader of a pipe sees it. Any thread.
void say(std::string_view line)
{
    const std::string text = fmt::format("{}\n", line);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

int fail(ExitCode code, std::string_view what)
{
    fmt::print(stderr, "tidewell-simulator: {}\n", what);
    return code;
}

void listScenarios()
{
    for (const auto& scenario : Scenario::builtIn())
        say(fmt::format("{:<20} {}", scenario.name, scenario.summary));
}

std::expected<Scenario, std::string> chosenScenario(const Arguments& arguments)
{
    if (arguments.script.empty())
        return Scenario::named(arguments.scenario);
    const auto text = readFile(arguments.script, 1024 * 1024);
    if (!text || !text->has_value())
        return std::unexpected{fmt::format("Cannot read {}", arguments.script)};
    auto scenario = Scenario::parse(text->value());
    if (!scenario)
        return std::unexpected{fmt::format("{}: {}", arguments.script, scenario.error())};
    return scenario;
}

/// The first reading with a full day before it; of a shorter trace the last one.
std::int64_t afterADay(const GlucoseTrace& trace)
{
    constexpr double day = 86400;
    const auto found =
        std::ranges::find_if(trace.points, [](const auto& point) { return point.seconds >= day; });
    return std::min(found - trace.points.begin(), std::ssize(trace.points) - 1);
}

/// The first line of the standard input.
std::expected<std::string, std::string> passwordFromInput()
{
    std::string password;
    if (!std::getline(std::cin, password) || password.empty())
        return std::unexpected{std::string{"There is no password on the standard input"}};
    return password;
}

/// "08:15:42", local time.
std::string timeOfDay(Date now) { return isoText(now + TimeZone::current().offset(now)).substr(11, 8); }

int serve(const Arguments& arguments, SimulatedServices::Options options, bool passwordIsOurs)
{
    asio::io_context context{1};
    SystemClock clock{context};
    asio::signal_set signals{context, SIGTERM, SIGINT, SIGHUP};
    const auto region = options.region;
    const std::string note = options.scenario.steps.empty() ? "" : options.scenario.steps.front().note;
    const std::string name = options.scenario.name;

    SimulatedServices services{std::move(options), clock.now()};
    const auto account = services.dexcom(region).options().accounts.front();
    const auto libre = services.libreLinkUp().options().accounts.front();
    LoopbackServer::Options server{.host = arguments.host, .port = arguments.port};
    if (!arguments.quiet) {
        server.onRequest = [&clock](const std::string& path, int status) {
            const std::string outcome = status == 0 ? "no answer" : fmt::format("{}", status);
            say(fmt::format("{}  {:<9}  {}", timeOfDay(clock.now()), outcome,
                            SimulatedServices::loggedPath(path)));
        };
        services.onStep([&clock](Seconds, std::string_view text) {
            say(fmt::format("{}  {}", timeOfDay(clock.now()), text));
        });
    }
    auto started = LoopbackServer::start(
        [&services](const HttpRequest& request, Date now) { return services.handle(request, now); },
        [&clock] { return clock.now(); }, std::move(server));
    if (!started)
        return fail(failure, started.error());

    const auto origin = (*started)->origin();
    if (!arguments.endpointsFile.empty()) {
        if (const auto error =
                writeFileAtomically(arguments.endpointsFile, SimulatedServices::endpointsDocument(origin)))
            return fail(failure,
                        fmt::format("Cannot write {}: {}", arguments.endpointsFile, error.message()));
    }
    const auto password = [passwordIsOurs](const std::string& ours) {
        return passwordIsOurs ? fmt::format("password \"{}\" (invented, protects nothing)", ours)
                              : std::string{"password as given"};
    };
    say(fmt::format("Serving Dexcom Share and LibreLinkUp on {} (scenario {})", origin,
                    name.empty() ? "of the script" : name));
    say(fmt::format("Dexcom Share: {}, region {}, {}", account.name, region, password(account.password)));
    say(fmt::format("LibreLinkUp: {}, region {}, {}", libre.email, libre.homeRegion,
                    password(libre.password)));
    for (const auto& person : libre.people)
        say(fmt::format("  shared by {} {}, patient {}", person.firstName, person.lastName,
                        person.patientId));
    if (!arguments.endpointsFile.empty())
        say(fmt::format("Endpoints: {}", arguments.endpointsFile));
    if (!arguments.quiet && !note.empty())
        say(fmt::format("{}  {}", timeOfDay(clock.now()), note));

    signals.async_wait([](const boost::system::error_code&, int) {});
    context.run();
    return good;
}

int run(int argc, char** argv)
{
    Arguments arguments;
    CLI::App app{
        "Stand-ins of the glucose services on this machine, for trying Tidewell out and for tests. They "
        "replay a real "
        "person's glucose trace so that its newest reading is now."};
    app.name("tidewell-simulator");
    app.set_version_flag("--version", TIDEWELL_VERSION);
    app.footer(
        "The built-in traces come from the data sets PhysioCGM (CC0 1.0, doi 10.6084/m9.figshare.28136294) "
        "and "
        "BrisT1D-Open (CC BY 4.0, https://creativecommons.org/licenses/by/4.0/, University of Bristol, doi "
        "10.5523/bris.33z5jc8fa6tob21ptrugzqog08; cut and reformatted). They are not medical advice.");
    app.add_option("--port", arguments.port, "Port to listen on; 0 takes any free one")
        ->capture_default_str();
    app.add_option("--host", arguments.host, "Loopback address to listen on")->capture_default_str();
    auto* scenario =
        app.add_option("--scenario", arguments.scenario, "A built-in scenario; see --list-scenarios")
            ->capture_default_str();
    app.add_option("--script", arguments.script, "A scenario of your own: a JSON file")->excludes(scenario);
    app.add_option("--trace", arguments.trace,
                   "CSV file with the columns time_local and glucose_mgdl to replay");
    app.add_option("--age", arguments.age, "Seconds: how old the newest reading is at the start")
        ->check(CLI::Range(0.0, 172800.0));
    app.add_option("--seed", arguments.seed, "Number that fixes all chance")->capture_default_str();
    auto* user = app.add_option("--user", arguments.user,
                                "Name of the accounts, which for LibreLinkUp is an e-mail address");
    app.add_flag("--password-stdin", arguments.passwordFromInput,
                 "Read the accounts' password from the standard input")
        ->needs(user);
    app.add_option("--write-endpoints", arguments.endpointsFile,
                   "Write the endpoints file for Tidewell here");
    app.add_flag("--list-scenarios", arguments.listScenarios, "List the built-in scenarios");
    app.add_flag("--quiet", arguments.quiet, "Print no line per request");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const CLI::Error& error) {
        return fail(usage, error.what());
    }
    if (arguments.listScenarios) {
        listScenarios();
        return good;
    }

    auto chosen = chosenScenario(arguments);
    if (!chosen)
        return fail(usage, chosen.error());
    if (arguments.age) {
        chosen->steps.front().readings["newestAge"] = *arguments.age;
        chosen->steps.front().libreReadings["newestAge"] = *arguments.age;
    }
    SimulatedServices::Options options{.scenario = *std::move(chosen), .seed = arguments.seed};

    GlucoseTrace trace;
    if (!arguments.trace.empty()) {
        auto loaded = GlucoseTrace::load(arguments.trace);
        if (!loaded)
            return fail(failure, loaded.error());
        trace = *std::move(loaded);
        options.trace = &trace;
        options.startPosition = afterADay(trace);
        options.libreTrace = &trace;
        options.libreStart = trace.points[static_cast<std::size_t>(options.startPosition)].seconds;
    }
    if (!arguments.user.empty()) {
        options.dexcom.accounts.front().name = arguments.user;
        options.libreLinkUp.accounts.front().email = arguments.user;
    }
    if (arguments.passwordFromInput) {
        auto password = passwordFromInput();
        if (!password)
            return fail(usage, password.error());
        options.dexcom.accounts.front().password = *password;
        options.libreLinkUp.accounts.front().password = *std::move(password);
    }
    return serve(arguments, std::move(options), !arguments.passwordFromInput);
}

}  // namespace
}  // namespace tidewell

int main(int argc, char** argv) { return tidewell::run(argc, argv); }
