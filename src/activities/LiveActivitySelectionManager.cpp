#include "LiveActivitySelectionManager.h"

#include <algorithm>

namespace kelvane {

namespace {
LiveActivitySelectionManager* s_shared = nullptr;

std::optional<std::size_t> rank(LiveActivity activity)
{
    const auto& list = LiveActivitySelectionManager::activitiesByPriority;
    const auto found = std::find(list.begin(), list.end(), activity);
    if (found == list.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - list.begin());
}
} // namespace

LiveActivitySelectionManager::LiveActivitySelectionManager(const CalendarModel* calendar)
    : m_calendar(calendar)
{
}

std::vector<LiveActivity> LiveActivitySelectionManager::sortActivitiesByPriority(const std::set<LiveActivity>& activities)
{
    std::vector<LiveActivity> result(activities.begin(), activities.end());
    std::vector<LiveActivity> ranked;
    std::vector<std::size_t> rankedPlaces;
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (rank(result[i])) {
            ranked.push_back(result[i]);
            rankedPlaces.push_back(i);
        }
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](LiveActivity a, LiveActivity b) { return *rank(a) < *rank(b); });
    for (std::size_t i = 0; i < ranked.size(); ++i)
        result[rankedPlaces[i]] = ranked[i];
    return result;
}

std::optional<LiveActivity> LiveActivitySelectionManager::selectActivity(
    const std::set<LiveActivity>& from, const std::optional<BatteryStatus>& batteryStatus,
    const CalendarLiveActivitySettings& calendarSettings) const
{
    if (from.empty())
        return std::nullopt;
    const auto sorted = sortActivitiesByPriority(from);
    const auto second = [&]() -> std::optional<LiveActivity> {
        if (sorted.size() > 1)
            return sorted[1];
        return std::nullopt;
    };
    switch (sorted.front()) {
    case LiveActivity::batteryVisualizer:
        if (batteryStatus && batteryStatus->isCharging.has_value())
            return LiveActivity::batteryVisualizer;
        return second();
    case LiveActivity::calendar: {
        const auto event = closestEvent(calendarSettings);
        if (event && m_calendar->shouldShowCalendarActivity(*event, calendarSettings))
            return LiveActivity::calendar;
        return second();
    }
    default:
        return sorted.front();
    }
}

bool LiveActivitySelectionManager::isFirstActivityCalendar(const std::set<LiveActivity>& activeActivities,
                                                           const CalendarLiveActivitySettings& settings) const
{
    return selectActivity(activeActivities, std::nullopt, settings) == LiveActivity::calendar;
}

std::optional<CalendarEvent> LiveActivitySelectionManager::closestEvent(const CalendarLiveActivitySettings& settings) const
{
    if (!m_calendar)
        return std::nullopt;
    return m_calendar->closestEvent(settings);
}

bool LiveActivitySelectionManager::shouldShowEventTimeView(const CalendarLiveActivitySettings& settings) const
{
    const auto event = closestEvent(settings);
    return event && m_calendar->shouldShowEventTimeView(*event, settings);
}

LiveActivitySelectionManager& LiveActivitySelectionManager::shared()
{
    Q_ASSERT(s_shared);
    return *s_shared;
}

void LiveActivitySelectionManager::setShared(LiveActivitySelectionManager* instance) { s_shared = instance; }

} // namespace kelvane
