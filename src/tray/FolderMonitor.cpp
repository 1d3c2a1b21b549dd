#include "FolderMonitor.h"

#include <QFileSystemWatcher>

namespace kelvane {

FolderMonitor::FolderMonitor(const QString& path, std::function<void()> callback)
{
    m_thread.setObjectName(QStringLiteral("FolderMonitor"));
    // The watch is made here and moved to its own thread before that starts, so that its events
    // are delivered there and no one waits for the thread to set it up.
    auto* watcher = new QFileSystemWatcher;
    m_watching = watcher->addPath(path);
    QObject::connect(watcher, &QFileSystemWatcher::directoryChanged, watcher,
                     [callback = std::move(callback)] { callback(); });
    watcher->moveToThread(&m_thread);
    m_context = watcher;
    m_thread.start();
}

FolderMonitor::~FolderMonitor()
{
    // A thread that finishes still deletes what was handed to it for deletion.
    m_context->deleteLater();
    m_thread.quit();
    m_thread.wait();
}

} // namespace kelvane
