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

struct FaultWord {
    ServiceFault::Kind kind;
    TransportFault transport = TransportFault::none;
};

std::optional<std::string> applyFault(const json::object& object, DexcomShareOptions& options)
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
    Members members{object, "fault: "};
    ServiceFault fault;
    FaultWord word{none};
    if (!object.contains("kind"))
        members.fail("kind", "is missing");
    members.choice("kind", word, kinds);
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
    const std::array<std::pair<std::string_view, ServiceFault*>, 3> steps{
        {{"authenticate", &options.authenticate}, {"login", &options.login}, {"read", &options.read}}};
    const auto* chosen = members.find("steps");
    for (const auto& [name, target] : steps)
        if (!chosen)
            *target = fault;
    if (chosen && !chosen->is_array())
        members.fail("steps", "must be a list");
    for (const auto& entry : chosen && chosen->is_array() ? chosen->get_array() : json::array{}) {
        const auto name = entry.is_string() ? std::string_view{entry.get_string()} : std::string_view{};
        const auto found = std::ranges::find(steps, name, &std::pair<std::string_view, ServiceFault*>::first);
        if (found == steps.end())
            members.fail("steps", "may hold authenticate, login and read");
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
    return step.fault.empty() ? std::nullopt : applyFault(step.fault, options);
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
    Seconds last{0};
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        const auto& step = scenario.steps[i];
        const auto place = i == 0 ? std::string{} : fmt::format("Step {}: ", i);
        if (const auto error = applyStep(step, scratch))
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
    };
    return all;
}

}  // namespace tidewell
