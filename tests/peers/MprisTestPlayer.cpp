// A small MPRIS player on the session bus for tests and benchmarks: it plays nothing, but it
// answers and signals as a player does, prints every method called on it (one name per line),
// and can flood its listeners with track changes.
//
// Usage: kelvane_mpris_test_player NAME [--identity TEXT] [--desktop-entry TEXT] [--title TEXT]
//        [--artist TEXT]... [--length SECONDS] [--art URL] [--status Playing|Paused|Stopped]
//        [--flood PER_SECOND]

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QTimer>

#include <cstdio>

namespace {

const QString path = QStringLiteral("/org/mpris/MediaPlayer2");
const QString rootInterface = QStringLiteral("org.mpris.MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

class Player final : public QDBusVirtualObject {
public:
    QVariantMap root;
    QVariantMap metadata;
    QString status;
    qint64 positionMicros = 0;
    QElapsedTimer playingFor;

    QVariantMap playerProperties() const
    {
        return {{QStringLiteral("PlaybackStatus"), status},
                {QStringLiteral("Metadata"), metadata},
                {QStringLiteral("Position"), position()},
                {QStringLiteral("CanControl"), true},
                {QStringLiteral("CanPlay"), true},
                {QStringLiteral("CanPause"), true},
                {QStringLiteral("CanGoNext"), true},
                {QStringLiteral("CanGoPrevious"), true},
                {QStringLiteral("CanSeek"), true}};
    }

    qint64 position() const
    {
        return positionMicros + (status == QLatin1String("Playing") ? playingFor.nsecsElapsed() / 1000 : 0);
    }

    void changed(const QVariantMap& properties)
    {
        auto signal = QDBusMessage::createSignal(path, propertiesInterface, QStringLiteral("PropertiesChanged"));
        signal << playerInterface << properties << QStringList();
        QDBusConnection::sessionBus().send(signal);
    }

    void setStatus(const QString& value)
    {
        positionMicros = position();
        playingFor.restart();
        status = value;
        changed({{QStringLiteral("PlaybackStatus"), status}});
    }

    QString introspect(const QString&) const override
    {
        return QStringLiteral("<interface name=\"org.mpris.MediaPlayer2\"/>"
                              "<interface name=\"org.mpris.MediaPlayer2.Player\"/>");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString member = message.member();
        const QVariantList arguments = message.arguments();
        std::printf("%s\n", qPrintable(member));
        std::fflush(stdout);
        QDBusMessage reply = message.createReply();
        if (message.interface() == propertiesInterface && member == QLatin1String("GetAll")) {
            reply << (arguments.value(0).toString() == rootInterface ? root : playerProperties());
        } else if (message.interface() == propertiesInterface && member == QLatin1String("Get")) {
            const QVariantMap all = arguments.value(0).toString() == rootInterface ? root : playerProperties();
            reply << QVariant::fromValue(QDBusVariant(all.value(arguments.value(1).toString())));
        } else if (member == QLatin1String("PlayPause")) {
            setStatus(status == QLatin1String("Playing") ? QStringLiteral("Paused") : QStringLiteral("Playing"));
        } else if (member == QLatin1String("Play") || member == QLatin1String("Pause")) {
            setStatus(member == QLatin1String("Play") ? QStringLiteral("Playing") : QStringLiteral("Paused"));
        } else if (member == QLatin1String("SetPosition")) {
            positionMicros = arguments.value(1).toLongLong();
            playingFor.restart();
            auto seeked = QDBusMessage::createSignal(path, playerInterface, QStringLiteral("Seeked"));
            seeked << QVariant::fromValue(positionMicros);
            connection.send(seeked);
        }
        // Next, Previous, Raise and the rest are only printed.
        connection.send(reply);
        return true;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("name"), QStringLiteral("the last part of the bus name"));
    const QCommandLineOption identity(QStringLiteral("identity"), {}, QStringLiteral("text"));
    const QCommandLineOption desktopEntry(QStringLiteral("desktop-entry"), {}, QStringLiteral("text"));
    const QCommandLineOption title(QStringLiteral("title"), {}, QStringLiteral("text"), QStringLiteral("Test Tone"));
    const QCommandLineOption artist(QStringLiteral("artist"), {}, QStringLiteral("text"));
    const QCommandLineOption length(QStringLiteral("length"), {}, QStringLiteral("seconds"), QStringLiteral("180"));
    const QCommandLineOption art(QStringLiteral("art"), {}, QStringLiteral("url"));
    const QCommandLineOption status(QStringLiteral("status"), {}, QStringLiteral("state"), QStringLiteral("Playing"));
    const QCommandLineOption flood(QStringLiteral("flood"), {}, QStringLiteral("per second"), QStringLiteral("0"));
    parser.addOptions({identity, desktopEntry, title, artist, length, art, status, flood});
    parser.process(app);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    Player player;
    player.root = {{QStringLiteral("Identity"), parser.value(identity)},
                   {QStringLiteral("CanRaise"), true},
                   {QStringLiteral("CanQuit"), false}};
    if (parser.isSet(desktopEntry))
        player.root.insert(QStringLiteral("DesktopEntry"), parser.value(desktopEntry));
    const QString baseTitle = parser.value(title);
    player.metadata = {
        {QStringLiteral("mpris:trackid"), QVariant::fromValue(QDBusObjectPath(QStringLiteral("/track/1")))},
        {QStringLiteral("xesam:title"), baseTitle},
        {QStringLiteral("xesam:artist"), parser.values(artist)},
        {QStringLiteral("mpris:length"), static_cast<qint64>(parser.value(length).toDouble() * 1e6)}};
    if (parser.isSet(art))
        player.metadata.insert(QStringLiteral("mpris:artUrl"), parser.value(art));
    player.status = parser.value(status);
    player.playingFor.start();

    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerVirtualObject(path, &player) ||
        !bus.registerService(QStringLiteral("org.mpris.MediaPlayer2.") + parser.positionalArguments().first())) {
        std::fprintf(stderr, "cannot publish the player on the session bus\n");
        return 1;
    }

    // Flooding: the title changes with every signal, as a player that reports too often.
    QTimer floodTimer;
    int sent = 0;
    if (const double perSecond = parser.value(flood).toDouble(); perSecond > 0) {
        floodTimer.setTimerType(Qt::PreciseTimer);
        floodTimer.setInterval(static_cast<int>(1000.0 / perSecond));
        QObject::connect(&floodTimer, &QTimer::timeout, [&] {
            player.metadata.insert(QStringLiteral("xesam:title"), baseTitle + QLatin1Char(' ') + QString::number(++sent));
            player.changed({{QStringLiteral("Metadata"), player.metadata}});
        });
        floodTimer.start();
    }
    return app.exec();
}
