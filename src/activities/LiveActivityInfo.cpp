#include "LiveActivityInfo.h"

namespace kelvane {

namespace {
struct Info {
    LiveActivity activity;
    const char* displayName;
    const char* iconName;
};

constexpr Info infos[] = {
    {LiveActivity::media, "Media", "audio-x-generic"},
    {LiveActivity::tray, "Files Tray", "folder"},
    {LiveActivity::calendar, "Calendar", "x-office-calendar"},
    {LiveActivity::updateAvailable, "New Update", "software-update-available"},
    {LiveActivity::bluetoothDevice, "Bluetooth", "bluetooth"},
    {LiveActivity::batteryVisualizer, "Battery", "battery"},
    {LiveActivity::timerExpired, "Timer Ended", "alarm-symbolic"},
};

const Info& infoOf(LiveActivity activity) { return infos[static_cast<std::size_t>(activity)]; }
static_assert(std::size(infos) == json::EnumTraits<LiveActivity>::entries.size());
static_assert([] {
    for (std::size_t i = 0; i < std::size(infos); ++i)
        if (static_cast<std::size_t>(infos[i].activity) != i)
            return false;
    return true;
}(), "one row per activity, in declaration order");
} // namespace

QString displayName(LiveActivity activity) { return QString::fromUtf8(infoOf(activity).displayName); }

QString iconName(LiveActivity activity) { return QString::fromUtf8(infoOf(activity).iconName); }

} // namespace kelvane
