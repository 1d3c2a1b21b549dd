#include "GioApplicationCatalog.h"

#include <QCoreApplication>

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <atomic>
#include <unistd.h>

namespace kelvane {

namespace {

QString text(const char* value) { return value ? QString::fromUtf8(value) : QString(); }

// Releases what GLib handed over when it goes out of scope.
template <class T>
struct Owned {
    T* object = nullptr;
    ~Owned()
    {
        if (object)
            g_object_unref(object);
    }
    T* get() const { return object; }
};

QString iconOf(GAppInfo* info)
{
    GIcon* icon = g_app_info_get_icon(info);
    if (!icon)
        return {};
    if (G_IS_THEMED_ICON(icon)) {
        const gchar* const* names = g_themed_icon_get_names(G_THEMED_ICON(icon));
        return names && names[0] ? text(names[0]) : QString();
    }
    if (G_IS_FILE_ICON(icon)) {
        gchar* path = g_file_get_path(g_file_icon_get_file(G_FILE_ICON(icon)));
        const QString result = text(path);
        g_free(path);
        return result;
    }
    return {};
}

Application describe(GDesktopAppInfo* desktop)
{
    GAppInfo* info = G_APP_INFO(desktop);
    Application app;
    app.id = text(g_app_info_get_id(info));
    app.name = text(g_app_info_get_name(info));
    app.genericName = text(g_desktop_app_info_get_generic_name(desktop));
    app.comment = text(g_app_info_get_description(info));
    if (const char* const* keywords = g_desktop_app_info_get_keywords(desktop))
        for (; *keywords; ++keywords)
            app.keywords << text(*keywords);
    app.icon = iconOf(info);
    if (const gchar* const* actions = g_desktop_app_info_list_actions(desktop))
        for (; *actions; ++actions) {
            gchar* name = g_desktop_app_info_get_action_name(desktop, *actions);
            app.actions.push_back({text(*actions), text(name)});
            g_free(name);
        }
    return app;
}

// A launch context that gives each start a startup id of Kelvane's, so that the desktop shows the
// application starting and lets its first window take the focus.
struct KelvaneLaunchContext {
    GAppLaunchContext parent;
};
struct KelvaneLaunchContextClass {
    GAppLaunchContextClass parent;
};
// GObject's type macros are C: their casts are its own.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
G_DEFINE_TYPE(KelvaneLaunchContext, kelvane_launch_context, G_TYPE_APP_LAUNCH_CONTEXT)
#pragma GCC diagnostic pop

std::atomic<int> launches = 0;

char* startupId(GAppLaunchContext*, GAppInfo* info, GList*)
{
    const QString id = QStringLiteral("kelvane-%1-%2-%3_TIME0")
                           .arg(QString::number(getpid()), QString::number(++launches),
                                text(g_app_info_get_id(info)).remove(QStringLiteral(".desktop")));
    return g_strdup(id.toUtf8().constData());
}

void kelvane_launch_context_class_init(KelvaneLaunchContextClass* klass)
{
    G_APP_LAUNCH_CONTEXT_CLASS(klass)->get_startup_notify_id = startupId;
}

void kelvane_launch_context_init(KelvaneLaunchContext*) {}

} // namespace

struct GioApplicationCatalog::Monitor {
    GAppInfoMonitor* monitor = nullptr;
    gulong handler = 0;
};

GioApplicationCatalog::GioApplicationCatalog()
    : m_monitor(std::make_unique<Monitor>())
{
}

GioApplicationCatalog::~GioApplicationCatalog()
{
    if (m_monitor->monitor) {
        g_signal_handler_disconnect(m_monitor->monitor, m_monitor->handler);
        g_object_unref(m_monitor->monitor);
    }
}

std::vector<Application> GioApplicationCatalog::installed()
{
    std::vector<Application> list;
    GList* all = g_app_info_get_all();
    for (GList* item = all; item; item = item->next) {
        GAppInfo* info = G_APP_INFO(item->data);
        if (G_IS_DESKTOP_APP_INFO(info) && g_app_info_should_show(info))
            list.push_back(describe(G_DESKTOP_APP_INFO(info)));
    }
    g_list_free_full(all, g_object_unref);
    return list;
}

std::optional<QString> GioApplicationCatalog::launch(const QString& id, const QString& action,
                                                     const QStringList& files)
{
    Owned<GDesktopAppInfo> info{g_desktop_app_info_new(id.toUtf8().constData())};
    if (!info.get())
        return QStringLiteral("%1 is not installed.").arg(id);
    Owned<GAppLaunchContext> context{G_APP_LAUNCH_CONTEXT(g_object_new(kelvane_launch_context_get_type(), nullptr))};
    if (!action.isEmpty()) {
        g_desktop_app_info_launch_action(info.get(), action.toUtf8().constData(), context.get());
        return std::nullopt;
    }
    GList* list = nullptr;
    for (const QString& file : files)
        list = g_list_append(list, g_file_new_for_path(file.toUtf8().constData()));
    GError* error = nullptr;
    const gboolean started = g_app_info_launch(G_APP_INFO(info.get()), list, context.get(), &error);
    g_list_free_full(list, g_object_unref);
    if (started)
        return std::nullopt;
    const QString reason = error ? text(error->message) : QStringLiteral("it could not be started");
    if (error)
        g_error_free(error);
    return reason;
}

void GioApplicationCatalog::setChangeHandler(std::function<void()> handler)
{
    m_changed = std::move(handler);
    if (m_monitor->monitor)
        return;
    // Reports on the main loop, which Qt runs on GLib's main context.
    m_monitor->monitor = g_app_info_monitor_get();
    m_monitor->handler = g_signal_connect_swapped(
        m_monitor->monitor, "changed", G_CALLBACK(+[](GioApplicationCatalog* self) {
            if (self->m_changed)
                self->m_changed();
        }),
        this);
}

} // namespace kelvane
