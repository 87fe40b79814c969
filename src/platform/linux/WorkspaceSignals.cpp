#include "platform/linux/WorkspaceSignals.h"

#include <QString>

namespace tidewell {

// Signals are chosen by path and interface, not by sender: with a sender, the library first asks the bus who
// that is, and waits for the answer. A forged signal would at most cause one more request to the glucose
// service.

void WorkspaceSignals::listenForSleep(QDBusConnection systemBus)
{
    systemBus.connect({}, QStringLiteral("/org/freedesktop/login1"),
                      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
                      this, SLOT(prepareForSleep(bool)));
}

void WorkspaceSignals::listenForScreens(QDBusConnection sessionBus)
{
    for (const QString& interface :
         {QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("org.gnome.ScreenSaver")})
        sessionBus.connect({}, {}, interface, QStringLiteral("ActiveChanged"), this,
                           SLOT(screenSaverActive(bool)));
}

void WorkspaceSignals::prepareForSleep(bool beginning)
{
    happened_(beginning ? WorkspaceEvent::willSleep : WorkspaceEvent::didWake);
}

void WorkspaceSignals::screenSaverActive(bool active)
{
    if (std::exchange(screensAsleep_, active) != active && active)
        happened_(WorkspaceEvent::screensDidSleep);
}

}  // namespace tidewell
