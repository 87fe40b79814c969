#include "polling/PollFailure.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace tidewell {

namespace {

/// The shortest wait after the service asked us to slow down, whatever it named.
constexpr Seconds shortestRateLimitWait{60};
/// From this many failures in a row on, waiting alone seems not to help.
constexpr std::int64_t persistentFailures = 3;

std::string sensorService(GlucoseProvider provider)
{
    return provider == GlucoseProvider::dexcom ? "Dexcom" : "FreeStyle Libre";
}

std::string sharingApp(GlucoseProvider provider)
{
    return provider == GlucoseProvider::dexcom ? "Dexcom Share" : "LibreLinkUp";
}

ErrorInfo credentialsRefusedStatus(GlucoseProvider provider)
{
    return {.title = "Authentication failed",
            .message = "Unable to authenticate with " + sharingApp(provider) + ".",
            .remediation = "Check your username and password in Settings.",
            .needsSignIn = true};
}

ErrorInfo signInNeededAgainStatus(GlucoseProvider provider)
{
    return {.title = "Authentication required",
            .message = "Cannot authenticate with " + sharingApp(provider) + ".",
            .remediation = "Verify your credentials in Settings."};
}

ErrorInfo accountLockedStatus(GlucoseProvider provider)
{
    return {.title = "Account locked",
            .message = sharingApp(provider) + " has locked the account after too many failed sign-ins.",
            .remediation = "Wait a while, check your username and password, then sign in again.",
            .needsSignIn = true,
            .canReconnect = true};
}

ErrorInfo unreachableStatus(const PollFailureContext& context)
{
    if (!context.networkReachable)
        return {.title = "No internet connection available.",
                .message = "Connect to the internet to retrieve glucose data."};
    return {.title = "Unable to connect",
            .message = "Unable to connect to " + sensorService(context.provider) + " servers.",
            .remediation = "Check your internet connection and try again."};
}

ErrorInfo unexpectedStatus(const GlucoseAPIError& error, const PollFailureContext& context)
{
    const bool serviceSide = error.kind == GlucoseAPIError::Kind::serverTrouble;
    const bool persistent = context.consecutiveFailures + 1 >= persistentFailures;
    return {.title = error.text.empty() ? "An unexpected error occurred."
                                        : "An unexpected error occurred: " + error.text,
            .message = "",
            .remediation = serviceSide || !persistent
                               ? "The app will retry automatically."
                               : "Check Settings and ensure your glucose account is active."};
}

PollFailureVerdict record(StatusBarPollOutcome::Kind outcome, ErrorInfo status)
{
    return {.outcome = {.kind = outcome}, .status = std::move(status)};
}

PollFailureVerdict waitForPerson(ErrorInfo status)
{
    return {.action = PollFailureVerdict::Action::waitForPerson,
            .outcome = {.kind = StatusBarPollOutcome::Kind::sessionExpired},
            .status = std::move(status)};
}

PollFailureVerdict authenticationVerdict(const GlucoseAPIError& error, const PollFailureContext& context)
{
    const bool refused = error.kind == GlucoseAPIError::Kind::credentialsRefused;
    if (!context.signedInAgain && context.refusedSignIns < allowedRefusals)
        return {.action = PollFailureVerdict::Action::signInAgain};
    if (refused)
        return waitForPerson(credentialsRefusedStatus(context.provider));
    return record(StatusBarPollOutcome::Kind::sessionExpired, signInNeededAgainStatus(context.provider));
}

}  // namespace

bool isAuthenticationError(const GlucoseAPIError& error)
{
    using enum GlucoseAPIError::Kind;
    return error.kind == credentialsRefused || error.kind == sessionExpired ||
           lowerCased(error.text).contains("not authenticated");
}

PollFailureVerdict pollFailureVerdict(const GlucoseAPIError& error, const PollFailureContext& context)
{
    using enum GlucoseAPIError::Kind;
    if (error.kind == rateLimited)
        return {.action = PollFailureVerdict::Action::waitForService,
                .outcome = {.kind = StatusBarPollOutcome::Kind::httpError, .httpStatus = 429},
                .wait = std::max(shortestRateLimitWait, error.retryAfter.value_or(shortestRateLimitWait)),
                .status = {.title = sharingApp(context.provider) + " busy",
                           .message = error.text,
                           .remediation = "Tidewell will wait before trying again."}};
    if (error.kind == accountActionRequired)
        return waitForPerson({.title = sharingApp(context.provider) + " needs attention",
                              .message = error.text,
                              .remediation = "Resolve the issue, then choose Reconnect in Account settings.",
                              .needsSignIn = true,
                              .canReconnect = true});
    if (error.kind == accountLocked)
        return waitForPerson(accountLockedStatus(context.provider));
    if (isAuthenticationError(error))
        return authenticationVerdict(error, context);
    if (error.kind == transport)
        return record(StatusBarPollOutcome::Kind::networkError, unreachableStatus(context));
    return record(StatusBarPollOutcome::Kind::httpError, unexpectedStatus(error, context));
}

ErrorInfo signInRequiredStatus()
{
    return {.title = "Sign in required",
            .message = "Sign in to your glucose account to see glucose readings.",
            .remediation = "Open Settings to enter your glucose account details.",
            .needsSignIn = true};
}

ErrorInfo noDataStatus(GlucoseProvider provider)
{
    return {
        .title = "No data available",
        .message = "No glucose readings available from " + sensorService(provider) + ".",
        .remediation = "Ensure your sensor is active and readings appear in " + sharingApp(provider) + "."};
}

ErrorInfo noNewDataStatus(GlucoseProvider provider)
{
    return {.title = "No new data",
            .message = "Unable to retrieve new glucose readings from " + sensorService(provider) + ".",
            .remediation = "Check your internet connection and " + sharingApp(provider) + " settings."};
}

ErrorInfo clockStatus(Seconds ahead)
{
    return {.title = "Clock is wrong",
            .message = "The newest glucose reading is dated " + elapsedPhrase(ahead) + " in the future.",
            .remediation = "Check the date and time of this computer and of the phone with the sensor."};
}

}  // namespace tidewell
