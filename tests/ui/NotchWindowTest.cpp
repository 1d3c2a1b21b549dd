#include "notch/WindowsManager.h"
#include "platform/linux/QtScreenProvider.h"
#include "ui/QuickNotchWindowFactory.h"

#include "core/QtScheduler.h"
#include "support/Polling.h"
#include "support/XvfbServer.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QSignalSpy>
#include <QWindow>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::XvfbServer;
using kelvane::test::waitUntil;

namespace {
// The real agent's pieces on a real X server with two monitors.
struct Agent {
    QtScheduler scheduler;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    QtScreenProvider screens;
    QuickNotchWindowFactory factory;
    NullHapticFeedback haptics;
    WindowsManager manager{{scheduler, settings, screens, factory, haptics, [] { return 0; }}};
};

// The notch windows as the X server has them: "WxH+X+Y" per window, in stacking order.
QStringList mappedNotchWindows() { return XvfbServer::current()->windowGeometries("Kelvane Notch"); }

class ClickCounter : public QWindow {
public:
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent*) override { ++presses; }
};

// Whether a notch window's input region holds that point of the screen.
bool notchTakes(QPoint point)
{
    for (const QWindow* window : QGuiApplication::topLevelWindows())
        if (window->title() == "Kelvane Notch" && window->isVisible() && window->geometry().contains(point))
            return window->mask().contains(point - window->position());
    return false;
}

void click(int x, int y)
{
    XvfbServer::current()->run("xdotool", {"mousemove", QString::number(x), QString::number(y), "click", "1"});
}
} // namespace

// The window is far larger than the closed notch; everywhere else the pointer belongs to the
// application underneath.
TEST(NotchWindow, TransparentPartLetsClicksThroughAndTheNotchTakesItsOwn)
{
    ClickCounter below;
    below.setGeometry(0, 0, 1512, 400);
    below.show();
    ASSERT_TRUE(waitUntil([&] { return below.isExposed(); }));

    Agent agent;
    agent.settings.update(Keys::generalSettings(), [](auto& g) { g.alwaysOpenNotchOnHover = false; });
    ASSERT_TRUE(waitUntil([] { return mappedNotchWindows().size() == 2; }));
    KelvaneState& kelvane = *agent.manager.displayKits().front()->kelvane;

    click(500, 150); // inside the notch window's frame, outside the notch
    ASSERT_TRUE(waitUntil([&] { return below.presses == 1; }));
    EXPECT_EQ(kelvane.mode(), KelvaneState::Mode::closed);

    click(756, 12); // on the notch
    ASSERT_TRUE(waitUntil([&] { return kelvane.mode() == KelvaneState::Mode::tuckle; }));
    EXPECT_EQ(below.presses, 1);

    // Open, the panel takes the pointer where it is drawn (once it has grown there: a slow machine
    // takes a while). X delivers clicks in order, so once the click below the window has arrived, a
    // leaked panel click would have arrived too.
    ASSERT_TRUE(waitUntil([] { return notchTakes({756, 140}); }));
    // The new region reaches the X server when the event loop next flushes.
    waitUntil([] { return false; }, 200);
    click(756, 140);
    click(500, 300);
    ASSERT_TRUE(waitUntil([&] { return below.presses >= 2; }));
    EXPECT_EQ(below.presses, 2);
}

// A touchpad's own swipe (as the X server reports three- and four-finger swipes) moves the notch
// as the scroll swipes do: fingers down open it, fingers up close it.
TEST(NotchWindow, TouchpadSwipesOpenAndClose)
{
    Agent agent;
    agent.settings.update(Keys::generalSettings(), [](auto& g) { g.alwaysOpenNotchOnHover = false; });
    ASSERT_TRUE(waitUntil([] { return mappedNotchWindows().size() == 2; }));
    KelvaneState& kelvane = *agent.manager.displayKits().front()->kelvane;
    QWindow* window = nullptr;
    for (QWindow* w : QGuiApplication::topLevelWindows())
        if (w->title() == "Kelvane Notch" && w->geometry().contains(756, 5))
            window = w;
    ASSERT_NE(window, nullptr);
    const auto swipe = [&](QPointF fingers) {
        const QPointF at(window->width() / 2.0, 10);
        QNativeGestureEvent event(Qt::SwipeNativeGesture, QPointingDevice::primaryPointingDevice(), 3, at, at,
                                  window->mapToGlobal(at), 0, fingers);
        QCoreApplication::sendEvent(window, &event);
    };
    for (int i = 0; i < 4; ++i)
        swipe({2, 40});
    ASSERT_TRUE(waitUntil([&] { return kelvane.mode() == KelvaneState::Mode::tuckle; }));
    waitUntil([] { return false; }, 400); // the quiet that ends a swipe
    for (int i = 0; i < 4; ++i)
        swipe({-1, -40});
    EXPECT_TRUE(waitUntil([&] { return kelvane.mode() == KelvaneState::Mode::closed; }));
}

// Plugging, unplugging and plugging again within a second rebuilds the notches once, one second
// after the last change.
TEST(NotchWindow, HotPlugBurstRebuildsOnceAfterASecond)
{
    Agent agent;
    ASSERT_TRUE(waitUntil([] { return mappedNotchWindows().size() == 2; }));
    QSignalSpy rebuilds(&agent.manager, &WindowsManager::displayKitsChanged);
    XvfbServer& x = *XvfbServer::current();
    const XvfbServer::Monitor m2{"M2", QRect(1512, 0, 1280, 800), QSize(340, 212), false};

    // Each step is seen by the agent before the next, as with a real cable.
    const auto seen = [&](qsizetype count) {
        return waitUntil([&] { return agent.screens.screens().size() == count; }, 900);
    };
    QElapsedTimer burst;
    burst.start();
    ASSERT_TRUE(x.removeMonitor("M2") && seen(1));
    ASSERT_TRUE(x.addMonitor(m2) && seen(2));
    ASSERT_TRUE(x.removeMonitor("M2") && seen(1));
    ASSERT_TRUE(x.addMonitor(m2) && seen(2));
    ASSERT_LT(burst.elapsed(), 1000) << "the burst must be shorter than the debounce";
    QElapsedTimer sinceLast;
    sinceLast.start();

    ASSERT_TRUE(waitUntil([&] { return rebuilds.count() >= 1; }, 5000));
    EXPECT_GE(sinceLast.elapsed(), 1000);
    // Nothing more follows.
    waitUntil([] { return false; }, 1500);
    EXPECT_EQ(rebuilds.count(), 1);
    EXPECT_EQ(agent.manager.displayKits().size(), 2u);
    ASSERT_TRUE(waitUntil([] { return mappedNotchWindows().size() == 2; }));
}
