#pragma once

#include "activities/CalendarModel.h"
#include "settings/WidgetSettings.h"

#include <QDate>
#include <QDateTime>

#include <optional>
#include <span>

namespace kelvane {

// The rules of the calendar's widget and top-bar activity, as plain functions of the events and
// of "now", so that they can be checked at any instant.
namespace calendar {

// How long a periodic appearance keeps the event in the top bar each interval.
inline constexpr int periodicShowSeconds = 5;

// The widget's span of days: from the start of the first day behind today to the end of the
// last day ahead, in local time.
struct DayRange {
    QDateTime from;
    QDateTime to;
};
DayRange displayRange(QDate today, const CalendarWidgetSettings& settings);

// Whether an event covers more than one day: an all-day event of several days, or a timed one
// of 24 hours or more (one that only runs past midnight does not).
bool isMultiDay(const CalendarEvent& event);
// Whether the event takes up some of this local day.
bool coversDay(const CalendarEvent& event, QDate day);

// Which calendars show: all of them until the user chose explicitly.
bool isCalendarShown(const QString& calendarId, const CalendarWidgetSettings& settings);

// Whether the widget lists the event: its calendar shows, its kind is wanted (multi-day events
// follow their own switch, single all-day events theirs), and today's events that are over show
// only when asked for.
bool shownInWidget(const CalendarEvent& event, const CalendarWidgetSettings& settings, const QDateTime& now);

// The event the top bar may announce: among the timed events of the shown calendars (with a
// meeting link only, if so asked) that have not started, or that are under way when the time since
// the start is wanted, the one whose start is nearest to now; a coming one wins a tie.
std::optional<CalendarEvent> closestEvent(std::span<const CalendarEvent> events,
                                          const CalendarLiveActivitySettings& settings,
                                          const CalendarWidgetSettings& widget, const QDateTime& now);
// Whether the time to the start (or since it) is worth showing: the start is at most the lead time
// away, or the event is under way and the time since the start is wanted.
bool shouldShowEventTimeView(const CalendarEvent& event, const CalendarLiveActivitySettings& settings,
                             const QDateTime& now);
// Whether the top bar shows the event now: as above, and for a periodic appearance only during the
// first seconds of each interval counted from the start of the lead time.
bool shouldShowCalendarActivity(const CalendarEvent& event, const CalendarLiveActivitySettings& settings,
                                const QDateTime& now);
// The next instant after now at which one of the answers above may change for these events.
std::optional<QDateTime> nextChange(std::span<const CalendarEvent> events,
                                    const CalendarLiveActivitySettings& settings, const QDateTime& now);

// A calendar's colour when its source gives none: one of a few distinct colours, always the same
// for the same calendar.
QString defaultColor(const QString& calendarId);

// "in 10 min", "now", "in 1 h 5 min", or once begun "12 min in".
QString timeText(const CalendarEvent& event, const QDateTime& now);

} // namespace calendar
} // namespace kelvane
