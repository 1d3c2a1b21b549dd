#include "support/AgentProcess.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <gtest/gtest.h>

using namespace kelvane::test;

namespace {
// Puts `data` on the X clipboard as `type`; xclip keeps serving it until the selection is taken.
void copyToClipboard(const QByteArray& data, const QString& type)
{
    QProcess xclip;
    xclip.start("xclip", {"-selection", "clipboard", "-t", type, "-i"});
    xclip.write(data);
    xclip.closeWriteChannel();
    xclip.waitForFinished();
}

} // namespace

// Files and then text pasted from another application's clipboard land in the tray, are copies
// of their own, and are all there after the agent is started again.
TEST(TrayAgent, KeepsPastedFilesAndTextAcrossARestart)
{
    TemporaryHome home;
    SessionBus bus;
    const QString source = home.path() + "/Documents/report.pdf";
    QDir().mkpath(home.path() + "/Documents");
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("%PDF-1.4");
    file.close();

    auto agent = std::make_unique<RunningAgent>();
    ASSERT_TRUE(agent->waitForNotches(2));
    copyToClipboard(QUrl::fromLocalFile(source).toEncoded() + "\r\n", "text/uri-list");
    Result pasted = ctl({"tray", "paste"});
    EXPECT_EQ(pasted.out, "1\n") << pasted.err.toStdString();
    copyToClipboard("remember the milk", "UTF8_STRING");
    pasted = ctl({"tray", "paste"});
    EXPECT_EQ(pasted.out, "1\n") << pasted.err.toStdString();
    const QStringList names = trayNames();
    ASSERT_EQ(names.size(), 2);
    EXPECT_EQ(names[0], "report.pdf");
    EXPECT_TRUE(QRegularExpression("^[0-9A-F-]{36}\\.txt$").match(names[1]).hasMatch()) << names[1].toStdString();
    EXPECT_EQ(ctlJson({"activities"})["selected"].toString(), "tray");

    QFile::remove(source);
    agent.reset();
    agent = std::make_unique<RunningAgent>();
    ASSERT_TRUE(agent->waitForNotches(2));
    EXPECT_EQ(trayNames(), names);
    const QJsonArray items = ctlJson({"tray", "list"})["items"].toArray();
    QFile text(items[1].toObject()["files"].toArray()[0].toObject()["path"].toString());
    ASSERT_TRUE(text.open(QIODevice::ReadOnly));
    EXPECT_EQ(text.readAll(), "remember the milk");
    EXPECT_TRUE(QFile::exists(items[0].toObject()["files"].toArray()[0].toObject()["path"].toString()));

    const Result missing = ctl({"tray", "remove", "nothing.txt"});
    EXPECT_EQ(missing.err, "kelvanectl: No file \"nothing.txt\" in the tray.\n");
    EXPECT_EQ(ctl({"tray", "remove", "report.pdf"}).status, 0);
    EXPECT_EQ(trayNames(), QStringList{names[1]});
}
