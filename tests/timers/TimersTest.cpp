#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "core/SoundPlayer.h"
#include "core/TimersManager.h"
#include "timers/TuckleTimersStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <thread>

using namespace kelvane;
using namespace std::chrono_literals;
using State = TimerEntry::State;

namespace {
struct RecordingSound : SoundPlayer {
    QStringList played;
    void play(const QString& name) override { played << name; }
};

// A store in virtual time over an in-memory defaults domain; the clock starts at 09:00 UTC.
struct Timers {
    ManualScheduler scheduler;
    TimersManager keyed{scheduler};
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager activities{settings};
    RecordingSound sound;
    std::unique_ptr<TuckleTimersStore> store = make();

    std::unique_ptr<TuckleTimersStore> make()
    {
        return std::make_unique<TuckleTimersStore>(
            TuckleTimersStore::Dependencies{scheduler, keyed, domain, activities, sound});
    }
    // As if the agent ended and started again `later` on.
    void restart(std::chrono::milliseconds later)
    {
        store.reset();
        scheduler.advance(later);
        store = make();
    }
    bool announcing() const { return activities.rawActiveLiveActivities().count(LiveActivity::timerExpired) > 0; }
    QJsonArray saved() const
    {
        return QJsonDocument::fromJson(domain.value("tuckleTimerEntries").toByteArray()).array();
    }
};
} // namespace

TEST(Timers, RunDownInWholeSecondsRoundedUpAndEndOnTheTickWithASound)
{
    Timers t;
    TimerEntry* minute = t.store->add("Pasta", 60);
    TimerEntry* instant = t.store->add("", 0);
    EXPECT_EQ(minute->state(), State::running);
    EXPECT_EQ(minute->remainingSeconds(), 60);

    t.scheduler.advance(499ms);
    EXPECT_EQ(instant->state(), State::running);
    t.scheduler.advance(1ms);
    EXPECT_EQ(instant->state(), State::expired);
    EXPECT_EQ(instant->remainingSeconds(), 0);
    EXPECT_EQ(instant->expiresAt(), std::nullopt);
    EXPECT_EQ(t.sound.played, QStringList{"Glass"});
    EXPECT_EQ(t.store->expiredLabelQueue(), QStringList{"Timer ended"});
    EXPECT_EQ(minute->remainingSeconds(), 60);

    const struct {
        std::chrono::milliseconds step;
        qint64 remaining;
    } steps[] = {{500ms, 59}, {500ms, 59}, {57'900ms, 1}, {599ms, 1}, {1ms, 0}};
    for (const auto& s : steps) {
        t.scheduler.advance(s.step);
        EXPECT_EQ(minute->remainingSeconds(), s.remaining);
    }
    EXPECT_EQ(minute->state(), State::expired);
    // The first announcement has long gone.
    EXPECT_EQ(t.store->expiredLabelQueue(), QStringList{"\"Pasta\" ended"});
    EXPECT_EQ(t.sound.played.size(), 2);
    // Nothing runs any more: no tick wakes the agent.
    EXPECT_FALSE(t.store->isTicking());
}

TEST(Timers, EndedTimersAreAnnouncedOneAfterAnotherInListOrder)
{
    Timers t;
    t.store->add("Tea", 2);
    t.store->add("Eggs", 2);
    const struct {
        std::chrono::milliseconds at;
        QString text;
    } timeline[] = {{1'999ms, ""}, {2'000ms, "\"Tea\" ended"}, {5'999ms, "\"Tea\" ended"},
                    {6'000ms, "\"Eggs\" ended"}, {9'999ms, "\"Eggs\" ended"}, {10'000ms, ""}};
    std::chrono::milliseconds now{0};
    for (const auto& moment : timeline) {
        t.scheduler.advance(moment.at - now);
        now = moment.at;
        EXPECT_EQ(t.store->expiredText(), moment.text) << now.count();
        EXPECT_EQ(t.announcing(), !moment.text.isEmpty()) << now.count();
    }
    // Ended timers stay in the list until dismissed.
    ASSERT_EQ(t.store->timers().size(), 2u);
    t.store->dismissExpired(t.store->timers().front());
    EXPECT_EQ(t.store->timers().front()->label(), "Eggs");
}

TEST(Timers, PauseKeepsTheTimeLeftAndOnlyARunningTimerChanges)
{
    Timers t;
    TimerEntry* timer = t.store->add("Bread", 10);
    t.scheduler.advance(3'500ms);
    t.store->pause(timer);
    EXPECT_EQ(timer->state(), State::paused);
    EXPECT_EQ(timer->remainingSeconds(), 7);
    EXPECT_EQ(timer->expiresAt(), std::nullopt);
    // With nothing running the tick stops after one last look.
    t.scheduler.advance(500ms);
    EXPECT_FALSE(t.store->isTicking());

    // Pausing again changes nothing, not even the saved list.
    const QJsonArray before = t.saved();
    t.scheduler.advance(60s);
    t.store->pause(timer);
    EXPECT_EQ(timer->remainingSeconds(), 7);
    EXPECT_EQ(t.saved(), before);

    t.store->start(timer);
    t.scheduler.advance(6'999ms);
    EXPECT_EQ(timer->state(), State::running);
    t.scheduler.advance(1ms);
    EXPECT_EQ(timer->state(), State::expired);

    // An ended timer cannot run again; cancelling removes any timer.
    t.store->start(timer);
    t.store->pause(timer);
    EXPECT_EQ(timer->state(), State::expired);
    t.store->cancel(t.store->add("Soup", 5));
    EXPECT_EQ(t.store->timers().size(), 1u);
    EXPECT_EQ(t.saved().size(), 1);
}

// Saved at 10:00:00 with a running timer of 30 s and a paused one; restored later.
TEST(Timers, SavedWithReferenceDatesAndRestoredWithoutAnnouncingWhatEndedMeanwhile)
{
    const struct {
        std::chrono::milliseconds later;
        State state;
        qint64 remaining;
    } cases[] = {{45s, State::expired, 0}, {10s, State::running, 20}, {30s, State::expired, 0}};
    for (const auto& c : cases) {
        Timers t;
        t.scheduler.advance(1h); // 2026-01-05 10:00:00 UTC
        t.store->add("Tea", 30);
        t.store->pause(t.store->add("Rice", 600));
        const QJsonArray saved = t.saved();
        ASSERT_EQ(saved.size(), 2);
        const QJsonObject running = saved[0].toObject();
        EXPECT_EQ(running.keys(), (QStringList{"expiresAt", "id", "label", "remainingSeconds", "startedAt", "state",
                                               "totalSeconds"}));
        // Seconds since 2001-01-01 00:00:00 UTC.
        EXPECT_EQ(running["startedAt"].toDouble(), 789300000.0);
        EXPECT_EQ(running["expiresAt"].toDouble(), 789300030.0);
        EXPECT_EQ(running["state"].toString(), "running");
        EXPECT_EQ(running["id"].toString(), t.store->timers()[0]->idText());
        EXPECT_FALSE(saved[1].toObject().contains("expiresAt"));
        EXPECT_EQ(saved[1].toObject()["state"].toString(), "paused");

        t.restart(c.later);
        ASSERT_EQ(t.store->timers().size(), 2u);
        const TimerEntry& tea = *t.store->timers()[0];
        EXPECT_EQ(tea.label(), "Tea");
        EXPECT_EQ(tea.state(), c.state) << c.later.count();
        EXPECT_EQ(tea.remainingSeconds(), c.remaining);
        EXPECT_EQ(t.store->timers()[1]->remainingSeconds(), 600);
        EXPECT_TRUE(t.sound.played.isEmpty());
        EXPECT_TRUE(t.store->expiredLabelQueue().isEmpty());
        EXPECT_FALSE(t.announcing());
        // A timer still running goes on ticking to its end, with its sound.
        t.scheduler.advance(30s);
        EXPECT_EQ(t.sound.played.size(), c.state == State::running ? 1 : 0);
    }
}

TEST(Timers, UnreadableSavedTimersLeaveAnEmptyList)
{
    const char* stored[] = {
        "garbage", "{}", "[{\"id\":1}]", "[{\"id\":\"x\",\"label\":\"Tea\",\"totalSeconds\":5,\"remainingSeconds\":5}]",
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":5,"
        "\"remainingSeconds\":5,\"state\":\"boiling\"}]",
        // Dates no date can stand for, written by hand: the entry does not decode.
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":5,"
        "\"remainingSeconds\":5,\"state\":\"running\",\"startedAt\":789300000,\"expiresAt\":1e300}]",
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":5,"
        "\"remainingSeconds\":5,\"state\":\"running\",\"startedAt\":-1e300,\"expiresAt\":789300030}]",
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":5,"
        "\"remainingSeconds\":5,\"state\":\"paused\",\"expiresAt\":1e17}]",
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":5,"
        "\"remainingSeconds\":5,\"state\":\"running\",\"expiresAt\":NaN}]",
        // Lengths below nothing.
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":5,"
        "\"remainingSeconds\":-5,\"state\":\"paused\"}]",
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":-60,"
        "\"remainingSeconds\":0,\"state\":\"expired\"}]",
        // More left than the length, and longer than a week.
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":5,"
        "\"remainingSeconds\":6,\"state\":\"paused\"}]",
        "[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\",\"totalSeconds\":604801,"
        "\"remainingSeconds\":5,\"state\":\"paused\"}]",
    };
    for (const char* text : stored) {
        Timers t;
        t.domain.setValue("tuckleTimerEntries", QByteArray(text));
        t.restart(0ms);
        EXPECT_TRUE(t.store->timers().empty()) << text;
        EXPECT_FALSE(t.store->isTicking());
        t.store->add("Tea", 5);
        EXPECT_EQ(t.saved().size(), 1);
    }
}

TEST(Timers, AnEndedTimerLoadsWithNothingLeftWhateverWasSavedBesideIt)
{
    Timers t;
    t.domain.setValue("tuckleTimerEntries",
                      QByteArray("[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\","
                                 "\"totalSeconds\":60,\"remainingSeconds\":12,\"state\":\"expired\","
                                 "\"expiresAt\":789300030}]"));
    t.restart(0ms);
    ASSERT_EQ(t.store->timers().size(), 1u);
    EXPECT_EQ(t.store->timers()[0]->state(), State::expired);
    EXPECT_EQ(t.store->timers()[0]->remainingSeconds(), 0);
    EXPECT_EQ(t.store->timers()[0]->expiresAt(), std::nullopt);
    EXPECT_FALSE(t.store->isTicking());
}

TEST(Timers, ARunningTimerThatEndsLaterThanItCouldRunsItsLengthFromTheStart)
{
    // The clock was set back (or the file edited): the saved end is further away than the length.
    Timers t;
    const double now = secondsSinceReferenceDate(t.scheduler.clock().wallTime());
    t.domain.setValue("tuckleTimerEntries",
                      QStringLiteral("[{\"id\":\"22F4A360-C1B9-44D8-BF8D-901510CD11F9\",\"label\":\"Tea\","
                                     "\"totalSeconds\":60,\"remainingSeconds\":30,\"state\":\"running\","
                                     "\"expiresAt\":%1}]")
                          .arg(now + 3600, 0, 'f', 3)
                          .toUtf8());
    t.restart(0ms);
    ASSERT_EQ(t.store->timers().size(), 1u);
    TimerEntry* tea = t.store->timers()[0];
    EXPECT_EQ(tea->remainingSeconds(), 60);
    t.scheduler.advance(60s);
    EXPECT_EQ(tea->state(), State::expired);
}

TEST(TimersDeathTest, StopTheProgramWhenTouchedOffTheMainThread)
{
    Timers t;
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(std::thread([&] { t.store->add("Tea", 5); }).join(),
                 "Incorrect actor executor assumption; Expected same executor as ");
}
