#include "MprisPlayers.h"

#include "MprisDecoding.h"

#include "core/HandOff.h"
#include "media/MediaSources.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QThreadPool>
#include <QUrl>

#include <algorithm>

namespace kelvane {

namespace {
const QString objectPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString rootInterface = QStringLiteral("org.mpris.MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString busService = QStringLiteral("org.freedesktop.DBus");
// Artwork is shown small; a larger picture is scaled down once, when it arrives.
constexpr int artworkSide = 512;
constexpr qint64 artworkMaxBytes = 16 * 1024 * 1024;
constexpr int callTimeoutMs = 5000;

QImage artworkFrom(QImage image)
{
    if (image.width() > artworkSide || image.height() > artworkSide)
        image = image.scaled(artworkSide, artworkSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}
} // namespace

std::optional<qint64> MprisPlayer::currentPositionMicros() const
{
    if (!positionMicros)
        return std::nullopt;
    if (playbackStatus != QLatin1String("Playing") || !positionReadAt.isValid())
        return positionMicros;
    return *positionMicros + positionReadAt.nsecsElapsed() / 1000;
}

int MprisPlayer::rank() const
{
    if (playbackStatus == QLatin1String("Playing"))
        return 2;
    return playbackStatus == QLatin1String("Paused") ? 1 : 0;
}

MprisPlayers::MprisPlayers(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    if (!m_bus.isConnected()) {
        m_scanned = true;
        return;
    }
    m_bus.connect(busService, QStringLiteral("/org/freedesktop/DBus"), busService, QStringLiteral("NameOwnerChanged"),
                  this, SLOT(onNameOwnerChanged(QString, QString, QString)));
    m_bus.connect(QString(), objectPath, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                  SLOT(onPropertiesChanged(QDBusMessage)));
    m_bus.connect(QString(), objectPath, playerInterface, QStringLiteral("Seeked"), this, SLOT(onSeeked(QDBusMessage)));

    const auto listNames = QDBusMessage::createMethodCall(busService, QStringLiteral("/org/freedesktop/DBus"),
                                                          busService, QStringLiteral("ListNames"));
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(listNames, callTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        const QStringList names = reply.arguments().value(0).toStringList();
        for (const QString& name : names)
            if (name.startsWith(prefix()) && !m_players.contains(name)) {
                m_scanWaiting.insert(name);
                add(name, QString());
            }
        if (m_scanWaiting.isEmpty()) {
            m_scanned = true;
            Q_EMIT scanned();
        }
    });
}

MprisPlayers::~MprisPlayers() = default;

QString MprisPlayers::prefix() { return QStringLiteral("org.mpris.MediaPlayer2."); }

QList<const MprisPlayer*> MprisPlayers::players() const
{
    QList<const MprisPlayer*> ready;
    for (const QString& name : m_order)
        if (const auto it = m_players.constFind(name); it != m_players.cend() && it->ready)
            ready.append(&*it);
    return ready;
}

const MprisPlayer* MprisPlayers::player(const QString& busName) const
{
    const auto it = m_players.constFind(busName);
    return it != m_players.cend() && it->ready ? &*it : nullptr;
}

const MprisPlayer* MprisPlayers::best(const std::function<bool(const MprisPlayer&)>& filter) const
{
    const MprisPlayer* chosen = nullptr;
    for (const MprisPlayer* candidate : players())
        if ((!filter || filter(*candidate)) &&
            (!chosen || candidate->rank() > chosen->rank() ||
             (candidate->rank() == chosen->rank() && candidate->lastStateChange > chosen->lastStateChange)))
            chosen = candidate;
    return chosen;
}

bool MprisPlayers::matches(const MprisPlayer& player, const QString& identifierOrName)
{
    return player.busName == identifierOrName ||
           player.bundleIdentifier == canonicalPlayerIdentifier(identifierOrName) ||
           player.identity.compare(identifierOrName, Qt::CaseInsensitive) == 0 ||
           player.busName.mid(prefix().size()).compare(identifierOrName, Qt::CaseInsensitive) == 0;
}

const MprisPlayer* MprisPlayers::find(const QString& identifierOrName) const
{
    // A bus name is one instance; the other names may stand for several, and the first is taken.
    if (const MprisPlayer* exact = player(identifierOrName))
        return exact;
    const QList<const MprisPlayer*> all = players();
    const auto it = std::find_if(all.begin(), all.end(),
                                 [&](const MprisPlayer* candidate) { return matches(*candidate, identifierOrName); });
    return it == all.end() ? nullptr : *it;
}

bool MprisPlayers::call(const QString& busName, const QString& method, const QVariantList& arguments)
{
    const QString interface = method == QLatin1String("Raise") ? rootInterface : playerInterface;
    QDBusMessage message = QDBusMessage::createMethodCall(busName, objectPath, interface, method);
    message.setArguments(arguments);
    // Sent without waiting: a player that hangs does not hang the notch.
    return m_bus.send(message);
}

bool MprisPlayers::send(const QString& busName, MediaCommand command)
{
    switch (command) {
    case MediaCommand::play:
        return call(busName, QStringLiteral("Play"));
    case MediaCommand::pause:
        return call(busName, QStringLiteral("Pause"));
    case MediaCommand::togglePlayPause:
        return call(busName, QStringLiteral("PlayPause"));
    case MediaCommand::nextTrack:
        return call(busName, QStringLiteral("Next"));
    case MediaCommand::previousTrack:
        return call(busName, QStringLiteral("Previous"));
    }
    return false;
}

bool MprisPlayers::setPosition(const QString& busName, qint64 micros)
{
    const MprisPlayer* target = player(busName);
    if (!target || mpris::trackId(target->metadata).isEmpty())
        return false;
    return call(busName, QStringLiteral("SetPosition"),
                {QVariant::fromValue(QDBusObjectPath(mpris::trackId(target->metadata))), QVariant::fromValue(micros)});
}

bool MprisPlayers::raise(const QString& busName) { return call(busName, QStringLiteral("Raise")); }

template <class Handler>
void MprisPlayers::whenReplied(const QDBusMessage& message, const QString& busName, Handler handler)
{
    const quint64 generation = m_generation.value(busName);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, callTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, busName, generation, handler] {
        watcher->deleteLater();
        if (m_generation.value(busName) == generation && m_players.contains(busName))
            handler(watcher->reply());
    });
}

void MprisPlayers::add(const QString& busName, const QString& owner)
{
    m_generation.insert(busName, m_nextGeneration++);
    MprisPlayer& player = m_players[busName];
    player = MprisPlayer{};
    player.busName = busName;
    player.owner = owner;
    m_order.removeAll(busName);
    m_order.append(busName);

    if (owner.isEmpty()) {
        // Found by the listing: its owner is asked for first, as its signals come from it.
        m_repliesDue.insert(busName, 1);
        const auto getOwner = QDBusMessage::createMethodCall(busService, QStringLiteral("/org/freedesktop/DBus"),
                                                             busService, QStringLiteral("GetNameOwner"))
                              << busName;
        whenReplied(getOwner, busName, [this, busName](const QDBusMessage& reply) {
            if (reply.type() != QDBusMessage::ReplyMessage) {
                remove(busName);
                return;
            }
            add(busName, reply.arguments().value(0).toString());
        });
        return;
    }

    m_repliesDue.insert(busName, 3);
    const auto getAll = [&](const QString& interface) {
        return QDBusMessage::createMethodCall(busName, objectPath, propertiesInterface, QStringLiteral("GetAll"))
               << interface;
    };
    whenReplied(getAll(rootInterface), busName, [this, busName](const QDBusMessage& reply) {
        mpris::describe(m_players[busName], mpris::plainMap(reply.arguments().value(0)));
        replied(busName);
    });
    whenReplied(getAll(playerInterface), busName, [this, busName](const QDBusMessage& reply) {
        applyPlayerProperties(m_players[busName], mpris::plainMap(reply.arguments().value(0)));
        replied(busName);
    });
    const auto getPid = QDBusMessage::createMethodCall(busService, QStringLiteral("/org/freedesktop/DBus"), busService,
                                                       QStringLiteral("GetConnectionUnixProcessID"))
                        << busName;
    whenReplied(getPid, busName, [this, busName](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ReplyMessage)
            m_players[busName].pid = static_cast<qint32>(reply.arguments().value(0).toUInt());
        replied(busName);
    });
}

void MprisPlayers::replied(const QString& busName)
{
    if (--m_repliesDue[busName] > 0)
        return;
    m_repliesDue.remove(busName);
    m_players[busName].ready = true;
    Q_EMIT playerAdded(busName);
    scannedOne(busName);
}

void MprisPlayers::scannedOne(const QString& busName)
{
    if (!m_scanWaiting.remove(busName) || !m_scanWaiting.isEmpty())
        return;
    m_scanned = true;
    Q_EMIT scanned();
}

void MprisPlayers::remove(const QString& busName)
{
    const auto it = m_players.find(busName);
    if (it == m_players.end())
        return;
    const bool wasReady = it->ready;
    m_players.erase(it);
    m_order.removeAll(busName);
    m_repliesDue.remove(busName);
    m_positionReads.remove(busName);
    m_generation.insert(busName, m_nextGeneration++);
    if (wasReady)
        Q_EMIT playerRemoved(busName);
    scannedOne(busName);
}

MprisPlayer* MprisPlayers::byOwner(const QString& owner)
{
    for (MprisPlayer& player : m_players)
        if (!owner.isEmpty() && player.owner == owner)
            return &player;
    return nullptr;
}

void MprisPlayers::onNameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner)
{
    if (!name.startsWith(prefix()))
        return;
    if (!oldOwner.isEmpty())
        remove(name);
    if (!newOwner.isEmpty())
        add(name, newOwner);
}

void MprisPlayers::applyPlayerProperties(MprisPlayer& player, const QVariantMap& properties)
{
    const mpris::Changes changes = mpris::apply(player, properties);
    if (changes.status)
        player.lastStateChange = ++m_stateChanges;
    if (changes.metadata)
        loadArtwork(player);
    if (changes.positionStale && player.ready)
        readPosition(player.busName);
}

void MprisPlayers::reread(const QString& busName)
{
    const auto getAll = QDBusMessage::createMethodCall(busName, objectPath, propertiesInterface, QStringLiteral("GetAll"))
                        << playerInterface;
    whenReplied(getAll, busName, [this, busName](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage)
            return;
        applyPlayerProperties(m_players[busName], mpris::plainMap(reply.arguments().value(0)));
        Q_EMIT playerChanged(busName);
    });
}

void MprisPlayers::onPropertiesChanged(const QDBusMessage& message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.value(0).toString() != playerInterface)
        return;
    MprisPlayer* player = byOwner(message.service());
    if (!player)
        return;
    applyPlayerProperties(*player, mpris::plainMap(arguments.value(1)));
    // Players may name what changed without its value.
    if (!arguments.value(2).toStringList().isEmpty() && player->ready)
        reread(player->busName);
    if (player->ready)
        Q_EMIT playerChanged(player->busName);
}

void MprisPlayers::onSeeked(const QDBusMessage& message)
{
    MprisPlayer* player = byOwner(message.service());
    if (!player)
        return;
    player->positionMicros = mpris::micros(mpris::plain(message.arguments().value(0)));
    player->positionReadAt.start();
    if (player->ready)
        Q_EMIT playerChanged(player->busName);
}

void MprisPlayers::readPosition(const QString& busName)
{
    // One read at a time per player; changes meanwhile ask for one more read after it.
    if (const auto reading = m_positionReads.find(busName); reading != m_positionReads.end()) {
        *reading = true;
        return;
    }
    m_positionReads.insert(busName, false);
    const auto get = QDBusMessage::createMethodCall(busName, objectPath, propertiesInterface, QStringLiteral("Get"))
                     << playerInterface << QStringLiteral("Position");
    whenReplied(get, busName, [this, busName](const QDBusMessage& reply) {
        const bool again = m_positionReads.take(busName);
        if (reply.type() == QDBusMessage::ReplyMessage) {
            MprisPlayer& player = m_players[busName];
            player.positionMicros = mpris::micros(mpris::plain(reply.arguments().value(0)));
            player.positionReadAt.start();
            Q_EMIT playerChanged(busName);
        }
        if (again)
            readPosition(busName);
    });
}

void MprisPlayers::loadArtwork(MprisPlayer& player)
{
    const QString address = player.metadata.value(QStringLiteral("mpris:artUrl")).toString();
    if (address == player.artworkUrl)
        return;
    player.artworkUrl = address;
    player.artwork = QImage();
    const QUrl url(address);
    const QString busName = player.busName;
    QPointer<MprisPlayers> self(this);
    if (url.isLocalFile()) {
        QThreadPool::globalInstance()->start(Handed([self, busName, address, path = url.toLocalFile()] {
            QImage image = artworkFrom(QImage(path));
            QMetaObject::invokeMethod(self.data(), Handed([self, busName, address, image] {
                                          if (self)
                                              self->artworkLoaded(busName, address, image);
                                      }),
                                      Qt::QueuedConnection);
        }));
        return;
    }
    if (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https"))
        return;
    if (!m_network) {
        m_network = new QNetworkAccessManager(this);
        m_network->setTransferTimeout(15000);
    }
    QNetworkReply* reply = m_network->get(QNetworkRequest(url));
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
        if (received > artworkMaxBytes)
            reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, busName, address] {
        reply->deleteLater();
        if (reply->error() == QNetworkReply::NoError)
            artworkLoaded(busName, address, artworkFrom(QImage::fromData(reply->readAll())));
    });
}

void MprisPlayers::artworkLoaded(const QString& busName, const QString& url, const QImage& image)
{
    const auto it = m_players.find(busName);
    if (it == m_players.end() || it->artworkUrl != url || image.isNull())
        return;
    it->artwork = image;
    if (it->ready)
        Q_EMIT playerChanged(busName);
}

} // namespace kelvane
