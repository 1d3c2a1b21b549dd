#include "SingleInstance.h"

#include "Identity.h"

#include "core/Log.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDir>
#include <QUrl>

namespace kelvane {

namespace {
const QString busName = QLatin1StringView(identity::busName);
const QString objectPath = QLatin1StringView(identity::objectPath);
const QString interfaceName = QLatin1StringView(identity::interfaceName);
} // namespace

SingleInstance::Role SingleInstance::claim(QObject* service)
{
    // Qt's D-Bus types are registered on this thread before the connection's thread races to.
    QDBusMetaType::typeToSignature(QMetaType::fromType<QDBusVariant>());
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        logLine(u"AppDelegate", QStringLiteral("No D-Bus session bus: single instance and scripting are off."));
        return Role::alone;
    }
    // The object is there before the name, so that no caller finds the name without it.
    bus.registerObject(objectPath, interfaceName, service, QDBusConnection::ExportAllSlots);
    const auto reply = bus.interface()->registerService(busName, QDBusConnectionInterface::DontQueueService,
                                                        QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Role::agent;
    bus.unregisterObject(objectPath);
    if (reply.isValid())
        return Role::secondary;
    logLine(u"AppDelegate", QStringLiteral("Could not claim %1 (%2): single instance and scripting are off.")
                                .arg(busName, reply.error().message()));
    return Role::alone;
}

int SingleInstance::handOver(const QStringList& arguments)
{
    QStringList urls;
    for (const QString& argument : arguments)
        urls << QUrl::fromUserInput(argument, QDir::currentPath(), QUrl::AssumeLocalFile).toString();
    QDBusMessage call = urls.isEmpty()
                            ? QDBusMessage::createMethodCall(busName, objectPath, interfaceName, QStringLiteral("Reopen"))
                            : QDBusMessage::createMethodCall(busName, objectPath, interfaceName, QStringLiteral("OpenURLs"));
    if (!urls.isEmpty())
        call << urls;
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        logLine(u"AppDelegate", QStringLiteral("The running Kelvane did not answer: %1").arg(reply.errorMessage()));
        return 1;
    }
    return 0;
}

} // namespace kelvane
