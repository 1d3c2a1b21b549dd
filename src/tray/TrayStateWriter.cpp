#include "TrayStateWriter.h"

#include "core/Log.h"

#include <QJsonDocument>
#include <QSaveFile>

namespace kelvane {

void TrayStateWriter::write(const QString& path, QJsonArray records)
{
    {
        QMutexLocker lock(&m_mutex);
        m_next = Job{path, std::move(records)};
        if (std::exchange(m_running, true))
            return;
    }
    m_thread.async([this] { run(); });
}

bool TrayStateWriter::busy() const
{
    QMutexLocker lock(&m_mutex);
    return m_running;
}

bool TrayStateWriter::flush(int milliseconds) { return m_thread.waitForIdle(milliseconds); }

void TrayStateWriter::run()
{
    for (;;) {
        Job job;
        {
            QMutexLocker lock(&m_mutex);
            if (!m_next) {
                m_running = false;
                return;
            }
            job = std::move(*m_next);
            m_next.reset();
        }
        QSaveFile out(job.path);
        if (!out.open(QIODevice::WriteOnly) || out.write(QJsonDocument(job.records).toJson(QJsonDocument::Compact)) < 0 ||
            !out.commit())
            logLine(u"Tray", QStringLiteral("Failed to persist tray state: ") + out.errorString());
    }
}

} // namespace kelvane
