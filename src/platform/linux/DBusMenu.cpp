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

/// Every property of a line that differs from the protocol's default.
QVariantMap allProperties(const MenuItem& item)
{
    QVariantMap properties;
    if (item.kind == MenuItem::Kind::separator) {
        properties.insert(QStringLiteral("type"), QStringLiteral("separator"));
        return properties;
    }
    QString label = QString::fromStdString(item.title);
    label.replace(u'_', QStringLiteral("__"));  // A single one marks a mnemonic.
    properties.insert(QStringLiteral("label"), label);
    if (!item.enabled || item.kind == MenuItem::Kind::text)
        properties.insert(QStringLiteral("enabled"), false);
    return properties;
}

QVariantMap rootProperties() { return {{QStringLiteral("children-display"), QStringLiteral("submenu")}}; }

QVariant defaultOf(const QString& name)
{
    if (name == QLatin1String("type"))
        return QStringLiteral("standard");
    if (name == QLatin1String("enabled") || name == QLatin1String("visible"))
        return true;
    if (name == QLatin1String("toggle-state"))
        return -1;
    static const QStringList texts{QStringLiteral("label"), QStringLiteral("icon-name"),
                                   QStringLiteral("toggle-type"), QStringLiteral("children-display")};
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

int DBusMenu::idFor(const MenuItem& item, int ordinal)
{
    const auto next = static_cast<int>(ids_.size()) + 1;
    return ids_.try_emplace({item.kind, item.command, ordinal}, next).first->second;
}

void DBusMenu::setItems(const std::vector<MenuItem>& items)
{
    std::vector<Line> lines;
    std::map<std::pair<MenuItem::Kind, MenuCommand>, int> ordinals;
    for (const MenuItem& item : items)
        lines.push_back({idFor(item, ordinals[{item.kind, item.command}]++), item});

    const std::vector<Line> before = std::exchange(lines_, std::move(lines));
    if (!std::ranges::equal(before, lines_, {}, &Line::id, &Line::id)) {
        Q_EMIT LayoutUpdated(++revision_, 0);
        return;
    }
    QList<DBusMenuItem> updated;
    QList<DBusMenuRemoved> removed;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const QVariantMap was = allProperties(before[i].item);
        const QVariantMap is = allProperties(lines_[i].item);
        DBusMenuItem changes{lines_[i].id, {}};
        for (auto it = is.begin(); it != is.end(); ++it) {
            if (was.value(it.key()) != it.value())
                changes.properties.insert(it.key(), it.value());
        }
        DBusMenuRemoved gone{lines_[i].id, {}};
        for (auto it = was.begin(); it != was.end(); ++it) {
            if (!is.contains(it.key()))
                gone.properties.append(it.key());
        }
        if (!changes.properties.isEmpty())
            updated.append(changes);
        if (!gone.properties.isEmpty())
            removed.append(gone);
    }
    if (!updated.isEmpty() || !removed.isEmpty())
        Q_EMIT ItemsPropertiesUpdated(updated, removed);
}

const DBusMenu::Line* DBusMenu::find(int id) const
{
    const auto found = std::ranges::find(lines_, id, &Line::id);
    return found == lines_.end() ? nullptr : &*found;
}

QVariantMap DBusMenu::propertiesOf(int id, const QStringList& names) const
{
    const Line* line = find(id);
    const QVariantMap all = line != nullptr ? allProperties(line->item) : rootProperties();
    if (names.isEmpty())
        return all;
    QVariantMap chosen;
    for (auto it = all.begin(); it != all.end(); ++it) {
        if (names.contains(it.key()))
            chosen.insert(it.key(), it.value());
    }
    return chosen;
}

void DBusMenu::refuse(int id)
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no menu item %1").arg(id));
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                         DBusMenuLayout& layout)
{
    if (!isKnown(parentId)) {
        refuse(parentId);
        return 0;
    }
    layout = {parentId, propertiesOf(parentId, propertyNames), {}};
    if (parentId == 0 && recursionDepth != 0) {
        for (const Line& line : lines_)
            layout.children.append({line.id, propertiesOf(line.id, propertyNames), {}});
    }
    return revision_;
}

QList<DBusMenuItem> DBusMenu::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames)
{
    // Each item once, however often it was asked for: the answer cannot grow beyond the menu.
    const std::set<int> asked{ids.begin(), ids.end()};
    QList<DBusMenuItem> found;
    if (asked.contains(0) || asked.empty())
        found.append({0, propertiesOf(0, propertyNames)});
    for (const Line& line : lines_) {
        if (asked.contains(line.id) || asked.empty())
            found.append({line.id, propertiesOf(line.id, propertyNames)});
    }
    return found;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name)
{
    const QVariant fallback = defaultOf(name);
    const QVariant value = isKnown(id) ? propertiesOf(id, {}).value(name, fallback) : QVariant{};
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
    if (line->item.kind == MenuItem::Kind::action && line->item.enabled &&
        line->item.command != MenuCommand::none)
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
