#include "sources/LibreLinkUpAPI.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "sources/ClientCore.h"
#include "sources/LibreLinkUpAnswers.h"
#include "sources/ServiceRequest.h"

namespace tidewell {

namespace {

using Call = LibreLinkUpCall;
using Kind = LibreLinkUpError::Kind;

constexpr std::string_view typeName = "LibreLinkUpAPI";

/// A ticket that ends sooner might end under way.
constexpr Seconds shortestTicket{30};
/// Sign-in goes from the configured region to the account's home; more are a fault of the service.
constexpr std::size_t mostRedirects = 3;
/// No wait that the service asks for is longer: whoever has to wait longer had the clock set back.
constexpr Seconds longestWait = 1h;
/// The service's own word for "this account is not of this region".
constexpr int foreignRegionStatus = 911;

/// In log lines.
std::string_view nameOf(Call call)
{
    switch (call) {
    case Call::signIn: return "Login";
    case Call::connections: return "Connections";
    case Call::graph: return "Graph";
    }
    std::unreachable();
}

/// Percent-encoded (RFC 3986, section 2.1), the dot too: no id is a step up in the path.
std::string pathSegment(std::string_view text)
{
    std::string encoded;
    for (const char c : text) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                           c == '-' || c == '_';
        encoded += plain ? std::string{c} : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return encoded;
}

/// Without what moves a cursor or turns the direction of writing: each such character becomes a space.
/// Without spaces at its ends.
std::string printable(std::string_view text)
{
    // The two last bytes of UTF-8's three for U+2028 to U+202E and U+2066 to U+2069.
    const auto turnsLine = [](std::string_view bytes) {
        return bytes.size() >= 3 && bytes[0] == '\xE2' &&
               ((bytes[1] == '\x80' && bytes[2] >= '\xA8' && bytes[2] <= '\xAE') ||
                (bytes[1] == '\x81' && bytes[2] >= '\xA6' && bytes[2] <= '\xA9'));
    };
    const auto isC1 = [](std::string_view bytes) {
        return bytes.size() >= 2 && bytes[0] == '\xC2' && bytes[1] >= '\x80' && bytes[1] <= '\x9F';
    };
    std::string out;
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        const std::size_t hidden = byte < ' ' || byte == 0x7F ? 1 : isC1(text) ? 2 : turnsLine(text) ? 3 : 0;
        out += hidden > 0 ? ' ' : text.front();
        text.remove_prefix(std::max<std::size_t>(hidden, 1));
    }
    const std::size_t first = out.find_first_not_of(' ');
    return first == std::string::npos ? std::string{}
                                      : out.substr(first, out.find_last_not_of(' ') - first + 1);
}

LibreLinkUpError transportError(const HttpError& error)
{
    if (error.kind == HttpError::Kind::invalidURL || error.kind == HttpError::Kind::badAnswer)
        return {.kind = Kind::invalidResponse};
    return {.kind = Kind::transport, .network = error};
}

GlucoseAPIError::Kind kindOf(Kind kind)
{
    using enum GlucoseAPIError::Kind;
    switch (kind) {
    case Kind::rateLimited: return rateLimited;
    case Kind::authenticationFailed: return credentialsRefused;
    case Kind::sessionExpired: return sessionExpired;
    case Kind::invalidRegion:
    case Kind::termsRequired:
    case Kind::accountActionRequired:
    case Kind::noConnections:
    case Kind::connectionSelectionRequired:
    case Kind::connectionUnavailable: return accountActionRequired;
    case Kind::noReadingsAvailable: return noReadings;
    case Kind::serverError:
    case Kind::clientUpdateRequired: return serverTrouble;  // Both pass without anybody's help.
    case Kind::invalidResponse:
    case Kind::invalidReading: return other;
    case Kind::transport: return transport;
    }
    std::unreachable();
}

}  // namespace

std::string description(const LibreLinkUpError& error)
{
    switch (error.kind) {
    case Kind::rateLimited:
        return "LibreLinkUp is limiting requests. Tidewell will wait before trying again.";
    case Kind::serverError:
        return fmt::format("LibreLinkUp is unavailable ({}). Try again later.", error.httpStatus);
    case Kind::invalidRegion:
        return "LibreLinkUp could not find a supported account region. Check the region in Settings.";
    case Kind::authenticationFailed:
        return "Unable to sign in to LibreLinkUp. Check your email and password in the LibreLinkUp app.";
    case Kind::sessionExpired: return "Your LibreLinkUp session has expired. Please sign in again.";
    case Kind::termsRequired:
        return "Open the LibreLinkUp app and review its updated terms or privacy notice, then try again.";
    case Kind::accountActionRequired:
        return "Open the LibreLinkUp app and complete the account setup shown there, then try again.";
    case Kind::clientUpdateRequired:
        return "LibreLinkUp requires a newer connection version. Check for an update to Tidewell.";
    case Kind::noConnections:
        return "No LibreLinkUp connections were found. Accept a sharing invitation in the LibreLinkUp app "
               "first.";
    case Kind::connectionSelectionRequired:
        return "Select the person whose readings you want to display in Settings.";
    case Kind::connectionUnavailable:
        return "The selected LibreLinkUp connection is no longer available. Check sharing in LibreLinkUp and "
               "select a connection in Settings.";
    case Kind::noReadingsAvailable:
        return "No Libre glucose readings are available. Check that readings appear in the LibreLinkUp app.";
    case Kind::invalidResponse: return "LibreLinkUp returned an unexpected response. Try again later.";
    case Kind::invalidReading: return "LibreLinkUp returned a reading with an invalid value or timestamp.";
    case Kind::transport: return error.network ? description(*error.network) : std::string{};
    }
    std::unreachable();
}

GlucoseAPIError glucoseAPIError(const LibreLinkUpError& error)
{
    GlucoseAPIError seen{.kind = kindOf(error.kind), .text = description(error)};
    if (error.kind == Kind::rateLimited)
        seen.retryAfter = error.wait;
    return seen;
}

std::string LibreConnection::displayName() const { return printable(firstName + ' ' + lastName); }

bool LibreLinkUpRedirectDelegate::mayFollow(std::string_view, std::string_view)
{
    Log{typeName}.warning(fmt::format("🧪 [{}] Refused an HTTP redirect", typeName));
    return false;
}

struct LibreLinkUpAPI::Impl : ClientCore {
    template <class T>
    using Outcome = std::expected<T, LibreLinkUpError>;

    /// What one of the service's calls sends, and what the log shows of it.
    struct Message {
        Call call;
        std::string path;  ///< Below the region's base.
        std::string shownPath = path;
        SecretText body{};  ///< Of the sign-in.
        std::string shownBody{};
    };
    struct Session {
        SecretText token;
        Date expires;
        std::string accountHash;
    };

    Impl(const asio::any_io_executor& executor, HttpClient& client, Clock& time,
         const ServiceEndpoints& endpoints, const GlucoseAccountConfiguration& account)
        : ClientCore{executor, client, time, account, typeName},
          bases{endpoints.libreLinkUp},
          identity{endpoints.libreLinkUpIdentity},
          patientID{account.patientID.value_or("")},
          region{lowerCased(account.region)}
    {
    }

    asio::awaitable<Outcome<std::vector<GlucoseReading>>> latestReadings()
    {
        if (patientID.empty()) {
            const auto connections = co_await people();
            if (!connections)
                co_return std::unexpected{connections.error()};
            const Kind kind =
                connections->people.empty() ? Kind::noConnections : Kind::connectionSelectionRequired;
            co_return std::unexpected{failed(Call::connections, {kind})};
        }
        Message message{.call = Call::graph,
                        .path = fmt::format("llu/connections/{}/graph", pathSegment(patientID)),
                        .shownPath = fmt::format("llu/connections/{}/graph", redacted)};
        const auto data = co_await read(std::move(message));
        Outcome<LibreGraph> graph = std::unexpected{LibreLinkUpError{Kind::invalidResponse}};
        if (!data) {
            graph = std::unexpected{data.error()};
        } else {
            graph = libreReadings(*data, patientID, clock.now());
            if (!graph)
                (void)failed(Call::graph, graph.error());
        }
        if (!graph && graph.error().kind == Kind::connectionUnavailable)
            co_return std::unexpected{co_await whyUnavailable()};
        if (!graph)
            co_return std::unexpected{graph.error()};
        if (graph->impossible > 0)
            warn(fmt::format("Graph skipped {} impossible readings", graph->impossible));
        co_return std::move(graph->readings);
    }

    /// After an answer without the selected person. Polling ends when they are gone, so one odd answer is not
    /// enough: the list has the last word.
    asio::awaitable<LibreLinkUpError> whyUnavailable()
    {
        co_await clock.sleepFor(readSpacing);
        const auto connections = co_await people();
        if (!connections)
            co_return connections.error();
        const bool stillShares = std::ranges::find(connections->people, patientID,
                                                   &LibreConnection::patientId) != connections->people.end();
        co_return LibreLinkUpError{stillShares ? Kind::invalidResponse : Kind::connectionUnavailable};
    }

    asio::awaitable<Outcome<LibreConnections>> people()
    {
        Message message{.call = Call::connections, .path = "llu/connections"};
        const auto data = co_await read(std::move(message));
        if (!data)
            co_return std::unexpected{data.error()};
        auto found = libreConnections(*data);
        if (!found)
            co_return std::unexpected{failed(Call::connections, found.error())};
        co_return LibreConnections{.people = *std::move(found), .region = region};
    }

    asio::awaitable<Outcome<void>> startAnew()
    {
        session.reset();
        co_return co_await signIn();
    }

    /// The data of a call that needs a session. Signs in first when there is none, or when it ends soon.
    asio::awaitable<Outcome<json::value>> read(Message message)
    {
        if (session && !(session->expires - clock.now() > shortestTicket))
            session.reset();
        if (!session) {
            const auto signedIn = co_await signIn();
            if (!signedIn)
                co_return std::unexpected{signedIn.error()};
        }
        const Call call = message.call;
        auto data = co_await send(std::move(message));
        if (!data) {
            if (data.error().kind == Kind::sessionExpired)
                session.reset();
            co_return std::unexpected{failed(call, data.error())};
        }
        co_return data;
    }

    /// Requires that there is no session. Afterwards there is one, or a reason why not.
    asio::awaitable<Outcome<void>> signIn()
    {
        info(fmt::format("No active session; signing in (region={})", region));
        if (username.empty() || password.empty())
            co_return std::unexpected{failed(Call::signIn, {.kind = Kind::authenticationFailed})};
        const std::string before = region;
        // A region that did not prove to be the account's home must not stay: nobody could undo that.
        const auto refuse = [&](LibreLinkUpError error) {
            const bool astray = error.kind == Kind::authenticationFailed ||
                                error.kind == Kind::invalidRegion || error.kind == Kind::invalidResponse ||
                                error.kind == Kind::serverError;
            if (astray)
                region = before;
            return std::unexpected{failed(Call::signIn, error)};
        };
        std::set<std::string, std::less<>> asked;
        for (;;) {
            asked.insert(region);
            auto answer = co_await logIn();
            if (!answer)
                co_return refuse(answer.error());
            if (!answer->redirectRegion) {
                session = Session{std::move(answer->token), answer->expires, std::move(answer->accountHash)};
                hasSignedIn = true;
                info("Got authTicket=<redacted>");
                co_return Outcome<void>{};
            }
            const std::string& home = *answer->redirectRegion;
            if (!bases.contains(home))
                co_return refuse({.kind = Kind::invalidRegion});
            if (asked.contains(home) || asked.size() > mostRedirects)
                co_return refuse({.kind = Kind::invalidResponse});
            region = home;
            info(fmt::format("The account lives in another region (region={})", region));
        }
    }

    /// One sign-in request to the present region.
    asio::awaitable<Outcome<LibreSignIn>> logIn()
    {
        RequestBody body{username.size() + password.reveal().size()};
        body.addSecret("email", username);
        body.addSecret("password", password.reveal());
        Message message{.call = Call::signIn,
                        .path = "llu/auth/login",
                        .body = body.sent(),
                        .shownBody = " body=" + body.shown()};
        const auto data = co_await send(std::move(message));
        if (data)
            co_return libreSignIn(*data);
        LibreLinkUpError error = data.error();
        // The region was right before: then it is the service that errs, and the person has nothing to do.
        if (error.kind == Kind::invalidRegion && hasSignedIn)
            error = {.kind = Kind::serverError, .httpStatus = foreignRegionStatus};
        co_return std::unexpected{error};
    }

    /// Sends one request, unless the service has asked to wait. The answer's data when it is good.
    asio::awaitable<Outcome<json::value>> send(Message message)
    {
        const Seconds left = throttleUntil - clock.now();
        if (left > Seconds{0} && left <= longestWait)
            co_return std::unexpected{LibreLinkUpError{.kind = Kind::rateLimited, .wait = left}};
        const auto base = bases.find(region);
        if (base == bases.end())
            co_return std::unexpected{LibreLinkUpError{Kind::invalidRegion}};

        const bool posts = message.call == Call::signIn;
        HttpRequest request{.method = posts ? HttpMethod::post : HttpMethod::get,
                            .url = serviceUrl(base->second, message.path),
                            .headers = headers(message.call),
                            .body = std::move(message.body),
                            .redirectDelegate = redirectDelegate};
        debug(fmt::format("{} request: {} {}{}", nameOf(message.call), posts ? "POST" : "GET",
                          serviceUrl(base->second, message.shownPath), message.shownBody));
        auto response = co_await http.send(std::move(request));
        if (!response)
            co_return std::unexpected{transportError(response.error())};
        debug(fmt::format("{} status={} bytes={}", nameOf(message.call), response->status,
                          response->body.size()));
        auto data = libreAnswerData(message.call, *response, clock.now());
        wipe(response->body.data(), response->body.size());  // Holds a ticket, or people and their values.
        if (!data && data.error().kind == Kind::rateLimited)
            throttleUntil = clock.now() + data.error().wait;
        co_return data;
    }

    [[nodiscard]] std::vector<HttpHeader> headers(Call call) const
    {
        std::vector<HttpHeader> all{{"Content-Type", "application/json;charset=UTF-8"},
                                    {"Accept", "application/json"},
                                    {"version", identity.version},
                                    {"product", identity.product},
                                    {"User-Agent", identity.userAgent}};
        if (call != Call::signIn) {
            all.push_back({"Authorization", fmt::format("Bearer {}", session->token.reveal())});
            all.push_back({"Account-Id", session->accountHash});
        }
        return all;
    }

    /// Logs the failure and hands it through.
    LibreLinkUpError failed(Call call, LibreLinkUpError error) const
    {
        warn(fmt::format("{} failed with mapped error={}", nameOf(call), description(error)));
        return error;
    }

    std::map<std::string, std::string, std::less<>> bases;  ///< By region code.
    LibreLinkUpIdentity identity;
    std::string patientID;  ///< Empty when nobody is selected.
    std::string region;     ///< The account's home once the service has named it.
    std::optional<Session> session{};
    bool hasSignedIn = false;
    Date throttleUntil{};
    std::shared_ptr<HttpRedirectDelegate> redirectDelegate = std::make_shared<LibreLinkUpRedirectDelegate>();
};

LibreLinkUpAPI::LibreLinkUpAPI(asio::any_io_executor executor, HttpClient& http, Clock& clock,
                               const ServiceEndpoints& endpoints, const GlucoseAccountConfiguration& account)
    : impl_{std::make_shared<Impl>(executor, http, clock, endpoints, account)}
{
}

LibreLinkUpAPI::~LibreLinkUpAPI() = default;

asio::awaitable<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>>
LibreLinkUpAPI::fetchLatestReadings()
{
    return ClientCore::inTurn(impl_, &Impl::latestReadings);
}

asio::awaitable<std::expected<void, GlucoseAPIError>> LibreLinkUpAPI::signInAgain()
{
    return ClientCore::inTurn(impl_, &Impl::startAnew);
}

asio::awaitable<std::expected<LibreConnections, GlucoseAPIError>> LibreLinkUpAPI::listConnections()
{
    return ClientCore::inTurn(impl_, &Impl::people);
}

}  // namespace tidewell
