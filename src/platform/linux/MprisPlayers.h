#pragma once

#include "media/NowPlayingController.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QVariantMap>

#include <functional>
#include <optional>

class QDBusMessage;
class QDBusPendingCallWatcher;
class QNetworkAccessManager;

namespace kelvane {

// One media player on the session bus, as its MPRIS interfaces describe it.
struct MprisPlayer {
    // "org.mpris.MediaPlayer2.mpv"
    QString busName;
    // Its unique connection name (":1.42"), the sender of its signals.
    QString owner;
    QString identity;
    QString desktopEntry;
    std::optional<qint32> pid;
    QVariantMap metadata;
    QString playbackStatus;
    // Position when last read, and the moment it was read.
    std::optional<qint64> positionMicros;
    QElapsedTimer positionReadAt;
    QImage artwork;
    QString artworkUrl;
    // Bumped each time its playback status changes: of two players in one state, the one that
    // came to it last (started last, paused last) wins.
    quint64 lastStateChange = 0;
    // Its properties have been read.
    bool ready = false;

    // The application's identifier: its desktop entry, else the bus name's last part, in canonical
    // form for the players and browsers that have one. Set once the player is described.
    QString bundleIdentifier;
    // Its display name: the player's identity, else its desktop entry or bus name.
    QString displayName;
    // The position now, moved on while playing.
    std::optional<qint64> currentPositionMicros() const;
    // Nothing playing: the player is stopped or names no track.
    TrackInfo trackInfo() const;
    int rank() const;
};

// Every MPRIS player on one bus, kept current from the bus's own signals: players come and go
// with their names, their properties follow PropertiesChanged and Seeked, and artwork is loaded
// once per address. Nothing here waits for a reply on the main thread.
class MprisPlayers : public QObject {
    Q_OBJECT
public:
    explicit MprisPlayers(QDBusConnection bus, QObject* parent = nullptr);
    ~MprisPlayers() override;

    bool isConnected() const { return m_bus.isConnected(); }
    // The first listing of the bus is done.
    bool isScanned() const { return m_scanned; }
    // Players whose properties have been read, in the order they appeared.
    QList<const MprisPlayer*> players() const;
    const MprisPlayer* player(const QString& busName) const;
    // The player to follow: playing before paused before anything else, and of two in one state
    // the one that came to it last. Only players the filter accepts, when one is given.
    const MprisPlayer* best(const std::function<bool(const MprisPlayer&)>& filter = {}) const;
    // The player a bus name, an application identifier or a display name stands for.
    const MprisPlayer* find(const QString& identifierOrName) const;
    // Whether the player answers to that bus name, application identifier or display name.
    static bool matches(const MprisPlayer& player, const QString& identifierOrName);

    bool call(const QString& busName, const QString& method, const QVariantList& arguments = {});
    bool send(const QString& busName, MediaCommand command);
    bool setPosition(const QString& busName, qint64 micros);
    bool raise(const QString& busName);

    static QString prefix();

Q_SIGNALS:
    void scanned();
    // A player's properties have been read: it is there to be followed.
    void playerAdded(const QString& busName);
    void playerRemoved(const QString& busName);
    void playerChanged(const QString& busName);

private Q_SLOTS:
    void onNameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner);
    void onPropertiesChanged(const QDBusMessage& message);
    void onSeeked(const QDBusMessage& message);

private:
    void add(const QString& busName, const QString& owner);
    void replied(const QString& busName);
    void scannedOne(const QString& busName);
    void remove(const QString& busName);
    MprisPlayer* byOwner(const QString& owner);
    void applyPlayerProperties(MprisPlayer& player, const QVariantMap& properties);
    void reread(const QString& busName);
    void readPosition(const QString& busName);
    void loadArtwork(MprisPlayer& player);
    void artworkLoaded(const QString& busName, const QString& url, const QImage& image);
    // Runs when a reply comes, unless the player has gone (or come again) meanwhile.
    template <class Handler>
    void whenReplied(const QDBusMessage& message, const QString& busName, Handler handler);

    QDBusConnection m_bus;
    bool m_scanned = false;
    QHash<QString, MprisPlayer> m_players;
    // Players whose properties are being read: the replies still due.
    QHash<QString, int> m_repliesDue;
    // Players found by the first listing and not read yet.
    QSet<QString> m_scanWaiting;
    QStringList m_order;
    // Tells a player apart from an earlier one of the same name, for replies that come late.
    QHash<QString, quint64> m_generation;
    quint64 m_nextGeneration = 1;
    quint64 m_stateChanges = 0;
    // Position reads in flight; true when another is wanted once it is answered.
    QHash<QString, bool> m_positionReads;
    QNetworkAccessManager* m_network = nullptr;
};

} // namespace kelvane
