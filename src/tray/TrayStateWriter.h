#pragma once

#include "core/SerialQueue.h"

#include <QJsonArray>
#include <QMutex>
#include <QString>

#include <optional>

namespace kelvane {

// Writes the tray's saved list beside the main thread: one write after another, each replacing
// the file whole, and a list handed over while one is being written goes next, in place of any
// older one still waiting. Failures are one printed line.
class TrayStateWriter {
public:
    void write(const QString& path, QJsonArray records);
    // A list is being written or waits to be.
    bool busy() const;
    // Returns once every list handed over is on disk, or the time is up.
    bool flush(int milliseconds);

private:
    struct Job {
        QString path;
        QJsonArray records;
    };
    void run();

    mutable QMutex m_mutex;
    std::optional<Job> m_next;
    bool m_running = false;
    // Declared last, so that it is gone first: destroying it waits for the writes.
    SerialQueue m_thread;
};

} // namespace kelvane
