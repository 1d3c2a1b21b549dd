#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

#define GLIB_DISABLE_DEPRECATION_WARNINGS
#include <libecal/libecal.h>

#include <gtest/gtest.h>

using namespace kelvane::test;

namespace {


bool setSetting(const QString& key, const QString& field, const QJsonValue& value)
{
    QJsonObject record = QJsonDocument::fromJson(ctl({"settings", "get", key}).out.toUtf8()).object();
    record[field] = value;
    return ctl({"settings", "set", key, QJsonDocument(record).toJson(QJsonDocument::Compact)}).status == 0;
}

QString topBar() { return notch("M1")["topBarText"].toString(); }

QJsonArray calendarEvents() { return QJsonDocument::fromJson(ctl({"calendar"}).out.toUtf8()).array(); }

QString titlesOf(const QJsonArray& events)
{
    QStringList titles;
    for (const QJsonValue& event : events)
        titles << event["title"].toString();
    return titles.join(", ");
}

// The user's own calendar in Evolution Data Server, reached as GNOME Calendar reaches it.
struct PersonalCalendar {
    ESourceRegistry* registry = nullptr;
    ECalClient* client = nullptr;
    QString error;

    PersonalCalendar()
    {
        GError* failure = nullptr;
        registry = e_source_registry_new_sync(nullptr, &failure);
        if (registry) {
            ESource* source = e_source_registry_ref_builtin_calendar(registry);
            client = E_CAL_CLIENT(e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS, guint32(-1),
                                                            nullptr, &failure));
            g_object_unref(source);
        }
        if (failure) {
            error = QString::fromUtf8(failure->message);
            g_error_free(failure);
        }
    }
    ~PersonalCalendar()
    {
        if (client)
            g_object_unref(client);
        if (registry)
            g_object_unref(registry);
    }

    static ICalComponent* event(const QString& title, const QDateTime& start, int minutes)
    {
        const auto stamp = [](const QDateTime& t) { return t.toUTC().toString("yyyyMMddTHHmmssZ"); };
        const QString text = QString("BEGIN:VEVENT\r\nUID:review@kelvane.test\r\nSUMMARY:%1\r\nDTSTART:%2\r\n"
                                     "DTEND:%3\r\nLOCATION:https://meet.google.com/abc-defg-hij\r\nEND:VEVENT\r\n")
                                 .arg(title, stamp(start), stamp(start.addSecs(minutes * 60)));
        return i_cal_component_new_from_string(text.toUtf8().constData());
    }
    bool create(ICalComponent* component)
    {
        gchar* uid = nullptr;
        const bool done = e_cal_client_create_object_sync(client, component, E_CAL_OPERATION_FLAG_NONE, &uid,
                                                          nullptr, nullptr);
        g_free(uid);
        g_object_unref(component);
        return done;
    }
    bool modify(ICalComponent* component)
    {
        const bool done = e_cal_client_modify_object_sync(client, component, E_CAL_OBJ_MOD_ALL,
                                                          E_CAL_OPERATION_FLAG_NONE, nullptr, nullptr);
        g_object_unref(component);
        return done;
    }
};

} // namespace

TEST(CalendarAgent, ShowsAndFollowsAnEvolutionEventAndRaisesItBeforeItStarts)
{
    TemporaryHome home;
    ScopedEnvironment env;
    env.set("GSETTINGS_BACKEND", "memory");
    // The session bus starts Evolution Data Server's registry and calendar factory on demand.
    SessionBus session({"/usr/share/dbus-1/services"});
    ASSERT_TRUE(session.isRunning());
    PersonalCalendar personal;
    ASSERT_TRUE(personal.client) << personal.error.toStdString();
    const QDateTime start = QDateTime::currentDateTimeUtc().addSecs(10 * 60);
    ASSERT_TRUE(personal.create(PersonalCalendar::event("Design review", start, 30)));

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    ASSERT_TRUE(setSetting("liveActivitiesSettings", "enabledLiveActivities", QJsonArray{"media", "tray", "calendar"}));
    ASSERT_TRUE(setSetting("calendarLiveActivitySettings", "preEventWindow", 15));
    ASSERT_TRUE(waitUntil([] { return titlesOf(calendarEvents()) == "Design review"; }, 20000))
        << titlesOf(calendarEvents()).toStdString() << agent.readOutput().toStdString();
    const QJsonObject shown = calendarEvents().first().toObject();
    EXPECT_EQ(shown["meetingLink"], "https://meet.google.com/abc-defg-hij");
    EXPECT_EQ(shown["calendar"], "Personal");
    EXPECT_EQ(QDateTime::fromString(shown["start"].toString(), Qt::ISODate), start.addMSecs(-start.time().msec()));

    // Ten minutes ahead is within the fifteen of the lead time: the top bar announces it.
    ASSERT_TRUE(waitUntil([] { return topBar().endsWith("Design review"); }));
    EXPECT_TRUE(topBar().startsWith("in 10 min") || topBar().startsWith("in 9 min")) << topBar().toStdString();
    EXPECT_EQ(ctlJson({"activities"})["selected"], "calendar");
    screenshot("calendar-top-bar");

    // Moved out of the lead time and renamed while the agent runs.
    QElapsedTimer change;
    change.start();
    ASSERT_TRUE(personal.modify(PersonalCalendar::event("Design review (moved)", start.addSecs(3600), 30)));
    ASSERT_TRUE(waitUntil([] { return titlesOf(calendarEvents()) == "Design review (moved)"; }, 10000));
    std::printf("[ metric ] an event changed in Evolution reached the agent in %lld ms\n",
                static_cast<long long>(change.elapsed()));
    ASSERT_TRUE(waitUntil([] { return topBar() == ""; }));
    EXPECT_EQ(ctlJson({"activities"})["raised"], QJsonArray());

    // The widget lists it, today marked.
    ASSERT_TRUE(setSetting("tuckleSettings", "enabledWidgets", QJsonArray{"calendar", "media"}));
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"] == "tuckle"; }));
    screenshot("calendar-widget");
    EXPECT_EQ(agent.readOutput().count("[Calendar]"), 0) << agent.readOutput().toStdString();
}
