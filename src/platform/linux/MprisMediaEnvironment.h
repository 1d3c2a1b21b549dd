#pragma once

#include "MprisPlayers.h"

#include "media/NowPlayingController.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>

namespace kelvane {

// What is playing on a Linux desktop: the MPRIS players on the session bus stand for the
// system's now-playing clients, a new player on the bus is an application launch, and logind's
// resume from suspend is the wake. Player scripts ("tell application "Spotify" to playpause") are
// sent to that player over MPRIS.
class MprisMediaEnvironment : public QObject, public MediaEnvironment {
    Q_OBJECT
public:
    // The system bus is where logind announces sleep and wake.
    MprisMediaEnvironment(QDBusConnection sessionBus, QDBusConnection systemBus, QObject* parent = nullptr);

    std::optional<MediaRemoteFunctions> loadMediaRemote() override;
    std::unique_ptr<NowPlayingController> makeController() override;
    bool isApplicationRunning(const QString& name) override;
    void activateApplication(const QString& bundleIdentifier) override;
    std::optional<QString> runScript(const QString& script) override;
    // Nothing here blocks (messages to players are sent without waiting), so background work
    // runs later on this thread.
    void runInBackground(std::function<void()> work) override;

    MprisPlayers& players() { return m_players; }
    // The bus name of the player the newest listener follows; empty when none.
    QString followed() const;

private Q_SLOTS:
    void onPrepareForSleep(bool goingToSleep);

private:
    MprisPlayers m_players;
    QPointer<QObject> m_controller;
};

} // namespace kelvane
