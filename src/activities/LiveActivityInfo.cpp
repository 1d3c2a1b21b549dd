#include "LiveActivityInfo.h"

namespace kelvane {

QString displayName(LiveActivity activity)
{
    switch (activity) {
    case LiveActivity::media:
        return QStringLiteral("Media");
    case LiveActivity::tray:
        return QStringLiteral("Files Tray");
    case LiveActivity::calendar:
        return QStringLiteral("Calendar");
    case LiveActivity::updateAvailable:
        return QStringLiteral("New Update");
    case LiveActivity::bluetoothDevice:
        return QStringLiteral("Bluetooth");
    case LiveActivity::batteryVisualizer:
        return QStringLiteral("Battery");
    case LiveActivity::timerExpired:
        return QStringLiteral("Timer Ended");
    }
    return {};
}

QString iconName(LiveActivity activity)
{
    switch (activity) {
    case LiveActivity::media:
        return QStringLiteral("audio-x-generic");
    case LiveActivity::tray:
        return QStringLiteral("folder");
    case LiveActivity::calendar:
        return QStringLiteral("x-office-calendar");
    case LiveActivity::updateAvailable:
        return QStringLiteral("software-update-available");
    case LiveActivity::bluetoothDevice:
        return QStringLiteral("bluetooth");
    case LiveActivity::batteryVisualizer:
        return QStringLiteral("battery");
    case LiveActivity::timerExpired:
        return QStringLiteral("alarm-symbolic");
    }
    return {};
}

} // namespace kelvane
