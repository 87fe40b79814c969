#include "platform/linux/StatusAreaAdvice.h"

#include <gtest/gtest.h>

#include <string>

namespace tidewell {
namespace {

TEST(StatusAreaAdvice, namesWhatTheDesktopAtHandLacks)
{
    struct Case {
        const char* desktop;
        const char* word;
    };
    for (const Case& c :
         {Case{"GNOME", "AppIndicator"}, Case{"ubuntu:GNOME", "AppIndicator"}, Case{"Budgie:GNOME", "applet"},
          Case{"KDE", "widget"}, Case{"XFCE", "Status Tray"}, Case{"sway", "waybar"}, Case{"i3", "i3bar"},
          Case{"", "tidewell watch"}, Case{":::", "tidewell watch"}, Case{"GNOMEX", "tidewell watch"},
          Case{"\xff\xfe:\x80", "tidewell watch"}})
        EXPECT_TRUE(std::string{statusAreaAdvice(c.desktop)}.contains(c.word)) << c.desktop;
}

}  // namespace
}  // namespace tidewell
