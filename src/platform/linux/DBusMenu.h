#pragma once

#include <QDBusArgument>
#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <map>
#include <tuple>
#include <vector>

#include "statusbar/StatusBarMenu.h"

namespace tidewell {

/// One line with its id and its properties, those left out that have their default.
struct DBusMenuItem {
    int id = 0;
    QVariantMap properties{};
};
/// The ids of properties that have gone back to their default.
struct DBusMenuRemoved {
    int id = 0;
    QStringList properties{};
};
struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties{};
    QList<tidewell::DBusMenuLayout> children{};
};
struct DBusMenuEvent {
    int id = 0;
    QString name{};
    QDBusVariant data{};
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItem& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuItem& value);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuRemoved& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuRemoved& value);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& value);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& value);

/// The menu as panels read and draw it, by the protocol com.canonical.dbusmenu, with its submenus below the
/// root, id 0. Panels may ask for all of it or level by level.
///
/// A line keeps its id while it means the same, so that an open menu is updated in place. Main thread.
class DBusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    /// `chosen` is called while the panel waits for the answer.
    explicit DBusMenu(std::function<void(MenuCommand)> chosen);

    /// Takes over the lines, as menuOfLines() makes them, and signals what is different: the layout of a menu
    /// whose lines came or went, and the properties of lines that stayed. Nothing when nothing is different.
    void setItems(const std::vector<MenuItem>& items);

    uint version() const { return 3; }
    QString textDirection() const;
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    Q_SCRIPTABLE uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                                tidewell::DBusMenuLayout& layout);
    Q_SCRIPTABLE QList<tidewell::DBusMenuItem> GetGroupProperties(const QList<int>& ids,
                                                                  const QStringList& propertyNames);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString& name);
    Q_SCRIPTABLE void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    Q_SCRIPTABLE QList<int> EventGroup(const QList<tidewell::DBusMenuEvent>& events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    Q_SCRIPTABLE void ItemsPropertiesUpdated(const QList<tidewell::DBusMenuItem>& updated,
                                             const QList<tidewell::DBusMenuRemoved>& removed);
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
    Q_SCRIPTABLE void ItemActivationRequested(int id, uint timestamp);

private:
    struct Line {
        int id = 0;
        MenuItem item{};  ///< Without its children.
        std::vector<Line> children{};
    };
    struct Changes;
    [[nodiscard]] std::vector<Line> linesOf(const std::vector<MenuItem>& items, int parent);
    [[nodiscard]] static QVariantMap propertiesOf(const Line& line);
    /// Of one line with the same id, and of all below it.
    static void compare(const Line& before, const Line& now, Changes& changes);
    template <class Visit>
    static void forEach(const Line& line, const Visit& visit);
    [[nodiscard]] const Line* find(int id) const;
    [[nodiscard]] bool isKnown(int id) const { return find(id) != nullptr; }
    [[nodiscard]] static DBusMenuLayout layoutOf(const Line& line, int depth, const QStringList& names);
    void refuse(int id);
    void trigger(int id, const QString& eventId);

    std::function<void(MenuCommand)> chosen_;
    Line root_{};
    /// Menu, kind, command and how many alike came before it: what a line means, whatever it says.
    std::map<std::tuple<int, MenuItem::Kind, MenuCommand, int>, int> ids_{};
    uint revision_ = 1;
};

}  // namespace tidewell

Q_DECLARE_METATYPE(tidewell::DBusMenuItem)
Q_DECLARE_METATYPE(tidewell::DBusMenuRemoved)
Q_DECLARE_METATYPE(tidewell::DBusMenuLayout)
Q_DECLARE_METATYPE(tidewell::DBusMenuEvent)
