#include "polling/PollFailure.h"

#include <limits>

namespace tidewell {
namespace {

using Kind = GlucoseAPIError::Kind;
using Action = PollFailureVerdict::Action;
using Outcome = StatusBarPollOutcome::Kind;

struct Case {
    std::string name;
    GlucoseAPIError error;
    PollFailureContext context;
    PollFailureVerdict verdict;
};

constexpr GlucoseProvider libre = GlucoseProvider::libreLinkUp;

PollFailureVerdict recorded(Outcome outcome, ErrorInfo status)
{
    return {.outcome = {.kind = outcome}, .status = std::move(status)};
}

PollFailureVerdict person(ErrorInfo status, bool canReconnect = true)
{
    status.needsSignIn = true;
    status.canReconnect = canReconnect;
    return {.action = Action::waitForPerson, .outcome = {.kind = Outcome::sessionExpired}, .status = status};
}

PollFailureVerdict limited(Seconds wait, ErrorInfo status)
{
    return {.action = Action::waitForService,
            .outcome = {.kind = Outcome::httpError, .httpStatus = 429},
            .wait = wait,
            .status = std::move(status)};
}

const PollFailureVerdict signInAgain{.action = Action::signInAgain};

const std::vector<Case> cases{
    {"transport with a network path",
     {Kind::transport, "T"},
     {},
     recorded(Outcome::networkError, {"Unable to connect", "Unable to connect to Dexcom servers.",
                                      "Check your internet connection and try again."})},
    {"transport, Libre",
     {Kind::transport, "T"},
     {.provider = libre},
     recorded(Outcome::networkError, {"Unable to connect", "Unable to connect to FreeStyle Libre servers.",
                                      "Check your internet connection and try again."})},
    {"transport without a path",
     {Kind::transport, "T"},
     {.networkReachable = false},
     recorded(Outcome::networkError, {"No internet connection available.",
                                      "Connect to the internet to retrieve glucose data.", ""})},
    {"refused once", {Kind::credentialsRefused, "R"}, {.refusedSignIns = 1}, signInAgain},
    {"refused twice",
     {Kind::credentialsRefused, "R"},
     {.refusedSignIns = 2},
     person({"Authentication failed", "Unable to authenticate with Dexcom Share.",
             "Check your username and password in Settings."},
            false)},
    {"refused, signed in again already",
     {Kind::credentialsRefused, "R"},
     {.provider = libre, .signedInAgain = true, .refusedSignIns = 1},
     person({"Authentication failed", "Unable to authenticate with LibreLinkUp.",
             "Check your username and password in Settings."},
            false)},
    {"locked",
     {Kind::accountLocked, "L"},
     {},
     person({"Account locked", "Dexcom Share has locked the account after too many failed sign-ins.",
             "Wait a while, check your username and password, then sign in again."})},
    {"session expired", {Kind::sessionExpired, "Session expired"}, {}, signInAgain},
    {"session expired again",
     {Kind::sessionExpired, "Session expired"},
     {.signedInAgain = true},
     recorded(Outcome::sessionExpired, {"Authentication required", "Cannot authenticate with Dexcom Share.",
                                        "Verify your credentials in Settings."})},
    {"authentication by its text", {Kind::other, "Request NOT AUTHENTICATED here"}, {}, signInAgain},
    {"authentication by its text, again",
     {Kind::other, "not authenticated"},
     {.provider = libre, .signedInAgain = true},
     recorded(Outcome::sessionExpired, {"Authentication required", "Cannot authenticate with LibreLinkUp.",
                                        "Verify your credentials in Settings."})},
    {"rate limit below a minute",
     {Kind::rateLimited, "Slow down", Seconds{5}},
     {.provider = libre},
     limited(Seconds{60}, {"LibreLinkUp busy", "Slow down", "Tidewell will wait before trying again."})},
    {"rate limit above a minute",
     {Kind::rateLimited, "Slow down", Seconds{300}},
     {.provider = libre},
     limited(Seconds{300}, {"LibreLinkUp busy", "Slow down", "Tidewell will wait before trying again."})},
    {"rate limit with what is no number",
     {Kind::rateLimited, "Slow down", Seconds{std::numeric_limits<double>::quiet_NaN()}},
     {},
     limited(Seconds{60}, {"Dexcom Share busy", "Slow down", "Tidewell will wait before trying again."})},
    {"rate limit without a time",
     {Kind::rateLimited, "Slow down"},
     {},
     limited(Seconds{60}, {"Dexcom Share busy", "Slow down", "Tidewell will wait before trying again."})},
    {"needs the person",
     {Kind::accountActionRequired, "Accept the terms"},
     {.provider = libre},
     person({"LibreLinkUp needs attention", "Accept the terms",
             "Resolve the issue, then choose Reconnect in Account settings."})},
    {"server trouble, for long",
     {Kind::serverTrouble, "Dexcom server error (503)"},
     {.consecutiveFailures = 9},
     recorded(Outcome::httpError, {"An unexpected error occurred: Dexcom server error (503)", "",
                                   "The app will retry automatically."})},
    {"anything else",
     {Kind::other, ""},
     {.consecutiveFailures = 1},
     recorded(Outcome::httpError,
              {"An unexpected error occurred.", "", "The app will retry automatically."})},
    {"anything else, for the third time",
     {Kind::other, "Odd"},
     {.consecutiveFailures = 2},
     recorded(Outcome::httpError, {"An unexpected error occurred: Odd", "",
                                   "Check Settings and ensure your glucose account is active."})},
};

TEST(PollFailure, classifiesEveryKindWithItsText)
{
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const PollFailureVerdict verdict = pollFailureVerdict(c.error, c.context);
        EXPECT_EQ(verdict.status.title, c.verdict.status.title);
        EXPECT_EQ(verdict.status.message, c.verdict.status.message);
        EXPECT_EQ(verdict.status.remediation, c.verdict.status.remediation);
        EXPECT_EQ(verdict, c.verdict);
    }
}

TEST(PollFailure, namesTheProviderWhenThereIsNoData)
{
    EXPECT_EQ(noDataStatus(GlucoseProvider::dexcom),
              (ErrorInfo{"No data available", "No glucose readings available from Dexcom.",
                         "Ensure your sensor is active and readings appear in Dexcom Share."}));
    EXPECT_EQ(noNewDataStatus(libre),
              (ErrorInfo{"No new data", "Unable to retrieve new glucose readings from FreeStyle Libre.",
                         "Check your internet connection and LibreLinkUp settings."}));
    EXPECT_EQ(signInRequiredStatus(),
              (ErrorInfo{"Sign in required", "Sign in to your glucose account to see glucose readings.",
                         "Open Settings to enter your glucose account details.", true}));
    EXPECT_EQ(clockStatus(Seconds{7500}).message,
              "The newest glucose reading is dated 2 hours and 5 minutes in the future.");
}

}  // namespace
}  // namespace tidewell
