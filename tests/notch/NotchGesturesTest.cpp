#include "notch/NotchGestures.h"

#include "core/ManualScheduler.h"

#include <gtest/gtest.h>

using namespace kelvane;
using namespace std::chrono_literals;
using Mode = KelvaneState::Mode;
using Swipe = NotchGestures::Swipe;

namespace {
struct Fixture {
    ManualScheduler sched;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    KelvaneState state{sched, settings};
    NotchViewModel viewModel{{QSizeF(180, 32), QSizeF(1512, 982), QSizeF(96, 96)}, state, settings};
    NullHapticFeedback haptics;
    NotchController controller{state, viewModel, settings, sched, haptics, [] { return 0; }};
    bool menuUp = false;
    std::vector<int> skips;
    NotchGestures gestures{{state, viewModel, controller, sched, settings, [this] { return menuUp; },
                            [this](int step) { skips.push_back(step); }}};

    void general(std::function<void(GeneralSettings&)> change) { settings.update(Keys::generalSettings(), change); }
    void control(std::function<void(GestureControlSettings&)> change)
    {
        settings.update(Keys::gestureControlSettings(), change);
    }
    void open()
    {
        gestures.clicked();
        ASSERT_EQ(state.mode(), Mode::tuckle);
    }
};

std::chrono::milliseconds ms(double seconds) { return std::chrono::milliseconds(int(seconds * 1000)); }
} // namespace

TEST(NotchGestures, HoverOpensAfterASettleAndPopsOnlyWhenNotWanted)
{
    Fixture f;
    // Passing over the notch on the way to the top edge does not open it.
    f.gestures.pointerEntered();
    EXPECT_TRUE(f.viewModel.hovering());
    f.sched.advance(ms(NotchGestures::hoverSettle) - 10ms);
    f.gestures.pointerExited();
    f.sched.advance(1s);
    EXPECT_EQ(f.state.mode(), Mode::closed);
    EXPECT_FALSE(f.viewModel.hovering());

    f.gestures.pointerEntered();
    f.sched.advance(ms(NotchGestures::hoverSettle));
    EXPECT_EQ(f.state.mode(), Mode::tuckle);

    // A drag that arrives while the pointer settles keeps the face it opened.
    Fixture d;
    d.gestures.pointerEntered();
    d.state.setMode(Mode::dragging, Springs::animation);
    d.sched.advance(1s);
    EXPECT_EQ(d.state.mode(), Mode::dragging);

    Fixture g;
    g.general([](auto& s) { s.alwaysOpenNotchOnHover = false; });
    g.gestures.pointerEntered();
    g.sched.advance(1s);
    EXPECT_EQ(g.state.mode(), Mode::closed);
    EXPECT_DOUBLE_EQ(g.viewModel.hoverScale(), 1.25);
    g.gestures.clicked();
    EXPECT_EQ(g.state.mode(), Mode::tuckle);
}

TEST(NotchGestures, LeavingClosesAfterAGraceUnlessSomethingHoldsThePanel)
{
    struct Case {
        const char* what;
        std::function<void(Fixture&)> hold;
        bool closes;
    };
    const std::vector<Case> cases{
        {"nothing holds it", [](Fixture&) {}, true},
        {"locked", [](Fixture& f) { f.state.setLocked(true); }, false},
        {"its menu is up", [](Fixture& f) { f.menuUp = true; }, false},
        {"typing, kept open while typing", [](Fixture& f) { f.gestures.setEditingText(true); }, false},
        {"typing, allowed to close",
         [](Fixture& f) {
             f.general([](auto& s) { s.preventUnhoverCloseWhenTyping = false; });
             f.gestures.setEditingText(true);
         },
         true},
        {"typing with the panel locked while typing",
         [](Fixture& f) {
             f.general([](auto& s) {
                 s.preventUnhoverCloseWhenTyping = false;
                 s.lockKVWhenTyping = true;
             });
             f.gestures.setEditingText(true);
         },
         false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Fixture f;
        f.open();
        c.hold(f);
        f.gestures.pointerExited();
        f.sched.advance(ms(NotchGestures::closeGrace) - 10ms);
        EXPECT_EQ(f.state.mode(), Mode::tuckle);
        f.sched.advance(20ms);
        EXPECT_EQ(f.state.mode(), c.closes ? Mode::closed : Mode::tuckle);
    }

    // Coming back within the grace keeps it open.
    Fixture f;
    f.open();
    f.gestures.pointerExited();
    f.sched.advance(ms(NotchGestures::closeGrace) / 2);
    f.gestures.pointerEntered();
    f.sched.advance(1s);
    EXPECT_EQ(f.state.mode(), Mode::tuckle);

    // What held it lets go: the menu closing, the typing ending, each closes a panel left alone.
    f.menuUp = true;
    f.gestures.pointerExited();
    f.sched.advance(1s);
    EXPECT_EQ(f.state.mode(), Mode::tuckle);
    f.menuUp = false;
    f.gestures.menuClosed();
    f.sched.advance(1s);
    EXPECT_EQ(f.state.mode(), Mode::closed);

    f.general([](auto& s) { s.lockKVWhenTyping = true; });
    f.open();
    f.gestures.setEditingText(true);
    EXPECT_TRUE(f.state.locked());
    f.gestures.pointerExited();
    f.sched.advance(1s);
    f.gestures.setEditingText(false);
    EXPECT_FALSE(f.state.locked());
    f.sched.advance(1s);
    EXPECT_EQ(f.state.mode(), Mode::closed);
}

TEST(NotchGestures, APullOpensPastTheThresholdAndSpringsBackShortOfIt)
{
    Fixture f;
    const double room = f.viewModel.openFootprint(Mode::tuckle).height() - f.viewModel.drawnNotchSize().height();

    f.gestures.pressed();
    f.gestures.dragged(-15);
    EXPECT_EQ(f.gestures.scrubExpansion(), 0);
    f.gestures.dragged(NotchGestures::scrubCommit - 1);
    EXPECT_TRUE(f.viewModel.isPanning());
    EXPECT_EQ(f.gestures.scrubExpansion(), NotchGestures::scrubCommit - 1);
    EXPECT_FALSE(f.gestures.scrubPastThreshold());
    f.gestures.released();
    EXPECT_EQ(f.state.mode(), Mode::closed);
    EXPECT_TRUE(f.viewModel.animatingBack());
    EXPECT_EQ(f.gestures.scrubExpansion(), 0);
    // A press while it springs back does not start another pull.
    f.gestures.pressed();
    f.gestures.dragged(100);
    EXPECT_EQ(f.gestures.scrubExpansion(), 0);
    f.gestures.released();
    f.sched.advance(ms(Springs::closePlain.settlingTime()) + 10ms);
    EXPECT_FALSE(f.viewModel.animatingBack());
    EXPECT_FALSE(f.viewModel.isPanning());

    // Past the open height the notch resists: it overshoots by a fraction of the extra travel.
    f.gestures.pressed();
    f.gestures.dragged(room + 100);
    EXPECT_DOUBLE_EQ(f.gestures.scrubExpansion(), room + 100 * NotchGestures::scrubResistance);
    EXPECT_TRUE(f.gestures.scrubPastThreshold());
    // The hover's own open waits while the notch is pulled.
    f.gestures.pointerEntered();
    f.sched.advance(1s);
    EXPECT_EQ(f.state.mode(), Mode::closed);
    f.gestures.released();
    EXPECT_EQ(f.state.mode(), Mode::tuckle);
    EXPECT_FALSE(f.viewModel.isPanning());
    EXPECT_EQ(f.gestures.scrubExpansion(), 0);
}

TEST(NotchGestures, SwipesOpenCloseHideAndSkipTracks)
{
    struct Case {
        const char* what;
        std::function<void(GestureControlSettings&)> settings;
        bool startOpen;
        std::vector<std::pair<double, double>> deltas; // one burst of scrolling
        Mode mode;
        bool hidden;
        std::vector<int> skips;
    };
    const auto none = [](GestureControlSettings&) {};
    const std::vector<Case> cases{
        {"wheel towards the user opens", none, false, {{0, -120}}, Mode::tuckle, false, {}},
        {"small smooth steps add up", none, false, {{0, -40}, {0, -40}, {0, -40}}, Mode::tuckle, false, {}},
        {"too little does nothing", none, false, {{0, -60}, {0, -50}}, Mode::closed, false, {}},
        {"up closes an open panel", none, true, {{0, 120}}, Mode::closed, false, {}},
        {"up hides a closed notch", none, false, {{0, 120}}, Mode::closed, true, {}},
        {"one long burst is one swipe", none, false, {{0, 120}, {0, 120}, {0, 120}}, Mode::closed, true, {}},
        {"right is the next track", none, false, {{-120, 0}}, Mode::closed, false, {1}},
        {"left is the previous track", none, true, {{130, 20}}, Mode::tuckle, false, {-1}},
        {"inverted", [](auto& s) { s.invertMediaGestures = true; }, false, {{-120, 0}}, Mode::closed, false, {-1}},
        {"media not controlled", [](auto& s) { s.controlMedia = false; }, false, {{-120, 0}}, Mode::closed, false, {}},
        {"open state not controlled",
         [](auto& s) { s.controlOpenState = false; },
         false,
         {{0, -120}},
         Mode::closed,
         false,
         {}},
        {"no gestures at all", [](auto& s) { s.allowGestures = false; }, true, {{0, 120}}, Mode::tuckle, false, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Fixture f;
        f.control(c.settings);
        if (c.startOpen)
            f.open();
        for (const auto& [dx, dy] : c.deltas) {
            f.gestures.scrolled(dx, dy);
            f.sched.advance(ms(NotchGestures::swipeQuiet) / 2);
        }
        EXPECT_EQ(f.state.mode(), c.mode);
        EXPECT_EQ(f.state.hidden(), c.hidden);
        EXPECT_EQ(f.skips, c.skips);
    }

    // After a quiet moment the next burst is a swipe of its own.
    Fixture f;
    f.gestures.scrolled(-120, 0);
    f.sched.advance(ms(NotchGestures::swipeQuiet) + 10ms);
    f.gestures.scrolled(-120, 0);
    EXPECT_EQ(f.skips, (std::vector<int>{1, 1}));
    // A touchpad's own swipe needs no scrolling.
    f.gestures.swiped(Swipe::down);
    EXPECT_EQ(f.state.mode(), Mode::tuckle);
}
