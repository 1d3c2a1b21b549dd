#pragma once

#include "hud/LevelFollower.h"

#include <QFileSystemWatcher>
#include <QObject>

#include <memory>
#include <optional>

struct udev;
struct udev_monitor;
class QSocketNotifier;

namespace kelvane {

// The backlight's brightness, read through the brightness service, followed on the main thread
// through udev's change events for the backlight class (what the kernel sends when anyone writes
// the level) and through the folder's files themselves (a backlight folder outside the kernel's,
// as $KELVANE_BACKLIGHT_ROOT gives). Reading is a small file read.
class BacklightWatch final : public QObject, public BrightnessWatch {
    Q_OBJECT
public:
    BacklightWatch(BrightnessService& service, QString root, QObject* parent = nullptr);
    ~BacklightWatch() override;

    void start(std::function<void(double)> changed) override;
    void stop() override;

private:
    void check();
    void watchFiles();

    BrightnessService& m_service;
    QString m_root;
    std::function<void(double)> m_changed;
    std::optional<double> m_level;
    std::unique_ptr<QFileSystemWatcher> m_files;
    udev* m_udev = nullptr;
    udev_monitor* m_monitor = nullptr;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace kelvane
