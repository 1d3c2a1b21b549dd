#include "MprisMediaEnvironment.h"

#include "media/MediaSources.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTimer>

namespace kelvane {

namespace {

// Follows one player: the one playing (or, when none plays, the paused one) when it starts, and
// another that starts playing while the followed one does not. Ends when the followed player
// leaves the bus. Players may report many times a second: the followed one's changes are passed
// on at most ten times a second, the newest state always last.
class MprisNowPlayingController final : public QObject, public NowPlayingController {
public:
    static constexpr qint64 deliveryIntervalMs = 100;

    explicit MprisNowPlayingController(MprisPlayers& players)
        : m_players(players)
    {
        m_pendingDelivery.setSingleShot(true);
        connect(&m_pendingDelivery, &QTimer::timeout, this, &MprisNowPlayingController::deliver);
    }

    void startListening() override
    {
        if (m_listening)
            return;
        m_listening = true;
        connect(&m_players, &MprisPlayers::playerChanged, this, &MprisNowPlayingController::changed);
        connect(&m_players, &MprisPlayers::playerRemoved, this, &MprisNowPlayingController::removed);
        if (m_players.isScanned())
            follow(m_players.best());
        else
            connect(&m_players, &MprisPlayers::scanned, this, [this] { follow(m_players.best()); });
    }

    void stop() override
    {
        m_listening = false;
        m_pendingDelivery.stop();
        disconnect(&m_players, nullptr, this, nullptr);
    }

    void send(MediaCommand command) override
    {
        if (const MprisPlayer* target = m_followed.isEmpty() ? m_players.best() : m_players.player(m_followed))
            m_players.send(target->busName, command);
    }

private:
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
        if (busName == m_followed) {
            deliverSoon();
            return;
        }
        const MprisPlayer* other = m_players.player(busName);
        const MprisPlayer* followed = m_players.player(m_followed);
        if (other && other->rank() == 2 && (!followed || followed->rank() < 2))
            follow(other);
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
        if (m_players.isScanned() && player && onApplicationLaunched)
            onApplicationLaunched(player->bundleIdentifier);
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
    functions.clientName = [player](const MediaRemoteFunctions::Client& client) {
        const MprisPlayer* each = player(client);
        return each ? each->displayName : QString();
    };
    functions.clientPID = [player](const MediaRemoteFunctions::Client& client) {
        const MprisPlayer* each = player(client);
        return each ? each->pid : std::nullopt;
    };
    functions.setElapsedTime = [&players](double seconds) {
        const MprisPlayer* target = players.best();
        return target && players.setPosition(target->busName, static_cast<qint64>(seconds * 1e6));
    };
    functions.sendCommand = [&players](MediaCommand command) {
        const MprisPlayer* target = players.best();
        return target && players.send(target->busName, command);
    };
    functions.sendCommandToApp = [&players](MediaCommand command, const QString& bundleIdentifier) {
        const MprisPlayer* target = players.find(bundleIdentifier);
        return target && players.send(target->busName, command);
    };
    return functions;
}

std::unique_ptr<NowPlayingController> MprisMediaEnvironment::makeController()
{
    return std::make_unique<MprisNowPlayingController>(m_players);
}

bool MprisMediaEnvironment::isApplicationRunning(const QString& name)
{
    const MprisPlayer* player = m_players.find(name);
    return player && m_players.isRegistered(player->busName);
}

void MprisMediaEnvironment::activateApplication(const QString& bundleIdentifier)
{
    if (const MprisPlayer* player = m_players.find(bundleIdentifier))
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
