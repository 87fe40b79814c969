#include "app/SignInAdvice.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "app/AccountCheck.h"
#include "sources/DexcomAPI.h"
#include "sources/LibreLinkUpAPI.h"
#include "statusbar/ReadingPresentation.h"

namespace tidewell {

namespace {

using Kind = GlucoseAPIError::Kind;
using Causes = std::vector<std::string>;

/// What a person should wait after a refusal that names no time.
constexpr Seconds shortestWait{60};

bool is(const GlucoseAPIError& error, HttpError::Kind kind)
{
    return error.text == description(HttpError{.kind = kind});
}

bool is(const GlucoseAPIError& error, LibreLinkUpError::Kind kind)
{
    return error.text == description(LibreLinkUpError{.kind = kind});
}

/// Digits and what people write between them, without the plus sign of an international number.
bool isPhoneNumberWithoutCountry(std::string_view username)
{
    return username.find_first_not_of("0123456789 -()/.") == std::string_view::npos &&
           std::ranges::count_if(username, [](char c) { return c >= '0' && c <= '9'; }) >= 6;
}

/// The service answers to a wrong name, password and region alike.
Causes dexcomRefusalCauses(std::string_view username)
{
    Causes causes;
    if (isPhoneNumberWithoutCountry(username))
        causes.emplace_back("A phone number needs a plus sign and the country code in front, as in +1.");
    causes.emplace_back(
        "The password or the user name was mistyped; in a password, capitals and small letters differ.");
    causes.emplace_back(
        "The region is another one: it is that of the country where the account was made, not where you are "
        "now.");
    causes.emplace_back(
        "It is a follower's account: Tidewell needs the account of the person who wears the sensor, the one "
        "in the Dexcom app itself.");
    return causes;
}

Causes libreLinkUpRefusalCauses(std::string_view username)
{
    Causes causes;
    if (!username.contains('@'))
        causes.emplace_back("The user name is the e-mail address of the LibreLinkUp account.");
    causes.emplace_back("The e-mail address or the password was mistyped.");
    causes.emplace_back(
        "It is the account of the person who wears the sensor: Tidewell needs that of the follower, the one "
        "in the LibreLinkUp app, which may have another password.");
    causes.emplace_back(
        "New terms are waiting to be accepted: sign out of the LibreLinkUp app and in again, and see whether "
        "it asks for something.");
    return causes;
}

SignInProblem refused(GlucoseProvider provider, std::string_view username)
{
    SignInProblem problem{.title = "The sign-in was refused"};
    switch (provider) {
    case GlucoseProvider::dexcom:
        problem.causes = dexcomRefusalCauses(username);
        problem.remedy = "Correct what may be wrong and try again; many wrong tries lock the account.";
        break;
    case GlucoseProvider::libreLinkUp:
        problem.causes = libreLinkUpRefusalCauses(username);
        problem.remedy =
            "Correct what may be wrong and try again; a few wrong tries lock the account for some minutes.";
        break;
    }
    return problem;
}

SignInProblem locked()
{
    return {
        .title = "The account is locked for a while",
        .causes = {"There were too many sign-ins with a wrong password, from here or from another program."},
        .remedy = "Wait a quarter of an hour without trying, then sign in with the right password."};
}

SignInProblem unreachable(const GlucoseAPIError& error)
{
    SignInProblem problem{.title = "The service could not be reached"};
    if (is(error, HttpError::Kind::tls)) {
        problem.causes = {
            "The date or the time of this computer is wrong.",
            "A network filter, a virus scanner or the sign-in page of a public network stands in between."};
        problem.remedy = "Check the clock, or use another network, and try again.";
    } else if (is(error, HttpError::Kind::redirectRefused)) {
        problem.causes = {"The network asks for a sign-in of its own, as in hotels and trains.",
                          "A proxy stands in between and does not let the service through."};
        problem.remedy = "Open a web page in the browser to see whether the network asks for something.";
    } else if (is(error, HttpError::Kind::timedOut)) {
        problem.causes = {"The internet connection is slow or was interrupted.",
                          "The service is overloaded at the moment."};
        problem.remedy = "Check the internet connection and try again.";
    } else {
        problem.causes = {"This computer is not connected to the internet.",
                          "A firewall or a proxy does not let Tidewell through."};
        problem.remedy = "Check the internet connection and try again.";
    }
    return problem;
}

SignInProblem unknownRegion()
{
    return {.title = "The region does not fit",
            .causes = {"The account belongs to a region that this version of Tidewell does not know, or the "
                       "address list of this computer lacks it."},
            .remedy = "Choose another region and try again."};
}

SignInProblem pendingTerms()
{
    return {
        .title = "LibreLinkUp needs attention",
        .causes = {"LibreLinkUp has new terms of use or a new privacy notice, and nobody accepted them with "
                   "this account yet.",
                   "The app shows them only after a new sign-in."},
        .remedy =
            "Sign out of the LibreLinkUp app on the phone and in again, accept what it shows, then try "
            "again here."};
}

SignInProblem pendingSetup()
{
    return {.title = "LibreLinkUp needs attention",
            .causes = {"The e-mail address of the account was not confirmed yet.",
                       "LibreLinkUp asks for a name, a code or a setting that only its app can take."},
            .remedy =
                "Sign out of the LibreLinkUp app on the phone and in again, do what it asks for, then try "
                "again here."};
}

SignInProblem personIsGone()
{
    return {.title = "This person no longer shares",
            .causes = {"The person who wears the sensor ended sharing, or removed you as a follower.",
                       "The person moved to another account, which needs a new invitation."},
            .remedy = "Go back, sign in again and choose who is listed then."};
}

SignInProblem actionRequired(GlucoseProvider provider, const GlucoseAPIError& error)
{
    using Libre = LibreLinkUpError::Kind;
    if (is(error, Libre::invalidRegion) ||
        error.text == description(DexcomError{.kind = DexcomError::Kind::invalidRegion}))
        return unknownRegion();
    if (is(error, Libre::noConnections))
        return nobodySharesProblem();
    if (is(error, Libre::termsRequired))
        return pendingTerms();
    if (is(error, Libre::connectionUnavailable))
        return personIsGone();
    if (is(error, Libre::connectionSelectionRequired))
        return {.title = "Nobody is chosen yet",
                .causes = {"The account can follow one person or more, and none of them was chosen."},
                .remedy = "Go back and choose whose readings to show."};
    if (provider == GlucoseProvider::libreLinkUp)
        return pendingSetup();
    return {.title = "The account needs attention",
            .causes = {"The Dexcom app waits for something that only it can take."},
            .remedy = "Open the Dexcom app, do what it asks for, then try again here."};
}

/// "a minute", "5 minutes"; a second more is a minute more.
std::string waitPhrase(const std::optional<Seconds>& wait)
{
    constexpr Seconds minute{60};
    const Seconds length = std::max(wait.value_or(shortestWait), shortestWait);
    return elapsedPhrase(minute * std::ceil(length / minute));
}

SignInProblem rateLimited(const GlucoseAPIError& error)
{
    return {.title = "The service asks to wait",
            .causes = {"The account is locked for a while, after several wrong passwords.",
                       "Another program asks with the same account, or from the same network, too often."},
            .remedy = "Wait for " + waitPhrase(error.retryAfter) + ", then try again."};
}

SignInProblem serverTrouble(GlucoseProvider provider, const GlucoseAPIError& error)
{
    if (is(error, LibreLinkUpError::Kind::clientUpdateRequired))
        return {.title = "LibreLinkUp wants a newer version",
                .causes = {"LibreLinkUp has changed, and this version of Tidewell is too old for it."},
                .remedy = "Install the newest Tidewell; if you have it, try again in a few days."};
    SignInProblem problem{.title = "The service is in trouble",
                          .causes = {"The service is overloaded or under maintenance."},
                          .remedy = "Wait a few minutes and try again; name and password stay as they are."};
    if (provider == GlucoseProvider::libreLinkUp)
        problem.causes.emplace_back(
            "The service does not let this network in for a while, after many requests.");
    return problem;
}

SignInProblem notUnderstood(GlucoseProvider provider)
{
    SignInProblem problem{
        .title = "The service's answer was not understood",
        .causes = {"The service is under maintenance or has changed.",
                   "The sign-in page of a public network answered in place of the service."},
        .remedy = "Try again in a few minutes, or from another network."};
    if (provider == GlucoseProvider::dexcom)
        problem.causes.emplace_back("The user name has a form that the service does not know.");
    return problem;
}

SignInProblem sessionEnded(GlucoseProvider provider)
{
    SignInProblem problem{
        .title = "The session ended at once",
        .causes = {"The password was changed a moment ago."},
        .remedy = "Try again; if it happens again, check the password in the service's app."};
    if (provider == GlucoseProvider::libreLinkUp)
        problem.causes.emplace_back("Another program signed in with the same account in the same moment.");
    return problem;
}

/// Why a secret store does not take the password, and what helps.
std::pair<Causes, std::string> keychainAdvice(std::int32_t status)
{
    switch (status) {
    case keychainStatus::notAvailable:
        return {
            {"No keyring is running in this session: window managers without a desktop often start none.",
             "The keyring runs, but does not answer."},
            "Install and start GNOME Keyring or KWallet, then try again; or start Tidewell with "
            "TIDEWELL_KEYCHAIN=file in its environment: it then keeps the password in a file that only you "
            "can read."};
    case keychainStatus::interactionNotAllowed:
    case keychainStatus::userCanceled:
        return {{"The keyring is locked, or its unlock dialog was closed."},
                "Unlock the keyring and try again; what you entered is kept until then."};
    case keychainStatus::invalidStore:
        return {{"The file with the passwords belongs to somebody else, or others may read it."},
                "Make the file and its folder yours alone, then try again."};
    case keychainStatus::io:
        return {{"The disk is full.", "The file with the passwords or its folder cannot be written to."},
                "Make room or mend the folder's permissions, then try again."};
    default:
        return {
            {"What the keyring holds for this account is damaged, or the keyring is in trouble."},
            "Remove the entry of Tidewell with the keyring's own program, or start the keyring anew, then "
            "try again."};
    }
}

/// Everything but the system's own text.
SignInProblem adviceFor(GlucoseProvider provider, const GlucoseAPIError& error, std::string_view username)
{
    switch (error.kind) {
    case Kind::transport: return unreachable(error);
    case Kind::credentialsRefused: return refused(provider, username);
    case Kind::accountLocked: return locked();
    case Kind::sessionExpired: return sessionEnded(provider);
    case Kind::rateLimited: return rateLimited(error);
    case Kind::accountActionRequired: return actionRequired(provider, error);
    case Kind::noReadings: return noReadingsProblem(provider);
    case Kind::serverTrouble: return serverTrouble(provider, error);
    case Kind::other: return notUnderstood(provider);
    }
    std::unreachable();
}

}  // namespace

SignInProblem signInProblem(GlucoseProvider provider, const GlucoseAPIError& error, std::string_view username)
{
    SignInProblem problem = adviceFor(provider, error, username);
    problem.message = error.text;
    return problem;
}

SignInProblem nobodySharesProblem()
{
    return {.title = "Nobody shares with this account",
            .message = noConnectionsText(),
            .causes = {"The person who wears the sensor has not invited this e-mail address yet.",
                       "The invitation was not accepted yet in the LibreLinkUp app.",
                       "It is the account of the person who wears the sensor, which follows nobody: Tidewell "
                       "needs a follower's."},
            .remedy =
                "Have the person invite this address in the Libre app, accept the invitation in the "
                "LibreLinkUp app, then try again."};
}

SignInProblem noReadingsProblem(GlucoseProvider provider)
{
    switch (provider) {
    case GlucoseProvider::dexcom:
        return {.title = "Signed in, but there are no readings",
                .message = description(DexcomError{.kind = DexcomError::Kind::noReadingsAvailable}),
                .causes = {"Sharing is switched off in the Dexcom app.",
                           "No follower was invited: Dexcom shares nothing until there is at least one.",
                           "There is no active sensor, or it is warming up.",
                           "The phone with the sensor had no internet connection for the last 24 hours."},
                .remedy =
                    "Switch Share on in the Dexcom app and invite a follower; then try again, or go on "
                    "without a value."};
    case GlucoseProvider::libreLinkUp:
        return {.title = "Signed in, but there are no readings",
                .message = description(LibreLinkUpError{.kind = LibreLinkUpError::Kind::noReadingsAvailable}),
                .causes = {"There is no active sensor, or it is warming up.",
                           "The phone with the sensor had no internet connection for the last twelve hours."},
                .remedy =
                    "See whether the LibreLinkUp app shows a value; then try again, or go on without "
                    "one."};
    }
    std::unreachable();
}

SignInProblem passwordNeededProblem()
{
    return {.title = "The password is needed",
            .message = "The password of this account is not stored.",
            .causes = {"The keyring is locked, or the password was removed from it."},
            .remedy = "Enter the password."};
}

SignInProblem tooManyRefusalsProblem(Seconds wait)
{
    return {
        .title = "Too many refused sign-ins",
        .causes = {"The service refused this account several times within a quarter of an hour. More tries "
                   "could lock it."},
        .remedy = "Wait for " + waitPhrase(wait) + ", then try again."};
}

SignInProblem accountNotSavedProblem(const ConfigurationProblem& problem)
{
    SignInProblem advice{.title = "The account could not be saved", .message = problem.message};
    switch (problem.error.kind) {
    case ConfigurationError::Kind::keychainError:
        std::tie(advice.causes, advice.remedy) = keychainAdvice(problem.error.status);
        break;
    case ConfigurationError::Kind::invalidConfiguration:
        advice.causes = {"The disk is full.", "The folder of the settings cannot be written to."};
        advice.remedy = "Make room or mend the folder's permissions, then try again.";
        break;
    }
    return advice;
}

}  // namespace tidewell
