#pragma once

#include "BluetoothSource.h"
#include "TransientActivity.h"

#include <QJsonObject>
#include <QObject>

#include <optional>
#include <set>

namespace kelvane {

class ActiveLiveActivitiesManager;
class TimersManager;

// What a device is, from the icon name its service gives it: "headphones", "speaker",
// "keyboard", "mouse", "gamepad", "phone", "computer", "watch" or "device".
QString bluetoothDeviceKind(const QString& icon);

// Raises the Bluetooth activity for four seconds when a device connects, with its name, kind and
// battery level. Devices already connected when the monitor starts announce nothing; a device
// that disconnects while it is shown takes the activity with it. Main thread only.
class BluetoothManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString deviceName READ deviceName NOTIFY changed)
    Q_PROPERTY(QString deviceKind READ deviceKind NOTIFY changed)
    // -1 when the device does not report its battery.
    Q_PROPERTY(int deviceBattery READ deviceBattery NOTIFY changed)
public:
    static constexpr const char* dismissKey = "BluetoothActivityDismiss";
    static constexpr double dismissDelaySeconds = 4.0;

    struct Dependencies {
        BluetoothSource& source;
        TimersManager& timers;
        ActiveLiveActivitiesManager& liveActivities;
    };
    explicit BluetoothManager(const Dependencies& dependencies, QObject* parent = nullptr);

    // The device being announced.
    const std::optional<BluetoothDevice>& shown() const { return m_shown; }
    QString deviceName() const { return m_shown ? m_shown->name : QString(); }
    QString deviceKind() const { return m_shown ? bluetoothDeviceKind(m_shown->icon) : QString(); }
    int deviceBattery() const { return m_shown ? m_shown->battery.value_or(-1) : -1; }

    // For `kelvanectl activities`.
    QJsonObject state() const;

Q_SIGNALS:
    void changed();

private:
    void follow(const QList<BluetoothDevice>& devices);

    Dependencies m_deps;
    // Absent until the first list: what is connected then is already known to the user.
    std::optional<std::set<QString>> m_connected;
    QList<BluetoothDevice> m_devices;
    std::optional<BluetoothDevice> m_shown;
    TransientActivity m_activity;
};

} // namespace kelvane
