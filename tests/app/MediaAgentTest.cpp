#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QJsonArray>
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

// What the player itself says it is doing.
QString playerStatus()
{
    return run("busctl", {"--user", "get-property", "org.mpris.MediaPlayer2.mpv", "/org/mpris/MediaPlayer2",
                          "org.mpris.MediaPlayer2.Player", "PlaybackStatus"})
        .out.trimmed();
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
    EXPECT_TRUE(waitUntil([] { return notch("M1")["topBarText"].toString().isEmpty(); }, 3000));

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
