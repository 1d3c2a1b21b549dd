#include "SessionBus.h"

namespace kelvane::test {

SessionBus::SessionBus()
{
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                    QStringLiteral("--print-address=1")});
    QByteArray address;
    while (!address.contains('\n') && m_daemon.waitForReadyRead(10000))
        address += m_daemon.readAllStandardOutput();
    m_address = QString::fromUtf8(address.trimmed());
    if (!m_address.isEmpty())
        m_env.set("DBUS_SESSION_BUS_ADDRESS", m_address.toUtf8());
}

SessionBus::~SessionBus()
{
    m_daemon.terminate();
    m_daemon.waitForFinished(5000);
}

} // namespace kelvane::test
