#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>

using namespace kelvane::test;

namespace {
QStringList settingsWindows() { return XvfbServer::current()->windowGeometries("Kelvane Settings"); }
} // namespace

// A notch on every monitor, following the monitors as they come and go, quiet on standard output.
TEST(Agent, PutsANotchOnEveryMonitorAndFollowsHotPlug)
{
    TemporaryHome home;
    SessionBus bus;
    // A machine without a system bus: the battery and Bluetooth monitors each say so in a line.
    ScopedEnvironment noSystemBus;
    noSystemBus.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system_bus_socket");
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    // 620x178: the default 550x157 panel with room for the liveliest spring's overshoot.
    EXPECT_EQ(notchWindows(), (QStringList{"620x178+1842+-1", "620x178+446+-1"}));

    // The windows are built again as a whole: while that goes on, an old window may be seen beside
    // or without the new ones, so the end is waited for, not a number of windows.
    const auto settlesOn = [](const QStringList& windows) {
        return waitUntil([&] { return notchWindows() == windows; }, 10000);
    };
    ASSERT_TRUE(XvfbServer::current()->removeMonitor("M2"));
    EXPECT_TRUE(settlesOn({"620x178+446+-1"})) << notchWindows().join(' ').toStdString();

    ASSERT_TRUE(XvfbServer::current()->addMonitor({"M3", QRect(1512, 0, 1024, 768), QSize(270, 203), false}));
    EXPECT_TRUE(settlesOn({"620x178+1714+-1", "620x178+446+-1"})) << notchWindows().join(' ').toStdString();

    // No task bar or pager entry, on every workspace.
    QString ids, hints;
    XvfbServer::current()->run("xdotool", {"search", "--name", "Kelvane Notch"}, &ids);
    XvfbServer::current()->run("xprop", {"-id", ids.section('\n', 0, 0), "_NET_WM_STATE"}, &hints);
    EXPECT_TRUE(hints.contains("_NET_WM_STATE_SKIP_TASKBAR, _NET_WM_STATE_SKIP_PAGER, _NET_WM_STATE_STICKY"))
        << hints;

    // One line says what draws the notches: in software, as the virtual server's OpenGL is Mesa's,
    // drawn by the processor (or, without a graphics device, not even looked at).
    EXPECT_EQ(agent.process.state(), QProcess::Running);
    const QStringList lines = agent.readOutput().split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4) << lines.join('\n').toStdString();
    QStringList missing = lines.mid(1);
    missing.sort();
    EXPECT_EQ(missing, (QStringList{"[BluetoothManager] No Bluetooth device is shown: there is no system bus.",
                                    "[DesktopColorScheme] No desktop appearance setting "
                                    "(org.freedesktop.DBus.Error.ServiceUnknown): light colours.",
                                    "[PowerMonitor] No battery is shown: there is no system bus."}));
    EXPECT_TRUE(lines[0].startsWith("[Renderer] Drawing in software: the display's OpenGL (llvmpipe") ||
                lines[0] == "[Renderer] Drawing in software: the machine has no graphics device.")
        << lines[0].toStdString();
}

// Start, a second launch, scripting, and the end: the life of the agent over the session bus.
TEST(Agent, HandsASecondLaunchOverAndEndsCleanlyOnSigterm)
{
    TemporaryHome home;
    SessionBus bus;
    ASSERT_TRUE(bus.isRunning());
    // A machine without a system bus: the battery and Bluetooth monitors each say so in a line.
    ScopedEnvironment noSystemBus;
    noSystemBus.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system_bus_socket");
    const Result absent = ctl({"state"});
    EXPECT_EQ(absent.status, 1);
    EXPECT_EQ(absent.err, "kelvanectl: Kelvane is not running.\n");

    const QString confPath = home.configPath() + "/kelvane/kelvane.conf";
    {
        // An update found by a former run, and a taller tray panel.
        QSettings conf(confPath, QSettings::IniFormat);
        conf.setValue("liveActivitiesSettings",
                      R"({"enabled":true,"hiddenInNonNotchedScreens":false,"inactivityTimeoutInSecs":10,)"
                      R"("enabledLiveActivities":["media","updateAvailable","calendar"],"interactive":true,)"
                      R"("enableQuickPeek":true,"enableHUDReplacement":false,"HUDReplacementShouldShowInAllScreens":false,)"
                      R"("disableColorsOnAudioHUDReplacement":false,"unhideAutomatically":true,"quickPeekEvent":false,)"
                      R"("liveActivitiesHiddenInFullscreen":[]})");
        conf.setValue("traySettings", R"({"size":{"width":{"value":11},"height":{"value":4}}})");
    }
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    for (const QString& geometry : notchWindows())
        EXPECT_TRUE(geometry.startsWith("620x291+")) << geometry;

    const Result second = run(qEnvironmentVariable("KELVANE_BINARY"), {});
    EXPECT_EQ(second.status, 0) << second.out.toStdString();
    EXPECT_TRUE(waitUntil([] { return settingsWindows().size() == 1; }, 5000));
    EXPECT_EQ(notchWindows().size(), 2);

    EXPECT_EQ(ctl({"open", "tray"}).status, 0);
    EXPECT_EQ(notch("M1")["mode"].toString(), "tray");
    EXPECT_EQ(notch("M2")["mode"].toString(), "closed");
    EXPECT_EQ(ctl({"close"}).status, 0);
    EXPECT_EQ(ctl({"hide", "--screen", "M2"}).status, 0);
    EXPECT_EQ(notch("M1")["mode"].toString(), "closed");
    EXPECT_TRUE(notch("M2")["hidden"].toBool());
    EXPECT_EQ(notch("M1")["window"].toObject()["x"].toDouble(), 446);

    const auto live = QJsonDocument::fromJson(ctl({"settings", "get", "liveActivitiesSettings"}).out.toUtf8());
    EXPECT_EQ(live["enabledLiveActivities"].toArray(), (QJsonArray{"media", "calendar"}));

    // Refused writes leave the settings as they were.
    const struct {
        QStringList arguments;
        QString error;
    } refused[] = {
        {{"settings", "get", "nope"}, "kelvanectl: Unknown setting \"nope\".\n"},
        {{"settings", "set", "intro", "tru"}, "kelvanectl: Not JSON (illegal value); nothing was written.\n"},
        {{"settings", "set", "intro", "\"yes\""}, "kelvanectl: The value is not a valid intro; nothing was written.\n"},
        {{"show-settings", "sound"}, "kelvanectl: Unknown settings pane \"sound\": use general, liquid, gestures, "
                                           "tuckle, tray, dropArea, liveActivities, about.\n"},
    };
    for (const auto& r : refused) {
        const Result result = ctl(r.arguments);
        EXPECT_EQ(result.status, 1) << r.arguments.join(' ').toStdString();
        EXPECT_EQ(result.err, r.error);
    }
    EXPECT_EQ(ctl({"settings", "set", "preferredOpenMode", "\"tray\""}).status, 0);

    // A second signal while it ends (an impatient session) changes nothing.
    ::kill(static_cast<pid_t>(agent.process.processId()), SIGTERM);
    ::kill(static_cast<pid_t>(agent.process.processId()), SIGTERM);
    ASSERT_TRUE(agent.process.waitForFinished(10000));
    EXPECT_EQ(agent.process.exitCode(), 0);
    const QStringList lines = agent.readOutput().split('\n', Qt::SkipEmptyParts);
    // On a desktop without the system's pop-up helper there is nothing to give back.
    ASSERT_GE(lines.size(), 5);
    EXPECT_EQ(lines.count("[AppDelegate] SIGTERM received; quitting."), 1) << lines.join('\n').toStdString();
    EXPECT_EQ(lines.last(), "[HUDManager] enableSystemHUD: OSDUIHelper not running, nothing to kill");
    QSettings saved(confPath, QSettings::IniFormat);
    EXPECT_EQ(saved.value("preferredOpenMode").toString(), "tray");
    EXPECT_TRUE(saved.value("migratedFromLegacyBundleIdentifier").toBool());
}

// Bright pixels (text and symbols) in the top bar of the main screen's notch, beside the camera.
int topBarInk(const QString& screenshot)
{
    const QJsonObject window = notch("M1")["window"].toObject();
    // The closed notch, and so its top bar, lies within the top 40 pixels of the window.
    const int closedHeight = 40;
    QString ignored;
    if (XvfbServer::current()->run("import", {"-window", "root", screenshot}, &ignored) != 0)
        return -1;
    const QImage band = QImage(screenshot).copy(window["x"].toInt(), 0, window["width"].toInt(), closedHeight);
    int ink = 0;
    for (int y = 0; y < band.height(); ++y)
        for (int x = 0; x < band.width(); ++x)
            ink += qGray(band.pixel(x, y)) > 128;
    return ink;
}

// A timer started from a script ends in the top bar: announced for four seconds, then gone. A
// saved timer list that cannot be read is dropped and the agent runs on.
TEST(Agent, AnnouncesAnEndedTimerInTheTopBar)
{
    TemporaryHome home;
    SessionBus bus;
    QSettings(home.configPath() + "/kelvane/kelvane.conf", QSettings::IniFormat)
        .setValue("tuckleTimerEntries", QByteArray("[{\"id\": \"not a timer\"}"));
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    EXPECT_EQ(ctl({"timer", "list"}).out, "[\n]\n");
    const QString artifacts = KELVANE_ARTIFACTS;
    ASSERT_TRUE(QDir().mkpath(artifacts));
    EXPECT_EQ(topBarInk(artifacts + "/top-bar-at-rest.png"), 0);

    QElapsedTimer clock;
    clock.start();
    const Result added = ctl({"timer", "add", "Tea", "2s"});
    ASSERT_EQ(added.status, 0) << added.err.toStdString();
    const auto topBar = [] { return notch("M1")["topBarText"].toString(); };
    ASSERT_TRUE(waitUntil([&] { return topBar() == "\"Tea\" ended"; }, 6000));
    const qint64 shownAt = clock.elapsed();
    EXPECT_GE(shownAt, 2000);
    EXPECT_LT(shownAt, 3500);
    // The text fades in over a few frames.
    EXPECT_TRUE(waitUntil([&] { return topBarInk(artifacts + "/top-bar-timer-ended.png") > 50; }, 1000));
    const QJsonObject activities = QJsonDocument::fromJson(ctl({"activities"}).out.toUtf8()).object();
    EXPECT_EQ(activities["selected"].toString(), "timerExpired");

    ASSERT_TRUE(waitUntil([&] { return topBar().isEmpty(); }, 8000));
    const qint64 shownFor = clock.elapsed() - shownAt;
    EXPECT_GE(shownFor, 3300);
    EXPECT_LT(shownFor, 5000);
    EXPECT_TRUE(QJsonDocument::fromJson(ctl({"activities"}).out.toUtf8())["raised"].toArray().isEmpty());
    EXPECT_TRUE(waitUntil([&] { return topBarInk(artifacts + "/top-bar-after.png") == 0; }, 2000));

    const QJsonArray timers = QJsonDocument::fromJson(ctl({"timer", "list"}).out.toUtf8()).array();
    ASSERT_EQ(timers.size(), 1);
    EXPECT_EQ(timers[0].toObject()["state"].toString(), "expired");
    EXPECT_EQ(ctl({"timer", "cancel", timers[0].toObject()["id"].toString().left(8)}).status, 0);
    EXPECT_EQ(agent.process.state(), QProcess::Running);
}

// Without a session bus the agent runs alone and says so once; asked for OpenGL on a display without
// it, it draws in software; when its X server goes away with the session, it still gives the pop-up back on its
// way out.
TEST(Agent, RunsWithoutABusAndEndsWithItsXServer)
{
    TemporaryHome home;
    XvfbServer server(1512, 982);
    ASSERT_TRUE(server.start());
    ScopedEnvironment env;
    env.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    env.set("DISPLAY", server.display().toUtf8());
    env.set("QT_XCB_GL_INTEGRATION", "none");
    env.set("KELVANE_RENDERER", "opengl");
    env.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system_bus_socket");
    RunningAgent agent;
    ASSERT_TRUE(waitUntil([&] { return server.windowGeometries("Kelvane Notch").size() == 1; }, 10000));
    EXPECT_TRUE(waitUntil([&] { return agent.readOutput().count('\n') >= 5; }, 2000));
    EXPECT_EQ(agent.readOutput(), "[AppDelegate] No D-Bus session bus: single instance and scripting are off.\n"
                                  "[Renderer] Drawing in software: the display offers no OpenGL.\n"
                                  "[MediaManager] MediaRemote.framework unavailable — multi-source and seek disabled.\n"
                                  "[PowerMonitor] No battery is shown: there is no system bus.\n"
                                  "[BluetoothManager] No Bluetooth device is shown: there is no system bus.\n");

    server.stop();
    ASSERT_TRUE(agent.process.waitForFinished(10000));
    EXPECT_TRUE(agent.readOutput().endsWith(
        "[HUDManager] enableSystemHUD: OSDUIHelper not running, nothing to kill\n"))
        << agent.output.toStdString();
}

// Asked for its version or its help, either program answers at once and starts nothing: no
// display, no bus, no file written; an option it does not know is an error.
TEST(Agent, AnswersVersionAndHelpWithoutStarting)
{
    TemporaryHome home;
    ScopedEnvironment env;
    env.set("DISPLAY", "");
    env.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    const QString agent = qEnvironmentVariable("KELVANE_BINARY");
    const struct {
        QString program;
        QStringList arguments;
        int status;
        QString out;
        QString err;
    } asked[] = {
        {agent, {"--version"}, 0, "Kelvane " KELVANE_VERSION "\n", ""},
        {agent, {"-v"}, 0, "Kelvane " KELVANE_VERSION "\n", ""},
        {agent, {"--help"}, 0, "Usage: kelvane [OPTION]", ""},
        {agent, {"--frobnicate"}, 2, "", "kelvane: unknown option --frobnicate"},
        {binary("kelvanectl"), {"--version"}, 0, "kelvanectl " KELVANE_VERSION "\n", ""},
    };
    for (const auto& a : asked) {
        const Result result = run(a.program, a.arguments);
        EXPECT_EQ(result.status, a.status) << a.arguments.join(' ').toStdString();
        EXPECT_EQ(result.out.left(a.out.size()), a.out);
        EXPECT_EQ(result.err.left(a.err.size()), a.err);
    }
    EXPECT_TRUE(QDir(home.path() + "/.local/share").isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot));
    EXPECT_TRUE(QDir(home.configPath()).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot));
}

// The very first run introduces Kelvane in the notch, step by step, a click moving it on, and
// shows no change log; the next start, after an update, says what is new in a window of its own
// and does not introduce itself again.
TEST(Agent, IntroducesItselfOnTheFirstRunAndSaysWhatIsNewAfterAnUpdate)
{
    TemporaryHome home;
    SessionBus bus;
    const QString confPath = home.configPath() + "/kelvane/kelvane.conf";
    const auto changeLogWindows = [] { return XvfbServer::current()->windowGeometries("What Is New"); };
    {
        RunningAgent agent(true);
        ASSERT_TRUE(agent.waitForNotches(2));
        EXPECT_TRUE(waitUntil([] { return notch("M1")["introStep"] == 0; }))
            << QJsonDocument(notch("M1")).toJson().toStdString();
        const QJsonObject window = notch("M1")["window"].toObject();
        const int centre = window["x"].toInt() + window["width"].toInt() / 2;
        QDir().mkpath(KELVANE_ARTIFACTS);
        QThread::msleep(400);
        XvfbServer::current()->run("import", {"-window", "root", "-crop", QStringLiteral("600x160+%1+0").arg(centre - 300),
                                              KELVANE_ARTIFACTS "/notch-introduction.png"});
        run("xdotool", {"mousemove", QString::number(centre), "60", "click", "1"});
        EXPECT_TRUE(waitUntil([] { return notch("M1")["introStep"] == 1; }));
        EXPECT_TRUE(changeLogWindows().isEmpty());
    }
    QSettings conf(confPath, QSettings::IniFormat);
    EXPECT_EQ(conf.value("lastVersionNumber").toString(), KELVANE_VERSION);
    conf.setValue("intro", false);
    conf.setValue("lastVersionNumber", "0.0.1");
    conf.sync();

    RunningAgent updated;
    ASSERT_TRUE(updated.waitForNotches(2));
    EXPECT_TRUE(waitUntil([&] { return changeLogWindows().size() == 1; }));
    EXPECT_TRUE(notch("M1")["introStep"].isNull());
    EXPECT_TRUE(waitUntil([&] {
        return QSettings(confPath, QSettings::IniFormat).value("lastVersionNumber").toString() == KELVANE_VERSION;
    }));
}
