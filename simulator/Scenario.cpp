#include "simulator/Scenario.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>
#include <ranges>
#include <set>

#include "support/Json.h"

namespace tidewell {

namespace {

constexpr std::size_t mostSteps = 1000;
constexpr double week = 7 * 86400.0;
/// Closer readings would make a day of them too long to keep.
constexpr double closestSpacing = 5;
constexpr double closestGraphValues = 30;

/// Reads the members of one object, each once, and remembers the first thing that is wrong.
class Members {
public:
    Members(const json::object& object, std::string place) : object_{object}, place_{std::move(place)} {}

    void boolean(std::string_view name, bool& target)
    {
        const auto* value = find(name);
        if (value && value->is_bool())
            target = value->get_bool();
        else if (value)
            fail(name, "must be true or false");
    }

    void number(std::string_view name, double& target, double least, double most)
    {
        const auto* value = find(name);
        if (!value)
            return;
        const auto number = numberOf(*value);
        if (number && *number >= least && *number <= most)
            target = *number;
        else
            fail(name, fmt::format("must be a number from {} to {}", least, most));
    }

    void seconds(std::string_view name, Seconds& target, double least = 0, double most = week)
    {
        double number = target.count();
        this->number(name, number, least, most);
        target = Seconds{number};
    }

    void seconds(std::string_view name, std::optional<Seconds>& target)
    {
        if (!object_.contains(name))
            return;
        target.emplace(0);
        seconds(name, *target);
    }

    template <class Integer>
    void integer(std::string_view name, Integer& target, double least, double most)
    {
        double number = static_cast<double>(target);
        this->number(name, number, least, most);
        if (number != std::floor(number))
            fail(name, "must be a whole number");
        else
            target = static_cast<Integer>(number);
    }

    template <class Integer>
    void integer(std::string_view name, std::optional<Integer>& target, double least, double most)
    {
        const auto* value = find(name);
        if (value && value->is_null()) {
            target.reset();
        } else if (value) {
            target = static_cast<Integer>(least);
            integer(name, *target, least, most);
        }
    }

    void text(std::string_view name, std::string& target)
    {
        const auto* value = find(name);
        if (value && value->is_string())
            target = value->get_string();
        else if (value)
            fail(name, "must be a text");
    }

    void text(std::string_view name, std::optional<std::string>& target)
    {
        const auto* value = find(name);
        if (value && value->is_null())
            target.reset();
        else if (value)
            text(name, target.emplace());
    }

    template <class Value, std::size_t count>
    void choice(std::string_view name, Value& target,
                const std::array<std::pair<std::string_view, Value>, count>& words)
    {
        if (!object_.contains(name))
            return;
        std::string word;
        text(name, word);
        const auto found = std::ranges::find(words, word, &std::pair<std::string_view, Value>::first);
        if (found != words.end())
            target = found->second;
        else
            fail(name, fmt::format("must be one of {}", fmt::join(words | std::views::keys, ", ")));
    }

    void object(std::string_view name, json::object& target)
    {
        const auto* value = find(name);
        if (value && value->is_object())
            target = value->get_object();
        else if (value)
            fail(name, "must be an object");
    }

    const json::value* find(std::string_view name)
    {
        known_.insert(name);
        return object_.if_contains(name);
    }

    void fail(std::string_view name, std::string_view what)
    {
        if (!error_)
            error_ = fmt::format("{}\"{}\" {}", place_, name, what);
    }

    /// What was wrong in an object within this one.
    void take(Members& inner)
    {
        if (auto error = inner.error(); error && !error_)
            error_ = std::move(error);
    }

    /// What was wrong, an unknown member included.
    [[nodiscard]] std::optional<std::string> error()
    {
        for (const auto& [name, value] : object_)
            if (!known_.contains(name))
                fail(name, fmt::format("is not known here; known are {}", fmt::join(known_, ", ")));
        return error_;
    }

private:
    const json::object& object_;
    std::string place_;
    std::set<std::string_view> known_{};
    std::optional<std::string> error_{};
};

std::optional<std::string> applyReadings(const json::object& object, ReadingOptions& options)
{
    Members members{object, "readings: "};
    members.seconds("newestAge", options.newestAge);
    members.boolean("publishing", options.publishing);
    members.boolean("backfill", options.backfill);
    members.boolean("empty", options.empty);
    members.seconds("spacing", options.spacing);
    members.seconds("drift", options.drift, 0, 60);
    members.seconds("publicationDelay", options.publicationDelay, 0, 86400);
    members.seconds("publicationJitter", options.publicationJitter, 0, 86400);
    members.number("gapShare", options.gapShare, 0, 1);
    members.number("lateShare", options.lateShare, 0, 1);
    members.seconds("lateBy", options.lateBy, 0, 86400);
    members.boolean("duplicates", options.duplicates);
    members.integer("mgdL", options.mgdL, 0, 1000);
    members.text("trend", options.trend);
    members.boolean("everyTrend", options.everyTrend);
    members.boolean("numericTrend", options.numericTrend);
    members.boolean("slashes", options.slashes);
    members.boolean("worldTime", options.worldTime);
    members.seconds("systemTimeAhead", options.systemTimeAhead, -week, week);
    members.integer("displayOffsetMinutes", options.displayOffsetMinutes, -840, 840);
    members.boolean("wholeSeconds", options.wholeSeconds);
    if (options.spacing > Seconds{0} && options.spacing < Seconds{closestSpacing})
        members.fail("spacing", fmt::format("must be 0 or at least {}", closestSpacing));
    return members.error();
}

std::optional<std::string> applyService(const json::object& object, DexcomShareOptions& options)
{
    using enum RefusalForm;
    constexpr std::array<std::pair<std::string_view, RefusalForm>, 3> forms{
        {{"current", current}, {"singleSignOn", singleSignOn}, {"legacy", legacy}}};
    Members members{object, "service: "};
    members.choice("refusal", options.refusal, forms);
    members.boolean("xmlSubCode", options.xmlSubCode);
    members.boolean("refusePasswords", options.refusePasswords);
    members.seconds("sessionLifetime", options.sessionLifetime);
    members.integer("sessionReads", options.sessionReads, 0, 1e6);
    members.integer("lockAfter", options.lockAfter, 0, 1e6);
    members.seconds("lockWindow", options.lockWindow);
    members.seconds("lockDuration", options.lockDuration);
    members.text("lockedCode", options.lockedCode);
    return members.error();
}

std::optional<std::string> applyLibreReadings(const json::object& object, LibreReadingOptions& options)
{
    Members members{object, "libreLinkUp: readings: "};
    members.seconds("newestAge", options.newestAge);
    members.seconds("currentInterval", options.currentInterval, closestSpacing, 86400);
    members.seconds("publicationDelay", options.publicationDelay, 0, 86400);
    members.boolean("publishing", options.publishing);
    members.boolean("frozen", options.frozen);
    members.boolean("noCurrent", options.noCurrent);
    members.seconds("graphInterval", options.graphInterval, closestGraphValues, 86400);
    members.seconds("graphJitter", options.graphJitter, 0, 150);
    members.seconds("graphLag", options.graphLag, 0, 86400);
    members.seconds("graphSpan", options.graphSpan, 0, 86400);
    members.boolean("emptyGraph", options.emptyGraph);
    members.boolean("missingGraph", options.missingGraph);
    members.number("gapShare", options.gapShare, 0, 1);
    members.number("smoothing", options.smoothing, 0, 100);
    members.integer("mgdL", options.mgdL, -1e6, 1e6);
    members.integer("arrow", options.arrow, -1000, 1000);
    members.boolean("noArrow", options.noArrow);
    members.boolean("everyArrow", options.everyArrow);
    members.boolean("twentyFourHours", options.twentyFourHours);
    members.boolean("mmolPerLitre", options.mmolPerLitre);
    members.integer("timestampOffsetMinutes", options.timestampOffsetMinutes, -840, 840);
    return members.error();
}

/// People to share with the account; the first one is LibrePerson's own default. Invented.
std::vector<LibrePerson> inventedPeople(std::size_t count)
{
    std::vector<LibrePerson> people{
        {},
        {.patientId = "1b2c3d4e-5f60-4718-8293-a4b5c6d7e8f9",
         .firstName = "Emmy",
         .lastName = "Muster",
         .traceOffset = -86400},
        {.patientId = "c0ffee00-2468-4ace-9bdf-13579bdf0246",
         .firstName = "Sofia",
         .lastName = "Beispiel",
         .traceOffset = -2.5 * 86400},
        {.patientId = "7f7e7d7c-0b0a-4090-8080-706050403020",
         .firstName = "Lise",
         .lastName = "Exemple",
         .traceOffset = -4 * 86400,
         .activeSensor = false},
    };
    people.resize(count);
    return people;
}

std::optional<std::string> applyLibreService(const json::object& object, LibreLinkUpOptions& options)
{
    using enum LibreRedirect;
    constexpr std::array<std::pair<std::string_view, LibreRedirect>, 5> redirects{
        {{"home", home}, {"unknown", unknown}, {"self", self}, {"circle", circle}, {"refused", refused}}};
    Members members{object, "libreLinkUp: service: "};
    members.text("minimumVersion", options.minimumVersion);
    members.boolean("requireProduct", options.requireProduct);
    members.boolean("requireAccountId", options.requireAccountId);
    members.choice("redirect", options.redirect, redirects);
    members.text("pendingStep", options.pendingStep);
    members.boolean("refusePasswords", options.refusePasswords);
    members.boolean("refuseTickets", options.refuseTickets);
    members.integer("lockAfter", options.lockAfter, 0, 1e6);
    members.seconds("lockWindow", options.lockWindow);
    members.seconds("lockDuration", options.lockDuration);
    members.boolean("locked", options.locked);
    members.seconds("ticketLifetime", options.ticketLifetime, 0, 366 * 86400);
    members.boolean("removed", options.removed);
    std::optional<std::size_t> people;
    members.integer("people", people, 0, 4);
    if (people)
        for (auto& account : options.accounts)
            account.people = inventedPeople(*people);
    bool activeSensor = true;
    members.boolean("activeSensor", activeSensor);
    if (object.contains("activeSensor"))
        for (auto& account : options.accounts)
            if (!account.people.empty())
                account.people.front().activeSensor = activeSensor;
    return members.error();
}

struct FaultWord {
    ServiceFault::Kind kind;
    TransportFault transport = TransportFault::none;
};

/// The calls of a service by the names that a fault may choose from.
using FaultTargets = std::array<std::pair<std::string_view, ServiceFault*>, 3>;

/// Sets a fault for the calls that it names. `hasErrorObjects`: the service has what `error` and `nullId`
/// send.
std::optional<std::string> applyFault(const json::object& object, std::string place,
                                      const FaultTargets& targets, bool hasErrorObjects)
{
    using enum ServiceFault::Kind;
    constexpr std::array<std::pair<std::string_view, FaultWord>, 14> kinds{{
        {"none", {none}},
        {"error", {error}},
        {"nullId", {nullId}},
        {"emptyBody", {emptyBody}},
        {"html", {html}},
        {"status", {status}},
        {"body", {body}},
        {"garbage", {garbage}},
        {"hang", {ServiceFault::Kind::transport, TransportFault::hang}},
        {"reset", {ServiceFault::Kind::transport, TransportFault::reset}},
        {"cutOff", {ServiceFault::Kind::transport, TransportFault::cutOff}},
        {"slow", {ServiceFault::Kind::transport, TransportFault::slow}},
        {"endless", {ServiceFault::Kind::transport, TransportFault::endless}},
        {"gzipBomb", {ServiceFault::Kind::transport, TransportFault::gzipBomb}},
    }};
    Members members{object, std::move(place)};
    ServiceFault fault;
    FaultWord word{none};
    if (!object.contains("kind"))
        members.fail("kind", "is missing");
    members.choice("kind", word, kinds);
    if (!hasErrorObjects && (word.kind == error || word.kind == nullId))
        members.fail("kind", "must not be error or nullId, which this service does not have");
    fault.kind = word.kind;
    fault.transport = word.transport;
    members.text("code", fault.code);
    if (fault.kind == error && fault.code.empty())
        members.fail("code", "is missing");
    members.integer("status", fault.status, 100, 599);
    members.text("body", fault.body);
    members.integer("cutAfter", fault.cutAfter, 0, 1e9);
    members.integer("times", fault.times, 0, 1e6);
    json::object headers;
    members.object("headers", headers);
    for (const auto& [name, value] : headers) {
        if (value.is_string())
            fault.headers.push_back({name, std::string{value.get_string()}});
        else
            members.fail("headers", "must be an object of texts");
    }
    std::optional<double> dateAhead;
    if (object.contains("retryAfterDate"))
        members.number("retryAfterDate", dateAhead.emplace(0), -week, week);
    if (dateAhead)
        fault.retryAfterDate = Seconds{*dateAhead};
    const auto* chosen = members.find("steps");
    for (const auto& [name, target] : targets)
        if (!chosen)
            *target = fault;
    if (chosen && !chosen->is_array())
        members.fail("steps", "must be a list");
    for (const auto& entry : chosen && chosen->is_array() ? chosen->get_array() : json::array{}) {
        const auto name = entry.is_string() ? std::string_view{entry.get_string()} : std::string_view{};
        const auto found = std::ranges::find(targets, name, &FaultTargets::value_type::first);
        if (found == targets.end())
            members.fail("steps", fmt::format("may hold {}", fmt::join(targets | std::views::keys, ", ")));
        else
            *found->second = fault;
    }
    return members.error();
}

void readChanges(Members& members, Scenario::Step& step)
{
    members.text("note", step.note);
    members.object("service", step.service);
    members.object("readings", step.readings);
    members.object("fault", step.fault);
    members.boolean("endSessions", step.endSessions);
    members.boolean("forgetSessions", step.forgetSessions);
    members.boolean("revokeTickets", step.revokeTickets);
    json::object libre;
    members.object("libreLinkUp", libre);
    Members libreMembers{libre, "libreLinkUp: "};
    libreMembers.object("service", step.libreService);
    libreMembers.object("readings", step.libreReadings);
    libreMembers.object("fault", step.libreFault);
    members.take(libreMembers);
}

std::expected<Scenario::Step, std::string> parseStep(const json::value& value)
{
    if (!value.is_object())
        return std::unexpected{std::string{"must be an object"}};
    Scenario::Step step;
    Members members{value.get_object(), ""};
    members.seconds("at", step.at);
    members.seconds("afterSeconds", step.afterSeconds);
    members.integer("afterReads", step.afterReads, 0, 1e6);
    members.seconds("until", step.until);
    readChanges(members, step);
    if (const auto error = members.error())
        return std::unexpected{*error};
    const int moments =
        int{step.at.has_value()} + int{step.afterSeconds.has_value()} + int{step.afterReads.has_value()};
    if (moments != 1)
        return std::unexpected{std::string{"needs one of \"at\", \"afterSeconds\" and \"afterReads\""}};
    if (step.until && (!step.at || *step.until <= *step.at))
        return std::unexpected{std::string{"\"until\" must be later than an \"at\" of the same step"}};
    return step;
}

}  // namespace

std::optional<std::string> applyStep(const Scenario::Step& step, DexcomShareOptions& options)
{
    if (auto error = applyService(step.service, options))
        return error;
    if (auto error = applyReadings(step.readings, options.readings))
        return error;
    if (step.fault.empty())
        return std::nullopt;
    const FaultTargets targets{
        {{"authenticate", &options.authenticate}, {"login", &options.login}, {"read", &options.read}}};
    return applyFault(step.fault, "fault: ", targets, true);
}

std::optional<std::string> applyStep(const Scenario::Step& step, LibreLinkUpOptions& options)
{
    if (auto error = applyLibreService(step.libreService, options))
        return error;
    if (auto error = applyLibreReadings(step.libreReadings, options.readings))
        return error;
    if (step.libreFault.empty())
        return std::nullopt;
    const FaultTargets targets{
        {{"login", &options.login}, {"connections", &options.connections}, {"graph", &options.graph}}};
    return applyFault(step.libreFault, "libreLinkUp: fault: ", targets, false);
}

std::expected<Scenario, std::string> Scenario::parse(std::string_view document)
{
    const auto value = parseJson(document, {.bytes = 1024 * 1024, .depth = 16});
    if (!value)
        return std::unexpected{value.error().message};
    if (!value->is_object())
        return std::unexpected{std::string{"A scenario must be a JSON object"}};
    Scenario scenario;
    Step start{.at = Seconds{0}};
    Members members{value->get_object(), ""};
    members.text("name", scenario.name);
    constexpr std::array<std::pair<std::string_view, Account>, 2> services{
        {{"dexcom", Account::dexcom}, {"libreLinkUp", Account::libreLinkUp}}};
    members.choice("account", scenario.account, services);
    readChanges(members, start);
    const auto* list = members.find("steps");
    if (list && (!list->is_array() || list->get_array().size() > mostSteps))
        members.fail("steps", fmt::format("must be a list of at most {} steps", mostSteps));
    if (const auto error = members.error())
        return std::unexpected{*error};
    scenario.steps.push_back(std::move(start));
    for (const auto& entry : list ? list->get_array() : json::array{}) {
        auto step = parseStep(entry);
        if (!step)
            return std::unexpected{fmt::format("Step {}: {}", scenario.steps.size(), step.error())};
        scenario.steps.push_back(*std::move(step));
    }

    DexcomShareOptions scratch;
    LibreLinkUpOptions libreScratch;
    Seconds last{0};
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        const auto& step = scenario.steps[i];
        const auto place = i == 0 ? std::string{} : fmt::format("Step {}: ", i);
        if (const auto error = applyStep(step, scratch))
            return std::unexpected{place + *error};
        if (const auto error = applyStep(step, libreScratch))
            return std::unexpected{place + *error};
        if (step.at && *step.at < last)
            return std::unexpected{place + "\"at\" is earlier than the step before"};
        last = step.at.value_or(last);
    }
    return scenario;
}

std::expected<Scenario, std::string> Scenario::named(std::string_view name)
{
    const auto found = std::ranges::find(builtIn(), name, &BuiltIn::name);
    if (found == builtIn().end())
        return std::unexpected{
            fmt::format("There is no scenario \"{}\"; there are {}", name,
                        fmt::join(builtIn() | std::views::transform(&BuiltIn::name), ", "))};
    auto scenario = parse(found->document);
    if (scenario)
        scenario->name = name;
    return scenario;
}

/// A client that aims half a minute past the next five-minute reading finds it there when the service is
/// steady.
///
/// The story moves on with the client's reads. Its readings are just over five minutes old and 15 s apart: a
/// client that aims half a minute past the next five-minute reading then asks every 10 to 25 s.
/// Likewise the current values of "libre-story" are about a minute old and 5 s apart, so that a client that
/// aims 70 s past each of them asks every 7 to 12 s. It asks again half a minute after a failure.
const std::vector<Scenario::BuiltIn>& Scenario::builtIn()
{
    static const std::vector<BuiltIn> all{
        {"steady", "a good sensor and a good service",
         R"({"readings": {"drift": 0.5, "publicationDelay": 12, "publicationJitter": 12}})"},
        {"story",
         "in about four minutes: expired, stale and new values, an outage, an ended session, a wrong "
         "password",
         R"({"note": "The newest reading is nearly an hour old and expires",
             "readings": {"newestAge": 3570, "publishing": false},
             "steps": [
               {"afterReads": 1, "note": "A reading that soon turns stale",
                "readings": {"newestAge": 830, "publishing": false}},
               {"afterReads": 1, "note": "New values",
                "readings": {"newestAge": 270, "publishing": true, "spacing": 15, "publicationDelay": 305}},
               {"afterReads": 2, "note": "The service is down", "fault": {"kind": "html", "status": 503}},
               {"afterSeconds": 28, "note": "The service is back", "fault": {"kind": "none"}},
               {"afterReads": 1, "note": "The session ends", "endSessions": true},
               {"afterReads": 1, "note": "The password was changed elsewhere", "endSessions": true,
                "service": {"refusePasswords": true}}]})"},
        {"stale", "no new readings; the newest turns stale after 20 seconds",
         R"({"readings": {"newestAge": 880, "publishing": false}})"},
        {"expired", "no new readings; the newest expires after 10 seconds",
         R"({"readings": {"newestAge": 3590, "publishing": false}})"},
        {"no-readings", "sign-in works, and there is no reading", R"({"readings": {"empty": true}})"},
        {"outage",
         "after the first value HTTP 500 pages, then silence, then broken connections; the value grows stale",
         R"({"readings": {"newestAge": 400, "publishing": false},
             "steps": [
               {"afterReads": 1, "note": "HTTP 500 pages", "fault": {"kind": "html", "status": 500}},
               {"afterSeconds": 90, "note": "No answers", "fault": {"kind": "hang"}},
               {"afterSeconds": 150, "note": "Connections are reset", "fault": {"kind": "reset"}}]})"},
        {"recovery", "down for the first minute, then good",
         R"({"note": "The service is down", "fault": {"kind": "html", "status": 503},
             "steps": [{"at": 60, "note": "The service is back", "fault": {"kind": "none"}}]})"},
        {"session-expiry", "every session ends after one read", R"({"service": {"sessionReads": 1}})"},
        {"wrong-password", "the password is refused", R"({"service": {"refusePasswords": true}})"},
        {"locked-out", "the account is locked after too many refused sign-ins",
         R"({"fault": {"steps": ["authenticate", "login"], "kind": "error",
                       "code": "SSO_AuthenticateMaxAttemptsExceeed"}})"},
        {"slow", "readings come at a byte a second", R"({"fault": {"steps": ["read"], "kind": "slow"}})"},
        {"endless", "the answer with the readings never ends",
         R"({"fault": {"steps": ["read"], "kind": "endless"}})"},
        {"garbage", "in turn no JSON, cut JSON, wrong types, an object, deep nesting, HTML",
         R"({"fault": {"steps": ["read"], "kind": "garbage"}})"},
        {"rough", "gaps, late and doubled readings, every trend word, the old form of dates",
         R"({"readings": {"drift": 0.5, "publicationDelay": 20, "publicationJitter": 40, "gapShare": 0.05,
                          "lateShare": 0.1, "duplicates": true, "everyTrend": true, "slashes": true}})"},
        {"libre", "a good sensor and a good LibreLinkUp service", R"({"account": "libreLinkUp"})"},
        {"libre-story",
         "in about five minutes: terms, new and frozen values, outages, an old version, tickets, a lock, a "
         "person removed",
         R"({"account": "libreLinkUp", "note": "The terms of use wait to be accepted",
             "libreLinkUp": {"service": {"pendingStep": "tou", "lockDuration": 30},
                             "readings": {"newestAge": 58, "currentInterval": 5, "publicationDelay": 58}},
             "steps": [
               {"afterSeconds": 15, "note": "The terms are accepted in the app: choose Reconnect",
                "libreLinkUp": {"service": {"pendingStep": ""}}},
               {"afterReads": 2, "note": "The current value stands still",
                "libreLinkUp": {"readings": {"frozen": true}}},
               {"afterReads": 1, "note": "The next answer is that the service is down",
                "libreLinkUp": {"readings": {"frozen": false},
                                "fault": {"steps": ["graph"], "kind": "html", "status": 503, "times": 1}}},
               {"afterReads": 1, "note": "The next answer is a block by the edge servers",
                "libreLinkUp": {"fault": {"steps": ["graph"], "kind": "html", "status": 403, "times": 1}}},
               {"afterReads": 1, "note": "The service wants a newer client",
                "libreLinkUp": {"service": {"minimumVersion": "99.0.0"}}},
               {"afterSeconds": 25, "note": "The client is new enough again",
                "libreLinkUp": {"service": {"minimumVersion": "4.16.0"}}},
               {"afterReads": 1, "note": "Every ticket is revoked", "revokeTickets": true},
               {"afterReads": 1, "note": "Every ticket is revoked, and new ones last 20 seconds",
                "revokeTickets": true, "libreLinkUp": {"service": {"ticketLifetime": 20}}},
               {"afterReads": 2, "note": "The account is locked",
                "libreLinkUp": {"service": {"locked": true}}},
               {"afterSeconds": 45, "note": "The lock ends; the person no longer shares",
                "libreLinkUp": {"service": {"locked": false, "removed": true}}}]})"},
        {"libre-terms", "new terms of use wait to be accepted in the app, for the first two minutes",
         R"({"account": "libreLinkUp", "note": "The terms of use wait to be accepted",
             "libreLinkUp": {"service": {"pendingStep": "tou"}},
             "steps": [{"at": 120, "note": "The terms are accepted in the app: choose Reconnect",
                        "libreLinkUp": {"service": {"pendingStep": ""}}}]})"},
        {"libre-action", "the e-mail address waits to be confirmed in the app",
         R"({"account": "libreLinkUp", "libreLinkUp": {"service": {"pendingStep": "verifyEmail"}}})"},
        {"libre-locked", "sign-ins are locked for two minutes, then good",
         R"({"account": "libreLinkUp", "note": "The account is locked",
             "libreLinkUp": {"service": {"locked": true, "lockDuration": 120}},
             "steps": [{"at": 120, "note": "The lock ends",
                        "libreLinkUp": {"service": {"locked": false}}}]})"},
        {"libre-version", "the service wants a newer client than there is",
         R"({"account": "libreLinkUp", "libreLinkUp": {"service": {"minimumVersion": "99.0.0"}}})"},
        {"libre-wrong-password", "the password is refused",
         R"({"account": "libreLinkUp", "libreLinkUp": {"service": {"refusePasswords": true}}})"},
        {"libre-removed", "after the first value the person no longer shares",
         R"({"account": "libreLinkUp",
             "steps": [{"afterReads": 1, "note": "The person no longer shares",
                        "libreLinkUp": {"service": {"removed": true}}}]})"},
        {"libre-none", "nobody shares with the account",
         R"({"account": "libreLinkUp", "libreLinkUp": {"service": {"people": 0}}})"},
        {"libre-several", "three people share, in an order that changes; one is to be chosen",
         R"({"account": "libreLinkUp", "libreLinkUp": {"service": {"people": 3}}})"},
        {"libre-frozen", "the current value stands still and falls behind the graph",
         R"({"account": "libreLinkUp", "libreLinkUp": {"readings": {"newestAge": 840, "frozen": true}}})"},
        {"libre-empty", "a new sensor: no current value and no graph yet",
         R"({"account": "libreLinkUp", "libreLinkUp": {"readings": {"noCurrent": true, "emptyGraph": true}}})"},
        {"libre-edge", "after the first value the edge servers block, then limit, then the service is down",
         R"({"account": "libreLinkUp",
             "steps": [
               {"afterReads": 1, "note": "HTTP 403 pages",
                "libreLinkUp": {"fault": {"kind": "html", "status": 403}}},
               {"afterSeconds": 90, "note": "HTTP 429 pages with a Retry-After of 30 s",
                "libreLinkUp": {"fault": {"kind": "html", "status": 429, "headers": {"Retry-After": "30"}}}},
               {"afterSeconds": 150, "note": "HTTP 502 pages",
                "libreLinkUp": {"fault": {"kind": "html", "status": 502}}},
               {"afterSeconds": 150, "note": "The service is back",
                "libreLinkUp": {"fault": {"kind": "none"}}}]})"},
        {"libre-redirects", "regions point at each other without end for a minute, then at the home region",
         R"({"account": "libreLinkUp", "note": "Regions point at each other",
             "libreLinkUp": {"service": {"redirect": "circle"}},
             "steps": [{"at": 60, "note": "Every region points home",
                        "libreLinkUp": {"service": {"redirect": "home"}}}]})"},
        {"libre-rough", "gaps, every arrow, times of day to 24 hours, mmol/L",
         R"({"account": "libreLinkUp",
             "libreLinkUp": {"readings": {"gapShare": 0.1, "graphJitter": 20, "everyArrow": true,
                                          "twentyFourHours": true, "mmolPerLitre": true}}})"},
    };
    return all;
}

}  // namespace tidewell
