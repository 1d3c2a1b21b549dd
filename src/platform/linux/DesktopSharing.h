#pragma once

#include "tray/Pasteboard.h"

#include <QDBusConnection>

namespace kelvane {

// Sharing and previewing files on a Linux desktop. Files are sent to a phone through KDE Connect
// when it runs (there is no AirDrop here); otherwise one line says that nothing can send them.
// Previews open in the desktop's file previewer (GNOME's, over D-Bus) where there is one, and
// otherwise in the file's default application.
class DesktopSharing : public SharingService, public FilePreviewer {
public:
    explicit DesktopSharing(QDBusConnection bus);
    void perform(const QList<QUrl>& files, std::function<void()> finished) override;
    void toggle(const QList<QUrl>& files) override;

private:
    QDBusConnection m_bus;
};

} // namespace kelvane
