#include "platform/linux/StatusWatcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <fstream>

#include "platform/linux/BusCaller.h"

namespace tidewell {
namespace {

const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

QDBusMessage busCall(const QString& method, const QString& argument)
{
    QDBusMessage call = QDBusMessage::createMethodCall(busName, busPath, busName, method);
    call << argument;
    return call;
}

/// Calls `answered` with the finished call, unless `owner` has gone by then.
template <class Answered>
void send(QDBusConnection& connection, const QDBusMessage& call, QObject* owner, Answered answered)
{
    auto* pending = new QDBusPendingCallWatcher{connection.asyncCall(call), owner};
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, owner, [pending, answered] {
        pending->deleteLater();
        answered(*pending);
    });
}

std::string nameOfProcess(unsigned pid)
{
    std::ifstream file{"/proc/" + std::to_string(pid) + "/comm"};
    std::string name;
    std::getline(file, name);
    return name;
}

}  // namespace

StatusWatcher::StatusWatcher(QDBusConnection connection, Handlers handlers)
    : connection_{std::move(connection)}, handlers_{std::move(handlers)}
{
}

void StatusWatcher::start()
{
    // By path and name rather than by sender: with a sender, the library first asks the bus who that is, and
    // waits.
    connection_.connect({}, busPath, busName, QStringLiteral("NameOwnerChanged"), {watcherName}, {}, this,
                        SLOT(nameOwnerChanged(QDBusMessage)));
    connection_.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                        SLOT(busDisconnected()));
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        connection_.connect({}, watcherPath, watcherName, QString::fromLatin1(signal), this,
                            SLOT(hostsChanged()));
    send(connection_, busCall(QStringLiteral("GetNameOwner"), watcherName), this,
         [this](const QDBusPendingCall& call) {
             const QDBusPendingReply<QString> reply{call};
             setOwner(reply.isError() ? QString{} : reply.value());
         });
}

void StatusWatcher::nameOwnerChanged(const QDBusMessage& message)
{
    if (const auto owner = newOwner(message, watcherName))
        setOwner(*owner);
}

void StatusWatcher::busDisconnected() { handlers_.disconnected(); }

void StatusWatcher::hostsChanged()
{
    if (!owner_.isEmpty())
        askForHost();
}

void StatusWatcher::setOwner(const QString& owner)
{
    if (known_ && owner == owner_)
        return;
    known_ = true;
    owner_ = owner;
    if (owner_.isEmpty())
        handlers_.vanished();
    else
        askForProcess();
}

void StatusWatcher::askForProcess()
{
    send(connection_, busCall(QStringLiteral("GetConnectionUnixProcessID"), owner_), this,
         [this, asked = owner_](const QDBusPendingCall& call) {
             if (asked != owner_)
                 return;
             const QDBusPendingReply<unsigned> reply{call};
             handlers_.appeared(reply.isError() ? std::string{} : nameOfProcess(reply.value()));
         });
}

void StatusWatcher::askForHost()
{
    const QDBusMessage call =
        propertyCall(watcherName, watcherPath, watcherName, QStringLiteral("IsStatusNotifierHostRegistered"));
    send(connection_, call, this, [this, asked = owner_](const QDBusPendingCall& answer) {
        const QDBusPendingReply<QDBusVariant> reply{answer};
        // A service that does not say so is believed to show what it collects.
        if (asked == owner_)
            handlers_.hasHost(reply.isError() || reply.value().variant().toBool());
    });
}

void StatusWatcher::registerItem()
{
    QDBusMessage call = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                                       QStringLiteral("RegisterStatusNotifierItem"));
    call << connection_.baseService();
    call.setAutoStartService(false);
    send(connection_, call, this, [this, asked = owner_](const QDBusPendingCall& answer) {
        if (asked != owner_)
            return;
        if (answer.isError()) {
            handlers_.refused();
            return;
        }
        handlers_.registered();
        askForHost();
    });
}

}  // namespace tidewell
