#include "simulator/DexcomShareSimulator.h"

#include <fmt/format.h>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <charconv>
#include <cmath>

#include "simulator/RequestForms.h"
#include "support/Json.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

constexpr std::string_view nullId = "00000000-0000-0000-0000-000000000000";
constexpr std::string_view servicePath = "/ShareWebServices/Services/";
/// What the simulator remembers at most, so that a client that signs in without end costs no memory.
constexpr std::size_t mostSessions = 1000;
constexpr std::size_t mostNames = 1000;
constexpr JsonLimits requestLimits{.bytes = 64 * 1024, .depth = 8};

constexpr std::array<std::string_view, 3> wrongForms{
    R"([{"WT":"Date(17724381)",
    R"([{"WT":1772438113482,"ST":null,"DT":[],"Value":"118","Trend":{}}])",
    R"({"readings":[]})",
};

/// The numbers that the service gives with a code.
struct CodeDetails {
    std::string_view code;
    int type;
    int category;
    int severity;
};
constexpr std::array<CodeDetails, 10> codeDetails{{
    {"AccountPasswordInvalid", 13, 4, 1},
    {"SSO_InternalError", 15, 1, 2},
    {"SSO_AuthenticatePasswordInvalid", 15, 1, 2},
    {"SSO_AuthenticateAccountNotFound", 15, 1, 2},
    {"SSO_AuthenticateMaxAttemptsExceeed", 15, 1, 2},
    {"SSO_AuthenticateMaxAttemptsExceeded", 15, 1, 2},
    {"SessionIdNotFound", 5, 2, 2},
    {"SessionNotValid", 6, 5, 1},
    {"InvalidArgument", 10, 4, 2},
    {"MonitoredReceiverNotAssigned", 14, 5, 1},
}};

bool isUuid(std::string_view text)
{
    if (text.size() != nullId.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool hyphen = nullId[i] == '-';
        const char c = text[i];
        const bool digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        if (hyphen ? c != '-' : !digit)
            return false;
    }
    return true;
}

/// A name or a value of a query, in which a plus sign is a blank.
std::optional<std::string> queryText(std::string_view text)
{
    std::string blanks{text};
    std::ranges::replace(blanks, '+', ' ');
    return percentDecoded(blanks);
}

std::string xmlEscaped(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '"': escaped += "&quot;"; break;
        default: escaped += c;
        }
    }
    return escaped;
}

/// With the nine digits after the second that the service shows.
std::string nanosecondText(Date date)
{
    const double seconds = unixSeconds(date);
    std::string text = isoText(date);
    text.pop_back();
    const auto nanoseconds = static_cast<std::int64_t>((seconds - std::floor(seconds)) * 1e9);
    return text + fmt::format(".{:09}Z", nanoseconds);
}

}  // namespace

/// What a request asks for, from its body and its query.
struct DexcomShareSimulator::Parameters {
    std::map<std::string, std::string, std::less<>> texts{};
    std::int64_t minutes = 0;
    std::int64_t maxCount = 0;

    [[nodiscard]] std::string_view text(std::string_view name) const
    {
        const auto found = texts.find(name);
        return found == texts.end() ? std::string_view{} : std::string_view{found->second};
    }

    bool takeNumber(std::string_view name, std::string_view digits)
    {
        auto& number = name == "minutes" ? minutes : maxCount;
        const auto end = digits.data() + digits.size();
        return std::from_chars(digits.data(), end, number).ptr == end && !digits.empty();
    }

    bool takeQuery(std::string_view query)
    {
        while (!query.empty()) {
            const auto pair = query.substr(0, query.find('&'));
            query.remove_prefix(std::min(query.size(), pair.size() + 1));
            const auto equals = pair.find('=');
            const auto name = queryText(pair.substr(0, equals));
            const auto value = queryText(equals == std::string_view::npos ? "" : pair.substr(equals + 1));
            if (!name || !value)
                return false;
            if (*name == "minutes" || *name == "maxCount") {
                if (!takeNumber(*name, *value))
                    return false;
            } else {
                texts[*name == "sessionID" ? "sessionId" : *name] = *value;
            }
        }
        return true;
    }

    bool takeBody(std::string_view body)
    {
        if (body.empty())
            return true;
        const auto document = parseJson(body, requestLimits);
        if (!document || !document->is_object())
            return false;
        for (const auto& [name, value] : document->get_object()) {
            if (name == "minutes" || name == "maxCount") {
                if (!value.is_int64())
                    return false;
                (name == "minutes" ? minutes : maxCount) = value.get_int64();
            } else if (value.is_string()) {
                texts[name] = value.get_string();
            } else if (!value.is_null()) {
                return false;
            }
        }
        return true;
    }
};

DexcomShareSimulator::DexcomShareSimulator(DexcomShareOptions options, Date start, std::uint64_t seed,
                                           const GlucoseTrace& trace, std::int64_t startPosition)
    : options_{std::move(options)},
      seed_{seed},
      random_{seed},
      readings_{trace, startPosition, seed, options_.readings, start}
{
}

void DexcomShareSimulator::setOptions(DexcomShareOptions options, Date now)
{
    if (options.readings != options_.readings)
        readings_.setOptions(options.readings, now);
    options_ = std::move(options);
}

void DexcomShareSimulator::endSessions()
{
    for (auto& open : sessions_)
        open.session.ended = true;
}

void DexcomShareSimulator::forgetSessions() { sessions_.clear(); }

std::vector<DexcomShareSimulator::Session> DexcomShareSimulator::sessions() const
{
    std::vector<Session> all;
    for (const auto& open : sessions_)
        all.push_back(open.session);
    return all;
}

SimulatedAnswer DexcomShareSimulator::handle(const HttpRequest& request, Date now)
{
    const std::string_view url = request.url;
    const auto question = url.find('?');
    const auto path = url.substr(0, question);
    const auto query = question == std::string_view::npos ? std::string_view{} : url.substr(question + 1);
    const auto service = path.find(servicePath);
    const auto name =
        service == std::string_view::npos ? std::string_view{} : path.substr(service + servicePath.size());
    if (name == "General/AuthenticatePublisherAccount")
        return perform(Step::authenticate, request, query, now);
    if (name == "General/LoginPublisherAccountById")
        return perform(Step::login, request, query, now);
    if (name == "Publisher/ReadPublisherLatestGlucoseValues")
        return perform(Step::read, request, query, now);
    if (name == "General/LoginPublisherAccountByName")
        return answer(200, fmt::format("\"{}\"", nullId));
    return answer(404, errorPage(404), "text/html; charset=UTF-8");
}

SimulatedAnswer DexcomShareSimulator::perform(Step step, const HttpRequest& request, std::string_view query,
                                              Date now)
{
    const bool isRead = step == Step::read;
    if (request.method != HttpMethod::post && !isRead)
        return answer(405, "{}");
    (isRead ? counters_.reads : step == Step::login ? counters_.logins : counters_.authentications) += 1;

    auto& standing = isRead ? options_.read : step == Step::login ? options_.login : options_.authenticate;
    const ServiceFault fault = takeFault(standing);
    if (fault.kind != ServiceFault::Kind::none && fault.kind != ServiceFault::Kind::transport)
        return spoilt(fault, now);

    Parameters parameters;
    SimulatedAnswer result;
    if (!parameters.takeBody(request.body.reveal()) || !parameters.takeQuery(query))
        result = answer(400, "The server encountered an error processing the request.", "text/html");
    else if (isRead)
        result = read(parameters, now);
    else
        result = step == Step::login ? login(parameters, now) : authenticate(parameters, now);
    if (isRead && result.response.status == 200) {
        result.chunked = true;
        result.gzip = acceptsGzip(request);
    }
    addFault(result, fault, now);
    return result;
}

SimulatedAnswer DexcomShareSimulator::authenticate(const Parameters& parameters, Date now)
{
    const auto name = parameters.text("accountName");
    const auto password = parameters.text("password");
    if (name.empty() || password.empty())
        return error("InvalidArgument",
                     fmt::format("Missing required field(s): {}", name.empty() ? "accountName" : "password"),
                     now);
    if (const auto missing = missingApplication(parameters))
        return error("InvalidArgument", *missing, now);
    if (isLocked(name, now))
        return locked(now);
    const auto account = std::ranges::find(options_.accounts, name, &SimulatedAccount::name);
    if (account == options_.accounts.end() || account->password != password || options_.refusePasswords)
        return refused(name, fmt::format("AccountName='{}'", name), now);
    return answer(200, fmt::format("\"{}\"", accountId(name)));
}

SimulatedAnswer DexcomShareSimulator::login(const Parameters& parameters, Date now)
{
    const auto id = parameters.text("accountId");
    const auto password = parameters.text("password");
    if (id.empty())
        return answer(200, fmt::format("\"{}\"", nullId));
    if (!isUuid(id))
        return error("InvalidArgument", "Missing required field(s): accountId is no UUID", now);
    if (password.empty())
        return error("InvalidArgument", "Missing required field(s): password", now);
    if (const auto missing = missingApplication(parameters))
        return error("InvalidArgument", *missing, now);
    const auto account = std::ranges::find_if(options_.accounts, [&](const SimulatedAccount& candidate) {
        return accountId(candidate.name) == id;
    });
    const bool known = account != options_.accounts.end();
    const std::string_view name = known ? std::string_view{account->name} : id;
    if (isLocked(name, now))
        return locked(now);
    if (!known || account->password != password || options_.refusePasswords)
        return refused(name, fmt::format("AccountId='{}'", id), now);
    refusals_.erase(account->name);
    if (sessions_.size() == mostSessions)
        sessions_.pop_front();
    sessions_.push_back({.id = Uuid::random(random_).text(), .session = {.opened = now}});
    counters_.sessionsOpened += 1;
    return answer(200, fmt::format("\"{}\"", sessions_.back().id));
}

SimulatedAnswer DexcomShareSimulator::read(const Parameters& parameters, Date now)
{
    const auto id = parameters.text("sessionId");
    if (id == nullId)
        return answer(200, "");
    const auto found = std::find_if(sessions_.rbegin(), sessions_.rend(),
                                    [id](const OpenSession& open) { return open.id == id; });
    if (found == sessions_.rend())
        return error("SessionIdNotFound",
                     fmt::format("Failed to find session object. [SessionId = {}]", id.empty() ? nullId : id),
                     now);
    auto& session = found->session;
    const bool used = options_.sessionReads > 0 && session.reads >= options_.sessionReads;
    session.ended = session.ended || used || now - session.opened >= options_.sessionLifetime;
    if (session.ended)
        return error("SessionNotValid", fmt::format("Session not active or timed out. [SessionId = {}]", id),
                     now);
    session.reads += 1;
    counters_.successfulReads += 1;
    return answer(200, readings_.read(parameters.minutes, parameters.maxCount, now));
}

SimulatedAnswer DexcomShareSimulator::spoilt(const ServiceFault& fault, Date now)
{
    SimulatedAnswer result;
    if (auto body = faultBody(fault, wrongForms, garbage_))
        result = answer(body->status, std::move(body->body), body->type);
    else if (fault.kind == ServiceFault::Kind::nullId)
        result = answer(200, fmt::format("\"{}\"", nullId));
    else
        result = error(fault.code, "Error in the application.", now);
    addFault(result, fault, now);
    return result;
}

SimulatedAnswer DexcomShareSimulator::answer(int status, std::string body, std::string_view type)
{
    return {.response = {.status = status,
                         .headers = {{"Content-Type", std::string{type}},
                                     {"Cache-Control", "no-cache, no-store, max-age=0, must-revalidate"},
                                     {"Server", "cloudflare"},
                                     {"x-trace-id", Uuid::random(random_).text()}},
                         .body = std::move(body)}};
}

SimulatedAnswer DexcomShareSimulator::error(std::string_view code, std::string_view message, Date now)
{
    const json::object body{{"Code", code},
                            {"Message", message},
                            {"SubCode", subCode(code, message, now)},
                            {"TypeName", "FaultException"}};
    return answer(500, json::serialize(body));
}

SimulatedAnswer DexcomShareSimulator::refused(std::string_view name, std::string_view by, Date now)
{
    counters_.refusedSignIns += 1;
    if (options_.lockAfter > 0) {
        if (refusals_.size() >= mostNames)
            refusals_.clear();
        auto& refusals = refusals_[std::string{name}];
        refusals.times.push_back(now);
        while (now - refusals.times.front() > options_.lockWindow)
            refusals.times.pop_front();
        if (std::ssize(refusals.times) >= options_.lockAfter) {
            refusals.times.clear();
            refusals.lockedUntil = now + options_.lockDuration;
        }
    }
    switch (options_.refusal) {
    case RefusalForm::current:
        return error("AccountPasswordInvalid", "Publisher account password failed", now);
    case RefusalForm::singleSignOn:
        return error(
            "SSO_InternalError",
            fmt::format("Cannot Authenticate by {}. The remote server answered 401 UNAUTHORIZED.", by), now);
    case RefusalForm::legacy: {
        const bool known =
            std::ranges::find(options_.accounts, name, &SimulatedAccount::name) != options_.accounts.end();
        return error(known ? "SSO_AuthenticatePasswordInvalid" : "SSO_AuthenticateAccountNotFound",
                     fmt::format("Simulate SSO: Authentication failed. AccountId={}", accountId(name)), now);
    }
    }
    std::unreachable();
}

SimulatedAnswer DexcomShareSimulator::locked(Date now)
{
    counters_.refusedSignIns += 1;
    return error(options_.lockedCode, "Too many failed sign-in attempts.", now);
}

std::optional<std::string> DexcomShareSimulator::missingApplication(const Parameters& parameters) const
{
    const auto id = parameters.text("applicationId");
    if (id.empty())
        return "Missing required field(s): applicationId";
    if (!isUuid(id))
        return "Missing required field(s): applicationId is no UUID";
    if (!options_.applicationId.empty() && id != options_.applicationId)
        return "Missing required field(s): applicationId is not known here";
    return std::nullopt;
}

bool DexcomShareSimulator::isLocked(std::string_view name, Date now) const
{
    const auto found = refusals_.find(name);
    return found != refusals_.end() && now < found->second.lockedUntil;
}

/// Stable for a name and a seed (FNV-1a), so that accounts need no table.
std::string DexcomShareSimulator::accountId(std::string_view name) const
{
    std::uint64_t hash = 0xCBF29CE484222325U ^ seed_;
    for (const char c : name)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    SeededRandom random{hash};
    return Uuid::random(random).text();
}

std::string DexcomShareSimulator::subCode(std::string_view code, std::string_view message, Date now)
{
    const auto found = std::ranges::find(codeDetails, code, &CodeDetails::code);
    const auto details = found == codeDetails.end() ? CodeDetails{code, 15, 1, 2} : *found;
    // An ended session is the one error whose inner code is empty.
    const std::string_view inner = code == "SessionNotValid" ? "" : code;
    const auto thrown = nanosecondText(now);
    const auto id = Uuid::random(random_).text();
    if (options_.xmlSubCode)
        return fmt::format(
            R"(<OnlineException DateThrownLocal="{0}" DateThrown="{0}" ErrorCode="{1}" Type="{2}" Category="{3}" )"
            R"(Severity="{4}" Id="{{{5}}}" Message="{6}" FullText="{1}: {6}" />)",
            thrown, inner, details.type, details.category, details.severity, id, xmlEscaped(message));
    return json::serialize(json::object{{"OnlineException",
                                         {{"DateThrown", thrown},
                                          {"ErrorCode", inner},
                                          {"Type", details.type},
                                          {"Category", details.category},
                                          {"Severity", details.severity},
                                          {"Id", id}}}});
}

}  // namespace tidewell
