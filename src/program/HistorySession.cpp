#include "program/HistorySession.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "program/HistoryStorage.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

constexpr std::size_t mostListedDays = 10;

ExitCode codeOf(GlucoseHistoryError error)
{
    switch (error) {
    case GlucoseHistoryError::invalidRetention: return ExitCode::usage;
    case GlucoseHistoryError::accountRequired: return ExitCode::signInNeeded;
    case GlucoseHistoryError::unavailableKey:
    case GlucoseHistoryError::keychainFailure: return ExitCode::keyring;
    case GlucoseHistoryError::invalidConfiguration:
    case GlucoseHistoryError::unreadableHistory:
    case GlucoseHistoryError::storageFailure:
    case GlucoseHistoryError::deletionIncomplete: return ExitCode::failure;
    }
    std::unreachable();
}

/// The store mends what it deletes, and never what it would have to guess.
constexpr std::string_view wayOutOfDamage =
    "\"tidewell history delete\" deletes what is saved and begins anew; where that fails too, \"tidewell "
    "history delete --all\" does so for every account.";

bool hasDayFiles(const std::filesystem::path& folder)
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry{folder, error}, end; !error && entry != end;
         entry.increment(error))
        if (historyDayOfFileName(entry->path().filename().string()))
            return true;
    return false;
}

/// The first letter of what was typed, in lower case; 'n' when nothing was.
char typedLetter()
{
    std::array<char, 64> line{};
    ssize_t count = -1;
    do {
        count = ::read(STDIN_FILENO, line.data(), line.size());
    } while (count < 0 && errno == EINTR);
    return count <= 0 || line[0] == '\n' ? 'n' : static_cast<char>(line[0] | 0x20);
}

}  // namespace

std::expected<std::unique_ptr<HistorySession>, CommandError> HistorySession::make()
{
    auto session = makeForEveryAccount();
    if (session && (*session)->missingAccount())
        return std::unexpected(*(*session)->missingAccount());
    return session;
}

std::expected<std::unique_ptr<HistorySession>, CommandError> HistorySession::makeForEveryAccount()
{
    auto session = CommandSession::make();
    if (!session)
        return std::unexpected(session.error());
    std::unique_ptr<HistorySession> made{new HistorySession(std::move(*session))};
    made->attachAccount();
    return made;
}

void HistorySession::attachAccount()
{
    // The account says which history it is; its password is not needed.
    const auto loaded = session_->run(session_->configuration().load());
    if (!loaded && loaded.error().error.kind == ConfigurationError::Kind::invalidConfiguration) {
        missingAccount_ = {ExitCode::failure, loaded.error().message};
        return;
    }
    const auto& account = session_->configuration().account();
    if (!account) {
        missingAccount_ = commandError(GlucoseHistoryError::accountRequired);
        return;
    }
    const auto scope = HistoryScopeID::of(*account);
    if (!scope) {
        missingAccount_ = {
            ExitCode::signInNeeded,
            "History is saved for one person, and nobody is selected. Select one with \"tidewell account "
            "set --patient ID\"; \"tidewell account connections\" lists the ids."};
        return;
    }
    provider_ = account->provider;
    const auto attached = store_->attach(scope);
    status_ = attached ? *attached : store_->status();
    if (!attached)
        status_.problem = attached.error();
}

HistorySession::HistorySession(std::unique_ptr<CommandSession> session)
    : session_{std::move(session)},
      root_{historyRoot(session_->environment().folders)},
      store_{makeHistoryStore(session_->environment())}
{
}

std::string HistorySession::keyPlace() const
{
    return hasKeyring() ? "in your keyring" : "in the file " + session_->environment().keychainFile.string();
}

std::size_t HistorySession::otherHistories() const
{
    std::size_t others = hasDayFiles(root_) && !status_.scope ? 1 : 0;  // Of an older version, and nobody's.
    std::error_code error;
    for (std::filesystem::directory_iterator entry{root_ / "accounts", error}, end; !error && entry != end;
         entry.increment(error)) {
        const auto scope = HistoryScopeID::parse(entry->path().filename().string());
        if (scope && scope != status_.scope && hasDayFiles(entry->path()))
            ++others;
    }
    return others;
}

CommandError commandError(GlucoseHistoryError error, std::string_view then)
{
    std::string message{description(error)};
    if (!then.empty())
        message.append(" ").append(then);
    if (error == GlucoseHistoryError::invalidConfiguration)
        message.append(" ").append(wayOutOfDamage);
    return {codeOf(error), std::move(message)};
}

std::expected<bool, CommandError> askedForYes(std::string_view question, std::string_view option)
{
    if (::isatty(STDIN_FILENO) != 1)
        return std::unexpected(CommandError{
            ExitCode::usage, fmt::format("Nothing was changed: there is no terminal to ask on. {} says yes "
                                         "beforehand.",
                                         option)});
    (void)std::fflush(stdout);
    fmt::print(stderr, "{} [y/N] ", question);
    return typedLetter() == 'y';
}

std::string counted(std::size_t count, std::string_view one)
{
    return fmt::format("{} {}{}", count, one, count == 1 ? "" : "s");
}

std::string dayList(const std::vector<std::int64_t>& days)
{
    std::string list;
    for (std::size_t i = 0; i < std::min(days.size(), mostListedDays); ++i)
        list += fmt::format("{}{}", list.empty() ? "" : ", ",
                            isoText(dateFromUnix(static_cast<double>(days[i]) * 86400)).substr(0, 10));
    if (days.size() > mostListedDays)
        list += fmt::format(" and {} more", days.size() - mostListedDays);
    return list;
}

}  // namespace tidewell
