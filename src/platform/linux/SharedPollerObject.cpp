#include "platform/linux/SharedPollerObject.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <utility>

namespace tidewell {
namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

constexpr uint shortestSnoozeMinutes = 1;
constexpr uint longestSnoozeMinutes = 24 * 60;

QString signatureOf(const QVariant& value)
{
    return QString::fromLatin1(QDBusMetaType::typeToSignature(value.metaType()));
}

QDBusMessage refusal(const QDBusMessage& call, QDBusError::ErrorType type, const QString& text)
{
    return call.createErrorReply(type, text);
}

}  // namespace

SharedPollerObject::SharedPollerObject(Handlers handlers) : handlers_{std::move(handlers)}
{
    qDBusRegisterMetaType<SharedReading>();
    qDBusRegisterMetaType<QList<SharedReading>>();
    (void)update({}, {}, {}, {}, {});
}

QVariantMap SharedPollerObject::update(const QString& profile, const QString& account,
                                       const std::optional<Date>& pollingSince, const StatusBarState& state,
                                       const PollingProgress& progress)
{
    QVariantMap next = sharedProperties(state, progress);
    next.insert(QStringLiteral("PollingSince"), sharedMoment(pollingSince));
    next.insert(QStringLiteral("Profile"), profile);
    next.insert(QStringLiteral("Account"), account);
    const auto difference = firstDifference(history_, state.glucoseHistory);
    const QString changedSince = QStringLiteral("ReadingsChangedSince");
    const QString readingsRevision = QStringLiteral("ReadingsRevision");
    const QString revisionName = QStringLiteral("Revision");
    const uint revision = properties_.value(revisionName).toUInt();
    next.insert(readingsRevision, properties_.value(readingsRevision, 0U));
    next.insert(changedSince, properties_.value(changedSince, qlonglong{0}));
    if (difference) {
        // Never ahead of the reading, whatever becomes of fractions of a millisecond.
        next.insert(changedSince,
                    std::max(qlonglong{0}, static_cast<qlonglong>(unixSeconds(*difference) * 1000 - 1)));
        next.insert(readingsRevision, revision + 1);
    }
    QVariantMap changed;
    for (auto entry = next.cbegin(); entry != next.cend(); ++entry)
        if (properties_.value(entry.key()) != entry.value())
            changed.insert(entry.key(), entry.value());
    next.insert(revisionName, revision);
    if (changed.isEmpty())
        return {};
    if (difference)
        changed.insert(changedSince, next.value(changedSince));
    next.insert(revisionName, revision + 1);
    changed.insert(revisionName, revision + 1);
    properties_ = std::move(next);
    history_ = state.glucoseHistory;
    return changed;
}

bool SharedPollerObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    if (message.type() != QDBusMessage::MethodCallMessage || message.path() != sharedPollerPath)
        return false;
    const QString interface = message.interface();
    if (interface == propertiesInterface)
        return handleProperties(message, connection);
    if (!interface.isEmpty() && interface != sharedPollerInterface)
        return false;

    const auto answer = [&](const QDBusMessage& reply) {
        if (message.isReplyRequired())
            connection.send(reply);
        return true;
    };
    const QString method = message.member();
    const QString signature = message.signature();
    const QVariantList arguments = message.arguments();
    if (method == QLatin1String("Readings") && signature == QLatin1String("x"))
        return answer(
            message.createReply(QVariant::fromValue(sharedReadings(history_, arguments.at(0).toLongLong()))));
    if (method == QLatin1String("Refresh") && signature.isEmpty()) {
        handlers_.refresh();
        return answer(message.createReply());
    }
    if (method == QLatin1String("Resume") && signature.isEmpty()) {
        handlers_.resume();
        return answer(message.createReply());
    }
    if (method == QLatin1String("Snooze") && signature == QLatin1String("u")) {
        const uint minutes = arguments.at(0).toUInt();
        if (minutes < shortestSnoozeMinutes || minutes > longestSnoozeMinutes)
            return answer(refusal(message, QDBusError::InvalidArgs,
                                  QStringLiteral("Alerts can be snoozed for 1 to 1440 minutes.")));
        handlers_.snooze(std::chrono::minutes{minutes});
        return answer(message.createReply());
    }
    return answer(refusal(message, QDBusError::UnknownMethod, QStringLiteral("There is no such method.")));
}

bool SharedPollerObject::handleProperties(const QDBusMessage& message,
                                          const QDBusConnection& connection) const
{
    const QVariantList arguments = message.arguments();
    const QString signature = message.signature();
    if (message.member() == QLatin1String("GetAll") && signature == QLatin1String("s"))
        return connection.send(message.createReply(QVariant{properties_}));
    if (message.member() == QLatin1String("Get") && signature == QLatin1String("ss")) {
        const auto found = properties_.constFind(arguments.at(1).toString());
        return connection.send(
            found == properties_.cend()
                ? refusal(message, QDBusError::UnknownProperty, QStringLiteral("There is no such property."))
                : message.createReply(QVariant::fromValue(QDBusVariant{*found})));
    }
    if (message.member() == QLatin1String("Set"))
        return connection.send(
            refusal(message, QDBusError::PropertyReadOnly, QStringLiteral("All properties are read-only.")));
    return false;
}

QString SharedPollerObject::introspect(const QString& /*path*/) const
{
    QString text = QStringLiteral("<interface name=\"%1\">\n").arg(sharedPollerInterface);
    for (auto entry = properties_.cbegin(); entry != properties_.cend(); ++entry)
        text += QStringLiteral("<property name=\"%1\" type=\"%2\" access=\"read\"/>\n")
                    .arg(entry.key(), signatureOf(entry.value()));
    text += QStringLiteral(
        "<method name=\"Refresh\"/>\n"
        "<method name=\"Snooze\"><arg name=\"minutes\" type=\"u\" direction=\"in\"/></method>\n"
        "<method name=\"Resume\"/>\n"
        "<method name=\"Readings\"><arg name=\"since\" type=\"x\" direction=\"in\"/>"
        "<arg name=\"readings\" type=\"a(xdsus)\" direction=\"out\"/></method>\n"
        "</interface>\n");
    return text;
}

}  // namespace tidewell
