#include "platform/linux/NotificationSettings.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace tidewell {

namespace {

/// A program that shows a desktop's notification settings.
struct SettingsProgram {
    std::string_view desktop;  ///< As XDG_CURRENT_DESKTOP names it, in small letters.
    std::string_view program;
    std::string_view argument;  ///< May be empty.
};

/// By desktop; the first one that is installed is taken. Desktops that are built on another one name both.
constexpr auto settingsPrograms = std::to_array<SettingsProgram>({
    {"budgie", "budgie-control-center", "notifications"},
    {"budgie", "gnome-control-center", "notifications"},
    {"pantheon", "io.elementary.settings", "notifications"},
    {"pantheon", "io.elementary.switchboard", "notifications"},
    {"x-cinnamon", "cinnamon-settings", "notifications"},
    {"cinnamon", "cinnamon-settings", "notifications"},
    {"unity", "unity-control-center", "notifications"},
    {"gnome", "gnome-control-center", "notifications"},
    {"kde", "systemsettings", "kcm_notifications"},
    {"kde", "systemsettings5", "kcm_notifications"},
    {"kde", "kcmshell6", "kcm_notifications"},
    {"kde", "kcmshell5", "kcm_notifications"},
    {"xfce", "xfce4-notifyd-config", ""},
    {"lxqt", "lxqt-config-notificationd", ""},
    {"mate", "mate-notification-properties", ""},
    {"deepin", "dde-control-center", "notification"},
    {"dde", "dde-control-center", "notification"},
});

struct Command {
    QString program;
    QStringList arguments;
};

std::optional<Command> command()
{
    const QStringList desktops =
        qEnvironmentVariable("XDG_CURRENT_DESKTOP").toLower().split(QLatin1Char{':'}, Qt::SkipEmptyParts);
    for (const auto& [desktop, program, argument] : settingsPrograms) {
        const auto text = [](std::string_view view) {
            return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
        };
        if (!desktops.contains(text(desktop)))
            continue;
        if (const QString found = QStandardPaths::findExecutable(text(program)); !found.isEmpty())
            return Command{found, argument.empty() ? QStringList{} : QStringList{text(argument)}};
    }
    return std::nullopt;
}

}  // namespace

bool canOpenNotificationSettings() { return command().has_value(); }

bool openNotificationSettings()
{
    const auto found = command();
    return found && QProcess::startDetached(found->program, found->arguments);
}

}  // namespace tidewell
