#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/XvfbServer.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

using kelvane::test::TemporaryHome;
using kelvane::test::XvfbServer;
using kelvane::test::waitUntil;

namespace {
QStringList notchWindows() { return XvfbServer::current()->windowGeometries("Kelvane Notch"); }

struct RunningAgent {
    QProcess process;
    explicit RunningAgent()
    {
        process.setProgram(qEnvironmentVariable("KELVANE_BINARY"));
        process.setProcessEnvironment(QProcessEnvironment::systemEnvironment());
        process.start();
    }
    ~RunningAgent()
    {
        process.terminate();
        process.waitForFinished(5000);
    }
};
} // namespace

// The agent as a user starts it: a notch on every monitor, following the monitors as they come
// and go, quiet on standard output, and writing no settings it was not asked to change.
TEST(Agent, PutsANotchOnEveryMonitorAndFollowsHotPlug)
{
    TemporaryHome home;
    RunningAgent agent;
    ASSERT_TRUE(agent.process.waitForStarted(5000));
    ASSERT_TRUE(waitUntil([] { return notchWindows().size() == 2; }, 10000));
    // 620x178: the default 550x157 panel with room for the liveliest spring's overshoot.
    EXPECT_EQ(notchWindows(), (QStringList{"620x178+1842+-1", "620x178+446+-1"}));

    ASSERT_TRUE(XvfbServer::current()->removeMonitor("M2"));
    ASSERT_TRUE(waitUntil([] { return notchWindows().size() == 1; }, 5000));
    EXPECT_EQ(notchWindows(), QStringList{"620x178+446+-1"});

    ASSERT_TRUE(XvfbServer::current()->addMonitor({"M3", QRect(1512, 0, 1024, 768), QSize(270, 203), false}));
    ASSERT_TRUE(waitUntil([] { return notchWindows().size() == 2; }, 5000));
    EXPECT_EQ(notchWindows(), (QStringList{"620x178+1714+-1", "620x178+446+-1"}));

    EXPECT_EQ(agent.process.state(), QProcess::Running);
    EXPECT_EQ(agent.process.readAllStandardOutput(), QByteArray());
    EXPECT_FALSE(QFile::exists(home.configPath() + "/kelvane/kelvane.conf"));
}

TEST(Agent, ReadsTheUsersSettingsAtStart)
{
    TemporaryHome home;
    QDir().mkpath(home.configPath() + "/kelvane");
    QFile conf(home.configPath() + "/kelvane/kelvane.conf");
    ASSERT_TRUE(conf.open(QIODevice::WriteOnly));
    // A taller widget panel makes every notch window taller.
    conf.write(R"([General]
traySettings="{\"size\":{\"width\":{\"value\":11},\"height\":{\"value\":4}}}"
)");
    conf.close();

    RunningAgent agent;
    ASSERT_TRUE(waitUntil([] { return notchWindows().size() == 2; }, 10000));
    const QStringList windows = notchWindows();
    for (const QString& geometry : windows)
        EXPECT_TRUE(geometry.startsWith("620x291+")) << geometry;
}
