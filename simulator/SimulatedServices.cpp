#include "simulator/SimulatedServices.h"

#include <fmt/format.h>

#include <cstdlib>

#include "support/Json.h"

namespace tidewell {

namespace {

struct RegionInfo {
    std::string_view name;
    std::string_view
        applicationId;  ///< Invented; a client must send the one that the endpoints document names.
};
constexpr std::array<RegionInfo, 3> regionInfos{{
    {"us", "5d8c0e1a-27b4-4c6f-9a3e-d1f05b7c8e24"},
    {"ous", "5d8c0e1a-27b4-4c6f-9a3e-d1f05b7c8e24"},
    {"jp", "a4f7b392-6e0d-4815-8c2b-39e6d05f1a7c"},
}};
constexpr std::string_view librePrefix = "/libre/";

/// The path of a URL, with or without its origin.
std::string_view pathOf(std::string_view url)
{
    if (const auto scheme = url.find("://"); scheme != std::string_view::npos) {
        url.remove_prefix(scheme + 3);
        url.remove_prefix(std::min(url.size(), url.find('/')));
    }
    return url;
}

/// A fault that the scenario has not touched keeps the count that is left of it.
void keepCount(const ServiceFault& given, const ServiceFault& current, ServiceFault& wanted)
{
    if (wanted == given)
        wanted = current;
}

}  // namespace

SimulatedServices::SimulatedServices(Options options, Date start)
    : scenario_{std::move(options.scenario)},
      start_{start},
      libreInitial_{std::move(options.libreLinkUp)},
      libreGiven_{libreInitial_},
      lastBegin_{start},
      lastRead_{start}
{
    for (const auto& info : regionInfos) {
        DexcomShareOptions initial = options.dexcom;
        initial.applicationId = info.applicationId;
        if (info.name != options.region)
            initial.accounts.clear();
        DexcomShareOptions given = initial;
        if (!scenario_.steps.empty() && applyStep(scenario_.steps.front(), given))
            std::abort();
        auto simulator = std::make_unique<DexcomShareSimulator>(given, start, options.seed, *options.trace,
                                                                options.startPosition);
        regions_.push_back({info.name, std::move(initial), std::move(given), std::move(simulator)});
    }
    if (!scenario_.steps.empty() && applyStep(scenario_.steps.front(), libreGiven_))
        std::abort();
    libre_ = std::make_unique<LibreLinkUpSimulator>(libreGiven_, start, options.seed, *options.libreTrace,
                                                    options.libreStart);
    started_.assign(scenario_.steps.empty() ? 0 : 1, start);
}

SimulatedAnswer SimulatedServices::handle(const HttpRequest& request, Date now)
{
    advance(now);
    const auto path = pathOf(request.url);
    const auto ask = [&](auto& simulator) {
        const auto before = simulator.counters().successfulReads;
        auto answer = simulator.handle(request, now);
        if (simulator.counters().successfulReads != before) {
            readsSince_ += 1;
            lastRead_ = now;
        }
        return answer;
    };
    if (path.starts_with(librePrefix))
        return ask(*libre_);
    for (auto& region : regions_)
        if (path.starts_with(fmt::format("/{}/", region.name)))
            return ask(*region.simulator);
    return {.response = {.status = 404, .headers = {{"Content-Type", "application/json"}}, .body = "{}"}};
}

DexcomShareSimulator& SimulatedServices::dexcom(std::string_view region)
{
    const auto found = std::ranges::find(regions_, region, &Region::name);
    if (found == regions_.end())
        std::abort();
    return *found->simulator;
}

std::string SimulatedServices::endpointsDocument(std::string_view origin)
{
    json::object dexcom;
    for (const auto& info : regionInfos)
        dexcom[info.name] =
            json::object{{"base", fmt::format("{}/{}/ShareWebServices/Services", origin, info.name)},
                         {"applicationId", info.applicationId}};
    json::object libre;
    for (const auto code : LibreLinkUpSimulator::regions)
        libre[code] = fmt::format("{}{}{}", origin, librePrefix, code);
    return prettyJson(json::object{{"dexcom", std::move(dexcom)}, {"libreLinkUp", std::move(libre)}});
}

std::string SimulatedServices::loggedPath(std::string_view path)
{
    constexpr std::string_view list = "/connections/";
    const auto found = path.find(list);
    if (found == std::string_view::npos)
        return std::string{path};
    const auto id = found + list.size();
    return fmt::format("{}…{}", path.substr(0, id), path.substr(std::min(path.find('/', id), path.size())));
}

/// Steps begin and end at their own moments, however late the request is that brings the time.
void SimulatedServices::advance(Date now)
{
    for (;;) {
        const auto begins = nextBegin();
        if (nextEnd_ && *nextEnd_ <= now && (!begins || *nextEnd_ <= *begins)) {
            applyOptions(*nextEnd_);
            continue;
        }
        if (!begins || *begins > now)
            return;
        begin(*begins);
    }
}

std::optional<Date> SimulatedServices::nextBegin() const
{
    if (started_.size() >= scenario_.steps.size())
        return std::nullopt;
    const auto& step = scenario_.steps[started_.size()];
    if (step.at)
        return std::max(lastBegin_, start_ + *step.at);
    if (step.afterSeconds)
        return lastBegin_ + *step.afterSeconds;
    if (readsSince_ < step.afterReads.value_or(0))
        return std::nullopt;
    return lastRead_;
}

void SimulatedServices::begin(Date at)
{
    const auto& step = scenario_.steps[started_.size()];
    started_.push_back(at);
    lastBegin_ = at;
    lastRead_ = at;
    readsSince_ = 0;
    applyOptions(at);
    for (auto& region : regions_) {
        if (step.readings.contains("newestAge"))
            region.simulator->readings().restart(region.given.readings.newestAge, at);
        if (step.endSessions)
            region.simulator->endSessions();
        if (step.forgetSessions)
            region.simulator->forgetSessions();
    }
    if (step.libreReadings.contains("newestAge"))
        libre_->restartReadings(libreGiven_.readings.newestAge, at);
    if (step.revokeTickets)
        libre_->revokeTickets();
    if (onStep_ && !step.note.empty())
        onStep_(at - start_, step.note);
}

/// The options at `now`: those of the start with the changes of every step that has begun and not ended.
void SimulatedServices::applyOptions(Date now)
{
    nextEnd_.reset();
    for (std::size_t i = 0; i < started_.size(); ++i)
        if (const auto& until = scenario_.steps[i].until; until && start_ + *until > now)
            nextEnd_ = std::min(nextEnd_.value_or(start_ + *until), start_ + *until);
    const auto apply = [&](auto& wanted) {
        for (std::size_t i = 0; i < started_.size(); ++i) {
            const auto& step = scenario_.steps[i];
            if (!step.until || start_ + *step.until > now)
                std::ignore = applyStep(step, wanted);
        }
    };
    for (auto& region : regions_) {
        DexcomShareOptions wanted = region.initial;
        apply(wanted);
        DexcomShareOptions given = wanted;
        const auto& current = region.simulator->options();
        keepCount(region.given.authenticate, current.authenticate, wanted.authenticate);
        keepCount(region.given.login, current.login, wanted.login);
        keepCount(region.given.read, current.read, wanted.read);
        region.simulator->setOptions(std::move(wanted), now);
        region.given = std::move(given);
    }
    LibreLinkUpOptions wanted = libreInitial_;
    apply(wanted);
    LibreLinkUpOptions given = wanted;
    const auto& current = libre_->options();
    keepCount(libreGiven_.login, current.login, wanted.login);
    keepCount(libreGiven_.connections, current.connections, wanted.connections);
    keepCount(libreGiven_.graph, current.graph, wanted.graph);
    libre_->setOptions(std::move(wanted), now);
    libreGiven_ = std::move(given);
}

}  // namespace tidewell
