#include "platform/linux/StatusItem.h"

#include <sys/prctl.h>
#include <QCoreApplication>
#include <QDBusMetaType>
#include <QEventLoop>
#include <QImage>
#include <fstream>
#include <set>

#include "MarkingTranslator.h"
#include "StatusItemFixture.h"
#include "platform/linux/BusCaller.h"
#include "platform/linux/DBusMenu.h"
#include "platform/linux/StatusHost.h"
#include "platform/linux/StatusNotifierItem.h"

namespace tidewell {

namespace {

TEST_F(StatusItemTest, comesWhenThePanelStartsLateAndAgainWhenItRestarts)
{
    const auto item = startItem(options());
    ASSERT_TRUE(runUntil([&] { return !waiting.empty(); })) << "it did not notice that there is no panel";
    EXPECT_EQ(registered, 0);
    QString name;
    for (int start = 1; start <= 50; ++start) {
        FakePanel panel{bus};
        ASSERT_TRUE(runUntil([&] { return registered == start; }));
        ASSERT_EQ(panel.items.size(), 1);
        EXPECT_TRUE(panel.items[0].startsWith(':'));
        if (start > 1)
            EXPECT_EQ(panel.items[0], name);
        name = panel.items[0];
        EXPECT_EQ(panel.property("Title").toString(), "Tidewell: Current glucose: 120");
    }
}

TEST_F(StatusItemTest, aRefusedRegistrationIsRepeatedLaterAndLater)
{
    FakePanel panel{bus};
    panel.refuses = true;
    const auto item = startItem(options());
    ASSERT_TRUE(runUntil([&] { return waiting.size() == 1; }));
    EXPECT_EQ(waiting.begin()->first - now, 10s);
    advance(10s);
    ASSERT_TRUE(runUntil([&] { return waiting.size() == 1; }));
    EXPECT_EQ(waiting.begin()->first - now, 20s);
    panel.refuses = false;
    advance(20s);
    ASSERT_TRUE(runUntil([&] { return registered == 1; }));
}

TEST_F(ShownItemTest, onlyTheBusSaysWhetherThereIsAPanel)
{
    QDBusConnection stranger = bus.connect();
    const QString name = QStringLiteral("org.kde.StatusNotifierWatcher");
    for (const QString& forged : {QString{}, stranger.baseService()})
        forgeOwner(stranger, name, forged);
    // By then the forged ones have arrived.
    EXPECT_EQ(callAndWait(stranger, busDaemonCall("GetNameOwner", {name})).arguments().value(0),
              panel.connection.baseService());
    for (int round = 0; round < 3; ++round)
        panel.settle();
    EXPECT_EQ(panel.items.size(), 1);
    EXPECT_EQ(registered, 1);
}

TEST_F(ShownItemTest, sendsOnlyWhatChangedAndAtMostOnceASecond)
{
    panel.settle();
    panel.signalCounts.clear();

    for (int i = 0; i < 100; ++i) {
        advance(10s);
        item->present(sample());
    }
    panel.settle();
    EXPECT_TRUE(panel.signalCounts.empty());

    StatusItemContent next = sample();
    next.tooltipText = "3 minutes ago";
    item->present(next);  // At once: nothing was sent for long.
    panel.settle();
    EXPECT_EQ(panel.signalCounts, (std::map<QString, int>{{"NewToolTip", 1}}));

    for (int value = 121; value <= 150; ++value) {
        advance(10ms);
        item->present(sample(std::to_string(value)));
    }
    panel.settle();
    EXPECT_EQ(panel.signalCounts, (std::map<QString, int>{{"NewToolTip", 1}})) << "too fast";
    advance(1s);
    panel.settle();
    EXPECT_EQ(panel.signalCounts,
              (std::map<QString, int>{{"NewIcon", 1}, {"NewTitle", 1}, {"NewToolTip", 2}}));
    EXPECT_EQ(panel.property("Title").toString(), "Tidewell: Current glucose: 150");

    // Back to what is shown before the second is over: nothing is left to send.
    item->present(sample("151"));
    item->present(sample("150"));
    advance(1s);
    panel.settle();
    EXPECT_EQ(panel.signalCounts["NewIcon"], 1);
    EXPECT_TRUE(waiting.empty());
}

TEST_F(ShownItemTest, propertiesTellTheContent)
{
    EXPECT_EQ(panel.property("Status").toString(), "Active");
    StatusItemContent content = sample();
    content.tooltipTitle = "5 < 6 & more";
    content.tooltipText = "<b>not bold</b> & \"quoted\"\nsecond line";
    content.iconState = StatusBarIconState::attention;
    present(content);
    EXPECT_EQ(panel.property("Status").toString(), "NeedsAttention");
    EXPECT_EQ(panel.property("Menu").value<QDBusObjectPath>().path(), "/MenuBar");
    EXPECT_EQ(panel.property("ItemIsMenu").toBool(), false);
    EXPECT_EQ(panel.property("IconName").toString(), "");
    EXPECT_EQ(panel.property("XAyatanaLabel").toString(), "");

    const auto toolTip = qdbus_cast<ItemToolTip>(panel.property("ToolTip"));
    EXPECT_EQ(toolTip.title, "5 ‹ 6 + more");
    EXPECT_EQ(toolTip.text, "&lt;b&gt;not bold&lt;/b&gt; &amp; &quot;quoted&quot;\nsecond line");

    const auto pixmaps = qdbus_cast<QList<IconPixmap>>(panel.property("IconPixmap"));
    ASSERT_EQ(pixmaps.size(), 1);
    const QImage painted = paintStatusIcon(content, {.height = pixmaps[0].height});
    ASSERT_EQ(pixmaps[0].bytes.size(), painted.sizeInBytes());
    for (int i = 0; i < painted.width() * painted.height(); ++i) {
        const QRgb pixel = painted.pixel(i % painted.width(), i / painted.width());
        const auto byte = [&](int channel) {
            return static_cast<unsigned char>(pixmaps[0].bytes[i * 4 + channel]);
        };
        ASSERT_EQ(qRgba(byte(1), byte(2), byte(3), byte(0)), pixel);
    }
}

TEST_F(StatusItemTest, aPanelThatWritesTheLabelGetsItWithAnIconFile)
{
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "gnome-shell");  // The panel is this process.
    FakePanel panel{bus};
    const auto item = startItem(options());
    ASSERT_TRUE(
        runUntil([&] { return registered == 1 && !panel.property("IconName").toString().isEmpty(); }));
    ::prctl(PR_SET_NAME, before);
    EXPECT_EQ(panel.property("XAyatanaLabel").toString(), "120 →");
    EXPECT_EQ(panel.property("IconAccessibleDesc").toString(),
              "Tidewell: Current glucose: 120 What it is for.");
    const QString first = panel.property("IconName").toString();
    EXPECT_FALSE(QImage{first}.isNull());

    panel.signalCounts.clear();
    StatusItemContent low = sample("54");
    low.look = StatusButtonLook::redFill;
    advance(1s);
    item->present(low);
    ASSERT_TRUE(
        runUntil([&] { return !QSet<QString>{"", first}.contains(panel.property("IconName").toString()); }));
    EXPECT_EQ(panel.signalCounts["XAyatanaNewLabel"], 1);
    advance(1s);
    item->present(sample());
    EXPECT_EQ(panel.property("IconName").toString(), first) << "the same picture is the same file";
}

TEST_F(StatusItemTest, aPanelThatWritesTheLabelGetsPixelsUntilTheFileCanBeWritten)
{
    std::ofstream{folder.path() / "icons"} << "in the way";
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "gnome-shell");
    FakePanel panel{bus};
    const auto item = startItem(options());
    ASSERT_TRUE(runUntil([&] { return registered == 1 && panel.property("Title").toString() != ""; }));
    ::prctl(PR_SET_NAME, before);
    EXPECT_EQ(panel.property("IconName").toString(), "");
    EXPECT_FALSE(qdbus_cast<QList<IconPixmap>>(panel.property("IconPixmap")).isEmpty());
    std::filesystem::remove(folder.path() / "icons");
    advance(30s);
    item->present(sample("121"));
    ASSERT_TRUE(runUntil([&] { return panel.property("IconName").toString() != ""; }));
}

TEST_F(ShownItemTest, theMenuIsReadAndChosenFromByAnyPanel)
{
    const auto layoutAt = [&](int depth) {
        const QDBusMessage reply = panel.menu("GetLayout", {0, depth, QStringList{}});
        return qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
    };
    const DBusMenuLayout root = layoutAt(-1);
    EXPECT_EQ(root.properties.value("children-display"), "submenu");
    ASSERT_EQ(root.children.size(), 5);
    EXPECT_EQ(layoutAt(2'000'000'000).children.size(), 5);
    EXPECT_EQ(layoutAt(0).children.size(), 0);
    EXPECT_EQ(root.children[0].properties.value("enabled"), false);
    EXPECT_EQ(root.children[1].properties.value("type"), "separator");
    EXPECT_EQ(root.children[2].properties.value("label"), "Refresh__now");

    const auto click = [&](int index) {
        return panel.menu("Event",
                          {root.children[index].id, "clicked", QVariant::fromValue(QDBusVariant{0}), 0U});
    };
    for (int index = 0; index < 5; ++index)
        EXPECT_EQ(click(index).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(runUntil([&] { return commands.size() == 2; }));
    EXPECT_EQ(commands, (std::vector{MenuCommand::refresh, MenuCommand::quit}))
        << "a disabled line was chosen";
    EXPECT_EQ(qvariant_cast<QDBusVariant>(
                  panel.menu("GetProperty", {root.children[3].id, "enabled"}).arguments()[0])
                  .variant()
                  .toBool(),
              false);
    EXPECT_EQ(panel.menu("AboutToShow", {0}).arguments().value(0).toBool(), false);

    // A text that changed is a property; a line that came is a layout. What stays keeps its id.
    panel.signalCounts.clear();
    StatusItemContent changed = sample();
    changed.menu[0].title = "3 minutes ago";
    present(changed);
    panel.settle();
    EXPECT_EQ(panel.signalCounts, (std::map<QString, int>{{"ItemsPropertiesUpdated", 1}}));
    changed.menu.insert(changed.menu.begin(), {.kind = MenuItem::Kind::text, .title = "Server error"});
    present(changed);
    const DBusMenuLayout later = layoutAt(-1);
    EXPECT_EQ(panel.signalCounts["LayoutUpdated"], 1);
    ASSERT_EQ(later.children.size(), 6);
    EXPECT_EQ(later.children[5].id, root.children[4].id);
    std::set<int> ids;
    for (const DBusMenuLayout& child : later.children)
        ids.insert(child.id);
    EXPECT_EQ(ids.size(), 6U);
}

TEST_F(ShownItemTest, everyTextOfTheMenuIsShownInThePersonsLanguage)
{
    const MarkingTranslator language;
    StatusItemContent content = sample();
    content.menu = {{.kind = MenuItem::Kind::graph,
                     .title = "Show terms…",
                     .children = {{.kind = MenuItem::Kind::choice,
                                   .title = "1 hour",
                                   .command = MenuCommand::graphWindow1}}},
                    {.title = "Quit", .command = MenuCommand::quit}};
    present(content);
    panel.settle();
    const QDBusMessage reply = panel.menu("GetLayout", {0, -1, QStringList{}});
    const auto root = qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
    std::vector<const DBusMenuLayout*> lines;
    for (const DBusMenuLayout& line : root.children) {
        lines.push_back(&line);
        for (const DBusMenuLayout& child : line.children)
            lines.push_back(&child);
    }
    EXPECT_GE(lines.size(), 4U);
    for (const DBusMenuLayout* const line : lines)
        if (const QString label = line->properties.value("label").toString(); !label.isEmpty())
            EXPECT_TRUE(label.startsWith('[') && label.endsWith(']')) << label.toStdString();
}

TEST_F(ShownItemTest, submenusAreReadWholeOrLevelByLevelAndTellWhichChoiceIsInForce)
{
    StatusItemContent content = sample();
    const auto choice = [](std::string title, MenuCommand command, bool checked) {
        return MenuItem{.kind = MenuItem::Kind::choice,
                        .title = std::move(title),
                        .command = command,
                        .checked = checked};
    };
    content.menu = {{.kind = MenuItem::Kind::graph,
                     .title = "120 mg/dL →  ▂▃▄",
                     .accessibleText = "Glucose graph",
                     .children = {choice("1 hour", MenuCommand::graphWindow1, true),
                                  choice("3 hours", MenuCommand::graphWindow3, false)}},
                    {.title = "Quit", .command = MenuCommand::quit}};
    present(content);
    const auto layout = [&](int parent, int depth) {
        const QDBusMessage reply = panel.menu("GetLayout", {parent, depth, QStringList{}});
        return qdbus_cast<DBusMenuLayout>(reply.arguments().value(1));
    };
    const DBusMenuLayout top = layout(0, 1);
    ASSERT_EQ(top.children.size(), 2);
    const DBusMenuLayout& graph = top.children[0];
    EXPECT_TRUE(graph.children.isEmpty());
    EXPECT_EQ(graph.properties, (QVariantMap{{"label", "120 mg/dL →  ▂▃▄"},
                                             {"accessible-desc", "Glucose graph"},
                                             {"children-display", "submenu"}}));
    const QList<DBusMenuLayout> lines = layout(graph.id, 1).children;  // Show graph, separator, choices.
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[2].properties,
              (QVariantMap{{"label", "1 hour"}, {"toggle-type", "radio"}, {"toggle-state", 1}}));
    EXPECT_EQ(lines[3].properties.value("toggle-state"), 0);
    const DBusMenuLayout whole = layout(0, -1);
    ASSERT_EQ(whole.children[0].children.size(), 4);
    EXPECT_EQ(whole.children[0].children[3].id, lines[3].id);

    for (const int id : {graph.id, lines[0].id, lines[1].id, lines[3].id})
        panel.menu("Event", {id, "clicked", QVariant::fromValue(QDBusVariant{0}), 0U});
    ASSERT_TRUE(runUntil([&] { return commands.size() == 2; }));
    EXPECT_EQ(commands, (std::vector{MenuCommand::showGraph, MenuCommand::graphWindow3}));

    // A line that comes above the submenu, while another choice comes into force: both are told, nobody's id
    // changes, and what is below the submenu keeps its layout.
    panel.signalCounts.clear();
    std::swap(content.menu[0].children[0].checked, content.menu[0].children[1].checked);
    content.menu.insert(content.menu.begin(), {.kind = MenuItem::Kind::text, .title = "Server error"});
    present(content);
    const DBusMenuLayout later = layout(0, -1);
    EXPECT_EQ(panel.signalCounts,
              (std::map<QString, int>{{"LayoutUpdated", 1}, {"ItemsPropertiesUpdated", 1}}));
    ASSERT_EQ(later.children.size(), 3);
    EXPECT_EQ(later.children[1].id, graph.id);
    EXPECT_EQ(later.children[1].children[3].id, lines[3].id);
    EXPECT_EQ(later.children[1].children[3].properties.value("toggle-state"), 1);
}

TEST_F(ShownItemTest, hostileCallsGetErrorsAndBoundedAnswers)
{
    const QVariant nothing = QVariant::fromValue(QDBusVariant{0});
    const int lowest = std::numeric_limits<int>::min();
    for (const int id : {-1, 99, lowest, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(panel.menu("GetLayout", {id, -1, QStringList{}}).type(), QDBusMessage::ErrorMessage);
        EXPECT_EQ(panel.menu("GetProperty", {id, "label"}).type(), QDBusMessage::ErrorMessage);
        EXPECT_EQ(panel.menu("Event", {id, "clicked", nothing, 0U}).type(), QDBusMessage::ErrorMessage);
        EXPECT_EQ(panel.menu("AboutToShow", {id}).type(), QDBusMessage::ErrorMessage);
    }
    EXPECT_EQ(panel.menu("GetLayout", {0, lowest, QStringList(5000, "label")}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(panel.menu("GetProperty", {1, "no such property"}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(panel.menu("Event", {"not a number"}).type(), QDBusMessage::ErrorMessage);

    QList<int> many;
    QList<DBusMenuEvent> events;
    for (int i = 0; i < 100'000; ++i) {
        many.append(i % 7);
        events.append({3, "clicked", QDBusVariant{0}, 0});
    }
    const auto properties = qdbus_cast<QList<DBusMenuItem>>(
        panel.menu("GetGroupProperties", {QVariant::fromValue(many), QStringList{}}).arguments().value(0));
    EXPECT_EQ(properties.size(), 6);
    const QDBusMessage flood = panel.menu("EventGroup", {QVariant::fromValue(events)});
    EXPECT_EQ(flood.type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(runUntil([&] { return !commands.empty(); }));
    panel.settle();
    EXPECT_EQ(commands.size(), 1U) << "one call, one command";

    for (const int position : {lowest, 0, std::numeric_limits<int>::max()}) {
        QDBusMessage call = panel.itemCall("org.kde.StatusNotifierItem", "Scroll");
        call << position << QStringLiteral("sideways");
        EXPECT_EQ(callAndWait(panel.connection, call).type(), QDBusMessage::ReplyMessage);
    }
}

TEST_F(ShownItemTest, activationGoesToItsHandler)
{
    std::vector<QPoint> clicks;
    item->onActivate([&](QPoint where) { clicks.push_back(where); });
    for (const char* method : {"Activate", "ContextMenu", "SecondaryActivate"}) {
        QDBusMessage call = panel.itemCall("org.kde.StatusNotifierItem", method);
        call << 1200 << 24;
        EXPECT_EQ(callAndWait(panel.connection, call).type(), QDBusMessage::ReplyMessage);
    }
    EXPECT_TRUE(runUntil([&] { return clicks.size() == 2; }));
    EXPECT_EQ(clicks[0], QPoint(1200, 24));
}

TEST_F(StatusItemTest, aBusThatHangsStopsNothingHere)
{
    const auto start = std::chrono::steady_clock::now();
    {
        FakePanel panel{bus};
        const auto item = startItem(options());
        ASSERT_TRUE(runUntil([&] { return registered == 1; }));
        bus.freeze();
        for (int i = 0; i < 20; ++i) {
            advance(1s);
            item->present(sample(std::to_string(100 + i)));
            QCoreApplication::processEvents();
        }
        const auto late = startItem(options());
        QCoreApplication::processEvents();
        bus.thaw();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST_F(StatusItemTest, comesBackWithItsBusAndWhenTheBusIsLate)
{
    bus.end();
    const auto item = startItem(options());
    ASSERT_TRUE(runUntil([&] { return !waiting.empty(); })) << "it gave up looking for a bus";
    for (int start = 1; start <= 3; ++start) {
        bus.begin();
        FakePanel panel{bus};
        advance(10s);
        ASSERT_TRUE(runUntil([&] { return registered == start; }));
        item->present(sample(std::to_string(120 + start)));
        advance(1s);
        EXPECT_EQ(panel.property("Title").toString(),
                  QString("Tidewell: Current glucose: %1").arg(120 + start));
        waiting.clear();
        bus.end();
        ASSERT_TRUE(runUntil([&] { return !waiting.empty(); })) << "it did not notice that the bus went";
    }
}

TEST_F(StatusItemTest, withoutABusItGoesOn)
{
    StatusItemOptions made = options();
    made.busAddress = "unix:path=/nonexistent/bus";
    const auto item = startItem(made);
    for (int i = 0; i < 50; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    advance(1h);
    item->present(sample("121"));
    EXPECT_EQ(registered, 0);
}

TEST(StatusHost, everyKnownPanelGetsTheDrawingThatItShowsBest)
{
    EXPECT_EQ(statusHost("waybar").shape, StatusIconShape::wide);
    for (const char* squares :
         {"panel-3-systray", "swaybar", "lxqt-panel", "kded5", "plasmashell", "", "unheard-of"})
        EXPECT_EQ(statusHost(squares).shape, StatusIconShape::stacked);
    for (const char* labels : {"gnome-shell", "ayatana-indicat"})
        EXPECT_TRUE(statusHost(labels).iconFile);
    EXPECT_EQ(statusHost("kded6").lineBreak, "<br/>");
    EXPECT_FALSE(withShape(statusHost("gnome-shell"), StatusIconShape::wide).iconFile);
}

}  // namespace
}  // namespace tidewell
