#include "DesktopSharing.h"

#include "core/Log.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <QProcess>
#include <QStandardPaths>

#include <unistd.h>

namespace kelvane {

DesktopSharing::DesktopSharing(QDBusConnection bus)
    : m_bus(std::move(bus))
{
}

namespace {
// Dropped files are staged in a folder that is removed as soon as they are handed over, while
// KDE Connect reads them later: they are linked (or copied) where they stay until the system
// clears its temporary folder.
QList<QUrl> keepForSending(const QList<QUrl>& files)
{
    const QString staging = QDir::temp().filePath(QStringLiteral("KelvaneTemp"));
    const QString kept = QDir::temp().filePath(QStringLiteral("KelvaneShared/") + QUuid::createUuid().toString(QUuid::WithoutBraces));
    QList<QUrl> result;
    for (const QUrl& url : files) {
        const QString path = url.toLocalFile();
        if (!path.startsWith(staging) || !QFileInfo(path).isFile() || !QDir().mkpath(kept)) {
            result.append(url);
            continue;
        }
        const QString target = QDir(kept).filePath(QFileInfo(path).fileName());
        const bool linked = ::link(QFile::encodeName(path).constData(), QFile::encodeName(target).constData()) == 0 ||
                            QFile::copy(path, target);
        result.append(linked ? QUrl::fromLocalFile(target) : url);
    }
    return result;
}
} // namespace

void DesktopSharing::perform(const QList<QUrl>& files, std::function<void()> finished)
{
    // The files are kept for KDE Connect apart from the drop: what was handed over may go.
    finished();
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
    QObject::connect(list, &QProcess::finished, list, [list, files = keepForSending(files)] {
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
