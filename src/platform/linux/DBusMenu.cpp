#include "platform/linux/DBusMenu.h"

#include <QDBusError>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

namespace tidewell {
namespace {

using Kind = MenuItem::Kind;

QVariantMap withSubmenu(QVariantMap properties)
{
    properties.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    return properties;
}

/// Every property of a line that differs from the protocol's default, but for that of a submenu.
QVariantMap ownProperties(const MenuItem& item)
{
    QVariantMap properties;
    if (item.kind == Kind::separator) {
        properties.insert(QStringLiteral("type"), QStringLiteral("separator"));
        return properties;
    }
    QString label = QString::fromStdString(item.title);
    label.replace(u'_', QStringLiteral("__"));  // A single one marks a mnemonic.
    properties.insert(QStringLiteral("label"), label);
    if (!item.enabled || item.kind == Kind::text)
        properties.insert(QStringLiteral("enabled"), false);
    if (!item.accessibleText.empty())
        properties.insert(QStringLiteral("accessible-desc"), QString::fromStdString(item.accessibleText));
    if (item.kind == Kind::choice) {
        properties.insert(QStringLiteral("toggle-type"), QStringLiteral("radio"));
        properties.insert(QStringLiteral("toggle-state"), item.checked ? 1 : 0);
    }
    return properties;
}

QVariantMap only(const QStringList& names, const QVariantMap& all)
{
    if (names.isEmpty())
        return all;
    QVariantMap chosen;
    for (auto it = all.begin(); it != all.end(); ++it) {
        if (names.contains(it.key()))
            chosen.insert(it.key(), it.value());
    }
    return chosen;
}

QVariant defaultOf(const QString& name)
{
    if (name == QLatin1String("type"))
        return QStringLiteral("standard");
    if (name == QLatin1String("enabled") || name == QLatin1String("visible"))
        return true;
    if (name == QLatin1String("toggle-state"))
        return -1;
    static const QStringList texts{QStringLiteral("label"), QStringLiteral("icon-name"),
                                   QStringLiteral("toggle-type"), QStringLiteral("children-display"),
                                   QStringLiteral("accessible-desc")};
    return texts.contains(name) ? QVariant{QString{}} : QVariant{};
}

}  // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItem& value)
{
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuItem& value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuRemoved& value)
{
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuRemoved& value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& value)
{
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const DBusMenuLayout& child : value.children)
        argument << QDBusVariant{QVariant::fromValue(child)};
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        value.children.append(qdbus_cast<DBusMenuLayout>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& value)
{
    argument.beginStructure();
    argument << value.id << value.name << value.data << value.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& value)
{
    argument.beginStructure();
    argument >> value.id >> value.name >> value.data >> value.timestamp;
    argument.endStructure();
    return argument;
}

DBusMenu::DBusMenu(std::function<void(MenuCommand)> chosen) : chosen_{std::move(chosen)}
{
    qDBusRegisterMetaType<DBusMenuItem>();
    qDBusRegisterMetaType<QList<DBusMenuItem>>();
    qDBusRegisterMetaType<DBusMenuRemoved>();
    qDBusRegisterMetaType<QList<DBusMenuRemoved>>();
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
    qDBusRegisterMetaType<QList<int>>();
}

QString DBusMenu::textDirection() const
{
    return QGuiApplication::layoutDirection() == Qt::RightToLeft ? QStringLiteral("rtl")
                                                                 : QStringLiteral("ltr");
}

std::vector<DBusMenu::Line> DBusMenu::linesOf(const std::vector<MenuItem>& items, int parent)
{
    std::vector<Line> lines;
    std::map<std::pair<Kind, MenuCommand>, int> ordinals;
    for (const MenuItem& item : items) {
        const int ordinal = ordinals[{item.kind, item.command}]++;
        const auto next = static_cast<int>(ids_.size()) + 1;
        const int id = ids_.try_emplace({parent, item.kind, item.command, ordinal}, next).first->second;
        Line& line = lines.emplace_back(Line{id, item, linesOf(item.children, id)});
        line.item.children.clear();
    }
    return lines;
}

QVariantMap DBusMenu::propertiesOf(const Line& line)
{
    if (line.id == 0)
        return withSubmenu({});
    const QVariantMap own = ownProperties(line.item);
    return line.children.empty() ? own : withSubmenu(own);
}

struct DBusMenu::Changes {
    std::vector<int> layouts{};  ///< The menus whose lines are others, or in another order.
    QList<DBusMenuItem> updated{};
    QList<DBusMenuRemoved> removed{};
};

void DBusMenu::compare(const Line& before, const Line& now, Changes& changes)
{
    const QVariantMap was = propertiesOf(before);
    const QVariantMap is = propertiesOf(now);
    DBusMenuItem updated{now.id, {}};
    for (auto it = is.begin(); it != is.end(); ++it) {
        if (was.value(it.key()) != it.value())
            updated.properties.insert(it.key(), it.value());
    }
    DBusMenuRemoved removed{now.id, {}};
    for (auto it = was.begin(); it != was.end(); ++it) {
        if (!is.contains(it.key()))
            removed.properties.append(it.key());
    }
    if (!updated.properties.isEmpty())
        changes.updated.append(updated);
    if (!removed.properties.isEmpty())
        changes.removed.append(removed);

    if (!std::ranges::equal(before.children, now.children, {}, &Line::id, &Line::id))
        changes.layouts.push_back(now.id);
    for (const Line& child : now.children) {
        const auto old = std::ranges::find(before.children, child.id, &Line::id);
        if (old != before.children.end())
            compare(*old, child, changes);
    }
}

void DBusMenu::setItems(const std::vector<MenuItem>& items)
{
    const Line before = std::exchange(root_, Line{.children = linesOf(items, 0)});
    Changes changes;
    compare(before, root_, changes);
    for (const int menu : changes.layouts)
        Q_EMIT LayoutUpdated(++revision_, menu);
    // Also after a new layout: not every panel reads the properties of lines again that it knows already.
    if (!changes.updated.isEmpty() || !changes.removed.isEmpty())
        Q_EMIT ItemsPropertiesUpdated(changes.updated, changes.removed);
}

template <class Visit>
void DBusMenu::forEach(const Line& line, const Visit& visit)
{
    visit(line);
    for (const Line& child : line.children)
        forEach(child, visit);
}

const DBusMenu::Line* DBusMenu::find(int id) const
{
    const Line* found = nullptr;
    forEach(root_, [&](const Line& line) { found = line.id == id ? &line : found; });
    return found;
}

DBusMenuLayout DBusMenu::layoutOf(const Line& line, int depth, const QStringList& names)
{
    DBusMenuLayout layout{line.id, only(names, propertiesOf(line)), {}};
    if (depth == 0)
        return layout;
    for (const Line& child : line.children)
        layout.children.append(layoutOf(child, std::max(depth, 0) - 1, names));
    return layout;
}

void DBusMenu::refuse(int id)
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no menu item %1").arg(id));
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                         DBusMenuLayout& layout)
{
    const Line* parent = find(parentId);
    if (parent == nullptr) {
        refuse(parentId);
        return 0;
    }
    // A negative depth means all of it.
    layout = layoutOf(*parent, recursionDepth, propertyNames);
    return revision_;
}

QList<DBusMenuItem> DBusMenu::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames)
{
    // Each item once, however often it was asked for: the answer cannot grow beyond the menu.
    const std::set<int> asked{ids.begin(), ids.end()};
    QList<DBusMenuItem> found;
    forEach(root_, [&](const Line& line) {
        if (asked.contains(line.id) || asked.empty())
            found.append({line.id, only(propertyNames, propertiesOf(line))});
    });
    return found;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name)
{
    const QVariant fallback = defaultOf(name);
    const Line* line = find(id);
    const QVariant value = line != nullptr ? propertiesOf(*line).value(name, fallback) : QVariant{};
    if (!value.isValid()) {
        refuse(id);
        return QDBusVariant{QString{}};
    }
    return QDBusVariant{value};
}

void DBusMenu::trigger(int id, const QString& eventId)
{
    const Line* line = find(id);
    if (line == nullptr || eventId != QLatin1String("clicked"))
        return;
    const bool canBeChosen = line->item.kind == Kind::action || line->item.kind == Kind::choice;
    if (canBeChosen && line->item.enabled && line->item.command != MenuCommand::none)
        chosen_(line->item.command);
}

void DBusMenu::Event(int id, const QString& eventId, const QDBusVariant& /*data*/, uint /*timestamp*/)
{
    if (isKnown(id))
        trigger(id, eventId);
    else
        refuse(id);
}

QList<int> DBusMenu::EventGroup(const QList<DBusMenuEvent>& events)
{
    std::set<int> unknown;
    std::set<std::pair<int, QString>> seen;
    for (const DBusMenuEvent& event : events) {
        if (!isKnown(event.id))
            unknown.insert(event.id);
        else if (seen.emplace(event.id, event.name).second)
            trigger(event.id, event.name);
    }
    const bool noneKnown = !events.isEmpty() && seen.empty();
    if (noneKnown)
        refuse(events.front().id);
    return {unknown.begin(), unknown.end()};
}

bool DBusMenu::AboutToShow(int id)
{
    if (!isKnown(id))
        refuse(id);
    return false;
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors)
{
    std::set<int> unknown;
    for (const int id : ids) {
        if (!isKnown(id))
            unknown.insert(id);
    }
    idErrors = QList<int>{unknown.begin(), unknown.end()};
    return {};
}

}  // namespace tidewell
