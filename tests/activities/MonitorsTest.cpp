#include "activities/ActiveLiveActivitiesManager.h"
#include "activities/BluetoothManager.h"
#include "activities/LiveActivitySelectionManager.h"
#include "activities/PowerMonitor.h"
#include "activities/SelectedLiveActivity.h"
#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "core/TimersManager.h"

#include <QJsonArray>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace std::chrono_literals;
using S = ChargeState;
using E = BatteryEvent;

namespace {
struct FakePower final : PowerSource {
    int starts = 0;
    void start() override { ++starts; }
};
struct FakeBluetooth final : BluetoothSource {
    void start() override {}
};

struct World {
    ManualScheduler scheduler;
    TimersManager timers{scheduler};
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager activities{settings};
    World()
    {
        settings.update(Keys::liveActivitiesSettings(), [](LiveActivitiesSettings& s) {
            s.enabledLiveActivities = {LiveActivity::media, LiveActivity::tray, LiveActivity::batteryVisualizer,
                                       LiveActivity::bluetoothDevice};
        });
    }
    bool raised(LiveActivity activity) const { return activities.rawActiveLiveActivities().contains(activity); }
};

PowerReading battery(S state, double percentage) { return {true, percentage, state, 0, 0}; }
} // namespace

TEST(PowerMonitor, WhichBatteryChangeIsAnnouncedPerSetting)
{
    const BatteryLiveActivitySettings all;
    const auto without = [](auto field) {
        BatteryLiveActivitySettings s;
        s.*field = false;
        return s;
    };
    const struct {
        PowerReading before, now;
        BatteryLiveActivitySettings settings;
        std::optional<E> expected;
    } cases[] = {
        {battery(S::discharging, 50), battery(S::charging, 50), all, E::pluggedIn},
        {battery(S::discharging, 50), battery(S::pendingCharge, 50), all, E::pluggedIn},
        {battery(S::discharging, 100), battery(S::fullyCharged, 100), all, E::pluggedIn},
        {battery(S::discharging, 50),
         battery(S::charging, 50),
         without(&BatteryLiveActivitySettings::showWhenPluggedIn),
         {}},
        {battery(S::charging, 50), battery(S::discharging, 50), all, E::unplugged},
        {battery(S::fullyCharged, 100), battery(S::pendingDischarge, 100), all, E::unplugged},
        {battery(S::charging, 10), battery(S::discharging, 10), all, E::unplugged},
        {battery(S::charging, 50),
         battery(S::discharging, 50),
         without(&BatteryLiveActivitySettings::showWhenUnplugged),
         {}},
        {battery(S::charging, 99), battery(S::fullyCharged, 100), all, E::fullyCharged},
        {battery(S::charging, 99),
         battery(S::fullyCharged, 100),
         without(&BatteryLiveActivitySettings::showWhenFullyCharged),
         {}},
        {battery(S::fullyCharged, 100), battery(S::fullyCharged, 100), all, {}},
        {battery(S::discharging, 20), battery(S::discharging, 19), all, E::low},
        {battery(S::discharging, 20.5), battery(S::discharging, 19.9), all, E::low},
        {battery(S::discharging, 19), battery(S::discharging, 18), all, {}}, // already low
        {battery(S::discharging, 25), battery(S::discharging, 21), all, {}},
        {battery(S::discharging, 21), battery(S::discharging, 20), all, {}}, // at the threshold, not below
        {battery(S::charging, 21), battery(S::charging, 19), all, {}},       // charging, never a warning
        {battery(S::discharging, 20),
         battery(S::discharging, 19),
         without(&BatteryLiveActivitySettings::showLowBatteryWarning),
         {}},
        {battery(S::unknown, 50), battery(S::charging, 50), all, {}}, // nothing known before
        {battery(S::charging, 50), battery(S::unknown, 50), all, {}},
        {PowerReading{}, battery(S::charging, 50), all, {}}, // no battery before
    };
    for (const auto& c : cases) {
        EXPECT_EQ(batteryEvent(c.before, c.now, c.settings), c.expected)
            << rawValue(c.before.state).toStdString() << " " << c.before.percentage << " -> "
            << rawValue(c.now.state).toStdString() << " " << c.now.percentage;
    }
    BatteryLiveActivitySettings threshold;
    threshold.lowBatteryThreshold = 10;
    EXPECT_EQ(batteryEvent(battery(S::discharging, 20), battery(S::discharging, 19), threshold), std::nullopt);
    EXPECT_EQ(batteryEvent(battery(S::discharging, 10), battery(S::discharging, 9), threshold), E::low);
}

TEST(PowerMonitor, RaisesTheBatteryForFourSecondsAndGivesTheSelectionItsStatus)
{
    World w;
    FakePower power;
    PowerMonitor monitor({power, w.timers, w.activities, w.settings});
    EXPECT_EQ(power.starts, 1);
    LiveActivitySelectionManager selection;
    SelectedLiveActivity top(w.activities, selection, w.settings);
    top.setBatteryStatusSource([&] { return monitor.batteryStatus(); });
    QObject::connect(&monitor, &PowerMonitor::changed, &top, &SelectedLiveActivity::refresh);
    w.activities.insertSync(LiveActivity::tray);

    // The first reading is how things are, not a change: nothing is announced.
    Q_EMIT power.readingChanged(battery(S::charging, 19));
    EXPECT_FALSE(w.raised(LiveActivity::batteryVisualizer));
    EXPECT_EQ(monitor.batteryStatus()->isCharging, true);
    EXPECT_DOUBLE_EQ(monitor.batteryStatus()->level, 0.19);

    Q_EMIT power.readingChanged(battery(S::discharging, 19));
    EXPECT_EQ(monitor.announced(), "unplugged");
    EXPECT_TRUE(monitor.low());
    EXPECT_EQ(top.name(), "batteryVisualizer");
    w.scheduler.advance(3900ms);
    EXPECT_EQ(top.name(), "batteryVisualizer");
    // A change without an announcement leaves the dismissal where it was.
    Q_EMIT power.readingChanged(battery(S::discharging, 18));
    w.scheduler.advance(100ms);
    EXPECT_FALSE(w.raised(LiveActivity::batteryVisualizer));
    EXPECT_EQ(monitor.announced(), "");
    EXPECT_EQ(top.name(), "tray");

    // A battery that goes away takes its activity along at once.
    Q_EMIT power.readingChanged(battery(S::charging, 18));
    EXPECT_TRUE(w.raised(LiveActivity::batteryVisualizer));
    Q_EMIT power.readingChanged(PowerReading{});
    EXPECT_FALSE(w.raised(LiveActivity::batteryVisualizer));
    EXPECT_EQ(monitor.batteryStatus(), std::nullopt);
    EXPECT_EQ(monitor.state(), QJsonObject({{"present", false},
                                            {"percentage", 0},
                                            {"state", "unknown"},
                                            {"pluggedIn", false},
                                            {"low", false},
                                            {"timeToEmpty", 0},
                                            {"timeToFull", 0},
                                            {"event", QJsonValue()}}));
}

TEST(PowerMonitor, ADesktopWithoutABatteryOrWithoutTheServiceShowsNothing)
{
    World w;
    FakePower power;
    LogCapture log;
    PowerMonitor monitor({power, w.timers, w.activities, w.settings});
    LiveActivitySelectionManager selection;
    SelectedLiveActivity top(w.activities, selection, w.settings);
    top.setBatteryStatusSource([&] { return monitor.batteryStatus(); });
    Q_EMIT power.unavailable("UPower does not answer on the system bus");
    EXPECT_EQ(log.lines(),
              QStringList{"[PowerMonitor] No battery is shown: UPower does not answer on the system bus."});
    Q_EMIT power.readingChanged(PowerReading{});
    Q_EMIT power.readingChanged(PowerReading{false, 50, S::charging, 0, 0});
    EXPECT_FALSE(w.raised(LiveActivity::batteryVisualizer));
    // Raised by hand with no battery known, the second activity is what shows.
    w.activities.insertSync(LiveActivity::batteryVisualizer);
    w.activities.insertSync(LiveActivity::media);
    EXPECT_EQ(top.name(), "media");
}

TEST(BluetoothManager, AnnouncesADeviceThatConnectsWithItsKindAndBattery)
{
    World w;
    FakeBluetooth source;
    BluetoothManager manager({source, w.timers, w.activities});
    const auto device = [](const char* id, bool connected, std::optional<int> battery = {}) {
        return BluetoothDevice{id, QString::fromLatin1(id).toUpper(), "audio-headset", connected, battery};
    };

    // What is connected when the monitor starts is known already.
    Q_EMIT source.devicesChanged({device("mouse", true), device("buds", false)});
    EXPECT_FALSE(w.raised(LiveActivity::bluetoothDevice));

    Q_EMIT source.devicesChanged({device("mouse", true), device("buds", true)});
    EXPECT_TRUE(w.raised(LiveActivity::bluetoothDevice));
    EXPECT_EQ(manager.deviceName(), "BUDS");
    EXPECT_EQ(manager.deviceKind(), "headphones");
    EXPECT_EQ(manager.deviceBattery(), -1);
    // Its battery arrives a moment later and shows without restarting the four seconds.
    w.scheduler.advance(1s);
    Q_EMIT source.devicesChanged({device("mouse", true), device("buds", true, 80)});
    EXPECT_EQ(manager.deviceBattery(), 80);
    w.scheduler.advance(3s);
    EXPECT_FALSE(w.raised(LiveActivity::bluetoothDevice));
    EXPECT_EQ(manager.deviceName(), "");

    // Disconnecting shows nothing, and takes a shown device away.
    Q_EMIT source.devicesChanged({device("mouse", false), device("buds", true, 80)});
    EXPECT_FALSE(w.raised(LiveActivity::bluetoothDevice));
    Q_EMIT source.devicesChanged({device("mouse", true), device("buds", true, 80)});
    EXPECT_EQ(manager.deviceName(), "MOUSE");
    Q_EMIT source.devicesChanged({device("buds", true, 80)});
    EXPECT_FALSE(w.raised(LiveActivity::bluetoothDevice));
    EXPECT_EQ(manager.state(), QJsonObject({{"connected", QJsonArray{"BUDS"}}}));
}
