#include "IcalCalendar.h"

#include "calendar/MeetingLinks.h"

#include <QColor>
#include <QTimeZone>

#include <libical/ical.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

namespace kelvane {

namespace {

// A rule that never ends (or one of a million instances) is followed no further than this.
constexpr int maximumSteps = 100000;

QString text(const char* value) { return value ? QString::fromUtf8(value) : QString(); }

QString propertyText(icalcomponent* component, icalproperty_kind kind)
{
    icalproperty* property = icalcomponent_get_first_property(component, kind);
    return property ? text(icalproperty_get_value_as_string(property)) : QString();
}

const char* tzidOf(icalproperty* property)
{
    icalparameter* tzid = icalproperty_get_first_parameter(property, ICAL_TZID_PARAMETER);
    return tzid ? icalparameter_get_tzid(tzid) : nullptr;
}

// A time of the document as an instant (kept in UTC, which compares and copies cheaply) or, for a
// date, the local midnight that starts it. A zone the document names but does not define is looked
// up in the system's zone database, by IANA or Windows name; a floating time is local.
QDateTime toDateTime(const icaltimetype& time, const char* tzid)
{
    const QDate date(time.year, time.month, time.day);
    if (time.is_date)
        return date.startOfDay();
    const QTime clock(time.hour, time.minute, std::min(time.second, 59));
    if (icaltime_is_utc(time))
        return QDateTime(date, clock, QTimeZone::utc());
    if (time.zone)
        return QDateTime::fromSecsSinceEpoch(icaltime_as_timet_with_zone(time, time.zone), QTimeZone::utc());
    if (tzid) {
        QTimeZone zone{QByteArray(tzid)};
        if (!zone.isValid())
            zone = QTimeZone(QTimeZone::windowsIdToDefaultIanaId(QByteArray(tzid)));
        if (zone.isValid())
            return QDateTime(date, clock, zone).toUTC();
    }
    return QDateTime(date, clock).toUTC();
}

QDateTime dateTimeOf(icalproperty* property, icalcomponent* component)
{
    const icaltimetype time = icalproperty_get_datetime_with_component(property, component);
    return icaltime_is_null_time(time) ? QDateTime() : toDateTime(time, tzidOf(property));
}

// An instant as a key, so that times given in different zones compare as the same moment.
qint64 keyOf(const QDateTime& time) { return time.toMSecsSinceEpoch(); }

QString colorOf(const QString& value)
{
    const QString trimmed = value.trimmed();
    // "#rrggbbaa" loses its alpha; names are the CSS colour names.
    const QColor color(trimmed.startsWith(u'#') ? trimmed.left(7) : trimmed);
    return color.isValid() ? color.name(QColor::HexRgb) : QString();
}

} // namespace

struct IcalSeriesList {
    // One VEVENT, read once: a single event, the master of a series, or a moved instance.
    struct Series {
        icalcomponent* component = nullptr;
        CalendarEvent base;
        icaltimetype dtstart{};
        const char* tzid = nullptr;
        qint64 durationMs = 0;
        qint64 durationDays = 0;
        std::vector<icalrecurrencetype> rules;
        std::vector<QDateTime> added;
        std::set<qint64> excluded;
        bool isOverride = false;
    };

    std::vector<Series> series;
    // The instants of moved or cancelled instances, by series.
    std::map<QString, std::set<qint64>> overridden;
};

namespace {

// The thread's libical state: errors are reported in return values, never fatal.
void prepareLibrary()
{
    static const bool prepared = [] {
        icalerror_set_errors_are_fatal(0);
        return true;
    }();
    (void)prepared;
}

using Series = IcalSeriesList::Series;

std::optional<Series> readEvent(icalcomponent* event)
{
    Series series;
    series.component = event;
    icalproperty* start = icalcomponent_get_first_property(event, ICAL_DTSTART_PROPERTY);
    if (!start)
        return std::nullopt;
    series.dtstart = icalproperty_get_datetime_with_component(start, event);
    if (icaltime_is_null_time(series.dtstart) || !icaltime_is_valid_time(series.dtstart))
        return std::nullopt;
    series.tzid = tzidOf(start);
    CalendarEvent& base = series.base;
    base.start = toDateTime(series.dtstart, series.tzid);
    if (!base.start.isValid())
        return std::nullopt;
    base.allDay = series.dtstart.is_date;
    base.uid = text(icalcomponent_get_uid(event));
    base.title = text(icalcomponent_get_summary(event));
    base.location = text(icalcomponent_get_location(event));
    base.url = propertyText(event, ICAL_URL_PROPERTY);
    QString conference = propertyText(event, ICAL_CONFERENCE_PROPERTY);
    for (icalproperty* p = icalcomponent_get_first_property(event, ICAL_X_PROPERTY); p;
         p = icalcomponent_get_next_property(event, ICAL_X_PROPERTY)) {
        const QString name = text(icalproperty_get_x_name(p)).toUpper();
        if (isConferenceProperty(name))
            conference += u' ' + text(icalproperty_get_value_as_string(p));
    }
    base.meetingLink = meetingLink(base.url + u' ' + conference, base.location,
                                   text(icalcomponent_get_description(event)));

    const icaltimetype dtend = icalcomponent_get_dtend(event);
    const QDateTime end = icaltime_is_null_time(dtend) ? QDateTime() : toDateTime(dtend, series.tzid);
    if (base.allDay) {
        series.durationDays = end.isValid() ? std::max<qint64>(1, base.start.date().daysTo(end.date())) : 1;
        base.end = base.start.date().addDays(series.durationDays).startOfDay();
    } else {
        series.durationMs = end.isValid() ? std::max<qint64>(0, base.start.msecsTo(end)) : 0;
        base.end = base.start.addMSecs(series.durationMs);
    }

    for (icalproperty* p = icalcomponent_get_first_property(event, ICAL_RRULE_PROPERTY); p;
         p = icalcomponent_get_next_property(event, ICAL_RRULE_PROPERTY))
        series.rules.push_back(icalproperty_get_rrule(p));
    for (icalproperty* p = icalcomponent_get_first_property(event, ICAL_RDATE_PROPERTY); p;
         p = icalcomponent_get_next_property(event, ICAL_RDATE_PROPERTY)) {
        const icaldatetimeperiodtype rdate = icalproperty_get_rdate(p);
        const icaltimetype at = icaltime_is_null_time(rdate.time) ? rdate.period.start : rdate.time;
        if (!icaltime_is_null_time(at))
            series.added.push_back(toDateTime(at, tzidOf(p)));
    }
    for (icalproperty* p = icalcomponent_get_first_property(event, ICAL_EXDATE_PROPERTY); p;
         p = icalcomponent_get_next_property(event, ICAL_EXDATE_PROPERTY))
        if (const QDateTime at = dateTimeOf(p, event); at.isValid())
            series.excluded.insert(keyOf(at));
    return series;
}

} // namespace

void IcalCalendar::Free::operator()(icalcomponent_impl* component) const { icalcomponent_free(component); }

IcalCalendar::IcalCalendar(icalcomponent_impl* root)
    : m_root(root)
    , m_list(std::make_unique<IcalSeriesList>())
{
}

IcalCalendar::IcalCalendar(IcalCalendar&&) noexcept = default;
IcalCalendar& IcalCalendar::operator=(IcalCalendar&&) noexcept = default;
IcalCalendar::~IcalCalendar() = default;

std::optional<IcalCalendar> IcalCalendar::parse(const QByteArray& bytes, QString& error)
{
    prepareLibrary();
    if (!bytes.trimmed().startsWith("BEGIN:VCALENDAR")) {
        error = QStringLiteral("not an iCalendar file");
        return std::nullopt;
    }
    icalcomponent* root = icalparser_parse_string(bytes.constData());
    if (!root) {
        error = QStringLiteral("not an iCalendar file");
        return std::nullopt;
    }
    IcalCalendar calendar(root);
    std::vector<icalcomponent*> calendars;
    if (icalcomponent_isa(root) == ICAL_VCALENDAR_COMPONENT)
        calendars.push_back(root);
    for (icalcomponent* c = icalcomponent_get_first_component(root, ICAL_VCALENDAR_COMPONENT); c;
         c = icalcomponent_get_next_component(root, ICAL_VCALENDAR_COMPONENT))
        calendars.push_back(c);
    if (calendars.empty()) {
        error = QStringLiteral("it holds no calendar");
        return std::nullopt;
    }

    IcalSeriesList& list = *calendar.m_list;
    for (icalcomponent* vcalendar : calendars) {
        for (icalproperty* p = icalcomponent_get_first_property(vcalendar, ICAL_X_PROPERTY); p;
             p = icalcomponent_get_next_property(vcalendar, ICAL_X_PROPERTY)) {
            const QString name = text(icalproperty_get_x_name(p)).toUpper();
            const QString value = text(icalproperty_get_value_as_string(p));
            if (name == QLatin1StringView("X-WR-CALNAME") && calendar.m_name.isEmpty())
                calendar.m_name = value;
            else if (name == QLatin1StringView("X-APPLE-CALENDAR-COLOR") && calendar.m_color.isEmpty())
                calendar.m_color = colorOf(value);
        }
        if (const QString color = propertyText(vcalendar, ICAL_COLOR_PROPERTY); !color.isEmpty())
            calendar.m_color = colorOf(color);
        for (icalcomponent* event = icalcomponent_get_first_component(vcalendar, ICAL_VEVENT_COMPONENT); event;
             event = icalcomponent_get_next_component(vcalendar, ICAL_VEVENT_COMPONENT)) {
            ++calendar.m_eventCount;
            auto series = readEvent(event);
            if (!series) {
                ++calendar.m_unreadable;
                continue;
            }
            icalproperty* recurrenceId = icalcomponent_get_first_property(event, ICAL_RECURRENCEID_PROPERTY);
            if (recurrenceId) {
                if (const QDateTime at = dateTimeOf(recurrenceId, event); at.isValid()) {
                    series->isOverride = true;
                    series->rules.clear();
                    list.overridden[series->base.uid].insert(keyOf(at));
                }
            }
            if (icalcomponent_get_status(event) == ICAL_STATUS_CANCELLED && !series->isOverride)
                continue;
            list.series.push_back(std::move(*series));
        }
    }
    return calendar;
}

QList<CalendarEvent> IcalCalendar::occurrences(const QDateTime& from, const QDateTime& to) const
{
    QList<CalendarEvent> found;
    for (const Series& series : m_list->series) {
        if (series.isOverride) {
            // A moved instance stands on its own; a cancelled one only hides its original.
            const CalendarEvent& event = series.base;
            if (icalcomponent_get_status(series.component) != ICAL_STATUS_CANCELLED && event.start < to &&
                (event.end > from || (event.end == event.start && event.start >= from)))
                found.append(event);
            continue;
        }
        const auto overridden = m_list->overridden.find(series.base.uid);
        std::set<qint64> seen;
        const auto add = [&](const QDateTime& start) {
            CalendarEvent event = series.base;
            event.start = start;
            event.end = series.base.allDay ? start.date().addDays(series.durationDays).startOfDay()
                                           : start.addMSecs(series.durationMs);
            const bool meets = event.start < to && (event.end > from || (event.end == event.start && event.start >= from));
            const qint64 key = keyOf(start);
            if (!meets || series.excluded.contains(key) || !seen.insert(key).second)
                return;
            if (overridden != m_list->overridden.end() && overridden->second.contains(key))
                return;
            found.append(std::move(event));
        };
        add(series.base.start);
        for (const QDateTime& start : series.added)
            add(series.base.allDay ? start.date().startOfDay() : start);
        for (const icalrecurrencetype& rule : series.rules) {
            icalrecur_iterator* iterator = icalrecur_iterator_new(rule, series.dtstart);
            if (!iterator)
                continue;
            // Far from the first instance, the walk starts near the range instead.
            const qint64 lead = series.base.allDay ? series.durationDays * 86400 : series.durationMs / 1000 + 1;
            const QDateTime walkFrom = from.addSecs(-lead);
            if (rule.count == 0 && walkFrom > series.base.start) {
                icaltimetype begin = series.dtstart.zone && !series.dtstart.is_date
                    ? icaltime_from_timet_with_zone(walkFrom.toSecsSinceEpoch(), 0,
                                                    const_cast<icaltimezone*>(series.dtstart.zone))
                    : series.dtstart;
                if (!series.dtstart.zone || series.dtstart.is_date) {
                    const QDateTime local = series.tzid && !series.dtstart.is_date
                        ? walkFrom.toTimeZone(QTimeZone(QByteArray(series.tzid)))
                        : walkFrom;
                    begin.year = local.date().year();
                    begin.month = local.date().month();
                    begin.day = local.date().day();
                    if (!series.dtstart.is_date) {
                        begin.hour = local.time().hour();
                        begin.minute = local.time().minute();
                        begin.second = local.time().second();
                    }
                }
                icalrecur_iterator_set_start(iterator, begin);
            }
            for (int step = 0; step < maximumSteps; ++step) {
                icaltimetype next = icalrecur_iterator_next(iterator);
                if (icaltime_is_null_time(next))
                    break;
                if (series.dtstart.zone)
                    next.zone = series.dtstart.zone;
                const QDateTime start = toDateTime(next, series.tzid);
                if (!start.isValid() || start >= to)
                    break;
                add(start);
            }
            icalrecur_iterator_free(iterator);
        }
    }
    return found;
}

} // namespace kelvane
