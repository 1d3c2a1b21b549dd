#include "notch/NotchController.h"

#include "core/ManualScheduler.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace std::chrono_literals;
using Mode = KelvaneState::Mode;

namespace {
struct CountingHaptics : HapticFeedback {
    int taps = 0;
    void levelChange() override { ++taps; }
};

struct Fixture {
    ManualScheduler sched;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    KelvaneState state{sched, settings};
    NotchViewModel viewModel{{QSizeF(0, 0), QSizeF(1512, 982), QSizeF(96, 96)}, state, settings};
    CountingHaptics haptics;
    int trayFiles = 0;
    NotchController controller{state, viewModel, settings, sched, haptics, [this] { return trayFiles; }};
};
} // namespace

// Which face an ordinary open lands on.
TEST(NotchController, OpenResolvesTheTab)
{
    struct Case {
        const char* what;
        Mode requested;
        bool autoOpenTray;
        int trayFiles;
        bool remember;
        QString stored;
        Mode expected;
    };
    const Case cases[] = {
        {"plain open", Mode::tuckle, false, 0, false, "tray", Mode::tuckle},
        {"tray with files", Mode::tuckle, true, 1, false, "tuckle", Mode::tray},
        {"tray wanted but empty", Mode::tuckle, true, 0, false, "tuckle", Mode::tuckle},
        {"files but not wanted", Mode::tuckle, false, 3, false, "tuckle", Mode::tuckle},
        {"last tab remembered", Mode::tuckle, false, 0, true, "tray", Mode::tray},
        {"remembered widgets", Mode::tuckle, false, 0, true, "tuckle", Mode::tuckle},
        {"unknown stored tab", Mode::tuckle, false, 0, true, "closed", Mode::tuckle},
        {"tray asked for", Mode::tray, false, 0, false, "tuckle", Mode::tray},
        {"drag", Mode::dragging, true, 2, true, "tray", Mode::dragging},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Fixture f;
        f.settings.setValue(Keys::autoOpenTrayWithFiles(), c.autoOpenTray);
        f.settings.setValue(Keys::rememberLastOpenTab(), c.remember);
        f.settings.setValue(Keys::preferredOpenMode(), c.stored);
        f.trayFiles = c.trayFiles;
        f.controller.openNotch(c.requested);
        EXPECT_EQ(f.state.mode(), c.expected);
        EXPECT_TRUE(f.viewModel.hovering());
        EXPECT_EQ(f.state.transition(), Springs::animation);
    }
    Fixture glass;
    glass.settings.update(Keys::generalSettings(), [](auto& g) { g.transluscent = true; });
    glass.controller.openNotch(Mode::tuckle);
    EXPECT_EQ(glass.state.transition(), Springs::liquidOpenFootprint);
}

TEST(NotchController, OpeningAHiddenNotchOnlyBringsItBack)
{
    Fixture f;
    f.controller.hideNotch();
    ASSERT_TRUE(f.state.hidden());
    f.controller.openNotch(Mode::tuckle);
    EXPECT_FALSE(f.state.hidden());
    EXPECT_EQ(f.state.mode(), Mode::closed);
    EXPECT_EQ(f.sched.pendingCount(), 0u) << "the automatic un-hide is cancelled";
}

TEST(NotchController, CloseTapsUnhoversAndLetsAPulledPanelSpringBack)
{
    Fixture f;
    f.controller.openNotch(Mode::tuckle);
    f.controller.closeNotch(true, false);
    EXPECT_EQ(f.haptics.taps, 1);
    EXPECT_TRUE(f.viewModel.hovering());

    f.settings.update(Keys::generalSettings(), [](auto& g) { g.disableHaptics = true; });
    f.controller.openNotch(Mode::tuckle);
    f.viewModel.setPanning(true);
    f.controller.closeNotch(true, true);
    EXPECT_EQ(f.haptics.taps, 1);
    EXPECT_FALSE(f.viewModel.hovering());
    EXPECT_TRUE(f.viewModel.animatingBack());
    EXPECT_TRUE(f.viewModel.cancelPan());

    // The content is back once the close spring has settled.
    f.sched.advance(std::chrono::milliseconds(int(Springs::closePlain.settlingTime() * 1000) - 5));
    EXPECT_TRUE(f.viewModel.animatingBack());
    f.sched.advance(10ms);
    EXPECT_FALSE(f.viewModel.animatingBack());

    f.viewModel.setPanning(false);
    f.controller.closeNotch(false, false);
    EXPECT_FALSE(f.viewModel.cancelPan());
}
