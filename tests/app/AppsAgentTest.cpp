#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {


QJsonObject shortcut(const QString& name)
{
    for (const QJsonValue& entry : QJsonDocument::fromJson(ctl({"shortcuts", "list"}).out.toUtf8()).array())
        if (entry["name"] == name)
            return entry.toObject();
    return {};
}

void writeScript(const QString& path, const QByteArray& body)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n" + body);
    file.close();
    file.setPermissions(file.permissions() | QFile::ExeOwner);
}

QString readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

TEST(AppsAgent, AShortcutRunsFromTheCommandLineAndItsButtonAndPeeksItsLastLine)
{
    TemporaryHome home;
    SessionBus session;
    const QString folder = home.path() + "/.local/share/io.kelvane.Kelvane/Shortcuts";
    const QString arguments = home.path() + "/arguments";
    QDir().mkpath(folder);
    writeScript(folder + "/Tag files.sh", "printf '%s\\n' \"$@\" > '" + arguments.toUtf8() + "'\necho \"Tagged $# files\"\n");
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    EXPECT_EQ(shortcut("Tag files.sh")["shown"], true);

    // From the command line, with a file named relative to where it is called from.
    ASSERT_EQ(ctl({"shortcuts", "run", "Tag files.sh", "a file.txt"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return shortcut("Tag files.sh")["state"] == "done"; }));
    EXPECT_EQ(shortcut("Tag files.sh")["lastLine"], "Tagged 1 files");
    EXPECT_EQ(readAll(arguments), QDir::current().absoluteFilePath("a file.txt") + "\n");
    // Its last line peeks out of the closed notch.
    EXPECT_TRUE(waitUntil([] { return notch("M1")["quickPeek"] == "Tag files"; }));
    EXPECT_EQ(ctl({"shortcuts", "run", "nothing here"}).status, 1);

    // Added while the agent runs, it gets a button; one that runs long shows it and can be stopped.
    writeScript(folder + "/Wait.sh", "echo waiting\nexec sleep 60\n");
    ASSERT_TRUE(waitUntil([] { return shortcut("Wait.sh")["shown"] == true; }));
    ASSERT_EQ(ctl({"settings", "set", "tuckleSettings",
                   R"({"enabled":true,"enabledWidgets":["shortcuts"],"showDividers":true,"size":{"height":{"value":2},"width":{"value":11}},"wallpaper":"none","wallpaperBlur":4,"widgetsPadding":12})"})
                  .status,
              0);
    ASSERT_EQ(ctl({"shortcuts", "run", "Wait.sh"}).status, 0);
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"] == "tuckle"; }));
    screenshot("shortcuts-widget");
    ASSERT_EQ(ctl({"shortcuts", "stop", "Wait.sh"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return shortcut("Wait.sh")["state"] == "idle"; }));
    EXPECT_EQ(shortcut("Wait.sh")["lastLine"], "Stopped");

    // A click on its button runs it with the tray's selection: none.
    const QJsonObject window = notch("M1")["window"].toObject();
    const int centre = int(window["x"].toDouble() + window["width"].toDouble() / 2);
    QFile::remove(arguments);
    XvfbServer::current()->run("xdotool", {"mousemove", QString::number(centre - 26), QString::number(int(window["y"].toDouble()) + 72),
                                           "click", "1"});
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(arguments); })) << agent.readOutput().toStdString();
    ASSERT_TRUE(waitUntil([] { return shortcut("Tag files.sh")["lastLine"] == "Tagged 0 files"; }));
    EXPECT_EQ(readAll(arguments), "\n");
    screenshot("shortcuts-widget-after-click");
    EXPECT_EQ(agent.readOutput().count("[ShortcutsManager]"), 0) << agent.readOutput().toStdString();
}

TEST(AppsAgent, AQuickAppIsChosenFromTheCommandLineAndStartedWithAClick)
{
    TemporaryHome home;
    ScopedEnvironment env;
    const QString share = home.path() + "/system-share";
    const QString started = home.path() + "/started";
    QDir().mkpath(share + "/applications");
    // The system folders stay: the desktop's settings schemas are read from them.
    env.set("XDG_DATA_DIRS", share.toUtf8() + ":/usr/local/share:/usr/share");
    writeScript(home.path() + "/recorder", "echo \"$DESKTOP_STARTUP_ID\" > '" + started.toUtf8() + "'\n");
    QFile entry(share + "/applications/org.example.Sketch.desktop");
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Sketch\nIcon=applications-graphics\nExec=" +
                home.path().toUtf8() + "/recorder %F\nStartupNotify=true\n");
    entry.close();
    SessionBus session;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));

    EXPECT_EQ(ctl({"apps", "add", "org.example.Missing.desktop"}).status, 1);
    ASSERT_EQ(ctl({"apps", "add", "org.example.Sketch.desktop"}).status, 0);
    const QJsonObject apps = ctlJson({"apps", "list", "sket"});
    EXPECT_EQ(apps["chosen"], QJsonArray{"org.example.Sketch.desktop"});
    ASSERT_EQ(apps["installed"].toArray().size(), 1);
    EXPECT_EQ(apps["installed"][0]["name"], "Sketch");

    ASSERT_EQ(ctl({"settings", "set", "tuckleSettings",
                   R"({"enabled":true,"enabledWidgets":["quickApps"],"showDividers":true,"size":{"height":{"value":2},"width":{"value":11}},"wallpaper":"none","wallpaperBlur":4,"widgetsPadding":12})"})
                  .status,
              0);
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"] == "tuckle"; }));
    screenshot("quick-apps-widget");
    const QJsonObject window = notch("M1")["window"].toObject();
    const int centre = int(window["x"].toDouble() + window["width"].toDouble() / 2);
    XvfbServer::current()->run("xdotool", {"mousemove", QString::number(centre - 91),
                                           QString::number(int(window["y"].toDouble()) + 75), "click", "1"});
    ASSERT_TRUE(waitUntil([&] { return !readAll(started).isEmpty(); })) << agent.readOutput().toStdString();
    EXPECT_TRUE(readAll(started).startsWith("kelvane-")) << readAll(started).toStdString();

    // Chosen once, it is there after a restart; taken off, it is not.
    ASSERT_EQ(ctl({"quit"}).status, 0);
    RunningAgent again;
    ASSERT_TRUE(again.waitForNotches(2));
    EXPECT_EQ(ctlJson({"apps", "list"})["chosen"], QJsonArray{"org.example.Sketch.desktop"});
    ASSERT_EQ(ctl({"apps", "remove", "org.example.Sketch.desktop"}).status, 0);
    EXPECT_EQ(ctlJson({"apps", "list"})["chosen"], QJsonArray{});
}
