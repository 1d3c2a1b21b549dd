#include "Log.h"

#include <QMutex>

#include <cstdio>

namespace kelvane {

namespace {
QMutex s_mutex;
LogCapture* s_capture = nullptr;
SystemLogSink s_systemLogSink;
} // namespace

void emitLine(const QString& line)
{
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

void logLine(QStringView owner, const QString& message)
{
    emitLine(QLatin1Char('[') + owner.toString() + QLatin1StringView("] ") + message);
}

void systemLog(const QString& line)
{
    SystemLogSink sink;
    {
        QMutexLocker lock(&s_mutex);
        if (!s_capture)
            sink = s_systemLogSink;
    }
    if (sink)
        sink(line);
    emitLine(line);
}

void setSystemLogSink(SystemLogSink sink)
{
    QMutexLocker lock(&s_mutex);
    s_systemLogSink = std::move(sink);
}

QString formatLog(QStringView format, const QStringList& arguments)
{
    static const QString placeholders[] = {QStringLiteral("%d"), QStringLiteral("%{public}@")};
    QString result;
    qsizetype next = 0;
    qsizetype position = 0;
    while (position < format.size()) {
        bool matched = false;
        for (const QString& placeholder : placeholders) {
            if (format.sliced(position).startsWith(placeholder) && next < arguments.size()) {
                result += arguments.at(next++);
                position += placeholder.size();
                matched = true;
                break;
            }
        }
        if (!matched)
            result += format.at(position++);
    }
    return result;
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
