#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/SoundServer.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>

using namespace kelvane::test;

namespace {
QJsonValue indicator() { return notch("M1")["indicator"]; }
void press(const char* key) { run("xdotool", {"key", key}); }

// A backlight folder at half of a hundred steps, which the agent is told to use; its path.
QString makeBacklight(const TemporaryHome& home, ScopedEnvironment& env)
{
    const QString backlight = home.path() + "/backlight/panel";
    QDir().mkpath(backlight);
    for (const auto& [name, value] : {std::pair{"brightness", "50"}, {"max_brightness", "100"}}) {
        QFile file(backlight + "/" + name);
        if (file.open(QIODevice::WriteOnly))
            file.write(value);
    }
    env.set("KELVANE_BACKLIGHT_ROOT", (home.path() + "/backlight").toUtf8());
    return backlight;
}

// The live-activities settings with the key monitoring on or off, as the settings window writes them.
QString keyMonitoring(bool on)
{
    QString settings = ctl({"settings", "get", "liveActivitiesSettings"}).out.trimmed();
    settings.replace(on ? "\"enableHUDReplacement\":false" : "\"enableHUDReplacement\":true",
                     on ? "\"enableHUDReplacement\":true" : "\"enableHUDReplacement\":false");
    return settings;
}
int setKeyMonitoring(bool on) { return ctl({"settings", "set", "liveActivitiesSettings", keyMonitoring(on)}).status; }
} // namespace

// With the indicator turned on, two volume presses step the real server's level once each and
// the notch shows that level until a second after the last press; a key that is not watched does
// nothing; a key another client grabs still reaches it, and is then left to it (shown, not
// stepped again); the brightness keys read and step the backlight folder.
TEST(VolumeKeysAgent, ShowsTheServersLevelForASecondAfterTheLastPress)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    REQUIRE_PULSEAUDIO();
    SoundServer sound(home.path() + "/runtime");
    ASSERT_TRUE(SoundServer::ready());
    ASSERT_EQ(run("pactl", {"set-sink-volume", "@DEFAULT_SINK@", "50%"}).status, 0);
    const QString backlight = makeBacklight(home, env);

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    ASSERT_EQ(setKeyMonitoring(true), 0);
    ASSERT_TRUE(waitUntil([&] { return agent.readOutput().contains("Media key monitoring started"); }));

    press("XF86AudioRaiseVolume");
    QThread::msleep(300);
    press("XF86AudioRaiseVolume");
    QElapsedTimer sinceLast;
    sinceLast.start();
    ASSERT_TRUE(waitUntil([] { return std::abs(indicator()["value"].toDouble() - 0.6) < 0.005; }, 3000))
        << QJsonDocument(notch("M1")).toJson().toStdString();
    EXPECT_NEAR(SoundServer::level(), 0.6, 0.005);
    EXPECT_EQ(indicator()["kind"].toString(), "volume");
    EXPECT_TRUE(notch("M2")["indicator"].isNull());
    // Up a second after the second press, then gone.
    while (sinceLast.elapsed() < 700) {
        EXPECT_FALSE(indicator().isNull()) << sinceLast.elapsed();
        QThread::msleep(100);
    }
    EXPECT_TRUE(waitUntil([] { return indicator().isNull(); }, 2000));

    // Kept as a picture: the symbol left of the camera, the level bar right of it, in white. The
    // level is stepped down and up again to show it; a loaded machine may draw it late or take
    // its picture after it went, so it is looked at until seen, and shown again if gone.
    QDir().mkpath(KELVANE_ARTIFACTS);
    const QString shot = QStringLiteral(KELVANE_ARTIFACTS) + "/face-indicator.png";
    const QJsonObject window = notch("M1")["window"].toObject();
    const int centre = window["x"].toInt() + window["width"].toInt() / 2;
    int symbol = 0, bar = 0;
    waitUntil([&] {
        if (indicator().isNull()) {
            press("XF86AudioLowerVolume");
            press("XF86AudioRaiseVolume");
            waitUntil([] { return !indicator().isNull(); }, 1000);
        }
        XvfbServer::current()->run("import", {"-window", "root", shot});
        const QImage picture(shot);
        const auto ink = [&](int from, int to) {
            int bright = 0;
            for (int y = 0; y < 40 && y < picture.height(); ++y)
                for (int x = from; x < to && x < picture.width(); ++x)
                    bright += qGray(picture.pixel(x, y)) > 200;
            return bright;
        };
        symbol = ink(centre - 200, centre);
        bar = ink(centre, centre + 200);
        return symbol > 3 && bar > 10;
    }, 8000);
    EXPECT_GT(symbol, 3);
    EXPECT_GT(bar, 10);
    EXPECT_TRUE(waitUntil([] { return indicator().isNull(); }, 2000));
    EXPECT_NEAR(SoundServer::level(), 0.6, 0.005);

    press("XF86AudioPlay");
    QThread::msleep(500);
    EXPECT_TRUE(indicator().isNull());
    EXPECT_NEAR(SoundServer::level(), 0.6, 0.005);

    QProcess grabber;
    grabber.start(KELVANE_KEY_GRABBER, {"XF86AudioRaiseVolume"});
    ASSERT_TRUE(grabber.waitForReadyRead(5000));
    ASSERT_EQ(grabber.readLine().trimmed(), "grabbed");
    press("XF86AudioRaiseVolume");
    EXPECT_TRUE(waitUntil([&] { return grabber.canReadLine() || grabber.waitForReadyRead(100); }, 3000));
    EXPECT_EQ(grabber.readLine().trimmed(), "pressed");
    EXPECT_TRUE(waitUntil([] { return !indicator().isNull(); }, 3000));
    EXPECT_NEAR(indicator()["value"].toDouble(), 0.6, 0.005);
    EXPECT_NEAR(SoundServer::level(), 0.6, 0.005);
    grabber.kill();
    grabber.waitForFinished();

    press("XF86MonBrightnessUp");
    EXPECT_TRUE(waitUntil([] { return indicator()["kind"].toString() == "brightness"; }, 3000));
    EXPECT_NEAR(indicator()["value"].toDouble(), 0.55, 1e-9);
    QFile level(backlight + "/brightness");
    ASSERT_TRUE(level.open(QIODevice::ReadOnly));
    EXPECT_EQ(level.readAll().trimmed(), "55");
}

// While another client grabs the brightness key and a burst of presses is still queued, turning
// the key monitoring off ends within a second, and quitting within two (the presses already handed
// to the main thread are handled before the quit).
TEST(VolumeKeysAgent, StopsAndQuitsWithinASecondUnderABurstOfGrabbedPresses)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    makeBacklight(home, env);
    // A second; a build that checks every memory access (the sanitizer run) gets three. A freeze
    // lasts until the calls' own time-outs, many seconds.
    const int bound = qEnvironmentVariableIsSet("ASAN_OPTIONS") ? 3000 : 1000;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    QProcess grabber;
    grabber.start(KELVANE_KEY_GRABBER, {"XF86MonBrightnessUp"});
    ASSERT_TRUE(grabber.waitForReadyRead(5000));
    ASSERT_EQ(grabber.readLine().trimmed(), "grabbed");

    const auto burst = [] {
        auto presses = std::make_unique<QProcess>();
        presses->start("xdotool", {"key", "--repeat", "400", "--delay", "1", "XF86MonBrightnessUp"});
        presses->waitForStarted();
        QThread::msleep(300);
        return presses;
    };
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(setKeyMonitoring(true), 0);
        ASSERT_TRUE(waitUntil([&] { return agent.readOutput().count("Media key monitoring started") > round; }));
        const QString off = keyMonitoring(false);
        const auto presses = burst();
        QElapsedTimer stopping;
        stopping.start();
        EXPECT_EQ(ctl({"settings", "set", "liveActivitiesSettings", off}).status, 0);
        EXPECT_EQ(ctl({"state"}).status, 0);
        EXPECT_LT(stopping.elapsed(), bound) << "round " << round;
        presses->kill();
        presses->waitForFinished();
    }

    ASSERT_EQ(setKeyMonitoring(true), 0);
    const auto presses = burst();
    QElapsedTimer quitting;
    quitting.start();
    ctl({"quit"});
    // The presses that reached the main thread before the request to quit are handled first, each
    // a step of the level: about a second for this burst, which the quit may take on top of its own,
    // and as much again on a machine whose two cores run other agents' tests beside it.
    EXPECT_TRUE(agent.process.state() == QProcess::NotRunning || agent.process.waitForFinished(3 * bound));
    EXPECT_LT(quitting.elapsed(), 3 * bound);
    presses->kill();
    presses->waitForFinished();
    grabber.kill();
    grabber.waitForFinished();
}

namespace {
int indicatorsShown() { return ctlJson({"state"})["indicatorsShown"].toInt(-1); }
// Once no indicator shows: how many show while `act` runs and `ms` after.
int shownBy(const std::function<void()>& act, int ms)
{
    waitUntil([] { return indicator().isNull(); }, 3000);
    const int before = indicatorsShown();
    act();
    QThread::msleep(static_cast<unsigned long>(ms));
    return indicatorsShown() - before;
}
} // namespace

// Levels changed without a key show as a key would: the output's volume and mute set from outside
// on the real server, the backlight's file written; never the levels found at start, a stream's own
// volume, nor a change that the key the agent saw already announced.
TEST(LevelChangesAgent, ShowWhatTheUserChangedAndNothingElse)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    REQUIRE_PULSEAUDIO();
    SoundServer sound(home.path() + "/runtime");
    ASSERT_TRUE(SoundServer::ready());
    ASSERT_EQ(run("pactl", {"set-sink-volume", "@DEFAULT_SINK@", "50%"}).status, 0);
    const QString backlight = makeBacklight(home, env);
    QProcess stream;
    stream.setStandardInputFile("/dev/zero");
    stream.start("pacat", {"--playback", "--client-name=stream"});
    ASSERT_TRUE(waitUntil([] { return run("pactl", {"list", "short", "sink-inputs"}).out.contains("protocol-native"); }));
    const QString input = run("pactl", {"list", "short", "sink-inputs"}).out.section('\t', 0, 0);

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    const auto startFollowing = [&] {
        ASSERT_EQ(setKeyMonitoring(true), 0);
        ASSERT_TRUE(waitUntil([&] { return agent.readOutput().contains("[HUD] The indicator shows on the volume and brightness keys"); }))
            << agent.output.toStdString();
    };
    EXPECT_EQ(shownBy(startFollowing, 1000), 0) << "levels found at start";

    struct Change {
        const char* what;
        QStringList command; // empty: the backlight's file
        QString kind;
        double value;
        QString icon;
    };
    const QList<Change> changes{
        {"volume", {"set-sink-volume", "@DEFAULT_SINK@", "70%"}, "volume", 0.7, "audio-volume-high"},
        {"mute", {"set-sink-mute", "@DEFAULT_SINK@", "1"}, "volume", 0.0, "audio-volume-muted"},
        {"unmute", {"set-sink-mute", "@DEFAULT_SINK@", "0"}, "volume", 0.7, "audio-volume-high"},
        {"backlight", {}, "brightness", 0.8, "display-brightness"},
    };
    for (const Change& change : changes) {
        const int before = indicatorsShown();
        if (change.command.isEmpty()) {
            QFile file(backlight + "/brightness");
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write("80\n");
        } else {
            ASSERT_EQ(run("pactl", change.command).status, 0);
        }
        EXPECT_TRUE(waitUntil([&] { return indicator()["kind"].toString() == change.kind &&
                                           std::abs(indicator()["value"].toDouble() - change.value) < 0.005; }, 3000))
            << change.what << ": " << QJsonDocument(notch("M1")).toJson().toStdString();
        EXPECT_EQ(indicator()["icon"].toString(), change.icon) << change.what;
        EXPECT_EQ(indicatorsShown() - before, 1) << change.what;
    }

    EXPECT_EQ(shownBy([&] { run("pactl", {"set-sink-input-volume", input, "30%"}); }, 1000), 0) << "a stream's own volume";
    EXPECT_EQ(shownBy([] { run("pactl", {"set-sink-volume", "@DEFAULT_SINK@", "70%"}); }, 1000), 0)
        << "the level it already had";
    // A key the agent sees, and the change it makes: one indicator.
    EXPECT_EQ(shownBy([] { press("XF86AudioLowerVolume"); }, 1500), 1) << "the key's change shown twice";
    EXPECT_NEAR(SoundServer::level(), 0.65, 0.005);

    stream.kill();
    stream.waitForFinished();
}
