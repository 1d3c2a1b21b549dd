#include "DesktopEventOpener.h"

#include "core/Log.h"

#include <QDesktopServices>

#include <gio/gio.h>

namespace kelvane {

void DesktopEventOpener::openUrl(const QUrl& url)
{
    if (!QDesktopServices::openUrl(url))
        logLine(u"Calendar", QStringLiteral("Could not open %1.").arg(url.toDisplayString()));
}

void DesktopEventOpener::openCalendarApplication(const CalendarEvent& /*event*/)
{
    GAppInfo* app = g_app_info_get_default_for_type("text/calendar", FALSE);
    if (!app) {
        logLine(u"Calendar", QStringLiteral("No calendar application is set to open calendars."));
        return;
    }
    GError* error = nullptr;
    if (!g_app_info_launch(app, nullptr, nullptr, &error)) {
        logLine(u"Calendar", QStringLiteral("Could not start %1: %2")
                                 .arg(QString::fromUtf8(g_app_info_get_display_name(app)),
                                      QString::fromUtf8(error ? error->message : "no reason given")));
        g_clear_error(&error);
    }
    g_object_unref(app);
}

} // namespace kelvane
