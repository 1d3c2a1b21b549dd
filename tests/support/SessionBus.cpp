#include "SessionBus.h"

#include <QFile>

namespace kelvane::test {

SessionBus::SessionBus(const QStringList& serviceFolders)
{
    QFile config(m_dir.filePath(QStringLiteral("session.conf")));
    if (!config.open(QIODevice::WriteOnly))
        return;
    QString folders;
    for (const QString& folder : serviceFolders)
        folders += QStringLiteral("<servicedir>%1</servicedir>").arg(folder.toHtmlEscaped());
    config.write(QStringLiteral("<busconfig><type>session</type><keep_umask/><listen>unix:tmpdir=%1</listen>"
                                "<auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
                                "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy>%2"
                                "</busconfig>")
                     .arg(m_dir.path(), folders)
                     .toUtf8());
    config.close();
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--config-file=") + config.fileName(), QStringLiteral("--nofork"),
                    QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
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
