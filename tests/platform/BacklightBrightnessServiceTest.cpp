#include "platform/linux/BacklightBrightnessService.h"

#include "support/Polling.h"
#include "support/SessionBus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

using namespace kelvane;
using kelvane::test::SessionBus;
using kelvane::test::waitUntil;

namespace {
// logind's session object as far as the backlight goes: it keeps the brightness asked of it.
class SessionStandIn : public QDBusVirtualObject {
public:
    QVariantList asked;
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.member() != QLatin1String("SetBrightness"))
            return false;
        asked = message.arguments();
        connection.send(message.createReply());
        return true;
    }
};

// A kernel attribute that reads as a number and that nobody, root included, may write.
const QString readOnlyNumber = "/sys/devices/system/cpu/kernel_max";
} // namespace

// A backlight the user may not write is asked of logind, and a logind that does not answer does
// not hold up the key press that asked.
TEST(BacklightBrightnessService, AsksLogindWithoutWaitingForItsAnswer)
{
    QFile attribute(readOnlyNumber);
    if (!attribute.open(QIODevice::ReadOnly))
        GTEST_SKIP() << "no " << readOnlyNumber.toStdString() << " on this machine";
    const long kernelMax = attribute.readAll().trimmed().toLong();
    QTemporaryDir root;
    QDir().mkpath(root.filePath("panel"));
    ASSERT_TRUE(QFile::link(readOnlyNumber, root.filePath("panel/brightness")));
    QFile maximum(root.filePath("panel/max_brightness"));
    ASSERT_TRUE(maximum.open(QIODevice::WriteOnly));
    maximum.write(QByteArray::number(static_cast<qlonglong>(kernelMax * 2)));
    maximum.close();

    SessionBus bus;
    QDBusConnection logind = QDBusConnection::connectToBus(bus.address(), "logind");
    SessionStandIn session;
    ASSERT_TRUE(logind.registerVirtualObject("/org/freedesktop/login1/session/auto", &session));
    ASSERT_TRUE(logind.registerService("org.freedesktop.login1"));
    BacklightBrightnessService service(root.path(), QDBusConnection::connectToBus(bus.address(), "client"));
    QString why;
    ASSERT_EQ(service.read(&why), 0.5) << why.toStdString();

    ::kill(static_cast<pid_t>(bus.pid()), SIGSTOP);
    QElapsedTimer stepping;
    stepping.start();
    service.step(0.05);
    const qint64 took = stepping.elapsed();
    ::kill(static_cast<pid_t>(bus.pid()), SIGCONT);
    EXPECT_LT(took, 100);
    EXPECT_TRUE(waitUntil([&] { return !session.asked.isEmpty(); }));
    EXPECT_EQ(session.asked, (QVariantList{"backlight", "panel", uint(std::lround(0.55 * double(kernelMax * 2)))}));
}
