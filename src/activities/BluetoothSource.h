#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

namespace kelvane {

// One paired or known Bluetooth device as the Bluetooth service describes it.
struct BluetoothDevice {
    // Stable for the device's life in the service (its object path on Linux).
    QString id;
    QString name;
    // The freedesktop icon name the service gives its kind ("audio-headset", "input-mouse"...).
    QString icon;
    bool connected = false;
    // 0 to 100, where the device reports it.
    std::optional<int> battery;

    friend bool operator==(const BluetoothDevice&, const BluetoothDevice&) = default;
};

// The machine's Bluetooth service, followed without ever blocking the main thread.
class BluetoothSource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    virtual void start() = 0;

Q_SIGNALS:
    // Every device the service knows, after any change to one of them.
    void devicesChanged(const QList<kelvane::BluetoothDevice>& devices);
    // The service or its adapter cannot be reached.
    void unavailable(const QString& reason);
};

} // namespace kelvane
