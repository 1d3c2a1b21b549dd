#include "notch/KelvaneState.h"

#include "core/ManualScheduler.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <thread>

using namespace kelvane;
using namespace std::chrono_literals;
using Mode = KelvaneState::Mode;

namespace {
struct Fixture {
    ManualScheduler sched;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    KelvaneState state{sched, settings};
};
} // namespace

TEST(KelvaneState, SelectSwitchesOnlyBetweenTheTwoTabsAndRemembersTheChoice)
{
    struct Case {
        Mode from;
        Mode selected;
        Mode expectedMode;
        int willSelectCalls;
        QString stored;
    };
    const Case cases[] = {
        {Mode::tuckle, Mode::tray, Mode::tray, 1, "tray"},
        {Mode::tray, Mode::tuckle, Mode::tuckle, 1, "tuckle"},
        {Mode::closed, Mode::tray, Mode::tray, 1, "tray"},
        {Mode::tray, Mode::tray, Mode::tray, 0, "unchanged"},
        {Mode::tuckle, Mode::closed, Mode::tuckle, 0, "unchanged"},
        {Mode::tray, Mode::dragging, Mode::tray, 0, "unchanged"},
    };
    for (const Case& c : cases) {
        Fixture f;
        f.settings.setValue(Keys::preferredOpenMode(), QString("unchanged"));
        f.state.setMode(c.from, Springs::animation);
        int calls = 0;
        f.state.setWillSelectTab([&] { ++calls; });
        f.state.select(c.selected);
        SCOPED_TRACE(KelvaneState::rawValue(c.from) + " -> " + KelvaneState::rawValue(c.selected));
        EXPECT_EQ(f.state.mode(), c.expectedMode);
        EXPECT_EQ(calls, c.willSelectCalls);
        EXPECT_EQ(f.settings.value(Keys::preferredOpenMode()), c.stored);
    }
}

TEST(KelvaneState, PreferredOpenModeReadsTheStoredTabAndIgnoresOtherModes)
{
    const std::pair<QString, Mode> reads[] = {
        {"tray", Mode::tray}, {"closed", Mode::tuckle}, {"dragging", Mode::tuckle}, {"Tray", Mode::tuckle}};
    for (const auto& [stored, expected] : reads) {
        Fixture f;
        f.settings.setValue(Keys::preferredOpenMode(), stored);
        EXPECT_EQ(f.state.preferredOpenMode(), expected) << stored.toStdString();
    }
    Fixture f;
    f.state.setPreferredOpenMode(Mode::tray);
    f.state.setPreferredOpenMode(Mode::dragging);
    f.state.setPreferredOpenMode(Mode::closed);
    EXPECT_EQ(f.settings.value(Keys::preferredOpenMode()), "tray");
}

TEST(KelvaneState, HiddenNotchComesBackTenSecondsAfterTheLastHide)
{
    Fixture f;
    f.state.setHidden(true);
    f.sched.advance(9'999ms);
    EXPECT_TRUE(f.state.hidden());
    f.sched.advance(1ms);
    EXPECT_FALSE(f.state.hidden());
    EXPECT_EQ(f.state.transition(), Springs::unhide);

    f.state.setHidden(true);
    f.sched.advance(6s);
    f.state.setHidden(true); // hidden again: the ten seconds start over
    f.sched.advance(9s);
    EXPECT_TRUE(f.state.hidden());
    f.sched.advance(1s);
    EXPECT_FALSE(f.state.hidden());

    // Shown by hand before the timer: nothing more happens when it would have fired.
    f.state.setHidden(true);
    f.sched.advance(2s);
    f.state.setHidden(false);
    QSignalSpy changes(&f.state, &KelvaneState::hiddenChanged);
    f.sched.advance(20s);
    EXPECT_EQ(changes.count(), 0);
    EXPECT_EQ(f.sched.pendingCount(), 0u);
}

TEST(KelvaneState, WithoutAutomaticUnhideTheNotchStaysHidden)
{
    Fixture f;
    f.settings.update(Keys::liveActivitiesSettings(), [](auto& s) { s.unhideAutomatically = false; });
    f.state.setHidden(true);
    f.sched.advance(1h);
    EXPECT_TRUE(f.state.hidden());
}

TEST(KelvaneState, IndicatorDisappearsOneSecondAfterItsLastChange)
{
    Fixture f;
    QSignalSpy changes(&f.state, &KelvaneState::indicatorChanged);
    const Indicator half{Indicator::Kind::volume, "speaker", 0.5};
    const Indicator more{Indicator::Kind::volume, "speaker", 0.5625};

    f.state.setIndicator(half);
    f.sched.advance(700ms);
    f.state.setIndicator(half); // equal: no change, no restart
    f.sched.advance(300ms);
    EXPECT_FALSE(f.state.indicator());
    EXPECT_EQ(f.state.transition(), Springs::indicatorResize);
    EXPECT_EQ(changes.count(), 2);

    f.state.setIndicator(half);
    f.sched.advance(600ms);
    f.state.setIndicator(more); // a new level: one more second from now
    f.sched.advance(999ms);
    EXPECT_EQ(f.state.indicator(), more);
    f.state.restartIndicatorTimer(); // the same key again
    f.sched.advance(999ms);
    EXPECT_EQ(f.state.indicator(), more);
    f.sched.advance(1ms);
    EXPECT_FALSE(f.state.indicator());
}

TEST(KelvaneState, CleanupStopsTimersAndReturnsToAClosedUnlockedNotch)
{
    Fixture f;
    f.state.setMode(Mode::tray, Springs::animation);
    f.state.setLocked(true);
    f.state.setHidden(true);
    f.state.setIndicator(Indicator{Indicator::Kind::brightness, "sun", 1.0});
    f.state.setQuickPeek(QList<QuickPeek>{{"Stand-up", "in 5 min"}});
    f.state.cleanup();
    EXPECT_EQ(f.state.mode(), Mode::closed);
    EXPECT_FALSE(f.state.locked());
    EXPECT_FALSE(f.state.indicator());
    EXPECT_FALSE(f.state.quickPeek());
    EXPECT_EQ(f.sched.pendingCount(), 0u);
    f.sched.advance(20s);
    EXPECT_TRUE(f.state.hidden()) << "cleanup leaves hiding alone, only its timer stops";
}

TEST(KelvaneStateDeathTest, TouchingTheStateOffTheMainThreadStopsTheProgram)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Fixture f;
    EXPECT_DEATH(std::thread([&] { f.state.setMode(Mode::tray, Springs::animation); }).join(),
                 "Incorrect actor executor assumption; Expected same executor as MainActor.");
}
