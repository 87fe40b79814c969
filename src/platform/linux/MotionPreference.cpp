#include "platform/linux/MotionPreference.h"

#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <utility>

#include "platform/linux/BusCaller.h"

namespace tidewell {
namespace {

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalInterface = QStringLiteral("org.freedesktop.portal.Settings");

struct Setting {
    QString group;
    QString key;
};
/// Of GNOME and what follows it: false when animations are switched off.
const Setting animations{QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations")};
/// Of newer portals: 1 when less motion is wanted.
const Setting reducedMotion{QStringLiteral("org.freedesktop.appearance"), QStringLiteral("reduced-motion")};

/// The value itself: older portals wrap it once more.
QVariant unwrapped(QVariant value)
{
    for (int layer = 0; layer < 3 && value.canConvert<QDBusVariant>(); ++layer)
        value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

MotionPreference::MotionPreference(QDBusConnection connection, std::function<void(bool)> told)
    : connection_{std::move(connection)}, told_{std::move(told)}
{
    for (const Setting& setting : {animations, reducedMotion})
        connection_.connect({}, portalPath, portalInterface, QStringLiteral("SettingChanged"),
                            {setting.group, setting.key}, {}, this, SLOT(settingChanged(QDBusMessage)));
    const QDBusMessage bus = busDaemonCall({});
    connection_.connect({}, bus.path(), bus.interface(), QStringLiteral("NameOwnerChanged"), {portalName}, {},
                        this, SLOT(portalOwnerChanged(QDBusMessage)));
    ask();
}

void MotionPreference::ask()
{
    for (const Setting& setting : {animations, reducedMotion}) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(portalName, portalPath, portalInterface, QStringLiteral("Read"));
        call.setArguments({setting.group, setting.key});
        call.setAutoStartService(false);
        auto* const pending = new QDBusPendingCallWatcher{connection_.asyncCall(call), this};
        connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, setting] {
            pending->deleteLater();
            const QDBusMessage reply = pending->reply();
            if (reply.service().startsWith(u':'))  // Else the bus answers in its place.
                portal_ = reply.service();
            if (!pending->isError())
                learn(setting.group, setting.key, reply.arguments().value(0));
        });
    }
}

void MotionPreference::settingChanged(const QDBusMessage& signal)
{
    const QVariantList arguments = signal.arguments();
    if (!portal_.isEmpty() && signal.service() == portal_ && arguments.size() == 3)
        learn(arguments[0].toString(), arguments[1].toString(), arguments[2]);
}

void MotionPreference::portalOwnerChanged(const QDBusMessage& message)
{
    const auto owner = newOwner(message, portalName);
    if (!owner)
        return;
    portal_ = *owner;
    if (!portal_.isEmpty())
        ask();
}

void MotionPreference::learn(const QString& group, const QString& key, const QVariant& value)
{
    const QVariant plain = unwrapped(value);
    if (group == animations.group && key == animations.key && plain.typeId() == QMetaType::Bool)
        animationsOff_ = !plain.toBool();
    else if (group == reducedMotion.group && key == reducedMotion.key && plain.typeId() == QMetaType::UInt)
        motionReduced_ = plain.toUInt() == 1;
    else
        return;
    told_(animationsOff_ || motionReduced_);
}

}  // namespace tidewell
