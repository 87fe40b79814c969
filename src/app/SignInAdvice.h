#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "config/ConfigurationManager.h"
#include "sources/GlucoseAPIProtocol.h"

namespace tidewell {

/// Why a sign-in did not lead to a value, in the person's words. English; whoever shows it translates.
struct SignInProblem {
    std::string title{};
    std::string message{};              ///< The system's own text of the failure; may be empty.
    std::vector<std::string> causes{};  ///< Likely ones, the likeliest first, a sentence each.
    std::string remedy{};               ///< What to do next; one sentence.
    bool operator==(const SignInProblem&) const = default;
};

/// What a failed request says to who has just entered the account. `username` tells apart causes such as a
/// phone number without its country. Never holds user name or password. Pure.
[[nodiscard]] SignInProblem signInProblem(GlucoseProvider provider, const GlucoseAPIError& error,
                                          std::string_view username);
/// The account is good, but nobody shares with it.
[[nodiscard]] SignInProblem nobodySharesProblem();
/// The account is good, but the service has no readings.
[[nodiscard]] SignInProblem noReadingsProblem(GlucoseProvider provider);
/// No password was entered, and none is stored for the account.
[[nodiscard]] SignInProblem passwordNeededProblem();
/// The service refused one account several times: it is asked again after `wait`.
[[nodiscard]] SignInProblem tooManyRefusalsProblem(Seconds wait);
/// The account is good, but could not be stored.
[[nodiscard]] SignInProblem accountNotSavedProblem(const ConfigurationProblem& problem);

}  // namespace tidewell
