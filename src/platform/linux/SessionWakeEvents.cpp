#include "SessionWakeEvents.h"

namespace kelvane {

SessionWakeEvents::SessionWakeEvents(QDBusConnection sessionBus, QDBusConnection systemBus, QObject* parent)
    : WakeEvents(parent)
{
    if (systemBus.isConnected())
        systemBus.connect(QString(), QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.login1.Manager"),
                          QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
    if (sessionBus.isConnected())
        sessionBus.connect(QString(), QString(), QStringLiteral("org.freedesktop.ScreenSaver"),
                           QStringLiteral("ActiveChanged"), this, SLOT(screenSaverActiveChanged(bool)));
}

void SessionWakeEvents::prepareForSleep(bool sleeping)
{
    if (!sleeping)
        Q_EMIT systemDidWake();
}

void SessionWakeEvents::screenSaverActiveChanged(bool active)
{
    if (!active)
        Q_EMIT screensDidWake();
}

} // namespace kelvane
