#pragma once

#include <QString>
#include <QThread>

#include <functional>

class QObject;

namespace kelvane {

// Watches one folder: after every change in it (an entry added, removed or renamed) calls
// `callback` on the monitor's own thread. The callback must hop to the main thread before it
// touches any model. Destroying the monitor stops the watch.
class FolderMonitor {
public:
    FolderMonitor(const QString& path, std::function<void()> callback);
    ~FolderMonitor();
    FolderMonitor(const FolderMonitor&) = delete;
    FolderMonitor& operator=(const FolderMonitor&) = delete;

    // The watch could be installed (the folder exists and the system took it).
    bool isWatching() const { return m_watching; }

private:
    QThread m_thread;
    QObject* m_context = nullptr;
    bool m_watching = false;
};

} // namespace kelvane
