#pragma once

#include "tray/Pasteboard.h"

#include <QDBusConnection>
#include <QObject>

namespace kelvane {

// Sharing and previewing files on a Linux desktop, over D-Bus and never waiting for an answer.
// Files are sent to the first reachable paired phone through KDE Connect, or GSConnect on GNOME
// (there is no AirDrop here); with neither running, one line says that nothing can send them. The
// files handed over are kept until the agent ends, as these services read them when the phone
// takes them, and say nothing when they are done. Previews open in GNOME's previewer where it runs.
class DesktopSharing : public QObject, public SharingService, public FilePreviewer {
    Q_OBJECT
public:
    explicit DesktopSharing(QDBusConnection bus, QObject* parent = nullptr);
    ~DesktopSharing() override;

    void perform(const QList<QUrl>& files, std::function<void()> finished) override;
    QString serviceName() const override;
    void toggle(const QList<QUrl>& files) override;
    bool isAvailable() const override { return m_previewer; }

private:
    void follow(const QString& service, bool present);
    void sendWithKdeConnect(const QList<QUrl>& files);
    void sendWithGSConnect(const QList<QUrl>& files);

    QDBusConnection m_bus;
    bool m_kdeConnect = false;
    bool m_gsConnect = false;
    bool m_previewer = false;
    std::vector<std::function<void()>> m_holding;
};

} // namespace kelvane
