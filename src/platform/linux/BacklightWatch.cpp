#include "BacklightWatch.h"

#include <QDir>
#include <QSocketNotifier>

#include <libudev.h>

#include <cmath>

namespace kelvane {

BacklightWatch::BacklightWatch(BrightnessService& service, QString root, QObject* parent)
    : QObject(parent)
    , m_service(service)
    , m_root(std::move(root))
{
}

BacklightWatch::~BacklightWatch() { stop(); }

void BacklightWatch::start(std::function<void(double)> changed)
{
    if (m_changed)
        return;
    m_changed = std::move(changed);
    QString why;
    m_level = m_service.read(&why);

    m_files = std::make_unique<QFileSystemWatcher>();
    connect(m_files.get(), &QFileSystemWatcher::fileChanged, this, &BacklightWatch::check);
    connect(m_files.get(), &QFileSystemWatcher::directoryChanged, this, [this] {
        watchFiles();
        check();
    });
    watchFiles();

    m_udev = udev_new();
    m_monitor = m_udev ? udev_monitor_new_from_netlink(m_udev, "udev") : nullptr;
    if (m_monitor && udev_monitor_filter_add_match_subsystem_devtype(m_monitor, "backlight", nullptr) >= 0 &&
        udev_monitor_enable_receiving(m_monitor) >= 0) {
        m_notifier = std::make_unique<QSocketNotifier>(udev_monitor_get_fd(m_monitor), QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
            // Every waiting event is taken; what they say is read from the device itself.
            while (udev_device* device = udev_monitor_receive_device(m_monitor))
                udev_device_unref(device);
            check();
        });
    }
}

void BacklightWatch::stop()
{
    m_changed = nullptr;
    m_notifier.reset();
    m_files.reset();
    if (m_monitor)
        udev_monitor_unref(m_monitor);
    m_monitor = nullptr;
    if (m_udev)
        udev_unref(m_udev);
    m_udev = nullptr;
    m_level.reset();
}

void BacklightWatch::watchFiles()
{
    if (!m_files)
        return;
    if (!m_files->files().isEmpty())
        m_files->removePaths(m_files->files());
    if (m_files->directories().isEmpty() && QDir(m_root).exists())
        m_files->addPath(m_root);
    QStringList files;
    for (const QString& name : QDir(m_root).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::System))
        files << QDir(m_root).filePath(name + QStringLiteral("/brightness"));
    files.removeIf([](const QString& path) { return !QFileInfo::exists(path); });
    if (!files.isEmpty())
        m_files->addPaths(files);
}

void BacklightWatch::check()
{
    if (!m_changed)
        return;
    // A file rewritten by replacing it is watched again under the same name.
    if (m_files && m_files->files().isEmpty())
        watchFiles();
    QString why;
    // A file caught half written reads as nothing: the last level stands.
    const std::optional<double> level = m_service.read(&why);
    if (!level)
        return;
    const bool first = !m_level;
    const bool moved = m_level && std::abs(*level - *m_level) > 1e-6;
    m_level = level;
    if (!first && moved)
        m_changed(*level);
}

} // namespace kelvane
