#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

#include <QByteArrayView>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "program/AccountCheck.h"
#include "program/CommandSession.h"
#include "program/Commands.h"

namespace tidewell {

namespace {

constexpr std::size_t longestPassword = 4096;
/// An e-mail address has 254 bytes at most; this is what may be meant as a user name at all.
constexpr std::size_t longestUsername = 512;

/// Text as a person types it: UTF-8 without control characters. What is not was meant otherwise, and would
/// be refused by the service, or worse, by a terminal.
bool isTyped(std::string_view text)
{
    return QByteArrayView{text.data(), static_cast<qsizetype>(text.size())}.isValidUtf8() &&
           std::ranges::none_of(text, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; });
}

/// Switches the terminal's echo off while a password is typed, and on again when that is broken off.
class SilentTerminal {
public:
    SilentTerminal()
    {
        if (::tcgetattr(STDIN_FILENO, &before_) != 0)
            return;
        active_ = true;
        struct sigaction restore{};
        restore.sa_handler = [](int signal) {
            (void)::tcsetattr(STDIN_FILENO, TCSANOW, &before_);
            (void)::raise(signal);
        };
        // The default is in force again, for the same signal too, when the handler raises it.
        restore.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
        for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
            struct sigaction present{};
            if (::sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_DFL)
                (void)::sigaction(signal, &restore, nullptr);
        }
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        (void)::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
        fmt::print(stderr, "Password: ");
    }
    ~SilentTerminal()
    {
        if (!active_)
            return;
        (void)::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        fmt::print(stderr, "\n");
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

private:
    static inline termios before_{};  ///< For the signal handler too.
    bool active_ = false;
};

/// The first line of standard input, without its end.
std::expected<SecretText, CommandError> readPassword()
{
    const SilentTerminal silent;
    std::array<char, longestPassword + 2> buffer;
    std::size_t size = 0;
    std::size_t end = 0;
    while (size < buffer.size()) {
        const auto count = ::read(STDIN_FILENO, buffer.data() + size, buffer.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        size += static_cast<std::size_t>(count);
        if (std::find(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size), '\n') !=
            buffer.begin() + static_cast<std::ptrdiff_t>(size))
            break;
    }
    while (end < size && buffer[end] != '\n')
        ++end;
    if (end > 0 && buffer[end - 1] == '\r')
        --end;
    SecretText password{std::string_view{buffer.data(), end}};
    wipe(buffer.data(), buffer.size());
    if (password.empty())
        return std::unexpected(CommandError{ExitCode::usage, "There is no password on standard input."});
    if (end > longestPassword)
        return std::unexpected(CommandError{ExitCode::usage, "The password is longer than 4096 bytes."});
    if (!isTyped(password.reveal()))
        return std::unexpected(
            CommandError{ExitCode::usage, "The password holds control characters, or is not text in UTF-8."});
    return password;
}

CommandError commandError(const ConfigurationProblem& problem)
{
    const bool keyring = problem.error.kind == ConfigurationError::Kind::keychainError;
    return {keyring ? ExitCode::keyring : ExitCode::failure, problem.message};
}

/// A text as a sentence: some of the service's texts bring their full stop, some do not.
std::string sentence(std::string text) { return text.ends_with('.') ? text : text + "."; }

/// Loads the stored account. A missing password is not this function's business.
std::expected<std::unique_ptr<CommandSession>, CommandError> sessionWithConfiguration()
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

const CommandError noAccount{ExitCode::signInNeeded,
                             "There is no account. Sign in with \"tidewell account set\"."};

}  // namespace

ExitCode runAccountSet(const AccountSetOptions& options)
{
    const auto provider = glucoseProvider(options.provider);
    if (!provider)
        return report({ExitCode::usage, "The provider must be \"dexcom\" or \"libreLinkUp\"."});
    if (*provider == GlucoseProvider::libreLinkUp)
        return report({ExitCode::usage, "This version of Tidewell reads Dexcom Share accounts only."});
    if (options.patientID)
        return report({ExitCode::usage, "A Dexcom Share account has no --patient."});
    const auto first = options.username.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return report({ExitCode::usage, "The user name is empty."});
    const auto username =
        options.username.substr(first, options.username.find_last_not_of(" \t\r\n") - first + 1);
    if (username.size() > longestUsername)
        return report({ExitCode::usage, "The user name is longer than 512 bytes."});
    if (!isTyped(username))
        return report({ExitCode::usage, "The user name holds control characters, or is not text in UTF-8."});

    // Before the password is asked for: whatever can be refused without it.
    auto session = CommandSession::make();
    if (!session)
        return report(session.error());
    if (!(*session)->environment().endpoints.dexcomRegion(options.region)) {
        std::string known;
        for (const auto& [code, endpoint] : (*session)->environment().endpoints.dexcom)
            known += (known.empty() ? "" : ", ") + code;
        return report({ExitCode::usage, "Invalid region. Dexcom Share has these: " + known + "."});
    }
    auto password = readPassword();
    if (!password)
        return report(password.error());

    GlucoseAccountConfiguration account{
        .provider = *provider,
        .username = username,
        .password = std::move(*password),
        .region = options.region,
    };
    const auto check =
        (*session)->run(checkAccount((*session)->engine().executor(), (*session)->makeAPIClient(account)));
    if (check.result == AccountCheck::Result::refused)
        return report({ExitCode::signInNeeded,
                       "The sign-in was refused: " + sentence(check.error->text) +
                           " Check the user name, the password and the region. Nothing was stored."});

    (void)(*session)->run((*session)->configuration().load());
    if (const auto saved = (*session)->run((*session)->configuration().saveAccount(std::move(account)));
        !saved)
        return report(commandError(saved.error()));
    (*session)->defaults().set(onboardingCompletedKey, true);
    (*session)->defaults().set(accountConfirmedAtKey, (*session)->clock().now());
    const auto error = (*session)->defaults().save();
    (*session)->announceChange();
    if (error)
        return report({ExitCode::failure, "The account is stored, but " +
                                              (*session)->environment().defaults().string() +
                                              " cannot be written: " + error.message()});
    if (check.result == AccountCheck::Result::unreachable)
        fmt::print("The account is stored. It could not be checked: {}\n", sentence(check.error->text));
    else if (check.error)
        fmt::print("Signed in. The account is stored. {}\n", sentence(check.error->text));
    else
        fmt::print("Signed in. The account is stored.\n");
    return ExitCode::good;
}

ExitCode runAccountShow()
{
    const auto session = sessionWithConfiguration();
    if (!session)
        return report(session.error());
    const auto& configuration = (*session)->configuration();
    if (!configuration.account())
        return report(noAccount);
    const auto& account = *configuration.account();
    fmt::print("provider  {}\nusername  {}\nregion    {}\n", rawValue(account.provider), account.username,
               account.region);
    if (account.patientID)
        fmt::print("patient   {}\n", account.patientName.value_or(*account.patientID));
    fmt::print("password  {}\n", account.password.empty() ? "not available" : "stored");
    if (account.password.empty())
        return report({ExitCode::keyring, configuration.problem()
                                              ? configuration.problem()->message
                                              : "The password is not in the keyring. Sign in again."});
    return ExitCode::good;
}

ExitCode runAccountConnections()
{
    const auto session = sessionWithConfiguration();
    if (!session)
        return report(session.error());
    if (!(*session)->configuration().account())
        return report(noAccount);
    fmt::print("A Dexcom Share account has one person, its own. There is nothing to select.\n");
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
