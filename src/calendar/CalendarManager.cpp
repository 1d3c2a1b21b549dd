#include "CalendarManager.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/Clock.h"

#include <QJsonObject>
#include <QLocale>

#include <algorithm>

namespace kelvane {

namespace {

// A look at the clock at least this often, so that a clock set forward or a resume from sleep is
// noticed without waiting for a far-off event.
constexpr qint64 longestWaitMs = 5 * 60 * 1000;

// What the widget says about when an event happens on the day it is listed under.
QString whenOnDay(const CalendarEvent& event, QDate day)
{
    const bool startsToday = event.start.date() == day;
    const QDate lastDay = event.end.addMSecs(-1).date();
    if (event.allDay || (!startsToday && lastDay != day && calendar::isMultiDay(event)))
        return QStringLiteral("All day");
    if (!startsToday)
        return QStringLiteral("Until ") + clockTime(event.end.time());
    if (lastDay != day && calendar::isMultiDay(event))
        return QStringLiteral("From ") + clockTime(event.start.time());
    if (event.end <= event.start)
        return clockTime(event.start.time());
    return clockTime(event.start.time()) + QStringLiteral(" – ") + clockTime(event.end.time());
}

} // namespace

CalendarManager::CalendarManager(const Dependencies& dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_widget(dependencies.settings, Keys::calendarWidgetSettings(), this,
               [this](const CalendarWidgetSettings&) {
                   moveRange();
                   rebuild();
                   Q_EMIT calendarsChanged();
               })
    , m_activity(dependencies.settings, Keys::calendarLiveActivitySettings(), this,
                 [this](const CalendarLiveActivitySettings&) { reevaluate(); })
    , m_today(now().date())
    , m_selectedDate(m_today)
{
    m_range = calendar::displayRange(m_selectedDate, m_widget.get());
    reevaluate();
}

CalendarManager::~CalendarManager() = default;

QDateTime CalendarManager::now() const { return m_deps.scheduler.clock().wallTime().toLocalTime(); }

void CalendarManager::addSource(CalendarSource& source)
{
    m_sources.push_back(&source);
    connect(&source, &CalendarSource::calendarChanged, this, &CalendarManager::update);
    connect(&source, &CalendarSource::calendarRemoved, this, &CalendarManager::remove);
    source.setRange(m_range.from, std::max(m_range.to, now().date().addDays(2).startOfDay()));
}

void CalendarManager::moveRange()
{
    const QDate today = now().date();
    const calendar::DayRange range = calendar::displayRange(today, m_widget.get());
    if (range.from == m_range.from && range.to == m_range.to)
        return;
    m_range = range;
    if (m_selectedDate < range.from.date() || m_selectedDate >= range.to.date())
        m_selectedDate = today;
    // The top bar looks past midnight even when the widget shows no day ahead.
    const QDateTime to = std::max(range.to, today.addDays(2).startOfDay());
    for (const QPointer<CalendarSource>& source : m_sources)
        if (source)
            source->setRange(range.from, to);
}

void CalendarManager::update(const CalendarInfo& calendar, const QList<CalendarEvent>& events)
{
    auto& entry = m_calendars[calendar.id];
    const bool infoChanged = entry.info != calendar;
    entry.info = calendar;
    entry.events = events;
    rebuild();
    if (infoChanged)
        Q_EMIT calendarsChanged();
}

void CalendarManager::remove(const QString& id)
{
    if (m_calendars.erase(id) == 0)
        return;
    rebuild();
    Q_EMIT calendarsChanged();
}

void CalendarManager::rebuild()
{
    m_events.clear();
    for (auto& [id, calendar] : m_calendars)
        for (CalendarEvent event : calendar.events) {
            event.calendarId = id;
            m_events.push_back(std::move(event));
        }
    std::stable_sort(m_events.begin(), m_events.end(), [](const CalendarEvent& a, const CalendarEvent& b) {
        return a.start != b.start ? a.start < b.start : a.title < b.title;
    });
    refreshDays();
    reevaluate();
}

void CalendarManager::refreshDays()
{
    const QDateTime at = now();
    m_dayList.clear();
    for (const CalendarEvent& event : m_events)
        if (calendar::coversDay(event, m_selectedDate) && calendar::shownInWidget(event, m_widget.get(), at))
            m_dayList.push_back(event);
    // All-day events head the day's list.
    std::stable_partition(m_dayList.begin(), m_dayList.end(), [](const CalendarEvent& e) { return e.allDay; });
    Q_EMIT eventsChanged();
}

void CalendarManager::reevaluate()
{
    m_next.cancel();
    const QDateTime at = now();
    if (at.date() != m_today) {
        // Past midnight the strip moves with today, and a choice of today follows it.
        if (m_selectedDate == m_today)
            m_selectedDate = at.date();
        m_today = at.date();
    }
    moveRange();

    const CalendarLiveActivitySettings& settings = m_activity.get();
    std::optional<CalendarEvent> shown = closestEvent(settings);
    if (shown && !calendar::shouldShowCalendarActivity(*shown, settings, at))
        shown.reset();
    if (shown)
        m_deps.liveActivities.insertSync(LiveActivity::calendar);
    else
        m_deps.liveActivities.removeSync(LiveActivity::calendar);
    bool isNew = false;
    if (shown) {
        const QString key = shown->uid + u'@' + shown->start.toString(Qt::ISODate);
        isNew = key != m_nearKey;
        m_nearKey = key;
    }
    m_announced = shown;
    Q_EMIT activityChanged();
    if (isNew)
        Q_EMIT eventNear(shown->title, calendar::timeText(*shown, at));

    // The next look: when an answer may change, when the shown countdown ticks, at midnight, and
    // at least every few minutes.
    qint64 wait = std::min(longestWaitMs, at.msecsTo(at.date().addDays(1).startOfDay()));
    if (const auto next = calendar::nextChange(m_events, settings, at))
        wait = std::min(wait, at.msecsTo(*next));
    if (shown) {
        const qint64 toStart = at.msecsTo(shown->start);
        wait = std::min(wait, toStart > 0 ? (toStart - 1) % 60000 + 1 : 60000 - (-toStart) % 60000);
    }
    m_next = m_deps.scheduler.schedule(std::chrono::milliseconds(std::max<qint64>(wait, 1)), [this] {
        reevaluate();
        refreshDays();
    });
}

std::optional<CalendarEvent> CalendarManager::closestEvent(const CalendarLiveActivitySettings& settings) const
{
    return calendar::closestEvent(m_events, settings, m_widget.get(), now());
}

bool CalendarManager::shouldShowCalendarActivity(const CalendarEvent& event,
                                                 const CalendarLiveActivitySettings& settings) const
{
    return calendar::shouldShowCalendarActivity(event, settings, now());
}

bool CalendarManager::shouldShowEventTimeView(const CalendarEvent& event,
                                              const CalendarLiveActivitySettings& settings) const
{
    return calendar::shouldShowEventTimeView(event, settings, now());
}

QString CalendarManager::colorOf(const QString& calendarId) const
{
    const auto found = m_calendars.find(calendarId);
    return found == m_calendars.end() ? QStringLiteral("#0a84ff") : found->second.info.color;
}

QJsonArray CalendarManager::eventsJson() const
{
    QJsonArray list;
    const QDateTime at = now();
    for (const CalendarEvent& event : m_events) {
        if (event.end < m_range.from || event.start >= m_range.to ||
            !calendar::shownInWidget(event, m_widget.get(), at))
            continue;
        const auto found = m_calendars.find(event.calendarId);
        list.append(QJsonObject{
            {QStringLiteral("calendar"), found == m_calendars.end() ? QString() : found->second.info.title},
            {QStringLiteral("calendarId"), event.calendarId},
            {QStringLiteral("title"), event.title},
            {QStringLiteral("start"), event.start.toOffsetFromUtc(event.start.offsetFromUtc()).toString(Qt::ISODate)},
            {QStringLiteral("end"), event.end.toOffsetFromUtc(event.end.offsetFromUtc()).toString(Qt::ISODate)},
            {QStringLiteral("allDay"), event.allDay},
            {QStringLiteral("location"), event.location},
            {QStringLiteral("meetingLink"), event.meetingLink},
        });
    }
    return list;
}

QVariantList CalendarManager::calendars() const
{
    QVariantList list;
    for (const auto& [id, calendar] : m_calendars)
        list.append(QVariantMap{{QStringLiteral("id"), id},
                                {QStringLiteral("title"), calendar.info.title},
                                {QStringLiteral("color"), calendar.info.color},
                                {QStringLiteral("origin"), calendar.info.origin},
                                {QStringLiteral("shown"), calendar::isCalendarShown(id, m_widget.get())}});
    return list;
}

QVariantList CalendarManager::days() const
{
    QVariantList list;
    const QDateTime at = now();
    const QLocale locale;
    for (QDate day = m_range.from.date(); day < m_range.to.date(); day = day.addDays(1)) {
        const auto count = std::count_if(m_events.begin(), m_events.end(), [&](const CalendarEvent& event) {
            return calendar::coversDay(event, day) && calendar::shownInWidget(event, m_widget.get(), at);
        });
        list.append(QVariantMap{{QStringLiteral("date"), day.toString(Qt::ISODate)},
                                {QStringLiteral("weekday"), locale.dayName(day.dayOfWeek(), QLocale::ShortFormat)},
                                {QStringLiteral("day"), day.day()},
                                {QStringLiteral("month"), locale.monthName(day.month(), QLocale::ShortFormat)},
                                {QStringLiteral("today"), day == at.date()},
                                {QStringLiteral("count"), int(count)}});
    }
    return list;
}

void CalendarManager::selectDate(const QString& isoDate)
{
    const QDate day = QDate::fromString(isoDate, Qt::ISODate);
    if (!day.isValid() || day < m_range.from.date() || day >= m_range.to.date() || day == m_selectedDate)
        return;
    m_selectedDate = day;
    refreshDays();
}

QVariantList CalendarManager::dayEvents() const
{
    QVariantList list;
    const QDateTime at = now();
    for (std::size_t i = 0; i < m_dayList.size(); ++i) {
        const CalendarEvent& event = m_dayList[i];
        list.append(QVariantMap{{QStringLiteral("index"), int(i)},
                                {QStringLiteral("title"), event.title},
                                {QStringLiteral("time"), whenOnDay(event, m_selectedDate)},
                                {QStringLiteral("color"), colorOf(event.calendarId)},
                                {QStringLiteral("location"), event.location},
                                {QStringLiteral("hasMeeting"), event.hasMeeting()},
                                {QStringLiteral("past"), event.end <= at},
                                {QStringLiteral("now"), event.start <= at && at < event.end}});
    }
    return list;
}

QString CalendarManager::activityTime() const
{
    return m_announced ? calendar::timeText(*m_announced, now()) : QString();
}

QString CalendarManager::activityColor() const
{
    return m_announced ? colorOf(m_announced->calendarId) : QString();
}

void CalendarManager::open(const CalendarEvent& event)
{
    const QUrl url(event.url, QUrl::StrictMode);
    if (url.isValid() && !url.scheme().isEmpty())
        m_deps.opener.openUrl(url);
    else
        m_deps.opener.openCalendarApplication(event);
}

void CalendarManager::openEvent(int index)
{
    if (index >= 0 && std::size_t(index) < m_dayList.size())
        open(m_dayList[std::size_t(index)]);
}

void CalendarManager::joinEvent(int index)
{
    if (index < 0 || std::size_t(index) >= m_dayList.size())
        return;
    const CalendarEvent& event = m_dayList[std::size_t(index)];
    if (event.hasMeeting())
        m_deps.opener.openUrl(QUrl(event.meetingLink));
}

void CalendarManager::openAnnounced()
{
    if (!m_announced)
        return;
    if (m_announced->hasMeeting())
        m_deps.opener.openUrl(QUrl(m_announced->meetingLink));
    else
        open(*m_announced);
}

void CalendarManager::setCalendarShown(const QString& id, bool shown)
{
    m_deps.settings.update(Keys::calendarWidgetSettings(), [&](CalendarWidgetSettings& settings) {
        std::vector<QString> chosen;
        if (settings.calendarSelectionWasExplicit.value_or(false) && settings.selectedCalendars)
            chosen = *settings.selectedCalendars;
        else
            for (const auto& [calendarId, calendar] : m_calendars)
                chosen.push_back(calendarId);
        std::erase(chosen, id);
        if (shown)
            chosen.push_back(id);
        settings.selectedCalendars = chosen;
        settings.calendarSelectionWasExplicit = true;
    });
}

} // namespace kelvane
