#include "FakeSecretService.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QMap>

namespace tidewell {
namespace {

const QDBusObjectPath noPath{"/"};
const QDBusObjectPath itemPath{"/org/freedesktop/secrets/collection/test/1"};
const QDBusObjectPath promptPath{"/org/freedesktop/secrets/prompt/1"};
const QDBusObjectPath sessionPath{"/org/freedesktop/secrets/session/1"};

struct WireSecret {
    QDBusObjectPath session{};
    QByteArray parameters{};
    QByteArray value{};
    QString type{};
};

QDBusArgument& operator<<(QDBusArgument& argument, const WireSecret& secret)
{
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.type;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, WireSecret&) { return argument; }

QVariant paths(const QList<QDBusObjectPath>& list) { return QVariant::fromValue(list); }

}  // namespace
}  // namespace tidewell

Q_DECLARE_METATYPE(tidewell::WireSecret)

namespace tidewell {

FakeSecretService::FakeSecretService(TestBus& bus, QByteArray content)
    : content_{std::move(content)}, connection_{bus.connect()}
{
    qDBusRegisterMetaType<WireSecret>();
    qDBusRegisterMetaType<QMap<QString, QString>>();
    connection_.registerVirtualObject("/org/freedesktop/secrets", this, QDBusConnection::SubPath);
    moveToThread(&thread_);
    thread_.start();
    connection_.registerService("org.freedesktop.secrets");
}

FakeSecretService::~FakeSecretService()
{
    connection_.unregisterService("org.freedesktop.secrets");
    connection_.unregisterObject("/org/freedesktop/secrets");
    thread_.quit();
    thread_.wait();
}

FakeSecretService::Counts FakeSecretService::counts() const
{
    const std::lock_guard guard{lock_};
    return counts_;
}

void FakeSecretService::findNothing(bool refusesAlias)
{
    const std::lock_guard guard{lock_};
    findsNothing_ = true;
    refusesAlias_ = refusesAlias;
}

void FakeSecretService::answerPrompt(bool unlock)
{
    QDBusMessage completed =
        QDBusMessage::createSignal(promptPath.path(), "org.freedesktop.Secret.Prompt", "Completed");
    {
        const std::lock_guard guard{lock_};
        locked_ = !unlock;
        completed << !unlock
                  << QVariant::fromValue(
                         QDBusVariant{paths(unlock ? QList{itemPath} : QList<QDBusObjectPath>{})});
    }
    connection_.send(completed);
}

QString FakeSecretService::introspect(const QString& /*path*/) const { return {}; }

bool FakeSecretService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    const std::lock_guard guard{lock_};
    const QVariantList answer = answerTo(message);
    connection.send(answer.isEmpty()
                        ? message.createErrorReply(QDBusError::NotSupported, "not here")
                        : message.createReply(answer.value(0).isNull() ? QVariantList{} : answer));
    return true;
}

/// Empty for what is refused; a null value for an answer without content.
QVariantList FakeSecretService::answerTo(const QDBusMessage& message)
{
    const QString member = message.member();
    if (member == "OpenSession") {
        if (message.arguments().value(0) != "plain")
            return {};
        ++counts_.sessionsOpen;
        return {QVariant::fromValue(QDBusVariant{QString{""}}), QVariant::fromValue(sessionPath)};
    }
    if (member == "Close") {
        --counts_.sessionsOpen;
        return {QVariant{}};
    }
    if (member == "SearchItems") {
        ++counts_.searches;
        if (findsNothing_)
            return {paths({}), paths({})};
        return locked_ ? QVariantList{paths({}), paths({itemPath})}
                       : QVariantList{paths({itemPath}), paths({})};
    }
    if (member == "Unlock")
        return locked_ ? QVariantList{paths({}), QVariant::fromValue(promptPath)}
                       : QVariantList{paths({itemPath}), QVariant::fromValue(noPath)};
    if (member == "Prompt") {
        ++counts_.prompts;
        return {QVariant{}};
    }
    if (member == "Dismiss") {
        ++counts_.dismissals;
        return {QVariant{}};
    }
    if (member == "ReadAlias" && !refusesAlias_)
        return {QVariant::fromValue(noPath)};
    if (member == "GetAll") {
        if (message.path() != itemPath.path())
            return {QVariantMap{{"Collections", paths({})}}};
        return {QVariantMap{{"Locked", locked_},
                            {"Label", "test"},
                            {"Attributes", QVariant::fromValue(QMap<QString, QString>{{"service", "s"}})},
                            {"Created", QVariant::fromValue<qulonglong>(1)},
                            {"Modified", QVariant::fromValue<qulonglong>(1)}}};
    }
    if (member == "GetSecret" && !locked_)
        return {QVariant::fromValue(WireSecret{sessionPath, {}, content_, "text/plain"})};
    return {};
}

}  // namespace tidewell
