#include "ui/SpokenStatusItem.h"

#include <gtest/gtest.h>
#include <QAccessible>
#include <QApplication>
#include <QWidget>

namespace tidewell {
namespace {

TEST(SpokenStatusItem, isTheFirstChildOfTheApplicationBesideItsWindows)
{
    QWidget window;
    window.show();
    QAccessibleInterface* const application = QAccessible::queryAccessibleInterface(qApp);
    const int windows = application->childCount();
    int presses = 0;
    {
        SpokenStatusItem item{[&presses] { ++presses; }};
        item.present({.accessibilityLabel = "Tidewell",
                      .accessibilityValue = "Current glucose: 120.",
                      .accessibilityHelp = "Shows it."});
        ASSERT_EQ(application->childCount(), windows + 1);
        QAccessibleInterface* const button = application->child(0);
        ASSERT_NE(button, nullptr);
        EXPECT_EQ(button->object(), &item);
        EXPECT_EQ(button->role(), QAccessible::Button);
        EXPECT_EQ(button->text(QAccessible::Name), u"Tidewell");
        EXPECT_EQ(button->text(QAccessible::Description), u"Current glucose: 120. Shows it.");
        EXPECT_EQ(button->parent(), application);
        for (int i = 0; i < application->childCount(); ++i)
            EXPECT_EQ(application->indexOfChild(application->child(i)), i);
        button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        EXPECT_EQ(presses, 1);
    }
    EXPECT_EQ(application->childCount(), windows);
}

}  // namespace
}  // namespace tidewell
