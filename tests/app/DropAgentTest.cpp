#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane::test;

namespace {
// Another application's window holding files or text, and the pointer that drags them out of it.
struct DragFromAnotherApp {
    QProcess source;

    explicit DragFromAnotherApp(const QStringList& what)
    {
        source.start(KELVANE_DRAG_SOURCE, QStringList{"100", "400"} + what);
        EXPECT_TRUE(waitUntil([&] { return source.canReadLine() || source.state() != QProcess::Running; }));
        EXPECT_TRUE(waitUntil([] { return XvfbServer::current()->windowGeometries("Drag Source").size() == 1; }));
        QThread::msleep(200);
        pointer({"mousemove", "200", "500", "mousedown", "1"});
        for (const auto& [x, y] : {std::pair{220, 480}, {400, 300}, {600, 100}})
            moveTo(x, y);
    }
    ~DragFromAnotherApp()
    {
        pointer({"mouseup", "1"});
        source.waitForFinished(5000);
    }
    static void pointer(const QStringList& arguments) { run("xdotool", arguments); }
    static void moveTo(int x, int y)
    {
        pointer({"mousemove", QString::number(x), QString::number(y)});
        QThread::msleep(150);
    }
    // Moves about `x`, `y` until the notch says the pointer is over `target`.
    static bool hover(const QString& target, int x, int y)
    {
        for (int i = 0; i < 30; ++i) {
            moveTo(x + i % 2, y);
            if (notch("M1")["drop"].toObject()["hovered"].toString() == target)
                return true;
        }
        return false;
    }
    // Lets go; the source says how its drag ended.
    QString release()
    {
        pointer({"mouseup", "1"});
        source.waitForFinished(5000);
        return QString::fromUtf8(source.readAllStandardOutput()).trimmed().section('\n', -1);
    }
};

} // namespace

// Files and text dragged from another application open the notch into its drop area: on the tray
// target they are kept (a file from the temporary folder survives its source), on the AirDrop
// target they are offered to the sharing service, and a drag that strays away closes the area.
TEST(DropAgent, DragsFromAnotherApplicationLandOnTheirTarget)
{
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    const QString temporary = home.path() + "/tmp";
    QDir().mkpath(temporary);
    env.set("TMPDIR", temporary.toUtf8());
    QFile file(temporary + "/clip.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("dragged words");
    file.close();

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    const QJsonObject window = notch("M1")["window"].toObject();
    const int centre = window["x"].toInt() + window["width"].toInt() / 2;

    {
        DragFromAnotherApp drag({"--files", file.fileName()});
        drag.moveTo(centre, 8);
        ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "dragging"; }));
        EXPECT_EQ(notch("M1")["drop"].toObject()["offered"].toArray(), QJsonArray{"airdrop"});
        ASSERT_TRUE(drag.hover("sheld", centre - 60, 90));
        EXPECT_EQ(drag.release(), "copy");
    }
    ASSERT_TRUE(waitUntil([] { return trayNames() == QStringList{"clip.txt"}; })) << trayNames().join(",").toStdString();
    EXPECT_EQ(notch("M1")["mode"].toString(), "tray");
    QDir(temporary).removeRecursively();
    QFile kept(ctlJson({"tray", "list"})["items"].toArray()[0].toObject()["files"].toArray()[0].toObject()["path"].toString());
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), "dragged words");

    {
        DragFromAnotherApp drag({"--text", "pass it on"});
        drag.moveTo(centre, 8);
        ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "dragging"; }));
        bool over = false;
        for (int x = centre; x < centre + 400 && !over; x += 40)
            over = drag.hover("airdrop", x, 90);
        ASSERT_TRUE(over);
        EXPECT_EQ(drag.release(), "copy");
    }
    EXPECT_TRUE(waitUntil([&] { return agent.readOutput().contains("[Sharing] No sharing service is available"); }))
        << agent.output.toStdString();
    EXPECT_EQ(trayNames(), QStringList{"clip.txt"});
    EXPECT_EQ(notch("M1")["mode"].toString(), "tray");

    {
        DragFromAnotherApp drag({"--text", "never mind"});
        drag.moveTo(centre, 8);
        ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "dragging"; }));
        drag.moveTo(centre, 400);
        // Gone while the button is still held: the notch shows the tray, which holds a file.
        EXPECT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "tray"; }));
        EXPECT_EQ(drag.release(), "ignored");
    }
    EXPECT_EQ(trayNames(), QStringList{"clip.txt"});
}
