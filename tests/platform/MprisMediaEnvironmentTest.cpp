#include "platform/linux/MprisMediaEnvironment.h"

#include "support/Polling.h"
#include "support/SessionBus.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

#include <set>

#include <csignal>

using namespace kelvane;
using kelvane::test::SessionBus;
using kelvane::test::waitUntil;

namespace {
// A player on the test's bus that prints each method called on it.
struct TestPlayer {
    QProcess process;
    QString output;
    explicit TestPlayer(const QStringList& arguments)
    {
        process.start(KELVANE_MPRIS_TEST_PLAYER, arguments);
        const QString name = "org.mpris.MediaPlayer2." + arguments.first();
        waitUntil([&] { return QDBusConnection::sessionBus().interface()->isServiceRegistered(name).value(); });
    }
    ~TestPlayer()
    {
        process.kill();
        process.waitForFinished();
    }
    bool wasCalled(const QString& method)
    {
        return waitUntil([&] { return calls().contains(method); });
    }
    // The player methods called so far, property reads left out.
    QStringList calls()
    {
        output += QString::fromUtf8(process.readAllStandardOutput());
        QStringList methods = output.split('\n', Qt::SkipEmptyParts);
        methods.removeIf([](const QString& m) { return m == "Get" || m == "GetAll"; });
        return methods;
    }
};

struct Listener {
    std::vector<TrackInfo> records;
    bool ended = false;
    std::unique_ptr<NowPlayingController> controller;
    explicit Listener(MediaEnvironment& environment)
        : controller(environment.makeController())
    {
        controller->onTrackInfoReceived = [this](const TrackInfo& info) { records.push_back(info); };
        controller->onListenerTerminated = [this] { ended = true; };
        controller->startListening();
    }
    TrackInfo::Payload last() const
    {
        return records.empty() || !records.back().payload ? TrackInfo::Payload{} : *records.back().payload;
    }
    bool waitFor(const std::function<bool(const TrackInfo::Payload&)>& condition)
    {
        return waitUntil([&] { return !records.empty() && records.back().payload && condition(*records.back().payload); });
    }
};
} // namespace

// Two players on the bus: the registry lists both under their applications' identifiers, the
// listener follows the playing one (artwork included) and moves to the other when it starts,
// commands and pinned-player scripts reach the player they name, and players leaving and coming
// are noticed.
TEST(MprisMediaEnvironment, FollowsCommandsAndWatchesRealPlayersOnTheBus)
{
    SessionBus bus;
    QTemporaryDir dir;
    const QString art = dir.filePath("art.png");
    QImage picture(800, 600, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(art));
    TestPlayer spotify({"spotify", "--identity", "Spotify", "--desktop-entry", "spotify", "--status", "Paused",
                        "--title", "Song"});
    TestPlayer vlc({"vlc.instance42", "--identity", "VLC media player", "--title", "Clip", "--artist", "A",
                    "--artist", "B", "--length", "90", "--art", QUrl::fromLocalFile(art).toString()});

    // logind's sleep signal, from a connection that owns logind's name on the test's bus.
    QDBusConnection login = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "login1");
    ASSERT_TRUE(login.registerService("org.freedesktop.login1"));
    MprisMediaEnvironment environment(QDBusConnection::sessionBus(), QDBusConnection::sessionBus());
    QStringList launched;
    int wakes = 0;
    environment.onApplicationLaunched = [&](const QString& id) { launched << id; };
    environment.onWake = [&] { ++wakes; };
    Listener listener(environment);

    ASSERT_TRUE(listener.waitFor([](const auto& payload) { return !payload.artwork.isNull(); }));
    const TrackInfo::Payload clip = listener.last();
    EXPECT_EQ(clip.title, "Clip");
    EXPECT_EQ(clip.artist, "A, B");
    EXPECT_EQ(clip.applicationName, "VLC media player");
    EXPECT_EQ(clip.bundleIdentifier, "org.videolan.vlc");
    EXPECT_EQ(clip.durationMicros, 90e6);
    EXPECT_EQ(clip.isPlaying, true);
    EXPECT_EQ(clip.artwork.size(), QSize(512, 384));

    const MediaRemoteFunctions functions = *environment.loadMediaRemote();
    std::set<std::tuple<QString, QString, std::optional<qint32>>> clients;
    for (const auto& client : functions.getClients())
        clients.insert({functions.clientBundleID(client), functions.clientName(client), functions.clientPID(client)});
    EXPECT_EQ(clients, (std::set<std::tuple<QString, QString, std::optional<qint32>>>{
                           {"com.spotify.client", "Spotify", qint32(spotify.process.processId())},
                           {"org.videolan.vlc", "VLC media player", qint32(vlc.process.processId())}}));

    EXPECT_EQ(environment.runScript("tell application \"Spotify\" to next track"), std::nullopt);
    EXPECT_TRUE(spotify.wasCalled("Next"));
    EXPECT_EQ(environment.runScript("tell application \"Music\" to playpause"),
              "no player \"Music\" on the session bus");
    EXPECT_TRUE(functions.sendCommandToApp(MediaCommand::togglePlayPause, "org.videolan.vlc"));
    EXPECT_TRUE(listener.waitFor([](const auto& payload) { return payload.isPlaying == false; }));

    EXPECT_TRUE(functions.sendCommandToApp(MediaCommand::play, "com.spotify.client"));
    EXPECT_TRUE(listener.waitFor([](const auto& payload) { return payload.title == "Song" && payload.isPlaying; }));
    EXPECT_TRUE(functions.setElapsedTime(30));
    EXPECT_TRUE(spotify.wasCalled("SetPosition"));
    EXPECT_TRUE(listener.waitFor([](const auto& payload) {
        return payload.elapsedTimeMicros >= 30e6 && payload.elapsedTimeMicros < 31e6;
    }));

    EXPECT_TRUE(environment.isApplicationRunning("Spotify"));
    spotify.process.kill();
    EXPECT_TRUE(waitUntil([&] { return listener.ended; }));
    EXPECT_FALSE(environment.isApplicationRunning("Spotify"));
    EXPECT_TRUE(environment.isApplicationRunning("VLC media player"));

    EXPECT_TRUE(launched.isEmpty());
    TestPlayer late({"late", "--identity", "Late"});
    EXPECT_TRUE(waitUntil([&] { return launched == QStringList{"late"}; })) << launched.join(',').toStdString();

    // Each resume is a wake; going to sleep is not.
    for (const bool goingToSleep : {true, false, false})
        login.send(QDBusMessage::createSignal("/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                              "PrepareForSleep")
                   << goingToSleep);
    EXPECT_TRUE(waitUntil([&] { return wakes == 2; }));
}

// Two instances of one application on the bus: the listener follows the one that came to its
// state last and chooses again whenever any player changes (a paused instance gives way to the
// other that still plays), commands, seeks and the system's commands reach the followed instance
// alone, a pin is followed whenever that player is there, and asking whether a player runs does
// not wait on the bus.
TEST(MprisMediaEnvironment, ChoosesAndCommandsOneInstanceAmongTwins)
{
    SessionBus bus;
    TestPlayer first({"twin", "--identity", "Twin", "--desktop-entry", "twin", "--title", "One"});
    MprisMediaEnvironment environment(QDBusConnection::sessionBus(), QDBusConnection(QString()));
    Listener listener(environment);
    ASSERT_TRUE(listener.waitFor([](const auto& payload) { return payload.title == "One"; }));
    TestPlayer second({"twin.instance2", "--identity", "Twin", "--desktop-entry", "twin", "--title", "Two"});
    const QString one = "org.mpris.MediaPlayer2.twin", two = "org.mpris.MediaPlayer2.twin.instance2";
    ASSERT_TRUE(listener.waitFor([&](const auto& payload) { return payload.clientID == two; }));
    EXPECT_EQ(listener.last().bundleIdentifier, "twin");
    EXPECT_EQ(listener.last().title, "Two");

    const MediaRemoteFunctions functions = *environment.loadMediaRemote();
    std::set<QString> clients;
    for (const auto& client : functions.getClients())
        clients.insert(functions.clientID(client));
    EXPECT_EQ(clients, (std::set<QString>{one, two}));

    // The followed instance pauses; the other, still playing, is followed without a word from it.
    EXPECT_TRUE(functions.sendCommandToApp(MediaCommand::pause, two));
    EXPECT_TRUE(listener.waitFor([&](const auto& payload) { return payload.clientID == one && payload.isPlaying; }));
    EXPECT_TRUE(functions.sendCommand(MediaCommand::nextTrack));
    EXPECT_TRUE(first.wasCalled("Next"));

    // Pinned, the paused instance is followed while the other plays, and is the one a seek moves;
    // let go, the choice is back.
    listener.controller->setPinnedClient(two);
    EXPECT_TRUE(listener.waitFor([&](const auto& payload) { return payload.clientID == two; }));
    EXPECT_EQ(listener.last().isPlaying, false);
    EXPECT_EQ(environment.followed(), two);
    EXPECT_TRUE(functions.setElapsedTime(30));
    EXPECT_TRUE(second.wasCalled("SetPosition"));
    EXPECT_EQ(first.calls(), QStringList{"Next"});
    EXPECT_EQ(second.calls(), (QStringList{"Pause", "SetPosition"}));
    listener.controller->setPinnedClient("no such player");
    EXPECT_TRUE(listener.waitFor([&](const auto& payload) { return payload.clientID == one; }));
    // Of two paused instances, the one paused last.
    EXPECT_TRUE(functions.sendCommandToApp(MediaCommand::pause, one));
    EXPECT_TRUE(listener.waitFor([&](const auto& payload) { return payload.isPlaying == false; }));
    EXPECT_EQ(listener.last().clientID, one);

    // With the bus stopped, whether a player runs is still answered at once.
    ::kill(static_cast<pid_t>(bus.pid()), SIGSTOP);
    QElapsedTimer answered;
    answered.start();
    EXPECT_TRUE(environment.isApplicationRunning(two));
    EXPECT_TRUE(environment.isApplicationRunning("Twin"));
    EXPECT_FALSE(environment.isApplicationRunning("Spotify"));
    EXPECT_LT(answered.elapsed(), 100);
    ::kill(static_cast<pid_t>(bus.pid()), SIGCONT);
}
