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
// Whether a process holds a file open in that folder (named or not yet named).
bool writesInto(qint64 pid, const QString& folder)
{
    const QDir fds(QString("/proc/%1/fd").arg(pid));
    for (const QString& fd : fds.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
        if (QFileInfo(fds.filePath(fd)).symLinkTarget().startsWith(folder + "/"))
            return true;
    return false;
}

// Another application's window holding files or text, and the pointer that drags them out of it.
struct DragFromAnotherApp {
    QProcess source;

    explicit DragFromAnotherApp(const QStringList& what, const QString& program = KELVANE_DRAG_SOURCE,
                                const QString& title = "Drag Source")
    {
        source.start(program, QStringList{"100", "400"} + what);
        EXPECT_TRUE(waitUntil([&] { return source.canReadLine() || source.state() != QProcess::Running; }));
        EXPECT_TRUE(waitUntil([&] { return XvfbServer::current()->windowGeometries(title).size() == 1; }));
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

// A temporary home with a temporary folder and a session bus of its own, for the agent to run in.
struct DropDesktop {
    TemporaryHome home;
    SessionBus bus;
    ScopedEnvironment env;
    QString temporary = home.path() + "/tmp";
    DropDesktop()
    {
        QDir().mkpath(temporary);
        env.set("TMPDIR", temporary.toUtf8());
    }
};

// Where the main screen's notch is, across.
int notchCentre()
{
    const QJsonObject window = notch("M1")["window"].toObject();
    return window["x"].toInt() + window["width"].toInt() / 2;
}

// Drags text from another application onto the notch's sharing target and lets go there.
void shareText(const QString& text, int centre)
{
    DragFromAnotherApp drag({"--text", text});
    drag.moveTo(centre, 8);
    ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "dragging"; }));
    bool over = false;
    for (int x = centre; x < centre + 400 && !over; x += 40)
        over = drag.hover("airdrop", x, 90);
    ASSERT_TRUE(over);
    EXPECT_EQ(drag.release(), "copy");
}
} // namespace

// Files and text dragged from another application open the notch into its drop area: on the tray
// target they are kept (a file from the temporary folder survives its source), on the AirDrop
// target they are offered to the sharing service, and a drag that strays away closes the area.
TEST(DropAgent, DragsFromAnotherApplicationLandOnTheirTarget)
{
    DropDesktop desktop;
    const QString& temporary = desktop.temporary;
    QFile file(temporary + "/clip.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("dragged words");
    file.close();

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    const int centre = notchCentre();

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

    shareText("pass it on", centre);
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

// While a large file is still being copied into the tray, a file dragged from the temporary
// folder waits behind it, text goes to the AirDrop target and the tray's last file is removed
// (which cleans the staging folder): afterwards every file is in the tray with its own contents,
// and nothing outside the tray's own folders was moved or deleted.
TEST(DropAgent, EveryFileArrivesWhileCleanupsRaceALargeCopy)
{
    DropDesktop desktop;
    const QString& temporary = desktop.temporary;
    const TemporaryHome& home = desktop.home;
    QDir().mkpath(home.path() + "/Documents");
    const auto write = [](const QString& path, const QByteArray& contents) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    };
    const QString clip = temporary + "/clip.txt", old = home.path() + "/Documents/old.txt",
                  big = home.path() + "/Documents/big.bin";
    write(clip, "dragged words");
    write(old, "old words");
    {
        // Large enough that the copy outlasts the drops: real blocks, not a sparse file.
        QFile file(big);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        const QByteArray block(1 << 20, 'b');
        for (int i = 0; i < 1536; ++i)
            file.write(block);
    }

    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    ASSERT_EQ(ctl({"tray", "add", old}).status, 0);
    const int centre = notchCentre();
    const QString trayFolder = home.path() + "/.local/share/io.kelvane.Kelvane/TrayFiles";

    QProcess largeAdd;
    {
        DragFromAnotherApp drag({"--files", clip});
        drag.moveTo(centre, 8);
        ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "dragging"; }));
        ASSERT_TRUE(drag.hover("sheld", centre - 60, 90));
        largeAdd.start(binary("kelvanectl"), {"tray", "add", big});
        // The copy is written nameless into the tray folder until it is whole.
        ASSERT_TRUE(waitUntil([&] { return writesInto(agent.process.processId(), trayFolder); }));
        EXPECT_EQ(drag.release(), "copy");
    }
    ASSERT_EQ(ctl({"tray", "remove", "old.txt"}).status, 0);
    EXPECT_EQ(largeAdd.state(), QProcess::Running) << "the large copy ended before the race it is meant to cover";
    shareText("pass it on", centre);
    ASSERT_TRUE(largeAdd.waitForFinished(60000));
    EXPECT_EQ(largeAdd.exitCode(), 0) << largeAdd.readAllStandardError().toStdString();
    ASSERT_TRUE(waitUntil([] { return trayNames() == QStringList{"big.bin", "clip.txt"}; }, 20000))
        << trayNames().join(",").toStdString();
    const auto read = [](const QString& path) {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    };
    EXPECT_EQ(read(trayFolder + "/clip.txt"), "dragged words");
    EXPECT_EQ(QFileInfo(trayFolder + "/big.bin").size(), QFileInfo(big).size());
    // The user's own files are where they were, as they were.
    EXPECT_EQ(read(clip), "dragged words");
    EXPECT_EQ(read(old), "old words");
    EXPECT_EQ(QFileInfo(big).size(), qint64(1536) << 20);
    EXPECT_TRUE(waitUntil([&] { return agent.readOutput().contains("[Sharing] No sharing service is available"); }))
        << agent.output.toStdString();
    EXPECT_FALSE(agent.output.contains("Failed to copy")) << agent.output.toStdString();
}

// A file promised by its source (as archive managers offer files dragged out of an archive) is
// written by the source into the drop's own staging folder and then kept in the tray; a source
// that cannot write it leaves the tray as it was, with one line.
TEST(DropAgent, PromisedFilesAreWrittenByTheirSourceAndKept)
{
    DropDesktop desktop;
    const QString& temporary = desktop.temporary;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    const int centre = notchCentre();

    const struct {
        QStringList arguments;
        QStringList tray;
        QString line;
    } drags[] = {
        {{"../notes.txt", "unpacked words"}, {"notes.txt"}, ""},
        {{"broken.txt", "never written", "--fail"}, {"notes.txt"}, "Error receiving promised file: the source could not save broken.txt"},
    };
    for (const auto& d : drags) {
        // The panel the last drop opened closes once the pointer has left it for a moment.
        SCOPED_TRACE(d.arguments.join(" ").toStdString());
        DragFromAnotherApp::moveTo(200, 500);
        ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "closed"; }));
        {
            DragFromAnotherApp drag(d.arguments, KELVANE_XDS_SOURCE, "XDS Source");
            drag.moveTo(centre, 8);
            ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"].toString() == "dragging"; }));
            ASSERT_TRUE(drag.hover("sheld", centre - 60, 90));
            EXPECT_EQ(drag.release(), "copy");
        }
        ASSERT_TRUE(waitUntil([&] { return trayNames() == d.tray; })) << trayNames().join(",").toStdString();
        if (!d.line.isEmpty()) {
            EXPECT_TRUE(waitUntil([&] { return agent.readOutput().contains(d.line); })) << agent.output.toStdString();
        }
    }
    QFile kept(ctlJson({"tray", "list"})["items"].toArray()[0].toObject()["files"].toArray()[0].toObject()["path"].toString());
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), "unpacked words");
    // The source wrote only where it was told: never beside the staging folder.
    EXPECT_FALSE(QFileInfo::exists(temporary + "/notes.txt"));
}
