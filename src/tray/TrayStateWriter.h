#pragma once

#include <QJsonArray>
#include <QMutex>
#include <QString>
#include <QThreadPool>

#include <optional>

namespace kelvane {

// Writes the tray's saved list beside the main thread: one write after another, each replacing
// the file whole, and a list handed over while one is being written goes next, in place of any
// older one still waiting. Failures are one printed line.
class TrayStateWriter {
public:
    TrayStateWriter();
    // Waits for the write under way and the one waiting.
    ~TrayStateWriter();
    TrayStateWriter(const TrayStateWriter&) = delete;
    TrayStateWriter& operator=(const TrayStateWriter&) = delete;

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

    QThreadPool m_thread;
    mutable QMutex m_mutex;
    std::optional<Job> m_next;
    bool m_running = false;
};

} // namespace kelvane
