#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/SessionBus.h"
#include "support/SystemBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane::test;

namespace {
const QString upower = "org.freedesktop.UPower";
const QString bluez = "org.bluez";
const QString headphones = "/org/bluez/hci0/dev_AA_BB_CC_DD_EE_FF";

// Taken once the top bar's fade has ended.

QString topBar(const QString& screen) { return notch(screen)["topBarText"].toString(); }

// Writes one field of a settings record through the agent, as the settings window does.
bool setSetting(const QString& key, const QString& field, const QJsonValue& value)
{
    QJsonObject record = QJsonDocument::fromJson(ctl({"settings", "get", key}).out.toUtf8()).object();
    record[field] = value;
    return ctl({"settings", "set", key, QJsonDocument(record).toJson(QJsonDocument::Compact)}).status == 0;
}

bool setBattery(const SystemBus& bus, const QStringList& properties)
{
    return bus.call(QStringList{upower, "/org/freedesktop/UPower/devices/DisplayDevice", "org.freedesktop.DBus.Mock",
                                "UpdateProperties", "sa{sv}", "org.freedesktop.UPower.Device",
                                QString::number(properties.size() / 3)} +
                    properties);
}

// The window manager, for full screen: openbox, ready once it has announced itself on the root.
struct WindowManager {
    QProcess process;
    WindowManager()
    {
        process.start("openbox", {"--sm-disable"});
        waitUntil([] {
            QString out;
            XvfbServer::current()->run("xprop", {"-root", "_NET_SUPPORTING_WM_CHECK"}, &out);
            return out.contains("window id");
        });
    }
    ~WindowManager()
    {
        process.terminate();
        process.waitForFinished(5000);
    }
};
} // namespace

TEST(MonitorsAgent, BatteryAndBluetoothRaiseTheirActivitiesFromTheSystemServices)
{
    TemporaryHome home;
    SessionBus session;
    SystemBus system;
    ASSERT_TRUE(session.isRunning() && system.isRunning());
    ASSERT_TRUE(system.startMock("upower", upower, R"({"OnBattery": true})"));
    ASSERT_TRUE(system.call({upower, "/org/freedesktop/UPower", "org.freedesktop.DBus.Mock", "SetupDisplayDevice",
                             "uuddddxxbsu", "2", "2", "42", "42", "100", "10", "3600", "0", "true",
                             "battery-good-symbolic", "1"}));
    ASSERT_TRUE(system.startMock("bluez5", bluez));
    ASSERT_TRUE(system.call({bluez, "/", "org.bluez.Mock", "AddAdapter", "ss", "hci0", "my-computer"}));
    ASSERT_TRUE(system.call(
        {bluez, "/", "org.bluez.Mock", "AddDevice", "sss", "hci0", "AA:BB:CC:DD:EE:FF", "Test Headphones"}));
    ASSERT_TRUE(system.call({bluez, headphones, "org.freedesktop.DBus.Mock", "UpdateProperties", "sa{sv}",
                             "org.bluez.Device1", "1", "Icon", "s", "audio-headset"}));

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    ASSERT_TRUE(setSetting("liveActivitiesSettings", "enabledLiveActivities",
                           QJsonArray{"media", "tray", "batteryVisualizer", "bluetoothDevice"}));
    ASSERT_TRUE(waitUntil([] { return ctlJson({"activities"})["battery"].toObject()["percentage"] == 42; }));
    EXPECT_EQ(topBar("M1"), "");

    // Plugged in: the battery and its level for four seconds, then nothing.
    QElapsedTimer clock;
    ASSERT_TRUE(setBattery(system, {"State", "u", "1"}));
    clock.start();
    ASSERT_TRUE(waitUntil([] { return topBar("M1") == "42%"; }));
    EXPECT_EQ(ctlJson({"activities"})["battery"].toObject()["event"], "pluggedIn");
    screenshot("monitor-battery-plugged-in");
    ASSERT_TRUE(waitUntil([] { return topBar("M1") == ""; }, 8000));
    EXPECT_GT(clock.elapsed(), 3500);
    EXPECT_LT(clock.elapsed(), 6000);

    // The same change with its setting off shows nothing.
    ASSERT_TRUE(setSetting("batteryLiveActivitySettings", "showWhenUnplugged", false));
    ASSERT_TRUE(setBattery(system, {"State", "u", "2", "Percentage", "d", "41"}));
    ASSERT_TRUE(waitUntil([] { return ctlJson({"activities"})["battery"].toObject()["state"] == "discharging"; }));
    EXPECT_EQ(ctlJson({"activities"})["raised"], QJsonArray());
    // Falling below the threshold is a warning.
    ASSERT_TRUE(setBattery(system, {"Percentage", "d", "19"}));
    ASSERT_TRUE(waitUntil([] { return topBar("M1") == "19%"; }));
    EXPECT_EQ(ctlJson({"activities"})["battery"].toObject()["event"], "low");
    screenshot("monitor-battery-low");

    // Headphones that connect show their name, then their battery as it arrives.
    ASSERT_TRUE(system.call({bluez, "/", "org.bluez.Mock", "ConnectDevice", "ss", "hci0", "AA:BB:CC:DD:EE:FF"}));
    ASSERT_TRUE(waitUntil([] { return topBar("M1") == "Test Headphones"; }));
    ASSERT_TRUE(system.call({bluez, headphones, "org.freedesktop.DBus.Mock", "AddProperties", "sa{sv}",
                             "org.bluez.Battery1", "1", "Percentage", "y", "80"}));
    ASSERT_TRUE(system.call({bluez, "/", "org.freedesktop.DBus.Mock", "EmitSignal", "sssav",
                             "org.freedesktop.DBus.ObjectManager", "InterfacesAdded", "oa{sa{sv}}", "2", "o",
                             headphones, "a{sa{sv}}", "1", "org.bluez.Battery1", "1", "Percentage", "y", "80"}));
    ASSERT_TRUE(waitUntil([] { return topBar("M1") == "Test Headphones  80%"; }));
    EXPECT_EQ(ctlJson({"activities"})["bluetooth"].toObject()["shown"].toObject(),
              (QJsonObject{{"name", "Test Headphones"}, {"kind", "headphones"}, {"battery", 80}}));
    screenshot("monitor-bluetooth");
    ASSERT_TRUE(system.call({bluez, "/", "org.bluez.Mock", "DisconnectDevice", "ss", "hci0", "AA:BB:CC:DD:EE:FF"}));
    ASSERT_TRUE(waitUntil([] { return !topBar("M1").contains("Headphones"); }));
}

TEST(MonitorsAgent, WithoutTheSystemServicesEachMonitorSaysSoInOneLine)
{
    TemporaryHome home;
    SessionBus session;
    SystemBus system;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    ASSERT_TRUE(waitUntil([&] { return agent.readOutput().contains("[BluetoothManager]"); }));
    ASSERT_TRUE(waitUntil([&] { return agent.readOutput().contains("[PowerMonitor]"); }));
    const QStringList lines = agent.readOutput().split('\n');
    EXPECT_EQ(lines.filter("[PowerMonitor]").size(), 1) << agent.output;
    EXPECT_EQ(lines.filter("[BluetoothManager]").size(), 1) << agent.output;
    EXPECT_EQ(ctlJson({"activities"})["battery"].toObject()["present"], false);
}

TEST(MonitorsAgent, AFullScreenWindowHidesTheNotchWhereAskedAndTheListedActivitiesThere)
{
    // The first monitor is a notebook's own panel.
    XvfbServer& x = *XvfbServer::current();
    ASSERT_TRUE(x.setMonitors({{"eDP-1", QRect(0, 0, 1512, 982), QSize(400, 260), true},
                               {"M2", QRect(1512, 0, 1280, 800), QSize(340, 212), false}}));
    x.run("xsetroot", {"-solid", "#6a8caf"});
    TemporaryHome home;
    SessionBus session;
    WindowManager openbox;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    QTemporaryDir files;
    QFile file(files.filePath("a.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    ASSERT_EQ(ctl({"tray", "add", file.fileName()}).status, 0);
    ASSERT_TRUE(waitUntil([] { return topBar("M2") == "1" && topBar("eDP-1") == "1"; }));
    ASSERT_TRUE(setSetting("liveActivitiesSettings", "liveActivitiesHiddenInFullscreen", QJsonArray{"tray"}));

    QProcess window;
    window.start("xmessage", {"-name", "video", "-geometry", "300x100+1700+100", "a film"});
    QString id;
    ASSERT_TRUE(waitUntil([&] {
        x.run("xdotool", {"search", "--classname", "video"}, &id);
        return !id.trimmed().isEmpty();
    }));
    id = id.trimmed().split('\n').first();
    const auto fullScreen = [&](const char* change) {
        return x.run("wmctrl", {"-i", "-r", id, "-b", QString(change) + ",fullscreen"}) == 0;
    };
    ASSERT_TRUE(fullScreen("add"));
    ASSERT_TRUE(waitUntil([] { return notch("M2")["fullScreen"].toBool(); }));
    EXPECT_FALSE(notch("eDP-1")["fullScreen"].toBool());

    const struct {
        const char* option;
        bool shownOnM2;
    } cases[] = {{"allMonitors", true}, {"notchedScreens", false}, {"never", false}};
    for (const auto& c : cases) {
        ASSERT_TRUE(setSetting("generalSettings", "showInFullscreen", c.option));
        ASSERT_TRUE(waitUntil([&] { return notch("M2")["shown"].toBool() == c.shownOnM2; })) << c.option;
        // The tray stays out of the full-screen top bar only.
        EXPECT_EQ(topBar("M2"), "") << c.option;
        EXPECT_EQ(topBar("eDP-1"), "1") << c.option;
        EXPECT_TRUE(notch("eDP-1")["shown"].toBool()) << c.option;
    }
    screenshot("monitor-fullscreen-on-second");

    // On the notebook's own panel the notch stays over full screen unless the user said never.
    ASSERT_TRUE(setSetting("generalSettings", "showInFullscreen", "notchedScreens"));
    ASSERT_TRUE(x.run("wmctrl", {"-i", "-r", id, "-e", "0,100,100,300,100"}) == 0);
    ASSERT_TRUE(waitUntil([] { return notch("eDP-1")["fullScreen"].toBool() && !notch("M2")["fullScreen"].toBool(); }));
    EXPECT_TRUE(notch("eDP-1")["shown"].toBool());
    EXPECT_EQ(topBar("eDP-1"), "");
    EXPECT_TRUE(waitUntil([] { return topBar("M2") == "1"; }));

    ASSERT_TRUE(fullScreen("remove"));
    ASSERT_TRUE(waitUntil([] { return !notch("eDP-1")["fullScreen"].toBool(); }));
    EXPECT_TRUE(notch("M2")["shown"].toBool());
    ASSERT_TRUE(waitUntil([] { return topBar("eDP-1") == "1" && topBar("M2") == "1"; }));
    window.kill();
    window.waitForFinished();
}
