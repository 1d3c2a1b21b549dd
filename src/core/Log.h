#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <type_traits>

namespace kelvane {

void emitLine(const QString& line);

// Diagnostics: one line on standard output, "[Owner] message".
void logLine(QStringView owner, const QString& message);

// A line meant for the system log (the journal on Linux): it goes to the installed system-log
// sink, if any, and like every line to standard output. `line` carries its own "[Owner] " tag.
void systemLog(const QString& line);
using SystemLogSink = std::function<void(const QString& line)>;
void setSystemLogSink(SystemLogSink sink);

// Fills a system-log format: each "%d" and "%{public}@" takes the next argument, in order.
QString formatLog(QStringView format, const QStringList& arguments);
template <class... Args>
QString formatLog(QStringView format, const Args&... arguments)
{
    [[maybe_unused]] const auto text = [](const auto& argument) {
        if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(argument)>>)
            return QString::number(argument);
        else
            return QString(argument);
    };
    return formatLog(format, QStringList{text(arguments)...});
}

// Captures the lines logged while it lives (tests compare them word for word). Captures nest;
// the innermost one receives the lines, and nothing is printed while one is active.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const QStringList& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

private:
    friend void emitLine(const QString&);
    QStringList m_lines;
    LogCapture* m_previous;
};

} // namespace kelvane
