#pragma once

#include "settings/LiveActivityRecords.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace kelvane {

struct CalendarEvent {
    QString title;
    QDateTime start;
    QDateTime end;
    bool hasMeeting = false;
};

// The calendar component's view of the user's events, as the top bar needs it.
class CalendarModel {
public:
    virtual ~CalendarModel() = default;
    // The event nearest to now that the calendar activity may announce.
    virtual std::optional<CalendarEvent> closestEvent(const CalendarLiveActivitySettings& settings) const = 0;
    // Whether the event is close enough (within the lead time) to be shown now.
    virtual bool shouldShowCalendarActivity(const CalendarEvent& event,
                                            const CalendarLiveActivitySettings& settings) const = 0;
    // Whether the time left (or elapsed) is drawn beside the event.
    virtual bool shouldShowEventTimeView(const CalendarEvent& event,
                                         const CalendarLiveActivitySettings& settings) const = 0;
};

} // namespace kelvane
