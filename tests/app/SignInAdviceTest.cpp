#include "app/SignInAdvice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "sources/DexcomAPI.h"
#include "sources/LibreLinkUpAPI.h"

namespace tidewell {
namespace {

constexpr auto dexcom = GlucoseProvider::dexcom;
constexpr auto libreLinkUp = GlucoseProvider::libreLinkUp;

std::string everything(const SignInProblem& problem)
{
    std::string all = problem.title + '\n' + problem.message + '\n' + problem.remedy;
    for (const auto& cause : problem.causes)
        all += '\n' + cause;
    return all;
}

/// A title, a remedy and causes, each of them a sentence that differs from the others.
void expectWhole(const SignInProblem& problem)
{
    EXPECT_FALSE(problem.title.empty() || problem.title.ends_with('.')) << problem.title;
    EXPECT_TRUE(problem.remedy.ends_with('.')) << problem.remedy;
    EXPECT_FALSE(problem.causes.empty()) << problem.title;
    EXPECT_EQ(std::set(problem.causes.begin(), problem.causes.end()).size(), problem.causes.size());
    for (const auto& cause : problem.causes)
        EXPECT_TRUE(cause.ends_with('.') && !cause.contains('\n')) << cause;
}

std::vector<GlucoseAPIError> failures(GlucoseProvider provider)
{
    std::vector<GlucoseAPIError> all;
    const auto network = [&](auto make) {
        for (int kind = 0; kind <= static_cast<int>(HttpError::Kind::badAnswer); ++kind)
            all.push_back(make(HttpError{.kind = static_cast<HttpError::Kind>(kind)}));
    };
    if (provider == dexcom) {
        for (int kind = 0; kind <= static_cast<int>(DexcomError::Kind::invalidResponse); ++kind)
            for (const char* code : {"", "AccountPasswordInvalid", "SSO_AuthenticateMaxAttemptsExceeed"})
                all.push_back(glucoseAPIError(DexcomError{.kind = static_cast<DexcomError::Kind>(kind),
                                                          .httpStatus = 500,
                                                          .code = code,
                                                          .signingIn = true}));
        network([](HttpError error) {
            return glucoseAPIError(DexcomError{.kind = DexcomError::Kind::transport, .network = error});
        });
    } else {
        for (int kind = 0; kind <= static_cast<int>(LibreLinkUpError::Kind::invalidReading); ++kind)
            all.push_back(glucoseAPIError(LibreLinkUpError{
                .kind = static_cast<LibreLinkUpError::Kind>(kind), .wait = Seconds{300}, .httpStatus = 503}));
        network([](HttpError error) {
            return glucoseAPIError(
                LibreLinkUpError{.kind = LibreLinkUpError::Kind::transport, .network = error});
        });
    }
    return all;
}

TEST(SignInAdvice, everyFailureOfEitherServiceHasCausesBesideTheSystemsOwnText)
{
    for (const auto provider : allGlucoseProviders) {
        for (const GlucoseAPIError& error : failures(provider)) {
            SCOPED_TRACE(error.text);
            for (const std::string_view username : {"zyxwv", "0170 1234567", "zyxwv@example.org", ""}) {
                const SignInProblem problem = signInProblem(provider, error, username);
                expectWhole(problem);
                EXPECT_EQ(problem.message, error.text);
                EXPECT_FALSE(everything(problem).contains("zyxwv"));
                EXPECT_FALSE(everything(problem).contains("1234567"));
            }
        }
        expectWhole(noReadingsProblem(provider));
    }
    expectWhole(nobodySharesProblem());
    expectWhole(passwordNeededProblem());
    EXPECT_EQ(tooManyRefusalsProblem(Seconds{61}).remedy, "Wait for 2 minutes, then try again.");
    using Kind = ConfigurationError::Kind;
    expectWhole(accountNotSavedProblem({.error = {.kind = Kind::invalidConfiguration}, .message = "Text."}));

    const std::map<std::int32_t, std::string_view> secretStores{
        {keychainStatus::notAvailable, "TIDEWELL_KEYCHAIN=file"},
        {keychainStatus::interactionNotAllowed, "Unlock"},
        {keychainStatus::userCanceled, "Unlock"},
        {keychainStatus::invalidStore, "yours alone"},
        {keychainStatus::io, "Make room"},
        {keychainStatus::decode, "anew"}};
    for (const auto& [status, help] : secretStores) {
        const auto problem = accountNotSavedProblem(
            {.error = {.kind = Kind::keychainError, .status = status}, .message = "Text."});
        expectWhole(problem);
        EXPECT_TRUE(problem.remedy.contains(help)) << problem.remedy;
    }
}

/// The words of a cause that only some failures have.
void expectMentions(const GlucoseAPIError& error, std::string_view username, GlucoseProvider provider,
                    std::initializer_list<std::string_view> wanted,
                    std::initializer_list<std::string_view> unwanted = {})
{
    const std::string all = everything(signInProblem(provider, error, username));
    for (const auto word : wanted)
        EXPECT_TRUE(all.contains(word)) << word << " in:\n" << all;
    for (const auto word : unwanted)
        EXPECT_FALSE(all.contains(word)) << word << " in:\n" << all;
}

TEST(SignInAdvice, theCausesAreThoseOfTheFailure)
{
    using Libre = LibreLinkUpError::Kind;
    const auto libre = [](Libre kind) {
        return glucoseAPIError(LibreLinkUpError{.kind = kind, .wait = Seconds{301}});
    };
    const auto offline = [](HttpError::Kind kind) {
        return glucoseAPIError(
            DexcomError{.kind = DexcomError::Kind::transport, .network = HttpError{.kind = kind}});
    };
    const GlucoseAPIError wrong{.kind = GlucoseAPIError::Kind::credentialsRefused};

    expectMentions(wrong, "ada", dexcom, {"region", "follower", "mistyped"}, {"phone number", "e-mail"});
    expectMentions(wrong, "ada", libreLinkUp, {"e-mail address of", "follower", "terms"}, {"phone number"});
    expectMentions(wrong, "ada@example.org", libreLinkUp, {"mistyped"}, {"The user name is the e-mail"});
    expectMentions(libre(Libre::termsRequired), "", libreLinkUp, {"terms", "Sign out"});
    expectMentions(libre(Libre::noConnections), "", libreLinkUp, {"invited", "Nobody shares"});
    expectMentions(libre(Libre::clientUpdateRequired), "", libreLinkUp, {"newest Tidewell"}, {"overloaded"});
    expectMentions(libre(Libre::rateLimited), "", libreLinkUp, {"6 minutes", "locked"});
    expectMentions({.kind = GlucoseAPIError::Kind::rateLimited}, "", dexcom, {"1 minute,"});
    expectMentions({.kind = GlucoseAPIError::Kind::accountLocked}, "", dexcom, {"locked", "Wait"});
    expectMentions(libre(Libre::invalidRegion), "", libreLinkUp, {"another region"});
    expectMentions({.kind = GlucoseAPIError::Kind::noReadings}, "", dexcom,
                   {"Sharing is switched off", "follower"});
    expectMentions(offline(HttpError::Kind::tls), "", dexcom, {"clock"});
    expectMentions(offline(HttpError::Kind::redirectRefused), "", dexcom, {"hotels"});
    expectMentions(offline(HttpError::Kind::cannotResolve), "", dexcom, {"not connected"}, {"password"});
}

TEST(SignInAdvice, aPhoneNumberWithoutItsCountryIsTheFirstCause)
{
    const GlucoseAPIError wrong{.kind = GlucoseAPIError::Kind::credentialsRefused};
    const auto firstCause = [&](std::string_view username) {
        return signInProblem(dexcom, wrong, username).causes.front();
    };
    for (const auto username : {"01701234567", "(555) 123-4567", "555.123.4567"})
        EXPECT_TRUE(firstCause(username).contains("country code")) << username;
    for (const auto username : {"+491701234567", "ada2005", "12345", "", "ada@example.org"})
        EXPECT_FALSE(firstCause(username).contains("country code")) << username;
}

}  // namespace
}  // namespace tidewell
