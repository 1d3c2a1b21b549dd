#include "DesktopSharing.h"

#include "core/Log.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QStandardPaths>

namespace kelvane {

DesktopSharing::DesktopSharing(QDBusConnection bus)
    : m_bus(std::move(bus))
{
}

void DesktopSharing::perform(const QList<QUrl>& files)
{
    const bool kdeConnect = m_bus.isConnected() &&
                            m_bus.interface()->isServiceRegistered(QStringLiteral("org.kde.kdeconnect")).value() &&
                            !QStandardPaths::findExecutable(QStringLiteral("kdeconnect-cli")).isEmpty();
    if (!kdeConnect) {
        logLine(u"Sharing", QStringLiteral("No sharing service is available (KDE Connect is not running); %1 file(s) not sent.")
                                .arg(files.size()));
        return;
    }
    // The first reachable device receives the files; the notch does not wait for the answer.
    auto* list = new QProcess;
    QObject::connect(list, &QProcess::finished, list, [list, files] {
        list->deleteLater();
        const QString device =
            QString::fromUtf8(list->readAllStandardOutput()).section(QLatin1Char('\n'), 0, 0).trimmed();
        if (device.isEmpty()) {
            logLine(u"Sharing", QStringLiteral("KDE Connect has no device in reach; %1 file(s) not sent.").arg(files.size()));
            return;
        }
        for (const QUrl& file : files)
            QProcess::startDetached(QStringLiteral("kdeconnect-cli"),
                                    {QStringLiteral("--device"), device, QStringLiteral("--share"), file.toString()});
    });
    QObject::connect(list, &QProcess::errorOccurred, list, [list](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            list->deleteLater();
    });
    list->start(QStringLiteral("kdeconnect-cli"), {QStringLiteral("--list-available"), QStringLiteral("--id-only")});
}

void DesktopSharing::toggle(const QList<QUrl>& files)
{
    if (files.isEmpty())
        return;
    const QString previewer = QStringLiteral("org.gnome.NautilusPreviewer");
    if (m_bus.isConnected() && m_bus.interface()->isServiceRegistered(previewer).value()) {
        // Showing the file that is shown closes the preview.
        QDBusMessage show = QDBusMessage::createMethodCall(previewer, QStringLiteral("/org/gnome/NautilusPreviewer"),
                                                           previewer, QStringLiteral("ShowFile"));
        show << files.first().toString() << 0 << true;
        m_bus.send(show);
        return;
    }
    QProcess::startDetached(QStringLiteral("xdg-open"), {files.first().toString()});
}

} // namespace kelvane
