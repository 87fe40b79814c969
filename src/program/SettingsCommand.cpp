#include <fmt/format.h>

#include "config/AppSettingsKeys.h"
#include "platform/linux/AutostartFile.h"
#include "program/CommandSession.h"
#include "program/Commands.h"

namespace tidewell {

namespace {

std::expected<std::unique_ptr<CommandSession>, CommandError> loadedSession()
{
    auto session = CommandSession::make();
    if (!session)
        return std::unexpected(session.error());
    const auto loaded = (*session)->run((*session)->configuration().load());
    // The settings need no password, so a keyring that is away is no reason to fail.
    if (!loaded && loaded.error().error.kind == ConfigurationError::Kind::invalidConfiguration)
        return std::unexpected(CommandError{ExitCode::failure, loaded.error().message});
    return session;
}

CommandError unknownKey(const std::string& key)
{
    std::string known;
    for (const auto name : appSettingKeys())
        known += fmt::format("{}{}", known.empty() ? "" : ", ", name);
    return {ExitCode::usage, fmt::format("There is no setting \"{}\". There are: {}.", key, known)};
}

constexpr std::string_view startAtLoginKey = "startAtLogin";

/// The settings with what the desktop really does at login; what is wrong with that goes to standard error.
AppSettings withLoginItem(AppSettings settings)
{
    const LoginItemStatus status = AutostartFile{AutostartFile::standardPlaces()}.status();
    if (!status.problem.empty())
        fmt::print(stderr, "tidewell: {}\n", status.problem);
    settings.startAtLogin = status.isEnabled;
    return settings;
}

}  // namespace

ExitCode runSettingsGet(const std::optional<std::string>& key)
{
    const auto session = loadedSession();
    if (!session)
        return report(session.error());
    AppSettings settings = (*session)->configuration().settings();
    if (!key || *key == startAtLoginKey)
        settings = withLoginItem(std::move(settings));
    if (key) {
        const auto value = settingText(settings, *key);
        if (!value)
            return report(unknownKey(*key));
        fmt::print("{}\n", *value);
        return ExitCode::good;
    }
    for (const auto name : appSettingKeys())
        fmt::print("{} = {}\n", name, settingText(settings, name).value_or(""));
    return ExitCode::good;
}

ExitCode runSettingsSet(const std::string& key, const std::string& value)
{
    const auto session = loadedSession();
    if (!session)
        return report(session.error());
    auto& configuration = (*session)->configuration();
    if (!settingText(configuration.settings(), key))
        return report(unknownKey(key));
    auto changed = withSetting(configuration.settings(), key, value);
    if (!changed)
        return report({ExitCode::usage, changed.error()});
    if (key == startAtLoginKey) {
        AutostartFile file{AutostartFile::standardPlaces()};
        if (const auto done = file.setEnabled(changed->startAtLogin); !done)
            return report({ExitCode::failure, done.error()});
        changed = withLoginItem(std::move(*changed));
    }
    auto saving = configuration.changeSettings(configuration.settings(), std::move(*changed));
    if (const auto saved = (*session)->run(std::move(saving)); !saved)
        return report({ExitCode::failure, saved.error().message});
    (*session)->announceChange();
    fmt::print("{} = {}\n", key, settingText(configuration.settings(), key).value_or(""));
    return ExitCode::good;
}

}  // namespace tidewell
