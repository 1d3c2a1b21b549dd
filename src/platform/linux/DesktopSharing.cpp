#include "DesktopSharing.h"

#include "core/Log.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QProcess>

namespace kelvane {

namespace {
const QString kdeConnect = QStringLiteral("org.kde.kdeconnect");
const QString gsConnect = QStringLiteral("org.gnome.Shell.Extensions.GSConnect");
const QString gsConnectPath = QStringLiteral("/org/gnome/Shell/Extensions/GSConnect");
const QString previewer = QStringLiteral("org.gnome.NautilusPreviewer");

void sharingLine(const QString& message) { logLine(u"Sharing", message); }

// Calls a method and hands its reply to `answered` on the main thread, when it comes.
void callThen(const QDBusConnection& bus, const QDBusMessage& call, QObject* context,
              std::function<void(const QDBusMessage& reply)> answered)
{
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, answered] {
        watcher->deleteLater();
        answered(watcher->reply());
    });
}

using ManagedObjects = QMap<QDBusObjectPath, QMap<QString, QVariantMap>>;
} // namespace

DesktopSharing::DesktopSharing(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    qDBusRegisterMetaType<QVariantMap>();
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    qDBusRegisterMetaType<ManagedObjects>();
    if (!m_bus.isConnected())
        return;
    auto* watcher = new QDBusServiceWatcher(this);
    watcher->setConnection(m_bus);
    watcher->setWatchMode(QDBusServiceWatcher::WatchForRegistration | QDBusServiceWatcher::WatchForUnregistration);
    for (const QString& service : {kdeConnect, gsConnect, previewer}) {
        watcher->addWatchedService(service);
        // Whether it already runs, asked without waiting.
        QDBusMessage ask = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                                          QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
        ask << service;
        callThen(m_bus, ask, this, [this, service](const QDBusMessage& reply) {
            if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
                follow(service, reply.arguments().constFirst().toBool());
        });
    }
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this](const QString& service) { follow(service, true); });
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString& service) { follow(service, false); });
}

DesktopSharing::~DesktopSharing()
{
    for (const auto& finished : m_holding)
        finished();
}

void DesktopSharing::follow(const QString& service, bool present)
{
    if (service == previewer) {
        if (std::exchange(m_previewer, present) != present)
            availabilityChanged.notify();
        return;
    }
    const QString before = serviceName();
    (service == kdeConnect ? m_kdeConnect : m_gsConnect) = present;
    if (serviceName() != before)
        serviceChanged.notify();
}

QString DesktopSharing::serviceName() const
{
    if (m_kdeConnect)
        return QStringLiteral("KDE Connect");
    if (m_gsConnect)
        return QStringLiteral("GSConnect");
    return {};
}

void DesktopSharing::perform(const QList<QUrl>& files, std::function<void()> finished)
{
    if (serviceName().isEmpty()) {
        sharingLine(QStringLiteral("No sharing service is available (KDE Connect or GSConnect is not running); %1 file(s) not sent.")
                        .arg(files.size()));
        finished();
        return;
    }
    m_holding.push_back(std::move(finished));
    if (m_kdeConnect)
        sendWithKdeConnect(files);
    else
        sendWithGSConnect(files);
}

void DesktopSharing::sendWithKdeConnect(const QList<QUrl>& files)
{
    QDBusMessage devices = QDBusMessage::createMethodCall(kdeConnect, QStringLiteral("/modules/kdeconnect"),
                                                          QStringLiteral("org.kde.kdeconnect.daemon"), QStringLiteral("devices"));
    devices << true << true; // reachable and paired
    callThen(m_bus, devices, this, [this, files](const QDBusMessage& reply) {
        const QStringList ids = reply.arguments().value(0).toStringList();
        if (reply.type() != QDBusMessage::ReplyMessage || ids.isEmpty()) {
            sharingLine(QStringLiteral("KDE Connect has no device in reach; %1 file(s) not sent.").arg(files.size()));
            return;
        }
        for (const QUrl& file : files) {
            QDBusMessage share = QDBusMessage::createMethodCall(
                kdeConnect, QStringLiteral("/modules/kdeconnect/devices/%1/share").arg(ids.first()),
                QStringLiteral("org.kde.kdeconnect.device.share"), QStringLiteral("shareUrl"));
            share << file.toString(QUrl::FullyEncoded);
            callThen(m_bus, share, this, [file](const QDBusMessage& answer) {
                if (answer.type() == QDBusMessage::ErrorMessage)
                    sharingLine(QStringLiteral("KDE Connect did not take %1: %2").arg(file.fileName(), answer.errorMessage()));
            });
        }
    });
}

void DesktopSharing::sendWithGSConnect(const QList<QUrl>& files)
{
    QDBusMessage objects = QDBusMessage::createMethodCall(gsConnect, gsConnectPath, QStringLiteral("org.freedesktop.DBus.ObjectManager"),
                                                          QStringLiteral("GetManagedObjects"));
    callThen(m_bus, objects, this, [this, files](const QDBusMessage& reply) {
        QString device;
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
            const auto managed = qdbus_cast<ManagedObjects>(reply.arguments().constFirst());
            for (auto it = managed.cbegin(); it != managed.cend() && device.isEmpty(); ++it) {
                const QVariantMap properties = it->value(QStringLiteral("org.gnome.Shell.Extensions.GSConnect.Device"));
                if (properties.value(QStringLiteral("Connected")).toBool() && properties.value(QStringLiteral("Paired")).toBool())
                    device = it.key().path();
            }
        }
        if (device.isEmpty()) {
            sharingLine(QStringLiteral("GSConnect has no device in reach; %1 file(s) not sent.").arg(files.size()));
            return;
        }
        for (const QUrl& file : files) {
            // The device's "shareFile" action takes the file's address and whether to open it there.
            QDBusArgument parameter;
            parameter.beginStructure();
            parameter << file.toString(QUrl::FullyEncoded) << false;
            parameter.endStructure();
            QDBusMessage activate = QDBusMessage::createMethodCall(gsConnect, device, QStringLiteral("org.gtk.Actions"),
                                                                   QStringLiteral("Activate"));
            // A list of variants: each element is wrapped as one already.
            activate << QStringLiteral("shareFile") << QVariant::fromValue(QVariantList{QVariant::fromValue(parameter)})
                     << QVariantMap();
            callThen(m_bus, activate, this, [file](const QDBusMessage& answer) {
                if (answer.type() == QDBusMessage::ErrorMessage)
                    sharingLine(QStringLiteral("GSConnect did not take %1: %2").arg(file.fileName(), answer.errorMessage()));
            });
        }
    });
}

void DesktopSharing::toggle(const QList<QUrl>& files)
{
    if (files.isEmpty())
        return;
    if (m_previewer) {
        // Showing the file that is shown closes the preview.
        QDBusMessage show = QDBusMessage::createMethodCall(previewer, QStringLiteral("/org/gnome/NautilusPreviewer"),
                                                           previewer, QStringLiteral("ShowFile"));
        show << files.first().toString(QUrl::FullyEncoded) << 0 << true;
        m_bus.send(show);
        return;
    }
    QProcess::startDetached(QStringLiteral("xdg-open"), {files.first().toString()});
}

} // namespace kelvane
