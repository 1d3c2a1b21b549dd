#include "SystemBus.h"

#include "Polling.h"

#include <QDBusConnectionInterface>
#include <QFile>
#include <QUuid>

namespace kelvane::test {

SystemBus::SystemBus()
{
    QFile config(m_dir.filePath(QStringLiteral("system.conf")));
    if (!config.open(QIODevice::WriteOnly))
        return;
    config.write(QStringLiteral("<busconfig><type>system</type><keep_umask/><listen>unix:path=%1</listen>"
                                "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
                                "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>")
                     .arg(m_dir.filePath(QStringLiteral("system_bus_socket")))
                     .toUtf8());
    config.close();
    m_daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--config-file=") + config.fileName(),
                                                   QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
    QByteArray address;
    while (!address.contains('\n') && m_daemon.waitForReadyRead(10000))
        address += m_daemon.readAllStandardOutput();
    m_address = QString::fromUtf8(address.trimmed());
    if (m_address.isEmpty())
        return;
    m_env.set("DBUS_SYSTEM_BUS_ADDRESS", m_address.toUtf8());
    m_connectionName = QStringLiteral("test-system-") + QUuid::createUuid().toString(QUuid::Id128);
    QDBusConnection::connectToBus(m_address, m_connectionName);
}

SystemBus::~SystemBus()
{
    stopMocks();
    QDBusConnection::disconnectFromBus(m_connectionName);
    m_daemon.terminate();
    m_daemon.waitForFinished(5000);
}

QDBusConnection SystemBus::connection() const { return QDBusConnection(m_connectionName); }

bool SystemBus::startMock(const QString& templateName, const QString& service, const QString& parameters)
{
    auto mock = std::make_unique<QProcess>();
    mock->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments{QStringLiteral("-m"), QStringLiteral("dbusmock"), QStringLiteral("--system"),
                          QStringLiteral("--template"), templateName};
    if (!parameters.isEmpty())
        arguments << QStringLiteral("-p") << parameters;
    // Debian's own interpreter: another python3 on the path may lack the D-Bus module.
    mock->start(QStringLiteral("/usr/bin/python3"), arguments);
    m_mocks.push_back(std::move(mock));
    return waitUntil([&] { return connection().interface()->isServiceRegistered(service).value(); }, 10000);
}

void SystemBus::stopMocks()
{
    for (auto& mock : m_mocks) {
        mock->terminate();
        mock->waitForFinished(5000);
    }
    m_mocks.clear();
}

bool SystemBus::call(const QStringList& arguments) const
{
    QProcess busctl;
    busctl.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    busctl.start(QStringLiteral("busctl"),
                 QStringList{QStringLiteral("--address=") + m_address, QStringLiteral("call")} + arguments);
    return busctl.waitForFinished(10000) && busctl.exitStatus() == QProcess::NormalExit && busctl.exitCode() == 0;
}

} // namespace kelvane::test
