#include "FakeNotificationServer.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <utility>

namespace tidewell {

FakeService::FakeService(TestBus& bus, const QStringList& names) : connection{bus.connect()}, names_{names}
{
    connection.registerVirtualObject("/org", this, QDBusConnection::SubPath);
    for (const QString& name : names_)
        connection.registerService(name);
}

FakeService::~FakeService()
{
    if (!connection.isConnected())
        return;
    connection.unregisterObject("/org");
    for (const QString& name : names_)
        connection.unregisterService(name);
}

QString FakeService::introspect(const QString& /*path*/) const { return {}; }

bool FakeService::handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/)
{
    if (handle(message))
        return true;
    QString question = message.member();
    if (question == "Get")
        question = message.arguments()[0].toString() + '.' + message.arguments()[1].toString();
    else if (question == "GetProperty")
        question = message.arguments()[1].toString();
    const auto known = answers.find(question);
    if (known == answers.end())
        return false;
    const bool inVariant = message.member().startsWith("Get");
    connection.send(
        message.createReply(inVariant ? QVariant::fromValue(QDBusVariant{known->second}) : known->second));
    return true;
}

FakeNotificationServer::FakeNotificationServer(TestBus& bus, QStringList announced)
    : FakeService{bus, {"org.freedesktop.Notifications"}}, announced_{std::move(announced)}
{
}

void FakeNotificationServer::invoke(unsigned id, const QString& action)
{
    QDBusMessage signal = QDBusMessage::createTargetedSignal(
        client_, "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked");
    signal << id << action;
    connection.send(signal);
}

void FakeNotificationServer::recover()
{
    mood = moodForNotify = Mood::answers;
    for (const QDBusMessage& message : std::exchange(waiting_, {}))
        answer(message);
}

bool FakeNotificationServer::handle(const QDBusMessage& message)
{
    const QString member = message.member();
    if (message.interface() != "org.freedesktop.Notifications")
        return false;
    client_ = message.service();
    questions += member == "GetCapabilities" ? 1 : 0;
    switch (mood != Mood::answers ? mood : member == "Notify" ? moodForNotify : Mood::answers) {
    case Mood::answers: answer(message); break;
    case Mood::refuses: connection.send(message.createErrorReply(QDBusError::Failed, "65 mg/dL")); break;
    case Mood::hangs: waiting_.push_back(message); break;
    case Mood::talksNonsense: connection.send(message.createReply(QVariantList{"yes", 3})); break;
    case Mood::dies: QMetaObject::invokeMethod(this, [this] { die(); }, Qt::QueuedConnection); break;
    }
    return true;
}

void FakeNotificationServer::die()
{
    const QString name = connection.name();
    connection = QDBusConnection{QString{}};
    QDBusConnection::disconnectFromBus(name);
}

void FakeNotificationServer::answer(const QDBusMessage& message)
{
    const QString member = message.member();
    const QVariantList arguments = message.arguments();
    if (member == "GetCapabilities") {
        connection.send(message.createReply(announced_));
    } else if (member == "GetServerInformation") {
        connection.send(message.createReply(QVariantList{answers["name"].toString(), "test", "1", "1.2"}));
    } else if (member == "CloseNotification") {
        closed.push_back(arguments[0].toUInt());
        connection.send(message.createReply());
    } else if (member == "Notify" && message.signature() == "susssasa{sv}i") {
        posted.push_back({.summary = arguments[3].toString(),
                          .body = arguments[4].toString(),
                          .icon = arguments[2].toString(),
                          .client = arguments[0].toString(),
                          .actions = arguments[5].toStringList(),
                          .hints = qdbus_cast<QVariantMap>(arguments[6]),
                          .timeout = arguments[7].toInt(),
                          .id = nextID});
        connection.send(message.createReply(nextID++));
    } else {
        connection.send(message.createErrorReply(QDBusError::InvalidSignature, message.signature()));
    }
}

}  // namespace tidewell
