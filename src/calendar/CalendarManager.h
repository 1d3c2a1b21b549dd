#pragma once

#include "CalendarRules.h"
#include "CalendarSource.h"
#include "EventOpener.h"

#include "core/Scheduler.h"
#include "settings/SettingValue.h"

#include <QJsonArray>
#include <QObject>
#include <QPointer>
#include <QVariantList>

#include <map>
#include <vector>

namespace kelvane {

class ActiveLiveActivitiesManager;

// The user's calendars as the notch shows them: gathers the sources' events, answers the top
// bar's questions about the nearest event, raises the calendar activity while one is near, and
// gives the widget its strip of days and the chosen day's events. Main thread only.
class CalendarManager : public QObject, public CalendarModel {
    Q_OBJECT
    // Every calendar as { id, title, color, origin, shown }.
    Q_PROPERTY(QVariantList calendars READ calendars NOTIFY calendarsChanged)
    // The widget's days as { date (ISO), weekday, day, month, today, count }.
    Q_PROPERTY(QVariantList days READ days NOTIFY eventsChanged)
    Q_PROPERTY(QString selectedDate READ selectedDate WRITE selectDate NOTIFY eventsChanged)
    // The chosen day's events as { index, title, time, color, location, hasMeeting, past, now }.
    Q_PROPERTY(QVariantList dayEvents READ dayEvents NOTIFY eventsChanged)
    // The event the top bar announces, while it does.
    Q_PROPERTY(bool announcing READ announcing NOTIFY activityChanged)
    Q_PROPERTY(QString activityTitle READ activityTitle NOTIFY activityChanged)
    Q_PROPERTY(QString activityTime READ activityTime NOTIFY activityChanged)
    Q_PROPERTY(QString activityColor READ activityColor NOTIFY activityChanged)
    Q_PROPERTY(bool activityHasMeeting READ activityHasMeeting NOTIFY activityChanged)
public:
    struct Dependencies {
        Scheduler& scheduler;
        SettingsStore& settings;
        ActiveLiveActivitiesManager& liveActivities;
        EventOpener& opener;
    };
    explicit CalendarManager(const Dependencies& dependencies, QObject* parent = nullptr);
    ~CalendarManager() override;

    // The source is told the range now and whenever it moves.
    void addSource(CalendarSource& source);

    // CalendarModel, for the top bar's selection.
    std::optional<CalendarEvent> closestEvent(const CalendarLiveActivitySettings& settings) const override;
    bool shouldShowCalendarActivity(const CalendarEvent& event,
                                    const CalendarLiveActivitySettings& settings) const override;
    bool shouldShowEventTimeView(const CalendarEvent& event,
                                 const CalendarLiveActivitySettings& settings) const override;

    // Every occurrence the sources gave, in order of start.
    const std::vector<CalendarEvent>& events() const { return m_events; }
    calendar::DayRange range() const { return m_range; }
    // The events the widget lists over its whole range, for `kelvanectl calendar`.
    QJsonArray eventsJson() const;

    QVariantList calendars() const;
    QVariantList days() const;
    QString selectedDate() const { return m_selectedDate.toString(Qt::ISODate); }
    void selectDate(const QString& isoDate);
    QVariantList dayEvents() const;
    bool announcing() const { return m_announced.has_value(); }
    QString activityTitle() const { return m_announced ? m_announced->title : QString(); }
    QString activityTime() const;
    QString activityColor() const;
    bool activityHasMeeting() const { return m_announced && m_announced->hasMeeting(); }

    // Opens the chosen day's event: its address, else the calendar application.
    Q_INVOKABLE void openEvent(int index);
    // Joins the chosen day's event's meeting.
    Q_INVOKABLE void joinEvent(int index);
    // Joins the announced event's meeting, else opens it.
    Q_INVOKABLE void openAnnounced();
    // Shows or hides one calendar; the choice becomes explicit.
    Q_INVOKABLE void setCalendarShown(const QString& id, bool shown);

Q_SIGNALS:
    void calendarsChanged();
    void eventsChanged();
    void activityChanged();
    // An event came within its lead time and is announced: once per occurrence.
    void eventNear(const QString& title, const QString& when);

private:
    void update(const CalendarInfo& calendar, const QList<CalendarEvent>& events);
    void remove(const QString& id);
    void rebuild();
    void refreshDays();
    // Raises or drops the activity as the clock and the events say, and plans the next look.
    void reevaluate();
    void moveRange();
    void open(const CalendarEvent& event);
    QString colorOf(const QString& calendarId) const;
    QDateTime now() const;

    Dependencies m_deps;
    SettingValue<CalendarWidgetSettings> m_widget;
    SettingValue<CalendarLiveActivitySettings> m_activity;
    // A source that goes first is let go: its connections end with it.
    std::vector<QPointer<CalendarSource>> m_sources;
    struct Calendar {
        CalendarInfo info;
        QList<CalendarEvent> events;
    };
    std::map<QString, Calendar> m_calendars;
    std::vector<CalendarEvent> m_events;
    calendar::DayRange m_range;
    QDate m_today;
    QDate m_selectedDate;
    std::vector<CalendarEvent> m_dayList;
    std::optional<CalendarEvent> m_announced;
    // The occurrence last announced, so that a periodic appearance tells of it only once.
    QString m_nearKey;
    ScheduledTask m_next;
};

} // namespace kelvane
