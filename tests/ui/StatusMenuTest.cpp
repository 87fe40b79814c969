#include "ui/StatusMenu.h"

#include <gtest/gtest.h>
#include <QAccessible>
#include <QApplication>
#include <QFont>
#include <QKeyEvent>
#include <QPointer>
#include <QScrollArea>
#include <QTimer>
#include <algorithm>

#include "ui/GlucoseGraphView.h"
#include "ui/SpokenWidget.h"

namespace tidewell {
namespace {

constexpr Date now = dateFromUnix(1'772'460'000);

GlucoseGraphContent graphOf(GraphTimeWindow window)
{
    GlucoseGraphContent content{.timeWindow = window, .now = now};
    for (int i = 3; i >= 0; --i)
        content.glucoseHistory.push_back(makeReading(100 + i, "Flat", now - Seconds{300.0 * i + 60},
                                                     Seconds{300}, GlucoseProvider::dexcom));
    return content;
}

class StatusMenuTest : public testing::Test {
protected:
    StatusMenuTest() { show(state); }
    void TearDown() override { QApplication::setFont(font); }

    void show(const StatusBarState& next)
    {
        menu.setItems(statusBarMenu(next, settings, {}, now, TimeZone::utc()));
    }

    /// The open menu's window.
    static QWidget* window()
    {
        for (QWidget* one : QApplication::topLevelWidgets())
            if (one->objectName() == QStringLiteral("statusMenu") && one->isVisible())
                return one;
        return nullptr;
    }

    static GlucoseGraphView& graph()
    {
        return dynamic_cast<GlucoseGraphView&>(*window()->findChild<QWidget*>("glucoseGraphView"));
    }

    /// What a screen reader says of the widget in focus.
    static std::string focused()
    {
        QWidget* const widget = window() ? window()->focusWidget() : nullptr;
        return widget ? widget->accessibleName().toStdString() : "nothing";
    }

    static void press(int key, const QString& text = {})
    {
        QWidget* const target = window()->focusWidget();
        for (const auto type : {QEvent::ShortcutOverride, QEvent::KeyPress}) {
            QKeyEvent event{type, key, Qt::NoModifier, text};
            QApplication::sendEvent(target, &event);
        }
    }

    /// Goes down until this has the focus; false after one time around.
    static bool reach(const std::string& name)
    {
        for (int i = 0; i < 30 && focused() != name; ++i)
            press(Qt::Key_Down);
        return focused() == name;
    }

    static QAccessible::State stateOfFocused()
    {
        return QAccessible::queryAccessibleInterface(window()->focusWidget())->state();
    }

    QFont font = QApplication::font();
    AppSettings settings{};
    StatusBarState state{.lastUpdateAt = now};
    GraphTimeWindow picked = GraphTimeWindow::hours6;
    int pulls = 0;
    std::vector<MenuCommand> commands{};
    StatusMenu menu{{.command =
                         [this](MenuCommand command) {
                             commands.push_back(command);
                             if (const auto one = graphTimeWindow(command))
                                 picked = *one;
                             menu.refreshGraph();
                         },
                     .graph =
                         [this] {
                             ++pulls;
                             return graphOf(picked);
                         }}};
};

TEST_F(StatusMenuTest, isUsedByKeyboardAlone)
{
    EXPECT_EQ(pulls, 0);
    menu.popUp({10, 10});
    ASSERT_TRUE(window());
    EXPECT_EQ(focused(), graphAccessibilityLabel(graphOf(picked)));
    const std::vector<std::string> order{"6 hours",
                                         "Refresh",
                                         "Snooze alerts (30 min)",
                                         "Snooze alerts (2 hours)",
                                         "Switch account…",
                                         "Quit",
                                         graphAccessibilityLabel(graphOf(picked))};
    for (const int key : {Qt::Key_Down, Qt::Key_Tab})
        for (const std::string& name : order) {
            press(key);
            EXPECT_EQ(focused(), name);
        }
    for (auto name = order.rbegin() + 1; name != order.rend(); ++name) {
        press(name->starts_with('S') ? Qt::Key_Up : Qt::Key_Backtab);
        EXPECT_EQ(focused(), *name);
    }
    press(Qt::Key_S, QStringLiteral("s"));
    EXPECT_EQ(focused(), "Snooze alerts (30 min)");
    press(Qt::Key_S, QStringLiteral("S"));
    press(Qt::Key_Return);
    EXPECT_FALSE(window());
    EXPECT_TRUE(commands.empty());
    QApplication::processEvents();
    EXPECT_EQ(commands, std::vector{MenuCommand::snooze2Hours});
}

TEST_F(StatusMenuTest, picksTheTimeWindowAndRefreshesWithoutClosing)
{
    menu.popUp({10, 10});
    ASSERT_TRUE(reach("6 hours"));
    press(Qt::Key_Right);
    QApplication::processEvents();
    EXPECT_EQ(focused(), "12 hours");
    press(Qt::Key_Home);
    QApplication::processEvents();
    EXPECT_EQ(focused(), "1 hour");
    EXPECT_TRUE(stateOfFocused().checked);
    EXPECT_EQ(graph().content().timeWindow, GraphTimeWindow::hours1);
    ASSERT_TRUE(reach("Refresh"));
    press(Qt::Key_Space);
    QApplication::processEvents();
    EXPECT_EQ(commands,
              (std::vector{MenuCommand::graphWindow12, MenuCommand::graphWindow1, MenuCommand::refresh}));
    EXPECT_TRUE(menu.isOpen());
}

TEST_F(StatusMenuTest, escapeLeavesTheWalkThenTheMenu)
{
    menu.popUp({10, 10});
    press(Qt::Key_Left);
    const auto spoken = [&](std::size_t reading) {
        return spokenGraphReading(graphOf(picked).glucoseHistory[reading], {}, TimeZone::utc());
    };
    EXPECT_EQ(focused(), spoken(3));
    press(Qt::Key_Left);
    EXPECT_EQ(focused(), spoken(2));
    press(Qt::Key_Home);
    press(Qt::Key_Left);
    EXPECT_EQ(focused(), spoken(0));
    press(Qt::Key_PageDown);
    EXPECT_EQ(focused(), spoken(3));
    press(Qt::Key_Escape);
    EXPECT_EQ(focused(), graphAccessibilityLabel(graphOf(picked)));
    EXPECT_TRUE(menu.isOpen());
    press(Qt::Key_Escape);
    EXPECT_FALSE(menu.isOpen());
    // Closed, it costs nothing: neither a window nor a graph.
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(std::ranges::count_if(QApplication::topLevelWidgets(),
                                    [](QWidget* one) { return one->objectName() == "statusMenu"; }),
              0);
    const int before = pulls;
    state.alertsSnoozedUntil = now + Seconds{600};
    show(state);
    menu.refreshGraph();
    EXPECT_EQ(pulls, before);
}

TEST_F(StatusMenuTest, keepsTheFocusWhileItsItemsChange)
{
    menu.popUp({10, 10});
    ASSERT_TRUE(reach("Refresh"));
    QWidget* const refresh = window()->focusWidget();
    state.activity = StatusBarActivity::refreshing;
    show(state);
    EXPECT_EQ(window()->focusWidget(), refresh);
    EXPECT_TRUE(stateOfFocused().disabled);
    press(Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_TRUE(commands.empty());

    state.activity.reset();
    state.currentError = ErrorInfo{.title = "No connection", .message = "The service is away."};
    state.nextRetryAt = now;
    show(state);
    EXPECT_EQ(window()->focusWidget(), refresh);
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), "Warning: No connection. The service is away. Next retry at 14:00");
    EXPECT_TRUE(stateOfFocused().disabled);
    press(Qt::Key_Return);
    EXPECT_TRUE(menu.isOpen());

    ASSERT_TRUE(reach("Quit"));
    state.currentError.reset();
    show(state);
    EXPECT_EQ(focused(), "Quit");
}

TEST_F(StatusMenuTest, aKeyOnItsWayToALineThatGoesChoosesNothingElse)
{
    StatusBarState failed = state, snoozed = state;
    failed.currentError = ErrorInfo{.title = "No connection"};
    snoozed.alertsSnoozedUntil = now + Seconds{600};
    struct Case {
        std::string line;
        StatusBarState with, without;
    };
    for (const Case& c :
         {Case{"Warning: No connection", failed, state}, Case{"Resume alerts now", snoozed, state},
          Case{"Snooze alerts (30 min)", state, snoozed}, Case{"Snooze alerts (2 hours)", state, snoozed}}) {
        show(c.with);
        menu.popUp({10, 10});
        ASSERT_TRUE(reach(c.line));
        show(c.without);
        EXPECT_EQ(focused(), graphAccessibilityLabel(graphOf(picked))) << c.line;
        press(Qt::Key_Return);
        press(Qt::Key_Space);
        QApplication::processEvents();
        EXPECT_TRUE(commands.empty()) << c.line;
        menu.close();
    }
}

TEST_F(StatusMenuTest, doesNotStayWhereItNeverGotTheFocus)
{
    const auto timer = [] { return window()->findChild<QTimer*>("unreached"); };
    const auto runOut = [](QTimer* due) {
        QTimerEvent event{due->timerId()};
        QApplication::sendEvent(due, &event);
    };
    const auto popUpWithoutFocus = [this] {
        const QSignalBlocker unheard{qApp};
        menu.popUp({10, 10});
    };
    popUpWithoutFocus();
    QPointer<QWidget> unreached = window();
    ASSERT_TRUE(timer());
    EXPECT_TRUE(timer()->isActive());
    QEnterEvent enter{{}, {}, {}};
    QApplication::sendEvent(window(), &enter);
    EXPECT_FALSE(timer()->isActive()) << "the person looks at it";
    QEvent leave{QEvent::Leave};
    QApplication::sendEvent(window(), &leave);
    EXPECT_TRUE(timer()->isActive());
    popUpWithoutFocus();
    EXPECT_NE(window(), unreached) << "a new one may get the focus";
    ASSERT_TRUE(timer()->isActive());
    runOut(timer());
    EXPECT_FALSE(menu.isOpen());

    menu.popUp({10, 10});
    QApplication::processEvents();  // Which brings the focus.
    unreached = window();
    EXPECT_FALSE(timer()->isActive());
    QApplication::sendEvent(window(), &leave);
    EXPECT_FALSE(timer()->isActive());
    menu.popUp({10, 10});
    EXPECT_EQ(window(), unreached);
}

/// Every pair of a name and a role below this, depth first.
void collect(QAccessibleInterface* from, std::vector<std::pair<std::string, QAccessible::Role>>& found)
{
    found.emplace_back(from->text(QAccessible::Name).toStdString(), from->role());
    for (int i = 0; i < from->childCount(); ++i)
        collect(from->child(i), found);
}

TEST_F(StatusMenuTest, isInTheTreeThatScreenReadersWalk)
{
    state.currentError = ErrorInfo{.title = "No connection"};
    show(state);
    menu.popUp({10, 10});
    std::vector<std::pair<std::string, QAccessible::Role>> found;
    collect(QAccessible::queryAccessibleInterface(qApp), found);
    for (const auto& [name, role] : std::vector<std::pair<std::string, QAccessible::Role>>{
             {"Tidewell", QAccessible::PopupMenu},
             {graphAccessibilityLabel(graphOf(picked)), QAccessible::Chart},
             {"6 hours", QAccessible::RadioButton},
             {"Last update: 14:00", QAccessible::StaticText},
             {"Refresh", QAccessible::PushButton},
             {"Warning: No connection", QAccessible::MenuItem},
             {"Quit", QAccessible::MenuItem}})
        EXPECT_EQ(std::ranges::count(found, std::pair{name, role}), 1) << name;
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&graph())->text(QAccessible::Description),
              "Displays your glucose readings over time with high and low threshold lines");
    ASSERT_TRUE(reach("Quit"));
    QAccessible::queryAccessibleInterface(window()->focusWidget())
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    QApplication::processEvents();
    EXPECT_EQ(commands, std::vector{MenuCommand::quit});
}

TEST_F(StatusMenuTest, liesOnTheScreenWithLettersOfEachSize)
{
    state.currentError = ErrorInfo{.title = "The service could not be reached for a while now",
                                   .message = std::string(400, 'm') + " " + std::string(300, 'w'),
                                   .remediation = "Check the connection of this computer to the Internet."};
    state.alertsSnoozedUntil = now + Seconds{600};
    show(state);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    for (const double scale : {1.0, 1.5, 2.0, 3.0})
        for (const QPoint at : {QPoint{0, 0}, QPoint{-500, 9000}, screen.bottomRight(), screen.center()}) {
            QFont larger = font;
            larger.setPixelSize(static_cast<int>(12 * scale));
            QApplication::setFont(larger);
            menu.popUp(at);
            QApplication::processEvents();
            EXPECT_TRUE(screen.contains(window()->frameGeometry())) << scale << " at " << at.x();
            // The last line can be brought into view.
            press(Qt::Key_Up);
            EXPECT_EQ(focused(), "Quit");
            const QWidget* quit = window()->focusWidget();
            const auto* const scroll = window()->findChild<QScrollArea*>();
            EXPECT_TRUE(scroll->viewport()->rect().contains(
                QRect{quit->mapTo(scroll->viewport(), QPoint{0, 0}), quit->size()}.center()))
                << scale;
            menu.close();
            QApplication::processEvents();
        }
}

}  // namespace
}  // namespace tidewell
