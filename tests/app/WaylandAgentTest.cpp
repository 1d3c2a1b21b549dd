#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/SoundServer.h"
#include "support/WaylandCompositor.h"
#include "support/XvfbServer.h"

#include <QElapsedTimer>
#include <QImage>
#include <QJsonArray>
#include <QRegularExpression>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>

using namespace kelvane::test;
using Kind = WaylandCompositor::Kind;

namespace {
// The compositor started, and this test's clients (the agent among them) pointed at its XWayland
// as a Wayland session's are; skipped with one line where it is not installed.
#define START_COMPOSITOR(compositor, env)                                                                              \
    if (const QString missing = (compositor).missingProgram(); !missing.isEmpty())                                     \
        GTEST_SKIP() << "The Wayland session cannot be tried here: " << missing.toStdString() << " is not installed";  \
    {                                                                                                                  \
        QString why;                                                                                                   \
        ASSERT_TRUE((compositor).start(&why)) << why.toStdString();                                                    \
    }                                                                                                                  \
    (env).set("DISPLAY", (compositor).xDisplay().toUtf8());                                                            \
    (env).set("WAYLAND_DISPLAY", (compositor).waylandDisplay().toUtf8());                                              \
    (env).set("XDG_SESSION_TYPE", "wayland")

struct Geometry {
    int width = 0, height = 0, x = 0, y = 0;
    int centre() const { return x + width / 2; }
};
Geometry parse(const QString& text)
{
    static const QRegularExpression form(R"((\d+)x(\d+)\+(-?\d+)\+(-?\d+))");
    const auto m = form.match(text);
    return m.hasMatch() ? Geometry{m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt(), m.captured(4).toInt()}
                        : Geometry{};
}

// An ordinary X11 window of the session that tells each button press on it, one line each.
struct OrdinaryWindow {
    QProcess process;
    explicit OrdinaryWindow(const QStringList& geometry = {})
    {
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start("xev", QStringList{"-name", "Ordinary", "-event", "button"} + geometry);
    }
    ~OrdinaryWindow()
    {
        process.kill();
        process.waitForFinished();
    }
    int presses()
    {
        seen += QString::fromUtf8(process.readAll());
        return seen.count("ButtonPress");
    }
    QString seen;
};

// The pixels of the area darker than `grey`.
int darkPixels(const QImage& picture, const QRect& area, int grey = 60)
{
    int dark = 0;
    for (int y = area.top(); y <= area.bottom() && y < picture.height(); ++y)
        for (int x = area.left(); x <= area.right() && x < picture.width(); ++x)
            dark += qGray(picture.pixel(x, y)) < grey;
    return dark;
}
} // namespace

// Weston, headless: the notch stands at the top centre of the output, above an ordinary window
// opened after it, open or closed; the keys cannot be observed, and the agent says that the levels
// are followed instead.
TEST(WaylandAgent, UnderWestonTheNotchStandsAtTheTopCentreAboveOrdinaryWindows)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    WaylandCompositor weston(Kind::westonHeadless, {1512, 982});
    START_COMPOSITOR(weston, env);

    RunningAgent agent;
    ASSERT_TRUE(waitUntil([&] { return weston.notchWindows().size() == 1; }, 15000)) << agent.readOutput().toStdString();
    const Geometry closed = parse(weston.notchWindows().value(0));
    EXPECT_NEAR(closed.centre(), 756, 1);
    EXPECT_LE(closed.y, 0);
    // Cut to the closed notch: nothing of the window lies in the way beside it.
    EXPECT_LT(closed.width, 300);
    EXPECT_LT(closed.height, 60);

    OrdinaryWindow ordinary({"-geometry", "1512x982+0+0"});
    ASSERT_TRUE(waitUntil([&] {
        QString tree;
        weston.runX("xwininfo", {"-root", "-tree"}, &tree);
        return tree.contains("\"Ordinary\"");
    }));
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    ASSERT_TRUE(waitUntil([&] { return parse(weston.notchWindows().value(0)).height > 120; }));
    const Geometry open = parse(weston.notchWindows().value(0));
    EXPECT_NEAR(open.centre(), 756, 1);

    // The compositor's own picture: the panel, dark blue, over the ordinary window, white.
    QThread::msleep(600);
    const QImage picture(weston.screenshot("wayland-weston-open"));
    ASSERT_FALSE(picture.isNull());
    const QRect panel(open.x + 40, 100, open.width - 80, 30);
    EXPECT_GT(darkPixels(picture, panel, 150), panel.width() * panel.height() * 9 / 10);
    EXPECT_EQ(darkPixels(picture, QRect(200, 500, 100, 100), 200), 0) << "the ordinary window is not where it was put";

    ASSERT_EQ(ctl({"settings", "set", "liveActivitiesSettings",
                   ctl({"settings", "get", "liveActivitiesSettings"}).out.trimmed().replace(
                       "\"enableHUDReplacement\":false", "\"enableHUDReplacement\":true")}).status, 0);
    EXPECT_TRUE(waitUntil([&] {
        return agent.readOutput().contains("[HUD] A Wayland session keeps the volume and brightness keys to itself");
    })) << agent.output.toStdString();
}

// Sway, headless, with an output added while the agent runs: a notch at the top centre of each,
// rebuilt once the outputs have settled for a second, not before; the compositor's picture of both
// outputs. A volume set on the sound server shows in the notch, as no key can.
TEST(WaylandAgent, UnderSwayEveryOutputHasItsNotchAsOutputsComeAndGo)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    WaylandCompositor sway(Kind::swayHeadless, {1512, 982});
    START_COMPOSITOR(sway, env);
    std::unique_ptr<SoundServer> sound;
    if (SoundServer::available()) {
        sound = std::make_unique<SoundServer>(home.path() + "/sound");
        ASSERT_TRUE(SoundServer::ready());
    }

    RunningAgent agent;
    ASSERT_TRUE(waitUntil([&] { return sway.notchWindows().size() == 1; }, 15000)) << agent.readOutput().toStdString();
    EXPECT_NEAR(parse(sway.notchWindows().value(0)).centre(), 756, 1);
    OrdinaryWindow ordinary;

    ASSERT_TRUE(sway.sway({"create_output"}));
    QElapsedTimer sincePlugged;
    sincePlugged.start();
    ASSERT_TRUE(sway.sway({"output", "HEADLESS-2", "resolution", "1280x800", "position", "1512", "0"}));
    QThread::msleep(400);
    if (sincePlugged.elapsed() < 900) {
        EXPECT_EQ(sway.notchWindows().size(), 1) << "rebuilt before the outputs settled";
    }
    ASSERT_TRUE(waitUntil([&] { return sway.notchWindows().size() == 2; }, 10000));
    const QStringList both = sway.notchWindows();
    QList<int> centres{parse(both[0]).centre(), parse(both[1]).centre()};
    std::sort(centres.begin(), centres.end());
    EXPECT_NEAR(centres[0], 756, 1);
    EXPECT_NEAR(centres[1], 1512 + 640, 1);
    EXPECT_EQ(ctlJson({"state"})["notches"].toArray().size(), 2);

    const QImage picture(sway.screenshot("wayland-sway-two-outputs"));
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.width(), 1512 + 1280);
    for (const int centre : centres)
        EXPECT_GT(darkPixels(picture, QRect(centre - 40, 2, 80, 20)), 80 * 20 * 9 / 10) << "no notch at " << centre;

    if (sound) {
        ASSERT_EQ(ctl({"settings", "set", "liveActivitiesSettings",
                       ctl({"settings", "get", "liveActivitiesSettings"}).out.trimmed().replace(
                           "\"enableHUDReplacement\":false", "\"enableHUDReplacement\":true")}).status, 0);
        ASSERT_TRUE(waitUntil([&] { return agent.readOutput().contains("[HUD] A Wayland session keeps"); }));
        ASSERT_EQ(run("pactl", {"set-sink-volume", "@DEFAULT_SINK@", "40%"}).status, 0);
        EXPECT_TRUE(waitUntil([] {
            for (const auto& value : ctlJson({"state"})["notches"].toArray())
                if (std::abs(value.toObject()["indicator"].toObject()["value"].toDouble() - 0.4) < 0.005)
                    return true;
            return false;
        }, 3000));
    }

}

// Sway drawn into the test's X server, whose pointer reaches it as a real device: a click beside
// the notch's shape, inside the room it may open into, reaches the ordinary window below; the
// notch itself takes the pointer and opens, and then takes the clicks on its panel. An output
// added and taken away is followed.
TEST(WaylandAgent, UnderSwayAClickBesideTheNotchReachesTheWindowBelow)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    WaylandCompositor sway(Kind::swayInX11, {1512, 982});
    START_COMPOSITOR(sway, env);
    XvfbServer& x = *XvfbServer::current();
    const auto click = [&](int px, int py) {
        x.run("xdotool", {"mousemove", QString::number(px), QString::number(py)});
        QThread::msleep(100);
        x.run("xdotool", {"click", "1"});
    };
    OrdinaryWindow ordinary;
    ASSERT_TRUE(waitUntil([&] {
        QString tree;
        sway.runX("xwininfo", {"-root", "-tree"}, &tree);
        return tree.contains("\"Ordinary\"");
    }));
    x.run("xdotool", {"mousemove", "700", "600"});
    RunningAgent agent;
    ASSERT_TRUE(waitUntil([&] { return sway.notchWindows().size() == 1; }, 15000)) << agent.readOutput().toStdString();
    const Geometry room = parse(QStringLiteral("%1x%2+%3+%4")
                                    .arg(notch("XWAYLAND0")["window"].toObject()["width"].toInt())
                                    .arg(notch("XWAYLAND0")["window"].toObject()["height"].toInt())
                                    .arg(notch("XWAYLAND0")["window"].toObject()["x"].toInt())
                                    .arg(notch("XWAYLAND0")["window"].toObject()["y"].toInt()));
    ASSERT_GT(room.width, 300);

    click(room.x + 30, room.y + room.height - 30);
    EXPECT_TRUE(waitUntil([&] { return ordinary.presses() == 1; }, 3000)) << "the click beside the notch was taken";

    x.run("xdotool", {"mousemove", QString::number(room.centre()), "8"});
    ASSERT_TRUE(waitUntil([] { return notch("XWAYLAND0")["mode"].toString() == "tuckle"; }, 5000));
    click(room.centre(), room.y + 100);
    QThread::msleep(500);
    EXPECT_EQ(ordinary.presses(), 1) << "a click on the open panel went through it";

    ASSERT_EQ(ctl({"close"}).status, 0);
    x.run("xdotool", {"mousemove", "700", "600"});
    ASSERT_TRUE(waitUntil([&] { return parse(sway.notchWindows().value(0)).height < 60; }, 5000));
    click(room.x + 30, room.y + room.height - 30);
    EXPECT_TRUE(waitUntil([&] { return ordinary.presses() == 2; }, 3000)) << "the closed notch still holds its room";

    // An output comes and goes (its window in the X server closed, as a monitor is unplugged).
    ASSERT_TRUE(sway.sway({"create_output"}));
    ASSERT_TRUE(sway.sway({"output", "X11-2", "resolution", "1280x800", "position", "1512", "0"}));
    ASSERT_TRUE(waitUntil([&] { return sway.notchWindows().size() == 2; }, 10000));
    QString windows;
    x.run("xwininfo", {"-root", "-children"}, &windows);
    static const QRegularExpression second(R"((0x[0-9a-f]+) .*1280x800\+0\+0)");
    const QString output = second.match(windows).captured(1);
    ASSERT_FALSE(output.isEmpty()) << windows.toStdString();
    ASSERT_EQ(x.run(KELVANE_CLOSE_WINDOW, {output}), 0);
    // The notch of the output left is built again with the others, once the outputs have settled.
    EXPECT_TRUE(waitUntil([&] {
        const QStringList notches = sway.notchWindows();
        return notches.size() == 1 && parse(notches[0]).centre() == 756 &&
               ctlJson({"state"})["notches"].toArray().size() == 1;
    }, 10000)) << sway.notchWindows().join(' ').toStdString();
}

// Sway drawn into the test's X server, whose keyboard reaches it as a real device. Sway gives the
// keyboard only to the windows it manages: a text field clicked in the panel leaves the panel open
// (the notch does not take the keyboard only to lose it at once) and gets its keys through a small
// window that Sway does give them to; a note clicked for editing opens in a window of its own,
// where what is typed reaches the note.
TEST(WaylandAgent, UnderSwayTextFieldsKeepThePanelOpenAndGetTheirKeysThroughAManagedWindow)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    WaylandCompositor sway(Kind::swayInX11, {1512, 982});
    START_COMPOSITOR(sway, env);
    XvfbServer& x = *XvfbServer::current();
    RunningAgent agent;
    ASSERT_TRUE(waitUntil([&] { return sway.notchWindows().size() == 1; }, 15000)) << agent.readOutput().toStdString();
    ASSERT_EQ(
        ctl({"settings", "set", "tuckleSettings",
             R"({"enabled":true,"enabledWidgets":["notes","todoList"],"showDividers":true,"size":{"height":{"value":3},"width":{"value":11}},"wallpaper":"none","wallpaperBlur":4,"widgetsPadding":12})"})
            .status,
        0);
    const QString shopping = ctl({"notes", "add", "# Shopping"}).out.trimmed();
    const QJsonObject window = notch("XWAYLAND0")["window"].toObject();
    const int centre = window["x"].toInt() + window["width"].toInt() / 2;
    const int top = window["y"].toInt();
    const auto click = [&](int dx, int dy) {
        x.run("xdotool", {"mousemove", QString::number(centre + dx), QString::number(top + dy), "click", "1"});
        QThread::msleep(400);
    };
    const auto mode = [] { return notch("XWAYLAND0")["mode"].toString(); };
    x.run("xdotool", {"mousemove", QString::number(centre), "8"});
    ASSERT_TRUE(waitUntil([&] { return mode() == "tuckle"; }, 5000));
    QThread::msleep(500);

    // A text field of the panel has its keys passed on by a window the compositor gives them to.
    click(124, 139); // the to-do field
    EXPECT_EQ(mode(), "tuckle") << "a click in a text field closed the panel";
    const auto relayShown = [&] {
        return sway.runX("xdotool", {"search", "--onlyvisible", "--name", "Typing in the notch"}) == 0;
    };
    EXPECT_TRUE(waitUntil(relayShown, 5000));
    QThread::msleep(300);
    x.run("xdotool", {"type", "--delay", "15", "Water plants"});
    x.run("xdotool", {"key", "Return"});
    x.run("xdotool", {"type", "--delay", "15", "Call \"Bo\" at 5$"});
    x.run("xdotool", {"key", "Return"});
    EXPECT_TRUE(waitUntil(
        [] {
            const QString todos = ctl({"todo", "list"}).out;
            return todos.contains("Water plants") && todos.contains("Call \\\"Bo\\\" at 5$");
        },
        3000))
        << ctl({"todo", "list"}).out.toStdString();
    sway.screenshot("wayland-sway-typing-relay");
    EXPECT_EQ(mode(), "tuckle");
    // The field clicked again while typing: the keys still reach it.
    click(124, 139);
    EXPECT_TRUE(waitUntil(relayShown, 3000));
    x.run("xdotool", {"type", "--delay", "15", "Post letters"});
    x.run("xdotool", {"key", "Return"});
    EXPECT_TRUE(waitUntil(
        [] {
            return ctl({"todo", "list"}).out.contains("Post letters");
        },
        3000))
        << ctl({"todo", "list"}).out.toStdString();
    x.run("xdotool", {"key", "Escape"});
    EXPECT_TRUE(waitUntil([&] { return !relayShown(); }, 3000));
    EXPECT_EQ(mode(), "tuckle");
    // The panel closed while typing takes the relay with it; opened again, all is as before.
    click(124, 139);
    EXPECT_TRUE(waitUntil(relayShown, 3000));
    ASSERT_EQ(ctl({"close"}).status, 0);
    EXPECT_TRUE(waitUntil([&] { return !relayShown(); }, 3000)) << "the relay outlived the panel";
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    ASSERT_TRUE(waitUntil([&] { return mode() == "tuckle"; }, 5000));
    QThread::msleep(500);

    click(-95, 116); // the newest note's text
    QString tree;
    EXPECT_TRUE(waitUntil(
        [&] {
            sway.runX("xwininfo", {"-root", "-tree"}, &tree);
            return tree.contains("Shopping — Kelvane");
        },
        5000))
        << tree.toStdString();
    QThread::msleep(500);
    x.run("xdotool", {"key", "ctrl+End", "Return"});
    x.run("xdotool", {"type", "--delay", "15", "milk"});
    EXPECT_TRUE(waitUntil(
        [&] {
            return ctlJson({"notes", "show", shopping})["body"].toString() == "# Shopping\nmilk";
        },
        3000))
        << ctlJson({"notes", "show", shopping})["body"].toString().toStdString();
    sway.screenshot("wayland-sway-note-window");
}
