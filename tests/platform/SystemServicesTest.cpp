#include "platform/linux/BluezSource.h"
#include "platform/linux/UPowerSource.h"

#include "support/Polling.h"
#include "support/SystemBus.h"

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {
const QString upower = QStringLiteral("org.freedesktop.UPower");
const QString displayDevice = QStringLiteral("/org/freedesktop/UPower/devices/DisplayDevice");
const QString bluez = QStringLiteral("org.bluez");
const QString headphones = QStringLiteral("/org/bluez/hci0/dev_AA_BB_CC_DD_EE_FF");

// The display device: Type State Percentage Energy EnergyFull EnergyRate TimeToEmpty TimeToFull
// IsPresent IconName WarningLevel.
bool setupDisplayDevice(const SystemBus& bus, const QString& type, const QString& present)
{
    return bus.call({upower, "/org/freedesktop/UPower", "org.freedesktop.DBus.Mock", "SetupDisplayDevice",
                     "uuddddxxbsu", type, "2", "42", "42", "100", "10", "3600", "0", present, "battery-good-symbolic",
                     "1"});
}

bool updateDisplayDevice(const SystemBus& bus, const QStringList& properties)
{
    return bus.call(QStringList{upower, displayDevice, "org.freedesktop.DBus.Mock", "UpdateProperties", "sa{sv}",
                                "org.freedesktop.UPower.Device", QString::number(properties.size() / 3)} +
                    properties);
}

struct Recorded {
    QList<PowerReading> readings;
    QList<QList<BluetoothDevice>> devices;
    QStringList unavailable;
};
} // namespace

TEST(UPowerSource, ReadsTheDisplayDeviceAndFollowsItsChanges)
{
    SystemBus bus;
    ASSERT_TRUE(bus.isRunning());
    ASSERT_TRUE(bus.startMock("upower", upower, R"({"OnBattery": true})"));
    ASSERT_TRUE(setupDisplayDevice(bus, "2", "true"));

    UPowerSource source(bus.connection());
    Recorded r;
    QObject::connect(&source, &PowerSource::readingChanged,
                     [&](const PowerReading& reading) { r.readings << reading; });
    source.start();
    ASSERT_TRUE(waitUntil([&] { return !r.readings.isEmpty(); }));
    EXPECT_EQ(r.readings.last(), (PowerReading{true, 42, ChargeState::discharging, 3600, 0}));

    ASSERT_TRUE(updateDisplayDevice(bus, {"State", "u", "1", "Percentage", "d", "43.5", "TimeToFull", "x", "1800"}));
    ASSERT_TRUE(waitUntil([&] { return r.readings.last().state == ChargeState::charging; }));
    EXPECT_EQ(r.readings.last(), (PowerReading{true, 43.5, ChargeState::charging, 3600, 1800}));
    ASSERT_TRUE(updateDisplayDevice(bus, {"State", "u", "4", "Percentage", "d", "100"}));
    ASSERT_TRUE(waitUntil([&] { return r.readings.last().state == ChargeState::fullyCharged; }));

    // A desktop: the display device is there but holds no battery.
    ASSERT_TRUE(updateDisplayDevice(bus, {"IsPresent", "b", "false"}));
    ASSERT_TRUE(waitUntil([&] { return !r.readings.last().present; }));
    EXPECT_EQ(r.readings.last(), PowerReading{});
}

TEST(UPowerSource, SaysOnceThatUPowerIsAbsentAndReadsItWhenItStarts)
{
    SystemBus bus;
    ASSERT_TRUE(bus.isRunning());
    UPowerSource source(bus.connection());
    Recorded r;
    QObject::connect(&source, &PowerSource::readingChanged,
                     [&](const PowerReading& reading) { r.readings << reading; });
    QObject::connect(&source, &PowerSource::unavailable, [&](const QString& reason) { r.unavailable << reason; });
    source.start();
    ASSERT_TRUE(waitUntil([&] { return !r.unavailable.isEmpty(); }));
    EXPECT_TRUE(r.unavailable.first().startsWith("UPower does not answer on the system bus")) << r.unavailable.first();

    ASSERT_TRUE(bus.startMock("upower", upower, R"({"OnBattery": true})"));
    ASSERT_TRUE(setupDisplayDevice(bus, "2", "true"));
    ASSERT_TRUE(updateDisplayDevice(bus, {"Percentage", "d", "41"}));
    ASSERT_TRUE(waitUntil([&] { return !r.readings.isEmpty() && r.readings.last().percentage == 41; }));
    EXPECT_EQ(r.unavailable.size(), 1);
}

TEST(BluezSource, FollowsDevicesTheirConnectionAndTheirBattery)
{
    SystemBus bus;
    ASSERT_TRUE(bus.isRunning());
    ASSERT_TRUE(bus.startMock("bluez5", bluez));
    BluezSource source(bus.connection());
    Recorded r;
    QObject::connect(&source, &BluetoothSource::devicesChanged,
                     [&](const QList<BluetoothDevice>& devices) { r.devices << devices; });
    QObject::connect(&source, &BluetoothSource::unavailable, [&](const QString& reason) { r.unavailable << reason; });
    source.start();
    ASSERT_TRUE(waitUntil([&] { return !r.unavailable.isEmpty(); }));
    EXPECT_EQ(r.unavailable, QStringList{"BlueZ has no adapter"});

    ASSERT_TRUE(bus.call({bluez, "/", "org.bluez.Mock", "AddAdapter", "ss", "hci0", "my-computer"}));
    ASSERT_TRUE(
        bus.call({bluez, "/", "org.bluez.Mock", "AddDevice", "sss", "hci0", "AA:BB:CC:DD:EE:FF", "Headphones"}));
    const auto last = [&] { return r.devices.isEmpty() ? QList<BluetoothDevice>{} : r.devices.last(); };
    ASSERT_TRUE(waitUntil([&] { return last().size() == 1; }));
    EXPECT_EQ(last().first().name, "Headphones");
    EXPECT_FALSE(last().first().connected);

    ASSERT_TRUE(bus.call({bluez, "/", "org.bluez.Mock", "ConnectDevice", "ss", "hci0", "AA:BB:CC:DD:EE:FF"}));
    ASSERT_TRUE(waitUntil([&] { return !last().isEmpty() && last().first().connected; }));
    EXPECT_EQ(last().first().battery, std::nullopt);

    // The battery arrives as an interface of its own, then changes.
    ASSERT_TRUE(bus.call({bluez, headphones, "org.freedesktop.DBus.Mock", "AddProperties", "sa{sv}",
                          "org.bluez.Battery1", "1", "Percentage", "y", "80"}));
    ASSERT_TRUE(bus.call({bluez, "/", "org.freedesktop.DBus.Mock", "EmitSignal", "sssav",
                          "org.freedesktop.DBus.ObjectManager", "InterfacesAdded", "oa{sa{sv}}", "2", "o", headphones,
                          "a{sa{sv}}", "1", "org.bluez.Battery1", "1", "Percentage", "y", "80"}));
    ASSERT_TRUE(waitUntil([&] { return !last().isEmpty() && last().first().battery == 80; }));
    ASSERT_TRUE(bus.call({bluez, headphones, "org.freedesktop.DBus.Mock", "UpdateProperties", "sa{sv}",
                          "org.bluez.Battery1", "1", "Percentage", "y", "75"}));
    ASSERT_TRUE(waitUntil([&] { return !last().isEmpty() && last().first().battery == 75; }));

    ASSERT_TRUE(bus.call({bluez, "/", "org.bluez.Mock", "DisconnectDevice", "ss", "hci0", "AA:BB:CC:DD:EE:FF"}));
    ASSERT_TRUE(waitUntil([&] { return !last().isEmpty() && !last().first().connected; }));
    EXPECT_EQ(r.unavailable.size(), 1);

    // BlueZ going away leaves no device behind.
    bus.stopMocks();
    ASSERT_TRUE(waitUntil([&] { return last().isEmpty(); }));
}
