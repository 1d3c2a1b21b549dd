#include "CalendarRules.h"

#include <algorithm>
#include <cmath>

namespace kelvane::calendar {

namespace {

qint64 leadSeconds(const CalendarLiveActivitySettings& settings)
{
    return std::max<qint64>(0, settings.preEventWindow) * 60;
}

// The interval of a periodic appearance in milliseconds, or none when it shows constantly (an
// interval that is not a positive number reads as constant).
std::optional<qint64> periodMs(const CalendarLiveActivitySettings& settings)
{
    const AppearanceMode& mode = settings.appearanceMode;
    if (mode.kind != AppearanceMode::Kind::periodic || !std::isfinite(mode.interval) || mode.interval <= 0)
        return std::nullopt;
    return std::max<qint64>(1, qint64(std::min(mode.interval, 1e9) * 1000));
}

bool isCandidate(const CalendarEvent& event, const CalendarLiveActivitySettings& settings,
                 const CalendarWidgetSettings& widget, const QDateTime& now)
{
    if (event.allDay || !isCalendarShown(event.calendarId, widget))
        return false;
    if (settings.onlyEventsWithMeetings && !event.hasMeeting())
        return false;
    return event.start >= now || (settings.showEventTimeLapsed && now < event.end);
}

} // namespace

DayRange displayRange(QDate today, const CalendarWidgetSettings& settings)
{
    const int behind = std::clamp(settings.numberOfDaysBehindToDisplay, 0, 366);
    const int ahead = std::clamp(settings.numberOfDaysAheadToDisplay, 0, 366);
    return {today.addDays(-behind).startOfDay(), today.addDays(ahead + 1).startOfDay()};
}

bool isMultiDay(const CalendarEvent& event)
{
    if (event.end <= event.start)
        return false;
    // A meeting at half past eleven that runs past midnight is still an evening's event; a timed
    // event spans days only once it lasts a whole day.
    if (!event.allDay)
        return event.start.secsTo(event.end) >= 24 * 60 * 60;
    return event.start.date() != event.end.addMSecs(-1).date();
}

bool coversDay(const CalendarEvent& event, QDate day)
{
    const QDateTime from = day.startOfDay(), to = day.addDays(1).startOfDay();
    if (event.end <= event.start)
        return event.start >= from && event.start < to;
    return event.start < to && event.end > from;
}

bool isCalendarShown(const QString& calendarId, const CalendarWidgetSettings& settings)
{
    if (!settings.calendarSelectionWasExplicit.value_or(false) || !settings.selectedCalendars)
        return true;
    const auto& chosen = *settings.selectedCalendars;
    return std::find(chosen.begin(), chosen.end(), calendarId) != chosen.end();
}

bool shownInWidget(const CalendarEvent& event, const CalendarWidgetSettings& settings, const QDateTime& now)
{
    if (!isCalendarShown(event.calendarId, settings))
        return false;
    if (isMultiDay(event)) {
        if (!settings.shouldShowMultiDayEvents)
            return false;
    } else if (event.allDay && !settings.shouldShowAllDayEvents) {
        return false;
    }
    const bool overToday = std::max(event.start, event.end) <= now && event.end.date() == now.date();
    return settings.shouldShowTodayPastEvents || !overToday || event.allDay;
}

std::optional<CalendarEvent> closestEvent(std::span<const CalendarEvent> events,
                                          const CalendarLiveActivitySettings& settings,
                                          const CalendarWidgetSettings& widget, const QDateTime& now)
{
    const CalendarEvent* best = nullptr;
    qint64 bestDistance = 0;
    for (const CalendarEvent& event : events) {
        if (!isCandidate(event, settings, widget, now))
            continue;
        const qint64 distance = std::abs(now.msecsTo(event.start));
        const bool better = !best || distance < bestDistance ||
                            (distance == bestDistance && event.start > best->start);
        if (better) {
            best = &event;
            bestDistance = distance;
        }
    }
    return best ? std::optional(*best) : std::nullopt;
}

bool shouldShowEventTimeView(const CalendarEvent& event, const CalendarLiveActivitySettings& settings,
                             const QDateTime& now)
{
    if (event.allDay)
        return false;
    if (event.start >= now)
        return now.msecsTo(event.start) <= leadSeconds(settings) * 1000;
    return settings.showEventTimeLapsed && now < event.end;
}

bool shouldShowCalendarActivity(const CalendarEvent& event, const CalendarLiveActivitySettings& settings,
                                const QDateTime& now)
{
    if (!shouldShowEventTimeView(event, settings, now))
        return false;
    const auto period = periodMs(settings);
    if (!period)
        return true;
    const qint64 sinceLead = event.start.addSecs(-leadSeconds(settings)).msecsTo(now);
    return sinceLead >= 0 && sinceLead % *period < std::min<qint64>(*period, periodicShowSeconds * 1000);
}

std::optional<QDateTime> nextChange(std::span<const CalendarEvent> events,
                                    const CalendarLiveActivitySettings& settings, const QDateTime& now)
{
    std::optional<QDateTime> next;
    const auto consider = [&](const QDateTime& at) {
        if (at > now && (!next || at < *next))
            next = at;
    };
    const auto period = periodMs(settings);
    for (const CalendarEvent& event : events) {
        if (event.allDay)
            continue;
        const QDateTime leadStart = event.start.addSecs(-leadSeconds(settings));
        consider(leadStart);
        // An event stops being a coming one just after its start.
        consider(event.start.addMSecs(1));
        consider(event.end);
        if (period && leadStart <= now && now <= event.start) {
            const qint64 since = leadStart.msecsTo(now);
            const qint64 periodStart = since - since % *period;
            consider(leadStart.addMSecs(periodStart + std::min<qint64>(*period, periodicShowSeconds * 1000)));
            consider(leadStart.addMSecs(periodStart + *period));
        }
    }
    return next;
}

QString defaultColor(const QString& calendarId)
{
    static constexpr const char* palette[] = {"#0a84ff", "#30d158", "#ff9f0a", "#bf5af2",
                                              "#ff375f", "#64d2ff", "#ffd60a", "#ac8e68"};
    return QString::fromLatin1(palette[qHash(calendarId, 0) % std::size(palette)]);
}

QString timeText(const CalendarEvent& event, const QDateTime& now)
{
    const qint64 seconds = now.secsTo(event.start);
    const auto span = [](qint64 minutes) {
        if (minutes < 60)
            return QStringLiteral("%1 min").arg(minutes);
        if (minutes % 60 == 0)
            return QStringLiteral("%1 h").arg(minutes / 60);
        return QStringLiteral("%1 h %2 min").arg(minutes / 60).arg(minutes % 60);
    };
    if (seconds >= 0) {
        // A minute and a half before is "in 2 min": the count never says less than is left.
        const qint64 minutes = (seconds + 59) / 60;
        return minutes == 0 ? QStringLiteral("now") : QStringLiteral("in ") + span(minutes);
    }
    const qint64 minutes = -seconds / 60;
    return minutes == 0 ? QStringLiteral("now") : span(minutes) + QStringLiteral(" in");
}

} // namespace kelvane::calendar
