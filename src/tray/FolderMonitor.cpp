#include "FolderMonitor.h"

#include <QFileSystemWatcher>

namespace kelvane {

FolderMonitor::FolderMonitor(const QString& path, std::function<void()> callback)
{
    m_thread.setObjectName(QStringLiteral("FolderMonitor"));
    m_context = new QObject;
    m_context->moveToThread(&m_thread);
    m_thread.start();
    // The watch is made on its own thread, so that its events are delivered there.
    QMetaObject::invokeMethod(
        m_context,
        [this, path, callback = std::move(callback)] {
            auto* watcher = new QFileSystemWatcher(m_context);
            m_watching = watcher->addPath(path);
            QObject::connect(watcher, &QFileSystemWatcher::directoryChanged, watcher, [callback] { callback(); });
        },
        Qt::BlockingQueuedConnection);
}

FolderMonitor::~FolderMonitor()
{
    QMetaObject::invokeMethod(m_context, [this] { delete m_context; }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

} // namespace kelvane
