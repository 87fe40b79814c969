#include "sources/DexcomAPI.h"

#include <fmt/format.h>

#include <utility>

#include "sources/ClientCore.h"
#include "sources/DexcomAnswers.h"
#include "sources/ServiceRequest.h"
#include "sources/UuidText.h"

namespace tidewell {

namespace {

using Kind = DexcomError::Kind;

/// What one read asks for: as far back and as many as the service gives.
constexpr int readMinutes = 1440;
constexpr int readCount = 288;

constexpr std::string_view checkCredentials = "Please check your credentials.";
constexpr std::string_view sessionNotStarted = "Unable to start a Dexcom session.";

/// One of the service's three calls.
struct Step {
    std::string_view path;   ///< After the service base.
    std::string_view name;   ///< In messages.
    std::string_view label;  ///< In the log line of the request.
    bool signingIn;
};
constexpr Step authenticateStep{"General/AuthenticatePublisherAccount", "AuthenticatePublisherAccount",
                                "Auth", true};
constexpr Step loginStep{"General/LoginPublisherAccountById", "LoginPublisherAccountById", "Login", true};
constexpr Step readStep{"Publisher/ReadPublisherLatestGlucoseValues", "ReadPublisherLatestGlucoseValues",
                        "History", false};

bool isServerTrouble(int status) { return status == 429 || (status >= 500 && status <= 599); }

DexcomError transportError(const Step& step, const HttpError& error)
{
    switch (error.kind) {
    case HttpError::Kind::invalidURL:
        return {.kind = Kind::invalidURL, .message = std::string{step.name}, .signingIn = step.signingIn};
    case HttpError::Kind::badAnswer: return {.kind = Kind::invalidResponse, .signingIn = step.signingIn};
    default: return {.kind = Kind::transport, .network = error, .signingIn = step.signingIn};
    }
}

/// Of a status outside 200 to 299.
DexcomError statusError(const Step& step, const HttpResponse& response)
{
    DexcomError error{
        .kind = Kind::invalidResponse, .httpStatus = response.status, .signingIn = step.signingIn};
    if (response.status == 401 || response.status == 403) {
        error.kind = Kind::sessionExpired;
    } else if (isServerTrouble(response.status)) {
        error.kind = Kind::serverError;
        error.code = dexcomErrorCode(response.body);
    }
    return error;
}

DexcomError signInError(Kind kind, std::string_view message)
{
    return {.kind = kind, .message = std::string{message}, .signingIn = true};
}

std::string logText(const DexcomError& error)
{
    return error.code.empty() ? description(error) : description(error) + " code=" + error.code;
}

GlucoseAPIError::Kind serverErrorKind(const DexcomError& error)
{
    const std::string_view code = error.code;
    if (code.starts_with("SSO_AuthenticateMaxAttempts"))
        return GlucoseAPIError::Kind::accountLocked;
    // A read that fails with any code has been repeated with a new session already: signing in once more does
    // not help.
    const bool refused = code == "AccountPasswordInvalid" || code == "SSO_AuthenticatePasswordInvalid" ||
                         code == "SSO_AuthenticateAccountNotFound" || code == "SSO_InternalError" ||
                         code == "InvalidArgument";
    return error.signingIn && refused ? GlucoseAPIError::Kind::credentialsRefused
                                      : GlucoseAPIError::Kind::serverTrouble;
}

GlucoseAPIError::Kind sessionExpiredKind(const DexcomError& error)
{
    if (!error.signingIn)
        return GlucoseAPIError::Kind::sessionExpired;
    // There was no session to expire. 401 refuses the credentials; a bare 403 comes from the edge in front of
    // the service and passes without anybody's help.
    return error.httpStatus == 401 ? GlucoseAPIError::Kind::credentialsRefused
                                   : GlucoseAPIError::Kind::serverTrouble;
}

GlucoseAPIError::Kind kindOf(const DexcomError& error)
{
    switch (error.kind) {
    case Kind::authenticationFailed: return GlucoseAPIError::Kind::credentialsRefused;
    case Kind::loginFailed:
        return error.message == sessionNotStarted ? GlucoseAPIError::Kind::serverTrouble
                                                  : GlucoseAPIError::Kind::credentialsRefused;
    case Kind::serverError: return serverErrorKind(error);
    case Kind::invalidRegion: return GlucoseAPIError::Kind::accountActionRequired;
    case Kind::sessionExpired: return sessionExpiredKind(error);
    case Kind::noReadingsAvailable: return GlucoseAPIError::Kind::noReadings;
    case Kind::transport: return GlucoseAPIError::Kind::transport;
    case Kind::invalidURL:
    case Kind::parsingFailed:
    case Kind::invalidResponse: return GlucoseAPIError::Kind::other;
    }
    std::unreachable();
}

}  // namespace

std::string description(const DexcomError& error)
{
    switch (error.kind) {
    case Kind::invalidURL: return fmt::format("Invalid {} URL", error.message);
    case Kind::authenticationFailed: return "Authentication failed: " + error.message;
    case Kind::loginFailed: return "Login failed: " + error.message;
    case Kind::parsingFailed: return "Unable to process server response: " + error.message;
    case Kind::serverError: return fmt::format("Dexcom server error ({})", error.httpStatus);
    case Kind::invalidRegion: return "Invalid region";
    case Kind::sessionExpired: return "Session expired";
    case Kind::noReadingsAvailable: return "No glucose readings available";
    case Kind::invalidResponse: return "Invalid response from server";
    case Kind::transport: return error.network ? description(*error.network) : std::string{};
    }
    std::unreachable();
}

GlucoseAPIError glucoseAPIError(const DexcomError& error)
{
    return {.kind = kindOf(error), .text = description(error)};
}

struct DexcomAPI::Impl : ClientCore {
    using Answer = std::expected<std::string, DexcomError>;

    Impl(const asio::any_io_executor& executor, HttpClient& client, Clock& time,
         const ServiceEndpoints& endpoints, const GlucoseAccountConfiguration& account)
        : ClientCore{executor, client, time, account, "DexcomAPI"}, region{account.region}
    {
        if (const DexcomEndpoint* row = endpoints.dexcomRegion(region))
            endpoint = *row;
    }

    asio::awaitable<std::expected<void, DexcomError>> startAnew()
    {
        session.reset();
        co_return co_await signIn();
    }

    asio::awaitable<std::expected<std::vector<GlucoseReading>, DexcomError>> latestReadings()
    {
        if (!session) {
            const auto signedIn = co_await signIn();
            if (!signedIn)
                co_return std::unexpected{signedIn.error()};
        }
        Answer body = co_await read();
        if (!body && body.error().kind == Kind::serverError && body.error().httpStatus == 500) {
            // The service answers so to a session that has ended.
            warn(fmt::format("{} received HTTP 500; invalidated session and retrying auth flow",
                             readStep.name));
            session.reset();
            const auto signedIn = co_await signIn();
            if (!signedIn)
                co_return std::unexpected{signedIn.error()};
            co_await clock.sleepFor(readSpacing);
            body = co_await read();
        }
        if (!body)
            co_return std::unexpected{failed(readStep, std::move(body).error())};
        co_return understood(*body);
    }

    std::expected<std::vector<GlucoseReading>, DexcomError> understood(const std::string& body)
    {
        // An empty body is what an id gets that is none of the service's sessions.
        if (dexcomId(body).empty())
            session.reset();
        auto answer = dexcomReadings(body, clock.now());
        if (!answer)
            return std::unexpected{failed(readStep, std::move(answer).error())};
        if (answer->unreadable > 0)
            warn(fmt::format("History skipped {} unreadable readings", answer->unreadable));
        if (answer->duplicates > 0)
            debug(fmt::format("History removed {} closely spaced duplicate readings", answer->duplicates));
        return std::move(answer)->readings;
    }

    asio::awaitable<Answer> read()
    {
        if (!session) {
            warn("Missing session when fetching glucose history");
            co_return std::unexpected{DexcomError{.kind = Kind::sessionExpired}};
        }
        RequestBody body{session->reveal().size()};
        body.addSecret("sessionId", session->reveal());
        body.add("minutes", readMinutes);
        body.add("maxCount", readCount);
        co_return co_await post(readStep, body.sent(), body.shown());
    }

    /// Requires that there is no session. Afterwards there is one, or a reason why not.
    asio::awaitable<std::expected<void, DexcomError>> signIn()
    {
        info(fmt::format("No active session; authenticating (region={})", region));
        if (!endpoint) {
            const DexcomError error{.kind = Kind::invalidRegion, .signingIn = true};
            warn(description(error));
            co_return std::unexpected{error};
        }
        for (const auto& [missing, text] : {std::pair{username.empty(), "Username is required"},
                                            std::pair{password.empty(), "Password is required"}}) {
            if (!missing)
                continue;
            const DexcomError error = signInError(Kind::authenticationFailed, text);
            warn(description(error));
            co_return std::unexpected{error};
        }

        const auto accountId = co_await authenticate();
        if (!accountId)
            co_return std::unexpected{failed(authenticateStep, accountId.error())};
        info("Got accountId=<redacted>");
        auto newSession = co_await logIn(*accountId);
        if (!newSession)
            co_return std::unexpected{failed(loginStep, std::move(newSession).error())};
        session = *std::move(newSession);
        info("Established sessionId=<redacted>");
        info("Authentication complete");
        co_return std::expected<void, DexcomError>{};
    }

    asio::awaitable<std::expected<SecretText, DexcomError>> authenticate()
    {
        RequestBody body{username.size() + password.reveal().size()};
        body.addSecret("accountName", username);
        body.addSecret("password", password.reveal());
        body.add("applicationId", endpoint->applicationId);
        Answer answer = co_await post(authenticateStep, body.sent(), body.shown());
        if (!answer)
            co_return std::unexpected{std::move(answer).error()};
        const SecretText whole{*std::move(answer)};
        const std::string_view id = dexcomId(whole.reveal());
        if (id == nullDexcomId)
            co_return std::unexpected{signInError(Kind::authenticationFailed, checkCredentials)};
        if (!isUuidText(id))
            co_return std::unexpected{signInError(Kind::parsingFailed, "Expected an account id")};
        co_return SecretText{id};
    }

    asio::awaitable<std::expected<SecretText, DexcomError>> logIn(SecretText accountId)
    {
        RequestBody body{accountId.reveal().size() + password.reveal().size()};
        body.addSecret("accountId", accountId.reveal());
        body.addSecret("password", password.reveal());
        body.add("applicationId", endpoint->applicationId);
        Answer answer = co_await post(loginStep, body.sent(), body.shown());
        if (!answer)
            co_return std::unexpected{std::move(answer).error()};
        const SecretText whole{*std::move(answer)};
        const std::string_view id = dexcomId(whole.reveal());
        if (id == nullDexcomId)
            co_return std::unexpected{signInError(Kind::loginFailed, checkCredentials)};
        if (id.empty())
            co_return std::unexpected{signInError(Kind::loginFailed, sessionNotStarted)};
        if (!isUuidText(id))
            co_return std::unexpected{signInError(Kind::parsingFailed, "Expected a session id")};
        co_return SecretText{id};
    }

    /// Sends one step's request. The answer's body for a status from 200 to 299.
    asio::awaitable<Answer> post(Step step, SecretText body, std::string shownBody)
    {
        HttpRequest request{.method = HttpMethod::post,
                            .url = serviceUrl(endpoint->base, step.path),
                            .headers = {{"Content-Type", "application/json"}, {"Accept", "application/json"}},
                            .body = std::move(body)};
        debug(fmt::format("{} request: POST {} body={}", step.label, request.url, shownBody));
        co_return judged(step, co_await http.send(std::move(request)));
    }

    /// What came of a step's request; 401 and 403 end the session.
    Answer judged(const Step& step, std::expected<HttpResponse, HttpError> response)
    {
        if (!response) {
            if (response.error().kind == HttpError::Kind::badAnswer)
                warn(fmt::format("{} failed: non-HTTP response", step.name));
            return std::unexpected{transportError(step, response.error())};
        }
        debug(fmt::format("{} status={} bytes={}", step.name, response->status, response->body.size()));
        if (response->status >= 200 && response->status <= 299)
            return std::move(response->body);
        DexcomError error = statusError(step, *response);
        wipe(response->body.data(), response->body.size());  // Error texts name accounts and sessions.
        if (error.kind == Kind::sessionExpired)
            session.reset();
        return std::unexpected{std::move(error)};
    }

    /// Logs the failure and hands it through.
    DexcomError failed(const Step& step, DexcomError error) const
    {
        warn(fmt::format("{} failed with mapped error={}", step.name, logText(error)));
        return error;
    }

    std::string region;
    std::optional<DexcomEndpoint> endpoint{};  ///< Empty when the region is unknown.
    std::optional<SecretText> session{};       ///< In memory only.
};

DexcomAPI::DexcomAPI(asio::any_io_executor executor, HttpClient& http, Clock& clock,
                     const ServiceEndpoints& endpoints, const GlucoseAccountConfiguration& account)
    : impl_{std::make_shared<Impl>(executor, http, clock, endpoints, account)}
{
}

DexcomAPI::~DexcomAPI() = default;

asio::awaitable<std::expected<std::vector<GlucoseReading>, GlucoseAPIError>> DexcomAPI::fetchLatestReadings()
{
    return ClientCore::inTurn(impl_, &Impl::latestReadings);
}

asio::awaitable<std::expected<void, GlucoseAPIError>> DexcomAPI::signInAgain()
{
    return ClientCore::inTurn(impl_, &Impl::startAnew);
}

}  // namespace tidewell
