#pragma once

#include "settings/LiveActivityRecords.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace kelvane {

// One occurrence of an event: a single event, or one instance of a recurring series. All-day
// events start and end at local midnights (the end is the day after the last day).
struct CalendarEvent {
    QString title;
    QDateTime start;
    QDateTime end;
    // The address that joins the event's video meeting, if it has one.
    QString meetingLink;
    QString calendarId;
    // Identifies the series and, with `start`, the occurrence.
    QString uid;
    bool allDay = false;
    QString location;
    QString url;

    bool hasMeeting() const { return !meetingLink.isEmpty(); }
    bool operator==(const CalendarEvent&) const = default;
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
