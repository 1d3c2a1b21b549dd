#include "activities/ActiveLiveActivitiesManager.h"
#include "activities/LiveActivitySelectionManager.h"
#include "activities/SelectedLiveActivity.h"

#include <QJsonArray>

#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane;
using A = LiveActivity;
using Set = std::set<LiveActivity>;

namespace {
struct Registry {
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager manager{settings};

    void configure(const Set& enabled, bool masterSwitch)
    {
        settings.update(Keys::liveActivitiesSettings(), [&](LiveActivitiesSettings& s) {
            s.enabledLiveActivities = enabled;
            s.enabled = masterSwitch;
        });
    }
};

// A calendar whose one event is, or is not, within its lead time.
struct FakeCalendar : CalendarModel {
    std::optional<CalendarEvent> event;
    bool due = false;
    std::optional<CalendarEvent> closestEvent(const CalendarLiveActivitySettings&) const override { return event; }
    bool shouldShowCalendarActivity(const CalendarEvent&, const CalendarLiveActivitySettings&) const override
    {
        return due;
    }
    bool shouldShowEventTimeView(const CalendarEvent&, const CalendarLiveActivitySettings& s) const override
    {
        return s.showEventTimeLapsed;
    }
};
} // namespace

TEST(ActiveLiveActivities, SettingsHideWithoutDroppingAndAnEndedTimerAlwaysShows)
{
    const struct {
        Set enabled;
        bool masterSwitch;
        Set shown;
    } cases[] = {
        {{A::tray, A::media}, true, {A::media, A::tray, A::timerExpired}},
        {{A::tray}, true, {A::tray, A::timerExpired}},
        {{A::tray, A::media, A::calendar, A::timerExpired}, false, {A::timerExpired}},
        {{}, true, {A::timerExpired}},
    };
    Registry r;
    r.manager.setActiveLiveActivities({A::media, A::tray, A::timerExpired, A::bluetoothDevice});
    for (const auto& c : cases) {
        QSignalSpy changed(&r.manager, &ActiveLiveActivitiesManager::activeLiveActivitiesChanged);
        r.configure(c.enabled, c.masterSwitch);
        EXPECT_EQ(changed.count(), 1);
        EXPECT_EQ(r.manager.activeLiveActivities(), c.shown);
        EXPECT_EQ(r.manager.rawActiveLiveActivities().size(), 4u);
    }
}

TEST(ActiveLiveActivities, InsertAndRemoveReportWhatChanged)
{
    Registry r;
    QSignalSpy changed(&r.manager, &ActiveLiveActivitiesManager::activeLiveActivitiesChanged);
    EXPECT_TRUE(r.manager.insertSync(A::tray));
    EXPECT_FALSE(r.manager.insertSync(A::tray));
    EXPECT_EQ(r.manager.removeSync(A::media), std::nullopt);
    EXPECT_EQ(r.manager.removeSync(A::tray), A::tray);
    EXPECT_EQ(changed.count(), 2);

    // A producer on another thread has its write carried out on the main thread.
    std::unique_ptr<QThread> producer(QThread::create([&] { r.manager.setActiveLiveActivities({A::media}); }));
    producer->start();
    producer->wait();
    EXPECT_TRUE(r.manager.rawActiveLiveActivities().empty());
    EXPECT_TRUE(QTest::qWaitFor([&] { return r.manager.activeNames() == QStringList{"media"}; }, 1000));
}

TEST(LiveActivitySelection, TheMostUrgentActivityThatHasSomethingToShowWins)
{
    FakeCalendar calendar;
    calendar.event = CalendarEvent();
    calendar.event->title = "Stand-up";
    LiveActivitySelectionManager selection(&calendar);
    const BatteryStatus charging{true, 0.5};
    const BatteryStatus unknown{std::nullopt, 0.5};
    const struct {
        Set from;
        std::optional<BatteryStatus> battery;
        bool eventDue;
        std::optional<A> shown;
    } cases[] = {
        {{}, charging, true, std::nullopt},
        {{A::media, A::tray, A::timerExpired, A::bluetoothDevice}, charging, true, A::timerExpired},
        {{A::media, A::calendar, A::tray}, charging, true, A::tray},
        {{A::media, A::calendar}, charging, true, A::calendar},
        // An event outside its lead time gives way to the next, or to nothing.
        {{A::media, A::calendar}, charging, false, A::media},
        {{A::calendar}, charging, false, std::nullopt},
        // A desktop without a battery status.
        {{A::batteryVisualizer, A::media}, std::nullopt, true, A::media},
        {{A::batteryVisualizer, A::media}, unknown, true, A::media},
        {{A::batteryVisualizer}, std::nullopt, true, std::nullopt},
        {{A::batteryVisualizer, A::media}, charging, true, A::batteryVisualizer},
        // "New update" is never ranked: alone it shows; otherwise it keeps its place.
        {{A::updateAvailable}, charging, true, A::updateAvailable},
        {{A::media, A::updateAvailable}, charging, true, A::media},
        {{A::updateAvailable, A::timerExpired}, charging, true, A::updateAvailable},
    };
    for (const auto& c : cases) {
        calendar.due = c.eventDue;
        EXPECT_EQ(selection.selectActivity(c.from, c.battery, {}), c.shown)
            << testing::PrintToString(QStringList([&] {
                   QStringList names;
                   for (A a : c.from)
                       names << json::rawValue(a);
                   return names;
               }()));
    }
    EXPECT_EQ(LiveActivitySelectionManager::sortActivitiesByPriority({A::media, A::updateAvailable, A::timerExpired}),
              (std::vector<A>{A::timerExpired, A::updateAvailable, A::media}));

    calendar.due = true;
    EXPECT_TRUE(selection.isFirstActivityCalendar({A::calendar, A::media}, {}));
    EXPECT_FALSE(selection.isFirstActivityCalendar({A::calendar, A::tray}, {}));
    CalendarLiveActivitySettings lapsed;
    lapsed.showEventTimeLapsed = true;
    EXPECT_TRUE(selection.shouldShowEventTimeView(lapsed));
    EXPECT_FALSE(LiveActivitySelectionManager().shouldShowEventTimeView(lapsed));
}

TEST(SelectedLiveActivity, FollowsTheRaisedSetTheSettingsAndTheBattery)
{
    Registry r;
    LiveActivitySelectionManager selection;
    SelectedLiveActivity top(r.manager, selection, r.settings);
    QSignalSpy changed(&top, &SelectedLiveActivity::selectedChanged);
    const auto shows = [&] { return top.name(); };

    r.manager.insertSync(A::media);
    EXPECT_EQ(shows(), "media");
    r.manager.insertSync(A::batteryVisualizer);
    r.configure({A::media, A::batteryVisualizer}, true);
    EXPECT_EQ(shows(), "media"); // no battery known yet
    top.setBatteryStatusSource([] { return BatteryStatus{false, 0.8}; });
    EXPECT_EQ(shows(), "batteryVisualizer");
    // Over a full-screen window the activities kept out of it give way to the next.
    r.settings.update(Keys::liveActivitiesSettings(),
                      [](LiveActivitiesSettings& s) { s.liveActivitiesHiddenInFullscreen = {A::batteryVisualizer}; });
    EXPECT_EQ(shows(), "batteryVisualizer");
    EXPECT_EQ(top.fullScreenName(), "media");
    r.manager.insertSync(A::timerExpired);
    r.configure({}, false);
    EXPECT_EQ(shows(), "timerExpired");
    EXPECT_EQ(top.displayName(), "Timer Ended");
    EXPECT_EQ(top.state(), (QJsonObject{{"raised", QJsonArray{"media", "batteryVisualizer", "timerExpired"}},
                                        {"shown", QJsonArray{"timerExpired"}},
                                        {"selected", "timerExpired"},
                                        {"selectedInFullScreen", "timerExpired"}}));
    r.manager.removeSync(A::timerExpired);
    EXPECT_EQ(shows(), "");
    EXPECT_EQ(top.state()["selected"], QJsonValue());
    EXPECT_EQ(changed.count(), 5);
}
