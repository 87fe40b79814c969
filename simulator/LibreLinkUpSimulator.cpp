#include "simulator/LibreLinkUpSimulator.h"

#include <fmt/format.h>

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <set>

#include "simulator/RequestForms.h"
#include "support/Base64.h"
#include "support/Json.h"
#include "support/Sha256.h"

namespace tidewell {

namespace {

constexpr std::string_view servicePath = "/llu/";
constexpr std::string_view connectionsPath = "connections/";
constexpr std::string_view graphPath = "/graph";
constexpr std::string_view globalRegion = "global";
constexpr std::string_view nobodysRegion = "zz9";
/// What the simulator remembers at most, so that a client that signs in without end costs no memory.
constexpr std::size_t mostEmails = 1000;
constexpr JsonLimits requestLimits{.bytes = 64 * 1024, .depth = 8};
constexpr Seconds interimLifetime = 1h;
/// A sensor lasts two weeks; the one in use at the start was put on five days before.
constexpr Seconds sensorLifetime = 14 * 24h;
constexpr Seconds sensorAge = 5 * 24h;
/// How old the last measurement is of someone who wears no sensor.
constexpr Seconds withoutSensor = 97 * 24h;
/// When the invented accounts were made.
constexpr std::int64_t created = 1760000000;

constexpr std::string_view headerMissing = R"({"message":"RequiredHeaderMissing"})";
constexpr std::string_view ticketRefused = R"({"message":"invalid or expired jwt"})";
constexpr std::string_view notAuthenticated = R"({"status":2,"error":{"message":"notAuthenticated"}})";
constexpr std::string_view foreignHost = R"({"status":911})";

constexpr std::array<std::string_view, 3> wrongForms{
    R"({"status":0,"data":{"connection":{"patientId":"9a7b)",
    R"({"status":0,"data":{"connection":{"patientId":5,"glucoseMeasurement":{"FactoryTimestamp":1772438113,)"
    R"("ValueInMgPerDl":"118","TrendArrow":{}}},"graphData":{},"user":[],"authTicket":"x"}})",
    R"([{"status":0}])",
};

std::string jsonText(std::string_view text) { return json::serialize(json::string{text}); }

/// Base64 as JSON Web Tokens write it: RFC 4648 section 5, without padding.
std::string base64Url(std::string_view bytes)
{
    std::string text = base64(bytes);
    text.erase(std::ranges::find(text, '='), text.end());
    std::ranges::replace(text, '+', '-');
    std::ranges::replace(text, '/', '_');
    return text;
}

std::optional<std::string> bytesFromBase64Url(std::string_view text)
{
    std::string standard{text};
    std::ranges::replace(standard, '-', '+');
    std::ranges::replace(standard, '_', '/');
    standard.append((4 - standard.size() % 4) % 4, '=');
    return bytesFromBase64(standard);
}

/// The numbers of "4.16.0"; empty for anything else.
std::vector<int> versionNumbers(std::string_view text)
{
    std::vector<int> numbers;
    for (const char* at = text.data(); at < text.data() + text.size(); ++at) {
        const auto [end, error] = std::from_chars(at, text.data() + text.size(), numbers.emplace_back());
        if (error != std::errc{} || numbers.back() < 0 || (end != text.data() + text.size() && *end != '.'))
            return {};
        at = end;
    }
    return numbers;
}

bool isUuid(std::string_view text)
{
    constexpr std::string_view form = "00000000-0000-0000-0000-000000000000";
    return std::ranges::equal(text, form, [](char c, char f) {
        return f == '-' ? c == '-'
                        : (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    });
}

/// Stable for what it is the id of.
std::string inventedId(std::string_view purpose, std::string_view of)
{
    const auto digits = sha256Hex(fmt::format("{} {}", purpose, of));
    const std::string_view d = digits;
    return fmt::format("{}-{}-4{}-8{}-{}", d.substr(0, 8), d.substr(8, 4), d.substr(12, 3), d.substr(15, 3),
                       d.substr(18, 12));
}

/// The member "step" of a sign-in answer; "-" for one without a type.
std::string stepText(std::string_view type, std::string_view email)
{
    if (type == "-")
        return R"({"componentName":"AcceptDocument","props":{}})";
    if (type == "tou" || type == "pp")
        return fmt::format(R"({{"type":"{0}","componentName":"AcceptDocument","props":{{"reaccept":true,)"
                           R"("titleKey":"Common.{1}","type":"{0}"}}}})",
                           type, type == "tou" ? "termsOfUse" : "privacyPolicy");
    std::string component{type};
    if (component.front() >= 'a' && component.front() <= 'z')
        component.front() = static_cast<char>(component.front() - 'a' + 'A');
    const auto props =
        type == "verifyEmail" ? fmt::format(R"({{"email":{}}})", jsonText(email)) : std::string{"{}"};
    return fmt::format(R"({{"type":{},"componentName":{},"props":{}}})", jsonText(type), jsonText(component),
                       props);
}

/// The member "user" of a full sign-in.
std::string userText(const LibreAccount& account, bool mmolPerLitre, Date now)
{
    return fmt::format(
        R"({{"id":{},"firstName":"Ada","lastName":"Muster","email":{},"country":"DE","uiLanguage":"de-DE",)"
        R"("communicationLanguage":"de-DE","accountType":"pat","uom":"{}","dateFormat":"2","timeFormat":"2",)"
        R"("emailDay":[1],"system":{{"messages":{{"lluOnboarding":{created},"lvWebPostRelease":"3.20.1"}}}},)"
        R"("details":{{}},"twoFactor":{{"primaryMethod":"","primaryValue":"","secondaryMethod":"",)"
        R"("secondaryValue":""}},"created":{created},"lastLogin":{now},"programs":{{}},"dateOfBirth":500000000,)"
        R"("practices":{{}},"devices":{{}},"consents":{{"llu":{{"policyAccept":{created},"touAccept":{created}}}}}}})",
        jsonText(account.userId), jsonText(account.email), mmolPerLitre ? 0 : 1, fmt::arg("created", created),
        fmt::arg("now", static_cast<std::int64_t>(unixSeconds(now))));
}

/// What the service has of someone who wears no sensor, or whose sensor has measured nothing yet.
LibreReadingOptions readingOptions(LibreReadingOptions options, const LibrePerson& person)
{
    options.publishing = options.publishing && person.activeSensor;
    options.noCurrent = options.noCurrent || !person.measurement;
    options.emptyGraph = options.emptyGraph || !person.measurement;
    return options;
}

}  // namespace

LibreLinkUpSimulator::LibreLinkUpSimulator(LibreLinkUpOptions options, Date start, std::uint64_t seed,
                                           const GlucoseTrace& trace, double startSeconds)
    : options_{std::move(options)},
      start_{start},
      seed_{seed},
      random_{seed},
      trace_{&trace},
      startSeconds_{startSeconds}
{
    meetPeople(start);
}

void LibreLinkUpSimulator::setOptions(LibreLinkUpOptions options, Date now)
{
    options_ = std::move(options);
    meetPeople(now);
}

void LibreLinkUpSimulator::restartReadings(Seconds age, Date now)
{
    for (const auto& account : options_.accounts)
        for (const auto& person : account.people)
            if (person.activeSensor)
                readings_.find(person.patientId)->second.restart(age, now);
}

const LibreReadings& LibreLinkUpSimulator::readings() const
{
    if (options_.accounts.empty() || options_.accounts.front().people.empty())
        std::abort();
    return readings_.find(options_.accounts.front().people.front().patientId)->second;
}

/// The readings of everyone whom an account knows, and of nobody else.
void LibreLinkUpSimulator::meetPeople(Date now)
{
    std::set<std::string_view> known;
    for (const auto& account : options_.accounts) {
        for (const auto& person : account.people) {
            known.insert(person.patientId);
            auto options = readingOptions(options_.readings, person);
            if (const auto found = readings_.find(person.patientId); found != readings_.end()) {
                found->second.setOptions(options, now);
                continue;
            }
            if (!person.activeSensor)
                options.newestAge = withoutSensor;
            readings_.emplace(person.patientId, LibreReadings{*trace_, startSeconds_ + person.traceOffset,
                                                              seed_, options, now});
        }
    }
    std::erase_if(readings_, [&known](const auto& entry) { return !known.contains(entry.first); });
}

SimulatedAnswer LibreLinkUpSimulator::handle(const HttpRequest& request, Date now)
{
    const std::string_view url = request.url;
    const auto path = url.substr(0, url.find('?'));
    const auto service = path.find(servicePath);
    if (service == std::string_view::npos)
        return answer(404, "{}");
    const auto region = path.substr(0, service).substr(path.substr(0, service).rfind('/') + 1);
    if (region != globalRegion && std::ranges::find(regions, region) == regions.end())
        return answer(404, "{}");

    const auto name = path.substr(service + servicePath.size());
    if (name == "auth/login")
        return perform(Call::login, region, {}, request, now);
    if (name == "connections")
        return perform(Call::connections, region, {}, request, now);
    if (name.starts_with(connectionsPath) && name.ends_with(graphPath)) {
        const auto end = std::max(name.size() - graphPath.size(), connectionsPath.size());
        const auto id = percentDecoded(name.substr(connectionsPath.size(), end - connectionsPath.size()));
        return perform(Call::graph, region, id.value_or(""), request, now);
    }
    return answer(404, "{}");
}

SimulatedAnswer LibreLinkUpSimulator::perform(Call call, std::string_view region, std::string_view patientId,
                                              const HttpRequest& request, Date now)
{
    if (request.method != (call == Call::login ? HttpMethod::post : HttpMethod::get))
        return answer(405, "{}");
    (call == Call::login         ? counters_.logins
     : call == Call::connections ? counters_.connections
                                 : counters_.graphs) += 1;
    auto& standing = call == Call::login         ? options_.login
                     : call == Call::connections ? options_.connections
                                                 : options_.graph;
    const ServiceFault fault = takeFault(standing);

    SimulatedAnswer result;
    if (auto body = faultBody(fault, wrongForms, garbage_)) {
        result = answer(body->status, std::move(body->body), body->type);
    } else if (call == Call::login) {
        result = login(region, request, now);
    } else if (auto admission = admit(region, request, now); !admission.account) {
        result = std::move(admission.refusal);
    } else {
        result = call == Call::connections ? connections(*admission.account, region, now)
                                           : graph(*admission.account, region, patientId, now);
    }
    result.gzip = result.response.status == 200 && acceptsGzip(request);
    result.chunked = result.gzip;
    addFault(result, fault, now);
    return result;
}

SimulatedAnswer LibreLinkUpSimulator::login(std::string_view region, const HttpRequest& request, Date now)
{
    if (options_.requireProduct && !knownProduct(request))
        return answer(400, std::string{headerMissing});
    const auto document = parseJson(request.body.reveal(), requestLimits);
    const auto* object = document ? document->if_object() : nullptr;
    const auto* emailValue = object ? object->if_contains("email") : nullptr;
    const auto* passwordValue = object ? object->if_contains("password") : nullptr;
    if (!emailValue || !emailValue->is_string() || !passwordValue || !passwordValue->is_string())
        return answer(400, R"({"message":"Bad Request"})");
    const std::string_view email{emailValue->get_string()};
    const std::string_view password{passwordValue->get_string()};

    if (isLocked(email, now)) {
        counters_.refusedSignIns += 1;
        return answer(
            200, fmt::format(R"({{"status":429,"data":{{"code":60,"data":{{"failures":{},)"
                             R"("interval":{},"lockout":{}}},"message":"locked"}}}})",
                             options_.lockAfter, options_.lockWindow.count(), options_.lockDuration.count()));
    }
    const auto account = std::ranges::find(options_.accounts, email, &LibreAccount::email);
    if (account == options_.accounts.end())
        return refused(email, now);
    if (auto elsewhere = redirect(*account, region))
        return answer(200, *std::move(elsewhere));
    if (account->password != password || options_.refusePasswords)
        return refused(email, now);
    refusals_.erase(account->email);
    if (!options_.pendingStep.empty())
        return answer(
            200, fmt::format(R"({{"status":4,"data":{{"step":{},"user":{{"accountType":"pat",)"
                             R"("country":"DE","uiLanguage":"de-DE"}},"authTicket":{}}}}})",
                             stepText(options_.pendingStep, email), ticketText(*account, region, true, now)));
    counters_.tickets += 1;
    return answer(200, fmt::format(R"({{"status":0,"data":{{"user":{},"messages":{{"unread":0}},)"
                                   R"("notifications":{{"unresolved":0}},"authTicket":{},"invitations":null,)"
                                   R"("trustedDeviceToken":""}}}})",
                                   userText(*account, options_.readings.mmolPerLitre, now),
                                   ticketText(*account, region, false, now)));
}

/// The answer that sends a sign-in elsewhere; empty where the account is at home.
std::optional<std::string> LibreLinkUpSimulator::redirect(const LibreAccount& account,
                                                          std::string_view region) const
{
    if (region == account.homeRegion && options_.redirect != LibreRedirect::circle)
        return std::nullopt;
    std::string_view target;
    switch (options_.redirect) {
    case LibreRedirect::home: target = account.homeRegion; break;
    case LibreRedirect::unknown: target = nobodysRegion; break;
    case LibreRedirect::self: target = region; break;
    case LibreRedirect::circle: {
        const auto found = std::ranges::find(regions, region);
        target = found == regions.end() || found + 1 == regions.end() ? regions.front() : *(found + 1);
        break;
    }
    case LibreRedirect::refused: return std::string{foreignHost};
    }
    return fmt::format(R"({{"status":0,"data":{{"redirect":true,"region":{}}}}})", jsonText(target));
}

SimulatedAnswer LibreLinkUpSimulator::refused(std::string_view email, Date now)
{
    counters_.refusedSignIns += 1;
    if (options_.lockAfter > 0) {
        if (refusals_.size() >= mostEmails)
            refusals_.clear();
        auto& refusals = refusals_[std::string{email}];
        refusals.times.push_back(now);
        while (now - refusals.times.front() > options_.lockWindow)
            refusals.times.pop_front();
        if (std::ssize(refusals.times) >= options_.lockAfter) {
            refusals.times.clear();
            refusals.lockedUntil = now + options_.lockDuration;
        }
    }
    return answer(200, std::string{notAuthenticated});
}

bool LibreLinkUpSimulator::isLocked(std::string_view email, Date now) const
{
    const auto found = refusals_.find(email);
    return options_.locked || (found != refusals_.end() && now < found->second.lockedUntil);
}

bool LibreLinkUpSimulator::knownProduct(const HttpRequest& request)
{
    const auto product = requestHeader(request, "product");
    return product == "llu.ios" || product == "llu.android";
}

LibreLinkUpSimulator::Admission LibreLinkUpSimulator::admit(std::string_view region,
                                                            const HttpRequest& request, Date now)
{
    const auto refuse = [this](int status, std::string body) {
        return Admission{.refusal = answer(status, std::move(body))};
    };
    if (options_.requireProduct && !knownProduct(request))
        return refuse(400, std::string{headerMissing});
    const auto version = versionNumbers(requestHeader(request, "version").value_or(""));
    if (!options_.minimumVersion.empty() && version < versionNumbers(options_.minimumVersion))
        return refuse(403, fmt::format(R"({{"data":{{"minimumVersion":{}}},"status":920}})",
                                       jsonText(options_.minimumVersion)));
    const auto* account = ticketHolder(region, request, now);
    if (!account)
        return refuse(401, std::string{ticketRefused});
    const auto accountId = requestHeader(request, "account-id");
    if (options_.requireAccountId && !accountId)
        return refuse(400, std::string{headerMissing});
    if (options_.requireAccountId && *accountId != sha256Hex(account->userId))
        return refuse(401, std::string{ticketRefused});
    return {.account = account};
}

/// Whose full ticket a request carries; null when it has none that is good here and now.
const LibreAccount* LibreLinkUpSimulator::ticketHolder(std::string_view region, const HttpRequest& request,
                                                       Date now) const
{
    constexpr std::string_view scheme = "Bearer ";
    auto token = requestHeader(request, "authorization").value_or("");
    if (options_.refuseTickets || !token.starts_with(scheme))
        return nullptr;
    token.remove_prefix(scheme.size());
    const auto end = token.rfind('.');
    const auto middle = token.find('.');
    if (middle == end || signature(token.substr(0, end), false) != token.substr(end + 1))
        return nullptr;
    const auto claims = parseJson(bytesFromBase64Url(token.substr(middle + 1, end - middle - 1)).value());
    if (claims->at("region").get_string() != region ||
        unixSeconds(now) >= static_cast<double>(claims->at("exp").get_int64()))
        return nullptr;
    const auto found = std::ranges::find(options_.accounts, std::string_view{claims->at("id").get_string()},
                                         &LibreAccount::userId);
    return found == options_.accounts.end() ? nullptr : &*found;
}

/// The service keeps no list of its tickets: all that it must know of one is in its signed claims.
std::string LibreLinkUpSimulator::ticketText(const LibreAccount& account, std::string_view region,
                                             bool interim, Date now) const
{
    const Seconds lifetime = interim ? interimLifetime : options_.ticketLifetime;
    const auto expires = static_cast<std::int64_t>(unixSeconds(now + lifetime));
    const auto claims = json::serialize(json::object{{"id", account.userId},
                                                     {"firstName", "Ada"},
                                                     {"lastName", "Muster"},
                                                     {"country", "DE"},
                                                     {"region", region},
                                                     {"role", "patient"},
                                                     {"units", options_.readings.mmolPerLitre ? 0 : 1},
                                                     {"practices", json::array{}},
                                                     {"c", 1},
                                                     {"s", "llu.ios"},
                                                     {"exp", expires}});
    const auto signedPart = base64Url(R"({"alg":"HS256","typ":"JWT"})") + '.' + base64Url(claims);
    return fmt::format(R"({{"token":"{}.{}","expires":{},"duration":{}}})", signedPart,
                       signature(signedPart, interim), expires,
                       static_cast<std::int64_t>(lifetime.count() * 1000));
}

/// In the place of an HMAC: nobody here has a reason to forge one. Interim tickets have a key of their own.
std::string LibreLinkUpSimulator::signature(std::string_view signedPart, bool interim) const
{
    const auto digits = sha256Hex(fmt::format("{} {} {} {}", seed_, ticketGeneration_, interim, signedPart));
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        unsigned char byte = 0;
        std::from_chars(digits.data() + i, digits.data() + i + 2, byte, 16);
        bytes += static_cast<char>(byte);
    }
    return base64Url(bytes);
}

std::vector<const LibrePerson*> LibreLinkUpSimulator::sharing(const LibreAccount& account) const
{
    std::vector<const LibrePerson*> people;
    for (const auto& person : account.people)
        if (!options_.removed || &person != &account.people.front())
            people.push_back(&person);
    return people;
}

SimulatedAnswer LibreLinkUpSimulator::connections(const LibreAccount& account, std::string_view region,
                                                  Date now)
{
    auto people = sharing(account);
    if (!people.empty())
        std::ranges::rotate(people, people.begin() + (counters_.connections - 1) % std::ssize(people));
    std::string list;
    for (const auto* person : people)
        list += (list.empty() ? "" : ",") + connectionText(*person, now);
    return answer(200, fmt::format(R"({{"status":0,"data":[{}],"ticket":{}}})", list,
                                   ticketText(account, region, false, now)));
}

SimulatedAnswer LibreLinkUpSimulator::graph(const LibreAccount& account, std::string_view region,
                                            std::string_view patientId, Date now)
{
    const auto people = sharing(account);
    const auto found = std::ranges::find(people, patientId, &LibrePerson::patientId);
    if (found == people.end())
        return answer(200, fmt::format(R"({{"status":4,"error":{{"message":"{}"}}}})",
                                       isUuid(patientId) ? "couldNotLoadPatient" : "MissingCachedUser"));
    counters_.successfulReads += 1;
    const auto& person = **found;
    const auto sensors = person.activeSensor ? fmt::format(R"([{{"sensor":{},"device":{}}}])",
                                                           sensorText(now), deviceText(person, now))
                                             : std::string{"[]"};
    const auto graphData =
        options_.readings.missingGraph
            ? std::string{}
            : fmt::format(R"(,"graphData":{})", readings_.find(person.patientId)->second.graphText(now));
    return answer(200,
                  fmt::format(R"({{"status":0,"data":{{"connection":{},"activeSensors":{}{}}},"ticket":{}}})",
                              connectionText(person, now), sensors, graphData,
                              ticketText(account, region, false, now)));
}

std::string LibreLinkUpSimulator::connectionText(const LibrePerson& person, Date now) const
{
    const auto measurement = readings_.find(person.patientId)->second.currentText(now);
    return fmt::format(
        R"({{"id":"{}","patientId":{},"country":"DE","status":2,"firstName":{},"lastName":{},"targetLow":70,)"
        R"("targetHigh":180,"uom":{},"sensor":{},"alarmRules":{{"c":true,"h":{{"on":true,"th":250,)"
        R"("thmm":13.9,"d":1440,"f":0.1}},"f":{{"th":55,"thmm":3,"d":30,"tl":10,"tlmm":0.6}},"l":{{"on":true,)"
        R"("th":70,"thmm":3.9,"d":1440,"tl":10,"tlmm":0.6}},"nd":{{"i":20,"r":5,"l":6}},"p":5,"r":5,"std":{{}}}},)"
        R"("glucoseMeasurement":{measurement},"glucoseItem":{measurement},"glucoseAlarm":null,)"
        R"("patientDevice":{},"created":1700000000}})",
        inventedId("connection", person.patientId), jsonText(person.patientId), jsonText(person.firstName),
        jsonText(person.lastName), options_.readings.mmolPerLitre ? 0 : 1,
        person.activeSensor ? sensorText(now) : "null", deviceText(person, now),
        fmt::arg("measurement", measurement));
}

std::int64_t LibreLinkUpSimulator::sensorStart(Date now) const
{
    const Date first = start_ - sensorAge;
    return static_cast<std::int64_t>(
        unixSeconds(first + std::floor((now - first) / sensorLifetime) * sensorLifetime));
}

std::string LibreLinkUpSimulator::sensorText(Date now) const
{
    return fmt::format(R"({{"deviceId":"","sn":"0ABCDEF123","a":{},"w":60,"pt":4,"s":true,"lj":false}})",
                       sensorStart(now));
}

std::string LibreLinkUpSimulator::deviceText(const LibrePerson& person, Date now) const
{
    return fmt::format(R"({{"did":"{}","dtid":40068,"v":"3.5.0","ll":70,"hl":250,"u":{},)"
                       R"("fixedLowAlarmValues":{{"mgdl":60,"mmoll":3.3}},"alarms":false,)"
                       R"("fixedLowThreshold":0}})",
                       inventedId("device", person.patientId), sensorStart(now));
}

SimulatedAnswer LibreLinkUpSimulator::answer(int status, std::string body, std::string_view type)
{
    return {.response = {.status = status,
                         .headers = {{"Content-Type", std::string{type}},
                                     {"Cache-Control", "no-store"},
                                     {"Server", "cloudflare"},
                                     {"x-request-id", Uuid::random(random_).text()}},
                         .body = std::move(body)}};
}

}  // namespace tidewell
