#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane::test;

namespace {
// A real sound server for the test alone: PulseAudio with a null output, in its own runtime folder.
struct SoundServer {
    QProcess server;
    explicit SoundServer(ScopedEnvironment& env, const QString& runtime)
    {
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        env.set("XDG_RUNTIME_DIR", runtime.toUtf8());
        server.start("pulseaudio", {"--daemonize=no", "-n", "--exit-idle-time=-1", "--disallow-exit",
                                    "-L", "module-null-sink", "-L", "module-native-protocol-unix"});
    }
    ~SoundServer()
    {
        server.kill();
        server.waitForFinished(3000);
    }
    static bool ready() { return run("pactl", {"info"}).status == 0; }
    // The output's level from the server itself, 0 to 1.
    static double level()
    {
        const auto match = QRegularExpression("(\\d+)%").match(run("pactl", {"get-sink-volume", "@DEFAULT_SINK@"}).out);
        return match.hasMatch() ? match.captured(1).toDouble() / 100 : -1;
    }
};

QJsonValue indicator() { return notch("M1")["indicator"]; }
void press(const char* key) { run("xdotool", {"key", key}); }
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
    SoundServer sound(env, home.path() + "/runtime");
    ASSERT_TRUE(waitUntil([] { return SoundServer::ready(); }, 10000)) << sound.server.readAllStandardError().toStdString();
    ASSERT_EQ(run("pactl", {"set-sink-volume", "@DEFAULT_SINK@", "50%"}).status, 0);
    const QString backlight = home.path() + "/backlight/panel";
    QDir().mkpath(backlight);
    for (const auto& [name, value] : {std::pair{"brightness", "50"}, {"max_brightness", "100"}}) {
        QFile file(backlight + "/" + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(value);
    }
    env.set("KELVANE_BACKLIGHT_ROOT", (home.path() + "/backlight").toUtf8());

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    QString settings = ctl({"settings", "get", "liveActivitiesSettings"}).out.trimmed();
    settings.replace("\"enableHUDReplacement\":false", "\"enableHUDReplacement\":true");
    ASSERT_EQ(ctl({"settings", "set", "liveActivitiesSettings", settings}).status, 0);
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
