#include "MprisMediaEnvironment.h"

#include "media/MediaSources.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTimer>

namespace kelvane {

namespace {

// Follows one player: the pinned one whenever it is there, else the best of all (playing before
// paused, of two in one state the one that came to it last), chosen again whenever any player
// changes. Ends when the followed player leaves the bus. Players may report many times a second:
// the followed one's changes are passed on at most ten times a second, the newest state always
// last.
class MprisNowPlayingController final : public QObject, public NowPlayingController {
public:
    static constexpr qint64 deliveryIntervalMs = 100;

    explicit MprisNowPlayingController(MprisPlayers& players)
        : m_players(players)
    {
        m_pendingDelivery.setSingleShot(true);
        connect(&m_pendingDelivery, &QTimer::timeout, this, &MprisNowPlayingController::deliver);
    }

    // The player followed now; empty before the bus is listed and when no player is there.
    const QString& followed() const { return m_followed; }

    void startListening() override
    {
        if (m_listening)
            return;
        m_listening = true;
        connect(&m_players, &MprisPlayers::playerChanged, this, &MprisNowPlayingController::changed);
        connect(&m_players, &MprisPlayers::playerAdded, this, &MprisNowPlayingController::changed);
        connect(&m_players, &MprisPlayers::playerRemoved, this, &MprisNowPlayingController::removed);
        if (m_players.isScanned())
            follow(choice());
        else
            connect(&m_players, &MprisPlayers::scanned, this, [this] { follow(choice()); });
    }

    void setPinnedClient(const std::optional<QString>& client) override
    {
        if (client == m_pinned)
            return;
        m_pinned = client;
        if (m_listening && m_players.isScanned())
            if (const MprisPlayer* chosen = choice(); !chosen || chosen->busName != m_followed)
                follow(chosen);
    }

    void stop() override
    {
        m_listening = false;
        m_pendingDelivery.stop();
        disconnect(&m_players, nullptr, this, nullptr);
    }

    void send(MediaCommand command) override
    {
        if (!m_followed.isEmpty())
            m_players.send(m_followed, command);
    }

private:
    const MprisPlayer* choice() const
    {
        if (m_pinned)
            if (const MprisPlayer* pinned = m_players.best([this](const MprisPlayer& player) {
                    return MprisPlayers::matches(player, *m_pinned);
                }))
                return pinned;
        return m_players.best();
    }

    void follow(const MprisPlayer* player)
    {
        m_followed = player ? player->busName : QString();
        deliver();
    }

    void deliverSoon()
    {
        if (m_pendingDelivery.isActive())
            return;
        const qint64 since = m_lastDelivery.isValid() ? m_lastDelivery.elapsed() : deliveryIntervalMs;
        if (since >= deliveryIntervalMs)
            deliver();
        else
            m_pendingDelivery.start(static_cast<int>(deliveryIntervalMs - since));
    }

    void deliver()
    {
        m_pendingDelivery.stop();
        m_lastDelivery.start();
        const MprisPlayer* player = m_players.player(m_followed);
        if (onTrackInfoReceived)
            onTrackInfoReceived(player ? player->trackInfo() : TrackInfo{});
    }

    void changed(const QString& busName)
    {
        if (!m_players.isScanned())
            return;
        const MprisPlayer* chosen = choice();
        if (chosen && chosen->busName != m_followed)
            follow(chosen);
        else if (busName == m_followed)
            deliverSoon();
    }

    void removed(const QString& busName)
    {
        if (busName != m_followed)
            return;
        stop();
        if (onListenerTerminated)
            onListenerTerminated();
    }

    MprisPlayers& m_players;
    QString m_followed;
    std::optional<QString> m_pinned;
    bool m_listening = false;
    QTimer m_pendingDelivery;
    QElapsedTimer m_lastDelivery;
};

QString methodFor(const QString& action)
{
    static const QHash<QString, QString> methods{{QStringLiteral("playpause"), QStringLiteral("PlayPause")},
                                                 {QStringLiteral("play"), QStringLiteral("Play")},
                                                 {QStringLiteral("pause"), QStringLiteral("Pause")},
                                                 {QStringLiteral("next track"), QStringLiteral("Next")},
                                                 {QStringLiteral("previous track"), QStringLiteral("Previous")}};
    return methods.value(action);
}

} // namespace

MprisMediaEnvironment::MprisMediaEnvironment(QDBusConnection sessionBus, QDBusConnection systemBus, QObject* parent)
    : QObject(parent)
    , m_players(std::move(sessionBus))
{
    connect(&m_players, &MprisPlayers::playerAdded, this, [this](const QString& busName) {
        // Players found when the bus is first listed were there already; later ones were launched.
        const MprisPlayer* player = m_players.player(busName);
        if (onClientsChanged)
            onClientsChanged();
        if (m_players.isScanned() && player && onApplicationLaunched)
            onApplicationLaunched(player->bundleIdentifier);
    });
    connect(&m_players, &MprisPlayers::playerRemoved, this, [this] {
        if (onClientsChanged)
            onClientsChanged();
    });
    if (systemBus.isConnected())
        systemBus.connect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                          QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
                          SLOT(onPrepareForSleep(bool)));
}

void MprisMediaEnvironment::onPrepareForSleep(bool goingToSleep)
{
    if (!goingToSleep && onWake)
        onWake();
}

std::optional<MediaRemoteFunctions> MprisMediaEnvironment::loadMediaRemote()
{
    if (!m_players.isConnected())
        return std::nullopt;
    MprisPlayers& players = m_players;
    const auto player = [&players](const MediaRemoteFunctions::Client& client) {
        return players.player(client.toString());
    };
    MediaRemoteFunctions functions;
    functions.getClients = [&players] {
        std::vector<MediaRemoteFunctions::Client> clients;
        for (const MprisPlayer* each : players.players())
            clients.emplace_back(each->busName);
        return clients;
    };
    functions.clientBundleID = [player](const MediaRemoteFunctions::Client& client) {
        const MprisPlayer* each = player(client);
        return each ? each->bundleIdentifier : QString();
    };
    functions.clientID = [player](const MediaRemoteFunctions::Client& client) {
        const MprisPlayer* each = player(client);
        return each ? each->busName : QString();
    };
    functions.clientName = [player](const MediaRemoteFunctions::Client& client) {
        const MprisPlayer* each = player(client);
        return each ? each->displayName : QString();
    };
    functions.clientPID = [player](const MediaRemoteFunctions::Client& client) {
        const MprisPlayer* each = player(client);
        return each ? each->pid : std::nullopt;
    };
    // The system's own now-playing application is the one the listener follows.
    functions.setElapsedTime = [this](double seconds) {
        const QString followed = this->followed();
        return !followed.isEmpty() && m_players.setPosition(followed, static_cast<qint64>(seconds * 1e6));
    };
    functions.sendCommand = [this](MediaCommand command) {
        const QString followed = this->followed();
        return !followed.isEmpty() && m_players.send(followed, command);
    };
    functions.sendCommandToApp = [&players](MediaCommand command, const QString& bundleIdentifier) {
        const MprisPlayer* target = players.find(bundleIdentifier);
        return target && players.send(target->busName, command);
    };
    return functions;
}

std::unique_ptr<NowPlayingController> MprisMediaEnvironment::makeController()
{
    auto controller = std::make_unique<MprisNowPlayingController>(m_players);
    m_controller = controller.get();
    return controller;
}

QString MprisMediaEnvironment::followed() const
{
    const auto* controller = static_cast<const MprisNowPlayingController*>(m_controller.data());
    return controller ? controller->followed() : QString();
}

bool MprisMediaEnvironment::isApplicationRunning(const QString& name)
{
    // The bus tells every name that loses its owner, so the players known are the ones running.
    return m_players.find(name) != nullptr;
}

void MprisMediaEnvironment::activateApplication(const QString& client)
{
    if (const MprisPlayer* player = m_players.find(client))
        m_players.raise(player->busName);
}

std::optional<QString> MprisMediaEnvironment::runScript(const QString& script)
{
    static const QRegularExpression tell(QStringLiteral("^tell application \"([^\"]+)\" to (.+)$"));
    const QRegularExpressionMatch match = tell.match(script);
    const QString method = match.hasMatch() ? methodFor(match.captured(2)) : QString();
    if (method.isEmpty())
        return QStringLiteral("not a player command: ") + script;
    const QString application = match.captured(1);
    // A pinned player is named as its scripts name it ("Spotify", "Music").
    QString identifier = application;
    for (const MediaSource source : {MediaSource::appleMusic, MediaSource::spotify})
        if (appleScriptName(source) == application)
            identifier = *bundleIdentifier(source);
    const MprisPlayer* player = m_players.find(identifier);
    if (!player)
        player = m_players.find(application);
    if (!player)
        return QStringLiteral("no player \"%1\" on the session bus").arg(application);
    if (!m_players.call(player->busName, method))
        return QStringLiteral("the session bus did not take the message for \"%1\"").arg(application);
    return std::nullopt;
}

void MprisMediaEnvironment::runInBackground(std::function<void()> work)
{
    QTimer::singleShot(0, this, std::move(work));
}

} // namespace kelvane
