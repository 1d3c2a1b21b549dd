#pragma once

#include "effects/CurrentWallpaperManager.h"

#include <QFileSystemWatcher>
#include <QString>

#include <memory>

class QSocketNotifier;
struct _GSettings;
struct xcb_connection_t;

namespace kelvane {

// The desktop's current picture on Linux: GNOME's (and its relatives') background setting, KDE
// Plasma's desktop configuration, or else the picture set on the X root window by whatever draws
// the desktop (the `_XROOTPMAP_ID` convention of feh, nitrogen, xwallpaper and others). Each is
// followed for changes; the first that the session has is used.
class DesktopWallpaperSource final : public WallpaperSource {
public:
    enum class Kind { gnome, kde, rootWindow, none };

    DesktopWallpaperSource();
    ~DesktopWallpaperSource() override;

    Kind kind() const { return m_kind; }
    std::function<QImage()> reader() override;
    void setChangeHandler(std::function<void()> handler) override;

    // A file named by a desktop's setting: a file URL or a path; for a wallpaper package (a
    // folder), its largest picture.
    static QString pictureFile(const QString& setting);
    // The picture named in a Plasma desktop configuration.
    static QString plasmaPicture(const QString& configuration);

private:
    void changed();
    void watchRootWindow();

    Kind m_kind = Kind::none;
    std::function<void()> m_handler;
    _GSettings* m_gnome = nullptr;
    unsigned long m_gnomeSignal = 0;
    QString m_plasmaFile;
    QFileSystemWatcher m_watcher;
    xcb_connection_t* m_x = nullptr;
    unsigned m_rootAtom = 0;
    std::unique_ptr<QSocketNotifier> m_xEvents;
};

} // namespace kelvane
