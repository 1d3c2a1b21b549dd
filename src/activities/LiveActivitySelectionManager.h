#pragma once

#include "CalendarModel.h"
#include "PowerSource.h"

#include "settings/SettingsTypes.h"

#include <array>
#include <optional>
#include <set>
#include <vector>

namespace kelvane {

// Which one activity the closed notch's top bar shows.
class LiveActivitySelectionManager {
public:
    // Most urgent first. "updateAvailable" is left out on purpose: it is never ranked.
    static constexpr std::array activitiesByPriority{
        LiveActivity::timerExpired, LiveActivity::bluetoothDevice, LiveActivity::batteryVisualizer,
        LiveActivity::tray,         LiveActivity::calendar,        LiveActivity::media};

    // Without a calendar model the calendar activity never finds an event to show.
    explicit LiveActivitySelectionManager(const CalendarModel* calendar = nullptr);
    // The calendar comes after the selection in the start-up order.
    void setCalendarModel(const CalendarModel* calendar) { m_calendar = calendar; }

    std::optional<LiveActivity> selectActivity(const std::set<LiveActivity>& from,
                                               const std::optional<BatteryStatus>& batteryStatus,
                                               const CalendarLiveActivitySettings& calendarSettings) const;

    // The set in its own order (the declaration order of the activities), with the ranked members
    // sorted by priority around the unranked ones, which keep their places: {media,
    // updateAvailable, timerExpired} gives timerExpired, updateAvailable, media.
    static std::vector<LiveActivity> sortActivitiesByPriority(const std::set<LiveActivity>& activities);

    bool isFirstActivityCalendar(const std::set<LiveActivity>& activeActivities,
                                 const CalendarLiveActivitySettings& settings) const;
    std::optional<CalendarEvent> closestEvent(const CalendarLiveActivitySettings& settings) const;
    bool shouldShowEventTimeView(const CalendarLiveActivitySettings& settings) const;

    static LiveActivitySelectionManager& shared();
    static void setShared(LiveActivitySelectionManager* instance);

private:
    const CalendarModel* m_calendar;
};

} // namespace kelvane
