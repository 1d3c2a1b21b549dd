#include "notch/WindowsManager.h"
#include "notch/FullscreenMonitor.h"
#include "notch/NotchCommands.h"
#include "notch/QuickPeeks.h"

#include "core/ManualScheduler.h"
#include "support/FakeNotchWindowFactory.h"
#include "support/FakeScreenProvider.h"

#include <QJsonArray>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;
using namespace std::chrono_literals;
using Mode = KelvaneState::Mode;

namespace {
struct Fixture {
    QObject builtIn;
    QObject external;
    ManualScheduler sched;
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    FakeScreenProvider screens;
    FakeNotchWindowFactory windows;
    NullHapticFeedback haptics;
    std::unique_ptr<WindowsManager> manager;

    ScreenInfo builtInScreen() const
    {
        // A notebook panel with a camera housing 32 points high.
        return FakeScreenProvider::screen("eDP-1", {0, 0, 1512, 982}, const_cast<QObject*>(&builtIn),
                                          QSizeF(302.4, 196.4), 32);
    }
    ScreenInfo externalScreen() const
    {
        return FakeScreenProvider::screen("HDMI-1", {1512, 0, 1280, 800}, const_cast<QObject*>(&external));
    }

    Fixture()
    {
        // A user who has seen the introduction: the notches show their standard face.
        settings.setValue(Keys::intro(), false);
        screens.setScreens({builtInScreen(), externalScreen()}, false);
        screens.setMainScreen(&builtIn);
        manager = std::make_unique<WindowsManager>(
            WindowsManager::Dependencies{sched, settings, screens, windows, haptics, [] { return 0; }});
    }
    DisplayKit& kit(int i) const { return *manager->displayKits().at(static_cast<std::size_t>(i)); }
};
} // namespace

TEST(WindowsManager, BuildsOneShownWindowPerScreenAtTheTopCentre)
{
    Fixture f;
    ASSERT_EQ(f.manager->displayKits().size(), 2u);
    ASSERT_EQ(f.windows.records.size(), 2u);

    const DisplayKit& builtIn = f.kit(0);
    EXPECT_NEAR(builtIn.notchSize.width(), 1512 * 25.4 / 302.4 * 1.44313723, 1e-9);
    EXPECT_EQ(builtIn.notchSize.height(), 32);
    EXPECT_EQ(f.kit(1).notchSize, QSizeF(0, 0));

    for (int i = 0; i < 2; ++i) {
        const auto& record = *f.windows.records[static_cast<std::size_t>(i)];
        const QRectF screen = f.kit(i).screen.frame;
        EXPECT_TRUE(record.shown);
        EXPECT_DOUBLE_EQ(record.setup.frame.center().x(), screen.center().x());
        EXPECT_EQ(record.setup.frame.top(), screen.top() - 1);
        EXPECT_EQ(record.setup.frame.size(), f.kit(i).viewModel->windowSize());
    }
}

TEST(WindowsManager, OnlyFrameScaleColourSpaceOrScreenSetChangesAreSignificant)
{
    struct Case {
        const char* what;
        std::function<void(QList<ScreenInfo>&)> change;
        bool significant;
    };
    const Case cases[] = {
        {"nothing (wallpaper, window arrangement)", [](auto&) {}, false},
        {"resolution", [](auto& s) { s[1].frame.setSize({1920, 1080}); }, true},
        {"arrangement of displays", [](auto& s) { s[1].frame.moveTo(-1280, 0); }, true},
        {"scale", [](auto& s) { s[0].backingScaleFactor = 2; }, true},
        {"colour space", [](auto& s) { s[0].colorSpace = "Display P3"; }, true},
        {"missing colour space is the generic one", [](auto& s) { s[0].colorSpace = "genericDevice"; }, false},
        {"unplugged", [](auto& s) { s.removeLast(); }, true},
        {"other display, same count", [](auto& s) { s[1].number = "DP-2"; }, true},
        {"display without a number", [](auto& s) { s[1].number.reset(); }, true},
        {"physical size only", [](auto& s) { s[1].physicalSizeMm = QSizeF(1, 1); }, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Fixture f;
        QList<ScreenInfo> screens = f.screens.screens();
        c.change(screens);
        f.screens.setScreens(screens, false);
        EXPECT_EQ(f.manager->hasSignificantScreenChanges(), c.significant);
        // Once looked at, the same set is no longer news (except a screen without a number).
        EXPECT_EQ(f.manager->hasSignificantScreenChanges(), std::string(c.what) == "display without a number");
    }
}

TEST(WindowsManager, ABurstOfScreenChangesRebuildsOnceASecondAfterTheLast)
{
    Fixture f;
    QSignalSpy rebuilds(f.manager.get(), &WindowsManager::displayKitsChanged);
    const QUuid before = f.kit(0).id;

    f.screens.setScreens({f.builtInScreen()});                       // unplugged
    f.sched.advance(400ms);
    f.screens.setScreens({f.builtInScreen(), f.externalScreen()});   // plugged back
    f.sched.advance(400ms);
    f.screens.setScreens({f.builtInScreen(), f.externalScreen()});   // no change: no new delay
    f.sched.advance(599ms);
    EXPECT_EQ(rebuilds.count(), 0);
    f.sched.advance(1ms);
    EXPECT_EQ(rebuilds.count(), 1);
    EXPECT_NE(f.kit(0).id, before);
    f.sched.advance(10s);
    EXPECT_EQ(rebuilds.count(), 1);
}

TEST(WindowsManager, RebuildClosesEverythingAndStartsEachNotchAfresh)
{
    Fixture f;
    f.kit(0).kelvane->setMode(Mode::tray, Springs::animation);
    f.kit(0).kelvane->setIndicator(Indicator{Indicator::Kind::volume, "speaker", 0.3});
    f.kit(1).kelvane->setHidden(true);
    const auto oldRecords = f.windows.records;

    f.manager->updateWindows();

    for (const auto& record : oldRecords) {
        EXPECT_TRUE(record->closed);
        EXPECT_TRUE(record->contentCleared);
        EXPECT_FALSE(record->resignKey) << "the focus observer is removed";
    }
    ASSERT_EQ(f.windows.records.size(), 4u);
    EXPECT_EQ(f.kit(0).kelvane->mode(), Mode::closed);
    EXPECT_FALSE(f.kit(0).kelvane->indicator());
    EXPECT_FALSE(f.kit(1).kelvane->hidden());
    EXPECT_EQ(f.sched.pendingCount(), 0u) << "no timer of the old notches survives";
}

TEST(WindowsManager, LosingFocusClosesTheNotchUnlessSomethingHoldsItOpen)
{
    struct Case {
        const char* what;
        bool menu;
        bool locked;
        bool editing;
        bool preventWhenTyping;
        bool glass;
        bool closes;
    };
    const Case cases[] = {
        {"plain", false, false, false, true, false, true},
        {"glass look", false, false, false, true, true, true},
        {"context menu open", true, false, false, true, false, false},
        {"locked", false, true, false, true, false, false},
        {"typing", false, false, true, true, false, false},
        {"typing, closing allowed", false, false, true, false, false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Fixture f;
        f.settings.update(Keys::generalSettings(), [&](auto& g) {
            g.preventUnhoverCloseWhenTyping = c.preventWhenTyping;
            g.transluscent = c.glass;
        });
        DisplayKit& kit = f.kit(0);
        kit.kelvane->setMode(Mode::tuckle, Springs::animation);
        kit.kelvane->setLocked(c.locked);
        f.windows.records[0]->editingText = c.editing;
        if (c.menu)
            f.manager->menuDidBeginTracking();
        f.windows.records[0]->loseFocus();
        EXPECT_EQ(kit.kelvane->mode(), c.closes ? Mode::closed : Mode::tuckle);
        if (c.closes) {
            EXPECT_EQ(kit.kelvane->transition(), c.glass ? Springs::liquidCloseFootprint : Springs::closePlain);
        }
    }
}

// The menu's own focus change arrives after it ends; it must still be ignored.
TEST(WindowsManager, MenuTrackingEndsOneLoopTurnLater)
{
    Fixture f;
    f.kit(0).kelvane->setMode(Mode::tray, Springs::animation);
    f.manager->menuDidBeginTracking();
    f.manager->menuDidEndTracking();
    EXPECT_TRUE(f.manager->isTrackingContextMenu());
    f.windows.records[0]->loseFocus();
    EXPECT_EQ(f.kit(0).kelvane->mode(), Mode::tray);
    f.sched.runPending();
    EXPECT_FALSE(f.manager->isTrackingContextMenu());
    f.windows.records[0]->loseFocus();
    EXPECT_EQ(f.kit(0).kelvane->mode(), Mode::closed);
}

TEST(WindowsManager, IndicatorsGoToTheMainScreenOrToAll)
{
    const Indicator level{Indicator::Kind::brightness, "sun.max", 0.75};
    {
        Fixture f;
        f.manager->showIndicator(level, false);
        EXPECT_EQ(f.kit(0).kelvane->indicator(), level);
        EXPECT_FALSE(f.kit(1).kelvane->indicator());
        f.manager->showIndicator(level, true);
        EXPECT_EQ(f.kit(1).kelvane->indicator(), level);
    }
    {
        Fixture f;
        QObject elsewhere;
        f.screens.setMainScreen(&elsewhere); // no notch on the main screen
        f.manager->showIndicator(level, false);
        EXPECT_FALSE(f.kit(0).kelvane->indicator());
        EXPECT_FALSE(f.kit(1).kelvane->indicator());
    }
}

TEST(WindowsManager, PressingTheSameKeyTwiceKeepsTheIndicatorUpASecondAfterTheSecondPress)
{
    Fixture f;
    const Indicator louder{Indicator::Kind::volume, "speaker.wave.3", 0.625};
    f.manager->showIndicator(louder, false);
    f.sched.advance(600ms);
    f.manager->showIndicator(louder, false); // at the top already: the same level again
    f.sched.advance(999ms);
    EXPECT_EQ(f.kit(0).kelvane->indicator(), louder);
    f.sched.advance(1ms);
    EXPECT_FALSE(f.kit(0).kelvane->indicator());
}

// Scripts reach the notches by screen name; without one, opening acts where the user looks and
// closing or hiding acts everywhere.
TEST(NotchCommands, ActOnTheNamedOrDefaultNotchesAndReportThem)
{
    Fixture f;
    NotchCommands commands(*f.manager, f.screens);
    const auto modes = [&] {
        QStringList result;
        for (const auto& value : commands.state()["notches"].toArray()) {
            const QJsonObject notch = value.toObject();
            result << notch["screen"].toString() + ':' + notch["mode"].toString() +
                          (notch["hidden"].toBool() ? "+hidden" : "");
        }
        return result;
    };

    EXPECT_EQ(commands.open("tray", {}), std::nullopt);
    EXPECT_EQ(modes(), (QStringList{"eDP-1:tray", "HDMI-1:closed"}));
    EXPECT_EQ(commands.open({}, "HDMI-1"), std::nullopt);
    EXPECT_EQ(commands.select("tuckle", "eDP-1"), std::nullopt);
    EXPECT_EQ(modes(), (QStringList{"eDP-1:tuckle", "HDMI-1:tuckle"}));
    EXPECT_EQ(commands.close({}), std::nullopt);
    EXPECT_EQ(commands.hide("HDMI-1"), std::nullopt);
    EXPECT_EQ(modes(), (QStringList{"eDP-1:closed", "HDMI-1:closed+hidden"}));
    // A hidden notch asked to open on a tab comes back on that tab.
    EXPECT_EQ(commands.open("tray", "HDMI-1"), std::nullopt);
    EXPECT_EQ(modes(), (QStringList{"eDP-1:closed", "HDMI-1:tray"}));

    EXPECT_EQ(commands.open("shelf", {}), "Unknown tab \"shelf\": use tuckle or tray.");
    EXPECT_EQ(commands.select("closed", {}), "Unknown tab \"closed\": use tuckle or tray.");
    EXPECT_EQ(commands.hide("DP-9"), "No notch on screen \"DP-9\".");

    const QJsonObject builtIn = commands.state()["notches"].toArray().first().toObject();
    EXPECT_TRUE(builtIn["main"].toBool());
    EXPECT_EQ(builtIn["rawNotchSize"].toObject()["height"].toDouble(), 32);
    EXPECT_EQ(builtIn["window"].toObject()["width"].toDouble(), f.windows.records[0]->setup.frame.width());
    EXPECT_TRUE(builtIn["indicator"].isNull());
}

// New content peeks out of the closed, shown notches for a moment; a second peek takes the place
// of the first and runs its own time; open and hidden notches and a user who turned peeks off see
// none.
TEST(QuickPeeks, ShowOnClosedNotchesForAMoment)
{
    Fixture f;
    QuickPeeks peeks(f.sched, f.settings, *f.manager);
    const auto shown = [&](int i) { return f.kit(i).kelvane->quickPeekTitle(); };
    const auto duration = std::chrono::milliseconds(int(QuickPeeks::duration * 1000));

    peeks.post({"First Tone", "Sox Synth"});
    EXPECT_EQ(shown(0), "First Tone");
    EXPECT_EQ(f.kit(0).kelvane->quickPeekDetail(), "Sox Synth");
    EXPECT_EQ(shown(1), "First Tone");
    f.sched.advance(duration - 500ms);
    peeks.post({"Second Tone", ""});
    f.sched.advance(1s);
    EXPECT_EQ(shown(0), "Second Tone");
    f.sched.advance(duration - 1s);
    EXPECT_FALSE(f.kit(0).kelvane->hasQuickPeek());
    EXPECT_FALSE(f.kit(1).kelvane->hasQuickPeek());

    f.kit(0).controller->openNotch(Mode::tuckle);
    f.kit(1).controller->hideNotch();
    peeks.post({"Third Tone", ""});
    EXPECT_FALSE(f.kit(0).kelvane->hasQuickPeek());
    EXPECT_FALSE(f.kit(1).kelvane->hasQuickPeek());

    f.kit(0).controller->closeNotch(false, true);
    f.settings.update(Keys::liveActivitiesSettings(), [](auto& s) { s.enableQuickPeek = false; });
    peeks.post({"Fourth Tone", ""});
    EXPECT_FALSE(f.kit(0).kelvane->hasQuickPeek());
    f.settings.update(Keys::liveActivitiesSettings(), [](auto& s) { s.enableQuickPeek = true; });
    peeks.post({"Fifth Tone", ""});
    EXPECT_EQ(NotchCommands(*f.manager, f.screens).state()["notches"].toArray()[0].toObject()["quickPeek"],
              "Fifth Tone");
}

// Calibration: the face comes up closed on the main screen's notch, the offsets it writes move the
// outline by half of themselves within their limit, and "done" ends it.
TEST(NotchCommands, CalibrateTheOutlineOntoTheCameraHousing)
{
    Fixture f;
    NotchCommands commands(*f.manager, f.screens);
    const QSizeF before = f.kit(0).viewModel->notchSize();
    f.kit(0).controller->openNotch(Mode::tuckle);

    EXPECT_EQ(commands.calibrate("depth", ""), "Unknown calibration \"depth\": use width, height or done.");
    EXPECT_EQ(commands.calibrate("width", ""), std::nullopt);
    EXPECT_EQ(f.kit(0).viewModel->notchState(), NotchViewModel::State::fineTuningWidth);
    EXPECT_EQ(f.kit(0).kelvane->mode(), Mode::closed);
    EXPECT_EQ(f.kit(1).viewModel->fineTuning(), "");

    f.kit(0).controller->fineTune(8, 0);
    f.kit(0).controller->fineTune(0, -3);
    EXPECT_EQ(f.kit(0).viewModel->notchSize(), before + QSizeF(4, -1.5));
    f.kit(0).controller->fineTune(1000, 0);
    EXPECT_EQ(f.settings.value(Keys::generalSettings()).notchWidthFineTune, NotchController::fineTuneLimit);

    EXPECT_EQ(commands.calibrate("height", "HDMI-1"), std::nullopt);
    EXPECT_EQ(f.kit(1).viewModel->fineTuning(), "height");
    EXPECT_EQ(commands.state()["notches"].toArray()[1].toObject()["calibrating"], "height");
    EXPECT_EQ(commands.calibrate("done", ""), std::nullopt);
    EXPECT_EQ(f.kit(0).viewModel->notchState(), NotchViewModel::State::standardContent);
    EXPECT_EQ(f.kit(1).viewModel->fineTuning(), "");
}

TEST(FullscreenMonitor, AScreenIsInFullScreenWhenItsTopmostWindowIs)
{
    const QRectF screen(1512, 0, 1280, 800);
    const StackedWindow full{screen, true, false};
    const StackedWindow small{{1600, 100, 300, 200}, false, false};
    const StackedWindow overCentre{{1900, 200, 600, 400}, false, false};
    const StackedWindow minimised{{1900, 200, 600, 400}, false, true};
    const StackedWindow elsewhere{{0, 0, 1512, 982}, true, false};
    const struct {
        WindowStack stack;
        bool expected;
    } cases[] = {
        {{{full}, true, {}}, true},
        {{{small, full}, true, {}}, true},       // a window beside the centre leaves it in full screen
        {{{overCentre, full}, true, {}}, false}, // one over the centre is what the user looks at
        {{{minimised, full}, true, {}}, true},
        {{{elsewhere}, true, {}}, false}, // full screen on the other monitor
        {{{}, true, {}}, false},
        {{{}, false, full}, true}, // no stacking order: the active window decides
        {{{}, false, small}, false},
        {{{}, false, StackedWindow{screen, true, true}}, false},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(isCoveredByFullScreen(screen, cases[i].stack), cases[i].expected) << "case " << i;

    EXPECT_TRUE(isBuiltInPanel("eDP-1"));
    EXPECT_TRUE(isBuiltInPanel("LVDS1"));
    EXPECT_FALSE(isBuiltInPanel("HDMI-1"));
}

TEST(WindowsManager, FullScreenHidesTheNotchOnlyWhereTheUserAskedAndPutsAnOpenPanelAway)
{
    struct Windows final : WindowStackSource {
        void start() override {}
    } windows;
    Fixture f;
    FullscreenMonitor monitor(windows);
    const auto follow = [&] { f.manager->updateFullScreen([&](const QRectF& s) { return monitor.isFullScreen(s); }); };
    QObject::connect(&monitor, &FullscreenMonitor::changed, follow);
    f.kit(0).kelvane->setMode(Mode::tuckle, Springs::animation);
    f.kit(1).kelvane->setMode(Mode::tuckle, Springs::animation);

    const StackedWindow onBuiltIn{{0, 0, 1512, 982}, true, false};
    const StackedWindow onExternal{{1512, 0, 1280, 800}, true, false};
    Q_EMIT windows.stackChanged({{onBuiltIn, onExternal}, true, {}});
    const struct {
        FullscreenOption option;
        bool builtInHidden, externalHidden;
    } cases[] = {
        {FullscreenOption::allMonitors, false, false},
        {FullscreenOption::notchedScreens, false, true},
        {FullscreenOption::never, true, true},
    };
    for (const auto& c : cases) {
        f.settings.update(Keys::generalSettings(), [&](GeneralSettings& s) { s.showInFullscreen = c.option; });
        EXPECT_TRUE(f.kit(0).viewModel->isFullScreen());
        EXPECT_EQ(f.kit(0).viewModel->hiddenForFullScreen(), c.builtInHidden);
        EXPECT_EQ(f.kit(1).viewModel->hiddenForFullScreen(), c.externalHidden);
    }
    // The notch that went away closed its panel; the one that still shows kept it open.
    EXPECT_EQ(f.kit(0).kelvane->mode(), Mode::tuckle);
    EXPECT_EQ(f.kit(1).kelvane->mode(), Mode::closed);

    Q_EMIT windows.stackChanged({{onBuiltIn}, true, {}});
    EXPECT_FALSE(f.kit(1).viewModel->isFullScreen());
    EXPECT_FALSE(f.kit(1).viewModel->hiddenForFullScreen());
    EXPECT_TRUE(f.kit(0).viewModel->hiddenForFullScreen());
}

namespace {
// Note windows that only record how they were made, and can be closed as a user closes them.
struct FakeNoteWindows final : NoteWindowFactory {
    struct Window final : NoteWindow {
        qint64 id;
        int* raised;
        qint64 noteId() const override { return id; }
        void raise() override { ++*raised; }
        Window(qint64 note, int* r) : id(note), raised(r) {}
    };
    struct Made {
        qint64 note;
        bool codeMode;
        QRectF notch;
        QRectF screen;
        std::function<void()> closed;
    };
    std::vector<Made> made;
    int raised = 0;
    std::unique_ptr<NoteWindow> createNoteWindow(qint64 note, bool codeMode, const QRectF& notch, const QRectF& screen,
                                                 std::function<void()> closed) override
    {
        made.push_back({note, codeMode, notch, screen, std::move(closed)});
        return std::make_unique<Window>(note, &raised);
    }
};
} // namespace

TEST(WindowsManager, ANoteGrowsOutOfItsNotchIntoOneWindowAndGoesBackWhenItCloses)
{
    Fixture f;
    FakeNoteWindows notes;
    f.manager->setNoteWindowFactory(&notes);
    ExpandedNoteManager& expanded = *f.manager->expandedNoteManager();

    // From the external screen's notch: its top centre, at the closed notch's size.
    expanded.open(7, f.kit(1).id.toString(QUuid::WithoutBraces), true);
    ASSERT_EQ(notes.made.size(), 1u);
    EXPECT_TRUE(notes.made[0].codeMode);
    EXPECT_EQ(notes.made[0].screen, QRectF(1512, 0, 1280, 800));
    EXPECT_DOUBLE_EQ(notes.made[0].notch.center().x(), 1512 + 640);
    EXPECT_EQ(notes.made[0].notch.top(), 0);
    EXPECT_EQ(expanded.openNoteId(), 7);

    // The same note again comes forward; another note takes the one window.
    expanded.open(7, f.kit(0).id.toString(QUuid::WithoutBraces), true);
    EXPECT_EQ(notes.made.size(), 1u);
    EXPECT_EQ(notes.raised, 1);
    expanded.open(8, f.kit(0).id.toString(QUuid::WithoutBraces), false);
    ASSERT_EQ(notes.made.size(), 2u);
    EXPECT_DOUBLE_EQ(notes.made[1].notch.center().x(), 756);
    EXPECT_EQ(notes.made[1].notch.height(), 32);
    EXPECT_EQ(expanded.openNoteId(), 8);
    // The first window's late report changes nothing.
    notes.made[0].closed();
    EXPECT_EQ(expanded.openNoteId(), 8);

    // Closed by the user: the note is back in the panel.
    notes.made[1].closed();
    EXPECT_EQ(expanded.openNoteId(), 0);
    expanded.open(8, QStringLiteral("not a kit"), false);
    EXPECT_EQ(notes.made.size(), 3u) << "an unknown notch opens from the first";
    expanded.close();
    EXPECT_EQ(expanded.openNoteId(), 0);
}

// Turned on (a reset does), the introduction is the face of every notch until it ends; a
// calibration shown meanwhile comes first.
TEST(WindowsManager, EveryNotchShowsTheIntroductionUntilItEnds)
{
    Fixture f;
    using State = NotchViewModel::State;
    const auto faces = [&] {
        std::vector<State> list;
        for (const auto& kit : f.manager->displayKits())
            list.push_back(kit->viewModel->notchState());
        return list;
    };
    ASSERT_EQ(faces(), (std::vector{State::standardContent, State::standardContent}));
    f.settings.resetDefaults();
    EXPECT_EQ(faces(), (std::vector{State::showingIntro, State::showingIntro}));
    f.kit(0).viewModel->setFineTuning(State::fineTuningWidth);
    EXPECT_EQ(faces(), (std::vector{State::fineTuningWidth, State::showingIntro}));
    f.kit(0).viewModel->setFineTuning(std::nullopt);
    f.sched.advance(IntroGuide::stepDuration * IntroGuide::stepCount());
    EXPECT_EQ(faces(), (std::vector{State::standardContent, State::standardContent}));
    EXPECT_FALSE(f.settings.value(Keys::intro()));
}
