#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane::test;

namespace {
// mpv with its MPRIS plugin, on the test's bus, playing to no audio device.
struct Player {
    QProcess process;
    explicit Player(const QString& file)
    {
        process.start("mpv", {"--no-video", "--ao=null", "--no-terminal", file});
    }
    ~Player()
    {
        process.kill();
        process.waitForFinished();
    }
};

// What a player itself says: its PlaybackStatus ("s \"Playing\"") or another of its properties.
QString playerProperty(const QString& busName = "org.mpris.MediaPlayer2.mpv", const QString& property = "PlaybackStatus")
{
    return run("busctl", {"--user", "get-property", busName, "/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2.Player",
                          property})
        .out.trimmed();
}
QString playerStatus(const QString& busName = "org.mpris.MediaPlayer2.mpv") { return playerProperty(busName); }
// The player's own position, in seconds.
double playerPosition(const QString& busName)
{
    return playerProperty(busName, "Position").section(' ', 1).toDouble() / 1e6;
}

// Calls a player method as the player's own buttons would.
void playerCall(const QString& busName, const QString& method)
{
    run("busctl", {"--user", "call", busName, "/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2.Player", method});
}

// A tone of a minute, tagged with a title.
QString tone(const QTemporaryDir& dir, const QString& title)
{
    const QString file = dir.filePath(title + ".flac");
    run("sox", {"-n", "-r", "44100", "-c", "2", "--comment", "TITLE=" + title, file, "synth", "60", "sine", "440"});
    return file;
}

QJsonObject media() { return ctlJson({"media"}); }
} // namespace

// A real player is followed from start to crash: its title in the top bar, its length, play and
// pause sent to it, its disappearance, and the next player found without the agent being touched.
TEST(MediaAgent, FollowsARealPlayerThroughPauseCrashAndReplacement)
{
    TemporaryHome home;
    SessionBus bus;
    QTemporaryDir music;
    const QString tone = music.filePath("tone.flac");
    ASSERT_EQ(run("sox", {"-n", "-r", "44100", "-c", "2", "--comment", "TITLE=Probe Tone", "--add-comment",
                          "ARTIST=Sox Synth", "--add-comment", "ALBUM=Probe Album", tone, "synth", "60", "sine", "440"})
                  .status,
              0);
    auto player = std::make_unique<Player>(tone);
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));

    ASSERT_TRUE(waitUntil([] { return notch("M1")["topBarText"].toString() == "Probe Tone"; }, 10000))
        << notch("M1")["topBarText"].toString().toStdString();
    QJsonObject now = media();
    EXPECT_NEAR(now["duration"].toDouble(), 60.0, 0.1);
    EXPECT_TRUE(now["isPlaying"].toBool());
    EXPECT_EQ(now["track"].toObject()["artist"].toString(), "Sox Synth");
    EXPECT_EQ(now["track"].toObject()["album"].toString(), "Probe Album");
    const QJsonObject active = now["activeSource"].toObject();
    EXPECT_EQ(active["bundleIdentifier"].toString(), "mpv");
    EXPECT_EQ(active["pid"].toInteger(), player->process.processId());
    EXPECT_EQ(ctlJson({"activities"})["selected"].toString(), "media");

    const QString artifacts = KELVANE_ARTIFACTS;
    QDir().mkpath(artifacts);
    ctl({"open", "tuckle"});
    QThread::msleep(800);
    QString ignored;
    XvfbServer::current()->run("import", {"-window", "root", artifacts + "/media-panel.png"}, &ignored);
    ctl({"close"});

    ASSERT_EQ(ctl({"media", "play-pause"}).status, 0);
    EXPECT_TRUE(waitUntil([] { return playerStatus() == "s \"Paused\""; }, 5000)) << playerStatus().toStdString();
    EXPECT_TRUE(waitUntil([] { return !media()["isPlaying"].toBool(); }, 5000));
    const double pausedAt = media()["currentElapsedTime"].toDouble();
    EXPECT_GT(pausedAt, 0.0);
    ASSERT_EQ(ctl({"media", "play-pause"}).status, 0);
    EXPECT_TRUE(waitUntil([] { return playerStatus() == "s \"Playing\""; }, 5000)) << playerStatus().toStdString();

    const Result unknown = ctl({"media", "louder"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.err, "kelvanectl: Unknown media command \"louder\": use play-pause, next, previous, "
                           "pause-and-dismiss, pin SOURCE or unpin.\n");

    player.reset();
    EXPECT_TRUE(waitUntil([] { return media()["track"].isNull(); }, 5000));
    EXPECT_TRUE(media()["sources"].toArray().isEmpty());
    EXPECT_TRUE(waitUntil([] { return notch("M1")["topBarText"].toString().isEmpty(); }, 3000))
        << notch("M1")["topBarText"].toString().toStdString();

    player = std::make_unique<Player>(tone);
    // The new player is found as it appears and taken up afresh half a second later.
    const qint64 pid = player->process.processId();
    EXPECT_TRUE(waitUntil(
        [pid] {
            const QJsonObject latest = media();
            return latest["track"].toObject()["title"].toString() == "Probe Tone" &&
                   latest["activeSource"].toObject()["pid"].toInteger() == pid;
        },
        10000));
    EXPECT_EQ(agent.process.state(), QProcess::Running);
}

// Two instances of one player and a third player, all real on the session bus: the notch follows
// the instance that came to its state last and chooses again when it pauses, commands go to the
// instance shown and no other, the shown time stays with the player's own Position through pause
// and play, and a pinned source (by the user, or as the preferred player) is shown while another
// plays.
TEST(MediaAgent, FollowsAndCommandsTheRightOneOfSeveralPlayers)
{
    TemporaryHome home;
    SessionBus bus;
    QTemporaryDir music;
    QProcess spotify;
    spotify.start(KELVANE_MPRIS_TEST_PLAYER, {"spotify", "--identity", "Spotify", "--desktop-entry", "spotify",
                                              "--title", "Pinned Song", "--status", "Paused"});
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    Player alpha(tone(music, "Alpha"));
    const QString alphaBus = "org.mpris.MediaPlayer2.mpv";
    ASSERT_TRUE(waitUntil([&] { return playerStatus(alphaBus) == "s \"Playing\""; }, 10000));
    Player beta(tone(music, "Beta"));
    const QString betaBus = "org.mpris.MediaPlayer2.mpv.instance" + QString::number(beta.process.processId());
    ASSERT_TRUE(waitUntil([&] { return playerStatus(betaBus) == "s \"Playing\""; }, 10000)) << betaBus.toStdString();

    const auto shows = [](const QString& title, const QString& client) {
        return waitUntil(
            [&] {
                const QJsonObject now = media();
                return now["track"].toObject()["title"].toString() == title &&
                       now["activeSource"].toObject()["clientID"].toString() == client;
            },
            8000);
    };
    // Both instances play; the one that started last is shown, and is the active source.
    ASSERT_TRUE(shows("Beta", betaBus)) << QJsonDocument(media()).toJson().toStdString();
    EXPECT_EQ(media()["activeSource"].toObject()["pid"].toInteger(), beta.process.processId());
    EXPECT_EQ(media()["sources"].toArray().size(), 3);

    // Play/pause reaches the instance shown; the other, still playing, is shown next.
    ASSERT_EQ(ctl({"media", "play-pause"}).status, 0);
    EXPECT_TRUE(waitUntil([&] { return playerStatus(betaBus) == "s \"Paused\""; }, 5000));
    EXPECT_EQ(playerStatus(alphaBus), "s \"Playing\"");
    EXPECT_TRUE(shows("Alpha", alphaBus)) << QJsonDocument(media()).toJson().toStdString();
    EXPECT_TRUE(media()["isPlaying"].toBool());

    // Pause, play, and a pause right after a play: the shown time is where the player is.
    const auto inStep = [&] {
        const double before = playerPosition(alphaBus);
        const double shown = media()["currentElapsedTime"].toDouble();
        const double after = playerPosition(alphaBus);
        EXPECT_GE(shown, before - 0.1);
        EXPECT_LE(shown, after + 0.1);
        return shown >= before - 0.1 && shown <= after + 0.1;
    };
    const auto settled = [&](bool playing) {
        EXPECT_TRUE(waitUntil([&] { return media()["isPlaying"].toBool() == playing; }, 5000));
        QThread::msleep(1200);
        return inStep();
    };
    // From the notch, then from the player itself (as its own buttons do), where the play state
    // reaches the notch after the position.
    ASSERT_EQ(ctl({"media", "play-pause"}).status, 0);
    EXPECT_TRUE(settled(false));
    ASSERT_EQ(ctl({"media", "play-pause"}).status, 0);
    EXPECT_TRUE(settled(true));
    for (const QStringList& presses : {QStringList{"Pause", "Play"}, QStringList{"Pause"}, QStringList{"Play", "Pause"},
                                       QStringList{"Play"}}) {
        QThread::msleep(1500);
        for (const QString& method : presses) {
            playerCall(alphaBus, method);
            QThread::msleep(300);
        }
        EXPECT_TRUE(settled(presses.last() == "Play")) << presses.join(' ').toStdString();
    }

    // The user pins the paused instance: it is shown while the other plays, and takes the commands.
    EXPECT_EQ(ctl({"media", "pin", "mpv"}).err.toStdString(),
              QString("kelvanectl: \"mpv\" names 2 sources: pin one of %1, %2.\n").arg(alphaBus, betaBus).toStdString());
    ASSERT_EQ(ctl({"media", "pin", QString::number(beta.process.processId())}).status, 0);
    EXPECT_TRUE(shows("Beta", betaBus));
    EXPECT_EQ(media()["userPinnedClientID"].toString(), betaBus);
    ASSERT_EQ(ctl({"media", "play-pause"}).status, 0);
    EXPECT_TRUE(waitUntil([&] { return playerStatus(betaBus) == "s \"Playing\""; }, 5000));
    EXPECT_EQ(playerStatus(alphaBus), "s \"Playing\"");
    ASSERT_EQ(ctl({"media", "unpin"}).status, 0);
    EXPECT_TRUE(media()["userPinnedClientID"].isNull());

    // The preferred player, started playing before another that keeps playing, is shown.
    playerCall("org.mpris.MediaPlayer2.spotify", "Play");
    QThread::msleep(300);
    playerCall(alphaBus, "Pause");
    EXPECT_TRUE(waitUntil([&] { return playerStatus(alphaBus) == "s \"Paused\""; }, 5000));
    QThread::msleep(300);
    playerCall(alphaBus, "Play");
    EXPECT_TRUE(shows("Alpha", alphaBus)) << QJsonDocument(media()).toJson().toStdString();
    QJsonObject general = QJsonDocument::fromJson(ctl({"settings", "get", "generalSettings"}).out.toUtf8()).object();
    general["preferredMediaSource"] = "com.spotify.client";
    ASSERT_EQ(ctl({"settings", "set", "generalSettings", QJsonDocument(general).toJson(QJsonDocument::Compact)}).status, 0);
    EXPECT_TRUE(shows("Pinned Song", "org.mpris.MediaPlayer2.spotify")) << QJsonDocument(media()).toJson().toStdString();

    ASSERT_EQ(ctl({"media", "pause-and-dismiss"}).status, 0);
    EXPECT_TRUE(waitUntil([] { return ctlJson({"activities"})["selected"].toString() != "media"; }, 3000));
    spotify.kill();
    spotify.waitForFinished();
}
