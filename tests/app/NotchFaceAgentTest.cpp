#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane::test;

namespace {
// Whether a pixel shows what lies beneath the notch (the grey desktop, a white window).
bool isBeneath(QRgb pixel) { return qGray(pixel) > 100; }
bool isBlack(QRgb pixel) { return qGray(pixel) < 40; }

// The whole screen at once, kept among the build's artifacts under `name`.
QImage picture(const QString& name) { return QImage(screenshot(name, 0)); }

int notchCentre()
{
    const QJsonObject window = notch("M1")["window"].toObject();
    return window["x"].toInt() + window["width"].toInt() / 2;
}

// The drawn shape as measured on screen: its lowest row at the centre (the last black row before a
// long run of what lies beneath, as the panel's own content is light too), and its left and right
// edges near the bottom, found from outside.
struct Outline {
    int left = -1, right = -1, bottom = -1;
};
Outline measure(const QImage& shot, int centre)
{
    Outline outline;
    if (shot.isNull() || !isBlack(shot.pixel(centre, 1)))
        return outline;
    const auto beneathFrom = [&](int y) {
        for (int i = 0; i < 16; ++i)
            if (y + i >= shot.height() || !isBeneath(shot.pixel(centre, y + i)))
                return false;
        return true;
    };
    int y = 1;
    while (y < shot.height() && !beneathFrom(y))
        ++y;
    outline.bottom = y - 1;
    const int row = outline.bottom * 9 / 10;
    outline.left = centre - 400;
    while (outline.left < centre && !isBlack(shot.pixel(outline.left, row)))
        ++outline.left;
    outline.right = centre + 400;
    while (outline.right > centre && !isBlack(shot.pixel(outline.right, row)))
        --outline.right;
    return outline;
}

// Takes a screenshot once the shape has stopped moving, and checks that it hangs from the top edge
// with rounded lower corners and concave shoulders: what lies beneath in the corners' cut-outs
// and beside the shoulders' curves, black at the shoulders' top.
Outline settledShape(const QString& name)
{
    const int centre = notchCentre();
    Outline last, now;
    QImage shot;
    for (int i = 0; i < 20; ++i) {
        QThread::msleep(250);
        shot = picture(name);
        now = measure(shot, centre);
        if (now.bottom > 0 && now.left == last.left && now.bottom == last.bottom)
            break;
        last = now;
    }
    EXPECT_GT(now.bottom, 4) << name.toStdString();
    if (now.bottom <= 4)
        return now;
    SCOPED_TRACE(name.toStdString());
    EXPECT_TRUE(isBeneath(shot.pixel(now.left, now.bottom)));
    EXPECT_TRUE(isBeneath(shot.pixel(now.right, now.bottom)));
    EXPECT_TRUE(isBlack(shot.pixel(centre, now.bottom)));
    EXPECT_TRUE(isBlack(shot.pixel(now.left - 2, 0)));
    EXPECT_TRUE(isBlack(shot.pixel(now.right + 2, 0)));
    EXPECT_TRUE(isBeneath(shot.pixel(now.left - 4, now.bottom / 2)));
    EXPECT_TRUE(isBeneath(shot.pixel(now.right + 4, now.bottom / 2)));
    return now;
}

void pointer(const QStringList& arguments) { XvfbServer::current()->run("xdotool", arguments); }

QString mode() { return notch("M1")["mode"].toString(); }

// Changes one field of a settings record through the agent's scripting interface.
void setField(const QString& key, const QString& field, const QJsonValue& value)
{
    QJsonObject record = QJsonDocument::fromJson(ctl({"settings", "get", key}).out.toUtf8()).object();
    record[field] = value;
    const Result set = ctl({"settings", "set", key, QString::fromUtf8(QJsonDocument(record).toJson())});
    EXPECT_EQ(set.status, 0) << set.err.toStdString();
}
} // namespace

// The notch's face as a person sees it on each of its faces, and the gestures that move it: the
// closed housing, the hover pop, the open grid in two orders, the tray, the hidden handle, the
// menu; a click beside the shape reaches the window beneath it.
TEST(NotchFace, IsOneShapeFromTheTopEdgeThatTheMouseOpensHidesAndBringsBack)
{
    TemporaryHome home;
    SessionBus bus;
    ComposedDesktop composed;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    const int centre = notchCentre();
    pointer({"mousemove", "200", "600"});
    setField("generalSettings", "alwaysOpenNotchOnHover", false);
    // The outline is found by its black: the open panel without a backdrop behind its widgets.
    setField("tuckleSettings", "wallpaper", "none");
    const Outline closed = settledShape("face-closed");

    // A window beneath the notch (which stays above it, as a window manager keeps it) takes the
    // clicks beside the shape and in the open panel's rounded corners.
    QProcess beneath;
    beneath.start("xev", {"-geometry", QString("600x200+%1+0").arg(centre - 300), "-event", "button"});
    ASSERT_TRUE(waitUntil([] { return XvfbServer::current()->windowGeometries("Event Tester").size() == 1; }));
    XvfbServer::current()->run("xdotool", {"search", "--name", "Kelvane Notch", "windowraise"});
    QThread::msleep(300);
    QByteArray events;
    const auto pressesBeneath = [&] {
        events += beneath.readAllStandardOutput();
        return events.count("ButtonPress");
    };
    pointer({"mousemove", QString::number(closed.left - 14), "3", "click", "1"});
    EXPECT_TRUE(waitUntil([&] { return pressesBeneath() == 1; }));
    EXPECT_EQ(mode(), "closed");
    pointer({"mousemove", QString::number(centre), "10", "click", "1"});
    ASSERT_TRUE(waitUntil([] { return mode() == "tuckle"; }));
    QThread::msleep(1000);
    // The default panel is 550 x 157, its lower corners rounded with a radius of about 20.
    pointer({"mousemove", QString::number(centre - 275 + 2), "155", "click", "1"});
    EXPECT_TRUE(waitUntil([&] { return pressesBeneath() == 2; }));
    pointer({"mousemove", QString::number(centre - 275 + 12), "150", "click", "1"});
    QThread::msleep(300);
    EXPECT_EQ(pressesBeneath(), 2);
    pointer({"mousemove", "200", "600"});
    ASSERT_TRUE(waitUntil([] { return mode() == "closed"; }));
    beneath.kill();
    beneath.waitForFinished();

    pointer({"mousemove", QString::number(centre), "4"});
    const Outline popped = settledShape("face-hover-pop");
    EXPECT_GT(popped.right - popped.left, (closed.right - closed.left) * 1.15);
    EXPECT_EQ(mode(), "closed");

    // Opened by a click: the grid with its default widgets, then in another order.
    pointer({"click", "1"});
    ASSERT_TRUE(waitUntil([] { return mode() == "tuckle"; }));
    const Outline open = settledShape("face-open-widgets");
    EXPECT_GT(open.bottom, closed.bottom * 3);
    setField("tuckleSettings", "enabledWidgets", QJsonArray{"timer", "media"});
    const Outline reordered = settledShape("face-open-widgets-reordered");
    // Typing in the timer's label keeps the panel open when the pointer leaves it.
    pointer({"mousemove", QString::number(reordered.left + 80), "48", "click", "1"});
    QThread::msleep(300);
    pointer({"type", "Tea"});
    pointer({"mousemove", "200", "600"});
    QThread::msleep(1000);
    EXPECT_EQ(mode(), "tuckle");
    pointer({"mousemove", QString::number(centre), "100"});
    ASSERT_EQ(ctl({"select", "tray"}).status, 0);
    settledShape("face-open-tray");

    // Its menu keeps it open while it is up, and hides it.
    pointer({"mousemove", QString::number(centre - 100), "20", "click", "3"});
    QThread::msleep(400);
    picture("face-menu");
    pointer({"mousemove", QString::number(centre - 100), "400"});
    QThread::msleep(800);
    EXPECT_EQ(mode(), "tray");
    // The menu's second item, below where it was opened.
    pointer({"mousemove", QString::number(centre - 60), QString::number(20 + 44), "click", "1"});
    ASSERT_TRUE(waitUntil([] { return notch("M1")["hidden"].toBool(); }));
    QThread::msleep(600);
    const QImage hidden = picture("face-hidden-handle");
    EXPECT_TRUE(isBlack(hidden.pixel(centre, 3)));
    EXPECT_TRUE(isBeneath(hidden.pixel(centre, 12)));

    // The handle brings it back, closed.
    pointer({"mousemove", QString::number(centre), "2", "click", "1"});
    EXPECT_TRUE(waitUntil([] { return !notch("M1")["hidden"].toBool() && mode() == "closed"; }));

    // Calibrated with the keys: the outline widens as the saved offset grows, and Return ends it.
    const auto widthFineTune = [] {
        return QJsonDocument::fromJson(ctl({"settings", "get", "generalSettings"}).out.toUtf8())["notchWidthFineTune"]
            .toDouble();
    };
    ASSERT_EQ(ctl({"calibrate", "width"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return notch("M1")["calibrating"].toString() == "width"; }));
    QThread::msleep(300);
    pointer({"key", "Right", "Right", "shift+Right"});
    EXPECT_TRUE(waitUntil([&] { return widthFineTune() == 12; }));
    picture("face-calibration");
    pointer({"key", "Return"});
    EXPECT_TRUE(waitUntil([] { return notch("M1")["calibrating"].toString().isEmpty(); }));
}

// Two-finger swipes, as the scroll buttons send them: down opens, up closes and then hides,
// sideways skips tracks on the real player; each new track peeks out of the closed notch.
TEST(NotchFace, ScrollSwipesOpenCloseHideAndSkipTracks)
{
    TemporaryHome home;
    SessionBus bus;
    QTemporaryDir music;
    QStringList tones;
    for (const QString title : {"First Tone", "Second Tone"}) {
        tones << music.filePath(title + ".flac");
        run("sox", {"-n", "-r", "44100", "-c", "2", "--comment", "TITLE=" + title, tones.last(), "synth", "60", "sine",
                    "440"});
    }
    ComposedDesktop composed;
    QProcess player;
    player.start("mpv", QStringList{"--no-video", "--ao=null", "--no-terminal"} + tones);
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    const auto title = [] { return ctlJson({"media"})["track"].toObject()["title"].toString(); };
    ASSERT_TRUE(waitUntil([&] { return title() == "First Tone"; }, 10000)) << title().toStdString();
    setField("generalSettings", "alwaysOpenNotchOnHover", false);
    const int centre = notchCentre();
    pointer({"mousemove", QString::number(centre), "4"});
    QThread::msleep(300);

    const struct {
        const char* button;
        QString mode;
        bool hidden;
        QString title;
        bool peeks;
    } swipes[] = {
        {"5", "tuckle", false, "First Tone", false}, // down
        {"4", "closed", false, "First Tone", false}, // up
        {"7", "closed", false, "Second Tone", true}, // sideways: the next track, which peeks out
        {"6", "closed", false, "First Tone", true},  // and back
        {"4", "closed", true, "First Tone", false},  // up on the closed notch hides it
    };
    for (const auto& swipe : swipes) {
        SCOPED_TRACE(swipe.button);
        // Each swipe comes after the quiet that ends the one before.
        QThread::msleep(400);
        pointer({"click", swipe.button});
        EXPECT_TRUE(waitUntil([&] {
            return mode() == swipe.mode && notch("M1")["hidden"].toBool() == swipe.hidden && title() == swipe.title;
        })) << mode().toStdString() << " " << title().toStdString();
        if (swipe.peeks) {
            EXPECT_TRUE(waitUntil([&] { return notch("M1")["quickPeek"].toString() == swipe.title; }));
            QThread::msleep(500);
            picture(QString("face-quick-peek-%1").arg(swipe.button));
        }
    }
    player.kill();
    player.waitForFinished();
}
