#pragma once

#include "hud/VolumeAndBrightnessListener.h"

#include <QDBusConnection>

namespace kelvane {

// The system's wake from logind (PrepareForSleep(false)) and the screens' from the session's
// screen saver (ActiveChanged(false)).
class SessionWakeEvents final : public WakeEvents {
    Q_OBJECT
public:
    SessionWakeEvents(QDBusConnection sessionBus, QDBusConnection systemBus, QObject* parent = nullptr);

private Q_SLOTS:
    void prepareForSleep(bool sleeping);
    void screenSaverActiveChanged(bool active);
};

} // namespace kelvane
