#include "platform/linux/NotificationSettings.h"

#include <gtest/gtest.h>

#include <QString>
#include <cstdlib>
#include <fstream>

#include "testing/TemporaryFolder.h"

namespace tidewell {
namespace {

TEST(NotificationSettings, areOpenedByTheDesktopsOwnProgramWhereItIsInstalled)
{
    struct Case {
        std::string desktop;
        std::vector<std::string> installed;
        std::string command;  ///< Empty: there is none.
    };
    const std::string path = std::getenv("PATH");
    for (const auto& [desktop, installed, command] : std::vector<Case>{
             {"ubuntu:GNOME", {"gnome-control-center"}, "gnome-control-center notifications"},
             {"Budgie:GNOME", {"gnome-control-center"}, "gnome-control-center notifications"},
             {"Budgie:GNOME",
              {"gnome-control-center", "budgie-control-center"},
              "budgie-control-center notifications"},
             {"KDE", {"systemsettings"}, "systemsettings kcm_notifications"},
             {"KDE", {"kcmshell5"}, "kcmshell5 kcm_notifications"},
             {"KDE", {"gnome-control-center"}, ""},
             {"XFCE", {"xfce4-notifyd-config"}, "xfce4-notifyd-config"},
             {"X-Cinnamon", {"cinnamon-settings"}, "cinnamon-settings notifications"},
             {"LXQt", {}, ""},
             {"sway", {"gnome-control-center"}, ""},
             {"", {"gnome-control-center"}, ""},
         }) {
        SCOPED_TRACE(desktop);
        const TemporaryFolder programs;
        for (const std::string& program : installed) {
            std::ofstream{programs / program} << "#!/bin/sh\n";
            std::filesystem::permissions(programs / program, std::filesystem::perms::owner_all);
        }
        ::setenv("PATH", programs.path().c_str(), 1);
        const QString found = notificationSettingsCommand(QString::fromStdString(desktop)).join(QChar{' '});
        EXPECT_EQ(found.toStdString(), command.empty() ? "" : (programs / command).string());
    }
    ::setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace tidewell
