#include "EdsCalendarSource.h"

#include "calendar/CalendarRules.h"
#include "calendar/MeetingLinks.h"
#include "core/HandOff.h"
#include "core/Log.h"

#include <QTimeZone>

#define GLIB_DISABLE_DEPRECATION_WARNINGS
#include <libecal/libecal.h>

#include <functional>
#include <map>

namespace kelvane {

namespace {

// Changes come in bursts (a synchronisation touches many events); a calendar is expanded again
// once they settle.
constexpr guint settleMs = 20;

void calendarLine(const QString& message) { logLine(u"Calendar", message); }

QString text(const char* value) { return value ? QString::fromUtf8(value) : QString(); }

QString ownedText(gchar* value)
{
    QString result = text(value);
    g_free(value);
    return result;
}

QDateTime toDateTime(ICalTime* time)
{
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    i_cal_time_get_date(time, &year, &month, &day);
    const QDate date(year, month, day);
    if (i_cal_time_is_date(time))
        return date.startOfDay();
    i_cal_time_get_time(time, &hour, &minute, &second);
    const QTime clock(hour, minute, std::min(second, 59));
    if (i_cal_time_is_utc(time))
        return QDateTime(date, clock, QTimeZone::utc()).toLocalTime();
    if (ICalTimezone* zone = i_cal_time_get_timezone(time))
        return QDateTime::fromSecsSinceEpoch(i_cal_time_as_timet_with_zone(time, zone));
    return QDateTime(date, clock);
}

QString propertyText(ICalComponent* component, ICalPropertyKind kind)
{
    ICalProperty* property = i_cal_component_get_first_property(component, kind);
    if (!property)
        return {};
    QString value = ownedText(i_cal_property_get_value_as_string(property));
    g_object_unref(property);
    return value;
}

// The addresses of the event's online meeting that services put in their own properties.
QString conferenceText(ICalComponent* component)
{
    QString found;
    for (ICalProperty* p = i_cal_component_get_first_property(component, I_CAL_X_PROPERTY); p;
         p = i_cal_component_get_next_property(component, I_CAL_X_PROPERTY)) {
        const QString name = text(i_cal_property_get_x_name(p)).toUpper();
        if (isConferenceProperty(name))
            found += u' ' + ownedText(i_cal_property_get_value_as_string(p));
        g_object_unref(p);
    }
    return found;
}

template <class T>
struct Unref {
    void operator()(T* object) const
    {
        if (object)
            g_object_unref(object);
    }
};
template <class T>
using Ref = std::unique_ptr<T, Unref<T>>;

} // namespace

// Everything here lives on the worker thread, except `post`, the cancellable and the context,
// which the main thread uses to hand work over.
struct EdsWorker {
    struct Calendar {
        EdsWorker* owner = nullptr;
        Ref<ECalClient> client;
        Ref<ECalClientView> view;
        CalendarInfo info;
        guint settle = 0;
        std::vector<gulong> handlers;
    };

    GMainContext* context = g_main_context_new();
    GMainLoop* loop = g_main_loop_new(context, FALSE);
    GCancellable* cancellable = g_cancellable_new();
    // Hands results to the main thread.
    std::function<void(const CalendarInfo&, const QList<CalendarEvent>&)> changed;
    std::function<void(const QString&)> removed;

    Ref<ESourceRegistry> registry;
    std::vector<gulong> registryHandlers;
    std::map<QString, std::unique_ptr<Calendar>> calendars;
    std::map<QString, QString> failed;
    time_t from = 0;
    time_t to = 0;

    ~EdsWorker()
    {
        g_object_unref(cancellable);
        g_main_loop_unref(loop);
        g_main_context_unref(context);
    }

    // Runs `work` on the worker's thread.
    void invoke(std::function<void()> work)
    {
        auto* task = new std::function<void()>(std::move(work));
        g_main_context_invoke_full(
            context, G_PRIORITY_DEFAULT,
            [](gpointer data) -> gboolean {
                (*static_cast<std::function<void()>*>(data))();
                return G_SOURCE_REMOVE;
            },
            task, [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
    }

    void run()
    {
        g_main_context_push_thread_default(context);
        GError* error = nullptr;
        registry.reset(e_source_registry_new_sync(cancellable, &error));
        if (!registry) {
            if (!g_cancellable_is_cancelled(cancellable))
                calendarLine(QStringLiteral("Evolution Data Server is not available: %1")
                                 .arg(error ? text(error->message) : QStringLiteral("no reason given")));
            g_clear_error(&error);
        } else {
            for (const char* signal : {"source-added", "source-removed", "source-changed", "source-enabled",
                                       "source-disabled"})
                registryHandlers.push_back(g_signal_connect_swapped(
                    registry.get(), signal, G_CALLBACK(+[](EdsWorker* self) { self->resync(); }), this));
            resync();
            g_main_loop_run(loop);
        }
        for (auto& [id, calendar] : calendars)
            close(*calendar);
        calendars.clear();
        for (gulong handler : registryHandlers)
            g_signal_handler_disconnect(registry.get(), handler);
        registry.reset();
        // Let the library finish what it started on this context before it goes.
        while (g_main_context_iteration(context, FALSE)) {
        }
        g_main_context_pop_thread_default(context);
    }

    void close(Calendar& calendar)
    {
        if (calendar.settle)
            g_source_destroy(g_main_context_find_source_by_id(context, calendar.settle));
        for (gulong handler : calendar.handlers)
            g_signal_handler_disconnect(calendar.view.get(), handler);
        if (calendar.view)
            e_cal_client_view_stop(calendar.view.get(), nullptr);
        calendar.view.reset();
        calendar.client.reset();
    }

    static CalendarInfo infoOf(ESource* source)
    {
        CalendarInfo info;
        info.id = QStringLiteral("eds:") + text(e_source_get_uid(source));
        info.title = text(e_source_get_display_name(source));
        auto* extension = static_cast<ESourceSelectable*>(e_source_get_extension(source, E_SOURCE_EXTENSION_CALENDAR));
        const QString color = ownedText(e_source_selectable_dup_color(extension));
        info.color = color.startsWith(u'#') && color.size() >= 7 ? color.left(7).toLower() : calendar::defaultColor(info.id);
        info.origin = QStringLiteral("Evolution");
        return info;
    }

    // Opens the calendars that came or were enabled, closes those that went.
    void resync()
    {
        GList* sources = e_source_registry_list_enabled(registry.get(), E_SOURCE_EXTENSION_CALENDAR);
        std::map<QString, ESource*> present;
        for (GList* item = sources; item; item = item->next) {
            auto* source = static_cast<ESource*>(item->data);
            present[QStringLiteral("eds:") + text(e_source_get_uid(source))] = source;
        }
        for (auto it = calendars.begin(); it != calendars.end();) {
            if (present.contains(it->first)) {
                ++it;
                continue;
            }
            close(*it->second);
            removed(it->first);
            it = calendars.erase(it);
        }
        for (const auto& [id, source] : present) {
            auto found = calendars.find(id);
            if (found == calendars.end()) {
                open(source);
            } else if (const CalendarInfo info = infoOf(source); info != found->second->info) {
                found->second->info = info;
                expand(*found->second);
            }
        }
        g_list_free_full(sources, g_object_unref);
    }

    void open(ESource* source)
    {
        auto calendar = std::make_unique<Calendar>();
        calendar->owner = this;
        calendar->info = infoOf(source);
        GError* error = nullptr;
        // The local calendar never reports itself connected: waiting for that would stall.
        calendar->client.reset(E_CAL_CLIENT(e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS,
                                                                      guint32(-1), cancellable, &error)));
        if (!calendar->client) {
            report(calendar->info, error);
            return;
        }
        const QByteArray zone = QTimeZone::systemTimeZoneId();
        if (ICalTimezone* local = i_cal_timezone_get_builtin_timezone(zone.constData()))
            e_cal_client_set_default_timezone(calendar->client.get(), local);
        Calendar& entry = *calendar;
        calendars[calendar->info.id] = std::move(calendar);
        watch(entry);
    }

    void report(const CalendarInfo& info, GError* error)
    {
        const QString reason = error ? text(error->message) : QStringLiteral("no reason given");
        g_clear_error(&error);
        if (g_cancellable_is_cancelled(cancellable) || failed[info.id] == reason)
            return;
        failed[info.id] = reason;
        calendarLine(QStringLiteral("Could not open the calendar \"%1\": %2").arg(info.title, reason));
    }

    // A live view of the calendar's events over the range.
    void watch(Calendar& calendar)
    {
        for (gulong handler : calendar.handlers)
            g_signal_handler_disconnect(calendar.view.get(), handler);
        calendar.handlers.clear();
        if (calendar.view)
            e_cal_client_view_stop(calendar.view.get(), nullptr);
        calendar.view.reset();
        if (from == 0 && to == 0)
            return;
        gchar* start = isodate_from_time_t(from);
        gchar* end = isodate_from_time_t(to);
        gchar* query = g_strdup_printf("(occur-in-time-range? (make-time \"%s\") (make-time \"%s\"))", start, end);
        g_free(start);
        g_free(end);
        ECalClientView* view = nullptr;
        GError* error = nullptr;
        const bool made = e_cal_client_get_view_sync(calendar.client.get(), query, &view, cancellable, &error);
        g_free(query);
        if (!made) {
            report(calendar.info, error);
            return;
        }
        calendar.view.reset(view);
        for (const char* signal : {"objects-added", "objects-modified", "objects-removed"})
            calendar.handlers.push_back(g_signal_connect_swapped(
                view, signal, G_CALLBACK(+[](Calendar* self) { self->owner->changedLater(*self); }), &calendar));
        e_cal_client_view_start(view, &error);
        if (error)
            report(calendar.info, error);
        expand(calendar);
    }

    void changedLater(Calendar& calendar)
    {
        if (calendar.settle)
            return;
        struct Pending {
            EdsWorker* worker;
            Calendar* calendar;
        };
        GSource* source = g_timeout_source_new(settleMs);
        g_source_set_callback(
            source,
            [](gpointer data) -> gboolean {
                auto* pending = static_cast<Pending*>(data);
                pending->calendar->settle = 0;
                pending->worker->expand(*pending->calendar);
                return G_SOURCE_REMOVE;
            },
            new Pending{this, &calendar}, [](gpointer data) { delete static_cast<Pending*>(data); });
        calendar.settle = g_source_attach(source, context);
        g_source_unref(source);
    }

    // Every occurrence of the calendar's events over the range, handed to the main thread whole.
    void expand(Calendar& calendar)
    {
        if (from == 0 && to == 0)
            return;
        QList<CalendarEvent> events;
        e_cal_client_generate_instances_sync(
            calendar.client.get(), from, to, cancellable,
            +[](ICalComponent* component, ICalTime* start, ICalTime* end, gpointer data, GCancellable*,
                GError**) -> gboolean {
                if (i_cal_component_get_status(component) == I_CAL_STATUS_CANCELLED)
                    return TRUE;
                CalendarEvent event;
                event.uid = text(i_cal_component_get_uid(component));
                event.title = text(i_cal_component_get_summary(component));
                event.location = text(i_cal_component_get_location(component));
                event.url = propertyText(component, I_CAL_URL_PROPERTY);
                event.start = toDateTime(start);
                event.end = end ? toDateTime(end) : event.start;
                event.allDay = i_cal_time_is_date(start);
                if (event.end < event.start)
                    event.end = event.start;
                event.meetingLink = meetingLink(event.url + u' ' + conferenceText(component), event.location,
                                                text(i_cal_component_get_description(component)));
                static_cast<QList<CalendarEvent>*>(data)->append(std::move(event));
                return TRUE;
            },
            &events);
        if (!g_cancellable_is_cancelled(cancellable))
            changed(calendar.info, events);
    }

    void setRange(time_t start, time_t end)
    {
        from = start;
        to = end;
        for (auto& [id, calendar] : calendars)
            watch(*calendar);
    }
};

EdsCalendarSource::EdsCalendarSource(QObject* parent)
    : CalendarSource(parent)
    , m_worker(std::make_shared<EdsWorker>())
{
    m_worker->changed = [this](const CalendarInfo& info, const QList<CalendarEvent>& events) {
        QMetaObject::invokeMethod(this, Handed([this, info, events] { Q_EMIT calendarChanged(info, events); }),
                                  Qt::QueuedConnection);
    };
    m_worker->removed = [this](const QString& id) {
        QMetaObject::invokeMethod(this, Handed([this, id] { Q_EMIT calendarRemoved(id); }), Qt::QueuedConnection);
    };
    m_thread = std::thread([worker = m_worker] { worker->run(); });
}

EdsCalendarSource::~EdsCalendarSource()
{
    g_cancellable_cancel(m_worker->cancellable);
    m_worker->invoke([worker = m_worker.get()] { g_main_loop_quit(worker->loop); });
    // The loop may not have started yet when the registry is still being reached.
    g_main_loop_quit(m_worker->loop);
    m_thread.join();
}

void EdsCalendarSource::setRange(const QDateTime& from, const QDateTime& to)
{
    m_worker->invoke([worker = m_worker.get(), start = from.toSecsSinceEpoch(), end = to.toSecsSinceEpoch()] {
        worker->setRange(time_t(start), time_t(end));
    });
}

} // namespace kelvane
