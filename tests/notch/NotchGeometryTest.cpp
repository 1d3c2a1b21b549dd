#include "notch/NotchGeometry.h"
#include "notch/NotchViewModel.h"

#include "core/ManualScheduler.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelvane;
namespace G = kelvane::NotchGeometry;

namespace {
void expectSize(const QSizeF& actual, const QSizeF& expected)
{
    EXPECT_NEAR(actual.width(), expected.width(), 1e-6);
    EXPECT_NEAR(actual.height(), expected.height(), 1e-6);
}
} // namespace

TEST(NotchGeometry, NotchSizesFromTheScreenTheHousingAndTheUsersOffsets)
{
    expectSize(G::pointsPerInch({1512, 982}, QSizeF(400, 260)), {1512 * 25.4 / 400, 982 * 25.4 / 260});
    expectSize(G::pointsPerInch({1512, 982}, std::nullopt), {72, 72});
    expectSize(G::pointsPerInch({1512, 982}, QSizeF(0, 0)), {72, 72});

    const QSizeF ppi(127, 127);
    expectSize(G::rawNotchSize(0, ppi), {0, 0});
    expectSize(G::rawNotchSize(32, ppi), {127 * 1.44313723, 32});
    expectSize(G::virtualNotchSize({96, 96}), {96 * 1.44313723, 32});

    // Only half of each offset is applied, and never to a screen without a notch.
    expectSize(G::effectiveNotchSize({183, 32}, 10, -4), {188, 30});
    expectSize(G::effectiveNotchSize({0, 0}, 10, 10), {0, 0});
}

TEST(NotchGeometry, OpenFootprintFitsTheGridTheScreenAndTheNotch)
{
    struct Case {
        const char* what;
        QSizeF notch;
        double screenWidth;
        TuckleGrid::Size grid;
        QSizeF expected;
    };
    const Case cases[] = {
        {"default panel", {183, 32}, 1512, TuckleGrid::Size::cells(11, 2), {550, 157}},
        {"narrow screen", {183, 32}, 600, TuckleGrid::Size::cells(11, 2), {520, 157}},
        {"tiny screen keeps 320", {183, 32}, 300, TuckleGrid::Size::cells(11, 2), {320, 157}},
        {"notch wider than panel", {183, 32}, 1512, TuckleGrid::Size::cells(2, 2), {183, 157}},
        {"low notch uses 32", {183, 20}, 1512, TuckleGrid::Size::cells(11, 2), {550, 157}},
        {"no notch uses 32", {0, 0}, 1512, TuckleGrid::Size::cells(11, 3), {550, 207}},
        {"tall notch is the base", {183, 38}, 1512, TuckleGrid::Size::cells(11, 4), {550, 263}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        expectSize(G::openFootprint(c.notch, c.screenWidth, c.grid), c.expected);
    }
}

// The window is centred and reaches one point above its screen, whichever screen it is on.
TEST(NotchGeometry, WindowSitsAtTheTopCentreOneAboveTheEdge)
{
    struct Case {
        QRectF screen;
        QSizeF window;
        QRectF yUp;
        QRectF desktop;
    };
    const Case cases[] = {
        {{0, 0, 1512, 982}, {620, 178}, {446, 805, 620, 178}, {446, -1, 620, 178}},
        {{1512, 0, 1280, 800}, {620, 178}, {330, 623, 620, 178}, {1842, -1, 620, 178}},
        {{0, 982, 1920, 1080}, {620, 178}, {650, 903, 620, 178}, {650, 981, 620, 178}},
    };
    for (const Case& c : cases) {
        const QRectF yUp = G::windowContentRect(c.screen.size(), c.window);
        EXPECT_EQ(yUp, c.yUp);
        EXPECT_EQ(G::toDesktop(c.screen, yUp), c.desktop);
    }
    // Room for the springs' overshoot and the popped notch, never wider than the screen.
    const QSizeF window = G::windowSize({138.5, 32}, {550, 157}, 1512);
    EXPECT_GE(window.width(), 550 * 1.12);
    EXPECT_GE(window.height(), 157 * 1.12);
    EXPECT_EQ(G::windowSize({138.5, 32}, {550, 157}, 500).width(), 500);
}

namespace {
struct ViewModelFixture {
    ManualScheduler sched;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    KelvaneState state{sched, settings};
};
} // namespace

TEST(NotchViewModel, FaceDependsOnTheNotchAndTheNonNotchSetting)
{
    ViewModelFixture f;
    NotchViewModel vm({{0, 0}, {1512, 982}, {96, 96}}, f.state, f.settings);
    QSignalSpy changes(&vm, &NotchViewModel::notchStateChanged);
    GeneralSettings general;
    struct Case {
        bool isNonNotch;
        bool enableOnNonNotch;
        NotchViewModel::State expected;
        int emissions;
    };
    const Case cases[] = {
        {true, true, NotchViewModel::State::standardContent, 0},
        {true, false, NotchViewModel::State::disabled, 1},
        {true, false, NotchViewModel::State::disabled, 1},
        {false, false, NotchViewModel::State::standardContent, 2},
        {false, true, NotchViewModel::State::standardContent, 2},
    };
    for (const Case& c : cases) {
        general.enableOnNonNotchScreens = c.enableOnNonNotch;
        vm.update(general, c.isNonNotch, true);
        EXPECT_EQ(vm.notchState(), c.expected);
        EXPECT_EQ(changes.count(), c.emissions);
    }
    // The same rule follows the stored setting.
    f.settings.update(Keys::generalSettings(), [](auto& g) { g.enableOnNonNotchScreens = false; });
    EXPECT_TRUE(vm.isDisabled());
}

TEST(NotchViewModel, SizesFollowTheSettingsAndTheOpenTab)
{
    ViewModelFixture f;
    NotchViewModel notched({{183, 32}, {1512, 982}, {127, 127}}, f.state, f.settings);
    NotchViewModel plain({{0, 0}, {1512, 982}, {96, 96}}, f.state, f.settings);
    QSignalSpy sizes(&notched, &NotchViewModel::sizesChanged);

    expectSize(plain.notchSize(), {0, 0});
    expectSize(plain.drawnNotchSize(), {96 * 1.44313723, 32});

    f.settings.update(Keys::generalSettings(), [](auto& g) { g.notchWidthFineTune = 8; });
    f.settings.update(Keys::traySettings(), [](auto& t) { t.size = TuckleGrid::Size::cells(6, 3); });
    EXPECT_EQ(sizes.count(), 2);
    expectSize(notched.notchSize(), {187, 32});
    expectSize(plain.notchSize(), {0, 0});
    expectSize(plain.drawnNotchSize(), {96 * 1.44313723 + 4, 32});

    expectSize(notched.openFootprint(), {550, 157});
    f.state.setMode(KelvaneState::Mode::tray, Springs::animation);
    expectSize(notched.openFootprint(), {300, 207});
    EXPECT_GE(notched.windowSize().height(), 207);
}

TEST(NotchViewModel, OnlyTheClosedShownNotchPops)
{
    ViewModelFixture f;
    NotchViewModel vm({{183, 32}, {1512, 982}, {127, 127}}, f.state, f.settings);
    vm.setHovering(true);
    EXPECT_EQ(vm.hoverScale(), 1.25);
    f.state.setMode(KelvaneState::Mode::tuckle, Springs::animation);
    EXPECT_EQ(vm.hoverScale(), 1.0);
    f.state.setMode(KelvaneState::Mode::closed, Springs::closePlain);
    f.state.setHidden(true);
    EXPECT_EQ(vm.hoverScale(), 1.0);
    f.state.setHidden(false);
    f.settings.update(Keys::generalSettings(), [](auto& g) { g.transluscent = true; });
    EXPECT_EQ(vm.hoverScale(), 1.0);
}
