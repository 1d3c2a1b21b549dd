#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "core/QtScheduler.h"
#include "core/TimersManager.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace std::chrono_literals;

TEST(ManualScheduler, RunsDueWorkInOrderIncludingWorkScheduledOnTheWay)
{
    ManualScheduler sched;
    QStringList order;
    ScheduledTask nested;
    auto a = sched.schedule(300ms, [&] { order << "a@300"; });
    auto b = sched.schedule(100ms, [&] {
        order << "b@100";
        nested = sched.schedule(50ms, [&] { order << "nested@150"; });
    });
    auto c = sched.schedule(100ms, [&] { order << "c@100"; });
    auto late = sched.schedule(1s, [&] { order << "late"; });

    sched.advance(299ms);
    EXPECT_EQ(order, (QStringList{"b@100", "c@100", "nested@150"}));
    sched.advance(1ms);
    EXPECT_EQ(order.last(), "a@300");
    EXPECT_TRUE(late.isActive());
    EXPECT_EQ(sched.clock().monotonic(), 300ms);
}

TEST(ManualScheduler, CancelledOrDroppedWorkNeverRuns)
{
    ManualScheduler sched;
    int runs = 0;
    auto cancelled = sched.schedule(10ms, [&] { ++runs; });
    cancelled.cancel();
    { auto dropped = sched.schedule(10ms, [&] { ++runs; }); }
    auto replaced = sched.schedule(10ms, [&] { ++runs; });
    replaced = sched.schedule(20ms, [&] { runs += 10; });
    sched.advance(1s);
    EXPECT_EQ(runs, 10);
    EXPECT_FALSE(replaced.isActive());
    EXPECT_EQ(sched.pendingCount(), 0u);
}

TEST(TimersManager, KeyedTimersReplaceRestartAndRemove)
{
    ManualScheduler sched;
    TimersManager timers(sched);
    QStringList fired;

    timers.addTimer("dismiss", 1.0, [&] { fired << "first"; });
    sched.advance(600ms);
    timers.addTimer("dismiss", 1.0, [&] { fired << "second"; }); // replaces, delay starts anew
    sched.advance(999ms);
    EXPECT_TRUE(fired.isEmpty());
    sched.advance(1ms);
    EXPECT_EQ(fired, QStringList{"second"});
    EXPECT_FALSE(timers.isRunning("dismiss"));

    timers.addTimer("other", 0.5, [&] { fired << "other"; });
    timers.removeTimer("other");
    timers.removeTimer("never-added");
    sched.advance(1s);
    EXPECT_EQ(fired, QStringList{"second"});
}

TEST(TimersManager, CallbackMayAddItsOwnKeyAgain)
{
    ManualScheduler sched;
    TimersManager timers(sched);
    int ticks = 0;
    std::function<void()> tick = [&] {
        if (++ticks < 3)
            timers.addTimer("tick", 2.0, tick);
    };
    timers.addTimer("tick", 2.0, tick);
    sched.advance(10s);
    EXPECT_EQ(ticks, 3);
    EXPECT_FALSE(timers.isRunning("tick"));
}

TEST(QtScheduler, ZeroDelayRunsOnANextLoopTurnAndCancelStopsIt)
{
    QtScheduler sched;
    int runs = 0;
    auto kept = sched.post([&] { ++runs; });
    auto cancelled = sched.post([&] { runs += 100; });
    cancelled.cancel();
    EXPECT_EQ(runs, 0); // never synchronously
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    EXPECT_EQ(runs, 1);
}

TEST(Log, LinesCarryTheOwnerTagAndCanBeCaptured)
{
    LogCapture outer;
    {
        LogCapture inner;
        logLine(u"Tray", "Failed to copy a.txt");
        EXPECT_EQ(inner.lines(), QStringList{"[Tray] Failed to copy a.txt"});
    }
    logLine(u"Settings", "x");
    EXPECT_EQ(outer.lines(), QStringList{"[Settings] x"});
}
