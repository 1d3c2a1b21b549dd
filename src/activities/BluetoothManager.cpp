#include "BluetoothManager.h"

#include "core/Log.h"

#include <QJsonArray>

#include <algorithm>

namespace kelvane {

QString bluetoothDeviceKind(const QString& icon)
{
    static const std::pair<const char*, const char*> kinds[] = {
        {"audio-headset", "headphones"}, {"audio-headphones", "headphones"}, {"audio-card", "speaker"},
        {"audio-speakers", "speaker"},   {"input-keyboard", "keyboard"},     {"input-mouse", "mouse"},
        {"input-tablet", "mouse"},       {"input-gaming", "gamepad"},        {"phone", "phone"},
        {"computer", "computer"},        {"multimedia-player", "speaker"},   {"watch", "watch"},
    };
    for (const auto& [prefix, kind] : kinds) {
        if (icon.startsWith(QLatin1StringView(prefix)))
            return QLatin1StringView(kind);
    }
    return QStringLiteral("device");
}

BluetoothManager::BluetoothManager(const Dependencies& dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_activity(LiveActivity::bluetoothDevice, QLatin1StringView(dismissKey), dismissDelaySeconds, dependencies.timers,
                 dependencies.liveActivities, [this] {
                     m_shown.reset();
                     Q_EMIT changed();
                 })
{
    connect(&m_deps.source, &BluetoothSource::devicesChanged, this, &BluetoothManager::follow);
    connect(&m_deps.source, &BluetoothSource::unavailable, this, [](const QString& reason) {
        logLine(u"BluetoothManager", QStringLiteral("No Bluetooth device is shown: %1.").arg(reason));
    });
    m_deps.source.start();
}

void BluetoothManager::follow(const QList<BluetoothDevice>& devices)
{
    m_devices = devices;
    std::set<QString> connected;
    const BluetoothDevice* newlyConnected = nullptr;
    for (const BluetoothDevice& device : devices) {
        if (!device.connected)
            continue;
        connected.insert(device.id);
        if (m_connected && !m_connected->contains(device.id))
            newlyConnected = &device;
    }
    const bool firstList = !m_connected;
    m_connected = std::move(connected);
    if (firstList)
        return;

    if (newlyConnected) {
        m_shown = *newlyConnected;
        m_activity.raise();
        Q_EMIT changed();
        return;
    }
    if (!m_shown)
        return;
    // The shown device's battery often arrives a moment after it connected.
    const auto current = std::find_if(devices.begin(), devices.end(),
                                      [this](const BluetoothDevice& device) { return device.id == m_shown->id; });
    if (current == devices.end() || !current->connected) {
        m_activity.drop();
    } else if (*current != *m_shown) {
        m_shown = *current;
        Q_EMIT changed();
    }
}

QJsonObject BluetoothManager::state() const
{
    QJsonArray connected;
    for (const BluetoothDevice& device : m_devices) {
        if (device.connected)
            connected.append(device.name);
    }
    QJsonObject result{{QStringLiteral("connected"), connected}};
    if (m_shown) {
        result.insert(QStringLiteral("shown"),
                      QJsonObject{{QStringLiteral("name"), deviceName()},
                                  {QStringLiteral("kind"), deviceKind()},
                                  {QStringLiteral("battery"),
                                   m_shown->battery ? QJsonValue(*m_shown->battery) : QJsonValue(QJsonValue::Null)}});
    }
    return result;
}

} // namespace kelvane
