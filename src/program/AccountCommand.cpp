#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "app/AccountCheck.h"
#include "program/CommandSession.h"
#include "program/Commands.h"
#include "program/PasswordInput.h"
#include "ui/PersonName.h"

namespace tidewell {

namespace {

/// An e-mail address has 254 bytes at most; this is what may be meant as a user name at all.
constexpr std::size_t longestUsername = 512;
constexpr std::size_t longestPatientID = 512;

using Session = std::unique_ptr<CommandSession>;

CommandError commandError(const ConfigurationProblem& problem)
{
    const bool keyring = problem.error.kind == ConfigurationError::Kind::keychainError;
    return {keyring ? ExitCode::keyring : ExitCode::failure, problem.message};
}

/// A text as a sentence: some of the service's texts bring their full stop, some do not.
std::string sentence(std::string text) { return text.ends_with('.') ? text : text + "."; }

/// Loads the stored account. A missing password is not this function's business.
std::expected<Session, CommandError> sessionWithConfiguration()
{
    auto session = CommandSession::make();
    if (!session)
        return std::unexpected(session.error());
    if (const auto loaded = (*session)->run((*session)->configuration().load()); !loaded) {
        if (loaded.error().error.kind == ConfigurationError::Kind::invalidConfiguration)
            return std::unexpected(commandError(loaded.error()));
    }
    return session;
}

/// The stored account with its password, for a command that signs in with it.
std::expected<GlucoseAccountConfiguration, CommandError> storedAccount(CommandSession& session)
{
    const auto& configuration = session.configuration();
    if (!configuration.account())
        return std::unexpected(CommandError{ExitCode::signInNeeded,
                                            "There is no account. Sign in with \"tidewell account set\"."});
    if (configuration.account()->password.empty())
        return std::unexpected(
            CommandError{ExitCode::keyring, configuration.problem()
                                                ? configuration.problem()->message
                                                : "The password is not in the keyring. Sign in again."});
    return *configuration.account();
}

/// A command that selects a person, to be copied into a shell: the id is the service's and may hold anything
/// that can be printed.
std::string selectCommand(std::string_view patientID)
{
    constexpr std::string_view harmless =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.:@";
    if (patientID.find_first_not_of(harmless) == std::string_view::npos && !patientID.starts_with('-'))
        return fmt::format("tidewell account set --patient {}", patientID);
    std::string quoted;
    for (const char c : patientID)
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return fmt::format("tidewell account set --patient='{}'", quoted);
}

std::string nameOf(const LibreConnection& person)
{
    return personName(person.displayName(), person.patientId).toStdString();
}

/// "ID  NAME" for each person, and "  (selected)" behind that one.
std::string peopleLines(const LibreConnections& connections, const std::optional<std::string>& selected = {})
{
    std::string lines;
    for (const auto& person : connections.people)
        lines += fmt::format("{}  {}{}\n", person.patientId, nameOf(person),
                             person.patientId == selected ? "  (selected)" : "");
    return lines;
}

/// How a person is selected, as one line.
std::string selectionHint(const LibreConnections& connections)
{
    if (connections.people.size() == 1)
        return fmt::format(
            "One person shares with this account: {}. Nobody is selected. To select that one:\n{}\n",
            nameOf(connections.people.front()), selectCommand(connections.people.front().patientId));
    return fmt::format("Nobody is selected. To select the first of them, for example:\n{}\n",
                       selectCommand(connections.people.front().patientId));
}

/// Why a check of the account ends the command; `then` says what did not happen, or what to do. Not for an
/// account whose service is unreachable.
CommandError refusal(GlucoseProvider provider, const GlucoseAPIError& error, std::string_view then)
{
    std::string message;
    if (accountCheckResult(error) == AccountCheck::Result::actionRequired)
        message = "The account needs attention: " + sentence(error.text);
    else
        message = fmt::format("The sign-in was refused: {} {}", sentence(error.text),
                              provider == GlucoseProvider::dexcom
                                  ? "Check the user name, the password and the region."
                                  : "Use the follower's e-mail address and password.");
    if (!then.empty())
        message += fmt::format(" {}", then);
    return {ExitCode::signInNeeded, std::move(message)};
}

bool isUnreachable(const GlucoseAPIError& error)
{
    return accountCheckResult(error) == AccountCheck::Result::unreachable;
}

/// Stores the account and tells those who follow it, also when it is the one that they follow already.
std::expected<void, CommandError> store(CommandSession& session, GlucoseAccountConfiguration account)
{
    if (const auto saved = session.run(session.configuration().saveAccount(std::move(account))); !saved)
        return std::unexpected(commandError(saved.error()));
    session.defaults().set(onboardingCompletedKey, true);
    session.defaults().set(accountConfirmedAtKey, session.clock().now());
    const auto error = session.defaults().save();
    session.announceChange();
    if (error)
        return std::unexpected(CommandError{ExitCode::failure, "The account is stored, but " +
                                                                   session.environment().defaults().string() +
                                                                   " cannot be written: " + error.message()});
    return {};
}

/// Gives the account the person with that id, out of those who share with it.
std::expected<void, CommandError> selectPerson(GlucoseAccountConfiguration& account,
                                               const std::string& patientID,
                                               const LibreConnections& connections)
{
    const auto person = std::ranges::find(connections.people, patientID, &LibreConnection::patientId);
    if (person == connections.people.end()) {
        if (connections.people.empty())
            return std::unexpected(
                CommandError{ExitCode::usage, noConnectionsText() + " Nothing was changed."});
        return std::unexpected(CommandError{
            ExitCode::usage,
            "Nobody with the id \"" + patientID +
                "\" shares with this account. Nothing was changed. These people share with it:"});
    }
    account.patientID = person->patientId;
    account.patientName.reset();
    if (std::string name = person->displayName(); !name.empty())
        account.patientName = std::move(name);
    return {};
}

ExitCode setDexcom(CommandSession& session, GlucoseAccountConfiguration account)
{
    const auto client = makeServiceClient(session.clientParts(), account);
    const auto check = session.run(checkAccount(session.engine().executor(), client));
    if (check.result == AccountCheck::Result::refused || check.result == AccountCheck::Result::actionRequired)
        return report(refusal(account.provider, *check.error, "Nothing was stored."));
    if (const auto stored = store(session, std::move(account)); !stored)
        return report(stored.error());
    if (check.result == AccountCheck::Result::unreachable)
        fmt::print("The account is stored. It could not be checked: {}\n", sentence(check.error->text));
    else if (check.error)
        fmt::print("Signed in. The account is stored. {}\n", sentence(check.error->text));
    else
        fmt::print("Signed in. The account is stored.\n");
    return ExitCode::good;
}

/// Stores an account that lives in the region `home`, and says so when that is not the one it was given.
std::expected<void, CommandError> storeAtHome(CommandSession& session, GlucoseAccountConfiguration account,
                                              const std::string& home)
{
    const std::string given = account.region;
    if (!home.empty())
        account.region = home;
    const bool moved = account.region != given;
    if (const auto stored = store(session, std::move(account)); !stored)
        return stored;
    if (moved)
        fmt::print(stderr, "The account lives in the region \"{}\", not in \"{}\"; that is what is stored.\n",
                   home, given);
    return {};
}

/// The same for an account with the person that it follows.
ExitCode storeFollowing(CommandSession& session, GlucoseAccountConfiguration account, const std::string& home)
{
    const auto name = personName(account.patientName.value_or(""), *account.patientID).toStdString();
    if (const auto stored = storeAtHome(session, std::move(account), home); !stored)
        return report(stored.error());
    fmt::print("Signed in. The account is stored. It follows {}.\n", name);
    return ExitCode::good;
}

ExitCode setLibreLinkUp(CommandSession& session, GlucoseAccountConfiguration account,
                        const std::optional<std::string>& patientID)
{
    const auto client = makeLibreLinkUpClient(session.clientParts(), account);
    const auto connections = session.run(askConnections(session.engine().executor(), client));
    if (!connections) {
        if (!isUnreachable(connections.error()))
            return report(refusal(account.provider, connections.error(), "Nothing was stored."));
        const auto why = sentence(connections.error().text);
        if (patientID)
            return report({ExitCode::failure, "Who shares with the account could not be asked: " + why +
                                                  " Nothing was stored."});
        if (const auto stored = store(session, std::move(account)); !stored)
            return report(stored.error());
        fmt::print(
            "The account is stored. It could not be checked: {}\n"
            "Nobody is selected. To see who shares with it:\ntidewell account connections\n",
            why);
        return ExitCode::good;
    }

    if (patientID) {
        if (const auto selected = selectPerson(account, *patientID, *connections); !selected) {
            (void)report(selected.error());
            fmt::print(stderr, "{}", peopleLines(*connections));
            return selected.error().code;
        }
    }
    const auto& former = session.configuration().account();
    if (!patientID && former && former->provider == account.provider &&
        former->username == account.username && former->patientID)
        (void)selectPerson(account, *former->patientID, *connections);  // Who signs in again means the same.
    if (account.patientID)
        return storeFollowing(session, std::move(account), connections->region);

    if (const auto stored = storeAtHome(session, std::move(account), connections->region); !stored)
        return report(stored.error());
    if (connections->people.empty())
        fmt::print(
            "Signed in. The account is stored. {}\nWhen that is done, see who shares with it:\n"
            "tidewell account connections\n",
            noConnectionsText());
    else
        fmt::print("Signed in. The account is stored. These people share with it:\n{}\n{}",
                   peopleLines(*connections), selectionHint(*connections));
    return ExitCode::good;
}

/// "--patient ID" alone: another person of the stored account.
ExitCode changePerson(const std::string& patientID)
{
    const auto session = sessionWithConfiguration();
    if (!session)
        return report(session.error());
    auto account = storedAccount(**session);
    if (!account)
        return report(account.error());
    if (account->provider != GlucoseProvider::libreLinkUp)
        return report(
            {ExitCode::usage, "The stored account is a Dexcom Share account, which has no --patient."});
    const auto client = makeLibreLinkUpClient((*session)->clientParts(), *account);
    const auto connections = (*session)->run(askConnections((*session)->engine().executor(), client));
    if (!connections) {
        if (!isUnreachable(connections.error()))
            return report(refusal(account->provider, connections.error(), "Nothing was changed."));
        return report({ExitCode::failure, "Who shares with the account could not be asked: " +
                                              sentence(connections.error().text) + " Nothing was changed."});
    }
    if (const auto selected = selectPerson(*account, patientID, *connections); !selected) {
        (void)report(selected.error());
        fmt::print(stderr, "{}", peopleLines(*connections));
        return selected.error().code;
    }
    return storeFollowing(**session, *std::move(account), connections->region);
}

/// The regions of a provider that the endpoints in force name.
std::vector<std::string> regionCodes(const ServiceEndpoints& endpoints, GlucoseProvider provider)
{
    std::vector<std::string> codes;
    if (provider == GlucoseProvider::dexcom)
        for (const auto& [code, endpoint] : endpoints.dexcom)
            codes.push_back(code);
    else
        for (const auto& [code, base] : endpoints.libreLinkUp)
            codes.push_back(code);
    return codes;
}

/// What `account set` was not given although it signs in with it, as "--username, --region".
std::string missingOptions(const AccountSetOptions& options)
{
    std::string missing;
    const auto need = [&missing](bool given, std::string_view name) {
        if (!given)
            missing += fmt::format("{}{}", missing.empty() ? "" : ", ", name);
    };
    need(options.provider.has_value(), "--provider");
    need(options.username.has_value(), "--username");
    need(options.region.has_value(), "--region");
    need(options.passwordFromInput, "--password-stdin");
    return missing;
}

/// The account that the options describe, but for its password. What is wrong with them is a usage error.
std::expected<GlucoseAccountConfiguration, CommandError> describedAccount(const AccountSetOptions& options)
{
    const auto mistake = [](std::string message) {
        return std::unexpected(CommandError{ExitCode::usage, std::move(message)});
    };
    if (const auto missing = missingOptions(options); !missing.empty())
        return mistake("These options are missing: " + missing +
                       ". Only --patient can stand alone: it selects another person of the stored account.");
    const auto provider = glucoseProvider(*options.provider);
    if (!provider)
        return mistake("The provider must be \"dexcom\" or \"libreLinkUp\".");
    if (options.patientID && *provider == GlucoseProvider::dexcom)
        return mistake("A Dexcom Share account has no --patient.");
    const auto first = options.username->find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return mistake("The user name is empty.");
    auto username =
        options.username->substr(first, options.username->find_last_not_of(" \t\r\n") - first + 1);
    if (username.size() > longestUsername)
        return mistake("The user name is longer than 512 bytes.");
    if (!isTyped(username))
        return mistake("The user name holds control characters, or is not text in UTF-8.");
    return GlucoseAccountConfiguration{
        .provider = *provider,
        .username = std::move(username),
        .region = *provider == GlucoseProvider::libreLinkUp ? lowerCased(*options.region) : *options.region};
}

}  // namespace

ExitCode runAccountSet(const AccountSetOptions& options)
{
    if (options.patientID && (options.patientID->empty() || options.patientID->size() > longestPatientID ||
                              !isTyped(*options.patientID)))
        return report(
            {ExitCode::usage, "--patient must be an id that \"tidewell account connections\" lists."});
    if (options.patientID && !options.provider && !options.username && !options.region &&
        !options.passwordFromInput)
        return changePerson(*options.patientID);

    // Before the password is asked for: whatever can be refused without it.
    auto account = describedAccount(options);
    if (!account)
        return report(account.error());
    auto session = CommandSession::make();
    if (!session)
        return report(session.error());
    const auto& endpoints = (*session)->environment().endpoints;
    const bool dexcom = account->provider == GlucoseProvider::dexcom;
    if (dexcom ? !endpoints.dexcomRegion(account->region) : !endpoints.libreLinkUp.contains(account->region))
        return report(
            {ExitCode::usage,
             fmt::format("Invalid region. {} has these: {}.", dexcom ? "Dexcom Share" : "LibreLinkUp",
                         fmt::join(regionCodes(endpoints, account->provider), ", "))});
    auto password = readPassword();
    if (!password)
        return report(password.error());
    account->password = *std::move(password);

    // A document that cannot be read is no hindrance: the save sets it aside.
    (void)(*session)->run((*session)->configuration().load());
    return dexcom ? setDexcom(**session, *std::move(account))
                  : setLibreLinkUp(**session, *std::move(account), options.patientID);
}

ExitCode runAccountShow()
{
    const auto session = sessionWithConfiguration();
    if (!session)
        return report(session.error());
    const auto stored = storedAccount(**session);
    const auto& account = (*session)->configuration().account();
    if (!account)
        return report(stored.error());
    fmt::print("provider  {}\nusername  {}\nregion    {}\n", rawValue(account->provider), account->username,
               account->region);
    if (account->patientID)
        fmt::print("patient   {}\nname      {}\n", *account->patientID,
                   personName(account->patientName.value_or(""), *account->patientID).toStdString());
    else if (account->provider == GlucoseProvider::libreLinkUp)
        fmt::print("patient   not selected\n");
    fmt::print("password  {}\n", stored ? "stored" : "not available");
    return stored ? ExitCode::good : report(stored.error());
}

ExitCode runAccountConnections()
{
    const auto session = sessionWithConfiguration();
    if (!session)
        return report(session.error());
    const auto account = storedAccount(**session);
    const auto& stored = (*session)->configuration().account();
    if (stored && stored->provider == GlucoseProvider::dexcom) {
        fmt::print("A Dexcom Share account has one person, its own. There is nothing to select.\n");
        return ExitCode::good;
    }
    if (!account)
        return report(account.error());
    const auto client = makeLibreLinkUpClient((*session)->clientParts(), *account);
    const auto connections = (*session)->run(askConnections((*session)->engine().executor(), client));
    if (!connections) {
        if (!isUnreachable(connections.error()))
            return report(refusal(account->provider, connections.error(), ""));
        return report({ExitCode::failure, "Who shares with the account could not be asked: " +
                                              sentence(connections.error().text)});
    }
    fmt::print("{}", peopleLines(*connections, account->patientID));
    (void)std::fflush(stdout);  // The notes come after the list in a terminal and in a file alike.
    const bool there = std::ranges::find(connections->people, account->patientID,
                                         &LibreConnection::patientId) != connections->people.end();
    if (connections->people.empty()) {
        fmt::print(stderr, "{}\n", noConnectionsText());
    } else if (!there) {
        if (account->patientID)
            fmt::print(stderr, "The selected person, {}, no longer shares with this account.\n",
                       personName(account->patientName.value_or(""), *account->patientID).toStdString());
        fmt::print(stderr, "{}", selectionHint(*connections));
    }
    return ExitCode::good;
}

ExitCode runAccountReconnect()
{
    const auto session = sessionWithConfiguration();
    if (!session)
        return report(session.error());
    auto account = storedAccount(**session);
    if (!account)
        return report(account.error());
    const auto client = makeServiceClient((*session)->clientParts(), *account);
    const auto check = (*session)->run(checkAccount((*session)->engine().executor(), client));
    if (check.result == AccountCheck::Result::refused ||
        check.result == AccountCheck::Result::actionRequired) {
        using enum LibreLinkUpError::Kind;
        const bool anotherPerson =
            std::ranges::any_of(std::array{connectionSelectionRequired, connectionUnavailable},
                                [&](auto kind) { return check.error->text == description({.kind = kind}); });
        return report(refusal(account->provider, *check.error,
                              anotherPerson ? "\"tidewell account connections\" lists them." : ""));
    }
    account->password = {};  // Stays as it is stored.
    if (const auto stored = store(**session, *std::move(account)); !stored)
        return report(stored.error());
    if (check.result == AccountCheck::Result::unreachable)
        fmt::print("The account could not be checked: {} A running Tidewell tries again.\n",
                   sentence(check.error->text));
    else if (check.error)
        fmt::print("Signed in. A running Tidewell reconnects. {}\n", sentence(check.error->text));
    else
        fmt::print("Signed in. A running Tidewell reconnects.\n");
    return ExitCode::good;
}

ExitCode runAccountClear()
{
    const auto session = sessionWithConfiguration();
    if (!session)
        return report(session.error());
    if (!(*session)->configuration().account()) {
        fmt::print("There was no account.\n");
        return ExitCode::good;
    }
    if (const auto saved = (*session)->run((*session)->configuration().saveAccount(std::nullopt)); !saved)
        return report(commandError(saved.error()));
    (*session)->announceChange();
    if (const auto& problem = (*session)->configuration().problem()) {
        fmt::print("The account is removed. The settings stay.\n");
        return report(commandError(*problem));
    }
    fmt::print("The account and its password are removed. The settings stay.\n");
    return ExitCode::good;
}

}  // namespace tidewell
