#include "calendar/CalendarFileList.h"
#include "calendar/CalendarManager.h"
#include "calendar/MeetingLinks.h"
#include "calendar/CalendarRules.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "activities/LiveActivitySelectionManager.h"
#include "core/Log.h"
#include "core/ManualScheduler.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace std::chrono_literals;

namespace {

struct FakeSource final : CalendarSource {
    QDateTime from, to;
    void setRange(const QDateTime& f, const QDateTime& t) override
    {
        from = f;
        to = t;
    }
};

struct FakeOpener final : EventOpener {
    QStringList opened;
    void openUrl(const QUrl& url) override { opened << url.toString(); }
    void openCalendarApplication(const CalendarEvent& event) override { opened << QStringLiteral("app:") + event.title; }
};

struct World {
    ManualScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager activities{settings};
    FakeOpener opener;
    CalendarManager calendar{{scheduler, settings, activities, opener}};
    LiveActivitySelectionManager selection{&calendar};
    FakeSource source;

    World()
    {
        settings.update(Keys::liveActivitiesSettings(), [](LiveActivitiesSettings& s) {
            s.enabledLiveActivities = {LiveActivity::media, LiveActivity::calendar};
        });
        calendar.addSource(source);
    }
    QDateTime now() const { return scheduler.clock().wallTime().toLocalTime(); }
    CalendarEvent event(const QString& title, qint64 startInMinutes, qint64 minutes = 30, const QString& link = {})
    {
        CalendarEvent e;
        e.title = title;
        e.uid = title;
        e.start = now().addSecs(startInMinutes * 60);
        e.end = e.start.addSecs(minutes * 60);
        e.meetingLink = link;
        return e;
    }
    void give(const QList<CalendarEvent>& events, const QString& id = QStringLiteral("work"))
    {
        Q_EMIT source.calendarChanged({id, id, QStringLiteral("#30d158"), {}}, events);
    }
    void liveSettings(std::function<void(CalendarLiveActivitySettings&)> change)
    {
        settings.update(Keys::calendarLiveActivitySettings(), change);
    }
    bool raised() const { return activities.rawActiveLiveActivities().contains(LiveActivity::calendar); }
    std::optional<LiveActivity> selected() const
    {
        return selection.selectActivity(activities.activeLiveActivities(), std::nullopt,
                                        settings.value(Keys::calendarLiveActivitySettings()));
    }
};

} // namespace

TEST(CalendarActivity, ShowsAnEventFromExactlyItsLeadTimeUntilItStarts)
{
    World world;
    world.give({world.event("Review", 16)});
    EXPECT_FALSE(world.raised());
    EXPECT_EQ(world.calendar.closestEvent({})->title, "Review");
    world.scheduler.advance(59s);
    EXPECT_FALSE(world.raised()) << "one second more than the lead time";
    world.scheduler.advance(1s);
    EXPECT_TRUE(world.raised()) << "exactly fifteen minutes before";
    EXPECT_EQ(world.calendar.activityTime(), "in 15 min");
    EXPECT_EQ(world.selected(), LiveActivity::calendar);
    world.scheduler.advance(14min + 1s);
    EXPECT_EQ(world.calendar.activityTime(), "in 1 min");
    world.scheduler.advance(59s);
    EXPECT_EQ(world.calendar.activityTime(), "now");
    EXPECT_TRUE(world.raised());
    world.scheduler.advance(1s);
    EXPECT_FALSE(world.raised()) << "without the time since the start, a begun event is gone";
    EXPECT_FALSE(world.calendar.closestEvent({}));
}

TEST(CalendarActivity, TimeLapsedKeepsTheBegunEventUntilItsEndAndNearerComingOnesWin)
{
    World world;
    world.liveSettings([](CalendarLiveActivitySettings& s) { s.showEventTimeLapsed = true; });
    world.give({world.event("Workshop", -20, 60), world.event("Call", 5)});
    EXPECT_EQ(world.calendar.activityTitle(), "Call");
    world.scheduler.advance(10min);
    // The call began five minutes ago, the workshop thirty: the call is nearer.
    EXPECT_EQ(world.calendar.activityTitle(), "Call");
    EXPECT_EQ(world.calendar.activityTime(), "5 min in");
    world.scheduler.advance(25min);
    EXPECT_EQ(world.calendar.activityTitle(), "Workshop");
    world.scheduler.advance(5min);
    EXPECT_FALSE(world.raised());
}

TEST(CalendarActivity, MeetingsOnlyLeaveOutEventsWithoutALink)
{
    World world;
    world.liveSettings([](CalendarLiveActivitySettings& s) { s.onlyEventsWithMeetings = true; });
    world.give({world.event("Lunch", 2), world.event("Stand-up", 10, 15, "https://meet.google.com/abc-defg-hij")});
    EXPECT_EQ(world.calendar.activityTitle(), "Stand-up");
    world.calendar.openAnnounced();
    EXPECT_EQ(world.opener.opened, QStringList{"https://meet.google.com/abc-defg-hij"});
}

TEST(CalendarActivity, PeriodicAppearanceShowsForAFewSecondsEachInterval)
{
    World world;
    world.liveSettings([](CalendarLiveActivitySettings& s) { s.appearanceMode = AppearanceMode::periodic(60); });
    QStringList near;
    QObject::connect(&world.calendar, &CalendarManager::eventNear,
                     [&](const QString& title, const QString&) { near << title; });
    world.give({world.event("Review", 15)});
    const struct {
        std::chrono::milliseconds step;
        bool shown;
    } steps[] = {{0ms, true}, {4999ms, true}, {1ms, false}, {54999ms, false}, {1ms, true}, {5s, false}};
    for (const auto& step : steps) {
        world.scheduler.advance(step.step);
        EXPECT_EQ(world.raised(), step.shown) << world.now().toString(Qt::ISODate).toStdString();
    }
    EXPECT_EQ(near, QStringList{"Review"}) << "an event is told of once, not at every appearance";
}

TEST(CalendarActivity, WithNoEventNearTheSelectionFallsToTheNextActivity)
{
    World world;
    world.activities.insertSync(LiveActivity::media);
    world.give({world.event("Later", 120)});
    world.activities.insertSync(LiveActivity::calendar);
    EXPECT_EQ(world.selected(), LiveActivity::media);
    world.give({world.event("Later", 120), world.event("Soon", 3)});
    EXPECT_EQ(world.selected(), LiveActivity::calendar);
    Q_EMIT world.source.calendarRemoved(QStringLiteral("work"));
    EXPECT_FALSE(world.raised());
    EXPECT_EQ(world.selected(), LiveActivity::media);
}

TEST(CalendarWidget, ListsTheChosenDayPerKindSwitchesAndCalendarChoice)
{
    World world;
    const QDate today = world.now().date();
    CalendarEvent allDay = world.event("Holiday", 0);
    allDay.allDay = true;
    allDay.start = today.startOfDay();
    allDay.end = today.addDays(1).startOfDay();
    CalendarEvent trip = allDay;
    trip.title = trip.uid = QStringLiteral("Trip");
    trip.start = today.addDays(-1).startOfDay();
    trip.end = today.addDays(2).startOfDay();
    const CalendarEvent over = world.event("Breakfast", -90, 30);
    world.give({allDay, trip, over, world.event("Review", 60)});
    world.give({world.event("Birthday party", 120)}, QStringLiteral("family"));

    const auto titles = [&] {
        QStringList list;
        for (const QVariant& event : world.calendar.dayEvents())
            list << event.toMap().value(QStringLiteral("title")).toString();
        return list;
    };
    const auto widget = [&](std::function<void(CalendarWidgetSettings&)> change) {
        world.settings.update(Keys::calendarWidgetSettings(), change);
        return titles();
    };
    if (over.start.date() == today) {
        EXPECT_EQ(titles(), (QStringList{"Review", "Birthday party"}));
        EXPECT_EQ(widget([](auto& s) { s.shouldShowTodayPastEvents = true; }),
                  (QStringList{"Breakfast", "Review", "Birthday party"}));
    }
    EXPECT_EQ(widget([](auto& s) {
                  s.shouldShowTodayPastEvents = false;
                  s.shouldShowAllDayEvents = true;
              }),
              (QStringList{"Holiday", "Review", "Birthday party"}));
    EXPECT_EQ(widget([](auto& s) { s.shouldShowMultiDayEvents = true; }),
              (QStringList{"Trip", "Holiday", "Review", "Birthday party"}));
    world.calendar.setCalendarShown(QStringLiteral("family"), false);
    EXPECT_EQ(titles(), (QStringList{"Trip", "Holiday", "Review"}));
    EXPECT_EQ(world.settings.value(Keys::calendarWidgetSettings()).selectedCalendars,
              std::vector<QString>{QStringLiteral("work")});

    // Days outside the range cannot be chosen; tomorrow still shows the trip.
    world.calendar.selectDate(today.addDays(30).toString(Qt::ISODate));
    EXPECT_EQ(world.calendar.selectedDate(), today.toString(Qt::ISODate));
    world.calendar.selectDate(today.addDays(1).toString(Qt::ISODate));
    EXPECT_EQ(titles(), QStringList{"Trip"});
    EXPECT_EQ(world.calendar.days().size(), 15);
    EXPECT_EQ(world.source.from, today.addDays(-7).startOfDay());

    // A click opens the event's address, else the calendar application.
    world.calendar.openEvent(0);
    EXPECT_EQ(world.opener.opened, QStringList{"app:Trip"});
}

TEST(CalendarWidget, OnlyEventsOfAWholeDayOrMoreCountAsSeveralDays)
{
    const QDateTime evening(QDate(2026, 11, 24), QTime(23, 30));
    struct Case {
        const char* what;
        QDateTime start;
        qint64 minutes;
        bool allDay;
        bool multiDay;
    } const cases[] = {
        {"a late meeting running past midnight", evening, 60, false, false},
        {"a night flight", evening.addSecs(-3 * 3600), 10 * 60, false, false},
        {"one second short of a day", evening, 24 * 60 - 1, false, false},
        {"a whole day from the evening on", evening, 24 * 60, false, true},
        {"a conference over three days", evening.addSecs(-10 * 3600), 3 * 24 * 60, false, true},
        {"a holiday", evening.date().startOfDay(), 24 * 60, true, false},
        {"a weekend away", evening.date().startOfDay(), 2 * 24 * 60, true, true},
        {"an event that ends before it starts", evening, -30, false, false},
    };
    for (const Case& c : cases) {
        CalendarEvent event;
        event.start = c.start;
        event.end = c.start.addSecs(c.minutes * 60);
        event.allDay = c.allDay;
        EXPECT_EQ(calendar::isMultiDay(event), c.multiDay) << c.what;
    }
}

TEST(MeetingLinks, RecognisesTheCommonServicesButNotTheirHomePages)
{
    const struct {
        QString url, location, description, expected;
    } cases[] = {
        {"", "https://meet.google.com/abc-defg-hij", "", "https://meet.google.com/abc-defg-hij"},
        {"", "Room 4", "Dial in: https://acme.zoom.us/j/123456?pwd=x).", "https://acme.zoom.us/j/123456?pwd=x"},
        {"https://teams.microsoft.com/l/meetup-join/19%3ameeting", "", "",
         "https://teams.microsoft.com/l/meetup-join/19%3ameeting"},
        {"https://zoom.us/", "https://www.google.com/maps", "see https://example.com/j/1", ""},
        {"https://evilzoom.us/j/1", "", "https://meet.jit.si/KelvaneWeekly", "https://meet.jit.si/KelvaneWeekly"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(meetingLink(c.url, c.location, c.description), c.expected) << c.description.toStdString();
}

TEST(CalendarFileList, KeepsPathsAcrossLaunchesAndSetsABrokenListAside)
{
    QTemporaryDir data;
    QFile calendarFile(data.filePath(QStringLiteral("team.ics")));
    ASSERT_TRUE(calendarFile.open(QIODevice::WriteOnly));
    calendarFile.close();
    {
        CalendarFileList list(data.path());
        EXPECT_EQ(list.add(calendarFile.fileName()), "");
        EXPECT_NE(list.add(calendarFile.fileName()), "") << "twice";
        EXPECT_NE(list.add(data.filePath(QStringLiteral("missing.ics"))), "");
        EXPECT_NE(list.add(data.filePath(QString::fromLatin1(CalendarFileList::fileName))), "") << "not .ics";
        EXPECT_EQ(list.add(data.path()), "");
        EXPECT_EQ(list.remove(data.path()), "");
        EXPECT_NE(list.remove(data.path()), "");
    }
    EXPECT_EQ(CalendarFileList(data.path()).paths(), QStringList{calendarFile.fileName()});

    QFile saved(data.filePath(QString::fromLatin1(CalendarFileList::fileName)));
    ASSERT_TRUE(saved.open(QIODevice::WriteOnly));
    saved.write("[\"relative/path.ics\"]");
    saved.close();
    LogCapture log;
    EXPECT_TRUE(CalendarFileList(data.path()).paths().isEmpty());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines()[0].startsWith("[Calendar] The list of calendar files")) << log.lines()[0].toStdString();
    EXPECT_TRUE(QFile::exists(saved.fileName() + ".broken"));
}
