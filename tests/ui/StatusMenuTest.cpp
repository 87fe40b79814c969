#include "ui/StatusMenu.h"

#include <gtest/gtest.h>
#include <QMenu>

namespace tidewell {
namespace {

std::vector<MenuItem> items(bool snoozed)
{
    const MenuItem separator{.kind = MenuItem::Kind::separator, .enabled = false};
    const MenuItem quit{.title = "Quit", .command = MenuCommand::quit};
    if (snoozed)
        return {{.kind = MenuItem::Kind::text, .title = "Low alerts snoozed until 14:30", .enabled = false},
                {.title = "Resume alerts now", .command = MenuCommand::resumeAlerts},
                separator,
                quit};
    return {{.title = "Snooze alerts (30 min)", .command = MenuCommand::snooze30Minutes},
            {.title = "Snooze alerts (2 hours)", .command = MenuCommand::snooze2Hours},
            separator,
            quit};
}

TEST(StatusMenu, staysOpenAndKeepsTheChosenLineWhenItsLinesChange)
{
    StatusMenu menu{[](MenuCommand) {}};
    menu.setItems(items(false));
    menu.popUp({10, 10});
    ASSERT_TRUE(menu.menu()->isVisible());
    menu.menu()->setActiveAction(menu.menu()->actions().back());
    for (const bool snoozed : {true, false}) {
        menu.setItems(items(snoozed));
        EXPECT_TRUE(menu.menu()->isVisible());
        ASSERT_EQ(menu.menu()->actions().size(), 4);
        EXPECT_EQ(menu.menu()->actions()[1]->text(),
                  snoozed ? "Resume alerts now" : "Snooze alerts (2 hours)");
        ASSERT_TRUE(menu.menu()->activeAction());
        EXPECT_EQ(menu.menu()->activeAction()->text(), "Quit");
    }
    menu.menu()->close();
}

}  // namespace
}  // namespace tidewell
