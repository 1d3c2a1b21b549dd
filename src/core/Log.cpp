#include "Log.h"

#include <QMutex>

#include <cstdio>

namespace kelvane {

namespace {
QMutex s_mutex;
LogCapture* s_capture = nullptr;
} // namespace

void logLine(QStringView owner, const QString& message)
{
    const QString line = QLatin1Char('[') + owner.toString() + QLatin1StringView("] ") + message;
    QMutexLocker lock(&s_mutex);
    if (s_capture) {
        s_capture->m_lines.append(line);
        return;
    }
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

LogCapture::LogCapture()
{
    QMutexLocker lock(&s_mutex);
    m_previous = s_capture;
    s_capture = this;
}

LogCapture::~LogCapture()
{
    QMutexLocker lock(&s_mutex);
    s_capture = m_previous;
}

} // namespace kelvane
