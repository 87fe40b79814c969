#include "platform/linux/NotificationSettings.h"

#include <QProcess>
#include <QStandardPaths>

#include <array>
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

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QStringList command() { return notificationSettingsCommand(qEnvironmentVariable("XDG_CURRENT_DESKTOP")); }

}  // namespace

QStringList notificationSettingsCommand(const QString& currentDesktop)
{
    const QStringList desktops = currentDesktop.toLower().split(QLatin1Char{':'}, Qt::SkipEmptyParts);
    for (const auto& [desktop, program, argument] : settingsPrograms) {
        if (!desktops.contains(text(desktop)))
            continue;
        const QString found = QStandardPaths::findExecutable(text(program));
        if (!found.isEmpty())
            return argument.empty() ? QStringList{found} : QStringList{found, text(argument)};
    }
    return {};
}

bool canOpenNotificationSettings() { return !command().isEmpty(); }

bool openNotificationSettings()
{
    const QStringList words = command();
    return !words.isEmpty() && QProcess::startDetached(words.first(), words.mid(1));
}

}  // namespace tidewell
